// variable_gradients.cpp: threshold-based variable number of gradients (Chang, Cheung and Pang).
#include <cstdlib>

#include "bayer/bayer.h"
#include "bayer/decoder_window.h"

namespace {

// One direction as seen from the pixel: its gradient (in halves) and, in quarters, the three
// colours around the neighbour it points to. At a red or blue pixel the colours are its own,
// green and the opposite one; at a green pixel green, then the colour whose sites lie like
// (-2, 1) in the unrotated direction, then the one whose sites lie like (-1, 2).
struct TDirection {
    int32_t gradient, first, second, third;
};

// The eight directions are one north and one north-east template turned by quarter turns;
// quarter turns keep every site's colour at a red or blue pixel and swap red and blue around
// a green one.
template <int Turn>
struct TTurned {
    static constexpr int Dy(int dy, int dx) { return Turn == 0 ? dy : Turn == 1 ? -dx : Turn == 2 ? -dy : dx; }
    static constexpr int Dx(int dy, int dx) { return Turn == 0 ? dx : Turn == 1 ? dy : Turn == 2 ? -dx : -dy; }
};

template <unsigned Bits, uint32_t DstBytes>
struct TVariableGradients {
    static constexpr unsigned kBits = Bits;
    struct TLine {
        TWindow5<Bits> s;
        uint8_t* pOut;
    };
    TBayerLut lut;

    template <int Turn>
    static int32_t At(const TWindow5<Bits>& s, uint32_t x, int dy, int dx)
    {
        return s.At(TTurned<Turn>::Dy(dy, dx), x + TTurned<Turn>::Dx(dy, dx));
    }

    // At a red or blue pixel c: own colour, green, opposite colour.
    template <int Turn>
    static TDirection AxisRB(const TWindow5<Bits>& s, uint32_t x, int32_t c)
    {
        auto p = [&](int dy, int dx) { return At<Turn>(s, x, dy, dx); };
        const int32_t g = 2 * std::abs(p(-1, 0) - p(1, 0)) + 2 * std::abs(p(-2, 0) - c) +
                          std::abs(p(-1, -1) - p(1, -1)) + std::abs(p(-1, 1) - p(1, 1)) +
                          std::abs(p(-2, -1) - p(0, -1)) + std::abs(p(-2, 1) - p(0, 1));
        return {g, 2 * (p(-2, 0) + c), 4 * p(-1, 0), 2 * (p(-1, -1) + p(-1, 1))};
    }
    template <int Turn>
    static TDirection DiagonalRB(const TWindow5<Bits>& s, uint32_t x, int32_t c)
    {
        auto p = [&](int dy, int dx) { return At<Turn>(s, x, dy, dx); };
        const int32_t g = 2 * std::abs(p(-1, 1) - p(1, -1)) + 2 * std::abs(p(-2, 2) - c) +
                          std::abs(p(-1, 0) - p(0, -1)) + std::abs(p(0, 1) - p(1, 0)) +
                          std::abs(p(-2, 1) - p(-1, 0)) + std::abs(p(-1, 2) - p(0, 1));
        return {g, 2 * (p(-2, 2) + c), p(-2, 1) + p(-1, 0) + p(-1, 2) + p(0, 1), 4 * p(-1, 1)};
    }
    // At a green pixel c: green, the (-2, 1) colour, the (-1, 2) colour.
    template <int Turn>
    static TDirection AxisG(const TWindow5<Bits>& s, uint32_t x, int32_t c)
    {
        auto p = [&](int dy, int dx) { return At<Turn>(s, x, dy, dx); };
        const int32_t g = 2 * std::abs(p(-2, 0) - c) + 2 * std::abs(p(-1, 0) - p(1, 0)) +
                          std::abs(p(-1, -1) - p(1, -1)) + std::abs(p(-1, 1) - p(1, 1)) +
                          std::abs(p(-2, -1) - p(0, -1)) + std::abs(p(-2, 1) - p(0, 1));
        return {g, 2 * (p(-2, 0) + c), p(-2, -1) + p(-2, 1) + p(0, -1) + p(0, 1), 4 * p(-1, 0)};
    }
    template <int Turn>
    static TDirection DiagonalG(const TWindow5<Bits>& s, uint32_t x, int32_t c)
    {
        auto p = [&](int dy, int dx) { return At<Turn>(s, x, dy, dx); };
        const int32_t g = 2 * (std::abs(p(-1, 1) - p(1, -1)) + std::abs(p(-2, 2) - c) + std::abs(p(-2, 1) - p(0, -1)) +
                               std::abs(p(-1, 2) - p(1, 0)));
        return {g, 4 * p(-1, 1), 2 * (p(-2, 1) + p(0, 1)), 2 * (p(-1, 0) + p(-1, 2))};
    }

