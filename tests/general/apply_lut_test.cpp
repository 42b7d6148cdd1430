// apply_lut_test.cpp: KaipApplyLut against a per-sample model over every format, in place and into a destination.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "general/lut.h"
#include "lut_model.h"
#include "support/guarded.h"

using namespace lutmodel;

// Every test here may change the global LUT; it is identity again afterwards.
class ApplyLut : public GlobalLutTest {};

namespace {

struct Format {
    uint32_t code;
    unsigned depth, channels, bytes;  // bytes per sample
    bool bgr;
};

const Format kFormats[] = {
    {KaipPixelFormat_Mono8, 8, 1, 1, false},       {KaipPixelFormat_Mono10, 10, 1, 2, false},
    {KaipPixelFormat_Mono12, 12, 1, 2, false},     {KaipPixelFormat_RGB8Packed, 8, 3, 1, false},
    {KaipPixelFormat_BGR8Packed, 8, 3, 1, true},   {KaipPixelFormat_RGBA8Packed, 8, 4, 1, false},
    {KaipPixelFormat_BGRA8Packed, 8, 4, 1, true},  {KaipPixelFormat_RGB10Packed, 10, 3, 2, false},
    {KaipPixelFormat_BGR10Packed, 10, 3, 2, true}, {KaipPixelFormat_RGB12Packed, 12, 3, 2, false},
    {KaipPixelFormat_BGR12Packed, 12, 3, 2, true},
};

KaipImgInfo Image(uint32_t width, uint32_t height, uint32_t format, uint32_t pixelInc, uint32_t lineInc, void* p)
{
    return {0, width, height, format, 0, pixelInc, lineInc, static_cast<uint8_t*>(p), nullptr, nullptr, nullptr};
}

// Random channel tables, 16-bit ones with values above the depth's range too.
template <class TLut>
void Randomize(TLut& lut, std::mt19937& rng)
{
    for (unsigned i = 0; i < TLut::N; ++i) {
        lut.Red[i] = typename TLut::TValue(rng());
        lut.Green[i] = typename TLut::TValue(rng());
        lut.Blue[i] = typename TLut::TValue(rng());
    }
}

// What the image must hold afterwards: each of the first three samples (one for mono) looked
// up in the table of its colour, the fourth untouched, padding untouched.
std::vector<uint8_t> Model(const Format& f, const KaipImgInfo& src, const std::vector<uint8_t>& srcBytes,
                           std::vector<uint8_t> dstBytes, uint32_t dstLineIncrement, KaipHLut h)
{
    for (uint32_t y = 0; y < src.Height; ++y) {
        for (uint32_t x = 0; x < src.Width; ++x) {
            for (unsigned c = 0; c < (f.channels == 1 ? 1u : 3u); ++c) {
                const size_t s = size_t(y) * src.LineIncrement + (size_t(x) * f.channels + c) * f.bytes;
                const size_t d = size_t(y) * dstLineIncrement + (size_t(x) * f.channels + c) * f.bytes;
                uint32_t v = srcBytes[s] | (f.bytes == 2 ? srcBytes[s + 1] << 8 : 0);
                v &= (1u << f.depth) - 1;
                const int colour = f.channels == 1 ? 1 : f.bgr ? 2 - c : c;  // 0 red, 1 green, 2 blue
                auto look = [&](const auto& l) {
                    return uint32_t((colour == 0 ? l.Red : colour == 1 ? l.Green : l.Blue)[v]);
                };
                const uint32_t out = f.depth == 8    ? look(*Body8(h))
                                     : f.depth == 10 ? look(*Body10(h))
                                                     : look(*Body12(h));
                dstBytes[d] = uint8_t(out);
                if (f.bytes == 2) dstBytes[d + 1] = uint8_t(out >> 8);
            }
        }
    }
    return dstBytes;
}

}  // namespace

// Every format with every handle kind, widths 1..96 (every tail of the 32-byte and 32-pixel vector
// blocks and of the 8-byte pair blocks) and a few large images of more than 64 Ki samples (the pair
// table), in place and into a destination, in either line order; 8-bit colour tables are mostly equal,
// which lets the mono workers take colour lines too. Runs at every SIMD level (ctest).
TEST_F(ApplyLut, EveryFormatMatchesTheModel)
{
    Lut all(KAIP_LUT_BAYER | KAIP_LUT_BAYER_16), l8(8), l10(10 | KAIP_LUT_BAYER), l12(12);
    const uint32_t kLarge[] = {641, 1000, 2448};
    uint32_t seed = 0;
    for (const Format& f : kFormats)
        for (uint32_t trial = 0; trial < 99; ++trial) {
            std::mt19937 rng(++seed);
            const KaipHLut single = f.depth == 8 ? l8.h : f.depth == 10 ? l10.h : l12.h;
            const KaipHLut handles[] = {nullptr, reinterpret_cast<KaipHLut>(1), all.h, single};
            const KaipHLut h = handles[rng() % 4];
            const KaipHLut body = h ? h : reinterpret_cast<KaipHLut>(1);
            if (f.depth == 8) {
                TKaIpLut8& l = *Body8(body);
                Randomize(l, rng);
                if (trial % 3 != 1) std::copy(l.Green, l.Green + 256, l.Red), std::copy(l.Green, l.Green + 256, l.Blue);
            }
            if (f.depth == 10) Randomize(*Body10(body), rng);
            if (f.depth == 12) Randomize(*Body12(body), rng);

            const uint32_t width = trial < 96 ? trial + 1 : kLarge[trial - 96];
            const uint32_t height = trial < 96 ? rng() % 4 + 1 : 65536 / width + 1;
            const uint32_t pixelBytes = f.channels * f.bytes, flags = rng() % 2 ? KaipImgFlag_BottomUp : 0;
            const uint32_t srcInc = width * pixelBytes + rng() % 5, dstInc = width * pixelBytes + rng() % 5;
            const bool inPlace = rng() % 2;
            SCOPED_TRACE(::testing::Message() << "seed " << seed << " format " << std::hex << f.code << std::dec
                                              << " width " << width << " height " << height << " in place " << inPlace);
            GuardedImage src(width, height, f.code, srcInc, flags), dst(width, height, f.code, dstInc, flags);
            FillRandom(src.buffer.data(), src.buffer.size(), seed);
            FillRandom(dst.buffer.data(), dst.buffer.size(), seed + 100000);
            const std::vector<uint8_t> srcBefore = Bytes(src), dstBefore = Bytes(dst);
            if (inPlace) {
                ASSERT_EQ(KaipApplyLut(&src.info, nullptr, h, 0), KASTATUS_OK);
                const auto expected = Model(f, src.info, srcBefore, srcBefore, srcInc, body);
                ASSERT_EQ(0, std::memcmp(src.buffer.data(), expected.data(), expected.size()));
            } else {
                ASSERT_EQ(KaipApplyLut(&src.info, &dst.info, h, 0), KASTATUS_OK);
                const auto expected = Model(f, src.info, srcBefore, dstBefore, dstInc, body);
                ASSERT_EQ(0, std::memcmp(dst.buffer.data(), expected.data(), expected.size()));
                ASSERT_EQ(0, std::memcmp(src.buffer.data(), srcBefore.data(), srcBefore.size()));
            }
        }
}

