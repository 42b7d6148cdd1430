// matrix_bench.cpp: colour correction and 3x3 convolution on full frames, beside memcpy of the same bytes.
#include <vector>

#include "bench_util.h"
#include "pm.imgproc.h"

#if KAIP_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

// A frame with a mid-grey ramp, so sums land inside the sample range and the clamps do little.
struct TFrame {
    TFrame(uint32_t format, uint32_t pixelBytes)
    {
        KaipInitImgInfo(&src, kFrameWidth, kFrameHeight, format, 0);
        KaipInitImgInfo(&dst, kFrameWidth, kFrameHeight, format, 0);
        KaipAllocateImageData(&src);
        KaipAllocateImageData(&dst);
        const size_t bytes = Bytes();
        for (size_t i = 0; i < bytes; ++i) src.pData[i] = uint8_t(64 + (i * 7 + i / (kFrameWidth * pixelBytes)) % 128);
    }
    ~TFrame()
    {
        KaipDeallocateImageData(&src);
        KaipDeallocateImageData(&dst);
    }
    size_t Bytes() const { return size_t(src.Height) * src.LineIncrement; }
    KaipImgInfo src{}, dst{};
};

constexpr uint64_t kPixels = uint64_t(kFrameWidth) * kFrameHeight;

void ColorCorrection(benchmark::State& state, uint32_t format, uint32_t pixelBytes)
{
    TFrame frame(format, pixelBytes);
    int32_t m[9];
    KaipSetSaturationMatrix(130, m);
    for (auto _ : state) {
        if (KaipApplyRgbColorCorrection(&frame.src, &frame.dst, m, 0, nullptr) != KASTATUS_OK)
            state.SkipWithError("failed");
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, kPixels);
}

void Convolution(benchmark::State& state, uint32_t format, uint32_t pixelBytes, uint32_t sharpenOptions)
{
    TFrame frame(format, pixelBytes);
    int32_t k[9];
    KaipSet3x3MatrixSharpening(40, k, sharpenOptions);
    for (auto _ : state) {
        if (KaipApply3x3Convolution(&frame.src, &frame.dst, k, 0, nullptr) != KASTATUS_OK)
            state.SkipWithError("failed");
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, kPixels);
}

void Memcpy(benchmark::State& state, uint32_t pixelBytes)
{
    MemcpyYardstick(state, kPixels * pixelBytes, kPixels);
}

BENCHMARK_CAPTURE(ColorCorrection, BGR8, KaipPixelFormat_BGR8Packed, 3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Memcpy, BGR8_bytes, 3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ColorCorrection, BGRA8, KaipPixelFormat_BGRA8Packed, 4)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Memcpy, BGRA8_bytes, 4)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Convolution, Mono8_cross, KaipPixelFormat_Mono8, 1, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Convolution, Mono8_full, KaipPixelFormat_Mono8, 1, KaipSharpening_AllNeighbours)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Memcpy, Mono8_bytes, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Convolution, BGR8_cross, KaipPixelFormat_BGR8Packed, 3, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Convolution, BGR8_full, KaipPixelFormat_BGR8Packed, 3, KaipSharpening_AllNeighbours)
    ->Unit(benchmark::kMillisecond);

#if KAIP_BENCH_OPENCV
// The same work in OpenCV: cv::transform with the 3x3 matrix (channels in B, G, R order) and
// cv::filter2D with the kernel over the whole frame.
void OpenCvTransform(benchmark::State& state, int type)
{
    cv::Mat src(int(kFrameHeight), int(kFrameWidth), type, cv::Scalar::all(100)), dst;
    int32_t m[9];
    KaipSetSaturationMatrix(130, m);
    cv::Matx33f bgr;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) bgr(2 - r, 2 - c) = float(m[3 * r + c]) / 1000.f;
    for (auto _ : state) {
        cv::transform(src, dst,
                      type == CV_8UC4 ? cv::Mat(cv::Matx34f(bgr(0, 0), bgr(0, 1), bgr(0, 2), 0, bgr(1, 0), bgr(1, 1),
                                                            bgr(1, 2), 0, bgr(2, 0), bgr(2, 1), bgr(2, 2), 0))
                                      : cv::Mat(bgr));
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, kPixels);
}

void OpenCvFilter2D(benchmark::State& state, int type)
{
    cv::Mat src(int(kFrameHeight), int(kFrameWidth), type, cv::Scalar::all(100)), dst;
    int32_t k[9];
    KaipSet3x3MatrixSharpening(40, k, 0);
    cv::Mat kernel(3, 3, CV_32F);
    for (int i = 0; i < 9; ++i) kernel.at<float>(i / 3, i % 3) = float(k[i]) / 1000.f;
    for (auto _ : state) {
        cv::filter2D(src, dst, -1, kernel);
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, kPixels);
}

BENCHMARK_CAPTURE(OpenCvTransform, BGR8, CV_8UC3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OpenCvTransform, BGRA8, CV_8UC4)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OpenCvFilter2D, Mono8, CV_8UC1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OpenCvFilter2D, BGR8, CV_8UC3)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
