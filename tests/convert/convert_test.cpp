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

struct TRefusal {
    const char* what;
    uint32_t srcFormat, dstFormat, options;
    int32_t status;
};

class Refusals : public ::testing::TestWithParam<TRefusal> {};

TEST_P(Refusals, ReturnTheirStatusAndWriteNothing)
{
    const TRefusal& r = GetParam();
    GuardedImage src(4, 2, r.srcFormat, 16);
    FillRandom(src.buffer.data(), src.buffer.size(), 5);
    // A destination that fits a Mono8 request; other requests misfit by format.
    GuardedImage dst(4, 2, KaipPixelFormat_Mono8, 8);
    FillRandom(dst.buffer.data(), dst.buffer.size(), 6);
    const std::vector<uint8_t> before(dst.buffer.data(), dst.buffer.data() + dst.buffer.size());
    EXPECT_EQ(KaipConvertToPixelFormat(&src.info, &dst.info, r.dstFormat, r.options), r.status);
    EXPECT_EQ(0, std::memcmp(before.data(), dst.buffer.data(), before.size()));
    EXPECT_EQ(dst.info.pData, dst.buffer.data());
}

INSTANTIATE_TEST_SUITE_P(
    Dispatcher, Refusals,
    ::testing::Values(
        TRefusal{"Bayer16", KaipPixelFormat_BayerGR16, KaipPixelFormat_Mono8, 0, KASTATUS_KAIP_NOT_SUPPORTED},
        TRefusal{"Bayer12 to Mono16", KaipPixelFormat_BayerGR12, KaipPixelFormat_Mono16, KaipOption_ReallocateDst,
                 KASTATUS_KAIP_NOT_SUPPORTED},
        TRefusal{"BGR555 to deep", KaipPixelFormat_BGR555, KaipPixelFormat_RGB10Packed, KaipOption_ReallocateDst,
                 KASTATUS_KAIP_NOT_SUPPORTED},
        TRefusal{"packed destination", KaipPixelFormat_Mono8, KaipPixelFormat_Mono10Packed, KaipOption_ReallocateDst,
                 KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT},
        TRefusal{"YUV destination", KaipPixelFormat_Mono8, KaipPixelFormat_YUV422Packed, 0,
                 KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT},
        TRefusal{"MIPI Bayer source", KaipPixelFormat_BayerGR10Mipi, KaipPixelFormat_Mono8, 0,
                 KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT},
        TRefusal{"format misfit", KaipPixelFormat_Mono8, KaipPixelFormat_Mono16, 0, KASTATUS_KAIP_INCOMPATIBLE_DST}),
    [](const auto& info) {
        std::string name = info.param.what;
        for (char& ch : name)
            if (!isalnum(static_cast<unsigned char>(ch))) ch = '_';
        return name;
    });

