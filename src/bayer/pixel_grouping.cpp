// pixel_grouping.cpp: patterned pixel grouping (Chuan-kai Lin): weighted green, then red and blue by hue transit.
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "bayer/bayer.h"
#include "bayer/decoder_window.h"
#include "bayer/pixel_grouping_simd.h"
#include "core/log.h"
#include "platform/os_buffer.h"

namespace {

// Green at a red or blue site: four directional estimates (the nearer green weighted three
// to one, corrected by the slope of the pixel's own colour, in quarters), averaged with
// weights (255 - gradient)^2 / 16 + 1 (truncated, the gradient clipped to 255), the gradient
// being the own colour two away, twice, plus the greens across, in 8-bit steps: a smooth
// direction counts up to 4065 times as much as a rough one, and no weight is ever zero. Rounded
// once, clamped to the depth. The loop runs over the count red or blue columns of parity Par of
// a stretch and vectorises; the final quotient (numerator below 2^29) is exact in double.
template <unsigned Bits, int Par>
__attribute__((optimize("no-tree-pre"))) void GreenEstimates(const TSplitWindow<int32_t>& __restrict win,
                                                             uint32_t count, int32_t* __restrict pEst)
{
    auto weight = [](int32_t gradient) {
        const int32_t k = std::max(255 - (gradient >> (Bits - 8)), 0);
        return ((k * k) >> 4) + 1;
    };
    for (int32_t j = 0; j < int32_t(count); ++j) {
        auto p = [&](int dy, int dx) { return win.half[(Par + dx) & 1][2 + dy][j + ((Par + dx + 2) >> 1)]; };
        const int32_t c = p(0, 0), n = p(-1, 0), so = p(1, 0), w = p(0, -1), e = p(0, 1);
        const int32_t n2 = p(-2, 0), s2 = p(2, 0), w2 = p(0, -2), e2 = p(0, 2);
        const int32_t wn = weight(2 * std::abs(c - n2) + std::abs(n - so));
        const int32_t we = weight(2 * std::abs(c - e2) + std::abs(e - w));
        const int32_t ww = weight(2 * std::abs(c - w2) + std::abs(w - e));
        const int32_t ws = weight(2 * std::abs(c - s2) + std::abs(so - n));
        const int32_t sum = wn * (3 * n + so + c - n2) + we * (3 * e + w + c - e2) + ww * (3 * w + e + c - w2) +
                            ws * (3 * so + n + c - s2);
        const int32_t weights4 = 4 * (wn + we + ww + ws);
        const int32_t num = std::min(std::max(sum, 0), weights4 * int32_t(TDepth<Bits>::kMask1));
        pEst[j] = int32_t(double(num + weights4 / 2) / double(weights4));
    }
}

// One line of green from column 2 to w - 3 in stretches: estimates at red and blue columns,
// the samples at green ones. greenParity is that of the green columns (stretches start even).
template <unsigned Bits>
void GreenStretches(const TWindow5<Bits>& s, uint32_t w, int greenParity, bool bAvx2, int32_t* pGreen)
{
    TSplitWindow<int32_t> split;
    int32_t est[kStretch / 2];
    for (uint32_t x0 = 2; x0 < w - 2; x0 += kStretch) {
        const uint32_t n = std::min(x0 + kStretch, w - 2) - x0;
        WidenSplit(s, x0, x0 + n, split);
        const uint32_t count = greenParity == 1 ? (n + 1) / 2 : n / 2;
        AnyAvx2(bAvx2, [&] {
            if (greenParity == 1) {
                GreenEstimates<Bits, 0>(split, count, est);
            } else {
                GreenEstimates<Bits, 1>(split, count, est);
            }
        });
        int32_t* pOut = pGreen + x0;
        const int own = 1 - greenParity;
        for (uint32_t j = 0; j < count; ++j) pOut[2 * j + own] = est[j];
        for (uint32_t j = 0; 2 * j + greenParity < n; ++j)
            pOut[2 * j + greenParity] = split.half[greenParity][2][j + 1];
    }
}

// The line context of the green of the ring columns.
template <unsigned Bits>
struct TGreenLine {
    TWindow5<Bits> s;
    int32_t* pGreen;
};

// Green of the second ring: the truncated mean of the four direct neighbours, as its output.
template <unsigned Bits>
struct TBilinearGreen {
    using TLine = TGreenLine<Bits>;

