// bilinear_kernel.h: the vector line loops of the bilinear and nearest-neighbour decoders, written
// once over a small set of register operations. Included only by bilinear_sse2/ssse3/avx2.cpp, each compiled
// for its own instruction set: everything here has internal linkage, so the copies never mix.
#pragma once

#include <immintrin.h>

#include <cstring>
#include <type_traits>

#include "bayer/bilinear_simd.h"

namespace {

// 16 pixels in SSE2 registers; bShuffle: SSSE3's pshufb interleaves blue, green, red.
template <bool bShuffle>
struct V128 {
    using T = __m128i;
    static constexpr uint32_t N = 16;
    static constexpr bool kShuffle = bShuffle;  // Lookup and the pshufb interleave are there
    static T Load(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    static T Zero() { return _mm_setzero_si128(); }
    static T Set16(int16_t v) { return _mm_set1_epi16(v); }
    static T Set32(int32_t v) { return _mm_set1_epi32(v); }
    static T WidenLo(T a) { return _mm_unpacklo_epi8(a, Zero()); }
    static T WidenHi(T a) { return _mm_unpackhi_epi8(a, Zero()); }
    static T UnpackLo(T a, T b) { return _mm_unpacklo_epi8(a, b); }  // bytes a0 b0 a1 b1 ... per 128-bit lane
    static T UnpackHi(T a, T b) { return _mm_unpackhi_epi8(a, b); }
    static T Add(T a, T b) { return _mm_add_epi16(a, b); }
    template <int S>
    static T Shr(T a)
    {
        return _mm_srli_epi16(a, S);
    }
    static T Pack(T lo, T hi) { return _mm_packus_epi16(lo, hi); }
    static T PackOrdered(T lo, T hi) { return _mm_packus_epi16(lo, hi); }  // words loaded in memory order
    static T And16(T a, T b) { return _mm_and_si128(a, b); }
    static T Select(T m, T a, T b) { return _mm_or_si128(_mm_and_si128(m, a), _mm_andnot_si128(m, b)); }
    static T Or(T a, T b) { return _mm_or_si128(a, b); }
    static T Set8(int8_t v) { return _mm_set1_epi8(v); }
    static T Avg(T a, T b) { return _mm_avg_epu8(a, b); }  // (a + b + 1) >> 1 per byte
    static T AbsDiff(T a, T b) { return _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a)); }  // |a - b| per byte
    static T MaxU(T a, T b) { return _mm_max_epu8(a, b); }
    static T MinU(T a, T b) { return _mm_min_epu8(a, b); }
    static T AddSat(T a, T b) { return _mm_adds_epu8(a, b); }  // unsigned, saturated
    static T Eq(T a, T b) { return _mm_cmpeq_epi8(a, b); }
    static T Half(T a) { return _mm_and_si128(_mm_srli_epi16(a, 1), _mm_set1_epi8(0x7F)); }  // a >> 1 per byte
    template <int H>
    static T Words(T a)  // bytes of half H as words, in memory order
    {
        return H ? _mm_unpackhi_epi8(a, Zero()) : _mm_unpacklo_epi8(a, Zero());
    }
    template <int H>
    static T MaskWords(T m)  // byte masks (0 or -1) of half H as word masks
    {
        return H ? _mm_unpackhi_epi8(m, m) : _mm_unpacklo_epi8(m, m);
    }
    static T Xor(T a, T b) { return _mm_xor_si128(a, b); }
    static T And(T a, T b) { return _mm_and_si128(a, b); }
    static T AndNot(T a, T b) { return _mm_andnot_si128(a, b); }  // ~a & b
    static T Sub(T a, T b) { return _mm_sub_epi8(a, b); }
    static T Row(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
    static void Store(uint8_t* p, T v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
#if defined(__SSSE3__)
    static T Shuffle(T table, T index)
    {
        return _mm_shuffle_epi8(table, index);
    }
#endif
    static T SignMask(T v)
    {
        return _mm_cmplt_epi8(v, Zero());
    }  // lanes of bytes 0x80..0xFF

    // Lanes of lo and hi (pixels 0..7, 8..15) as 16 words.
    static void StoreWords(uint16_t* p, T lo, T hi)
    {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p), lo);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 8), hi);
    }

    // The four-byte pixels b, g, r, 0 in four registers of four pixels each.
    static void Quads(T b, T g, T r, T q[4])
    {
        const T bgLo = _mm_unpacklo_epi8(b, g), bgHi = _mm_unpackhi_epi8(b, g);
        const T r0Lo = _mm_unpacklo_epi8(r, Zero()), r0Hi = _mm_unpackhi_epi8(r, Zero());
        q[0] = _mm_unpacklo_epi16(bgLo, r0Lo);
        q[1] = _mm_unpackhi_epi16(bgLo, r0Lo);
        q[2] = _mm_unpacklo_epi16(bgHi, r0Hi);
        q[3] = _mm_unpackhi_epi16(bgHi, r0Hi);
    }

    static void StoreBgra(uint8_t* p, T b, T g, T r)
    {
        T q[4];
        Quads(b, g, r, q);
        for (int i = 0; i < 4; ++i) _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 16 * i), q[i]);
    }

    static void StoreBgr(uint8_t* p, T b, T g, T r)
    {
        if constexpr (bShuffle) {
#if defined(__SSSE3__)
            // Output byte k of register j takes blue, green or red of pixel (16 j + k) / 3.
            const T bm0 = _mm_setr_epi8(0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1, 5);
            const T gm0 = _mm_setr_epi8(-1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1);
            const T rm0 = _mm_setr_epi8(-1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1);
            const T bm1 = _mm_setr_epi8(-1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10, -1);
            const T gm1 = _mm_setr_epi8(5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10);
            const T rm1 = _mm_setr_epi8(-1, 5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1);
            const T bm2 = _mm_setr_epi8(-1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1, -1);
            const T gm2 = _mm_setr_epi8(-1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1);
            const T rm2 = _mm_setr_epi8(10, -1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15);
            auto mix = [&](T mb, T mg, T mr) {
                return _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(b, mb), _mm_shuffle_epi8(g, mg)),
                                    _mm_shuffle_epi8(r, mr));
            };
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p), mix(bm0, gm0, rm0));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 16), mix(bm1, gm1, rm1));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 32), mix(bm2, gm2, rm2));
#endif
        } else {
            // SSE2 alone: the four-byte pixels go out through general registers, each stored whole at
            // its three-byte place so the next one overwrites its zero byte; the last pixel is
            // stored in two and one bytes, so nothing beyond the 16 pixels is touched. The vector
            // unit is left the arithmetic.
            T q[4];
            Quads(b, g, r, q);
            for (int i = 0; i < 4; ++i) {
                const uint64_t lo = uint64_t(_mm_cvtsi128_si64(q[i]));
                const uint64_t hi = uint64_t(_mm_cvtsi128_si64(_mm_unpackhi_epi64(q[i], q[i])));
                uint8_t* d = p + 12 * i;
                Store32(d, uint32_t(lo));
                Store32(d + 3, uint32_t(lo >> 32));
                Store32(d + 6, uint32_t(hi));
                if (i < 3) {
                    Store32(d + 9, uint32_t(hi >> 32));
                } else {
                    const uint16_t two = uint16_t(hi >> 32);
                    std::memcpy(d + 9, &two, 2);
                    d[11] = uint8_t(hi >> 48);
                }
            }
        }
    }
    static void Store32(uint8_t* p, uint32_t v)
    {
        std::memcpy(p, &v, 4);
    }
};

