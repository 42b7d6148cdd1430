// convert_intr_bench.cpp: each vector variant through its scalar member as configured (Ours), the same member
// with every vector switch closed (scalar), memcpy of the destination's bytes and, where it has an
// equivalent, libyuv, at a full frame and an odd small size.
#include <cstdlib>
#include <string>

#include "bench_util.h"
#include "convert/convert_lines.h"
#include "convert/convert_peers.h"
#include "core/unidef.h"

namespace {

#define KAIP_LINE_ARGS dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc

using convert_peers::TPeer;
using TMember = void (*)(KAIP_LINE_PARAMS, bool);

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

struct TCase {
    const char* name;
    TMember member;
    uint32_t srcBitsPerPixel, dstBytesPerPixel;
    TPeer peer;
};

const TCase kCases[] = {
    {"CopyBitmapData", CopyBitmapData, 8, 1, KAIP_LIBYUV_OWN(YuvCopy)},
    {"SwapColor8Data", SwapColor8Data, 24, 3, KAIP_LIBYUV(RAWToRGB24)},
    {"Mono8_to_BGR24", Convert_Mono8_to_BGR24, 8, 3, nullptr},
    {"Mono8_to_BGR32", Convert_Mono8_to_BGR32, 8, 4, KAIP_LIBYUV(J400ToARGB)},
    {"BGR24_to_BGR32", Convert_BGR24_to_BGR32, 24, 4, KAIP_LIBYUV(RGB24ToARGB)},
    {"RGB24_to_BGR32", Convert_RGB24_to_BGR32, 24, 4, KAIP_LIBYUV(RAWToARGB)},
    {"RGB32_to_BGR32", Convert_RGB32_to_BGR32, 32, 4, KAIP_LIBYUV(ABGRToARGB)},
    {"MonoWord12_to_Mono8", MonoWord12ToMono8, 16, 1, KAIP_LIBYUV_OWN(YuvWord12)},
    {"MonoPacked12_to_Mono8", Packed12ToMono8, 12, 1, nullptr},
    {"MonoMipi10_to_Mono8", Mipi10ToMono8, 10, 1, nullptr},
    {"MonoMipi12_to_Mono8", Mipi12ToMono8, 12, 1, nullptr},
    {"YCbCr422_8_to_BGR24", Convert_YCbCr422_8_to_BGR24, 16, 3, nullptr},
    {"YCbCr422_8_to_RGB24", Convert_YCbCr422_8_to_RGB24, 16, 3, nullptr},
    {"YCbCr422_8_to_BGR32", Convert_YCbCr422_8_to_BGR32, 16, 4, KAIP_LIBYUV(YUY2ToARGB)},
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

// Arguments: width, height.
void Convert(benchmark::State& state, const TCase& c, TWho who)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
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
    SetPixelRate(state, uint64_t(w) * h);
}

const int kRegistered = [] {
    for (const TCase& c : kCases) {
        const auto role = [&c](const char* pszRole, TWho who) {
            FrameSizes(RegisterRole("ConvertIntr", c.name, pszRole, [&c, who](benchmark::State& s) {
                Convert(s, c, who);
            }))->Unit(benchmark::kMicrosecond);
        };
        role("Ours", kOurs);
        role("scalar", kScalar);
        if (c.peer) role("libyuv", kPeer);
        FrameSizes(RegisterMemcpy("ConvertIntr", c.name, c.dstBytesPerPixel))->Unit(benchmark::kMicrosecond);
    }
    return 0;
}();

}  // namespace
