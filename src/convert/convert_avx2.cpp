// convert_avx2.cpp: the line converters built on 32-byte AVX2 steps. Only the functions marked KAIP_AVX2
// (those of convert_gather.h included) are compiled for AVX2; everything else here, the shared line tails
// included, stays baseline x86-64, so nothing of this file that runs before the AVX switch is checked uses it.
#include <immintrin.h>

#include <cstring>

#define KAIP_AVX2 __attribute__((target("avx2")))
#define KAIP_VECTOR_TARGET KAIP_AVX2
#include "convert/convert_gather.h"
#include "convert/convert_steps.h"
#include "convert/convert_yuv.h"

namespace convert::avx2 {
namespace {

// Non-temporal stores whole where the address is on 32 bytes, else in two halves: a line start is only promised
// 16-byte alignment (the test is the same for every step of most lines, so it predicts well).
template <bool kStream>
KAIP_AVX2 inline void Store(uint8_t* p, __m256i v)
{
    if constexpr (kStream) {
        if ((reinterpret_cast<uintptr_t>(p) & 31) == 0) {
            _mm256_stream_si256(reinterpret_cast<__m256i*>(p), v);
        } else {
            _mm_stream_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(v));
            _mm_stream_si128(reinterpret_cast<__m128i*>(p + 16), _mm256_extracti128_si256(v, 1));
        }
    } else {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
    }
}

KAIP_AVX2 inline __m256i Load(const uint8_t* p)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

// Two 16-byte loads, one per lane.
KAIP_AVX2 inline __m256i Load2(const uint8_t* pLow, const uint8_t* pHigh)
{
    return _mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(pHigh), reinterpret_cast<const __m128i*>(pLow));
}

