// bilinear_test.cpp: bilinear interpolation against the per-pixel reference, and its own refusals.
#include <gtest/gtest.h>

#include "bayer/bayer_model.h"

using namespace bayer_model;

namespace {

struct DstFormat {
    uint32_t code, bytes;
};

TEST(BdBilinearInterpolation, MatchesReferenceForEveryDepthPatternDestinationAndLut)
{
    for (LutKind kind : {LutKind::Identity, LutKind::Global, LutKind::Custom}) {
        const TestLut lut(kind, 1234);
        for (DstFormat f : {DstFormat{KaipPixelFormat_BGR8Packed, 3}, DstFormat{KaipPixelFormat_BGRA8Packed, 4}}) {
            SCOPED_TRACE(std::string(Name(kind)) + " dst bytes " + std::to_string(f.bytes));
            ForEachMosaic(Sizes(), f.bytes, [&](const BayerImage& src) {
                auto dst = Destination(src.m.w, src.m.h, f.code, f.bytes);
                ASSERT_EQ(KaipBdBilinearInterpolation(&src.img->info, &dst->info, f.code, 0, lut.handle), 0);
                const auto want = Expected(*dst, f.bytes, false, [&](uint32_t x, uint32_t y) {
                    return Bilinear(src.m, lut.of(src.m.bits), x, y);
                });
                ASSERT_EQ(FirstDifference(*dst, f.bytes, want), "");
            });
        }
    }
}

TEST(BdBilinearInterpolation, RefusesLutsWithoutBothBayerFlagsAtEveryDepth)
{
    for (uint32_t bits : {8u, 10u, 12u}) {
        for (uint32_t type : {KAIP_LUT_BAYER, KAIP_LUT_BAYER_16, 0u, bits | KAIP_LUT_BAYER}) {
            const KaipHLut h = KaipAllocateLut(type);
            ASSERT_NE(h, nullptr);
            BayerImage src(6, 4, bits, false, false, bits);
            auto dst = Destination(6, 4, KaipPixelFormat_BGR8Packed, 3);
            EXPECT_EQ(KaipBdBilinearInterpolation(&src.img->info, &dst->info, KaipPixelFormat_BGR8Packed, 0, h),
                      KASTATUS_KAIP_INVALID_LUT_TYPE)
                << "bits " << bits << " type " << type;
            EXPECT_EQ(dst->buffer.data()[0], kSentinel);
            KaipFreeLut(h);
        }
    }
}

TEST(BdBilinearInterpolation, ProducesOnlyBlueFirstOrders)
{
    BayerImage src(4, 4, 8, false, false, 1);
    for (uint32_t f : {KaipPixelFormat_RGB8Packed, KaipPixelFormat_RGBA8Packed, KaipPixelFormat_Mono8}) {
        auto dst = Destination(4, 4, f, 4);
        EXPECT_EQ(KaipBdBilinearInterpolation(&src.img->info, &dst->info, f, KaipOption_ReallocateDst, nullptr),
                  KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT);
    }
}

}  // namespace
