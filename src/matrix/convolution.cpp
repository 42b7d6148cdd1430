// convolution.cpp: 3x3 convolution of the image interior with a kernel in thousandths, and the sharpening kernel.
#include <algorithm>
#include <iterator>

#include "core/check.h"
#include "core/log.h"
#include "matrix/matrix_lines.h"

namespace {

constexpr const char* kFunc = "KaipApply3x3Convolution";
// Mono8 to Mono16 (the Bayer codes included), BGR8Packed and BGRA8Packed.
constexpr uint64_t kClassMask = KaipPixelFormatClass_Mono8 | KaipPixelFormatClass_Mono9 | KaipPixelFormatClass_Mono10 |
                                KaipPixelFormatClass_Mono11 | KaipPixelFormatClass_Mono12 |
                                KaipPixelFormatClass_Mono13 | KaipPixelFormatClass_Mono14 |
                                KaipPixelFormatClass_Mono15 | KaipPixelFormatClass_Mono16 |
                                KaipPixelFormatClass_BGR8Packed | KaipPixelFormatClass_BGRA8Packed;
static_assert(kClassMask == 0x19FF, "the mono formats and the two 8-bit BGR formats");

// The tag of the line workers built for the baseline processor.
struct TBaseline {};

}  // namespace

KaipStatus Apply3x3Convolution(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, const int32_t* piMatrix,
                               uint32_t dwOptions, KaipHLut hLut)
{
    bool bReallocate = false;
    KaipStatus status = CheckImgInfos(kFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kClassMask,
                                      pSrcImgInfo ? pSrcImgInfo->PixelFormat : 0, 0,
                                      KaipCheck_SameSize | KaipCheck_SamePixelFormat | KaipCheck_DstRequired,
                                      KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp, &bReallocate);
    if (status != KASTATUS_OK) return status;
    if (piMatrix == nullptr)
        return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.",
                      kFunc);
    const KaipImgInfo& src = *pSrcImgInfo;
    const TConvolutionFormat* pFormat =
        FindFormatRow(kConvolutionFormats<TBaseline>, g_pConvolutionFormatsSse4, g_pConvolutionFormatsAvx2,
                      kConvolutionFormatCount, src.PixelFormat);
    if (pFormat == nullptr)
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT, "%s: Unsupported source color format 0x%8.8x", kFunc,
                      src.PixelFormat);
    if (bReallocate) {
        status = ReallocateDst(kFunc, pDstImgInfo, src.Width, src.Height, src.PixelFormat, dwOptions);
        if (status != KASTATUS_OK) return status;
        // Colour planes asked for in the options word would leave no interleaved buffer to write.
        if (pDstImgInfo->Flags & KaipImgFlag_ColorPlanes)
            return Refuse(KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED, "%s: the color planes are not supported", kFunc);
    }
    TLutTables lut;
    status = GetLutTables(kFunc, hLut, pFormat->uLutDepth, lut);
    if (status != KASTATUS_OK) return status;
    if (src.Height <= 2 || src.Width <= 2) return KASTATUS_OK;

    // The blue byte of a BGR pixel goes through the red table: tables follow byte positions.
    const void* apTables[3] = {lut.pRed, lut.pGreen, lut.pBlue};
    if (!pFormat->bColor) apTables[0] = lut.pGreen;
    uint32_t k[9];
    std::copy(piMatrix, piMatrix + 9, k);
    const bool bCross = (k[0] | k[2] | k[6] | k[8]) == 0;
    TConvolveLine* pfnLine = pFormat->apfnLine[bCross][lut.pRed != nullptr];
    const size_t srcIncrement = src.LineIncrement, dstIncrement = pDstImgInfo->LineIncrement;
    for (size_t y = 1; y + 1 < src.Height; ++y) {
        const uint8_t* pLine = src.pData + y * srcIncrement;
        pfnLine(pLine - srcIncrement, pLine, pLine + srcIncrement, pDstImgInfo->pData + y * dstIncrement, src.Width, k,
                pFormat->iMax, apTables);
    }
    return KASTATUS_OK;
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