// The registers of convert_gather.h (two 16-byte lanes, steps of 32 pixels), convert_steps.h and convert_yuv.h.
struct VAvx2 {
    using T = __m256i;
    static constexpr int kLanes = 2, kBytes = 32;
    static constexpr uint32_t kPixels = 32;
    KAIP_AVX2 static T Load(const uint8_t* p) { return avx2::Load(p); }
    KAIP_AVX2 static T LoadLanes(const uint8_t* const (&p)[2]) { return Load2(p[0], p[1]); }
    template <bool kStream>
    KAIP_AVX2 static void Store(uint8_t* p, T v)
    {
        avx2::Store<kStream>(p, v);
    }
    KAIP_AVX2 static T And(T a, T b) { return _mm256_and_si256(a, b); }
    KAIP_AVX2 static T Or(T a, T b) { return _mm256_or_si256(a, b); }
    KAIP_AVX2 static T Blend(T a, T b, T mask) { return _mm256_blendv_epi8(a, b, mask); }
    KAIP_AVX2 static T Shuffle(T v, T control) { return _mm256_shuffle_epi8(v, control); }
    KAIP_AVX2 static T IsUnset(T v) { return _mm256_cmpeq_epi8(v, _mm256_set1_epi8(-128)); }
    KAIP_AVX2 static T Set16(int16_t v) { return _mm256_set1_epi16(v); }
    template <int k>
    KAIP_AVX2 static T Srl16(T v)
    {
        return _mm256_srli_epi16(v, k);
    }
    template <int k>
    KAIP_AVX2 static T Sll16(T v)
    {
        return _mm256_slli_epi16(v, k);
    }
    KAIP_AVX2 static T Set32(int32_t v) { return _mm256_set1_epi32(v); }
    KAIP_AVX2 static T MAdd16(T a, T b) { return _mm256_madd_epi16(a, b); }
    template <int k>
    KAIP_AVX2 static T Sll32(T v)
    {
        return _mm256_slli_epi32(v, k);
    }
    template <int k>
    KAIP_AVX2 static T Sra32(T v)
    {
        return _mm256_srai_epi32(v, k);
    }
    template <int k>
    KAIP_AVX2 static T Srl32(T v)
    {
        return _mm256_srli_epi32(v, k);
    }
    static constexpr bool kByteMAdd = true;
    KAIP_AVX2 static T MAddUbs(T a, T b) { return _mm256_maddubs_epi16(a, b); }
    // The packs work per lane; the permutation puts their four quarters back in pixel order.
    KAIP_AVX2 static T PackS32(T a, T b) { return _mm256_permute4x64_epi64(_mm256_packs_epi32(a, b), 0xD8); }
    KAIP_AVX2 static T PackUS32(T a, T b) { return _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8); }
    KAIP_AVX2 static T Zero() { return _mm256_setzero_si256(); }
    KAIP_AVX2 static T UnpackLo8(T a, T b) { return _mm256_unpacklo_epi8(a, b); }
    KAIP_AVX2 static T UnpackHi8(T a, T b) { return _mm256_unpackhi_epi8(a, b); }
    KAIP_AVX2 static T Add16(T a, T b) { return _mm256_add_epi16(a, b); }
    KAIP_AVX2 static T Sub16(T a, T b) { return _mm256_sub_epi16(a, b); }
    KAIP_AVX2 static T AddS16(T a, T b) { return _mm256_adds_epi16(a, b); }
    KAIP_AVX2 static T MulLo16(T a, T b) { return _mm256_mullo_epi16(a, b); }
    KAIP_AVX2 static T MulHiU16(T a, T b) { return _mm256_mulhi_epu16(a, b); }
    KAIP_AVX2 static T Avg16(T a, T b) { return _mm256_avg_epu16(a, b); }
    template <int k>
    KAIP_AVX2 static T Sra16(T v)
    {
        return _mm256_srai_epi16(v, k);
    }
    KAIP_AVX2 static T PackUS16(T a, T b) { return _mm256_packus_epi16(a, b); }
    template <bool kLumaFirst>
    KAIP_AVX2 static T Luma(T s)
    {
        return kLumaFirst ? _mm256_and_si256(s, _mm256_set1_epi16(0xFF)) : _mm256_srli_epi16(s, 8);
    }
    // Byte kAt of each 4-byte pair group as the high byte of both of the pair's 16-bit lanes.
    template <int kAt>
    KAIP_AVX2 static T PairByte(T s)
    {
        constexpr char a = kAt, b = kAt + 4, c = kAt + 8, d = kAt + 12, z = -128;
        return _mm256_shuffle_epi8(s, _mm256_setr_epi8(z, a, z, a, z, b, z, b, z, c, z, c, z, d, z, d, z, a, z, a, z, b,
                                                       z, b, z, c, z, c, z, d, z, d));
    }
    template <bool kLumaFirst>
    KAIP_AVX2 static void Chroma(T s, T& u, T& v)
    {
        constexpr int kU = kLumaFirst ? 1 : 0, kV = kLumaFirst ? 3 : 2;
        u = PairByte<kU>(s), v = PairByte<kV>(s);
    }
};

// The 32-pixel steps of this file's own loops, placed as the shared ones are.
inline uint32_t Covered(uint32_t dwWidth)
{
    return convert::Covered<VAvx2>(dwWidth);
}
inline uint32_t StepAt(uint32_t x, uint32_t covered)
{
    return convert::StepAt<VAvx2>(x, covered);
}

// The smaller line increment in bytes, 128 at a time, then 16 at a time (a streamed line keeps streaming up
// to its last 16 bytes), the rest by memcpy as the scalar member does.
struct KCopy {
    size_t bytes;
    template <bool kStream>
    KAIP_AVX2 void Line(const uint8_t* pS, uint8_t* pD) const
    {
        size_t x = 0;
        for (; x + 128 <= bytes; x += 128) {
            const __m256i a = Load(pS + x), b = Load(pS + x + 32), c = Load(pS + x + 64), d = Load(pS + x + 96);
            Store<kStream>(pD + x, a);
            Store<kStream>(pD + x + 32, b);
            Store<kStream>(pD + x + 64, c);
            Store<kStream>(pD + x + 96, d);
        }
        for (; x + 16 <= bytes; x += 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pS + x));
            if constexpr (kStream)
                _mm_stream_si128(reinterpret_cast<__m128i*>(pD + x), v);
            else
                _mm_storeu_si128(reinterpret_cast<__m128i*>(pD + x), v);
        }
        std::memcpy(pD + x, pS + x, bytes - x);
    }
};

