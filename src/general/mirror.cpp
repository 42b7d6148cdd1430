// mirror.cpp: top-bottom and left-right mirroring with an optional LUT, and the two line reversals.
#include <algorithm>
#include <type_traits>

#include "core/check.h"
#include "core/common.h"
#include "core/log.h"
#include "general/geometry.h"
#include "general/lut.h"
#include "platform/os_buffer.h"

using geometry::CheckAndFitDst;
using geometry::CopyPixel;
using geometry::Line;
using geometry::Load8;
using geometry::ReversePixels;
using geometry::Store8;
using geometry::TMirrorBlocks;

namespace {

// Classes 0 to 14: Mono8 up to RGBA8Packed, every unpacked format of one to four bytes per pixel.
constexpr uint64_t kMirrorClasses = 0x7FFF;

// Sample mappers: each writes the pixel read at s to d through the LUT's channel tables.
struct MapMono8 {
    const uint8_t* pGreen;
    void operator()(const uint8_t* s, uint8_t* d) const { *d = pGreen[*s]; }
};

// Two-byte pixels keep only the bits the table covers, whatever their own depth.
template <uint16_t Mask>
struct MapWord {
    const uint16_t* pGreen;
    void operator()(const uint8_t* s, uint8_t* d) const
    {
        uint16_t v;
        std::memcpy(&v, s, 2);
        v = pGreen[v & Mask];
        std::memcpy(d, &v, 2);
    }
};

// Bytes 0, 1, 2 go through Red, Green, Blue whatever the channel order; a fourth byte is copied.
template <unsigned P>
struct MapRgb {
    const uint8_t* pRed;
    const uint8_t* pGreen;
    const uint8_t* pBlue;
    void operator()(const uint8_t* s, uint8_t* d) const
    {
        const uint8_t r = s[0], g = s[1], b = s[2];
        d[0] = pRed[r];
        d[1] = pGreen[g];
        d[2] = pBlue[b];
        if constexpr (P == 4) d[3] = s[3];
    }
};

template <unsigned P, class Map>
constexpr bool kIsCopy = std::is_same_v<Map, CopyPixel<P>>;
// Plain reversed copies of 1-, 2- and 4-byte pixels go eight bytes at a time.
template <unsigned P, class Map>
constexpr bool kIsWordReverse = (kIsCopy<P, Map> && P != 3);
template <unsigned P>
constexpr size_t kPerWord = P == 3 ? 1 : 8 / P;

// Writes n pixels of d from s, in the same or in the reverse order. A reversed line is read
// forwards and written backwards, which keeps the source one stream for the prefetcher. Plain
// reversed copies start with the vector blocks when there are any.
template <unsigned P, bool Reverse, class Map>
void MapLine(const uint8_t* s, uint8_t* d, size_t n, Map map, TMirrorBlocks blocks)
{
    if constexpr (kIsCopy<P, Map> && !Reverse) {
        std::memmove(d, s, n * P);  // a destination descriptor may share the source buffer
        return;
    }
    size_t x = 0;
    if constexpr (Reverse && kIsCopy<P, Map>)
        if (blocks.Reverse) x = blocks.Reverse(s, d, n);
    if constexpr (Reverse && kIsWordReverse<P, Map>) {
        // Four words per step, all loaded before any is stored, keep the loads in flight.
        constexpr size_t k = kPerWord<P>;
        for (; x + 4 * k <= n; x += 4 * k) {
            uint64_t v[4];
            for (size_t i = 0; i < 4; ++i) v[i] = Load8(s + (x + i * k) * P);
            for (size_t i = 0; i < 4; ++i) Store8(d + (n - x - (i + 1) * k) * P, ReversePixels<P>(v[i]));
        }
        for (; x + k <= n; x += k) Store8(d + (n - x - k) * P, ReversePixels<P>(Load8(s + x * P)));
    }
    for (; x < n; ++x) map(s + x * P, d + (Reverse ? n - 1 - x : x) * P);
}

// Exchanges pixel x of line a with pixel x (or last - x) of line b for x < n, mapping both as
// they are written. a and b may be the same line, even the same pixel: each pair is read
// before it is written.
template <unsigned P, bool Reverse, class Map>
void ExchangeLine(uint8_t* a, uint8_t* b, size_t last, size_t n, Map map, TMirrorBlocks blocks)
{
    if constexpr (kIsCopy<P, Map> && !Reverse) {
        uint8_t t[1024];
        for (size_t done = 0, bytes = n * P; done < bytes; done += sizeof t) {
            const size_t k = std::min(sizeof t, bytes - done);
            std::memcpy(t, a + done, k);
            std::memcpy(a + done, b + done, k);
            std::memcpy(b + done, t, k);
        }
    } else {
        size_t x = 0;
        if constexpr (Reverse && kIsCopy<P, Map>)
            if (blocks.Exchange) x = blocks.Exchange(a, b, last + 1, n);
        // Whole words while the two words of a pair cannot overlap (a and b may be one line).
        if constexpr (Reverse && kIsWordReverse<P, Map>)
            for (constexpr size_t k = kPerWord<P>; x + k <= n && (a != b || 2 * (x + k) <= last + 1); x += k) {
                uint8_t* p = a + x * P;
                uint8_t* q = b + (last + 1 - x - k) * P;
                const uint64_t v = Load8(p);
                Store8(p, ReversePixels<P>(Load8(q)));
                Store8(q, ReversePixels<P>(v));
            }
        for (; x < n; ++x) {
            uint8_t* p = a + x * P;
            uint8_t* q = b + (Reverse ? last - x : x) * P;
            uint8_t t[P];
            std::memcpy(t, p, P);
            map(q, p);
            map(t, q);
        }
    }
}

// Reverses n pixels of s into d through a buffer that stays in the first-level cache, streaming each piece
// out with non-temporal stores, so that a destination too large for the caches is not read in first.
template <unsigned P, class Map>
void ReverseLineStreamed(const uint8_t* s, uint8_t* d, size_t n, Map map, TMirrorBlocks blocks)
{
    alignas(64) uint8_t buffer[16384];
    constexpr size_t kPiece = sizeof buffer / P;
    for (size_t x = 0; x < n; x += kPiece) {
        const size_t m = std::min(kPiece, n - x);
        MapLine<P, true>(s + x * P, buffer, m, map, blocks);
        blocks.Stream(buffer, d + (n - x - m) * P, m * P);
    }
}

// Destinations from 8 MiB on are streamed by a left-right copy. Smaller ones, with their source, may stay in
// the last-level cache, where plain stores write them faster (measured crossover: 6 to 8 MiB). A half turn
// is not streamed: it writes the destination in one falling stream that the prefetcher follows, and measured
// faster with plain stores.
constexpr size_t kStreamBytes = size_t(8) << 20;

// Whether the buffers of two images share any byte.
inline bool Overlap(const KaipImgInfo& a, const KaipImgInfo& b)
{
    const uint8_t *a1 = Line(a, a.Height), *b1 = Line(b, b.Height);
    return a.pData < b1 && b.pData < a1;
}

template <unsigned P, class Map>
void MirrorPixels(const KaipImgInfo& src, const KaipImgInfo* pDst, bool bTopBottom, bool bLeftRight, Map map)
{
    const uint32_t w = src.Width, h = src.Height;
    const TMirrorBlocks blocks = kIsCopy<P, Map> && bLeftRight ? geometry::MirrorBlocks_intr(P) : TMirrorBlocks{};
    if (pDst) {
        if (kIsCopy<P, Map> && !bTopBottom && !bLeftRight) {
            // A plain copy moves whole lines, padding included.
            const size_t bytes = std::min(src.LineIncrement, pDst->LineIncrement);
            for (uint32_t y = 0; y < h; ++y) std::memmove(Line(*pDst, y), Line(src, y), bytes);
            return;
        }
        const bool bStream =
            blocks.Stream && !bTopBottom && size_t(h) * pDst->LineIncrement >= kStreamBytes && !Overlap(src, *pDst);
        const auto line = bStream      ? ReverseLineStreamed<P, Map>
                          : bLeftRight ? MapLine<P, true, Map>
                                       : MapLine<P, false, Map>;
        // The source is read in its own order, one stream for the prefetcher; a top-bottom mirror
        // starts at the last destination line and steps backwards.
        uint8_t* d = bTopBottom ? Line(*pDst, h - 1) : pDst->pData;
        const ptrdiff_t step = bTopBottom ? -ptrdiff_t(pDst->LineIncrement) : ptrdiff_t(pDst->LineIncrement);
        for (uint32_t y = 0; y < h; ++y, d += step) line(Line(src, y), d, w, map, blocks);
        if (bStream) blocks.StreamFence();
    } else if (bTopBottom) {
        // With both directions the rows run up to and including an odd middle row, which is
        // thereby exchanged with itself twice over: it keeps its order and is mapped twice.
        const auto exchange = bLeftRight ? ExchangeLine<P, true, Map> : ExchangeLine<P, false, Map>;
        const uint32_t rows = bLeftRight ? (h + 1) / 2 : h / 2;
        for (uint32_t y = 0; y < rows; ++y) exchange(Line(src, y), Line(src, h - 1 - y), w - 1, w, map, blocks);
    } else if (bLeftRight) {
        for (uint32_t y = 0; y < h; ++y) ExchangeLine<P, true>(Line(src, y), Line(src, y), w - 1, w / 2, map, blocks);
    }
}

// Runs the mirror with the copy or with the LUT mapper of an 8-bit body.
template <unsigned P, class Make>
KaipStatus MirrorLut8(const KaipImgInfo& src, const KaipImgInfo* pDst, bool bTb, bool bLr, KaipHLut hLut, Make make)
{
    if (!hLut) {
        MirrorPixels<P>(src, pDst, bTb, bLr, CopyPixel<P>{});
        return KASTATUS_OK;
    }
    TKaIpLut8* pLut;
    if (const KaipStatus status = GetLut8(hLut, pLut)) return status;
    MirrorPixels<P>(src, pDst, bTb, bLr, make(*pLut));
    return KASTATUS_OK;
}

KaipStatus MirrorWords(const KaipImgInfo& src, const KaipImgInfo* pDst, bool bTb, bool bLr, KaipHLut hLut)
{
    if (!hLut) {
        MirrorPixels<2>(src, pDst, bTb, bLr, CopyPixel<2>{});
        return KASTATUS_OK;
    }
    if (src.PixelFormat == KaipPixelFormat_Mono10) {
        TKaIpLut10* pLut;
        if (const KaipStatus status = GetLut10(hLut, pLut)) return status;
        MirrorPixels<2>(src, pDst, bTb, bLr, MapWord<0x3FF>{pLut->Green});
    } else {
        TKaIpLut12* pLut;
        if (const KaipStatus status = GetLut12(hLut, pLut)) return status;
        MirrorPixels<2>(src, pDst, bTb, bLr, MapWord<0xFFF>{pLut->Green});
    }
    return KASTATUS_OK;
}

}  // namespace

