// pixel_grouping_kernel.h: the loops of pixel_grouping_simd.h written once over a few operations on
// 16-bit lanes. Included only by pixel_grouping_sse2.cpp and pixel_grouping_avx2.cpp, each built for
// its own instruction set: everything here has internal linkage, so the copies never mix.
#pragma once

#include <immintrin.h>

#include <array>
#include <cstring>
#include <type_traits>

#include "bayer/color_correction_pairs.h"
#include "bayer/pixel_grouping_simd.h"
#if defined(__AVX2__)
#include "bayer/bilinear_kernel.h"  // V256: the 32-pixel BGR and BGRA stores
#endif

namespace {

// The operations without an operator in vector notation, on registers R_ (floats F_) of the
// intrinsics prefixed P: Lo and Hi interleave the first or second halves of a and b (as 32-bit
// lanes a + b * 65536) within each 128-bit part, Narrow packs two such halves back in order
// (saturating; NarrowInOrder keeps memory order across 128-bit parts, IN_ORDER), Madd sums the
// products of lane pairs, ToFloat and Trunc convert 32-bit lanes to float and back (truncating),
// MoveMask gathers the top bit of every byte, Abs (SSSE3 on) is pabsw. One definition for both
// register widths.
#if defined(__SSSE3__)
#define KAIP_GROUPING_ABS(P)     \
    static R Abs(R v)            \
    {                            \
        return P##_abs_epi16(v); \
    }
#else
#define KAIP_GROUPING_ABS(P)
#endif
#define KAIP_GROUPING_WIDE(Name, R_, F_, P, IN_ORDER)                   \
    struct Name {                                                       \
        using R = R_;                                                   \
        static R Lo(R a, R b) { return P##_unpacklo_epi16(a, b); }      \
        static R Hi(R a, R b) { return P##_unpackhi_epi16(a, b); }      \
        static R Narrow(R lo, R hi) { return P##_packs_epi32(lo, hi); } \
        static R Madd(R a, R b) { return P##_madd_epi16(a, b); }        \
        static R Add32(R a, R b) { return P##_add_epi32(a, b); }        \
        static F_ ToFloat(R v) { return P##_cvtepi32_ps(v); }           \
        static R Trunc(F_ v) { return P##_cvttps_epi32(v); }            \
        static int MoveMask(R v) { return P##_movemask_epi8(v); }       \
        KAIP_GROUPING_ABS(P)                                            \
        static R NarrowInOrder(R lo, R hi)                              \
        {                                                               \
            const R v = P##_packs_epi32(lo, hi);                        \
            return IN_ORDER;                                            \
        }                                                               \
    };

KAIP_GROUPING_WIDE(TWide128, __m128i, __m128, _mm, v)
#if defined(__AVX2__)
KAIP_GROUPING_WIDE(TWide256, __m256i, __m256, _mm256, _mm256_permute4x64_epi64(v, 0xD8))
#endif
#undef KAIP_GROUPING_WIDE
#undef KAIP_GROUPING_ABS

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
    static T Eq(T a, T b) { return a == b; }
    static bool Any(T m) { return Wide::MoveMask(R(m)) != 0; }
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
    static T NarrowInOrder(T lo, T hi) { return T(Wide::NarrowInOrder(R(lo), R(hi))); }
#if defined(__SSSE3__)
    static T Abs(T v)
    {
        return T(Wide::Abs(R(v)));
    }
#endif
    static T Madd(T a, T b)
    {
        return T(Wide::Madd(R(a), R(b)));
    }
    static T Add32(T a, T b)
    {
        return T(Wide::Add32(R(a), R(b)));
    }
    static T Sub32(T a, T b)
    {
        return T(UI(a) - UI(b));
    }
    template <int S>
    static T Srl32(T a)
    {
        return T(UI(a) >> S);
    }
    template <int S>
    static T Shl32(T a)
    {
        return T(UI(a) << S);
    }
    static T Set32(int32_t v)
    {
        return T(I{} + v);
    }
    static T Gt32(T a, T b)
    {
        return T(I(a) > I(b));
    }
    static F ToFloat(T v)
    {
        return F(Wide::ToFloat(R(v)));
    }
    static T Trunc(F v)
    {
        return T(Wide::Trunc(v));
    }
    static F SetF(float v)
    {
        return F{} + v;
    }
    static F MulF(F a, F b)
    {
        return a * b;
    }
    static F DivF(F a, F b)
    {
        return a / b;
    }
};

template <class V, unsigned Bits>
struct TGroupingVector {
    static constexpr int16_t kMax = (1 << Bits) - 1;
    using T = typename V::T;
    using F = typename V::F;

    // |a - b| (the values are at most 2^15 apart): SSSE3's pabsw where the set has it.
    static T AbsDiff(T a, T b)
    {
#if defined(__SSSE3__)
        return V::Abs(V::Sub(a, b));
#else
        return V::Sub(V::Max(a, b), V::Min(a, b));
#endif
    }

    // Hue transit (see HueTransit in pixel_grouping.cpp). Every sum fits 16 bits:
    // 2 (v1 + v3) + 2 l2 - l1 - l3 lies within 6 (2^Bits - 1) of zero.
    static T HueTransit(T l1, T l2, T l3, T v1, T v3)
    {
        const T low = V::Min(l1, l3), high = V::Max(l1, l3);
        const T monotonic = V::And(V::Gt(l2, low), V::Gt(high, l2));
        const T sum = V::Add(v1, v3), twice = V::Add(sum, V::Sub(V::Add(l2, l2), V::Add(low, high)));
        const T follow = V::template Sra<1>(V::Add(twice, V::Set(1)));
        const T curved = V::template Sra<2>(V::Add(V::Add(sum, twice), V::Set(2)));
        return V::Select(monotonic, V::Min(V::Max(follow, V::Min(v1, v3)), V::Max(v1, v3)),
                         V::Min(V::Max(curved, V::Zero()), V::Set(kMax)));
    }

    // The weight of a direction from its gradient g in 8-bit steps: (255 - g)^2 / 16 + 1 with g
    // clipped to 255; the square, at most 65025, fits the unsigned lanes.
    static T Weight(T g)
    {
        const T k = V::Max(V::Sub(V::Set(255), g), V::Zero());
        return V::Add(V::template Srl<4>(V::Mul(k, k)), V::Set(1));
    }

    // The weighted mean of one half, rounded but not yet clamped: num is the sum plus W / 2 (W = 4
    // times the weights), floor(num / W) the result. Rounding is monotonic, so clamping it to the
    // depth afterwards equals clamping the sum to [0, (2^Bits - 1) W] first; truncation differs
    // from the floor only below zero, which the clamp removes. 8 bits: num is below 2^24 in
    // magnitude and W at most 2^16 (the top weight, 4065, comes with a zero gradient and an
    // estimate plus 2 of at most 1022; a larger gradient lowers the weight faster than it can
    // raise the estimate, and 4 x 4065 x 1022 < 2^24), so float is exact and the quotient, where
    // it is below 256, lies at least 1/W under the next integer: it truncates exactly (above 255
    // the clamp takes it anyway).
    static T Rounded(T num, T weights)
    {
        if constexpr (Bits > 8) return RoundedDeep(num, weights);
        return V::Trunc(V::DivF(V::ToFloat(num), V::MulF(V::ToFloat(weights), V::SetF(4.0f))));
    }

    // The same for deeper samples: float division gives the quotient q to within one (numerator
    // below 2^29, quotient below 2^13), and the remainder, with q times the weights from pmaddwd
    // (both below 2^15), puts it right.
    static T RoundedDeep(T num, T weights)
    {
        const T w4 = V::template Shl32<2>(weights);
        const T q = V::Trunc(V::DivF(V::ToFloat(num), V::ToFloat(w4)));
        const T r = V::Sub32(num, V::template Shl32<2>(V::Madd(q, weights)));
        return V::Sub32(V::Add32(q, V::Gt32(V::Zero(), r)), V::Gt32(r, V::Sub32(w4, V::Set32(1))));
    }

    static void Green(const TGreenTaps& taps, uint32_t k1)
    {
        const TGreenTaps t = taps;  // a local copy: the stores cannot alias it
        const T z = V::Zero();
        constexpr uint32_t kSampleBytes = Bits > 8 ? 2 : 1;
        for (uint32_t k = 1; k < k1; k += V::N) {
            // Steps of 2 N pixels: 96 or 128 destination bytes at most, two cache lines.
            __builtin_prefetch(t.pNextSrc + 2 * k * kSampleBytes);
            __builtin_prefetch(t.pNextDst + 2 * k * t.dwDstBytes, 1);
            __builtin_prefetch(t.pNextDst + 2 * k * t.dwDstBytes + 64, 1);
            const T c = V::Load(t.c + k), n = V::Load(t.n + k), s = V::Load(t.s + k), w = V::Load(t.w + k);
            const T e = V::Load(t.w + k + 1), n2 = V::Load(t.n2 + k), s2 = V::Load(t.s2 + k);
            const T w2 = V::Load(t.w2 + k), e2 = V::Load(t.w2 + k + 2);
            // The greens across, shared by opposite directions.
            const T across[2] = {AbsDiff(n, s), AbsDiff(e, w)};
            auto weight = [&](T far, int axis) {
                const T d = AbsDiff(c, far);
                return Weight(V::template Sra<Bits - 8>(V::Add(V::Add(d, d), across[axis])));
            };
            // 3 near + opposite + c - far, plus 2: the sums then carry W / 2.
            const T c2 = V::Add(c, V::Set(2)), ns = V::Add(n, s), ew = V::Add(e, w);
            auto estimate = [&](T far, T near, T pair) {
                return V::Add(V::Add(pair, V::Add(near, near)), V::Sub(c2, far));
            };
            const T wn = weight(n2, 0), we = weight(e2, 1), ww = weight(w2, 1), ws = weight(s2, 0);
            const T en = estimate(n2, n, ns), ee = estimate(e2, e, ew), eW = estimate(w2, w, ew),
                    es = estimate(s2, s, ns);
            const T weights = V::Add(V::Add(wn, we), V::Add(ww, ws));  // at most 16260
            const T lo = V::Add32(V::Madd(V::Lo(wn, we), V::Lo(en, ee)), V::Madd(V::Lo(ww, ws), V::Lo(eW, es)));
            const T hi = V::Add32(V::Madd(V::Hi(wn, we), V::Hi(en, ee)), V::Madd(V::Hi(ww, ws), V::Hi(eW, es)));
            const T mean = V::Narrow(Rounded(lo, V::Lo(weights, z)), Rounded(hi, V::Hi(weights, z)));
            V::Store(t.pOut + k, V::Min(V::Max(mean, z), V::Set(kMax)));
        }
    }

    static void GreenSites(const TGreenSiteTaps& taps, uint32_t k1)
    {
        const TGreenSiteTaps t = taps;  // a local copy: the stores cannot alias it
        for (uint32_t k = 1; k < k1; k += V::N) {
            const T c = V::Load(t.c + k);
            V::Store(t.pFirst + k, HueTransit(V::Load(t.gL + k), c, V::Load(t.gL + k + 1), V::Load(t.left + k),
                                              V::Load(t.left + k + 1)));
            V::Store(t.pSecond + k,
                     HueTransit(V::Load(t.gUp + k), c, V::Load(t.gDown + k), V::Load(t.up + k), V::Load(t.down + k)));
        }
    }

    static void OtherSites(const TOtherSiteTaps& taps, uint32_t k1)
    {
        const TOtherSiteTaps t = taps;  // a local copy: the stores cannot alias it
        for (uint32_t k = 1; k < k1; k += V::N) {
            const T c = V::Load(t.c + k), gc = V::Load(t.gc + k);
            const T gUpL = V::Load(t.gUpL + k), gUpR = V::Load(t.gUpL + k + 1);
            const T gDownL = V::Load(t.gDownL + k), gDownR = V::Load(t.gDownL + k + 1);
            const T upL = V::Load(t.upL + k), upR = V::Load(t.upL + k + 1);
            const T downL = V::Load(t.downL + k), downR = V::Load(t.downL + k + 1);
            const T ne = V::Add(V::Add(V::Add(AbsDiff(upR, downL), AbsDiff(V::Load(t.up2L + k + 2), c)),
                                       V::Add(AbsDiff(c, V::Load(t.down2L + k)), AbsDiff(gUpR, gc))),
                                AbsDiff(gc, gDownL));
            const T nw = V::Add(V::Add(V::Add(AbsDiff(upL, downR), AbsDiff(V::Load(t.up2L + k), c)),
                                       V::Add(AbsDiff(c, V::Load(t.down2L + k + 2)), AbsDiff(gUpL, gc))),
                                AbsDiff(gc, gDownR));
            // Hue transit along the smoother diagonal (north-east on a tie); where a lane ties,
            // the mean of both diagonals, the north-west one computed only then.
            const T m = V::Gt(ne, nw), tie = V::Eq(ne, nw);
            const T along = HueTransit(V::Select(m, gUpL, gUpR), gc, V::Select(m, gDownR, gDownL),
                                       V::Select(m, upL, upR), V::Select(m, downR, downL));
            if (!V::Any(tie)) {
                V::Store(t.pFirst + k, along);
                continue;
            }
            V::Store(t.pFirst + k, V::Select(tie, V::Avg(along, HueTransit(gUpL, gc, gDownR, upL, downR)), along));
        }
    }

    static void Split(const uint8_t* pLine, uint32_t dwWidth, const TSplitLine& out)
    {
        uint32_t x = 0;
        if constexpr (Bits > 8) {  // two-byte samples masked to the depth, an even and an odd one per 32 bits
            const T mask = V::Set32(kMax);
            for (; x + 2 * V::N <= dwWidth; x += 2 * V::N) {
                const T a = V::Load(pLine + 2 * x), b = V::Load(pLine + 2 * x + 2 * V::N);
                V::Store(out.half[0] + x / 2, V::NarrowInOrder(V::And(a, mask), V::And(b, mask)));
                V::Store(out.half[1] + x / 2, V::NarrowInOrder(V::And(V::template Srl32<16>(a), mask),
                                                               V::And(V::template Srl32<16>(b), mask)));
            }
            for (; x < dwWidth; ++x) {
                uint16_t v;
                std::memcpy(&v, pLine + 2 * x, 2);
                out.half[x & 1][x >> 1] = int16_t(v & kMax);
            }
            return;
        }
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

// SSE2 stores whatever the set: four-byte pixels from the bytes of each colour, three-byte ones
// from the words of both parities (StoreBgrPairs).
template <int Shift>
uint32_t StoreIdentity(const TColourPlanes& planes, uint32_t x0, uint32_t x1, uint32_t dwDstBytes, uint8_t* pOut)
{
    const TColourPlanes c = planes;  // a local copy: the byte stores cannot alias it
    auto words = [](const int16_t* p) {
        return _mm_srli_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)), Shift);
    };
    uint32_t x = x0;
    for (; x + 16 < x1; x += 16) {
        uint8_t* p = pOut + size_t(x) * dwDstBytes;
        const uint32_t k = x / 2;
        if (dwDstBytes == 3) {
            StoreBgrPairs(p, words(c.b[0] + k), words(c.g[0] + k), words(c.r[0] + k), words(c.b[1] + k),
                          words(c.g[1] + k), words(c.r[1] + k));
            continue;
        }
        const __m128i b = PixelBytes<Shift>(c.b, k), g = PixelBytes<Shift>(c.g, k), r = PixelBytes<Shift>(c.r, k);
        const __m128i bgLo = _mm_unpacklo_epi8(b, g), bgHi = _mm_unpackhi_epi8(b, g);
        const __m128i r0Lo = _mm_unpacklo_epi8(r, _mm_setzero_si128()),
                      r0Hi = _mm_unpackhi_epi8(r, _mm_setzero_si128());
        const __m128i q[4] = {_mm_unpacklo_epi16(bgLo, r0Lo), _mm_unpackhi_epi16(bgLo, r0Lo),
                              _mm_unpacklo_epi16(bgHi, r0Hi), _mm_unpackhi_epi16(bgHi, r0Hi)};
        for (int i = 0; i < 4; ++i) _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 16 * i), q[i]);
    }
    return x;
}

#if defined(__AVX2__)
// The same in blocks of 32 pixels through the bilinear decoder's AVX2 stores (which write no byte
// beyond the block), then blocks of 16. Packing the two parity planes puts, in each 128-bit half,
// eight even pixels before eight odd ones; a byte shuffle interleaves them.
template <int Shift>
uint32_t StoreIdentityWide(const TColourPlanes& planes, uint32_t x0, uint32_t x1, uint32_t dwDstBytes, uint8_t* pOut)
{
    const TColourPlanes c = planes;  // a local copy: the byte stores cannot alias it
    const __m256i order =
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15));
    auto bytes = [&](const int16_t* const* pPlanes, uint32_t k) {
        const __m256i even =
            _mm256_srli_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(pPlanes[0] + k)), Shift);
        const __m256i odd =
            _mm256_srli_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(pPlanes[1] + k)), Shift);
        return _mm256_shuffle_epi8(_mm256_packus_epi16(even, odd), order);
    };
    uint32_t x = x0;
    for (; x + 32 <= x1; x += 32) {
        const __m256i b = bytes(c.b, x / 2), g = bytes(c.g, x / 2), r = bytes(c.r, x / 2);
        uint8_t* p = pOut + size_t(x) * dwDstBytes;
        if (dwDstBytes == 4) {
            V256::StoreBgra(p, b, g, r);
        } else {
            V256::StoreBgr(p, b, g, r);
        }
    }
    return StoreIdentity<Shift>(c, x, x1, dwDstBytes, pOut);
}

// The identity store of the register width.
template <class Wide, int Shift>
constexpr auto kStoreIdentity = std::is_same_v<Wide, TWide256> ? StoreIdentityWide<Shift> : StoreIdentity<Shift>;
#else
template <class Wide, int Shift>
constexpr auto kStoreIdentity = StoreIdentity<Shift>;
#endif

template <class Wide, unsigned Bits>
constexpr TGroupingLoops GroupingLoops()
{
    using K = TGroupingVector<TLanes<Wide>, Bits>;
    return {K::Split, K::Green, K::GreenSites, K::OtherSites, kStoreIdentity<Wide, Bits - 8>};
}

// The loops of 8-, 10- and 12-bit samples.
template <class Wide>
constexpr std::array<TGroupingLoops, 3> GroupingDepths()
{
    return {GroupingLoops<Wide, 8>(), GroupingLoops<Wide, 10>(), GroupingLoops<Wide, 12>()};
}

}  // namespace
