// color_correction.cpp: RGB colour correction by a 3x3 matrix in thousandths, and the saturation matrix.
#include <algorithm>
#include <iterator>
#include <type_traits>

#include "core/check.h"
#include "core/log.h"
#include "matrix/matrix.h"

namespace {

constexpr const char* kFunc = "KaipApplyRgbColorCorrection";
constexpr uint64_t kClassMask = KaipPixelFormatClass_BGR8Packed | KaipPixelFormatClass_BGRA8Packed |
                                KaipPixelFormatClass_RGB8Packed | KaipPixelFormatClass_RGBA8Packed |
                                KaipPixelFormatClass_BGR10Packed | KaipPixelFormatClass_RGB10Packed |
                                KaipPixelFormatClass_BGR12Packed | KaipPixelFormatClass_RGB12Packed |
                                KaipPixelFormatClass_BGR16 | KaipPixelFormatClass_RGB16Packed;
static_assert(kClassMask == 0x3F00007800ull, "the ten packed RGB and BGR formats");

// One row of 16.16 coefficients applied to a pixel. TSum is 32 bits for samples of up to 12 bits
// (a large coefficient wraps the sum as the processor's integer arithmetic does) and 64 bits for 16.
template <typename TSum>
inline int32_t Channel(const int32_t* c, TSum r, TSum g, TSum b, TSum max)
{
    using U = std::make_unsigned_t<TSum>;
    const TSum v = TSum(U(c[0]) * U(r) + U(c[1]) * U(g) + U(c[2]) * U(b));
    return int32_t(std::clamp<TSum>(v >> 16, 0, max));
}

// One line of a packed format: red at sample iRed, green at 1, blue at 2 - iRed, iStep samples per
// pixel (a fourth sample is left alone). The output may be the input line itself.
template <typename TSample, typename TSum, int iRed, int iStep, bool bLut>
void CorrectLine(const uint8_t* pSrcLine, uint8_t* pDstLine, uint32_t dwWidth, const int32_t* c, int32_t iMax,
                 const TLutTables& lut)
{
    const TSample* s = reinterpret_cast<const TSample*>(pSrcLine);
    TSample* d = reinterpret_cast<TSample*>(pDstLine);
    const TSample* pRed = static_cast<const TSample*>(lut.pRed);
    const TSample* pGreen = static_cast<const TSample*>(lut.pGreen);
    const TSample* pBlue = static_cast<const TSample*>(lut.pBlue);
    for (uint32_t x = 0; x < dwWidth; ++x, s += iStep, d += iStep) {
        const TSum r = s[iRed], g = s[1], b = s[2 - iRed];
        const int32_t vr = Channel<TSum>(c, r, g, b, iMax);
        const int32_t vg = Channel<TSum>(c + 3, r, g, b, iMax);
        const int32_t vb = Channel<TSum>(c + 6, r, g, b, iMax);
        if constexpr (bLut) {
            d[iRed] = pRed[vr], d[1] = pGreen[vg], d[2 - iRed] = pBlue[vb];
        } else {
            d[iRed] = TSample(vr), d[1] = TSample(vg), d[2 - iRed] = TSample(vb);
        }
    }
}

using TCorrectLine = void(const uint8_t*, uint8_t*, uint32_t, const int32_t*, int32_t, const TLutTables&);

struct TCorrectionFormat {
    uint32_t dwPixelFormat;
    unsigned uDepth;  // 8, 10, 12 (with a LUT of that depth) or 16 (never a LUT)
    TCorrectLine* pfnPlain;
    TCorrectLine* pfnLut;
};

template <typename TSample, int iRed, int iStep>
constexpr TCorrectionFormat Row(uint32_t dwPixelFormat, unsigned uDepth)
{
    if constexpr (sizeof(TSample) == 1) {
        return {dwPixelFormat, uDepth, CorrectLine<TSample, int32_t, iRed, iStep, false>,
                CorrectLine<TSample, int32_t, iRed, iStep, true>};
    }
    if (uDepth == 16) return {dwPixelFormat, uDepth, CorrectLine<TSample, int64_t, iRed, iStep, false>, nullptr};
    return {dwPixelFormat, uDepth, CorrectLine<TSample, int32_t, iRed, iStep, false>,
            CorrectLine<TSample, int32_t, iRed, iStep, true>};
}

constexpr TCorrectionFormat kFormats[] = {
    Row<uint8_t, 2, 3>(KaipPixelFormat_BGR8Packed, 8),     Row<uint8_t, 2, 4>(KaipPixelFormat_BGRA8Packed, 8),
    Row<uint8_t, 0, 3>(KaipPixelFormat_RGB8Packed, 8),     Row<uint8_t, 0, 4>(KaipPixelFormat_RGBA8Packed, 8),
    Row<uint16_t, 2, 3>(KaipPixelFormat_BGR10Packed, 10),  Row<uint16_t, 0, 3>(KaipPixelFormat_RGB10Packed, 10),
    Row<uint16_t, 2, 3>(KaipPixelFormat_BGR12Packed, 12),  Row<uint16_t, 0, 3>(KaipPixelFormat_RGB12Packed, 12),
    Row<uint16_t, 2, 3>(KaipPixelFormat_BGR16, 16),        Row<uint16_t, 0, 3>(KaipPixelFormat_RGB16Packed, 16),
};

}  // namespace

KaipStatus ApplyRgbColorCorrection(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, const int32_t* piMatrix,
                                   uint32_t dwOptions, KaipHLut hLut)
{
    bool bReallocate = false;
    KaipStatus status = CheckImgInfos(kFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kClassMask,
                                      pSrcImgInfo ? pSrcImgInfo->PixelFormat : 0, 0,
                                      KaipCheck_SameSize | KaipCheck_SamePixelFormat,
                                      KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp, &bReallocate);
    if (status != KASTATUS_OK) return status;
    if (piMatrix == nullptr)
        return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.",
                      kFunc);
    const KaipImgInfo& src = *pSrcImgInfo;
    const auto* pFormat = std::find_if(std::begin(kFormats), std::end(kFormats),
                                       [&](const TCorrectionFormat& f) { return f.dwPixelFormat == src.PixelFormat; });
    if (pFormat == std::end(kFormats))
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
    TCorrectLine* pfnLine = lut.pRed ? pFormat->pfnLut : pFormat->pfnPlain;
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
    const int32_t aiMatrix[9] = {TruncateToInt32((0.701 * s + 0.299) * 1000), iGreen, iBlue,
                                 iRed, TruncateToInt32((0.413 * s + 0.587) * 1000), iBlue,
                                 iRed, iGreen, TruncateToInt32((s * 0.886 + 0.114) * 1000)};
    std::copy(std::begin(aiMatrix), std::end(aiMatrix), piMatrix);
    return KASTATUS_OK;
}
