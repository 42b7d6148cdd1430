// rotate_bench.cpp: the quarter turn of a frame against cv::rotate, libyuv's turns and memcpy of the same bytes.
#include "geometry_bench_util.h"

namespace {

struct TCase {
    const char* name;
    uint32_t format, bytes;
    bool bClockwise;
    int cvType;  // the peer's image type
    TYuvPeer yuv = nullptr;
};

#if defined(KAIP_BENCH_OPENCV)
void Rotate(cv::Mat& in, cv::Mat& out, const TCase& c)
{
    cv::rotate(in, out, c.bClockwise ? cv::ROTATE_90_CLOCKWISE : cv::ROTATE_90_COUNTERCLOCKWISE);
}
#endif

const int kRegistered = [] {
    const int mono8 = kCvMono8, bgr8 = kCvBgr8, bgra8 = kCvBgra8, mono16 = kCvMono16;
    const TCase cases[] = {
        {"Clockwise_Mono8", KaipPixelFormat_Mono8, 1, true, mono8, KAIP_GEOMETRY_LIBYUV(RotatePlane90)},
        {"Anticlockwise_Mono8", KaipPixelFormat_Mono8, 1, false, mono8, KAIP_GEOMETRY_LIBYUV(RotatePlane270)},
        {"Clockwise_Mono12", KaipPixelFormat_Mono12, 2, true, mono16},
        {"Clockwise_BGR8", KaipPixelFormat_BGR8Packed, 3, true, bgr8},
        {"Clockwise_BGRA8", KaipPixelFormat_BGRA8Packed, 4, true, bgra8,
         KAIP_GEOMETRY_LIBYUV(ARGBRotate, libyuv::kRotate90)},
    };
    for (const TCase& c : cases) {
        const TRole ours = [c](benchmark::State& s) {
            RunOnFrames(s, c.format, true, [&c](KaipImgInfo& src, KaipImgInfo& dst) {
                return KaipRotate90AndMirror(&src, &dst, c.bClockwise, 0, 0, 0, nullptr);
            });
        };
        RegisterCase("Rotate90", c.name, c.format, c.bytes, true, ours, KAIP_OPENCV_ROLE(c, Rotate), c.yuv);
    }
    return 0;
}();

}  // namespace
