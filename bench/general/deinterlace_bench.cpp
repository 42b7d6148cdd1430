// deinterlace_bench.cpp: KaipDeinterlace in place and into a destination, against memcpy of the same bytes.
#include "geometry_bench_util.h"

namespace {

// Arguments: pixel format, in place (the in-place limit of 8192 bytes holds a 2448-pixel BGR8 line).
void BM_Deinterlace(benchmark::State& state)
{
    const uint32_t format = uint32_t(state.range(0));
    TBenchImage src(kFrameWidth, kFrameHeight, format), dst(kFrameWidth, kFrameHeight, format);
    KaipImgInfo* pDst = state.range(1) ? nullptr : &dst.info;
    for (auto _ : state) {
        benchmark::DoNotOptimize(KaipDeinterlace(&src.info, pDst, 0));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(src.Size()) * state.iterations());
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_Deinterlace)
    ->ArgNames({"fmt", "inplace"})
    ->Args({KaipPixelFormat_Mono8, 0})
    ->Args({KaipPixelFormat_Mono8, 1})
    ->Args({KaipPixelFormat_BGR8Packed, 0})
    ->Args({KaipPixelFormat_BGR565Packed, 0})
    ->Unit(benchmark::kMicrosecond);

void BM_DeinterlaceMemcpy(benchmark::State& state)
{
    MemcpyYardstick(state, size_t(kFrameWidth) * kFrameHeight * state.range(0), uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_DeinterlaceMemcpy)->ArgName("bytes")->Arg(1)->Arg(2)->Arg(3)->Unit(benchmark::kMicrosecond);

}  // namespace