// A Mono10 word 0xFC05 is looked up at index 5 (alpha and padding are rules of the model above).
TEST_F(ApplyLut, WorkedValues)
{
    g_Lut10.Green[5] = 0xBEEF;
    uint16_t mono10 = 0xFC05;
    KaipImgInfo img = Image(1, 1, KaipPixelFormat_Mono10, 2, 2, &mono10);
    EXPECT_EQ(KaipApplyLut(&img, nullptr, nullptr, 0), KASTATUS_OK);
    EXPECT_EQ(mono10, 0xBEEF);
}

TEST_F(ApplyLut, LutAndFormatPairing)
{
    Lut all(0), l8(8), l10(10), l12(12);
    uint32_t fake[2] = {9, 0};
    uint8_t pixels[64] = {};
    auto image = [&](uint32_t format) { return Image(2, 2, format, 6, 16, pixels); };
    struct Case {
        uint32_t format;
        KaipHLut h;
        KaipStatus expected;
    } cases[] = {
        {KaipPixelFormat_RGB8Packed, l10.h, KASTATUS_KAIP_INVALID_LUT_TYPE},
        {KaipPixelFormat_RGB8Packed, l8.h, KASTATUS_OK},
        {KaipPixelFormat_Mono12, l12.h, KASTATUS_OK},
        {KaipPixelFormat_Mono12, l10.h, KASTATUS_KAIP_INVALID_LUT_TYPE},
        {KaipPixelFormat_BGR10Packed, all.h, KASTATUS_OK},
        {KaipPixelFormat_BGR10Packed, fake, KASTATUS_KAIP_INVALID_LUT_TYPE},
        {KaipPixelFormat_BayerRG8, l8.h, KASTATUS_KAIP_INVALID_LUT_TYPE},
        {KaipPixelFormat_BayerRG8, all.h, KASTATUS_KAIP_INVALID_LUT_TYPE},
        {KaipPixelFormat_BayerRG8, nullptr, KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT},
        {KaipPixelFormat_BayerGB12, reinterpret_cast<KaipHLut>(1), KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT},
        {KaipPixelFormat_Mono16, nullptr, KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT},
        {KaipPixelFormat_BGR565Packed, nullptr, KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT},
        {KaipPixelFormat_Mono16, l8.h, KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT},  // class check first
    };
    for (const Case& c : cases) {
        KaipImgInfo img = image(c.format);
        EXPECT_EQ(KaipApplyLut(&img, nullptr, c.h, 0), c.expected) << std::hex << c.format;
    }
}

// The common refusals (null source, other size, no buffer) are in tests/hostile.
TEST_F(ApplyLut, OrientationAndReallocation)
{
    uint8_t pixels[32] = {};
    KaipImgInfo src = Image(4, 2, KaipPixelFormat_Mono8, 1, 4, pixels);
    KaipImgInfo dst{};
    ASSERT_EQ(KaipInitImgInfo(&dst, 4, 2, KaipPixelFormat_Mono8, KaipImgFlag_BottomUp), KASTATUS_OK);
    ASSERT_EQ(KaipAllocateImageData(&dst), KASTATUS_OK);
    EXPECT_EQ(KaipApplyLut(&src, &dst, nullptr, 0), KASTATUS_KAIP_INCOMPATIBLE_FLAGS);
    dst.Width = 3;

    // Rebuilt with the source's format and size before the pixels are mapped.
    for (unsigned i = 0; i < 8; ++i) pixels[i] = uint8_t(i * 30);
    src.PixelFormat = KaipPixelFormat_RGBA8Packed;
    src.Width = 2;
    src.LineIncrement = 8;
    EXPECT_EQ(KaipApplyLut(&src, &dst, nullptr, KaipOption_ReallocateDst | KaipImgFlag_Align16), KASTATUS_OK);
    EXPECT_TRUE(dst.PixelFormat == KaipPixelFormat_RGBA8Packed && dst.LineIncrement == 16);  // all of it: tests/hostile
    EXPECT_EQ(dst.pData[4], 120);
    EXPECT_EQ(KaipDeallocateImageData(&dst), KASTATUS_OK);
}
