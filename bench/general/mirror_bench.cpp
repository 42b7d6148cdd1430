// mirror_bench.cpp: KaipMirror in each direction, with and without a LUT, and KaipReverseLinesFast, against memcpy.
#include "geometry_bench_util.h"

#if defined(KAIP_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

// Arguments: pixel format, top-bottom, left-right, LUT (0 none, 1 the global LUT), in place.
void BM_Mirror(benchmark::State& state)
{
    const uint32_t format = uint32_t(state.range(0));
    TBenchImage src(kFrameWidth, kFrameHeight, format), dst(kFrameWidth, kFrameHeight, format);
    const KaipHLut hLut = state.range(3) ? reinterpret_cast<KaipHLut>(1) : nullptr;
    KaipImgInfo* pDst = state.range(4) ? nullptr : &dst.info;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            KaipMirror(&src.info, pDst, int32_t(state.range(1)), int32_t(state.range(2)), 0, hLut));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(src.Size()) * state.iterations());
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}

void MirrorArgs(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"fmt", "tb", "lr", "lut", "inplace"});
    for (int64_t format : {KaipPixelFormat_Mono8, KaipPixelFormat_BGR8Packed, KaipPixelFormat_Mono12})
        for (int64_t lut : {0, 1}) {
            b->Args({format, 1, 0, lut, 0});
            b->Args({format, 0, 1, lut, 0});
            b->Args({format, 1, 1, lut, 0});
            b->Args({format, 0, 1, lut, 1});
        }
}
BENCHMARK(BM_Mirror)->Apply(MirrorArgs)->Unit(benchmark::kMicrosecond);

void BM_ReverseLinesFast(benchmark::State& state)
{
    TBenchImage src(kFrameWidth, kFrameHeight, KaipPixelFormat_Mono8),
        dst(kFrameWidth, kFrameHeight, KaipPixelFormat_Mono8);
    for (auto _ : state) {
        benchmark::DoNotOptimize(KaipReverseLinesFast(&src.info, &dst.info, nullptr, 0));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(src.Size()) * state.iterations());
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_ReverseLinesFast)->Unit(benchmark::kMicrosecond);

// The yardstick: one copy of a frame of 1, 2 and 3 bytes per pixel.
void BM_MirrorMemcpy(benchmark::State& state)
{
    MemcpyYardstick(state, size_t(kFrameWidth) * kFrameHeight * state.range(0), uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_MirrorMemcpy)->ArgName("bytes")->Arg(1)->Arg(2)->Arg(3)->Unit(benchmark::kMicrosecond);

#if defined(KAIP_BENCH_OPENCV)
// A peer: OpenCV's flip on the same frame (0 top-bottom, 1 left-right, -1 both).
void BM_MirrorOpenCV(benchmark::State& state)
{
    cv::Mat src(int(kFrameHeight), int(kFrameWidth), CV_8UC1, cv::Scalar(1)), dst;
    for (auto _ : state) cv::flip(src, dst, int(state.range(0)));
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_MirrorOpenCV)->Arg(0)->Arg(1)->Arg(-1)->Unit(benchmark::kMicrosecond);
#endif

}  // namespace
