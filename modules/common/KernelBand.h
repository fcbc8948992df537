// The rows a kernel's worker k of n takes: one contiguous band each, in
// order, as even as integer division allows, so every worker's rows are the
// same whatever the machine and a row's result never depends on the split.
#pragma once

#include <cstdint>

struct KernelBand {
    int32_t begin, end;  // rows begin..end - 1
};

inline KernelBand Kernel_RowBand(uint32_t k, uint32_t n, int32_t rows) {
    return {static_cast<int32_t>(int64_t{rows} * k / n), static_cast<int32_t>(int64_t{rows} * (k + 1) / n)};
}
