// convert_sse2.cpp: the line converters built with SSE2 alone (part of every x86-64 processor, so no
// options are needed; they still run only behind the SSE2 switch).
#include <emmintrin.h>

#include <cstring>
#include <utility>

#define KAIP_VECTOR_TARGET
#include "convert/convert_steps.h"
#include "convert/convert_yuv.h"

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

// 16 pixels through the byte map M by the parts of its shift plan. Where source and destination advance
// alike, a destination a little ahead of the source modulo 4 KiB stays so along the whole line, and every load
// then shares its low address bits with a store of the step before, still pending while non-temporal stores
// drain, and waits for it; such maps load each 16-byte block of the step once (the last one ending at the
// step's end) and cut the parts from the blocks their windows overlap. The others load each part's window,
// moved into place where it would start before the step or end after it. No load leaves the step.
template <class M>
struct SShifts {
    using P = TShiftPlan<M, 16>;
    static constexpr uint32_t kPixels = 16, kInBytes = P::kInBytes, kOutBytes = P::kOutBytes;
    static constexpr bool kFromBlocks = kInBytes == kOutBytes;
    static constexpr int kBlocks = kFromBlocks ? (P::kInBytes + 15) / 16 : 0;
    static constexpr int Base(int i) { return 16 * i < P::kInBytes - 16 ? 16 * i : P::kInBytes - 16; }
    // The last block starting at or before off (the first for an off before the step).
    static constexpr int BlockOf(int off)
    {
        int i = 0;
        while (i + 1 < kBlocks && Base(i + 1) <= off) ++i;
        return i;
    }

    template <int kShift>
    static __m128i Shift(__m128i v)
    {
        if constexpr (kShift > 0) return _mm_srli_si128(v, kShift);
        if constexpr (kShift < 0) return _mm_slli_si128(v, -kShift);
        return v;
    }
    // The 16 source bytes at off (those outside the step 0).
    template <int kOff>
    static __m128i Window(const uint8_t* s, const __m128i* b)
    {
        if constexpr (kFromBlocks) {
            constexpr int i = BlockOf(kOff);
            const __m128i v = Shift<kOff - Base(i)>(b[i]);
            if constexpr (kOff > Base(i) && i + 1 < kBlocks && Base(i + 1) < kOff + 16)
                return _mm_or_si128(v, Shift<kOff - Base(i + 1)>(b[i + 1]));
            return v;
        } else {
            constexpr int kAt = kOff < 0 ? 0 : kOff > int(kInBytes) - 16 ? int(kInBytes) - 16 : kOff;
            return Shift<kOff - kAt>(Load(s + kAt));
        }
    }
    template <int kChunk, int kPart>
    static void AddPart(const uint8_t* s, const __m128i* b, __m128i& v)
    {
        constexpr auto& ch = P::kPlan[kChunk];
        if constexpr (kPart < ch.parts) {
            const __m128i x = Window<ch.part[kPart].off>(s, b);
            v = _mm_or_si128(v, _mm_and_si128(x, Load(ch.part[kPart].mask.data())));
        }
    }
    template <int kChunk, int... kPart>
    static __m128i Chunk(const uint8_t* s, const __m128i* b, const uint8_t* d, std::integer_sequence<int, kPart...>)
    {
        __m128i v = _mm_setzero_si128();
        (AddPart<kChunk, kPart>(s, b, v), ...);
        if constexpr (!M::kKeep) return v;
        return _mm_or_si128(v, _mm_and_si128(Load(d + 16 * kChunk), Load(P::kPlan[kChunk].keep.data())));
    }
    // Every kept byte is read before the step's first store: reading a cache line that a non-temporal
    // store has begun would flush it half written.
    template <bool kStream, int... kChunk>
    static void Chunks(const uint8_t* s, const __m128i* b, uint8_t* d, std::integer_sequence<int, kChunk...>)
    {
        const __m128i v[] = {Chunk<kChunk>(s, b, d, std::make_integer_sequence<int, 16>{})...};
        (Store<kStream>(d + 16 * kChunk, v[kChunk]), ...);
    }
    template <int... kBlock>
    static void Blocks(const uint8_t* s, __m128i* b, std::integer_sequence<int, kBlock...>)
    {
        ((b[kBlock] = Load(s + Base(kBlock))), ...);
    }
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        __m128i b[kBlocks + 1];
        Blocks(s, b, std::make_integer_sequence<int, kBlocks>{});
        Chunks<kStream>(s, b, d, std::make_integer_sequence<int, P::kChunks>{});
    }
};

// 16 pixels of three byte planes to four vectors of 4-byte pixels a, b, c, 0.
inline void Interleave(__m128i a, __m128i b, __m128i c, __m128i p[4])
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i ab0 = _mm_unpacklo_epi8(a, b), ab1 = _mm_unpackhi_epi8(a, b);
    const __m128i c0 = _mm_unpacklo_epi8(c, zero), c1 = _mm_unpackhi_epi8(c, zero);
    p[0] = _mm_unpacklo_epi16(ab0, c0), p[1] = _mm_unpackhi_epi16(ab0, c0);
    p[2] = _mm_unpacklo_epi16(ab1, c1), p[3] = _mm_unpackhi_epi16(ab1, c1);
}

