// apply_lut_avx2_test.cpp: the AVX2 blocks of the 8-bit LUT against the scalar words, and their gate.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "core/unidef.h"
#include "general/lut.h"
#include "lut_model.h"
#include "support/guarded.h"

using namespace lutmodel;

// apply_lut_avx2.cpp
uint32_t ApplyLut8Line_avx2(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwCount, const uint8_t* pTable);

class ApplyLutAvx2 : public GlobalLutTest {};

namespace {

// Sets SIMD.Level and its switches for one scope.
class CSimdLevel {
public:
    explicit CSimdLevel(int level) : m_saved(g_SSEChecker.m_iSIMDLevel) { Set(level); }
    ~CSimdLevel() { Set(m_saved); }

private:
    static void Set(int level)
    {
        g_SSEChecker.m_iSIMDLevel = level;
        g_SSEChecker.DeriveSwitches();
    }
    int m_saved;
};

std::vector<uint8_t> Whole(const GuardedImage& img)
{
    return {img.buffer.data(), img.buffer.data() + img.buffer.size()};
}

}  // namespace

// Mono8, and BGR8 and RGB8 with equal and with different channel tables; widths 0..64 (every
// tail length) and a few large ones; in place and into a sentinel-filled destination with padding:
// level 4 writes exactly the bytes of level 0 (closed gate).
TEST_F(ApplyLutAvx2, WritesTheScalarBytes)
{
    if (!g_SSEChecker.m_bHasAVX2) GTEST_SKIP() << "no AVX2";
    struct TCase {
        uint32_t format, bytes;
        bool bEqualTables;
    };
    const TCase cases[] = {{KaipPixelFormat_Mono8, 1, true},
                           {KaipPixelFormat_BGR8Packed, 3, true},
                           {KaipPixelFormat_BGR8Packed, 3, false},
                           {KaipPixelFormat_RGB8Packed, 3, true}};
    std::vector<uint32_t> widths;
    for (uint32_t w = 0; w <= 64; ++w) widths.push_back(w);
    for (uint32_t w : {641u, 1000u, 2448u}) widths.push_back(w);
    const KaipHLut global = reinterpret_cast<KaipHLut>(1);
    for (const TCase& c : cases) {
        for (uint32_t w : widths) {
            for (bool inPlace : {false, true}) {
                const uint32_t seed = 31 + w * 2 + inPlace + c.bytes * 1000 + c.bEqualTables * 5000;
                SCOPED_TRACE(::testing::Message()
                             << "format 0x" << std::hex << c.format << std::dec << " equal tables " << c.bEqualTables
                             << " width " << w << " in place " << inPlace << " seed " << seed);
                std::mt19937 rng(seed);
                TKaIpLut8& body = *Body8(global);
                for (uint32_t i = 0; i < 256; ++i) {
                    body.Green[i] = uint8_t(rng());
                    body.Red[i] = c.bEqualTables ? body.Green[i] : uint8_t(rng());
                    body.Blue[i] = c.bEqualTables ? body.Green[i] : uint8_t(rng());
                }
                const uint32_t h = 3, inc = w * c.bytes + 7;
                GuardedImage src0(w, h, c.format, inc), src4(w, h, c.format, inc);
                GuardedImage dst0(w, h, c.format, inc), dst4(w, h, c.format, inc);
                FillRandom(src0.buffer.data(), src0.buffer.size(), seed);
                FillRandom(src4.buffer.data(), src4.buffer.size(), seed);
                std::fill(dst0.buffer.data(), dst0.buffer.data() + dst0.buffer.size(), 0xA5);
                std::fill(dst4.buffer.data(), dst4.buffer.data() + dst4.buffer.size(), 0xA5);
                KaipStatus s0, s4;
                {
                    CSimdLevel scalar(0);
                    s0 = KaipApplyLut(&src0.info, inPlace ? nullptr : &dst0.info, global, 0);
                }
                {
                    CSimdLevel avx2(4);
                    ASSERT_TRUE(g_SSEChecker.UseAVX2());
                    s4 = KaipApplyLut(&src4.info, inPlace ? nullptr : &dst4.info, global, 0);
                }
                ASSERT_EQ(s4, s0);
                ASSERT_EQ(Whole(src4), Whole(src0));
                ASSERT_EQ(Whole(dst4), Whole(dst0));
            }
        }
    }
}

// The worker itself does whole blocks only: 32-byte blocks of a 70-byte line, 6 bytes left alone.
TEST_F(ApplyLutAvx2, DoesWholeBlocksOnly)
{
    if (!g_SSEChecker.m_bHasAVX2) GTEST_SKIP() << "no AVX2";
    std::vector<uint8_t> table(256), src(70), dst(70, 0xA5);
    for (int i = 0; i < 256; ++i) table[i] = uint8_t(255 - i);
    for (int i = 0; i < 70; ++i) src[i] = uint8_t(i * 37);
    EXPECT_EQ(ApplyLut8Line_avx2(src.data(), dst.data(), 70, table.data()), 64u);
    for (int i = 0; i < 70; ++i) EXPECT_EQ(dst[i], i < 64 ? uint8_t(255 - src[i]) : 0xA5) << i;
}
