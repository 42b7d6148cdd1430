// matrix.h: colour correction, 3x3 convolution, threshold sharpening and shading correction, the workers behind
// the exported matrix filters.
#pragma once

#include <cstdint>

#include "pm.imgproc.h"

KaipStatus ApplyRgbColorCorrection(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, const int32_t* piMatrix,
                                   uint32_t dwOptions, KaipHLut hLut);
KaipStatus SetSaturationMatrix(uint32_t dwSaturation, int32_t* piMatrix);

KaipStatus Apply3x3Convolution(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, const int32_t* piMatrix,
                               uint32_t dwOptions, KaipHLut hLut);
KaipStatus Set3x3MatrixSharpening(int32_t iSharpness, int32_t* piMatrix, uint32_t dwOptions);
// Kaip3x3ThresholdSharpening (an identifier cannot start with the digit, hence the order of the name).
KaipStatus ThresholdSharpening3x3(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, const int32_t* piMatrix,
                                  int32_t iThreshold, uint32_t dwOptions, KaipHLut hLut);

// The convolution of the interior behind both 3x3 filters, logging as pszFunc; with piThreshold only
// where the local contrast exceeds *piThreshold.
KaipStatus Filter3x3(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                     const int32_t* piMatrix, uint32_t dwOptions, KaipHLut hLut, const int32_t* piThreshold);

KaipStatus ApplyShadingCorrection(const KaipImgInfo* pSrcImgInfo, const KaipImgInfo* pBlackImgInfo,
                                  const KaipImgInfo* pWhiteImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions);

// The red, green and blue tables of one LUT body, as bytes (8-bit body) or words (10, 12 bits).
struct TLutTables {
    const void* pRed = nullptr;
    const void* pGreen = nullptr;
    const void* pBlue = nullptr;
};

// Resolves a handle to the tables of an 8-, 10- or 12-bit body; handle 0 leaves them null.
// Any failure, and any non-zero handle for another depth, logs "%s: KASTATUS_KAIP_INVALID_LUT_TYPE".
KaipStatus GetLutTables(const char* pszFunc, KaipHLut hLut, unsigned uDepth, TLutTables& tables);

// A double truncated toward zero to 32 bits; values out of range (and NaN) give INT32_MIN, as the
// processor's conversion instruction does, instead of undefined behaviour.
inline int32_t TruncateToInt32(double v)
{
    return (v > -2147483649.0 && v < 2147483648.0) ? int32_t(v) : INT32_MIN;
}
