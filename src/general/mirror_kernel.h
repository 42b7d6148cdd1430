// mirror_kernel.h: the left-right mirror's vector blocks over one register type. Each file that includes it
// is built for its own instruction set, so everything here has internal linkage.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "general/geometry.h"

namespace {

// Source byte of byte o of a 16-byte block of P-byte pixels in reverse order, -1 for none. Pixels of
// 1, 2 or 4 bytes fill the block. Three-byte pixels take five to a block with one byte to spare: the
// block written starts with it when kLead is 1 (the block read ends with it), ends with it when kLead is
// 0 (the block read starts with it). Either way output byte o of channel c comes from 13 - o + 2c.
template <unsigned P, unsigned kLead>
constexpr int ReversedSource(int o)
{
    if constexpr (P != 3) {
        return (16 / int(P) - 1 - o / int(P)) * int(P) + o % int(P);
    } else {
        const int c = (o + 3 - int(kLead)) % 3, i = 13 - o + 2 * c;
        return i >= 0 && i < 16 ? i : -1;
    }
}

// A 16-byte constant whose byte o is f(o).
template <class F>
inline __m128i ByteVector(F f)
{
    return _mm_setr_epi8(char(f(0)), char(f(1)), char(f(2)), char(f(3)), char(f(4)), char(f(5)), char(f(6)), char(f(7)),
                         char(f(8)), char(f(9)), char(f(10)), char(f(11)), char(f(12)), char(f(13)), char(f(14)),
                         char(f(15)));
}

// Bytes of a 16-byte block whose number taken modulo 3 is m.
inline __m128i EveryThird(int m)
{
    return ByteVector([m](int o) { return o % 3 == m ? -1 : 0; });
}

// 16-byte registers: SSSE3's byte shuffle when kShuffle is set, otherwise SSE2's word shuffles and shifts.
template <bool kShuffle>
struct V128 {
    using T = __m128i;
    static constexpr unsigned kBytes = 16;
    static T Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    static void Store(uint8_t* p, T v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
    // Byte i of b, the other bytes of a.
    static T TakeByte(T a, T b, int i)
    {
        const T m = ByteVector([i](int o) { return o == i ? -1 : 0; });
        return _mm_or_si128(_mm_and_si128(m, b), _mm_andnot_si128(m, a));
    }

    template <unsigned P, unsigned kLead = 1>
    static T Reverse(T v)
    {
#if defined(__SSSE3__)
        if constexpr (kShuffle)
            return _mm_shuffle_epi8(v, ByteVector([](int o) { return ReversedSource<P, kLead>(o); }));
#endif
        if constexpr (P == 4) return _mm_shuffle_epi32(v, 0x1B);
        if constexpr (P == 2) return _mm_shufflehi_epi16(_mm_shufflelo_epi16(Reverse<4>(v), 0xB1), 0xB1);
        if constexpr (P == 1) {
            const T w = Reverse<2>(v);
            return _mm_or_si128(_mm_slli_epi16(w, 8), _mm_srli_epi16(w, 8));
        }
        if constexpr (P == 3) {
            // The reversed bytes hold the middle channels in place; the first and last channels are two
            // bytes off, each its own way.
            const T r = Reverse<1>(v);
            const T first = _mm_and_si128(_mm_srli_si128(r, 2), EveryThird(int(kLead)));
            const T middle = _mm_and_si128(r, EveryThird((kLead + 1) % 3));
            const T last = _mm_and_si128(_mm_slli_si128(r, 2), EveryThird((kLead + 2) % 3));
            return _mm_or_si128(_mm_or_si128(first, middle), last);
        }
    }
};

#if defined(__AVX2__)
// 32-byte registers for pixels of 1, 2 or 4 bytes: the halves exchanged, then each reversed in place.
struct V256 {
    using T = __m256i;
    static constexpr unsigned kBytes = 32;
    static T Load(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
    static void Store(uint8_t* p, T v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
    template <unsigned P, unsigned = 0>
    static T Reverse(T v)
    {
        static_assert(P != 3, "three-byte pixels go in 16-byte blocks");
        const T control = _mm256_broadcastsi128_si256(ByteVector([](int o) { return ReversedSource<P, 0>(o); }));
        return _mm256_shuffle_epi8(_mm256_permute4x64_epi64(v, 0x4E), control);
    }
};
#endif

// A block of P-byte pixels in registers of V: the pixels it reverses, and the bytes its load reads past
// them and its store writes before them (three-byte pixels only).
template <class V, unsigned P>
struct TBlock {
    static constexpr size_t kPixels = P == 3 ? 5 : V::kBytes / P;
    static constexpr size_t kSpare = P == 3 ? 1 : 0;
};

// Destination pixels n-1-x from source pixels x, whole blocks from the line start; returns the first x
// left. A three-byte block's spare byte lands in the destination pixel that the next block or the scalar
// rest writes next. Two blocks per step, both loaded before either is stored, keep more loads in flight
// (a third faster on four-byte pixels).
template <class V, unsigned P>
size_t ReverseBlocks(const uint8_t* s, uint8_t* d, size_t n)
{
    using B = TBlock<V, P>;
    constexpr size_t k = B::kPixels, j = B::kSpare;
    size_t x = 0;
    for (; x + 2 * k + j <= n; x += 2 * k) {
        const typename V::T f = V::Load(s + x * P), g = V::Load(s + (x + k) * P);
        V::Store(d + (n - x - k) * P - j, V::template Reverse<P>(f));
        V::Store(d + (n - x - 2 * k) * P - j, V::template Reverse<P>(g));
    }
    for (; x + k + j <= n; x += k) V::Store(d + (n - x - k) * P - j, V::template Reverse<P>(V::Load(s + x * P)));
    return x;
}

// Exchanges pixels x of line a with pixels w-1-x of line b for x < n, whole blocks from the line start
// while a pair's two blocks lie apart (a may be b); returns the first x left. Both blocks are read before
// either is written, and a spare byte is written back with the value it was read with.
template <class V, unsigned P>
size_t ExchangeBlocks(uint8_t* a, uint8_t* b, size_t w, size_t n)
{
    using B = TBlock<V, P>;
    constexpr size_t k = B::kPixels, j = B::kSpare;
    size_t x = 0;
    for (; x + k + j <= n && (a != b || 2 * (x + k + j) <= w); x += k) {
        uint8_t* p = a + x * P;
        uint8_t* q = b + (w - x - k) * P - j;
        const typename V::T f = V::Load(p), g = V::Load(q);
        if constexpr (j != 0) {
            V::Store(q, V::TakeByte(V::template Reverse<P, 1>(f), g, 0));
            V::Store(p, V::TakeByte(V::template Reverse<P, 0>(g), f, 15));
        } else {
            V::Store(q, V::template Reverse<P>(f));
            V::Store(p, V::template Reverse<P>(g));
        }
    }
    return x;
}

// The blocks for pixels of P bytes: registers V, or V3 for three-byte pixels; none for other sizes.
template <class V, class V3>
geometry::TMirrorBlocks MirrorBlocks(unsigned P)
{
    switch (P) {
        case 1:
            return {ReverseBlocks<V, 1>, ExchangeBlocks<V, 1>};
        case 2:
            return {ReverseBlocks<V, 2>, ExchangeBlocks<V, 2>};
        case 3:
            return {ReverseBlocks<V3, 3>, ExchangeBlocks<V3, 3>};
        case 4:
            return {ReverseBlocks<V, 4>, ExchangeBlocks<V, 4>};
        default:
            return {};
    }
}

}  // namespace