#if defined(__AVX2__)
// 32 pixels in AVX2 registers. Widening, arithmetic and packing stay within each 128-bit half
// (pixels 0..15 and 16..31), so only the stores put the halves in order.
struct V256 {
    using T = __m256i;
    static constexpr uint32_t N = 32;
    static constexpr bool kShuffle = true;
    static T Load(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
    static T Zero() { return _mm256_setzero_si256(); }
    static T Set16(int16_t v) { return _mm256_set1_epi16(v); }
    static T Set32(int32_t v) { return _mm256_set1_epi32(v); }
    static T WidenLo(T a) { return _mm256_unpacklo_epi8(a, Zero()); }
    static T WidenHi(T a) { return _mm256_unpackhi_epi8(a, Zero()); }
    static T UnpackLo(T a, T b) { return _mm256_unpacklo_epi8(a, b); }  // bytes a0 b0 a1 b1 ... per 128-bit lane
    static T UnpackHi(T a, T b) { return _mm256_unpackhi_epi8(a, b); }
    static T Add(T a, T b) { return _mm256_add_epi16(a, b); }
    template <int S>
    static T Shr(T a)
    {
        return _mm256_srli_epi16(a, S);
    }
    static T Pack(T lo, T hi) { return _mm256_packus_epi16(lo, hi); }
    static T PackOrdered(T lo, T hi) { return _mm256_permute4x64_epi64(_mm256_packus_epi16(lo, hi), 0xD8); }
    static T And16(T a, T b) { return _mm256_and_si256(a, b); }
    static T Select(T m, T a, T b) { return _mm256_blendv_epi8(b, a, m); }
    static T Or(T a, T b) { return _mm256_or_si256(a, b); }
    static T Set8(int8_t v) { return _mm256_set1_epi8(v); }
    static T Avg(T a, T b) { return _mm256_avg_epu8(a, b); }
    static T AbsDiff(T a, T b) { return _mm256_sub_epi8(_mm256_max_epu8(a, b), _mm256_min_epu8(a, b)); }
    static T MaxU(T a, T b) { return _mm256_max_epu8(a, b); }
    static T MinU(T a, T b) { return _mm256_min_epu8(a, b); }
    static T AddSat(T a, T b) { return _mm256_adds_epu8(a, b); }
    static T Eq(T a, T b) { return _mm256_cmpeq_epi8(a, b); }
    static T Half(T a) { return _mm256_and_si256(_mm256_srli_epi16(a, 1), _mm256_set1_epi8(0x7F)); }
    template <int H>
    static T Words(T a)
    {
        return _mm256_cvtepu8_epi16(H ? _mm256_extracti128_si256(a, 1) : _mm256_castsi256_si128(a));
    }
    template <int H>
    static T MaskWords(T m)
    {
        return _mm256_cvtepi8_epi16(H ? _mm256_extracti128_si256(m, 1) : _mm256_castsi256_si128(m));
    }
    static T Xor(T a, T b) { return _mm256_xor_si256(a, b); }
    static T And(T a, T b) { return _mm256_and_si256(a, b); }
    static T AndNot(T a, T b) { return _mm256_andnot_si256(a, b); }
    static T Sub(T a, T b) { return _mm256_sub_epi8(a, b); }
    static T Row(const uint8_t* p)
    {
        return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
    }
    static T Shuffle(T table, T index) { return _mm256_shuffle_epi8(table, index); }
    static void Store(uint8_t* p, T v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
    static T SignMask(T v) { return v; }  // Select reads bit 7 of each byte only

    static void StoreWords(uint16_t* p, T lo, T hi)
    {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute2x128_si256(lo, hi, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 16), _mm256_permute2x128_si256(lo, hi, 0x31));
    }

    static void StoreBgra(uint8_t* p, T b, T g, T r)
    {
        const T bgLo = _mm256_unpacklo_epi8(b, g), bgHi = _mm256_unpackhi_epi8(b, g);
        const T r0Lo = _mm256_unpacklo_epi8(r, Zero()), r0Hi = _mm256_unpackhi_epi8(r, Zero());
        const T q0 = _mm256_unpacklo_epi16(bgLo, r0Lo), q1 = _mm256_unpackhi_epi16(bgLo, r0Lo);
        const T q2 = _mm256_unpacklo_epi16(bgHi, r0Hi), q3 = _mm256_unpackhi_epi16(bgHi, r0Hi);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute2x128_si256(q0, q1, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 32), _mm256_permute2x128_si256(q2, q3, 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 64), _mm256_permute2x128_si256(q0, q1, 0x31));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 96), _mm256_permute2x128_si256(q2, q3, 0x31));
    }

    // bPairs: each half holds its 16 pixels as a byte pack of two word registers leaves them,
    // the even pixels first (pixel 2 i at byte i, 2 i + 1 at byte 8 + i).
    template <bool bPairs = false>
    static void StoreBgr(uint8_t* p, T b, T g, T r)
    {
        // Within each half, pixel i of a channel c goes to byte (3 i + c) mod 16 (3 is odd, so the
        // places are distinct), so byte k takes pixel 11 (k - c) mod 16 (3 x 11 = 1 mod 16). Output
        // register j then takes, at byte k, the channel (16 j + k) mod 3 of the three shuffled ones,
        // and byte k of it holds pixel (16 j + k) / 3 of that channel. Built from one 32-byte ramp,
        // the controls are whole constants: the shuffles read them directly instead of a 16-byte
        // constant broadcast again for every block.
        typedef uint8_t TBytes __attribute__((vector_size(32)));
        const TBytes k = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15,
                          0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
        auto at = [](TBytes i) { return bPairs ? TBytes((i >> 1) | ((i & 1) << 3)) : i; };  // byte of pixel i
        const T b1 = _mm256_shuffle_epi8(b, T(at((k * 11) & 15)));
        const T g1 = _mm256_shuffle_epi8(g, T(at(((k + 15) * 11) & 15)));
        const T r1 = _mm256_shuffle_epi8(r, T(at(((k + 14) * 11) & 15)));
        // m[c]: the bytes k with k mod 3 = c; register j takes green at m[(1 + 2 j) mod 3], red at m[(2 + 2 j) mod 3].
        const T m[3] = {T(k % 3 == 0), T(k % 3 == 1), T(k % 3 == 2)};
        T o[3];
        for (int j = 0; j < 3; ++j) {
            o[j] = _mm256_blendv_epi8(_mm256_blendv_epi8(b1, g1, m[(1 + 2 * j) % 3]), r1, m[(2 + 2 * j) % 3]);
        }
        // Halves: pixels 0..15 (bytes 0..47), 16..31 (48..95).
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_permute2x128_si256(o[0], o[1], 0x20));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 32), _mm256_permute2x128_si256(o[2], o[0], 0x30));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p + 64), _mm256_permute2x128_si256(o[1], o[2], 0x31));
    }
};
#endif

