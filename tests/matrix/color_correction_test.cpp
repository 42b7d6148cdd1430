// color_correction_test.cpp: KaipApplyRgbColorCorrection against a per-pixel model, its refusals, and the saturation
// matrix.
#include <cmath>

#include "matrix/matrix_test_util.h"
#include "support/log_capture.h"

namespace {

struct TCcFormat {
    uint32_t code;
    unsigned depth;  // 8, 10, 12 or 16; the sample is a byte for 8, a word otherwise
    bool bgr;        // blue first in memory
    unsigned step;   // samples per pixel
    unsigned SampleBytes() const { return depth == 8 ? 1 : 2; }
    unsigned PixelBytes() const { return step * SampleBytes(); }
};

const TCcFormat kFormats[] = {
    {KaipPixelFormat_BGR8Packed, 8, true, 3},   {KaipPixelFormat_BGRA8Packed, 8, true, 4},
    {KaipPixelFormat_RGB8Packed, 8, false, 3},  {KaipPixelFormat_RGBA8Packed, 8, false, 4},
    {KaipPixelFormat_BGR10Packed, 10, true, 3}, {KaipPixelFormat_RGB10Packed, 10, false, 3},
    {KaipPixelFormat_BGR12Packed, 12, true, 3}, {KaipPixelFormat_RGB12Packed, 12, false, 3},
    {KaipPixelFormat_BGR16, 16, true, 3},       {KaipPixelFormat_RGB16Packed, 16, false, 3},
};

// The correction of one image by its rules: coefficients entry x 65.536 truncated; sums wrapped at
// 32 bits below 16-bit depth; clamp; shift; optional LUT per output channel. `out` holds what the
// output buffer held before.
void ModelCorrection(const TCcFormat& f, const KaipImgInfo& src, std::vector<uint8_t>& out, uint32_t outIncrement,
                     const int32_t* m, const TModelLut* lut)
{
    int64_t c[9];
    for (int i = 0; i < 9; ++i) c[i] = int64_t(std::trunc(m[i] * 65.536));
    const int64_t max = (1 << f.depth) - 1;
    const unsigned bytes = f.SampleBytes(), iRed = f.bgr ? 2 : 0, iBlue = 2 - iRed;
    for (uint32_t y = 0; y < src.Height; ++y) {
        const uint8_t* s = src.pData + y * src.LineIncrement;
        uint8_t* d = out.data() + y * outIncrement;
        for (uint32_t x = 0; x < src.Width; ++x) {
            const size_t p = size_t(x) * f.step;
            const int64_t in[3] = {GetSample(s, p + iRed, bytes), GetSample(s, p + 1, bytes),
                                   GetSample(s, p + iBlue, bytes)};
            const size_t pos[3] = {p + iRed, p + 1, p + iBlue};
            for (int k = 0; k < 3; ++k) {
                int64_t v = c[3 * k] * in[0] + c[3 * k + 1] * in[1] + c[3 * k + 2] * in[2];
                if (f.depth < 16) v = int32_t(uint32_t(uint64_t(v)));
                int64_t o = v < 0 ? 0 : v > max * 65536 ? max : v >> 16;
                if (lut) o = (*lut)[k][size_t(o)];
                PutSample(d, pos[k], bytes, uint32_t(o));
            }
        }
    }
}

// Mostly moderate entries; now and then a large one, whose products wrap the 32-bit sums.
std::array<int32_t, 9> RandomMatrix(std::mt19937& gen)
{
    std::array<int32_t, 9> m;
    for (auto& v : m) v = int32_t(gen() % 5001) - 2500;
    if (gen() % 4 == 0) m[gen() % 9] = int32_t(gen() % 80001) - 40000;
    return m;
}

TEST(ApplyRgbColorCorrection, MatchesModelOnRandomImages)
{
    const std::pair<uint32_t, uint32_t> sizes[] = {{1, 1}, {2, 3}, {5, 4}, {8, 2}, {17, 5}, {70, 3}, {133, 2}};
    uint32_t seed = 1;
    for (int level : kSimdLevels) {
        ScopedSimdLevel simd(level);
        for (const TCcFormat& f : kFormats) {
            for (auto [w, h] : sizes) {
                for (uint32_t flags : {0u, KaipImgFlag_BottomUp}) {
                    for (LutMode mode : {LutMode::None, LutMode::Object, LutMode::Global}) {
                        for (bool inPlace : {false, true}) {
                            ++seed;
                            SCOPED_TRACE(testing::Message()
                                         << "level " << level << " seed " << seed << " format 0x" << std::hex << f.code
                                         << std::dec << " " << w << "x" << h << " flags " << flags << " lut "
                                         << int(mode) << " in place " << inPlace);
                            std::mt19937 gen(seed);
                            const auto m = RandomMatrix(gen);
                            const unsigned lutDepth = f.depth == 16 ? 8 : f.depth;
                            const TModeLut modeLut(mode, lutDepth, seed);
                            // The 16-bit formats never use a LUT, whatever the handle.
                            const TModelLut* lut = f.depth == 16 ? nullptr : modeLut.tables;

                            auto src = MakeImage(w, h, f.code, f.PixelBytes(), flags, 2, seed);
                            auto dst = MakeImage(w, h, f.code, f.PixelBytes(), flags, 4, 0);
                            KaipImgInfo* pDst = inPlace ? nullptr : &dst->info;
                            GuardedImage& out = inPlace ? *src : *dst;
                            std::vector<uint8_t> expected = Bytes(out);
                            ModelCorrection(f, src->info, expected, out.info.LineIncrement, m.data(), lut);
                            ASSERT_EQ(KaipApplyRgbColorCorrection(&src->info, pDst, m.data(), 0, modeLut.handle),
                                      KASTATUS_OK);
                            ASSERT_EQ(Bytes(out), expected);
                        }
                    }
                }
            }
        }
    }
}

// The matrices of the twin test: moderate entries (now and then one wrapping the sums), full-range
// ones, saturation matrices, sensor-like ones (diagonal 1.0 to 2.5, rows summing to 1.0), entries on
// the edges of the vector variants' ranges, and moderate ones with small weights off the diagonal.
std::array<int32_t, 9> TwinMatrix(std::mt19937& gen)
{
    std::array<int32_t, 9> m = RandomMatrix(gen);
    const int32_t edges[] = {-501, -500, 0, 499, 500, 1000, 1499, 1500, 64000, -64001};
    switch (gen() % 8) {
        case 0:
            for (int32_t& v : m) v = int32_t(gen()) / int32_t(1 + gen() % 40000);
            break;
        case 1:
        case 2:
        case 3:
            KaipSetSaturationMatrix(gen() % 301, m.data());
            break;
        case 4:
            for (int r = 0; r < 3; ++r) {
                const int32_t diagonal = 1000 + int32_t(gen() % 1501), left = -int32_t(gen() % (diagonal - 999));
                m[4 * r] = diagonal, m[3 * r + (r + 1) % 3] = left, m[3 * r + (r + 2) % 3] = 1000 - diagonal - left;
            }
            break;
        case 5:
            for (int32_t& v : m) v = edges[gen() % std::size(edges)];
            break;
        case 6:
            for (int i : {1, 2, 3, 5, 6, 7}) m[i] %= 500;
            break;
    }
    return m;
}

// The vector workers of the 8-bit formats write exactly the baseline's bytes: every width (every tail),
// both line orders, padded lines, in place and into a sentinel-filled destination, with and without a
// LUT, over the matrices of TwinMatrix.
TEST(ApplyRgbColorCorrection, VectorWorkersWriteTheBaselineBytes)
{
    uint32_t seeds = 40000;
    for (const TCcFormat& f : kFormats) {
        if (f.depth != 8) continue;
        ForEachTwinLine(seeds, [&](uint32_t w, uint32_t flags, uint32_t seed, std::mt19937& gen) {
            const std::array<int32_t, 9> m = TwinMatrix(gen);
            const bool inPlace = gen() % 2, bLut = gen() % 3 == 0;
            SCOPED_TRACE(testing::Message()
                         << "seed " << seed << " format 0x" << std::hex << f.code << std::dec << " width " << w
                         << " flags " << flags << " in place " << inPlace << " lut " << bLut);
            RandomLut lut(8, seed);
            ExpectBaselineBytes([&] { return SourceAndDestination(w, 3, f.code, f.PixelBytes(), flags, seed); },
                                [&](std::vector<std::unique_ptr<GuardedImage>>& images) {
                                    return KaipApplyRgbColorCorrection(&images[0]->info,
                                                                       inPlace ? nullptr : &images[1]->info, m.data(),
                                                                       0, bLut ? lut.Handle() : nullptr);
                                });
        });
    }
}

TEST(ApplyRgbColorCorrection, WorkedValues)
{
    struct Case {
        std::array<int32_t, 9> m;
        std::array<uint8_t, 4> in, out;  // B, G, R, A of one BGRA8 pixel
    };
    const Case cases[] = {
        {{1000, 0, 0, 0, 1000, 0, 0, 0, 1000}, {1, 2, 3, 4}, {1, 2, 3, 4}},  // identity
        {{1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000}, {100, 100, 100, 9}, {255, 255, 255, 9}},
        {{1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000, 1000}, {10, 20, 50, 9}, {80, 80, 80, 9}},
        {{-1000, 0, 0, 0, 1000, 0, 0, 0, 1000}, {7, 8, 200, 9}, {7, 8, 0, 9}},  // negative red clamps to 0
        {{0, 0, 0, 0, 0, 0, 0, 0, 0}, {7, 8, 9, 10}, {0, 0, 0, 10}},
    };
    for (const Case& c : cases) {
        auto image = MakeImage(1, 1, KaipPixelFormat_BGRA8Packed, 4, 0, 0, 0);
        std::copy(c.in.begin(), c.in.end(), image->buffer.data());
        ASSERT_EQ(KaipApplyRgbColorCorrection(&image->info, nullptr, c.m.data(), 0, nullptr), KASTATUS_OK);
        EXPECT_EQ(Bytes(*image), std::vector<uint8_t>(c.out.begin(), c.out.end()));
    }
}

TEST(ApplyRgbColorCorrection, SixteenBitExtremes)
{
    auto image = MakeImage(2, 1, KaipPixelFormat_BGR16, 6, 0, 0, 0, 0xFF);
    const int32_t identity[9] = {1000, 0, 0, 0, 1000, 0, 0, 0, 1000};
    ASSERT_EQ(KaipApplyRgbColorCorrection(&image->info, nullptr, identity, 0, KaipHLut(1)), KASTATUS_OK);
    EXPECT_EQ(Bytes(*image), std::vector<uint8_t>(12, 0xFF));
    // An entry of 1 is the coefficient 65 (65.536 truncated): 65535 x 65 >> 16 = 64, not 65.
    const int32_t tiny[9] = {1, 0, 0, 0, 1000, 0, 0, 0, 1000};
    ASSERT_EQ(KaipApplyRgbColorCorrection(&image->info, nullptr, tiny, 0, nullptr), KASTATUS_OK);
    EXPECT_EQ(GetSample(image->buffer.data(), 2, 2), 64u);
}

TEST(ApplyRgbColorCorrection, ReallocatesAMisfitDestination)
{
    const int32_t m[9] = {900, 50, 50, 100, 800, 100, 0, 300, 700};
    auto src = MakeImage(7, 3, KaipPixelFormat_RGB12Packed, 6, KaipImgFlag_BottomUp, 0, 77);
    std::vector<uint8_t> expected(src->buffer.size());
    ModelCorrection(kFormats[7], src->info, expected, src->info.LineIncrement, m, nullptr);
    KaipImgInfo dst{};
    ASSERT_EQ(
        KaipApplyRgbColorCorrection(&src->info, &dst, m, KaipOption_ReallocateDst | KaipImgFlag_BottomUp, nullptr),
        KASTATUS_OK);
    EXPECT_EQ(dst.Width, 7u);
    EXPECT_EQ(dst.PixelFormat, KaipPixelFormat_RGB12Packed);
    EXPECT_EQ(dst.Flags, KaipImgFlag_BottomUp | KaipImgFlag_DataAllocated);
    EXPECT_EQ(std::vector<uint8_t>(dst.pData, dst.pData + expected.size()), expected);
    EXPECT_EQ(KaipDeallocateImageData(&dst), KASTATUS_OK);
}

TEST(ApplyRgbColorCorrection, Refusals)
{
    const int32_t m[9] = {1000, 0, 0, 0, 1000, 0, 0, 0, 1000};
    RandomLut lut8(8, 5);
    // Each case spoils the valid call (3x2 BGR8 into 3x2 BGR8) in one way (the refusals every image
    // function shares are in the hostile-input test).
    using Spoil = void (*)(KaipImgInfo * &s, KaipImgInfo * &d, const int32_t*& matrix, bool& useLut8);
    const struct Case {
        const char* what;
        KaipStatus status;
        Spoil spoil;
    } cases[] = {
        {"mono source", KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT,
         [](auto& s, auto& d, auto&, auto&) { s->PixelFormat = d->PixelFormat = KaipPixelFormat_Mono8; }},
        {"pixel format", KASTATUS_KAIP_INCOMPATIBLE_SRC_DST_PIXEL_FORMAT,
         [](auto&, auto& d, auto&, auto&) { d->PixelFormat = KaipPixelFormat_RGB8Packed; }},
        {"orientation", KASTATUS_KAIP_INCOMPATIBLE_FLAGS,
         [](auto&, auto& d, auto&, auto&) { d->Flags = KaipImgFlag_BottomUp; }},
        {"null matrix", KASTATUS_KAIP_INVALID_POINTER, [](auto&, auto&, auto& matrix, auto&) { matrix = nullptr; }},
        {"null matrix in place", KASTATUS_KAIP_INVALID_POINTER,
         [](auto&, auto& d, auto& matrix, auto&) { d = nullptr, matrix = nullptr; }},
        {"8-bit LUT for a 10-bit format", KASTATUS_KAIP_INVALID_LUT_TYPE,
         [](auto& s, auto& d, auto&, auto& useLut8) {
             s->PixelFormat = d->PixelFormat = KaipPixelFormat_BGR10Packed;
             s->Width = d->Width = 1;
             useLut8 = true;
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        auto src = MakeImage(3, 2, KaipPixelFormat_BGR8Packed, 3, 0, 0, 9);
        auto dst = MakeImage(3, 2, KaipPixelFormat_BGR8Packed, 3, 0, 0, 0);
        const std::vector<uint8_t> srcBefore = Bytes(*src), dstBefore = Bytes(*dst);
        KaipImgInfo *pSrc = &src->info, *pDst = &dst->info;
        const int32_t* pMatrix = m;
        bool useLut8 = false;
        c.spoil(pSrc, pDst, pMatrix, useLut8);
        EXPECT_EQ(KaipApplyRgbColorCorrection(pSrc, pDst, pMatrix, 0, useLut8 ? lut8.Handle() : nullptr), c.status);
        EXPECT_EQ(Bytes(*src), srcBefore);
        EXPECT_EQ(Bytes(*dst), dstBefore);
    }
    // A destination to be rebuilt in colour planes.
    auto src = MakeImage(3, 2, KaipPixelFormat_BGR8Packed, 3, 0, 0, 9);
    KaipImgInfo fresh{};
    EXPECT_EQ(
        KaipApplyRgbColorCorrection(&src->info, &fresh, m, KaipOption_ReallocateDst | KaipImgFlag_ColorPlanes, nullptr),
        KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED);
    KaipDeallocateImageData(&fresh);
}

TEST(ApplyRgbColorCorrection, LogLines)
{
    auto image = MakeImage(1, 1, KaipPixelFormat_BGR10Packed, 6, 0, 0, 3);
    const int32_t m[9] = {1000, 0, 0, 0, 1000, 0, 0, 0, 1000};
    RandomLut lut8(8, 1);
    LogCapture log;
    EXPECT_EQ(KaipApplyRgbColorCorrection(&image->info, nullptr, nullptr, 0, nullptr), KASTATUS_KAIP_INVALID_POINTER);
    EXPECT_EQ(KaipApplyRgbColorCorrection(&image->info, nullptr, m, 0, lut8.Handle()), KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(KaipSetSaturationMatrix(0, nullptr), KASTATUS_KAIP_INVALID_POINTER);
    EXPECT_EQ(log.Lines(),
              std::vector<std::string>({
                  "KaipApplyRgbColorCorrection: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.",
                  "GetLut10 - error KASTATUS_KAIP_INVALID_LUT_TYPE",
                  "KaipApplyRgbColorCorrection: KASTATUS_KAIP_INVALID_LUT_TYPE",
                  "KaipSetSaturationMatrix: piMatrix is NULL, returning KASTATUS_KAIP_INVALID_POINTER.",
              }));
}

TEST(SetSaturationMatrix, Examples)
{
    const std::pair<uint32_t, std::array<int32_t, 9>> cases[] = {
        {0, {299, 587, 114, 299, 587, 114, 299, 587, 114}},
        {50, {649, 293, 57, 149, 793, 57, 149, 293, 557}},
        {100, {1000, 0, 0, 0, 1000, 0, 0, 0, 1000}},
        {150, {1350, -293, -57, -149, 1206, -57, -149, -293, 1443}},
        {200, {1700, -587, -114, -299, 1412, -114, -299, -587, 1886}},
    };
    for (const auto& [saturation, expected] : cases) {
        std::array<int32_t, 9> m{};
        ASSERT_EQ(KaipSetSaturationMatrix(saturation, m.data()), KASTATUS_OK);
        EXPECT_EQ(m, expected) << "saturation " << saturation;
    }
    EXPECT_EQ(KaipSetSaturationMatrix(100, nullptr), KASTATUS_KAIP_INVALID_POINTER);
}

}  // namespace
