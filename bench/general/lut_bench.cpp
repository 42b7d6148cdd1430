// lut_bench.cpp: KaipApplyLut on Mono8, BGR8Packed and Mono12 frames against cv::LUT and memcpy of the same bytes.
#include <cmath>

#include "geometry_bench_util.h"

#if defined(KAIP_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

struct TCase {
    const char* name;
    uint32_t format, bytes;
    bool bInPlace;
    int channels;  // of the peer's image, 0 when it has none (cv::LUT reads 8-bit images only)
};

// Arguments: width, height.
void Ours(benchmark::State& state, TCase c)
{
    TBenchImage src(uint32_t(state.range(0)), uint32_t(state.range(1)), c.format),
        dst(uint32_t(state.range(0)), uint32_t(state.range(1)), c.format);
    const KaipHLut hLut = KaipAllocateLut(KAIP_LUT_ALL_DEPTHS);
    KaipAddGammaToLut(1800, hLut);
    for (auto _ : state) {
        benchmark::DoNotOptimize(KaipApplyLut(&src.info, c.bInPlace ? nullptr : &dst.info, hLut, 0));
        benchmark::ClobberMemory();
    }
    KaipFreeLut(hLut);
    SetPixelRate(state, uint64_t(state.range(0)) * state.range(1));
}

#if defined(KAIP_BENCH_OPENCV)
void OpenCv(benchmark::State& state, TCase c)
{
    TBenchImage src(uint32_t(state.range(0)), uint32_t(state.range(1)), c.format);
    cv::Mat in(int(state.range(1)), int(state.range(0)), CV_8UC(c.channels), src.info.pData, src.info.LineIncrement),
        out;
    cv::Mat table(1, 256, CV_8UC1);
    for (int i = 0; i < 256; ++i) table.at<uint8_t>(i) = uint8_t(255.0 * std::pow(i / 255.0, 1 / 1.8) + 0.5);
    cv::setNumThreads(1);
    for (auto _ : state) {
        cv::LUT(in, table, c.bInPlace ? in : out);
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, uint64_t(state.range(0)) * state.range(1));
}
#endif

const int kRegistered = [] {
    const TCase cases[] = {
        {"Apply_Mono8", KaipPixelFormat_Mono8, 1, false, 1},
        {"Apply_Mono8_InPlace", KaipPixelFormat_Mono8, 1, true, 1},
        {"Apply_BGR8", KaipPixelFormat_BGR8Packed, 3, false, 3},
        {"Apply_BGR8_InPlace", KaipPixelFormat_BGR8Packed, 3, true, 3},
        {"Apply_Mono12", KaipPixelFormat_Mono12, 2, false, 0},
    };
    for (const TCase& c : cases) {
        FrameSizes(RegisterRole("Lut", c.name, "Ours", [c](benchmark::State& s) {
            Ours(s, c);
        }))->Unit(benchmark::kMicrosecond);
#if defined(KAIP_BENCH_OPENCV)
        if (c.channels > 0) {
            FrameSizes(RegisterRole("Lut", c.name, "OpenCV", [c](benchmark::State& s) {
                OpenCv(s, c);
            }))->Unit(benchmark::kMicrosecond);
        }
#endif
        FrameSizes(RegisterMemcpy("Lut", c.name, c.bytes))->Unit(benchmark::kMicrosecond);
    }
    return 0;
}();

}  // namespace
