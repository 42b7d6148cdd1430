// bilinear_color_correction.cpp: gradient-corrected bilinear interpolation (Malvar, He and Cutler 5x5 filters).
// Cutler).
#include <cstring>
#include <type_traits>

#include "bayer/bayer.h"
#include "bayer/decoder_window.h"

namespace {

// The four estimates of every column of a stretch, whatever its site.
struct TEstimates {
    uint16_t green[kStretch], opposite[kStretch], across[kStretch], vertical[kStretch];
};

template <class T>
T Limit(T v, T a, T b)
{
    return std::min(std::max(v, std::min(a, b)), std::max(a, b));
}

// Each missing colour is its bilinear estimate corrected by the Laplacian of the pixel's own
// colour, in sixteenths (every filter sums to 16, so flat areas and linear ramps pass
// unchanged), rounded once and kept within the range of the samples the bilinear estimate
// averages: the correction sharpens, but cannot overshoot into the coloured fringes the
// linear filters leave beside saturated edges.
//
// The filters run first over a stretch of the line with no regard to sites, so the compiler
// can vectorise them; a second loop, with the sites fixed per column pair, takes the two
// estimates each site needs (green and the opposite colour at red and blue, the colours
// beside and above at green) and makes one LUT read per colour.
template <unsigned Bits>
void Filters(const uint8_t* __restrict pUp2, const uint8_t* __restrict pUp, const uint8_t* __restrict pCur,
             const uint8_t* __restrict pDown, const uint8_t* __restrict pDown2, uint32_t n, uint16_t* __restrict pGreen,
             uint16_t* __restrict pOpposite, uint16_t* __restrict pAcross, uint16_t* __restrict pVertical)
{
    // Samples and limits are 16-bit; the weighted sums of 8-bit samples too (the largest is
    // 28 x 255, the smallest -10 x 255), those of deeper ones need 32 bits until the shift.
    using TSum = std::conditional_t<Bits == 8, int16_t, int32_t>;
    auto load = [](const uint8_t* p, int32_t i) -> int16_t {
        if constexpr (Bits == 8) {
            return int16_t(p[i]);
        } else {
            uint16_t v;
            std::memcpy(&v, p + 2 * i, 2);
            return int16_t(v & TDepth<Bits>::kMask1);
        }
    };
    auto round16 = [](TSum sum) { return int16_t((sum + 8) >> 4); };
    for (int32_t i = 0; i < int32_t(n); ++i) {
        const int16_t c = load(pCur, i), w = load(pCur, i - 1), e = load(pCur, i + 1), n = load(pUp, i),
                      so = load(pDown, i);
        const int16_t nw = load(pUp, i - 1), ne = load(pUp, i + 1), sw = load(pDown, i - 1), se = load(pDown, i + 1);
        const TSum across2 = TSum(load(pCur, i - 2) + load(pCur, i + 2)),
                   vertical2 = TSum(load(pUp2, i) + load(pDown2, i));
        const TSum diagonal = TSum(nw + ne + sw + se), direct = TSum(w + e + n + so), c16 = TSum(c);
        const int16_t g =
            Limit<int16_t>(round16(TSum(8 * c16 + 4 * direct - 2 * (across2 + vertical2))),
                           std::min(std::min(w, e), std::min(n, so)), std::max(std::max(w, e), std::max(n, so)));
        const int16_t o =
            Limit<int16_t>(round16(TSum(12 * c16 + 4 * diagonal - 3 * (across2 + vertical2))),
                           std::min(std::min(nw, ne), std::min(sw, se)), std::max(std::max(nw, ne), std::max(sw, se)));
        const int16_t across =
            Limit<int16_t>(round16(TSum(10 * c16 + 8 * TSum(w + e) - 2 * diagonal - 2 * across2 + vertical2)), w, e);
        const int16_t vertical =
            Limit<int16_t>(round16(TSum(10 * c16 + 8 * TSum(n + so) - 2 * diagonal - 2 * vertical2 + across2)), n, so);
        pGreen[i] = uint16_t(g), pOpposite[i] = uint16_t(o), pAcross[i] = uint16_t(across);
        pVertical[i] = uint16_t(vertical);
    }
}

template <unsigned Bits, uint32_t DstBytes>
struct TColorCorrection {
    struct TLine {
        const uint8_t* pCur;
        const TEstimates* pEst;
        uint32_t x0;  // column of the estimates' first entry
        uint8_t* pOut;
    };
    TBayerLut lut;

