// exports.cpp: the exported Bayer and white-balance functions, each forwarding to its worker.
#include "bayer/bayer.h"

KAIP_API KaipStatus KaipBdShowMosaic(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                     uint32_t dwDstPixelFormat, uint32_t dwOptions)
{
    return BdShowMosaic(pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions);
}

KAIP_API KaipStatus KaipBdGreenToGreyscale(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                           uint32_t dwDstPixelFormat, uint32_t dwOptions)
{
    return BdGreenToGreyscale(pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions);
}

KAIP_API KaipStatus KaipBdNearestNeighbour(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                           uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut)
{
    return BdNearestNeighbour(pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions, hLut);
}

KAIP_API KaipStatus KaipBdEncodeToBayer(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                        uint32_t dwDstPixelFormat, uint32_t dwOptions)
{
    return BdEncodeToBayer(pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions);
}

KAIP_API KaipStatus KaipBdBilinearInterpolation(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                                uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut)
{
    return BdBilinearInterpolation(pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions, hLut);
}

KAIP_API KaipStatus KaipBdVariableGradients(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                            uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut)
{
    return BdVariableGradients(pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions, hLut);
}

KAIP_API KaipStatus KaipBdPixelGrouping(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                        uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut)
{
    return BdPixelGrouping(pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions, hLut);
}

KAIP_API KaipStatus KaipBdBilinearColorCorrection(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                                  uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut)
{
    return BdBilinearColorCorrection(pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions, hLut);
}

KAIP_API KaipStatus KaipCalcWbFactors(const KaipImgInfo* pSrcImgInfo, uint32_t* pdwRed, uint32_t* pdwGreen,
                                      uint32_t* pdwBlue, uint32_t dwOptions)
{
    return CalcWbFactors(pSrcImgInfo, pdwRed, pdwGreen, pdwBlue, dwOptions);
}
