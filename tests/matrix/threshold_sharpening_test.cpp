// threshold_sharpening_test.cpp: Kaip3x3ThresholdSharpening's worked values and refusals (its model test runs
// beside the convolution's in convolution_test.cpp).
#include <algorithm>

#include "matrix/matrix_test_util.h"
#include "support/log_capture.h"

namespace {

TEST(ThresholdSharpening, WorkedValues)
{
    // Centre 109 among eight 100s: 9 x 109 - 909 = 72, exactly 9 x 8, so 8 leaves it and 7 sharpens it
    // (10000 x 109 - 4 x 2250 x 100 = 190000, / 1000 = 190).
    int32_t k[9];
    ASSERT_EQ(KaipSet3x3MatrixSharpening(100, k, 0), KASTATUS_OK);
    auto src = MakeImage(3, 3, KaipPixelFormat_Mono8, 1, 0, 0, 0, 100);
    src->buffer.data()[4] = 109;
    for (auto [threshold, centre] : {std::pair<int32_t, uint8_t>{8, 109}, {7, 190}, {-1, 190}}) {
        auto dst = MakeImage(3, 3, KaipPixelFormat_Mono8, 1, 0, 0, 0, 7);
        ASSERT_EQ(Kaip3x3ThresholdSharpening(&src->info, &dst->info, k, threshold, 0, nullptr), KASTATUS_OK);
        EXPECT_EQ(Bytes(*dst), std::vector<uint8_t>({7, 7, 7, 7, centre, 7, 7, 7, 7})) << threshold;
    }
    // A threshold of INT32_MIN sharpens everywhere, as the plain convolution does.
    auto big = MakeImage(40, 9, KaipPixelFormat_Mono12, 2, 0, 0, 77);
    auto a = MakeImage(40, 9, KaipPixelFormat_Mono12, 2, 0, 0, 0, 1),
         b = MakeImage(40, 9, KaipPixelFormat_Mono12, 2, 0, 0, 0, 1);
    ASSERT_EQ(Kaip3x3ThresholdSharpening(&big->info, &a->info, k, INT32_MIN, 0, nullptr), KASTATUS_OK);
    ASSERT_EQ(KaipApply3x3Convolution(&big->info, &b->info, k, 0, nullptr), KASTATUS_OK);
    EXPECT_EQ(Bytes(*a), Bytes(*b));
}

// Its refusals with their log lines (the statuses of the common checks are also in tests/hostile).
TEST(ThresholdSharpening, Refusals)
{
    const int32_t k[9] = {0, 0, 0, 0, 1000, 0, 0, 0, 0};
    RandomLut lut10(10, 5);
    struct TCase {
        KaipStatus status;
        uint32_t format, dstFlags;
        bool dst, kernel;
        KaipHLut lut;
        const char* line;
    };
    const uint32_t mono8 = KaipPixelFormat_Mono8;
    const TCase cases[] = {
        {KASTATUS_KAIP_INVALID_DST_POINTER, mono8, 0, false, true, nullptr,
         "Kaip3x3ThresholdSharpening: pDstImgInfo is NULL - must be supplied for this function"},
        {KASTATUS_KAIP_INVALID_POINTER, mono8, 0, true, false, nullptr,
         "Kaip3x3ThresholdSharpening: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER."},
        {KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT, KaipPixelFormat_BayerRG8, 0, true, true, nullptr,
         "Kaip3x3ThresholdSharpening: Unsupported source color format 0x01080009"},
        {KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT, KaipPixelFormat_RGB8Packed, 0, true, true, nullptr,
         "Kaip3x3ThresholdSharpening: Unsupported source color format 0x02180014"},
        {KASTATUS_KAIP_INVALID_LUT_TYPE, mono8, 0, true, true, lut10.Handle(),
         "Kaip3x3ThresholdSharpening: KASTATUS_KAIP_INVALID_LUT_TYPE"},
        {KASTATUS_KAIP_INVALID_LUT_TYPE, KaipPixelFormat_Mono16, 0, true, true, KaipHLut(1),
         "Kaip3x3ThresholdSharpening: KASTATUS_KAIP_INVALID_LUT_TYPE"},
        {KASTATUS_KAIP_INCOMPATIBLE_FLAGS, mono8, KaipImgFlag_BottomUp, true, true, nullptr,
         "Kaip3x3ThresholdSharpening: Src and Dst images differ in flags and KaipOption_ReallocateDst flag is not "
         "present."},
    };
    for (const TCase& c : cases) {
        SCOPED_TRACE(c.line);
        auto src = MakeImage(6, 4, c.format, 2, 0, 0, 21);
        auto dst = MakeImage(6, 4, c.format, 2, c.dstFlags, 0, 0, 3);
        const std::vector<uint8_t> before = Bytes(*dst);
        LogCapture log;
        EXPECT_EQ(
            Kaip3x3ThresholdSharpening(&src->info, c.dst ? &dst->info : nullptr, c.kernel ? k : nullptr, 5, 0, c.lut),
            c.status);
        EXPECT_EQ(Bytes(*dst), before);
        // A LUT lookup logs its own line first, the common check detail lines after.
        const auto lines = log.Lines();
        EXPECT_NE(std::find(lines.begin(), lines.end(), c.line), lines.end());
    }
}

}  // namespace
