// pixel_grouping_test.cpp: KaipBdPixelGrouping against its per-pixel reference; flat and ramp images; refusals.
#include <gtest/gtest.h>

#include "bayer/interpolation_model.h"
#include "platform/os_buffer.h"

using namespace bayer_model;

namespace {

TEST(BdPixelGrouping, MatchesReferenceForEveryDepthPatternDestinationAndLut)
{
    ExpectMatchesModel(KaipBdPixelGrouping, PixelGrouping);
}

TEST(BdPixelGrouping, DecodesFlatAndRampImagesExactly)
{
    ExpectFlatAndRampExact(KaipBdPixelGrouping);
}

TEST(BdPixelGrouping, RefusesLutsWithoutBothBayerFlagsAndRedFirstDestinations)
{
    ExpectLutAndDestinationRefusals(KaipBdPixelGrouping);
}

TEST(BdPixelGrouping, ReportsAFailedLineBufferAllocation)
{
    BayerImage src(9, 7, 10, false, false, 5);
    auto dst = Destination(9, 7, KaipPixelFormat_BGR8Packed, 3);
    oxOsBufferFailAfter(0);
    const KaipStatus status = KaipBdPixelGrouping(&src.img->info, &dst->info, KaipPixelFormat_BGR8Packed, 0, nullptr);
    oxOsBufferFailAfter(-1);
    EXPECT_EQ(status, KASTATUS_KAIP_MEMORY_ALLOC_FAILED);
}

}  // namespace
