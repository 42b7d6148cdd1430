// exports.cpp: the exported matrix filters, each forwarding to its worker.
#include "matrix/matrix.h"

extern "C" {

KAIP_API KaipStatus KaipApplyRgbColorCorrection(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                                const int32_t* piMatrix, uint32_t dwOptions, KaipHLut hLut)
{
    return ApplyRgbColorCorrection(pSrcImgInfo, pDstImgInfo, piMatrix, dwOptions, hLut);
}

KAIP_API KaipStatus KaipSetSaturationMatrix(uint32_t dwSaturation, int32_t* piMatrix)
{
    return SetSaturationMatrix(dwSaturation, piMatrix);
}

KAIP_API KaipStatus KaipApply3x3Convolution(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                            const int32_t* piMatrix, uint32_t dwOptions, KaipHLut hLut)
{
    return Apply3x3Convolution(pSrcImgInfo, pDstImgInfo, piMatrix, dwOptions, hLut);
}

KAIP_API KaipStatus KaipSet3x3MatrixSharpening(int32_t iSharpness, int32_t* piMatrix, uint32_t dwOptions)
{
    return Set3x3MatrixSharpening(iSharpness, piMatrix, dwOptions);
}

KAIP_API KaipStatus Kaip3x3ThresholdSharpening(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                               const int32_t* piMatrix, int32_t iThreshold, uint32_t dwOptions,
                                               KaipHLut hLut)
{
    return ThresholdSharpening3x3(pSrcImgInfo, pDstImgInfo, piMatrix, iThreshold, dwOptions, hLut);
}

KAIP_API KaipStatus KaipApplyShadingCorrection(const KaipImgInfo* pSrcImgInfo, const KaipImgInfo* pBlackImgInfo,
                                               const KaipImgInfo* pWhiteImgInfo, KaipImgInfo* pDstImgInfo,
                                               uint32_t dwOptions)
{
    return ApplyShadingCorrection(pSrcImgInfo, pBlackImgInfo, pWhiteImgInfo, pDstImgInfo, dwOptions);
}

}  // extern "C"