// The greys of 32 pixels from the (B, G) and (R, G) pairs of pixels 0-15 and 16-31, weighted as the SSSE3
// build does.
struct FGrey : FOnPairs {
    static constexpr uint32_t kOutBytes = 32;
    KAIP_AVX2 static __m256i Grey(__m256i bg, __m256i rg)
    {
        const __m256i sum = _mm256_add_epi16(_mm256_maddubs_epi16(bg, _mm256_set1_epi16(110 << 8 | 18)),
                                             _mm256_maddubs_epi16(rg, _mm256_set1_epi16(73 << 8 | 54)));
        return _mm256_srli_epi16(_mm256_add_epi16(sum, _mm256_set1_epi16(128)), 8);
    }
    template <bool kStream>
    KAIP_AVX2 static void Put(uint8_t* d, __m256i bg0, __m256i rg0, __m256i bg1, __m256i rg1)
    {
        // The pack works per lane; the permutation puts its four quarters back in pixel order.
        Store<kStream>(d, _mm256_permute4x64_epi64(_mm256_packus_epi16(Grey(bg0, rg0), Grey(bg1, rg1)), 0xD8));
    }
};

// 32 words per step masked to their used bits and shifted down to 8 over the Covered pixels; the rest of the
// line by the scalar member.
struct KMonoWordToMono8 {
    uint32_t dwWidth, dwBits;

    template <bool kStream>
    KAIP_AVX2 void Line(const uint8_t* pS, uint8_t* pD) const
    {
        const __m256i mask = _mm256_set1_epi16(int16_t(0xFFFFu >> (16 - dwBits)));
        const __m128i shift = _mm_cvtsi32_si128(int(dwBits - 8));
        const uint32_t covered = Covered(dwWidth);
        for (uint32_t x = 0; x < covered; x += 32) {
            const uint32_t at = StepAt(x, covered);
            const __m256i a = _mm256_srl_epi16(_mm256_and_si256(Load(pS + 2 * at), mask), shift);
            const __m256i b = _mm256_srl_epi16(_mm256_and_si256(Load(pS + 2 * at + 32), mask), shift);
            // The pack works per lane; the permutation puts its four quarters back in pixel order.
            Store<kStream>(pD + at, _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8));
        }
        RMonoWord rd{dwBits};
        ConvertGroups(rd, WMono8{}, covered, dwWidth, pS, pD);
    }
};

// How byte planes of 32 pixels hold them: as two 16-pixel packs leave them (pixels 0-7, 16-23 | 8-15, 24-31); as
// the packs leave sources whose 4-pixel quarters were swapped into the order 0, 2, 1, 3 (quads 0, 2, 4, 6 | 1, 3,
// 5, 7), which the unpacks of 4-byte pixels turn into pixel order without a lane crossing; or in pixel order
// (0-15 | 16-31), from which each lane's 3-byte pixels are shuffled directly.
enum TPlaneOrder { kPacked, kQuads, kInOrder };

// Byte shuffle controls that set the 16 pixels of a lane of planes in pixel order out as their 48 bytes of 3-byte
// pixels: c[j][k] takes from the plane of the pixels' k-th byte what falls in bytes 16 j to 16 j + 15 (the rest 0).
struct TBytes3 {
    int8_t c[3][3][32];
};
constexpr TBytes3 MakeBytes3()
{
    TBytes3 t{};
    for (int j = 0; j < 3; ++j)
        for (int k = 0; k < 3; ++k)
            for (int i = 0; i < 32; ++i) {
                const int n = 16 * j + i % 16;
                t.c[j][k][i] = n % 3 == k ? int8_t(n / 3) : int8_t(-128);
            }
    return t;
}
constexpr TBytes3 kBytes3 = MakeBytes3();

