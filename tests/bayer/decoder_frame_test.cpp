// decoder_frame_test.cpp: the check order, LUT choice, destination rebuild and border shared by the decoders.
#include "bayer/decoder_frame.h"

#include <gtest/gtest.h>

#include <functional>

#include "bayer/bayer_model.h"
#include "support/log_capture.h"

using namespace bayer_model;

namespace {

using Decoder = std::function<KaipStatus(const KaipImgInfo*, KaipImgInfo*, uint32_t, uint32_t, KaipHLut)>;

struct Family {
    const char* name;
    Decoder run;
    uint32_t dstFormat, dstBytes;
    bool border;  // reads one pixel further, so needs 2x2
};

const std::vector<Family>& Families()
{
    static const std::vector<Family> f{
        {"KaipBdShowMosaic", [](auto s, auto d, auto f, auto o, KaipHLut) { return KaipBdShowMosaic(s, d, f, o); },
         KaipPixelFormat_BGR8Packed, 3, false},
        {"KaipBdGreenToGreyscale",
         [](auto s, auto d, auto f, auto o, KaipHLut) { return KaipBdGreenToGreyscale(s, d, f, o); },
         KaipPixelFormat_Mono8, 1, true},
        {"KaipBdNearestNeighbour", KaipBdNearestNeighbour, KaipPixelFormat_RGBA8Packed, 4, true},
        {"KaipBdBilinearInterpolation", KaipBdBilinearInterpolation, KaipPixelFormat_BGRA8Packed, 4, true},
        {"KaipBdVariableGradients", KaipBdVariableGradients, KaipPixelFormat_BGR8Packed, 3, true},
        {"KaipBdPixelGrouping", KaipBdPixelGrouping, KaipPixelFormat_BGRA8Packed, 4, true},
        {"KaipBdBilinearColorCorrection", KaipBdBilinearColorCorrection, KaipPixelFormat_BGR8Packed, 3, true},
    };
    return f;
}

struct Case {
    uint32_t srcFormat;
    uint32_t dstFormat;  // 0: the family's; 1: another the function accepts
    uint32_t options;
    KaipStatus want;
};

// The checks of the decoders' own (null images, missing buffers and other sizes are in tests/hostile);
// each case breaks exactly one rule.
TEST(BayerFrame, ChecksWithTheirStatuses)
{
    const uint32_t rg8 = KaipPixelFormat_BayerRG8;
    std::vector<Case> cases{
        {rg8, KaipPixelFormat_Mono16, KaipOption_ReallocateDst, KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT},
        {rg8, 1, 0, KASTATUS_KAIP_INCOMPATIBLE_DST},
    };
    for (uint32_t format : {KaipPixelFormat_Mono8, KaipPixelFormat_BGR8Packed})
        cases.push_back({format, 0, 0, KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT});
    for (uint32_t format : {KaipPixelFormat_BayerRG16, KaipPixelFormat_BayerRG10Packed, KaipPixelFormat_BayerBG12Packed,
                            KaipPixelFormat_BayerGR10Mipi})
        cases.push_back({format, 0, 0, KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT});
    for (const Family& fam : Families()) {
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(fam.name) + ": source " + std::to_string(c.srcFormat) + " destination " +
                         std::to_string(c.dstFormat));
            GuardedImage src(4, 4, c.srcFormat, 24);
            const uint32_t dstFormat = c.dstFormat == 0 || c.dstFormat == 1 ? fam.dstFormat : c.dstFormat;
            const uint32_t described =
                c.dstFormat == 1 ? (fam.dstFormat == KaipPixelFormat_Mono8        ? KaipPixelFormat_BayerRG8
                                    : fam.dstFormat == KaipPixelFormat_BGR8Packed ? KaipPixelFormat_BGRA8Packed
                                                                                  : KaipPixelFormat_BGR8Packed)
                                 : dstFormat;
            GuardedImage dst(4, 4, described, 16);
            std::memset(dst.buffer.data(), kSentinel, dst.buffer.size());
            EXPECT_EQ(fam.run(&src.info, &dst.info, dstFormat, c.options, nullptr), c.want);
            EXPECT_EQ(dst.info.pData, dst.buffer.data());
            EXPECT_EQ(dst.buffer.data()[0], kSentinel);
        }
    }
}

