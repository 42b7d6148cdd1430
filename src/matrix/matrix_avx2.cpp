// matrix_avx2.cpp: the matrix line workers compiled for AVX2 (the only file of this subsystem built with -mavx2).
#include <immintrin.h>

#include "matrix/matrix_lines.h"
#include "matrix/matrix_sse2.h"

namespace {

// 256-bit registers for Filter3x3Bytes.
template <class TIsa>
struct TVec256 {
    using T = __m256i;
    static constexpr size_t kBytes = 32;
    KAIP_MATRIX_REGISTER_OPS(_mm256, si256)
};

// The tag of the line workers built here; they run only when g_SSEChecker.UseAVX2() is on.
struct TAvx2 {
    using TVector = TVec256<TAvx2>;

    // Colour correction of 8-bit pixels: four-byte ones as in SSE2 (CorrectBytesSse2), three-byte ones
    // 8 at a time in 32-bit lanes: products and sums wrap modulo 2^32 as the scalar rule's do, >> 16 is
    // arithmetic, and the two saturating packs clamp to 0..255. Each block reads 28 bytes from its first
    // pixel and writes 24, so a block runs only while 10 pixels remain (in place, the 4 extra bytes are
    // read before anyone writes them). Where every weight off the diagonal fits 16 bits (a saturation
    // matrix's), output k is the 32-bit product of input k plus one pmaddwd of the other two inputs (exact:
    // below 2^25), else three 32-bit products.
    template <int iStep>
    static uint32_t CorrectBytes(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwWidth, const int32_t* c, int iRed)
    {
        if constexpr (iStep == 4) return CorrectBytesSse2<TAvx2, 4>(pSrc, pDst, dwWidth, c, iRed);
        bool bPairs = true;
        for (int i = 0; i < 9; ++i) bPairs = bPairs && (i % 4 == 0 || c[i] == int16_t(c[i]));
        return bPairs ? CorrectBytes3<true>(pSrc, pDst, dwWidth, c, iRed)
                      : CorrectBytes3<false>(pSrc, pDst, dwWidth, c, iRed);
    }

    template <bool bPairs>
    static uint32_t CorrectBytes3(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwWidth, const int32_t* c, int iRed)
    {
        // pshufb controls that put the byte of input j (0 red, 1 green, 2 blue) of each of 4 pixels
        // (12 bytes) into the low 16 bits of a 32-bit lane and that of input k (if any) into the high 16.
        auto at = [&](int j) { return j == 0 ? iRed : j == 1 ? 1 : 2 - iRed; };
        auto control = [&](int j, int k) {
            alignas(16) int8_t a[16];
            for (int n = 0; n < 4; ++n) {
                a[4 * n] = int8_t(3 * n + at(j)), a[4 * n + 1] = a[4 * n + 3] = -1;
                a[4 * n + 2] = k < 0 ? -1 : int8_t(3 * n + at(k));
            }
            return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(a)));
        };
        // With bPairs, ctl[k] gives inputs k + 1 and k + 2 (modulo 3), which pmaddwd weighs for output k,
        // and input k + 1 alone under a mask; else ctl[j] gives input j.
        __m256i ctl[3], w[9], pairs[3];
        for (int k = 0; k < 3; ++k) {
            ctl[k] = bPairs ? control((k + 1) % 3, (k + 2) % 3) : control(k, -1);
            const int32_t lo = c[3 * k + (k + 1) % 3], hi = c[3 * k + (k + 2) % 3];
            pairs[k] = _mm256_set1_epi32(int32_t((uint32_t(lo) & 0xFFFF) | uint32_t(hi) << 16));
        }
        for (int i = 0; i < 9; ++i) w[i] = _mm256_set1_epi32(c[i]);
        const __m256i low = _mm256_set1_epi32(0xFFFF);
        const __m256i join =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, -1, -1, -1, -1));
        const __m256i halves = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
        uint32_t x = 0;
        for (; x + 10 <= dwWidth; x += 8) {
            const uint8_t* p = pSrc + size_t(x) * 3;
            const __m256i v = _mm256_set_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 12)),
                                               _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
            const __m256i in[3] = {_mm256_shuffle_epi8(v, ctl[0]), _mm256_shuffle_epi8(v, ctl[1]),
                                   _mm256_shuffle_epi8(v, ctl[2])};
            __m256i sum[3];  // by output, red, green, blue
            for (int k = 0; k < 3; ++k) {
                if constexpr (bPairs) {
                    const __m256i own = _mm256_and_si256(in[(k + 2) % 3], low);
                    sum[k] = _mm256_add_epi32(_mm256_mullo_epi32(own, w[4 * k]), _mm256_madd_epi16(in[k], pairs[k]));
                } else {
                    sum[k] = _mm256_add_epi32(
                        _mm256_add_epi32(_mm256_mullo_epi32(in[0], w[3 * k]), _mm256_mullo_epi32(in[1], w[3 * k + 1])),
                        _mm256_mullo_epi32(in[2], w[3 * k + 2]));
                }
                sum[k] = _mm256_srai_epi32(sum[k], 16);
            }
            // Outputs red, green, blue to byte positions iRed, 1, 2 - iRed.
            const __m256i out0 = iRed == 0 ? sum[0] : sum[2], out2 = iRed == 0 ? sum[2] : sum[0];
            const __m256i bytes = _mm256_packus_epi16(_mm256_packs_epi32(out0, sum[1]), _mm256_packs_epi32(out2, out2));
            const __m256i pixels = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(bytes, join), halves);
            uint8_t* q = pDst + size_t(x) * 3;
            _mm_storeu_si128(reinterpret_cast<__m128i*>(q), _mm256_castsi256_si128(pixels));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(q + 16), _mm256_extracti128_si256(pixels, 1));
        }
        return x;
    }
};

}  // namespace

KAIP_MATRIX_TABLES(TAvx2, Avx2)