    template <int Site>
    void Pixel(const TLine& l, uint32_t x) const
    {
        const TWindow5<Bits>& s = l.s;
        const bool bGreen = Site == kSiteGreenR || Site == kSiteGreenB;
        l.pGreen[x] = int32_t(bGreen ? s.At(0, x) : (s.At(-1, x) + s.At(1, x) + s.At(0, x - 1) + s.At(0, x + 1)) >> 2);
    }
};

// Value v2 at the place of l2 between (l1, v1) and (l3, v3), where l is green and v the other
// colour. Where green rises or falls steadily across the place (l2 strictly between l1 and l3)
// v follows it: the mean of v1 and v3 plus green's step there, kept between v1 and v3;
// otherwise the mean takes half that step (a bend of the green is half its colour's). Rounded
// once; branch-free and division-free, so a loop of it vectorises.
template <unsigned Bits>
__attribute__((always_inline)) inline int32_t HueTransit(int32_t l1, int32_t l2, int32_t l3, int32_t v1, int32_t v3)
{
    const bool bMonotonic = (l2 - l1) * (l3 - l2) > 0;  // l1 < l2 < l3 or l1 > l2 > l3
    const int32_t sum = v1 + v3, twiceStep = 2 * l2 - l1 - l3;
    const int32_t follow = std::min(std::max((sum + twiceStep + 1) >> 1, std::min(v1, v3)), std::max(v1, v3));
    const int32_t curved = ClampSample<Bits>((2 * sum + twiceStep + 2) >> 2);
    return bMonotonic ? follow : curved;
}

// Red and blue from the green plane at count columns of one kind (Green or not) two apart:
// at green columns hue transit along the line (`first`) and across it (`second`); at red and
// blue columns hue transit along the diagonal of smaller gradient (both, averaged, on a tie)
// as `first`, the green plane as `second`. Line pointers point at the first of the columns;
// green lines hold the green plane. The loop reads every second column and vectorises.
template <unsigned Bits, bool Green>
__attribute__((optimize("no-tree-pre"))) void ColourEstimates(
    const int32_t* __restrict pUp2, const int32_t* __restrict pUp, const int32_t* __restrict pCur,
    const int32_t* __restrict pDown, const int32_t* __restrict pDown2, const int32_t* __restrict pGreenUp,
    const int32_t* __restrict pGreenCur, const int32_t* __restrict pGreenDown, uint32_t count,
    int32_t* __restrict pFirst, int32_t* __restrict pSecond)
{
    for (int32_t j = 0; j < int32_t(count); ++j) {
        const int32_t i = 2 * j;
        const int32_t c = pCur[i], gc = pGreenCur[i];  // gc is c at green columns
        const int32_t gUpL = pGreenUp[i - 1], gUp = pGreenUp[i], gUpR = pGreenUp[i + 1];
        const int32_t gDownL = pGreenDown[i - 1], gDown = pGreenDown[i], gDownR = pGreenDown[i + 1];
        const int32_t upL = pUp[i - 1], up = pUp[i], upR = pUp[i + 1];
        const int32_t downL = pDown[i - 1], down = pDown[i], downR = pDown[i + 1];
        if constexpr (Green) {
            const int32_t gL = pGreenCur[i - 1], gR = pGreenCur[i + 1], left = pCur[i - 1], right = pCur[i + 1];
            pFirst[j] = HueTransit<Bits>(gL, gc, gR, left, right);
            pSecond[j] = HueTransit<Bits>(gUp, gc, gDown, up, down);
        } else {
            const int32_t a = HueTransit<Bits>(gUpR, gc, gDownL, upR, downL);  // north-east
            const int32_t b = HueTransit<Bits>(gUpL, gc, gDownR, upL, downR);  // north-west
            const int32_t ne = std::abs(upR - downL) + std::abs(pUp2[i + 2] - c) + std::abs(c - pDown2[i - 2]) +
                               std::abs(gUpR - gc) + std::abs(gc - gDownL);
            const int32_t nw = std::abs(upL - downR) + std::abs(pUp2[i - 2] - c) + std::abs(c - pDown2[i + 2]) +
                               std::abs(gUpL - gc) + std::abs(gc - gDownR);
            pFirst[j] = ne < nw ? a : nw < ne ? b : (a + b + 1) >> 1;
            pSecond[j] = gc;
        }
    }
}

// Writes a stretch from the estimates: one LUT read per colour, sites fixed per column pair.
template <unsigned Bits, uint32_t DstBytes, class TEstimate = int32_t>
struct TGroupingColour {
    struct TLine {
        const uint8_t* pCur;
        const TEstimate* pFirst[2];  // by column pair from x0; [1] at green columns
        const TEstimate* pSecond[2];
        uint32_t x0;
        uint8_t* pOut;
    };
    TBayerLut lut;

