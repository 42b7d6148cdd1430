// convert_simd.h: what the x86 vector files share: their entry points, the byte maps of the shuffling
// variants as plain integer tables, and the line driver with the store policy. Vectors themselves are built
// only inside each file's gated functions.
#pragma once

#include <xmmintrin.h>

#include <array>
#include <cstdint>

#include "convert/convert_intr.h"
#include "convert/convert_lines.h"
#include "convert/convert_pixel.h"

namespace convert {

// ---------------------------------------------------------------- entry points, one set per instruction set
// Each converts the whole image and returns 1; the caller has checked the gate.

// The converters made of one byte map alone, each with the scalar reader and writer of its line tail and
// whether the last group is cut at the line end. The SSSE3, AVX2 and SSE2 builds all instantiate this list.
#define KAIP_BYTE_MAP_CONVERTERS(X)                                        \
    X(SwapColor8Data, MSwap24, RRGB24, WBGR24, false)                      \
    X(Convert_Mono8_to_BGR24, MMono8ToBGR24, RMono8, WBGR24, false)        \
    X(Convert_BGR24_to_BGR32, MBGR24ToBGR32, RBGR24, WBGR32, false)        \
    X(Convert_RGB24_to_BGR32, MRGB24ToBGR32, RRGB24, WBGR32Kept, false)    \
    X(Convert_BGR32_to_BGR24, MBGR32ToBGR24, RBGR32, WBGR24, false)        \
    X(Convert_RGB32_to_RGB24, MBGR32ToBGR24, RRGB32, WRGB24, false)        \
    X(Convert_BGR32_to_RGB24, MBGR32ToRGB24, RBGR32, WRGB24, false)        \
    X(Convert_MonoPacked_to_Mono8, MPackedHigh, RPacked<8>, WMono8, true)  \
    X(Convert_MonoMipi10_to_Mono8, MMipi10High, RMipi10<8>, WMono8, false) \
    X(Convert_MonoMipi12_to_Mono8, MMipi12High, RMipi12<8>, WMono8, false)

#define KAIP_DECLARE_BYTE_MAP_CONVERTER(name, M, R, W, kCut) int name(KAIP_LINE_PARAMS, bool bReverseLines);
// In a vector file, next to its Run<M, R, W, kCut>: the entry point of one list member.
#define KAIP_DEFINE_BYTE_MAP_CONVERTER(name, M, R, W, kCut)                                                  \
    int name(KAIP_LINE_PARAMS, bool bReverseLines)                                                           \
    {                                                                                                        \
        return Run<M, R, W, kCut>(dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines); \
    }

// The converters with steps of their own, built for SSE2 and AVX2.
#define KAIP_OWN_STEP_CONVERTERS                                      \
    int CopyBitmapData(KAIP_LINE_PARAMS, bool bReverseLines);         \
    int Convert_Mono8_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines); \
    int Convert_RGB32_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines); \
    int Convert_MonoWord_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);

// The 4:2:2 colour converters, each with the scalar member's reader and writer, built for SSE2 and AVX2.
#define KAIP_YUV422_CONVERTERS(X)                       \
    X(Convert_Yuv422_to_BGR24, RYuv422, WBGR24)         \
    X(Convert_Yuv422_to_RGB24, RYuv422, WRGB24)         \
    X(Convert_Yuv422_to_BGR32, RYuv422, WBGR32)         \
    X(Convert_Yuv422_to_RGB32, RYuv422, WRGB32)         \
    X(Convert_Yuv422yuyv_to_BGR24, RYuv422yuyv, WBGR24) \
    X(Convert_Yuv422yuyv_to_RGB24, RYuv422yuyv, WRGB24) \
    X(Convert_Yuv422yuyv_to_BGR32, RYuv422yuyv, WBGR32) \
    X(Convert_Yuv422yuyv_to_RGB32, RYuv422yuyv, WRGB32) \
    X(Convert_YCbCr422_8_to_BGR24, RYCbCr422_8, WBGR24) \
    X(Convert_YCbCr422_8_to_RGB24, RYCbCr422_8, WRGB24) \
    X(Convert_YCbCr422_8_to_BGR32, RYCbCr422_8, WBGR32) \
    X(Convert_YCbCr422_8_to_RGB32, RYCbCr422_8, WRGB32)
