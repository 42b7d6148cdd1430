// convert_peers.h: the conversions of OpenCV and libyuv that do the work of one of ours, each behind one
// signature: w x h pixels from source lines of srcInc bytes to destination lines of dstInc bytes. A peer
// that is not installed is a null pointer, so a case names its peers whether or not they are there.
#pragma once

#include <cstdint>

#if defined(KAIP_BENCH_OPENCV)
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif
#if defined(KAIP_BENCH_LIBYUV)
#include <libyuv.h>
#endif

namespace convert_peers {

using TPeer = void (*)(const uint8_t* pSrc, int srcInc, uint8_t* pDst, int dstInc, int w, int h);

#if defined(KAIP_BENCH_OPENCV)
// cv::cvtColor with the given code between Mats over the caller's buffers, on one thread.
template <int kCode, int kSrcType, int kDstType>
void CvtColor(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    cv::setNumThreads(1);
    const cv::Mat src(h, w, kSrcType, const_cast<uint8_t*>(s), size_t(si));
    cv::Mat dst(h, w, kDstType, d, size_t(di));
    cv::cvtColor(src, dst, kCode);
}
#define KAIP_OPENCV(code, srcType, dstType) (convert_peers::CvtColor<cv::code, srcType, dstType>)
#else
#define KAIP_OPENCV(code, srcType, dstType) nullptr
#endif

#if defined(KAIP_BENCH_LIBYUV)
// libyuv names byte orders by the little-endian word: its RGB24 is B, G, R in memory, RAW is R, G, B, ARGB
// is B, G, R, A, ABGR is R, G, B, A, RGB565 and ARGB1555 are our BGR565 and BGR555 words; YUY2 is Y0 U Y1 V
// and UYVY is U Y0 V Y1.
template <int (*kFn)(const uint8_t*, int, uint8_t*, int, int, int)>
void Yuv(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    kFn(s, si, d, di, w, h);
}
inline void YuvCopy(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    libyuv::CopyPlane(s, si, d, di, w, h);
}
// 12-bit words to bytes: (v * 4096) >> 16 is v >> 4.
inline void YuvWord12(const uint8_t* s, int si, uint8_t* d, int di, int w, int h)
{
    libyuv::Convert16To8Plane(reinterpret_cast<const uint16_t*>(s), si / 2, d, di, 4096, w, h);
}
#define KAIP_LIBYUV(fn) (convert_peers::Yuv<libyuv::fn>)
#define KAIP_LIBYUV_OWN(fn) (convert_peers::fn)
#else
#define KAIP_LIBYUV(fn) nullptr
#define KAIP_LIBYUV_OWN(fn) nullptr
#endif

}  // namespace convert_peers
