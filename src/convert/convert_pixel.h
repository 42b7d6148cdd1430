// convert_pixel.h: the pieces every line converter is made of: samples, depth and grey rules, pixel readers
// and writers per layout, and the one line loop. The vector variants reuse them for their line tails.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace convert {

// ---------------------------------------------------------------- memory access (little-endian words)

inline uint32_t Load16(const uint8_t* p)
{
    uint16_t w;
    std::memcpy(&w, p, 2);
    return w;
}

inline void Store16(uint8_t* p, uint32_t v)
{
    const uint16_t w = uint16_t(v);
    std::memcpy(p, &w, 2);
}

// ---------------------------------------------------------------- samples, one per kind of source pixel

// A mono value held in the low `bits` bits (a word may carry garbage above them).
struct TGrey {
    uint32_t v;
    uint32_t bits;
};

// Colour channels of `bits` bits each.
struct TRgb {
    uint32_t r, g, b;
    uint32_t bits;
};

// Colour from a 15/16-bit word, channels already expanded to 8 bits; its grey is the plain average.
struct TRgbShort {
    uint32_t r, g, b;
};

// Luma and chroma bytes; K holds the coefficients of the colour formulas.
template <class K>
struct TYuv {
    int32_t y, u, v;
};

// R = (kY (Y - kYOffset) + kRV Vc + 128) >> 8, G = (kY (Y - kYOffset) + kGU Uc + kGV Vc + 128) >> 8,
// B = (kY (Y - kYOffset) + kBU Uc + 128) >> 8, with Uc = U - 128 and Vc = V - 128.
struct CYuvCoefficients {
    static constexpr int32_t kY = 298, kYOffset = 16, kRV = 409, kGU = -100, kGV = -208, kBU = 516;
};
struct CYCbCrCoefficients {
    static constexpr int32_t kY = 256, kYOffset = 0, kRV = 359, kGU = -88, kGV = -183, kBU = 454;
};

// ---------------------------------------------------------------- the rules

// Depth change by plain shifts, never rounded: left by d - s or right by s - d.
constexpr uint32_t ShiftDepth(uint32_t v, uint32_t s, uint32_t d)
{
    return (v << (d > s ? d - s : 0)) >> (s > d ? s - d : 0);
}

// To 8 bits a mono word is masked to its used bits first, so garbage above them never shows.
constexpr uint32_t Grey8(TGrey g)
{
    return (g.v & (0xFFFFu >> (16 - g.bits))) >> (g.bits - 8);
}

// The grey weights add up to 255, not 256, so white gives 254 on purpose; the shift is the channel depth.
constexpr uint32_t Grey8(TRgb c)
{
    return uint8_t((54 * c.r + 183 * c.g + 18 * c.b + 128) >> c.bits);
}

constexpr uint32_t Grey8(TRgbShort c)
{
    return (c.r + c.g + c.b) / 3;
}

template <class K>
constexpr uint32_t Grey8(TYuv<K> s)
{
    return uint32_t(s.y);
}

// Mono words keep their precision by the word rule; every other source brings its 8-bit grey up.
template <class S>
constexpr uint32_t GreyWord(S s, uint32_t d)
{
    return Grey8(s) << (d - 8);
}
constexpr uint32_t GreyWord(TGrey g, uint32_t d)
{
    return ShiftDepth(g.v, g.bits, d);
}

constexpr uint32_t Clamp8(int32_t v)
{
    return uint32_t(v < 0 ? 0 : v > 255 ? 255 : v);
}

// 8-bit colour of a sample: mono replicates its reduced grey.
constexpr TRgb Rgb8(TGrey g)
{
    const uint32_t v = Grey8(g);
    return {v, v, v, 8};
}
constexpr TRgb Rgb8(TRgb c)
{
    return {ShiftDepth(c.r, c.bits, 8), ShiftDepth(c.g, c.bits, 8), ShiftDepth(c.b, c.bits, 8), 8};
}
constexpr TRgb Rgb8(TRgbShort c)
{
    return {c.r, c.g, c.b, 8};
}

// Arithmetic shifts: negative sums stay negative and clamp to 0.
template <class K>
constexpr TRgb Rgb8(TYuv<K> s)
{
    const int32_t y = K::kY * (s.y - K::kYOffset), u = s.u - 128, v = s.v - 128;
    return {Clamp8((y + K::kRV * v + 128) >> 8), Clamp8((y + K::kGU * u + K::kGV * v + 128) >> 8),
            Clamp8((y + K::kBU * u + 128) >> 8), 8};
}

