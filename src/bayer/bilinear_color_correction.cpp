// bilinear_color_correction.cpp: gradient-corrected bilinear interpolation (Malvar, He and Cutler 5x5 filters).
#include <cstring>
#include <type_traits>

#include "bayer/bayer.h"
#include "bayer/bilinear_color_correction_simd.h"
#include "bayer/decoder_window.h"
#include "platform/os_buffer.h"

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

// The columns x0..x1-1 of one line by the scalar rule, in stretches; lines[k] holds the line
// workers for stretches that start at a column of parity k.
template <unsigned Bits, class TKernel>
void ScalarSpan(const TKernel& k, const TSiteLines<TKernel> (&lines)[2], const TWindow5<Bits>& s, bool bRedLine,
                uint8_t* pOut, uint32_t x0, uint32_t x1)
{
    TEstimates est;
    const auto line = bRedLine ? lines[x0 & 1].red : lines[x0 & 1].blue;  // stretches keep the parity of x0
    for (uint32_t a = x0; a < x1; a += kStretch) {
        const uint32_t b = std::min(a + kStretch, x1);
        const size_t o = size_t(a) * TDepth<Bits>::kBytes;  // the stretch's first sample
        Filters<Bits>(s.pLine[0] + o, s.pLine[1] + o, s.pLine[2] + o, s.pLine[3] + o, s.pLine[4] + o, b - a, est.green,
                      est.opposite, est.across, est.vertical);
        line(k, {s.pLine[2], &est, a, pOut}, a, b);
    }
}

// Interior lines 2..h-3: vector blocks from the first red or blue column (1 or 2) to column w-2
// or w-3 where the switches allow (the pixels they write in the second ring are rewritten), the
// scalar rule elsewhere; then the columns of both rings while their lines are still in the cache,
// and the rings' lines last.
// The vector blocks read the source lines split by column parity, each line split once into a
// ring of five (pRing: 10 halves of dwHalf words, and the words around them for the second
// ring's pixels); without a ring the scalar rule decodes everything.
template <unsigned Bits, uint32_t DstBytes>
void RunColorCorrection(const TBayerPlanes& p, const TBayerLut& lut, TColorCorrectionVector vec, uint16_t* pRing,
                        uint32_t dwHalf, uint32_t w, uint32_t h)
{
    using TKernel = TColorCorrection<Bits, DstBytes>;
    const TKernel k{lut};
    const TSiteLines<TKernel> lines[2] = {{0, p.bShiftColumn}, {1, p.bShiftColumn}};
    auto ring = [&](uint32_t y) {
        return TSplitLine{{pRing + (y % 5) * 2 * dwHalf, pRing + ((y % 5) * 2 + 1) * dwHalf}};
    };
    auto source = [&](uint32_t y) { return p.pSrc + size_t(y) * p.dwSrcLineIncrement; };
    auto split = [&](uint32_t y) { vec.split(source(y), w, ring(y)); };
    auto splitColumns = [&](uint32_t y, uint32_t x0, uint32_t x1) {  // the scalar rule, for the few columns
        const TSplitLine l = ring(y);
        for (uint32_t x = x0; x < x1; ++x)
            l.half[x & 1][x >> 1] = uint16_t(TDepth<Bits>::At(source(y), x) & TDepth<Bits>::kMask1);
    };
    if (pRing) {
        for (uint32_t y = 0; y < 4; ++y) split(y);
    }
    for (uint32_t y = 2; y < h - 2; ++y) {
        const TWindow5<Bits> s = Window5<Bits>(p, y);
        const bool bRedLine = IsRedLine(y, p.bShiftLine);
        uint8_t* pOut = p.pDst + size_t(y) * p.dwDstLineIncrement;
        // Column 2 holds red in a red line when the column toggle is clear, blue in a blue line when it is set.
        const uint32_t xv = bRedLine == !p.bShiftColumn ? 2 : 1;
        // Every line splits the one two below, also where it has no block but the next has; the
        // blocks split the columns they span themselves.
        if (!pRing || xv + vec.dwBlock > w - 2) {
            if (pRing) split(y + 2);
            ScalarSpan(k, lines, s, bRedLine, pOut, 2, w - 2);
        } else {
            // Whole blocks, the last one moved back to start at the last red or blue column that
            // leaves it room up to column w-2 (it writes some pixels twice, with the same bytes;
            // column w-2, read beyond, and the bytes a block writes after its end are rewritten
            // by what follows it).
            const uint32_t xe = xv + (w - 2 - xv) / vec.dwBlock * vec.dwBlock;
            const uint32_t xl = (w - 1 - vec.dwBlock - xv) / 2 * 2 + xv;  // start of the last block
            const TSplitLine rows[5] = {ring(y - 2), ring(y - 1), ring(y), ring(y + 1), ring(y + 2)};
            vec.line(rows, pOut, xv, xe, bRedLine, lut, source(y + 2));
            if (xe < w - 2) vec.line(rows, pOut, xl, xl + vec.dwBlock, bRedLine, lut, source(y + 2));
            splitColumns(y + 2, 0, xv);
            splitColumns(y + 2, std::max(xe, xl + vec.dwBlock), w);
        }
        RingColumns<Bits, DstBytes>(p, lut, w, h, y);
    }
    RingLines<Bits, DstBytes>(p, lut, w, h);
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
        const TColorCorrectionVector vec = ColorCorrectionVector_intr(job.dwBits, dwDstBytes, hLut == nullptr);
        const uint32_t dwHalf = (w / 2 + 16) / 16 * 16;  // words per half line, the reads one beyond included
        const uint64_t qwRingBytes = uint64_t(10) * dwHalf * 2;
        auto* pRing = vec.line ? static_cast<uint16_t*>(oxOsBufferCreateAligned(qwRingBytes, 64, 0)) : nullptr;
        if (pRing) std::memset(pRing, 0, qwRingBytes);  // the words around the halves are read too
        WithDepth(job.dwBits, [&](auto bits) {
            WithPixelBytes(dwDstBytes,
                           [&](auto bytes) { RunColorCorrection<bits, bytes>(planes, lut, vec, pRing, dwHalf, w, h); });
        });
        if (pRing) oxOsBufferFree(pRing);
    } else {
        FinishFrames(job, dwDstBytes, hLut);
    }
    return KASTATUS_OK;
}
