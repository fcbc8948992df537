// The quarter turn with AVX-512 (F): a half turn reverses rows eight samples
// at a time; a quarter turn either way reads eight source rows of eight and
// transposes them in registers. Where every output row starts on the same
// cache-line offset, whole lines are written with non-temporal stores: the
// result is not read again soon, and this spares reading each line in first.
#include "modules/rotate/Rotate_Quarter.h"

#if defined(__GNUC__) && defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <cstdint>

namespace {

#define ROTATE_AVX512 __attribute__((target("avx512f")))

// Output columns of the band that are copied one by one: a head up to the
// first cache-line boundary and a tail shorter than a block.
void CopyColumns(const RotateQuarterBand& b, int32_t x0, int32_t x1) {
    for (int32_t y = b.y0; y < b.y1; ++y) {
        int64_t* row = b.out + int64_t{y} * b.outStride;
        for (int32_t x = x0; x < x1; ++x) row[x] = b.in[RotateQuarter_SourceIndex(b, x, y)];
    }
}

ROTATE_AVX512 inline void Store(int64_t* at, __m512i v, bool stream) {
    if (stream)
        _mm512_stream_si512(reinterpret_cast<__m512i*>(at), v);
    else
        _mm512_storeu_si512(at, v);
}

// r[i] becomes the column i of the block the rows r[0..7] form.
ROTATE_AVX512 inline void Transpose(__m512i r[8]) {
    // (The masked forms here and below only spare GCC 12 a false
    // "uninitialised" warning.)
    __m512i t[8];
    for (int k = 0; k < 4; ++k) {
        t[2 * k] = _mm512_maskz_unpacklo_epi64(0xff, r[2 * k], r[2 * k + 1]);
        t[2 * k + 1] = _mm512_maskz_unpackhi_epi64(0xff, r[2 * k], r[2 * k + 1]);
    }
    // 128-bit pieces: rows 0..3 of columns (0, 4), (2, 6), (1, 5), (3, 7),
    // then the same for rows 4..7.
    const __m512i even = _mm512_set_epi64(13, 12, 5, 4, 9, 8, 1, 0);
    const __m512i odd = _mm512_set_epi64(15, 14, 7, 6, 11, 10, 3, 2);
    __m512i s[8];
    for (int h = 0; h < 2; ++h) {
        s[4 * h + 0] = _mm512_permutex2var_epi64(t[4 * h + 0], even, t[4 * h + 2]);
        s[4 * h + 1] = _mm512_permutex2var_epi64(t[4 * h + 0], odd, t[4 * h + 2]);
        s[4 * h + 2] = _mm512_permutex2var_epi64(t[4 * h + 1], even, t[4 * h + 3]);
        s[4 * h + 3] = _mm512_permutex2var_epi64(t[4 * h + 1], odd, t[4 * h + 3]);
    }
    // s[0] holds columns 0 and 4 of rows 0..3, s[4] of rows 4..7; s[1], s[5]
    // columns 2 and 6; s[2], s[6] columns 1 and 5; s[3], s[7] columns 3 and 7.
    const int column[4] = {0, 2, 1, 3};
    for (int k = 0; k < 4; ++k) {
        r[column[k]] = _mm512_maskz_shuffle_i64x2(0xff, s[k], s[k + 4], 0x44);
        r[column[k] + 4] = _mm512_maskz_shuffle_i64x2(0xff, s[k], s[k + 4], 0xee);
    }
}

ROTATE_AVX512 void QuarterAvx512(const RotateQuarterBand& b) {
    // Every row starts on the same offset within a cache line when the stride
    // is a whole number of lines; then the head brings the blocks onto line
    // boundaries and they can be streamed.
    const bool stream = b.outStride % 8 == 0;
    const int32_t head =
        stream
            ? std::min<int32_t>(
                  b.outWidth, int32_t((64 - reinterpret_cast<uintptr_t>(b.out) % 64) % 64 / sizeof(int64_t)))
            : 0;
    const int32_t blocks = (b.outWidth - head) / 8;
    const int32_t tail = head + blocks * 8;
    CopyColumns(b, 0, head);
    CopyColumns(b, tail, b.outWidth);
    if (b.turns == 2) {
        const __m512i reverse = _mm512_set_epi64(0, 1, 2, 3, 4, 5, 6, 7);
        for (int32_t y = b.y0; y < b.y1; ++y) {
            const int64_t* from = b.in + int64_t{b.inHeight - 1 - y} * b.inStride + (b.inWidth - 8 - head);
            int64_t* to = b.out + int64_t{y} * b.outStride + head;
            for (int32_t k = 0; k < blocks; ++k, from -= 8, to += 8)
                Store(to, _mm512_maskz_permutexvar_epi64(0xff, reverse, _mm512_loadu_si512(from)), stream);
        }
    } else {
        // Rows of the band in groups of eight; the rest one by one.
        const int32_t groups = (b.y1 - b.y0) / 8;
        for (int32_t k = 0; k < blocks; ++k) {
            const int32_t x = head + 8 * k;
            for (int32_t g = 0; g < groups; ++g) {
                const int32_t y = b.y0 + 8 * g;
                __m512i r[8];
                // One quarter: source rows H - 1 - x - i, columns y .. y + 7;
                // three: source rows x + i, columns W - 8 - y .. W - 1 - y,
                // whose transposed rows come out last first.
                for (int i = 0; i < 8; ++i)
                    r[i] = b.turns == 1
                               ? _mm512_loadu_si512(b.in + int64_t{b.inHeight - 1 - x - i} * b.inStride + y)
                               : _mm512_loadu_si512(b.in + int64_t{x + i} * b.inStride + (b.inWidth - 8 - y));
                Transpose(r);
                for (int j = 0; j < 8; ++j)
                    Store(b.out + int64_t{y + j} * b.outStride + x, r[b.turns == 1 ? j : 7 - j], stream);
            }
            for (int32_t y = b.y0 + 8 * groups; y < b.y1; ++y) {
                int64_t* row = b.out + int64_t{y} * b.outStride;
                for (int32_t i = x; i < x + 8; ++i) row[i] = b.in[RotateQuarter_SourceIndex(b, i, y)];
            }
        }
    }
    // Streamed lines must be in memory before the workers report they are done.
    if (stream) _mm_sfence();
}

#undef ROTATE_AVX512

}  // namespace

RotateQuarterFn RotateQuarter_Avx512() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512f") ? &QuarterAvx512 : nullptr;
}

#else

RotateQuarterFn RotateQuarter_Avx512() {
    return nullptr;
}

#endif
