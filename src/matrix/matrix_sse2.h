// matrix_sse2.h: the registers of the 8-bit matrix kernels (matrix_lines.h): their operations for one
// register width, and the 128-bit ones in SSE2 instructions.
#pragma once

#include <emmintrin.h>
#include <xmmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

// The operations Filter3x3Bytes asks of a register type T, from the intrinsics of its width: prefix
// mm (_mm, _mm256) and whole-register suffix si (si128, si256). Unpacks and packs work within each
// 128-bit half of a wider register, so the packs undo the unpacks' order of the samples.
#define KAIP_MATRIX_REGISTER_OPS(mm, si)                                        \
    static T Load(const uint8_t* p)                                             \
    {                                                                           \
        return mm##_loadu_##si(reinterpret_cast<const T*>(p));                  \
    }                                                                           \
    static void Store(uint8_t* p, T v)                                          \
    {                                                                           \
        mm##_storeu_##si(reinterpret_cast<T*>(p), v);                           \
    }                                                                           \
    static T Zero()                                                             \
    {                                                                           \
        return mm##_setzero_##si();                                             \
    }                                                                           \
    static T Set32(int32_t v)                                                   \
    {                                                                           \
        return mm##_set1_epi32(v);                                              \
    }                                                                           \
    static T Set16(int16_t v)                                                   \
    {                                                                           \
        return mm##_set1_epi16(v);                                              \
    }                                                                           \
    static T UnpackLo8(T a, T b)                                                \
    {                                                                           \
        return mm##_unpacklo_epi8(a, b);                                        \
    }                                                                           \
    static T UnpackHi8(T a, T b)                                                \
    {                                                                           \
        return mm##_unpackhi_epi8(a, b);                                        \
    }                                                                           \
    static T Madd(T a, T b)                                                     \
    {                                                                           \
        return mm##_madd_epi16(a, b);                                           \
    }                                                                           \
    static T Add32(T a, T b)                                                    \
    {                                                                           \
        return mm##_add_epi32(a, b);                                            \
    }                                                                           \
    static T Sub32(T a, T b)                                                    \
    {                                                                           \
        return mm##_sub_epi32(a, b);                                            \
    }                                                                           \
    static T Xor(T a, T b)                                                      \
    {                                                                           \
        return mm##_xor_##si(a, b);                                             \
    }                                                                           \
    static T CmpGt32(T a, T b)                                                  \
    {                                                                           \
        return mm##_cmpgt_epi32(a, b);                                          \
    }                                                                           \
    template <int n>                                                            \
    static T Srai32(T a)                                                        \
    {                                                                           \
        return mm##_srai_epi32(a, n);                                           \
    }                                                                           \
    template <int n>                                                            \
    static T Srli16(T a)                                                        \
    {                                                                           \
        return mm##_srli_epi16(a, n);                                           \
    }                                                                           \
    static T Packs32(T a, T b)                                                  \
    {                                                                           \
        return mm##_packs_epi32(a, b);                                          \
    }                                                                           \
    static T Packs16(T a, T b)                                                  \
    {                                                                           \
        return mm##_packs_epi16(a, b);                                          \
    }                                                                           \
    static T PackUs16(T a, T b)                                                 \
    {                                                                           \
        return mm##_packus_epi16(a, b);                                         \
    }                                                                           \
    static T Max16(T a, T b)                                                    \
    {                                                                           \
        return mm##_max_epi16(a, b);                                            \
    }                                                                           \
    static T MulhiU16(T a, T b)                                                 \
    {                                                                           \
        return mm##_mulhi_epu16(a, b);                                          \
    }                                                                           \
    /* The bits of a where mask is set, of b elsewhere. */                      \
    static T Select(T mask, T a, T b)                                           \
    {                                                                           \
        return mm##_or_##si(mm##_and_##si(mask, a), mm##_andnot_##si(mask, b)); \
    }

// 128-bit registers. Templated on the instruction-set tag of the including file, so that each file's
// copy is compiled with that file's options.
template <class TIsa>
struct TVec128 {
    using T = __m128i;
    static constexpr size_t kBytes = 16;
    KAIP_MATRIX_REGISTER_OPS(_mm, si128)
};