// 32 pixels of byte planes b, g, r in the order kOrder (kInOrder for 3-byte pixels only) stored as 3 or 4 bytes
// each as W writes them, the fourth byte 0.
template <bool kStream, class W, TPlaneOrder kOrder = kPacked>
KAIP_AVX2 inline void StorePlanes(uint8_t* d, __m256i b, __m256i g, __m256i r)
{
    const __m256i first = W::kOrder == kBGR ? b : r, third = W::kOrder == kBGR ? r : b;
    if constexpr (kOrder == kInOrder) {
        static_assert(W::kBytes == 3, "4-byte pixels come from packed or quad order");
        // Three 16-byte chunks per lane (pixels 0-15 in the low lane, 16-31 in the high one), each the OR of one
        // shuffle per plane; the lanes' chunks 0-2 then go to bytes 0-47 and 48-95.
        __m256i o[3];
        for (int j = 0; j < 3; ++j) {
            const auto& c = kBytes3.c[j];
            o[j] = _mm256_or_si256(
                _mm256_or_si256(_mm256_shuffle_epi8(first, Load(reinterpret_cast<const uint8_t*>(c[0]))),
                                _mm256_shuffle_epi8(g, Load(reinterpret_cast<const uint8_t*>(c[1])))),
                _mm256_shuffle_epi8(third, Load(reinterpret_cast<const uint8_t*>(c[2]))));
        }
        Store<kStream>(d, _mm256_permute2x128_si256(o[0], o[1], 0x20));
        Store<kStream>(d + 32, _mm256_blend_epi32(o[2], o[0], 0xF0));
        Store<kStream>(d + 64, _mm256_permute2x128_si256(o[1], o[2], 0x31));
        return;
    }
    // The byte unpacks undo the packs' lane order, leaving pixels 0-15 in the low halves and 16-31 in the
    // high ones (in quad order pixels 0-7, 8-15, 16-23 and 24-31 in p0 to p3).
    constexpr bool kQuad = kOrder == kQuads;
    const __m256i zero = _mm256_setzero_si256();
    const __m256i fg0 = _mm256_unpacklo_epi8(first, g), fg1 = _mm256_unpackhi_epi8(first, g);
    const __m256i t0 = _mm256_unpacklo_epi8(third, zero), t1 = _mm256_unpackhi_epi8(third, zero);
    const __m256i p0 = _mm256_unpacklo_epi16(fg0, t0), p1 = _mm256_unpackhi_epi16(fg0, t0);
    const __m256i p2 = _mm256_unpacklo_epi16(fg1, t1), p3 = _mm256_unpackhi_epi16(fg1, t1);
    const __m256i q0 = kQuad ? p0 : _mm256_permute2x128_si256(p0, p1, 0x20);
    const __m256i q1 = kQuad ? p1 : _mm256_permute2x128_si256(p0, p1, 0x31);
    const __m256i q2 = kQuad ? p2 : _mm256_permute2x128_si256(p2, p3, 0x20);
    const __m256i q3 = kQuad ? p3 : _mm256_permute2x128_si256(p2, p3, 0x31);
    if constexpr (W::kBytes == 4 && kStream && !kQuad) {
        // Streamed 16 bytes at a time anyway, so each lane goes to its place without crossing lanes first.
        const __m256i p[] = {p0, p1, p2, p3};
        for (int i = 0; i < 4; ++i) {
            uint8_t* at = d + 64 * (i / 2) + 16 * (i % 2);
            _mm_stream_si128(reinterpret_cast<__m128i*>(at), _mm256_castsi256_si128(p[i]));
            _mm_stream_si128(reinterpret_cast<__m128i*>(at + 32), _mm256_extracti128_si256(p[i], 1));
        }
    } else if constexpr (W::kBytes == 4) {
        Store<kStream>(d, q0);
        Store<kStream>(d + 32, q1);
        Store<kStream>(d + 64, q2);
        Store<kStream>(d + 96, q3);
    } else {
        // Each lane drops its fourth bytes (12 bytes in dwords 0-2 and 4-6), then whole dwords move across
        // lanes into three stores of 32 bytes.
        const __m256i drop = _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, 0, 1, 2, 4, 5, 6,
                                              8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
        const __m256i c0 = _mm256_shuffle_epi8(q0, drop), c1 = _mm256_shuffle_epi8(q1, drop);
        const __m256i c2 = _mm256_shuffle_epi8(q2, drop), c3 = _mm256_shuffle_epi8(q3, drop);
        const __m256i i0 = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 0, 1), i1 = _mm256_setr_epi32(2, 4, 5, 6, 0, 1, 2, 4);
        const __m256i i2 = _mm256_setr_epi32(5, 6, 0, 1, 2, 4, 5, 6);
        Store<kStream>(
            d, _mm256_blend_epi32(_mm256_permutevar8x32_epi32(c0, i0), _mm256_permutevar8x32_epi32(c1, i0), 0xC0));
        Store<kStream>(
            d + 32, _mm256_blend_epi32(_mm256_permutevar8x32_epi32(c1, i1), _mm256_permutevar8x32_epi32(c2, i1), 0xF0));
        Store<kStream>(
            d + 64, _mm256_blend_epi32(_mm256_permutevar8x32_epi32(c2, i2), _mm256_permutevar8x32_epi32(c3, i2), 0xFC));
    }
}

