// common.cpp: the pixel-format table and the descriptor's init, allocation and release.
#include "core/common.h"

#include <initializer_list>

#include "core/log.h"
#include "platform/os_buffer.h"

namespace {

constexpr uint32_t kGR = KaipImgFlag_BayerShiftColumn;
constexpr uint32_t kGB = KaipImgFlag_BayerShiftLine;
constexpr uint32_t kBG = KaipImgFlag_BayerShiftLine | KaipImgFlag_BayerShiftColumn;
constexpr uint32_t kPlanes = KaipImgFlag_ColorPlanes;
constexpr uint32_t kImageAlignment = 64;

// Code, pixel increment (0: cannot be initialised), used bits, DIB-compatible, source class,
// destination class (-1: none), base format and pattern bits of GetFlagsFromPixelFormat, Bayer,
// BayerToMonoFormat. The packed Bayer codes count as their unpacked depth when requested as a
// destination; the MIPI Bayer codes map to Mono10Mipi as a base but stay themselves as a mono.
constexpr TPixelFormatInfo kPixelFormats[] = {
    {KaipPixelFormat_Mono8, 1, 8, true, 0, 0, KaipPixelFormat_Mono8, 0, false, KaipPixelFormat_Mono8},
    {KaipPixelFormat_BayerGR8, 1, 8, true, 0, 0, KaipPixelFormat_Mono8, kGR, true, KaipPixelFormat_Mono8},
    {KaipPixelFormat_BayerRG8, 1, 8, true, 0, 0, KaipPixelFormat_Mono8, 0, true, KaipPixelFormat_Mono8},
    {KaipPixelFormat_BayerGB8, 1, 8, true, 0, 0, KaipPixelFormat_Mono8, kGB, true, KaipPixelFormat_Mono8},
    {KaipPixelFormat_BayerBG8, 1, 8, true, 0, 0, KaipPixelFormat_Mono8, kBG, true, KaipPixelFormat_Mono8},
    {KaipPixelFormat_Mono9, 2, 9, false, 1, 1, KaipPixelFormat_Mono9, 0, false, KaipPixelFormat_Mono9},
    {KaipPixelFormat_Mono10, 2, 10, false, 2, 2, KaipPixelFormat_Mono10, 0, false, KaipPixelFormat_Mono10},
    {KaipPixelFormat_BayerGR10, 2, 10, false, 2, 2, KaipPixelFormat_Mono10, kGR, true, KaipPixelFormat_Mono10},
    {KaipPixelFormat_BayerRG10, 2, 10, false, 2, 2, KaipPixelFormat_Mono10, 0, true, KaipPixelFormat_Mono10},
    {KaipPixelFormat_BayerGB10, 2, 10, false, 2, 2, KaipPixelFormat_Mono10, kGB, true, KaipPixelFormat_Mono10},
    {KaipPixelFormat_BayerBG10, 2, 10, false, 2, 2, KaipPixelFormat_Mono10, kBG, true, KaipPixelFormat_Mono10},
    {KaipPixelFormat_Mono11, 2, 11, false, 3, 3, KaipPixelFormat_Mono11, 0, false, KaipPixelFormat_Mono11},
    {KaipPixelFormat_Mono12, 2, 12, false, 4, 4, KaipPixelFormat_Mono12, 0, false, KaipPixelFormat_Mono12},
    {KaipPixelFormat_BayerGR12, 2, 12, false, 4, 4, KaipPixelFormat_Mono12, kGR, true, KaipPixelFormat_Mono12},
    {KaipPixelFormat_BayerRG12, 2, 12, false, 4, 4, KaipPixelFormat_Mono12, 0, true, KaipPixelFormat_Mono12},
    {KaipPixelFormat_BayerGB12, 2, 12, false, 4, 4, KaipPixelFormat_Mono12, kGB, true, KaipPixelFormat_Mono12},
    {KaipPixelFormat_BayerBG12, 2, 12, false, 4, 4, KaipPixelFormat_Mono12, kBG, true, KaipPixelFormat_Mono12},
    {KaipPixelFormat_Mono13, 2, 13, false, 5, 5, KaipPixelFormat_Mono13, 0, false, KaipPixelFormat_Mono13},
    {KaipPixelFormat_Mono14, 2, 14, false, 6, 6, KaipPixelFormat_Mono14, 0, false, KaipPixelFormat_Mono14},
    {KaipPixelFormat_Mono15, 2, 15, false, 7, 7, KaipPixelFormat_Mono15, 0, false, KaipPixelFormat_Mono15},
    {KaipPixelFormat_Mono16, 2, 16, false, 8, 8, KaipPixelFormat_Mono16, 0, false, KaipPixelFormat_Mono16},
    {KaipPixelFormat_BayerGR16, 2, 16, false, 8, 8, KaipPixelFormat_Mono16, kGR, true, KaipPixelFormat_Mono16},
    {KaipPixelFormat_BayerRG16, 2, 16, false, 8, 8, KaipPixelFormat_Mono16, 0, true, KaipPixelFormat_Mono16},
    {KaipPixelFormat_BayerGB16, 2, 16, false, 8, 8, KaipPixelFormat_Mono16, kGB, true, KaipPixelFormat_Mono16},
    {KaipPixelFormat_BayerBG16, 2, 16, false, 8, 8, KaipPixelFormat_Mono16, kBG, true, KaipPixelFormat_Mono16},
    {KaipPixelFormat_Mono10Packed, 2, 10, false, 28, -1, KaipPixelFormat_Mono10Packed, 0, false,
     KaipPixelFormat_Mono10Packed},
    {KaipPixelFormat_BayerGR10Packed, 2, 10, false, 28, 2, KaipPixelFormat_Mono10Packed, kGR, true,
     KaipPixelFormat_Mono10Packed},
    {KaipPixelFormat_BayerRG10Packed, 2, 10, false, 28, 2, KaipPixelFormat_Mono10Packed, 0, true,
     KaipPixelFormat_Mono10Packed},
    {KaipPixelFormat_BayerGB10Packed, 2, 10, false, 28, 2, KaipPixelFormat_Mono10Packed, kGB, true,
     KaipPixelFormat_Mono10Packed},
    {KaipPixelFormat_BayerBG10Packed, 2, 10, false, 28, 2, KaipPixelFormat_Mono10Packed, kBG, true,
     KaipPixelFormat_Mono10Packed},
    {KaipPixelFormat_Mono12Packed, 2, 12, false, 29, -1, KaipPixelFormat_Mono12Packed, 0, false,
     KaipPixelFormat_Mono12Packed},
    {KaipPixelFormat_BayerGR12Packed, 2, 12, false, 29, 4, KaipPixelFormat_Mono12Packed, kGR, true,
     KaipPixelFormat_Mono12Packed},
    {KaipPixelFormat_BayerRG12Packed, 2, 12, false, 29, 4, KaipPixelFormat_Mono12Packed, 0, true,
     KaipPixelFormat_Mono12Packed},
    {KaipPixelFormat_BayerGB12Packed, 2, 12, false, 29, 4, KaipPixelFormat_Mono12Packed, kGB, true,
     KaipPixelFormat_Mono12Packed},
    {KaipPixelFormat_BayerBG12Packed, 2, 12, false, 29, 4, KaipPixelFormat_Mono12Packed, kBG, true,
     KaipPixelFormat_Mono12Packed},
    {KaipPixelFormat_Mono10Mipi, 2, 10, false, 28, -1, KaipPixelFormat_Mono10Mipi, 0, false,
     KaipPixelFormat_Mono10Mipi},
    {KaipPixelFormat_BayerGR10Mipi, 0, 10, false, -1, -1, KaipPixelFormat_Mono10Mipi, kGR, true,
     KaipPixelFormat_BayerGR10Mipi},
    {KaipPixelFormat_BayerRG10Mipi, 0, 10, false, -1, -1, KaipPixelFormat_Mono10Mipi, 0, true,
     KaipPixelFormat_BayerRG10Mipi},
    {KaipPixelFormat_BayerGB10Mipi, 0, 10, false, -1, -1, KaipPixelFormat_Mono10Mipi, kGB, true,
     KaipPixelFormat_BayerGB10Mipi},
    {KaipPixelFormat_BayerBG10Mipi, 0, 10, false, -1, -1, KaipPixelFormat_Mono10Mipi, kBG, true,
     KaipPixelFormat_BayerBG10Mipi},
    {KaipPixelFormat_Mono12Mipi, 2, 12, false, 29, -1, KaipPixelFormat_Mono12Mipi, 0, false,
     KaipPixelFormat_Mono12Mipi},
    {KaipPixelFormat_BGR555, 2, 15, true, 9, 9, KaipPixelFormat_BGR555, 0, false, KaipPixelFormat_BGR555},
    {KaipPixelFormat_BGR565Packed, 2, 16, true, 10, 10, KaipPixelFormat_BGR565Packed, 0, false,
     KaipPixelFormat_BGR565Packed},
    {KaipPixelFormat_BGR8Packed, 3, 24, true, 11, 11, KaipPixelFormat_BGR8Packed, 0, false, KaipPixelFormat_BGR8Packed},
    {KaipPixelFormat_BGRA8Packed, 4, 32, true, 12, 12, KaipPixelFormat_BGRA8Packed, 0, false,
     KaipPixelFormat_BGRA8Packed},
    {KaipPixelFormat_RGB8Packed, 3, 24, false, 13, 13, KaipPixelFormat_RGB8Packed, 0, false,
     KaipPixelFormat_RGB8Packed},
    {KaipPixelFormat_RGBA8Packed, 4, 32, false, 14, 14, KaipPixelFormat_RGBA8Packed, 0, false,
     KaipPixelFormat_RGBA8Packed},
    {KaipPixelFormat_RGB10V1Packed, 4, 32, false, 30, -1, KaipPixelFormat_RGB10V1Packed, 0, false,
     KaipPixelFormat_RGB10V1Packed},
    {KaipPixelFormat_RGB10V2Packed, 4, 32, false, 30, -1, KaipPixelFormat_RGB10V2Packed, 0, false,
     KaipPixelFormat_RGB10V2Packed},
    {KaipPixelFormat_BGR10Packed, 6, 30, false, 32, 32, KaipPixelFormat_BGR10Packed, 0, false,
     KaipPixelFormat_BGR10Packed},
    {KaipPixelFormat_RGB10Packed, 6, 30, false, 33, 33, KaipPixelFormat_RGB10Packed, 0, false,
     KaipPixelFormat_RGB10Packed},
    {KaipPixelFormat_BGR12Packed, 6, 36, false, 34, 34, KaipPixelFormat_BGR12Packed, 0, false,
     KaipPixelFormat_BGR12Packed},
    {KaipPixelFormat_RGB12Packed, 6, 36, false, 35, 35, KaipPixelFormat_RGB12Packed, 0, false,
     KaipPixelFormat_RGB12Packed},
    {KaipPixelFormat_BGR16, 6, 48, false, 36, 36, KaipPixelFormat_BGR16, 0, false, KaipPixelFormat_BGR16},
    {KaipPixelFormat_RGB16Packed, 6, 48, false, 37, 37, KaipPixelFormat_RGB16Packed, 0, false,
     KaipPixelFormat_RGB16Packed},
    {KaipPixelFormat_YUV411Packed, 0, 12, false, 16, 16, KaipPixelFormat_YUV411Packed, 0, false,
     KaipPixelFormat_YUV411Packed},
    {KaipPixelFormat_YCbCr411_8_CbYYCrYY, 0, 12, false, 16, 16, KaipPixelFormat_YCbCr411_8_CbYYCrYY, 0, false,
     KaipPixelFormat_YCbCr411_8_CbYYCrYY},
    {KaipPixelFormat_YCbCr411_8, 0, 12, false, 16, 16, KaipPixelFormat_YCbCr411_8, 0, false,
     KaipPixelFormat_YCbCr411_8},
    {KaipPixelFormat_YCbCr601_411_8_CbYYCrYY, 0, 12, false, -1, -1, KaipPixelFormat_YCbCr601_411_8_CbYYCrYY, 0, false,
     KaipPixelFormat_YCbCr601_411_8_CbYYCrYY},
    {KaipPixelFormat_YCbCr709_411_8_CbYYCrYY, 0, 12, false, -1, -1, KaipPixelFormat_YCbCr709_411_8_CbYYCrYY, 0, false,
     KaipPixelFormat_YCbCr709_411_8_CbYYCrYY},
    {KaipPixelFormat_YUV422Packed, 0, 16, false, 17, 17, KaipPixelFormat_YUV422Packed, 0, false,
     KaipPixelFormat_YUV422Packed},
    {KaipPixelFormat_YUV422_YUYV_Packed, 0, 16, false, 18, 18, KaipPixelFormat_YUV422_YUYV_Packed, 0, false,
     KaipPixelFormat_YUV422_YUYV_Packed},
    {KaipPixelFormat_YUV444Packed, 0, 24, false, 19, 19, KaipPixelFormat_YUV444Packed, 0, false,
     KaipPixelFormat_YUV444Packed},
    {KaipPixelFormat_YCbCr8, 0, 24, false, 20, 20, KaipPixelFormat_YCbCr8, 0, false, KaipPixelFormat_YCbCr8},
    {KaipPixelFormat_YCbCr8_CbYCr, 0, 24, false, 21, 21, KaipPixelFormat_YCbCr8_CbYCr, 0, false,
     KaipPixelFormat_YCbCr8_CbYCr},
    {KaipPixelFormat_YCbCr422_8, 0, 16, false, 22, 22, KaipPixelFormat_YCbCr422_8, 0, false,
     KaipPixelFormat_YCbCr422_8},
    {KaipPixelFormat_YCbCr422_8_CbYCrY, 0, 16, false, 23, 23, KaipPixelFormat_YCbCr422_8_CbYCrY, 0, false,
     KaipPixelFormat_YCbCr422_8_CbYCrY},
    {KaipPixelFormat_YCbCr601_422_8, 0, 16, false, 24, -1, KaipPixelFormat_YCbCr601_422_8, 0, false,
     KaipPixelFormat_YCbCr601_422_8},
    {KaipPixelFormat_YCbCr601_422_8_CbYCrY, 0, 16, false, 25, -1, KaipPixelFormat_YCbCr601_422_8_CbYCrY, 0, false,
     KaipPixelFormat_YCbCr601_422_8_CbYCrY},
    {KaipPixelFormat_YCbCr709_422_8, 0, 16, false, 26, -1, KaipPixelFormat_YCbCr709_422_8, 0, false,
     KaipPixelFormat_YCbCr709_422_8},
    {KaipPixelFormat_YCbCr709_422_8_CbYCrY, 0, 16, false, 27, -1, KaipPixelFormat_YCbCr709_422_8_CbYCrY, 0, false,
     KaipPixelFormat_YCbCr709_422_8_CbYCrY},
    {KaipPixelFormat_YCbCr601_8_CbYCr, 0, 24, false, -1, -1, KaipPixelFormat_YCbCr601_8_CbYCr, 0, false,
     KaipPixelFormat_YCbCr601_8_CbYCr},
    {KaipPixelFormat_YCbCr709_8_CbYCr, 0, 24, false, -1, -1, KaipPixelFormat_YCbCr709_8_CbYCr, 0, false,
     KaipPixelFormat_YCbCr709_8_CbYCr},
    {KaipPixelFormat_RGB8Planar, 0, 8, false, -1, -1, KaipPixelFormat_RGB8Planar, kPlanes, false,
     KaipPixelFormat_RGB8Planar},
    {KaipPixelFormat_RGB10Planar, 0, 10, false, -1, -1, KaipPixelFormat_RGB10Planar, kPlanes, false,
     KaipPixelFormat_RGB10Planar},
    {KaipPixelFormat_RGB12Planar, 0, 12, false, -1, -1, KaipPixelFormat_RGB12Planar, kPlanes, false,
     KaipPixelFormat_RGB12Planar},
    {KaipPixelFormat_RGB16Planar, 0, 16, false, -1, -1, KaipPixelFormat_RGB16Planar, kPlanes, false,
     KaipPixelFormat_RGB16Planar},
};

constexpr uint32_t kAlignmentFlags[] = {KaipImgFlag_Align16, KaipImgFlag_Align8, KaipImgFlag_Align4};
constexpr uint32_t kAlignments[] = {16, 8, 4};

void FreeBuffer(uint8_t*& p, const char* pszFatal)
{
    if (!p) return;
    if (oxOsBufferFree(p) != 0) Log.Fatal("%s", pszFatal);
    p = nullptr;
}

}  // namespace