    template <int Site>
    void Pixel(const TLine& l, uint32_t x) const
    {
        const uint32_t c = TDepth<Bits>::At(l.pCur, x) & TDepth<Bits>::kMask1, i = x - l.x0;
        const TEstimates& e = *l.pEst;
        uint8_t* p = l.pOut + size_t(x) * DstBytes;
        if constexpr (Site == kSiteGreenR) {
            StoreBgr<DstBytes>(p, lut.pBlue[e.vertical[i]], lut.pGreen[c], lut.pRed[e.across[i]]);
        } else if constexpr (Site == kSiteGreenB) {
            StoreBgr<DstBytes>(p, lut.pBlue[e.across[i]], lut.pGreen[c], lut.pRed[e.vertical[i]]);
        } else if constexpr (Site == kSiteRed) {
            StoreBgr<DstBytes>(p, lut.pBlue[e.opposite[i]], lut.pGreen[e.green[i]], lut.pRed[c]);
        } else {
            StoreBgr<DstBytes>(p, lut.pBlue[c], lut.pGreen[e.green[i]], lut.pRed[e.opposite[i]]);
        }
    }
};

template <unsigned Bits, uint32_t DstBytes>
void RunColorCorrection(const TBayerPlanes& p, const TBayerLut& lut, uint32_t w, uint32_t h)
{
    using TKernel = TColorCorrection<Bits, DstBytes>;
    const TKernel k{lut};
    const TSiteLines<TKernel> lines(2, p.bShiftColumn);
    TEstimates est;
    for (uint32_t y = 2; y < h - 2; ++y) {
        const TWindow5<Bits> s = Window5<Bits>(p, y);
        const auto line = IsRedLine(y, p.bShiftLine) ? lines.red : lines.blue;
        uint8_t* pOut = p.pDst + size_t(y) * p.dwDstLineIncrement;
        // Stretches start at even columns, so the line workers picked for column 2 fit them all.
        for (uint32_t x0 = 2; x0 < w - 2; x0 += kStretch) {
            const uint32_t x1 = std::min(x0 + kStretch, w - 2);
            const size_t o = size_t(x0) * TDepth<Bits>::kBytes;  // the stretch's first sample
            Filters<Bits>(s.pLine[0] + o, s.pLine[1] + o, s.pLine[2] + o, s.pLine[3] + o, s.pLine[4] + o, x1 - x0,
                          est.green, est.opposite, est.across, est.vertical);
            line(k, {s.pLine[2], &est, x0, pOut}, x0, x1);
        }
    }
}

}  // namespace

KaipStatus BdBilinearColorCorrection(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                     uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut)
{
    TBayerJob job;
    TBayerLut lut;
    uint32_t dwDstBytes = 0;
    const KaipStatus status = PrepareInterpolatingDecoder("KaipBdBilinearColorCorrection", pSrcImgInfo, pDstImgInfo,
                                                          dwDstPixelFormat, dwOptions, hLut, job, lut, dwDstBytes);
    if (status != KASTATUS_OK) return status;
    const uint32_t w = job.src.Width, h = job.src.Height;
    const TBayerPlanes planes = JobPlanes(job);
    if (w > 4 && h > 4) {
        WithDepth(job.dwBits, [&](auto bits) {
            WithPixelBytes(dwDstBytes, [&](auto bytes) { RunColorCorrection<bits, bytes>(planes, lut, w, h); });
        });
    }
    FinishFrames(job, dwDstBytes, hLut);
    return KASTATUS_OK;
}
