// color_correction_kernel.h: the vector line loop of the gradient-corrected bilinear decoder, written once
// over a small set of register operations. Included only by bilinear_color_correction_sse2/avx2.cpp, each
// compiled for its own instruction set: everything here has internal linkage, so the copies never mix.
#pragma once

#include <immintrin.h>

#include <cstring>

#include "bayer/bilinear_color_correction_simd.h"
#include "bayer/bilinear_kernel.h"
#include "bayer/color_correction_pairs.h"

namespace {

// The word operations of the filters on top of the bilinear decoder's register sets: 16-bit
// lanes, signed. Pack32 narrows two registers of dwords (values below 2^15) to one of words;
// InOrder puts the words of a Pack32 result back in memory order.
struct C128 : V128<false> {
    static T Sub16(T a, T b) { return _mm_sub_epi16(a, b); }
    static T Avg16(T a, T b) { return _mm_avg_epu16(a, b); }  // (a + b + 1) >> 1, unsigned
    static T Min16(T a, T b) { return _mm_min_epi16(a, b); }
    static T Max16(T a, T b) { return _mm_max_epi16(a, b); }
    template <int S>
    static T Sar16(T a)
    {
        return _mm_srai_epi16(a, S);
    }
    template <int S>
    static T Shl16(T a)
    {
        return _mm_slli_epi16(a, S);
    }
    static T Shr32(T a) { return _mm_srli_epi32(a, 16); }
    static T Pack32(T a, T b) { return _mm_packs_epi32(a, b); }
    static T InOrder(T a) { return a; }
    static void Store(uint16_t* p, T a) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), a); }
    static T LoadWords(const uint16_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    static T UnpackLo16(T a, T b) { return _mm_unpacklo_epi16(a, b); }
    static T UnpackHi16(T a, T b) { return _mm_unpackhi_epi16(a, b); }

    // Three-byte pixels from words of 0..255 in pairs (e, o).
    static void StorePairs(uint8_t* p, T be, T ge, T re, T bo, T go, T ro) { StoreBgrPairs(p, be, ge, re, bo, go, ro); }
};

#if defined(__AVX2__)
// Pack32 works within each 128-bit half, so its words come in groups of four in the order
// 0, 2, 1, 3; InOrder swaps the middle groups.
struct C256 : V256 {
    static T Sub16(T a, T b) { return _mm256_sub_epi16(a, b); }
    static T Avg16(T a, T b) { return _mm256_avg_epu16(a, b); }
    static T Min16(T a, T b) { return _mm256_min_epi16(a, b); }
    static T Max16(T a, T b) { return _mm256_max_epi16(a, b); }
    template <int S>
    static T Sar16(T a)
    {
        return _mm256_srai_epi16(a, S);
    }
    template <int S>
    static T Shl16(T a)
    {
        return _mm256_slli_epi16(a, S);
    }
    static T Shr32(T a) { return _mm256_srli_epi32(a, 16); }
    static T Pack32(T a, T b) { return _mm256_packs_epi32(a, b); }
    static T InOrder(T a) { return _mm256_permute4x64_epi64(a, 0xD8); }
    static void Store(uint16_t* p, T a) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), a); }
    static T LoadWords(const uint16_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
    static T UnpackLo16(T a, T b) { return _mm256_unpacklo_epi16(a, b); }
    static T UnpackHi16(T a, T b) { return _mm256_unpackhi_epi16(a, b); }
};
#endif

// Splits a source line by column parity, V::N columns per step: 8-bit bytes by masking and
// shifting, 16-bit words by masking and packing the two halves of each dword.
template <class V, unsigned Bits>
__attribute__((always_inline)) inline void SplitSamples(const uint8_t* p, typename V::T& even, typename V::T& odd)
{
    using T = typename V::T;
    if constexpr (Bits == 8) {
        const T v = V::Load(p);
        even = V::And(v, V::Set16(0xFF));
        odd = V::template Shr<8>(v);
    } else {
        const T mask = V::Set32(int32_t(TDepth<Bits>::kMask1));
        const T a = V::Load(p), b = V::Load(p + sizeof(T));
        even = V::InOrder(V::Pack32(V::And(a, mask), V::And(b, mask)));
        odd = V::InOrder(V::Pack32(V::And(V::Shr32(a), mask), V::And(V::Shr32(b), mask)));
    }
}