// The 4:4:4 colour converters, likewise.
#define KAIP_YUV444_CONVERTERS(X)                   \
    X(Convert_Yuv444_to_BGR24, RYuv444, WBGR24)     \
    X(Convert_Yuv444_to_RGB24, RYuv444, WRGB24)     \
    X(Convert_Yuv444_to_BGR32, RYuv444, WBGR32)     \
    X(Convert_Yuv444_to_RGB32, RYuv444, WRGB32)     \
    X(Convert_YCbCr444_to_BGR24, RYCbCr444, WBGR24) \
    X(Convert_YCbCr444_to_RGB24, RYCbCr444, WRGB24) \
    X(Convert_YCbCr444_to_BGR32, RYCbCr444, WBGR32) \
    X(Convert_YCbCr444_to_RGB32, RYCbCr444, WRGB32)
#define KAIP_DECLARE_YUV422_CONVERTER(name, R, W) int name(KAIP_LINE_PARAMS, bool bReverseLines);

// The vector members' builds: SSE2 always, SSSE3 and AVX2 where the list says so. The byte-map and 4:2:2
// converters above declare their own.
#define KAIP_IF_0(...)
#define KAIP_IF_1(...) __VA_ARGS__
#define KAIP_DECLARE_SSE2_BUILD(name, kSsse3, kAvx2) int name(KAIP_LINE_PARAMS, bool bReverseLines);
#define KAIP_DECLARE_SSSE3_BUILD(name, kSsse3, kAvx2) KAIP_IF_##kSsse3(int name(KAIP_LINE_PARAMS, bool bReverseLines);)
#define KAIP_DECLARE_AVX2_BUILD(name, kSsse3, kAvx2) KAIP_IF_##kAvx2(int name(KAIP_LINE_PARAMS, bool bReverseLines);)

namespace sse2 {
KAIP_BYTE_MAP_CONVERTERS(KAIP_DECLARE_BYTE_MAP_CONVERTER)
KAIP_VECTOR_MEMBERS(KAIP_DECLARE_SSE2_BUILD)
KAIP_YUV422_CONVERTERS(KAIP_DECLARE_YUV422_CONVERTER)
KAIP_YUV444_CONVERTERS(KAIP_DECLARE_YUV422_CONVERTER)
KAIP_OWN_STEP_CONVERTERS
}  // namespace sse2

namespace ssse3 {
KAIP_BYTE_MAP_CONVERTERS(KAIP_DECLARE_BYTE_MAP_CONVERTER)
KAIP_VECTOR_MEMBERS(KAIP_DECLARE_SSSE3_BUILD)
}  // namespace ssse3

namespace avx2 {
KAIP_BYTE_MAP_CONVERTERS(KAIP_DECLARE_BYTE_MAP_CONVERTER)
KAIP_VECTOR_MEMBERS(KAIP_DECLARE_AVX2_BUILD)
KAIP_YUV422_CONVERTERS(KAIP_DECLARE_YUV422_CONVERTER)
KAIP_YUV444_CONVERTERS(KAIP_DECLARE_YUV422_CONVERTER)
KAIP_OWN_STEP_CONVERTERS
}  // namespace avx2

// ---------------------------------------------------------------- byte maps of the shuffling variants

