#include "image/Image_Planes.h"

#include "host/Host_Os.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace {

// Smaller blocks are cheap to get from malloc and are not worth keeping.
constexpr size_t kLargePlaneBytes = size_t(8) << 20;
// An eighth of the machine's memory, between 512 MiB and 4 GiB: room for the
// working image, its before/after copies and a module's result at 24
// megapixels, without holding back much of what other programs could use.
size_t DefaultBudgetBytes() {
    constexpr size_t kLow = size_t(512) << 20, kHigh = size_t(4) << 30;
    const size_t share = HostOs_PhysicalMemoryBytes() / 8;
    return share < kLow ? kLow : share > kHigh ? kHigh : share;
}

class PlaneCache {
public:
    int64_t* Allocate(size_t elements, bool zeroed) {
        if (elements > std::numeric_limits<size_t>::max() / sizeof(int64_t)) return nullptr;
        const size_t bytes = elements * sizeof(int64_t);
        if (bytes < kLargePlaneBytes) return Fresh(elements, zeroed);
        if (int64_t* reused = TakeCached(elements)) {
            if (zeroed) std::memset(reused, 0, bytes);
            return reused;
        }
        int64_t* plane = Fresh(elements, zeroed);
        if (!plane) {
            // The memory the cache holds may be just what is missing.
            Trim();
            plane = Fresh(elements, zeroed);
        }
        if (plane) {
            std::lock_guard lock(mutex_);
            capacity_[plane] = elements;
        }
        return plane;
    }

    void Release(int64_t* plane) {
        if (!plane) return;
        std::vector<int64_t*> toFree;
        {
            std::lock_guard lock(mutex_);
            auto it = capacity_.find(plane);
            if (it == capacity_.end()) {
                toFree.push_back(plane);  // a small plane: never tracked
            } else {
                const size_t bytes = it->second * sizeof(int64_t);
                if (bytes > Budget()) {
                    capacity_.erase(it);
                    toFree.push_back(plane);
                } else {
                    cached_.push_back(plane);
                    cachedBytes_ += bytes;
                    // Oldest first out, until the cache is within its budget.
                    while (cachedBytes_ > Budget()) {
                        int64_t* oldest = cached_.front();
                        cached_.erase(cached_.begin());
                        cachedBytes_ -= capacity_[oldest] * sizeof(int64_t);
                        capacity_.erase(oldest);
                        toFree.push_back(oldest);
                    }
                }
            }
        }
        for (int64_t* p : toFree) std::free(p);
    }

    void Trim() {
        std::vector<int64_t*> toFree;
        {
            std::lock_guard lock(mutex_);
            for (int64_t* p : cached_) capacity_.erase(p);
            toFree.swap(cached_);
            cachedBytes_ = 0;
        }
        for (int64_t* p : toFree) std::free(p);
    }

    void SetBudget(size_t bytes) {
        {
            std::lock_guard lock(mutex_);
            budget_ = bytes;
        }
        Trim();
    }

    size_t CachedBytes() {
        std::lock_guard lock(mutex_);
        return cachedBytes_;
    }

private:
    static int64_t* Fresh(size_t elements, bool zeroed) {
        void* p = zeroed ? std::calloc(elements, sizeof(int64_t)) : std::malloc(elements * sizeof(int64_t));
        // Image-sized planes are touched whole right away: large pages make
        // that first touch several times cheaper.
        HostOs_AdviseLargeBlock(p, elements * sizeof(int64_t));
        return static_cast<int64_t*>(p);
    }

    // The most recently cached plane of exactly this size.
    int64_t* TakeCached(size_t elements) {
        std::lock_guard lock(mutex_);
        for (size_t i = cached_.size(); i-- > 0;) {
            int64_t* p = cached_[i];
            if (capacity_[p] != elements) continue;
            cached_.erase(cached_.begin() + static_cast<std::ptrdiff_t>(i));
            cachedBytes_ -= elements * sizeof(int64_t);
            return p;
        }
        return nullptr;
    }

    size_t Budget() {
        if (budget_ == kUnset) {
            budget_ = DefaultBudgetBytes();
            if (const char* env = std::getenv("PELLUCIDA_PLANE_CACHE_MB"); env && *env)
                budget_ = size_t(std::strtoull(env, nullptr, 10)) << 20;
        }
        return budget_;
    }

    static constexpr size_t kUnset = std::numeric_limits<size_t>::max();
    std::mutex mutex_;
    std::unordered_map<int64_t*, size_t> capacity_;  // every large plane handed out or cached
    std::vector<int64_t*> cached_;                   // oldest first
    size_t cachedBytes_ = 0;
    size_t budget_ = kUnset;
};

// Never destroyed: threads and other objects being torn down at exit may still
// give planes back, and what it holds at exit is the system's to reclaim.
PlaneCache& Cache() {
    static PlaneCache* cache = new PlaneCache;
    return *cache;
}

}  // namespace

int64_t* ImagePlanes_Allocate(size_t elements, bool zeroed) {
    return Cache().Allocate(elements, zeroed);
}
void ImagePlanes_Release(int64_t* plane) {
    Cache().Release(plane);
}
void ImagePlanes_Trim() {
    Cache().Trim();
}
size_t ImagePlanes_CachedBytes() {
    return Cache().CachedBytes();
}
void ImagePlanes_SetBudget(size_t bytes) {
    Cache().SetBudget(bytes);
}
