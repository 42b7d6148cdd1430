// variable_gradients.cpp: threshold-based variable number of gradients (Chang, Cheung and Pang).
#include <cstdlib>

#include "bayer/bayer.h"
#include "bayer/decoder_window.h"

namespace {

// The eight directions are one north and one north-east template turned by quarter turns;
// quarter turns keep every site's colour around a red or blue pixel and swap red and blue
// around a green one.
template <int Turn>
struct TTurned {
    static constexpr int Dy(int dy, int dx) { return Turn == 0 ? dy : Turn == 1 ? -dx : Turn == 2 ? -dy : dx; }
    static constexpr int Dx(int dy, int dx) { return Turn == 0 ? dx : Turn == 1 ? dy : Turn == 2 ? -dx : -dy; }
};

// One direction as seen from the pixel: its gradient (in halves) and, in quarters, the three
// colours around the neighbour it points to. At a red or blue pixel the colours are its own,
// green and the opposite one; at a green pixel green, then the colour whose sites lie like
// (-2, 1) in the unturned direction, then the one whose sites lie like (-1, 2).
struct TDirection {
    int32_t gradient, first, second, third;
};

// A loop runs over the columns of one kind, so `green` (all ones at green pixels) is a
// constant and the picks between the kinds fold away. The axial gradient is the same formula
// at both kinds.
template <int Turn, class P>
inline __attribute__((always_inline)) TDirection Axis(const P& p, int32_t c, int32_t green)
{
    auto q = [&](int dy, int dx) { return p(TTurned<Turn>::Dy(dy, dx), TTurned<Turn>::Dx(dy, dx)); };
    const int32_t g = 2 * std::abs(q(-1, 0) - q(1, 0)) + 2 * std::abs(q(-2, 0) - c) + std::abs(q(-1, -1) - q(1, -1)) +
                      std::abs(q(-1, 1) - q(1, 1)) + std::abs(q(-2, -1) - q(0, -1)) + std::abs(q(-2, 1) - q(0, 1));
    const int32_t near4 = 4 * q(-1, 0), side = 2 * (q(-1, -1) + q(-1, 1));
    const int32_t far = q(-2, -1) + q(-2, 1) + q(0, -1) + q(0, 1);
    return {g, 2 * (q(-2, 0) + c), (far & green) | (near4 & ~green), (near4 & green) | (side & ~green)};
}

template <int Turn, class P>
inline __attribute__((always_inline)) TDirection Diagonal(const P& p, int32_t c, int32_t green)
{
    auto q = [&](int dy, int dx) { return p(TTurned<Turn>::Dy(dy, dx), TTurned<Turn>::Dx(dy, dx)); };
    const int32_t common = 2 * std::abs(q(-1, 1) - q(1, -1)) + 2 * std::abs(q(-2, 2) - c);
    const int32_t tailRB = std::abs(q(-1, 0) - q(0, -1)) + std::abs(q(0, 1) - q(1, 0)) + std::abs(q(-2, 1) - q(-1, 0)) +
                           std::abs(q(-1, 2) - q(0, 1));
    const int32_t tailG = 2 * std::abs(q(-2, 1) - q(0, -1)) + 2 * std::abs(q(-1, 2) - q(1, 0));
    const int32_t corner4 = 4 * q(-1, 1), ownRB = 2 * (q(-2, 2) + c);
    const int32_t around = q(-2, 1) + q(-1, 0) + q(-1, 2) + q(0, 1);
    const int32_t xG = 2 * (q(-2, 1) + q(0, 1)), yG = 2 * (q(-1, 0) + q(-1, 2));
    return {common + ((tailG & green) | (tailRB & ~green)), (corner4 & green) | (ownRB & ~green),
            (xG & green) | (around & ~green), (yG & green) | (corner4 & ~green)};
}

// The estimates of the count columns of one parity (green or not) of a stretch: the
// directions whose gradient is at most 1.5 min + 0.5 (max - min) are chosen; each output is
// the pixel's sample plus the mean colour difference over them, rounded once and clamped.
// `first` is green at red and blue columns and the colour beside the pixel at green ones,
// `second` the opposite colour and the colour above and below. The quotient, at most 4095
// with a divisor of at most 32, is exact in float.
template <unsigned Bits, bool Green, int Par>
void Estimates(const TSplitWindow& __restrict win, uint32_t count, int32_t* __restrict pFirst,
               int32_t* __restrict pSecond)
{
    constexpr int32_t green = Green ? -1 : 0;
    for (int32_t j = 0; j < int32_t(count); ++j) {
        auto p = [&](int dy, int dx) { return win.half[(Par + dx) & 1][2 + dy][j + ((Par + dx + 2) >> 1)]; };
        const int32_t c = p(0, 0);
        const TDirection d[8] = {Axis<0>(p, c, green),     Axis<1>(p, c, green),     Axis<2>(p, c, green),
                                 Axis<3>(p, c, green),     Diagonal<0>(p, c, green), Diagonal<1>(p, c, green),
                                 Diagonal<2>(p, c, green), Diagonal<3>(p, c, green)};
        int32_t lo = d[0].gradient, hi = d[0].gradient;
        for (int k = 1; k < 8; ++k) lo = std::min(lo, d[k].gradient), hi = std::max(hi, d[k].gradient);
        const int32_t threshold = 2 * lo + hi;  // twice 1.5 min + 0.5 (max - min)
        int32_t taken = 0, own = 0, a = 0, b = 0;
        for (int k = 0; k < 8; ++k) {
            const int32_t take = 2 * d[k].gradient <= threshold ? -1 : 0;
            // Around a green pixel odd turns swap the colours beside and above.
            const bool bSwap = Green && (k & 1);
            taken -= take;
            own += d[k].first & take;
            a += (bSwap ? d[k].third : d[k].second) & take;
            b += (bSwap ? d[k].second : d[k].third) & take;
        }
        const int32_t n4 = 4 * taken, top = n4 * int32_t(TDepth<Bits>::kMask1);
        const int32_t numA = std::min(std::max(n4 * c + a - own, 0), top);
        const int32_t numB = std::min(std::max(n4 * c + b - own, 0), top);
        pFirst[j] = int32_t(float(numA + n4 / 2) / float(n4));
        pSecond[j] = int32_t(float(numB + n4 / 2) / float(n4));
    }
}

// The estimates of both parities of a stretch of n columns whose green columns have parity
// greenParity; index 1 of the outputs holds the green columns.
template <unsigned Bits>
void StretchEstimates(const TSplitWindow& win, uint32_t n, int greenParity, int32_t (&first)[2][kStretch / 2],
                      int32_t (&second)[2][kStretch / 2])
{
    if (greenParity == 0) {
        Estimates<Bits, true, 0>(win, (n + 1) / 2, first[1], second[1]);
        Estimates<Bits, false, 1>(win, n / 2, first[0], second[0]);
    } else {
        Estimates<Bits, false, 0>(win, (n + 1) / 2, first[0], second[0]);
        Estimates<Bits, true, 1>(win, n / 2, first[1], second[1]);
    }
}

// Writes a stretch from the estimates: one LUT read per colour, sites fixed per column pair.
template <unsigned Bits, uint32_t DstBytes>
struct TGradientsColour {
    struct TLine {
        const uint8_t* pCur;
        const int32_t* pFirst[2];  // by column pair of the stretch; [1] at green columns
        const int32_t* pSecond[2];
        uint32_t x0;
        uint8_t* pOut;
    };
    TBayerLut lut;

