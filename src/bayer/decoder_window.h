// decoder_window.h: the pieces of the decoders that read a 5x5 neighbourhood: line window, site dispatch, stretches.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "bayer/decoder_frame.h"
#include "core/unidef.h"

// Five source lines centred on the decoded one; At(dy, x) reads the sample dy lines away,
// masked to the depth (stray high bits of 16-bit containers are ignored).
template <unsigned Bits>
struct TWindow5 {
    const uint8_t* pLine[5];
    int32_t At(int dy, uint32_t x) const { return int32_t(TDepth<Bits>::At(pLine[2 + dy], x) & TDepth<Bits>::kMask1); }
};

template <unsigned Bits>
TWindow5<Bits> Window5(const TBayerPlanes& p, uint32_t y)
{
    TWindow5<Bits> w;
    for (int i = 0; i < 5; ++i) w.pLine[i] = p.pSrc + (size_t(y) + i - 2) * p.dwSrcLineIncrement;
    return w;
}

// One line of columns x0..x1-1 whose sites alternate SiteA, SiteB; the kernel's Pixel reads
// what it needs from its line context (windows, line buffers, output line).
template <class Kernel, int SiteA, int SiteB>
void SiteLine(const Kernel& kernel, const typename Kernel::TLine& line, uint32_t x0, uint32_t x1)
{
    const Kernel k = kernel;  // a local copy keeps its tables in registers across byte stores
    uint32_t x = x0;
    for (; x + 1 < x1; x += 2) {
        k.template Pixel<SiteA>(line, x);
        k.template Pixel<SiteB>(line, x + 1);
    }
    if (x < x1) k.template Pixel<SiteA>(line, x);
}

// The two line workers of a kernel for columns starting at x0, picked once.
template <class Kernel>
struct TSiteLines {
    using TWorker = void (*)(const Kernel&, const typename Kernel::TLine&, uint32_t, uint32_t);
    TWorker red, blue;
    TSiteLines(uint32_t x0, bool bShiftColumn)
    {
        const bool bRedColumnFirst = ((x0 & 1) != 0) == bShiftColumn;
        red = bRedColumnFirst ? SiteLine<Kernel, kSiteRed, kSiteGreenR> : SiteLine<Kernel, kSiteGreenR, kSiteRed>;
        blue = bRedColumnFirst ? SiteLine<Kernel, kSiteGreenB, kSiteBlue> : SiteLine<Kernel, kSiteBlue, kSiteGreenB>;
    }
};

inline bool IsRedLine(uint32_t y, bool bShiftLine)
{
    return ((y & 1) != 0) == bShiftLine;
}

template <unsigned Bits>
inline int32_t ClampSample(int32_t v)
{
    return std::min(std::max(v, 0), int32_t(TDepth<Bits>::kMask1));
}

// The two outer rings of a decoder with a 5x5 support on an image too small for its interior
// (below 5x5): the second ring by the bilinear rule, then the outermost one by the 2x2 block
// rule. Larger images get the same bytes from RingColumns and RingLines.
inline void FinishFrames(const TBayerJob& job, uint32_t dwDstBytes, KaipHLut hLut)
{
    const uint32_t w = job.src.Width, h = job.src.Height;
    CalculateFrame2(job.src.pData, w, h, job.src.LineIncrement, job.dwBits, job.bShiftLine, job.bShiftColumn,
                    job.pDst->pData, job.pDst->LineIncrement, dwDstBytes * 8, hLut);
    CalculateFrame1(job.src.pData, w, h, job.src.LineIncrement, job.dwBits, job.bShiftLine, job.bShiftColumn,
                    job.pDst->pData, job.pDst->LineIncrement, dwDstBytes * 8, hLut);
}

// ---- stretches of a line for loops the compiler vectorises ----

// Columns per stretch; results wait in small arrays on the stack. Stretches start at even columns.
constexpr uint32_t kStretch = 256;

// Sample i of a line as a lane of type T, masked to the depth; the loops that widen lines call
// it with a signed index, which lets the compiler vectorise them.
template <unsigned Bits, class T>
inline T WideSample(const uint8_t* pIn, int32_t i)
{
    if constexpr (Bits == 8) {
        return T(pIn[i]);
    } else {
        uint16_t v;
        std::memcpy(&v, pIn + 2 * i, 2);
        return T(v & TDepth<Bits>::kMask1);
    }
}

// The five lines of a stretch widened to 32 bits (masked to the depth) with two columns on
// either side, so the loops over it work on one lane width throughout.
struct TWideWindow {
    int32_t line[5][kStretch + 4];
    const int32_t* At(int dy) const { return line[2 + dy] + 2; }  // at the stretch's first column
};

template <unsigned Bits>
void WidenWindow(const TWindow5<Bits>& s, uint32_t x0, uint32_t x1, TWideWindow& wide)
{
    const uint32_t n = x1 - x0 + 4;
    for (int r = 0; r < 5; ++r) {
        const uint8_t* __restrict pIn = s.pLine[r] + size_t(x0 - 2) * TDepth<Bits>::kBytes;
        int32_t* __restrict pOut = wide.line[r];
        for (int32_t i = 0; i < int32_t(n); ++i) {
            pOut[i] = WideSample<Bits, int32_t>(pIn, i);
        }
    }
}

// The five lines of a stretch widened to 32 bits and split by column parity, two columns on
// either side included, so a loop over the columns of one parity reads every neighbour with a
// fixed offset into contiguous lanes. Column x0 - 2 + k lies in half k & 1 at index k >> 1.
template <class T>
struct TSplitWindow {
    T half[2][5][kStretch / 2 + 2];
};

template <unsigned Bits, class T>
void WidenSplit(const TWindow5<Bits>& s, uint32_t x0, uint32_t x1, TSplitWindow<T>& split)
{
    const int32_t n = int32_t(x1 - x0 + 4);
    for (int r = 0; r < 5; ++r) {
        const uint8_t* __restrict pIn = s.pLine[r] + size_t(x0 - 2) * TDepth<Bits>::kBytes;
        for (int h = 0; h < 2; ++h) {
            T* __restrict pOut = split.half[h][r];
            for (int32_t k = 0; k < (n + 1 - h) / 2; ++k) {
                pOut[k] = WideSample<Bits, T>(pIn, 2 * k + h);
            }
        }
    }
}

// Runs f with its whole call tree inlined and compiled for AVX2, so the stretch loops it reaches
// vectorise eight lanes wide with native abs, min and max; the same loops outside it are the
// plain path. Only behind g_SSEChecker.UseAVX2() (see AnyAvx2). No partial redundancy
// elimination: it would carry loads from one column to the next and stop the vectorising.
template <class F>
__attribute__((target("avx2"), flatten, optimize("no-tree-pre"))) void WithAvx2(const F& f)
{
    f();
}

// Calls f through WithAvx2 when the AVX2 switch is on, else directly; the results are equal.
template <class F>
inline void AnyAvx2(bool bAvx2, const F& f)
{
    if (bAvx2) {
        WithAvx2(f);
    } else {
        f();
    }
}
