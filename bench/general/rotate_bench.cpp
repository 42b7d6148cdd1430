// rotate_bench.cpp: the quarter turn of a full frame against memcpy of the same bytes.
#include "geometry_bench_util.h"

#if defined(KAIP_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

// Arguments: pixel format, clockwise.
void BM_Rotate90(benchmark::State& state)
{
    const uint32_t format = uint32_t(state.range(0));
    TBenchImage src(kFrameWidth, kFrameHeight, format), dst(kFrameHeight, kFrameWidth, format);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            KaipRotate90AndMirror(&src.info, &dst.info, uint32_t(state.range(1)), 0, 0, 0, nullptr));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(src.Size()) * state.iterations());
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_Rotate90)
    ->ArgNames({"fmt", "cw"})
    ->Args({KaipPixelFormat_Mono8, 1})
    ->Args({KaipPixelFormat_Mono8, 0})
    ->Args({KaipPixelFormat_Mono12, 1})
    ->Args({KaipPixelFormat_BGR8Packed, 1})
    ->Args({KaipPixelFormat_BGRA8Packed, 1})
    ->Unit(benchmark::kMicrosecond);

void BM_Rotate90Memcpy(benchmark::State& state)
{
    MemcpyYardstick(state, size_t(kFrameWidth) * kFrameHeight * state.range(0), uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_Rotate90Memcpy)->ArgName("bytes")->Arg(1)->Arg(2)->Arg(3)->Arg(4)->Unit(benchmark::kMicrosecond);

#if defined(KAIP_BENCH_OPENCV)
// A peer: OpenCV's quarter turn of the same frame.
void BM_Rotate90OpenCV(benchmark::State& state)
{
    cv::Mat src(int(kFrameHeight), int(kFrameWidth), CV_8UC1, cv::Scalar(1)), dst;
    for (auto _ : state) cv::rotate(src, dst, cv::ROTATE_90_CLOCKWISE);
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_Rotate90OpenCV)->Unit(benchmark::kMicrosecond);
#endif

}  // namespace
