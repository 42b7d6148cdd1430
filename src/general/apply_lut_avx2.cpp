// apply_lut_avx2.cpp: an 8-bit table applied to 32 bytes at a time with AVX2 byte shuffles (this file alone
// is built with -mavx2).
#include "general/lut.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

// The table in two halves of 8 rows of 16, each row stored as its difference to the previous one
// (row 0 as it stands). Subtracting 16 k from v leaves bit 7 clear (and the low nibble intact)
// exactly for k = 0 .. the high nibble of v when v < 128, so the XOR of the shuffles telescopes to
// the row of v; the upper half does the same with bit 7 of v flipped, and bit 7 of v picks the half.
// Runs only behind g_SSEChecker.UseAVX2() (see ApplyLut).
uint32_t ApplyLut8Line_avx2(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwCount, const uint8_t* pTable)
{
#if defined(__AVX2__)
    auto row = [&](int k) {
        return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pTable + 16 * k)));
    };
    __m256i lower[8], upper[8];
    for (int k = 0; k < 8; ++k) {
        lower[k] = k ? _mm256_xor_si256(row(k), row(k - 1)) : row(0);
        upper[k] = k ? _mm256_xor_si256(row(8 + k), row(7 + k)) : row(8);
    }
    const __m256i sixteen = _mm256_set1_epi8(16), top = _mm256_set1_epi8(char(0x80));
    auto half = [&](const __m256i* d, __m256i index) {
        __m256i out = _mm256_shuffle_epi8(d[0], index);
        for (int k = 1; k < 8; ++k) {
            index = _mm256_sub_epi8(index, sixteen);
            out = _mm256_xor_si256(out, _mm256_shuffle_epi8(d[k], index));
        }
        return out;
    };
    uint32_t x = 0;
    for (; x + 32 <= dwCount; x += 32) {
        const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pSrc + x));
        const __m256i out = _mm256_blendv_epi8(half(lower, v), half(upper, _mm256_xor_si256(v, top)), v);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pDst + x), out);
    }
    return x;
#else
    (void)pSrc, (void)pDst, (void)dwCount, (void)pTable;
    return 0;
#endif
}