// Colour correction of 8-bit pixels of iStep bytes (red at byte iRed), 8 at a time, a pixel in each
// 32-bit lane; the pmaddwd sums equal the scalar ones modulo 2^32, >> 16 is arithmetic and the
// saturating packs clamp to 0..255. With bPairs (every weight off the diagonal fits 16 bits, and each
// on it less 65536: the saturation matrices' case), output o is two pmaddwd, the words (byte 0,
// byte 2) and (byte 1, byte 1 x 128) by 16-bit weights, plus its own byte x 65536 taken from the
// lanes themselves (byte 0 + byte 2 x 65536 is x02 as a 32-bit number, its weight on byte 0 one less).
// Else each weight is split as c = 128 x h + l (l = c & 127) and three pmaddwd take the words (byte 0
// x 128, byte 2 x 128) by (h0, h2), (byte 0, byte 2) by (l0, l2) and (byte 1 x 128, byte 1) by (h1, l1).
// Three-byte pixels are read 4 bytes each and written 8 bytes (two pixels and two more) at a time, in
// order, each store's last two bytes rewritten by the next; the last store's two extra bytes are the
// source's own (the next pixel's first two, read before any store), so a block runs only while a pixel
// follows it. Returns the pixels done.
template <class TIsa, int iStep, bool bPairs>
uint32_t CorrectBytesSse2(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwWidth, const int32_t* c, int iRed)
{
    auto pair = [](int32_t lo, int32_t hi) {
        return _mm_set1_epi32(int32_t((uint32_t(lo) & 0xFFFF) | uint32_t(hi) << 16));
    };
    // Matrix row (output) and column (input) of byte position o.
    auto index = [&](int o) { return o == iRed ? 0 : o == 1 ? 1 : 2; };
    __m128i w02[3], w02s[3], w1[3];
    for (int o = 0; o < 3; ++o) {
        const int32_t* w = c + 3 * index(o);
        const int32_t c0 = w[index(0)], c1 = w[index(1)], c2 = w[index(2)];
        if constexpr (bPairs) {
            w02[o] = pair(c0 - (o == 0 ? 65536 : o == 2), c2 - (o == 2 ? 65536 : 0));
            w1[o] = pair(c1 & 127, c1 >> 7);
        } else {
            w02s[o] = pair(c0 >> 7, c2 >> 7), w02[o] = pair(c0 & 127, c2 & 127), w1[o] = pair(c1 >> 7, c1 & 127);
        }
    }
    auto load = [](const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); };
    const __m128i zero = _mm_setzero_si128(), lowBytes = _mm_set1_epi32(0x00FF00FF), byte1 = _mm_set1_epi32(0xFF00);
    const __m128i even = _mm_set_epi32(0, -1, 0, -1);
    // The sums of byte position o of 4 pixels (their bytes 0 to 2 in v's 32-bit lanes), >> 16.
    auto sums = [&](__m128i v, __m128i out[3]) {
        const __m128i b1 = _mm_and_si128(v, byte1), x02 = _mm_and_si128(v, lowBytes);
        if constexpr (bPairs) {
            // The words (byte 1, byte 1 x 128) and, as 32-bit lanes, byte 0 x 65536 and x02 itself,
            // byte 0 + byte 2 x 65536.
            const __m128i x1 = _mm_or_si128(_mm_srli_epi32(b1, 8), _mm_slli_epi32(b1, 15));
            const __m128i extra[3] = {_mm_slli_epi32(x02, 16), zero, x02};
            for (int o = 0; o < 3; ++o) {
                __m128i s = _mm_add_epi32(_mm_madd_epi16(x02, w02[o]), _mm_madd_epi16(x1, w1[o]));
                if (o != 1) s = _mm_add_epi32(s, extra[o]);
                out[o] = _mm_srai_epi32(s, 16);
            }
        } else {
            const __m128i x02s = _mm_slli_epi16(x02, 7),
                          x1 = _mm_or_si128(_mm_srli_epi32(b1, 1), _mm_slli_epi32(b1, 8));
            for (int o = 0; o < 3; ++o) {
                const __m128i s02 = _mm_add_epi32(_mm_madd_epi16(x02s, w02s[o]), _mm_madd_epi16(x02, w02[o]));
                out[o] = _mm_srai_epi32(_mm_add_epi32(s02, _mm_madd_epi16(x1, w1[o])), 16);
            }
        }
    };
    // 4 pixels from p in 32-bit lanes; three-byte pixels each with the next one's first byte, from
    // 4-byte loads.
    auto load4 = [](const uint8_t* p) {
        int32_t i;
        std::memcpy(&i, p, 4);
        return _mm_cvtsi32_si128(i);
    };
    auto lanes = [&](const uint8_t* p) {
        if constexpr (iStep == 4) return load(p);
        return _mm_unpacklo_epi64(_mm_unpacklo_epi32(load4(p), load4(p + 3)),
                                  _mm_unpacklo_epi32(load4(p + 6), load4(p + 9)));
    };
    uint32_t x = 0;
    for (; x + 8 + (iStep == 3) <= dwWidth; x += 8) {
        const uint8_t* p = pSrc + size_t(x) * iStep;
        uint8_t* q = pDst + size_t(x) * iStep;
        __m128i s0[3], s1[3];
        sums(lanes(p), s0), sums(lanes(p + 4 * iStep), s1);
        // Byte positions 0 and 1 of the 8 pixels clamped to bytes, then position 2 as words.
        const __m128i b01 = _mm_packus_epi16(_mm_packs_epi32(s0[0], s1[0]), _mm_packs_epi32(s0[1], s1[1]));
        const __m128i w2 = _mm_packs_epi32(s0[2], s1[2]);
        const __m128i pairs = _mm_unpacklo_epi8(b01, _mm_srli_si128(b01, 8));
        const __m128i thirds = _mm_unpacklo_epi8(_mm_packus_epi16(w2, w2), zero);
        // Pixels 0 to 3 and 4 to 7, the fourth byte 0.
        const __m128i out[2] = {_mm_unpacklo_epi16(pairs, thirds), _mm_unpackhi_epi16(pairs, thirds)};
        if constexpr (iStep == 4) {
            // The destination's own fourth bytes, both read before the first store.
            const __m128i fourth = _mm_set1_epi32(int32_t(0xFF000000));
            const __m128i kept[2] = {_mm_and_si128(load(q), fourth), _mm_and_si128(load(q + 16), fourth)};
            for (int g = 0; g < 2; ++g)
                _mm_storeu_si128(reinterpret_cast<__m128i*>(q + 16 * g), _mm_or_si128(out[g], kept[g]));
        } else {
            // The next pixel's first two bytes as read (only those: the pixel may end the buffer), for
            // the last store's top.
            uint16_t wTail;
            std::memcpy(&wTail, p + 24, 2);
            const __m128i tail = _mm_insert_epi16(zero, wTail, 7);
            for (int g = 0; g < 2; ++g) {
                // Two pixels of three bytes at the bottom of each 64-bit half; the odd pixel's fourth
                // byte (0) moves down with it, so the half's top two bytes are 0.
                __m128i packed =
                    _mm_or_si128(_mm_and_si128(even, out[g]), _mm_srli_epi64(_mm_andnot_si128(even, out[g]), 8));
                if (g == 1) packed = _mm_or_si128(packed, tail);
                _mm_storel_epi64(reinterpret_cast<__m128i*>(q + 12 * g), packed);
                _mm_storeh_pi(reinterpret_cast<__m64*>(q + 12 * g + 6), _mm_castsi128_ps(packed));
            }
        }
    }
    return x;
}

