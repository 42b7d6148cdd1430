// concurrency_test.cpp: several threads each run a camera pipeline over their own frames at once
// (demosaicing, conversion, colour correction, filters, geometry, LUTs of their own, BMP and JPEG
// files) and must get exactly the single-thread results. Built with ThreadSanitizer (KAIP_TSAN)
// it also shows that a call shares nothing writable with other threads but the global LUT, which
// the pipeline only reads.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "support/guarded.h"

namespace {

constexpr int kThreads = 4;
constexpr int kFrames = 12;
constexpr uint32_t kW = 96, kH = 64;

// The files of one thread of this process.
std::string BaseName(int thread)
{
    return testing::TempDir() + "kaip_concurrency_" + std::to_string(getpid()) + "_" + std::to_string(thread);
}

// FNV-1a over the pixel bytes of every line.
void Hash(uint64_t& h, const KaipImgInfo& img)
{
    const uint32_t lineBytes = img.Width * img.PixelIncrement;
    for (uint32_t y = 0; y < img.Height; ++y)
        for (uint32_t x = 0; x < lineBytes; ++x)
            h = (h ^ img.pData[size_t(y) * img.LineIncrement + x]) * 0x100000001B3ull;
}

// A frame-sized image of zeros.
bool Blank(KaipImgInfo& img, uint32_t format)
{
    if (KaipInitImgInfo(&img, kW, kH, format, 0) != 0 || KaipAllocateImageData(&img) != 0) return false;
    std::memset(img.pData, 0, KaipGetImageDataSize(&img));
    return true;
}

// One frame through the whole pipeline; returns a hash of every intermediate image, or 0 when a
// step fails.
uint64_t RunFrame(int thread, int frame, KaipHLut hLut)
{
    const std::string base = BaseName(thread);
    uint64_t h = 0xCBF29CE484222325ull;
    KaipImgInfo raw{}, bgr{}, rgb{}, mono{}, bgra{}, sharp{}, turned{}, mirrored{}, loadedJpeg{}, loadedBmp{};
    bool ok = KaipInitImgInfo(&raw, kW, kH, KaipPixelFormat_BayerRG8, 0) == 0 && KaipAllocateImageData(&raw) == 0;
    if (ok) FillRandom(raw.pData, KaipGetImageDataSize(&raw), uint32_t(thread * 1000 + frame));
    // The filter leaves the border of its destination as it was, and the conversion from RGB8 the
    // fourth byte of BGRA8 pixels: both start from zeros.
    ok = ok && Blank(sharp, KaipPixelFormat_Mono8) && Blank(bgra, KaipPixelFormat_BGRA8Packed);
    int32_t saturation[9], kernel[9];
    KaipSetSaturationMatrix(140, saturation);
    KaipSet3x3MatrixSharpening(40, kernel, 0);
    const uint32_t realloc = KaipOption_ReallocateDst;
    const KaipStatus steps[] = {
        KaipBdBilinearInterpolation(&raw, &bgr, KaipPixelFormat_BGR8Packed, realloc, KaipHLut(1)),
        KaipBdNearestNeighbour(&raw, &rgb, KaipPixelFormat_RGB8Packed, realloc, hLut),
        KaipApplyRgbColorCorrection(&bgr, nullptr, saturation, 0, hLut),
        KaipApplyLut(&rgb, nullptr, hLut, 0),
        KaipConvertToPixelFormat(&bgr, &mono, KaipPixelFormat_Mono8, realloc),
        KaipConvertToPixelFormat(&rgb, &bgra, KaipPixelFormat_BGRA8Packed, realloc),
        KaipApply3x3Convolution(&mono, &sharp, kernel, realloc, nullptr),
        KaipRotate90AndMirror(&bgra, &turned, 1, 0, 1, realloc, nullptr),
        KaipMirror(&sharp, &mirrored, 1, 1, realloc, KaipHLut(1)),
        KaipDeinterlace(&mirrored, nullptr, 0),
        KaipSaveToJpeg((base + ".jpg").c_str(), &bgr, 85),
        KaipLoadFromJpeg((base + ".jpg").c_str(), &loadedJpeg, realloc | KaipJpegOption_BGR),
        KaipSaveToBmp((base + ".bmp").c_str(), &turned, 0),
        KaipLoadFromBmp((base + ".bmp").c_str(), &loadedBmp, 0),
    };
    for (KaipStatus status : steps) ok = ok && status == 0;
    for (const KaipImgInfo* img : {&bgr, &rgb, &mono, &bgra, &sharp, &turned, &mirrored, &loadedJpeg, &loadedBmp})
        if (ok) Hash(h, *img);
    for (KaipImgInfo* img : {&raw, &bgr, &rgb, &mono, &bgra, &sharp, &turned, &mirrored, &loadedJpeg, &loadedBmp})
        KaipDeallocateImageData(img);
    return ok ? h : 0;
}

// Every frame of one thread, with the thread's own LUT (gamma and white balance built here).
std::vector<uint64_t> RunThread(int thread)
{
    std::vector<uint64_t> hashes;
    KaipHLut hLut = KaipAllocateLut(KAIP_LUT_8BIT | KAIP_LUT_BAYER);
    if (!hLut) return hashes;
    KaipAddGammaToLut(uint32_t(1400 + 100 * thread), hLut);
    KaipAddWbToLut(1100, 1000, 1250, hLut);
    for (int frame = 0; frame < kFrames; ++frame) hashes.push_back(RunFrame(thread, frame, hLut));
    KaipFreeLut(hLut);
    return hashes;
}

TEST(Concurrency, ThreadsGetTheSingleThreadResults)
{
    std::vector<std::vector<uint64_t>> expected;
    for (int t = 0; t < kThreads; ++t) expected.push_back(RunThread(t));
    for (const auto& hashes : expected)
        for (uint64_t h : hashes) ASSERT_NE(h, 0u) << "a pipeline step failed";

    std::vector<std::vector<uint64_t>> actual(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) threads.emplace_back([t, &actual] { actual[t] = RunThread(t); });
    for (std::thread& thread : threads) thread.join();
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(actual[t], expected[t]) << "thread " << t;
    for (int t = 0; t < kThreads; ++t) {
        const std::string base = BaseName(t);
        std::remove((base + ".jpg").c_str());
        std::remove((base + ".bmp").c_str());
    }
}

}  // namespace
