// variable_gradients.cpp: threshold-based variable number of gradients (Chang, Cheung and Pang).
#include "bayer/variable_gradients.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

#include "bayer/bayer.h"
#include "bayer/decoder_window.h"
#include "bayer/variable_gradients_simd.h"
#include "core/log.h"
#include "platform/os_buffer.h"

namespace {

// The colours of one direction, in quarters, around the neighbour it points to. At a red or
// blue pixel they are its own, green and the opposite one; at a green pixel green, then the
// colour whose sites lie like (-2, 1) in the unturned direction, then the one whose sites lie
// like (-1, 2).
template <class T>
struct TColours {
    T first, second, third;
};

// A loop runs over the columns of one kind (Green or not), so the picks between the kinds are
// made at compile time.
template <int Turn, bool Green, class T, class P>
inline __attribute__((always_inline)) TColours<T> Axis(const P& p, T c)
{
    auto q = [&](int dy, int dx) { return p(TTurned<Turn>::Dy(dy, dx), TTurned<Turn>::Dx(dy, dx)); };
    const T near4 = T(4 * q(-1, 0)), side = T(2 * (q(-1, -1) + q(-1, 1)));
    const T far = T(q(-2, -1) + q(-2, 1) + q(0, -1) + q(0, 1));
    return {T(2 * (q(-2, 0) + c)), Green ? far : near4, Green ? near4 : side};
}

template <int Turn, bool Green, class T, class P>
inline __attribute__((always_inline)) TColours<T> Diagonal(const P& p, T c)
{
    auto q = [&](int dy, int dx) { return p(TTurned<Turn>::Dy(dy, dx), TTurned<Turn>::Dx(dy, dx)); };
    const T corner4 = T(4 * q(-1, 1)), ownRB = T(2 * (q(-2, 2) + c));
    const T around = T(q(-2, 1) + q(-1, 0) + q(-1, 2) + q(0, 1));
    const T xG = T(2 * (q(-2, 1) + q(0, 1))), yG = T(2 * (q(-1, 0) + q(-1, 2)));
    return {Green ? corner4 : ownRB, Green ? xG : around, Green ? yG : corner4};
}

// ---- a strip of columns, line after line ----

template <class T>
inline T Distance(T a, T b)
{
    if constexpr (sizeof(T) == 2) {
        return T(std::max(a, b) - std::min(a, b));  // SSE2 has min and max of 16-bit lanes, not abs
    } else {
        return std::abs(a - b);
    }
}

template <unsigned Bits, class T>
void WidenRow(const uint8_t* pLine, uint32_t x0, uint32_t n, TRow<T>& row)
{
    const uint8_t* __restrict pIn = pLine + size_t(x0 - 2) * TDepth<Bits>::kBytes;
    for (int h = 0; h < 2; ++h) {
        T* __restrict pOut = row[h];
        const int32_t end = int32_t(n + 7 - h) / 2;  // columns i = 2 .. n+5
        pOut[0] = 0, pOut[end] = 0;
        for (int32_t k = 1; k < end; ++k) pOut[k] = WideSample<Bits, T>(pIn, 2 * k + h - 2);
    }
}

inline uint8_t Avg(uint32_t a, uint32_t b)
{
    return uint8_t((a + b + 1) >> 1);
}

// The planes of slot r from lines r, r+1 and r+2, columns 2 .. n+4 of one half.
template <unsigned Bits, int H, class T>
__attribute__((optimize("no-tree-pre"))) void PlanesHalf(TStrip<T>& __restrict s, uint32_t r, uint32_t n)
{
    const TRow<T>&a = s.src[r & 7], &b = s.src[(r + 1) & 7], &c = s.src[(r + 2) & 7];
    const uint32_t slot = r & 3;
    for (int32_t k = 1; k < int32_t(n + 6 - H) / 2; ++k) {
        auto d = [&](const TRow<T>& p, int dp, const TRow<T>& q, int dq) {
            return uint32_t(Distance(T(At<H>(p, k, dp) >> (Bits - 8)), T(At<H>(q, k, dq) >> (Bits - 8))));
        };
        s.tv[slot][H][k] = Avg(d(a, 0, c, 0), Avg(d(a, -1, c, -1), d(a, 1, c, 1)));
        s.hv[slot][H][k] = Avg(d(b, -1, b, 1), d(b, 0, b, 2));
        s.da[slot][H][k] = Avg(d(a, 1, c, -1), Avg(d(a, 0, b, -1), d(b, 1, c, 0)));
        s.dm[slot][H][k] = Avg(d(a, -1, c, 1), Avg(d(b, -1, c, 0), d(a, 0, b, 1)));
        s.a2[slot][H][k] = Avg(d(a, 0, c, -2), d(a, 1, c, -1));
        s.m2[slot][H][k] = Avg(d(a, 0, c, 2), d(a, 1, c, 3));
    }
}

// The eight gradients (in eighths of 8-bit steps, see TStrip) of the pixel at column 2k + Par of
// line y, directions in the order of the turns: north, west, south, east, then north-east,
// north-west, south-west, south-east.
template <bool Green, int Par, class T>
inline __attribute__((always_inline)) void Gradients(const TStrip<T>& s, uint32_t y, int32_t k, T (&g)[8])
{
    const uint32_t s0 = (y - 2) & 3, s1 = (y - 1) & 3, s2 = y & 3;
    auto at = [&](const TRow<uint8_t>(&plane)[4], uint32_t slot, int dx) {
        return uint32_t(At<Par>(plane[slot], k, dx));
    };
    auto mean3 = [&](const TRow<uint8_t>(&plane)[4], int dx) {
        return Avg(at(plane, s1, dx), Avg(at(plane, s0, dx), at(plane, s2, dx)));
    };
    g[0] = Avg(at(s.tv, s0, 0), at(s.tv, s1, 0));
    g[1] = mean3(s.hv, -1);
    g[2] = Avg(at(s.tv, s1, 0), at(s.tv, s2, 0));
    g[3] = mean3(s.hv, 0);
    if constexpr (Green) {
        g[4] = Avg(at(s.a2, s0, 1), at(s.a2, s1, 1));
        g[5] = Avg(at(s.m2, s0, -2), at(s.m2, s1, -2));
        g[6] = Avg(at(s.a2, s1, 0), at(s.a2, s2, 0));
        g[7] = Avg(at(s.m2, s1, -1), at(s.m2, s2, -1));
    } else {
        g[4] = Avg(at(s.da, s1, 0), at(s.da, s0, 1));
        g[5] = Avg(at(s.dm, s1, 0), at(s.dm, s0, -1));
        g[6] = Avg(at(s.da, s1, 0), at(s.da, s2, -1));
        g[7] = Avg(at(s.dm, s1, 0), at(s.dm, s2, 1));
    }
}

// The estimates of the count columns of one parity (green or not) of line y of a strip: the
// directions whose gradient is at most 1.5 min + 0.5 (max - min) are chosen; each output is
// the pixel's sample plus the mean colour difference over them, rounded once and clamped.
// `first` is green at red and blue columns and the colour beside the pixel at green ones,
// `second` the opposite colour and the colour above and below. Gradients are bytes at every
// depth; the sums fit 16 bits only with 8-bit samples. The rounded mean is a multiply
// by a reciprocal (RoundedMean). Without partial redundancy elimination, which would carry
// loads from one column to the next, the loop vectorises (WithAvx2 likewise).
template <unsigned Bits, bool Green, int Par, class T>
__attribute__((optimize("no-tree-pre"))) void Estimates(const TStrip<T>& __restrict s, uint32_t y, uint32_t count,
                                                        int16_t* __restrict pFirst, int16_t* __restrict pSecond)
{
    const TRow<T>* rows[5] = {&s.src[(y - 2) & 7], &s.src[(y - 1) & 7], &s.src[y & 7], &s.src[(y + 1) & 7],
                              &s.src[(y + 2) & 7]};
    for (int32_t j = 0; j < int32_t(count); ++j) {
        const int32_t k = j + 2;  // column x0 + 2j + Par is i = 2k + Par
        auto p = [&](int dy, int dx) { return At<Par>(*rows[2 + dy], k, dx); };
        const T c = p(0, 0);
        T g[8];
        Gradients<Green, Par>(s, y, k, g);
        const TColours<T> d[8] = {Axis<0, Green>(p, c),     Axis<1, Green>(p, c),     Axis<2, Green>(p, c),
                                  Axis<3, Green>(p, c),     Diagonal<0, Green>(p, c), Diagonal<1, Green>(p, c),
                                  Diagonal<2, Green>(p, c), Diagonal<3, Green>(p, c)};
        T lo = g[0], hi = g[0];
        for (int m = 1; m < 8; ++m) lo = std::min(lo, g[m]), hi = std::max(hi, g[m]);
        // gradient <= 1.5 min + 0.5 (max - min), i.e. 2 (gradient - min) <= max
        const T limit = T(hi >> 1);
        T taken = 0, own = 0, a = 0, b = 0;
        for (int m = 0; m < 8; ++m) {
            const T take = T(g[m] - lo <= limit ? -1 : 0);
            // Around a green pixel odd turns swap the colours beside and above.
            const bool bSwap = Green && (m & 1);
            taken = T(taken - take);
            own = T(own + (d[m].first & take));
            a = T(a + ((bSwap ? d[m].third : d[m].second) & take));
            b = T(b + ((bSwap ? d[m].second : d[m].third) & take));
        }
        const T n4 = T(4 * taken), top = T(n4 * T(TDepth<Bits>::kMask1));
        pFirst[j] = int16_t(RoundedMean(std::min(std::max(T(n4 * c + a - own), T(0)), top), taken));
        pSecond[j] = int16_t(RoundedMean(std::min(std::max(T(n4 * c + b - own), T(0)), top), taken));
    }
}

// The estimates of both parities of line y of a strip of n columns whose green columns have
// parity greenParity; index 1 of the outputs holds the green columns.
template <unsigned Bits, class T>
void LineEstimates(const TStrip<T>& s, uint32_t y, uint32_t n, int greenParity, TEstimates& first, TEstimates& second)
{
    if (greenParity == 0) {
        Estimates<Bits, true, 0>(s, y, (n + 1) / 2, first[1], second[1]);
        Estimates<Bits, false, 1>(s, y, n / 2, first[0], second[0]);
    } else {
        Estimates<Bits, false, 0>(s, y, (n + 1) / 2, first[0], second[0]);
        Estimates<Bits, true, 1>(s, y, n / 2, first[1], second[1]);
    }
}

// Writes a stretch from the estimates: one LUT read per colour, sites fixed per column pair.
template <unsigned Bits, uint32_t DstBytes>
struct TGradientsColour {
    struct TLine {
        const uint8_t* pCur;
        const int16_t* pFirst[2];  // by column pair of the stretch; [1] at green columns
        const int16_t* pSecond[2];
        uint32_t x0;
        uint8_t* pOut;
    };
    TBayerLut lut;

