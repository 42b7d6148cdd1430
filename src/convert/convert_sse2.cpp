// convert_sse2.cpp: the line converters built with SSE2 alone (part of every x86-64 processor, so no
// options are needed; they still run only behind the SSE2 switch).
#include <emmintrin.h>

#include <cstring>

#include "convert/convert_simd.h"

namespace convert::sse2 {
namespace {

template <bool kStream>
inline void Store(uint8_t* p, __m128i v)
{
    if constexpr (kStream)
        _mm_stream_si128(reinterpret_cast<__m128i*>(p), v);
    else
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

inline __m128i Load(const uint8_t* p)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// Whole steps of S::kPixels pixels, then the rest of the line by the scalar member's reader and writer.
template <class S, class R, class W>
struct KSteps {
    uint32_t dwWidth;
    S step;
    R rd;
    W wr;
    template <bool kStream>
    void Line(const uint8_t* pS, uint8_t* pD) const
    {
        const uint32_t steps = dwWidth / S::kPixels;
        const uint8_t* s = pS;
        uint8_t* d = pD;
        for (uint32_t i = 0; i < steps; ++i, s += S::kInBytes, d += S::kOutBytes) step.template Run<kStream>(s, d);
        R r = rd;
        ConvertGroups(r, wr, steps * S::kPixels / R::kPixels, dwWidth / R::kPixels, pS, pD);
    }
};

// The smaller line increment in bytes, 64 at a time, then 16 at a time (a streamed line keeps streaming up
// to its last 16 bytes), the rest by memcpy as the scalar member does.
struct KCopy {
    size_t bytes;
    template <bool kStream>
    void Line(const uint8_t* pS, uint8_t* pD) const
    {
        size_t x = 0;
        for (; x + 64 <= bytes; x += 64) {
            const __m128i a = Load(pS + x), b = Load(pS + x + 16), c = Load(pS + x + 32), d = Load(pS + x + 48);
            Store<kStream>(pD + x, a);
            Store<kStream>(pD + x + 16, b);
            Store<kStream>(pD + x + 32, c);
            Store<kStream>(pD + x + 48, d);
        }
        for (; x + 16 <= bytes; x += 16) Store<kStream>(pD + x, Load(pS + x));
        std::memcpy(pD + x, pS + x, bytes - x);
    }
};

// 16 grey bytes to 16 pixels g, g, g, 0.
struct SMono8ToBGR32 {
    static constexpr uint32_t kPixels = 16, kInBytes = 16, kOutBytes = 64;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        const __m128i g = Load(s), zero = _mm_setzero_si128();
        const __m128i gg0 = _mm_unpacklo_epi8(g, g), gg1 = _mm_unpackhi_epi8(g, g);
        const __m128i g00 = _mm_unpacklo_epi8(g, zero), g01 = _mm_unpackhi_epi8(g, zero);
        Store<kStream>(d, _mm_unpacklo_epi16(gg0, g00));
        Store<kStream>(d + 16, _mm_unpackhi_epi16(gg0, g00));
        Store<kStream>(d + 32, _mm_unpacklo_epi16(gg1, g01));
        Store<kStream>(d + 48, _mm_unpackhi_epi16(gg1, g01));
    }
};

// 4 pixels R, G, B, A to B, G, R and the destination's own fourth byte.
struct SRGB32ToBGR32 {
    static constexpr uint32_t kPixels = 4, kInBytes = 16, kOutBytes = 16;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        const __m128i v = Load(s), low = _mm_set1_epi32(0xFF), green = _mm_set1_epi32(0xFF00);
        const __m128i rb =
            _mm_or_si128(_mm_and_si128(_mm_srli_epi32(v, 16), low), _mm_slli_epi32(_mm_and_si128(v, low), 16));
        const __m128i kept = _mm_and_si128(Load(d), _mm_set1_epi32(int32_t(0xFF000000)));
        Store<kStream>(d, _mm_or_si128(_mm_or_si128(rb, _mm_and_si128(v, green)), kept));
    }
};

// 16 words masked to their used bits and shifted down to 8.
struct SMonoWordToMono8 {
    static constexpr uint32_t kPixels = 16, kInBytes = 32, kOutBytes = 16;
    uint32_t dwBits;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        const __m128i mask = _mm_set1_epi16(int16_t(0xFFFFu >> (16 - dwBits))),
                      shift = _mm_cvtsi32_si128(int(dwBits - 8));
        const __m128i a = _mm_srl_epi16(_mm_and_si128(Load(s), mask), shift);
        const __m128i b = _mm_srl_epi16(_mm_and_si128(Load(s + 16), mask), shift);
        Store<kStream>(d, _mm_packus_epi16(a, b));
    }
};

