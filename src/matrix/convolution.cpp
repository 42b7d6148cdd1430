// convolution.cpp: 3x3 convolution of the image interior with a kernel in thousandths, and the sharpening kernel.
#include <algorithm>
#include <iterator>

#include "core/check.h"
#include "core/log.h"
#include "matrix/matrix.h"

namespace {

constexpr const char* kFunc = "KaipApply3x3Convolution";
constexpr uint64_t kClassMask = 0x19FF;  // Mono8 to Mono16 (Bayer included), BGR8Packed, BGRA8Packed

// One interior line: every pixel but the first and the last, every colour channel on its own with
// the same channel of its neighbours (iStep samples apart). The kernel comes as unsigned words so
// that the sum wraps at 32 bits as the processor's arithmetic does. A cross kernel (corners 0) skips
// the four corner products, which changes nothing in the result. With a LUT, channel i goes through
// ppTables[i].
template <typename TSample, int iChannels, int iStep, bool bCross, bool bLut>
void ConvolveLine(const uint8_t* pAbove, const uint8_t* pLine, const uint8_t* pBelow, uint8_t* pDstLine,
                  uint32_t dwWidth, const uint32_t* k, int32_t iMax, const void* const* ppTables)
{
    const TSample* a = reinterpret_cast<const TSample*>(pAbove);
    const TSample* m = reinterpret_cast<const TSample*>(pLine);
    const TSample* b = reinterpret_cast<const TSample*>(pBelow);
    TSample* d = reinterpret_cast<TSample*>(pDstLine);
    const size_t end = size_t(dwWidth - 1) * iStep;
    for (size_t i = iStep; i < end; i += iStep) {
        for (int ch = 0; ch < iChannels; ++ch) {
            const size_t j = i + ch, l = j - iStep, r = j + iStep;
            uint32_t sum = k[1] * a[j] + k[3] * m[l] + k[4] * m[j] + k[5] * m[r] + k[7] * b[j];
            if constexpr (!bCross) sum += k[0] * a[l] + k[2] * a[r] + k[6] * b[l] + k[8] * b[r];
            const int32_t v = std::clamp(int32_t(sum) / 1000, 0, iMax);
            if constexpr (bLut) {
                d[j] = static_cast<const TSample*>(ppTables[ch])[v];
            } else {
                d[j] = TSample(v);
            }
        }
    }
}

using TConvolveLine = void(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint32_t, const uint32_t*,
                           int32_t, const void* const*);

struct TConvolutionFormat {
    uint32_t dwPixelFormat;
    int32_t iMax;
    unsigned uLutDepth;  // 8, 10 or 12; 0: the format takes no LUT
    bool bColor;         // bytes 0, 1, 2 of a pixel through the red, green and blue tables; mono: green
    TConvolveLine* apfnLine[2][2];  // [cross kernel][LUT]
};

template <typename TSample, int iChannels, int iStep>
constexpr TConvolutionFormat Row(uint32_t dwPixelFormat, int32_t iMax, unsigned uLutDepth)
{
    return {dwPixelFormat,
            iMax,
            uLutDepth,
            iChannels == 3,
            {{ConvolveLine<TSample, iChannels, iStep, false, false>, ConvolveLine<TSample, iChannels, iStep, false, true>},
             {ConvolveLine<TSample, iChannels, iStep, true, false>, ConvolveLine<TSample, iChannels, iStep, true, true>}}};
}

// Formats of the class mask that are not listed (the Bayer codes, Mono14) are refused.
constexpr TConvolutionFormat kFormats[] = {
    Row<uint8_t, 1, 1>(KaipPixelFormat_Mono8, 255, 8),     Row<uint8_t, 3, 3>(KaipPixelFormat_BGR8Packed, 255, 8),
    Row<uint8_t, 3, 4>(KaipPixelFormat_BGRA8Packed, 255, 8), Row<uint16_t, 1, 1>(KaipPixelFormat_Mono10, 1023, 10),
    Row<uint16_t, 1, 1>(KaipPixelFormat_Mono12, 4095, 12), Row<uint16_t, 1, 1>(KaipPixelFormat_Mono9, 511, 0),
    Row<uint16_t, 1, 1>(KaipPixelFormat_Mono11, 2047, 0),  Row<uint16_t, 1, 1>(KaipPixelFormat_Mono13, 8191, 0),
    Row<uint16_t, 1, 1>(KaipPixelFormat_Mono15, 32767, 0), Row<uint16_t, 1, 1>(KaipPixelFormat_Mono16, 65535, 0),
};

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
    const auto* pFormat = std::find_if(std::begin(kFormats), std::end(kFormats),
                                       [&](const TConvolutionFormat& f) { return f.dwPixelFormat == src.PixelFormat; });
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
