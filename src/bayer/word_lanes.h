// word_lanes.h: registers of 16-bit lanes (8 in SSE2's, 16 in AVX2's) for the 5x5 decoders' vector files, and
// the split of a source line by column parity into them. Internal linkage: each including file is built for its
// own instruction set.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace {

// Every operation works on words unless its name says otherwise (the 32 in Set32, Shr32, Add32,
// Pack32). Signed: Min, Max, Gt, Sar, Sar32, MAdd, Pack32; unsigned: Avg ((a + b + 1) >> 1), MulHiU,
// Shr. UnpackLo and UnpackHi pair the words of lanes (a0, b0), (a1, b1), ...; Pack32 undoes
// their order, Pack32Ordered narrows registers of dwords loaded in memory order. AbsDiff is
// |a - b| where that is below 2^15.
struct W128 {
    using T = __m128i;
    static constexpr int32_t N = 8;
    static T Load(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
    static T LoadBytes(const uint8_t* p)  // N bytes as words, in memory order
    {
        return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
    }
    static void Store(void* p, T v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
    static T Set(int16_t v) { return _mm_set1_epi16(v); }
    static T Add(T a, T b) { return _mm_add_epi16(a, b); }
    static T Sub(T a, T b) { return _mm_sub_epi16(a, b); }
    static T Min(T a, T b) { return _mm_min_epi16(a, b); }
    static T Max(T a, T b) { return _mm_max_epi16(a, b); }
    static T Avg(T a, T b) { return _mm_avg_epu16(a, b); }
    static T Gt(T a, T b) { return _mm_cmpgt_epi16(a, b); }
    static T And(T a, T b) { return _mm_and_si128(a, b); }
    static T AndNot(T a, T b) { return _mm_andnot_si128(a, b); }  // ~a & b
    static T Or(T a, T b) { return _mm_or_si128(a, b); }
    template <int S>
    static T Shl(T a)
    {
        return _mm_slli_epi16(a, S);
    }
    template <int S>
    static T Shr(T a)
    {
        return _mm_srli_epi16(a, S);
    }
    template <int S>
    static T Sar(T a)
    {
        return _mm_srai_epi16(a, S);
    }
    static T MulLo(T a, T b) { return _mm_mullo_epi16(a, b); }
    static T MulHiU(T a, T b) { return _mm_mulhi_epu16(a, b); }
    static T AbsDiff(T a, T b) { return _mm_sub_epi16(_mm_max_epi16(a, b), _mm_min_epi16(a, b)); }
    static T Set32(int32_t v) { return _mm_set1_epi32(v); }
    template <int S>
    static T Shr32(T a)
    {
        return _mm_srli_epi32(a, S);
    }
    static T UnpackLo(T a, T b) { return _mm_unpacklo_epi16(a, b); }
    static T UnpackHi(T a, T b) { return _mm_unpackhi_epi16(a, b); }
    static T MAdd(T a, T b) { return _mm_madd_epi16(a, b); }
    static T Add32(T a, T b) { return _mm_add_epi32(a, b); }
    static T Sub32(T a, T b) { return _mm_sub_epi32(a, b); }
    template <int S>
    static T Sar32(T a)
    {
        return _mm_srai_epi32(a, S);
    }
    static T Pack32(T lo, T hi) { return _mm_packs_epi32(lo, hi); }
    static T Pack32Ordered(T lo, T hi) { return _mm_packs_epi32(lo, hi); }
};

#if defined(__AVX2__)
// Unpacks and Pack32 work within each 128-bit half, like their SSE2 forms.
struct W256 {
    using T = __m256i;
    static constexpr int32_t N = 16;
    static T Load(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
    static T LoadBytes(const uint8_t* p)
    {
        return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    }
    static void Store(void* p, T v) { _mm256_storeu_si256(static_cast<__m256i*>(p), v); }
    static T Set(int16_t v) { return _mm256_set1_epi16(v); }
    static T Add(T a, T b) { return _mm256_add_epi16(a, b); }
    static T Sub(T a, T b) { return _mm256_sub_epi16(a, b); }
    static T Min(T a, T b) { return _mm256_min_epi16(a, b); }
    static T Max(T a, T b) { return _mm256_max_epi16(a, b); }
    static T Avg(T a, T b) { return _mm256_avg_epu16(a, b); }
    static T Gt(T a, T b) { return _mm256_cmpgt_epi16(a, b); }
    static T And(T a, T b) { return _mm256_and_si256(a, b); }
    static T AndNot(T a, T b) { return _mm256_andnot_si256(a, b); }
    static T Or(T a, T b) { return _mm256_or_si256(a, b); }
    template <int S>
    static T Shl(T a)
    {
        return _mm256_slli_epi16(a, S);
    }
    template <int S>
    static T Shr(T a)
    {
        return _mm256_srli_epi16(a, S);
    }
    template <int S>
    static T Sar(T a)
    {
        return _mm256_srai_epi16(a, S);
    }
    static T MulLo(T a, T b) { return _mm256_mullo_epi16(a, b); }
    static T MulHiU(T a, T b) { return _mm256_mulhi_epu16(a, b); }
    static T AbsDiff(T a, T b) { return _mm256_abs_epi16(_mm256_sub_epi16(a, b)); }
    static T Set32(int32_t v) { return _mm256_set1_epi32(v); }
    template <int S>
    static T Shr32(T a)
    {
        return _mm256_srli_epi32(a, S);
    }
    static T UnpackLo(T a, T b) { return _mm256_unpacklo_epi16(a, b); }
    static T UnpackHi(T a, T b) { return _mm256_unpackhi_epi16(a, b); }
    static T MAdd(T a, T b) { return _mm256_madd_epi16(a, b); }
    static T Add32(T a, T b) { return _mm256_add_epi32(a, b); }
    static T Sub32(T a, T b) { return _mm256_sub_epi32(a, b); }
    template <int S>
    static T Sar32(T a)
    {
        return _mm256_srai_epi32(a, S);
    }
    static T Pack32(T lo, T hi) { return _mm256_packs_epi32(lo, hi); }
    static T Pack32Ordered(T lo, T hi) { return _mm256_permute4x64_epi64(_mm256_packs_epi32(lo, hi), 0xD8); }
};
#endif

// 2 W::N samples of a source line from p on split by column parity: 8-bit ones are the low and
// high bytes of the words loaded, deeper ones (masked to Bits) the low and high words of the
// dwords of two registers.
template <class W, unsigned Bits>
__attribute__((always_inline)) inline void SplitSamples(const uint8_t* p, typename W::T& even, typename W::T& odd)
{
    using T = typename W::T;
    if constexpr (Bits == 8) {
        const T v = W::Load(p);
        even = W::And(v, W::Set(0xFF));
        odd = W::template Shr<8>(v);
    } else {
        const T mask = W::Set32(int32_t((1u << Bits) - 1));
        const T a = W::Load(p), b = W::Load(p + sizeof(T));
        even = W::Pack32Ordered(W::And(a, mask), W::And(b, mask));
        odd = W::Pack32Ordered(W::And(W::template Shr32<16>(a), mask), W::And(W::template Shr32<16>(b), mask));
    }
}

}  // namespace
