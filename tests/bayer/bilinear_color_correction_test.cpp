// bilinear_color_correction_test.cpp: KaipBdBilinearColorCorrection and its vector copies against the per-pixel
// reference (the binary also runs at SIMD.Level 0 and 4); flat and ramp images; refusals.
#include <gtest/gtest.h>

#include "bayer/interpolation_model.h"

using namespace bayer_model;

namespace {

TEST(BdBilinearColorCorrection, DecodesFlatAndRampImagesExactly)
{
    ExpectFlatAndRampExact(KaipBdBilinearColorCorrection);
}

TEST(BdBilinearColorCorrection, RefusesLutsWithoutBothBayerFlagsAndRedFirstDestinations)
{
    ExpectLutAndDestinationRefusals(KaipBdBilinearColorCorrection);
}

// Every depth (16-bit samples with stray high bits now and then), pattern, destination and LUT kind
// (identity, global, random tables), padding included, at the window sizes and at every width 2..64 (each
// position of the last vector block, lines starting with either site) and a few large ones.
TEST(BdBilinearColorCorrection, MatchesReferenceAtEveryWidth)
{
    std::vector<Size> sizes = WindowSizes();
    sizes.insert(sizes.end(), EveryWidthSizes().begin(), EveryWidthSizes().end());
    ExpectMatchesModel(KaipBdBilinearColorCorrection, ColorCorrection, sizes);
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
