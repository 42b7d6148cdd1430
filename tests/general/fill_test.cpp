// fill_test.cpp: KaipFillWithColor against a per-format model of the conversion rules, and its refusals.
#include <gtest/gtest.h>

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

const std::pair<uint32_t, unsigned> kMono[] = {{KaipPixelFormat_Mono9, 9},   {KaipPixelFormat_Mono10, 10},
                                               {KaipPixelFormat_Mono11, 11}, {KaipPixelFormat_Mono12, 12},
                                               {KaipPixelFormat_Mono13, 13}, {KaipPixelFormat_Mono14, 14},
                                               {KaipPixelFormat_Mono15, 15}, {KaipPixelFormat_Mono16, 16}};

// Packed colour formats: blue first or red first, a zero fourth byte, 8-bit channels or words
// shifted up by `shift`.
struct TColour {
    uint32_t format, shift;
    bool bgr, alpha;
};
const TColour kColours[] = {
    {KaipPixelFormat_BGR8Packed, 0, true, false},  {KaipPixelFormat_RGB8Packed, 0, false, false},
    {KaipPixelFormat_BGRA8Packed, 0, true, true},  {KaipPixelFormat_RGBA8Packed, 0, false, true},
    {KaipPixelFormat_BGR10Packed, 2, true, false}, {KaipPixelFormat_RGB10Packed, 2, false, false},
    {KaipPixelFormat_BGR12Packed, 4, true, false}, {KaipPixelFormat_RGB12Packed, 4, false, false},
    {KaipPixelFormat_BGR16, 8, true, false},       {KaipPixelFormat_RGB16Packed, 8, false, false}};

// Bayer groups of four codes, GR, RG, GB, BG, with their depth.
const std::pair<uint32_t, unsigned> kBayer[] = {{KaipPixelFormat_BayerGR8, 8},
                                                {KaipPixelFormat_BayerGR10, 10},
                                                {KaipPixelFormat_BayerGR12, 12},
                                                {KaipPixelFormat_BayerGR16, 16}};

// The bytes of pixel (x, y) of a non-planar format by the conversion rules: Mono8 the plain mean,
// deeper mono the weighted grey shifted to its depth, 15/16-bit packing, byte orders, 8-bit channels
// shifted to 10/12/16 bits; a Bayer site gets the channel of its colour.
std::vector<uint8_t> Pixel(uint32_t format, const TRgb& c, uint32_t x, uint32_t y)
{
    if (format == KaipPixelFormat_Mono8) return {uint8_t((c.r + c.g + c.b) / 3)};
    if (format == KaipPixelFormat_BGR555) return Words({((c.r << 7) & 0x7C00) | ((c.g << 2) & 0x3E0) | (c.b >> 3)});
    if (format == KaipPixelFormat_BGR565Packed)
        return Words({((c.r << 8) & 0xF800) | ((c.g << 3) & 0x7E0) | (c.b >> 3)});
    for (auto [code, bits] : kMono)
        if (code == format) return Words({Grey(c) << (bits - 8)});
    for (const TColour& k : kColours) {
        if (k.format != format) continue;
        const uint32_t first = k.bgr ? c.b : c.r, last = k.bgr ? c.r : c.b;
        if (k.shift) return Words({first << k.shift, c.g << k.shift, last << k.shift});
        std::vector<uint8_t> v{uint8_t(first), uint8_t(c.g), uint8_t(last)};
        if (k.alpha) v.push_back(0);
        return v;
    }
    // A red line when (y even) equals (line not shifted), in it red where (x even) equals (column
    // not shifted), else green; in a blue line green there, else blue.
    for (auto [first, depth] : kBayer) {
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

std::vector<uint32_t> Formats()
{
    std::vector<uint32_t> v = {KaipPixelFormat_Mono8, KaipPixelFormat_BGR555, KaipPixelFormat_BGR565Packed};
    for (auto [code, bits] : kMono) v.push_back(code);
    for (const TColour& k : kColours) v.push_back(k.format);
    for (auto [first, depth] : kBayer)
        for (uint32_t i = 0; i < 4; ++i) v.push_back(first + i);
    return v;
}

const std::pair<uint32_t, uint32_t> kSizes[] = {{1, 1}, {2, 1}, {3, 2}, {5, 3}, {8, 4}, {17, 5}, {64, 2}, {99, 3}};

TEST(FillWithColor, MatchesConversionRules)
{
    uint32_t seed = 500;
    for (uint32_t format : Formats()) {
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
                std::vector<uint8_t> expected = Bytes(img);
                for (uint32_t y = 0; y < h; ++y)
                    for (uint32_t x = 0; x < w; ++x) {
                        const auto bytes = Pixel(format, c, x, y);
                        std::copy(bytes.begin(), bytes.end(),
                                  expected.begin() + y * img.info.LineIncrement + x * pixel);
                    }
                // Mono8 is one fill of the whole buffer, padding included.
                if (format == KaipPixelFormat_Mono8)
                    std::fill(expected.begin(), expected.end(), Pixel(format, c, 0, 0)[0]);
                ASSERT_EQ(KaipFillWithColor(&img.info, uint8_t(c.r), uint8_t(c.g), uint8_t(c.b)), KASTATUS_OK);
                ASSERT_EQ(Bytes(img), expected);
            }
        }
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
            ASSERT_EQ(KaipFillWithColor(&img.info, 201, 7, 128), KASTATUS_OK);
            for (uint32_t c = 0; c < 3; ++c) {
                const GuardedBuffer& plane = planes[c]->buffer;
                std::vector<uint8_t> expected(plane.size(), 0xEE);
                const uint32_t v = uint32_t(c == 0 ? 201 : c == 1 ? 7 : 128) << shift;
                for (uint32_t i = 0; i < w * h; ++i)
                    std::copy_n(Words({v}).begin(), bytes, expected.begin() + i / w * increment + i % w * bytes);
                EXPECT_EQ(std::vector<uint8_t>(plane.data(), plane.data() + plane.size()), expected) << "plane " << c;
            }
        }
    }
}

