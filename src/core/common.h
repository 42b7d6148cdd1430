// common.h: the image descriptor's internal operations and the per-format property table.
#pragma once

#include <cstdint>

#include "pm.imgproc.h"

// One row per known pixel format; every property function reads this table.
struct TPixelFormatInfo {
    uint32_t dwCode;
    uint32_t dwPixelIncrement;  // 0: cannot be initialised
    uint32_t dwUsedBits;
    bool bDib;
    int iSrcClass;       // bit of the source class mask, -1: none
    int iDstClass;       // bit of the destination class mask, -1: none
    uint32_t dwBase;     // base format returned by GetFlagsFromPixelFormat
    uint32_t dwPattern;  // Bayer pattern bits or KaipImgFlag_ColorPlanes
    bool bBayer;
    uint32_t dwMono;  // BayerToMonoFormat
};

// The row of a format, or null for an unknown code.
const TPixelFormatInfo* FindPixelFormat(uint32_t dwPixelFormat);

uint32_t GetPixelIncrementFromPixelFormat(uint32_t dwPixelFormat);
uint32_t GetUsedBitsPerPixel(uint32_t dwPixelFormat);
uint32_t IsPixelFormatDibCompatible(uint32_t dwPixelFormat);
uint32_t BayerToMonoFormat(uint32_t dwPixelFormat);
void GetFlagsFromPixelFormat(uint32_t dwPixelFormat, uint32_t& dwBasePixelFormat, uint32_t& dwFlags, bool& bIsBayer);
// Class bits of the checks; -1 when the format has none.
int GetSrcPixelFormatClass(uint32_t dwPixelFormat);
int GetDstPixelFormatClass(uint32_t dwPixelFormat);

// Width, Height, LineIncrement and PixelFormat all non-zero.
bool IsImgInfoInitialized(const KaipImgInfo* pImgInfo);
// Height x LineIncrement without wrapping (per plane in colour-planes mode).
inline uint64_t ImageBytes(const KaipImgInfo& info)
{
    return uint64_t(info.Height) * info.LineIncrement;
}

KaipStatus InitImgInfo(KaipImgInfo* pImgInfo, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwPixelFormat,
                       uint32_t dwFlags);
KaipStatus AllocateImageData(KaipImgInfo* pImgInfo);
void DeallocateImageData(KaipImgInfo* pImgInfo);
