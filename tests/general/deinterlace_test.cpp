// deinterlace_test.cpp: KaipDeinterlace against the per-format averaging rules.
#include <gtest/gtest.h>

#include "general/geometry_test_util.h"

using namespace geotest;

namespace {

// Each colour field averaged and rounded down; bits outside the fields come out 0.
uint16_t AverageFields(uint16_t a, uint16_t b, bool b565)
{
    const unsigned shifts[3] = {0, 5, b565 ? 11u : 10u}, widths[3] = {5, b565 ? 6u : 5u, 5};
    unsigned r = 0;
    for (int i = 0; i < 3; ++i) {
        const unsigned m = (1u << widths[i]) - 1;
        r |= ((((a >> shifts[i]) & m) + ((b >> shifts[i]) & m)) / 2) << shifts[i];
    }
    return uint16_t(r);
}

// Lines 0 .. H-2 of out from lines y and y+1 of in; the last line is left as it was.
std::vector<uint8_t> Model(const KaipImgInfo& src, const KaipImgInfo& dst, std::vector<uint8_t> out)
{
    const std::vector<uint8_t> in = Bytes(src);
    const bool fields = src.PixelFormat == KaipPixelFormat_BGR555 || src.PixelFormat == KaipPixelFormat_BGR565Packed;
    for (uint32_t y = 0; y + 1 < src.Height; ++y) {
        const uint8_t* a = &in[size_t(y) * src.LineIncrement];
        const uint8_t* b = a + src.LineIncrement;
        uint8_t* d = &out[size_t(y) * dst.LineIncrement];
        if (fields) {
            for (uint32_t x = 0; x < src.Width; ++x) {
                const uint16_t v = AverageFields(a[2 * x] | a[2 * x + 1] << 8, b[2 * x] | b[2 * x + 1] << 8,
                                                 src.PixelFormat == KaipPixelFormat_BGR565Packed);
                d[2 * x] = uint8_t(v);
                d[2 * x + 1] = uint8_t(v >> 8);
            }
        } else {
            for (uint32_t i = 0; i < std::min(src.LineIncrement, dst.LineIncrement); ++i)
                d[i] = uint8_t((a[i] + b[i]) / 2);
        }
    }
    return out;
}

TEST(Deinterlace, MatchesModel)
{
    uint32_t seed = 200;
    for (const TFormat& f : FormatsOf(0x1E01))
        for (uint32_t w : {1u, 2u, 5u, 16u, 37u})
            for (uint32_t h : {1u, 2u, 3u, 6u}) {
                ++seed;
                const uint32_t flags = (seed & 1) ? KaipImgFlag_BottomUp : 0;
                SCOPED_TRACE(testing::Message() << "format 0x" << std::hex << f.dwCode << std::dec << " " << w << "x"
                                                << h << " seed " << seed);
                auto src = RandomImage(w, h, f, seed % 4, flags, seed);
                auto dst = RandomImage(w, h, f, seed % 3, flags, ~seed);
                const auto srcBefore = Bytes(src->info);
                const auto expected = Model(src->info, dst->info, Bytes(dst->info));
                ASSERT_EQ(KaipDeinterlace(&src->info, &dst->info, 0), 0);
                ASSERT_EQ(Bytes(dst->info), expected);
                ASSERT_EQ(Bytes(src->info), srcBefore);

                const auto inPlace = Model(src->info, src->info, srcBefore);
                ASSERT_EQ(KaipDeinterlace(&src->info, nullptr, 0), 0);
                ASSERT_EQ(Bytes(src->info), inPlace);
            }
}

TEST(Deinterlace, WorkedValues)
{
    GuardedImage mono(1, 2, KaipPixelFormat_Mono8, 1);
    mono.info.pData[0] = 10, mono.info.pData[1] = 21;
    ASSERT_EQ(KaipDeinterlace(&mono.info, nullptr, 0), 0);
    EXPECT_EQ(mono.info.pData[0], 15);
    EXPECT_EQ(mono.info.pData[1], 21);

    GuardedImage bgr555(2, 2, KaipPixelFormat_BGR555, 4);
    const uint16_t pixels[4] = {0x0421, 0x0421, 0x0C63, 0x0842};  // fields 1,1,1 / 3,3,3 and 1 / 2
    std::memcpy(bgr555.info.pData, pixels, 8);
    ASSERT_EQ(KaipDeinterlace(&bgr555.info, nullptr, 0), 0);
    uint16_t out[2];
    std::memcpy(out, bgr555.info.pData, 4);
    EXPECT_EQ(out[0], 0x0842);
    EXPECT_EQ(out[1], 0x0421);
}

// In place a line may hold at most 8192 bytes; a destination has no limit.
TEST(Deinterlace, Refusals)
{
    const TFormat mono8{KaipPixelFormat_Mono8, 1};
    auto inPlace = [](KaipImgInfo* s, KaipImgInfo*) { return KaipDeinterlace(s, nullptr, 0); };
    ExpectRefusals({
        {"line too long in place", mono8, mono8, false, 0, inPlace, KASTATUS_KAIP_LINE_INCREMENT_TOO_BIG,
         "KaipDeinterlace: line increment too big: 8193", 8192},
        {"Mono10", {KaipPixelFormat_Mono10, 2}, mono8, false, 0, inPlace, KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT},
        {"RGB8", {KaipPixelFormat_RGB8Packed, 3}, mono8, false, 0, inPlace, KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT},
    });
    auto wide = RandomImage(8193, 3, mono8, 0, 0, 1), wideDst = RandomImage(8193, 3, mono8, 0, 0, 2);
    EXPECT_EQ(KaipDeinterlace(&wide->info, &wideDst->info, 0), 0);
    auto limit = RandomImage(8000, 2, mono8, 192, 0, 3);
    EXPECT_EQ(KaipDeinterlace(&limit->info, nullptr, 0), 0);
}

}  // namespace
