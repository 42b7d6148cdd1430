// matrix_sse2.h: the registers of the 8-bit matrix kernels (matrix_lines.h): their operations for one
// register width, and the 128-bit ones in SSE2 instructions.
#pragma once

#include <emmintrin.h>

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
// 32-bit lane. Each weight is split as c = 128 x h + l (l = c & 127), and three pmaddwd give the
// scalar sum modulo 2^32: the words (byte 0 x 128, byte 2 x 128) by (h0, h2), (byte 0, byte 2) by
// (l0, l2) and (byte 1 x 128, byte 1) by (h1, l1); exact while every h fits 16 bits (entries within
// about +-64000; else nothing is done here and 0 returned). >> 16 is arithmetic and the saturating packs
// clamp to 0..255. Three-byte pixels are read and written 4 bytes at a time, in order: the fourth
// byte written is the next pixel's first as read, so a block runs only while a pixel follows it.
// Returns the pixels done.
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
    auto load = [](const uint8_t* p) {
        if constexpr (iStep == 4) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
        } else {
            auto at = [&](int k) {
                int32_t pixel;
                std::memcpy(&pixel, p + 3 * k, 4);
                return _mm_cvtsi32_si128(pixel);
            };
            return _mm_unpacklo_epi64(_mm_unpacklo_epi32(at(0), at(1)), _mm_unpacklo_epi32(at(2), at(3)));
        }
    };
    const __m128i zero = _mm_setzero_si128(), lowBytes = _mm_set1_epi32(0x00FF00FF), byte1 = _mm_set1_epi32(0xFF00);
    const __m128i fourth = _mm_set1_epi32(int32_t(0xFF000000));
    uint32_t x = 0;
    for (; x + 8 + (iStep == 3) <= dwWidth; x += 8) {
        const uint8_t* p = pSrc + size_t(x) * iStep;
        uint8_t* q = pDst + size_t(x) * iStep;
        const __m128i v[2] = {load(p), load(p + 4 * iStep)};
        __m128i x02[2], x02s[2], x1[2];  // the words (byte 0, byte 2), both x 128, and (byte 1 x 128, byte 1)
        for (int k = 0; k < 2; ++k) {
            const __m128i b1 = _mm_and_si128(v[k], byte1);
            x02[k] = _mm_and_si128(v[k], lowBytes), x02s[k] = _mm_slli_epi16(x02[k], 7);
            x1[k] = _mm_or_si128(_mm_srli_epi32(b1, 1), _mm_slli_epi32(b1, 8));
        }
        __m128i words[3];  // byte position o of the 8 pixels, saturated to 16 bits
        for (int o = 0; o < 3; ++o) {
            __m128i sum[2];
            for (int k = 0; k < 2; ++k) {
                const __m128i s02 = _mm_add_epi32(_mm_madd_epi16(x02s[k], hi02[o]), _mm_madd_epi16(x02[k], lo02[o]));
                sum[k] = _mm_srai_epi32(_mm_add_epi32(s02, _mm_madd_epi16(x1[k], hilo1[o])), 16);
            }
            words[o] = _mm_packs_epi32(sum[0], sum[1]);
        }
        const __m128i bytes01 = _mm_packus_epi16(words[0], words[1]), bytes2 = _mm_packus_epi16(words[2], zero);
        const __m128i pairs01 = _mm_unpacklo_epi8(bytes01, _mm_srli_si128(bytes01, 8));
        const __m128i pairs2 = _mm_unpacklo_epi8(bytes2, zero);
        // The fourth byte: the destination's own with four-byte pixels, the next pixel's as read with three.
        const __m128i keep[2] = {iStep == 4 ? load(q) : v[0], iStep == 4 ? load(q + 16) : v[1]};
        const __m128i out[2] = {_mm_or_si128(_mm_unpacklo_epi16(pairs01, pairs2), _mm_and_si128(keep[0], fourth)),
                                _mm_or_si128(_mm_unpackhi_epi16(pairs01, pairs2), _mm_and_si128(keep[1], fourth))};
        for (int k = 0; k < 2; ++k) {
            if constexpr (iStep == 4) {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(q + 16 * k), out[k]);
            } else {
                __m128i o = out[k];
                for (int i = 0; i < 4; ++i, o = _mm_srli_si128(o, 4)) {
                    const int32_t pixel = _mm_cvtsi128_si32(o);
                    std::memcpy(q + 12 * k + 3 * i, &pixel, 4);
                }
            }
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
