// bilinear_color_correction_simd_test.cpp: the vector copies of the gradient-corrected bilinear interior against
// the per-pixel reference (the scalar rule meets the same reference at SIMD.Level 0).
#include <gtest/gtest.h>

#include "bayer/interpolation_model.h"

using namespace bayer_model;

namespace {

// Every width 2..64 (each position of the last vector block, lines starting with either site)
// and a few large ones, at heights 5 to 11: every depth (16-bit samples with stray high bits now
// and then), pattern, destination and LUT kind (identity, global, random tables), padding
// included. This binary also runs at SIMD.Level 0 and 4, so the scalar rule and each vector
// copy are held to the same bytes.
TEST(BilinearColorCorrectionSimd, EveryWidthMatchesReference)
{
    ExpectMatchesModel(KaipBdBilinearColorCorrection, ColorCorrection, EveryWidthSizes());
}

// The vector blocks read a ring of split source lines; when it cannot be allocated the scalar
// rule decodes the whole interior, to the same bytes.
TEST(BilinearColorCorrectionSimd, WithoutItsLineRingTheScalarRuleDecodesEverything)
{
    const TestLut lut(LutKind::Identity, 1);
    for (uint32_t bits : {8u, 12u}) {
        const BayerImage src(70, 9, bits, false, true, 5 + bits);
        auto dst = Destination(70, 9, KaipPixelFormat_BGR8Packed, 3);
        ASSERT_EQ(DecodeWithoutMemory(KaipBdBilinearColorCorrection, src, *dst), KASTATUS_OK);
        const auto want = Expected(*dst, 3, false,
                                   [&](uint32_t x, uint32_t y) { return ColorCorrection(src.m, lut.of(bits), x, y); });
        EXPECT_EQ(FirstDifference(*dst, 3, want), "") << "bits " << bits;
    }
}

}  // namespace
