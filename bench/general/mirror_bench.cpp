// mirror_bench.cpp: KaipMirror in each direction, with and without a LUT, and KaipReverseLinesFast, against
// cv::flip, libyuv's mirrors and memcpy of the same bytes.
#include "geometry_bench_util.h"

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

int Ours(KaipImgInfo& src, KaipImgInfo& dst, const TCase& c)
{
    if (c.bReverse) return KaipReverseLinesFast(&src, &dst, nullptr, 0);
    return KaipMirror(&src, c.bInPlace ? nullptr : &dst, c.tb, c.lr, 0,
                      c.bLut ? reinterpret_cast<KaipHLut>(1) : nullptr);
}

#if defined(KAIP_BENCH_OPENCV)
void Flip(cv::Mat& in, cv::Mat& out, const TCase& c)
{
    cv::flip(in, out, c.cvFlip);
}
#endif

const int kRegistered = [] {
    const uint32_t m8 = KaipPixelFormat_Mono8, bgr = KaipPixelFormat_BGR8Packed, m12 = KaipPixelFormat_Mono12;
    const uint32_t bgra = KaipPixelFormat_BGRA8Packed;
    const int mono8 = kCvMono8, bgr8 = kCvBgr8, bgra8 = kCvBgra8, mono16 = kCvMono16;
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
        const TRole ours = [c](benchmark::State& s) {
            RunOnFrames(s, c.format, false, [&c](KaipImgInfo& src, KaipImgInfo& dst) { return Ours(src, dst, c); });
        };
        RegisterCase("Mirror", c.name, c.format, c.bytes, false, ours, KAIP_OPENCV_ROLE(c, Flip), c.yuv);
    }
    return 0;
}();

}  // namespace
