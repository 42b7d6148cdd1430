// apply_lut_avx2.cpp: an 8-bit table applied to 32 bytes at a time with AVX2 byte shuffles (this file alone
// is built with -mavx2).
#include "general/lut.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

// The table is cut into 16 rows of 16 entries. For row k, v ^ (16 k) is below 16 exactly in the
// lanes whose high nibble is k; adding 0x70 with saturation keeps those below 0x80 (their low nibble
// intact) and lifts every other lane to 0x80 or more, which vpshufb turns into 0. The rows' results
// are ORed. Runs only behind g_SSEChecker.UseAVX2() (see ApplyLut).
uint32_t ApplyLut8Line_avx2(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwCount, const uint8_t* pTable)
{
#if defined(__AVX2__)
    __m256i rows[16];
    for (int k = 0; k < 16; ++k)
        rows[k] = _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pTable + 16 * k)));
    const __m256i lift = _mm256_set1_epi8(0x70);
    uint32_t x = 0;
    for (; x + 32 <= dwCount; x += 32) {
        const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pSrc + x));
        __m256i out = _mm256_setzero_si256();
        for (int k = 0; k < 16; ++k) {
            const __m256i index = _mm256_adds_epu8(_mm256_xor_si256(v, _mm256_set1_epi8(char(16 * k))), lift);
            out = _mm256_or_si256(out, _mm256_shuffle_epi8(rows[k], index));
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pDst + x), out);
    }
    return x;
#else
    (void)pSrc, (void)pDst, (void)dwCount, (void)pTable;
    return 0;
#endif
}
