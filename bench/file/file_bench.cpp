// file_bench.cpp: saving and loading a full BGR8 and Mono8 frame as BMP, TIFF and JPEG, against memcpy of the bytes.
#include <unistd.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "bench_util.h"
#include "pm.imgproc.h"

#if defined(KAIP_BENCH_OPENCV)  // peers, when OpenCV is available to the benchmark build
#include <opencv2/imgcodecs.hpp>
#endif

namespace {

// A library-allocated frame of smooth content with some noise, as a camera would give.
struct TBenchFrame {
    KaipImgInfo info{};
    TBenchFrame(uint32_t format)
    {
        KaipInitImgInfo(&info, kFrameWidth, kFrameHeight, format, 0);
        KaipAllocateImageData(&info);
        std::mt19937 gen(5);
        for (uint32_t y = 0; y < info.Height; ++y)
            for (uint32_t x = 0; x < info.LineIncrement; ++x)
                info.pData[size_t(y) * info.LineIncrement + x] = uint8_t(x / 8 + y / 8 + (gen() & 7));
    }
    ~TBenchFrame() { KaipDeallocateImageData(&info); }
};

std::string BenchPath(const char* extension)
{
    return (std::filesystem::temp_directory_path() / ("kaip_bench_" + std::to_string(getpid()) + extension)).string();
}

enum TFileKind { kBmp, kTiff, kJpeg };
const char* const kExtensions[] = {".bmp", ".tif", ".jpg"};

KaipStatus Save(TFileKind kind, const std::string& path, const KaipImgInfo& img)
{
    switch (kind) {
        case kBmp:
            return KaipSaveToBmp(path.c_str(), &img, 0);
        case kTiff:
            return KaipSaveToTiff(path.c_str(), &img, 0);
        default:
            return KaipSaveToJpeg(path.c_str(), &img, 90);
    }
}

KaipStatus Load(TFileKind kind, const std::string& path, KaipImgInfo& img, uint32_t presetFormat)
{
    switch (kind) {
        case kBmp:
            return KaipLoadFromBmp(path.c_str(), &img, 0);
        case kTiff:
            img.PixelFormat = presetFormat;
            return KaipLoadFromTiff(path.c_str(), &img);
        default:
            return KaipLoadFromJpeg(path.c_str(), &img, KaipOption_ReallocateDst | 0x4000);
    }
}

void SaveBench(benchmark::State& state, TFileKind kind, uint32_t format)
{
    TBenchFrame frame(format);
    const std::string path = BenchPath(kExtensions[kind]);
    for (auto _ : state) {
        if (Save(kind, path, frame.info) != 0) state.SkipWithError("save failed");
    }
    std::filesystem::remove(path);
    state.SetBytesProcessed(int64_t(frame.info.Height) * frame.info.LineIncrement * state.iterations());
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}

void LoadBench(benchmark::State& state, TFileKind kind, uint32_t format)
{
    TBenchFrame frame(format);
    const std::string path = BenchPath(kExtensions[kind]);
    Save(kind, path, frame.info);
    for (auto _ : state) {
        KaipImgInfo img{};
        if (Load(kind, path, img, format) != 0) state.SkipWithError("load failed");
        KaipDeallocateImageData(&img);
    }
    std::filesystem::remove(path);
    state.SetBytesProcessed(int64_t(frame.info.Height) * frame.info.LineIncrement * state.iterations());
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}

void MemcpyBench(benchmark::State& state, uint32_t bytesPerPixel)
{
    const uint64_t pixels = uint64_t(kFrameWidth) * kFrameHeight;
    MemcpyYardstick(state, size_t(pixels) * bytesPerPixel, pixels);
}

#if defined(KAIP_BENCH_OPENCV)
// OpenCV's codecs on the same frame (its TIFF writer compresses by default).
void OpenCvSaveBench(benchmark::State& state, const char* extension, uint32_t format)
{
    TBenchFrame frame(format);
    const cv::Mat mat(int(kFrameHeight), int(kFrameWidth), format == KaipPixelFormat_Mono8 ? CV_8UC1 : CV_8UC3,
                      frame.info.pData, frame.info.LineIncrement);
    const std::string path = BenchPath(extension);
    const std::vector<int> params{cv::IMWRITE_JPEG_QUALITY, 90};  // ours saves at 90 in this benchmark
    for (auto _ : state) cv::imwrite(path, mat, params);
    std::filesystem::remove(path);
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}
void OpenCvLoadBench(benchmark::State& state, const char* extension, uint32_t format)
{
    TBenchFrame frame(format);
    const cv::Mat mat(int(kFrameHeight), int(kFrameWidth), format == KaipPixelFormat_Mono8 ? CV_8UC1 : CV_8UC3,
                      frame.info.pData, frame.info.LineIncrement);
    const std::string path = BenchPath(extension);
    cv::imwrite(path, mat);
    for (auto _ : state) benchmark::DoNotOptimize(cv::imread(path, cv::IMREAD_UNCHANGED));
    std::filesystem::remove(path);
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}
#endif

// Family File, cases Save<Kind>_<Format> and Load<Kind>_<Format>, roles Ours, OpenCV, Memcpy (see bench_util.h).
const int kRegistered = [] {
    struct TFormat {
        const char* name;
        uint32_t code, bytes;
    };
    const char* const kinds[] = {"Bmp", "Tiff", "Jpeg"};
    for (TFileKind kind : {kBmp, kTiff, kJpeg}) {
        for (TFormat f : {TFormat{"BGR8", KaipPixelFormat_BGR8Packed, 3}, TFormat{"Mono8", KaipPixelFormat_Mono8, 1}}) {
            for (bool bSave : {true, false}) {
                const std::string kase = std::string(bSave ? "Save" : "Load") + kinds[kind] + "_" + f.name;
                RegisterRole("File", kase, "Ours", [=](benchmark::State& s) {
                    bSave ? SaveBench(s, kind, f.code) : LoadBench(s, kind, f.code);
                })->Unit(benchmark::kMillisecond);
#if defined(KAIP_BENCH_OPENCV)
                RegisterRole("File", kase, "OpenCV", [=](benchmark::State& s) {
                    bSave ? OpenCvSaveBench(s, kExtensions[kind], f.code)
                          : OpenCvLoadBench(s, kExtensions[kind], f.code);
                })->Unit(benchmark::kMillisecond);
#endif
                RegisterRole("File", kase, "Memcpy", [=](benchmark::State& s) {
                    MemcpyBench(s, f.bytes);
                })->Unit(benchmark::kMillisecond);
            }
        }
    }
    return 0;
}();

}  // namespace
