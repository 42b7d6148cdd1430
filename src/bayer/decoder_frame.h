// decoder_frame.h: what every Bayer decoder shares: checks, pattern, LUT tables, interior skeleton, border rings.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <type_traits>

#include "general/lut.h"
#include "pm.imgproc.h"

// A source reduced to its mosaic: the base format says the depth, the two toggles the pattern.
struct TBayerJob {
    KaipImgInfo src;  // private copy: base format (Mono8/10/12) and pattern bits in Flags
    KaipImgInfo* pDst;
    uint32_t dwBits;  // 8, 10 or 12 once the checks passed
    bool bShiftLine;
    bool bShiftColumn;
};

// Checks 1 to 4 of every decoder: source pointer, Bayer pattern, CheckImgInfos (same size,
// destination required), then the rebuild of a misfit destination under
// KaipOption_ReallocateDst. dwMinSide refuses images narrower or lower than that before
// anything is written (decoders with a border pass 2: the border reads one pixel further).
KaipStatus PrepareBayerJob(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                           uint32_t dwDstPixelFormat, uint32_t dwOptions, uint64_t qwDstClassMask, uint32_t dwMinSide,
                           TBayerJob& job);

// The 8-bit outputs of one LUT body, all as byte tables. A single sample indexes pRed,
// pGreen, pBlue (Red/Green/Blue of an 8-bit body, BayerRed8/... of a 10- or 12-bit one).
// The replicated tables hold each output two or four times, so the sum of two or four
// samples, taken as a byte index, reads the output of their truncated mean.
struct TBayerLut {
    const uint8_t* pRed;
    const uint8_t* pGreen;
    const uint8_t* pBlue;
    const uint8_t* pRed2;   // BayerRed16
    const uint8_t* pBlue2;  // BayerBlue16 (green is never the mean of two)
    const uint8_t* pRed4;   // BayerRed32
    const uint8_t* pGreen4;
    const uint8_t* pBlue4;
};

// Which type word a decoder demands of its LUT.
enum class TLutDemand {
    Any,              // no test
    BayerAboveEight,  // KAIP_LUT_BAYER for 10- and 12-bit sources (nearest neighbour)
    FullBayer,        // both Bayer flags at every depth (interpolating decoders)
};

// Check 5: null = identity tables, 1 = global LUT, otherwise GetLut8/10/12, then the type test.
KaipStatus SelectBayerLut(const char* pszFunc, KaipHLut hLut, uint32_t dwBits, TLutDemand demand, TBayerLut& lut);

// Writes line 0, line height-1, column 0 and column width-1 from 2x2 blocks (see the .cpp).
// Colour destinations (24 or 32 bits per pixel) get blue, green, red (and 0) whatever
// their channel order; Mono8 (8 bits) gets the green output of the block's mean.
// The image must be at least 2x2: the blocks reach one pixel inwards.
void CalculateFrame1(const uint8_t* pSrc, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwSrcLineIncrement,
                     uint32_t dwSrcBits, bool bShiftLine, bool bShiftColumn, uint8_t* pDst, uint32_t dwDstLineIncrement,
                     uint32_t dwDstBitsPerPixel, KaipHLut hLut);

// The second ring (line 1, line height-2, column 1 and column width-2 between them) by the
// bilinear interior rule, for decoders whose interior reads two pixels on each side. Same
// arguments as CalculateFrame1; colour destinations only (24 or 32 bits per pixel, written
// blue first); images below 3x3 have no second ring and get nothing.
void CalculateFrame2(const uint8_t* pSrc, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwSrcLineIncrement,
                     uint32_t dwSrcBits, bool bShiftLine, bool bShiftColumn, uint8_t* pDst, uint32_t dwDstLineIncrement,
                     uint32_t dwDstBitsPerPixel, KaipHLut hLut);

