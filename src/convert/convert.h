// convert.h: the conversion dispatcher, used by the exported conversion functions and the file writers.
#pragma once

#include <cstdint>

#include "pm.imgproc.h"

// 1 when a source format can be converted into a destination format, else 0.
int CanConvertToPixelFormat(uint32_t dwSrcPixelFormat, uint32_t dwDstPixelFormat);

// Converts a whole image into pDstImgInfo in dwDstPixelFormat, rebuilding the destination
// under KaipOption_ReallocateDst.
KaipStatus ConvertToPixelFormat(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                                uint32_t dwOptions);

// Converts an image a Windows bitmap cannot hold into one it can; *piConverted is 1 when a
// conversion was made (into pDstImgInfo).
KaipStatus ConvertToWinBmpCompatibleFormat(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions,
                                           int32_t* piConverted);

// Mono words of one depth to mono words of another (the TIFF writer scales with it).
void Convert_MonoWord_to_MonoWord(uint32_t dwWidth, uint32_t dwHeight, const uint8_t* pSrc, uint8_t* pDst,
                                  uint32_t dwSrcLineInc, uint32_t dwDstLineInc, uint32_t dwSrcBits, uint32_t dwDstBits,
                                  bool bReverseLines);
