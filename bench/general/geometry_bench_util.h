// geometry_bench_util.h: full-frame images and the libyuv peers for the geometry benchmarks.
#pragma once

#include <vector>

#include "bench_util.h"
#include "pm.imgproc.h"

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

// Arguments: width, height. The peer on a frame of the format, into a frame turned a quarter when bTurned.
inline void RunYuvPeer(benchmark::State& state, uint32_t format, bool bTurned, TYuvPeer peer)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
    TBenchImage src(w, h, format), dst(bTurned ? h : w, bTurned ? w : h, format);
    for (auto _ : state) {
        peer(src.info.pData, int(src.info.LineIncrement), dst.info.pData, int(dst.info.LineIncrement), int(w), int(h));
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, uint64_t(w) * h);
}