// 4 pixels of 4 bytes to their first three, 12 bytes at the bottom of a vector.
inline __m128i PackBytes3(__m128i v)
{
    const __m128i q = _mm_or_si128(_mm_and_si128(v, _mm_set1_epi64x(0xFFFFFF)),
                                   _mm_and_si128(_mm_srli_epi64(v, 8), _mm_set1_epi64x(0xFFFFFF000000)));
    return _mm_or_si128(_mm_and_si128(q, _mm_set_epi64x(0, 0xFFFFFFFFFFFF)),
                        _mm_and_si128(_mm_srli_si128(q, 2), _mm_set_epi64x(0xFFFFFFFF, int64_t(0xFFFF000000000000))));
}

// 16 pixels of 4 bytes stored as 4 bytes each, or as 3 dropping the fourth.
template <bool kStream, uint32_t kPixelBytes>
inline void StorePixels(uint8_t* d, const __m128i p[4])
{
    if constexpr (kPixelBytes == 4) {
        for (int i = 0; i < 4; ++i) Store<kStream>(d + 16 * i, p[i]);
    } else {
        const __m128i a = PackBytes3(p[0]), e = PackBytes3(p[1]), f = PackBytes3(p[2]), h = PackBytes3(p[3]);
        Store<kStream>(d, _mm_or_si128(a, _mm_slli_si128(e, 12)));
        Store<kStream>(d + 16, _mm_or_si128(_mm_srli_si128(e, 4), _mm_slli_si128(f, 8)));
        Store<kStream>(d + 32, _mm_or_si128(_mm_srli_si128(f, 8), _mm_slli_si128(h, 4)));
    }
}

// The word shuffle control that puts words a, b, c, d of a 64-bit half in its lanes 0-3 (a constant, as the
// shuffles' immediate operand must be one in unoptimised builds too).
template <int a, int b, int c, int d>
constexpr int kPick = a | b << 2 | c << 4 | d << 6;

// The words of 16 pixels (a: pixels 0-7, b: 8-15) set out for the three 16-byte chunks of their 3-byte
// destination pixels: lane j of lo[c] holds the word of the pixel that destination byte 2 (8c + j) belongs to,
// lane j of hi[c] that of byte 2 (8c + j) + 1. Word shuffles within each half, after a dword shuffle that
// brings the half's pixels in.
inline void SpreadWords3(__m128i a, __m128i b, __m128i lo[3], __m128i hi[3])
{
    const __m128i t0 = _mm_shuffle_epi32(a, (kPick<0, 1, 1, 2>));  // pixels 0-3 | 2-5
    const __m128i t1 = _mm_castps_si128(
        _mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), (kPick<2, 3, 0, 1>)));  // pixels 4-7 | 8-11
    const __m128i t2 = _mm_shuffle_epi32(b, (kPick<1, 2, 2, 3>));                        // pixels 10-13 | 12-15
    lo[0] = _mm_shufflehi_epi16(_mm_shufflelo_epi16(t0, (kPick<0, 0, 1, 2>)), (kPick<0, 1, 2, 2>));
    hi[0] = _mm_shufflehi_epi16(_mm_shufflelo_epi16(t0, (kPick<0, 1, 1, 2>)), (kPick<1, 1, 2, 3>));
    lo[1] = _mm_shufflehi_epi16(_mm_shufflelo_epi16(t1, (kPick<1, 2, 2, 3>)), (kPick<0, 0, 1, 2>));
    hi[1] = _mm_shufflehi_epi16(_mm_shufflelo_epi16(t1, (kPick<1, 2, 3, 3>)), (kPick<0, 1, 1, 2>));
    lo[2] = _mm_shufflehi_epi16(_mm_shufflelo_epi16(t2, (kPick<0, 1, 2, 2>)), (kPick<1, 2, 2, 3>));
    hi[2] = _mm_shufflehi_epi16(_mm_shufflelo_epi16(t2, (kPick<1, 1, 2, 3>)), (kPick<1, 2, 3, 3>));
}

// 16 grey bytes to 16 pixels g, g, g (and 0 for 4 bytes). Three bytes: each pixel's grey doubled into a word,
// the words spread, and each destination byte taken from its own pixel's word.
template <uint32_t kPixelBytes>
struct SMono8ToBytes {
    static constexpr uint32_t kPixels = 16, kInBytes = 16, kOutBytes = 16 * kPixelBytes;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        const __m128i g = Load(s);
        if constexpr (kPixelBytes == 3) {
            __m128i lo[3], hi[3];
            SpreadWords3(_mm_unpacklo_epi8(g, g), _mm_unpackhi_epi8(g, g), lo, hi);
            const __m128i low = _mm_set1_epi16(0xFF), high = _mm_set1_epi16(int16_t(0xFF00));
            for (int c = 0; c < 3; ++c)
                Store<kStream>(d + 16 * c, _mm_or_si128(_mm_and_si128(lo[c], low), _mm_and_si128(hi[c], high)));
        } else {
            __m128i p[4];
            Interleave(g, g, g, p);
            StorePixels<kStream, kPixelBytes>(d, p);
        }
    }
};

// Bytes 0 and 2 of every 32-bit lane exchanged, byte 1 kept, byte 3 cleared: the lane's two words swapped
// give bytes 0 and 2, the lane itself byte 1.
inline __m128i SwapRB(__m128i v)
{
    const __m128i swapped = _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, (kPick<1, 0, 3, 2>)), (kPick<1, 0, 3, 2>));
    return _mm_or_si128(_mm_and_si128(swapped, _mm_set1_epi32(0xFF00FF)), _mm_and_si128(v, _mm_set1_epi32(0xFF00)));
}

// The fourth byte of each of the 4 pixels at d.
inline __m128i Kept(const uint8_t* d)
{
    return _mm_and_si128(Load(d), _mm_set1_epi32(int32_t(0xFF000000)));
}