// The byte planes of 32 pixels of 4:2:2 read as R reads them (64 source bytes), in the order that saves the store
// its lane crossings: for 4-byte pixels each load's quarters swapped so that its pixels 8-11 sit in the low lane
// and 4-7 in the high one, for 3-byte pixels the loads' lanes taken 16 bytes apart (a pair never spans two
// quarters, so each pixel keeps its chroma).
template <class R>
struct SYuv422 {
    static constexpr uint32_t kInBytes = 64;
    template <class W>
    static constexpr TPlaneOrder kOrder = W::kBytes == 3 ? kInOrder : kQuads;
    template <TPlaneOrder kOrder>
    KAIP_AVX2 static void Planes(const uint8_t* s, __m256i& b, __m256i& g, __m256i& r)
    {
        using K = typename R::TCoefficients;
        if constexpr (kOrder == kInOrder)
            YuvPlanes<VAvx2, K, R::kLumaFirst>(Load2(s, s + 32), Load2(s + 16, s + 48), b, g, r);
        else
            YuvPlanes<VAvx2, K, R::kLumaFirst>(_mm256_permute4x64_epi64(Load(s), 0xD8),
                                               _mm256_permute4x64_epi64(Load(s + 32), 0xD8), b, g, r);
    }
};

// The 96 bytes at s as groups of three, 16 to a lane (the first 48 bytes in the low lanes), split into byte planes
// c[0], c[1], c[2] by four rounds of byte unpacks, as the SSE2 build splits 48 bytes.
KAIP_AVX2 inline void Deinterleave3(const uint8_t* s, __m256i c[3])
{
    c[0] = Load2(s, s + 48), c[1] = Load2(s + 16, s + 64), c[2] = Load2(s + 32, s + 80);
    for (int round = 0; round < 4; ++round) {
        const __m256i bSwapped = _mm256_shuffle_epi32(c[1], 0x4E);
        const __m256i x = _mm256_unpacklo_epi8(c[0], bSwapped);
        const __m256i y = _mm256_unpackhi_epi8(c[0], _mm256_slli_si256(c[2], 8));
        const __m256i z = _mm256_unpackhi_epi8(bSwapped, c[2]);
        c[0] = x, c[1] = y, c[2] = z;
    }
}

// The byte planes of 32 pixels of 4:4:4 read as R reads them (96 source bytes): pixels 0-15 and 16-31 split
// into byte planes in the two lanes, which is pixel order, then for 4-byte pixels set out as the 16-pixel packs
// leave them.
template <class R>
struct SYuv444 {
    static constexpr uint32_t kInBytes = 96;
    template <class W>
    static constexpr TPlaneOrder kOrder = W::kBytes == 3 ? kInOrder : kPacked;
    template <TPlaneOrder kOrder>
    KAIP_AVX2 static void Planes(const uint8_t* s, __m256i& b, __m256i& g, __m256i& r)
    {
        using L = TLayout444<R>;
        __m256i c[3];
        Deinterleave3(s, c);
        YuvPlanes444<VAvx2, typename L::K>(c[L::kY], c[L::kU], c[L::kV], b, g, r);
        if constexpr (kOrder == kPacked) {
            b = _mm256_permute4x64_epi64(b, 0xD8), g = _mm256_permute4x64_epi64(g, 0xD8);
            r = _mm256_permute4x64_epi64(r, 0xD8);
        }
    }
};

