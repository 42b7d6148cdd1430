// color_correction_avx2_test.cpp: the AVX2 blocks of the 8-bit three-byte correction against the baseline, and their
// gate.
#include "matrix/matrix_test_util.h"

namespace {

// BGR8 and RGB8, widths 0..64 (every tail length) and a few large ones, random matrices (some with
// coefficients large enough to wrap the 32-bit sums), in place and into a sentinel-filled guarded
// destination with padding: level 4 writes exactly the bytes of level 0.
TEST(ColorCorrectionAvx2, WritesTheBaselineBytes)
{
    if (!g_SSEChecker.m_bHasAVX2) GTEST_SKIP() << "no AVX2";
    std::vector<uint32_t> widths;
    for (uint32_t w = 0; w <= 64; ++w) widths.push_back(w);
    for (uint32_t w : {641u, 1000u, 2448u}) widths.push_back(w);
    for (uint32_t format : {KaipPixelFormat_BGR8Packed, KaipPixelFormat_RGB8Packed}) {
        for (uint32_t w : widths) {
            for (bool inPlace : {false, true}) {
                const uint32_t seed = 7 + w * 4 + inPlace * 2 + (format == KaipPixelFormat_RGB8Packed);
                SCOPED_TRACE(::testing::Message() << "format 0x" << std::hex << format << std::dec << " width " << w
                                                  << " in place " << inPlace << " seed " << seed);
                std::mt19937 rng(seed);
                int32_t m[9];
                const bool bHuge = seed % 3 == 0;
                for (int32_t& v : m) v = bHuge ? int32_t(rng()) / 16 : int32_t(rng() % 4001) - 2000;
                auto src0 = MakeImage(w, 3, format, 3, 0, 5, seed), src4 = MakeImage(w, 3, format, 3, 0, 5, seed);
                auto dst0 = MakeImage(w, 3, format, 3, 0, 5, 0), dst4 = MakeImage(w, 3, format, 3, 0, 5, 0);
                KaipStatus s0, s4;
                {
                    ScopedSimdLevel scalar(0);
                    s0 = KaipApplyRgbColorCorrection(&src0->info, inPlace ? nullptr : &dst0->info, m, 0, nullptr);
                }
                {
                    ScopedSimdLevel avx2(4);
                    ASSERT_TRUE(g_SSEChecker.UseAVX2());
                    s4 = KaipApplyRgbColorCorrection(&src4->info, inPlace ? nullptr : &dst4->info, m, 0, nullptr);
                }
                ASSERT_EQ(s4, s0);
                ASSERT_EQ(Bytes(*src4), Bytes(*src0));
                ASSERT_EQ(Bytes(*dst4), Bytes(*dst0));
            }
        }
    }
}

}  // namespace
