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
    // read before anyone writes them).
    template <int iStep>
    static uint32_t CorrectBytes(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwWidth, const int32_t* c, int iRed)
    {
        if constexpr (iStep == 4) return CorrectBytesSse2<TAvx2, 4>(pSrc, pDst, dwWidth, c, iRed);
        const __m256i spread0 =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, -1, -1, -1, 3, -1, -1, -1, 6, -1, -1, -1, 9, -1, -1, -1));
        const __m256i one = _mm256_set1_epi32(1);  // next sample of each pixel: pshufb indices + 1
        const __m256i join =
            _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 4, 8, 1, 5, 9, 2, 6, 10, 3, 7, 11, -1, -1, -1, -1));
        const __m256i halves = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
        __m256i k[9];
        for (int i = 0; i < 9; ++i) k[i] = _mm256_set1_epi32(c[i]);
        uint32_t x = 0;
        for (; x + 10 <= dwWidth; x += 8) {
            const uint8_t* p = pSrc + size_t(x) * 3;
            const __m256i v = _mm256_set_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 12)),
                                               _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
            const __m256i spread1 = _mm256_add_epi32(spread0, one), spread2 = _mm256_add_epi32(spread1, one);
            const __m256i at[3] = {_mm256_shuffle_epi8(v, spread0), _mm256_shuffle_epi8(v, spread1),
                                   _mm256_shuffle_epi8(v, spread2)};
            const __m256i r = at[iRed], g = at[1], b = at[2 - iRed];
            auto row = [&](int i) {
                const __m256i sum =
                    _mm256_add_epi32(_mm256_add_epi32(_mm256_mullo_epi32(k[i], r), _mm256_mullo_epi32(k[i + 1], g)),
                                     _mm256_mullo_epi32(k[i + 2], b));
                return _mm256_srai_epi32(sum, 16);
            };
            __m256i out[3];
            out[iRed] = row(0), out[1] = row(3), out[2 - iRed] = row(6);
            const __m256i bytes =
                _mm256_packus_epi16(_mm256_packs_epi32(out[0], out[1]), _mm256_packs_epi32(out[2], out[2]));
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
