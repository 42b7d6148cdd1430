// bilinear.cpp: bilinear Bayer interpolation: each missing colour is the truncated mean of its nearest sites.
#include "bayer/bayer.h"
#include "bayer/decoder_frame.h"
#include "core/check.h"
#include "core/log.h"

namespace {

// No division: the raw sum of two or four samples indexes a replicated table, which reads
// the LUT's output for the truncated mean in the same access. Indices are masked to the
// table sizes, so stray high bits in 16-bit containers cannot reach past a table.
template <unsigned Bits, uint32_t DstBytes>
struct TBilinear {
    TBayerLut lut;

    template <int Site>
    void Pixel(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x) const
    {
        using D = TDepth<Bits>;
        const uint32_t own = D::At(pCur, x) & D::kMask1;
        const uint32_t across = (D::At(pCur, x - 1) + D::At(pCur, x + 1)) & D::kMask2;
        const uint32_t upDown = (D::At(pUp, x) + D::At(pDown, x)) & D::kMask2;
        uint8_t* p = pOut + size_t(x) * DstBytes;
        if constexpr (Site == kSiteGreenR) {
            StoreBgr<DstBytes>(p, lut.pBlue2[upDown], lut.pGreen[own], lut.pRed2[across]);
        } else if constexpr (Site == kSiteGreenB) {
            StoreBgr<DstBytes>(p, lut.pBlue2[across], lut.pGreen[own], lut.pRed2[upDown]);
        } else {
            const uint32_t direct =
                (D::At(pUp, x) + D::At(pDown, x) + D::At(pCur, x - 1) + D::At(pCur, x + 1)) & D::kMask4;
            const uint32_t diagonal =
                (D::At(pUp, x - 1) + D::At(pUp, x + 1) + D::At(pDown, x - 1) + D::At(pDown, x + 1)) & D::kMask4;
            if constexpr (Site == kSiteRed) {
                StoreBgr<DstBytes>(p, lut.pBlue4[diagonal], lut.pGreen4[direct], lut.pRed[own]);
            } else {
                StoreBgr<DstBytes>(p, lut.pBlue[own], lut.pGreen4[direct], lut.pRed4[diagonal]);
            }
        }
    }
};

}  // namespace

KaipStatus BdBilinearInterpolation(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                                   uint32_t dwOptions, KaipHLut hLut)
{
    static const char* const pszFunc = "KaipBdBilinearInterpolation";
    TBayerJob job;
    KaipStatus status = PrepareBayerJob(pszFunc, pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions,
                                        KaipPixelFormatClass_BGR8Packed | KaipPixelFormatClass_BGRA8Packed, 2, job);
    if (status != KASTATUS_OK) return status;
    TBayerLut lut;
    status = SelectBayerLut(pszFunc, hLut, job.dwBits, TLutDemand::FullBayer, lut);
    if (status != KASTATUS_OK) return status;
    const uint32_t dwDstBytes = dwDstPixelFormat == KaipPixelFormat_BGR8Packed    ? 3
                                : dwDstPixelFormat == KaipPixelFormat_BGRA8Packed ? 4
                                                                                  : 0;
    if (dwDstBytes == 0) {
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, "%s: KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT.",
                      pszFunc);
    }
    const uint32_t w = job.src.Width, h = job.src.Height;
    const TBayerPlanes planes = JobPlanes(job);
    WithDepth(job.dwBits, [&](auto bits) {
        WithPixelBytes(dwDstBytes,
                       [&](auto bytes) { RunInterior(TBilinear<bits, bytes>{lut}, planes, h, 1, w - 1, 1, h - 1); });
    });
    CalculateFrame1(planes.pSrc, w, h, planes.dwSrcLineIncrement, job.dwBits, job.bShiftLine, job.bShiftColumn,
                    planes.pDst, planes.dwDstLineIncrement, dwDstBytes * 8, hLut);
    return KASTATUS_OK;
}
