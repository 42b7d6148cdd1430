// convolution.cpp: 3x3 convolution of the image interior with a kernel in thousandths (plain or above a
// contrast threshold), and the sharpening kernel.
#include <algorithm>
#include <iterator>

#include "core/check.h"
#include "core/log.h"
#include "matrix/matrix_lines.h"

namespace {

// Mono8 to Mono16 (the Bayer codes included), BGR8Packed and BGRA8Packed.
constexpr uint64_t kClassMask = KaipPixelFormatClass_Mono8 | KaipPixelFormatClass_Mono9 | KaipPixelFormatClass_Mono10 |
                                KaipPixelFormatClass_Mono11 | KaipPixelFormatClass_Mono12 |
                                KaipPixelFormatClass_Mono13 | KaipPixelFormatClass_Mono14 |
                                KaipPixelFormatClass_Mono15 | KaipPixelFormatClass_Mono16 |
                                KaipPixelFormatClass_BGR8Packed | KaipPixelFormatClass_BGRA8Packed;
static_assert(kClassMask == 0x19FF, "the mono formats and the two 8-bit BGR formats");

// The tag of the line workers built for the baseline processor.
struct TBaseline {};

// Whether the buffers of two images (as their descriptors give them now) have a byte in common.
bool SharesBytes(const KaipImgInfo& a, const KaipImgInfo& b)
{
    const uintptr_t pa = uintptr_t(a.pData), pb = uintptr_t(b.pData);
    return pa < pb + size_t(b.Height) * b.LineIncrement && pb < pa + size_t(a.Height) * a.LineIncrement;
}

}  // namespace

KaipStatus Filter3x3(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                     const int32_t* piMatrix, uint32_t dwOptions, KaipHLut hLut, const int32_t* piThreshold)
{
    bool bReallocate = false;
    KaipStatus status = CheckImgInfos(pszFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kClassMask,
                                      pSrcImgInfo ? pSrcImgInfo->PixelFormat : 0, 0,
                                      KaipCheck_SameSize | KaipCheck_SamePixelFormat | KaipCheck_DstRequired,
                                      KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp, &bReallocate);
    // The check leaves a format outside the class mask to its caller to log.
    if (status == KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT)
        return Refuse(status, "%s: Unsupported source color format 0x%8.8x", pszFunc, pSrcImgInfo->PixelFormat);
    if (status != KASTATUS_OK) return status;
    if (piMatrix == nullptr)
        return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.",
                      pszFunc);
    const KaipImgInfo& src = *pSrcImgInfo;
    // The vector workers read ahead of what they write, so a destination that shares bytes with the
    // source gets the baseline's, which read the samples of each result just before writing it.
    const bool bShared = SharesBytes(src, *pDstImgInfo);
    const TConvolutionFormat* pFormat =
        FindFormatRow(kConvolutionFormats<TBaseline>, g_pConvolutionFormatsSse2, g_pConvolutionFormatsSse4,
                      g_pConvolutionFormatsAvx2, kConvolutionFormatCount, src.PixelFormat, !bShared);
    if (pFormat == nullptr)
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT, "%s: Unsupported source color format 0x%8.8x",
                      pszFunc, src.PixelFormat);
    if (bReallocate) {
        status = ReallocateDst(pszFunc, pDstImgInfo, src.Width, src.Height, src.PixelFormat, dwOptions);
        if (status != KASTATUS_OK) return status;
        // Colour planes asked for in the options word would leave no interleaved buffer to write.
        if (pDstImgInfo->Flags & KaipImgFlag_ColorPlanes)
            return Refuse(KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED, "%s: the color planes are not supported", pszFunc);
    }
    TLutTables lut;
    status = GetLutTables(pszFunc, hLut, pFormat->uLutDepth, lut);
    if (status != KASTATUS_OK) return status;
    if (src.Height <= 2 || src.Width <= 2) return KASTATUS_OK;

    // The blue byte of a BGR pixel goes through the red table: tables follow byte positions.
    TConvolutionJob job{};
    std::copy(piMatrix, piMatrix + 9, job.k);
    job.iMax = pFormat->iMax;
    // Contrasts are at most 9 x 65535, so any threshold above that sharpens nothing and one below 0 everything.
    job.iLimit9 = piThreshold ? int32_t(std::clamp<int64_t>(int64_t(*piThreshold) * 9, -1, INT32_MAX)) : 0;
    job.apTables[0] = pFormat->bColor ? lut.pRed : lut.pGreen;
    job.apTables[1] = lut.pGreen;
    job.apTables[2] = lut.pBlue;
    const bool bCross = (job.k[0] | job.k[2] | job.k[6] | job.k[8]) == 0, bLut = lut.pRed != nullptr;
    TConvolveLine* pfnLine = piThreshold ? pFormat->apfnThreshold[bLut] : pFormat->apfnLine[bCross][bLut];
    const size_t srcIncrement = src.LineIncrement, dstIncrement = pDstImgInfo->LineIncrement;
    for (size_t y = 1; y + 1 < src.Height; ++y) {
        const uint8_t* pLine = src.pData + y * srcIncrement;
        pfnLine(pLine - srcIncrement, pLine, pLine + srcIncrement, pDstImgInfo->pData + y * dstIncrement, src.Width,
                job);
    }
    return KASTATUS_OK;
}

KaipStatus Apply3x3Convolution(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, const int32_t* piMatrix,
                               uint32_t dwOptions, KaipHLut hLut)
{
    return Filter3x3("KaipApply3x3Convolution", pSrcImgInfo, pDstImgInfo, piMatrix, dwOptions, hLut, nullptr);
}

KaipStatus Set3x3MatrixSharpening(int32_t iSharpness, int32_t* piMatrix, uint32_t dwOptions)
{
    if (piMatrix == nullptr)
        return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.",
                      "KaipSet3x3MatrixSharpening");
    const int32_t s = std::clamp(iSharpness, -100, 100);
    const bool bAll = (dwOptions & KaipSharpening_AllNeighbours) != 0;
    int32_t iCentre, iEdge, iCorner;
    if (s >= 0) {
        // Integer division: the weights add up to exactly 1000 only where it is exact.
        const int32_t k = 9000 * s;
        iCentre = 1000 + 90 * s;
        iEdge = bAll ? -(k / 800) : -(k / 400);
        iCorner = bAll ? iEdge : 0;
    } else if (bAll) {
        iEdge = iCorner = (111 * -s) / 100;
        iCentre = (125 - iEdge) * 8;
    } else {
        iEdge = 2 * -s;
        iCorner = 0;
        iCentre = (250 - iEdge) * 4;
    }
    const int32_t aiMatrix[9] = {iCorner, iEdge, iCorner, iEdge, iCentre, iEdge, iCorner, iEdge, iCorner};
    std::copy(std::begin(aiMatrix), std::end(aiMatrix), piMatrix);
    return KASTATUS_OK;
}
