// bayer.h: the Bayer decoders and the white-balance measurement behind the exported KaipBd* functions.
#pragma once

#include <cstdint>

#include "pm.imgproc.h"

KaipStatus BdShowMosaic(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                        uint32_t dwOptions);
KaipStatus BdGreenToGreyscale(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                              uint32_t dwOptions);
KaipStatus BdNearestNeighbour(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                              uint32_t dwOptions, KaipHLut hLut);
KaipStatus BdEncodeToBayer(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                           uint32_t dwOptions);
KaipStatus BdBilinearInterpolation(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                                   uint32_t dwOptions, KaipHLut hLut);
KaipStatus BdVariableGradients(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                               uint32_t dwOptions, KaipHLut hLut);
KaipStatus BdPixelGrouping(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                           uint32_t dwOptions, KaipHLut hLut);
KaipStatus BdBilinearColorCorrection(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                     uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut);

// Writes into each Bayer sample (8, 10 or 12 bits) the channel of its site taken from a
// BGR8 or BGRa8 pixel (srcBytes 3 or 4), shifted up to the depth. The exported encoder
// cannot reach it yet: its Bayer source test refuses every colour image first.
void EncodeBgrToBayer(const KaipImgInfo& src, uint32_t dwSrcBytes, KaipImgInfo& dst, uint32_t dwDstBits,
                      bool bShiftLine, bool bShiftColumn);

// White-balance factors in thousandths: RGB/BGR images here, everything else goes on to
// KAIP_BdCalcWbFactors, which measures Bayer mosaics.
KaipStatus CalcWbFactors(const KaipImgInfo* pSrcImgInfo, uint32_t* pdwRed, uint32_t* pdwGreen, uint32_t* pdwBlue,
                         uint32_t dwOptions);
KaipStatus KAIP_BdCalcWbFactors(const KaipImgInfo* pSrcImgInfo, uint32_t* pdwRed, uint32_t* pdwGreen, uint32_t* pdwBlue,
                                uint32_t dwOptions);