const TPixelFormatInfo* FindPixelFormat(uint32_t dwPixelFormat)
{
    for (const TPixelFormatInfo& row : kPixelFormats)
        if (row.dwCode == dwPixelFormat) return &row;
    return nullptr;
}

uint32_t GetPixelIncrementFromPixelFormat(uint32_t dwPixelFormat)
{
    const TPixelFormatInfo* row = FindPixelFormat(dwPixelFormat);
    return row ? row->dwPixelIncrement : 0;
}

uint32_t GetUsedBitsPerPixel(uint32_t dwPixelFormat)
{
    const TPixelFormatInfo* row = FindPixelFormat(dwPixelFormat);
    return row ? row->dwUsedBits : 8;
}

uint32_t IsPixelFormatDibCompatible(uint32_t dwPixelFormat)
{
    const TPixelFormatInfo* row = FindPixelFormat(dwPixelFormat);
    return row && row->bDib ? 1 : 0;
}

uint32_t BayerToMonoFormat(uint32_t dwPixelFormat)
{
    const TPixelFormatInfo* row = FindPixelFormat(dwPixelFormat);
    return row ? row->dwMono : dwPixelFormat;
}

void GetFlagsFromPixelFormat(uint32_t dwPixelFormat, uint32_t& dwBasePixelFormat, uint32_t& dwFlags, bool& bIsBayer)
{
    bIsBayer = false;
    dwFlags &= ~(KaipImgFlag_ColorPlanes | KaipImgFlag_BayerShiftLine | KaipImgFlag_BayerShiftColumn);
    dwBasePixelFormat = dwPixelFormat;
    const TPixelFormatInfo* row = FindPixelFormat(dwPixelFormat);
    if (!row) return;
    dwBasePixelFormat = row->dwBase;
    dwFlags |= row->dwPattern;
    bIsBayer = row->bBayer;
}