TEST(FillWithColor, WorkedValues)
{
    // White becomes grey 254 in mono words: the weights add up to 255.
    GuardedImage mono16(1, 1, KaipPixelFormat_Mono16, 2);
    ASSERT_EQ(KaipFillWithColor(&mono16.info, 255, 255, 255), KASTATUS_OK);
    EXPECT_EQ(mono16.buffer.data()[0] | mono16.buffer.data()[1] << 8, 254 << 8);
}

TEST(FillWithColor, Refusals)
{
    // clang-format off
    const struct {
        const char* what;
        KaipStatus status;
        void (*spoil)(KaipImgInfo&);  // null: no descriptor at all
        const char* line;
    } cases[] = {
        {"null", KASTATUS_KAIP_INVALID_POINTER, nullptr, "KaipFillWithColor: pImgInfo is NULL!"},
        {"not initialised", KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED, [](KaipImgInfo& i) { i.Height = 0; },
         "KaipFillWithColor: pImgInfo is not initialized!"},
        {"no buffer", KASTATUS_KAIP_DST_NOT_ALLOCATED, [](KaipImgInfo& i) { i.pData = nullptr; },
         "KaipFillWithColor: pImgInfo->pData is NULL!"},
        {"planes without their pointers", KASTATUS_KAIP_DST_NOT_ALLOCATED,
         [](KaipImgInfo& i) { i.PixelFormat = KaipPixelFormat_RGB8Planar, i.Flags = KaipImgFlag_ColorPlanes; },
         "KaipFillWithColor: pImgInfo->pDataR or pDataG or pDataB is NULL!"},
        {"colour planes of a packed format", KASTATUS_KAIP_INCOMPATIBLE_FLAGS,
         [](KaipImgInfo& i) { i.Flags = KaipImgFlag_ColorPlanes; },
         "KaipFillWithColor: pixel format 0x01080001 and KaipImgFlag_ColorPlanes (Flags=0x1) do not agree"},
        {"YUV422", KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT,
         [](KaipImgInfo& i) { i.PixelFormat = KaipPixelFormat_YUV422Packed; },
         "KaipFillWithColor: destination pixel format = 0x0210001f not supported"},
        {"Mono12Packed", KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT,
         [](KaipImgInfo& i) { i.PixelFormat = KaipPixelFormat_Mono12Packed; },
         "KaipFillWithColor: destination pixel format = 0x010c0006 not supported"},
        {"Bayer10Packed", KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT,
         [](KaipImgInfo& i) { i.PixelFormat = KaipPixelFormat_BayerRG10Packed; },
         "KaipFillWithColor: destination pixel format = 0x010c0027 not supported"},
        {"unknown", KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, [](KaipImgInfo& i) { i.PixelFormat = 0x12345678; },
         "KaipFillWithColor: destination pixel format = 0x12345678 not supported"},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        GuardedImage img(4, 3, KaipPixelFormat_Mono8, 16);
        std::fill(img.buffer.data(), img.buffer.data() + img.buffer.size(), 0x5A);
        if (c.spoil) c.spoil(img.info);
        LogCapture log;
        EXPECT_EQ(KaipFillWithColor(c.spoil ? &img.info : nullptr, 1, 2, 3), c.status);
        EXPECT_EQ(Bytes(img), std::vector<uint8_t>(img.buffer.size(), 0x5A));
        EXPECT_EQ(log.Lines(), std::vector<std::string>({c.line}));
    }
}

}  // namespace
