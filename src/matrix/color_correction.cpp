// color_correction.cpp: RGB colour correction by a 3x3 matrix in thousandths, and the saturation matrix.
#include <algorithm>
#include <iterator>

#include "core/check.h"
#include "core/log.h"
#include "matrix/matrix_lines.h"

namespace {

constexpr const char* kFunc = "KaipApplyRgbColorCorrection";
constexpr uint64_t kClassMask = KaipPixelFormatClass_BGR8Packed | KaipPixelFormatClass_BGRA8Packed |
                                KaipPixelFormatClass_RGB8Packed | KaipPixelFormatClass_RGBA8Packed |
                                KaipPixelFormatClass_BGR10Packed | KaipPixelFormatClass_RGB10Packed |
                                KaipPixelFormatClass_BGR12Packed | KaipPixelFormatClass_RGB12Packed |
                                KaipPixelFormatClass_BGR16 | KaipPixelFormatClass_RGB16Packed;
static_assert(kClassMask == 0x3F00007800ull, "the ten packed RGB and BGR formats");

// The tag of the line workers built for the baseline processor.
struct TBaseline {};

}  // namespace

KaipStatus ApplyRgbColorCorrection(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, const int32_t* piMatrix,
                                   uint32_t dwOptions, KaipHLut hLut)
{
    bool bReallocate = false;
    KaipStatus status = CheckImgInfos(
        kFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kClassMask, pSrcImgInfo ? pSrcImgInfo->PixelFormat : 0, 0,
        KaipCheck_SameSize | KaipCheck_SamePixelFormat, KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp, &bReallocate);
    if (status != KASTATUS_OK) return status;
    if (piMatrix == nullptr)
        return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.",
                      kFunc);
    const KaipImgInfo& src = *pSrcImgInfo;
    const TCorrectionFormat* pFormat =
        FindFormatRow(kCorrectionFormats<TBaseline>, g_pCorrectionFormatsSse2, g_pCorrectionFormatsSse4,
                      g_pCorrectionFormatsAvx2, kCorrectionFormatCount, src.PixelFormat);
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
    if (pFormat->uDepth != 16) {
        status = GetLutTables(kFunc, hLut, pFormat->uDepth, lut);
        if (status != KASTATUS_OK) return status;
    }

    int32_t c[9];
    for (int i = 0; i < 9; ++i) c[i] = TruncateToInt32(piMatrix[i] * 65.536);
    const int32_t iMax = int32_t((1u << pFormat->uDepth) - 1);
    TCorrectLine* pfnLine = pFormat->apfnLine[lut.pRed != nullptr];
    uint8_t* pOut = pDstImgInfo ? pDstImgInfo->pData : src.pData;
    const size_t outIncrement = pDstImgInfo ? pDstImgInfo->LineIncrement : src.LineIncrement;
    for (uint32_t y = 0; y < src.Height; ++y)
        pfnLine(src.pData + size_t(y) * src.LineIncrement, pOut + y * outIncrement, src.Width, c, iMax, lut);
    return KASTATUS_OK;
}

KaipStatus SetSaturationMatrix(uint32_t dwSaturation, int32_t* piMatrix)
{
    if (piMatrix == nullptr)
        return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.",
                      "KaipSetSaturationMatrix");
    // Luma weights 0.299, 0.587, 0.114 keep grey grey; each entry is evaluated in exactly this form.
    const double s = dwSaturation / 100.0;
    const int32_t iRed = TruncateToInt32((1 - s) * 0.299 * 1000);
    const int32_t iGreen = TruncateToInt32((1 - s) * 0.587 * 1000);
    const int32_t iBlue = TruncateToInt32((1 - s) * 0.114 * 1000);
    const int32_t aiMatrix[9] = {TruncateToInt32((0.701 * s + 0.299) * 1000), iGreen, iBlue, iRed,
                                 TruncateToInt32((0.413 * s + 0.587) * 1000), iBlue,  iRed,  iGreen,
                                 TruncateToInt32((s * 0.886 + 0.114) * 1000)};
    std::copy(std::begin(aiMatrix), std::end(aiMatrix), piMatrix);
    return KASTATUS_OK;
}