    // Centre value plus the mean colour difference of the chosen directions, rounded once.
    static uint32_t Shift(int32_t c, int32_t sum, int32_t sumC, int32_t n4)
    {
        const int32_t num = std::min(std::max(n4 * c + sum - sumC, 0), n4 * int32_t(TDepth<Bits>::kMask1));
        return g_Reciprocals.Divide(uint32_t(num + n4 / 2), uint32_t(n4));
    }

    template <int Site>
    void Pixel(const TLine& l, uint32_t x) const
    {
        const TWindow5<Bits>& s = l.s;
        const int32_t c = s.At(0, x);
        constexpr bool bGreen = Site == kSiteGreenR || Site == kSiteGreenB;
        TDirection d[8];
        if constexpr (bGreen) {
            d[0] = AxisG<0>(s, x, c), d[1] = AxisG<1>(s, x, c), d[2] = AxisG<2>(s, x, c), d[3] = AxisG<3>(s, x, c);
            d[4] = DiagonalG<0>(s, x, c), d[5] = DiagonalG<1>(s, x, c), d[6] = DiagonalG<2>(s, x, c),
            d[7] = DiagonalG<3>(s, x, c);
        } else {
            d[0] = AxisRB<0>(s, x, c), d[1] = AxisRB<1>(s, x, c), d[2] = AxisRB<2>(s, x, c), d[3] = AxisRB<3>(s, x, c);
            d[4] = DiagonalRB<0>(s, x, c), d[5] = DiagonalRB<1>(s, x, c), d[6] = DiagonalRB<2>(s, x, c),
            d[7] = DiagonalRB<3>(s, x, c);
        }
        int32_t lo = d[0].gradient, hi = d[0].gradient;
        for (int i = 1; i < 8; ++i) lo = std::min(lo, d[i].gradient), hi = std::max(hi, d[i].gradient);
        // Directions up to 1.5 min + 0.5 (max - min) count: twice that is 2 min + max.
        const int32_t threshold = 2 * lo + hi;
        int32_t n = 0, s1 = 0, s2 = 0, s3 = 0;
        // At a green pixel the (-2, 1) colour of even turns is the one beside it, of odd turns the
        // one above and below, and the other way round for the (-1, 2) colour.
        int32_t across = 0, vertical = 0;
        for (int i = 0; i < 8; ++i) {
            const int32_t take = -int32_t(2 * d[i].gradient <= threshold);  // all ones or zero
            n -= take;
            s1 += d[i].first & take;
            if (bGreen && (i & 1)) {
                vertical += d[i].second & take, across += d[i].third & take;
            } else {
                s2 += d[i].second & take, s3 += d[i].third & take;
            }
        }
        uint8_t* p = l.pOut + size_t(x) * DstBytes;
        const int32_t n4 = 4 * n;
        if constexpr (bGreen) {
            const uint32_t h = Shift(c, s2 + across, s1, n4), v = Shift(c, s3 + vertical, s1, n4);
            const uint32_t r = Site == kSiteGreenR ? h : v, b = Site == kSiteGreenR ? v : h;
            StoreBgr<DstBytes>(p, lut.pBlue[b], lut.pGreen[c], lut.pRed[r]);
        } else {
            const uint32_t g = Shift(c, s2, s1, n4), o = Shift(c, s3, s1, n4);
            const uint32_t r = Site == kSiteRed ? uint32_t(c) : o, b = Site == kSiteRed ? o : uint32_t(c);
            StoreBgr<DstBytes>(p, lut.pBlue[b], lut.pGreen[g], lut.pRed[r]);
        }
    }
};

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
            WithPixelBytes(dwDstBytes, [&](auto bytes) {
                RunWindow(TVariableGradients<bits, bytes>{lut}, planes, 2, w - 2, 2, h - 2);
            });
        });
    }
    FinishFrames(job, dwDstBytes, hLut);
    return KASTATUS_OK;
}