    template <int Site>
    void Pixel(const TLine& l, uint32_t x) const
    {
        const uint32_t c = TDepth<Bits>::At(l.pCur, x) & TDepth<Bits>::kMask1;
        constexpr int kGreen = Site == kSiteGreenR || Site == kSiteGreenB;
        const uint32_t j = (x - l.x0) >> 1, first = l.pFirst[kGreen][j], second = l.pSecond[kGreen][j];
        uint8_t* p = l.pOut + size_t(x) * DstBytes;
        if constexpr (Site == kSiteGreenR) {
            StoreBgr<DstBytes>(p, lut.pBlue[second], lut.pGreen[c], lut.pRed[first]);
        } else if constexpr (Site == kSiteGreenB) {
            StoreBgr<DstBytes>(p, lut.pBlue[first], lut.pGreen[c], lut.pRed[second]);
        } else if constexpr (Site == kSiteRed) {
            StoreBgr<DstBytes>(p, lut.pBlue[first], lut.pGreen[second], lut.pRed[c]);
        } else {
            StoreBgr<DstBytes>(p, lut.pBlue[c], lut.pGreen[second], lut.pRed[first]);
        }
    }
};

// Five source lines around y, repeated at the edges (only lines the kernel reads must exist).
template <unsigned Bits>
TWindow5<Bits> ClampedWindow(const TBayerPlanes& p, uint32_t y, uint32_t dwHeight)
{
    TWindow5<Bits> w;
    for (int i = 0; i < 5; ++i) {
        const int64_t line = std::min<int64_t>(std::max<int64_t>(int64_t(y) + i - 2, 0), dwHeight - 1);
        w.pLine[i] = p.pSrc + size_t(line) * p.dwSrcLineIncrement;
    }
    return w;
}

// Interior (lines and columns 2 .. size-3) with three lines of green in a ring: the green of
// line y+1 is made just before the colours of line y, so every line is estimated once; the
// columns of both outer rings follow each line while it is cached, the rings' lines come last.
// The estimate loops build for AVX2 too, used behind its switch.
template <unsigned Bits, uint32_t DstBytes>
void RunGrouping(const TBayerPlanes& p, const TBayerLut& lut, uint32_t w, uint32_t h, int32_t* pGreen)
{
    using TColour = TGroupingColour<Bits, DstBytes>;
    const TSiteLines<TBilinearGreen<Bits>> ringGreen(1, p.bShiftColumn);
    const TSiteLines<TBilinearGreen<Bits>> lastGreen(w - 2, p.bShiftColumn);
    const TSiteLines<TColour> colour(2, p.bShiftColumn);
    const bool bAvx2 = g_SSEChecker.UseAVX2();
    auto greenLine = [&](uint32_t y) { return pGreen + size_t(y % 3) * w; };
    auto makeGreen = [&](uint32_t y) {
        const TGreenLine<Bits> line{ClampedWindow<Bits>(p, y, h), greenLine(y)};
        const bool bRed = IsRedLine(y, p.bShiftLine);
        if (y == 1 || y == h - 2) {
            (bRed ? ringGreen.red : ringGreen.blue)({}, line, 1, w - 1);
            return;
        }
        (bRed ? ringGreen.red : ringGreen.blue)({}, line, 1, 2);
        GreenStretches<Bits>(line.s, w, bRed == p.bShiftColumn ? 0 : 1, bAvx2, line.pGreen);
        (bRed ? lastGreen.red : lastGreen.blue)({}, line, w - 2, w - 1);
    };
    const TColour k{lut};
    int32_t first[2][kStretch / 2], second[2][kStretch / 2];
    TWideWindow wide;
    makeGreen(1);
    makeGreen(2);
    for (uint32_t y = 2; y < h - 2; ++y) {
        makeGreen(y + 1);
        const TWindow5<Bits> s = Window5<Bits>(p, y);
        const bool bRedLine = IsRedLine(y, p.bShiftLine);
        const uint32_t greenParity = bRedLine == p.bShiftColumn ? 0 : 1;  // stretches start at even columns
        const auto line = bRedLine ? colour.red : colour.blue;
        uint8_t* pOut = p.pDst + size_t(y) * p.dwDstLineIncrement;
        for (uint32_t x0 = 2; x0 < w - 2; x0 += kStretch) {
            const uint32_t n = std::min(x0 + kStretch, w - 2) - x0;
            WidenWindow(s, x0, x0 + n, wide);
            // Columns of parity `par` of the stretch, green or not.
            auto estimate = [&](auto bGreen, uint32_t par) {
                const uint32_t x = x0 + par;
                ColourEstimates<Bits, bGreen>(wide.At(-2) + par, wide.At(-1) + par, wide.At(0) + par, wide.At(1) + par,
                                              wide.At(2) + par, greenLine(y - 1) + x, greenLine(y) + x,
                                              greenLine(y + 1) + x, (n + 1 - par) / 2, first[bGreen], second[bGreen]);
            };
            AnyAvx2(bAvx2, [&] {
                estimate(std::true_type{}, greenParity);
                estimate(std::false_type{}, 1 - greenParity);
            });
            line(k, {s.pLine[2], {first[0], first[1]}, {second[0], second[1]}, x0, pOut}, x0, x0 + n);
        }
        RingColumns<Bits, DstBytes>(p, lut, w, h, y);
    }
    RingLines<Bits, DstBytes>(p, lut, w, h);
}

// Line buffers of the vector path: 13 lines split by parity (source ring of eight, green
// ring of three, the first estimates of both parities, the second ones of green columns), each
// half with a margin of 16 values in front and the loops' overrun behind.
constexpr size_t kSplitLines = 13, kSplitMargin = 16;

size_t SplitStride(uint32_t w)
{
    return (kSplitMargin + (size_t(w) + 1) / 2 + 48) & ~size_t(15);
}

// The interior in vector loops. Every source line is split into 16-bit halves once, into a
// ring of eight; the green of line y+1 (estimates at red and blue columns only: nothing reads
// the green plane at green columns) is made just before the colours of line y, the rings as in
// the plain path. The identity LUT stores the top 8 bits of the values; other LUTs are read per
// colour as in the plain path.
template <unsigned Bits, uint32_t DstBytes>
void RunGroupingVector(const TGroupingLoops& v, const TBayerPlanes& p, const TBayerLut& lut, bool bIdentity, uint32_t w,
                       uint32_t h, int16_t* pBuffer)
{
    const size_t stride = SplitStride(w);
    auto split = [&](size_t slot) {
        int16_t* q = pBuffer + 2 * slot * stride + kSplitMargin;
        return TSplitLine{{q, q + stride}};
    };
    auto src = [&](uint32_t y) { return split(y & 7); };
    auto green = [&](uint32_t y) { return split(8 + y % 3); };
    const TSplitLine first = split(11), second = split(12);
    auto otherParity = [&](uint32_t y) { return IsRedLine(y, p.bShiftLine) == p.bShiftColumn ? 1 : 0; };
    uint32_t widened = 0;  // source lines split so far
    // Green of the second ring: the truncated mean of the four direct neighbours.
    auto ringGreen = [&](uint32_t y, uint32_t x) {
        const TSplitLine s = src(y);
        green(y).half[x & 1][x >> 1] = int16_t((src(y - 1).half[x & 1][x >> 1] + src(y + 1).half[x & 1][x >> 1] +
                                                s.half[~x & 1][(x - 1) >> 1] + s.half[~x & 1][(x + 1) >> 1]) >>
                                               2);
    };
    auto makeGreen = [&](uint32_t y) {
        for (; widened <= std::min(y + 2, h - 1); ++widened) {
            v.split(p.pSrc + size_t(widened) * p.dwSrcLineIncrement, w, src(widened));
        }
        const int rb = otherParity(y);
        if (y == 1 || y == h - 2) {
            for (uint32_t x = 2 - rb; x < w - 1; x += 2) ringGreen(y, x);
            return;
        }
        const TSplitLine s = src(y);
        // Ahead: the source line split next and the destination line of the colours that follow.
        const uint8_t* pNextSrc = p.pSrc + size_t(std::min(y + 3, h - 1)) * p.dwSrcLineIncrement;
        const uint8_t* pNextDst = p.pDst + size_t(std::max(y, 3u) - 1) * p.dwDstLineIncrement;
        v.green({s.Tap(rb, 0), src(y - 1).Tap(rb, 0), src(y + 1).Tap(rb, 0), s.Tap(rb, -1), src(y - 2).Tap(rb, 0),
                 src(y + 2).Tap(rb, 0), s.Tap(rb, -2), green(y).half[rb], pNextSrc, pNextDst, DstBytes},
                (w - 1 - rb) / 2);
        if (rb == 1) ringGreen(y, 1);
        if (((w - 2) & 1) == uint32_t(rb)) ringGreen(y, w - 2);
    };
    using TColour = TGroupingColour<Bits, DstBytes, int16_t>;
    const TSiteLines<TColour> colour(2, p.bShiftColumn);
    const TColour k{lut};
    makeGreen(1);
    makeGreen(2);
    for (uint32_t y = 2; y < h - 2; ++y) {
        makeGreen(y + 1);
        const int rb = otherParity(y), gp = 1 - rb;
        const TSplitLine s = src(y), g = green(y), up = src(y - 1), down = src(y + 1);
        const TSplitLine gUp = green(y - 1), gDown = green(y + 1), up2 = src(y - 2), down2 = src(y + 2);
        v.greenSites({s.Tap(gp, 0), g.Tap(gp, -1), s.Tap(gp, -1), gUp.Tap(gp, 0), gDown.Tap(gp, 0), up.Tap(gp, 0),
                      down.Tap(gp, 0), first.half[gp], second.half[gp]},
                     (w - 1 - gp) / 2);
        v.otherSites({s.Tap(rb, 0), g.Tap(rb, 0), gUp.Tap(rb, -1), gDown.Tap(rb, -1), up.Tap(rb, -1), down.Tap(rb, -1),
                      up2.Tap(rb, -2), down2.Tap(rb, -2), first.half[rb]},
                     (w - 1 - rb) / 2);
        uint8_t* pOut = p.pDst + size_t(y) * p.dwDstLineIncrement;
        const uint8_t* pCur = p.pSrc + size_t(y) * p.dwSrcLineIncrement;
        const bool bRedLine = IsRedLine(y, p.bShiftLine);
        uint32_t x = 2;
        if (bIdentity) {
            // Green columns: first along the line, second across it; the others: first, green, own.
            TColourPlanes c{};
            c.g[gp] = s.half[gp], c.g[rb] = g.half[rb];
            c.b[gp] = (bRedLine ? second : first).half[gp], c.r[gp] = (bRedLine ? first : second).half[gp];
            c.b[rb] = (bRedLine ? first : s).half[rb], c.r[rb] = (bRedLine ? s : first).half[rb];
            x = v.storeIdentity(c, 2, w, DstBytes, pOut);  // pixels from w - 2 on: the rings follow
        }
        if (x < w - 2) {
            (bRedLine ? colour.red : colour.blue)(
                k, {pCur, {first.half[rb], first.half[gp]}, {g.half[rb], second.half[gp]}, 0, pOut}, x, w - 2);
        }
        RingColumns<Bits, DstBytes>(p, lut, w, h, y);
    }
    RingLines<Bits, DstBytes>(p, lut, w, h);
}

}  // namespace

