// rotate_bench.cpp: the quarter turn of a frame against cv::rotate, libyuv's turns and memcpy of the same bytes.
#include "geometry_bench_util.h"

#if defined(KAIP_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

struct TCase {
    const char* name;
    uint32_t format, bytes;
    bool bClockwise;
    int cvType;  // the peer's image type
    TYuvPeer yuv = nullptr;
};

// Arguments: width, height.
void Ours(benchmark::State& state, TCase c)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
    TBenchImage src(w, h, c.format), dst(h, w, c.format);
    for (auto _ : state) {
        benchmark::DoNotOptimize(KaipRotate90AndMirror(&src.info, &dst.info, c.bClockwise, 0, 0, 0, nullptr));
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, uint64_t(w) * h);
}

#if defined(KAIP_BENCH_OPENCV)
void OpenCv(benchmark::State& state, TCase c)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
    TBenchImage src(w, h, c.format);
    const cv::Mat in(int(h), int(w), c.cvType, src.info.pData, src.info.LineIncrement);
    cv::Mat out;
    cv::setNumThreads(1);
    for (auto _ : state) {
        cv::rotate(in, out, c.bClockwise ? cv::ROTATE_90_CLOCKWISE : cv::ROTATE_90_COUNTERCLOCKWISE);
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, uint64_t(w) * h);
}
#endif

const int kRegistered = [] {
#if defined(KAIP_BENCH_OPENCV)
    const int mono8 = CV_8UC1, bgr8 = CV_8UC3, bgra8 = CV_8UC4, mono16 = CV_16UC1;
#else
    const int mono8 = 0, bgr8 = 0, bgra8 = 0, mono16 = 0;
#endif
    const TCase cases[] = {
        {"Clockwise_Mono8", KaipPixelFormat_Mono8, 1, true, mono8, KAIP_GEOMETRY_LIBYUV(RotatePlane90)},
        {"Anticlockwise_Mono8", KaipPixelFormat_Mono8, 1, false, mono8, KAIP_GEOMETRY_LIBYUV(RotatePlane270)},
        {"Clockwise_Mono12", KaipPixelFormat_Mono12, 2, true, mono16},
        {"Clockwise_BGR8", KaipPixelFormat_BGR8Packed, 3, true, bgr8},
        {"Clockwise_BGRA8", KaipPixelFormat_BGRA8Packed, 4, true, bgra8,
         KAIP_GEOMETRY_LIBYUV(ARGBRotate, libyuv::kRotate90)},
    };
    for (const TCase& c : cases) {
        FrameSizes(RegisterRole("Rotate90", c.name, "Ours", [c](benchmark::State& s) {
            Ours(s, c);
        }))->Unit(benchmark::kMicrosecond);
#if defined(KAIP_BENCH_OPENCV)
        FrameSizes(RegisterRole("Rotate90", c.name, "OpenCV", [c](benchmark::State& s) {
            OpenCv(s, c);
        }))->Unit(benchmark::kMicrosecond);
#endif
        if (c.yuv)
            FrameSizes(RegisterRole("Rotate90", c.name, "libyuv", [c](benchmark::State& s) {
                RunYuvPeer(s, c.format, true, c.yuv);
            }))->Unit(benchmark::kMicrosecond);
        FrameSizes(RegisterMemcpy("Rotate90", c.name, c.bytes))->Unit(benchmark::kMicrosecond);
    }
    return 0;
}();

}  // namespace