// The variant for the weights c: pairs where they allow, else the split weights while every h fits 16
// bits (entries within about +-64000); else 0 pixels done.
template <class TIsa, int iStep>
uint32_t CorrectBytesSse2(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwWidth, const int32_t* c, int iRed)
{
    auto fits = [](int32_t v) { return v == int16_t(v); };
    bool bPairs = true, bSplit = true;
    for (int i = 0; i < 9; ++i) {
        bPairs = bPairs && (i % 4 == 0 ? fits(c[i] - 65536) : fits(c[i]) && fits(c[i] - 1));
        bSplit = bSplit && fits(c[i] >> 7);
    }
    if (bPairs) return CorrectBytesSse2<TIsa, iStep, true>(pSrc, pDst, dwWidth, c, iRed);
    return bSplit ? CorrectBytesSse2<TIsa, iStep, false>(pSrc, pDst, dwWidth, c, iRed) : 0;
}

// What a tag built for 128-bit registers brings (matrix_sse2.cpp, matrix_sse4.cpp): the registers of
// Filter3x3Bytes and the correction of 8-bit pixels.
template <class TIsa>
struct TSse2Kernels {
    using TVector = TVec128<TIsa>;
    template <int iStep>
    static uint32_t CorrectBytes(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwWidth, const int32_t* c, int iRed)
    {
        return CorrectBytesSse2<TIsa, iStep>(pSrc, pDst, dwWidth, c, iRed);
    }
};
