// convert_bench.cpp: KaipConvertToPixelFormat, one case per line-converter family, at a full frame and an
// odd small size, beside memcpy of the destination's bytes and the OpenCV and libyuv conversions that do
// the same work.
#include <cstdlib>

#include "bench_util.h"
#include "convert/convert_peers.h"
#include "pm.imgproc.h"

namespace {

using convert_peers::TPeer;

struct TCase {
    const char* name;
    uint32_t srcFormat, srcBitsPerPixel, dstFormat;
    double dstBytesPerPixel;
    TPeer opencv, libyuv;
};

#define KAIP_PF(f) KaipPixelFormat_##f
const TCase kCases[] = {
    // One byte per destination pixel.
    {"Mono8_Mono8", KAIP_PF(Mono8), 8, KAIP_PF(Mono8), 1, nullptr, KAIP_LIBYUV_OWN(YuvCopy)},
    {"Mono12_Mono8", KAIP_PF(Mono12), 16, KAIP_PF(Mono8), 1, nullptr, KAIP_LIBYUV_OWN(YuvWord12)},
    {"Mono12Packed_Mono8", KAIP_PF(Mono12Packed), 12, KAIP_PF(Mono8), 1, nullptr, nullptr},
    {"Mono10Mipi_Mono8", KAIP_PF(Mono10Mipi), 10, KAIP_PF(Mono8), 1, nullptr, nullptr},
    {"BGR555_Mono8", KAIP_PF(BGR555), 16, KAIP_PF(Mono8), 1, KAIP_OPENCV(COLOR_BGR5552GRAY, CV_8UC2, CV_8UC1), nullptr},
    {"BGR8_Mono8", KAIP_PF(BGR8Packed), 24, KAIP_PF(Mono8), 1, KAIP_OPENCV(COLOR_BGR2GRAY, CV_8UC3, CV_8UC1), nullptr},
    {"RGB8_Mono8", KAIP_PF(RGB8Packed), 24, KAIP_PF(Mono8), 1, KAIP_OPENCV(COLOR_RGB2GRAY, CV_8UC3, CV_8UC1), nullptr},
    {"BGRA8_Mono8", KAIP_PF(BGRA8Packed), 32, KAIP_PF(Mono8), 1, KAIP_OPENCV(COLOR_BGRA2GRAY, CV_8UC4, CV_8UC1),
     nullptr},
    {"RGB16_Mono8", KAIP_PF(RGB16Packed), 48, KAIP_PF(Mono8), 1, nullptr, nullptr},
    {"YUV422_Mono8", KAIP_PF(YUV422Packed), 16, KAIP_PF(Mono8), 1, KAIP_OPENCV(COLOR_YUV2GRAY_UYVY, CV_8UC2, CV_8UC1),
     nullptr},
    // Two bytes.
    {"Mono8_Mono16", KAIP_PF(Mono8), 8, KAIP_PF(Mono16), 2, nullptr, nullptr},
    {"Mono12_Mono16", KAIP_PF(Mono12), 16, KAIP_PF(Mono16), 2, nullptr, nullptr},
    {"Mono12Packed_Mono16", KAIP_PF(Mono12Packed), 12, KAIP_PF(Mono16), 2, nullptr, nullptr},
    {"Mono10Mipi_Mono10", KAIP_PF(Mono10Mipi), 10, KAIP_PF(Mono10), 2, nullptr, nullptr},
    {"BGR8_BGR565", KAIP_PF(BGR8Packed), 24, KAIP_PF(BGR565Packed), 2, KAIP_OPENCV(COLOR_BGR2BGR565, CV_8UC3, CV_8UC2),
     nullptr},
    {"BGRA8_BGR565", KAIP_PF(BGRA8Packed), 32, KAIP_PF(BGR565Packed), 2,
     KAIP_OPENCV(COLOR_BGRA2BGR565, CV_8UC4, CV_8UC2), KAIP_LIBYUV(ARGBToRGB565)},
    {"BGR565_BGR555", KAIP_PF(BGR565Packed), 16, KAIP_PF(BGR555), 2, nullptr, nullptr},
    // Three bytes.
    {"RGB8_BGR8", KAIP_PF(RGB8Packed), 24, KAIP_PF(BGR8Packed), 3, KAIP_OPENCV(COLOR_RGB2BGR, CV_8UC3, CV_8UC3),
     KAIP_LIBYUV(RAWToRGB24)},
    {"Mono8_BGR8", KAIP_PF(Mono8), 8, KAIP_PF(BGR8Packed), 3, KAIP_OPENCV(COLOR_GRAY2BGR, CV_8UC1, CV_8UC3), nullptr},
    {"Mono12_BGR8", KAIP_PF(Mono12), 16, KAIP_PF(BGR8Packed), 3, nullptr, nullptr},
    {"Mono12Packed_RGB8", KAIP_PF(Mono12Packed), 12, KAIP_PF(RGB8Packed), 3, nullptr, nullptr},
    {"BGR555_BGR8", KAIP_PF(BGR555), 16, KAIP_PF(BGR8Packed), 3, KAIP_OPENCV(COLOR_BGR5552BGR, CV_8UC2, CV_8UC3),
     nullptr},
    {"BGR565_BGR8", KAIP_PF(BGR565Packed), 16, KAIP_PF(BGR8Packed), 3, KAIP_OPENCV(COLOR_BGR5652BGR, CV_8UC2, CV_8UC3),
     nullptr},
    {"BGRA8_BGR8", KAIP_PF(BGRA8Packed), 32, KAIP_PF(BGR8Packed), 3, KAIP_OPENCV(COLOR_BGRA2BGR, CV_8UC4, CV_8UC3),
     KAIP_LIBYUV(ARGBToRGB24)},
    {"RGB16_BGR8", KAIP_PF(RGB16Packed), 48, KAIP_PF(BGR8Packed), 3, nullptr, nullptr},
    {"YUV411_BGR8", KAIP_PF(YUV411Packed), 12, KAIP_PF(BGR8Packed), 3, nullptr, nullptr},
    {"YUV422_BGR8", KAIP_PF(YUV422Packed), 16, KAIP_PF(BGR8Packed), 3,
     KAIP_OPENCV(COLOR_YUV2BGR_UYVY, CV_8UC2, CV_8UC3), nullptr},
    {"YCbCr422_8_BGR8", KAIP_PF(YCbCr422_8), 16, KAIP_PF(BGR8Packed), 3,
     KAIP_OPENCV(COLOR_YUV2BGR_YUY2, CV_8UC2, CV_8UC3), nullptr},
    {"YUV444_RGB8", KAIP_PF(YUV444Packed), 24, KAIP_PF(RGB8Packed), 3, nullptr, nullptr},
    // Four bytes.
    {"Mono8_BGRA8", KAIP_PF(Mono8), 8, KAIP_PF(BGRA8Packed), 4, KAIP_OPENCV(COLOR_GRAY2BGRA, CV_8UC1, CV_8UC4),
     KAIP_LIBYUV(J400ToARGB)},
    {"BGR8_BGRA8", KAIP_PF(BGR8Packed), 24, KAIP_PF(BGRA8Packed), 4, KAIP_OPENCV(COLOR_BGR2BGRA, CV_8UC3, CV_8UC4),
     KAIP_LIBYUV(RGB24ToARGB)},
    {"RGB8_BGRA8", KAIP_PF(RGB8Packed), 24, KAIP_PF(BGRA8Packed), 4, KAIP_OPENCV(COLOR_RGB2BGRA, CV_8UC3, CV_8UC4),
     KAIP_LIBYUV(RAWToARGB)},
    {"RGBA8_BGRA8", KAIP_PF(RGBA8Packed), 32, KAIP_PF(BGRA8Packed), 4, KAIP_OPENCV(COLOR_RGBA2BGRA, CV_8UC4, CV_8UC4),
     KAIP_LIBYUV(ABGRToARGB)},
    {"BGR555_BGRA8", KAIP_PF(BGR555), 16, KAIP_PF(BGRA8Packed), 4, KAIP_OPENCV(COLOR_BGR5552BGRA, CV_8UC2, CV_8UC4),
     KAIP_LIBYUV(ARGB1555ToARGB)},
    {"BGR565_BGRA8", KAIP_PF(BGR565Packed), 16, KAIP_PF(BGRA8Packed), 4,
     KAIP_OPENCV(COLOR_BGR5652BGRA, CV_8UC2, CV_8UC4), KAIP_LIBYUV(RGB565ToARGB)},
    {"YUV411_BGRA8", KAIP_PF(YUV411Packed), 12, KAIP_PF(BGRA8Packed), 4, nullptr, nullptr},
    {"YUV422_BGRA8", KAIP_PF(YUV422Packed), 16, KAIP_PF(BGRA8Packed), 4,
     KAIP_OPENCV(COLOR_YUV2BGRA_UYVY, CV_8UC2, CV_8UC4), KAIP_LIBYUV(UYVYToARGB)},
    {"YCbCr422_8_BGRA8", KAIP_PF(YCbCr422_8), 16, KAIP_PF(BGRA8Packed), 4,
     KAIP_OPENCV(COLOR_YUV2BGRA_YUY2, CV_8UC2, CV_8UC4), KAIP_LIBYUV(YUY2ToARGB)},
    {"YUV422yuyv_BGRA8", KAIP_PF(YUV422_YUYV_Packed), 16, KAIP_PF(BGRA8Packed), 4,
     KAIP_OPENCV(COLOR_YUV2BGRA_YUY2, CV_8UC2, CV_8UC4), KAIP_LIBYUV(YUY2ToARGB)},
    // Six bytes.
    {"Mono8_RGB16", KAIP_PF(Mono8), 8, KAIP_PF(RGB16Packed), 6, nullptr, nullptr},
    {"RGB8_RGB16", KAIP_PF(RGB8Packed), 24, KAIP_PF(RGB16Packed), 6, nullptr, nullptr},
    {"RGB10_RGB16", KAIP_PF(RGB10Packed), 48, KAIP_PF(RGB16Packed), 6, nullptr, nullptr},
    {"RGB16_BGR16", KAIP_PF(RGB16Packed), 48, KAIP_PF(BGR16), 6, nullptr, nullptr},
};
#undef KAIP_PF

// A source of w x h pixels filled by hand (YUV, packed and MIPI formats cannot be initialised) with a varied
// ramp, on 64 bytes, and the destination the library allocates for it.
struct TFrames {
    KaipImgInfo src{}, dst{};
    uint8_t* pBytes = nullptr;
    TFrames(const TCase& c, uint32_t w, uint32_t h)
    {
        src.Width = w, src.Height = h, src.PixelFormat = c.srcFormat;
        src.LineIncrement = (w * c.srcBitsPerPixel + 7) / 8;
        const size_t n = size_t(src.LineIncrement) * h;
        pBytes = static_cast<uint8_t*>(std::aligned_alloc(64, (n + 63) / 64 * 64));
        for (size_t i = 0; i < n; ++i) pBytes[i] = uint8_t(i * 7 + i / src.LineIncrement);
        src.pData = pBytes;
    }
    ~TFrames()
    {
        KaipDeallocateImageData(&dst);
        std::free(pBytes);
    }
};

// Arguments: width, height. With a peer, the peer converts the same buffers instead of ours.
void Convert(benchmark::State& state, const TCase& c, TPeer peer)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
    TFrames f(c, w, h);
    if (KaipConvertToPixelFormat(&f.src, &f.dst, c.dstFormat, KaipOption_ReallocateDst) != KASTATUS_OK) {
        state.SkipWithError("conversion refused");
        return;
    }
    for (auto _ : state) {
        if (peer)
            peer(f.src.pData, int(f.src.LineIncrement), f.dst.pData, int(f.dst.LineIncrement), int(w), int(h));
        else
            KaipConvertToPixelFormat(&f.src, &f.dst, c.dstFormat, 0);
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, uint64_t(w) * h);
}

const int kRegistered = [] {
    for (const TCase& c : kCases) {
        const auto role = [&c](const char* pszRole, TPeer peer) {
            FrameSizes(RegisterRole("Convert", c.name, pszRole, [&c, peer](benchmark::State& s) {
                Convert(s, c, peer);
            }))->Unit(benchmark::kMicrosecond);
        };
        role("Ours", nullptr);
        if (c.opencv) role("OpenCV", c.opencv);
        if (c.libyuv) role("libyuv", c.libyuv);
        FrameSizes(RegisterMemcpy("Convert", c.name, c.dstBytesPerPixel))->Unit(benchmark::kMicrosecond);
    }
    return 0;
}();

}  // namespace