// Checks 1 to 6 of the interpolating decoders (BGR8Packed or BGRA8Packed out, a LUT with both
// Bayer flags): on success the job, its tables and the destination pixel size (3 or 4).
KaipStatus PrepareInterpolatingDecoder(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                       uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut, TBayerJob& job,
                                       TBayerLut& lut, uint32_t& dwDstBytes);

// ---- pieces for the interior loops (templates on depth and destination) ----

// The site of a pixel: red, green in a red line, green in a blue line, blue.
enum TBayerSite : int { kSiteRed, kSiteGreenR, kSiteGreenB, kSiteBlue };

// Samples of one depth: 8-bit bytes or 16-bit little-endian words.
template <unsigned Bits>
struct TDepth {
    static constexpr uint32_t kBytes = Bits == 8 ? 1 : 2;
    static constexpr uint32_t kMask1 = (1u << Bits) - 1;  // index masks of one sample,
    static constexpr uint32_t kMask2 = (2u << Bits) - 1;  // a sum of two,
    static constexpr uint32_t kMask4 = (4u << Bits) - 1;  // a sum of four
    static uint32_t At(const uint8_t* pLine, uint32_t x)
    {
        if constexpr (Bits == 8) {
            return pLine[x];
        } else {
            uint16_t w;
            std::memcpy(&w, pLine + 2 * x, 2);
            return w;
        }
    }
};

// Stores blue, green, red (and 0 for four-byte pixels).
template <uint32_t DstBytes>
inline void StoreBgr(uint8_t* p, uint8_t b, uint8_t g, uint8_t r)
{
    if constexpr (DstBytes == 4) {
        const uint32_t v = b | uint32_t(g) << 8 | uint32_t(r) << 16;  // one little-endian store
        std::memcpy(p, &v, 4);
    } else {
        p[0] = b;
        p[1] = g;
        p[2] = r;
    }
}

// The bilinear interior rule. No division: the raw sum of two or four samples indexes a
// replicated table, which reads the LUT's output for the truncated mean in the same access.
// Indices are masked to the table sizes, so stray high bits in 16-bit containers cannot reach
// past a table.
template <unsigned Bits, uint32_t DstBytes>
struct TBilinear {
    TBayerLut lut;

    template <int Site>
    void Pixel(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x) const
    {
        using D = TDepth<Bits>;
        const uint32_t own = D::At(pCur, x) & D::kMask1;
        const uint32_t across = (D::At(pCur, x - 1) + D::At(pCur, x + 1)) & D::kMask2;
        const uint32_t upDown = (D::At(pUp, x) + D::At(pDown, x)) & D::kMask2;
        uint8_t* p = pOut + size_t(x) * DstBytes;
        if constexpr (Site == kSiteGreenR) {
            StoreBgr<DstBytes>(p, lut.pBlue2[upDown], lut.pGreen[own], lut.pRed2[across]);
        } else if constexpr (Site == kSiteGreenB) {
            StoreBgr<DstBytes>(p, lut.pBlue2[across], lut.pGreen[own], lut.pRed2[upDown]);
        } else {
            const uint32_t direct =
                (D::At(pUp, x) + D::At(pDown, x) + D::At(pCur, x - 1) + D::At(pCur, x + 1)) & D::kMask4;
            const uint32_t diagonal =
                (D::At(pUp, x - 1) + D::At(pUp, x + 1) + D::At(pDown, x - 1) + D::At(pDown, x + 1)) & D::kMask4;
            if constexpr (Site == kSiteRed) {
                StoreBgr<DstBytes>(p, lut.pBlue4[diagonal], lut.pGreen4[direct], lut.pRed[own]);
            } else {
                StoreBgr<DstBytes>(p, lut.pBlue[own], lut.pGreen4[direct], lut.pRed4[diagonal]);
            }
        }
    }
};