TEST(BayerFrame, LogsTheRefusalsWithTheFunctionName)
{
    LogCapture log;
    GuardedImage mono(4, 4, KaipPixelFormat_Mono8, 4);
    EXPECT_EQ(KaipBdBilinearInterpolation(nullptr, nullptr, KaipPixelFormat_BGR8Packed, 0, nullptr),
              KASTATUS_KAIP_INVALID_SRC_POINTER);
    EXPECT_EQ(KaipBdShowMosaic(&mono.info, nullptr, KaipPixelFormat_BGR8Packed, 0),
              KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT);
    const std::vector<std::string> want{
        "KaipBdBilinearInterpolation: pSrcImgInfo is NULL!",
        "KaipBdBilinearInterpolation: returning status KASTATUS_KAIP_INVALID_SRC_POINTER",
        "KaipBdShowMosaic: returning status KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT",
    };
    EXPECT_EQ(log.Lines(), want);
}

// Images of one line or column would make the border read outside the image: refused
// before anything is written; the mosaic display has no border and takes them.
TEST(BayerFrame, BorderDecodersRefuseSingleLinesAndColumns)
{
    for (const Family& fam : Families()) {
        for (Size s : {Size{1, 1}, Size{1, 4}, Size{4, 1}, Size{2, 2}}) {
            SCOPED_TRACE(std::string(fam.name) + " " + std::to_string(s.w) + "x" + std::to_string(s.h));
            BayerImage src(s.w, s.h, 8, false, false, 3);
            auto dst = Destination(s.w, s.h, fam.dstFormat, fam.dstBytes);
            const bool refused = fam.border && (s.w < 2 || s.h < 2);
            EXPECT_EQ(fam.run(&src.img->info, &dst->info, fam.dstFormat, 0, nullptr),
                      refused ? KASTATUS_KAIP_NOT_SUPPORTED : KASTATUS_OK);
        }
    }
}

TEST(BayerFrame, NearestNeighbourWantsBayerTablesOnlyAboveEightBits)
{
    for (uint32_t bits : {8u, 10u, 12u}) {
        const KaipHLut plain = KaipAllocateLut(bits);
        BayerImage src(5, 5, bits, true, false, bits);
        auto dst = Destination(5, 5, KaipPixelFormat_BGR8Packed, 3);
        LogCapture log;
        EXPECT_EQ(KaipBdNearestNeighbour(&src.img->info, &dst->info, KaipPixelFormat_BGR8Packed, 0, plain),
                  bits == 8 ? KASTATUS_OK : KASTATUS_KAIP_INVALID_LUT_TYPE);
        if (bits != 8) {
            ASSERT_FALSE(log.Lines().empty());
            EXPECT_EQ(log.Lines().back(),
                      "KaipBdNearestNeighbour: invalid LUT type (not KAIP_LUT_BAYER_16), "
                      "returning KASTATUS_KAIP_INVALID_LUT_TYPE");
        }
        KaipFreeLut(plain);
        const KaipHLut bayerOnly = KaipAllocateLut(bits | KAIP_LUT_BAYER);
        EXPECT_EQ(KaipBdNearestNeighbour(&src.img->info, &dst->info, KaipPixelFormat_BGR8Packed, 0, bayerOnly), 0);
        KaipFreeLut(bayerOnly);
    }
}

