// lut_bench.cpp: KaipApplyLut on Mono8, BGR8Packed and Mono12 frames against cv::LUT and memcpy of the same bytes.
#include <cmath>

#include "geometry_bench_util.h"

namespace {

struct TCase {
    const char* name;
    uint32_t format, bytes;
    bool bInPlace;
    int cvType;  // of the peer's image, -1 when it has none (cv::LUT reads 8-bit images only)
};

#if defined(KAIP_BENCH_OPENCV)
// The same gamma of 1.8 as ours, rounded.
void Lut(cv::Mat& in, cv::Mat& out, const TCase& c)
{
    static const cv::Mat table = [] {
        cv::Mat t(1, 256, CV_8UC1);
        for (int i = 0; i < 256; ++i) t.at<uint8_t>(i) = uint8_t(255.0 * std::pow(i / 255.0, 1 / 1.8) + 0.5);
        return t;
    }();
    cv::LUT(in, table, c.bInPlace ? in : out);
}
#endif

const int kRegistered = [] {
    const int mono8 = kCvMono8, bgr8 = kCvBgr8;
    const TCase cases[] = {
        {"Apply_Mono8", KaipPixelFormat_Mono8, 1, false, mono8},
        {"Apply_Mono8_InPlace", KaipPixelFormat_Mono8, 1, true, mono8},
        {"Apply_BGR8", KaipPixelFormat_BGR8Packed, 3, false, bgr8},
        {"Apply_BGR8_InPlace", KaipPixelFormat_BGR8Packed, 3, true, bgr8},
        {"Apply_Mono12", KaipPixelFormat_Mono12, 2, false, -1},
    };
    for (const TCase& c : cases) {
        const TRole ours = [c](benchmark::State& s) {
            const KaipHLut hLut = KaipAllocateLut(KAIP_LUT_ALL_DEPTHS);
            KaipAddGammaToLut(1800, hLut);
            RunOnFrames(s, c.format, false, [&](KaipImgInfo& src, KaipImgInfo& dst) {
                return KaipApplyLut(&src, c.bInPlace ? nullptr : &dst, hLut, 0);
            });
            KaipFreeLut(hLut);
        };
        RegisterCase("Lut", c.name, c.format, c.bytes, false, ours, c.cvType < 0 ? TRole() : KAIP_OPENCV_ROLE(c, Lut),
                     nullptr);
    }
    return 0;
}();

}  // namespace