// The five sums of the bilinear rule for the pixels x..x+N-1 of one line, in 16-bit lanes (lo:
// the first eight of each 16, hi: the next eight): own sample, across (left + right), upDown,
// direct (all four straight neighbours) and diagonal. Sums of at most four bytes never wrap.
template <class V>
struct TSums {
    using T = typename V::T;
    T own, across[2], upDown[2], direct[2], diagonal[2];
    TSums(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint32_t x)
    {
        own = V::Load(pCur + x);
        const T l = V::Load(pCur + x - 1), r = V::Load(pCur + x + 1);
        const T u = V::Load(pUp + x), d = V::Load(pDown + x);
        const T ul = V::Load(pUp + x - 1), ur = V::Load(pUp + x + 1);
        const T dl = V::Load(pDown + x - 1), dr = V::Load(pDown + x + 1);
        Half(0, V::WidenLo(l), V::WidenLo(r), V::WidenLo(u), V::WidenLo(d), V::WidenLo(ul), V::WidenLo(ur),
             V::WidenLo(dl), V::WidenLo(dr));
        Half(1, V::WidenHi(l), V::WidenHi(r), V::WidenHi(u), V::WidenHi(d), V::WidenHi(ul), V::WidenHi(ur),
             V::WidenHi(dl), V::WidenHi(dr));
    }
    void Half(int i, T l, T r, T u, T d, T ul, T ur, T dl, T dr)
    {
        across[i] = V::Add(l, r);
        upDown[i] = V::Add(u, d);
        direct[i] = V::Add(across[i], upDown[i]);
        diagonal[i] = V::Add(V::Add(ul, ur), V::Add(dl, dr));
    }
};

// One line's setting: which lanes hold the line's own colour site (the others are green) and
// whether that colour is red.
struct TLineSites {
    bool bRedLine;
    bool bColourFirst;  // column x0 (and every second one after it) holds red or blue
};

// What the line workers read besides the mosaic: the LUT's tables and, for MappedLine, its single
// tables as the bytes of a little-endian pixel (filled only where that worker runs).
struct TLineTables {
    TBayerLut lut;
    uint32_t b[256], g[256], r[256];  // blue, green << 8, red << 16
};

// A 256-entry byte table for byte shuffles (SSSE3, AVX2) as two chains of rows of 16, read with
// the same indices v - 16 k (k = 0..7), which keep the low nibble of v and whose bit 7 (a shuffle
// gives 0 there) is clear for k = 0 .. the high nibble h of v when v < 128, and for k = h - 7 .. 7
// when v >= 128. The lower chain holds differences d[k] = row k ^ row k-1, so its XOR telescopes
// to row h; the upper one starts from row 15 (read with the low nibble alone) and holds
// e[k] = row 7+k ^ row 8+k, so its XOR telescopes to row h. Bit 7 of v picks the chain. That is
// 16 shuffles, 7 subtractions and 15 XORs for 256 entries.
template <class V>
struct TByteTable {
    typename V::T lower[8], upper[8];
    explicit TByteTable(const uint8_t* pTable)
    {
        lower[0] = V::Row(pTable);
        upper[0] = V::Row(pTable + 240);
        for (int k = 1; k < 8; ++k) {
            lower[k] = V::Xor(V::Row(pTable + 16 * k), V::Row(pTable + 16 * (k - 1)));
            upper[k] = V::Xor(V::Row(pTable + 112 + 16 * k), V::Row(pTable + 128 + 16 * k));
        }
    }
    typename V::T operator()(typename V::T v) const
    {
        const typename V::T sixteen = V::Set8(16);
        typename V::T index = v, low = V::Shuffle(lower[0], index);
        typename V::T high = V::Shuffle(upper[0], V::And(v, V::Set8(15)));
        for (int k = 1; k < 8; ++k) {
            index = V::Sub(index, sixteen);
            low = V::Xor(low, V::Shuffle(lower[k], index));
            high = V::Xor(high, V::Shuffle(upper[k], index));
        }
        return V::Select(V::SignMask(v), high, low);
    }
};

