// rotate_sse2.cpp: the quarter turn's blocks of 16 x 16 bytes, transposed in SSE2 registers.
#include "core/unidef.h"
#include "general/geometry.h"

#if defined(__SSE2__)
#include <emmintrin.h>

using geometry::Line;

namespace {

// Interleaves the low or high halves of two registers in units of one pixel.
template <unsigned P>
inline __m128i UnpackLo(__m128i a, __m128i b)
{
    if constexpr (P == 1) return _mm_unpacklo_epi8(a, b);
    if constexpr (P == 2) return _mm_unpacklo_epi16(a, b);
    if constexpr (P == 4) return _mm_unpacklo_epi32(a, b);
}
template <unsigned P>
inline __m128i UnpackHi(__m128i a, __m128i b)
{
    if constexpr (P == 1) return _mm_unpackhi_epi8(a, b);
    if constexpr (P == 2) return _mm_unpackhi_epi16(a, b);
    if constexpr (P == 4) return _mm_unpackhi_epi32(a, b);
}

// Blocks of K x K pixels, K = 16 / P: K registers are read along the source rows, and log2(K)
// rounds of interleaving row i with row i + K/2 transpose them into destination rows.
template <unsigned P>
void TurnBlocks(const uint8_t* s0, ptrdiff_t dc, ptrdiff_t dr, const KaipImgInfo& dst, uint32_t r0, uint32_t r1,
                uint32_t c0, uint32_t c1)
{
    constexpr unsigned K = 16 / P;
    // A source row read backwards starts at its lowest address and yields the rows reversed.
    const ptrdiff_t back = dr < 0 ? ptrdiff_t(K - 1) * dr : 0;
    for (uint32_t r = r0; r < r1; r += K)
        for (uint32_t c = c0; c < c1; c += K) {
            __m128i v[K], t[K];
            const uint8_t* s = s0 + ptrdiff_t(r) * dr + ptrdiff_t(c) * dc + back;
#pragma GCC unroll 16
            for (unsigned i = 0; i < K; ++i, s += dc) v[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
#pragma GCC unroll 4
            for (unsigned round = K; round > 1; round /= 2) {
#pragma GCC unroll 8
                for (unsigned i = 0; i < K / 2; ++i) {
                    t[2 * i] = UnpackLo<P>(v[i], v[i + K / 2]);
                    t[2 * i + 1] = UnpackHi<P>(v[i], v[i + K / 2]);
                }
#pragma GCC unroll 16
                for (unsigned i = 0; i < K; ++i) v[i] = t[i];
            }
#pragma GCC unroll 16
            for (unsigned j = 0; j < K; ++j)
                _mm_storeu_si128(reinterpret_cast<__m128i*>(Line(dst, dr < 0 ? r + K - 1 - j : r + j) + size_t(c) * P),
                                 v[j]);
        }
}

}  // namespace
#endif

bool geometry::TurnBlocks_intr(unsigned P, const uint8_t* s0, ptrdiff_t dc, ptrdiff_t dr, const KaipImgInfo& dst,
                               uint32_t r0, uint32_t r1, uint32_t c0, uint32_t c1)
{
#if defined(__SSE2__)
    if (!g_SSEChecker.m_bUseSSE2) return false;
    switch (P) {
        case 1:
            TurnBlocks<1>(s0, dc, dr, dst, r0, r1, c0, c1);
            return true;
        case 2:
            TurnBlocks<2>(s0, dc, dr, dst, r0, r1, c0, c1);
            return true;
        case 4:
            TurnBlocks<4>(s0, dc, dr, dst, r0, r1, c0, c1);
            return true;
        default:
            return false;
    }
#else
    (void)P, (void)s0, (void)dc, (void)dr, (void)dst, (void)r0, (void)r1, (void)c0, (void)c1;
    return false;
#endif
}
