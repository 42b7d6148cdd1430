// convolution_test.cpp: KaipApply3x3Convolution against a per-pixel model, its refusals, and the sharpening kernel.
#include <functional>

#include "matrix/matrix_test_util.h"
#include "support/log_capture.h"

namespace {

struct TConvFormat {
    uint32_t code;
    unsigned bytes;     // per sample
    unsigned channels;  // filtered samples per pixel
    unsigned step;      // samples per pixel
    int32_t max;
    unsigned lutDepth;  // 0: takes no LUT
    unsigned PixelBytes() const { return bytes * step; }
};

const TConvFormat kFormats[] = {
    {KaipPixelFormat_Mono8, 1, 1, 1, 255, 8},       {KaipPixelFormat_BGR8Packed, 1, 3, 3, 255, 8},
    {KaipPixelFormat_BGRA8Packed, 1, 3, 4, 255, 8}, {KaipPixelFormat_Mono10, 2, 1, 1, 1023, 10},
    {KaipPixelFormat_Mono12, 2, 1, 1, 4095, 12},    {KaipPixelFormat_Mono9, 2, 1, 1, 511, 0},
    {KaipPixelFormat_Mono11, 2, 1, 1, 2047, 0},     {KaipPixelFormat_Mono13, 2, 1, 1, 8191, 0},
    {KaipPixelFormat_Mono15, 2, 1, 1, 32767, 0},    {KaipPixelFormat_Mono16, 2, 1, 1, 65535, 0},
};

// The convolution by its rules: interior pixels only, each channel with the same channel of its
// neighbours, 32-bit sum, division truncating toward zero, clamp, then the LUT table of the byte
// position (colour) or the green table (mono). `out` holds what the destination held before.
void ModelConvolution(const TConvFormat& f, const KaipImgInfo& src, std::vector<uint8_t>& out, uint32_t outIncrement,
                      const int32_t* k, const TModelLut* lut)
{
    for (uint32_t y = 1; y + 1 < src.Height; ++y) {
        for (uint32_t x = 1; x + 1 < src.Width; ++x) {
            for (unsigned ch = 0; ch < f.channels; ++ch) {
                int64_t sum = 0;
                for (int dy = 0; dy < 3; ++dy)
                    for (int dx = 0; dx < 3; ++dx)
                        sum += int64_t(k[3 * dy + dx]) * GetSample(src.pData + (y - 1 + dy) * src.LineIncrement,
                                                                   (x - 1 + dx) * f.step + ch, f.bytes);
                int32_t v = int32_t(uint32_t(uint64_t(sum))) / 1000;
                v = std::min(std::max(v, 0), f.max);
                if (lut) v = int32_t((*lut)[f.channels == 3 ? ch : 1][size_t(v)]);
                PutSample(out.data() + y * outIncrement, x * f.step + ch, f.bytes, uint32_t(v));
            }
        }
    }
}

// A random kernel: cross-shaped (corners 0) or full, moderate weights, now and then a large one.
std::array<int32_t, 9> RandomKernel(std::mt19937& gen, bool cross)
{
    std::array<int32_t, 9> k;
    for (auto& v : k) v = int32_t(gen() % 6001) - 3000;
    if (gen() % 4 == 0) k[4] = int32_t(gen() % 2000001) - 1000000;
    if (cross) k[0] = k[2] = k[6] = k[8] = 0;
    return k;
}

enum class LutMode { None, Object, Global };

TEST(Apply3x3Convolution, MatchesModelOnRandomImages)
{
    const std::pair<uint32_t, uint32_t> sizes[] = {{1, 1}, {3, 3},  {4, 3},  {8, 2},  {2, 5},
                                                   {6, 7}, {19, 4}, {70, 3}, {133, 4}};
    uint32_t seed = 1000;
    for (int level : kSimdLevels) {
        ScopedSimdLevel simd(level);
        for (const TConvFormat& f : kFormats) {
            for (auto [w, h] : sizes) {
                for (uint32_t flags : {0u, KaipImgFlag_BottomUp}) {
                    for (LutMode mode : {LutMode::None, LutMode::Object, LutMode::Global}) {
                        if (f.lutDepth == 0 && mode != LutMode::None) continue;
                        for (bool cross : {false, true}) {
                            ++seed;
                            SCOPED_TRACE(testing::Message()
                                         << "level " << level << " seed " << seed << " format 0x" << std::hex << f.code
                                         << std::dec << " " << w << "x" << h << " flags " << flags << " lut "
                                         << int(mode) << " cross " << cross);
                            std::mt19937 gen(seed);
                            const auto k = RandomKernel(gen, cross);
                            std::unique_ptr<RandomLut> object;
                            std::unique_ptr<RandomGlobalLut> global;
                            KaipHLut hLut = nullptr;
                            const TModelLut* lut = nullptr;
                            if (mode == LutMode::Object) {
                                object = std::make_unique<RandomLut>(f.lutDepth, seed);
                                hLut = object->Handle(), lut = &object->Tables();
                            }
                            if (mode == LutMode::Global) {
                                global = std::make_unique<RandomGlobalLut>(f.lutDepth, seed);
                                hLut = KaipHLut(1), lut = &global->Tables();
                            }
                            auto src = MakeImage(w, h, f.code, f.PixelBytes(), flags, 2, seed);
                            auto dst = MakeImage(w, h, f.code, f.PixelBytes(), flags, 6, 0);
                            std::vector<uint8_t> expected = Bytes(*dst);
                            ModelConvolution(f, src->info, expected, dst->info.LineIncrement, k.data(), lut);
                            const std::vector<uint8_t> srcBefore = Bytes(*src);
                            ASSERT_EQ(KaipApply3x3Convolution(&src->info, &dst->info, k.data(), 0, hLut), KASTATUS_OK);
                            ASSERT_EQ(Bytes(*dst), expected);
                            ASSERT_EQ(Bytes(*src), srcBefore);
                        }
                    }
                }
            }
        }
    }
}

// The vector workers of the 8-bit formats write exactly the baseline's bytes, for plain and threshold
// sharpening: every width (every tail), both line orders, padded lines, with and without a LUT, weights
// of 16 bits (the vector case) and now and then a larger one, and in place (where the baseline's run).
TEST(Apply3x3Convolution, VectorWorkersWriteTheBaselineBytes)
{
    uint32_t seeds = 50000;
    for (const TConvFormat& f : kFormats) {
        if (f.bytes != 1) continue;
        ForEachTwinLine(seeds, [&](uint32_t w, uint32_t flags, uint32_t seed, std::mt19937& gen) {
            const auto k = RandomKernel(gen, gen() % 2 == 0);
            const bool bThreshold = gen() % 2, bLut = gen() % 3 == 0, bInPlace = gen() % 8 == 0;
            const int32_t threshold = int32_t(gen() % 60) - 5;
            SCOPED_TRACE(testing::Message()
                         << "seed " << seed << " format 0x" << std::hex << f.code << std::dec << " width " << w
                         << " flags " << flags << " threshold " << (bThreshold ? threshold : -2) << " lut " << bLut
                         << " in place " << bInPlace);
            RandomLut lut(8, seed);
            const KaipHLut hLut = bLut ? lut.Handle() : nullptr;
            ExpectBaselineBytes([&] { return SourceAndDestination(w, 5, f.code, f.PixelBytes(), flags, seed); },
                                [&](std::vector<std::unique_ptr<GuardedImage>>& images) {
                                    KaipImgInfo* pSrc = &images[0]->info;
                                    KaipImgInfo* pDst = bInPlace ? pSrc : &images[1]->info;
                                    return bThreshold
                                               ? Kaip3x3ThresholdSharpening(pSrc, pDst, k.data(), threshold, 0, hLut)
                                               : KaipApply3x3Convolution(pSrc, pDst, k.data(), 0, hLut);
                                });
        });
    }
}

TEST(Apply3x3Convolution, WorkedValues)
{
    const int32_t identity[9] = {0, 0, 0, 0, 1000, 0, 0, 0, 0};
    const int32_t allNegative[9] = {-1000, -1000, -1000, -1000, -1000, -1000, -1000, -1000, -1000};
    const int32_t allPositive[9] = {1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000};
    auto src = MakeImage(3, 3, KaipPixelFormat_Mono8, 1, 0, 0, 0, 30);
    src->buffer.data()[4] = 200;
    struct Case {
        const int32_t* k;
        uint8_t centre;
    };
    for (const Case& c : {Case{identity, 200}, Case{allNegative, 0}, Case{allPositive, 255}}) {
        auto dst = MakeImage(3, 3, KaipPixelFormat_Mono8, 1, 0, 0, 0, 7);
        ASSERT_EQ(KaipApply3x3Convolution(&src->info, &dst->info, c.k, 0, nullptr), KASTATUS_OK);
        EXPECT_EQ(Bytes(*dst), std::vector<uint8_t>({7, 7, 7, 7, c.centre, 7, 7, 7, 7}));
    }
}

TEST(Apply3x3Convolution, ColourLutFollowsBytePositions)
{
    // Identity kernel: the blue byte (first) comes out through the red table.
    RandomLut lut(8, 3);
    TKaIpLut8* pBody = nullptr;
    ASSERT_EQ(GetLut8(lut.Handle(), pBody), KASTATUS_OK);
    for (int i = 0; i < 256; ++i) pBody->Red[i] = 1, pBody->Green[i] = 2, pBody->Blue[i] = 3;
    const int32_t identity[9] = {0, 0, 0, 0, 1000, 0, 0, 0, 0};
    auto src = MakeImage(3, 3, KaipPixelFormat_BGRA8Packed, 4, 0, 0, 11);
    auto dst = MakeImage(3, 3, KaipPixelFormat_BGRA8Packed, 4, 0, 0, 0, 9);
    ASSERT_EQ(KaipApply3x3Convolution(&src->info, &dst->info, identity, 0, lut.Handle()), KASTATUS_OK);
    std::vector<uint8_t> expected(36, 9);
    expected[16] = 1, expected[17] = 2, expected[18] = 3;
    EXPECT_EQ(Bytes(*dst), expected);
}

TEST(Apply3x3Convolution, ReallocatesAMisfitDestination)
{
    const int32_t k[9] = {0, -500, 0, -500, 3000, -500, 0, -500, 0};
    auto src = MakeImage(9, 5, KaipPixelFormat_Mono12, 2, 0, 0, 55);
    KaipImgInfo dst{};
    ASSERT_EQ(KaipApply3x3Convolution(&src->info, &dst, k, KaipOption_ReallocateDst, nullptr), KASTATUS_OK);
    ASSERT_EQ(dst.LineIncrement, 18u);
    ASSERT_EQ(dst.PixelFormat, KaipPixelFormat_Mono12);
    // The border of a fresh destination is undefined: compare the interior only.
    std::vector<uint8_t> got(dst.pData, dst.pData + 90), expected = got;
    ModelConvolution(kFormats[4], src->info, expected, 18, k, nullptr);
    EXPECT_EQ(got, expected);
    EXPECT_EQ(KaipDeallocateImageData(&dst), KASTATUS_OK);
}

TEST(Apply3x3Convolution, Refusals)
{
    const int32_t k[9] = {0, 0, 0, 0, 1000, 0, 0, 0, 0};
    RandomLut lut8(8, 5);
    using Call = std::function<KaipStatus(KaipImgInfo & s, KaipImgInfo & d)>;
    auto withFormat = [&](uint32_t format, KaipHLut hLut) -> Call {
        return [=](KaipImgInfo& s, KaipImgInfo& d) {
            s.PixelFormat = d.PixelFormat = format;
            return KaipApply3x3Convolution(&s, &d, k, 0, hLut);
        };
    };
    const std::tuple<const char*, KaipStatus, Call> cases[] = {
        {"null source", KASTATUS_KAIP_INVALID_SRC_POINTER,
         [&](KaipImgInfo&, KaipImgInfo& d) { return KaipApply3x3Convolution(nullptr, &d, k, 0, nullptr); }},
        {"null destination", KASTATUS_KAIP_INVALID_DST_POINTER,
         [&](KaipImgInfo& s, KaipImgInfo&) { return KaipApply3x3Convolution(&s, nullptr, k, 0, nullptr); }},
        {"source not initialised", KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED,
         [&](KaipImgInfo& s, KaipImgInfo& d) {
             s.Width = 0;
             return KaipApply3x3Convolution(&s, &d, k, 0, nullptr);
         }},
        {"source without buffer", KASTATUS_KAIP_SRC_NOT_ALLOCATED,
         [&](KaipImgInfo& s, KaipImgInfo& d) {
             s.pData = nullptr;
             return KaipApply3x3Convolution(&s, &d, k, 0, nullptr);
         }},
        {"colour planes", KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED,
         [&](KaipImgInfo& s, KaipImgInfo& d) {
             s.Flags = d.Flags = KaipImgFlag_ColorPlanes;
             s.pDataR = s.pDataG = s.pDataB = s.pData;
             return KaipApply3x3Convolution(&s, &d, k, 0, nullptr);
         }},
        {"BGR565 outside the class mask", KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT,
         withFormat(KaipPixelFormat_BGR565Packed, nullptr)},
        {"RGB8 outside the class mask", KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT,
         withFormat(KaipPixelFormat_RGB8Packed, nullptr)},
        {"Bayer8 without a sample range", KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT,
         withFormat(KaipPixelFormat_BayerRG8, nullptr)},
        {"Mono14 without a sample range", KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT,
         withFormat(KaipPixelFormat_Mono14, nullptr)},
        {"size", KASTATUS_KAIP_INCOMPATIBLE_SIZE,
         [&](KaipImgInfo& s, KaipImgInfo& d) {
             d.Width = 2;
             return KaipApply3x3Convolution(&s, &d, k, 0, nullptr);
         }},
        {"pixel format", KASTATUS_KAIP_INCOMPATIBLE_SRC_DST_PIXEL_FORMAT,
         [&](KaipImgInfo& s, KaipImgInfo& d) {
             d.PixelFormat = KaipPixelFormat_Mono10;
             return KaipApply3x3Convolution(&s, &d, k, 0, nullptr);
         }},
        {"destination without buffer", KASTATUS_KAIP_DST_NOT_ALLOCATED,
         [&](KaipImgInfo& s, KaipImgInfo& d) {
             d.pData = nullptr;
             return KaipApply3x3Convolution(&s, &d, k, 0, nullptr);
         }},
        {"orientation", KASTATUS_KAIP_INCOMPATIBLE_FLAGS,
         [&](KaipImgInfo& s, KaipImgInfo& d) {
             s.Flags = KaipImgFlag_BottomUp;
             return KaipApply3x3Convolution(&s, &d, k, 0, nullptr);
         }},
        {"null kernel", KASTATUS_KAIP_INVALID_POINTER,
         [&](KaipImgInfo& s, KaipImgInfo& d) { return KaipApply3x3Convolution(&s, &d, nullptr, 0, nullptr); }},
        {"8-bit LUT for Mono10", KASTATUS_KAIP_INVALID_LUT_TYPE, withFormat(KaipPixelFormat_Mono10, lut8.Handle())},
        {"global LUT for Mono16", KASTATUS_KAIP_INVALID_LUT_TYPE, withFormat(KaipPixelFormat_Mono16, KaipHLut(1))},
        {"LUT for Mono9", KASTATUS_KAIP_INVALID_LUT_TYPE, withFormat(KaipPixelFormat_Mono9, lut8.Handle())},
        {"rebuilt in colour planes", KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED,
         [&](KaipImgInfo& s, KaipImgInfo&) {
             KaipImgInfo fresh{};
             const KaipStatus status =
                 KaipApply3x3Convolution(&s, &fresh, k, KaipOption_ReallocateDst | KaipImgFlag_ColorPlanes, nullptr);
             KaipDeallocateImageData(&fresh);
             return status;
         }},
    };
    for (const auto& [what, status, call] : cases) {
        SCOPED_TRACE(what);
        // 4 x 3 pixels of up to 2 bytes each in both images, so any format above fits.
        auto src = MakeImage(4, 3, KaipPixelFormat_Mono8, 1, 0, 4, 9);
        auto dst = MakeImage(4, 3, KaipPixelFormat_Mono8, 1, 0, 4, 0);
        const std::vector<uint8_t> srcBefore = Bytes(*src), dstBefore = Bytes(*dst);
        EXPECT_EQ(call(src->info, dst->info), status);
        EXPECT_EQ(Bytes(*src), srcBefore);
        EXPECT_EQ(Bytes(*dst), dstBefore);
    }
}

TEST(Apply3x3Convolution, LogLines)
{
    auto src = MakeImage(3, 3, KaipPixelFormat_Mono16, 2, 0, 0, 3);
    auto dst = MakeImage(3, 3, KaipPixelFormat_Mono16, 2, 0, 0, 0);
    const int32_t k[9] = {0, 0, 0, 0, 1000, 0, 0, 0, 0};
    LogCapture log;
    EXPECT_EQ(KaipApply3x3Convolution(&src->info, &dst->info, nullptr, 0, nullptr), KASTATUS_KAIP_INVALID_POINTER);
    EXPECT_EQ(KaipApply3x3Convolution(&src->info, &dst->info, k, 0, KaipHLut(1)), KASTATUS_KAIP_INVALID_LUT_TYPE);
    src->info.PixelFormat = dst->info.PixelFormat = KaipPixelFormat_Mono14;
    EXPECT_EQ(KaipApply3x3Convolution(&src->info, &dst->info, k, 0, nullptr),
              KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT);
    EXPECT_EQ(KaipSet3x3MatrixSharpening(0, nullptr, 0), KASTATUS_KAIP_INVALID_POINTER);
    EXPECT_EQ(log.Lines(), std::vector<std::string>({
                               "KaipApply3x3Convolution: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.",
                               "KaipApply3x3Convolution: KASTATUS_KAIP_INVALID_LUT_TYPE",
                               "KaipApply3x3Convolution: Unsupported source color format 0x01100025",
                               "KaipSet3x3MatrixSharpening: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.",
                           }));
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
    EXPECT_EQ(KaipSet3x3MatrixSharpening(50, nullptr, 0), KASTATUS_KAIP_INVALID_POINTER);
}

}  // namespace