// TByteTable's lookup as two passes over a buffer of n bytes (n a multiple of V::N), each holding
// one chain of eight rows in registers: the lower chain into pLow, then the upper one, the select
// and the result back in place. Nothing spills, whatever the register count.
template <class V>
void MapBytes(const uint8_t* pTable, uint8_t* p, uint8_t* pLow, uint32_t n)
{
    using T = typename V::T;
    const T sixteen = V::Set8(16);
    {
        T rows[8];
        rows[0] = V::Row(pTable);
        for (int k = 1; k < 8; ++k) rows[k] = V::Xor(V::Row(pTable + 16 * k), V::Row(pTable + 16 * (k - 1)));
        for (uint32_t i = 0; i < n; i += V::N) {
            T index = V::Load(p + i), low = V::Shuffle(rows[0], index);
            for (int k = 1; k < 8; ++k) {
                index = V::Sub(index, sixteen);
                low = V::Xor(low, V::Shuffle(rows[k], index));
            }
            V::Store(pLow + i, low);
        }
    }
    T rows[8];
    rows[0] = V::Row(pTable + 240);
    for (int k = 1; k < 8; ++k) rows[k] = V::Xor(V::Row(pTable + 112 + 16 * k), V::Row(pTable + 128 + 16 * k));
    const T fifteen = V::Set8(15);
    for (uint32_t i = 0; i < n; i += V::N) {
        const T v = V::Load(p + i);
        T index = v, high = V::Shuffle(rows[0], V::And(v, fifteen));
        for (int k = 1; k < 8; ++k) {
            index = V::Sub(index, sixteen);
            high = V::Xor(high, V::Shuffle(rows[k], index));
        }
        V::Store(p + i, V::Select(V::SignMask(v), high, V::Load(pLow + i)));
    }
}

// Exact truncating means of unsigned bytes from the rounding average of the instruction set.
template <class V>
struct TByteMeans {
    using T = typename V::T;
    const T one = V::Set8(1);
    // floor((a + b) / 2) = avg(a, b) - ((a ^ b) & 1), with the dropped bit kept for Four.
    T Two(T a, T b, T& odd) const
    {
        odd = V::And(V::Xor(a, b), one);
        return V::Sub(V::Avg(a, b), odd);
    }
    // floor((a + b + c + d) / 4) from the two halves h1, h2 and their dropped bits: h1 + h2 + 1
    // halved when both bits were set, h1 + h2 halved otherwise.
    T Four(T h1, T odd1, T h2, T odd2) const
    {
        return V::Sub(V::Avg(h1, h2), V::AndNot(V::And(odd1, odd2), V::And(V::Xor(h1, h2), one)));
    }
};

// The three means of the pixels x..x+N-1 of one line, in byte lanes, before any table: own colour,
// green and the other colour. In a red line the colour sites take red = own, green = direct / 4,
// blue = diagonal / 4 and the green sites red = across / 2, green = own, blue = upDown / 2; a blue
// line swaps red and blue. colour: the byte lanes of the colour sites.
template <class V>
struct TBlockMeans {
    using T = typename V::T;
    T own, g, other;
    TBlockMeans(const TByteMeans<V>& means, T colour, const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown,
                uint32_t x)
    {
        const T sample = V::Load(pCur + x);
        T oddA, oddV, oddU, oddD;
        const T across = means.Two(V::Load(pCur + x - 1), V::Load(pCur + x + 1), oddA);
        const T upDown = means.Two(V::Load(pUp + x), V::Load(pDown + x), oddV);
        const T direct = means.Four(across, oddA, upDown, oddV);
        const T up = means.Two(V::Load(pUp + x - 1), V::Load(pUp + x + 1), oddU);
        const T down = means.Two(V::Load(pDown + x - 1), V::Load(pDown + x + 1), oddD);
        const T diagonal = means.Four(up, oddU, down, oddD);
        own = V::Select(colour, sample, across);
        g = V::Select(colour, direct, sample);
        other = V::Select(colour, diagonal, upDown);
    }
};

// Null LUT: out = the truncated mean itself (exact in byte lanes).
template <class V, uint32_t DstBytes>
void IdentityLine(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x0,
                  uint32_t x1, TLineSites s, const TLineTables&)
{
    using T = typename V::T;
    const T colour = V::Set16(s.bColourFirst ? 0x00FF : int16_t(0xFF00));
    const TByteMeans<V> means;
    for (uint32_t x = x0; x < x1; x += V::N) {
        const TBlockMeans<V> m(means, colour, pUp, pCur, pDown, x);
        uint8_t* p = pOut + size_t(x) * DstBytes;
        if constexpr (DstBytes == 3) {
            s.bRedLine ? V::StoreBgr(p, m.other, m.g, m.own) : V::StoreBgr(p, m.own, m.g, m.other);
        } else {
            s.bRedLine ? V::StoreBgra(p, m.other, m.g, m.own) : V::StoreBgra(p, m.own, m.g, m.other);
        }
    }
}

// A LUT whose doubled and quadrupled tables repeat its single ones (as every LUT built by the
// library's own functions), 8 bits: out = table[mean]. With byte shuffles: the means of a stretch
// of blocks go to three buffers, each is looked up in place (MapBytes), then the stretch is
// interleaved into the destination.
template <class V, uint32_t DstBytes>
void ShuffledLine(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x0,
                  uint32_t x1, TLineSites s, const TLineTables& t)
{
    using T = typename V::T;
    constexpr uint32_t kChunk = 256;  // pixels per stretch, a multiple of every V::N
    alignas(32) uint8_t own[kChunk], g[kChunk], other[kChunk], low[kChunk];
    const T colour = V::Set16(s.bColourFirst ? 0x00FF : int16_t(0xFF00));
    const TByteMeans<V> means;
    for (uint32_t c = x0; c < x1; c += kChunk) {
        const uint32_t n = x1 - c < kChunk ? x1 - c : kChunk;
        for (uint32_t i = 0; i < n; i += V::N) {
            const TBlockMeans<V> m(means, colour, pUp, pCur, pDown, c + i);
            V::Store(own + i, m.own);
            V::Store(g + i, m.g);
            V::Store(other + i, m.other);
        }
        MapBytes<V>(s.bRedLine ? t.lut.pRed : t.lut.pBlue, own, low, n);
        MapBytes<V>(t.lut.pGreen, g, low, n);
        MapBytes<V>(s.bRedLine ? t.lut.pBlue : t.lut.pRed, other, low, n);
        for (uint32_t i = 0; i < n; i += V::N) {
            const T o = V::Load(own + i), gg = V::Load(g + i), x = V::Load(other + i);
            uint8_t* p = pOut + size_t(c + i) * DstBytes;
            if constexpr (DstBytes == 3) {
                s.bRedLine ? V::StoreBgr(p, x, gg, o) : V::StoreBgr(p, o, gg, x);
            } else {
                s.bRedLine ? V::StoreBgra(p, x, gg, o) : V::StoreBgra(p, o, gg, x);
            }
        }
    }
}

