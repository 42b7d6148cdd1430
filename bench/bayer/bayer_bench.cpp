// bayer_bench.cpp: the Bayer decoders at an odd small size and a full frame, against OpenCV's bilinear demosaic
// (with cv::LUT or convertTo where ours also maps through a table or down to 8 bits) and memcpy of the output.
#include <cmath>
#include <random>

#include "bench_util.h"
#include "pm.imgproc.h"

#if defined(KAIP_BENCH_OPENCV)
#include <opencv2/core.hpp>
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

// Which table the decoder maps through: none (null handle), or a gamma LUT object.
enum class TLut { None, Gamma };

struct TCase {
    const char* name;
    TDecoder decode;
    uint32_t srcFormat, dstFormat, dstBytes;
    TLut lut;
};

// Arguments: width, height.
void Ours(benchmark::State& state, TCase c)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
    TBenchImage src(w, h, c.srcFormat), dst(w, h, c.dstFormat);
    KaipHLut hLut = nullptr;
    if (c.lut == TLut::Gamma) {
        hLut = KaipAllocateLut(KAIP_LUT_ALL_DEPTHS | KAIP_LUT_BAYER | KAIP_LUT_BAYER_16);
        KaipAddGammaToLut(1800, hLut);
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(c.decode(&src.info, &dst.info, c.dstFormat, 0, hLut));
        benchmark::ClobberMemory();
    }
    if (hLut) KaipFreeLut(hLut);
    SetPixelRate(state, uint64_t(w) * h);
}

#if defined(KAIP_BENCH_OPENCV)
// OpenCV's bilinear demosaic on one thread, then what ours does on top: cv::LUT for a table,
// convertTo 8 bits for a 12-bit mosaic (OpenCV demosaics it to 16-bit pixels).
void OpenCv(benchmark::State& state, TCase c)
{
    const uint32_t w = uint32_t(state.range(0)), h = uint32_t(state.range(1));
    TBenchImage src(w, h, c.srcFormat);
    const bool bDeep = c.srcFormat == KaipPixelFormat_BayerRG12;
    const cv::Mat mosaic(int(h), int(w), bDeep ? CV_16UC1 : CV_8UC1, src.info.pData, src.info.LineIncrement);
    const int code = c.dstBytes == 3 ? cv::COLOR_BayerRG2BGR : cv::COLOR_BayerRG2BGRA;
    cv::Mat table(1, 256, CV_8UC1);
    for (int i = 0; i < 256; ++i) table.at<uint8_t>(i) = uint8_t(255.0 * std::pow(i / 255.0, 1 / 1.8) + 0.5);
    cv::Mat out, out8, mapped;
    cv::setNumThreads(1);  // one thread, as ours
    for (auto _ : state) {
        cv::cvtColor(mosaic, out, code);
        if (bDeep) out.convertTo(out8, CV_8U, 1.0 / 16);
        if (c.lut == TLut::Gamma) cv::LUT(bDeep ? out8 : out, table, mapped);
        benchmark::ClobberMemory();
    }
    SetPixelRate(state, uint64_t(w) * h);
}
#endif

const int kRegistered = [] {
    const TCase cases[] = {
        {"Bilinear8_BGR8", KaipBdBilinearInterpolation, KaipPixelFormat_BayerRG8, KaipPixelFormat_BGR8Packed, 3,
         TLut::None},
        {"Bilinear8_BGRA8", KaipBdBilinearInterpolation, KaipPixelFormat_BayerRG8, KaipPixelFormat_BGRA8Packed, 4,
         TLut::None},
        {"Bilinear8_BGR8_Lut", KaipBdBilinearInterpolation, KaipPixelFormat_BayerRG8, KaipPixelFormat_BGR8Packed, 3,
         TLut::Gamma},
        {"Bilinear12_BGR8", KaipBdBilinearInterpolation, KaipPixelFormat_BayerRG12, KaipPixelFormat_BGR8Packed, 3,
         TLut::None},
        {"Bilinear12_BGR8_Lut", KaipBdBilinearInterpolation, KaipPixelFormat_BayerRG12, KaipPixelFormat_BGR8Packed, 3,
         TLut::Gamma},
        // The 5x5 decoders, compared with the bilinear cases of the same source, destination and LUT.
        {"ColorCorrection8_BGR8", KaipBdBilinearColorCorrection, KaipPixelFormat_BayerRG8, KaipPixelFormat_BGR8Packed,
         3, TLut::None},
        {"ColorCorrection8_BGR8_Lut", KaipBdBilinearColorCorrection, KaipPixelFormat_BayerRG8,
         KaipPixelFormat_BGR8Packed, 3, TLut::Gamma},
        {"ColorCorrection12_BGR8", KaipBdBilinearColorCorrection, KaipPixelFormat_BayerRG12, KaipPixelFormat_BGR8Packed,
         3, TLut::None},
        {"PixelGrouping8_BGR8", KaipBdPixelGrouping, KaipPixelFormat_BayerRG8, KaipPixelFormat_BGR8Packed, 3,
         TLut::None},
        {"PixelGrouping8_BGR8_Lut", KaipBdPixelGrouping, KaipPixelFormat_BayerRG8, KaipPixelFormat_BGR8Packed, 3,
         TLut::Gamma},
        {"PixelGrouping12_BGR8", KaipBdPixelGrouping, KaipPixelFormat_BayerRG12, KaipPixelFormat_BGR8Packed, 3,
         TLut::None},
        {"VariableGradients8_BGR8", KaipBdVariableGradients, KaipPixelFormat_BayerRG8, KaipPixelFormat_BGR8Packed, 3,
         TLut::None},
        {"VariableGradients8_BGR8_Lut", KaipBdVariableGradients, KaipPixelFormat_BayerRG8, KaipPixelFormat_BGR8Packed,
         3, TLut::Gamma},
        {"VariableGradients12_BGR8", KaipBdVariableGradients, KaipPixelFormat_BayerRG12, KaipPixelFormat_BGR8Packed, 3,
         TLut::None},
        {"Nearest8_BGR8", KaipBdNearestNeighbour, KaipPixelFormat_BayerRG8, KaipPixelFormat_BGR8Packed, 3, TLut::None},
        {"Nearest8_BGRA8", KaipBdNearestNeighbour, KaipPixelFormat_BayerRG8, KaipPixelFormat_BGRA8Packed, 4,
         TLut::None},
    };
    for (const TCase& c : cases) {
        FrameSizes(RegisterRole("Bayer", c.name, "Ours", [c](benchmark::State& s) {
            Ours(s, c);
        }))->Unit(benchmark::kMicrosecond);
#if defined(KAIP_BENCH_OPENCV)
        if (c.decode == KaipBdBilinearInterpolation) {
            FrameSizes(RegisterRole("Bayer", c.name, "OpenCV", [c](benchmark::State& s) {
                OpenCv(s, c);
            }))->Unit(benchmark::kMicrosecond);
        }
#endif
        FrameSizes(RegisterMemcpy("Bayer", c.name, c.dstBytes))->Unit(benchmark::kMicrosecond);
    }
    return 0;
}();

}  // namespace
