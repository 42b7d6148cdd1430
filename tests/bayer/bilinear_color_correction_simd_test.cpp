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
    std::vector<Size> sizes;
    for (uint32_t w = 2; w <= 64; ++w) sizes.push_back({w, 5 + w % 7});
    for (uint32_t w : {641u, 1000u, 2448u}) sizes.push_back({w, 6});
    ExpectMatchesModel(KaipBdBilinearColorCorrection, ColorCorrection, sizes);
}

}  // namespace