template <class V, unsigned Bits>
void SplitLine(const uint8_t* pLine, uint32_t dwWidth, const TSplitLine& out)
{
    using T = typename V::T;
    using D = TDepth<Bits>;
    uint32_t x = 0;
    for (; x + V::N <= dwWidth; x += V::N) {
        T even, odd;
        SplitSamples<V, Bits>(pLine + size_t(x) * D::kBytes, even, odd);
        V::Store(out.half[0] + x / 2, even);
        V::Store(out.half[1] + x / 2, odd);
    }
    for (; x < dwWidth; ++x) out.half[x & 1][x >> 1] = uint16_t(D::At(pLine, x) & D::kMask1);
}

// The words of a split line from column x on (x fixes which half is even): even lanes at the
// columns x + 2k, odd lanes at x + 2k + 1, read at step i, one step (two columns) to either side
// included. Local pointers: the byte stores of the output cannot move them.
template <class V>
struct TRow {
    const uint16_t *pEven, *pOdd;
    TRow(const TSplitLine& l, uint32_t x) : pEven(l.half[x & 1] + (x >> 1)), pOdd(l.half[(x + 1) & 1] + ((x + 1) >> 1))
    {
    }
    typename V::T Even(size_t i, int step) const { return V::LoadWords(pEven + i + step); }
    typename V::T Odd(size_t i, int step) const { return V::LoadWords(pOdd + i + step); }
};

