// rotate.cpp: the quarter turn, optionally mirrored first, worked in tiles that stay in the cache.
#include <algorithm>

#include "core/check.h"
#include "core/common.h"
#include "general/geometry.h"
#include "general/lut.h"

using geometry::Line;

namespace {

// Classes 0 to 14: Mono8 up to RGBA8Packed.
constexpr uint64_t kRotateClasses = 0x7FFF;

// Writes every destination pixel (c, r) from s0 + c * dc + r * dr. Each destination row reads
// one source column, so the work goes in square tiles: the source lines a tile touches stay
// in the cache while its columns are read.
template <unsigned P>
void TurnPixels(const uint8_t* s0, ptrdiff_t dc, ptrdiff_t dr, const KaipImgInfo& dst)
{
    constexpr uint32_t kTile = P <= 2 ? 64 : 32;
    const uint32_t w = dst.Width, h = dst.Height;
    for (uint32_t r0 = 0; r0 < h; r0 += kTile) {
        const uint32_t r1 = std::min(h, r0 + kTile);
        for (uint32_t c0 = 0; c0 < w; c0 += kTile) {
            const uint32_t n = std::min(w - c0, kTile);
            for (uint32_t r = r0; r < r1; ++r) {
                const uint8_t* s = s0 + ptrdiff_t(r) * dr + ptrdiff_t(c0) * dc;
                uint8_t* d = Line(dst, r) + size_t(c0) * P;
                for (uint32_t i = 0; i < n; ++i) std::memcpy(d + i * P, s + ptrdiff_t(i) * dc, P);
            }
        }
    }
}

}  // namespace

KaipStatus Rotate90AndMirror(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwClockwise,
                             uint32_t dwMirrorTopBottom, uint32_t dwMirrorLeftRight, uint32_t dwOptions,
                             KaipHLut hLut)
{
    static const char* const pszFunc = "KaipRotate90AndMirror";
    bool bReallocate = false;
    KaipStatus status = CheckImgInfos(
        pszFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kRotateClasses, 0, 0,
        KaipCheck_RotatedSize | KaipCheck_SamePixelFormat | KaipCheck_DstRequired,
        KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp, &bReallocate);
    if (status == KASTATUS_OK && bReallocate)
        status = ReallocateDst(pszFunc, pDstImgInfo, pSrcImgInfo->Height, pSrcImgInfo->Width,
                               pSrcImgInfo->PixelFormat, dwOptions);
    if (status != KASTATUS_OK) return status;

    // A bottom-up source keeps its picture upside down in memory, so the turn in memory is
    // the opposite of the one asked for the picture.
    const KaipImgInfo& src = *pSrcImgInfo;
    const bool bClockwise = (dwClockwise != 0) != ((src.Flags & KaipImgFlag_BottomUp) != 0);
    // Destination column c reads source row c or H-1-c, destination row r source column r or W-1-r.
    const bool bReverseRows = bClockwise != (dwMirrorTopBottom != 0);
    const bool bReverseColumns = bClockwise == (dwMirrorLeftRight != 0);
    const size_t pixel = GetPixelIncrementFromPixelFormat(src.PixelFormat);
    const ptrdiff_t line = ptrdiff_t(src.LineIncrement);
    const uint8_t* s0 = src.pData + (bReverseRows ? (src.Height - 1) * size_t(line) : 0) +
                        (bReverseColumns ? (src.Width - 1) * pixel : 0);
    const ptrdiff_t dc = bReverseRows ? -line : line;
    const ptrdiff_t dr = bReverseColumns ? -ptrdiff_t(pixel) : ptrdiff_t(pixel);
    switch (pixel) {
    case 1: TurnPixels<1>(s0, dc, dr, *pDstImgInfo); break;
    case 2: TurnPixels<2>(s0, dc, dr, *pDstImgInfo); break;
    case 3: TurnPixels<3>(s0, dc, dr, *pDstImgInfo); break;
    case 4: TurnPixels<4>(s0, dc, dr, *pDstImgInfo); break;
    default: break;
    }

    // The pixels are turned whatever the LUT: a LUT that does not fit the format leaves them unmapped.
    if (hLut) (void)ApplyLut(pDstImgInfo, nullptr, hLut, dwOptions);
    return KASTATUS_OK;
}
