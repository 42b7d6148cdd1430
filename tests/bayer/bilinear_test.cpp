// bilinear_test.cpp: bilinear interpolation against the per-pixel reference, and its own refusals.
#include <gtest/gtest.h>

#include "bayer/bayer_model.h"

using namespace bayer_model;

namespace {

TEST(BdBilinearInterpolation, MatchesReferenceForEveryDepthPatternDestinationAndLut)
{
    ExpectMatchesModel(KaipBdBilinearInterpolation, Bilinear, Sizes());
}

TEST(BdBilinearInterpolation, RefusesLutsWithoutBothBayerFlagsAndRedFirstDestinations)
{
    ExpectLutAndDestinationRefusals(KaipBdBilinearInterpolation);
}

}  // namespace
