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

// Colour correction of 8-bit pixels of iStep bytes (red at byte iRed), 16 at a time, a pixel in each
// 32-bit lane. Each weight is split as c = 128 x h + l (l = c & 127), and three pmaddwd give the
// scalar sum modulo 2^32: the words (byte 0 x 128, byte 2 x 128) by (h0, h2), (byte 0, byte 2) by
// (l0, l2) and (byte 1 x 128, byte 1) by (h1, l1); exact while every h fits 16 bits (entries within
// about +-64000; else nothing is done here and 0 returned). >> 16 is arithmetic and the saturating packs
// clamp to 0..255. Three-byte pixels are read 8 bytes (two pixels) at a time and written 8 bytes at a
// time, in order, each store's last two bytes rewritten by the next; the last two pixels are written
// 4 bytes each, the fourth byte as read (the next pixel's first), so a block runs only while a pixel
// follows it. Returns the pixels done.
template <class TIsa, int iStep>
uint32_t CorrectBytesSse2(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwWidth, const int32_t* c, int iRed)
{
    for (int i = 0; i < 9; ++i)
        if ((c[i] >> 7) != int16_t(c[i] >> 7)) return 0;
    auto pair = [](int32_t lo, int32_t hi) {
        return _mm_set1_epi32(int32_t((uint32_t(lo) & 0xFFFF) | uint32_t(hi) << 16));
    };
    // Matrix row (output) and column (input) of byte position o.
    auto index = [&](int o) { return o == iRed ? 0 : o == 1 ? 1 : 2; };
    __m128i hi02[3], lo02[3], hilo1[3];
    for (int o = 0; o < 3; ++o) {
        const int32_t* w = c + 3 * index(o);
        const int32_t w0 = w[index(0)], w1 = w[index(1)], w2 = w[index(2)];
        hi02[o] = pair(w0 >> 7, w2 >> 7), lo02[o] = pair(w0 & 127, w2 & 127);
        hilo1[o] = pair(w1 >> 7, w1 & 127);
    }
    auto load = [](const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); };
    const __m128i zero = _mm_setzero_si128(), lowBytes = _mm_set1_epi32(0x00FF00FF), byte1 = _mm_set1_epi32(0xFF00);
    const __m128i fourth = _mm_set1_epi32(int32_t(0xFF000000)), even = _mm_set_epi32(0, -1, 0, -1);
    const __m128i low3 = _mm_set1_epi64x(0xFFFFFF), next3 = _mm_set1_epi64x(0xFFFFFF000000);
    // 4 pixels from p in 32-bit lanes: with three bytes, two 8-byte halves, the odd pixel of each moved
    // up by a byte.
    auto lanes = [&](const uint8_t* p) {
        if constexpr (iStep == 4) {
            return load(p);
        } else {
            const __m128i u = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                                                 _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + 6)));
            return _mm_or_si128(_mm_and_si128(even, u), _mm_andnot_si128(even, _mm_slli_epi64(u, 8)));
        }
    };
    // The sums of byte position o of 4 pixels, >> 16.
    auto sums = [&](__m128i v, __m128i out[3]) {
        const __m128i b1 = _mm_and_si128(v, byte1), x02 = _mm_and_si128(v, lowBytes);
        const __m128i x02s = _mm_slli_epi16(x02, 7), x1 = _mm_or_si128(_mm_srli_epi32(b1, 1), _mm_slli_epi32(b1, 8));
        for (int o = 0; o < 3; ++o) {
            const __m128i s02 = _mm_add_epi32(_mm_madd_epi16(x02s, hi02[o]), _mm_madd_epi16(x02, lo02[o]));
            out[o] = _mm_srai_epi32(_mm_add_epi32(s02, _mm_madd_epi16(x1, hilo1[o])), 16);
        }
    };
    uint32_t x = 0;
    for (; x + 16 + (iStep == 3) <= dwWidth; x += 16) {
        const uint8_t* p = pSrc + size_t(x) * iStep;
        uint8_t* q = pDst + size_t(x) * iStep;
        const __m128i v[4] = {lanes(p), lanes(p + 4 * iStep), lanes(p + 8 * iStep), lanes(p + 12 * iStep)};
        __m128i words[3][2];  // byte position o of pixels 0-7 and 8-15, saturated to 16 bits
        for (int h = 0; h < 2; ++h) {
            __m128i s0[3], s1[3];
            sums(v[2 * h], s0), sums(v[2 * h + 1], s1);
            for (int o = 0; o < 3; ++o) words[o][h] = _mm_packs_epi32(s0[o], s1[o]);
        }
        const __m128i b0 = _mm_packus_epi16(words[0][0], words[0][1]), b1 = _mm_packus_epi16(words[1][0], words[1][1]);
        const __m128i b2 = _mm_packus_epi16(words[2][0], words[2][1]);
        const __m128i pairs[2] = {_mm_unpacklo_epi8(b0, b1), _mm_unpackhi_epi8(b0, b1)};
        const __m128i thirds[2] = {_mm_unpacklo_epi8(b2, zero), _mm_unpackhi_epi8(b2, zero)};
        __m128i out[4];  // pixels 4g to 4g + 3, the fourth byte 0
        for (int h = 0; h < 2; ++h) {
            out[2 * h] = _mm_unpacklo_epi16(pairs[h], thirds[h]);
            out[2 * h + 1] = _mm_unpackhi_epi16(pairs[h], thirds[h]);
        }
        if constexpr (iStep == 4) {
            // The destination's own fourth bytes, all read before the first store.
            __m128i kept[4];
            for (int g = 0; g < 4; ++g) kept[g] = _mm_and_si128(load(q + 16 * g), fourth);
            for (int g = 0; g < 4; ++g)
                _mm_storeu_si128(reinterpret_cast<__m128i*>(q + 16 * g), _mm_or_si128(out[g], kept[g]));
        } else {
            for (int g = 0; g < 4; ++g) {
                // Two pixels of three bytes at the bottom of each 64-bit half.
                const __m128i packed =
                    _mm_or_si128(_mm_and_si128(out[g], low3), _mm_and_si128(_mm_srli_epi64(out[g], 8), next3));
                _mm_storel_epi64(reinterpret_cast<__m128i*>(q + 12 * g), packed);
                if (g < 3) _mm_storeh_pi(reinterpret_cast<__m64*>(q + 12 * g + 6), _mm_castsi128_ps(packed));
            }
            const __m128i last = _mm_or_si128(out[3], _mm_and_si128(v[3], fourth));
            const int32_t aiLast[2] = {_mm_cvtsi128_si32(_mm_srli_si128(last, 8)),
                                       _mm_cvtsi128_si32(_mm_srli_si128(last, 12))};
            std::memcpy(q + 42, &aiLast[0], 4);
            std::memcpy(q + 45, &aiLast[1], 4);
        }
    }
    return x;
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
