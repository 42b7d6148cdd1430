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

// The 8-bit loops divide in float: a numerator below 2^24 by a divisor d up to 2^16 where the
// quotient is below 256 (the rounded green: 4 weights at most 2^16; hue transit: d below 256).
// Truncating the rounded quotient is monotonic in the numerator, so it is exact everywhere
// when it is at both ends of every quotient's range, q d and q d + d - 1.
TEST(BdPixelGrouping, FloatQuotientsBelow256TruncateExactly)
{
    for (uint32_t d = 1; d <= 65536; ++d) {
        for (uint32_t q = 0; q < 256; ++q) {
            for (uint32_t num : {q * d, q * d + d - 1}) {
                ASSERT_EQ(uint32_t(float(num) / float(d)), q) << num << " / " << d;
            }
        }
    }
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
