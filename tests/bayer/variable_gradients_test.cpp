// variable_gradients_test.cpp: KaipBdVariableGradients against its per-pixel reference; flat and ramp images; refusals.
#include <gtest/gtest.h>

#include "bayer/interpolation_model.h"
#include "bayer/variable_gradients.h"

using namespace bayer_model;

namespace {

TEST(BdVariableGradients, MatchesReferenceForEveryDepthPatternDestinationAndLut)
{
    ExpectMatchesModel(KaipBdVariableGradients, VariableGradients);
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