// 16 pixels R, G, B, A to B, G, R and the destination's own fourth byte. Every kept byte is read before the
// step's first store, as in SShifts.
struct SRGB32ToBGR32 {
    static constexpr uint32_t kPixels = 16, kInBytes = 64, kOutBytes = 64;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        __m128i v[4];
        for (int i = 0; i < 4; ++i) v[i] = _mm_or_si128(SwapRB(Load(s + 16 * i)), Kept(d + 16 * i));
        for (int i = 0; i < 4; ++i) Store<kStream>(d + 16 * i, v[i]);
    }
};

// 32 words masked to their used bits and shifted down to 8: two stores a step, as one leaves the loop's own
// work too large a share of a step this short.
struct SMonoWordToMono8 {
    static constexpr uint32_t kPixels = 32, kInBytes = 64, kOutBytes = 32;
    uint32_t dwBits;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        const __m128i mask = _mm_set1_epi16(int16_t(0xFFFFu >> (16 - dwBits))),
                      shift = _mm_cvtsi32_si128(int(dwBits - 8));
        __m128i v[4];
        for (int i = 0; i < 4; ++i) v[i] = _mm_srl_epi16(_mm_and_si128(Load(s + 16 * i), mask), shift);
        Store<kStream>(d, _mm_packus_epi16(v[0], v[1]));
        Store<kStream>(d + 16, _mm_packus_epi16(v[2], v[3]));
    }
};

// The registers of convert_steps.h (16 bytes) and convert_yuv.h (8 pixels of 4:2:2).
struct VSse2 {
    using T = __m128i;
    static constexpr int kBytes = 16;
    static T Load(const uint8_t* p) { return sse2::Load(p); }
    template <bool kStream>
    static void Store(uint8_t* p, T v)
    {
        sse2::Store<kStream>(p, v);
    }
    static T And(T a, T b) { return _mm_and_si128(a, b); }
    static T Or(T a, T b) { return _mm_or_si128(a, b); }
    static T Set32(int32_t v) { return _mm_set1_epi32(v); }
    static T MAdd16(T a, T b) { return _mm_madd_epi16(a, b); }
    template <int k>
    static T Sll32(T v)
    {
        return _mm_slli_epi32(v, k);
    }
    template <int k>
    static T Sra32(T v)
    {
        return _mm_srai_epi32(v, k);
    }
    static T PackS32(T a, T b) { return _mm_packs_epi32(a, b); }
    static constexpr bool kByteMAdd = false;  // no byte multiply-add before SSSE3
    static T Set16(int16_t v) { return _mm_set1_epi16(v); }
    static T Zero() { return _mm_setzero_si128(); }
    static T UnpackLo8(T a, T b) { return _mm_unpacklo_epi8(a, b); }
    static T UnpackHi8(T a, T b) { return _mm_unpackhi_epi8(a, b); }
    static T Add16(T a, T b) { return _mm_add_epi16(a, b); }
    static T Sub16(T a, T b) { return _mm_sub_epi16(a, b); }
    static T AddS16(T a, T b) { return _mm_adds_epi16(a, b); }
    static T MulLo16(T a, T b) { return _mm_mullo_epi16(a, b); }
    static T MulHiU16(T a, T b) { return _mm_mulhi_epu16(a, b); }
    static T Avg16(T a, T b) { return _mm_avg_epu16(a, b); }
    template <int k>
    static T Sra16(T v)
    {
        return _mm_srai_epi16(v, k);
    }
    static T PackUS16(T a, T b) { return _mm_packus_epi16(a, b); }
    template <bool kLumaFirst>
    static T Luma(T s)
    {
        return kLumaFirst ? _mm_and_si128(s, _mm_set1_epi16(0xFF)) : _mm_srli_epi16(s, 8);
    }
    // The chroma bytes as high bytes of words, U in the even lanes and V in the odd ones, then each copied over
    // its pair.
    template <bool kLumaFirst>
    static void Chroma(T s, T& u, T& v)
    {
        const T c = kLumaFirst ? _mm_and_si128(s, _mm_set1_epi16(int16_t(0xFF00))) : _mm_slli_epi16(s, 8);
        u = _mm_shufflehi_epi16(_mm_shufflelo_epi16(c, 0xA0), 0xA0);
        v = _mm_shufflehi_epi16(_mm_shufflelo_epi16(c, 0xF5), 0xF5);
    }
};

// 16 pixels of 4:2:2 read as R reads them to 3 or 4 bytes each as W writes them, the fourth byte 0.
template <class R, class W>
struct SYuv422 {
    static constexpr uint32_t kPixels = 16, kInBytes = 32, kOutBytes = 16 * W::kBytes;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        __m128i b, g, r, p[4];
        YuvPlanes<VSse2, typename R::TCoefficients, R::kLumaFirst>(Load(s), Load(s + 16), b, g, r);
        Interleave(W::kOrder == kBGR ? b : r, g, W::kOrder == kBGR ? r : b, p);
        StorePixels<kStream, W::kBytes>(d, p);
    }
};

