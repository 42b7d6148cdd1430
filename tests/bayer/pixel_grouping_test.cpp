// pixel_grouping_test.cpp: KaipBdPixelGrouping against its per-pixel reference; flat and ramp images; refusals.
#include <gtest/gtest.h>

#include "bayer/interpolation_model.h"

using namespace bayer_model;

namespace {

// The window sizes, every width at which the vector loops can end, and long lines; this binary also runs at
// SIMD.Level 0 and 4, so the 32-bit path and both vector copies are held to the same bytes.
TEST(BdPixelGrouping, MatchesReferenceAtEveryWidth)
{
    std::vector<Size> sizes = WindowSizes();
    sizes.insert(sizes.end(), EveryWidthSizes().begin(), EveryWidthSizes().end());
    ExpectMatchesModel(KaipBdPixelGrouping, PixelGrouping, sizes);
}

// The vector loops divide in float. Truncating the rounded quotient is monotonic in the
// numerator, so checking both ends of every quotient's range (q d and q d + d - 1) covers all
// numerators. The 8-bit rounded green (quotient below 256, divisor up to 2^16, numerator below
// 2^24) is exact; the deeper one (divisor 4 w up to 2^16, numerator below 2^28) within one of
// the quotient, which its remainder step corrects.
TEST(BdPixelGrouping, FloatQuotientsTruncateExactlyOrWithinOne)
{
    auto quotient = [](uint32_t num, uint32_t d) { return int64_t(float(num) / float(d)); };
    for (uint32_t d = 1; d <= 65536; ++d) {
        for (uint32_t q = 0; q < 256; ++q) {
            ASSERT_EQ(quotient(q * d, d), q) << q * d << " / " << d;
            ASSERT_EQ(quotient(q * d + d - 1, d), q) << q * d + d - 1 << " / " << d;
        }
    }
    for (uint32_t d = 4; d <= 65536; d += 4) {
        for (uint32_t q = 0; q < 4096; ++q) {
            ASSERT_LE(std::abs(quotient(q * d, d) - q), 1) << q * d << " / " << d;
            ASSERT_LE(std::abs(quotient(q * d + d - 1, d) - q), 1) << q * d + d - 1 << " / " << d;
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
    EXPECT_EQ(DecodeWithoutMemory(KaipBdPixelGrouping, src, *dst), KASTATUS_KAIP_MEMORY_ALLOC_FAILED);
}

}  // namespace
