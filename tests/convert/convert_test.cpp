// convert_test.cpp: which pairs convert, the refusals of the dispatcher, worked values, bitmap compatibility.
#include "convert/convert.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <vector>

#include "formats.h"
#include "pm.imgproc.h"
#include "support/guarded.h"

namespace {

using FormatSet = std::set<uint32_t>;

const FormatSet kMonoDst = {KaipPixelFormat_Mono8,  KaipPixelFormat_Mono9,  KaipPixelFormat_Mono10,
                            KaipPixelFormat_Mono11, KaipPixelFormat_Mono12, KaipPixelFormat_Mono13,
                            KaipPixelFormat_Mono14, KaipPixelFormat_Mono15, KaipPixelFormat_Mono16};
const FormatSet kColour8 = {KaipPixelFormat_BGR8Packed, KaipPixelFormat_BGRA8Packed, KaipPixelFormat_RGB8Packed,
                            KaipPixelFormat_RGBA8Packed};
const FormatSet kShort = {KaipPixelFormat_BGR555, KaipPixelFormat_BGR565Packed};
const FormatSet kDeep = {KaipPixelFormat_BGR10Packed, KaipPixelFormat_RGB10Packed, KaipPixelFormat_BGR12Packed,
                         KaipPixelFormat_RGB12Packed, KaipPixelFormat_BGR16,       KaipPixelFormat_RGB16Packed};

FormatSet Union(std::initializer_list<FormatSet> sets)
{
    FormatSet all;
    for (const FormatSet& s : sets) all.insert(s.begin(), s.end());
    return all;
}

// The allowed destinations of each source, group by group.
FormatSet Allowed(uint32_t src)
{
    const FormatSet mono8bitColour = Union({kMonoDst, kColour8});
    FormatSet sources[] = {
        Union({kMonoDst, kColour8}),  // Mono8 .. Mono16 and the 24/32-bit colour formats
        {KaipPixelFormat_BayerGR8, KaipPixelFormat_BayerRG8, KaipPixelFormat_BayerGB8, KaipPixelFormat_BayerBG8,
         KaipPixelFormat_BayerGR10, KaipPixelFormat_BayerRG10, KaipPixelFormat_BayerGB10, KaipPixelFormat_BayerBG10,
         KaipPixelFormat_BayerGR12, KaipPixelFormat_BayerRG12, KaipPixelFormat_BayerGB12, KaipPixelFormat_BayerBG12},
        {KaipPixelFormat_Mono10Packed, KaipPixelFormat_Mono12Packed},
        {KaipPixelFormat_Mono10Mipi, KaipPixelFormat_Mono12Mipi},
        kShort,
        kDeep,
        {KaipPixelFormat_YUV411Packed, KaipPixelFormat_YCbCr411_8_CbYYCrYY, KaipPixelFormat_YCbCr411_8,
         KaipPixelFormat_YUV422Packed, KaipPixelFormat_YUV422_YUYV_Packed, KaipPixelFormat_YUV444Packed,
         KaipPixelFormat_YCbCr8, KaipPixelFormat_YCbCr8_CbYCr, KaipPixelFormat_YCbCr422_8,
         KaipPixelFormat_YCbCr422_8_CbYCrY, KaipPixelFormat_YCbCr601_422_8, KaipPixelFormat_YCbCr601_422_8_CbYCrY,
         KaipPixelFormat_YCbCr709_422_8, KaipPixelFormat_YCbCr709_422_8_CbYCrY, KaipPixelFormat_YCbCr601_8_CbYCr,
         KaipPixelFormat_YCbCr709_8_CbYCr},
    };
    const FormatSet destinations[] = {
        Union({kMonoDst, kShort, kColour8, kDeep}),
        Union({{KaipPixelFormat_Mono8}, kColour8}),
        Union({{KaipPixelFormat_Mono8, KaipPixelFormat_Mono10, KaipPixelFormat_Mono12, KaipPixelFormat_Mono16},
               kColour8}),
        {KaipPixelFormat_Mono8, KaipPixelFormat_Mono10, KaipPixelFormat_Mono12, KaipPixelFormat_Mono16},
        Union({kMonoDst, kShort, kColour8}),
        Union({mono8bitColour, kDeep}),
        mono8bitColour,
    };
    for (size_t i = 0; i < std::size(sources); ++i)
        if (sources[i].count(src)) return destinations[i];
    return {};
}

TEST(CanConvert, EveryPairOfKnownFormatsAnswersAsTabled)
{
    for (const TFormatName& s : kKnownFormats)
        for (const TFormatName& d : kKnownFormats)
            EXPECT_EQ(KaipCanConvertToPixelFormat(s.code, d.code), int(Allowed(s.code).count(d.code)))
                << s.name << " -> " << d.name;
    EXPECT_EQ(KaipCanConvertToPixelFormat(0, KaipPixelFormat_Mono8), 0);
    EXPECT_EQ(KaipCanConvertToPixelFormat(KaipPixelFormat_Mono8, 0x12345678), 0);
}

// ---------------------------------------------------------------- refusals: status, and nothing written

TEST(ConvertRefusals, DispatcherRefusalsWriteNothing)
{
    const struct {
        uint32_t srcFormat, dstFormat, options;
        int32_t status;
    } cases[] = {
        {KaipPixelFormat_BayerGR16, KaipPixelFormat_Mono8, 0, KASTATUS_KAIP_NOT_SUPPORTED},
        {KaipPixelFormat_BayerGR12, KaipPixelFormat_Mono16, KaipOption_ReallocateDst, KASTATUS_KAIP_NOT_SUPPORTED},
        {KaipPixelFormat_BGR555, KaipPixelFormat_RGB10Packed, KaipOption_ReallocateDst, KASTATUS_KAIP_NOT_SUPPORTED},
        {KaipPixelFormat_Mono8, KaipPixelFormat_Mono10Packed, KaipOption_ReallocateDst,
         KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT},
        {KaipPixelFormat_Mono8, KaipPixelFormat_YUV422Packed, 0, KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT},
        {KaipPixelFormat_BayerGR10Mipi, KaipPixelFormat_Mono8, 0, KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT},
        {KaipPixelFormat_Mono8, KaipPixelFormat_Mono16, 0, KASTATUS_KAIP_INCOMPATIBLE_DST},  // format misfit
    };
    for (const auto& r : cases) {
        GuardedImage src(4, 2, r.srcFormat, 16);
        FillRandom(src.buffer.data(), src.buffer.size(), 5);
        // A destination that fits a Mono8 request; other requests misfit by format.
        GuardedImage dst(4, 2, KaipPixelFormat_Mono8, 8);
        FillRandom(dst.buffer.data(), dst.buffer.size(), 6);
        const std::vector<uint8_t> before(dst.buffer.data(), dst.buffer.data() + dst.buffer.size());
        EXPECT_EQ(KaipConvertToPixelFormat(&src.info, &dst.info, r.dstFormat, r.options), r.status)
            << FormatName(r.srcFormat) << " -> " << FormatName(r.dstFormat);
        EXPECT_EQ(0, std::memcmp(before.data(), dst.buffer.data(), before.size()));
        EXPECT_EQ(dst.info.pData, dst.buffer.data());
    }
}

TEST(ConvertRefusals, BufferGuardRefusesAShortLineIncrement)
{
    GuardedImage src(4, 2, KaipPixelFormat_RGB8Packed, 12);
    GuardedImage dst(4, 2, KaipPixelFormat_BGR8Packed, 11);
    FillRandom(dst.buffer.data(), dst.buffer.size(), 9);
    const std::vector<uint8_t> before(dst.buffer.data(), dst.buffer.data() + dst.buffer.size());
    EXPECT_EQ(KaipConvertToPixelFormat(&src.info, &dst.info, KaipPixelFormat_BGR8Packed, KaipOption_ReallocateDst),
              KASTATUS_KAIP_INCOMPATIBLE_SIZE);
    EXPECT_EQ(0, std::memcmp(before.data(), dst.buffer.data(), before.size()));
}

// ---------------------------------------------------------------- worked values

// Worked values that pin the rules down independently of the per-pixel model of convert_lines_test.cpp:
// one line of bytes converted into a destination pre-filled with 0xAA.
TEST(ConvertValues, OneLine)
{
    using Bytes = std::vector<uint8_t>;
    const struct {
        uint32_t src;
        Bytes in;
        uint32_t width, dst;
        Bytes out;
    } cases[] = {
        // The grey weights add up to 255, so white gives 254.
        {KaipPixelFormat_RGB8Packed, {255, 255, 255, 0, 0, 0}, 2, KaipPixelFormat_Mono8, {254, 0}},
        // Grey to 15/16-bit colour fills every bit.
        {KaipPixelFormat_Mono8, {255}, 1, KaipPixelFormat_BGR565Packed, {0xFF, 0xFF}},
        {KaipPixelFormat_Mono8, {255}, 1, KaipPixelFormat_BGR555, {0xFF, 0x7F}},
        // Words are masked to their used bits before reduction.
        {KaipPixelFormat_Mono12, {0xFF, 0x0F, 0xFF, 0xFF}, 2, KaipPixelFormat_Mono8, {0xFF, 0xFF}},
        {KaipPixelFormat_YUV444Packed,
         {128, 16, 128, 128, 235, 128},
         2,
         KaipPixelFormat_RGB8Packed,
         {0, 0, 0, 255, 255, 255}},
        {KaipPixelFormat_YCbCr8, {255, 128, 128, 0, 128, 128}, 2, KaipPixelFormat_BGR8Packed, {255, 255, 255, 0, 0, 0}},
        // YUV422Packed to grey copies bytes 1 and 3 of each four.
        {KaipPixelFormat_YUV422Packed, {1, 2, 3, 4}, 2, KaipPixelFormat_Mono8, {2, 4}},
        // U = 128 then V = 255: the first two pixels still use V = 128 (grey 16 -> black), the next two the new V.
        {KaipPixelFormat_YUV411Packed,
         {128, 16, 16, 255, 16, 16},
         4,
         KaipPixelFormat_RGB8Packed,
         {0, 0, 0, 0, 0, 0, 203, 0, 0, 203, 0, 0}},
        {KaipPixelFormat_BayerRG8, {10, 20}, 2, KaipPixelFormat_RGB8Packed, {10, 10, 10, 20, 20, 20}},
        // Mono12Packed, three pixels: 0xAB1, 0xCD2 in the first group, 0xEF? cut short.
        {KaipPixelFormat_Mono12Packed, {0xAB, 0x21, 0xCD, 0xEF, 0, 0}, 3, KaipPixelFormat_Mono8, {0xAB, 0xCD, 0xEF}},
        {KaipPixelFormat_Mono12Packed,
         {0xAB, 0x21, 0xCD, 0xEF, 0, 0},
         3,
         KaipPixelFormat_Mono16,
         {0x10, 0xAB, 0x20, 0xCD, 0xAA, 0xAA}},
        // The fourth byte is written 0, except by reordering from red-first 24/32-bit pixels.
        {KaipPixelFormat_Mono8, {7}, 1, KaipPixelFormat_BGRA8Packed, {7, 7, 7, 0}},
        {KaipPixelFormat_RGB8Packed, {1, 2, 3}, 1, KaipPixelFormat_BGRA8Packed, {3, 2, 1, 0xAA}},
        {KaipPixelFormat_RGBA8Packed, {1, 2, 3, 4}, 1, KaipPixelFormat_BGRA8Packed, {3, 2, 1, 0xAA}},
    };
    for (auto c : cases) {
        KaipImgInfo src{}, dst{};
        src.Width = dst.Width = c.width, src.Height = dst.Height = 1, src.PixelFormat = c.src, dst.PixelFormat = c.dst;
        src.LineIncrement = uint32_t(c.in.size()), src.pData = c.in.data();
        Bytes out(c.out.size(), 0xAA);
        dst.LineIncrement = uint32_t(out.size()), dst.pData = out.data();
        EXPECT_EQ(KaipConvertToPixelFormat(&src, &dst, c.dst, 0), 0);
        EXPECT_EQ(out, c.out) << FormatName(c.src) << " -> " << FormatName(c.dst);
    }
}

// ---------------------------------------------------------------- bitmap compatibility

TEST(ConvertToWinBmp, ShowableImagesAreLeftAlone)
{
    GuardedImage src(4, 2, KaipPixelFormat_BGR8Packed, 12, 0, 3);
    KaipImgInfo target{};
    int32_t converted = 7;
    EXPECT_EQ(ConvertToWinBmpCompatibleFormat(&src.info, &target, 0, &converted), 0);
    EXPECT_EQ(converted, 0);
    EXPECT_EQ(target.pData, nullptr);
    EXPECT_EQ(target.Width, 0u);
}

TEST(ConvertToWinBmp, OthersConvertToBgrOrGreyWithFourByteLines)
{
    const struct {
        uint32_t src, expected;
    } cases[] = {{KaipPixelFormat_Mono16, KaipPixelFormat_Mono8},
                 {KaipPixelFormat_RGB8Packed, KaipPixelFormat_BGR8Packed},
                 {KaipPixelFormat_BGR16, KaipPixelFormat_BGR8Packed},
                 {KaipPixelFormat_RGB16Packed, KaipPixelFormat_Mono8},
                 {KaipPixelFormat_BGR8Packed, KaipPixelFormat_BGR8Packed},
                 {KaipPixelFormat_YUV422Packed, KaipPixelFormat_Mono8}};
    for (const auto& c : cases) {
        GuardedImage src(3, 2, c.src, 24);  // 24 is no bitmap line for any of them
        FillRandom(src.buffer.data(), src.buffer.size(), 3);
        KaipImgInfo target{};
        int32_t converted = 0;
        EXPECT_EQ(ConvertToWinBmpCompatibleFormat(&src.info, &target, KaipOption_ReallocateDst, &converted), 0)
            << FormatName(c.src);
        EXPECT_EQ(converted, 1);
        EXPECT_EQ(target.PixelFormat, c.expected) << FormatName(c.src);
        EXPECT_EQ(target.LineIncrement % 4, 0u);
        EXPECT_NE(target.Flags & KaipImgFlag_Align4, 0u);
        KaipDeallocateImageData(&target);
    }
}

TEST(ConvertToWinBmp, NoTargetIsNotDisplayable)
{
    GuardedImage src(3, 2, KaipPixelFormat_Mono12, 6);
    int32_t converted = 5;
    EXPECT_EQ(ConvertToWinBmpCompatibleFormat(&src.info, nullptr, 0, &converted), KASTATUS_KAIP_NOT_DISPLAYABLE_FORMAT);
    EXPECT_EQ(converted, 0);
}

}  // namespace
