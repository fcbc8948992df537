// AutoDev's weight map: the weighted mean absolute difference of each pixel of
// the blended luminance to its 12 neighbours (weight 4 one step along the axes,
// 2 on the diagonals, 1 two steps along the axes). Neighbours outside the image
// are left out of both sums. Large where there is structure, small in flat sky.
#include "modules/autodev/AutoDev_Internal.h"

#include "host/Host_Threads.h"
#include "modules/common/KernelBand.h"
#include "modules/common/WorkPlane.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>

namespace {

constexpr const char* kStageWeights = "Weights";

struct Neighbour {
    int32_t dx, dy, weight;
};
constexpr Neighbour kNeighbours[12] = {
    {-1, 0, 4}, {1, 0, 4}, {0, -1, 4}, {0, 1, 4}, {-1, -1, 2}, {1, -1, 2},
    {-1, 1, 2}, {1, 1, 2}, {-2, 0, 1}, {2, 0, 1}, {0, -2, 1},  {0, 2, 1},
};
constexpr int32_t kInteriorWeight = 28;

struct WeightJob {
    const int32_t* lum;
    int32_t* weight;
    int32_t width, height, stride;
    const KernelControl* control;
    std::atomic<bool>* stopped;
    uint32_t workerIndex, workerCount;
};

int32_t EdgeWeight(const WeightJob& j, int32_t x, int32_t y) {
    const int32_t c = j.lum[int64_t{y} * j.stride + x];
    int64_t sum = 0, wsum = 0;
    for (const Neighbour& n : kNeighbours) {
        const int32_t nx = x + n.dx, ny = y + n.dy;
        if (nx < 0 || ny < 0 || nx >= j.width || ny >= j.height) continue;
        sum += int64_t{n.weight} * std::abs(int64_t{c} - j.lum[int64_t{ny} * j.stride + nx]);
        wsum += n.weight;
    }
    return wsum ? static_cast<int32_t>(sum / wsum) : 0;
}

void WeightRow(const WeightJob& j, int32_t y) {
    int32_t* out = j.weight + int64_t{y} * j.stride;
    if (y < 2 || y >= j.height - 2 || j.width < 5) {
        for (int32_t x = 0; x < j.width; ++x) out[x] = EdgeWeight(j, x, y);
        return;
    }
    const int32_t* r0 = j.lum + int64_t{y} * j.stride;
    const int32_t* rm1 = r0 - j.stride;
    const int32_t* rp1 = r0 + j.stride;
    const int32_t* rm2 = rm1 - j.stride;
    const int32_t* rp2 = rp1 + j.stride;
    for (int32_t x = 0; x < 2; ++x) out[x] = EdgeWeight(j, x, y);
    // 24-bit samples: 28 differences of up to 2^24 stay inside 32 bits.
    for (int32_t x = 2; x < j.width - 2; ++x) {
        const int32_t c = r0[x];
        const int32_t axis =
            std::abs(c - r0[x - 1]) + std::abs(c - r0[x + 1]) + std::abs(c - rm1[x]) + std::abs(c - rp1[x]);
        const int32_t diag = std::abs(c - rm1[x - 1]) + std::abs(c - rm1[x + 1]) + std::abs(c - rp1[x - 1]) +
                             std::abs(c - rp1[x + 1]);
        const int32_t far =
            std::abs(c - r0[x - 2]) + std::abs(c - r0[x + 2]) + std::abs(c - rm2[x]) + std::abs(c - rp2[x]);
        out[x] = static_cast<int32_t>(static_cast<uint32_t>(4 * axis + 2 * diag + far) /
                                      uint32_t{kInteriorWeight});
    }
    for (int32_t x = std::max(j.width - 2, 2); x < j.width; ++x) out[x] = EdgeWeight(j, x, y);
}

void WeightWorker(WeightJob* j) {
    const auto [begin, end] = Kernel_RowBand(j->workerIndex, j->workerCount, j->height);
    for (int32_t y = begin; y < end; ++y) {
        if ((y & 31) == 0) {
            if (j->stopped->load(std::memory_order_relaxed)) return;
            if (KernelControl_Cancelled(j->control)) {
                j->stopped->store(true);
                return;
            }
            if (j->workerIndex == 0)
                KernelControl_Report(j->control, kStageWeights, int((y - begin) * 100LL / (end - begin)));
        }
        WeightRow(*j, y);
    }
}

struct ReshapeJob {
    int32_t* lum;
    int64_t count;
    const int32_t* map;
    uint32_t workerIndex, workerCount;
};

void ReshapeWorker(ReshapeJob* j) {
    const int64_t begin = j->count * j->workerIndex / j->workerCount;
    const int64_t end = j->count * (j->workerIndex + 1) / j->workerCount;
    for (int64_t i = begin; i < end; ++i) j->lum[i] = j->map[j->lum[i]];
}

// L' := trunc(max * clamp(pow(clamp(L' / max, 0, 1), 1 / p2), 0, 1)), with the
// pow taken once per occurring value.
void Reshape(int32_t* lum, int32_t width, int32_t height, int32_t stride, double p2, int32_t max) {
    const int64_t count = int64_t{stride} * height;
    int32_t lo = max, hi = 0;
    WorkPlane<uint8_t> used = WorkPlane_AllocateZeroed<uint8_t>(size_t(max) + 1);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const int32_t v = std::clamp(lum[int64_t{y} * stride + x], 0, max);
            lum[int64_t{y} * stride + x] = v;
            used[v] = 1;
            lo = std::min(lo, v);
            hi = std::max(hi, v);
        }
    WorkPlane<int32_t> map = WorkPlane_Allocate<int32_t>(size_t(max) + 1);
    const double m = static_cast<double>(max);
    const double exponent = 1 / p2;
    for (int32_t v = lo; v <= hi; ++v) {
        if (!used[v]) continue;
        const double u = std::clamp(static_cast<double>(v) / m, 0.0, 1.0);
        map[v] = static_cast<int32_t>(m * std::clamp(std::pow(u, exponent), 0.0, 1.0));
    }
    if (stride != width) {
        for (int32_t y = 0; y < height; ++y)
            for (int32_t x = 0; x < width; ++x)
                lum[int64_t{y} * stride + x] = map[lum[int64_t{y} * stride + x]];
        return;
    }
    ReshapeJob job{lum, count, map.get(), 0, 1};
    Host_RunWorkers(job, &ReshapeWorker);
}

}  // namespace

bool AutoDev_WeightMap(int32_t* blended, int32_t* weight, int32_t width, int32_t height, int32_t stride,
                       double p2, int32_t max, const KernelControl* control) {
    if (p2 != 1.0) Reshape(blended, width, height, stride, p2, max);
    if (KernelControl_Cancelled(control)) return false;
    std::atomic<bool> stopped{false};
    WeightJob job{blended, weight, width, height, stride, control, &stopped, 0, 1};
    Host_RunWorkers(job, &WeightWorker);
    return !stopped.load();
}