int GetSrcPixelFormatClass(uint32_t dwPixelFormat)
{
    const TPixelFormatInfo* row = FindPixelFormat(dwPixelFormat);
    return row ? row->iSrcClass : -1;
}

int GetDstPixelFormatClass(uint32_t dwPixelFormat)
{
    const TPixelFormatInfo* row = FindPixelFormat(dwPixelFormat);
    return row ? row->iDstClass : -1;
}

bool IsImgInfoInitialized(const KaipImgInfo* pImgInfo)
{
    return pImgInfo->Width != 0 && pImgInfo->Height != 0 && pImgInfo->LineIncrement != 0 && pImgInfo->PixelFormat != 0;
}

KaipStatus InitImgInfo(KaipImgInfo* pImgInfo, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwPixelFormat,
                       uint32_t dwFlags)
{
    pImgInfo->Width = dwWidth;
    pImgInfo->Height = dwHeight;
    pImgInfo->PixelFormat = dwPixelFormat;
    pImgInfo->pData = pImgInfo->pDataR = pImgInfo->pDataG = pImgInfo->pDataB = nullptr;
    pImgInfo->PixelIncrement = GetPixelIncrementFromPixelFormat(dwPixelFormat);
    if (pImgInfo->PixelIncrement == 0)
        return Refuse(KASTATUS_KAIP_INVALID_PIXEL_FORMAT, "%s: Invalid color format: %d", "InitImgInfo",
                      int(dwPixelFormat));

    // Only the largest requested alignment survives.
    pImgInfo->Flags = dwFlags & KaipImgFlag_InitMask;
    uint64_t lineIncrement = uint64_t(pImgInfo->PixelIncrement) * dwWidth;
    for (int i = 0; i < 3; ++i) {
        if (dwFlags & kAlignmentFlags[i]) {
            lineIncrement = (lineIncrement + kAlignments[i] - 1) & ~uint64_t(kAlignments[i] - 1);
            pImgInfo->Flags |= kAlignmentFlags[i];
            break;
        }
    }
    if (lineIncrement > UINT32_MAX)
        return Refuse(KASTATUS_KAIP_NOT_SUPPORTED, "%s: line increment of %llu bytes does not fit in 32 bits",
                      "InitImgInfo", static_cast<unsigned long long>(lineIncrement));
    pImgInfo->LineIncrement = uint32_t(lineIncrement);
    return KASTATUS_OK;
}