// A map repeats every unit of kUnitPixels pixels (kUnitIn source bytes, kUnitOut destination bytes); Src
// gives the source byte of destination byte n of a unit, or -1 for a byte written 0 (kept from the
// destination when kKeep is set).
template <int kPixels, int kIn, int kOut, bool kKeepOther = false>
struct TByteMap {
    static constexpr int kUnitPixels = kPixels, kUnitIn = kIn, kUnitOut = kOut;
    static constexpr bool kKeep = kKeepOther;
};
struct MMono8ToBGR24 : TByteMap<1, 1, 3> {
    static constexpr int Src(int) { return 0; }
};
struct MMono8ToBGR32 : TByteMap<1, 1, 4> {
    static constexpr int Src(int n) { return n < 3 ? 0 : -1; }
};
struct MBGR24ToBGR32 : TByteMap<1, 3, 4> {
    static constexpr int Src(int n) { return n < 3 ? n : -1; }
};
struct MRGB24ToBGR32 : TByteMap<1, 3, 4, true> {
    static constexpr int Src(int n) { return n < 3 ? 2 - n : -1; }
};
struct MRGB32ToBGR32 : TByteMap<1, 4, 4, true> {
    static constexpr int Src(int n) { return n < 3 ? 2 - n : -1; }
};
struct MBGR32ToBGR24 : TByteMap<1, 4, 3> {
    static constexpr int Src(int n) { return n; }
};
struct MBGR32ToRGB24 : TByteMap<1, 4, 3> {
    static constexpr int Src(int n) { return 2 - n; }
};
struct MSwap24 : TByteMap<1, 3, 3> {
    static constexpr int Src(int n) { return 2 - n; }
};
struct MPackedHigh : TByteMap<2, 3, 2> {
    static constexpr int Src(int n) { return 2 * n; }
};
struct MMipi12High : TByteMap<2, 3, 2> {
    static constexpr int Src(int n) { return n; }
};
struct MMipi10High : TByteMap<4, 5, 4> {
    static constexpr int Src(int n) { return n; }
};

// kPixels pixels of 3 or 4 bytes in the order O set out as 16-bit lanes of two channels: the (B, G) pairs of
// all of them, then their (R, G) pairs. Grey weights them by byte-pair multiply-adds (the 183 G split
// 110 + 73 over the two, so that neither pair sum passes 32767); 15/16-bit packing shifts and masks them.
template <TOrder O, int kPixelBytes, int kPixels>
struct MChannelPairs : TByteMap<kPixels, kPixels * kPixelBytes, 4 * kPixels> {
    static constexpr int Src(int n)
    {
        const bool bRed = n >= 2 * kPixels;
        return n % (2 * kPixels) / 2 * kPixelBytes + (n % 2 ? 1 : bRed ? O : 2 - O);
    }
};

// The converters built on MChannelPairs for SSSE3 and AVX2: name, order, pixel bytes, scalar reader and
// writer, and what becomes of the pairs (F, defined in each file: FGrey, or FPack555 and FPack565 for BGR15
// and BGR16 words).
#define KAIP_PAIR_CONVERTERS(X)                                  \
    X(Convert_BGR24_to_Mono8, kBGR, 3, RBGR24, WMono8, FGrey)    \
    X(Convert_RGB24_to_Mono8, kRGB, 3, RRGB24, WMono8, FGrey)    \
    X(Convert_BGR32_to_Mono8, kBGR, 4, RBGR32, WMono8, FGrey)    \
    X(Convert_RGB32_to_Mono8, kRGB, 4, RRGB32, WMono8, FGrey)    \
    X(Convert_BGR24_to_BGR15, kBGR, 3, RBGR24, WBGR15, FPack555) \
    X(Convert_RGB24_to_BGR15, kRGB, 3, RRGB24, WBGR15, FPack555) \
    X(Convert_BGR24_to_BGR16, kBGR, 3, RBGR24, WBGR16, FPack565) \
    X(Convert_RGB24_to_BGR16, kRGB, 3, RRGB24, WBGR16, FPack565)

// Bits [8 kByte + 8 - kBits, 8 kByte + 7] of a lane (the top kBits of its byte kByte) moved to start at bit
// kAt: the shift, right when positive.
constexpr int FieldShift(int kByte, int kBits, int kAt)
{
    return 8 * kByte + 8 - kBits - kAt;
}