// Colour of d bits (10, 12, 16) for the three-word layouts.
constexpr TRgb RgbDeep(TGrey g, uint32_t d)
{
    const uint32_t v = ShiftDepth(g.v, g.bits, d);
    return {v, v, v, d};
}
constexpr TRgb RgbDeep(TRgb c, uint32_t d)
{
    return {ShiftDepth(c.r, c.bits, d), ShiftDepth(c.g, c.bits, d), ShiftDepth(c.b, c.bits, d), d};
}

// 15/16-bit packing of 8-bit channels and the expansion back by shifting alone.
constexpr uint32_t Pack555(TRgb c)
{
    return ((c.r << 7) & 0x7C00) | ((c.g << 2) & 0x3E0) | (c.b >> 3);
}
constexpr uint32_t Pack565(TRgb c)
{
    return ((c.r << 8) & 0xF800) | ((c.g << 3) & 0x7E0) | (c.b >> 3);
}
constexpr TRgbShort Unpack555(uint32_t w)
{
    return {(w & 0x7C00) >> 7, (w & 0x3E0) >> 2, (w << 3) & 255};
}
constexpr TRgbShort Unpack565(uint32_t w)
{
    return {(w & 0xF800) >> 8, (w & 0x7E0) >> 3, (w << 3) & 255};
}

// ---------------------------------------------------------------- readers: one group of pixels each

// Channel order in memory: where red sits among the three channels (blue sits at the other end).
enum TOrder : int { kRGB = 0, kBGR = 2 };

template <class S, uint32_t kPixelCount, uint32_t kByteCount>
struct TReader {
    using TSample = S;
    using TGroup = std::array<S, kPixelCount>;
    static constexpr uint32_t kPixels = kPixelCount, kBytes = kByteCount;
    void StartLine() {}
};

struct RMono8 : TReader<TGrey, 1, 1> {
    TGroup Read(const uint8_t* p) const { return {{{p[0], 8}}}; }
};

struct RMonoWord : TReader<TGrey, 1, 2> {
    explicit RMonoWord(uint32_t dwBits) : bits(dwBits) {}
    uint32_t bits;
    TGroup Read(const uint8_t* p) const { return {{{Load16(p), bits}}}; }
};

// One value from its high byte and kBits - 8 low bits found at bit `at` of another byte; with kBits 8 the
// high byte alone.
template <uint32_t kBits>
constexpr TGrey Join(uint32_t hi, uint32_t lo, uint32_t at)
{
    return {(hi << (kBits - 8)) | ((lo >> at) & ((1u << (kBits - 8)) - 1)), kBits};
}

// Two pixels in three bytes: high bytes at 0 and kHi1, the low bits of both in byte kLo (pixel 1's from bit 4).
template <uint32_t kBits, uint32_t kHi1, uint32_t kLo>
struct RPair : TReader<TGrey, 2, 3> {
    TGroup Read(const uint8_t* p) const { return {Join<kBits>(p[0], p[kLo], 0), Join<kBits>(p[kHi1], p[kLo], 4)}; }
    // The first pixel of a group cut short by the line end, from its high byte alone.
    TGroup ReadFirst(const uint8_t* p) const { return {Join<8>(p[0], 0, 0), Join<8>(0, 0, 0)}; }
};

// Packed: high bytes 0 and 2, low bits in byte 1. MIPI 12 bits: high bytes 0 and 1, low bits in byte 2.
template <uint32_t kBits>
using RPacked = RPair<kBits, 2, 1>;
template <uint32_t kBits>
using RMipi12 = RPair<kBits, 1, 2>;

// MIPI 10 bits: four high bytes, then one byte with the low two bits of pixel i at bit 2i.
template <uint32_t kBits>
struct RMipi10 : TReader<TGrey, 4, 5> {
    TGroup Read(const uint8_t* p) const
    {
        return {Join<kBits>(p[0], p[4], 0), Join<kBits>(p[1], p[4], 2), Join<kBits>(p[2], p[4], 4),
                Join<kBits>(p[3], p[4], 6)};
    }
};

struct RBGR15 : TReader<TRgbShort, 1, 2> {
    TGroup Read(const uint8_t* p) const { return {Unpack555(Load16(p))}; }
};

struct RBGR16 : TReader<TRgbShort, 1, 2> {
    TGroup Read(const uint8_t* p) const { return {Unpack565(Load16(p))}; }
};

// Three bytes (kStep 3) or four (kStep 4, the fourth ignored) of 8-bit channels.
template <TOrder O, uint32_t kStep>
struct RBytes : TReader<TRgb, 1, kStep> {
    typename RBytes::TGroup Read(const uint8_t* p) const { return {{{p[O], p[1], p[2 - O], 8}}}; }
};

