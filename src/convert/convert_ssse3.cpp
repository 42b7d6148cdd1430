// convert_ssse3.cpp: the line converters built on SSSE3 byte shuffles. Only the functions marked
// KAIP_SSSE3 are compiled for SSSE3; everything else here, the shared line tails included, stays baseline
// x86-64, so no code of this file that a processor without SSSE3 could reach uses it.
#include <tmmintrin.h>

#include "convert/convert_simd.h"

#define KAIP_SSSE3 __attribute__((target("ssse3")))

namespace convert::ssse3 {
namespace {

template <bool kStream>
KAIP_SSSE3 inline void Store(uint8_t* p, __m128i v)
{
    if constexpr (kStream)
        _mm_stream_si128(reinterpret_cast<__m128i*>(p), v);
    else
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

KAIP_SSSE3 inline __m128i Load(const uint8_t* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// The shuffle controls of plan P, and per chunk the bytes kept from the destination.
template <class P>
struct TControls {
    KAIP_SSSE3 TControls()
    {
        for (int c = 0; c < P::kChunks; ++c) {
            a[c] = Load(reinterpret_cast<const uint8_t*>(P::kPlan[c].ca.data()));
            b[c] = Load(reinterpret_cast<const uint8_t*>(P::kPlan[c].cb.data()));
            // Bytes that neither load fills are the ones the map leaves to the destination.
            keep[c] = _mm_cmpeq_epi8(_mm_and_si128(a[c], b[c]), _mm_set1_epi8(-128));
        }
    }
    __m128i a[P::kChunks], b[P::kChunks], keep[P::kChunks];
};

// Destination chunk c of a step of plan P at s, the bytes the map leaves out 0.
template <class P>
KAIP_SSSE3 inline __m128i Gather(const uint8_t* s, const TControls<P>& k, int c)
{
    __m128i v = _mm_shuffle_epi8(Load(s + P::kPlan[c].a), k.a[c]);
    if (P::kPlan[c].bTwo) v = _mm_or_si128(v, _mm_shuffle_epi8(Load(s + P::kPlan[c].b), k.b[c]));
    return v;
}

// 16 pixels per step through the byte map M, then the rest of the line (fewer than 16 pixels) by the
// scalar member's reader R and writer W, with the group cut short at the line end when kCut is set.
template <class M, class R, class W, bool kCut = false>
struct KGather {
    using P = TGatherPlan<M, 16>;
    uint32_t dwWidth;

    template <bool kStream>
    KAIP_SSSE3 void Line(const uint8_t* pS, uint8_t* pD) const
    {
        static const TControls<P> k;  // built once, on first use, by the thread-safe static initialisation
        const uint32_t steps = dwWidth / 16;
        const uint8_t* s = pS;
        uint8_t* d = pD;
        for (uint32_t i = 0; i < steps; ++i, s += P::kInBytes, d += P::kOutBytes) {
            // Every kept byte is read before the step's first store: reading a cache line that a non-temporal
            // store has begun would flush it half written.
            __m128i v[P::kChunks];
            for (int c = 0; c < P::kChunks; ++c) {
                v[c] = Gather(s, k, c);
                if constexpr (M::kKeep) v[c] = _mm_or_si128(v[c], _mm_and_si128(Load(d + 16 * c), k.keep[c]));
            }
            for (int c = 0; c < P::kChunks; ++c) Store<kStream>(d + 16 * c, v[c]);
        }
        R rd;
        const W wr;
        ConvertGroups(rd, wr, steps * 16 / R::kPixels, dwWidth / R::kPixels, pS, pD);
        if constexpr (kCut) ConvertCutGroup(rd, wr, dwWidth, pS, pD);
    }
};

// The greys of 8 pixels from their (B, G) and (R, G) pairs: 18 B + 110 G and 54 R + 73 G, each at most
// 32640, so neither multiply-add saturates and their sum plus 128 fits 16 bits unsigned.
struct FGrey {
    static constexpr uint32_t kOutBytes = 16;
    KAIP_SSSE3 static __m128i Grey(__m128i bg, __m128i rg)
    {
        const __m128i sum = _mm_add_epi16(_mm_maddubs_epi16(bg, _mm_set1_epi16(110 << 8 | 18)),
                                          _mm_maddubs_epi16(rg, _mm_set1_epi16(73 << 8 | 54)));
        return _mm_srli_epi16(_mm_add_epi16(sum, _mm_set1_epi16(128)), 8);
    }
    template <bool kStream>
    KAIP_SSSE3 static void Put(uint8_t* d, __m128i bg0, __m128i rg0, __m128i bg1, __m128i rg1)
    {
        Store<kStream>(d, _mm_packus_epi16(Grey(bg0, rg0), Grey(bg1, rg1)));
    }
};

// The 15-bit (k565 false) or 16-bit words of 8 pixels from their (B, G) and (R, G) pairs, as Pack555 and
// Pack565 do: each channel's top bits shifted into their field.
template <bool k565>
struct FPack {
    static constexpr uint32_t kOutBytes = 32;
    template <int kByte, int kBits, int kAt>
    KAIP_SSSE3 static __m128i Field(__m128i v)
    {
        constexpr int kShift = FieldShift(kByte, kBits, kAt);
        const __m128i x = kShift > 0 ? _mm_srli_epi16(v, kShift) : _mm_slli_epi16(v, -kShift);
        return _mm_and_si128(x, _mm_set1_epi16(int16_t(((1 << kBits) - 1) << kAt)));
    }
    KAIP_SSSE3 static __m128i Pack(__m128i bg, __m128i rg)
    {
        constexpr int kRedAt = k565 ? 11 : 10, kGreenBits = k565 ? 6 : 5;
        return _mm_or_si128(_mm_or_si128(Field<0, 5, kRedAt>(rg), Field<1, kGreenBits, 5>(bg)), Field<0, 5, 0>(bg));
    }
    template <bool kStream>
    KAIP_SSSE3 static void Put(uint8_t* d, __m128i bg0, __m128i rg0, __m128i bg1, __m128i rg1)
    {
        Store<kStream>(d, Pack(bg0, rg0));
        Store<kStream>(d + 16, Pack(bg1, rg1));
    }
};

// 16 pixels per step set out by MChannelPairs and finished by F, then the rest of the line by the scalar
// member's reader R and writer W.
template <TOrder O, int kPixelBytes, class R, class W, class F>
struct KPairs {
    using P = TGatherPlan<MChannelPairs<O, kPixelBytes>, 16>;
    uint32_t dwWidth;

    template <bool kStream>
    KAIP_SSSE3 void Line(const uint8_t* pS, uint8_t* pD) const
    {
        static const TControls<P> k;
        const uint32_t steps = dwWidth / 16;
        const uint8_t* s = pS;
        uint8_t* d = pD;
        for (uint32_t i = 0; i < steps; ++i, s += P::kInBytes, d += F::kOutBytes)
            F::template Put<kStream>(d, Gather(s, k, 0), Gather(s, k, 2), Gather(s, k, 1), Gather(s, k, 3));
        R rd;
        ConvertGroups(rd, W{}, steps * 16, dwWidth, pS, pD);
    }
};

template <class M, class R, class W, bool kCut = false>
int Run(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, KGather<M, R, W, kCut>{dwWidth});
}

}  // namespace

KAIP_BYTE_MAP_CONVERTERS(KAIP_DEFINE_BYTE_MAP_CONVERTER)

#define KAIP_DEFINE_PAIR_CONVERTER(name, O, kPixelBytes, R, W, ...)                      \
    int name(KAIP_LINE_PARAMS, bool bReverseLines)                                       \
    {                                                                                    \
        return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, \
                        KPairs<O, kPixelBytes, R, W, __VA_ARGS__>{dwWidth});             \
    }
KAIP_PAIR_CONVERTERS(KAIP_DEFINE_PAIR_CONVERTER)

}  // namespace convert::ssse3
