// The span sampler eight pixels at a time with AVX-512 (F and DQ): each pixel's
// two neighbours in a row come with one 16-byte load (gathers are several
// times slower on the processors this is for), the int64 <-> double
// conversions are exact, and masks do the inside test and the clamp. Every lane does the portable form's
// operations in its order, as separate multiplies and adds (the build never contracts them, and no fused
// intrinsic is used), so the bits are the same.
#include "modules/rotate/Rotate_Span.h"

#if defined(__GNUC__) && defined(__x86_64__)

#include <immintrin.h>

namespace {

#define ROTATE_AVX512 __attribute__((target("avx512f,avx512dq")))

// Where the eight pixels of a block read the source: the element index of
// each pixel's pair of columns in its upper and lower row, and the weights.
struct Block {
    alignas(64) int64_t upper[8];
    alignas(64) int64_t lower[8];
    __m512d tx, ty, ux, uy;
    __mmask8 inside, lastColumn;
};

// Two columns side by side for the four pixels whose pair indices are
// at[0], at[2], at[4], at[6]: one 16-byte load each. With the odd pixels'
// pairs, one unpack gives the left and another the right neighbours in order.
ROTATE_AVX512 inline __m512i LoadPairs(const int64_t* plane, const int64_t* at) {
    __m512i v = _mm512_castsi128_si512(_mm_loadu_si128(reinterpret_cast<const __m128i*>(plane + at[0])));
    v = _mm512_inserti64x2(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(plane + at[2])), 1);
    v = _mm512_inserti64x2(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(plane + at[4])), 2);
    return _mm512_inserti64x2(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(plane + at[6])), 3);
}

// The left and right neighbours of all eight pixels in one of their rows. A
// pixel in the last column reads the pair that ends in it, its right
// neighbour being itself.
ROTATE_AVX512 inline void LoadRow(const int64_t* plane, const int64_t* at, __mmask8 lastColumn, __m512d* left,
                                  __m512d* right) {
    const __m512i even = LoadPairs(plane, at), odd = LoadPairs(plane, at + 1);
    // (The masked forms only spare GCC 12 a false "uninitialised" warning.)
    const __m512i l = _mm512_maskz_unpacklo_epi64(0xff, even, odd);
    const __m512i r = _mm512_maskz_unpackhi_epi64(0xff, even, odd);
    *left = _mm512_cvtepi64_pd(_mm512_mask_mov_epi64(l, lastColumn, r));
    *right = _mm512_cvtepi64_pd(r);
}

ROTATE_AVX512 inline __m512i SamplePlane(const int64_t* plane, const Block& k, __m512d maxD, __m512i maxI) {
    __m512d p00, p10, p01, p11;
    LoadRow(plane, k.upper, k.lastColumn, &p00, &p10);
    LoadRow(plane, k.lower, k.lastColumn, &p01, &p11);
    // ty * ((1 - tx) * p01 + tx * p11) + (1 - ty) * ((1 - tx) * p00 + tx * p10)
    const __m512d lower = _mm512_add_pd(_mm512_mul_pd(k.ux, p01), _mm512_mul_pd(k.tx, p11));
    const __m512d upper = _mm512_add_pd(_mm512_mul_pd(k.ux, p00), _mm512_mul_pd(k.tx, p10));
    const __m512d v = _mm512_add_pd(_mm512_mul_pd(k.ty, lower), _mm512_mul_pd(k.uy, upper));
    const __mmask8 positive = _mm512_mask_cmp_pd_mask(k.inside, v, _mm512_setzero_pd(), _CMP_GT_OQ);
    const __mmask8 atMax = _mm512_mask_cmp_pd_mask(positive, v, maxD, _CMP_GE_OQ);
    // Lanes that are outside, not positive, or at or above the maximum are
    // replaced, so the truncation only matters where it is in range.
    const __m512i q = _mm512_maskz_cvttpd_epi64(positive, v);
    return _mm512_mask_mov_epi64(q, atMax, maxI);
}

