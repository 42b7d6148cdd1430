// pixel_grouping.cpp: patterned pixel grouping (Chuan-kai Lin): green by gradient-weighted estimates, then red and blue by hue transit.
#include <cstdlib>

#include "bayer/bayer.h"
#include "bayer/decoder_window.h"
#include "core/log.h"
#include "platform/os_buffer.h"

namespace {

// Lines of the green plane: the source's green sites as they are, estimates at red and blue.
struct TGreenLines {
    const uint16_t* pLine[3];  // lines y-1, y, y+1
    int32_t At(int dy, uint32_t x) const { return pLine[1 + dy][x]; }
};

// Weights of the green estimates: 4096 / (1 + gradient), the gradient in 8-bit steps.
struct TGradientWeights {
    uint16_t w[768];
    TGradientWeights()
    {
        for (uint32_t d = 0; d < 768; ++d) w[d] = uint16_t(4096 / (1 + d));
    }
};
const TGradientWeights g_GradientWeights;

// Green at a red or blue site: four directional estimates (the nearer green weighted three
// to one, corrected by the slope of the pixel's own colour, in quarters), averaged with
// weights falling as 1 / (1 + gradient), the gradient being the own colour two away, twice,
// plus the greens across. Rounded once, clamped to the depth.
template <unsigned Bits>
struct TGroupingGreen {
    static constexpr unsigned kBits = Bits;
    struct TLine {
        TWindow5<Bits> s;
        uint16_t* pGreen;
    };

    static int32_t Weight(int32_t gradient) { return g_GradientWeights.w[gradient >> (Bits - 8)]; }

    template <int Site>
    void Pixel(const TLine& l, uint32_t x) const
    {
        const TWindow5<Bits>& s = l.s;
        const int32_t c = s.At(0, x);
        if constexpr (Site == kSiteGreenR || Site == kSiteGreenB) {
            l.pGreen[x] = uint16_t(c);
        } else {
            const int32_t n = s.At(-1, x), so = s.At(1, x), w = s.At(0, x - 1), e = s.At(0, x + 1);
            const int32_t n2 = s.At(-2, x), s2 = s.At(2, x), w2 = s.At(0, x - 2), e2 = s.At(0, x + 2);
            const int32_t wn = Weight(2 * std::abs(c - n2) + std::abs(n - so));
            const int32_t we = Weight(2 * std::abs(c - e2) + std::abs(e - w));
            const int32_t ww = Weight(2 * std::abs(c - w2) + std::abs(w - e));
            const int32_t ws = Weight(2 * std::abs(c - s2) + std::abs(so - n));
            const int32_t sum = wn * (3 * n + so + c - n2) + we * (3 * e + w + c - e2) + ww * (3 * w + e + c - w2) +
                                ws * (3 * so + n + c - s2);
            const int32_t weights4 = 4 * (wn + we + ww + ws);
            const int32_t num = std::min(std::max(sum, 0), weights4 * int32_t(TDepth<Bits>::kMask1));
            l.pGreen[x] = uint16_t(uint32_t(num + weights4 / 2) / uint32_t(weights4));
        }
    }
};

// Green of the second ring: the truncated mean of the four direct neighbours, as its output.
template <unsigned Bits>
struct TBilinearGreen {
    static constexpr unsigned kBits = Bits;
    using TLine = typename TGroupingGreen<Bits>::TLine;

    template <int Site>
    void Pixel(const TLine& l, uint32_t x) const
    {
        const TWindow5<Bits>& s = l.s;
        const bool bGreen = Site == kSiteGreenR || Site == kSiteGreenB;
        l.pGreen[x] = uint16_t(bGreen ? s.At(0, x)
                                      : (s.At(-1, x) + s.At(1, x) + s.At(0, x - 1) + s.At(0, x + 1)) >> 2);
    }
};

// Value v2 at the place of l2 between (l1, v1) and (l3, v3): where l2 lies strictly between
// l1 and l3 the values are interpolated in proportion, otherwise the mean of v1 and v3 takes
// the curvature of l; rounded once, clamped to the depth.
template <unsigned Bits>
int32_t HueTransit(int32_t l1, int32_t l2, int32_t l3, int32_t v1, int32_t v3)
{
    const bool bMonotonic = (l1 < l2 && l2 < l3) || (l1 > l2 && l2 > l3);
    const int32_t a = std::abs(l2 - l1), b = std::abs(l3 - l1);
    const int32_t proportional =
        int32_t(g_Reciprocals.Divide(uint32_t(v1 * (b - a) + v3 * a + b / 2), uint32_t(bMonotonic ? b : 1)));
    const int32_t curved = ClampSample<Bits>((2 * (v1 + v3) + 2 * l2 - l1 - l3 + 2) >> 2);
    return bMonotonic ? proportional : curved;
}

// Red and blue from the green plane: at green sites by hue transit along the line and across
// it; at red and blue sites along the diagonal with the smaller gradient (both, averaged, on
// a tie).
template <unsigned Bits, uint32_t DstBytes>
struct TGroupingColour {
    static constexpr unsigned kBits = Bits;
    struct TLine {
        TWindow5<Bits> s;
        TGreenLines g;
        uint8_t* pOut;
    };
    TBayerLut lut;

