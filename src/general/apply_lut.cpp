// apply_lut.cpp: running every sample of an unpacked mono or RGB image through a LUT.
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "core/check.h"
#include "core/log.h"
#include "core/unidef.h"
#include "general/lut.h"

// apply_lut_avx2.cpp: the whole 32-byte blocks of an 8-bit mono line through pTable; returns the
// bytes done. Called only when g_SSEChecker.UseAVX2() is on.
uint32_t ApplyLut8Line_avx2(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwCount, const uint8_t* pTable);

namespace {

template <class T>
inline T Load(const uint8_t* p)
{
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

template <class T>
inline void Store(uint8_t* p, T v)
{
    std::memcpy(p, &v, sizeof v);
}

// One line of Channels samples per pixel (1, 3, or 4 with the fourth left alone). Bits above
// the depth are dropped from the source; table values are written as they stand. Without a
// fourth sample the line goes 64 bits at a time: Channels words hold a whole number of pixels,
// each gathered from its looked-up samples and written once. Each sample is loaded on its own:
// a load costs less than taking it out of a loaded word with a shift and a mask.
template <class TLut, unsigned Channels, bool Bgr>
void ApplyLutLine(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwWidth, const TLut& lut)
{
    using T = typename TLut::TValue;
    constexpr unsigned mask = TLut::N - 1, nLooked = Channels == 1 ? 1 : 3, step = Channels * sizeof(T);
    constexpr unsigned perWord = 8 / sizeof(T), bits = 8 * sizeof(T);
    const T* const tables[3] = {Channels == 1 ? lut.Green
                                : Bgr         ? lut.Blue
                                              : lut.Red,
                                lut.Green, Bgr ? lut.Red : lut.Blue};
    uint32_t x = 0;
    if constexpr (Channels != 4) {
        for (; x + perWord <= dwWidth; x += perWord, pSrc += 8 * Channels, pDst += 8 * Channels) {
            for (unsigned w = 0; w < Channels; ++w) {
                uint64_t d = 0;
                for (unsigned j = 0; j < perWord; ++j) {
                    const T s = Load<T>(pSrc + 8 * w + sizeof(T) * j);
                    d |= uint64_t(tables[(w * perWord + j) % nLooked][s & mask]) << (bits * j);
                }
                Store<uint64_t>(pDst + 8 * w, d);
            }
        }
    }
    for (; x < dwWidth; ++x, pSrc += step, pDst += step) {
        for (unsigned c = 0; c < nLooked; ++c) {
            Store<T>(pDst + c * sizeof(T), tables[c][Load<T>(pSrc + c * sizeof(T)) & mask]);
        }
    }
}

// Two 8-bit samples looked up at once: entry hi << 8 | lo holds table[hi] << 8 | table[lo], so the
// little-endian pair of source bytes at an even offset is the index of their two results. Filling the
// 64 Ki entries costs about as much as looking up 16 Ki samples one at a time, so only images of
// more samples than that use it.
constexpr uint64_t kPairTableMinSamples = 65536;

void BuildPairTable(uint16_t* pPairs, const uint8_t* pTable)
{
    uint16_t low[256];  // widened once, so that each row is a plain vector OR
    for (unsigned lo = 0; lo < 256; ++lo) low[lo] = pTable[lo];
    for (unsigned hi = 0; hi < 256; ++hi, pPairs += 256) {
        const uint16_t high = uint16_t(pTable[hi] << 8);
        for (unsigned lo = 0; lo < 256; ++lo) pPairs[lo] = high | low[lo];
    }
}

// The whole 8-byte blocks of dwCount bytes through the pair table, four pairs to a store; returns
// the bytes done. Half the loads of a lookup per sample, which is what bounds the plain loop. Kept
// out of line: inlined, GCC turns it into emulated vector gathers that run at half the speed.
[[gnu::noinline]] uint32_t ApplyLutPairs(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwCount, const uint16_t* pPairs)
{
    uint32_t x = 0;
    for (; x + 8 <= dwCount; x += 8) {
        uint64_t d = 0;
        for (unsigned k = 0; k < 4; ++k) d |= uint64_t(pPairs[Load<uint16_t>(pSrc + x + 2 * k)]) << (16 * k);
        Store<uint64_t>(pDst + x, d);
    }
    return x;
}

template <class TLut, unsigned Channels, bool Bgr>
KaipStatus ApplyLutImage(const KaipImgInfo& src, const KaipImgInfo& dst, KaipHLut hLut)
{
    TLut* pLut;
    if (GetLut(hLut, pLut) != KASTATUS_OK) return KASTATUS_KAIP_INVALID_LUT_TYPE;
    // 8-bit lines whose samples all read one table (mono, or three channels with equal tables) are
    // runs of bytes through that table: 32 at a time through AVX2 shuffles where allowed, else through
    // the pair table in large images, in whole pixels; the rest sample by sample.
    constexpr bool kOneTable = std::is_same_v<TLut, TKaIpLut8> && Channels != 4;
    bool bAvx2 = false;
    std::unique_ptr<uint16_t[]> pPairs;
    uint32_t dwBlockBytes = 0;  // of each line, a whole number of pixels
    if constexpr (kOneTable) {
        if (Channels == 1 || (std::memcmp(pLut->Red, pLut->Green, TLut::N) == 0 &&
                              std::memcmp(pLut->Blue, pLut->Green, TLut::N) == 0)) {
            bAvx2 = g_SSEChecker.UseAVX2();
            if (!bAvx2 && uint64_t(src.Width) * src.Height * Channels >= kPairTableMinSamples) {
                pPairs.reset(new (std::nothrow) uint16_t[65536]);
                if (pPairs) BuildPairTable(pPairs.get(), pLut->Green);
            }
            const uint32_t dwBlock = Channels == 1 ? 1 : bAvx2 ? 96 : 24;  // 32 and 8 pixels
            if (bAvx2 || pPairs) dwBlockBytes = src.Width * Channels / dwBlock * dwBlock;
        }
    }
    for (uint32_t y = 0; y < src.Height; ++y) {
        const uint8_t* pSrc = src.pData + size_t(y) * src.LineIncrement;
        uint8_t* pDst = dst.pData + size_t(y) * dst.LineIncrement;
        uint32_t done = 0;  // bytes, a whole number of pixels
        if constexpr (kOneTable) {
            if (bAvx2) done = ApplyLut8Line_avx2(pSrc, pDst, dwBlockBytes, pLut->Green);
            if (pPairs) done = ApplyLutPairs(pSrc, pDst, dwBlockBytes, pPairs.get());
        }
        ApplyLutLine<TLut, Channels, Bgr>(pSrc + done, pDst + done, src.Width - done / Channels, *pLut);
    }
    return KASTATUS_OK;
}

struct TApplyLutFormat {
    uint32_t dwPixelFormat;
    uint32_t dwDepth;
    KaipStatus (*pfnApply)(const KaipImgInfo& src, const KaipImgInfo& dst, KaipHLut hLut);
};

constexpr TApplyLutFormat kFormats[] = {
    {KaipPixelFormat_Mono8, 8, ApplyLutImage<TKaIpLut8, 1, false>},
    {KaipPixelFormat_Mono10, 10, ApplyLutImage<TKaIpLut10, 1, false>},
    {KaipPixelFormat_Mono12, 12, ApplyLutImage<TKaIpLut12, 1, false>},
    {KaipPixelFormat_RGB8Packed, 8, ApplyLutImage<TKaIpLut8, 3, false>},
    {KaipPixelFormat_BGR8Packed, 8, ApplyLutImage<TKaIpLut8, 3, true>},
    {KaipPixelFormat_RGBA8Packed, 8, ApplyLutImage<TKaIpLut8, 4, false>},
    {KaipPixelFormat_BGRA8Packed, 8, ApplyLutImage<TKaIpLut8, 4, true>},
    {KaipPixelFormat_RGB10Packed, 10, ApplyLutImage<TKaIpLut10, 3, false>},
    {KaipPixelFormat_BGR10Packed, 10, ApplyLutImage<TKaIpLut10, 3, true>},
    {KaipPixelFormat_RGB12Packed, 12, ApplyLutImage<TKaIpLut12, 3, false>},
    {KaipPixelFormat_BGR12Packed, 12, ApplyLutImage<TKaIpLut12, 3, true>},
};

// Mono8/Bayer8, Mono10/Bayer10, Mono12/Bayer12, the 8-bit RGB family and the 10/12-bit RGB.
constexpr uint64_t kApplyLutSrcClasses =
    KaipPixelFormatClass_Mono8 | KaipPixelFormatClass_Mono10 | KaipPixelFormatClass_Mono12 |
    KaipPixelFormatClass_BGR8Packed | KaipPixelFormatClass_BGRA8Packed | KaipPixelFormatClass_RGB8Packed |
    KaipPixelFormatClass_RGBA8Packed | KaipPixelFormatClass_BGR10Packed | KaipPixelFormatClass_RGB10Packed |
    KaipPixelFormatClass_BGR12Packed | KaipPixelFormatClass_RGB12Packed;
static_assert(kApplyLutSrcClasses == 0xF00007815ull, "source classes of ApplyLut");

}  // namespace

KaipStatus ApplyLut(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, KaipHLut hLut, uint32_t dwOptions)
{
    const char* const pszFunc = "ApplyLut";
    bool bReallocate = false;
    KaipStatus status = CheckImgInfos(pszFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kApplyLutSrcClasses, 0, 0,
                                      KaipCheck_SameSize | KaipCheck_SamePixelFormat, 3, &bReallocate);
    if (status != KASTATUS_OK) return status;
    if (bReallocate) {
        status = ReallocateDst(pszFunc, pDstImgInfo, pSrcImgInfo->Width, pSrcImgInfo->Height, pSrcImgInfo->PixelFormat,
                               dwOptions);
        if (status != KASTATUS_OK) return status;
    }

    const TApplyLutFormat* pFormat = nullptr;
    for (const TApplyLutFormat& format : kFormats) {
        if (format.dwPixelFormat == pSrcImgInfo->PixelFormat) pFormat = &format;
    }
    // Null means the global LUT here, not identity as for the Bayer decoders.
    const bool bGlobal = IsGlobalLutHandle(hLut);
    if (!pFormat && bGlobal) {
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT,
                      "%s: KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT 0x%.8x", pszFunc, pSrcImgInfo->PixelFormat);
    }
    if (!pFormat || (!bGlobal && (*hLut & kLutDepthMask) != 0 && (*hLut & kLutDepthMask) != pFormat->dwDepth)) {
        return Refuse(KASTATUS_KAIP_INVALID_LUT_TYPE, "%s: KASTATUS_KAIP_INVALID_LUT_TYPE", pszFunc);
    }
    return pFormat->pfnApply(*pSrcImgInfo, pDstImgInfo ? *pDstImgInfo : *pSrcImgInfo,
                             bGlobal ? reinterpret_cast<KaipHLut>(1) : hLut);
}