// Under KaipOption_ReallocateDst a missing or misfit destination is rebuilt, then decoded as usual (the
// rebuilt descriptor of every image function is pinned in tests/hostile).
TEST(BayerFrame, RebuildsTheDestinationUnderReallocateDst)
{
    BayerImage src(9, 6, 10, true, true, 42);
    const TestLut lut(LutKind::Identity, 0);
    for (bool empty : {true, false}) {
        KaipImgInfo dst{};
        std::unique_ptr<GuardedImage> small;
        if (!empty) {
            small = Destination(3, 3, KaipPixelFormat_RGB8Packed, 3);
            dst = small->info;
            dst.Flags |= KaipImgFlag_NoDeallocate;
        }
        ASSERT_EQ(KaipBdBilinearInterpolation(&src.img->info, &dst, KaipPixelFormat_BGRA8Packed,
                                              KaipOption_ReallocateDst | KaipImgFlag_Align16, nullptr),
                  0);
        EXPECT_EQ(dst.LineIncrement, 48u);
        for (uint32_t i = 0; i < 54; ++i) {
            const Px px = Bilinear(src.m, lut.of(10), i % 9, i / 9);
            const uint8_t* p = dst.pData + i / 9 * dst.LineIncrement + i % 9 * 4;
            ASSERT_TRUE(p[0] == px.b && p[1] == px.g && p[2] == px.r && p[3] == 0) << i % 9 << "," << i / 9;
        }
        EXPECT_EQ(KaipDeallocateImageData(&dst), 0);
    }
}

// A LUT of another depth and colour-plane destinations are refused before anything is written.
TEST(BayerFrame, LutOfAnotherDepthAndColourPlanesAreRefused)
{
    const KaipHLut lut10 = KaipAllocateLut(KAIP_LUT_10BIT | KAIP_LUT_BAYER | KAIP_LUT_BAYER_16);
    BayerImage src(4, 4, 8, false, true, 1);
    auto dst = Destination(4, 4, KaipPixelFormat_BGR8Packed, 3);
    LogCapture log;
    EXPECT_EQ(KaipBdBilinearInterpolation(&src.img->info, &dst->info, KaipPixelFormat_BGR8Packed, 0, lut10),
              KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(log.Lines().back(), "KaipBdBilinearInterpolation: KASTATUS_KAIP_INVALID_LUT_TYPE");
    EXPECT_EQ(KaipBdNearestNeighbour(&src.img->info, &dst->info, KaipPixelFormat_BGR8Packed, 0, lut10),
              KASTATUS_KAIP_INVALID_LUT_TYPE);
    KaipFreeLut(lut10);
    dst->info.Flags |= KaipImgFlag_ColorPlanes;
    dst->info.pDataR = dst->info.pDataG = dst->info.pDataB = dst->buffer.data();
    EXPECT_EQ(KaipBdBilinearInterpolation(&src.img->info, &dst->info, KaipPixelFormat_BGR8Packed, 0, nullptr),
              KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED);
    EXPECT_EQ(FirstDifference(*dst, 3, std::vector<uint8_t>(dst->buffer.size(), kSentinel)), "");
}

// The border alone into Mono8 with a LUT: the green output of (R + G + B) / 3.
TEST(BayerFrame, MonoBorderTakesTheGreenOutputOfTheBlockMean)
{
    const TestLut lut(LutKind::Custom, 99);
    for (uint32_t bits : {8u, 10u, 12u}) {
        for (uint32_t pattern = 0; pattern < 4; ++pattern) {
            BayerImage src(6, 5, bits, pattern & 2, pattern & 1, bits + pattern);
            auto dst = Destination(6, 5, KaipPixelFormat_Mono8, 1);
            CalculateFrame1(src.img->info.pData, 6, 5, src.img->info.LineIncrement, bits, pattern & 2, pattern & 1,
                            dst->info.pData, dst->info.LineIncrement, 8, lut.handle);
            const auto want = Expected(*dst, 1, false, [&](uint32_t x, uint32_t y) {
                if (!IsFrame(src.m, x, y)) return Px{0, kSentinel, 0, true};
                const Rgb s = FrameSamples(src.m, x, y);
                return Px{0, lut.of(bits).c[G][(s.r + s.g + s.b) / 3], 0, true};
            });
            ASSERT_EQ(FirstDifference(*dst, 1, want), "") << "bits " << bits << " pattern " << pattern;
        }
    }
}

}  // namespace