ROTATE_AVX512 void SampleAvx512(const RotateSpanSource& source, const double* xs, const double* ys, int32_t n,
                                int64_t* const out[3]) {
    // A one-column source has no pair to load.
    if (source.width < 2) return RotateSpan_Sample(source, xs, ys, n, out);
    const __m512d minusOne = _mm512_set1_pd(-1.0), one = _mm512_set1_pd(1.0);
    const __m512d w = _mm512_set1_pd(source.width), h = _mm512_set1_pd(source.height);
    const __m512d maxD = _mm512_set1_pd(static_cast<double>(source.maxValue));
    const __m512i maxI = _mm512_set1_epi64(source.maxValue);
    const __m512i lastX = _mm512_set1_epi64(source.width - 1), lastY = _mm512_set1_epi64(source.height - 1);
    const __m512i stride = _mm512_set1_epi64(source.stride);
    Block k;
    for (int32_t i = 0; i < n; i += 8) {
        const __mmask8 live = n - i >= 8 ? __mmask8(0xff) : __mmask8((1u << (n - i)) - 1);
        const __m512d sx = _mm512_maskz_loadu_pd(live, xs + i), sy = _mm512_maskz_loadu_pd(live, ys + i);
        k.inside = _mm512_mask_cmp_pd_mask(live, sx, minusOne, _CMP_GT_OQ);
        k.inside = _mm512_mask_cmp_pd_mask(k.inside, sx, w, _CMP_LT_OQ);
        k.inside = _mm512_mask_cmp_pd_mask(k.inside, sy, minusOne, _CMP_GT_OQ);
        k.inside = _mm512_mask_cmp_pd_mask(k.inside, sy, h, _CMP_LT_OQ);
        if (k.inside == 0) {
            const __m512i zero = _mm512_setzero_si512();
            for (int c = 0; c < 3; ++c) _mm512_mask_storeu_epi64(out[c] + i, live, zero);
            continue;
        }
        // Outside lanes sample (0, 0), whose pair always exists, and are set
        // to 0 afterwards.
        const __m512i ix = _mm512_maskz_cvttpd_epi64(k.inside, sx),
                      iy = _mm512_maskz_cvttpd_epi64(k.inside, sy);
        k.tx = _mm512_sub_pd(sx, _mm512_cvtepi64_pd(ix));
        k.ty = _mm512_sub_pd(sy, _mm512_cvtepi64_pd(iy));
        k.ux = _mm512_sub_pd(one, k.tx);
        k.uy = _mm512_sub_pd(one, k.ty);
        k.lastColumn = _mm512_cmpeq_epi64_mask(ix, lastX);
        // Row and stride fit in 32 bits: the signed 32 x 32 -> 64 multiply is
        // exact (its masked form only spares GCC 12 a false warning).
        const __m512i row = _mm512_maskz_mul_epi32(0xff, iy, stride);
        const __m512i pixel = _mm512_add_epi64(row, ix);
        const __m512i at = _mm512_mask_sub_epi64(pixel, k.lastColumn, pixel, _mm512_set1_epi64(1));
        const __m512i below = _mm512_maskz_mov_epi64(_mm512_cmplt_epi64_mask(iy, lastY), stride);
        _mm512_store_si512(k.upper, at);
        _mm512_store_si512(k.lower, _mm512_add_epi64(at, below));
        for (int c = 0; c < 3; ++c)
            _mm512_mask_storeu_epi64(out[c] + i, live, SamplePlane(source.planes[c], k, maxD, maxI));
    }
}

#undef ROTATE_AVX512

}  // namespace

RotateSpanFn RotateSpan_Avx512() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") ? &SampleAvx512 : nullptr;
}

#else

RotateSpanFn RotateSpan_Avx512() {
    return nullptr;
}

#endif