    template <int Site>
    void Pixel(const TLine& l, uint32_t x) const
    {
        constexpr int kGreen = Site == kSiteGreenR || Site == kSiteGreenB;
        const uint32_t j = (x - l.x0) >> 1, c = TDepth<Bits>::At(l.pCur, x) & TDepth<Bits>::kMask1;
        const uint32_t first = uint16_t(l.pFirst[kGreen][j]), second = uint16_t(l.pSecond[kGreen][j]);
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

// The interior in strips of kStrip columns, each run from the top line to the bottom one:
// every source line is widened once and its gradient planes taken once; lanes of type T,
// built for AVX2 if bAvx2; the strip's lines and planes in pBuffer (zeroed once, so the
// vector blocks past a strip's end read defined values). The vector stages (if any) replace
// the loops over planes and estimates; they or the vector writer (if any) write whole blocks of
// each line's stretch, the scalar writer what they leave. The last strip writes the columns of
// both outer rings of each line while the line is cached; the rings' lines come last.
template <unsigned Bits, uint32_t DstBytes, class T>
void RunGradients(const TBayerPlanes& p, const TBayerLut& lut, uint32_t w, uint32_t h, bool bAvx2, TGradientsVector vec,
                  TGradientsWriter writer, void* pBuffer)
{
    using TColour = TGradientsColour<Bits, DstBytes>;
    const TColour k{lut};
    const TSiteLines<TColour> lines(2, p.bShiftColumn);
    TStrip<T>& strip = *new (pBuffer) TStrip<T>();
    TEstimates first, second;
    for (uint32_t x0 = 2; x0 < w - 2; x0 += kStrip) {
        const uint32_t x1 = std::min(x0 + kStrip, w - 2), n = x1 - x0;
        const size_t bytes = size_t(n + 4) * TDepth<Bits>::kBytes;
        for (uint32_t r = 0; r < h; ++r) {
            const uint8_t* pLine = p.pSrc + size_t(r) * p.dwSrcLineIncrement;
            // A strip reads short stretches of lines far apart: fetch the stretch two lines ahead.
            if (r + 2 < h) {
                const uint8_t* pAhead =
                    pLine + 2 * size_t(p.dwSrcLineIncrement) + size_t(x0 - 2) * TDepth<Bits>::kBytes;
                for (size_t i = 0; i < bytes; i += 64) __builtin_prefetch(pAhead + i);
            }
            if constexpr (std::is_same_v<T, int16_t>) {
                if (vec.widen) {
                    vec.widen(pLine, x0, n, strip.src[r & 7], strip.src8[r & 3]);
                } else {
                    WidenRow<Bits>(pLine, x0, n, strip.src[r & 7]);
                }
            } else {
                WidenRow<Bits>(pLine, x0, n, strip.src[r & 7]);
            }
            if (r < 2) continue;
            // Line r completes the planes of slot r - 2 and, from line 4 on, the window of line r - 2.
            const uint32_t y = r - 2;
            const bool bRedLine = IsRedLine(y, p.bShiftLine);
            const int greenParity = bRedLine == p.bShiftColumn ? 0 : 1;  // strips start at even columns
            const uint8_t* pCur = p.pSrc + size_t(y) * p.dwSrcLineIncrement;
            uint8_t* pOut = p.pDst + size_t(y) * p.dwDstLineIncrement;
            const TGradientsStretch stretch{pCur,     {first[0], first[1]}, {second[0], second[1]}, x0, x1, pOut,
                                            bRedLine, greenParity};
            uint32_t xs = x0;
            [&] {
                if constexpr (std::is_same_v<T, int16_t>) {
                    if (vec.planes) {
                        vec.planes(strip, y, n, 1 - greenParity);
                        if (y >= 2) xs = vec.estimates(strip, y, n, greenParity, first, second, stretch);
                        return;
                    }
                }
                AnyAvx2(bAvx2, [&] {
                    PlanesHalf<Bits, 0>(strip, y, n);
                    PlanesHalf<Bits, 1>(strip, y, n);
                    if (y >= 2) LineEstimates<Bits>(strip, y, n, greenParity, first, second);
                });
            }();
            if (y < 2) continue;
            if (writer) xs = writer(stretch, lut);
            const auto line = bRedLine ? lines.red : lines.blue;
            line(k, {pCur, {first[0], first[1]}, {second[0], second[1]}, x0, pOut}, xs, x1);
            if (x1 == w - 2) RingColumns<Bits, DstBytes>(p, lut, w, h, y);
        }
    }
    RingLines<Bits, DstBytes>(p, lut, w, h);
}

}  // namespace

KaipStatus BdVariableGradients(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                               uint32_t dwOptions, KaipHLut hLut)
{
    TBayerJob job;
    TBayerLut lut;
    uint32_t dwDstBytes = 0;
    const char* pszFunc = "KaipBdVariableGradients";
    const KaipStatus status = PrepareInterpolatingDecoder(pszFunc, pSrcImgInfo, pDstImgInfo, dwDstPixelFormat,
                                                          dwOptions, hLut, job, lut, dwDstBytes);
    if (status != KASTATUS_OK) return status;
    const uint32_t w = job.src.Width, h = job.src.Height;
    if (w > 4 && h > 4) {
        // 8-bit samples and their sums fit 16-bit lanes, twice as many per register as 32-bit ones;
        // the vector stages keep 16-bit lanes at every depth.
        const TGradientsVector vec = GradientsVector_intr(job.dwBits, dwDstBytes, hLut == nullptr);
        const bool bWords = job.dwBits == 8 || vec.planes;
        void* pBuffer = oxOsBufferCreateAligned(bWords ? sizeof(TStrip<int16_t>) : sizeof(TStrip<int32_t>), 64, 0);
        if (!pBuffer) return Refuse(KASTATUS_KAIP_MEMORY_ALLOC_FAILED, "%s: no memory for the strip lines", pszFunc);
        const TBayerPlanes planes = JobPlanes(job);
        const TGradientsWriter writer =
            vec.bWrites ? nullptr : GradientsWriter_intr(job.dwBits, dwDstBytes, hLut == nullptr);
        const bool bAvx2 = g_SSEChecker.UseAVX2();
        WithDepth(job.dwBits, [&](auto bits) {
            WithPixelBytes(dwDstBytes, [&](auto bytes) {
                if (bWords) {
                    RunGradients<bits, bytes, int16_t>(planes, lut, w, h, bAvx2, vec, writer, pBuffer);
                } else if constexpr (bits > 8) {
                    RunGradients<bits, bytes, int32_t>(planes, lut, w, h, bAvx2, vec, writer, pBuffer);
                }
            });
        });
        oxOsBufferFree(pBuffer);
    } else {
        FinishFrames(job, dwDstBytes, hLut);
    }
    return KASTATUS_OK;
}