// 16 pixels of 15-bit (k565 false) or 16-bit words to 4 bytes each in the order O, the fourth byte 0: every
// channel moved to the top of its byte by shifts alone, as Unpack555 and Unpack565 do.
template <bool k565, TOrder O, uint32_t kPixelBytes>
struct SShortToBytes {
    static constexpr uint32_t kPixels = 16, kInBytes = 32, kOutBytes = 16 * kPixelBytes;
    static void Channels(__m128i w, __m128i& r, __m128i& g, __m128i& b)
    {
        r = k565 ? _mm_and_si128(_mm_srli_epi16(w, 8), _mm_set1_epi16(0xF8))
                 : _mm_srli_epi16(_mm_and_si128(w, _mm_set1_epi16(0x7C00)), 7);
        g = _mm_srli_epi16(_mm_and_si128(w, _mm_set1_epi16(k565 ? 0x7E0 : 0x3E0)), k565 ? 3 : 2);
        b = _mm_and_si128(_mm_slli_epi16(w, 3), _mm_set1_epi16(0xFF));
    }
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        __m128i r0, g0, b0, r1, g1, b1, p[4];
        Channels(Load(s), r0, g0, b0);
        Channels(Load(s + 16), r1, g1, b1);
        const __m128i r = _mm_packus_epi16(r0, r1), g = _mm_packus_epi16(g0, g1), b = _mm_packus_epi16(b0, b1);
        Interleave(O == kBGR ? b : r, g, O == kBGR ? r : b, p);
        StorePixels<kStream, kPixelBytes>(d, p);
    }
};

// The same to 3 bytes each: the words spread as SpreadWords3 sets them out, then each destination word made of
// the two channels its bytes hold, each channel's field moved to the top of its byte by a multiply per lane
// (by 2^s for a shift left by s, the high half of a multiply by 2^(16 - s) for a shift right) and masked.
template <bool k565, TOrder O>
struct SShortToBytes<k565, O, 3> {
    static constexpr uint32_t kPixels = 16, kInBytes = 32, kOutBytes = 48;
    // The lowest bit and the width of the field of channel ch (0 blue, 1 green, 2 red).
    static constexpr int FieldLow(int ch) { return ch == 0 ? 0 : ch == 1 ? 5 : k565 ? 11 : 10; }
    static constexpr int FieldBits(int ch) { return ch == 1 && k565 ? 6 : 5; }
    // Per chunk and lane: the low byte's multipliers (left, high-half right) and mask, the high byte's
    // multiplier (always a shift left) and mask.
    struct TLanes {
        uint16_t mulLeft[3][8]{}, mulRight[3][8]{}, maskLow[3][8]{}, mulHigh[3][8]{}, maskHigh[3][8]{};
    };
    static constexpr TLanes Make()
    {
        TLanes t{};
        for (int c = 0; c < 3; ++c)
            for (int j = 0; j < 8; ++j)
                for (int h = 0; h < 2; ++h) {
                    const int byte = 2 * (8 * c + j) + h, ch = O == kBGR ? byte % 3 : 2 - byte % 3;
                    const int bits = FieldBits(ch), shift = 8 * h + 8 - bits - FieldLow(ch);
                    const auto mask = uint16_t(((1 << bits) - 1) << (8 * h + 8 - bits));
                    if (h == 1) {
                        if (shift < 0) throw "a high byte's field shifts left";
                        t.mulHigh[c][j] = uint16_t(1 << shift), t.maskHigh[c][j] = mask;
                    } else {
                        (shift >= 0 ? t.mulLeft[c][j] : t.mulRight[c][j]) =
                            uint16_t(1 << (shift >= 0 ? shift : 16 + shift));
                        t.maskLow[c][j] = mask;
                    }
                }
        return t;
    }
    static constexpr TLanes kLanes = Make();
    static __m128i Row(const uint16_t (&v)[8]) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(v)); }
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        __m128i lo[3], hi[3];
        SpreadWords3(Load(s), Load(s + 16), lo, hi);
        for (int c = 0; c < 3; ++c) {
            const __m128i low = _mm_or_si128(_mm_mullo_epi16(lo[c], Row(kLanes.mulLeft[c])),
                                             _mm_mulhi_epu16(lo[c], Row(kLanes.mulRight[c])));
            const __m128i high = _mm_mullo_epi16(hi[c], Row(kLanes.mulHigh[c]));
            Store<kStream>(d + 16 * c, _mm_or_si128(_mm_and_si128(low, Row(kLanes.maskLow[c])),
                                                    _mm_and_si128(high, Row(kLanes.maskHigh[c]))));
        }
    }
};

// 16 pixels of three bytes split into their three byte planes by four rounds of byte unpacks. Three rounds
// leave the planes of the even pixels and of the odd ones in register halves: channels 0 and 1 of the even
// pixels, channel 2 of the even and 0 of the odd, channels 1 and 2 of the odd.
template <int kRounds = 4>
inline void Deinterleave3(const uint8_t* s, __m128i& c0, __m128i& c1, __m128i& c2)
{
    __m128i a = Load(s), b = Load(s + 16), c = Load(s + 32);
    // Each round interleaves the low half of a with the high half of b, the high half of a with the low half of
    // c, the low half of b with the high half of c; b with its halves exchanged serves two of them.
    for (int round = 0; round < kRounds; ++round) {
        const __m128i bSwapped = _mm_shuffle_epi32(b, 0x4E);
        const __m128i x = _mm_unpacklo_epi8(a, bSwapped);
        const __m128i y = _mm_unpackhi_epi8(a, _mm_slli_si128(c, 8));
        const __m128i z = _mm_unpackhi_epi8(bSwapped, c);
        a = x, b = y, c = z;
    }
    c0 = a, c1 = b, c2 = c;
}

