// check.h: the common argument checks and the rebuilding of a destination that does not fit.
#pragma once

#include <cstdint>

#include "pm.imgproc.h"

// Masks of pixel-format classes: one bit per family, as tested by the checks.
enum : uint64_t {
    KaipPixelFormatClass_Mono8 = 1ull << 0,  // Mono8 and the 8-bit Bayer codes
    KaipPixelFormatClass_Mono9 = 1ull << 1,
    KaipPixelFormatClass_Mono10 = 1ull << 2,  // Mono10, Bayer10 (destination: also Bayer10Packed)
    KaipPixelFormatClass_Mono11 = 1ull << 3,
    KaipPixelFormatClass_Mono12 = 1ull << 4,  // Mono12, Bayer12 (destination: also Bayer12Packed)
    KaipPixelFormatClass_Mono13 = 1ull << 5,
    KaipPixelFormatClass_Mono14 = 1ull << 6,
    KaipPixelFormatClass_Mono15 = 1ull << 7,
    KaipPixelFormatClass_Mono16 = 1ull << 8,  // Mono16, Bayer16
    KaipPixelFormatClass_BGR555 = 1ull << 9,
    KaipPixelFormatClass_BGR565Packed = 1ull << 10,
    KaipPixelFormatClass_BGR8Packed = 1ull << 11,
    KaipPixelFormatClass_BGRA8Packed = 1ull << 12,
    KaipPixelFormatClass_RGB8Packed = 1ull << 13,
    KaipPixelFormatClass_RGBA8Packed = 1ull << 14,
    KaipPixelFormatClass_YUV411Packed = 1ull << 16,  // YUV411Packed, YCbCr411_8_CbYYCrYY, YCbCr411_8
    KaipPixelFormatClass_YUV422Packed = 1ull << 17,
    KaipPixelFormatClass_YUV422_YUYV_Packed = 1ull << 18,
    KaipPixelFormatClass_YUV444Packed = 1ull << 19,
    KaipPixelFormatClass_YCbCr8 = 1ull << 20,
    KaipPixelFormatClass_YCbCr8_CbYCr = 1ull << 21,
    KaipPixelFormatClass_YCbCr422_8 = 1ull << 22,
    KaipPixelFormatClass_YCbCr422_8_CbYCrY = 1ull << 23,
    KaipPixelFormatClass_YCbCr601_422_8 = 1ull << 24,
    KaipPixelFormatClass_YCbCr601_422_8_CbYCrY = 1ull << 25,
    KaipPixelFormatClass_YCbCr709_422_8 = 1ull << 26,
    KaipPixelFormatClass_YCbCr709_422_8_CbYCrY = 1ull << 27,
    KaipPixelFormatClass_Mono10Packed = 1ull << 28,   // Mono10Packed, Bayer10Packed, Mono10Mipi
    KaipPixelFormatClass_Mono12Packed = 1ull << 29,   // Mono12Packed, Bayer12Packed, Mono12Mipi
    KaipPixelFormatClass_RGB10V1Packed = 1ull << 30,  // RGB10V1Packed, RGB10V2Packed
    KaipPixelFormatClass_BGR10Packed = 1ull << 32,
    KaipPixelFormatClass_RGB10Packed = 1ull << 33,
    KaipPixelFormatClass_BGR12Packed = 1ull << 34,
    KaipPixelFormatClass_RGB12Packed = 1ull << 35,
    KaipPixelFormatClass_BGR16 = 1ull << 36,
    KaipPixelFormatClass_RGB16Packed = 1ull << 37,
};

// Bits of the check word: what source and destination must share.
enum : uint64_t {
    KaipCheck_ColorPlanesAllowed = 0x0001000000000000ull,
    KaipCheck_SameOrientation = 0x0002000000000000ull,
    KaipCheck_SameSize = 0x0100000000000000ull,
    KaipCheck_RotatedSize = 0x0200000000000000ull,
    KaipCheck_SamePixelFormat = 0x0400000000000000ull,
    KaipCheck_DstRequired = 0x0800000000000000ull,
};

// Checks a source and an optional destination in a fixed order, logging each refusal with
// pszFunc first. On success *pbReallocate (if given) tells whether the destination does not
// fit and KaipOption_ReallocateDst lets the caller rebuild it with ReallocateDst.
KaipStatus CheckImgInfos(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, const KaipImgInfo* pDstImgInfo,
                         uint32_t dwOptions, uint64_t qwSrcClassMask, uint32_t dwDstPixelFormat,
                         uint64_t qwDstClassMask, uint64_t qwCheck, uint32_t ChkFlagsMustBeEqual, bool* pbReallocate);

// The source-only part of CheckImgInfos (descriptor, buffers, class, colour planes).
KaipStatus CheckSrcImgInfo(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, uint64_t qwClassMask, uint64_t qwCheck);

// True when a rebuild would free a buffer that the source reads: the destination holds one of
// the source's buffers, allocated by the library, and does not carry KaipImgFlag_NoDeallocate.
bool RebuildFreesSource(const KaipImgInfo* pSrcImgInfo, const KaipImgInfo* pDstImgInfo);

// Rebuilds a destination that does not fit: refuses without KaipOption_ReallocateDst, frees
// its buffers (unless KaipImgFlag_NoDeallocate), initialises it with the options word as
// flags and allocates it. Options asking for colour planes are refused (100015): every function
// writes a rebuilt destination through pData.
KaipStatus ReallocateDst(const char* pszFunc, KaipImgInfo* pDstImgInfo, uint32_t dwWidth, uint32_t dwHeight,
                         uint32_t dwPixelFormat, uint32_t dwOptions);