KaipStatus Mirror(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, int32_t iTopBottom, int32_t iLeftRight,
                  uint32_t dwOptions, KaipHLut hLut)
{
    static const char* const pszFunc = "Mirror";
    if (const KaipStatus status = CheckAndFitDst(pszFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kMirrorClasses,
                                                 KaipCheck_SameSize | KaipCheck_SamePixelFormat,
                                                 KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp))
        return status;

    const KaipImgInfo& src = *pSrcImgInfo;
    const bool bTb = iTopBottom != 0, bLr = iLeftRight != 0;
    switch (GetPixelIncrementFromPixelFormat(src.PixelFormat)) {
        case 1:
            return MirrorLut8<1>(src, pDstImgInfo, bTb, bLr, hLut, [](TKaIpLut8& l) { return MapMono8{l.Green}; });
        case 2:
            return MirrorWords(src, pDstImgInfo, bTb, bLr, hLut);
        case 3:
            return MirrorLut8<3>(src, pDstImgInfo, bTb, bLr, hLut, [](TKaIpLut8& l) {
                return MapRgb<3>{l.Red, l.Green, l.Blue};
            });
        case 4:
            return MirrorLut8<4>(src, pDstImgInfo, bTb, bLr, hLut, [](TKaIpLut8& l) {
                return MapRgb<4>{l.Red, l.Green, l.Blue};
            });
        default:
            return KASTATUS_OK;
    }
}

