// bayer_bench.cpp: the Bayer decoders at an odd small size and a full frame, against memcpy of the output.
#include <random>

#include "bench_util.h"
#include "pm.imgproc.h"

#if defined(KAIP_BENCH_OPENCV)
#include <opencv2/imgproc.hpp>
#endif

namespace {

// A library-allocated image of random bytes, freed at the end.
struct TBenchImage {
    KaipImgInfo info{};
    TBenchImage(uint32_t w, uint32_t h, uint32_t format)
    {
        KaipInitImgInfo(&info, w, h, format, 0);
        KaipAllocateImageData(&info);
        std::mt19937 gen(7);
        for (uint64_t i = 0; i < uint64_t(info.Height) * info.LineIncrement; ++i) info.pData[i] = uint8_t(gen());
        // 12-bit samples keep their top four bits clear, as a camera delivers them.
        if (format == KaipPixelFormat_BayerRG12) {
            for (uint64_t i = 1; i < uint64_t(info.Height) * info.LineIncrement; i += 2) info.pData[i] &= 0x0F;
        }
    }
    ~TBenchImage() { KaipDeallocateImageData(&info); }
};

using TDecoder = KaipStatus (*)(const KaipImgInfo*, KaipImgInfo*, uint32_t, uint32_t, KaipHLut);

uint32_t PixelBytes(uint32_t format)
{
    return format == KaipPixelFormat_BGR8Packed || format == KaipPixelFormat_RGB8Packed ? 3 : 4;
}

// Arguments: width, height. The global LUT (handle 1) so every sample goes through a table.
void DecodeBench(benchmark::State& state, TDecoder decode, uint32_t srcFormat, uint32_t dstFormat)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
    TBenchImage src(w, h, srcFormat), dst(w, h, dstFormat);
    const KaipHLut global = reinterpret_cast<KaipHLut>(1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(decode(&src.info, &dst.info, dstFormat, 0, global));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(w) * h * PixelBytes(dstFormat) * state.iterations());
    SetPixelRate(state, uint64_t(w) * h);
}

void MemcpyBench(benchmark::State& state, uint32_t dstBytes)
{
    const uint64_t pixels = uint64_t(state.range(0)) * state.range(1);
    MemcpyYardstick(state, size_t(pixels) * dstBytes, pixels);
}

void Sizes(benchmark::internal::Benchmark* b)
{
    b->ArgNames({"w", "h"})->Args({kSmallWidth, kSmallHeight})->Args({kFrameWidth, kFrameHeight});
    b->Unit(benchmark::kMicrosecond);
}

BENCHMARK_CAPTURE(DecodeBench, Bilinear8_BGR8, KaipBdBilinearInterpolation, KaipPixelFormat_BayerRG8,
                  KaipPixelFormat_BGR8Packed)
    ->Apply(Sizes);
BENCHMARK_CAPTURE(DecodeBench, Bilinear8_BGRA8, KaipBdBilinearInterpolation, KaipPixelFormat_BayerRG8,
                  KaipPixelFormat_BGRA8Packed)
    ->Apply(Sizes);
BENCHMARK_CAPTURE(DecodeBench, Bilinear12_BGR8, KaipBdBilinearInterpolation, KaipPixelFormat_BayerRG12,
                  KaipPixelFormat_BGR8Packed)
    ->Apply(Sizes);
BENCHMARK_CAPTURE(DecodeBench, Nearest8_BGR8, KaipBdNearestNeighbour, KaipPixelFormat_BayerRG8,
                  KaipPixelFormat_BGR8Packed)
    ->Apply(Sizes);
BENCHMARK_CAPTURE(DecodeBench, Nearest8_BGRA8, KaipBdNearestNeighbour, KaipPixelFormat_BayerRG8,
                  KaipPixelFormat_BGRA8Packed)
    ->Apply(Sizes);
BENCHMARK_CAPTURE(MemcpyBench, BGR8_bytes, 3)->Apply(Sizes);
BENCHMARK_CAPTURE(MemcpyBench, BGRA8_bytes, 4)->Apply(Sizes);

#if defined(KAIP_BENCH_OPENCV)
// OpenCV's bilinear demosaic (vectorised, no LUT) on the same frames; 12-bit mosaics stay 16-bit there, so that
// peer writes twice the bytes ours does.
void OpenCvBench(benchmark::State& state, uint32_t srcFormat, int code)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
    TBenchImage src(w, h, srcFormat);
    const cv::Mat mosaic(int(h), int(w), srcFormat == KaipPixelFormat_BayerRG8 ? CV_8UC1 : CV_16UC1, src.info.pData,
                         src.info.LineIncrement);
    cv::Mat out;
    cv::setNumThreads(1);  // one thread, as ours
    for (auto _ : state) {
        cv::cvtColor(mosaic, out, code);
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, uint64_t(w) * h);
}
BENCHMARK_CAPTURE(OpenCvBench, OpenCV_Bilinear8_BGR8, KaipPixelFormat_BayerRG8, cv::COLOR_BayerRG2BGR)->Apply(Sizes);
BENCHMARK_CAPTURE(OpenCvBench, OpenCV_Bilinear8_BGRA8, KaipPixelFormat_BayerRG8, cv::COLOR_BayerRG2BGRA)->Apply(Sizes);
BENCHMARK_CAPTURE(OpenCvBench, OpenCV_Bilinear12_BGR16, KaipPixelFormat_BayerRG12, cv::COLOR_BayerRG2BGR)->Apply(Sizes);
#endif

}  // namespace