// The same without byte shuffles (SSE2): each block's means are interleaved as the indices blue,
// green, red, 0 of its pixels into a small buffer, then each pixel is three loads from tables that
// hold the outputs already at their places in a little-endian pixel (blue, green << 8, red << 16),
// ORed and stored as four bytes. The loads of one block run beside the vector work of the next
// (two buffers). Each store's fourth byte is overwritten by the next pixel; the last one of a line
// falls on column w-1, which the frame rule writes afterwards.
template <class V, uint32_t DstBytes>
void MappedLine(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x0, uint32_t x1,
                TLineSites s, const TLineTables& t)
{
    using T = typename V::T;
    alignas(32) uint8_t index[2][4 * V::N];
    const T colour = V::Set16(s.bColourFirst ? 0x00FF : int16_t(0xFF00));
    const TByteMeans<V> means;
    if (x1 <= x0) return;
    auto lookUp = [&t](const uint8_t* pIndex, uint8_t* p) {
        for (uint32_t i = 0; i < V::N; i += 2, p += 2 * DstBytes) {
            uint64_t q;
            std::memcpy(&q, pIndex + 4 * i, 8);
            const uint32_t e = uint32_t(q), o = uint32_t(q >> 32);
            const uint32_t v0 = t.b[e & 0xFF] | t.g[(e >> 8) & 0xFF] | t.r[e >> 16];
            const uint32_t v1 = t.b[o & 0xFF] | t.g[(o >> 8) & 0xFF] | t.r[o >> 16];
            std::memcpy(p, &v0, 4);
            std::memcpy(p + DstBytes, &v1, 4);
        }
    };
    uint32_t slot = 0;
    for (uint32_t x = x0; x < x1; x += V::N, slot ^= 1) {
        const TBlockMeans<V> m(means, colour, pUp, pCur, pDown, x);
        uint8_t* q = index[slot];
        s.bRedLine ? V::StoreBgra(q, m.other, m.g, m.own) : V::StoreBgra(q, m.own, m.g, m.other);
        if (x > x0) lookUp(index[slot ^ 1], pOut + size_t(x - V::N) * DstBytes);
    }
    lookUp(index[slot ^ 1], pOut + size_t(x1 - V::N) * DstBytes);
}

// Null LUT into BGR8 with SSE2 alone, where interleaving three byte registers is dear: the block
// is read as 8 pairs of pixels (e, o) = (x + 2k, x + 2k + 1) in 16-bit lanes, and each pair's six
// output bytes are put together in three words straight from the means, with no select:
// W0 = blue, green of e; W1 = red of e, blue of o; W2 = green, red of o. The means, per byte:
// A = (C[-1] + C[+1]) / 2, Vm = (U[-1] + D[-1]) / 2, Vp = (U[+1] + D[+1]) / 2; at the colour site
// of a pair the direct mean is that of A and the vertical mean of its own column (Vm one byte up
// or Vp one byte down), the diagonal one that of Vm and Vp; at its green site A is the mean
// across and the vertical mean of its column the one up and down. Four line kinds (red or blue
// line, colour site first or second) take these in different places.
template <class V, bool bRedLine, bool bColourFirst>
void PairBlocks(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x0, uint32_t x1)
{
    using T = __m128i;
    const T lo = V::Set16(0x00FF), hi = V::Set16(int16_t(0xFF00));
    const TByteMeans<V> means;
    for (uint32_t x = x0; x < x1; x += V::N) {
        const T sample = V::Load(pCur + x);
        T oddA, oddM, oddP;
        const T across = means.Two(V::Load(pCur + x - 1), V::Load(pCur + x + 1), oddA);
        const T vm = means.Two(V::Load(pUp + x - 1), V::Load(pDown + x - 1), oddM);
        const T vp = means.Two(V::Load(pUp + x + 1), V::Load(pDown + x + 1), oddP);
        const T diagonal = means.Four(vm, oddM, vp, oddP);
        T w0, w1, w2;
        if constexpr (bColourFirst) {
            // e: colour site (means in the low bytes), o: green site.
            const T direct = means.Four(across, oddA, _mm_srli_epi16(vm, 8), _mm_srli_epi16(oddM, 8));
            const T ownE = V::And(sample, lo), otherE = V::And(diagonal, lo), gE = _mm_slli_epi16(direct, 8);
            const T gO = _mm_srli_epi16(sample, 8), ownO = V::And(across, hi), otherO = _mm_slli_epi16(vp, 8);
            w0 = V::Or(bRedLine ? otherE : ownE, gE);
            w1 = bRedLine ? V::Or(ownE, otherO) : V::Or(otherE, ownO);
            w2 = V::Or(gO, bRedLine ? ownO : otherO);
        } else {
            // e: green site, o: colour site (means in the high bytes).
            const T direct = means.Four(across, oddA, _mm_slli_epi16(vp, 8), _mm_slli_epi16(oddP, 8));
            const T ownE = V::And(across, lo), otherE = _mm_srli_epi16(vm, 8), gE = _mm_slli_epi16(sample, 8);
            const T gO = _mm_srli_epi16(direct, 8), ownO = V::And(sample, hi), otherO = V::And(diagonal, hi);
            w0 = V::Or(bRedLine ? otherE : ownE, gE);
            w1 = bRedLine ? V::Or(ownE, otherO) : V::Or(otherE, ownO);
            w2 = V::Or(gO, bRedLine ? ownO : otherO);
        }
        // Pairs as 64-bit lanes (six bytes and two spare), stored at six-byte steps so that each
        // store overwrites the spare bytes of the one before; the last goes out as four and two bytes.
        const T w01Lo = _mm_unpacklo_epi16(w0, w1), w01Hi = _mm_unpackhi_epi16(w0, w1);
        const T w22Lo = _mm_unpacklo_epi16(w2, w2), w22Hi = _mm_unpackhi_epi16(w2, w2);
        const T q[4] = {_mm_unpacklo_epi32(w01Lo, w22Lo), _mm_unpackhi_epi32(w01Lo, w22Lo),
                        _mm_unpacklo_epi32(w01Hi, w22Hi), _mm_unpackhi_epi32(w01Hi, w22Hi)};
        uint8_t* p = pOut + size_t(x) * 3;
        for (int k = 0; k < 4; ++k) {
            const uint64_t first = uint64_t(_mm_cvtsi128_si64(q[k]));
            const uint64_t second = uint64_t(_mm_cvtsi128_si64(_mm_unpackhi_epi64(q[k], q[k])));
            std::memcpy(p + 12 * k, &first, 8);
            if (k < 3) {
                std::memcpy(p + 12 * k + 6, &second, 8);
            } else {
                std::memcpy(p + 42, &second, 4);
                const uint16_t last = uint16_t(second >> 32);
                std::memcpy(p + 46, &last, 2);
            }
        }
    }
}

