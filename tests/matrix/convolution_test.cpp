// convolution_test.cpp: both 3x3 filters against a per-pixel model and their refusals, and the sharpening kernel.
#include <algorithm>

#include "matrix/matrix_test_util.h"
#include "support/log_capture.h"

namespace {

// A random kernel: cross-shaped (corners 0) or full, moderate weights, now and then a large one.
std::array<int32_t, 9> RandomKernel(std::mt19937& gen, bool cross)
{
    std::array<int32_t, 9> k;
    for (auto& v : k) v = int32_t(gen() % 6001) - 3000;
    if (gen() % 4 == 0) k[4] = int32_t(gen() % 2000001) - 1000000;
    if (cross) k[0] = k[2] = k[6] = k[8] = 0;
    return k;
}

// Random samples: full words (high bits above the depth included) or, half the time, a flat level with a
// little noise, so that thresholds fall on both sides of the local contrasts.
void FillSamples(const TFilterFormat& f, KaipImgInfo& info, std::mt19937& gen)
{
    if (gen() % 2) return;
    const uint32_t level = gen() % uint32_t(f.max + 1), noise = 1 + gen() % 16;
    for (uint32_t y = 0; y < info.Height; ++y)
        for (uint32_t i = 0; i < info.Width * f.step; ++i)
            PutSample(info.pData + y * info.LineIncrement, i, f.bytes,
                      std::min<uint32_t>(level + gen() % noise, uint32_t(f.max)));
}

// Both 3x3 filters (the convolution, and the threshold sharpening with a threshold on either side of the
// local contrasts) at every SIMD level and for every format: every width up to 64 (every tail of the vector
// blocks) and a few large ones, both line orders, with and without a LUT (an object or the global one), into a
// sentinel-filled destination.
TEST(Apply3x3Filters, MatchModelOnRandomImages)
{
    uint32_t seed = 1000;
    for (int level : kSimdLevels) {
        ScopedSimdLevel simd(level);
        for (const TFilterFormat& f : kFilterFormats)
            for (uint32_t w : TwinWidths())
                for (bool bThreshold : {false, true}) {
                    if (w == 0) continue;  // refused as uninitialised (tests/hostile)
                    std::mt19937 gen(++seed);
                    const uint32_t h = w > 64 ? 3 : 1 + gen() % 6, flags = gen() % 2 ? KaipImgFlag_BottomUp : 0;
                    const LutMode mode = f.lutDepth ? LutMode(gen() % 3) : LutMode::None;
                    const auto k = RandomKernel(gen, gen() % 2);
                    const int32_t thresholds[] = {
                        -1, 0, int32_t(gen() % 40), int32_t(gen() % uint32_t(f.max)), INT32_MAX, INT32_MIN};
                    const int32_t threshold = thresholds[gen() % 6];
                    SCOPED_TRACE(testing::Message()
                                 << "level " << level << " seed " << seed << " format 0x" << std::hex << f.code
                                 << std::dec << " " << w << "x" << h << " flags " << flags << " lut " << int(mode)
                                 << " threshold " << (bThreshold ? threshold : -2));
                    const TModeLut lut(mode, f.lutDepth, seed);
                    auto src = MakeImage(w, h, f.code, f.PixelBytes(), flags, 2, seed);
                    FillSamples(f, src->info, gen);
                    auto dst = MakeImage(w, h, f.code, f.PixelBytes(), flags, 6, 0);
                    std::vector<uint8_t> expected = Bytes(*dst);
                    ModelFilter(f, src->info, expected, dst->info.LineIncrement, k.data(),
                                bThreshold ? &threshold : nullptr, lut.tables);
                    const std::vector<uint8_t> srcBefore = Bytes(*src);
                    ASSERT_EQ(bThreshold ? Kaip3x3ThresholdSharpening(&src->info, &dst->info, k.data(), threshold, 0,
                                                                      lut.handle)
                                         : KaipApply3x3Convolution(&src->info, &dst->info, k.data(), 0, lut.handle),
                              KASTATUS_OK);
                    ASSERT_EQ(Bytes(*dst), expected);
                    ASSERT_EQ(Bytes(*src), srcBefore);
                }
    }
}

TEST(Apply3x3Convolution, WorkedValues)
{
    const int32_t identity[9] = {0, 0, 0, 0, 1000, 0, 0, 0, 0};
    const int32_t allNegative[9] = {-1000, -1000, -1000, -1000, -1000, -1000, -1000, -1000, -1000};
    const int32_t allPositive[9] = {1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000};
    auto src = MakeImage(3, 3, KaipPixelFormat_Mono8, 1, 0, 0, 0, 30);
    src->buffer.data()[4] = 200;
    for (auto [k, centre] : {std::pair<const int32_t*, uint8_t>{identity, 200}, {allNegative, 0}, {allPositive, 255}}) {
        auto dst = MakeImage(3, 3, KaipPixelFormat_Mono8, 1, 0, 0, 0, 7);
        ASSERT_EQ(KaipApply3x3Convolution(&src->info, &dst->info, k, 0, nullptr), KASTATUS_OK);
        EXPECT_EQ(Bytes(*dst), std::vector<uint8_t>({7, 7, 7, 7, centre, 7, 7, 7, 7}));
    }
    // Colour: the blue byte (first) comes out through the red table.
    RandomLut lut(8, 3);
    TKaIpLut8* pBody = nullptr;
    ASSERT_EQ(GetLut8(lut.Handle(), pBody), KASTATUS_OK);
    for (int i = 0; i < 256; ++i) pBody->Red[i] = 1, pBody->Green[i] = 2, pBody->Blue[i] = 3;
    auto bgra = MakeImage(3, 3, KaipPixelFormat_BGRA8Packed, 4, 0, 0, 11);
    auto dst = MakeImage(3, 3, KaipPixelFormat_BGRA8Packed, 4, 0, 0, 0, 9);
    ASSERT_EQ(KaipApply3x3Convolution(&bgra->info, &dst->info, identity, 0, lut.Handle()), KASTATUS_OK);
    std::vector<uint8_t> expected(36, 9);
    expected[16] = 1, expected[17] = 2, expected[18] = 3;
    EXPECT_EQ(Bytes(*dst), expected);
}

// The refusals of both 3x3 filters with their log lines (null: a status only); the common ones (null
// images, uninitialised images, missing buffers, colour planes, other sizes) are in tests/hostile. A LUT
// lookup logs its own line first, the common check's detail lines follow.
TEST(Apply3x3Filters, RefusalsAndTheirLogLines)
{
    const int32_t k[9] = {0, 0, 0, 0, 1000, 0, 0, 0, 0};
    RandomLut lut8(8, 5), lut10(10, 5);
    struct TCase {
        bool threshold;
        KaipStatus status;
        uint32_t srcFormat, dstFormat, dstFlags;
        KaipHLut lut;
        const char* line;
        bool noDst = false, noKernel = false;
    };
    const uint32_t mono8 = KaipPixelFormat_Mono8, mono16 = KaipPixelFormat_Mono16;
    const KaipStatus unsupported = KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT, lutType = KASTATUS_KAIP_INVALID_LUT_TYPE;
    // clang-format off
    const TCase cases[] = {
        {false, unsupported, KaipPixelFormat_BGR565Packed, KaipPixelFormat_BGR565Packed, 0, nullptr, nullptr},
        {false, unsupported, KaipPixelFormat_RGB8Packed, KaipPixelFormat_RGB8Packed, 0, nullptr, nullptr},
        {false, unsupported, KaipPixelFormat_BayerRG8, KaipPixelFormat_BayerRG8, 0, nullptr, nullptr},
        {false, unsupported, KaipPixelFormat_Mono14, KaipPixelFormat_Mono14, 0, nullptr,
         "KaipApply3x3Convolution: Unsupported source color format 0x01100025"},
        {false, KASTATUS_KAIP_INCOMPATIBLE_SRC_DST_PIXEL_FORMAT, mono8, KaipPixelFormat_Mono10, 0, nullptr, nullptr},
        {false, KASTATUS_KAIP_INCOMPATIBLE_FLAGS, mono8, mono8, KaipImgFlag_BottomUp, nullptr, nullptr},
        {false, lutType, KaipPixelFormat_Mono10, KaipPixelFormat_Mono10, 0, lut8.Handle(), nullptr},
        {false, lutType, mono16, mono16, 0, KaipHLut(1), "KaipApply3x3Convolution: KASTATUS_KAIP_INVALID_LUT_TYPE"},
        {false, lutType, KaipPixelFormat_Mono9, KaipPixelFormat_Mono9, 0, lut8.Handle(), nullptr},
        {false, KASTATUS_KAIP_INVALID_POINTER, mono8, mono8, 0, nullptr,
         "KaipApply3x3Convolution: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.", false, true},
        {true, KASTATUS_KAIP_INVALID_DST_POINTER, mono8, mono8, 0, nullptr,
         "Kaip3x3ThresholdSharpening: pDstImgInfo is NULL - must be supplied for this function", true},
        {true, KASTATUS_KAIP_INVALID_POINTER, mono8, mono8, 0, nullptr,
         "Kaip3x3ThresholdSharpening: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.", false, true},
        {true, unsupported, KaipPixelFormat_BayerRG8, KaipPixelFormat_BayerRG8, 0, nullptr,
         "Kaip3x3ThresholdSharpening: Unsupported source color format 0x01080009"},
        {true, unsupported, KaipPixelFormat_RGB8Packed, KaipPixelFormat_RGB8Packed, 0, nullptr,
         "Kaip3x3ThresholdSharpening: Unsupported source color format 0x02180014"},
        {true, lutType, mono8, mono8, 0, lut10.Handle(), "Kaip3x3ThresholdSharpening: KASTATUS_KAIP_INVALID_LUT_TYPE"},
        {true, lutType, mono16, mono16, 0, KaipHLut(1), "Kaip3x3ThresholdSharpening: KASTATUS_KAIP_INVALID_LUT_TYPE"},
        {true, KASTATUS_KAIP_INCOMPATIBLE_FLAGS, mono8, mono8, KaipImgFlag_BottomUp, nullptr,
         "Kaip3x3ThresholdSharpening: Src and Dst images differ in flags and KaipOption_ReallocateDst flag is not "
         "present."},
    };
    // clang-format on
    for (const TCase& c : cases) {
        SCOPED_TRACE(testing::Message() << (c.threshold ? "threshold" : "convolution") << " status " << c.status
                                        << " format 0x" << std::hex << c.srcFormat);
        // 6 x 4 pixels of up to 2 bytes each in both images, so any format above fits.
        auto src = MakeImage(6, 4, c.srcFormat, 2, 0, 0, 21);
        auto dst = MakeImage(6, 4, c.dstFormat, 2, c.dstFlags, 0, 0, 3);
        const std::vector<uint8_t> srcBefore = Bytes(*src), dstBefore = Bytes(*dst);
        KaipImgInfo* pDst = c.noDst ? nullptr : &dst->info;
        const int32_t* pKernel = c.noKernel ? nullptr : k;
        LogCapture log;
        EXPECT_EQ(c.threshold ? Kaip3x3ThresholdSharpening(&src->info, pDst, pKernel, 5, 0, c.lut)
                              : KaipApply3x3Convolution(&src->info, pDst, pKernel, 0, c.lut),
                  c.status);
        EXPECT_EQ(Bytes(*src), srcBefore);
        EXPECT_EQ(Bytes(*dst), dstBefore);
        const auto lines = log.Lines();
        if (c.line) {
            EXPECT_NE(std::find(lines.begin(), lines.end(), c.line), lines.end());
        }
    }
}

TEST(Set3x3MatrixSharpening, Examples)
{
    struct Case {
        int32_t sharpness;
        uint32_t options;
        std::array<int32_t, 9> k;
    };
    const Case cases[] = {
        {0, 0, {0, 0, 0, 0, 1000, 0, 0, 0, 0}},
        {0, KaipSharpening_AllNeighbours, {0, 0, 0, 0, 1000, 0, 0, 0, 0}},
        {1, 0, {0, -22, 0, -22, 1090, -22, 0, -22, 0}},
        {100, 0, {0, -2250, 0, -2250, 10000, -2250, 0, -2250, 0}},
        {150, 0, {0, -2250, 0, -2250, 10000, -2250, 0, -2250, 0}},
        {100, KaipSharpening_AllNeighbours, {-1125, -1125, -1125, -1125, 10000, -1125, -1125, -1125, -1125}},
        {-100, 0, {0, 200, 0, 200, 200, 200, 0, 200, 0}},
        {-150, 0, {0, 200, 0, 200, 200, 200, 0, 200, 0}},
        {-100, KaipSharpening_AllNeighbours, {111, 111, 111, 111, 112, 111, 111, 111, 111}},
        {-7, KaipSharpening_AllNeighbours, {7, 7, 7, 7, 944, 7, 7, 7, 7}},
        {INT32_MIN, 0, {0, 200, 0, 200, 200, 200, 0, 200, 0}},
    };
    for (const Case& c : cases) {
        std::array<int32_t, 9> k{};
        ASSERT_EQ(KaipSet3x3MatrixSharpening(c.sharpness, k.data(), c.options), KASTATUS_OK);
        EXPECT_EQ(k, c.k) << "sharpness " << c.sharpness << " options " << c.options;
    }
    LogCapture log;
    EXPECT_EQ(KaipSet3x3MatrixSharpening(0, nullptr, 0), KASTATUS_KAIP_INVALID_POINTER);
    EXPECT_EQ(log.Lines(),
              std::vector<std::string>{
                  "KaipSet3x3MatrixSharpening: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER."});
}

}  // namespace
