// simple.cpp: the simple Bayer functions: show the mosaic, green to greyscale, nearest neighbour, encode.
#include "bayer/bayer.h"
#include "bayer/bilinear_simd.h"
#include "bayer/decoder_frame.h"
#include "core/check.h"
#include "core/common.h"
#include "core/log.h"

namespace {

constexpr uint64_t kBgrClasses = KaipPixelFormatClass_BGR8Packed | KaipPixelFormatClass_BGRA8Packed;
constexpr uint64_t kColourClasses = kBgrClasses | KaipPixelFormatClass_RGB8Packed | KaipPixelFormatClass_RGBA8Packed;
constexpr uint64_t kBayerClasses =
    KaipPixelFormatClass_Mono8 | KaipPixelFormatClass_Mono10 | KaipPixelFormatClass_Mono12;

// Each sample, scaled to 8 bits, into the channel of its site; 0 into the others.
template <unsigned Bits, uint32_t DstBytes>
struct TShowMosaic {
    template <int Site>
    void Pixel(const uint8_t*, const uint8_t* pCur, const uint8_t*, uint8_t* pOut, uint32_t x) const
    {
        const uint8_t v = uint8_t(TDepth<Bits>::At(pCur, x) >> (Bits - 8));
        StoreBgr<DstBytes>(pOut + size_t(x) * DstBytes, Site == kSiteBlue ? v : 0,
                           Site == kSiteGreenR || Site == kSiteGreenB ? v : 0, Site == kSiteRed ? v : 0);
    }
};

// Green sites scaled to 8 bits; red and blue sites the mean of their four direct neighbours.
template <unsigned Bits>
struct TGreenToGreyscale {
    template <int Site>
    void Pixel(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x) const
    {
        using D = TDepth<Bits>;
        if constexpr (Site == kSiteGreenR || Site == kSiteGreenB) {
            pOut[x] = uint8_t(D::At(pCur, x) >> (Bits - 8));
        } else {
            pOut[x] =
                uint8_t((D::At(pUp, x) + D::At(pDown, x) + D::At(pCur, x - 1) + D::At(pCur, x + 1)) >> (Bits - 6));
        }
    }
};

// Pixel (x, y) from the 2x2 block of lines y-1, y and columns x-1, x: red and blue from their
// sites, green from the green site of line y. Bytes in the destination's own order.
template <unsigned Bits, uint32_t DstBytes, bool Rgb>
struct TNearestNeighbour {
    TBayerLut lut;

    template <int Site>
    void Pixel(const uint8_t* pUp, const uint8_t* pCur, const uint8_t*, uint8_t* pOut, uint32_t x) const
    {
        using D = TDepth<Bits>;
        constexpr bool bColour = Site == kSiteRed || Site == kSiteBlue;
        const uint32_t own = D::At(pCur, x) & D::kMask1, left = D::At(pCur, x - 1) & D::kMask1;
        const uint32_t above = D::At(pUp, bColour ? x - 1 : x) & D::kMask1;  // the opposite colour
        const bool bRedLine = Site == kSiteRed || Site == kSiteGreenR;
        const uint32_t g = bColour ? left : own;
        const uint32_t r = bColour ? (bRedLine ? own : above) : (bRedLine ? left : above);
        const uint32_t b = bColour ? (bRedLine ? above : own) : (bRedLine ? above : left);
        uint8_t* p = pOut + size_t(x) * DstBytes;
        if constexpr (Rgb) {
            StoreBgr<DstBytes>(p, lut.pRed[r], lut.pGreen[g], lut.pBlue[b]);
        } else {
            StoreBgr<DstBytes>(p, lut.pBlue[b], lut.pGreen[g], lut.pRed[r]);
        }
    }
};

// The channel of the site, shifted up to the depth, as one Bayer sample.
template <unsigned Bits, uint32_t SrcBytes>
struct TEncodeToBayer {
    template <int Site>
    void Pixel(const uint8_t*, const uint8_t* pCur, const uint8_t*, uint8_t* pOut, uint32_t x) const
    {
        constexpr uint32_t channel = Site == kSiteBlue ? 0 : Site == kSiteRed ? 2 : 1;
        const uint32_t v = uint32_t(pCur[size_t(x) * SrcBytes + channel]) << (Bits - 8);
        if constexpr (Bits == 8) {
            pOut[x] = uint8_t(v);
        } else {
            pOut[2 * size_t(x)] = uint8_t(v);
            pOut[2 * size_t(x) + 1] = uint8_t(v >> 8);
        }
    }
};

uint32_t ColourPixelBytes(uint32_t dwPixelFormat)
{
    return dwPixelFormat == KaipPixelFormat_BGR8Packed || dwPixelFormat == KaipPixelFormat_RGB8Packed     ? 3
           : dwPixelFormat == KaipPixelFormat_BGRA8Packed || dwPixelFormat == KaipPixelFormat_RGBA8Packed ? 4
                                                                                                          : 0;
}

}  // namespace

KaipStatus BdShowMosaic(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                        uint32_t dwOptions)
{
    static const char* const pszFunc = "KaipBdShowMosaic";
    TBayerJob job;
    const KaipStatus status =
        PrepareBayerJob(pszFunc, pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions, kBgrClasses, 1, job);
    if (status != KASTATUS_OK) return status;
    const uint32_t dwDstBytes = ColourPixelBytes(dwDstPixelFormat);
    const TBayerPlanes planes = JobPlanes(job);
    WithDepth(job.dwBits, [&](auto bits) {
        WithPixelBytes(dwDstBytes, [&](auto bytes) {
            RunInterior(TShowMosaic<bits, bytes>{}, planes, job.src.Height, 0, job.src.Width, 0, job.src.Height);
        });
    });
    return KASTATUS_OK;
}

