// lut_bench.cpp: KaipApplyLut on full frames of Mono8, BGR8Packed and Mono12, against memcpy of the same bytes.
#include <vector>

#include "bench_util.h"
#include "pm.imgproc.h"

namespace {

// Arguments: pixel format, bytes per pixel, in place.
void BM_ApplyLut(benchmark::State& state)
{
    const uint32_t format = uint32_t(state.range(0));
    KaipImgInfo src{}, dst{};
    KaipInitImgInfo(&src, kFrameWidth, kFrameHeight, format, 0);
    KaipInitImgInfo(&dst, kFrameWidth, kFrameHeight, format, 0);
    const size_t bytes = size_t(src.LineIncrement) * kFrameHeight;
    std::vector<uint8_t> srcBytes(bytes), dstBytes(bytes);
    for (size_t i = 0; i < bytes; ++i) srcBytes[i] = uint8_t(i * 7 + (i >> 11));
    src.pData = srcBytes.data();
    dst.pData = dstBytes.data();
    const KaipHLut hLut = KaipAllocateLut(KAIP_LUT_ALL_DEPTHS);
    KaipAddGammaToLut(1800, hLut);
    KaipImgInfo* pDst = state.range(2) ? nullptr : &dst;
    for (auto _ : state) {
        benchmark::DoNotOptimize(KaipApplyLut(&src, pDst, hLut, 0));
        benchmark::ClobberMemory();
    }
    KaipFreeLut(hLut);
    state.SetBytesProcessed(int64_t(bytes) * state.iterations());
    SetPixelRate(state, uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_ApplyLut)
    ->ArgNames({"fmt", "bytes", "inplace"})
    ->Args({KaipPixelFormat_Mono8, 1, 0})
    ->Args({KaipPixelFormat_Mono8, 1, 1})
    ->Args({KaipPixelFormat_BGR8Packed, 3, 0})
    ->Args({KaipPixelFormat_BGR8Packed, 3, 1})
    ->Args({KaipPixelFormat_Mono12, 2, 0})
    ->Args({KaipPixelFormat_Mono12, 2, 1})
    ->Unit(benchmark::kMicrosecond);

// The yardstick: one copy of a frame of 1, 2 and 3 bytes per pixel.
void BM_ApplyLutMemcpy(benchmark::State& state)
{
    MemcpyYardstick(state, size_t(kFrameWidth) * kFrameHeight * state.range(0), uint64_t(kFrameWidth) * kFrameHeight);
}
BENCHMARK(BM_ApplyLutMemcpy)->ArgName("bytes")->Arg(1)->Arg(2)->Arg(3)->Unit(benchmark::kMicrosecond);

}  // namespace