template <class V>
void PairLine(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x0, uint32_t x1,
              TLineSites s, const TLineTables&)
{
    if (s.bRedLine) {
        s.bColourFirst ? PairBlocks<V, true, true>(pUp, pCur, pDown, pOut, x0, x1)
                       : PairBlocks<V, true, false>(pUp, pCur, pDown, pOut, x0, x1);
    } else {
        s.bColourFirst ? PairBlocks<V, false, true>(pUp, pCur, pDown, pOut, x0, x1)
                       : PairBlocks<V, false, false>(pUp, pCur, pDown, pOut, x0, x1);
    }
}

// Null LUT on 10- or 12-bit samples (16-bit words): the identity tables give out = the truncated
// mean shifted down to 8 bits, i.e. own >> (Bits - 8), a two-sum >> (Bits - 7), a four-sum >>
// (Bits - 6), each sum first masked as the scalar rule masks its index (16-bit lanes wrap
// modulo 2^16, which leaves the masked bits exact).
template <class V, unsigned Bits, uint32_t DstBytes>
void IdentityLineDeep(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x0,
                      uint32_t x1, TLineSites s, const TLineTables&)
{
    using T = typename V::T;
    using D = TDepth<Bits>;
    const T colour = V::Set16(s.bColourFirst ? 0x00FF : int16_t(0xFF00));
    const T mask1 = V::Set16(int16_t(D::kMask1)), mask2 = V::Set16(int16_t(D::kMask2)),
            mask4 = V::Set16(int16_t(D::kMask4));
    constexpr uint32_t kHalf = V::N / 2;  // pixels per register of words
    for (uint32_t x = x0; x < x1; x += V::N) {
        T own[2], across[2], upDown[2], direct[2], diagonal[2];
        for (uint32_t i = 0; i < 2; ++i) {
            const size_t o = 2 * size_t(x + i * kHalf);
            const T l = V::Load(pCur + o - 2), r = V::Load(pCur + o + 2);
            const T u = V::Load(pUp + o), d = V::Load(pDown + o);
            const T sumA = V::Add(l, r), sumV = V::Add(u, d);
            const T sumD = V::Add(V::Add(V::Load(pUp + o - 2), V::Load(pUp + o + 2)),
                                  V::Add(V::Load(pDown + o - 2), V::Load(pDown + o + 2)));
            own[i] = V::template Shr<Bits - 8>(V::And16(V::Load(pCur + o), mask1));
            across[i] = V::template Shr<Bits - 7>(V::And16(sumA, mask2));
            upDown[i] = V::template Shr<Bits - 7>(V::And16(sumV, mask2));
            direct[i] = V::template Shr<Bits - 6>(V::And16(V::Add(sumA, sumV), mask4));
            diagonal[i] = V::template Shr<Bits - 6>(V::And16(sumD, mask4));
        }
        const T sample = V::PackOrdered(own[0], own[1]);
        const T ownColour = V::Select(colour, sample, V::PackOrdered(across[0], across[1]));
        const T g = V::Select(colour, V::PackOrdered(direct[0], direct[1]), sample);
        const T other =
            V::Select(colour, V::PackOrdered(diagonal[0], diagonal[1]), V::PackOrdered(upDown[0], upDown[1]));
        uint8_t* p = pOut + size_t(x) * DstBytes;
        if constexpr (DstBytes == 3) {
            s.bRedLine ? V::StoreBgr(p, other, g, ownColour) : V::StoreBgr(p, ownColour, g, other);
        } else {
            s.bRedLine ? V::StoreBgra(p, other, g, ownColour) : V::StoreBgra(p, ownColour, g, other);
        }
    }
}