TEST(ConvertRefusals, DescriptorsAreChecked)
{
    GuardedImage src(4, 2, KaipPixelFormat_Mono8, 4), dst(4, 2, KaipPixelFormat_Mono8, 4);
    EXPECT_EQ(KaipConvertToPixelFormat(nullptr, &dst.info, KaipPixelFormat_Mono8, 0),
              KASTATUS_KAIP_INVALID_SRC_POINTER);
    EXPECT_EQ(KaipConvertToPixelFormat(&src.info, nullptr, KaipPixelFormat_Mono8, 0),
              KASTATUS_KAIP_INVALID_DST_POINTER);
    KaipImgInfo empty{};
    EXPECT_EQ(KaipConvertToPixelFormat(&empty, &dst.info, KaipPixelFormat_Mono8, 0),
              KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED);
    GuardedImage planes(4, 2, KaipPixelFormat_Mono8, 4, KaipImgFlag_ColorPlanes);
    planes.info.pDataR = planes.info.pDataG = planes.info.pDataB = planes.buffer.data();
    EXPECT_EQ(KaipConvertToPixelFormat(&planes.info, &dst.info, KaipPixelFormat_Mono8, 0),
              KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED);
    GuardedImage wide(5, 2, KaipPixelFormat_Mono8, 5);
    EXPECT_EQ(KaipConvertToPixelFormat(&wide.info, &dst.info, KaipPixelFormat_Mono8, 0),
              KASTATUS_KAIP_INCOMPATIBLE_SIZE);
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

// Converts one line of bytes and returns the destination line.
std::vector<uint8_t> ConvertLine(uint32_t srcFormat, std::vector<uint8_t> bytes, uint32_t width, uint32_t dstFormat,
                                 uint32_t dstBytes, uint8_t fill = 0xAA)
{
    KaipImgInfo src{}, dst{};
    src.Width = width, src.Height = 1, src.PixelFormat = srcFormat, src.LineIncrement = uint32_t(bytes.size());
    src.pData = bytes.data();
    std::vector<uint8_t> out(dstBytes, fill);
    dst.Width = width, dst.Height = 1, dst.PixelFormat = dstFormat, dst.LineIncrement = dstBytes;
    dst.pData = out.data();
    EXPECT_EQ(KaipConvertToPixelFormat(&src, &dst, dstFormat, 0), 0);
    return out;
}

using Bytes = std::vector<uint8_t>;

TEST(ConvertValues, GreyWeightsGive254ForWhite)
{
    EXPECT_EQ(ConvertLine(KaipPixelFormat_RGB8Packed, {255, 255, 255, 0, 0, 0}, 2, KaipPixelFormat_Mono8, 2),
              (Bytes{254, 0}));
}

TEST(ConvertValues, MonoToShortColourFillsEveryBit)
{
    EXPECT_EQ(ConvertLine(KaipPixelFormat_Mono8, {255}, 1, KaipPixelFormat_BGR565Packed, 2), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(ConvertLine(KaipPixelFormat_Mono8, {255}, 1, KaipPixelFormat_BGR555, 2), (Bytes{0xFF, 0x7F}));
}

TEST(ConvertValues, WordsAreMaskedToTheirUsedBitsBeforeReduction)
{
    EXPECT_EQ(ConvertLine(KaipPixelFormat_Mono12, {0xFF, 0x0F, 0xFF, 0xFF}, 2, KaipPixelFormat_Mono8, 2),
              (Bytes{0xFF, 0xFF}));
}

TEST(ConvertValues, YuvAndYCbCrExtremes)
{
    EXPECT_EQ(
        ConvertLine(KaipPixelFormat_YUV444Packed, {128, 16, 128, 128, 235, 128}, 2, KaipPixelFormat_RGB8Packed, 6),
        (Bytes{0, 0, 0, 255, 255, 255}));
    EXPECT_EQ(ConvertLine(KaipPixelFormat_YCbCr8, {255, 128, 128, 0, 128, 128}, 2, KaipPixelFormat_BGR8Packed, 6),
              (Bytes{255, 255, 255, 0, 0, 0}));
    // YUV422Packed to grey copies bytes 1 and 3 of each four.
    EXPECT_EQ(ConvertLine(KaipPixelFormat_YUV422Packed, {1, 2, 3, 4}, 2, KaipPixelFormat_Mono8, 2), (Bytes{2, 4}));
}

TEST(ConvertValues, Yuv411StartsEachLineWithNeutralV)
{
    // U = 128 then V = 255: the first two pixels still use V = 128 (grey 16 -> black), the next two the new V.
    const Bytes out =
        ConvertLine(KaipPixelFormat_YUV411Packed, {128, 16, 16, 255, 16, 16}, 4, KaipPixelFormat_RGB8Packed, 12);
    EXPECT_EQ(out, (Bytes{0, 0, 0, 0, 0, 0, 203, 0, 0, 203, 0, 0}));
}

TEST(ConvertValues, BayerConvertsAsItsRawMosaic)
{
    EXPECT_EQ(ConvertLine(KaipPixelFormat_BayerRG8, {10, 20}, 2, KaipPixelFormat_RGB8Packed, 6),
              (Bytes{10, 10, 10, 20, 20, 20}));
}

TEST(ConvertValues, PackedOddWidth)
{
    // Mono12Packed, three pixels: 0xAB1, 0xCD2 in the first group, 0xEF? cut short.
    const Bytes src = {0xAB, 0x21, 0xCD, 0xEF, 0x00, 0x00};
    EXPECT_EQ(ConvertLine(KaipPixelFormat_Mono12Packed, src, 3, KaipPixelFormat_Mono8, 3), (Bytes{0xAB, 0xCD, 0xEF}));
    EXPECT_EQ(ConvertLine(KaipPixelFormat_Mono12Packed, src, 3, KaipPixelFormat_Mono16, 6),
              (Bytes{0x10, 0xAB, 0x20, 0xCD, 0xAA, 0xAA}));
}

TEST(ConvertValues, FourthByte)
{
    EXPECT_EQ(ConvertLine(KaipPixelFormat_Mono8, {7}, 1, KaipPixelFormat_BGRA8Packed, 4), (Bytes{7, 7, 7, 0}));
    EXPECT_EQ(ConvertLine(KaipPixelFormat_RGB8Packed, {1, 2, 3}, 1, KaipPixelFormat_BGRA8Packed, 4),
              (Bytes{3, 2, 1, 0xAA}));
    EXPECT_EQ(ConvertLine(KaipPixelFormat_RGBA8Packed, {1, 2, 3, 4}, 1, KaipPixelFormat_BGRA8Packed, 4),
              (Bytes{3, 2, 1, 0xAA}));
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