// 16 pixels of 3 bytes in the order O to their greys (54 R + 183 G + 18 B + 128) >> 8: the sum stays below
// 65536, so 16-bit lanes hold it exactly. The sums of the even pixels and of the odd ones come from the halves
// three rounds of unpacks leave; the even greys end in the low bytes of words and the odd ones in the high
// bytes, which is pixel order.
template <TOrder O>
struct SGrey24 {
    static constexpr uint32_t kPixels = 16, kInBytes = 48, kOutBytes = 16;
    // The weights are hidden from the optimiser, which would otherwise trade each multiply for several shifts.
    static __m128i Weight(int16_t w)
    {
        __m128i v = _mm_set1_epi16(w);
        asm("" : "+x"(v));
        return v;
    }
    // The weighted sum of channels 0 and 2 (memory order) as words, and of the green bytes set high in words
    // whose low byte is 180: their unsigned high product with 183 x 256 is 183 G + 128 (180 x 183 / 256 is
    // 128.7), the rounding term for free.
    static __m128i Sum(__m128i c0, __m128i green, __m128i c2, const __m128i k[3])
    {
        return _mm_add_epi16(_mm_add_epi16(_mm_mullo_epi16(c0, k[0]), _mm_mulhi_epu16(green, k[1])),
                             _mm_mullo_epi16(c2, k[2]));
    }
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        __m128i a, b, c;
        Deinterleave3<3>(s, a, b, c);
        const __m128i zero = _mm_setzero_si128(), low = _mm_set1_epi8(char(180));
        const __m128i k[3] = {Weight(O == kBGR ? 18 : 54), Weight(183 * 256 - 65536), Weight(O == kBGR ? 54 : 18)};
        const __m128i even = Sum(_mm_unpacklo_epi8(a, zero), _mm_unpackhi_epi8(low, a), _mm_unpacklo_epi8(b, zero), k);
        const __m128i odd = Sum(_mm_unpackhi_epi8(b, zero), _mm_unpacklo_epi8(low, c), _mm_unpackhi_epi8(c, zero), k);
        Store<kStream>(d, _mm_or_si128(_mm_srli_epi16(even, 8), _mm_and_si128(odd, _mm_set1_epi16(int16_t(0xFF00)))));
    }
};

// 16 pixels of 4:4:4 read as R reads them to 3 or 4 bytes each as W writes them, the fourth byte 0.
template <class R, class W>
struct SYuv444 {
    static constexpr uint32_t kPixels = 16, kInBytes = 48, kOutBytes = 16 * W::kBytes;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        using L = TLayout444<R>;
        __m128i c[3], b, g, r, p[4];
        Deinterleave3(s, c[0], c[1], c[2]);
        YuvPlanes444<VSse2, typename L::K>(c[L::kY], c[L::kU], c[L::kV], b, g, r);
        Interleave(W::kOrder == kBGR ? b : r, g, W::kOrder == kBGR ? r : b, p);
        StorePixels<kStream, W::kBytes>(d, p);
    }
};

// Each of the 8 words of w over four words: words 0 and 1 in r[0], 2 and 3 in r[1], and so on.
inline void Repeat4(__m128i w, __m128i r[4])
{
    const __m128i lo = _mm_unpacklo_epi16(w, w), hi = _mm_unpackhi_epi16(w, w);
    r[0] = _mm_unpacklo_epi32(lo, lo), r[1] = _mm_unpackhi_epi32(lo, lo);
    r[2] = _mm_unpacklo_epi32(hi, hi), r[3] = _mm_unpackhi_epi32(hi, hi);
}

// 32 pixels of 4:1:1 (16 halves of three bytes, chroma and lumas where R finds them) to 3 or 4 bytes each as W
// writes them, the fourth byte 0. The chroma bytes alternate U and V: a U serves its four pixels, a V the last
// two of its four and the first two of the next, so the V words run two pixels behind the U words, the first
// two taking vPrev.
template <class R, class W>
struct SYuv411 {
    static constexpr uint32_t kPixels = 32, kInBytes = 48, kOutBytes = 32 * W::kBytes;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d, uint32_t vPrev) const
    {
        __m128i c[3], u[4], v[4];
        Deinterleave3(s, c[0], c[1], c[2]);
        const __m128i ch = c[R::kChroma], zero = _mm_setzero_si128();
        Repeat4(_mm_slli_epi16(ch, 8), u);
        Repeat4(_mm_and_si128(ch, _mm_set1_epi16(int16_t(0xFF00))), v);
        for (int i = 3; i > 0; --i) v[i] = _mm_or_si128(_mm_slli_si128(v[i], 4), _mm_srli_si128(v[i - 1], 12));
        v[0] = _mm_or_si128(_mm_slli_si128(v[0], 4), _mm_cvtsi32_si128(int(vPrev * 0x01000100u)));
        for (int h = 0; h < 2; ++h) {
            const __m128i y =
                h ? _mm_unpackhi_epi8(c[R::kLuma0], c[R::kLuma1]) : _mm_unpacklo_epi8(c[R::kLuma0], c[R::kLuma1]);
            __m128i b0, g0, r0, b1, g1, r1, p[4];
            YuvWords<VSse2, CYuvCoefficients>(_mm_unpacklo_epi8(y, zero), u[2 * h], v[2 * h], b0, g0, r0);
            YuvWords<VSse2, CYuvCoefficients>(_mm_unpackhi_epi8(y, zero), u[2 * h + 1], v[2 * h + 1], b1, g1, r1);
            const __m128i b = _mm_packus_epi16(b0, b1), g = _mm_packus_epi16(g0, g1), r = _mm_packus_epi16(r0, r1);
            Interleave(W::kOrder == kBGR ? b : r, g, W::kOrder == kBGR ? r : b, p);
            StorePixels<kStream, W::kBytes>(d + 16 * h * W::kBytes, p);
        }
    }
};