// The byte planes of 32 pixels of 15-bit (k565 false) or 16-bit words (64 source bytes), every channel moved
// to the top of its byte by shifts alone, as Unpack555 and Unpack565 do.
template <bool k565>
struct SShort {
    static constexpr uint32_t kInBytes = 64;
    template <class W>
    static constexpr TPlaneOrder kOrder = kPacked;
    KAIP_AVX2 static void Channels(__m256i w, __m256i& r, __m256i& g, __m256i& b)
    {
        r = k565 ? _mm256_and_si256(_mm256_srli_epi16(w, 8), _mm256_set1_epi16(0xF8))
                 : _mm256_srli_epi16(_mm256_and_si256(w, _mm256_set1_epi16(0x7C00)), 7);
        g = _mm256_srli_epi16(_mm256_and_si256(w, _mm256_set1_epi16(k565 ? 0x7E0 : 0x3E0)), k565 ? 3 : 2);
        b = _mm256_and_si256(_mm256_slli_epi16(w, 3), _mm256_set1_epi16(0xFF));
    }
    template <TPlaneOrder>
    KAIP_AVX2 static void Planes(const uint8_t* s, __m256i& b, __m256i& g, __m256i& r)
    {
        __m256i r0, g0, b0, r1, g1, b1;
        Channels(Load(s), r0, g0, b0);
        Channels(Load(s + 32), r1, g1, b1);
        b = _mm256_packus_epi16(b0, b1), g = _mm256_packus_epi16(g0, g1), r = _mm256_packus_epi16(r0, r1);
    }
};

// 32 pixels per step over the Covered pixels, made byte planes by S and stored as W writes them; the rest of
// the line by the scalar member's reader R and writer W.
template <class S, class R, class W>
struct KPlanes {
    uint32_t dwWidth;

    template <bool kStream>
    KAIP_AVX2 void Line(const uint8_t* pS, uint8_t* pD) const
    {
        const uint32_t covered = Covered(dwWidth);
        for (uint32_t x = 0; x < covered; x += 32) {
            const uint32_t at = StepAt(x, covered);
            constexpr TPlaneOrder kOrder = S::template kOrder<W>;
            __m256i b, g, r;
            S::template Planes<kOrder>(pS + size_t(at) * S::kInBytes / 32, b, g, r);
            StorePlanes<kStream, W, kOrder>(pD + at * W::kBytes, b, g, r);
        }
        R rd;
        ConvertGroups(rd, W{}, covered / R::kPixels, dwWidth / R::kPixels, pS, pD);
    }
};

// Each of the 8 words of each lane of w over four words: words 0 and 1 in r[0], 2 and 3 in r[1], and so on.
KAIP_AVX2 inline void Repeat4(__m256i w, __m256i r[4])
{
    const __m256i lo = _mm256_unpacklo_epi16(w, w), hi = _mm256_unpackhi_epi16(w, w);
    r[0] = _mm256_unpacklo_epi32(lo, lo), r[1] = _mm256_unpackhi_epi32(lo, lo);
    r[2] = _mm256_unpacklo_epi32(hi, hi), r[3] = _mm256_unpackhi_epi32(hi, hi);
}

