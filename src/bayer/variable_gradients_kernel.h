// variable_gradients_kernel.h: the vector stages of the variable-gradients decoder (source split, gradient planes,
// estimates in word lanes; the output stage over the bilinear decoder's register sets), written once. Included
// only by variable_gradients_sse2/ssse3/avx2.cpp, each compiled for its own instruction set: everything here has
// internal linkage, so the copies never mix.
#pragma once

#include "bayer/bilinear_kernel.h"
#include "bayer/variable_gradients_simd.h"
#include "bayer/word_lanes.h"

namespace {

// The words of V::N / 2 estimates in memory order.
inline __m128i EstimateWords(__m128i, const int16_t* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// Bytes of even columns in the low byte of each word, odd ones in the high byte.
inline __m128i Interleave(__m128i even, __m128i odd)
{
    return _mm_or_si128(even, _mm_slli_epi16(odd, 8));
}

#if defined(__AVX2__)
inline __m256i EstimateWords(__m256i, const int16_t* p)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

inline __m256i Interleave(__m256i even, __m256i odd)
{
    return _mm256_or_si256(even, _mm256_slli_epi16(odd, 8));
}
#endif

// The samples of columns x .. x + V::N - 1 of a source line as bytes (their top 8 bits).
template <class V, unsigned Bits>
inline typename V::T Samples(const uint8_t* pCur, uint32_t x)
{
    if constexpr (Bits == 8) {
        return V::Load(pCur + x);
    } else {
        using T = typename V::T;
        const T mask = V::Set16(int16_t(TDepth<Bits>::kMask1));
        const uint8_t* pIn = pCur + 2 * size_t(x);
        return V::PackOrdered(V::template Shr<Bits - 8>(V::And16(V::Load(pIn), mask)),
                              V::template Shr<Bits - 8>(V::And16(V::Load(pIn + sizeof(T)), mask)));
    }
}

// Pixels x .. x + V::N - 1 of a stretch from their samples c and estimates (bytes in column
// order). At a colour site the line's own colour (red on red lines, blue on blue ones) is the
// sample, green the first estimate; at a green site green is the sample and the own colour the
// first estimate; the other colour is the second estimate at both.
template <class V, uint32_t DstBytes, class M>
inline void PutPixels(const TGradientsStretch& s, uint32_t x, typename V::T c, typename V::T first, typename V::T other,
                      const M& mapB, const M& mapG, const M& mapR)
{
    using T = typename V::T;
    const T colour = V::Set16(s.greenParity == 0 ? int16_t(0xFF00) : 0x00FF);  // byte lanes of the colour sites
    const T own = V::Select(colour, c, first), g = mapG(V::Select(colour, first, c));
    const T b = s.bRedLine ? mapB(other) : mapB(own), r = s.bRedLine ? mapR(own) : mapR(other);
    uint8_t* p = s.pOut + size_t(x) * DstBytes;
    if constexpr (DstBytes == 3) {
        V::StoreBgr(p, b, g, r);
    } else {
        V::StoreBgra(p, b, g, r);
    }
}

// Blocks of V::N pixels from the estimates stored by the vector stages. Values above 8 bits go
// out as their top 8 bits (the identity tables); with Table the 8-bit tables are looked up in
// registers.
template <class V, unsigned Bits, uint32_t DstBytes, bool Table>
uint32_t WriteGradients(const TGradientsStretch& s, const TBayerLut& lut)
{
    using T = typename V::T;
    struct TNone {
        explicit TNone(const uint8_t*) {}
        T operator()(T v) const { return v; }
    };
    using TTable = std::conditional_t<Table, TByteTable<V>, TNone>;
    const TTable mapB(lut.pBlue), mapG(lut.pGreen), mapR(lut.pRed);
    const int even = s.greenParity == 0 ? 1 : 0;  // estimates of the even columns
    auto estimates = [&](const int16_t* const(&pArray)[2], size_t j) {
        const T e = V::template Shr<Bits - 8>(EstimateWords(T{}, pArray[even] + j));
        const T o = V::template Shr<Bits - 8>(EstimateWords(T{}, pArray[1 - even] + j));
        return Interleave(e, o);
    };
    uint32_t x = s.x0;
    for (; x + V::N <= s.x1; x += V::N) {
        const size_t j = (x - s.x0) / 2;
        PutPixels<V, DstBytes>(s, x, Samples<V, Bits>(s.pCur, x), estimates(s.pFirst, j), estimates(s.pSecond, j), mapB,
                               mapG, mapR);
    }
    return x;
}

// Without an in-register table (SSE2), 8-bit tables are read by a scalar loop over column
// pairs whose sites are fixed at compile time; each pixel leaves in one four-byte store (for
// three-byte pixels the next one overwrites its fourth byte; the stretch's last pixel is
// stored in three bytes), so the loop is bound by its table reads.
template <uint32_t DstBytes, bool bRedLine, int GreenParity>
uint32_t MapGradients(const TGradientsStretch& s, const TBayerLut& lut)
{
    const uint8_t *const pB = lut.pBlue, *const pG = lut.pGreen, *const pR = lut.pRed;
    auto pixel = [&](bool bGreen, uint32_t c, uint16_t first, uint16_t second) {
        const uint32_t own = bGreen ? first : c, other = second;  // own: red on red lines
        return pB[bRedLine ? other : own] | uint32_t(pG[bGreen ? c : first]) << 8 |
               uint32_t(pR[bRedLine ? own : other]) << 16;
    };
    const uint8_t* __restrict pCur = s.pCur + s.x0;
    const int16_t *pFirst0 = s.pFirst[GreenParity == 0], *pSecond0 = s.pSecond[GreenParity == 0];
    const int16_t *pFirst1 = s.pFirst[GreenParity == 1], *pSecond1 = s.pSecond[GreenParity == 1];
    uint8_t* __restrict p = s.pOut + size_t(s.x0) * DstBytes;
    auto even = [&](uint32_t j) { return pixel(GreenParity == 0, pCur[2 * j], pFirst0[j], pSecond0[j]); };
    auto odd = [&](uint32_t j) { return pixel(GreenParity == 1, pCur[2 * j + 1], pFirst1[j], pSecond1[j]); };
    // Whole pairs while a pixel follows them, then the last one or two pixels in exact stores.
    const uint32_t n = s.x1 - s.x0, pairs = (n - 1) / 2;
    for (uint32_t j = 0; j < pairs; ++j, p += 2 * DstBytes) {
        const uint32_t v0 = even(j), v1 = odd(j);
        std::memcpy(p, &v0, 4);
        std::memcpy(p + DstBytes, &v1, 4);
    }
    auto store = [](uint8_t* p, uint32_t v) { StoreBgr<DstBytes>(p, uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16)); };
    store(p, even(pairs));
    if (n % 2 == 0) store(p + DstBytes, odd(pairs));
    return s.x1;
}

template <uint32_t DstBytes>
uint32_t WriteGradientsMapped(const TGradientsStretch& s, const TBayerLut& lut)
{
    if (s.bRedLine) {
        return s.greenParity == 0 ? MapGradients<DstBytes, true, 0>(s, lut) : MapGradients<DstBytes, true, 1>(s, lut);
    }
    return s.greenParity == 0 ? MapGradients<DstBytes, false, 0>(s, lut) : MapGradients<DstBytes, false, 1>(s, lut);
}

template <class V>
TGradientsWriter GradientsWriter(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
    TGradientsWriter f = nullptr;
    WithDepth(dwBits, [&](auto bits) {
        WithPixelBytes(dwDstBytes, [&](auto bytes) {
            if (bIdentity) {
                f = WriteGradients<V, bits, bytes, false>;
            } else if constexpr (bits == 8 && V::kShuffle) {
                f = WriteGradients<V, bits, bytes, true>;
            } else if constexpr (bits == 8) {
                f = WriteGradientsMapped<bytes>;
            }
        });
    });
    return f;
}

// ---- the estimates of 8-bit strips in 16-bit lanes ----

// A strip's source line split by column parity (like WidenRow): columns x0 - 2 .. x0 + n + 1,
// whole registers while they stay within them, the last few one by one; then the same cut to 8
// bits into row8.
template <class W, class V, unsigned Bits>
void WidenLine(const uint8_t* pLine, uint32_t x0, uint32_t n, TRow<int16_t>& row, TRow<uint8_t>& row8)
{
    using D = TDepth<Bits>;
    const uint8_t* pIn = pLine + size_t(x0 - 2) * D::kBytes;
    const int32_t count = int32_t(n) + 4;
    int32_t i = 0;
    for (; i + 2 * W::N <= count; i += 2 * W::N) {
        typename W::T even, odd;
        SplitSamples<W, Bits>(pIn + size_t(i) * D::kBytes, even, odd);
        W::Store(&row[0][1 + i / 2], even);
        W::Store(&row[1][1 + i / 2], odd);
    }
    for (; i < count; ++i) row[i & 1][1 + i / 2] = int16_t(D::At(pIn, uint32_t(i)) & D::kMask1);
    row[0][0] = row[1][0] = row[0][(n + 7) / 2] = row[1][(n + 6) / 2] = 0;
    for (int h = 0; h < 2; ++h) {
        for (int32_t k = 0; k <= int32_t(n + 7) / 2; k += 2 * W::N) {
            auto cut = [&](int32_t at) { return W::template Shr<Bits - 8>(W::Load(&row[h][at])); };
            W::Store(&row8[h][k], V::PackOrdered(cut(k), cut(k + W::N)));
        }
    }
}

// The byte planes of slot y (see TStrip) from lines y .. y+2 (a, b, c) in half H, and the terms
// of line y+1 in that half, whose sites are green if GreenSites (then da and dm are not needed there).
template <class W, class V, int H, bool GreenSites>
void PlanesOf(TStrip<int16_t>& s, uint32_t y, int32_t end)
{
    using T = typename W::T;
    const uint32_t slot = y & 3;
    {
        const TRow<uint8_t>&a = s.src8[y & 3], &b = s.src8[(y + 1) & 3], &c = s.src8[(y + 2) & 3];
        for (int32_t k = 1; k < end; k += 2 * W::N) {
            auto at = [&](const TRow<uint8_t>& row, int dx) { return W::Load(&At<H>(row, k, dx)); };
            auto put = [&](TRow<uint8_t>& row, T v) { W::Store(&row[H][k], v); };
            const T al = at(a, -1), a0 = at(a, 0), ar = at(a, 1);
            const T bl = at(b, -1), b0 = at(b, 0), br = at(b, 1), br2 = at(b, 2);
            const T cl2 = at(c, -2), cl = at(c, -1), c0 = at(c, 0), cr = at(c, 1), cr2 = at(c, 2), cr3 = at(c, 3);
            const T rising = V::AbsDiff(ar, cl);
            put(s.tv[slot], V::Avg(V::AbsDiff(a0, c0), V::Avg(V::AbsDiff(al, cl), V::AbsDiff(ar, cr))));
            put(s.hv[slot], V::Avg(V::AbsDiff(bl, br), V::AbsDiff(b0, br2)));
            put(s.a2[slot], V::Avg(V::AbsDiff(a0, cl2), rising));
            put(s.m2[slot], V::Avg(V::AbsDiff(a0, cr2), V::AbsDiff(ar, cr3)));
            if constexpr (!GreenSites) {
                put(s.da[slot], V::Avg(rising, V::Avg(V::AbsDiff(a0, bl), V::AbsDiff(br, c0))));
                put(s.dm[slot], V::Avg(V::AbsDiff(al, cr), V::Avg(V::AbsDiff(bl, c0), V::AbsDiff(a0, br))));
            }
        }
    }
    const TRow<int16_t>&a = s.src[y & 7], &b = s.src[(y + 1) & 7], &c = s.src[(y + 2) & 7];
    auto& terms = s.terms[(y + 1) & 3];
    for (int32_t k = 1; k < end; k += W::N) {
        auto at = [&](const TRow<int16_t>& row, int dx) { return W::Load(&At<H>(row, k, dx)); };
        auto site = [&](int16_t* pRow, T v) { W::Store(pRow + k, v); };
        auto twice = [](T v) { return W::Add(v, v); };
        const T a0 = at(a, 0), c0 = at(c, 0), bl = at(b, -1), b0 = at(b, 0), br = at(b, 1);
        const T v = W::Add(a0, c0), h = W::Add(bl, br);
        if constexpr (GreenSites) {
            const T s2 = twice(b0), dv = twice(W::Sub(s2, v)), dh = twice(W::Sub(s2, h));
            site(terms.green[0], dv);
            site(terms.green[1], dh);
            site(terms.green[2], W::Sub(dv, dh));
        } else {
            const T al = at(a, -1), ar = at(a, 1), cl = at(c, -1), cr = at(c, 1);
            const T s4 = W::template Shl<2>(b0), v2 = twice(v), h2 = twice(h), vh = W::Add(v, h);
            const T rise2 = twice(W::Add(ar, cl)), fall2 = twice(W::Add(al, cr));
            const T d4 = W::Add(W::Add(ar, cl), W::Add(al, cr));
            site(terms.other[0], W::Sub(s4, v2));
            site(terms.other[1], W::Sub(s4, h2));
            site(terms.other[2], W::Sub(d4, v2));
            site(terms.other[3], W::Sub(d4, h2));
            site(terms.other[4], W::Sub(vh, rise2));
            site(terms.other[5], W::Sub(s4, rise2));
            site(terms.other[6], W::Sub(vh, fall2));
            site(terms.other[7], W::Sub(s4, fall2));
        }
    }
}

// The planes of slot y over columns 2 .. n+4 of each half, like PlanesHalf, and the terms of
// line y+1, whose green sites lie in half greenHalf.
template <class W, class V>
void TakePlanes(TStrip<int16_t>& s, uint32_t y, uint32_t n, int greenHalf)
{
    const int32_t end = int32_t(n + 6) / 2 + 1;
    if (greenHalf == 0) {
        PlanesOf<W, V, 0, true>(s, y, end);
        PlanesOf<W, V, 1, false>(s, y, end);
    } else {
        PlanesOf<W, V, 0, false>(s, y, end);
        PlanesOf<W, V, 1, true>(s, y, end);
    }
}

// Signed words of a times b, the high halves of the products; a + b saturated.
inline __m128i MulHi(__m128i a, __m128i b)
{
    return _mm_mulhi_epi16(a, b);
}

inline __m128i AddSat(__m128i a, __m128i b)
{
    return _mm_adds_epi16(a, b);
}

#if defined(__AVX2__)
inline __m256i MulHi(__m256i a, __m256i b)
{
    return _mm256_mulhi_epi16(a, b);
}

inline __m256i AddSat(__m256i a, __m256i b)
{
    return _mm256_adds_epi16(a, b);
}
#endif

// ceil(2^K / n) for n = 1..8 lane by lane, as Reciprocal<K> builds it; with AVX2 the words of a
// table picked by a byte shuffle (bytes 2 (n-1) and 2 (n-1) + 1 of each word's lane). SSE2 divides
// in floats instead: floor(2^K / n) + 1, one more where n divides 2^K, serves both means as well
// (see TChosen and TChosenDeep); for K = 15 the quotients are narrowed less 2^15, so that 2^15
// itself fits, and the words wrap back to 2^15 / n + 1 (unsigned).
template <class W, int K>
inline typename W::T Reciprocals(typename W::T n)
{
#if defined(__AVX2__)
    if constexpr (W::N == 16) {
        auto r = [](int32_t t) { return int16_t(((1 << K) + t - 1) / t); };
        const __m256i table = _mm256_setr_epi16(r(1), r(2), r(3), r(4), r(5), r(6), r(7), r(8), r(1), r(2), r(3), r(4),
                                                r(5), r(6), r(7), r(8));
        return _mm256_shuffle_epi8(table, W::Add(W::MulLo(n, W::Set(0x0202)), W::Set(-0x0102)));
    } else
#endif
    {
        const __m128i zero = _mm_setzero_si128();
        auto quotient = [](__m128i d) {
            const __m128i q = _mm_cvttps_epi32(_mm_div_ps(_mm_set1_ps(float(1 << K)), _mm_cvtepi32_ps(d)));
            return K == 15 ? _mm_sub_epi32(q, _mm_set1_epi32(32768)) : q;
        };
        return W::Add(W::Pack32(quotient(W::UnpackLo(n, zero)), quotient(W::UnpackHi(n, zero))),
                      W::Set(int16_t(K == 15 ? -32767 : 1)));
    }
}

// The signed sums of the terms of the chosen directions (S = +1 adds a term, -1 subtracts it;
// take: all ones where chosen) of pixels with sample c, and the rounded means they give with their
// count n. With 8-bit samples a sum s of terms lies within +-8160 and the numerator of the
// per-pixel loop is num = 4 n c + s; its mean floor((num + 2n) / 4n) is floor(u m / 2^14), u =
// floor((num + 2n) / 4), m from Reciprocals<W, 14>: m n - 2^14 is at most 3 (8 with SSE2's m where
// n = 8), so that is exact while u < 255 n, and at or above 255 beyond. The sums start at 4 n c +
// 2n, so they end as num + 2n, within a word. The result is left unclamped: below 0 for a negative
// numerator, at least 255 for one above 4n 255, as packing to bytes wants it.
template <class W, unsigned Bits>
struct TChosen {
    using T = typename W::T;
    T n, a, b;
    TChosen(T count, T c) : n(count), a(W::MulLo(n, W::Add(W::template Shl<2>(c), W::Set(2)))), b(a) {}
    template <int SA, int SB>
    void Take2(T t0, T a0, T b0, T t1, T a1, T b1)
    {
        auto take = [&](T t, T ta, T tb) {
            a = SA > 0 ? W::Add(a, W::And(t, ta)) : W::Sub(a, W::And(t, ta));
            b = SB > 0 ? W::Add(b, W::And(t, tb)) : W::Sub(b, W::And(t, tb));
        };
        take(t0, a0, b0);
        take(t1, a1, b1);
    }
    template <int SA0, int SB0, int SA1, int SB1>
    void Take4(T t0, T a0, T b0, T t1, T a1, T b1, T t2, T a2, T b2, T t3, T a3, T b3)
    {
        Take2<SA0, SB0>(t0, a0, b0, t1, a1, b1);
        Take2<SA1, SB1>(t2, a2, b2, t3, a3, b3);
    }
    void Finish(T& first, T& second) const
    {
        const T m = Reciprocals<W, 14>(n);
        auto mean = [&](T sum) { return MulHi(W::And(sum, W::Set(~3)), m); };  // (num + 2n) & ~3 is 4u
        first = mean(a);
        second = mean(b);
    }
};

// Deeper samples: the terms still fit words (within +-16380), their sums are 32-bit (see Take4).
// The sums start at 2n. The mean floor((num + 2n) / 4n) rises with num, so the clamp of num to
// 0 .. 4n mask may come after it as a clamp to 0 .. mask; u = (num + 2n) >> 2 = n c + (s + 2n) >> 2
// is therefore taken in words with saturation ((s + 2n) >> 2 narrowed, then n c added; 32767 / n
// still clamps to mask, and below -32768 the sum stays negative), and floor(u / n) is the high
// word of 2u m, m from Reciprocals<W, 15> (u / n at least, less than u / n + 1 as u < 2^15),
// less one where it times n exceeds u.
template <class W, unsigned Bits>
struct TChosenDeep {
    using T = typename W::T;
    T n, c;
    T a[2], b[2];  // pixels of UnpackLo, UnpackHi
    TChosenDeep(T count, T sample) : n(count), c(sample)
    {
        const T twoN = W::Add(n, n), zero = W::Set(0);
        a[0] = b[0] = W::UnpackLo(twoN, zero);
        a[1] = b[1] = W::UnpackHi(twoN, zero);
    }
    // Two directions' chosen terms summed in words (within +-32760), two such sums paired word
    // by word and added to the 32-bit sums in one multiply-add whose weights carry their signs.
    template <int SA0, int SB0, int SA1, int SB1>
    void Take4(T t0, T a0, T b0, T t1, T a1, T b1, T t2, T a2, T b2, T t3, T a3, T b3)
    {
        auto pair = [](T m0, T e0, T m1, T e1) { return W::Add(W::And(m0, e0), W::And(m1, e1)); };
        auto add = [](T(&sum)[2], T x, T y, T weights) {
            sum[0] = W::Add32(sum[0], W::MAdd(W::UnpackLo(x, y), weights));
            sum[1] = W::Add32(sum[1], W::MAdd(W::UnpackHi(x, y), weights));
        };
        auto weights = [](int s0, int s1) { return W::Set32(int32_t(uint32_t(uint16_t(s0)) | uint32_t(uint16_t(s1)) << 16)); };
        add(a, pair(t0, a0, t1, a1), pair(t2, a2, t3, a3), weights(SA0, SA1));
        add(b, pair(t0, b0, t1, b1), pair(t2, b2, t3, b3), weights(SB0, SB1));
    }
    __attribute__((always_inline)) void Finish(T& first, T& second) const
    {
        const T zero = W::Set(0), nc = W::MulLo(n, c), m = Reciprocals<W, 15>(n);
        auto mean = [&](const T(&sum)[2]) {
            const T part = W::Pack32(W::template Sar32<2>(sum[0]), W::template Sar32<2>(sum[1]));
            const T u = W::Max(AddSat(part, nc), zero), q = W::MulHiU(W::Add(u, u), m);
            const T low = W::Add(q, W::template Sar<15>(W::Sub(u, W::MulLo(q, n))));
            return W::Min(low, W::Set(int16_t(TDepth<Bits>::kMask1)));
        };
        first = mean(a);
        second = mean(b);
    }
};

// The choices of the V::N columns of one parity of line y from column x0 + 2j + Par on (see
// Estimates in variable_gradients.cpp), in byte lanes: the gradients from the planes, then take
// (all ones where a direction is chosen: gradient <= min + max / 2, a sum that saturates at 255
// like no gradient can) and the count of the chosen ones.
template <class V, bool Green, int Par>
__attribute__((always_inline)) inline void Choose(const TStrip<int16_t>& s, uint32_t y, int32_t j,
                                                  typename V::T (&take)[8], typename V::T& count)
{
    using T = typename V::T;
    const uint32_t s0 = (y - 2) & 3, s1 = (y - 1) & 3, s2 = y & 3;
    const int32_t k = j + 2;  // column x0 + 2j + Par is i = 2k + Par
    auto at = [&](const TRow<uint8_t>(&plane)[4], uint32_t slot, int dx) {
        return V::Load(&At<Par>(plane[slot], k, dx));
    };
    auto mean3 = [&](const TRow<uint8_t>(&plane)[4], int dx) {
        return V::Avg(at(plane, s1, dx), V::Avg(at(plane, s0, dx), at(plane, s2, dx)));
    };
    T g[8];
    const T tv1 = at(s.tv, s1, 0);
    g[0] = V::Avg(at(s.tv, s0, 0), tv1);
    g[1] = mean3(s.hv, -1);
    g[2] = V::Avg(tv1, at(s.tv, s2, 0));
    g[3] = mean3(s.hv, 0);
    if constexpr (Green) {
        g[4] = V::Avg(at(s.a2, s0, 1), at(s.a2, s1, 1));
        g[5] = V::Avg(at(s.m2, s0, -2), at(s.m2, s1, -2));
        g[6] = V::Avg(at(s.a2, s1, 0), at(s.a2, s2, 0));
        g[7] = V::Avg(at(s.m2, s1, -1), at(s.m2, s2, -1));
    } else {
        const T da = at(s.da, s1, 0), dm = at(s.dm, s1, 0);
        g[4] = V::Avg(da, at(s.da, s0, 1));
        g[5] = V::Avg(dm, at(s.dm, s0, -1));
        g[6] = V::Avg(da, at(s.da, s2, -1));
        g[7] = V::Avg(dm, at(s.dm, s2, 1));
    }
    T lo = g[0], hi = g[0];
    for (int m = 1; m < 8; ++m) lo = V::MinU(lo, g[m]), hi = V::MaxU(hi, g[m]);
    const T limit = V::AddSat(lo, V::Half(hi));
    count = V::Zero();
    for (int m = 0; m < 8; ++m) {
        take[m] = V::Eq(V::MaxU(g[m], limit), limit);
        count = V::Sub(count, take[m]);
    }
}

// The two estimates of the W::N columns of half Half of a Choose block (columns x0 + 2j + Par on,
// j counted in the half): the terms of the site each direction points to from the terms' rows
// (at a red or blue pixel dv and dv - dh of the green sites above and below, dh and dh - dv of
// those beside, the rising terms of the sites up right and down left, the falling ones of the
// others; at a green pixel d4 - 2v and 4s - 2v of the sites above and below, 4s - 2h and d4 - 2h
// of those beside, minus dv and dh of the green diagonal ones), unclamped at 8 bits (see TChosen).
template <class W, class V, unsigned Bits, bool Green, int Par, int Half>
__attribute__((always_inline)) inline void EstimateHalf(const TStrip<int16_t>& s, uint32_t y, int32_t j,
                                                        const typename V::T (&take)[8], typename V::T count,
                                                        typename W::T& first, typename W::T& second)
{
    const int32_t k = j + 2;
    auto green = [&](int term, int dy, int dx) {
        return W::Load(&s.terms[(y + dy) & 3].green[term][k + ((Par + dx) >> 1)]);
    };
    auto other = [&](int term, int dy, int dx) {
        return W::Load(&s.terms[(y + dy) & 3].other[term][k + ((Par + dx) >> 1)]);
    };
    auto t = [&](int m) { return V::template MaskWords<Half>(take[m]); };
    std::conditional_t<Bits == 8, TChosen<W, Bits>, TChosenDeep<W, Bits>> chosen(
        V::template Words<Half>(count), W::Load(&At<Par>(s.src[y & 7], k, 0)));
    // Directions in the order of take: north, west, south, east, north-east, north-west, south-west, south-east.
    if constexpr (Green) {
        chosen.template Take4<1, 1, 1, 1>(t(0), other(2, -1, 0), other(0, -1, 0), t(2), other(2, 1, 0), other(0, 1, 0),
                                          t(1), other(1, 0, -1), other(3, 0, -1), t(3), other(1, 0, 1), other(3, 0, 1));
        chosen.template Take4<-1, -1, -1, -1>(t(4), green(0, -1, 1), green(1, -1, 1), t(5), green(0, -1, -1),
                                              green(1, -1, -1), t(6), green(0, 1, -1), green(1, 1, -1), t(7),
                                              green(0, 1, 1), green(1, 1, 1));
    } else {
        chosen.template Take4<1, 1, 1, -1>(t(0), green(0, -1, 0), green(2, -1, 0), t(2), green(0, 1, 0), green(2, 1, 0),
                                           t(1), green(1, 0, -1), green(2, 0, -1), t(3), green(1, 0, 1), green(2, 0, 1));
        chosen.template Take4<1, 1, 1, 1>(t(4), other(4, -1, 1), other(5, -1, 1), t(6), other(4, 1, -1), other(5, 1, -1),
                                          t(5), other(6, -1, -1), other(7, -1, -1), t(7), other(6, 1, 1), other(7, 1, 1));
    }
    chosen.Finish(first, second);
}

// Both parities of a line of n columns block by block, so that the second finds the rows both
// read still in the first level cache; green at parity 0 if Green0. out(j, parity, first,
// second, even) takes the estimates of columns x0 + 2j + parity, x0 + 2j + 2 + parity, ...;
// what it returns for the even ones comes back as `even` with the odd ones. The odd columns may
// be one fewer: their last block may then run past them into the spare entries.
template <class W, class V, unsigned Bits, bool Green0, class F>
void EstimateBlocks(const TStrip<int16_t>& s, uint32_t y, uint32_t n, const F& out)
{
    using T = typename W::T;
    static_assert(int32_t(V::N) == 2 * W::N, "a block of bytes is two of words");
    for (int32_t j = 0; j < int32_t(n + 1) / 2; j += int32_t(V::N)) {
        typename V::T take[8], count;
        T first, second;
        Choose<V, Green0, 0>(s, y, j, take, count);
        EstimateHalf<W, V, Bits, Green0, 0, 0>(s, y, j, take, count, first, second);
        const T even0 = out(j, 0, first, second, first);
        EstimateHalf<W, V, Bits, Green0, 0, 1>(s, y, j + W::N, take, count, first, second);
        const T even1 = out(j + W::N, 0, first, second, first);
        Choose<V, !Green0, 1>(s, y, j, take, count);
        EstimateHalf<W, V, Bits, !Green0, 1, 0>(s, y, j, take, count, first, second);
        out(j, 1, first, second, even0);
        EstimateHalf<W, V, Bits, !Green0, 1, 1>(s, y, j + W::N, take, count, first, second);
        out(j + W::N, 1, first, second, even1);
    }
}

// The estimates of line y of a strip of n columns (green at parity greenParity), stored by
// column parity for the scalar writer; with DstBytes (a null LUT) the pixels of the stretch's
// whole blocks of 2 W::N columns go out straight from the registers instead (their stores spread
// among the arithmetic rather than in a burst), and the first column left is returned.
template <class W, class V, unsigned Bits, uint32_t DstBytes>
uint32_t EstimateLine(const TStrip<int16_t>& s, uint32_t y, uint32_t n, int greenParity, TEstimates& first,
                      TEstimates& second, const TGradientsStretch& st)
{
    using T = typename W::T;
    const int32_t whole = DstBytes ? int32_t(n / (2 * W::N)) * W::N : 0;  // blocks below it are written
    auto out = [&](int32_t j, int par, T f, T o, T even) {
        if constexpr (DstBytes != 0) {
            if (j < whole) {
                // The two estimates of a parity in one register of bytes, then both parities in column order.
                const T both = V::Pack(W::template Shr<Bits - 8>(f), W::template Shr<Bits - 8>(o));
                if (par == 0) return both;
                const uint32_t x = st.x0 + 2 * uint32_t(j);
                auto same = [](T v) { return v; };
                PutPixels<V, DstBytes>(st, x, Samples<V, Bits>(st.pCur, x), V::UnpackLo(even, both),
                                       V::UnpackHi(even, both), same, same, same);
                return both;
            }
        }
        // The scalar writer reads them as table indices: 8-bit means are clamped here.
        auto put = [](int16_t* p, T v) { W::Store(p, Bits == 8 ? W::Min(W::Max(v, W::Set(0)), W::Set(255)) : v); };
        put(first[par == greenParity] + j, f);
        put(second[par == greenParity] + j, o);
        return f;
    };
    if (greenParity == 0) {
        EstimateBlocks<W, V, Bits, true>(s, y, n, out);
    } else {
        EstimateBlocks<W, V, Bits, false>(s, y, n, out);
    }
    return st.x0 + 2 * uint32_t(whole);
}

// The stages for a depth; with a null LUT (bIdentity) the estimates write the pixels.
template <class W, class V>
TGradientsVector GradientsVector(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
    TGradientsVector v{nullptr, nullptr, nullptr, false};
    WithDepth(dwBits, [&](auto bits) {
        v.widen = WidenLine<W, V, bits>;
        v.planes = TakePlanes<W, V>;
        v.estimates = EstimateLine<W, V, bits, 0>;
        if (bIdentity) {
            WithPixelBytes(dwDstBytes, [&](auto bytes) { v.estimates = EstimateLine<W, V, bits, bytes>; });
            v.bWrites = true;
        }
    });
    return v;
}

}  // namespace
