// filters_bench.cpp: shading correction and threshold sharpening on full frames, beside memcpy of the same bytes.
#include <vector>

#include "bench_util.h"
#include "pm.imgproc.h"

namespace {

constexpr uint64_t kPixels = uint64_t(kFrameWidth) * kFrameHeight;

// A frame of one format filled by a byte rule, owned by the benchmark.
struct TImage {
    TImage(uint32_t format, uint8_t (*pfnByte)(size_t))
    {
        KaipInitImgInfo(&info, kFrameWidth, kFrameHeight, format, 0);
        KaipAllocateImageData(&info);
        for (size_t i = 0; i < Bytes(); ++i) info.pData[i] = pfnByte(i);
    }
    ~TImage() { KaipDeallocateImageData(&info); }
    size_t Bytes() const { return size_t(info.Height) * info.LineIncrement; }
    KaipImgInfo info{};
};

// Realistic references: a dark frame near 0 and a flat frame near the top with a vignette-like spread.
uint8_t Scene(size_t i)
{
    return uint8_t(i * 7 + (i >> 11));
}
uint8_t Dark(size_t i)
{
    return uint8_t(i % 5);
}
uint8_t Flat(size_t i)
{
    return uint8_t(200 + (i >> 9) % 50);
}

void Shading(benchmark::State& state, uint32_t format)
{
    TImage src(format, Scene), black(format, Dark), white(format, Flat), dst(format, Dark);
    for (auto _ : state) {
        if (KaipApplyShadingCorrection(&src.info, &black.info, &white.info, &dst.info, 0) != KASTATUS_OK)
            state.SkipWithError("failed");
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, kPixels);
}

// Noise around mid-grey with a few edges, so both sides of the threshold occur.
uint8_t Noisy(size_t i)
{
    return uint8_t(100 + (i * 2654435761u >> 28) + ((i / 97) % 7 == 0 ? 80 : 0));
}

void ThresholdSharpening(benchmark::State& state, uint32_t format)
{
    TImage src(format, Noisy), dst(format, Dark);
    int32_t k[9];
    KaipSet3x3MatrixSharpening(40, k, 0);
    for (auto _ : state) {
        if (Kaip3x3ThresholdSharpening(&src.info, &dst.info, k, 12, 0, nullptr) != KASTATUS_OK)
            state.SkipWithError("failed");
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, kPixels);
}

void FiltersMemcpy(benchmark::State& state, uint32_t pixelBytes)
{
    MemcpyYardstick(state, kPixels * pixelBytes, kPixels);
}

BENCHMARK_CAPTURE(Shading, Mono8, KaipPixelFormat_Mono8)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Shading, BayerRG8, KaipPixelFormat_BayerRG8)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FiltersMemcpy, Mono8_bytes, 1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Shading, Mono12, KaipPixelFormat_Mono12)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FiltersMemcpy, Mono12_bytes, 2)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Shading, BGR8, KaipPixelFormat_BGR8Packed)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FiltersMemcpy, BGR8_bytes, 3)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ThresholdSharpening, Mono8, KaipPixelFormat_Mono8)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ThresholdSharpening, Mono12, KaipPixelFormat_Mono12)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ThresholdSharpening, BGR8, KaipPixelFormat_BGR8Packed)->Unit(benchmark::kMillisecond);

}  // namespace