// 64 pixels of 4:1:1 (32 halves of three bytes, chroma and lumas where R finds them) to 3 or 4 bytes each as W
// writes them, the fourth byte 0: each lane converts 32 pixels as the SSE2 build does (U words over four pixels,
// V words two pixels behind, the first two taking vPrev in the low lane and the low lane's last V in the high
// one), and each 32-pixel half of the destination takes its planes from the two lanes' packs.
template <class R, class W>
struct SYuv411 {
    static constexpr uint32_t kPixels = 64;
    static constexpr TPlaneOrder kOrder = W::kBytes == 3 ? kInOrder : kQuads;
    // The planes of pixels 0-31 (kSelect 0x20) or 32-63 (0x31) of the packs of pixels 0-15 | 32-47 and 16-31 |
    // 48-63, in kOrder.
    template <int kSelect>
    KAIP_AVX2 static __m256i Half(__m256i a, __m256i b)
    {
        const __m256i v = _mm256_permute2x128_si256(a, b, kSelect);
        return kOrder == kInOrder ? v : _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7));
    }
    template <bool kStream>
    KAIP_AVX2 void Run(const uint8_t* s, uint8_t* d, uint32_t vPrev) const
    {
        __m256i c[3], u[4], v[4], planes[2][3];
        Deinterleave3(s, c);
        const __m256i ch = c[R::kChroma], zero = _mm256_setzero_si256();
        Repeat4(_mm256_slli_epi16(ch, 8), u);
        Repeat4(_mm256_and_si256(ch, _mm256_set1_epi16(int16_t(0xFF00))), v);
        const __m256i fill =
            _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_cvtsi32_si128(int(vPrev * 0x01000100u))),
                                    _mm256_castsi256_si128(_mm256_srli_si256(v[3], 12)), 1);
        for (int i = 3; i > 0; --i) v[i] = _mm256_or_si256(_mm256_slli_si256(v[i], 4), _mm256_srli_si256(v[i - 1], 12));
        v[0] = _mm256_or_si256(_mm256_slli_si256(v[0], 4), fill);
        for (int h = 0; h < 2; ++h) {
            const __m256i y =
                h ? _mm256_unpackhi_epi8(c[R::kLuma0], c[R::kLuma1]) : _mm256_unpacklo_epi8(c[R::kLuma0], c[R::kLuma1]);
            __m256i b0, g0, r0, b1, g1, r1;
            YuvWords<VAvx2, CYuvCoefficients>(_mm256_unpacklo_epi8(y, zero), u[2 * h], v[2 * h], b0, g0, r0);
            YuvWords<VAvx2, CYuvCoefficients>(_mm256_unpackhi_epi8(y, zero), u[2 * h + 1], v[2 * h + 1], b1, g1, r1);
            planes[h][0] = _mm256_packus_epi16(b0, b1), planes[h][1] = _mm256_packus_epi16(g0, g1);
            planes[h][2] = _mm256_packus_epi16(r0, r1);
        }
        const __m256i(&a)[3] = planes[0], (&b)[3] = planes[1];
        StorePlanes<kStream, W, kOrder>(d, Half<0x20>(a[0], b[0]), Half<0x20>(a[1], b[1]), Half<0x20>(a[2], b[2]));
        StorePlanes<kStream, W, kOrder>(d + 32 * W::kBytes, Half<0x31>(a[0], b[0]), Half<0x31>(a[1], b[1]),
                                        Half<0x31>(a[2], b[2]));
    }
};

using FPack555 = FBytes4ToShort<VAvx2, false>;
using FPack565 = FBytes4ToShort<VAvx2, true>;

template <class M, class R, class W, bool kCut = false>
int Run(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return RunGather<VAvx2, M, R, W, kCut>(dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines);
}

}  // namespace

#define KAIP_LINE_ARGS dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc

KAIP_BYTE_MAP_CONVERTERS(KAIP_DEFINE_BYTE_MAP_CONVERTER)

#define KAIP_DEFINE_PAIR_CONVERTER(name, O, kPixelBytes, R, W, F)                        \
    int name(KAIP_LINE_PARAMS, bool bReverseLines)                                       \
    {                                                                                    \
        return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, \
                        KPairs<VAvx2, O, kPixelBytes, R, W, F>{dwWidth});                \
    }
KAIP_PAIR_CONVERTERS(KAIP_DEFINE_PAIR_CONVERTER)

int CopyBitmapData(KAIP_LINE_PARAMS, bool bReverseLines)
{
    (void)dwWidth;
    return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                    KCopy{dwSrcLineInc < dwDstLineInc ? dwSrcLineInc : dwDstLineInc});
}

