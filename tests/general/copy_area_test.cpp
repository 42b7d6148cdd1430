// copy_area_test.cpp: KaipCopyArea against clipping and copying by rows.
#include <gtest/gtest.h>

#include "general/geometry_test_util.h"

using namespace geotest;

namespace {

struct TRect {
    int64_t x0, y0, w, h;  // clipped; w or h below 1 when empty
};

TRect Clip(const KaipImgInfo& src, int32_t x, int32_t y, int32_t w, int32_t h)
{
    const int64_t x0 = std::max<int64_t>(x, 0), y0 = std::max<int64_t>(y, 0);
    return {x0, y0, std::min<int64_t>(int64_t(x) + w, src.Width) - x0,
            std::min<int64_t>(int64_t(y) + h, src.Height) - y0};
}

// Rows of the rectangle in memory order; a bottom-up source has the top of its picture last.
std::vector<uint8_t> Model(const KaipImgInfo& src, const KaipImgInfo& dst, const TRect& r)
{
    const std::vector<uint8_t> in = Bytes(src);
    std::vector<uint8_t> out = Bytes(dst);
    const uint32_t p = GetPixelIncrementFromPixelFormat(src.PixelFormat);
    const int64_t first = (src.Flags & KaipImgFlag_BottomUp) ? src.Height - r.y0 - r.h : r.y0;
    for (int64_t j = 0; j < r.h; ++j)
        std::memcpy(&out[j * dst.LineIncrement], &in[(first + j) * src.LineIncrement + r.x0 * p], r.w * p);
    return out;
}

TEST(CopyArea, MatchesModel)
{
    std::mt19937 gen(300);
    uint32_t seed = 300;
    for (const TFormat& f : FormatsOf(0x3F00007FFFull))
        for (uint32_t flags : {0u, KaipImgFlag_BottomUp})
            for (int i = 0; i < 40; ++i) {
                ++seed;
                const uint32_t w = 1 + gen() % 20, h = 1 + gen() % 9;
                const int32_t x = int32_t(gen() % (w + 6)) - 3, y = int32_t(gen() % (h + 6)) - 3;
                const int32_t rw = int32_t(gen() % (w + 6)), rh = int32_t(gen() % (h + 6));
                SCOPED_TRACE(testing::Message()
                             << "format 0x" << std::hex << f.dwCode << std::dec << " " << w << "x" << h << " rect " << x
                             << "," << y << " " << rw << "x" << rh << " seed " << seed);
                auto src = RandomImage(w, h, f, seed % 4, flags, seed);
                const auto srcBefore = Bytes(src->info);
                const TRect r = Clip(src->info, x, y, rw, rh);
                if (r.w < 1 || r.h < 1) {
                    auto dst = RandomImage(1, 1, f, 0, flags, ~seed);
                    ASSERT_EQ(KaipCopyArea(&src->info, &dst->info, x, y, rw, rh, KaipOption_ReallocateDst),
                              KASTATUS_KAIP_DST_RECT_OUTSIDE_SRC);
                    continue;
                }
                auto dst = RandomImage(uint32_t(r.w), uint32_t(r.h), f, seed % 3, flags, ~seed);
                const auto expected = Model(src->info, dst->info, r);
                ASSERT_EQ(KaipCopyArea(&src->info, &dst->info, x, y, rw, rh, 0), 0);
                ASSERT_EQ(Bytes(dst->info), expected);
                ASSERT_EQ(Bytes(src->info), srcBefore);
            }
}

TEST(CopyArea, WorkedValues)
{
    const TFormat mono8{KaipPixelFormat_Mono8, 1};
    // A negative offset is clipped: columns 0..9 of a 100-pixel line, into a rebuilt destination.
    auto src = RandomImage(100, 4, mono8, 0, 0, 1);
    KaipImgInfo dst{};
    ASSERT_EQ(KaipCopyArea(&src->info, &dst, -10, 1, 20, 2, KaipOption_ReallocateDst), 0);
    EXPECT_EQ(dst.Width, 10u);
    EXPECT_EQ(dst.Height, 2u);
    EXPECT_EQ(0, std::memcmp(dst.pData, src->info.pData + 100, 10));
    EXPECT_EQ(0, std::memcmp(dst.pData + 10, src->info.pData + 200, 10));
    KaipDeallocateImageData(&dst);

    // On a bottom-up source iYOffset 0 is the last line in memory.
    auto up = RandomImage(5, 3, mono8, 0, KaipImgFlag_BottomUp, 2);
    auto one = RandomImage(5, 1, mono8, 0, KaipImgFlag_BottomUp, 3);
    ASSERT_EQ(KaipCopyArea(&up->info, &one->info, 0, 0, 5, 1, 0), 0);
    EXPECT_EQ(0, std::memcmp(one->info.pData, up->info.pData + 10, 5));

    // A larger destination is rebuilt to the clipped size, keeping the option's flags.
    auto large = RandomImage(10, 6, mono8, 0, 0, 5);
    KaipImgInfo& info = large->info;
    info.Flags |= KaipImgFlag_NoDeallocate;
    ASSERT_EQ(KaipCopyArea(&src->info, &info, 1, 1, 3, 2, KaipOption_ReallocateDst | KaipImgFlag_Align4), 0);
    EXPECT_EQ(info.Width, 3u);
    EXPECT_EQ(info.LineIncrement, 4u);
    EXPECT_EQ(info.Flags, KaipImgFlag_Align4 | KaipImgFlag_DataAllocated);
    KaipDeallocateImageData(&info);
}

// Rectangles outside the source (the random ones of the model test meet every side and the empty ones), sums
// beyond 32 bits, a clipped size other than the destination's without the option, and the formats.
TEST(CopyArea, Refusals)
{
    const TFormat mono8{KaipPixelFormat_Mono8, 1}, mono16{KaipPixelFormat_Mono16, 2};
    using I = KaipImgInfo*;
    auto copy = [](int32_t x, int32_t y, int32_t w, int32_t h) {
        return [=](I s, I d) { return KaipCopyArea(s, d, x, y, w, h, 0); };
    };
    const KaipStatus outside = KASTATUS_KAIP_DST_RECT_OUTSIDE_SRC;
    // clang-format off
    ExpectRefusals({
        {"outside", mono8, mono8, false, 0, copy(12, -3, 4, 5), outside,
         "KaipCopyArea: the specified rect is outside the bitmap: iYOffset=-3, iXOffset=12, iDstWidth=4, "
         "iDstHeight=5"},
        {"sum beyond 32 bits", mono8, mono8, false, 0, copy(INT32_MAX, 0, INT32_MAX, 3), outside},
        {"sum below 32 bits", mono8, mono8, false, 0, copy(INT32_MIN, 0, -1, 3), outside},
        {"clipped size", mono8, mono8, false, 0, copy(2, 0, 4, 3), KASTATUS_KAIP_INCOMPATIBLE_DST,
         "KaipCopyArea: the destination bitmap has incompatible info and KaipOption_ReallocateDst is not set."},
        {"other format", mono8, mono16, false, 0, copy(0, 0, 4, 3), KASTATUS_KAIP_INCOMPATIBLE_SRC_DST_PIXEL_FORMAT},
        {"packed", {KaipPixelFormat_Mono12Packed, 2}, mono16, false, 0, copy(0, 0, 4, 3),
         KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT},
    });
    // clang-format on
}

}  // namespace
