// convert_yuv.h: 4:2:2 and 4:4:4 colour in 16-bit lanes, written once over thin register traits V for the SSE2 and AVX2
// builds. The including file defines KAIP_VECTOR_TARGET (its target attribute, empty for SSE2) and its traits
// first; everything here has internal linkage, so the builds never mix.
#pragma once

#include "convert/convert_simd.h"

namespace convert {
namespace {

// V gives: the register type T; Set16, Zero; UnpackLo8 and UnpackHi8 (bytes of two registers interleaved, per
// lane); on 16-bit lanes Add16, Sub16, AddS16 (signed, saturating), MulLo16, MulHiU16 (the high word of the
// unsigned product), Avg16 (unsigned, rounded up) and Sra16<k>; PackUS16 (the words of two registers to bytes
// with unsigned saturation, in the instruction's own order); Luma<kLumaFirst>(s), the luma of each pixel of a
// register of 4:2:2 as a word, and Chroma<kLumaFirst>(s, u, v), the U and V of each pixel's pair as the high
// byte of a word (luma at the even bytes when kLumaFirst, U before V).

// The colour sums of the coefficient set K at half scale, exact in 16-bit lanes. kY is even, so a channel is
// floor(S / 128) clamped to 0..255 with S = kY / 2 (Y - kYOffset) + floor((C + 128) / 2), C its chroma sum.
// S is split into a luma part P = kY / 2 Y - kLumaOff per pixel and a chroma part D per pair, each within 16
// bits, and one saturating add gives S wherever it matters: a sum pinned at -32768 or 32767 gives 0 or 255
// after the shift and the clamp, as S itself would. The chroma parts come from X << 8 by the high word of unsigned
// products, floor(X m / 256), exactly:
// - red: floor((kRV (V - 128) + 128) / 2) = floor(kRV V / 2) - 64 kRV + 64;
// - green, both coefficients negative: 64 (1 - kGU - kGV) - ceil((-kGU U - kGV V) / 2), the rounded-up
//   halving being the average instruction, exact over 17 bits;
// - blue as red, or, where 128 kBU does not fit a word (YUV's 516), in two equal halves added one after the
//   other: both push the same way, so a first add pinned at a bound stays there as the whole sum would.
// With kY 256 and no offset S / 128 is Y + floor((C + 128) / 256): the luma needs no product and the chroma's
// shift is shared by the pair.
template <class K>
struct TYuvSums {
    static constexpr int32_t kHalfY = K::kY / 2, kBUMul = 128 * K::kBU <= 0xFFFF ? 128 : 64;
    static constexpr bool kSeparable = K::kY == 256 && K::kYOffset == 0, kSplitB = kBUMul == 64;
    static constexpr int32_t kLumaOff = kSeparable || kHalfY * 255 <= 32767 ? 0 : (kHalfY * 255 - 32767 + 1) / 2 * 2;
    static constexpr int32_t kOff = kLumaOff - kHalfY * K::kYOffset;
    static constexpr int32_t kR = 64 - 64 * K::kRV + kOff, kG = 64 * (1 - K::kGU - K::kGV) + kOff;
    static constexpr int32_t kB = kSplitB ? (64 - 64 * K::kBU + kOff) / 2 : 64 - 64 * K::kBU + kOff;

