// threshold_sharpening_test.cpp: Kaip3x3ThresholdSharpening's worked values (its model test and its refusals run
// beside the convolution's in convolution_test.cpp).
#include "matrix/matrix_test_util.h"

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
}

}  // namespace
