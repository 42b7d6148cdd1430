// wb_factors_test.cpp: white-balance factors of RGB images and Bayer mosaics, worked values.
#include <gtest/gtest.h>

#include <array>
#include <functional>

#include "bayer/bayer_model.h"
#include "support/log_capture.h"

namespace {

struct Colour {
    uint32_t r, g, b;
};

struct RgbFormat {
    uint32_t code, channelBytes, pixelBytes;
    bool bgr;
};
const RgbFormat kRgbFormats[] = {
    {KaipPixelFormat_RGB8Packed, 1, 3, false},  {KaipPixelFormat_BGR8Packed, 1, 3, true},
    {KaipPixelFormat_RGBA8Packed, 1, 4, false}, {KaipPixelFormat_BGRA8Packed, 1, 4, true},
    {KaipPixelFormat_RGB10Packed, 2, 6, false}, {KaipPixelFormat_BGR10Packed, 2, 6, true},
    {KaipPixelFormat_RGB12Packed, 2, 6, false}, {KaipPixelFormat_BGR12Packed, 2, 6, true},
};

// An RGB image whose pixel i (line by line) has colour(i); alpha bytes and padding random.
std::unique_ptr<GuardedImage> RgbImage(const RgbFormat& f, uint32_t w, uint32_t h,
                                       std::function<Colour(uint32_t)> colour)
{
    auto img = std::make_unique<GuardedImage>(w, h, f.code, w * f.pixelBytes + 2, 0, f.pixelBytes);
    FillRandom(img->buffer.data(), img->buffer.size(), 5);
    for (uint32_t i = 0; i < w * h; ++i) {
        uint8_t* p = img->buffer.data() + (i / w) * img->info.LineIncrement + (i % w) * f.pixelBytes;
        const Colour c = colour(i);
        const uint32_t v[3] = {f.bgr ? c.b : c.r, c.g, f.bgr ? c.r : c.b};
        // Little-endian channels of one or two bytes.
        for (uint32_t k = 0; k < 3 * f.channelBytes; ++k)
            p[k] = uint8_t(v[k / f.channelBytes] >> (8 * (k % f.channelBytes)));
    }
    return img;
}

std::unique_ptr<GuardedImage> Uniform(const RgbFormat& f, Colour c)
{
    return RgbImage(f, 13, 7, [c](uint32_t) { return c; });
}

using Factors = std::array<uint32_t, 3>;  // red, green, blue

Factors Measure(const KaipImgInfo* img, uint32_t options, Factors in = {1000, 1000, 1000})
{
    Factors f = in;
    EXPECT_EQ(KaipCalcWbFactors(img, &f[0], &f[1], &f[2], options), 0);
    return f;
}

TEST(CalcWbFactors, WorkedValuesOnEveryRgbFormat)
{
    for (const RgbFormat& f : kRgbFormats) {
        SCOPED_TRACE(f.code);
        EXPECT_EQ(Measure(&Uniform(f, {128, 128, 128})->info, 0), (Factors{1000, 1000, 1000}));
        EXPECT_EQ(Measure(&Uniform(f, {100, 200, 50})->info, 0), (Factors{2000, 1000, 4000}));
        EXPECT_EQ(Measure(&Uniform(f, {100, 200, 50})->info, KaipWbOption_NoNormalize), (Factors{2000, 1000, 4000}));
        EXPECT_EQ(Measure(&Uniform(f, {200, 100, 100})->info, 0), (Factors{1000, 2000, 2000}));
        EXPECT_EQ(Measure(&Uniform(f, {200, 100, 100})->info, KaipWbOption_NoNormalize), (Factors{500, 1000, 1000}));
        // Truncated, not rounded: 200 / 120 = 1.666...
        EXPECT_EQ(Measure(&Uniform(f, {120, 200, 200})->info, 0), (Factors{1666, 1000, 1000}));
    }
}

TEST(CalcWbFactors, SaturatedPixelsAreLeftOutUnlessTooFewRemain)
{
    const RgbFormat& bgr8 = kRgbFormats[1];
    EXPECT_EQ(Measure(&Uniform(bgr8, {255, 255, 255})->info, 0), (Factors{1000, 1000, 1000}));
    // A quarter unsaturated: too few, so every pixel counts.
    auto mostlySaturated = RgbImage(bgr8, 8, 8, [](uint32_t i) {
        return i % 4 == 0 ? Colour{100, 200, 50} : Colour{250, 255, 255};
    });
    const float avgR = (3 * 250 + 100) / 4.0f, avgG = (3 * 255 + 200) / 4.0f, avgB = (3 * 255 + 50) / 4.0f;
    EXPECT_EQ(Measure(&mostlySaturated->info, 0),
              (Factors{uint32_t(avgG / avgR * 1000.0f), 1000, uint32_t(avgG / avgB * 1000.0f)}));
    // Half unsaturated is enough; the limit is 249, 999 and 3999 by depth.
    for (uint32_t limit : {249u, 999u, 3999u}) {
        const RgbFormat& f = limit == 249 ? bgr8 : limit == 999 ? kRgbFormats[4] : kRgbFormats[7];
        auto half = RgbImage(f, 8, 8, [limit](uint32_t i) {
            return i % 2 ? Colour{100, 200, 50} : Colour{limit, limit + 1, limit};
        });
        EXPECT_EQ(Measure(&half->info, 0), (Factors{2000, 1000, 4000})) << limit;
        EXPECT_EQ(Measure(&Uniform(f, {limit, limit, limit})->info, 0), (Factors{1000, 1000, 1000})) << limit;
    }
}

TEST(CalcWbFactors, RefinesTheCallersFactorsOnRgbImages)
{
    auto img = Uniform(kRgbFormats[0], {100, 200, 50});
    EXPECT_EQ(Measure(&img->info, KaipWbOption_Refine, {1500, 1000, 500}), (Factors{3000, 1000, 2000}));
    EXPECT_EQ(Measure(&img->info, KaipWbOption_Refine, {1500, 2000, 500}), (Factors{1500, 1000, 1000}));
    // Option 1 refines too on RGB images, but does not normalise.
    auto warm = Uniform(kRgbFormats[0], {200, 100, 100});
    EXPECT_EQ(Measure(&warm->info, KaipWbOption_NoNormalize, {7, 7, 7}), (Factors{3, 7, 7}));
    // Null outputs are neither read nor written.
    uint32_t red = 1000;
    EXPECT_EQ(KaipCalcWbFactors(&img->info, &red, nullptr, nullptr, KaipWbOption_Refine), 0);
    EXPECT_EQ(red, 2000u);
}

TEST(CalcWbFactors, AFactorBelowOneThousandthResetsAll)
{
    auto img = RgbImage(kRgbFormats[1], 40, 25, [](uint32_t i) { return Colour{249, i == 0 ? 1u : 0u, 249}; });
    EXPECT_EQ(Measure(&img->info, KaipWbOption_NoNormalize), (Factors{1000, 1000, 1000}));
}

// Grey is neither path; a Bayer depth without a measure is refused (the common refusals are in tests/hostile).
TEST(CalcWbFactors, StatusesOfBothPaths)
{
    uint32_t r = 0, g = 0, b = 0;
    GuardedImage mono(4, 4, KaipPixelFormat_Mono8, 4), bayer16(4, 4, KaipPixelFormat_BayerRG16, 8);
    EXPECT_EQ(KaipCalcWbFactors(&mono.info, &r, &g, &b, 0), KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT);
    EXPECT_EQ(KaipCalcWbFactors(&bayer16.info, &r, &g, &b, 0), KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT);
    EXPECT_EQ(r + g + b, 0u);
}

// A mosaic whose red, green and blue sites hold fixed values.
std::unique_ptr<GuardedImage> BayerSites(uint32_t bits, uint32_t pattern, uint32_t w, uint32_t h, Colour c)
{
    using namespace bayer_model;
    BayerImage mosaic(w, h, bits, pattern & 2, pattern & 1, 1);
    for (uint32_t y = 0; y < h; ++y)
        for (uint32_t x = 0; x < w; ++x) {
            const auto s = mosaic.m.site(x, y);
            mosaic.Set(x, y, s == R ? c.r : s == G ? c.g : c.b);
        }
    return std::move(mosaic.img);
}

TEST(KAIP_BdCalcWbFactors, WorkedValuesForEveryDepthAndPattern)
{
    for (uint32_t bits : {8u, 10u, 12u}) {
        for (uint32_t pattern = 0; pattern < 4; ++pattern) {
            SCOPED_TRACE("bits " + std::to_string(bits) + " pattern " + std::to_string(pattern));
            EXPECT_EQ(Measure(&BayerSites(bits, pattern, 8, 8, {100, 200, 50})->info, 0), (Factors{2000, 1000, 4000}));
            // The Bayer path ignores the factors passed in.
            EXPECT_EQ(
                Measure(&BayerSites(bits, pattern, 8, 6, {200, 100, 100})->info, KaipWbOption_NoNormalize, {7, 7, 7}),
                (Factors{500, 1000, 1000}));
            EXPECT_EQ(Measure(&BayerSites(bits, pattern, 8, 6, {200, 100, 100})->info, KaipWbOption_Refine, {7, 7, 7}),
                      (Factors{1000, 2000, 2000}));
        }
    }
}

TEST(KAIP_BdCalcWbFactors, SaturatedMosaicsAreMeasuredOneBytePerSite)
{
    EXPECT_EQ(Measure(&BayerSites(8, 1, 6, 4, {255, 255, 255})->info, 0), (Factors{1000, 1000, 1000}));
    // 10-bit full scale: every site saturated, so the second pass reads the bytes FF 03 FF 03 ...
    // of the first half of each line as sites: red 255, green (3 + 255) / 2, blue 3.
    LogCapture log;
    const float avgR = 255.0f, avgG = 129.0f, avgB = 3.0f;
    float r = avgG / avgR, g = 1.0f, b = avgG / avgB;
    const float m = r;
    r /= m, g /= m, b /= m;
    EXPECT_EQ(Measure(&BayerSites(10, 0, 8, 2, {1023, 1023, 1023})->info, 0),
              (Factors{uint32_t(r * 1000.0f), uint32_t(g * 1000.0f), uint32_t(b * 1000.0f)}));
    EXPECT_EQ(log.Lines().back(), "dwCountR=4, dwCountG=8, dwCountB=4");
}

TEST(KAIP_BdCalcWbFactors, OneLineYieldsNothingInTheFirstPass)
{
    // A single line has no first pass; the byte pass counts its red and green sites only, so
    // blue has no count and the outputs stay as they were.
    Factors f{1, 2, 3};
    EXPECT_EQ(KaipCalcWbFactors(&BayerSites(8, 1, 8, 1, {100, 200, 50})->info, &f[0], &f[1], &f[2], 0), 0);
    EXPECT_EQ(f, (Factors{1, 2, 3}));
}

}  // namespace
