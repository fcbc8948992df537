// Hot loops that gain from newer instruction sets (AVX2, BMI, shorter
// truncation) are compiled several times where the toolchain can choose between
// the versions when the program loads: for x86-64-v4 (AVX-512, which also
// vectorises 64-bit products and double/64-bit conversions), for x86-64-v3 and
// the baseline. Results are identical: the build never contracts floating point
// arithmetic into fused multiply-adds, whatever the instruction set.
#pragma once

#if PELLUCIDA_HAVE_TARGET_CLONES
#define HOST_HOT_LOOP __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define HOST_HOT_LOOP
#endif