// 16 pixels of 4 bytes in the order O to their greys: the even bytes (B and R) and the odd ones (G and the
// fourth) as 16-bit pairs, each pair weighted and summed into 32 bits by one multiply-add.
template <TOrder O>
struct SGrey32 {
    static constexpr uint32_t kPixels = 16, kInBytes = 64, kOutBytes = 16;
    static __m128i Grey(__m128i v)
    {
        const __m128i even = _mm_and_si128(v, _mm_set1_epi16(0xFF)), odd = _mm_srli_epi16(v, 8);
        const __m128i kEven = O == kBGR ? _mm_set1_epi32(54 << 16 | 18) : _mm_set1_epi32(18 << 16 | 54);
        const __m128i sum = _mm_add_epi32(_mm_madd_epi16(even, kEven), _mm_madd_epi16(odd, _mm_set1_epi32(183)));
        return _mm_srli_epi32(_mm_add_epi32(sum, _mm_set1_epi32(128)), 8);
    }
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        const __m128i lo = _mm_packs_epi32(Grey(Load(s)), Grey(Load(s + 16)));
        const __m128i hi = _mm_packs_epi32(Grey(Load(s + 32)), Grey(Load(s + 48)));
        Store<kStream>(d, _mm_packus_epi16(lo, hi));
    }
};

// 32 pixels of 3 bytes in the order O to 15-bit (k565 false) or 16-bit words, as Pack555 and Pack565 do. In each
// half of 16 pixels the even pixel pairs (0-1, 4-5, 8-9, 12-13) lie in one register and the odd ones in another,
// interleaved by dwords at the end. Dword k of X holds the source bytes 0-3 of its pair, those of Z bytes 2-5 (each
// picked by one dword shuffle from two loads 24 bytes apart), so lane i of X holds the source word with pixel i's first
// byte, lane i of Z the one with its third, and every channel byte is the low or the high byte of X or Z. Each
// channel's top bits reach their field by a multiply per lane (by 2^s for a shift left by s, the high half of a
// multiply by 2^(16 - s) for a shift right) and a mask; fields of one source and one direction in different lanes share
// a multiply (a slot).
template <bool k565, TOrder O>
struct SBytesToShort {
    static constexpr uint32_t kPixels = 32, kInBytes = 96, kOutBytes = 64;
    static constexpr int kAt[3] = {0, 5, k565 ? 11 : 10}, kBits[3] = {5, k565 ? 6 : 5, 5};  // blue, green, red
    // [source X, Z][left, right][slot][lane]
    struct TSlots {
        uint16_t mul[2][2][3][8]{}, mask[2][2][3][8]{};
        bool used[2][2][3]{};
    };
    static constexpr TSlots Make()
    {
        TSlots t{};
        for (int lane = 0; lane < 8; ++lane)
            for (int pos = 0; pos < 3; ++pos) {
                // Byte pos of pixel lane: the even pixel's bytes are X low, X high, Z low; the odd one's X high,
                // Z low, Z high.
                const int k = lane % 2 * 3 + pos, src = k < 2 ? 0 : k < 3 ? 1 : k < 4 ? 0 : 1;
                const int half = lane % 2 ? (pos + 1) % 2 : pos % 2;
                const int ch = O == kBGR ? pos : 2 - pos, bits = kBits[ch];
                const int shift = kAt[ch] - (8 * half + 8 - bits), dir = shift < 0;
                int slot = 0;
                while (t.mul[src][dir][slot][lane]) ++slot;
                t.mul[src][dir][slot][lane] = uint16_t(1 << (dir ? 16 + shift : shift));
                t.mask[src][dir][slot][lane] = uint16_t(((1 << bits) - 1) << kAt[ch]);
                t.used[src][dir][slot] = true;
            }
        return t;
    }
    static constexpr TSlots kSlots = Make();
    static __m128i Row(const uint16_t (&v)[8]) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(v)); }
    // A slot whose fields are all in place already needs its mask alone (the lanes it leaves out are masked to 0).
    static constexpr bool InPlace(const uint16_t (&mul)[8], int kDir)
    {
        bool b = kDir == 0;
        for (uint16_t m : mul) b = b && m <= 1;
        return b;
    }
    template <int kSrc, int kDir, int kSlot>
    static void Add(__m128i& w, __m128i v)
    {
        constexpr auto& mul = kSlots.mul[kSrc][kDir][kSlot];
        if constexpr (kSlots.used[kSrc][kDir][kSlot]) {
            __m128i x = v;
            if constexpr (!InPlace(mul, kDir)) x = kDir ? _mm_mulhi_epu16(v, Row(mul)) : _mm_mullo_epi16(v, Row(mul));
            w = _mm_or_si128(w, _mm_and_si128(x, Row(kSlots.mask[kSrc][kDir][kSlot])));
        }
    }
    template <int kSrc>
    static void AddAll(__m128i& w, __m128i v)
    {
        Add<kSrc, 0, 0>(w, v), Add<kSrc, 0, 1>(w, v), Add<kSrc, 0, 2>(w, v);
        Add<kSrc, 1, 0>(w, v), Add<kSrc, 1, 1>(w, v), Add<kSrc, 1, 2>(w, v);
    }
    // Dwords 0 and 3 of the 16 bytes at a, then of those at b.
    static __m128i Ends(const uint8_t* a, const uint8_t* b)
    {
        return _mm_castps_si128(
            _mm_shuffle_ps(_mm_castsi128_ps(Load(a)), _mm_castsi128_ps(Load(b)), (kPick<0, 3, 0, 3>)));
    }
    // The words of the four pixel pairs starting at s, s + 12, s + 24 and s + 36.
    static __m128i Pairs(const uint8_t* s)
    {
        __m128i w = _mm_setzero_si128();
        AddAll<0>(w, Ends(s, s + 24));
        AddAll<1>(w, Ends(s + 2, s + 26));
        return w;
    }
    // Two halves of 16 pixels a step, as one leaves the loop's own work too large a share of a step this short.
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        for (int h = 0; h < 2; ++h) {
            const __m128i even = Pairs(s + 48 * h), odd = Pairs(s + 48 * h + 6);
            Store<kStream>(d + 32 * h, _mm_unpacklo_epi32(even, odd));
            Store<kStream>(d + 32 * h + 16, _mm_unpackhi_epi32(even, odd));
        }
    }
};

