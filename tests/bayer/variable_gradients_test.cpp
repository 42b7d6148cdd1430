// variable_gradients_test.cpp: KaipBdVariableGradients against its per-pixel reference; flat and ramp images; refusals.
#include "bayer/variable_gradients.h"

#include <gtest/gtest.h>

#include "bayer/interpolation_model.h"

using namespace bayer_model;

namespace {

TEST(BdVariableGradients, MatchesReferenceForEveryDepthPatternDestinationAndLut)
{
    ExpectMatchesModel(KaipBdVariableGradients, VariableGradients);
}

// Every width up to 70 (both column parities at each end of the vector loops, the writer's
// blocks of 16 and 32 pixels and the scalar pixels after them) and widths that end the strips
// of 2560 columns at every parity.
TEST(BdVariableGradients, MatchesReferenceAtEveryWidthAndAcrossStrips)
{
    std::vector<Size> sizes;
    for (uint32_t w = 2; w <= 70; ++w) sizes.push_back({w, 6 + w % 3});
    for (uint32_t w : {2563u, 2564u, 2565u, 2566u}) sizes.push_back({w, 5 + w % 2});
    ExpectMatchesModel(KaipBdVariableGradients, VariableGradients, sizes);
}

TEST(BdVariableGradients, ReportsAFailedStripBufferAllocation)
{
    BayerImage src(9, 7, 8, false, false, 5);
    auto dst = Destination(9, 7, KaipPixelFormat_BGR8Packed, 3);
    EXPECT_EQ(DecodeWithoutMemory(KaipBdVariableGradients, src, *dst), KASTATUS_KAIP_MEMORY_ALLOC_FAILED);
}

// The division-free rounded mean equals the division for every numerator and count it meets:
// 16-bit lanes at 8 bits, 32-bit lanes up to 12 bits.
TEST(BdVariableGradients, RoundedMeanDividesExactlyOverTheWholeRange)
{
    for (int32_t taken = 1; taken <= 8; ++taken) {
        for (int32_t num = 0; num <= 4 * taken * 4095; ++num) {
            const int32_t want = (num + 2 * taken) / (4 * taken);
            if (num <= 4 * taken * 255) {
                ASSERT_EQ(RoundedMean(int16_t(num), int16_t(taken)), want) << num << " / " << taken;
            }
            ASSERT_EQ(RoundedMean(num, taken), want) << num << " / " << taken;
        }
    }
}

TEST(BdVariableGradients, DecodesFlatAndRampImagesExactly)
{
    ExpectFlatAndRampExact(KaipBdVariableGradients);
}

TEST(BdVariableGradients, RefusesLutsWithoutBothBayerFlagsAndRedFirstDestinations)
{
    ExpectLutAndDestinationRefusals(KaipBdVariableGradients);
}

}  // namespace