KaipStatus BdGreenToGreyscale(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                              uint32_t dwOptions)
{
    static const char* const pszFunc = "KaipBdGreenToGreyscale";
    TBayerJob job;
    const KaipStatus status = PrepareBayerJob(pszFunc, pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions,
                                              KaipPixelFormatClass_Mono8, 2, job);
    if (status != KASTATUS_OK) return status;
    if (dwDstPixelFormat != KaipPixelFormat_Mono8) {
        // A wrong destination is reported under the source's code here, as callers expect.
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT, "%s: KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT.",
                      pszFunc);
    }
    const uint32_t w = job.src.Width, h = job.src.Height;
    const TBayerPlanes planes = JobPlanes(job);
    WithDepth(job.dwBits, [&](auto bits) { RunInterior(TGreenToGreyscale<bits>{}, planes, h, 1, w - 1, 1, h - 1); });
    CalculateFrame1(planes.pSrc, w, h, planes.dwSrcLineIncrement, job.dwBits, job.bShiftLine, job.bShiftColumn,
                    planes.pDst, planes.dwDstLineIncrement, 8, nullptr);
    return KASTATUS_OK;
}

KaipStatus BdNearestNeighbour(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                              uint32_t dwOptions, KaipHLut hLut)
{
    static const char* const pszFunc = "KaipBdNearestNeighbour";
    TBayerJob job;
    KaipStatus status =
        PrepareBayerJob(pszFunc, pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions, kColourClasses, 2, job);
    if (status != KASTATUS_OK) return status;
    TBayerLut lut;
    status = SelectBayerLut(pszFunc, hLut, job.dwBits, TLutDemand::BayerAboveEight, lut);
    if (status != KASTATUS_OK) return status;
    const uint32_t dwDstBytes = ColourPixelBytes(dwDstPixelFormat);
    if (dwDstBytes == 0) return KASTATUS_KAIP_INVALID_PIXEL_FORMAT;  // this decoder reports it without a line
    const bool bRgb = dwDstPixelFormat == KaipPixelFormat_RGB8Packed || dwDstPixelFormat == KaipPixelFormat_RGBA8Packed;
    const uint32_t w = job.src.Width, h = job.src.Height;
    const TBayerPlanes planes = JobPlanes(job);
    // 8 bits with the identity tables: vector blocks where the switches allow, the scalar rule for the rest.
    const uint32_t x0 = job.dwBits == 8 && hLut == nullptr ? NearestInterior_intr(planes, w, h, dwDstBytes, bRgb) : 1;
    WithDepth(job.dwBits, [&](auto bits) {
        WithPixelBytes(dwDstBytes, [&](auto bytes) {
            if (bRgb) {
                RunInterior(TNearestNeighbour<bits, bytes, true>{lut}, planes, h, x0, w, 1, h);
            } else {
                RunInterior(TNearestNeighbour<bits, bytes, false>{lut}, planes, h, x0, w, 1, h);
            }
        });
    });
    CalculateFrame1(planes.pSrc, w, h, planes.dwSrcLineIncrement, job.dwBits, job.bShiftLine, job.bShiftColumn,
                    planes.pDst, planes.dwDstLineIncrement, dwDstBytes * 8, hLut);
    return KASTATUS_OK;
}

void EncodeBgrToBayer(const KaipImgInfo& src, uint32_t dwSrcBytes, KaipImgInfo& dst, uint32_t dwDstBits,
                      bool bShiftLine, bool bShiftColumn)
{
    const TBayerPlanes planes{src.pData, src.LineIncrement, dst.pData, dst.LineIncrement, bShiftLine, bShiftColumn};
    WithDepth(dwDstBits, [&](auto bits) {
        WithPixelBytes(dwSrcBytes, [&](auto bytes) {
            RunInterior(TEncodeToBayer<bits, bytes>{}, planes, src.Height, 0, src.Width, 0, src.Height);
        });
    });
}

KaipStatus BdEncodeToBayer(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                           uint32_t dwOptions)
{
    static const char* const pszFunc = "KaipBdEncodeToBayer";
    // The source passes the same Bayer test as every decoder's, so a colour image is refused
    // with KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT before its own format is looked at.
    TBayerJob job;
    const KaipStatus status =
        PrepareBayerJob(pszFunc, pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions, kBayerClasses, 1, job);
    if (status != KASTATUS_OK) return status;
    const uint32_t dwSrcBytes = job.src.PixelFormat == KaipPixelFormat_BGR8Packed    ? 3
                                : job.src.PixelFormat == KaipPixelFormat_BGRA8Packed ? 4
                                                                                     : 0;
    if (dwSrcBytes == 0) {
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT, "%s: KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT.",
                      pszFunc);
    }
    uint32_t dwBase = 0, dwPattern = 0;
    bool bBayer = false;
    GetFlagsFromPixelFormat(dwDstPixelFormat, dwBase, dwPattern, bBayer);
    const uint32_t dwDstBits = !bBayer                            ? 0
                               : dwBase == KaipPixelFormat_Mono8  ? 8
                               : dwBase == KaipPixelFormat_Mono10 ? 10
                               : dwBase == KaipPixelFormat_Mono12 ? 12
                                                                  : 0;
    if (dwDstBits == 0) {
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, "%s: KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT.",
                      pszFunc);
    }
    EncodeBgrToBayer(job.src, dwSrcBytes, *pDstImgInfo, dwDstBits, (dwPattern & KaipImgFlag_BayerShiftLine) != 0,
                     (dwPattern & KaipImgFlag_BayerShiftColumn) != 0);
    return KASTATUS_OK;
}
