// threshold_sharpening_test.cpp: Kaip3x3ThresholdSharpening against a per-pixel model, worked values and refusals.
#include <algorithm>
#include <functional>

#include "matrix/matrix_test_util.h"
#include "support/log_capture.h"

namespace {

struct TFormat {
    uint32_t code;
    unsigned bytes, channels, step;  // per sample; filtered samples and samples per pixel
    int32_t max;
    unsigned lutDepth;  // 0: takes no LUT
};

const TFormat kFormats[] = {
    {KaipPixelFormat_Mono8, 1, 1, 1, 255, 8},       {KaipPixelFormat_BGR8Packed, 1, 3, 3, 255, 8},
    {KaipPixelFormat_BGRA8Packed, 1, 3, 4, 255, 8}, {KaipPixelFormat_Mono10, 2, 1, 1, 1023, 10},
    {KaipPixelFormat_Mono12, 2, 1, 1, 4095, 12},    {KaipPixelFormat_Mono9, 2, 1, 1, 511, 0},
    {KaipPixelFormat_Mono11, 2, 1, 1, 2047, 0},     {KaipPixelFormat_Mono13, 2, 1, 1, 8191, 0},
    {KaipPixelFormat_Mono15, 2, 1, 1, 32767, 0},    {KaipPixelFormat_Mono16, 2, 1, 1, 65535, 0},
};

// Interior samples only: sharpened (kernel sum, wrapped to 32 bits, divided toward zero) where
// |9 x centre - sum of the nine samples| > 9 x threshold, else the centre; clamped; then the table of the
// byte position (colour) or green (mono).
void Model(const TFormat& f, const KaipImgInfo& src, std::vector<uint8_t>& out, uint32_t outIncrement, const int32_t* k,
           int32_t threshold, const TModelLut* lut)
{
    for (uint32_t y = 1; y + 1 < src.Height; ++y) {
        for (uint32_t x = 1; x + 1 < src.Width; ++x) {
            for (unsigned ch = 0; ch < f.channels; ++ch) {
                int64_t weighted = 0, nine = 0;
                auto sample = [&](uint32_t yy, uint32_t xx) {
                    return int64_t(GetSample(src.pData + yy * src.LineIncrement, xx * f.step + ch, f.bytes));
                };
                for (int dy = 0; dy < 3; ++dy) {
                    for (int dx = 0; dx < 3; ++dx) {
                        weighted += k[3 * dy + dx] * sample(y - 1 + dy, x - 1 + dx);
                        nine += sample(y - 1 + dy, x - 1 + dx);
                    }
                }
                const int64_t centre = sample(y, x);
                const bool sharpen = std::abs(9 * centre - nine) > 9 * int64_t(threshold);
                int64_t v = sharpen ? int32_t(uint32_t(uint64_t(weighted))) / 1000 : centre;
                v = std::min<int64_t>(std::max<int64_t>(v, 0), f.max);
                if (lut) v = (*lut)[f.channels == 3 ? ch : 1][size_t(v)];
                PutSample(out.data() + y * outIncrement, x * f.step + ch, f.bytes, uint32_t(v));
            }
        }
    }
}

// Random samples: full words (high bits above the depth included) or, half the time, a flat level with a
// little noise, so that thresholds fall on both sides of the local contrasts.
void FillSamples(const TFormat& f, KaipImgInfo& info, std::mt19937& gen)
{
    if (gen() % 2) return;
    const uint32_t level = gen() % uint32_t(f.max + 1), noise = 1 + gen() % 16;
    for (uint32_t y = 0; y < info.Height; ++y)
        for (uint32_t i = 0; i < info.Width * f.step; ++i)
            PutSample(info.pData + y * info.LineIncrement, i, f.bytes,
                      std::min<uint32_t>(level + gen() % noise, uint32_t(f.max)));
}

TEST(ThresholdSharpening, MatchesModelOnRandomImages)
{
    const std::pair<uint32_t, uint32_t> sizes[] = {{1, 1}, {3, 3}, {4, 3}, {8, 2}, {5, 6}, {19, 4}, {70, 3}, {33, 5}};
    uint32_t seed = 7000;
    for (int level : kSimdLevels) {
        ScopedSimdLevel simd(level);
        for (const TFormat& f : kFormats) {
            for (auto [w, h] : sizes) {
                for (uint32_t flags : {0u, KaipImgFlag_BottomUp}) {
                    for (bool withLut : {false, true}) {
                        if (withLut && f.lutDepth == 0) continue;
                        ++seed;
                        SCOPED_TRACE(testing::Message() << "level " << level << " seed " << seed << " format 0x"
                                                        << std::hex << f.code << std::dec << " " << w << "x" << h);
                        std::mt19937 gen(seed);
                        int32_t k[9];
                        ASSERT_EQ(KaipSet3x3MatrixSharpening(int32_t(gen() % 201) - 100, k, gen() % 2), KASTATUS_OK);
                        const int32_t thresholds[] = {
                            -1, 0, int32_t(gen() % 40), int32_t(gen() % uint32_t(f.max)), INT32_MAX, INT32_MIN};
                        const int32_t threshold = thresholds[gen() % 6];
                        std::unique_ptr<RandomLut> lut;
                        if (withLut) lut = std::make_unique<RandomLut>(f.lutDepth, seed);
                        auto src = MakeImage(w, h, f.code, f.bytes * f.step, flags, 2, seed);
                        FillSamples(f, src->info, gen);
                        auto dst = MakeImage(w, h, f.code, f.bytes * f.step, flags, 6, 0);
                        std::vector<uint8_t> expected = Bytes(*dst);
                        Model(f, src->info, expected, dst->info.LineIncrement, k, threshold,
                              lut ? &lut->Tables() : nullptr);
                        const std::vector<uint8_t> before = Bytes(*src);
                        ASSERT_EQ(Kaip3x3ThresholdSharpening(&src->info, &dst->info, k, threshold, 0,
                                                             lut ? lut->Handle() : nullptr),
                                  KASTATUS_OK);
                        ASSERT_EQ(Bytes(*dst), expected) << "threshold " << threshold;
                        ASSERT_EQ(Bytes(*src), before);
                    }
                }
            }
        }
    }
}

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

TEST(ThresholdSharpening, ReallocatesAMisfitDestination)
{
    int32_t k[9];
    KaipSet3x3MatrixSharpening(60, k, KaipSharpening_AllNeighbours);
    auto src = MakeImage(9, 5, KaipPixelFormat_BGR8Packed, 3, 0, 0, 56);
    KaipImgInfo dst{};
    ASSERT_EQ(Kaip3x3ThresholdSharpening(&src->info, &dst, k, 20, KaipOption_ReallocateDst, nullptr), KASTATUS_OK);
    ASSERT_EQ(dst.LineIncrement, 27u);
    std::vector<uint8_t> got(dst.pData, dst.pData + 135), expected = got;
    Model(kFormats[1], src->info, expected, 27, k, 20, nullptr);
    EXPECT_EQ(got, expected);
    EXPECT_EQ(KaipDeallocateImageData(&dst), KASTATUS_OK);
}

TEST(ThresholdSharpening, Refusals)
{
    const int32_t k[9] = {0, 0, 0, 0, 1000, 0, 0, 0, 0};
    RandomLut lut10(10, 5);
    using Call = std::function<KaipStatus(KaipImgInfo & s, KaipImgInfo & d)>;
    auto withFormat = [&](uint32_t format, KaipHLut hLut) -> Call {
        return [=](KaipImgInfo& s, KaipImgInfo& d) {
            s.PixelFormat = d.PixelFormat = format;
            return Kaip3x3ThresholdSharpening(&s, &d, k, 5, 0, hLut);
        };
    };
    const std::tuple<const char*, KaipStatus, Call, const char*> cases[] = {
        {"null destination", KASTATUS_KAIP_INVALID_DST_POINTER,
         [&](KaipImgInfo& s, KaipImgInfo&) { return Kaip3x3ThresholdSharpening(&s, nullptr, k, 5, 0, nullptr); },
         "Kaip3x3ThresholdSharpening: pDstImgInfo is NULL - must be supplied for this function"},
        {"null kernel", KASTATUS_KAIP_INVALID_POINTER,
         [&](KaipImgInfo& s, KaipImgInfo& d) { return Kaip3x3ThresholdSharpening(&s, &d, nullptr, 5, 0, nullptr); },
         "Kaip3x3ThresholdSharpening: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER."},
        {"Bayer8 without a sample range", KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT,
         withFormat(KaipPixelFormat_BayerRG8, nullptr),
         "Kaip3x3ThresholdSharpening: Unsupported source color format 0x01080009"},
        {"RGB8 outside the class mask", KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT,
         withFormat(KaipPixelFormat_RGB8Packed, nullptr),
         "Kaip3x3ThresholdSharpening: Unsupported source color format 0x02180014"},
        {"10-bit LUT on Mono8", KASTATUS_KAIP_INVALID_LUT_TYPE, withFormat(KaipPixelFormat_Mono8, lut10.Handle()),
         "Kaip3x3ThresholdSharpening: KASTATUS_KAIP_INVALID_LUT_TYPE"},
        {"LUT on Mono16", KASTATUS_KAIP_INVALID_LUT_TYPE, withFormat(KaipPixelFormat_Mono16, KaipHLut(1)),
         "Kaip3x3ThresholdSharpening: KASTATUS_KAIP_INVALID_LUT_TYPE"},
        {"orientation", KASTATUS_KAIP_INCOMPATIBLE_FLAGS,
         [&](KaipImgInfo& s, KaipImgInfo& d) {
             d.Flags = KaipImgFlag_BottomUp;
             return Kaip3x3ThresholdSharpening(&s, &d, k, 5, 0, nullptr);
         },
         "Kaip3x3ThresholdSharpening: Src and Dst images differ in flags and KaipOption_ReallocateDst flag is not "
         "present."},
    };
    for (const auto& [what, status, call, line] : cases) {
        SCOPED_TRACE(what);
        auto src = MakeImage(6, 4, KaipPixelFormat_Mono8, 2, 0, 0, 21);
        auto dst = MakeImage(6, 4, KaipPixelFormat_Mono8, 2, 0, 0, 0, 3);
        const std::vector<uint8_t> before = Bytes(*dst);
        LogCapture log;
        EXPECT_EQ(call(src->info, dst->info), status);
        EXPECT_EQ(Bytes(*dst), before);
        const auto lines = log.Lines();
        if (line) {
            // A LUT lookup logs its own line first, the common check detail lines after.
            EXPECT_NE(std::find(lines.begin(), lines.end(), line), lines.end()) << line;
        } else {
            EXPECT_TRUE(lines.empty());
        }
    }
}

}  // namespace
