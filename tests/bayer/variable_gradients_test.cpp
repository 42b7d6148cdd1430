// variable_gradients_test.cpp: KaipBdVariableGradients against its per-pixel reference; flat and ramp images; refusals.
#include <gtest/gtest.h>

#include "bayer/interpolation_model.h"

using namespace bayer_model;

namespace {

TEST(BdVariableGradients, MatchesReferenceForEveryDepthPatternDestinationAndLut)
{
    ExpectMatchesModel(KaipBdVariableGradients, VariableGradients);
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
