// apply_lut_avx2_test.cpp: the AVX2 worker of the 8-bit LUT does whole blocks only (its lines against the
// model, at every SIMD level, are in apply_lut_test.cpp).
#include <gtest/gtest.h>

#include <vector>

#include "core/unidef.h"

// apply_lut_avx2.cpp
uint32_t ApplyLut8Line_avx2(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwCount, const uint8_t* pTable);

// 32-byte blocks of a 70-byte line: 6 bytes left alone.
TEST(ApplyLutAvx2, DoesWholeBlocksOnly)
{
    if (!g_SSEChecker.m_bHasAVX2) GTEST_SKIP() << "no AVX2";
    std::vector<uint8_t> table(256), src(70), dst(70, 0xA5);
    for (int i = 0; i < 256; ++i) table[i] = uint8_t(255 - i);
    for (int i = 0; i < 70; ++i) src[i] = uint8_t(i * 37);
    EXPECT_EQ(ApplyLut8Line_avx2(src.data(), dst.data(), 70, table.data()), 64u);
    for (int i = 0; i < 70; ++i) EXPECT_EQ(dst[i], i < 64 ? uint8_t(255 - src[i]) : 0xA5) << i;
}
