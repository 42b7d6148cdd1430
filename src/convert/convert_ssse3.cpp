// convert_ssse3.cpp: the line converters built on SSSE3 byte shuffles. Only the functions marked
// KAIP_SSSE3 (those of convert_gather.h included) are compiled for SSSE3; everything else here, the shared
// line tails included, stays baseline x86-64, so no code of this file that a processor without SSSE3 could
// reach uses it.
#include <tmmintrin.h>

#define KAIP_SSSE3 __attribute__((target("ssse3")))
#define KAIP_VECTOR_TARGET KAIP_SSSE3
#include "convert/convert_gather.h"

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

// The registers of convert_gather.h: one 16-byte lane, steps of 16 pixels.
struct VSsse3 {
    using T = __m128i;
    static constexpr int kLanes = 1, kBytes = 16;
    static constexpr uint32_t kPixels = 16;
    KAIP_SSSE3 static T Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    KAIP_SSSE3 static T LoadLanes(const uint8_t* const (&p)[1]) { return Load(p[0]); }
    template <bool kStream>
    KAIP_SSSE3 static void Store(uint8_t* p, T v)
    {
        ssse3::Store<kStream>(p, v);
    }
    KAIP_SSSE3 static T And(T a, T b) { return _mm_and_si128(a, b); }
    KAIP_SSSE3 static T Or(T a, T b) { return _mm_or_si128(a, b); }
    // No byte blend before SSE4.1; a's bytes under the mask are 0 wherever it is used.
    KAIP_SSSE3 static T Blend(T a, T b, T mask) { return _mm_or_si128(a, _mm_and_si128(b, mask)); }
    KAIP_SSSE3 static T Shuffle(T v, T control) { return _mm_shuffle_epi8(v, control); }
    KAIP_SSSE3 static T IsUnset(T v) { return _mm_cmpeq_epi8(v, _mm_set1_epi8(-128)); }
    KAIP_SSSE3 static T Set16(int16_t v) { return _mm_set1_epi16(v); }
    template <int k>
    KAIP_SSSE3 static T Srl16(T v)
    {
        return _mm_srli_epi16(v, k);
    }
    template <int k>
    KAIP_SSSE3 static T Sll16(T v)
    {
        return _mm_slli_epi16(v, k);
    }
};

// The greys of 8 pixels from their (B, G) and (R, G) pairs: 18 B + 110 G and 54 R + 73 G, each at most
// 32640, so neither multiply-add saturates and their sum plus 128 fits 16 bits unsigned.
struct FGrey : FOnPairs {
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

using FPack555 = FPack<VSsse3, false>;
using FPack565 = FPack<VSsse3, true>;

template <class M, class R, class W, bool kCut = false>
int Run(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return RunGather<VSsse3, M, R, W, kCut>(dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines);
}

}  // namespace

KAIP_BYTE_MAP_CONVERTERS(KAIP_DEFINE_BYTE_MAP_CONVERTER)

#define KAIP_DEFINE_PAIR_CONVERTER(name, O, kPixelBytes, R, W, F)                        \
    int name(KAIP_LINE_PARAMS, bool bReverseLines)                                       \
    {                                                                                    \
        return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, \
                        KPairs<VSsse3, O, kPixelBytes, R, W, F>{dwWidth});               \
    }
KAIP_PAIR_CONVERTERS(KAIP_DEFINE_PAIR_CONVERTER)

}  // namespace convert::ssse3