    static constexpr bool Word(int32_t v) { return v >= -32768 && v <= 32767; }
    static constexpr bool Factor(int32_t m) { return m > 0 && m <= 0xFFFF; }
    static_assert(K::kY % 2 == 0 && K::kGU <= 0 && K::kGV <= 0 && !(kSeparable && kSplitB), "the split applies");
    static_assert(!kSplitB || (K::kBU % 4 == 0 && kOff % 2 == 0), "blue halves exactly");
    static_assert(Factor(128 * K::kRV) && Factor(kBUMul * K::kBU) && Factor(-256 * K::kGU) && Factor(-256 * K::kGV),
                  "every factor fits an unsigned word");
    static_assert(Word(-kLumaOff) && Word(kHalfY * 255 - kLumaOff), "the luma part fits a word");
    static_assert(Word(kR) && Word(K::kRV * 255 / 2 + kR) && Word(kG) &&
                      Word(kG - (-K::kGU * 255 - K::kGV * 255 + 1) / 2) && Word(kB) &&
                      Word(K::kBU * 255 * kBUMul / 256 + kB),
                  "every chroma part fits a word");
};

// B, G, R words of the pixels of one register from their luma words and their chroma as high bytes of words, by
// the sums of TYuvSums<K>, before the clamp to 0..255.
template <class V, class K>
KAIP_VECTOR_TARGET inline void YuvWords(typename V::T y, typename V::T u, typename V::T v, typename V::T& b,
                                        typename V::T& g, typename V::T& r)
{
    using T = TYuvSums<K>;
    using R = typename V::T;
    const R dR = V::Add16(V::MulHiU16(v, V::Set16(int16_t(128 * K::kRV))), V::Set16(int16_t(T::kR)));
    const R dB = V::Add16(V::MulHiU16(u, V::Set16(int16_t(T::kBUMul * K::kBU))), V::Set16(int16_t(T::kB)));
    const R gu = V::MulHiU16(u, V::Set16(int16_t(-256 * K::kGU))),
            gv = V::MulHiU16(v, V::Set16(int16_t(-256 * K::kGV)));
    const R dG = V::Sub16(V::Set16(int16_t(T::kG)), V::Avg16(gu, gv));
    if constexpr (T::kSeparable) {
        r = V::Add16(y, V::template Sra16<7>(dR));
        g = V::Add16(y, V::template Sra16<7>(dG));
        b = V::Add16(y, V::template Sra16<7>(dB));
    } else {
        const R p = V::Sub16(V::MulLo16(y, V::Set16(int16_t(T::kHalfY))), V::Set16(int16_t(T::kLumaOff)));
        r = V::template Sra16<7>(V::AddS16(p, dR));
        g = V::template Sra16<7>(V::AddS16(p, dG));
        const R hb = V::AddS16(p, dB);
        b = V::template Sra16<7>(T::kSplitB ? V::AddS16(hb, dB) : hb);
    }
}

// The byte planes of the pixels of two registers of 4:2:2 as the saturating pack orders them, clamped to 0..255.
template <class V, class K, bool kLumaFirst>
KAIP_VECTOR_TARGET inline void YuvPlanes(typename V::T s0, typename V::T s1, typename V::T& b, typename V::T& g,
                                         typename V::T& r)
{
    typename V::T b0, g0, r0, b1, g1, r1, u, v;
    V::template Chroma<kLumaFirst>(s0, u, v);
    YuvWords<V, K>(V::template Luma<kLumaFirst>(s0), u, v, b0, g0, r0);
    V::template Chroma<kLumaFirst>(s1, u, v);
    YuvWords<V, K>(V::template Luma<kLumaFirst>(s1), u, v, b1, g1, r1);
    b = V::PackUS16(b0, b1), g = V::PackUS16(g0, g1), r = V::PackUS16(r0, r1);
}

// The byte planes of the pixels of one register of each of the luma, U and V byte planes (each 16-byte lane in
// its own order), clamped to 0..255.
template <class V, class K>
KAIP_VECTOR_TARGET inline void YuvPlanes444(typename V::T yp, typename V::T up, typename V::T vp, typename V::T& b,
                                            typename V::T& g, typename V::T& r)
{
    const typename V::T z = V::Zero();
    typename V::T b0, g0, r0, b1, g1, r1;
    YuvWords<V, K>(V::UnpackLo8(yp, z), V::UnpackLo8(z, up), V::UnpackLo8(z, vp), b0, g0, r0);
    YuvWords<V, K>(V::UnpackHi8(yp, z), V::UnpackHi8(z, up), V::UnpackHi8(z, vp), b1, g1, r1);
    b = V::PackUS16(b0, b1), g = V::PackUS16(g0, g1), r = V::PackUS16(r0, r1);
}

// The coefficients of a 4:4:4 reader, and where it finds luma, U and V among a pixel's three bytes.
template <class R>
struct TLayout444;
template <>
struct TLayout444<RYuv444> {
    using K = CYuvCoefficients;
    static constexpr int kY = 1, kU = 0, kV = 2;
};
template <>
struct TLayout444<RYCbCr444> {
    using K = CYCbCrCoefficients;
    static constexpr int kY = 0, kU = 1, kV = 2;
};

// A 4:1:1 line: steps of S, each given the V of the four pixels before it (128 at the line start), then the rest
// by the scalar reader R holding the V of the last group the steps converted.
template <class S, class R, class W>
struct KYuv411 {
    uint32_t dwWidth;
    template <bool kStream>
    KAIP_VECTOR_TARGET void Line(const uint8_t* pS, uint8_t* pD) const
    {
        const uint32_t covered = dwWidth / S::kPixels * S::kPixels;
        for (uint32_t x = 0; x < covered; x += S::kPixels) {
            const uint8_t* s = pS + x / 4 * 6;
            S{}.template Run<kStream>(s, pD + x * W::kBytes, x ? s[int(R::kChroma) - 3] : 128u);
        }
        R rd;
        rd.iV = covered ? pS[covered / 4 * 6 - 3 + R::kChroma] : 128;
        ConvertGroups(rd, W{}, covered / 4, dwWidth / 4, pS, pD);
    }
};

}  // namespace
}  // namespace convert

// The 4:1:1 colour converters (name, scalar reader and writer) and, in a vector file next to its step SYuv411,
// the entry point of one of them.
#define KAIP_YUV411_CONVERTERS(X)                           \
    X(Convert_Yuv411_to_BGR24, RYuv411, WBGR24)             \
    X(Convert_Yuv411_to_RGB24, RYuv411, WRGB24)             \
    X(Convert_Yuv411_to_BGR32, RYuv411, WBGR32)             \
    X(Convert_Yuv411_to_RGB32, RYuv411, WRGB32)             \
    X(Convert_Yuv411YYuYYv_to_BGR24, RYuv411YYuYYv, WBGR24) \
    X(Convert_Yuv411YYuYYv_to_RGB24, RYuv411YYuYYv, WRGB24) \
    X(Convert_Yuv411YYuYYv_to_BGR32, RYuv411YYuYYv, WBGR32) \
    X(Convert_Yuv411YYuYYv_to_RGB32, RYuv411YYuYYv, WRGB32)
#define KAIP_DEFINE_YUV411_CONVERTER(name, R, W)                                                       \
    int name(KAIP_LINE_PARAMS, bool bReverseLines)                                                     \
    {                                                                                                  \
        return RunLines<kNeverStream>(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, \
                                      KYuv411<SYuv411<R, W>, R, W>{dwWidth});                          \
    }