    template <int Site>
    void Pixel(const TLine& l, uint32_t x) const
    {
        constexpr int kGreen = Site == kSiteGreenR || Site == kSiteGreenB;
        const uint32_t j = (x - l.x0) >> 1, c = TDepth<Bits>::At(l.pCur, x) & TDepth<Bits>::kMask1;
        const uint32_t first = uint32_t(l.pFirst[kGreen][j]), second = uint32_t(l.pSecond[kGreen][j]);
        uint8_t* p = l.pOut + size_t(x) * DstBytes;
        if constexpr (Site == kSiteGreenR) {
            StoreBgr<DstBytes>(p, lut.pBlue[second], lut.pGreen[c], lut.pRed[first]);
        } else if constexpr (Site == kSiteGreenB) {
            StoreBgr<DstBytes>(p, lut.pBlue[first], lut.pGreen[c], lut.pRed[second]);
        } else if constexpr (Site == kSiteRed) {
            StoreBgr<DstBytes>(p, lut.pBlue[second], lut.pGreen[first], lut.pRed[c]);
        } else {
            StoreBgr<DstBytes>(p, lut.pBlue[c], lut.pGreen[first], lut.pRed[second]);
        }
    }
};

template <unsigned Bits, uint32_t DstBytes>
void RunGradients(const TBayerPlanes& p, const TBayerLut& lut, uint32_t w, uint32_t h)
{
    using TColour = TGradientsColour<Bits, DstBytes>;
    const TColour k{lut};
    const TSiteLines<TColour> lines(2, p.bShiftColumn);
    const bool bAvx2 = g_SSEChecker.UseAVX2();
    TSplitWindow split;
    int32_t first[2][kStretch / 2], second[2][kStretch / 2];
    for (uint32_t y = 2; y < h - 2; ++y) {
        const TWindow5<Bits> s = Window5<Bits>(p, y);
        const bool bRedLine = IsRedLine(y, p.bShiftLine);
        const int greenParity = bRedLine == p.bShiftColumn ? 0 : 1;  // stretches start at even columns
        const auto line = bRedLine ? lines.red : lines.blue;
        uint8_t* pOut = p.pDst + size_t(y) * p.dwDstLineIncrement;
        for (uint32_t x0 = 2; x0 < w - 2; x0 += kStretch) {
            const uint32_t x1 = std::min(x0 + kStretch, w - 2);
            WidenSplit(s, x0, x1, split);
            AnyAvx2(bAvx2, [&] { StretchEstimates<Bits>(split, x1 - x0, greenParity, first, second); });
            line(k, {s.pLine[2], {first[0], first[1]}, {second[0], second[1]}, x0, pOut}, x0, x1);
        }
    }
}

}  // namespace

KaipStatus BdVariableGradients(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                               uint32_t dwOptions, KaipHLut hLut)
{
    TBayerJob job;
    TBayerLut lut;
    uint32_t dwDstBytes = 0;
    const KaipStatus status = PrepareInterpolatingDecoder("KaipBdVariableGradients", pSrcImgInfo, pDstImgInfo,
                                                          dwDstPixelFormat, dwOptions, hLut, job, lut, dwDstBytes);
    if (status != KASTATUS_OK) return status;
    const uint32_t w = job.src.Width, h = job.src.Height;
    const TBayerPlanes planes = JobPlanes(job);
    if (w > 4 && h > 4) {
        WithDepth(job.dwBits, [&](auto bits) {
            WithPixelBytes(dwDstBytes, [&](auto bytes) { RunGradients<bits, bytes>(planes, lut, w, h); });
        });
    }
    FinishFrames(job, dwDstBytes, hLut);
    return KASTATUS_OK;
}
