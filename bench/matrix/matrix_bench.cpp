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

void OpenCvFilter2D(benchmark::State& state, int type, uint32_t sharpenOptions)
{
    cv::Mat src(int(kFrameHeight), int(kFrameWidth), type, cv::Scalar::all(100)), dst;
    int32_t k[9];
    KaipSet3x3MatrixSharpening(40, k, sharpenOptions);
    cv::Mat kernel(3, 3, CV_32F);
    for (int i = 0; i < 9; ++i) kernel.at<float>(i / 3, i % 3) = float(k[i]) / 1000.f;
    for (auto _ : state) {
        cv::filter2D(src, dst, -1, kernel);
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, kPixels);
}

#endif

// Named Family/Case/Role (see bench_util.h) so the report pairs ours with the peer and memcpy.
template <class F>
void Register(const char* family, const char* kase, const char* role, F f)
{
    RegisterRole(family, kase, role, f)->Unit(benchmark::kMillisecond);
}

const int kRegistered = [] {
    struct TCorrection {
        const char* name;
        uint32_t format, bytes;
        int cvType;
    };
    struct TConvolution {
        const char* name;
        uint32_t format, bytes, options;
        int cvType;
    };
#if KAIP_BENCH_OPENCV
    const int bgr8 = CV_8UC3, bgra8 = CV_8UC4, mono8 = CV_8UC1;
#else
    const int bgr8 = 0, bgra8 = 0, mono8 = 0;
#endif
    const uint32_t all = KaipSharpening_AllNeighbours;
    for (TCorrection c : {TCorrection{"BGR8", KaipPixelFormat_BGR8Packed, 3, bgr8},
                          TCorrection{"BGRA8", KaipPixelFormat_BGRA8Packed, 4, bgra8}}) {
        Register("ColorCorrection", c.name, "Ours",
                 [c](benchmark::State& s) { ColorCorrection(s, c.format, c.bytes); });
#if KAIP_BENCH_OPENCV
        Register("ColorCorrection", c.name, "OpenCV", [c](benchmark::State& s) { OpenCvTransform(s, c.cvType); });
#endif
        Register("ColorCorrection", c.name, "Memcpy", [c](benchmark::State& s) { Memcpy(s, c.bytes); });
    }
    for (TConvolution c : {TConvolution{"Mono8_cross", KaipPixelFormat_Mono8, 1, 0, mono8},
                           TConvolution{"Mono8_full", KaipPixelFormat_Mono8, 1, all, mono8},
                           TConvolution{"BGR8_cross", KaipPixelFormat_BGR8Packed, 3, 0, bgr8},
                           TConvolution{"BGR8_full", KaipPixelFormat_BGR8Packed, 3, all, bgr8}}) {
        Register("Convolution", c.name, "Ours",
                 [c](benchmark::State& s) { Convolution(s, c.format, c.bytes, c.options); });
#if KAIP_BENCH_OPENCV
        Register("Convolution", c.name, "OpenCV", [c](benchmark::State& s) { OpenCvFilter2D(s, c.cvType, c.options); });
#endif
        Register("Convolution", c.name, "Memcpy", [c](benchmark::State& s) { Memcpy(s, c.bytes); });
    }
    return 0;
}();

}  // namespace
