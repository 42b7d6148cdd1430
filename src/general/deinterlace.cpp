// deinterlace.cpp: every line but the last replaced by the average of itself and the line below.
#include <algorithm>

#include "core/check.h"
#include "core/log.h"
#include "general/geometry.h"

using geometry::CheckAndFitDst;
using geometry::Line;

namespace {

// Classes 0, 9, 10, 11, 12: Mono8 and the 8-bit Bayer formats, BGR555, BGR565Packed, BGR8Packed, BGRA8Packed.
constexpr uint64_t kDeinterlaceClasses = 0x1E01;

// Bytes: the average rounded down, over the whole line increment.
void AverageBytes(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t n, size_t /*width*/)
{
    for (size_t i = 0; i < n; ++i) d[i] = uint8_t((a[i] + b[i]) >> 1);
}

// 16-bit pixels of three colour fields, each averaged rounded down: the two upper fields are
// halved before the sum, which drops only the bit that the mask removes afterwards.
template <uint16_t High, uint16_t Middle>
void AverageFields(const uint8_t* a, const uint8_t* b, uint8_t* d, size_t /*bytes*/, size_t width)
{
    for (size_t x = 0; x < width; ++x) {
        uint16_t p, q;
        std::memcpy(&p, a + 2 * x, 2);
        std::memcpy(&q, b + 2 * x, 2);
        const unsigned high = (((p & High) >> 1) + ((q & High) >> 1)) & High;
        const unsigned middle = (((p & Middle) >> 1) + ((q & Middle) >> 1)) & Middle;
        const unsigned low = ((p & 0x1F) + (q & 0x1F)) >> 1;
        const uint16_t r = uint16_t(high | middle | low);
        std::memcpy(d + 2 * x, &r, 2);
    }
}

}  // namespace

KaipStatus Deinterlace(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions)
{
    static const char* const pszFunc = "KaipDeinterlace";
    if (const KaipStatus status = CheckAndFitDst(pszFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kDeinterlaceClasses,
                                                 KaipCheck_SameSize | KaipCheck_SamePixelFormat,
                                                 KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp))
        return status;

    const KaipImgInfo& src = *pSrcImgInfo;
    if (!pDstImgInfo && src.LineIncrement > KaipDeinterlace_MaxLineIncrement)
        return Refuse(KASTATUS_KAIP_LINE_INCREMENT_TOO_BIG, "%s: line increment too big: %d", pszFunc,
                      int(src.LineIncrement));
    const KaipImgInfo& dst = pDstImgInfo ? *pDstImgInfo : src;

    auto average = AverageBytes;
    if (src.PixelFormat == KaipPixelFormat_BGR555) average = AverageFields<0x7C00, 0x03E0>;
    if (src.PixelFormat == KaipPixelFormat_BGR565Packed) average = AverageFields<0xF800, 0x07E0>;

    // Working downwards, line y is rewritten only after its last reader (the step for y
    // itself), so in place every average is taken of lines as they were before the call.
    const size_t bytes = std::min(src.LineIncrement, dst.LineIncrement);
    for (uint32_t y = 0; y + 1 < src.Height; ++y)
        average(Line(src, y), Line(src, y + 1), Line(dst, y), bytes, src.Width);
    return KASTATUS_OK;
}