// 16 pixels of 3 bytes to 4, red and blue exchanged when kSwap is set, the fourth byte 0 or the destination's
// own (kKeep): each pixel's bytes loaded into its 32-bit lane, those past the step's last 16 bytes from them
// shifted down, so that no load leaves the step. Every kept byte is read before the first store, as in SShifts.
template <bool kSwap, bool kKeep>
struct SBytes3To4 {
    static constexpr uint32_t kPixels = 16, kInBytes = 48, kOutBytes = 64;
    template <int kPixel>
    static __m128i At(const uint8_t* s)
    {
        constexpr int kAt = 3 * kPixel, kBase = kAt < 32 ? kAt : 32;
        return _mm_srli_si128(Load(s + kBase), kAt - kBase);
    }
    template <int kFirst>
    static __m128i Four(const uint8_t* s, const uint8_t* d)
    {
        const __m128i v = _mm_unpacklo_epi64(_mm_unpacklo_epi32(At<kFirst>(s), At<kFirst + 1>(s)),
                                             _mm_unpacklo_epi32(At<kFirst + 2>(s), At<kFirst + 3>(s)));
        const __m128i p = kSwap ? SwapRB(v) : _mm_and_si128(v, _mm_set1_epi32(0xFFFFFF));
        return kKeep ? _mm_or_si128(p, Kept(d + 4 * kFirst)) : p;
    }
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        const __m128i v[] = {Four<0>(s, d), Four<4>(s, d), Four<8>(s, d), Four<12>(s, d)};
        for (int i = 0; i < 4; ++i) Store<kStream>(d + 16 * i, v[i]);
    }
};

// 16 pixels of 4 bytes to their first three, red and blue exchanged when kSwap is set.
template <bool kSwap>
struct SBytes4To3 {
    static constexpr uint32_t kPixels = 16, kInBytes = 64, kOutBytes = 48;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        __m128i p[4];
        for (int i = 0; i < 4; ++i) p[i] = kSwap ? SwapRB(Load(s + 16 * i)) : Load(s + 16 * i);
        StorePixels<kStream, 3>(d, p);
    }
};

// 32 pixels of groups of 3 bytes holding two pixels' high bytes at kFirst and kSecond: the groups split into
// byte planes, then the two planes interleaved.
template <int kFirst, int kSecond>
struct SHighPairs {
    static constexpr uint32_t kPixels = 32, kInBytes = 48, kOutBytes = 32;
    template <bool kStream>
    void Run(const uint8_t* s, uint8_t* d) const
    {
        __m128i c[3];
        Deinterleave3(s, c[0], c[1], c[2]);
        Store<kStream>(d, _mm_unpacklo_epi8(c[kFirst], c[kSecond]));
        Store<kStream>(d + 16, _mm_unpackhi_epi8(c[kFirst], c[kSecond]));
    }
};

// The step of a byte map: its shift plan, unless unpacking or a 32-bit swap does it in fewer operations.
template <class M>
struct TStepOf {
    using T = SShifts<M>;
};
template <>
struct TStepOf<MMono8ToBGR24> {
    using T = SMono8ToBytes<3>;
};
template <>
struct TStepOf<MPackedHigh> {
    using T = SHighPairs<0, 2>;
};
template <>
struct TStepOf<MMipi12High> {
    using T = SHighPairs<0, 1>;
};
template <>
struct TStepOf<MBGR24ToBGR32> {
    using T = SBytes3To4<false, false>;
};
template <>
struct TStepOf<MRGB24ToBGR32> {
    using T = SBytes3To4<true, true>;
};
template <>
struct TStepOf<MBGR32ToBGR24> {
    using T = SBytes4To3<false>;
};
template <>
struct TStepOf<MBGR32ToRGB24> {
    using T = SBytes4To3<true>;
};

template <class S, class R, class W>
int Run(KAIP_LINE_PARAMS, bool bReverseLines, S step, R rd, W wr)
{
    return RunLines<kStreamAbove<R, W>>(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                                        KSteps<S, R, W>{dwWidth, step, rd, wr});
}

template <class M, class R, class W, bool kCut = false>
int Run(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return RunLines<kStreamAbove<R, W>>(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                                        KSteps<typename TStepOf<M>::T, R, W, kCut>{dwWidth, {}, {}, {}});
}

}  // namespace

KAIP_BYTE_MAP_CONVERTERS(KAIP_DEFINE_BYTE_MAP_CONVERTER)