// Source and destination planes of an interior pass, with the pattern's two toggles.
struct TBayerPlanes {
    const uint8_t* pSrc;
    uint32_t dwSrcLineIncrement;
    uint8_t* pDst;
    uint32_t dwDstLineIncrement;
    bool bShiftLine;
    bool bShiftColumn;
};

// One line of columns x0..x1-1 whose sites alternate SiteA, SiteB: two pixels per step, no tests.
template <class Kernel, int SiteA, int SiteB>
void InteriorLine(const Kernel& kernel, const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut,
                  uint32_t x0, uint32_t x1)
{
    // A local copy: byte stores cannot alias it, so its table pointers stay in registers.
    const Kernel k = kernel;
    uint32_t x = x0;
    for (; x + 1 < x1; x += 2) {
        k.template Pixel<SiteA>(pUp, pCur, pDown, pOut, x);
        k.template Pixel<SiteB>(pUp, pCur, pDown, pOut, x + 1);
    }
    if (x < x1) k.template Pixel<SiteA>(pUp, pCur, pDown, pOut, x);
}

// Runs a kernel over lines y0..y1-1 and columns x0..x1-1. The column toggle at x0 picks the
// two line workers once; the line toggle alternates them. Neighbour lines outside the image
// are replaced by the line itself (only kernels that ignore them run on such lines).
template <class Kernel>
void RunInterior(const Kernel& k, const TBayerPlanes& p, uint32_t dwHeight, uint32_t x0, uint32_t x1, uint32_t y0,
                 uint32_t y1)
{
    using TLine = void (*)(const Kernel&, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint32_t, uint32_t);
    const bool bRedColumnFirst = ((x0 & 1) != 0) == p.bShiftColumn;
    const TLine redLine =
        bRedColumnFirst ? InteriorLine<Kernel, kSiteRed, kSiteGreenR> : InteriorLine<Kernel, kSiteGreenR, kSiteRed>;
    const TLine blueLine =
        bRedColumnFirst ? InteriorLine<Kernel, kSiteGreenB, kSiteBlue> : InteriorLine<Kernel, kSiteBlue, kSiteGreenB>;
    bool bRedLine = ((y0 & 1) != 0) == p.bShiftLine;
    for (uint32_t y = y0; y < y1; ++y, bRedLine = !bRedLine) {
        const uint8_t* pCur = p.pSrc + size_t(y) * p.dwSrcLineIncrement;
        const uint8_t* pUp = y > 0 ? pCur - p.dwSrcLineIncrement : pCur;
        const uint8_t* pDown = y + 1 < dwHeight ? pCur + p.dwSrcLineIncrement : pCur;
        (bRedLine ? redLine : blueLine)(k, pUp, pCur, pDown, p.pDst + size_t(y) * p.dwDstLineIncrement, x0, x1);
    }
}

// One pixel (x, y) of the outermost ring as CalculateFrame1 writes it: its 2x2 block joins the
// horizontal neighbour (x-1, or x+1 in column 0), the vertical neighbour (y+1 in line 0, else
// y-1) and the diagonal that completes the block, which always holds one red, one blue and two
// green sites. Mono8 destinations (DstBytes 1) get the green output of the block's mean.
template <unsigned Bits, uint32_t DstBytes>
void FramePixel(const TBayerPlanes& p, const TBayerLut& lut, uint32_t x, uint32_t y)
{
    using D = TDepth<Bits>;
    const uint32_t xh = x ? x - 1 : x + 1;
    const uint32_t yv = y ? y - 1 : y + 1;
    const uint8_t* pLine = p.pSrc + size_t(y) * p.dwSrcLineIncrement;
    const uint8_t* pNext = p.pSrc + size_t(yv) * p.dwSrcLineIncrement;
    const uint32_t s = D::At(pLine, x) & D::kMask1, sh = D::At(pLine, xh) & D::kMask1;
    const uint32_t sv = D::At(pNext, x) & D::kMask1, sd = D::At(pNext, xh) & D::kMask1;
    const bool bRedLine = ((y & 1) != 0) == p.bShiftLine;
    const bool bRedColumn = ((x & 1) != 0) == p.bShiftColumn;  // red in a red line, green in a blue one
    uint32_t r, g, b;
    if (bRedLine != bRedColumn) {  // green: the other two colours beside and above/below it
        g = s;
        r = bRedLine ? sh : sv;
        b = bRedLine ? sv : sh;
    } else {  // red or blue: green beside it, the opposite colour on the diagonal
        g = sh;
        r = bRedLine ? s : sd;
        b = bRedLine ? sd : s;
    }
    uint8_t* pOut = p.pDst + size_t(y) * p.dwDstLineIncrement + size_t(x) * DstBytes;
    if constexpr (DstBytes == 1) {
        *pOut = lut.pGreen[(r + g + b) / 3];
    } else {
        StoreBgr<DstBytes>(pOut, lut.pBlue[b], lut.pGreen[g], lut.pRed[r]);
    }
}

