// bilinear_color_correction.cpp: gradient-corrected bilinear interpolation (the 5x5 linear filters of Malvar, He and Cutler).
#include "bayer/bayer.h"
#include "bayer/decoder_window.h"

namespace {

int32_t Limit(int32_t v, int32_t a, int32_t b)
{
    return std::min(std::max(v, std::min(a, b)), std::max(a, b));
}

// Each missing colour is its bilinear estimate corrected by the Laplacian of the pixel's own
// colour, in sixteenths (every filter sums to 16, so flat areas and linear ramps pass
// unchanged), rounded once and kept within the range of the samples the bilinear estimate
// averages: the correction sharpens, but cannot overshoot into the coloured fringes the
// linear filters leave beside saturated edges. Then one LUT read per colour.
template <unsigned Bits, uint32_t DstBytes>
struct TColorCorrection {
    static constexpr unsigned kBits = Bits;
    struct TLine {
        TWindow5<Bits> s;
        uint8_t* pOut;
    };
    TBayerLut lut;

    static int32_t Round16(int32_t v) { return (v + 8) >> 4; }

    template <int Site>
    void Pixel(const TLine& l, uint32_t x) const
    {
        const TWindow5<Bits>& s = l.s;
        const int32_t c = s.At(0, x), w = s.At(0, x - 1), e = s.At(0, x + 1), n = s.At(-1, x), so = s.At(1, x);
        const int32_t nw = s.At(-1, x - 1), ne = s.At(-1, x + 1), sw = s.At(1, x - 1), se = s.At(1, x + 1);
        const int32_t across2 = s.At(0, x - 2) + s.At(0, x + 2), vertical2 = s.At(-2, x) + s.At(2, x);
        const int32_t diagonal = nw + ne + sw + se;
        uint8_t* p = l.pOut + size_t(x) * DstBytes;
        if constexpr (Site == kSiteGreenR || Site == kSiteGreenB) {
            // The colour beside the pixel, then the colour above and below it.
            const int32_t across = Limit(Round16(10 * c + 8 * (w + e) - 2 * diagonal - 2 * across2 + vertical2), w, e);
            const int32_t vertical =
                Limit(Round16(10 * c + 8 * (n + so) - 2 * diagonal - 2 * vertical2 + across2), n, so);
            const int32_t r = Site == kSiteGreenR ? across : vertical, b = Site == kSiteGreenR ? vertical : across;
            StoreBgr<DstBytes>(p, lut.pBlue[b], lut.pGreen[c], lut.pRed[r]);
        } else {
            const int32_t g = Limit(Round16(8 * c + 4 * (w + e + n + so) - 2 * (across2 + vertical2)),
                                    std::min(std::min(w, e), std::min(n, so)), std::max(std::max(w, e), std::max(n, so)));
            const int32_t o = Limit(Round16(12 * c + 4 * diagonal - 3 * (across2 + vertical2)),
                                    std::min(std::min(nw, ne), std::min(sw, se)),
                                    std::max(std::max(nw, ne), std::max(sw, se)));
            const int32_t r = Site == kSiteRed ? c : o, b = Site == kSiteRed ? o : c;
            StoreBgr<DstBytes>(p, lut.pBlue[b], lut.pGreen[g], lut.pRed[r]);
        }
    }
};

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
            WithPixelBytes(dwDstBytes, [&](auto bytes) {
                RunWindow(TColorCorrection<bits, bytes>{lut}, planes, 2, w - 2, 2, h - 2);
            });
        });
    }
    FinishFrames(job, dwDstBytes, hLut);
    return KASTATUS_OK;
}