// A LUT whose doubled and quadrupled tables repeat its single ones, 10 or 12 bits: out =
// table[mean], the means as IdentityLineDeep takes them but kept whole (the mask, then a two-sum
// halved, a four-sum quartered). Those of a stretch of blocks go to three word buffers, then each
// pixel is three byte loads ORed into a four-byte store (the fourth byte as in MappedLine).
template <class V, unsigned Bits, uint32_t DstBytes>
void DeepMappedLine(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x0,
                    uint32_t x1, TLineSites s, const TLineTables& t)
{
    using T = typename V::T;
    using D = TDepth<Bits>;
    constexpr uint32_t kChunk = 256, kHalf = V::N / 2;  // pixels per stretch and per register of words
    alignas(32) uint16_t own[kChunk], g[kChunk], other[kChunk];
    const uint16_t* const iB = s.bRedLine ? other : own;
    const uint16_t* const iR = s.bRedLine ? own : other;
    const T colour = V::Set32(s.bColourFirst ? 0x0000FFFF : int32_t(0xFFFF0000u));  // word lanes of the colour sites
    const T mask1 = V::Set16(int16_t(D::kMask1)), mask2 = V::Set16(int16_t(D::kMask2)),
            mask4 = V::Set16(int16_t(D::kMask4));
    for (uint32_t c = x0; c < x1; c += kChunk) {
        const uint32_t n = x1 - c < kChunk ? x1 - c : kChunk;
        for (uint32_t i = 0; i < n; i += kHalf) {
            const size_t o = 2 * size_t(c + i);
            const T sumA = V::Add(V::Load(pCur + o - 2), V::Load(pCur + o + 2));
            const T sumV = V::Add(V::Load(pUp + o), V::Load(pDown + o));
            const T sumD = V::Add(V::Add(V::Load(pUp + o - 2), V::Load(pUp + o + 2)),
                                  V::Add(V::Load(pDown + o - 2), V::Load(pDown + o + 2)));
            const T sample = V::And16(V::Load(pCur + o), mask1);
            const T across = V::template Shr<1>(V::And16(sumA, mask2));
            const T upDown = V::template Shr<1>(V::And16(sumV, mask2));
            const T direct = V::template Shr<2>(V::And16(V::Add(sumA, sumV), mask4));
            const T diagonal = V::template Shr<2>(V::And16(sumD, mask4));
            V::Store(reinterpret_cast<uint8_t*>(own + i), V::Select(colour, sample, across));
            V::Store(reinterpret_cast<uint8_t*>(g + i), V::Select(colour, direct, sample));
            V::Store(reinterpret_cast<uint8_t*>(other + i), V::Select(colour, diagonal, upDown));
        }
        uint8_t* p = pOut + size_t(c) * DstBytes;
        for (uint32_t i = 0; i < n; ++i, p += DstBytes) {
            const uint32_t v =
                t.lut.pBlue[iB[i]] | uint32_t(t.lut.pGreen[g[i]]) << 8 | uint32_t(t.lut.pRed[iR[i]]) << 16;
            std::memcpy(p, &v, 4);
        }
    }
}

// With tables: the sums are the indices of the scalar rule (own into the single tables, two-sums
// into the doubled, four-sums into the quadrupled), gathered per channel into a small buffer and
// looked up pixel by pixel, the first pixel of each pair from the colour-site tables.
template <class V, uint32_t DstBytes>
void TableLine(const uint8_t* pUp, const uint8_t* pCur, const uint8_t* pDown, uint8_t* pOut, uint32_t x0, uint32_t x1,
               TLineSites s, const TLineTables& t)
{
    using T = typename V::T;
    const TBayerLut& lut = t.lut;
    const T colour = V::Set32(s.bColourFirst ? 0x0000FFFF : int32_t(0xFFFF0000u));  // word lanes of the colour sites
    // Tables of the colour sites [0] and of the green sites [1], per output channel.
    const uint8_t* const pOwnRed = s.bRedLine ? lut.pRed : lut.pRed4;
    const uint8_t* const pOwnBlue = s.bRedLine ? lut.pBlue4 : lut.pBlue;
    const uint8_t* const tabB[2] = {pOwnBlue, lut.pBlue2};
    const uint8_t* const tabG[2] = {lut.pGreen4, lut.pGreen};
    const uint8_t* const tabR[2] = {pOwnRed, lut.pRed2};
    const uint8_t* const b0 = tabB[s.bColourFirst ? 0 : 1];
    const uint8_t* const b1 = tabB[s.bColourFirst ? 1 : 0];
    const uint8_t* const g0 = tabG[s.bColourFirst ? 0 : 1];
    const uint8_t* const g1 = tabG[s.bColourFirst ? 1 : 0];
    const uint8_t* const r0 = tabR[s.bColourFirst ? 0 : 1];
    const uint8_t* const r1 = tabR[s.bColourFirst ? 1 : 0];
    alignas(32) uint16_t iOwn[V::N], iG[V::N], iOther[V::N];
    for (uint32_t x = x0; x < x1; x += V::N) {
        const TSums<V> m(pUp, pCur, pDown, x);
        const T ownLo = V::WidenLo(m.own), ownHi = V::WidenHi(m.own);
        V::StoreWords(iOwn, V::Select(colour, ownLo, m.across[0]), V::Select(colour, ownHi, m.across[1]));
        V::StoreWords(iG, V::Select(colour, m.direct[0], ownLo), V::Select(colour, m.direct[1], ownHi));
        V::StoreWords(iOther, V::Select(colour, m.diagonal[0], m.upDown[0]),
                      V::Select(colour, m.diagonal[1], m.upDown[1]));
        const uint16_t* const iB = s.bRedLine ? iOther : iOwn;
        const uint16_t* const iR = s.bRedLine ? iOwn : iOther;
        uint8_t* p = pOut + size_t(x) * DstBytes;
        for (uint32_t i = 0; i < V::N; i += 2, p += 2 * DstBytes) {
            StoreBgr<DstBytes>(p, b0[iB[i]], g0[iG[i]], r0[iR[i]]);
            StoreBgr<DstBytes>(p + DstBytes, b1[iB[i + 1]], g1[iG[i + 1]], r1[iR[i + 1]]);
        }
    }
}

// Whether the doubled and quadrupled tables of a LUT of dwEntries single entries (256, 1024, 4096)
// repeat its single ones, so that table2[a + b] = table[(a + b) / 2] and table4[sum] = table[sum /
// 4]: then the means can be looked up in the single tables.
inline bool RepeatsSingleTables(const TBayerLut& lut, uint32_t dwEntries)
{
    for (uint32_t s = 0; s < 4 * dwEntries; ++s) {
        if (s < 2 * dwEntries && (lut.pRed2[s] != lut.pRed[s >> 1] || lut.pBlue2[s] != lut.pBlue[s >> 1])) return false;
        if (lut.pRed4[s] != lut.pRed[s >> 2] || lut.pGreen4[s] != lut.pGreen[s >> 2] ||
            lut.pBlue4[s] != lut.pBlue[s >> 2])
            return false;
    }
    return true;
}