// Three words of kBits-bit channels.
template <TOrder O, uint32_t kBits>
struct RWords : TReader<TRgb, 1, 6> {
    TGroup Read(const uint8_t* p) const { return {{{Load16(p + 2 * O), Load16(p + 2), Load16(p + 4 - 2 * O), kBits}}}; }
};

// Byte positions of luma and chroma within one group of a YUV layout.
template <class K, uint32_t kY0, uint32_t kU, uint32_t kY1, uint32_t kV>
struct RChroma422 : TReader<TYuv<K>, 2, 4> {
    using TCoefficients = K;
    static constexpr bool kLumaFirst = kY0 == 0;  // Y0 U Y1 V rather than U Y0 V Y1
    typename RChroma422::TGroup Read(const uint8_t* p) const
    {
        return {{{p[kY0], p[kU], p[kV]}, {p[kY1], p[kU], p[kV]}}};
    }
};

template <class K, uint32_t kY, uint32_t kU, uint32_t kV>
struct RChroma444 : TReader<TYuv<K>, 1, 3> {
    typename RChroma444::TGroup Read(const uint8_t* p) const { return {{{p[kY], p[kU], p[kV]}}}; }
};

// 4:1:1: two halves of three bytes (one chroma, two lumas); the first half brings a new U, the second a new
// V. The first half is converted with the V of the previous group (128 at the start of a line): this lag
// belongs to the format's definition here.
template <uint32_t kC, uint32_t kY0, uint32_t kY1>
struct RChroma411 : TReader<TYuv<CYuvCoefficients>, 4, 6> {
    static constexpr uint32_t kChroma = kC, kLuma0 = kY0, kLuma1 = kY1;
    int32_t iV = 128;
    void StartLine() { iV = 128; }
    TGroup Read(const uint8_t* p)
    {
        const int32_t u = p[kC], vOld = iV;
        iV = p[3 + kC];
        return {{{p[kY0], u, vOld}, {p[kY1], u, vOld}, {p[3 + kY0], u, iV}, {p[3 + kY1], u, iV}}};
    }
};

// The layouts by name.
using RBGR24 = RBytes<kBGR, 3>;
using RRGB24 = RBytes<kRGB, 3>;
using RBGR32 = RBytes<kBGR, 4>;
using RRGB32 = RBytes<kRGB, 4>;
using RBGR30 = RWords<kBGR, 10>;
using RRGB30 = RWords<kRGB, 10>;
using RBGR36 = RWords<kBGR, 12>;
using RRGB36 = RWords<kRGB, 12>;
using RBGR48 = RWords<kBGR, 16>;
using RRGB48 = RWords<kRGB, 16>;
using RYuv411 = RChroma411<0, 1, 2>;
using RYuv411YYuYYv = RChroma411<2, 0, 1>;
using RYuv422 = RChroma422<CYuvCoefficients, 1, 0, 3, 2>;
using RYuv422yuyv = RChroma422<CYuvCoefficients, 0, 1, 2, 3>;
using RYCbCr422_8 = RChroma422<CYCbCrCoefficients, 0, 1, 2, 3>;
using RYuv444 = RChroma444<CYuvCoefficients, 1, 0, 2>;
using RYCbCr444 = RChroma444<CYCbCrCoefficients, 0, 1, 2>;

// ---------------------------------------------------------------- writers: one pixel each

struct WMono8 {
    static constexpr uint32_t kBytes = 1;
    template <class S>
    void Write(uint8_t* p, S s) const
    {
        p[0] = uint8_t(Grey8(s));
    }
};

struct WMonoWord {
    static constexpr uint32_t kBytes = 2;
    uint32_t bits;
    template <class S>
    void Write(uint8_t* p, S s) const
    {
        Store16(p, GreyWord(s, bits));
    }
};

struct WBGR15 {
    static constexpr uint32_t kBytes = 2;
    template <class S>
    void Write(uint8_t* p, S s) const
    {
        Store16(p, Pack555(Rgb8(s)));
    }
};

struct WBGR16 {
    static constexpr uint32_t kBytes = 2;
    template <class S>
    void Write(uint8_t* p, S s) const
    {
        Store16(p, Pack565(Rgb8(s)));
    }
};

// What a four-byte pixel gets in its fourth byte: 0, or the destination's byte left as it was.
enum TFourth : int { kNoFourth, kFourthZero, kFourthKept };

template <TOrder O, TFourth F>
struct WBytes {
    static constexpr TOrder kOrder = O;
    static constexpr uint32_t kBytes = F == kNoFourth ? 3 : 4;
    template <class S>
    void Write(uint8_t* p, S s) const
    {
        const TRgb c = Rgb8(s);
        p[O] = uint8_t(c.r);
        p[1] = uint8_t(c.g);
        p[2 - O] = uint8_t(c.b);
        if constexpr (F == kFourthZero) p[3] = 0;
    }
};

