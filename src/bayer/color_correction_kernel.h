// color_correction_kernel.h: the vector line loop of the gradient-corrected bilinear decoder, written once
// over a small set of register operations. Included only by bilinear_color_correction_sse2/avx2.cpp, each
// compiled for its own instruction set: everything here has internal linkage, so the copies never mix.
#pragma once

#include <immintrin.h>

#include <cstring>

#include "bayer/bilinear_color_correction_simd.h"
#include "bayer/bilinear_kernel.h"
#include "bayer/color_correction_pairs.h"
#include "bayer/word_lanes.h"

namespace {

// The bilinear decoder's byte registers for the lookups and stores, with the word lanes of the same
// width (W) for the filters.
struct C128 : V128<false> {
    using W = W128;
    // Three-byte pixels from words of 0..255 in pairs (e, o); the two bytes after them are
    // rewritten later (see Blocks).
    static void StorePairs(uint8_t* p, T be, T ge, T re, T bo, T go, T ro)
    {
        StoreBgrPairs<true>(p, be, ge, re, bo, go, ro);
    }
};

#if defined(__AVX2__)
struct C256 : V256 {
    using W = W256;
};
#endif

// Splits a source line by column parity, 2 W::N columns per step.
template <class W, unsigned Bits>
void SplitLine(const uint8_t* pLine, uint32_t dwWidth, const TSplitLine& out)
{
    using T = typename W::T;
    using D = TDepth<Bits>;
    uint32_t x = 0;
    for (; x + 2 * W::N <= dwWidth; x += 2 * W::N) {
        T even, odd;
        SplitSamples<W, Bits>(pLine + size_t(x) * D::kBytes, even, odd);
        W::Store(out.half[0] + x / 2, even);
        W::Store(out.half[1] + x / 2, odd);
    }
    for (; x < dwWidth; ++x) out.half[x & 1][x >> 1] = uint16_t(D::At(pLine, x) & D::kMask1);
}

// The words of a split line from column x on (x fixes which half is even): even lanes at the
// columns x + 2k, odd lanes at x + 2k + 1, read at step i, one step (two columns) to either side
// included. Local pointers: the byte stores of the output cannot move them.
template <class W>
struct TSplitRow {
    const uint16_t *pEven, *pOdd;
    TSplitRow(const TSplitLine& l, uint32_t x)
        : pEven(l.half[x & 1] + (x >> 1)), pOdd(l.half[(x + 1) & 1] + ((x + 1) >> 1))
    {
    }
    typename W::T Even(size_t i, int step) const { return W::Load(pEven + i + step); }
    typename W::T Odd(size_t i, int step) const { return W::Load(pOdd + i + step); }
};

// The three channels of a block as words, red or blue sites in the even lanes: the colour of
// the line's own red or blue sites, green, and the other colour.
template <class W>
struct TChannels {
    typename W::T even[3], odd[3];  // own, green, other
};

// The filters of the scalar rule in 16-bit lanes. Each rounds a weighted sum in sixteenths,
// floor((sum + 8) / 16), whose 12-bit sums would overflow words; the sums are therefore split
// into parts that fit and floored in stages: floor((4a + b) / 16) = floor((a + floor(b / 4)) / 4).
// Even lanes hold the colour sites (own sample c): green and the opposite colour; odd lanes
// the green sites: the colours beside (across) and above (vertical).
//   green    = (2c + 2 + direct - ceil(q / 2)) >> 2,            q = the four samples two away
//   opposite = (2c + 2 + c + diagonal - (q - floor(q / 4))) >> 2
//   across   = (c + left + right + ((c + 4 - diagonal - a2 + floor(v2 / 2)) >> 2)) >> 1
//   vertical = the same with the vertical pair and v2, a2 swapped
// (a2, v2: the sums of the two samples two away across and vertically); each kept within the
// samples its bilinear estimate averages.
template <class W>
__attribute__((always_inline)) inline TChannels<W> Filters(const TSplitRow<W> (&r)[5], size_t i,
                                                           typename W::T belowEven, typename W::T belowOdd)
{
    using T = typename W::T;
    const T cEven = r[2].Even(i, 0), cOdd = r[2].Odd(i, 0), left = r[2].Odd(i, -1), right = r[2].Even(i, 1);
    const T upEven = r[1].Even(i, 0), upOdd = r[1].Odd(i, 0), downEven = r[3].Even(i, 0), downOdd = r[3].Odd(i, 0);
    const T two = W::Set(2), four = W::Set(4);
    auto clamp = [](T v, T a, T b) { return W::Min(W::Max(v, W::Min(a, b)), W::Max(a, b)); };
    // The vertical pairs of odd lanes bound the colour sites' diagonals and the green sites' vertical estimates.
    const T verticalMin = W::Min(upOdd, downOdd), verticalMax = W::Max(upOdd, downOdd);
    const T verticalEven = W::Add(upEven, downEven), verticalOdd = W::Add(upOdd, downOdd);  // sums above and below
    TChannels<W> out;
    {  // colour sites
        const T c = cEven;
        const T upLeft = r[1].Odd(i, -1), downLeft = r[3].Odd(i, -1);
        const T direct = W::Add(W::Add(left, cOdd), verticalEven);
        const T diagonal = W::Add(W::Add(upLeft, downLeft), verticalOdd);
        const T q = W::Add(W::Add(r[2].Even(i, -1), right), W::Add(r[0].Even(i, 0), belowEven));
        const T c2 = W::Add(W::Add(c, c), two);  // 2c + 2
        const T green = W::template Sar<2>(W::Sub(W::Add(c2, direct), W::Avg(q, W::Set(0))));
        const T opposite =
            W::template Sar<2>(W::Sub(W::Add(W::Add(c2, c), diagonal), W::Sub(q, W::template Sar<2>(q))));
        out.even[0] = c;
        out.even[1] = W::Min(W::Max(green, W::Min(W::Min(left, cOdd), W::Min(upEven, downEven))),
                             W::Max(W::Max(left, cOdd), W::Max(upEven, downEven)));
        out.even[2] = W::Min(W::Max(opposite, W::Min(W::Min(upLeft, downLeft), verticalMin)),
                             W::Max(W::Max(upLeft, downLeft), verticalMax));
    }
    {  // green sites: beside them cEven and right, above and below upOdd and downOdd
        const T c = cOdd;
        const T cd = W::Sub(W::Add(c, four), W::Add(verticalEven, W::Add(r[1].Even(i, 1), r[3].Even(i, 1))));
        const T a2 = W::Add(left, r[2].Odd(i, 1)), v2 = W::Add(r[0].Odd(i, 0), belowOdd);
        const T across = W::template Sar<1>(W::Add(W::Add(c, W::Add(cEven, right)),
                                                   W::template Sar<2>(W::Add(W::Sub(cd, a2), W::template Sar<1>(v2)))));
        const T vertical = W::template Sar<1>(
            W::Add(W::Add(c, verticalOdd), W::template Sar<2>(W::Add(W::Sub(cd, v2), W::template Sar<1>(a2)))));
        out.odd[0] = clamp(across, cEven, right);
        out.odd[1] = c;
        out.odd[2] = W::Min(W::Max(vertical, verticalMin), verticalMax);
    }
    return out;
}

// How a block's channels reach the destination: computed identity tables, tables in registers
// (8-bit samples with byte shuffles), or table reads per pixel.
enum class TLutUse { Identity, InRegisters, Read };

template <class V, unsigned Bits, uint32_t DstBytes, TLutUse Use, bool RedLine>
void Blocks(const TSplitLine (&rows)[5], uint8_t* pOut, uint32_t x0, uint32_t x1, const TBayerLut& lut,
            const uint8_t* pBelow)
{
    using T = typename V::T;
    using W = typename V::W;
    constexpr int kBlue = RedLine ? 2 : 0, kRed = 2 - kBlue;  // channels of TChannels
    const TSplitRow<W> src[5] = {{rows[0], x0}, {rows[1], x0}, {rows[2], x0}, {rows[3], x0}, {rows[4], x0}};
    // The line two below is split as the blocks reach it: its samples at step i go into rows[4]
    // and straight into the filters.
    const uint8_t* const pSplit = pBelow + size_t(x0) * TDepth<Bits>::kBytes;
    uint16_t* const pBelowEven = rows[4].half[x0 & 1] + (x0 >> 1);
    uint16_t* const pBelowOdd = rows[4].half[(x0 + 1) & 1] + ((x0 + 1) >> 1);
    // Each block asks for the output lines a few blocks ahead of its stores: waiting stores fill the
    // store queue while their lines are read, which stalls the loop (12% at SSE2, 6-14% at AVX2).
    auto prefetch = [](const uint8_t* q) {
        for (uint32_t k = 0; k < V::N * DstBytes; k += 64) {
            _mm_prefetch(reinterpret_cast<const char*>(q + 1536 + k), _MM_HINT_T0);
        }
    };
    auto filters = [&](size_t i) {
        T even, odd;
        SplitSamples<W, Bits>(pSplit + 2 * i * TDepth<Bits>::kBytes, even, odd);
        W::Store(pBelowEven + i, even);
        W::Store(pBelowOdd + i, odd);
        return Filters<W>(src, i, even, odd);
    };
    if constexpr (Use == TLutUse::Read) {
        alignas(32) uint16_t index[3][V::N];
        for (uint32_t x = x0; x < x1; x += V::N) {
            prefetch(pOut + size_t(x) * DstBytes);
            const TChannels<W> ch = filters((x - x0) / 2);
            for (int i = 0; i < 3; ++i) {
                V::StoreWords(index[i], W::UnpackLo(ch.even[i], ch.odd[i]), W::UnpackHi(ch.even[i], ch.odd[i]));
            }
            uint8_t* p = pOut + size_t(x) * DstBytes;
            for (uint32_t i = 0; i < V::N; ++i, p += DstBytes) {
                StoreBgr<DstBytes>(p, lut.pBlue[index[kBlue][i]], lut.pGreen[index[1][i]], lut.pRed[index[kRed][i]]);
            }
        }
    } else {
        struct TNone {
            explicit TNone(const uint8_t*) {}
            T operator()(T v) const { return v; }
        };
        using TTable = std::conditional_t<Use == TLutUse::InRegisters, TByteTable<V>, TNone>;
        const TTable mapB(lut.pBlue), mapG(lut.pGreen), mapR(lut.pRed);
        auto shift = [](T v) { return W::template Shr<Bits - 8>(v); };  // the identity tables above 8 bits
        // With byte shuffles, the three-byte store takes the pixels as the byte pack of even and odd
        // leaves them; otherwise each word of even | odd << 8 is one pair of pixels.
        constexpr bool kPacked = DstBytes == 3 && V::kShuffle;
        auto bytes = [&](T even, T odd) {
            if constexpr (kPacked) return V::Pack(shift(even), shift(odd));
            return W::Or(shift(even), W::template Shl<8>(shift(odd)));
        };
        // Steps of i words in the split lines, 2 i columns in the source and the output.
        uint8_t* p = pOut + size_t(x0) * DstBytes;
        for (size_t i = 0, n = (x1 - x0) / 2; i < n; i += W::N, p += V::N * DstBytes) {
            prefetch(p);
            const TChannels<W> ch = filters(i);
            if constexpr (DstBytes == 3 && !V::kShuffle) {
                V::StorePairs(p, shift(ch.even[kBlue]), shift(ch.even[1]), shift(ch.even[kRed]), shift(ch.odd[kBlue]),
                              shift(ch.odd[1]), shift(ch.odd[kRed]));
                continue;
            }
            const T b = mapB(bytes(ch.even[kBlue], ch.odd[kBlue])), g = mapG(bytes(ch.even[1], ch.odd[1]));
            const T r = mapR(bytes(ch.even[kRed], ch.odd[kRed]));
            if constexpr (kPacked) {
                V::template StoreBgr<true>(p, b, g, r);
            } else {
                V::StoreBgra(p, b, g, r);
            }
        }
    }
}

template <class V, unsigned Bits, uint32_t DstBytes, TLutUse Use>
void ColorCorrectionLine(const TSplitLine (&rows)[5], uint8_t* pOut, uint32_t x0, uint32_t x1, bool bRedLine,
                         const TBayerLut& lut, const uint8_t* pBelow)
{
    if (bRedLine) {
        Blocks<V, Bits, DstBytes, Use, true>(rows, pOut, x0, x1, lut, pBelow);
    } else {
        Blocks<V, Bits, DstBytes, Use, false>(rows, pOut, x0, x1, lut, pBelow);
    }
}

template <class V, unsigned Bits, uint32_t DstBytes>
TColorCorrectionLine LineFor(bool bIdentity)
{
    if (bIdentity) return ColorCorrectionLine<V, Bits, DstBytes, TLutUse::Identity>;
    if constexpr (Bits == 8 && V::kShuffle) return ColorCorrectionLine<V, Bits, DstBytes, TLutUse::InRegisters>;
    return ColorCorrectionLine<V, Bits, DstBytes, TLutUse::Read>;
}

template <class V>
TColorCorrectionVector ColorCorrectionVector(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
    TColorCorrectionVector v{nullptr, nullptr, V::N};
    WithDepth(dwBits, [&](auto bits) {
        v.split = SplitLine<typename V::W, bits>;
        WithPixelBytes(dwDstBytes, [&](auto bytes) { v.line = LineFor<V, bits, bytes>(bIdentity); });
    });
    return v;
}

}  // namespace
