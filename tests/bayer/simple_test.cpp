// simple_test.cpp: show mosaic, green to greyscale, nearest neighbour and encode against the reference.
#include <gtest/gtest.h>

#include "bayer/bayer.h"
#include "bayer/bayer_model.h"
#include "core/common.h"

using namespace bayer_model;

namespace {

// Both orders of both pixel sizes: the frame is written blue first whatever the destination's order.
TEST(BdNearestNeighbour, MatchesReferenceForEveryDepthPatternDestinationAndLut)
{
    ExpectMatchesModel(KaipBdNearestNeighbour, Nearest, Sizes(), {kRgb8, kBgr8, kRgba8, kBgra8});
}

TEST(BdGreenToGreyscale, MatchesReferenceForEveryDepthAndPattern)
{
    ForEachMosaic(Sizes(), 5, [&](const BayerImage& src) {
        auto dst = Destination(src.m.w, src.m.h, KaipPixelFormat_Mono8, 1);
        ASSERT_EQ(KaipBdGreenToGreyscale(&src.img->info, &dst->info, KaipPixelFormat_Mono8, 0), 0);
        const auto want = Expected(*dst, 1, false, [&](uint32_t x, uint32_t y) {
            return Px{0, Grey(src.m, x, y), 0, true};
        });
        ASSERT_EQ(FirstDifference(*dst, 1, want), "");
    });
}

TEST(BdShowMosaic, MatchesReferenceIncludingSingleLinesAndColumns)
{
    std::vector<Size> sizes = Sizes();
    sizes.insert(sizes.end(), {{1, 1}, {1, 6}, {9, 1}});
    for (DstFormat f : {kBgr8, kBgra8}) {
        ForEachMosaic(sizes, f.bytes, [&](const BayerImage& src) {
            auto dst = Destination(src.m.w, src.m.h, f.code, f.bytes);
            ASSERT_EQ(KaipBdShowMosaic(&src.img->info, &dst->info, f.code, 0), 0);
            const auto want =
                Expected(*dst, f.bytes, false, [&](uint32_t x, uint32_t y) { return Mosaicked(src.m, x, y); });
            ASSERT_EQ(FirstDifference(*dst, f.bytes, want), "");
        });
    }
}

// A BayerRG8 image of 2x2 into BGR8 and RGB8: every pixel is border, written blue first.
TEST(BdNearestNeighbour, TwoByTwoIsBorderOnlyAndBlueFirst)
{
    GuardedImage src(2, 2, KaipPixelFormat_BayerRG8, 2);
    const uint8_t samples[4] = {10, 20, 30, 40};  // R G / G B
    std::memcpy(src.buffer.data(), samples, 4);
    for (uint32_t f : {KaipPixelFormat_BGR8Packed, KaipPixelFormat_RGB8Packed}) {
        GuardedImage dst(2, 2, f, 6);
        ASSERT_EQ(KaipBdNearestNeighbour(&src.info, &dst.info, f, 0, nullptr), 0);
        const uint8_t want[12] = {40, 20, 10, 40, 20, 10, 40, 30, 10, 40, 30, 10};
        EXPECT_EQ(std::memcmp(dst.buffer.data(), want, 12), 0);
    }
}

TEST(BdGreenToGreyscale, TwelveBitFullScaleGivesWhite)
{
    GuardedImage src(3, 3, KaipPixelFormat_BayerGR12, 6);  // G R G / B G B / G R G
    const uint16_t green[9] = {0, 0, 0, 0, 0x0FFF, 0, 0, 0, 0};
    std::memcpy(src.buffer.data(), green, 18);
    GuardedImage dst(3, 3, KaipPixelFormat_Mono8, 3);
    ASSERT_EQ(KaipBdGreenToGreyscale(&src.info, &dst.info, KaipPixelFormat_Mono8, 0), 0);
    EXPECT_EQ(dst.buffer.data()[4], 255);

    GuardedImage red(3, 3, KaipPixelFormat_BayerRG12, 6);  // centre is blue: B with four greens
    const uint16_t ring[9] = {0, 0x0FFF, 0, 0x0FFF, 0, 0x0FFF, 0, 0x0FFF, 0};
    std::memcpy(red.buffer.data(), ring, 18);
    ASSERT_EQ(KaipBdGreenToGreyscale(&red.info, &dst.info, KaipPixelFormat_Mono8, 0), 0);
    EXPECT_EQ(dst.buffer.data()[4], 255);
}

TEST(BdGreenToGreyscale, ReportsAnotherDestinationAsSourceFormat)
{
    BayerImage src(4, 4, 8, false, false, 5);
    auto dst = Destination(4, 4, KaipPixelFormat_BayerRG8, 1);
    EXPECT_EQ(KaipBdGreenToGreyscale(&src.img->info, &dst->info, KaipPixelFormat_BayerRG8, 0),
              KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT);
    EXPECT_EQ(KaipBdGreenToGreyscale(&src.img->info, &dst->info, KaipPixelFormat_BGR8Packed, 0),
              KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT);
}

TEST(BdEncodeToBayer, RefusesColourSourcesAtTheBayerTestAndBayerSourcesAfterIt)
{
    GuardedImage bgr(4, 4, KaipPixelFormat_BGR8Packed, 12);
    auto dst = Destination(4, 4, KaipPixelFormat_BayerRG8, 1);
    EXPECT_EQ(KaipBdEncodeToBayer(&bgr.info, &dst->info, KaipPixelFormat_BayerRG8, 0),
              KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT);
    BayerImage bayer(4, 4, 8, false, false, 9);
    EXPECT_EQ(KaipBdEncodeToBayer(&bayer.img->info, &dst->info, KaipPixelFormat_BayerRG8, 0),
              KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT);
    EXPECT_EQ(dst->buffer.data()[0], kSentinel);
}

// The encoding worker inverts the mosaic display: shown, then encoded, a mosaic comes back
// with the bits below the top eight cleared.
TEST(BdEncodeToBayer, WorkerInvertsShowMosaic)
{
    ForEachMosaic({{7, 5}}, 9, [&](const BayerImage& src) {
        for (DstFormat f : {kBgr8, kBgra8}) {
            auto shown = Destination(7, 5, f.code, f.bytes);
            ASSERT_EQ(KaipBdShowMosaic(&src.img->info, &shown->info, f.code, 0), 0);
            const uint32_t bits = src.m.bits, bytes = bits == 8 ? 1 : 2;
            GuardedImage back(7, 5, src.img->info.PixelFormat, 7 * bytes);
            EncodeBgrToBayer(shown->info, f.bytes, back.info, bits, src.m.shiftLine, src.m.shiftColumn);
            for (uint32_t i = 0; i < 35; ++i) {
                const uint32_t v =
                    back.buffer.data()[i * bytes] | (bytes == 2 ? back.buffer.data()[i * 2 + 1] << 8 : 0);
                ASSERT_EQ(v, ((src.m.v[i] >> (bits - 8)) & 0xFF) << (bits - 8)) << "sample " << i << " dst " << f.code;
            }
        }
    });
}

}  // namespace