template <TOrder O, uint32_t kBits>
struct WWords {
    static constexpr uint32_t kBytes = 6;
    template <class S>
    void Write(uint8_t* p, S s) const
    {
        const TRgb c = RgbDeep(s, kBits);
        Store16(p + 2 * O, c.r);
        Store16(p + 2, c.g);
        Store16(p + 4 - 2 * O, c.b);
    }
};

using WBGR24 = WBytes<kBGR, kNoFourth>;
using WRGB24 = WBytes<kRGB, kNoFourth>;
using WBGR32 = WBytes<kBGR, kFourthZero>;  // a new pixel's fourth byte is 0, deliberately not 255
using WRGB32 = WBytes<kRGB, kFourthZero>;
using WBGR32Kept = WBytes<kBGR, kFourthKept>;  // the source alpha is deliberately not carried over
using WBGR30 = WWords<kBGR, 10>;
using WRGB30 = WWords<kRGB, 10>;
using WBGR36 = WWords<kBGR, 12>;
using WRGB36 = WWords<kRGB, 12>;
using WBGR48 = WWords<kBGR, 16>;
using WRGB48 = WWords<kRGB, 16>;

// ---------------------------------------------------------------- the line loop

// The reverse-lines rule, decided once: source line i goes to destination line i, or to height-1-i
// (starting at the last destination line and stepping backwards). Nothing happens for a height below 1.
template <class F>
inline void ForEachLine(uint32_t dwHeight, const uint8_t* pSrc, uint8_t* pDst, uint32_t dwSrcLineInc,
                        uint32_t dwDstLineInc, bool bReverseLines, F lineFn)
{
    const int32_t iHeight = int32_t(dwHeight);
    if (iHeight < 1) return;
    ptrdiff_t dstStep = ptrdiff_t(dwDstLineInc);
    if (bReverseLines) {
        pDst += dstStep * (iHeight - 1);
        dstStep = -dstStep;
    }
    for (int32_t y = 0; y < iHeight; ++y, pSrc += dwSrcLineInc, pDst += dstStep) lineFn(pSrc, pDst);
}

// Groups g0..g1-1 of one line (a vector variant converts the leading groups and hands the rest here).
template <class R, class W>
inline void ConvertGroups(R& rd, const W& wr, uint32_t g0, uint32_t g1, const uint8_t* __restrict pSrc,
                          uint8_t* __restrict pDst)
{
    // Addresses advance by pointer steps, which the vectoriser follows more easily than products.
    pSrc += size_t(g0) * R::kBytes;
    pDst += size_t(g0) * R::kPixels * W::kBytes;
    for (size_t g = g0; g < g1; ++g, pSrc += R::kBytes, pDst += R::kPixels * W::kBytes) {
        const auto px = rd.Read(pSrc);
        for (uint32_t k = 0; k < R::kPixels; ++k) wr.Write(pDst + k * W::kBytes, px[k]);
    }
}

// The pixels of the group cut short by the end of a line of width pixels, if there is one.
template <class R, class W>
inline void ConvertCutGroup(const R& rd, const W& wr, uint32_t dwWidth, const uint8_t* pSrc, uint8_t* pDst)
{
    const uint32_t groups = dwWidth / R::kPixels;
    if (groups * R::kPixels == dwWidth) return;
    const auto px = rd.ReadFirst(pSrc + size_t(groups) * R::kBytes);
    for (uint32_t k = groups * R::kPixels; k < dwWidth; ++k) wr.Write(pDst + size_t(k) * W::kBytes, px[k % R::kPixels]);
}

// One line of width pixels: whole groups only, unless kTail asks for the pixels of a group cut short.
template <bool kTail = false, class R, class W>
inline void ConvertLine(R& rd, const W& wr, uint32_t dwWidth, const uint8_t* pSrc, uint8_t* pDst)
{
    rd.StartLine();
    ConvertGroups(rd, wr, 0, dwWidth / R::kPixels, pSrc, pDst);
    if constexpr (kTail) ConvertCutGroup(rd, wr, dwWidth, pSrc, pDst);
}

// A whole image: the line rule around the pixel loop.
template <bool kTail = false, class R, class W>
inline void ConvertImage(uint32_t dwWidth, uint32_t dwHeight, const uint8_t* pSrc, uint8_t* pDst, uint32_t dwSrcLineInc,
                         uint32_t dwDstLineInc, bool bReverseLines, R rd, W wr)
{
    ForEachLine(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                [&](const uint8_t* pS, uint8_t* pD) { ConvertLine<kTail>(rd, wr, dwWidth, pS, pD); });
}

}  // namespace convert