// B, G, R words of the 8 pixels of 16 bytes Y0 Cb Y1 Cr. With Cb' = Cb - 128 and Cr' = Cr - 128 the
// colour sums are split so that every product fits a word: (256 Y + 359 Cr' + 128) >> 8 =
// Y + Cr' + ((103 Cr' + 128) >> 8), (256 Y - 88 Cb' - 183 Cr' + 128) >> 8 = Y - Cr' + ((73 Cr' - 88 Cb'
// + 128) >> 8) and (256 Y + 454 Cb' + 128) >> 8 = Y + 2 Cb' + ((128 - 58 Cb') >> 8), exactly, because the
// parts taken out are multiples of 256. Saturating packs then clamp to 0..255.
inline void YCbCrToWords(__m128i s, __m128i& b, __m128i& g, __m128i& r)
{
    const __m128i words = _mm_set1_epi32(0xFFFF), c128 = _mm_set1_epi16(128);
    const __m128i y = _mm_and_si128(s, _mm_set1_epi16(0xFF)), c = _mm_srli_epi16(s, 8);
    const __m128i cb = _mm_sub_epi16(_mm_or_si128(_mm_and_si128(c, words), _mm_slli_epi32(c, 16)), c128);
    const __m128i cr = _mm_sub_epi16(_mm_or_si128(_mm_srli_epi32(c, 16), _mm_andnot_si128(words, c)), c128);
    const __m128i rp = _mm_srai_epi16(_mm_add_epi16(_mm_mullo_epi16(cr, _mm_set1_epi16(103)), c128), 8);
    const __m128i gp = _mm_srai_epi16(
        _mm_add_epi16(_mm_add_epi16(_mm_mullo_epi16(cr, _mm_set1_epi16(73)), _mm_mullo_epi16(cb, _mm_set1_epi16(-88))),
                      c128),
        8);
    const __m128i bp = _mm_srai_epi16(_mm_add_epi16(_mm_mullo_epi16(cb, _mm_set1_epi16(-58)), c128), 8);
    r = _mm_add_epi16(_mm_add_epi16(y, cr), rp);
    g = _mm_add_epi16(_mm_sub_epi16(y, cr), gp);
    b = _mm_add_epi16(_mm_add_epi16(y, _mm_add_epi16(cb, cb)), bp);
}

// 4 pixels of 4 bytes whose fourth byte is 0 to 12 bytes at the bottom of a vector.
inline __m128i PackBytes3(__m128i v)
{
    const __m128i q = _mm_or_si128(_mm_and_si128(v, _mm_set1_epi64x(0xFFFFFF)),
                                   _mm_and_si128(_mm_srli_epi64(v, 8), _mm_set1_epi64x(0xFFFFFF000000)));
    return _mm_or_si128(_mm_and_si128(q, _mm_set_epi64x(0, 0xFFFFFFFFFFFF)),
                        _mm_and_si128(_mm_srli_si128(q, 2), _mm_set_epi64x(0xFFFFFFFF, int64_t(0xFFFF000000000000))));
}

