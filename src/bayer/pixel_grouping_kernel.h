// pixel_grouping_kernel.h: the loops of pixel_grouping_simd.h written once over a few operations on
// 16-bit lanes. Included only by pixel_grouping_sse2.cpp and pixel_grouping_avx2.cpp, each built for
// its own instruction set: everything here has internal linkage, so the copies never mix.
#pragma once

#include <immintrin.h>

#include <array>
#include <cstring>

#include "bayer/pixel_grouping_simd.h"

namespace {

// The operations without an operator in vector notation, on registers R_ (floats F_) of the
// intrinsics prefixed P: Lo and Hi interleave the first or second halves of a and b (as 32-bit
// lanes a + b * 65536) within each 128-bit part, Narrow packs two such halves back in order
// (saturating), Madd sums the products of lane pairs, ToFloat and Trunc convert 32-bit lanes
// to float and back (truncating). One definition for both register widths.
#define KAIP_GROUPING_WIDE(Name, R_, F_, P)                             \
    struct Name {                                                       \
        using R = R_;                                                   \
        static R Lo(R a, R b) { return P##_unpacklo_epi16(a, b); }      \
        static R Hi(R a, R b) { return P##_unpackhi_epi16(a, b); }      \
        static R Narrow(R lo, R hi) { return P##_packs_epi32(lo, hi); } \
        static R Madd(R a, R b) { return P##_madd_epi16(a, b); }        \
        static R Add32(R a, R b) { return P##_add_epi32(a, b); }        \
        static F_ ToFloat(R v) { return P##_cvtepi32_ps(v); }           \
        static R Trunc(F_ v) { return P##_cvttps_epi32(v); }            \
    };

KAIP_GROUPING_WIDE(TWide128, __m128i, __m128, _mm)
#if defined(__AVX2__)
KAIP_GROUPING_WIDE(TWide256, __m256i, __m256, _mm256)
#endif
#undef KAIP_GROUPING_WIDE

// 16-bit lanes in registers of Wide (32-bit lanes and floats for the divisions), written in the
// compiler's vector notation, which builds for the instruction set of the including file.
template <class Wide>
struct TLanes {
    static constexpr uint32_t kBytes = sizeof(typename Wide::R);
    typedef int16_t T __attribute__((vector_size(kBytes)));
    typedef uint16_t U __attribute__((vector_size(kBytes)));
    typedef uint32_t UI __attribute__((vector_size(kBytes)));
    typedef int32_t I __attribute__((vector_size(kBytes)));
    typedef float F __attribute__((vector_size(kBytes)));
    using R = typename Wide::R;
    static constexpr uint32_t N = kBytes / 2;
    template <class P>
    static T Load(const P* p)
    {
        T v;
        std::memcpy(&v, p, kBytes);
        return v;
    }
    static void Store(int16_t* p, T v) { std::memcpy(p, &v, kBytes); }
    static T Set(int16_t v) { return T{} + v; }
    static T Zero() { return T{}; }
    static T Add(T a, T b) { return T(U(a) + U(b)); }  // wrapping, as the instructions do
    static T Sub(T a, T b) { return T(U(a) - U(b)); }
    static T Mul(T a, T b) { return T(U(a) * U(b)); }
    static T Max(T a, T b) { return a > b ? a : b; }
    static T Min(T a, T b) { return a < b ? a : b; }
    static T Gt(T a, T b) { return a > b; }
    static T And(T a, T b) { return a & b; }
    static T Or(T a, T b) { return a | b; }
    static T Select(T m, T a, T b) { return m ? a : b; }
    static T Avg(T a, T b) { return T((U(a) + U(b) + 1) >> 1); }  // unsigned
    template <int S>
    static T Sra(T a)
    {
        return a >> S;
    }
    template <int S>
    static T Srl(T a)
    {
        return T(U(a) >> S);
    }
    static T Lo(T a, T b) { return T(Wide::Lo(R(a), R(b))); }
    static T Hi(T a, T b) { return T(Wide::Hi(R(a), R(b))); }
    static T Narrow(T lo, T hi) { return T(Wide::Narrow(R(lo), R(hi))); }
    static T Madd(T a, T b) { return T(Wide::Madd(R(a), R(b))); }
    static T Add32(T a, T b) { return T(Wide::Add32(R(a), R(b))); }
    static T Sub32(T a, T b) { return T(UI(a) - UI(b)); }
    template <int S>
    static T Shl32(T a)
    {
        return T(UI(a) << S);
    }
    static T Set32(int32_t v) { return T(I{} + v); }
    static T Gt32(T a, T b) { return T(I(a) > I(b)); }
    static T Max32(T a, T b) { return T(I(a) > I(b) ? I(a) : I(b)); }
    static T Min32(T a, T b) { return T(I(a) < I(b) ? I(a) : I(b)); }
    static F ToFloat(T v) { return F(Wide::ToFloat(R(v))); }
    static T Trunc(F v) { return T(Wide::Trunc(v)); }
    static F SetF(float v) { return F{} + v; }
    static F AddF(F a, F b) { return a + b; }
    static F MulF(F a, F b) { return a * b; }
    static F DivF(F a, F b) { return a / b; }
    static F MaxF(F a, F b) { return a > b ? a : b; }
    static F MinF(F a, F b) { return a < b ? a : b; }
};

template <class V, unsigned Bits>
struct TGroupingVector {
    static constexpr int16_t kMax = (1 << Bits) - 1;
    using T = typename V::T;
    using F = typename V::F;

    static T AbsDiff(T a, T b) { return V::Sub(V::Max(a, b), V::Min(a, b)); }

    // Truncated quotients of 32-bit numerators (two halves) by 16-bit divisors. Float division
    // truncates to the exact quotient where the numerator is below 2^24 and the quotient below
    // 2^Bits with a divisor below 2^Bits: a quotient that is not an integer lies at least
    // 1/(2^Bits - 1) below the next one, more than float's rounding there.
    static T Quotient(T numLo, T numHi, T den)
    {
        const T z = V::Zero();
        const T lo = V::Trunc(V::DivF(V::ToFloat(numLo), V::ToFloat(V::Lo(den, z))));
        const T hi = V::Trunc(V::DivF(V::ToFloat(numHi), V::ToFloat(V::Hi(den, z))));
        return V::Narrow(lo, hi);
    }

    // Hue transit (see HueTransit in pixel_grouping.cpp). Where l2 lies strictly between l1 and
    // l3, a < b and the numerator is at most (2^Bits - 1) b + b / 2: for 8-bit values below
    // 2^16, so 16-bit products are exact as unsigned numbers, deeper ones take pmaddwd. Other
    // lanes take the curved value.
    static T HueTransit(T l1, T l2, T l3, T v1, T v3)
    {
        const T z = V::Zero();
        const T monotonic = V::Or(V::And(V::Gt(l2, l1), V::Gt(l3, l2)), V::And(V::Gt(l1, l2), V::Gt(l2, l3)));
        const T a = AbsDiff(l2, l1), b = AbsDiff(l3, l1), den = V::Max(b, V::Set(1));
        const T d = V::Sub(b, a), half = V::template Srl<1>(b);
        T proportional;
        if constexpr (Bits == 8) {
            const T num = V::Add(V::Add(V::Mul(v1, d), V::Mul(v3, a)), half);
            proportional = Quotient(V::Lo(num, z), V::Hi(num, z), den);
        } else {
            const T lo = V::Add32(V::Madd(V::Lo(v1, v3), V::Lo(d, a)), V::Lo(half, z));
            const T hi = V::Add32(V::Madd(V::Hi(v1, v3), V::Hi(d, a)), V::Hi(half, z));
            proportional = Quotient(lo, hi, den);
        }
        const T twice = V::Add(V::Add(v1, v3), l2);
        const T curved = V::template Sra<2>(V::Add(V::Sub(V::Sub(V::Add(twice, twice), l1), l3), V::Set(2)));
        return V::Select(monotonic, proportional, V::Min(V::Max(curved, z), V::Set(kMax)));
    }

    // 4096 / (1 + g) truncated for g in 8-bit steps, as the scalar rule computes it in float.
    static T Weight(T g)
    {
        const T z = V::Zero(), g1 = V::Add(V::template Sra<Bits - 8>(g), V::Set(1));
        const F k = V::SetF(4096.0f);
        return V::Narrow(V::Trunc(V::DivF(k, V::ToFloat(V::Lo(g1, z)))),
                         V::Trunc(V::DivF(k, V::ToFloat(V::Hi(g1, z)))));
    }

    // The weighted mean of one half: the sum (below 2^24 in magnitude: a weight times its estimate
    // is at most 4096 * 1020) clamped to [0, 255 W] and divided by W = 4 * weights, rounded. W is
    // at most 2^16 and num + W / 2 below 2^24, so every step is exact in float, and the quotient
    // (below 256, at least 1/W from the next integer unless it is one) truncates exactly.
    static T Rounded(T sum, T weights)
    {
        if constexpr (Bits > 8) return RoundedDeep(sum, weights);
        const F w4 = V::MulF(V::ToFloat(weights), V::SetF(4.0f));
        const F num = V::MinF(V::MaxF(V::ToFloat(sum), V::SetF(0.0f)), V::MulF(w4, V::SetF(255.0f)));
        return V::Trunc(V::DivF(V::AddF(num, V::MulF(w4, V::SetF(0.5f))), w4));
    }

    // The same for deeper samples: the sum (below 2^28) clamped to [0, (2^Bits - 1) W] in 32-bit
    // lanes; float division gives the rounded quotient q to within one (numerator below 2^28,
    // quotient below 2^12), and the remainder, with q times the weights from pmaddwd (both
    // below 2^15), puts it right.
    static T RoundedDeep(T sum, T weights)
    {
        const T w4 = V::template Shl32<2>(weights);
        const T num = V::Min32(V::Max32(sum, V::Zero()), V::Sub32(V::template Shl32<Bits>(w4), w4));
        const T n = V::Add32(num, V::Add32(weights, weights));  // + W / 2
        const T q = V::Trunc(V::DivF(V::ToFloat(n), V::ToFloat(w4)));
        const T r = V::Sub32(n, V::template Shl32<2>(V::Madd(q, weights)));
        return V::Sub32(V::Add32(q, V::Gt32(V::Zero(), r)), V::Gt32(r, V::Sub32(w4, V::Set32(1))));
    }

    static void Green(const TGreenTaps& t, uint32_t k1)
    {
        const T z = V::Zero();
        for (uint32_t k = 1; k < k1; k += V::N) {
            const T c = V::Load(t.c + k), n = V::Load(t.n + k), s = V::Load(t.s + k), w = V::Load(t.w + k);
            const T e = V::Load(t.e + k), n2 = V::Load(t.n2 + k), s2 = V::Load(t.s2 + k);
            const T w2 = V::Load(t.w2 + k), e2 = V::Load(t.e2 + k);
            auto weight = [&](T far, T near, T opposite) {
                const T d = AbsDiff(c, far);
                return Weight(V::Add(V::Add(d, d), AbsDiff(near, opposite)));
            };
            auto estimate = [&](T far, T near, T opposite) {  // 3 near + opposite + c - far
                return V::Sub(V::Add(V::Add(V::Add(near, V::Add(near, near)), opposite), c), far);
            };
            const T wn = weight(n2, n, s), we = weight(e2, e, w), ww = weight(w2, w, e), ws = weight(s2, s, n);
            const T en = estimate(n2, n, s), ee = estimate(e2, e, w), ew = estimate(w2, w, e), es = estimate(s2, s, n);
            const T weights = V::Add(V::Add(wn, we), V::Add(ww, ws));  // at most 16384
            const T lo = V::Add32(V::Madd(V::Lo(wn, we), V::Lo(en, ee)), V::Madd(V::Lo(ww, ws), V::Lo(ew, es)));
            const T hi = V::Add32(V::Madd(V::Hi(wn, we), V::Hi(en, ee)), V::Madd(V::Hi(ww, ws), V::Hi(ew, es)));
            V::Store(t.pOut + k, V::Narrow(Rounded(lo, V::Lo(weights, z)), Rounded(hi, V::Hi(weights, z))));
        }
    }

    static void GreenSites(const TGreenSiteTaps& t, uint32_t k1)
    {
        for (uint32_t k = 1; k < k1; k += V::N) {
            const T c = V::Load(t.c + k);
            V::Store(t.pFirst + k,
                     HueTransit(V::Load(t.gL + k), c, V::Load(t.gR + k), V::Load(t.left + k), V::Load(t.right + k)));
            V::Store(t.pSecond + k,
                     HueTransit(V::Load(t.gUp + k), c, V::Load(t.gDown + k), V::Load(t.up + k), V::Load(t.down + k)));
        }
    }

    static void OtherSites(const TOtherSiteTaps& t, uint32_t k1)
    {
        for (uint32_t k = 1; k < k1; k += V::N) {
            const T c = V::Load(t.c + k), gc = V::Load(t.gc + k);
            const T gUpL = V::Load(t.gUpL + k), gUpR = V::Load(t.gUpR + k);
            const T gDownL = V::Load(t.gDownL + k), gDownR = V::Load(t.gDownR + k);
            const T upL = V::Load(t.upL + k), upR = V::Load(t.upR + k);
            const T downL = V::Load(t.downL + k), downR = V::Load(t.downR + k);
            const T ne = V::Add(V::Add(V::Add(AbsDiff(upR, downL), AbsDiff(V::Load(t.up2R + k), c)),
                                       V::Add(AbsDiff(c, V::Load(t.down2L + k)), AbsDiff(gUpR, gc))),
                                AbsDiff(gc, gDownL));
            const T nw = V::Add(V::Add(V::Add(AbsDiff(upL, downR), AbsDiff(V::Load(t.up2L + k), c)),
                                       V::Add(AbsDiff(c, V::Load(t.down2R + k)), AbsDiff(gUpL, gc))),
                                AbsDiff(gc, gDownR));
            const T a = HueTransit(gUpR, gc, gDownL, upR, downL);  // north-east
            const T b = HueTransit(gUpL, gc, gDownR, upL, downR);  // north-west
            V::Store(t.pFirst + k, V::Select(V::Gt(nw, ne), a, V::Select(V::Gt(ne, nw), b, V::Avg(a, b))));
        }
    }

    static void Split(const uint8_t* pLine, uint32_t dwWidth, const TSplitLine& out)
    {
        if constexpr (Bits > 8) {  // two-byte samples masked to the depth; the compiler vectorises it
            for (uint32_t x = 0; x < dwWidth; ++x) {
                uint16_t v;
                std::memcpy(&v, pLine + 2 * x, 2);
                out.half[x & 1][x >> 1] = int16_t(v & kMax);
            }
            return;
        }
        uint32_t x = 0;
        for (; x + 2 * V::N <= dwWidth; x += 2 * V::N) {
            const T v = V::Load(pLine + x);
            V::Store(out.half[0] + x / 2, V::And(v, V::Set(0xFF)));
            V::Store(out.half[1] + x / 2, V::template Srl<8>(v));
        }
        for (; x < dwWidth; ++x) out.half[x & 1][x >> 1] = pLine[x];
    }
};

// Bytes of 16 pixels of one colour from its two parity planes at k (pixel 2k first), the values
// shifted down by Shift (the identity LUT of deeper samples keeps their top 8 bits).
template <int Shift>
__m128i PixelBytes(const int16_t* const* pPlanes, uint32_t k)
{
    const __m128i even = _mm_srli_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pPlanes[0] + k)), Shift);
    const __m128i odd = _mm_srli_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pPlanes[1] + k)), Shift);
    return _mm_unpacklo_epi8(_mm_packus_epi16(even, even), _mm_packus_epi16(odd, odd));
}

// SSE2 stores whatever the set: the loop is bound by memory. Four-byte pixels go out as they
// are; three-byte pixels are squeezed two per 64-bit half, each half stored as 8 bytes of
// which the next store overwrites the 2 beyond its 6 (the last two land in the next pixel).
template <int Shift>
uint32_t StoreIdentity(const TColourPlanes& c, uint32_t x0, uint32_t x1, uint32_t dwDstBytes, uint8_t* pOut)
{
    uint32_t x = x0;
    for (; x + 16 < x1; x += 16) {
        const __m128i b = PixelBytes<Shift>(c.b, x / 2), g = PixelBytes<Shift>(c.g, x / 2);
        const __m128i r = PixelBytes<Shift>(c.r, x / 2);
        const __m128i bgLo = _mm_unpacklo_epi8(b, g), bgHi = _mm_unpackhi_epi8(b, g);
        const __m128i r0Lo = _mm_unpacklo_epi8(r, _mm_setzero_si128()),
                      r0Hi = _mm_unpackhi_epi8(r, _mm_setzero_si128());
        const __m128i q[4] = {_mm_unpacklo_epi16(bgLo, r0Lo), _mm_unpackhi_epi16(bgLo, r0Lo),
                              _mm_unpacklo_epi16(bgHi, r0Hi), _mm_unpackhi_epi16(bgHi, r0Hi)};
        uint8_t* p = pOut + size_t(x) * dwDstBytes;
        if (dwDstBytes == 4) {
            for (int i = 0; i < 4; ++i) _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 16 * i), q[i]);
            continue;
        }
        const __m128i keep0 = _mm_set1_epi64x(0xFFFFFF), keep1 = _mm_set1_epi64x(0xFFFFFF000000);
        for (int i = 0; i < 4; ++i) {
            const __m128i v = _mm_or_si128(_mm_and_si128(q[i], keep0), _mm_and_si128(_mm_srli_epi64(q[i], 8), keep1));
            _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 12 * i), v);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(p + 12 * i + 6), _mm_unpackhi_epi64(v, v));
        }
    }
    return x;
}

template <class Wide, unsigned Bits>
constexpr TGroupingLoops GroupingLoops()
{
    using K = TGroupingVector<TLanes<Wide>, Bits>;
    return {K::Split, K::Green, K::GreenSites, K::OtherSites, StoreIdentity<Bits - 8>};
}

// The loops of 8-, 10- and 12-bit samples.
template <class Wide>
constexpr std::array<TGroupingLoops, 3> GroupingDepths()
{
    return {GroupingLoops<Wide, 8>(), GroupingLoops<Wide, 10>(), GroupingLoops<Wide, 12>()};
}

}  // namespace
