// bilinear_color_correction_test.cpp: KaipBdBilinearColorCorrection against its reference; flat, ramp; refusals.
#include <gtest/gtest.h>

#include "bayer/interpolation_model.h"

using namespace bayer_model;

namespace {

TEST(BdBilinearColorCorrection, MatchesReferenceForEveryDepthPatternDestinationAndLut)
{
    ExpectMatchesModel(KaipBdBilinearColorCorrection, ColorCorrection);
}

TEST(BdBilinearColorCorrection, DecodesFlatAndRampImagesExactly)
{
    ExpectFlatAndRampExact(KaipBdBilinearColorCorrection);
}

TEST(BdBilinearColorCorrection, RefusesLutsWithoutBothBayerFlagsAndRedFirstDestinations)
{
    ExpectLutAndDestinationRefusals(KaipBdBilinearColorCorrection);
}

}  // namespace