// 16 pixels of YCbCr 4:2:2 to 3 or 4 bytes each in the order O, the fourth byte 0.
template <TOrder O, uint32_t kPixelBytes>
struct SYCbCr422 {
    static constexpr uint32_t kPixels = 16, kInBytes = 32, kOutBytes = 16 * kPixelBytes;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        __m128i b0, g0, r0, b1, g1, r1;
        YCbCrToWords(Load(s), b0, g0, r0);
        YCbCrToWords(Load(s + 16), b1, g1, r1);
        const __m128i b = _mm_packus_epi16(b0, b1), g = _mm_packus_epi16(g0, g1), r = _mm_packus_epi16(r0, r1);
        const __m128i first = O == kBGR ? b : r, third = O == kBGR ? r : b, zero = _mm_setzero_si128();
        const __m128i fg0 = _mm_unpacklo_epi8(first, g), fg1 = _mm_unpackhi_epi8(first, g);
        const __m128i t0 = _mm_unpacklo_epi8(third, zero), t1 = _mm_unpackhi_epi8(third, zero);
        const __m128i p0 = _mm_unpacklo_epi16(fg0, t0), p1 = _mm_unpackhi_epi16(fg0, t0);
        const __m128i p2 = _mm_unpacklo_epi16(fg1, t1), p3 = _mm_unpackhi_epi16(fg1, t1);
        if constexpr (kPixelBytes == 4) {
            Store<kStream>(d, p0);
            Store<kStream>(d + 16, p1);
            Store<kStream>(d + 32, p2);
            Store<kStream>(d + 48, p3);
        } else {
            const __m128i a = PackBytes3(p0), e = PackBytes3(p1), f = PackBytes3(p2), h = PackBytes3(p3);
            Store<kStream>(d, _mm_or_si128(a, _mm_slli_si128(e, 12)));
            Store<kStream>(d + 16, _mm_or_si128(_mm_srli_si128(e, 4), _mm_slli_si128(f, 8)));
            Store<kStream>(d + 32, _mm_or_si128(_mm_srli_si128(f, 8), _mm_slli_si128(h, 4)));
        }
    }
};

template <class S, class R, class W>
int Run(KAIP_LINE_PARAMS, bool bReverseLines, S step, R rd, W wr)
{
    return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                    KSteps<S, R, W>{dwWidth, step, rd, wr});
}

}  // namespace

#define KAIP_LINE_ARGS dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc

int CopyBitmapData(KAIP_LINE_PARAMS, bool bReverseLines)
{
    (void)dwWidth;
    return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                    KCopy{dwSrcLineInc < dwDstLineInc ? dwSrcLineInc : dwDstLineInc});
}

int Convert_Mono8_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run(KAIP_LINE_ARGS, bReverseLines, SMono8ToBGR32{}, RMono8{}, WBGR32{});
}

int Convert_RGB32_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run(KAIP_LINE_ARGS, bReverseLines, SRGB32ToBGR32{}, RRGB32{}, WBGR32Kept{});
}

int Convert_MonoWord_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    return Run(KAIP_LINE_ARGS, bReverseLines, SMonoWordToMono8{dwSrcBits}, RMonoWord{dwSrcBits}, WMono8{});
}

int Convert_YCbCr422_8_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run(KAIP_LINE_ARGS, bReverseLines, SYCbCr422<kBGR, 3>{}, RYCbCr422_8{}, WBGR24{});
}

int Convert_YCbCr422_8_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run(KAIP_LINE_ARGS, bReverseLines, SYCbCr422<kRGB, 3>{}, RYCbCr422_8{}, WRGB24{});
}

int Convert_YCbCr422_8_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run(KAIP_LINE_ARGS, bReverseLines, SYCbCr422<kBGR, 4>{}, RYCbCr422_8{}, WBGR32{});
}

int Convert_YCbCr422_8_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run(KAIP_LINE_ARGS, bReverseLines, SYCbCr422<kRGB, 4>{}, RYCbCr422_8{}, WRGB32{});
}

}  // namespace convert::sse2