#define KAIP_LINE_ARGS dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc

int CopyBitmapData(KAIP_LINE_PARAMS, bool bReverseLines)
{
    (void)dwWidth;
    return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                    KCopy{dwSrcLineInc < dwDstLineInc ? dwSrcLineInc : dwDstLineInc});
}

int Convert_Mono8_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run(KAIP_LINE_ARGS, bReverseLines, SMono8ToBytes<4>{}, RMono8{}, WBGR32{});
}

int Convert_RGB32_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Run(KAIP_LINE_ARGS, bReverseLines, SRGB32ToBGR32{}, RRGB32{}, WBGR32Kept{});
}

int Convert_MonoWord_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    return Run(KAIP_LINE_ARGS, bReverseLines, SMonoWordToMono8{dwSrcBits}, RMonoWord{dwSrcBits}, WMono8{});
}

// The 4:2:2 and 4:4:4 colour converters, S the family's step.
#define KAIP_DEFINE_YUV_CONVERTER(S, name, R, W)                                                       \
    int name(KAIP_LINE_PARAMS, bool bReverseLines)                                                     \
    {                                                                                                  \
        return RunLines<kNeverStream>(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, \
                                      KSteps<S<R, W>, R, W>{dwWidth, {}, {}, {}});                     \
    }
#define KAIP_DEFINE_YUV422_CONVERTER(name, R, W) KAIP_DEFINE_YUV_CONVERTER(SYuv422, name, R, W)
#define KAIP_DEFINE_YUV444_CONVERTER(name, R, W) KAIP_DEFINE_YUV_CONVERTER(SYuv444, name, R, W)
KAIP_YUV422_CONVERTERS(KAIP_DEFINE_YUV422_CONVERTER)
KAIP_YUV444_CONVERTERS(KAIP_DEFINE_YUV444_CONVERTER)

KAIP_YUV411_CONVERTERS(KAIP_DEFINE_YUV411_CONVERTER)

// The members of KAIP_VECTOR_MEMBERS with a step of their own: name, scalar reader and writer, step.
#define KAIP_SSE2_ENTRY(name, R, W, ...)                                    \
    int name(KAIP_LINE_PARAMS, bool bReverseLines)                          \
    {                                                                       \
        return Run(KAIP_LINE_ARGS, bReverseLines, __VA_ARGS__{}, R{}, W{}); \
    }
KAIP_SSE2_ENTRY(Convert_BGR15_to_BGR24, RBGR15, WBGR24, SShortToBytes<false, kBGR, 3>)
KAIP_SSE2_ENTRY(Convert_BGR15_to_RGB24, RBGR15, WRGB24, SShortToBytes<false, kRGB, 3>)
KAIP_SSE2_ENTRY(Convert_BGR15_to_BGR32, RBGR15, WBGR32, SShortToBytes<false, kBGR, 4>)
KAIP_SSE2_ENTRY(Convert_BGR15_to_RGB32, RBGR15, WRGB32, SShortToBytes<false, kRGB, 4>)
KAIP_SSE2_ENTRY(Convert_BGR16_to_BGR24, RBGR16, WBGR24, SShortToBytes<true, kBGR, 3>)
KAIP_SSE2_ENTRY(Convert_BGR16_to_RGB24, RBGR16, WRGB24, SShortToBytes<true, kRGB, 3>)
KAIP_SSE2_ENTRY(Convert_BGR16_to_BGR32, RBGR16, WBGR32, SShortToBytes<true, kBGR, 4>)
KAIP_SSE2_ENTRY(Convert_BGR16_to_RGB32, RBGR16, WRGB32, SShortToBytes<true, kRGB, 4>)
KAIP_SSE2_ENTRY(Convert_BGR24_to_Mono8, RBGR24, WMono8, SGrey24<kBGR>)
KAIP_SSE2_ENTRY(Convert_RGB24_to_Mono8, RRGB24, WMono8, SGrey24<kRGB>)
KAIP_SSE2_ENTRY(Convert_BGR32_to_Mono8, RBGR32, WMono8, SGrey32<kBGR>)
KAIP_SSE2_ENTRY(Convert_RGB32_to_Mono8, RRGB32, WMono8, SGrey32<kRGB>)
KAIP_SSE2_ENTRY(Convert_BGR24_to_BGR15, RBGR24, WBGR15, SBytesToShort<false, kBGR>)
KAIP_SSE2_ENTRY(Convert_RGB24_to_BGR15, RRGB24, WBGR15, SBytesToShort<false, kRGB>)
KAIP_SSE2_ENTRY(Convert_BGR24_to_BGR16, RBGR24, WBGR16, SBytesToShort<true, kBGR>)
KAIP_SSE2_ENTRY(Convert_RGB24_to_BGR16, RRGB24, WBGR16, SBytesToShort<true, kRGB>)
KAIP_SSE2_ENTRY(Convert_BGR32_to_BGR15, RBGR32, WBGR15, SBytes4ToShort<VSse2, false, kBGR>)
KAIP_SSE2_ENTRY(Convert_RGB32_to_BGR15, RRGB32, WBGR15, SBytes4ToShort<VSse2, false, kRGB>)
KAIP_SSE2_ENTRY(Convert_BGR32_to_BGR16, RBGR32, WBGR16, SBytes4ToShort<VSse2, true, kBGR>)
KAIP_SSE2_ENTRY(Convert_RGB32_to_BGR16, RRGB32, WBGR16, SBytes4ToShort<VSse2, true, kRGB>)

}  // namespace convert::sse2