// The three channels of a block as words, red or blue sites in the even lanes: the colour of
// the line's own red or blue sites, green, and the other colour.
template <class V>
struct TChannels {
    typename V::T even[3], odd[3];  // own, green, other
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
template <class V>
__attribute__((always_inline)) inline TChannels<V> Filters(const TRow<V> (&r)[5], size_t i, typename V::T belowEven,
                                                           typename V::T belowOdd)
{
    using T = typename V::T;
    const T cEven = r[2].Even(i, 0), cOdd = r[2].Odd(i, 0), left = r[2].Odd(i, -1), right = r[2].Even(i, 1);
    const T upEven = r[1].Even(i, 0), upOdd = r[1].Odd(i, 0), downEven = r[3].Even(i, 0), downOdd = r[3].Odd(i, 0);
    const T two = V::Set16(2), four = V::Set16(4);
    auto clamp = [](T v, T a, T b) { return V::Min16(V::Max16(v, V::Min16(a, b)), V::Max16(a, b)); };
    // The vertical pairs of odd lanes bound the colour sites' diagonals and the green sites' vertical estimates.
    const T verticalMin = V::Min16(upOdd, downOdd), verticalMax = V::Max16(upOdd, downOdd);
    const T verticalEven = V::Add(upEven, downEven), verticalOdd = V::Add(upOdd, downOdd);  // sums above and below
    TChannels<V> out;
    {  // colour sites
        const T c = cEven;
        const T upLeft = r[1].Odd(i, -1), downLeft = r[3].Odd(i, -1);
        const T direct = V::Add(V::Add(left, cOdd), verticalEven);
        const T diagonal = V::Add(V::Add(upLeft, downLeft), verticalOdd);
        const T q = V::Add(V::Add(r[2].Even(i, -1), right), V::Add(r[0].Even(i, 0), belowEven));
        const T c2 = V::Add(V::Add(c, c), two);  // 2c + 2
        const T green = V::template Sar16<2>(V::Sub16(V::Add(c2, direct), V::Avg16(q, V::Zero())));
        const T opposite =
            V::template Sar16<2>(V::Sub16(V::Add(V::Add(c2, c), diagonal), V::Sub16(q, V::template Sar16<2>(q))));
        out.even[0] = c;
        out.even[1] = V::Min16(V::Max16(green, V::Min16(V::Min16(left, cOdd), V::Min16(upEven, downEven))),
                               V::Max16(V::Max16(left, cOdd), V::Max16(upEven, downEven)));
        out.even[2] = V::Min16(V::Max16(opposite, V::Min16(V::Min16(upLeft, downLeft), verticalMin)),
                               V::Max16(V::Max16(upLeft, downLeft), verticalMax));
    }
    {  // green sites: beside them cEven and right, above and below upOdd and downOdd
        const T c = cOdd;
        const T cd = V::Sub16(V::Add(c, four), V::Add(verticalEven, V::Add(r[1].Even(i, 1), r[3].Even(i, 1))));
        const T a2 = V::Add(left, r[2].Odd(i, 1)), v2 = V::Add(r[0].Odd(i, 0), belowOdd);
        const T across = V::template Sar16<1>(V::Add(
            V::Add(c, V::Add(cEven, right)), V::template Sar16<2>(V::Add(V::Sub16(cd, a2), V::template Sar16<1>(v2)))));
        const T vertical = V::template Sar16<1>(
            V::Add(V::Add(c, verticalOdd), V::template Sar16<2>(V::Add(V::Sub16(cd, v2), V::template Sar16<1>(a2)))));
        out.odd[0] = clamp(across, cEven, right);
        out.odd[1] = c;
        out.odd[2] = V::Min16(V::Max16(vertical, verticalMin), verticalMax);
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
    constexpr int kBlue = RedLine ? 2 : 0, kRed = 2 - kBlue;  // channels of TChannels
    const TRow<V> src[5] = {{rows[0], x0}, {rows[1], x0}, {rows[2], x0}, {rows[3], x0}, {rows[4], x0}};
    // The line two below is split as the blocks reach it: its samples at step i go into rows[4]
    // and straight into the filters.
    const uint8_t* const pSplit = pBelow + size_t(x0) * TDepth<Bits>::kBytes;
    uint16_t* const pBelowEven = rows[4].half[x0 & 1] + (x0 >> 1);
    uint16_t* const pBelowOdd = rows[4].half[(x0 + 1) & 1] + ((x0 + 1) >> 1);
    auto filters = [&](size_t i) {
        T even, odd;
        SplitSamples<V, Bits>(pSplit + 2 * i * TDepth<Bits>::kBytes, even, odd);
        V::Store(pBelowEven + i, even);
        V::Store(pBelowOdd + i, odd);
        return Filters<V>(src, i, even, odd);
    };
    if constexpr (Use == TLutUse::Read) {
        alignas(32) uint16_t index[3][V::N];
        for (uint32_t x = x0; x < x1; x += V::N) {
            const TChannels<V> ch = filters((x - x0) / 2);
            for (int i = 0; i < 3; ++i) {
                V::StoreWords(index[i], V::UnpackLo16(ch.even[i], ch.odd[i]), V::UnpackHi16(ch.even[i], ch.odd[i]));
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
        auto shift = [](T v) { return V::template Shr<Bits - 8>(v); };  // the identity tables above 8 bits
        // Each word of even | odd << 8 is one pair of pixels.
        auto bytes = [&](T even, T odd) { return V::Or(shift(even), V::template Shl16<8>(shift(odd))); };
        // Steps of i words in the split lines, 2 i columns in the source and the output.
        uint8_t* p = pOut + size_t(x0) * DstBytes;
        for (size_t i = 0, n = (x1 - x0) / 2; i < n; i += V::N / 2, p += V::N * DstBytes) {
            const TChannels<V> ch = filters(i);
            if constexpr (DstBytes == 3 && !V::kShuffle) {
                V::StorePairs(p, shift(ch.even[kBlue]), shift(ch.even[1]), shift(ch.even[kRed]), shift(ch.odd[kBlue]),
                              shift(ch.odd[1]), shift(ch.odd[kRed]));
                continue;
            }
            const T b = mapB(bytes(ch.even[kBlue], ch.odd[kBlue])), g = mapG(bytes(ch.even[1], ch.odd[1]));
            const T r = mapR(bytes(ch.even[kRed], ch.odd[kRed]));
            if constexpr (DstBytes == 3) {
                V::StoreBgr(p, b, g, r);
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
        v.split = SplitLine<V, bits>;
        WithPixelBytes(dwDstBytes, [&](auto bytes) { v.line = LineFor<V, bits, bytes>(bIdentity); });
    });
    return v;
}

}  // namespace
