// matrix_sse2.h: the registers of the 8-bit matrix kernels (matrix_lines.h): their operations for one
// register width, and the 128-bit ones in SSE2 instructions.
#pragma once

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

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