// The sizes of one step of kStepPixels pixels of a map: whole units, whole 16-byte destination chunks.
template <class M, uint32_t kStepPixels>
struct TStep {
    static constexpr int kPixels = int(kStepPixels), kUnits = kPixels / M::kUnitPixels;
    static constexpr int kInBytes = kUnits * M::kUnitIn, kOutBytes = kUnits * M::kUnitOut, kChunks = kOutBytes / 16;
    static_assert(kUnits * M::kUnitPixels == kPixels && kChunks * 16 == kOutBytes && kInBytes >= 16);
};

// One step of kPixels pixels of a map, cut into 16-byte destination chunks. Each chunk is shuffled from
// one or two 16-byte source loads that lie inside the step's source bytes (so no load reaches past the
// end of a line): load a always, load b when the chunk spans more than 16 source bytes. Control bytes
// with the high bit set give 0. The plan is made while compiling; a map that two loads cannot serve does
// not compile.
template <class M, uint32_t kStepPixels>
struct TGatherPlan : TStep<M, kStepPixels> {
    using B = TStep<M, kStepPixels>;
    using B::kChunks, B::kInBytes;

    struct TChunk {
        int a = 0, b = 0;
        bool bTwo = false;
        std::array<int8_t, 16> ca{}, cb{};
    };

    static constexpr int Src(int n)
    {
        return M::Src(n % M::kUnitOut) < 0 ? -1 : n / M::kUnitOut * M::kUnitIn + M::Src(n % M::kUnitOut);
    }

    static constexpr std::array<TChunk, kChunks> Make()
    {
        std::array<TChunk, kChunks> plan{};
        for (int c = 0; c < kChunks; ++c) {
            int lo = kInBytes, hi = -1;
            for (int j = 0; j < 16; ++j) {
                const int s = Src(16 * c + j);
                if (s >= 0) lo = s < lo ? s : lo, hi = s > hi ? s : hi;
            }
            TChunk& ch = plan[c];
            ch.a = lo < kInBytes - 16 ? lo : kInBytes - 16;
            ch.b = ch.a + 16 < kInBytes - 16 ? ch.a + 16 : kInBytes - 16;
            ch.bTwo = hi >= ch.a + 16;
            for (int j = 0; j < 16; ++j) {
                const int s = Src(16 * c + j);
                const bool bInA = s >= 0 && s < ch.a + 16;
                ch.ca[j] = bInA ? int8_t(s - ch.a) : int8_t(-128);
                ch.cb[j] = s >= 0 && !bInA ? int8_t(s - ch.b) : int8_t(-128);
                if (s >= 0 && !bInA && (s < ch.b || s >= ch.b + 16)) throw "a chunk needs more than two loads";
            }
        }
        return plan;
    }
    static constexpr std::array<TChunk, kChunks> kPlan = Make();
};

// The same step for SSE2, which has no byte shuffle: each 16-byte destination chunk is the OR of masked
// copies of the step's source seen at a few byte offsets, one part per distinct offset (source byte minus
// destination byte within the chunk). Bytes no part fills are 0 (kept from the destination when the map
// keeps them).
template <class M, uint32_t kStepPixels>
struct TShiftPlan : TStep<M, kStepPixels> {
    using B = TStep<M, kStepPixels>;
    using B::kChunks, B::kInBytes;

    struct TPart {
        int off = 0;  // the part's 16 bytes start at source byte off of the step (it may lie outside)
        std::array<uint8_t, 16> mask{};
    };
    struct TChunk {
        int parts = 0;
        std::array<TPart, 16> part{};
        std::array<uint8_t, 16> keep{};
    };

