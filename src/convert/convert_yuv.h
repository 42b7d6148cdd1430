// convert_yuv.h: 4:2:2 colour in 16-bit lanes, written once over thin register traits V for the SSE2 and AVX2
// builds. The including file defines KAIP_VECTOR_TARGET (its target attribute, empty for SSE2) and its traits
// first; everything here has internal linkage, so the builds never mix.
#pragma once

#include "convert/convert_simd.h"

namespace convert {
namespace {

// V gives: the register type T; Set16; Add16, Sub16, MulLo16 and Srai16<k> on 16-bit lanes; PackUS16 (the words
// of two registers to bytes with unsigned saturation, in the instruction's own order); Luma<kLumaFirst>(s), the
// luma of each pixel of a register of 4:2:2 as a word, and Chroma<kLumaFirst>(s, u, v), the U and V of each
// pixel's pair as words (luma at the even bytes when kLumaFirst, U before V).

// The colour sums of the coefficient set K with each coefficient k split into 256 kHi + kLo, kLo the
// remainder nearest 0: (sum of k x + 128) >> 8 = sum of kHi x + ((sum of kLo x + 128) >> 8) exactly,
// because the parts taken out are multiples of 256, and the kLo sums fit 16-bit lanes where 298 (Y - 16)
// alone would not. Per pixel the remainder sum starts at kYLo Y + kL, kL taking the 128 and the whole luma
// offset (kY kYOffset, of which the multiple of 256 comes out with the shift); the whole part is Y plus the
// chroma's kHi multiples.
template <class K>
struct TSplit {
    static constexpr int32_t Hi(int32_t k) { return k + 128 >= 0 ? (k + 128) / 256 : -((255 - (k + 128)) / 256); }
    static constexpr int32_t Lo(int32_t k) { return k - 256 * Hi(k); }
    static constexpr int32_t kYLo = Lo(K::kY), kL = 128 - K::kY * K::kYOffset;
    static constexpr int32_t kRVHi = Hi(K::kRV), kRVLo = Lo(K::kRV), kBUHi = Hi(K::kBU), kBULo = Lo(K::kBU);
    static constexpr int32_t kGUHi = Hi(K::kGU), kGULo = Lo(K::kGU), kGVHi = Hi(K::kGV), kGVLo = Lo(K::kGV);
    static constexpr int32_t Abs(int32_t v) { return v < 0 ? -v : v; }
    static constexpr bool Fits(int32_t cu, int32_t cv)
    {
        const int32_t luma = Abs(kL) > Abs(255 * kYLo + kL) ? Abs(kL) : Abs(255 * kYLo + kL);
        return luma + (Abs(cu) + Abs(cv)) * 128 < 32768;
    }
    static_assert(Hi(K::kY) == 1, "the whole part takes the luma once");
    static_assert(Fits(0, kRVLo) && Fits(kGULo, kGVLo) && Fits(kBULo, 0), "every remainder sum fits a 16-bit lane");
};

// acc + k v in 16-bit lanes, the small factors by additions.
template <class V, int32_t k>
KAIP_VECTOR_TARGET inline typename V::T AddTimes(typename V::T acc, typename V::T v)
{
    if constexpr (k == 0) return acc;
    if constexpr (k == 1) return V::Add16(acc, v);
    if constexpr (k == -1) return V::Sub16(acc, v);
    if constexpr (k == 2) return V::Add16(acc, V::Add16(v, v));
    return V::Add16(acc, V::MulLo16(v, V::Set16(int16_t(k))));
}

// One channel from its split sums: whole part plus the remainder sum shifted down.
template <class V, int32_t kULo, int32_t kVLo, int32_t kUHi, int32_t kVHi>
KAIP_VECTOR_TARGET inline typename V::T Channel(typename V::T rest, typename V::T whole, typename V::T u,
                                                typename V::T v)
{
    const typename V::T lo = AddTimes<V, kULo>(AddTimes<V, kVLo>(rest, v), u);
    return V::Add16(V::template Srai16<8>(lo), AddTimes<V, kUHi>(AddTimes<V, kVHi>(whole, v), u));
}

// B, G, R words of the pixels of one register of 4:2:2, by the split sums of TSplit<K>.
template <class V, class K, bool kLumaFirst>
KAIP_VECTOR_TARGET inline void YuvToWords(typename V::T s, typename V::T& b, typename V::T& g, typename V::T& r)
{
    using T = TSplit<K>;
    using R = typename V::T;
    const R y = V::template Luma<kLumaFirst>(s), c128 = V::Set16(128);
    R u, v;
    V::template Chroma<kLumaFirst>(s, u, v);
    u = V::Sub16(u, c128), v = V::Sub16(v, c128);
    const R rest = AddTimes<V, T::kYLo>(V::Set16(int16_t(T::kL)), y);
    r = Channel<V, 0, T::kRVLo, 0, T::kRVHi>(rest, y, u, v);
    g = Channel<V, T::kGULo, T::kGVLo, T::kGUHi, T::kGVHi>(rest, y, u, v);
    b = Channel<V, T::kBULo, 0, T::kBUHi, 0>(rest, y, u, v);
}

// The byte planes of the pixels of two registers of 4:2:2 as the saturating pack orders them, clamped to 0..255.
template <class V, class K, bool kLumaFirst>
KAIP_VECTOR_TARGET inline void YuvPlanes(typename V::T s0, typename V::T s1, typename V::T& b, typename V::T& g,
                                         typename V::T& r)
{
    typename V::T b0, g0, r0, b1, g1, r1;
    YuvToWords<V, K, kLumaFirst>(s0, b0, g0, r0);
    YuvToWords<V, K, kLumaFirst>(s1, b1, g1, r1);
    b = V::PackUS16(b0, b1), g = V::PackUS16(g0, g1), r = V::PackUS16(r0, r1);
}

}  // namespace
}  // namespace convert
