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

// Blocks of V::N pixels. At a colour site the line's own colour (red on red lines, blue on blue
// ones) is the sample, green the first estimate; at a green site green is the sample and the
// own colour the first estimate; the other colour is the second estimate at both. Values above
// 8 bits go out as their top 8 bits (the identity tables); with Table the 8-bit tables are
// looked up in registers.
template <class V, unsigned Bits, uint32_t DstBytes, bool Table>
uint32_t WriteGradients(const TGradientsStretch& s, const TBayerLut& lut)
{
    using T = typename V::T;
    using D = TDepth<Bits>;
    struct TNone {
        explicit TNone(const uint8_t*) {}
        T operator()(T v) const { return v; }
    };
    using TTable = std::conditional_t<Table, TByteTable<V>, TNone>;
    const TTable mapB(lut.pBlue), mapG(lut.pGreen), mapR(lut.pRed);
    const T colour = V::Set16(s.greenParity == 0 ? int16_t(0xFF00) : 0x00FF);  // byte lanes of the colour sites
    const int even = s.greenParity == 0 ? 1 : 0;                               // estimates of the even columns
    auto estimates = [&](const int16_t* const(&pArray)[2], size_t j) {
        const T e = V::template Shr<Bits - 8>(EstimateWords(T{}, pArray[even] + j));
        const T o = V::template Shr<Bits - 8>(EstimateWords(T{}, pArray[1 - even] + j));
        return Interleave(e, o);
    };
    uint32_t x = s.x0;
    for (; x + V::N <= s.x1; x += V::N) {
        const size_t j = (x - s.x0) / 2;
        T c;
        if constexpr (Bits == 8) {
            c = V::Load(s.pCur + x);
        } else {
            const T mask = V::Set16(int16_t(D::kMask1));
            const uint8_t* pIn = s.pCur + 2 * size_t(x);
            c = V::PackOrdered(V::template Shr<Bits - 8>(V::And16(V::Load(pIn), mask)),
                               V::template Shr<Bits - 8>(V::And16(V::Load(pIn + sizeof(T)), mask)));
        }
        const T first = estimates(s.pFirst, j), other = estimates(s.pSecond, j);
        const T own = V::Select(colour, c, first), g = mapG(V::Select(colour, first, c));
        const T b = s.bRedLine ? mapB(other) : mapB(own), r = s.bRedLine ? mapR(own) : mapR(other);
        uint8_t* p = s.pOut + size_t(x) * DstBytes;
        if constexpr (DstBytes == 3) {
            V::StoreBgr(p, b, g, r);
        } else {
            V::StoreBgra(p, b, g, r);
        }
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
// whole registers while they stay within them, the last few one by one.
template <class W, unsigned Bits>
void WidenLine(const uint8_t* pLine, uint32_t x0, uint32_t n, TRow<int16_t>& row)
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
}

// The planes of slot y (see TStrip) from lines y .. y+2 (a, b, c), straight from the samples
// (each difference a plane needs is taken where it is needed, which costs fewer loads and
// stores than keeping them in rows of their own), and from the same loads the sums hs of line
// y+2, vs and g4 of line y+1 (hs of lines 0 and 1 too at the strip's first line).
template <class W, int H>
void PlanesOf(TStrip<int16_t>& s, uint32_t y, int32_t end)
{
    using T = typename W::T;
    const TRow<int16_t>&a = s.src[y & 7], &b = s.src[(y + 1) & 7], &c = s.src[(y + 2) & 7];
    const uint32_t slot = y & 3;
    auto& sums = s.sums;
    for (int32_t k = 1; k < end; k += W::N) {
        auto at = [&](const TRow<int16_t>& row, int dx) { return W::Load(&At<H>(row, k, dx)); };
        auto put = [&](TRow<int16_t>& row, T v) { W::Store(&row[H][k], v); };
        auto twice = [](T v) { return W::Add(v, v); };
        const T al = at(a, -1), a0 = at(a, 0), ar = at(a, 1);
        const T bl = at(b, -1), b0 = at(b, 0), br = at(b, 1), br2 = at(b, 2);
        const T cl2 = at(c, -2), cl = at(c, -1), c0 = at(c, 0), cr = at(c, 1), cr2 = at(c, 2), cr3 = at(c, 3);
        const T rising = W::AbsDiff(ar, cl), falling = W::AbsDiff(al, cr);
        put(s.tv[slot], W::Add(twice(W::AbsDiff(a0, c0)), W::Add(W::AbsDiff(al, cl), W::AbsDiff(ar, cr))));
        put(s.hv[slot], W::Add(W::AbsDiff(bl, br), W::AbsDiff(b0, br2)));
        put(s.da[slot], W::Add(twice(rising), W::Add(W::AbsDiff(a0, bl), W::AbsDiff(br, c0))));
        put(s.dm[slot], W::Add(twice(falling), W::Add(W::AbsDiff(bl, c0), W::AbsDiff(a0, br))));
        put(s.a2[slot], W::Add(W::AbsDiff(a0, cl2), rising));
        put(s.m2[slot], W::Add(W::AbsDiff(a0, cr2), W::AbsDiff(ar, cr3)));
        const T hb = W::Add(bl, br), vb = W::Add(a0, c0);
        put(sums.hs[(y + 2) & 7], W::Add(cl, cr));
        put(sums.vs[(y + 1) & 3], vb);
        put(sums.g4[(y + 1) & 3], W::Add(hb, vb));
        if (y == 0) {
            put(sums.hs[0], W::Add(al, ar));
            put(sums.hs[1], hb);
        }
    }
}

// The planes of slot y over columns 2 .. n+4 of each half, like PlanesHalf, and the sums one
// entry further.
template <class W>
void TakePlanes(TStrip<int16_t>& s, uint32_t y, uint32_t n)
{
    const int32_t end = int32_t(n + 6) / 2 + 1;
    PlanesOf<W, 0>(s, y, end);
    PlanesOf<W, 1>(s, y, end);
}

// What one direction adds to the two sums when it is chosen: 4 c + (colour - first colour),
// in quarters, for the first and the second estimate. The sums over the chosen directions are
// the numerators of the per-pixel loop (4 n c + a - own, 4 n c + b - own); at 8 bits each term
// lies within +-2040, so eight of them fit a word.
template <class W>
struct TTerms {
    typename W::T a, b;
};

// The sums around the pixel (see TStrip::sums) by unturned offsets: Across the pair beside
// (dy, dx) along the turned rows, Along the pair above and below it, Around its four neighbours.
template <int Turn, class S>
struct TTurnedSums {
    const S& sums;
    static constexpr int Dy(int dy, int dx) { return TTurned<Turn>::Dy(dy, dx); }
    static constexpr int Dx(int dy, int dx) { return TTurned<Turn>::Dx(dy, dx); }
    auto Across(int dy, int dx) const
    {
        return (Turn & 1) ? sums.vs(Dy(dy, dx), Dx(dy, dx)) : sums.hs(Dy(dy, dx), Dx(dy, dx));
    }
    auto Along(int dy, int dx) const
    {
        return (Turn & 1) ? sums.hs(Dy(dy, dx), Dx(dy, dx)) : sums.vs(Dy(dy, dx), Dx(dy, dx));
    }
    auto Around(int dy, int dx) const { return sums.g4(Dy(dy, dx), Dx(dy, dx)); }
};

template <class W, int Turn, bool Green, class P, class S>
inline __attribute__((always_inline)) TTerms<W> AxisTerms(const P& p, const S& sums, typename W::T c)
{
    using T = typename W::T;
    auto q = [&](int dy, int dx) { return p(TTurned<Turn>::Dy(dy, dx), TTurned<Turn>::Dx(dy, dx)); };
    const TTurnedSums<Turn, S> t{sums};
    const T base = W::Sub(c, q(-2, 0));
    if constexpr (Green) {
        const T twice = W::Add(base, base), near = W::template Shl<2>(q(-1, 0));
        const T far = W::Add(t.Across(-2, 0), t.Across(0, 0));
        // Odd turns swap the colours beside and above.
        return (Turn & 1) ? TTerms<W>{W::Add(twice, near), W::Add(twice, far)}
                          : TTerms<W>{W::Add(twice, far), W::Add(twice, near)};
    } else {
        const T q1 = q(-1, 0);
        const T a = W::Add(base, W::Add(q1, q1)), b = W::Add(base, t.Across(-1, 0));
        return {W::Add(a, a), W::Add(b, b)};
    }
}

template <class W, int Turn, bool Green, class P, class S>
inline __attribute__((always_inline)) TTerms<W> DiagonalTerms(const P& p, const S& sums, typename W::T c)
{
    using T = typename W::T;
    auto q = [&](int dy, int dx) { return p(TTurned<Turn>::Dy(dy, dx), TTurned<Turn>::Dx(dy, dx)); };
    const TTurnedSums<Turn, S> t{sums};
    if constexpr (Green) {
        const T base = W::template Shl<2>(W::Sub(c, q(-1, 1)));
        const T x = t.Along(-1, 1), y = t.Across(-1, 1);
        const T bx = W::Add(base, W::Add(x, x)), by = W::Add(base, W::Add(y, y));
        return (Turn & 1) ? TTerms<W>{by, bx} : TTerms<W>{bx, by};
    } else {
        const T d = W::Sub(c, q(-2, 2)), twice = W::Add(d, d);
        return {W::Add(twice, t.Around(-1, 1)), W::Add(twice, W::template Shl<2>(q(-1, 1)))};
    }
}

// ceil(2^15 / n) for n = 1..8 lane by lane, as Reciprocal<15> builds it; with AVX2 the words
// of a table picked by a byte shuffle (bytes 2 (n-1) and 2 (n-1) + 1 of each word's lane).
template <class W>
inline typename W::T Reciprocals(typename W::T n)
{
    auto r = [](int32_t t) { return int16_t(((1 << 15) + t - 1) / t); };
#if defined(__AVX2__)
    if constexpr (W::N == 16) {
        const __m256i table = _mm256_setr_epi16(r(1), r(2), r(3), r(4), r(5), r(6), r(7), r(8), r(1), r(2), r(3), r(4),
                                                r(5), r(6), r(7), r(8));
        return _mm256_shuffle_epi8(table, W::Add(W::MulLo(n, W::Set(0x0202)), W::Set(-0x0102)));
    }
#endif
    typename W::T m = W::Set(r(8));
    for (int t = 1; t < 8; ++t)
        m = W::Add(m, W::And(W::Gt(W::Set(int16_t(t + 1)), n), W::Set(int16_t(r(t) - r(t + 1)))));
    return m;
}

// The numerators and count over the chosen directions (gradient <= min + max / 2), and the
// rounded means they give (RoundedMean of the numerators clamped to 0 .. 4 n mask). With 8-bit
// samples the sums fit words, and the mean is the high word of 2u ceil(2^15 / n) with u =
// (num + 2 n) / 4.
template <class W, unsigned Bits>
struct TChosen {
    using T = typename W::T;
    T limit, n = W::Set(8), a = W::Set(0), b = W::Set(0);
    TChosen(T lo, T hi) : limit(W::Add(lo, W::template Shr<1>(hi))) {}
    void Take(T gradient, const TTerms<W>& e)
    {
        const T skip = W::Gt(gradient, limit);
        n = W::Add(n, skip);
        a = W::Add(a, W::AndNot(skip, e.a));
        b = W::Add(b, W::AndNot(skip, e.b));
    }
    void Take2(T g0, const TTerms<W>& e0, T g1, const TTerms<W>& e1) { Take(g0, e0), Take(g1, e1); }
    void Store(int16_t* pFirst, int16_t* pSecond) const
    {
        const T zero = W::Set(0), twoN = W::Add(n, n), top = W::MulLo(n, W::Set(4 * 255)), m = Reciprocals<W>(n);
        auto mean = [&](T num) {
            const T u = W::template Shr<2>(W::Add(W::Min(W::Max(num, zero), top), twoN));
            return W::MulHiU(W::Add(u, u), m);
        };
        W::Store(pFirst, mean(a));
        W::Store(pSecond, mean(b));
    }
};

// Deeper samples: gradients and terms still fit words, min + max / 2 may not (the test is
// gradient - min < max / 2 + 1), and the sums are 32-bit: the terms of two directions, paired
// word by word with their take masks (-1), give minus their chosen sum in one multiply-add.
// The mean floor((num + 2n) / 4n) rises with num, so the clamp of num to 0 .. 4n mask may come
// after it as a clamp to 0 .. mask; u = (num + 2n) >> 2 is therefore narrowed to words with
// saturation (32767 / n still clamps to mask), and floor(u / n) is the high word of 2u
// ceil(2^15 / n) (u / n at least, less than u / n + 1 as u < 2^15), less one where it times n
// exceeds u.
template <class W, unsigned Bits>
struct TChosenDeep {
    using T = typename W::T;
    T lo, half1, n = W::Set(0);
    T a[2] = {W::Set(0), W::Set(0)}, b[2] = {W::Set(0), W::Set(0)};  // pixels of UnpackLo, UnpackHi
    TChosenDeep(T lo_, T hi) : lo(lo_), half1(W::Add(W::template Shr<1>(hi), W::Set(1))) {}
    void Take2(T g0, const TTerms<W>& e0, T g1, const TTerms<W>& e1)
    {
        const T t0 = W::Gt(half1, W::Sub(g0, lo)), t1 = W::Gt(half1, W::Sub(g1, lo));
        n = W::Sub(W::Sub(n, t0), t1);
        const T tLo = W::UnpackLo(t0, t1), tHi = W::UnpackHi(t0, t1);
        a[0] = W::Add32(a[0], W::MAdd(W::UnpackLo(e0.a, e1.a), tLo));
        a[1] = W::Add32(a[1], W::MAdd(W::UnpackHi(e0.a, e1.a), tHi));
        b[0] = W::Add32(b[0], W::MAdd(W::UnpackLo(e0.b, e1.b), tLo));
        b[1] = W::Add32(b[1], W::MAdd(W::UnpackHi(e0.b, e1.b), tHi));
    }
    void Store(int16_t* pFirst, int16_t* pSecond) const
    {
        const T zero = W::Set(0), twoN = W::Add(n, n), m = Reciprocals<W>(n);
        const T twoN32[2] = {W::UnpackLo(twoN, zero), W::UnpackHi(twoN, zero)};
        auto mean = [&](const T(&minus)[2]) {
            auto u32 = [&](int h) { return W::template Sar32<2>(W::Sub32(twoN32[h], minus[h])); };
            const T u = W::Max(W::Pack32(u32(0), u32(1)), zero), q = W::MulHiU(W::Add(u, u), m);
            const T low = W::Add(q, W::template Sar<15>(W::Sub(u, W::MulLo(q, n))));
            return W::Min(low, W::Set(int16_t(TDepth<Bits>::kMask1)));
        };
        W::Store(pFirst, mean(a));
        W::Store(pSecond, mean(b));
    }
};

// The estimates of the W::N columns of one parity of line y from column x0 + 2j + Par on (see
// Estimates in variable_gradients.cpp).
template <class W, unsigned Bits, bool Green, int Par>
__attribute__((always_inline)) inline void EstimateBlock(const TStrip<int16_t>& s, uint32_t y, int32_t j,
                                                         int16_t* pFirst, int16_t* pSecond)
{
    using T = typename W::T;
    const TRow<int16_t>* rows[5] = {&s.src[(y - 2) & 7], &s.src[(y - 1) & 7], &s.src[y & 7], &s.src[(y + 1) & 7],
                                    &s.src[(y + 2) & 7]};
    const uint32_t s0 = (y - 2) & 3, s1 = (y - 1) & 3, s2 = y & 3;
    const int32_t k = j + 2;  // column x0 + 2j + Par is i = 2k + Par
    auto p = [&](int dy, int dx) { return W::Load(&At<Par>(*rows[2 + dy], k, dx)); };
    auto at = [&](const TRow<int16_t>(&plane)[4], uint32_t slot, int dx) {
        return W::Load(&At<Par>(plane[slot], k, dx));
    };
    auto sum3 = [&](const TRow<int16_t>(&plane)[4], int dx) {
        const T mid = at(plane, s1, dx);
        return W::Add(W::Add(at(plane, s0, dx), at(plane, s2, dx)), W::Add(mid, mid));
    };
    T g[8];
    const T tv1 = at(s.tv, s1, 0);
    g[0] = W::Add(at(s.tv, s0, 0), tv1);
    g[1] = sum3(s.hv, -1);
    g[2] = W::Add(tv1, at(s.tv, s2, 0));
    g[3] = sum3(s.hv, 0);
    if constexpr (Green) {
        auto twice = [](T a, T b) {
            const T v = W::Add(a, b);
            return W::Add(v, v);
        };
        g[4] = twice(at(s.a2, s0, 1), at(s.a2, s1, 1));
        g[5] = twice(at(s.m2, s0, -2), at(s.m2, s1, -2));
        g[6] = twice(at(s.a2, s1, 0), at(s.a2, s2, 0));
        g[7] = twice(at(s.m2, s1, -1), at(s.m2, s2, -1));
    } else {
        const T da = at(s.da, s1, 0), dm = at(s.dm, s1, 0);
        g[4] = W::Add(da, at(s.da, s0, 1));
        g[5] = W::Add(dm, at(s.dm, s0, -1));
        g[6] = W::Add(da, at(s.da, s2, -1));
        g[7] = W::Add(dm, at(s.dm, s2, 1));
    }
    T lo = g[0], hi = g[0];
    for (int m = 1; m < 8; ++m) lo = W::Min(lo, g[m]), hi = W::Max(hi, g[m]);
    const T c = p(0, 0);
    struct {
        const TStrip<int16_t>& s;
        uint32_t y;
        int32_t k;
        T hs(int dy, int dx) const { return W::Load(&At<Par>(s.sums.hs[(y + dy) & 7], k, dx)); }
        T vs(int dy, int dx) const { return W::Load(&At<Par>(s.sums.vs[(y + dy) & 3], k, dx)); }
        T g4(int dy, int dx) const { return W::Load(&At<Par>(s.sums.g4[(y + dy) & 3], k, dx)); }
    } const sums{s, y, k};
    std::conditional_t<Bits == 8, TChosen<W, Bits>, TChosenDeep<W, Bits>> chosen(lo, hi);
    chosen.Take2(g[0], AxisTerms<W, 0, Green>(p, sums, c), g[1], AxisTerms<W, 1, Green>(p, sums, c));
    chosen.Take2(g[2], AxisTerms<W, 2, Green>(p, sums, c), g[3], AxisTerms<W, 3, Green>(p, sums, c));
    chosen.Take2(g[4], DiagonalTerms<W, 0, Green>(p, sums, c), g[5], DiagonalTerms<W, 1, Green>(p, sums, c));
    chosen.Take2(g[6], DiagonalTerms<W, 2, Green>(p, sums, c), g[7], DiagonalTerms<W, 3, Green>(p, sums, c));
    chosen.Store(pFirst + j, pSecond + j);
}

// Both parities of a line of n columns block by block, so that the second finds the rows both
// read still in the first level cache; green at parity 0 if Green0. The odd columns may be one
// fewer: their last block may then run past them into the spare entries.
template <class W, unsigned Bits, bool Green0>
void EstimateBlocks(const TStrip<int16_t>& s, uint32_t y, uint32_t n, TEstimates& first, TEstimates& second)
{
    for (int32_t j = 0; j < int32_t(n + 1) / 2; j += W::N) {
        EstimateBlock<W, Bits, Green0, 0>(s, y, j, first[Green0], second[Green0]);
        EstimateBlock<W, Bits, !Green0, 1>(s, y, j, first[!Green0], second[!Green0]);
    }
}

template <class W, unsigned Bits>
void EstimateLine(const TStrip<int16_t>& s, uint32_t y, uint32_t n, int greenParity, TEstimates& first,
                  TEstimates& second)
{
    if (greenParity == 0) {
        EstimateBlocks<W, Bits, true>(s, y, n, first, second);
    } else {
        EstimateBlocks<W, Bits, false>(s, y, n, first, second);
    }
}

template <class W>
TGradientsVector GradientsVector(uint32_t dwBits)
{
    TGradientsVector v{nullptr, nullptr, nullptr};
    WithDepth(dwBits, [&](auto bits) {
        v.widen = WidenLine<W, bits>;
        v.planes = TakePlanes<W>;
        v.estimates = EstimateLine<W, bits>;
    });
    return v;
}

}  // namespace
