// fill_test.cpp: KaipFillWithColor against a per-format model of the conversion rules, and its refusals.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "support/guarded.h"
#include "support/log_capture.h"

namespace {

struct TRgb {
    uint32_t r, g, b;
};

// Little-endian words.
std::vector<uint8_t> Words(std::initializer_list<uint32_t> words)
{
    std::vector<uint8_t> bytes;
    for (uint32_t w : words) bytes.push_back(uint8_t(w)), bytes.push_back(uint8_t(w >> 8));
    return bytes;
}

uint32_t Grey(const TRgb& c)
{
    return (54 * c.r + 183 * c.g + 18 * c.b + 128) >> 8;
}

// The bytes of pixel (x, y) of a non-planar format by the conversion rules: weighted grey shifted to the
// mono depth, 15/16-bit packing, byte orders, 8-bit channels shifted to 10/12/16 bits; a Bayer site gets
// the channel of its colour.
std::vector<uint8_t> Pixel(uint32_t format, const TRgb& c, uint32_t x, uint32_t y)
{
    switch (format) {
        case KaipPixelFormat_Mono9:
            return Words({Grey(c) << 1});
        case KaipPixelFormat_Mono10:
            return Words({Grey(c) << 2});
        case KaipPixelFormat_Mono11:
            return Words({Grey(c) << 3});
        case KaipPixelFormat_Mono12:
            return Words({Grey(c) << 4});
        case KaipPixelFormat_Mono13:
            return Words({Grey(c) << 5});
        case KaipPixelFormat_Mono14:
            return Words({Grey(c) << 6});
        case KaipPixelFormat_Mono15:
            return Words({Grey(c) << 7});
        case KaipPixelFormat_Mono16:
            return Words({Grey(c) << 8});
        case KaipPixelFormat_BGR555:
            return Words({((c.r << 7) & 0x7C00) | ((c.g << 2) & 0x3E0) | (c.b >> 3)});
        case KaipPixelFormat_BGR565Packed:
            return Words({((c.r << 8) & 0xF800) | ((c.g << 3) & 0x7E0) | (c.b >> 3)});
        case KaipPixelFormat_BGR8Packed:
            return {uint8_t(c.b), uint8_t(c.g), uint8_t(c.r)};
        case KaipPixelFormat_RGB8Packed:
            return {uint8_t(c.r), uint8_t(c.g), uint8_t(c.b)};
        case KaipPixelFormat_BGRA8Packed:
            return {uint8_t(c.b), uint8_t(c.g), uint8_t(c.r), 0};
        case KaipPixelFormat_RGBA8Packed:
            return {uint8_t(c.r), uint8_t(c.g), uint8_t(c.b), 0};
        case KaipPixelFormat_BGR10Packed:
            return Words({c.b << 2, c.g << 2, c.r << 2});
        case KaipPixelFormat_RGB10Packed:
            return Words({c.r << 2, c.g << 2, c.b << 2});
        case KaipPixelFormat_BGR12Packed:
            return Words({c.b << 4, c.g << 4, c.r << 4});
        case KaipPixelFormat_RGB12Packed:
            return Words({c.r << 4, c.g << 4, c.b << 4});
        case KaipPixelFormat_BGR16:
            return Words({c.b << 8, c.g << 8, c.r << 8});
        case KaipPixelFormat_RGB16Packed:
            return Words({c.r << 8, c.g << 8, c.b << 8});
    }
    // Bayer: GR, RG, GB, BG in each group of four codes; a red line when (y even) equals (line not
    // shifted), in it red where (x even) equals (column not shifted), else green; in a blue line green
    // there, else blue.
    struct {
        uint32_t first, depth;
    } const groups[] = {{KaipPixelFormat_BayerGR8, 8},
                        {KaipPixelFormat_BayerGR10, 10},
                        {KaipPixelFormat_BayerGR12, 12},
                        {KaipPixelFormat_BayerGR16, 16}};
    for (auto [first, depth] : groups) {
        if (format < first || format > first + 3) continue;
        const uint32_t pattern = format - first;  // 0 GR, 1 RG, 2 GB, 3 BG
        const bool shiftLine = pattern >= 2, shiftColumn = pattern == 0 || pattern == 3;
        const bool redLine = (y % 2 == 0) == !shiftLine, firstSite = (x % 2 == 0) == !shiftColumn;
        const uint32_t v = redLine ? (firstSite ? c.r : c.g) : (firstSite ? c.g : c.b);
        return depth == 8 ? std::vector<uint8_t>{uint8_t(v)} : Words({v << (depth - 8)});
    }
    ADD_FAILURE() << "no model for format " << std::hex << format;
    return {};
}

const uint32_t kFormats[] = {
    KaipPixelFormat_Mono9,       KaipPixelFormat_Mono10,       KaipPixelFormat_Mono11,      KaipPixelFormat_Mono12,
    KaipPixelFormat_Mono13,      KaipPixelFormat_Mono14,       KaipPixelFormat_Mono15,      KaipPixelFormat_Mono16,
    KaipPixelFormat_BGR555,      KaipPixelFormat_BGR565Packed, KaipPixelFormat_BGR8Packed,  KaipPixelFormat_RGB8Packed,
    KaipPixelFormat_BGRA8Packed, KaipPixelFormat_RGBA8Packed,  KaipPixelFormat_BGR10Packed, KaipPixelFormat_RGB10Packed,
    KaipPixelFormat_BGR12Packed, KaipPixelFormat_RGB12Packed,  KaipPixelFormat_BGR16,       KaipPixelFormat_RGB16Packed,
    KaipPixelFormat_BayerGR8,    KaipPixelFormat_BayerRG8,     KaipPixelFormat_BayerGB8,    KaipPixelFormat_BayerBG8,
    KaipPixelFormat_BayerGR10,   KaipPixelFormat_BayerRG10,    KaipPixelFormat_BayerGB10,   KaipPixelFormat_BayerBG10,
    KaipPixelFormat_BayerGR12,   KaipPixelFormat_BayerRG12,    KaipPixelFormat_BayerGB12,   KaipPixelFormat_BayerBG12,
    KaipPixelFormat_BayerGR16,   KaipPixelFormat_BayerRG16,    KaipPixelFormat_BayerGB16,   KaipPixelFormat_BayerBG16,
};

const std::pair<uint32_t, uint32_t> kSizes[] = {{1, 1}, {2, 1}, {3, 2}, {5, 3}, {8, 4}, {17, 5}, {64, 2}, {99, 3}};

TEST(FillWithColor, MatchesConversionRules)
{
    uint32_t seed = 500;
    for (uint32_t format : kFormats) {
        const size_t pixel = Pixel(format, {0, 0, 0}, 0, 0).size();
        for (auto [w, h] : kSizes) {
            for (uint32_t flags : {0u, KaipImgFlag_BottomUp}) {
                ++seed;
                SCOPED_TRACE(testing::Message() << "seed " << seed << " format 0x" << std::hex << format << std::dec
                                                << " " << w << "x" << h);
                std::mt19937 gen(seed);
                const TRgb c{uint32_t(gen() % 256), uint32_t(gen() % 256), uint32_t(gen() % 256)};
                const uint32_t pad = gen() % 7;
                GuardedImage img(w, h, format, uint32_t(w * pixel + pad), flags, uint32_t(pixel));
                FillRandom(img.buffer.data(), img.buffer.size(), seed);
                std::vector<uint8_t> expected(img.buffer.data(), img.buffer.data() + img.buffer.size());
                for (uint32_t y = 0; y < h; ++y)
                    for (uint32_t x = 0; x < w; ++x) {
                        const auto bytes = Pixel(format, c, x, y);
                        std::copy(bytes.begin(), bytes.end(),
                                  expected.begin() + y * img.info.LineIncrement + x * pixel);
                    }
                ASSERT_EQ(KaipFillWithColor(&img.info, uint8_t(c.r), uint8_t(c.g), uint8_t(c.b)), KASTATUS_OK);
                ASSERT_EQ(std::vector<uint8_t>(img.buffer.data(), img.buffer.data() + img.buffer.size()), expected);
            }
        }
    }
}

TEST(FillWithColor, Mono8GetsTheMeanInEveryByte)
{
    for (auto [w, h] : kSizes) {
        GuardedImage img(w, h, KaipPixelFormat_Mono8, w + 3);
        FillRandom(img.buffer.data(), img.buffer.size(), w);
        ASSERT_EQ(KaipFillWithColor(&img.info, 10, 20, 32), KASTATUS_OK);  // 62 / 3 = 20
        EXPECT_EQ(std::vector<uint8_t>(img.buffer.data(), img.buffer.data() + img.buffer.size()),
                  std::vector<uint8_t>(img.buffer.size(), 20));
    }
}

TEST(FillWithColor, ColourPlanesGetTheirChannels)
{
    const struct {
        uint32_t format;
        unsigned bytes, shift;
    } planar[] = {{KaipPixelFormat_RGB8Planar, 1, 0},
                  {KaipPixelFormat_RGB10Planar, 2, 2},
                  {KaipPixelFormat_RGB12Planar, 2, 4},
                  {KaipPixelFormat_RGB16Planar, 2, 8}};
    for (auto [format, bytes, shift] : planar) {
        for (auto [w, h] : kSizes) {
            SCOPED_TRACE(testing::Message() << std::hex << format << std::dec << " " << w << "x" << h);
            const uint32_t increment = w * bytes + 5;
            GuardedImage img(w, h, format, increment, KaipImgFlag_ColorPlanes, bytes);
            std::unique_ptr<GuardedImage> planes[3];
            for (auto& p : planes) {
                p = std::make_unique<GuardedImage>(w, h, format, increment);
                std::fill(p->buffer.data(), p->buffer.data() + p->buffer.size(), 0xEE);
            }
            img.info.pData = nullptr;
            img.info.pDataR = planes[0]->buffer.data(), img.info.pDataG = planes[1]->buffer.data();
            img.info.pDataB = planes[2]->buffer.data();
            const uint32_t rgb[3] = {201, 7, 128};
            ASSERT_EQ(KaipFillWithColor(&img.info, 201, 7, 128), KASTATUS_OK);
            for (int c = 0; c < 3; ++c) {
                std::vector<uint8_t> expected(planes[c]->buffer.size(), 0xEE);
                for (uint32_t y = 0; y < h; ++y)
                    for (uint32_t x = 0; x < w; ++x) {
                        const uint32_t v = rgb[c] << shift;
                        expected[y * increment + x * bytes] = uint8_t(v);
                        if (bytes == 2) expected[y * increment + x * bytes + 1] = uint8_t(v >> 8);
                    }
                EXPECT_EQ(
                    std::vector<uint8_t>(planes[c]->buffer.data(), planes[c]->buffer.data() + planes[c]->buffer.size()),
                    expected)
                    << "plane " << c;
            }
        }
    }
}

TEST(FillWithColor, WorkedValues)
{
    // White becomes grey 254 in mono words (the weights add up to 255); Mono8 takes the plain mean.
    GuardedImage mono16(1, 1, KaipPixelFormat_Mono16, 2);
    ASSERT_EQ(KaipFillWithColor(&mono16.info, 255, 255, 255), KASTATUS_OK);
    EXPECT_EQ(mono16.buffer.data()[0] | mono16.buffer.data()[1] << 8, 254 << 8);
    GuardedImage bgr565(1, 1, KaipPixelFormat_BGR565Packed, 2);
    ASSERT_EQ(KaipFillWithColor(&bgr565.info, 255, 255, 255), KASTATUS_OK);
    EXPECT_EQ(bgr565.buffer.data()[0] | bgr565.buffer.data()[1] << 8, 0xFFFF);
}

TEST(FillWithColor, Refusals)
{
    using Call = std::function<KaipStatus(KaipImgInfo&)>;
    auto withFormat = [](uint32_t format) -> Call {
        return [=](KaipImgInfo& i) {
            i.PixelFormat = format;
            return KaipFillWithColor(&i, 1, 2, 3);
        };
    };
    const std::tuple<const char*, KaipStatus, Call, const char*> cases[] = {
        {"null", KASTATUS_KAIP_INVALID_POINTER, [](KaipImgInfo&) { return KaipFillWithColor(nullptr, 1, 2, 3); },
         "KaipFillWithColor: pImgInfo is NULL!"},
        {"not initialised", KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED,
         [](KaipImgInfo& i) {
             i.Height = 0;
             return KaipFillWithColor(&i, 1, 2, 3);
         },
         "KaipFillWithColor: pImgInfo is not initialized!"},
        {"no buffer", KASTATUS_KAIP_DST_NOT_ALLOCATED,
         [](KaipImgInfo& i) {
             i.pData = nullptr;
             return KaipFillWithColor(&i, 1, 2, 3);
         },
         "KaipFillWithColor: pImgInfo->pData is NULL!"},
        {"planes without their pointers", KASTATUS_KAIP_DST_NOT_ALLOCATED,
         [](KaipImgInfo& i) {
             i.PixelFormat = KaipPixelFormat_RGB8Planar, i.Flags = KaipImgFlag_ColorPlanes;
             return KaipFillWithColor(&i, 1, 2, 3);
         },
         "KaipFillWithColor: pImgInfo->pDataR or pDataG or pDataB is NULL!"},
        {"colour planes of a packed format", KASTATUS_KAIP_INCOMPATIBLE_FLAGS,
         [](KaipImgInfo& i) {
             i.Flags = KaipImgFlag_ColorPlanes;
             return KaipFillWithColor(&i, 1, 2, 3);
         },
         "KaipFillWithColor: pixel format 0x01080001 and KaipImgFlag_ColorPlanes (Flags=0x1) do not agree"},
        {"YUV422", KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, withFormat(KaipPixelFormat_YUV422Packed),
         "KaipFillWithColor: destination pixel format = 0x0210001f not supported"},
        {"Mono12Packed", KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, withFormat(KaipPixelFormat_Mono12Packed),
         "KaipFillWithColor: destination pixel format = 0x010c0006 not supported"},
        {"Bayer10Packed", KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, withFormat(KaipPixelFormat_BayerRG10Packed),
         "KaipFillWithColor: destination pixel format = 0x010c0027 not supported"},
        {"unknown", KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, withFormat(0x12345678),
         "KaipFillWithColor: destination pixel format = 0x12345678 not supported"},
    };
    for (const auto& [what, status, call, line] : cases) {
        SCOPED_TRACE(what);
        GuardedImage img(4, 3, KaipPixelFormat_Mono8, 16);
        std::fill(img.buffer.data(), img.buffer.data() + img.buffer.size(), 0x5A);
        LogCapture log;
        EXPECT_EQ(call(img.info), status);
        EXPECT_EQ(std::vector<uint8_t>(img.buffer.data(), img.buffer.data() + img.buffer.size()),
                  std::vector<uint8_t>(img.buffer.size(), 0x5A));
        EXPECT_EQ(log.Lines(), std::vector<std::string>({line}));
    }
}

}  // namespace