int Convert_Mono8_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MMono8ToBGR32, RMono8, WBGR32>(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_RGB32_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run<MRGB32ToBGR32, RRGB32, WBGR32Kept>(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_MonoWord_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                    KMonoWordToMono8{dwWidth, dwSrcBits});
}

// The 4:2:2 and 4:4:4 colour converters, S the family's step.
#define KAIP_DEFINE_YUV_CONVERTER(S, name, R, W)                                                       \
    int name(KAIP_LINE_PARAMS, bool bReverseLines)                                                     \
    {                                                                                                  \
        return RunLines<kNeverStream>(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, \
                                      KPlanes<S<R>, R, W>{dwWidth});                                   \
    }
#define KAIP_DEFINE_YUV422_CONVERTER(name, R, W) KAIP_DEFINE_YUV_CONVERTER(SYuv422, name, R, W)
#define KAIP_DEFINE_YUV444_CONVERTER(name, R, W) KAIP_DEFINE_YUV_CONVERTER(SYuv444, name, R, W)
KAIP_YUV422_CONVERTERS(KAIP_DEFINE_YUV422_CONVERTER)
KAIP_YUV444_CONVERTERS(KAIP_DEFINE_YUV444_CONVERTER)
KAIP_YUV411_CONVERTERS(KAIP_DEFINE_YUV411_CONVERTER)

// The 15/16-bit to 24/32-bit members of KAIP_VECTOR_MEMBERS, with the SSE2 build's store choice.
#define KAIP_AVX2_ENTRY(name, R, W, S)                                                                       \
    int name(KAIP_LINE_PARAMS, bool bReverseLines)                                                           \
    {                                                                                                        \
        return RunLines<kStreamAbove<R, W>>(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, \
                                            KPlanes<S, R, W>{dwWidth});                                      \
    }
KAIP_AVX2_ENTRY(Convert_BGR15_to_BGR24, RBGR15, WBGR24, SShort<false>)
KAIP_AVX2_ENTRY(Convert_BGR15_to_RGB24, RBGR15, WRGB24, SShort<false>)
KAIP_AVX2_ENTRY(Convert_BGR15_to_BGR32, RBGR15, WBGR32, SShort<false>)
KAIP_AVX2_ENTRY(Convert_BGR15_to_RGB32, RBGR15, WRGB32, SShort<false>)
KAIP_AVX2_ENTRY(Convert_BGR16_to_BGR24, RBGR16, WBGR24, SShort<true>)
KAIP_AVX2_ENTRY(Convert_BGR16_to_RGB24, RBGR16, WRGB24, SShort<true>)
KAIP_AVX2_ENTRY(Convert_BGR16_to_BGR32, RBGR16, WBGR32, SShort<true>)
KAIP_AVX2_ENTRY(Convert_BGR16_to_RGB32, RBGR16, WRGB32, SShort<true>)

// The 32-bit to 15/16-bit members of KAIP_VECTOR_MEMBERS.
#define KAIP_AVX2_STEP_ENTRY(name, R, W, ...)                                            \
    int name(KAIP_LINE_PARAMS, bool bReverseLines)                                       \
    {                                                                                    \
        return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, \
                        KSteps<__VA_ARGS__, R, W>{dwWidth, {}, {}, {}});                 \
    }
KAIP_AVX2_STEP_ENTRY(Convert_BGR32_to_BGR15, RBGR32, WBGR15, SBytes4ToShort<VAvx2, false, kBGR>)
KAIP_AVX2_STEP_ENTRY(Convert_RGB32_to_BGR15, RRGB32, WBGR15, SBytes4ToShort<VAvx2, false, kRGB>)
KAIP_AVX2_STEP_ENTRY(Convert_BGR32_to_BGR16, RBGR32, WBGR16, SBytes4ToShort<VAvx2, true, kBGR>)
KAIP_AVX2_STEP_ENTRY(Convert_RGB32_to_BGR16, RRGB32, WBGR16, SBytes4ToShort<VAvx2, true, kRGB>)

}  // namespace convert::avx2