KaipStatus AllocateImageData(KaipImgInfo* pImgInfo)
{
    // A size that does not fit in 32 bits would wrap into a buffer too small for the image.
    const uint64_t size = ImageBytes(*pImgInfo);
    const bool fits = size <= UINT32_MAX;
    if (pImgInfo->Flags & KaipImgFlag_ColorPlanes) {
        uint8_t** planes[3] = {&pImgInfo->pDataR, &pImgInfo->pDataG, &pImgInfo->pDataB};
        for (uint8_t** plane : planes)
            *plane = fits ? static_cast<uint8_t*>(oxOsBufferCreateAligned(size, kImageAlignment, 0)) : nullptr;
        if (pImgInfo->pDataR && pImgInfo->pDataG && pImgInfo->pDataB) {
            pImgInfo->Flags |= KaipImgFlag_DataAllocated;
            return KASTATUS_OK;
        }
        Log.Debug("%s: KASTATUS_KAIP_MEMORY_ALLOC_FAILED allocation of %d bytes failed!", "AllocateImageData",
                  int(uint32_t(size)));
        for (uint8_t** plane : planes)
            FreeBuffer(*plane, "AllocateImageData: buffer check for oxOsBufferFree failed. buffer not freed!");
        return KASTATUS_KAIP_MEMORY_ALLOC_FAILED;
    }
    pImgInfo->pData = fits ? static_cast<uint8_t*>(oxOsBufferCreateAligned(size, kImageAlignment, 0)) : nullptr;
    if (!pImgInfo->pData)
        return Refuse(KASTATUS_KAIP_MEMORY_ALLOC_FAILED, "%s: memory allocation of %d bytes failed!",
                      "AllocateImageData", int(uint32_t(size)));
    pImgInfo->Flags |= KaipImgFlag_DataAllocated;
    return KASTATUS_OK;
}

void DeallocateImageData(KaipImgInfo* pImgInfo)
{
    for (uint8_t** p : {&pImgInfo->pData, &pImgInfo->pDataR, &pImgInfo->pDataG, &pImgInfo->pDataB})
        FreeBuffer(*p, "DeallocateImageData: buffer check for oxOsBufferFree failed. buffer not freed!");
}