    static constexpr std::array<TChunk, kChunks> Make()
    {
        std::array<TChunk, kChunks> plan{};
        for (int c = 0; c < kChunks; ++c) {
            TChunk& ch = plan[c];
            for (int j = 0; j < 16; ++j) {
                const int n = 16 * c + j, m = M::Src(n % M::kUnitOut);
                if (m < 0) {
                    ch.keep[j] = M::kKeep ? 0xFF : 0;
                    continue;
                }
                const int off = n / M::kUnitOut * M::kUnitIn + m - j;
                int p = 0;
                while (p < ch.parts && ch.part[p].off != off) ++p;
                if (p == ch.parts) ch.part[ch.parts++] = TPart{off, {}};
                ch.part[p].mask[j] = 0xFF;
            }
        }
        return plan;
    }
    static constexpr std::array<TChunk, kChunks> kPlan = Make();
};

// ---------------------------------------------------------------- the line driver

// The image size in bytes above which the SSE2 build stores a destination line on 16 bytes non-temporally when
// the reader R's pixels go out by the writer W: 1 MiB, the rule of the named variants, unless measured otherwise
// (frames of 2448x2048 and 641x479, streamed against cached, same runs). The wider builds keep 1 MiB (with
// SIMD.Level 4 these families measured faster streamed), except that the AVX2 build's 15/16-bit words to 3 or 4
// bytes take the choices below too: to 3 bytes, six alternated full-frame runs with SIMD.Level 4 gave medians of
// 0.82-0.83 ms cached against 0.93-0.95 ms streamed.
// The YUV colour converters never stream, in every build: they are arithmetic rather than moves, and at full
// frames their destinations measured faster through the cache than streamed past it.
constexpr uint64_t kNeverStream = ~uint64_t(0);
template <class R, class W>
constexpr uint64_t kStreamAbove = 0x100000;
// 24-bit to 15/16-bit words: cached 0.39-0.64 of memcpy at full frames, streamed 0.34-0.51.
template <TOrder O>
constexpr uint64_t kStreamAbove<RBytes<O, 3>, WBGR15> = kNeverStream;
template <TOrder O>
constexpr uint64_t kStreamAbove<RBytes<O, 3>, WBGR16> = kNeverStream;
// 15/16-bit words to 3 bytes: cached 1.08-1.38 of memcpy at full frames, streamed 0.95-1.23.
template <TOrder O>
constexpr uint64_t kStreamAbove<RBGR15, WBytes<O, kNoFourth>> = kNeverStream;
template <TOrder O>
constexpr uint64_t kStreamAbove<RBGR16, WBytes<O, kNoFourth>> = kNeverStream;
// 15/16-bit words to 4 bytes: streamed 1.9-2.4 of memcpy at full frames against 1.6 cached, but 0.26 against
// 0.57 at 1.2 MB, which the caches hold; streamed from 8 MiB, where left-right mirrors cross over too.
template <TOrder O>
constexpr uint64_t kStreamAbove<RBGR15, WBytes<O, kFourthZero>> = 0x800000;
template <TOrder O>
constexpr uint64_t kStreamAbove<RBGR16, WBytes<O, kFourthZero>> = 0x800000;

// Converts every line with K::Line<kStream>(source line, destination line). Non-temporal stores for a
// destination line that starts on 16 bytes when the image exceeds kAbove bytes, so a large frame does not
// evict the caller's cache; the fence afterwards orders them before anything the caller writes next.
template <uint64_t kAbove = 0x100000, class K>
int RunLines(uint32_t dwHeight, const uint8_t* pSrc, uint8_t* pDst, uint32_t dwSrcLineInc, uint32_t dwDstLineInc,
             bool bReverseLines, const K& kernel)
{
    const bool bLarge = uint64_t(dwHeight) * dwDstLineInc > kAbove;
    bool bStreamed = false;
    ForEachLine(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines, [&](const uint8_t* pS, uint8_t* pD) {
        if (bLarge && (reinterpret_cast<uintptr_t>(pD) & 15) == 0) {
            kernel.template Line<true>(pS, pD);
            bStreamed = true;
        } else {
            kernel.template Line<false>(pS, pD);
        }
    });
    if (bStreamed) _mm_sfence();
    return 1;
}

}  // namespace convert
