// copy_area.cpp: a rectangle of an image, clipped to it, copied into a destination of its size.
#include <algorithm>

#include "core/check.h"
#include "core/common.h"
#include "core/log.h"
#include "general/geometry.h"

using geometry::Line;

// Classes 0 to 14 and 32 to 37: one- to four-byte formats up to RGBA8Packed, and the six-byte RGB/BGR formats.
static constexpr uint64_t kCopyAreaClasses = 0x3F00007FFFull;

KaipStatus CopyArea(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, int32_t iXOffset, int32_t iYOffset,
                    int32_t iDstWidth, int32_t iDstHeight, uint32_t dwOptions)
{
    static const char* const pszFunc = "KaipCopyArea";
    bool bReallocate = false;
    if (const KaipStatus status = CheckImgInfos(pszFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kCopyAreaClasses, 0, 0,
                                                KaipCheck_SamePixelFormat | KaipCheck_DstRequired,
                                                KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp, &bReallocate))
        return status;

    // Clipping in 64 bits, so that an offset plus a size cannot wrap.
    const KaipImgInfo& src = *pSrcImgInfo;
    const int64_t x0 = std::max<int64_t>(iXOffset, 0), x1 = std::min<int64_t>(int64_t(iXOffset) + iDstWidth, src.Width);
    const int64_t y0 = std::max<int64_t>(iYOffset, 0),
                  y1 = std::min<int64_t>(int64_t(iYOffset) + iDstHeight, src.Height);
    if (x1 - x0 < 1 || y1 - y0 < 1)
        return Refuse(KASTATUS_KAIP_DST_RECT_OUTSIDE_SRC,
                      "%s: the specified rect is outside the bitmap: iYOffset=%d, iXOffset=%d, iDstWidth=%d, "
                      "iDstHeight=%d",
                      pszFunc, iYOffset, iXOffset, iDstWidth, iDstHeight);
    const uint32_t w = uint32_t(x1 - x0), h = uint32_t(y1 - y0);

    if (bReallocate || pDstImgInfo->Width != w || pDstImgInfo->Height != h) {
        // The rebuild would free the source's own buffer before the copy reads it.
        if ((dwOptions & KaipOption_ReallocateDst) && RebuildFreesSource(pSrcImgInfo, pDstImgInfo))
            return Refuse(KASTATUS_KAIP_INCOMPATIBLE_DST, "%s: the destination to rebuild holds the source's buffer",
                          pszFunc);
        if (const KaipStatus status = ReallocateDst(pszFunc, pDstImgInfo, w, h, src.PixelFormat, dwOptions))
            return status;
    }

    const size_t pixel = GetPixelIncrementFromPixelFormat(src.PixelFormat);
    if (pixel < 1 || pixel > 6 || pixel == 5) return KASTATUS_OK;
    // Offsets count from the top of the picture, which a bottom-up image keeps in its last rows.
    const uint32_t first = (src.Flags & KaipImgFlag_BottomUp) ? src.Height - uint32_t(y0) - h : uint32_t(y0);
    const uint8_t* s = Line(src, first) + size_t(x0) * pixel;
    for (uint32_t y = 0; y < h; ++y, s += src.LineIncrement) std::memmove(Line(*pDstImgInfo, y), s, w * pixel);
    return KASTATUS_OK;
}
