// exports.cpp: the exported conversion functions, each forwarding to its internal function.
#include "convert/convert.h"

extern "C" {

KAIP_API int KaipCanConvertToPixelFormat(uint32_t dwSrcPixelFormat, uint32_t dwDstPixelFormat)
{
    return CanConvertToPixelFormat(dwSrcPixelFormat, dwDstPixelFormat);
}

KAIP_API KaipStatus KaipConvertToPixelFormat(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                             uint32_t dwDstPixelFormat, uint32_t dwOptions)
{
    return ConvertToPixelFormat(pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions);
}

}  // extern "C"
