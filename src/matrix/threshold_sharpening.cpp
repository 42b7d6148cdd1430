// threshold_sharpening.cpp: a 3x3 kernel applied only where the local contrast exceeds a threshold.
#include "matrix/matrix.h"

// The convolution's checks, formats, border and LUT rules; the line workers compare each sample with the
// mean of its nine samples (ThresholdLine).
KaipStatus ThresholdSharpening3x3(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, const int32_t* piMatrix,
                                  int32_t iThreshold, uint32_t dwOptions, KaipHLut hLut)
{
    return Filter3x3("Kaip3x3ThresholdSharpening", pSrcImgInfo, pDstImgInfo, piMatrix, dwOptions, hLut, &iThreshold);
}
