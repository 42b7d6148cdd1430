// convert_bench.cpp: one conversion per line-converter family on a full frame, beside memcpy of the
// destination's bytes.
#include <vector>

#include "bench_util.h"
#include "pm.imgproc.h"

namespace {

constexpr uint64_t kPixels = uint64_t(kFrameWidth) * kFrameHeight;

// A source filled by hand (YUV, packed and MIPI formats cannot be initialised) with a varied ramp.
void Convert(benchmark::State& state, uint32_t srcFormat, uint32_t srcBitsPerPixel, uint32_t dstFormat)
{
    KaipImgInfo src{}, dst{};
    src.Width = kFrameWidth, src.Height = kFrameHeight, src.PixelFormat = srcFormat;
    src.LineIncrement = (kFrameWidth * srcBitsPerPixel + 7) / 8;
    std::vector<uint8_t> bytes(size_t(src.LineIncrement) * kFrameHeight);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = uint8_t(i * 7 + i / src.LineIncrement);
    src.pData = bytes.data();
    if (KaipConvertToPixelFormat(&src, &dst, dstFormat, KaipOption_ReallocateDst) != KASTATUS_OK) {
        state.SkipWithError("conversion refused");
        return;
    }
    for (auto _ : state) {
        KaipConvertToPixelFormat(&src, &dst, dstFormat, 0);
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, kPixels);
    KaipDeallocateImageData(&dst);
}

void Memcpy(benchmark::State& state, uint32_t dstPixelBytes)
{
    MemcpyYardstick(state, kPixels * dstPixelBytes, kPixels);
}

#define KAIP_CONVERT_BENCH(name, src, bits, dst) \
    BENCHMARK_CAPTURE(Convert, name, KaipPixelFormat_##src, bits, KaipPixelFormat_##dst)->Unit(benchmark::kMillisecond)
#define KAIP_MEMCPY_BENCH(name, bytes) BENCHMARK_CAPTURE(Memcpy, name, bytes)->Unit(benchmark::kMillisecond)

// Destinations of one byte per pixel.
KAIP_MEMCPY_BENCH(dst_1_byte, 1);
KAIP_CONVERT_BENCH(Copy_Mono8, Mono8, 8, Mono8);
KAIP_CONVERT_BENCH(MonoWord_to_Mono8, Mono12, 16, Mono8);
KAIP_CONVERT_BENCH(MonoPacked_to_Mono8, Mono12Packed, 12, Mono8);
KAIP_CONVERT_BENCH(MonoMipi_to_Mono8, Mono10Mipi, 10, Mono8);
KAIP_CONVERT_BENCH(BGR15_to_Mono8, BGR555, 16, Mono8);
KAIP_CONVERT_BENCH(BGR24_to_Mono8, BGR8Packed, 24, Mono8);
KAIP_CONVERT_BENCH(RGB48_to_Mono8, RGB16Packed, 48, Mono8);
KAIP_CONVERT_BENCH(Yuv422_to_Mono8, YUV422Packed, 16, Mono8);

// Two bytes per pixel.
KAIP_MEMCPY_BENCH(dst_2_bytes, 2);
KAIP_CONVERT_BENCH(Mono8_to_MonoWord, Mono8, 8, Mono16);
KAIP_CONVERT_BENCH(MonoWord_to_MonoWord, Mono12, 16, Mono16);
KAIP_CONVERT_BENCH(MonoPacked_to_MonoWord, Mono12Packed, 12, Mono16);
KAIP_CONVERT_BENCH(MonoMipi_to_MonoWord, Mono10Mipi, 10, Mono10);
KAIP_CONVERT_BENCH(BGR24_to_BGR16, BGR8Packed, 24, BGR565Packed);
KAIP_CONVERT_BENCH(BGR16_to_BGR15, BGR565Packed, 16, BGR555);

// Three bytes per pixel.
KAIP_MEMCPY_BENCH(dst_3_bytes, 3);
KAIP_CONVERT_BENCH(SwapColor8, RGB8Packed, 24, BGR8Packed);
KAIP_CONVERT_BENCH(Mono8_to_BGR24, Mono8, 8, BGR8Packed);
KAIP_CONVERT_BENCH(MonoWord_to_BGR24, Mono12, 16, BGR8Packed);
KAIP_CONVERT_BENCH(MonoPacked_to_RGB24, Mono12Packed, 12, RGB8Packed);
KAIP_CONVERT_BENCH(BGR15_to_BGR24, BGR555, 16, BGR8Packed);
KAIP_CONVERT_BENCH(BGR32_to_BGR24, BGRA8Packed, 32, BGR8Packed);
KAIP_CONVERT_BENCH(RGB48_to_BGR24, RGB16Packed, 48, BGR8Packed);
KAIP_CONVERT_BENCH(Yuv411_to_BGR24, YUV411Packed, 12, BGR8Packed);
KAIP_CONVERT_BENCH(Yuv422_to_BGR24, YUV422Packed, 16, BGR8Packed);
KAIP_CONVERT_BENCH(YCbCr422_8_to_BGR24, YCbCr422_8, 16, BGR8Packed);
KAIP_CONVERT_BENCH(Yuv444_to_RGB24, YUV444Packed, 24, RGB8Packed);

// Four bytes per pixel.
KAIP_MEMCPY_BENCH(dst_4_bytes, 4);
KAIP_CONVERT_BENCH(Mono8_to_BGR32, Mono8, 8, BGRA8Packed);
KAIP_CONVERT_BENCH(BGR24_to_BGR32, BGR8Packed, 24, BGRA8Packed);
KAIP_CONVERT_BENCH(RGB24_to_BGR32, RGB8Packed, 24, BGRA8Packed);
KAIP_CONVERT_BENCH(RGB32_to_BGR32, RGBA8Packed, 32, BGRA8Packed);
KAIP_CONVERT_BENCH(YCbCr422_8_to_BGR32, YCbCr422_8, 16, BGRA8Packed);

// Six bytes per pixel.
KAIP_MEMCPY_BENCH(dst_6_bytes, 6);
KAIP_CONVERT_BENCH(Mono8_to_RGB48, Mono8, 8, RGB16Packed);
KAIP_CONVERT_BENCH(RGB24_to_RGB48, RGB8Packed, 24, RGB16Packed);
KAIP_CONVERT_BENCH(RGB30_to_RGB48, RGB10Packed, 48, RGB16Packed);
KAIP_CONVERT_BENCH(SwapColor16, RGB16Packed, 48, BGR16);

}  // namespace
