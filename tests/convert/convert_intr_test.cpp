// convert_intr_test.cpp: every vector variant against its scalar member, with its gate closed and open.
#include "convert/convert_intr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "core/unidef.h"
#include "support/guarded.h"

namespace {

#define KAIP_LINE_ARGS dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc

// The use switches as one setting, restored when the test ends.
class CSwitches {
public:
    enum TMode { kClosed, kSse2, kOpen, kOpenAvx };
    CSwitches() : m_saved(g_SSEChecker) {}
    ~CSwitches() { Restore(m_saved); }
    // kSse2: SSE2 alone; kOpen: every detected set up to SSE4; kOpenAvx: AVX too. Returns false when the
    // processor lacks it.
    bool Set(TMode mode)
    {
        g_SSEChecker.m_bUseSSE2 = mode != kClosed && g_SSEChecker.m_bHasSSE2;
        g_SSEChecker.m_bUseSSSE3 = mode > kSse2 && g_SSEChecker.m_bHasSSSE3;
        g_SSEChecker.m_bUseSSE4 = mode > kSse2 && g_SSEChecker.m_bHasSSE4;
        g_SSEChecker.m_bUseAVX = mode == kOpenAvx && g_SSEChecker.m_bHasAVX;
        g_SSEChecker.m_bUseNEON = false;
        return mode != kOpenAvx || g_SSEChecker.UseAVX2();
    }

private:
    static void Restore(const SSEChecker& s)
    {
        g_SSEChecker.m_bUseSSE2 = s.m_bUseSSE2;
        g_SSEChecker.m_bUseSSSE3 = s.m_bUseSSSE3;
        g_SSEChecker.m_bUseSSE4 = s.m_bUseSSE4;
        g_SSEChecker.m_bUseAVX = s.m_bUseAVX;
        g_SSEChecker.m_bUseNEON = s.m_bUseNEON;
    }
    SSEChecker m_saved;
};

using TIntr = int (*)(KAIP_LINE_PARAMS, bool);
using TScalar = void (*)(KAIP_LINE_PARAMS, bool);

enum TGate { kSSE2, kSSSE3 };

// A variant, its scalar member, the bytes of a source and a destination line of w pixels, and its gate.
struct TCase {
    const char* name;
    TIntr intr;
    TScalar scalar;
    size_t (*srcBytes)(size_t w);
    size_t dstBytes;
    TGate gate;
};

size_t Bytes1(size_t w)
{
    return w;
}
size_t Bytes2(size_t w)
{
    return 2 * w;
}
size_t Bytes3(size_t w)
{
    return 3 * w;
}
size_t Bytes4(size_t w)
{
    return 4 * w;
}
size_t PackedBytes(size_t w)
{
    return 3 * (w / 2) + w % 2;
}
size_t Mipi10Bytes(size_t w)
{
    return 5 * (w / 4);
}
size_t Mipi12Bytes(size_t w)
{
    return 3 * (w / 2);
}
size_t YCbCr422Bytes(size_t w)
{
    return 4 * (w / 2);
}
size_t Yuv411Bytes(size_t w)
{
    return 6 * (w / 4);
}

// Members and variants with bit counts, bound to one depth (and Mono8 as the destination).
template <auto F, uint32_t kBits>
auto Depth(KAIP_LINE_PARAMS, bool b)
{
    return F(KAIP_LINE_ARGS, kBits, b);
}
template <auto F, uint32_t kBits>
auto Depths(KAIP_LINE_PARAMS, bool b)
{
    return F(KAIP_LINE_ARGS, kBits, 8, b);
}

// The variants, then the vector builds the members try first (all three builds through the modes). CopyBitmapData
// copies a line of w bytes (and whatever the smaller line increment adds).
const TCase kCases[] = {
    {"CopyBitmapData", CopyBitmapData_intr, CopyBitmapData, Bytes1, 1, kSSE2},
    {"SwapColor8Data", SwapColor8Data_intr, SwapColor8Data, Bytes3, 3, kSSSE3},
    {"Mono8_to_BGR24", Convert_Mono8_to_BGR24_intr, Convert_Mono8_to_BGR24, Bytes1, 3, kSSSE3},
    {"Mono8_to_BGR32", Convert_Mono8_to_BGR32_intr, Convert_Mono8_to_BGR32, Bytes1, 4, kSSE2},
    {"BGR24_to_BGR32", Convert_BGR24_to_BGR32_intr, Convert_BGR24_to_BGR32, Bytes3, 4, kSSSE3},
    {"RGB24_to_BGR32", Convert_RGB24_to_BGR32_intr, Convert_RGB24_to_BGR32, Bytes3, 4, kSSSE3},
    {"RGB32_to_BGR32", Convert_RGB32_to_BGR32_intr, Convert_RGB32_to_BGR32, Bytes4, 4, kSSE2},
    {"MonoWord9_to_Mono8", Depth<Convert_MonoWord_to_Mono8_intr, 9>, Depth<Convert_MonoWord_to_Mono8, 9>, Bytes2, 1,
     kSSE2},
    {"MonoWord12_to_Mono8", Depth<Convert_MonoWord_to_Mono8_intr, 12>, Depth<Convert_MonoWord_to_Mono8, 12>, Bytes2, 1,
     kSSE2},
    {"MonoWord16_to_Mono8", Depth<Convert_MonoWord_to_Mono8_intr, 16>, Depth<Convert_MonoWord_to_Mono8, 16>, Bytes2, 1,
     kSSE2},
    {"MonoPacked10_to_Mono8", Depths<Convert_MonoPacked_to_Mono8_intr, 10>, Depths<Convert_MonoPacked_to_Mono8, 10>,
     PackedBytes, 1, kSSSE3},
    {"MonoPacked12_to_Mono8", Depths<Convert_MonoPacked_to_Mono8_intr, 12>, Depths<Convert_MonoPacked_to_Mono8, 12>,
     PackedBytes, 1, kSSSE3},
    {"MonoMipi10_to_Mono8", Depths<Convert_MonoMipi_to_Mono8_intr, 10>, Depths<Convert_MonoMipi_to_Mono8, 10>,
     Mipi10Bytes, 1, kSSSE3},
    {"MonoMipi12_to_Mono8", Depths<Convert_MonoMipi_to_Mono8_intr, 12>, Depths<Convert_MonoMipi_to_Mono8, 12>,
     Mipi12Bytes, 1, kSSSE3},
    {"YCbCr422_8_to_BGR24", Convert_YCbCr422_8_to_BGR24_intr, Convert_YCbCr422_8_to_BGR24, YCbCr422Bytes, 3, kSSE2},
    {"YCbCr422_8_to_RGB24", Convert_YCbCr422_8_to_RGB24_intr, Convert_YCbCr422_8_to_RGB24, YCbCr422Bytes, 3, kSSE2},
    {"YCbCr422_8_to_BGR32", Convert_YCbCr422_8_to_BGR32_intr, Convert_YCbCr422_8_to_BGR32, YCbCr422Bytes, 4, kSSE2},
    {"YCbCr422_8_to_RGB32", Convert_YCbCr422_8_to_RGB32_intr, Convert_YCbCr422_8_to_RGB32, YCbCr422Bytes, 4, kSSE2},
#define KAIP_VECTOR_CASE(name, src, dst)                \
    {                                                   \
#name "_vec", name##_vec, name, src, dst, kSSE2 \
    }
    KAIP_VECTOR_CASE(SwapColor8Data, Bytes3, 3),
    KAIP_VECTOR_CASE(Convert_Mono8_to_BGR24, Bytes1, 3),
    KAIP_VECTOR_CASE(Convert_BGR24_to_BGR32, Bytes3, 4),
    KAIP_VECTOR_CASE(Convert_RGB24_to_BGR32, Bytes3, 4),
    KAIP_VECTOR_CASE(Convert_BGR15_to_BGR24, Bytes2, 3),
    KAIP_VECTOR_CASE(Convert_BGR15_to_RGB24, Bytes2, 3),
    KAIP_VECTOR_CASE(Convert_BGR15_to_BGR32, Bytes2, 4),
    KAIP_VECTOR_CASE(Convert_BGR15_to_RGB32, Bytes2, 4),
    KAIP_VECTOR_CASE(Convert_BGR16_to_BGR24, Bytes2, 3),
    KAIP_VECTOR_CASE(Convert_BGR16_to_RGB24, Bytes2, 3),
    KAIP_VECTOR_CASE(Convert_BGR16_to_BGR32, Bytes2, 4),
    KAIP_VECTOR_CASE(Convert_BGR16_to_RGB32, Bytes2, 4),
    KAIP_VECTOR_CASE(Convert_BGR24_to_Mono8, Bytes3, 1),
    KAIP_VECTOR_CASE(Convert_RGB24_to_Mono8, Bytes3, 1),
    KAIP_VECTOR_CASE(Convert_BGR32_to_Mono8, Bytes4, 1),
    KAIP_VECTOR_CASE(Convert_RGB32_to_Mono8, Bytes4, 1),
    KAIP_VECTOR_CASE(Convert_BGR24_to_BGR15, Bytes3, 2),
    KAIP_VECTOR_CASE(Convert_RGB24_to_BGR15, Bytes3, 2),
    KAIP_VECTOR_CASE(Convert_BGR24_to_BGR16, Bytes3, 2),
    KAIP_VECTOR_CASE(Convert_RGB24_to_BGR16, Bytes3, 2),
    KAIP_VECTOR_CASE(Convert_BGR32_to_BGR15, Bytes4, 2),
    KAIP_VECTOR_CASE(Convert_RGB32_to_BGR15, Bytes4, 2),
    KAIP_VECTOR_CASE(Convert_BGR32_to_BGR16, Bytes4, 2),
    KAIP_VECTOR_CASE(Convert_RGB32_to_BGR16, Bytes4, 2),
    KAIP_VECTOR_CASE(Convert_BGR32_to_BGR24, Bytes4, 3),
    KAIP_VECTOR_CASE(Convert_RGB32_to_RGB24, Bytes4, 3),
    KAIP_VECTOR_CASE(Convert_BGR32_to_RGB24, Bytes4, 3),
    KAIP_VECTOR_CASE(Convert_Yuv411_to_BGR24, Yuv411Bytes, 3),
    KAIP_VECTOR_CASE(Convert_Yuv411_to_RGB24, Yuv411Bytes, 3),
    KAIP_VECTOR_CASE(Convert_Yuv411_to_BGR32, Yuv411Bytes, 4),
    KAIP_VECTOR_CASE(Convert_Yuv411_to_RGB32, Yuv411Bytes, 4),
    KAIP_VECTOR_CASE(Convert_Yuv411YYuYYv_to_BGR24, Yuv411Bytes, 3),
    KAIP_VECTOR_CASE(Convert_Yuv411YYuYYv_to_RGB24, Yuv411Bytes, 3),
    KAIP_VECTOR_CASE(Convert_Yuv411YYuYYv_to_BGR32, Yuv411Bytes, 4),
    KAIP_VECTOR_CASE(Convert_Yuv411YYuYYv_to_RGB32, Yuv411Bytes, 4),
    KAIP_VECTOR_CASE(Convert_Yuv422_to_BGR24, YCbCr422Bytes, 3),
    KAIP_VECTOR_CASE(Convert_Yuv422_to_RGB24, YCbCr422Bytes, 3),
    KAIP_VECTOR_CASE(Convert_Yuv422_to_BGR32, YCbCr422Bytes, 4),
    KAIP_VECTOR_CASE(Convert_Yuv422_to_RGB32, YCbCr422Bytes, 4),
    KAIP_VECTOR_CASE(Convert_Yuv422yuyv_to_BGR24, YCbCr422Bytes, 3),
    KAIP_VECTOR_CASE(Convert_Yuv422yuyv_to_RGB24, YCbCr422Bytes, 3),
    KAIP_VECTOR_CASE(Convert_Yuv422yuyv_to_BGR32, YCbCr422Bytes, 4),
    KAIP_VECTOR_CASE(Convert_Yuv422yuyv_to_RGB32, YCbCr422Bytes, 4),
    KAIP_VECTOR_CASE(Convert_Yuv444_to_BGR24, Bytes3, 3),
    KAIP_VECTOR_CASE(Convert_Yuv444_to_RGB24, Bytes3, 3),
    KAIP_VECTOR_CASE(Convert_Yuv444_to_BGR32, Bytes3, 4),
    KAIP_VECTOR_CASE(Convert_Yuv444_to_RGB32, Bytes3, 4),
    KAIP_VECTOR_CASE(Convert_YCbCr444_to_BGR24, Bytes3, 3),
    KAIP_VECTOR_CASE(Convert_YCbCr444_to_RGB24, Bytes3, 3),
    KAIP_VECTOR_CASE(Convert_YCbCr444_to_BGR32, Bytes3, 4),
    KAIP_VECTOR_CASE(Convert_YCbCr444_to_RGB32, Bytes3, 4),
    {"MonoPacked10_to_Mono8_vec", Depths<Convert_MonoPacked_to_Mono8_vec, 10>, Depths<Convert_MonoPacked_to_Mono8, 10>,
     PackedBytes, 1, kSSE2},
    {"MonoPacked12_to_Mono8_vec", Depths<Convert_MonoPacked_to_Mono8_vec, 12>, Depths<Convert_MonoPacked_to_Mono8, 12>,
     PackedBytes, 1, kSSE2},
    {"MonoMipi10_to_Mono8_vec", Depths<Convert_MonoMipi_to_Mono8_vec, 10>, Depths<Convert_MonoMipi_to_Mono8, 10>,
     Mipi10Bytes, 1, kSSE2},
    {"MonoMipi12_to_Mono8_vec", Depths<Convert_MonoMipi_to_Mono8_vec, 12>, Depths<Convert_MonoMipi_to_Mono8, 12>,
     Mipi12Bytes, 1, kSSE2},
};

struct TShape {
    uint32_t width, height;
    bool bReverse, bAligned;
    uint32_t srcPad, dstPad;
};

// One image through the variant (switches as set) and through the scalar member (every switch closed),
// on destinations pre-filled alike and compared whole, slack included. Source and destination end at a
// guard page; the destination starts on 16 bytes (bAligned, with a line increment of a multiple of 16) or
// one byte after.
void ExpectSameAsScalar(const TCase& c, CSwitches& sw, CSwitches::TMode mode, const TShape& s, uint32_t seed)
{
    const size_t srcLine = c.srcBytes(s.width), dstLine = c.dstBytes * s.width;
    const uint32_t srcInc = uint32_t(srcLine + s.srcPad);
    uint32_t dstInc = uint32_t(dstLine + s.dstPad);
    if (s.bAligned) dstInc = (dstInc + 15) & ~15u;
    // CopyBitmapData copies the smaller increment whole, the last line included.
    const size_t copied = std::min(srcInc, dstInc);
    const bool bCopy = c.scalar == CopyBitmapData;
    const size_t srcSize = s.height ? size_t(srcInc) * (s.height - 1) + (bCopy ? copied : srcLine) : 0;
    const size_t dstSize = s.height ? size_t(dstInc) * (s.height - 1) + (bCopy ? copied : dstLine) : 0;
    GuardedBuffer src(srcSize), ref(dstSize + 17), out(dstSize + 17);
    FillRandom(src.data(), src.size(), seed);
    FillRandom(ref.data(), ref.size(), seed + 1);
    std::memcpy(out.data(), ref.data(), ref.size());
    const size_t skew = (16 - reinterpret_cast<uintptr_t>(out.data()) % 16) % 16 + (s.bAligned ? 0 : 1);
    ASSERT_EQ(reinterpret_cast<uintptr_t>(ref.data()) % 16, reinterpret_cast<uintptr_t>(out.data()) % 16);

    ASSERT_TRUE(sw.Set(CSwitches::kClosed));
    c.scalar(s.width, s.height, src.data(), ref.data() + skew, srcInc, dstInc, s.bReverse);
    sw.Set(mode);
    const int done = c.intr(s.width, s.height, src.data(), out.data() + skew, srcInc, dstInc, s.bReverse);
    EXPECT_NE(done, 0);
    const bool bSame = std::memcmp(ref.data(), out.data(), out.size()) == 0;
    EXPECT_TRUE(bSame) << c.name << " width " << s.width << " height " << s.height << " reverse " << s.bReverse
                       << " aligned " << s.bAligned << " pads " << s.srcPad << "/" << s.dstPad << " mode " << mode
                       << " seed " << seed;
}

const CSwitches::TMode kOpenModes[] = {CSwitches::kSse2, CSwitches::kOpen, CSwitches::kOpenAvx};

// Whether the switches of mode open the case's gate (an SSSE3 variant stays closed with SSE2 alone).
bool Opens(CSwitches& sw, CSwitches::TMode mode, const TCase& c)
{
    return sw.Set(mode) && !(mode == CSwitches::kSse2 && c.gate == kSSSE3);
}

TEST(ConvertIntr, EveryVariantWritesTheScalarMembersBytes)
{
    const uint32_t widths[] = {1000, 4099};
    std::vector<uint32_t> allWidths;
    for (uint32_t w = 0; w <= 64; ++w) allWidths.push_back(w);
    allWidths.insert(allWidths.end(), std::begin(widths), std::end(widths));
    CSwitches sw;
    uint32_t seed = 20261121;
    for (const TCase& c : kCases)
        for (CSwitches::TMode mode : kOpenModes) {
            if (!Opens(sw, mode, c)) continue;
            for (uint32_t w : allWidths)
                for (uint32_t h = 0; h <= 3; ++h)
                    for (int variant = 0; variant < 8; ++variant) {
                        const TShape s{
                            w, h, bool(variant & 1), bool(variant & 2), variant & 4 ? 5u : 0u, variant & 4 ? 7u : 0u};
                        ExpectSameAsScalar(c, sw, mode, s, ++seed);
                        if (HasFailure()) return;
                    }
        }
}

// Above 1 MiB the aligned lines are stored non-temporally; unaligned ones are not.
TEST(ConvertIntr, ImagesAboveOneMebibyteWriteTheSameBytes)
{
    CSwitches sw;
    uint32_t seed = 7;
    for (const TCase& c : kCases)
        for (CSwitches::TMode mode : kOpenModes) {
            if (!Opens(sw, mode, c)) continue;
            for (int variant = 0; variant < 4; ++variant) {
                const uint32_t width = 1001, height = uint32_t(0x100000 / (c.dstBytes * width) + 3);
                ExpectSameAsScalar(c, sw, mode, {width, height, bool(variant & 1), bool(variant & 2), 3, 16}, ++seed);
                if (HasFailure()) return;
            }
        }
}

TEST(ConvertIntr, AClosedGateReturnsZeroAndWritesNothing)
{
    CSwitches sw;
    for (const TCase& c : kCases) {
        // Closing only the variant's own gate is enough, whatever else is open.
        sw.Set(CSwitches::kOpenAvx);
        (c.gate == kSSE2 ? g_SSEChecker.m_bUseSSE2 : g_SSEChecker.m_bUseSSSE3) = false;
        const uint32_t width = 40, height = 2;
        std::vector<uint8_t> src = RandomBytes(4 * width * height, 3), dst(4 * width * height, 0x5A);
        EXPECT_EQ(c.intr(width, height, src.data(), dst.data(), 4 * width, 4 * width, false), 0) << c.name;
        EXPECT_EQ(dst, std::vector<uint8_t>(dst.size(), 0x5A)) << c.name;
    }
}

TEST(ConvertIntr, AnOpenGateReportsTheWorkDoneForNoLines)
{
    CSwitches sw;
    for (CSwitches::TMode mode : kOpenModes)
        for (const TCase& c : kCases) {
            if (!Opens(sw, mode, c)) continue;
            uint8_t src[64] = {}, dst[64] = {};
            EXPECT_NE(c.intr(16, 0, src, dst, 64, 64, false), 0) << c.name;
        }
}

// Every luma byte with every pair of chroma bytes, once per 4:2:2 family: the split sums of the vector code
// must match the scalar formulas everywhere, not only at the extremes. Lines of 256 pairs, one per U; pass k
// gives the first pixel of each pair the luma k and the second k + 128.
TEST(ConvertIntr, Yuv422EveryLumaAndChroma)
{
    struct T422 {
        const char* name;
        TIntr vec;
        TScalar scalar;
        size_t dstBytes, lumaAt;  // pixel bytes; offset of the first luma byte of a pair (U at the other one)
    };
    const T422 families[] = {
        {"Yuv422_to_BGR32", Convert_Yuv422_to_BGR32_vec, Convert_Yuv422_to_BGR32, 4, 1},
        {"Yuv422yuyv_to_RGB24", Convert_Yuv422yuyv_to_RGB24_vec, Convert_Yuv422yuyv_to_RGB24, 3, 0},
        {"YCbCr422_8_to_BGR32", Convert_YCbCr422_8_to_BGR32_intr, Convert_YCbCr422_8_to_BGR32, 4, 0},
    };
    CSwitches sw;
    const uint32_t width = 512, height = 256;
    std::vector<uint8_t> src(size_t(2) * width * height);
    for (const T422& f : families)
        for (uint32_t k = 0; k < 128; ++k) {
            for (size_t u = 0; u < 256; ++u)
                for (size_t v = 0; v < 256; ++v) {
                    uint8_t* p = &src[(u * 256 + v) * 4];
                    p[f.lumaAt] = uint8_t(k), p[f.lumaAt + 2] = uint8_t(k + 128);
                    p[1 - f.lumaAt] = uint8_t(u), p[3 - f.lumaAt] = uint8_t(v);
                }
            const uint32_t dstInc = uint32_t(f.dstBytes * width);
            std::vector<uint8_t> ref(size_t(dstInc) * height), out(ref.size());
            sw.Set(CSwitches::kClosed);
            f.scalar(width, height, src.data(), ref.data(), 2 * width, dstInc, false);
            for (CSwitches::TMode mode : kOpenModes) {
                if (!sw.Set(mode)) continue;
                std::fill(out.begin(), out.end(), 0);
                ASSERT_NE(f.vec(width, height, src.data(), out.data(), 2 * width, dstInc, false), 0);
                ASSERT_EQ(ref, out) << f.name << " luma " << k << " mode " << mode;
            }
        }
}

}  // namespace
