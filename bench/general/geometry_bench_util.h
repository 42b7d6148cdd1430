// geometry_bench_util.h: full-frame images, the roles of a case and their peers for the LUT and geometry benchmarks.
#pragma once

#include <functional>
#include <vector>

#include "bench_util.h"
#include "pm.imgproc.h"

#if defined(KAIP_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif
#if defined(KAIP_BENCH_LIBYUV)
#include <libyuv.h>
#endif

// A frame of the given format over a vector the benchmark owns.
struct TBenchImage {
    TBenchImage(uint32_t width, uint32_t height, uint32_t format)
    {
        KaipInitImgInfo(&info, width, height, format, 0);
        bytes.assign(size_t(info.LineIncrement) * height, 0x5A);
        for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = uint8_t(i * 7 + (i >> 11));
        info.pData = bytes.data();
    }
    size_t Size() const { return bytes.size(); }
    KaipImgInfo info{};
    std::vector<uint8_t> bytes;
};

// Arguments: width, height. call(src, dst) on a frame of the format and a destination of the same
// format, turned a quarter when bTurned.
template <class Call>
void RunOnFrames(benchmark::State& state, uint32_t format, bool bTurned, Call call)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
    TBenchImage src(w, h, format), dst(bTurned ? h : w, bTurned ? w : h, format);
    for (auto _ : state) {
        benchmark::DoNotOptimize(call(src.info, dst.info));
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, uint64_t(w) * h);
}

// A libyuv call that mirrors or turns w x h pixels from source lines of si bytes to destination lines of
// di bytes; a case without one (or without libyuv installed) names a null pointer.
using TYuvPeer = void (*)(const uint8_t* s, int si, uint8_t* d, int di, int w, int h);
#if defined(KAIP_BENCH_LIBYUV)
// libyuv's fn, with any further arguments (a turn's mode) after the six common ones.
template <auto kFn, auto... kMore>
void Yuv(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    kFn(s, si, d, di, w, h, kMore...);
}
#define KAIP_GEOMETRY_LIBYUV(fn, ...) (Yuv<libyuv::fn, ##__VA_ARGS__>)
#else
#define KAIP_GEOMETRY_LIBYUV(fn, ...) nullptr
#endif

// The OpenCV image types of the benchmarks' formats (zeros in a build without OpenCV).
#if defined(KAIP_BENCH_OPENCV)
constexpr int kCvMono8 = CV_8UC1, kCvBgr8 = CV_8UC3, kCvBgra8 = CV_8UC4, kCvMono16 = CV_16UC1;
#else
constexpr int kCvMono8 = 0, kCvBgr8 = 0, kCvBgra8 = 0, kCvMono16 = 0;
#endif

// One role of a case, run at both frame sizes; empty for a peer the build or the case lacks.
using TRole = std::function<void(benchmark::State&)>;

#if defined(KAIP_BENCH_OPENCV)
// Arguments: width, height. op(in, out) on a frame of the format seen as an OpenCV image of cvType (one thread,
// set once for the binary in bench_main.cpp).
template <class Op>
void RunOpenCv(benchmark::State& state, uint32_t format, int cvType, Op op)
{
    TBenchImage src(uint32_t(state.range(0)), uint32_t(state.range(1)), format);
    cv::Mat in(int(src.info.Height), int(src.info.Width), cvType, src.info.pData, src.info.LineIncrement), out;
    for (auto _ : state) {
        op(in, out);
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, uint64_t(src.info.Width) * src.info.Height);
}
// The OpenCV role: op(in, out, c) on a frame of the case's format and cvType.
#define KAIP_OPENCV_ROLE(c, op)                                                                \
    TRole([c](benchmark::State& s) {                                                           \
        RunOpenCv(s, c.format, c.cvType, [&c](cv::Mat& in, cv::Mat& out) { op(in, out, c); }); \
    })
#else
#define KAIP_OPENCV_ROLE(c, op) TRole()
#endif

// Registers Family/Case/Ours, then OpenCV and libyuv where there are calls (libyuv's into a frame turned
// a quarter when bTurned), then memcpy of `bytes` per pixel; every role at both frame sizes.
inline void RegisterCase(const char* family, const char* kase, uint32_t format, double bytes, bool bTurned, TRole ours,
                         TRole openCv, TYuvPeer yuv)
{
    auto frames = [&](const char* role, TRole fn) {
        FrameSizes(RegisterRole(family, kase, role, fn))->Unit(benchmark::kMicrosecond);
    };
    frames("Ours", ours);
    if (openCv) frames("OpenCV", openCv);
    if (yuv) {
        frames("libyuv", [=](benchmark::State& s) {
            RunOnFrames(s, format, bTurned, [&](KaipImgInfo& src, KaipImgInfo& dst) {
                yuv(src.pData, int(src.LineIncrement), dst.pData, int(dst.LineIncrement), int(src.Width),
                    int(src.Height));
                return 0;
            });
        });
    }
    FrameSizes(RegisterMemcpy(family, kase, bytes))->Unit(benchmark::kMicrosecond);
}
