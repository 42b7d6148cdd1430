// fill_bench.cpp: KaipFillWithColor on full frames, against memcpy of the same bytes.
#include "geometry_bench_util.h"

namespace {

void BM_FillWithColor(benchmark::State& state)
{
    TBenchImage img(kFrameWidth, kFrameHeight, uint32_t(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(KaipFillWithColor(&img.info, 200, 120, 40));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(img.Size()) * state.iterations());
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_FillWithColor)
    ->ArgName("fmt")
    ->Arg(KaipPixelFormat_Mono8)
    ->Arg(KaipPixelFormat_BayerRG12)
    ->Arg(KaipPixelFormat_BGR8Packed)
    ->Arg(KaipPixelFormat_BGR16)
    ->Unit(benchmark::kMicrosecond);

void BM_FillMemcpy(benchmark::State& state)
{
    MemcpyYardstick(state, size_t(kFrameWidth) * kFrameHeight * state.range(0), uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_FillMemcpy)->ArgName("bytes")->Arg(1)->Arg(2)->Arg(3)->Arg(6)->Unit(benchmark::kMicrosecond);

}  // namespace