KaipStatus ReverseLines(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions)
{
    const KaipStatus status = Mirror(pSrcImgInfo, pDstImgInfo, 1, 0, dwOptions, nullptr);
    if (status != KASTATUS_OK) return status;
    if (pDstImgInfo)
        pDstImgInfo->Flags =
            (pDstImgInfo->Flags & ~KaipImgFlag_BottomUp) | (~pSrcImgInfo->Flags & KaipImgFlag_BottomUp);
    else
        pSrcImgInfo->Flags ^= KaipImgFlag_BottomUp;
    return KASTATUS_OK;
}

KaipStatus ReverseLinesFast(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, void* pLineBuffer, uint32_t dwOptions)
{
    static const char* const pszFunc = "KaipReverseLinesFast";
    if (const KaipStatus status =
            CheckAndFitDst(pszFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kMirrorClasses,
                           KaipCheck_SameSize | KaipCheck_SamePixelFormat, KaipImgFlag_ColorPlanes))
        return status;

    KaipImgInfo& src = *pSrcImgInfo;
    const uint32_t h = src.Height;
    if (pDstImgInfo) {
        const size_t bytes = std::min(src.LineIncrement, pDstImgInfo->LineIncrement);
        for (uint32_t y = 0; y < h; ++y) std::memmove(Line(*pDstImgInfo, h - 1 - y), Line(src, y), bytes);
        pDstImgInfo->Flags = (pDstImgInfo->Flags & ~KaipImgFlag_BottomUp) | (~src.Flags & KaipImgFlag_BottomUp);
        return KASTATUS_OK;
    }

    // A scratch line is needed only when there are lines to exchange.
    void* pOwned = nullptr;
    if (!pLineBuffer && h >= 2) {
        pLineBuffer = pOwned = oxOsBufferCreateAligned(src.LineIncrement, 64, 0);
        if (!pOwned)
            return Refuse(KASTATUS_KAIP_MEMORY_ALLOC_FAILED, "%s: memory allocation of %d bytes failed!", pszFunc,
                          int(src.LineIncrement));
    }
    uint8_t* pScratch = static_cast<uint8_t*>(pLineBuffer);
    for (uint32_t y = 0; y < h / 2; ++y) {
        uint8_t* a = Line(src, y);
        uint8_t* b = Line(src, h - 1 - y);
        std::memcpy(pScratch, a, src.LineIncrement);
        std::memcpy(a, b, src.LineIncrement);
        std::memcpy(b, pScratch, src.LineIncrement);
    }
    if (pOwned) oxOsBufferFree(pOwned);
    src.Flags ^= KaipImgFlag_BottomUp;
    return KASTATUS_OK;
}