    template <int Site>
    void Pixel(const TLine& l, uint32_t x) const
    {
        const TWindow5<Bits>& s = l.s;
        const TGreenLines& g = l.g;
        const int32_t c = s.At(0, x), gc = g.At(0, x);
        uint8_t* p = l.pOut + size_t(x) * DstBytes;
        if constexpr (Site == kSiteGreenR || Site == kSiteGreenB) {
            const int32_t across = HueTransit<Bits>(g.At(0, x - 1), c, g.At(0, x + 1), s.At(0, x - 1), s.At(0, x + 1));
            const int32_t vertical = HueTransit<Bits>(g.At(-1, x), c, g.At(1, x), s.At(-1, x), s.At(1, x));
            const int32_t r = Site == kSiteGreenR ? across : vertical, b = Site == kSiteGreenR ? vertical : across;
            StoreBgr<DstBytes>(p, lut.pBlue[b], lut.pGreen[c], lut.pRed[r]);
        } else {
            const int32_t ne = std::abs(s.At(-1, x + 1) - s.At(1, x - 1)) + std::abs(s.At(-2, x + 2) - c) +
                               std::abs(c - s.At(2, x - 2)) + std::abs(g.At(-1, x + 1) - gc) +
                               std::abs(gc - g.At(1, x - 1));
            const int32_t nw = std::abs(s.At(-1, x - 1) - s.At(1, x + 1)) + std::abs(s.At(-2, x - 2) - c) +
                               std::abs(c - s.At(2, x + 2)) + std::abs(g.At(-1, x - 1) - gc) +
                               std::abs(gc - g.At(1, x + 1));
            const int32_t alongNe = HueTransit<Bits>(g.At(-1, x + 1), gc, g.At(1, x - 1), s.At(-1, x + 1), s.At(1, x - 1));
            const int32_t alongNw = HueTransit<Bits>(g.At(-1, x - 1), gc, g.At(1, x + 1), s.At(-1, x - 1), s.At(1, x + 1));
            const int32_t o = ne < nw ? alongNe : nw < ne ? alongNw : (alongNe + alongNw + 1) >> 1;
            const int32_t r = Site == kSiteRed ? c : o, b = Site == kSiteRed ? o : c;
            StoreBgr<DstBytes>(p, lut.pBlue[b], lut.pGreen[gc], lut.pRed[r]);
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
// line y+1 is made just before the colours of line y, so every line is estimated once.
template <unsigned Bits, uint32_t DstBytes>
void RunGrouping(const TBayerPlanes& p, const TBayerLut& lut, uint32_t w, uint32_t h, uint16_t* pGreen)
{
    using TColour = TGroupingColour<Bits, DstBytes>;
    const TSiteLines<TGroupingGreen<Bits>> estimate(2, p.bShiftColumn);
    const TSiteLines<TBilinearGreen<Bits>> ringGreen(1, p.bShiftColumn);
    const TSiteLines<TBilinearGreen<Bits>> lastGreen(w - 2, p.bShiftColumn);
    const TSiteLines<TColour> colour(2, p.bShiftColumn);
    auto greenLine = [&](uint32_t y) { return pGreen + size_t(y % 3) * w; };
    auto makeGreen = [&](uint32_t y) {
        const typename TGroupingGreen<Bits>::TLine line{ClampedWindow<Bits>(p, y, h), greenLine(y)};
        const bool bRed = IsRedLine(y, p.bShiftLine);
        if (y == 1 || y == h - 2) {
            (bRed ? ringGreen.red : ringGreen.blue)({}, line, 1, w - 1);
            return;
        }
        (bRed ? ringGreen.red : ringGreen.blue)({}, line, 1, 2);
        (bRed ? estimate.red : estimate.blue)({}, line, 2, w - 2);
        (bRed ? lastGreen.red : lastGreen.blue)({}, line, w - 2, w - 1);
    };
    const TColour k{lut};
    makeGreen(1);
    makeGreen(2);
    for (uint32_t y = 2; y < h - 2; ++y) {
        makeGreen(y + 1);
        const typename TColour::TLine line{ClampedWindow<Bits>(p, y, h),
                                           {greenLine(y - 1), greenLine(y), greenLine(y + 1)},
                                           p.pDst + size_t(y) * p.dwDstLineIncrement};
        (IsRedLine(y, p.bShiftLine) ? colour.red : colour.blue)(k, line, 2, w - 2);
    }
}

}  // namespace

KaipStatus BdPixelGrouping(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                           uint32_t dwOptions, KaipHLut hLut)
{
    static const char* const pszFunc = "KaipBdPixelGrouping";
    TBayerJob job;
    TBayerLut lut;
    uint32_t dwDstBytes = 0;
    const KaipStatus status =
        PrepareInterpolatingDecoder(pszFunc, pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions, hLut, job, lut,
                                    dwDstBytes);
    if (status != KASTATUS_OK) return status;
    const uint32_t w = job.src.Width, h = job.src.Height;
    if (w > 4 && h > 4) {
        auto* pGreen = static_cast<uint16_t*>(oxOsBufferCreateAligned(uint64_t(3) * w * sizeof(uint16_t), 64, 0));
        if (!pGreen) {
            return Refuse(KASTATUS_KAIP_MEMORY_ALLOC_FAILED, "%s: no memory for three lines of green", pszFunc);
        }
        const TBayerPlanes planes = JobPlanes(job);
        WithDepth(job.dwBits, [&](auto bits) {
            WithPixelBytes(dwDstBytes, [&](auto bytes) { RunGrouping<bits, bytes>(planes, lut, w, h, pGreen); });
        });
        oxOsBufferFree(pGreen);
    }
    FinishFrames(job, dwDstBytes, hLut);
    return KASTATUS_OK;
}
