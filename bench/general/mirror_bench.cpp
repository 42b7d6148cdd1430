// mirror_bench.cpp: KaipMirror in each direction, with and without a LUT, and KaipReverseLinesFast, against
// cv::flip, libyuv's mirrors and memcpy of the same bytes.
#include "geometry_bench_util.h"

#if defined(KAIP_BENCH_OPENCV)
#include <opencv2/core.hpp>
#endif

namespace {

struct TCase {
    const char* name;
    uint32_t format, bytes;
    int tb, lr;     // the mirrors
    bool bLut;      // through the global LUT
    bool bInPlace;  // no destination
    bool bReverse;  // KaipReverseLinesFast instead
    int cvFlip;     // cv::flip's code: 0 top-bottom, 1 left-right, -1 both
    int cvType;     // the peer's image type
    TYuvPeer yuv = nullptr;
};

// Arguments: width, height.
void Ours(benchmark::State& state, TCase c)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
    TBenchImage src(w, h, c.format), dst(w, h, c.format);
    const KaipHLut hLut = c.bLut ? reinterpret_cast<KaipHLut>(1) : nullptr;
    KaipImgInfo* pDst = c.bInPlace ? nullptr : &dst.info;
    for (auto _ : state) {
        benchmark::DoNotOptimize(c.bReverse ? KaipReverseLinesFast(&src.info, &dst.info, nullptr, 0)
                                            : KaipMirror(&src.info, pDst, c.tb, c.lr, 0, hLut));
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
        cv::flip(in, out, c.cvFlip);
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
    const uint32_t m8 = KaipPixelFormat_Mono8, bgr = KaipPixelFormat_BGR8Packed, m12 = KaipPixelFormat_Mono12;
    const uint32_t bgra = KaipPixelFormat_BGRA8Packed;
    const TCase cases[] = {
        {"TopBottom_Mono8", m8, 1, 1, 0, false, false, false, 0, mono8},
        {"LeftRight_Mono8", m8, 1, 0, 1, false, false, false, 1, mono8, KAIP_GEOMETRY_LIBYUV(MirrorPlane)},
        {"Both_Mono8", m8, 1, 1, 1, false, false, false, -1, mono8, KAIP_GEOMETRY_LIBYUV(RotatePlane180)},
        {"LeftRight_Mono8_Lut", m8, 1, 0, 1, true, false, false, 1, mono8},
        {"LeftRight_Mono8_InPlace", m8, 1, 0, 1, false, true, false, 1, mono8},
        {"TopBottom_BGR8", bgr, 3, 1, 0, false, false, false, 0, bgr8},
        {"LeftRight_BGR8", bgr, 3, 0, 1, false, false, false, 1, bgr8, KAIP_GEOMETRY_LIBYUV(RGB24Mirror)},
        {"Both_BGR8", bgr, 3, 1, 1, false, false, false, -1, bgr8},
        {"LeftRight_BGRA8", bgra, 4, 0, 1, false, false, false, 1, bgra8, KAIP_GEOMETRY_LIBYUV(ARGBMirror)},
        {"LeftRight_Mono12", m12, 2, 0, 1, false, false, false, 1, mono16},
        {"ReverseLinesFast_Mono8", m8, 1, 0, 0, false, false, true, 0, mono8},
    };
    for (const TCase& c : cases) {
        FrameSizes(RegisterRole("Mirror", c.name, "Ours", [c](benchmark::State& s) {
            Ours(s, c);
        }))->Unit(benchmark::kMicrosecond);
#if defined(KAIP_BENCH_OPENCV)
        FrameSizes(RegisterRole("Mirror", c.name, "OpenCV", [c](benchmark::State& s) {
            OpenCv(s, c);
        }))->Unit(benchmark::kMicrosecond);
#endif
        if (c.yuv)
            FrameSizes(RegisterRole("Mirror", c.name, "libyuv", [c](benchmark::State& s) {
                RunYuvPeer(s, c.format, false, c.yuv);
            }))->Unit(benchmark::kMicrosecond);
        FrameSizes(RegisterMemcpy("Mirror", c.name, c.bytes))->Unit(benchmark::kMicrosecond);
    }
    return 0;
}();

}  // namespace
