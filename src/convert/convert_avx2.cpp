// convert_avx2.cpp: the line converters built on 32-byte AVX2 steps. Only the functions marked KAIP_AVX2
// are compiled for AVX2; everything else here, the shared line tails included, stays baseline x86-64, so
// nothing of this file that runs before the AVX switch is checked uses it.
#include <immintrin.h>

#include <cstring>

#include "convert/convert_simd.h"

#define KAIP_AVX2 __attribute__((target("avx2")))

namespace convert::avx2 {
namespace {

// Non-temporal stores in two halves: a line start is only promised 16-byte alignment.
template <bool kStream>
KAIP_AVX2 inline void Store(uint8_t* p, __m256i v)
{
    if constexpr (kStream) {
        _mm_stream_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(v));
        _mm_stream_si128(reinterpret_cast<__m128i*>(p + 16), _mm256_extracti128_si256(v, 1));
    } else {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
    }
}

KAIP_AVX2 inline __m256i Load(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }

// Two 16-byte loads, one per lane.
KAIP_AVX2 inline __m256i Load2(const uint8_t* pLow, const uint8_t* pHigh)
{
    return _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(pHigh), reinterpret_cast<const __m128i*>(pLow));
}

// The smaller line increment in bytes, 128 at a time, the rest by memcpy as the scalar member does.
struct KCopy {
    size_t bytes;
    template <bool kStream>
    KAIP_AVX2 void Line(const uint8_t* pS, uint8_t* pD) const
    {
        size_t x = 0;
        for (; x + 128 <= bytes; x += 128) {
            const __m256i a = Load(pS + x), b = Load(pS + x + 32), c = Load(pS + x + 64), d = Load(pS + x + 96);
            Store<kStream>(pD + x, a);
            Store<kStream>(pD + x + 32, b);
            Store<kStream>(pD + x + 64, c);
            Store<kStream>(pD + x + 96, d);
        }
        std::memcpy(pD + x, pS + x, bytes - x);
    }
};

// The shuffle controls of plan P, two 16-byte chunks per vector (byte shuffles stay within a lane), and
// the bytes kept from the destination.
template <class P>
struct TControls {
    static constexpr int kVectors = P::kChunks / 2;
    KAIP_AVX2 TControls()
    {
        for (int o = 0; o < kVectors; ++o) {
            a[o] = Load2(reinterpret_cast<const uint8_t*>(P::kPlan[2 * o].ca.data()),
                         reinterpret_cast<const uint8_t*>(P::kPlan[2 * o + 1].ca.data()));
            b[o] = Load2(reinterpret_cast<const uint8_t*>(P::kPlan[2 * o].cb.data()),
                         reinterpret_cast<const uint8_t*>(P::kPlan[2 * o + 1].cb.data()));
            keep[o] = _mm256_cmpeq_epi8(_mm256_and_si256(a[o], b[o]), _mm256_set1_epi8(-128));
        }
    }
    __m256i a[kVectors], b[kVectors], keep[kVectors];
};

// 32 pixels per step through the byte map M, then the rest of the line (fewer than 32 pixels) by the
// scalar member's reader R and writer W, with the group cut short at the line end when kCut is set.
template <class M, class R, class W, bool kCut = false>
struct KGather {
    using P = TGatherPlan<M, 32>;
    uint32_t dwWidth;

    template <bool kStream>
    KAIP_AVX2 void Line(const uint8_t* pS, uint8_t* pD) const
    {
        static const TControls<P> k;  // built once, on first use, by the thread-safe static initialisation
        const uint32_t steps = dwWidth / 32;
        const uint8_t* s = pS;
        uint8_t* d = pD;
        for (uint32_t i = 0; i < steps; ++i, s += P::kInBytes, d += P::kOutBytes) {
            for (int o = 0; o < TControls<P>::kVectors; ++o) {
                const auto& lo = P::kPlan[2 * o];
                const auto& hi = P::kPlan[2 * o + 1];
                __m256i v = _mm256_shuffle_epi8(Load2(s + lo.a, s + hi.a), k.a[o]);
                if (lo.bTwo || hi.bTwo) v = _mm256_or_si256(v, _mm256_shuffle_epi8(Load2(s + lo.b, s + hi.b), k.b[o]));
                if constexpr (M::kKeep) v = _mm256_or_si256(v, _mm256_and_si256(Load(d + 32 * o), k.keep[o]));
                Store<kStream>(d + 32 * o, v);
            }
        }
        R rd;
        const W wr;
        ConvertGroups(rd, wr, steps * 32 / R::kPixels, dwWidth / R::kPixels, pS, pD);
        if constexpr (kCut) ConvertCutGroup(rd, wr, dwWidth, pS, pD);
    }
};

// 32 words masked to their used bits and shifted down to 8; the rest of the line by the scalar member.
struct KMonoWordToMono8 {
    uint32_t dwWidth, dwBits;

    template <bool kStream>
    KAIP_AVX2 void Line(const uint8_t* pS, uint8_t* pD) const
    {
        const __m256i mask = _mm256_set1_epi16(int16_t(0xFFFFu >> (16 - dwBits)));
        const __m128i shift = _mm_cvtsi32_si128(int(dwBits - 8));
        const uint32_t steps = dwWidth / 32;
        for (uint32_t i = 0; i < steps; ++i) {
            const __m256i a = _mm256_srl_epi16(_mm256_and_si256(Load(pS + 64 * i), mask), shift);
            const __m256i b = _mm256_srl_epi16(_mm256_and_si256(Load(pS + 64 * i + 32), mask), shift);
            // The pack works per lane; the permutation puts its four quarters back in pixel order.
            Store<kStream>(pD + 32 * i, _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8));
        }
        RMonoWord rd{dwBits};
        ConvertGroups(rd, WMono8{}, steps * 32, dwWidth, pS, pD);
    }
};

template <class M, class R, class W, bool kCut = false>
int Run(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, KGather<M, R, W, kCut>{dwWidth});
}

}  // namespace

#define KAIP_LINE_ARGS dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc

int CopyBitmapData(KAIP_LINE_PARAMS, bool bReverseLines)
{
    (void)dwWidth;
    return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                    KCopy{dwSrcLineInc < dwDstLineInc ? dwSrcLineInc : dwDstLineInc});
}

int SwapColor8Data(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MSwap24, RRGB24, WBGR24>(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_Mono8_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MMono8ToBGR24, RMono8, WBGR24>(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_Mono8_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MMono8ToBGR32, RMono8, WBGR32>(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_BGR24_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MBGR24ToBGR32, RBGR24, WBGR32>(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_RGB24_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MRGB24ToBGR32, RRGB24, WBGR32Kept>(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_RGB32_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MRGB32ToBGR32, RRGB32, WBGR32Kept>(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_MonoWord_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, KMonoWordToMono8{dwWidth, dwSrcBits});
}

int Convert_MonoPacked_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MPackedHigh, RPacked<8>, WMono8, true>(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_MonoMipi10_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MMipi10High, RMipi10<8>, WMono8>(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_MonoMipi12_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MMipi12High, RMipi12<8>, WMono8>(KAIP_LINE_ARGS, bReverseLines);
}

}  // namespace convert::avx2
