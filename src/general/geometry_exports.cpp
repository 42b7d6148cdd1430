// geometry_exports.cpp: the exported geometry and buffer functions, each forwarding to its worker.
#include "general/geometry.h"

KAIP_API KaipStatus KaipMirror(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, int32_t iTopBottom,
                               int32_t iLeftRight, uint32_t dwOptions, KaipHLut hLut)
{
    return Mirror(pSrcImgInfo, pDstImgInfo, iTopBottom, iLeftRight, dwOptions, hLut);
}

KAIP_API KaipStatus KaipReverseLines(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions)
{
    return ReverseLines(pSrcImgInfo, pDstImgInfo, dwOptions);
}

KAIP_API KaipStatus KaipReverseLinesFast(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, void* pLineBuffer,
                                         uint32_t dwOptions)
{
    return ReverseLinesFast(pSrcImgInfo, pDstImgInfo, pLineBuffer, dwOptions);
}

KAIP_API KaipStatus KaipRotate90AndMirror(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                          uint32_t dwClockwise, uint32_t dwMirrorTopBottom, uint32_t dwMirrorLeftRight,
                                          uint32_t dwOptions, KaipHLut hLut)
{
    return Rotate90AndMirror(pSrcImgInfo, pDstImgInfo, dwClockwise, dwMirrorTopBottom, dwMirrorLeftRight, dwOptions,
                             hLut);
}

KAIP_API KaipStatus KaipDeinterlace(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions)
{
    return Deinterlace(pSrcImgInfo, pDstImgInfo, dwOptions);
}

KAIP_API KaipStatus KaipCopyArea(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, int32_t iXOffset,
                                 int32_t iYOffset, int32_t iDstWidth, int32_t iDstHeight, uint32_t dwOptions)
{
    return CopyArea(pSrcImgInfo, pDstImgInfo, iXOffset, iYOffset, iDstWidth, iDstHeight, dwOptions);
}

KAIP_API KaipStatus KaipFillWithColor(KaipImgInfo* pImgInfo, uint8_t red, uint8_t green, uint8_t blue)
{
    return FillWithColor(pImgInfo, red, green, blue);
}
