// color_correction_pairs.h: the SSE2 store of 16 three-byte pixels from words in column pairs, shared by
// the gradient-corrected bilinear and pixel grouping vector loops. Internal linkage: each including file
// is built for its own instruction set.
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <cstring>

namespace {

// The high eight bytes of v at p, any alignment, straight from the register (movhpd).
inline void StoreHigh(uint8_t* p, __m128i v)
{
    using TUnalignedDouble = double __attribute__((aligned(1), may_alias));
    *reinterpret_cast<TUnalignedDouble*>(p) = _mm_castsi128_pd(v)[1];
}

// Three-byte pixels from words of 0..255 in pairs (e, o: pixels 2k and 2k + 1 in lane k): each
// pair's six bytes are put together as the words blue | green of e, red of e | blue of o,
// green | red of o, and stored eight bytes at a time at six-byte steps (the high halves
// straight from the register), each store's two spare bytes rewritten by the next. The last
// pair goes out as four and two bytes, so nothing beyond the 16 pixels is touched, unless
// bSpareAfter: then the caller has the two bytes after them rewritten later, and the last
// store is eight bytes too.
template <bool bSpareAfter = false>
inline void StoreBgrPairs(uint8_t* p, __m128i be, __m128i ge, __m128i re, __m128i bo, __m128i go, __m128i ro)
{
    const __m128i w0 = _mm_or_si128(be, _mm_slli_epi16(ge, 8)), w1 = _mm_or_si128(re, _mm_slli_epi16(bo, 8));
    const __m128i w2 = _mm_or_si128(go, _mm_slli_epi16(ro, 8));
    const __m128i lo01 = _mm_unpacklo_epi16(w0, w1), hi01 = _mm_unpackhi_epi16(w0, w1);
    const __m128i lo2 = _mm_unpacklo_epi16(w2, _mm_setzero_si128()), hi2 = _mm_unpackhi_epi16(w2, _mm_setzero_si128());
    const __m128i q[4] = {_mm_unpacklo_epi32(lo01, lo2), _mm_unpackhi_epi32(lo01, lo2), _mm_unpacklo_epi32(hi01, hi2),
                          _mm_unpackhi_epi32(hi01, hi2)};
    for (int i = 0; i < 4; ++i) {
        _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 12 * i), q[i]);
        if (i < 3 || bSpareAfter) StoreHigh(p + 12 * i + 6, q[i]);
    }
    if constexpr (!bSpareAfter) {
        const __m128i last = _mm_unpackhi_epi64(q[3], q[3]);
        const uint32_t four = uint32_t(_mm_cvtsi128_si32(last));
        const uint16_t two = uint16_t(_mm_extract_epi16(last, 2));
        std::memcpy(p + 42, &four, 4);
        std::memcpy(p + 46, &two, 2);
    }
}

}  // namespace