KaipStatus BdPixelGrouping(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                           uint32_t dwOptions, KaipHLut hLut)
{
    static const char* const pszFunc = "KaipBdPixelGrouping";
    TBayerJob job;
    TBayerLut lut;
    uint32_t dwDstBytes = 0;
    const KaipStatus status = PrepareInterpolatingDecoder(pszFunc, pSrcImgInfo, pDstImgInfo, dwDstPixelFormat,
                                                          dwOptions, hLut, job, lut, dwDstBytes);
    if (status != KASTATUS_OK) return status;
    const uint32_t w = job.src.Width, h = job.src.Height;
    if (w > 4 && h > 4) {
        // The vector loops on 16-bit split lines; without SSE2 the 32-bit stretches.
        const bool bVector = g_SSEChecker.m_bUseSSE2;
        const uint64_t qwBytes =
            bVector ? uint64_t(2) * kSplitLines * SplitStride(w) * sizeof(int16_t) : uint64_t(3) * w * sizeof(int32_t);
        void* pBuffer = oxOsBufferCreateAligned(qwBytes, 64, 0);
        if (!pBuffer) return Refuse(KASTATUS_KAIP_MEMORY_ALLOC_FAILED, "%s: no memory for line buffers", pszFunc);
        std::memset(pBuffer, 0, size_t(qwBytes));  // the loops' overrun reads defined values
        const TBayerPlanes planes = JobPlanes(job);
        const TGroupingLoops& loops = (g_SSEChecker.UseAVX2() ? g_GroupingAvx2 : g_GroupingSse2)[(job.dwBits - 8) / 2];
        WithDepth(job.dwBits, [&](auto bits) {
            WithPixelBytes(dwDstBytes, [&](auto bytes) {
                if (bVector) {
                    RunGroupingVector<bits, bytes>(loops, planes, lut, hLut == nullptr, w, h,
                                                   static_cast<int16_t*>(pBuffer));
                } else {
                    RunGrouping<bits, bytes>(planes, lut, w, h, static_cast<int32_t*>(pBuffer));
                }
            });
        });
        oxOsBufferFree(pBuffer);
    } else {
        FinishFrames(job, dwDstBytes, hLut);
    }
    return KASTATUS_OK;
}