// The two outer rings of a decoder with a 5x5 support (images at least 5x5), in pieces it can
// write while its lines are cached: RingColumns the columns 0, 1, width-2 and width-1 of line y
// (2 <= y < height-2), RingLines the lines 0, 1, height-2 and height-1 whole. Together they
// write what CalculateFrame2 followed by CalculateFrame1 writes.
template <unsigned Bits, uint32_t DstBytes>
void RingColumns(const TBayerPlanes& p, const TBayerLut& lut, uint32_t dwWidth, uint32_t dwHeight, uint32_t y)
{
    const TBilinear<Bits, DstBytes> ring2{lut};
    RunInterior(ring2, p, dwHeight, 1, 2, y, y + 1);
    RunInterior(ring2, p, dwHeight, dwWidth - 2, dwWidth - 1, y, y + 1);
    FramePixel<Bits, DstBytes>(p, lut, 0, y);
    FramePixel<Bits, DstBytes>(p, lut, dwWidth - 1, y);
}

template <unsigned Bits, uint32_t DstBytes>
void RingLines(const TBayerPlanes& p, const TBayerLut& lut, uint32_t dwWidth, uint32_t dwHeight)
{
    for (const uint32_t y : {1u, dwHeight - 2}) {
        RunInterior(TBilinear<Bits, DstBytes>{lut}, p, dwHeight, 1, dwWidth - 1, y, y + 1);
        FramePixel<Bits, DstBytes>(p, lut, 0, y);
        FramePixel<Bits, DstBytes>(p, lut, dwWidth - 1, y);
    }
    for (const uint32_t y : {0u, dwHeight - 1}) {
        for (uint32_t x = 0; x < dwWidth; ++x) FramePixel<Bits, DstBytes>(p, lut, x, y);
    }
}

// The planes of a checked job: source mosaic in, destination pixels out.
inline TBayerPlanes JobPlanes(const TBayerJob& job)
{
    return {job.src.pData,           job.src.LineIncrement, job.pDst->pData,
            job.pDst->LineIncrement, job.bShiftLine,        job.bShiftColumn};
}

// Calls f with the depth (8, 10, 12) or the pixel size (3, 4) as a compile-time constant,
// so each combination gets its own loop.
template <class F>
void WithDepth(uint32_t dwBits, F&& f)
{
    switch (dwBits) {
        case 8:
            f(std::integral_constant<unsigned, 8>{});
            break;
        case 10:
            f(std::integral_constant<unsigned, 10>{});
            break;
        case 12:
            f(std::integral_constant<unsigned, 12>{});
            break;
        default:
            break;
    }
}

template <class F>
void WithPixelBytes(uint32_t dwBytes, F&& f)
{
    if (dwBytes == 3) f(std::integral_constant<uint32_t, 3>{});
    if (dwBytes == 4) f(std::integral_constant<uint32_t, 4>{});
}
