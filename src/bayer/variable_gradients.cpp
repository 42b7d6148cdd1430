// variable_gradients.cpp: threshold-based variable number of gradients (Chang, Cheung and Pang).
#include <cstdlib>
#include <type_traits>

#include "bayer/bayer.h"
#include "bayer/decoder_window.h"
#include "bayer/variable_gradients.h"

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
template <class T>
struct TDirection {
    T gradient, first, second, third;
};

// |a - b| in the lane type (16 or 32 bits): 16-bit lanes have min and max but no abs in SSE2.
template <class T>
inline T Distance(T a, T b)
{
    if constexpr (sizeof(T) == 2) {
        return T(std::max(a, b) - std::min(a, b));
    } else {
        return std::abs(a - b);
    }
}

// A loop runs over the columns of one kind (Green or not), so the picks between the kinds are
// made at compile time. The axial gradient is the same formula at both kinds.
template <int Turn, bool Green, class T, class P>
inline __attribute__((always_inline)) TDirection<T> Axis(const P& p, T c)
{
    auto q = [&](int dy, int dx) { return p(TTurned<Turn>::Dy(dy, dx), TTurned<Turn>::Dx(dy, dx)); };
    const T g = T(2 * Distance(q(-1, 0), q(1, 0)) + 2 * Distance(q(-2, 0), c) + Distance(q(-1, -1), q(1, -1)) +
                  Distance(q(-1, 1), q(1, 1)) + Distance(q(-2, -1), q(0, -1)) + Distance(q(-2, 1), q(0, 1)));
    const T near4 = T(4 * q(-1, 0)), side = T(2 * (q(-1, -1) + q(-1, 1)));
    const T far = T(q(-2, -1) + q(-2, 1) + q(0, -1) + q(0, 1));
    return {g, T(2 * (q(-2, 0) + c)), Green ? far : near4, Green ? near4 : side};
}

template <int Turn, bool Green, class T, class P>
inline __attribute__((always_inline)) TDirection<T> Diagonal(const P& p, T c)
{
    auto q = [&](int dy, int dx) { return p(TTurned<Turn>::Dy(dy, dx), TTurned<Turn>::Dx(dy, dx)); };
    const T common = T(2 * Distance(q(-1, 1), q(1, -1)) + 2 * Distance(q(-2, 2), c));
    const T tail = Green ? T(2 * Distance(q(-2, 1), q(0, -1)) + 2 * Distance(q(-1, 2), q(1, 0)))
                         : T(Distance(q(-1, 0), q(0, -1)) + Distance(q(0, 1), q(1, 0)) + Distance(q(-2, 1), q(-1, 0)) +
                             Distance(q(-1, 2), q(0, 1)));
    const T corner4 = T(4 * q(-1, 1)), ownRB = T(2 * (q(-2, 2) + c));
    const T around = T(q(-2, 1) + q(-1, 0) + q(-1, 2) + q(0, 1));
    const T xG = T(2 * (q(-2, 1) + q(0, 1))), yG = T(2 * (q(-1, 0) + q(-1, 2)));
    return {T(common + tail), Green ? corner4 : ownRB, Green ? xG : around, Green ? yG : corner4};
}

// The estimates of the count columns of one parity (green or not) of a stretch: the
// directions whose gradient is at most 1.5 min + 0.5 (max - min) are chosen; each output is
// the pixel's sample plus the mean colour difference over them, rounded once and clamped.
// `first` is green at red and blue columns and the colour beside the pixel at green ones,
// `second` the opposite colour and the colour above and below. Gradients stay below 2^15 at
// every depth; the sums fit 16 bits only with 8-bit samples. The rounded mean is a multiply
// by a reciprocal (RoundedMean). Without partial redundancy elimination, which would carry
// loads from one column to the next, the loop vectorises (WithAvx2 likewise).
template <unsigned Bits, bool Green, int Par, class T>
__attribute__((optimize("no-tree-pre"))) void Estimates(const TSplitWindow<T>& __restrict win, uint32_t count,
                                                        int32_t* __restrict pFirst, int32_t* __restrict pSecond)
{
    for (int32_t j = 0; j < int32_t(count); ++j) {
        auto p = [&](int dy, int dx) { return win.half[(Par + dx) & 1][2 + dy][j + ((Par + dx + 2) >> 1)]; };
        const T c = p(0, 0);
        const TDirection<T> d[8] = {Axis<0, Green>(p, c),     Axis<1, Green>(p, c),     Axis<2, Green>(p, c),
                                    Axis<3, Green>(p, c),     Diagonal<0, Green>(p, c), Diagonal<1, Green>(p, c),
                                    Diagonal<2, Green>(p, c), Diagonal<3, Green>(p, c)};
        T lo = d[0].gradient, hi = d[0].gradient;
        for (int k = 1; k < 8; ++k) lo = std::min(lo, d[k].gradient), hi = std::max(hi, d[k].gradient);
        // gradient <= 1.5 min + 0.5 (max - min), i.e. 2 (gradient - min) <= max
        const T limit = T(hi >> 1);
        T taken = 0, own = 0, a = 0, b = 0;
        for (int k = 0; k < 8; ++k) {
            const T take = T(d[k].gradient - lo <= limit ? -1 : 0);
            // Around a green pixel odd turns swap the colours beside and above.
            const bool bSwap = Green && (k & 1);
            taken = T(taken - take);
            own = T(own + (d[k].first & take));
            a = T(a + ((bSwap ? d[k].third : d[k].second) & take));
            b = T(b + ((bSwap ? d[k].second : d[k].third) & take));
        }
        const T n4 = T(4 * taken), top = T(n4 * T(TDepth<Bits>::kMask1));
        pFirst[j] = RoundedMean(std::min(std::max(T(n4 * c + a - own), T(0)), top), taken);
        pSecond[j] = RoundedMean(std::min(std::max(T(n4 * c + b - own), T(0)), top), taken);
    }
}

// The estimates of both parities of a stretch of n columns whose green columns have parity
// greenParity; index 1 of the outputs holds the green columns.
template <unsigned Bits, class T>
void StretchEstimates(const TSplitWindow<T>& win, uint32_t n, int greenParity, int32_t (&first)[2][kStretch / 2],
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

// The interior in stretches whose estimates work in lanes of type T, built for AVX2 if bAvx2.
template <unsigned Bits, uint32_t DstBytes, class T>
void RunGradients(const TBayerPlanes& p, const TBayerLut& lut, uint32_t w, uint32_t h, bool bAvx2)
{
    using TColour = TGradientsColour<Bits, DstBytes>;
    const TColour k{lut};
    const TSiteLines<TColour> lines(2, p.bShiftColumn);
    TSplitWindow<T> split;
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
            // 8-bit samples fit 16-bit lanes, twice as many per plain register; with AVX2, whose
            // 32-bit lanes have native abs, min and max, 32-bit lanes are faster still.
            WithPixelBytes(dwDstBytes, [&](auto bytes) {
                if (g_SSEChecker.UseAVX2()) {
                    RunGradients<bits, bytes, int32_t>(planes, lut, w, h, true);
                } else {
                    RunGradients<bits, bytes, std::conditional_t<bits == 8, int16_t, int32_t>>(planes, lut, w, h,
                                                                                               false);
                }
            });
        });
    }
    FinishFrames(job, dwDstBytes, hLut);
    return KASTATUS_OK;
}
