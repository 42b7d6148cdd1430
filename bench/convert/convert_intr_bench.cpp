// convert_intr_bench.cpp: each vector variant through its scalar member as configured ("ours"), the same
// member with every vector switch closed ("scalar"), memcpy of the destination's bytes and, where libyuv
// has an equivalent, libyuv, at a full frame and at 640x480.
#include <cstdlib>
#include <cstring>
#include <string>

#include "bench_util.h"
#include "convert/convert_lines.h"
#include "core/unidef.h"

#ifdef KAIP_BENCH_LIBYUV
#include <libyuv.h>
#endif

namespace {

#define KAIP_LINE_ARGS dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc

using TMember = void (*)(KAIP_LINE_PARAMS, bool);
// A peer converting w x h pixels between lines of the given increments.
using TPeer = void (*)(const uint8_t* pSrc, int srcInc, uint8_t* pDst, int dstInc, int w, int h);

void MonoWord12ToMono8(KAIP_LINE_PARAMS, bool b)
{
    Convert_MonoWord_to_Mono8(KAIP_LINE_ARGS, 12, b);
}
void Packed12ToMono8(KAIP_LINE_PARAMS, bool b)
{
    Convert_MonoPacked_to_Mono8(KAIP_LINE_ARGS, 12, 8, b);
}
void Mipi10ToMono8(KAIP_LINE_PARAMS, bool b)
{
    Convert_MonoMipi_to_Mono8(KAIP_LINE_ARGS, 10, 8, b);
}
void Mipi12ToMono8(KAIP_LINE_PARAMS, bool b)
{
    Convert_MonoMipi_to_Mono8(KAIP_LINE_ARGS, 12, 8, b);
}

#ifdef KAIP_BENCH_LIBYUV
// libyuv names byte orders by the little-endian word: its RGB24 is B, G, R in memory, RAW is R, G, B, ARGB
// is B, G, R, A and ABGR is R, G, B, A.
void YuvCopy(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    libyuv::CopyPlane(s, si, d, di, w, h);
}
void YuvSwap(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    libyuv::RAWToRGB24(s, si, d, di, w, h);
}
void YuvGrey(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    libyuv::J400ToARGB(s, si, d, di, w, h);
}
void YuvBGR24(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    libyuv::RGB24ToARGB(s, si, d, di, w, h);
}
void YuvRGB24(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    libyuv::RAWToARGB(s, si, d, di, w, h);
}
void YuvRGB32(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    libyuv::ARGBToABGR(s, si, d, di, w, h);
}
void YuvWord(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    libyuv::Convert16To8Plane(reinterpret_cast<const uint16_t*>(s), si / 2, d, di, 4096, w, h);  // 12 bits
}
void YuvYuy2(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    libyuv::YUY2ToARGB(s, si, d, di, w, h);
}
#define KAIP_PEER(f) f
#else
#define KAIP_PEER(f) nullptr
#endif

struct TCase {
    const char* name;
    TMember member;
    uint32_t srcBitsPerPixel, dstBytesPerPixel;
    TPeer peer;
};

const TCase kCases[] = {
    {"CopyBitmapData", CopyBitmapData, 8, 1, KAIP_PEER(YuvCopy)},
    {"SwapColor8Data", SwapColor8Data, 24, 3, KAIP_PEER(YuvSwap)},
    {"Mono8_to_BGR24", Convert_Mono8_to_BGR24, 8, 3, nullptr},
    {"Mono8_to_BGR32", Convert_Mono8_to_BGR32, 8, 4, KAIP_PEER(YuvGrey)},
    {"BGR24_to_BGR32", Convert_BGR24_to_BGR32, 24, 4, KAIP_PEER(YuvBGR24)},
    {"RGB24_to_BGR32", Convert_RGB24_to_BGR32, 24, 4, KAIP_PEER(YuvRGB24)},
    {"RGB32_to_BGR32", Convert_RGB32_to_BGR32, 32, 4, KAIP_PEER(YuvRGB32)},
    {"MonoWord12_to_Mono8", MonoWord12ToMono8, 16, 1, KAIP_PEER(YuvWord)},
    {"MonoPacked12_to_Mono8", Packed12ToMono8, 12, 1, nullptr},
    {"MonoMipi10_to_Mono8", Mipi10ToMono8, 10, 1, nullptr},
    {"MonoMipi12_to_Mono8", Mipi12ToMono8, 12, 1, nullptr},
    {"YCbCr422_8_to_BGR24", Convert_YCbCr422_8_to_BGR24, 16, 3, nullptr},
    {"YCbCr422_8_to_RGB24", Convert_YCbCr422_8_to_RGB24, 16, 3, nullptr},
    {"YCbCr422_8_to_BGR32", Convert_YCbCr422_8_to_BGR32, 16, 4, KAIP_PEER(YuvYuy2)},
    {"YCbCr422_8_to_RGB32", Convert_YCbCr422_8_to_RGB32, 16, 4, nullptr},
};

// 64-byte aligned bytes filled with a varied ramp.
struct TBuffer {
    explicit TBuffer(size_t n) : p(static_cast<uint8_t*>(std::aligned_alloc(64, (n + 63) / 64 * 64)))
    {
        for (size_t i = 0; i < n; ++i) p[i] = uint8_t(i * 7 + i / 4099);
    }
    ~TBuffer() { std::free(p); }
    uint8_t* p;
};

enum TWho { kOurs, kScalar, kPeer };

void Convert(benchmark::State& state, const TCase& c, uint32_t w, uint32_t h, TWho who)
{
    const uint32_t srcInc = (w * c.srcBitsPerPixel + 7) / 8, dstInc = w * c.dstBytesPerPixel;
    TBuffer src(size_t(srcInc) * h), dst(size_t(dstInc) * h);
    // The scalar twin: the same member with every vector switch closed for the run.
    const SSEChecker saved = g_SSEChecker;
    if (who == kScalar) {
        g_SSEChecker.m_bUseSSE2 = g_SSEChecker.m_bUseSSSE3 = g_SSEChecker.m_bUseSSE4 = false;
        g_SSEChecker.m_bUseAVX = g_SSEChecker.m_bUseNEON = false;
    }
    for (auto _ : state) {
        if (who == kPeer)
            c.peer(src.p, int(srcInc), dst.p, int(dstInc), int(w), int(h));
        else
            c.member(w, h, src.p, dst.p, srcInc, dstInc, false);
        benchmark::ClobberMemory();
    }
    g_SSEChecker = saved;
    state.SetBytesProcessed(int64_t(dstInc) * h * state.iterations());
    SetPixelRate(state, uint64_t(w) * h);
}

void Memcpy(benchmark::State& state, size_t bytes, uint64_t pixels)
{
    MemcpyYardstick(state, bytes, pixels);
}

const int kRegistered = [] {
    const uint32_t sizes[][2] = {{kFrameWidth, kFrameHeight}, {640, 480}};
    for (const auto& size : sizes) {
        const uint32_t w = size[0], h = size[1];
        const std::string dims = "/" + std::to_string(w) + "x" + std::to_string(h);
        for (uint32_t bytes = 1; bytes <= 4; ++bytes)
            if (bytes != 2)
                benchmark::RegisterBenchmark(("ConvertIntr/memcpy_" + std::to_string(bytes) + "_bytes" + dims).c_str(),
                                             Memcpy, size_t(w) * h * bytes, uint64_t(w) * h)
                    ->Unit(benchmark::kMicrosecond);
        for (const TCase& c : kCases) {
            const std::string name = std::string("ConvertIntr/") + c.name + dims;
            benchmark::RegisterBenchmark((name + "/ours").c_str(), Convert, c, w, h, kOurs)
                ->Unit(benchmark::kMicrosecond);
            benchmark::RegisterBenchmark((name + "/scalar").c_str(), Convert, c, w, h, kScalar)
                ->Unit(benchmark::kMicrosecond);
            if (c.peer)
                benchmark::RegisterBenchmark((name + "/libyuv").c_str(), Convert, c, w, h, kPeer)
                    ->Unit(benchmark::kMicrosecond);
        }
    }
    return 0;
}();

}  // namespace