// The line worker for a depth, a destination and the LUT kind; null where the vector code has none
// (tables at 10 or 12 bits that do not repeat their single ones).
template <class V, uint32_t DstBytes>
auto LineWorker(uint32_t dwBits, bool bIdentity, const TBayerLut& lut)
{
    using TLineFn = void (*)(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint32_t, uint32_t, TLineSites,
                             const TLineTables&);
    if constexpr (V::N == 16 && !V::kShuffle && DstBytes == 3) {
        if (dwBits == 8 && bIdentity) return TLineFn(PairLine<V>);
    }
    if (dwBits == 8 && bIdentity) return TLineFn(IdentityLine<V, DstBytes>);
    if (dwBits == 8 && RepeatsSingleTables(lut, 256)) {
        if constexpr (V::kShuffle) return TLineFn(ShuffledLine<V, DstBytes>);
        return TLineFn(MappedLine<V, DstBytes>);
    }
    if (dwBits == 8) return TLineFn(TableLine<V, DstBytes>);
    if (bIdentity)
        return dwBits == 10 ? TLineFn(IdentityLineDeep<V, 10, DstBytes>) : TLineFn(IdentityLineDeep<V, 12, DstBytes>);
    if (!RepeatsSingleTables(lut, 1u << dwBits)) return TLineFn(nullptr);
    return dwBits == 10 ? TLineFn(DeepMappedLine<V, 10, DstBytes>) : TLineFn(DeepMappedLine<V, 12, DstBytes>);
}

// The interior lines: whole blocks of V::N pixels from column 1, then one more block ending at
// column w-2 (its right neighbours at w-1) that rewrites the same bytes where it overlaps, so the
// scalar rule is left nothing. Lines of fewer than V::N interior columns stay scalar.
template <class V>
uint32_t BilinearInterior(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwBits,
                          uint32_t dwDstBytes, const TBayerLut& lut, bool bIdentity)
{
    if (dwWidth < V::N + 2 || dwHeight < 3) return 1;
    const uint32_t x0 = 1, xEnd = dwWidth - 1, x1 = x0 + (xEnd - x0) / V::N * V::N, xTail = xEnd - V::N;
    const auto line =
        dwDstBytes == 3 ? LineWorker<V, 3>(dwBits, bIdentity, lut) : LineWorker<V, 4>(dwBits, bIdentity, lut);
    if (!line) return x0;
    TLineTables t;
    t.lut = lut;
    if (dwBits == 8 && !bIdentity) {
        for (uint32_t i = 0; i < 256; ++i) {
            t.b[i] = lut.pBlue[i];
            t.g[i] = uint32_t(lut.pGreen[i]) << 8;
            t.r[i] = uint32_t(lut.pRed[i]) << 16;
        }
    }
    // Column x0 is odd: a red column when the column toggle is set.
    const bool bRedColumnFirst = p.bShiftColumn;
    for (uint32_t y = 1; y + 1 < dwHeight; ++y) {
        const uint8_t* pCur = p.pSrc + size_t(y) * p.dwSrcLineIncrement;
        const uint8_t* pUp = pCur - p.dwSrcLineIncrement;
        const uint8_t* pDown = pCur + p.dwSrcLineIncrement;
        uint8_t* pOut = p.pDst + size_t(y) * p.dwDstLineIncrement;
        const bool bRedLine = ((y & 1) != 0) == p.bShiftLine;
        const bool bColourFirst = bRedLine == bRedColumnFirst;
        line(pUp, pCur, pDown, pOut, x0, x1, TLineSites{bRedLine, bColourFirst}, t);
        if (x1 < xEnd) {
            line(pUp, pCur, pDown, pOut, xTail, xEnd, TLineSites{bRedLine, bColourFirst != ((xTail - x0) & 1)}, t);
        }
    }
    return xEnd;
}

// Nearest neighbour, null LUT, 8 bits: pixel x of line y takes its own sample, its left neighbour
// and the sample above one of them: a colour site keeps its own colour, green from the left and
// the other colour from above-left; a green site keeps green, its line's colour from the left and
// the other from above. Bytes in the destination's order (bRgb: red first).
template <class V, uint32_t DstBytes, bool bRgb>
void NearestLine(const uint8_t* pUp, const uint8_t* pCur, uint8_t* pOut, uint32_t x0, uint32_t x1, TLineSites s)
{
    using T = typename V::T;
    const T colour = V::Set16(s.bColourFirst ? 0x00FF : int16_t(0xFF00));
    for (uint32_t x = x0; x < x1; x += V::N) {
        const T own = V::Load(pCur + x), left = V::Load(pCur + x - 1);
        const T g = V::Select(colour, left, own), mine = V::Select(colour, own, left);
        const T other = V::Select(colour, V::Load(pUp + x - 1), V::Load(pUp + x));
        const T first = s.bRedLine == bRgb ? mine : other, last = s.bRedLine == bRgb ? other : mine;
        uint8_t* p = pOut + size_t(x) * DstBytes;
        if constexpr (DstBytes == 3) {
            V::StoreBgr(p, first, g, last);
        } else {
            V::StoreBgra(p, first, g, last);
        }
    }
}

// The nearest-neighbour interior (lines 1..h-1, columns 1..w-1) in whole blocks and one last block
// ending at column w-1; returns the first column left to the scalar rule (w, or 1 when the lines
// hold fewer than V::N interior columns).
template <class V>
uint32_t NearestInterior(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwDstBytes, bool bRgb)
{
    if (dwWidth < V::N + 1 || dwHeight < 2) return 1;
    using TLineFn = void (*)(const uint8_t*, const uint8_t*, uint8_t*, uint32_t, uint32_t, TLineSites);
    const TLineFn line = dwDstBytes == 3 ? (bRgb ? NearestLine<V, 3, true> : NearestLine<V, 3, false>)
                                         : (bRgb ? NearestLine<V, 4, true> : NearestLine<V, 4, false>);
    const uint32_t x0 = 1, x1 = x0 + (dwWidth - x0) / V::N * V::N, xTail = dwWidth - V::N;
    for (uint32_t y = 1; y < dwHeight; ++y) {
        const uint8_t* pCur = p.pSrc + size_t(y) * p.dwSrcLineIncrement;
        uint8_t* pOut = p.pDst + size_t(y) * p.dwDstLineIncrement;
        const bool bRedLine = ((y & 1) != 0) == p.bShiftLine;
        const bool bColourFirst = bRedLine == p.bShiftColumn;  // column 1
        line(pCur - p.dwSrcLineIncrement, pCur, pOut, x0, x1, TLineSites{bRedLine, bColourFirst});
        if (x1 < dwWidth) {
            line(pCur - p.dwSrcLineIncrement, pCur, pOut, xTail, dwWidth,
                 TLineSites{bRedLine, bColourFirst != ((xTail - x0) & 1)});
        }
    }
    return dwWidth;
}

}  // namespace
