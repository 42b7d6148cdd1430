// geometry.h: mirror, line reversal, quarter turn, deinterlace and area copy, and the pixel pieces they share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/check.h"
#include "pm.imgproc.h"

KaipStatus Mirror(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, int32_t iTopBottom, int32_t iLeftRight,
                  uint32_t dwOptions, KaipHLut hLut);
KaipStatus ReverseLines(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions);
KaipStatus ReverseLinesFast(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, void* pLineBuffer, uint32_t dwOptions);
KaipStatus Rotate90AndMirror(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwClockwise,
                             uint32_t dwMirrorTopBottom, uint32_t dwMirrorLeftRight, uint32_t dwOptions, KaipHLut hLut);
KaipStatus Deinterlace(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions);
KaipStatus CopyArea(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, int32_t iXOffset, int32_t iYOffset,
                    int32_t iDstWidth, int32_t iDstHeight, uint32_t dwOptions);
KaipStatus FillWithColor(KaipImgInfo* pImgInfo, uint8_t red, uint8_t green, uint8_t blue);

namespace geometry {

// The common check, then the rebuild of a destination that does not fit: the source's size
// (turned for a quarter turn) and format.
inline KaipStatus CheckAndFitDst(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                 uint32_t dwOptions, uint64_t qwClassMask, uint64_t qwCheck,
                                 uint32_t dwFlagsMustBeEqual)
{
    bool bReallocate = false;
    const KaipStatus status = CheckImgInfos(pszFunc, pSrcImgInfo, pDstImgInfo, dwOptions, qwClassMask, 0, 0, qwCheck,
                                            dwFlagsMustBeEqual, &bReallocate);
    if (status != KASTATUS_OK || !bReallocate) return status;
    const bool bTurned = (qwCheck & KaipCheck_RotatedSize) != 0;
    return ReallocateDst(pszFunc, pDstImgInfo, bTurned ? pSrcImgInfo->Height : pSrcImgInfo->Width,
                         bTurned ? pSrcImgInfo->Width : pSrcImgInfo->Height, pSrcImgInfo->PixelFormat, dwOptions);
}

// Start of line y of an interleaved image.
inline uint8_t* Line(const KaipImgInfo& info, uint32_t y)
{
    return info.pData + size_t(y) * info.LineIncrement;
}

// Copies one pixel of P bytes; a fixed-size memcpy becomes one or two moves.
template <unsigned P>
struct CopyPixel {
    void operator()(const uint8_t* s, uint8_t* d) const { std::memcpy(d, s, P); }
};

// Pixels of P = 1, 2 or 4 bytes handled eight bytes at a time.
inline uint64_t Load8(const uint8_t* p)
{
    uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}
inline void Store8(uint8_t* p, uint64_t v)
{
    std::memcpy(p, &v, 8);
}

// The 8 / P pixels of a little-endian word in reverse order.
template <unsigned P>
inline uint64_t ReversePixels(uint64_t v)
{
    static_assert(P == 1 || P == 2 || P == 4, "whole pixels per word");
    if constexpr (P == 1) return __builtin_bswap64(v);
    v = (v >> 32) | (v << 32);
    if constexpr (P == 2) v = ((v >> 16) & 0x0000FFFF0000FFFFull) | ((v & 0x0000FFFF0000FFFFull) << 16);
    return v;
}

// The quarter turn's destination rows r0..r1-1 and columns c0..c1-1 in vector blocks of
// 16 x 16 bytes (dimensions multiples of 16 / P, P = 1, 2 or 4): destination pixel (c, r) is
// read from s0 + c * dc + r * dr. Returns false, writing nothing, when the SSE2 switch is off.
bool TurnBlocks_intr(unsigned P, const uint8_t* s0, ptrdiff_t dc, ptrdiff_t dr, const KaipImgInfo& dst, uint32_t r0,
                     uint32_t r1, uint32_t c0, uint32_t c1);

// The left-right mirror's vector blocks for pixels of P bytes. Reverse writes pixels n-1-x of d from
// pixels x of s; Exchange swaps pixels x of line a with pixels w-1-x of line b (a may be b) for x < n. Both
// work in whole blocks from the line start and return the first x they left to the scalar rule. Stream
// copies n bytes from s to d with non-temporal stores, which StreamFence orders before later stores.
struct TMirrorBlocks {
    size_t (*Reverse)(const uint8_t* s, uint8_t* d, size_t n) = nullptr;
    size_t (*Exchange)(uint8_t* a, uint8_t* b, size_t w, size_t n) = nullptr;
    void (*Stream)(const uint8_t* s, uint8_t* d, size_t n) = nullptr;
    void (*StreamFence)() = nullptr;
};

// The blocks of the widest vector set the switches of g_SSEChecker allow; nulls when they are all off or
// P is not 1 to 4.
TMirrorBlocks MirrorBlocks_intr(unsigned P);
TMirrorBlocks MirrorBlocks_ssse3(unsigned P);
TMirrorBlocks MirrorBlocks_avx2(unsigned P);

}  // namespace geometry
