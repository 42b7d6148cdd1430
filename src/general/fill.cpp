// fill.cpp: a whole image filled with one colour, brought to its pixel format by the library's own conversion rules.
#include <algorithm>
#include <cstring>

#include "convert/convert.h"
#include "core/common.h"
#include "core/log.h"
#include "general/geometry.h"

namespace {

constexpr const char* kFunc = "KaipFillWithColor";
constexpr size_t kMaxPixel = 6;

// What every line of the image (or of one plane) repeats: two pixels, one pattern per line parity (the
// two differ only in a Bayer mosaic).
struct TPattern {
    uint8_t aLine[2][2 * kMaxPixel] = {};
    size_t pixelBytes = 0;
};

// Writes lineBytes of the repeating unit into a line, doubling the written part with each copy.
void FillLine(uint8_t* pLine, size_t lineBytes, const uint8_t* pUnit, size_t unitBytes)
{
    size_t done = std::min(unitBytes, lineBytes);
    std::memcpy(pLine, pUnit, done);
    while (done < lineBytes) {
        const size_t n = std::min(done, lineBytes - done);
        std::memcpy(pLine + done, pLine, n);
        done += n;
    }
}

// The first line of each parity is built, every other line is a copy of the one of its parity.
void FillImage(uint8_t* pData, size_t lineIncrement, uint32_t height, size_t lineBytes, const TPattern& pattern)
{
    for (uint32_t y = 0; y < height; ++y) {
        uint8_t* pLine = pData + y * lineIncrement;
        if (y < 2) {
            FillLine(pLine, lineBytes, pattern.aLine[y], 2 * pattern.pixelBytes);
        } else {
            std::memcpy(pLine, pData + (y & 1) * lineIncrement, lineBytes);
        }
    }
}

// A sample of `depth` bits (8 to 16) from an 8-bit channel: shifted left, as in every 8-bit to n-bit
// conversion of the library, stored in one byte or a little-endian word.
void PutSample(uint8_t* p, uint8_t channel, unsigned depth)
{
    const uint16_t v = uint16_t(channel << (depth - 8));
    if (depth == 8) {
        *p = uint8_t(v);
    } else {
        std::memcpy(p, &v, 2);
    }
}

// Bayer: each site gets the channel of its colour (red line when the line parity equals the line
// shift, red site when the column parity equals the column shift), as the mosaic encoder writes it.
TPattern BayerPattern(const TPixelFormatInfo& format, const uint8_t* pRgb)
{
    TPattern pattern;
    pattern.pixelBytes = format.dwPixelIncrement;
    const unsigned shiftLine = (format.dwPattern & KaipImgFlag_BayerShiftLine) ? 1 : 0;
    const unsigned shiftColumn = (format.dwPattern & KaipImgFlag_BayerShiftColumn) ? 1 : 0;
    for (unsigned y = 0; y < 2; ++y) {
        for (unsigned x = 0; x < 2; ++x) {
            const bool redLine = (y == shiftLine), first = (x == shiftColumn);
            const unsigned colour = redLine ? (first ? 0 : 1) : (first ? 1 : 2);
            PutSample(pattern.aLine[y] + x * pattern.pixelBytes, pRgb[colour], format.dwUsedBits);
        }
    }
    return pattern;
}

// Every other format: one blue, green, red pixel converted by the conversion dispatcher.
KaipStatus ConvertedPattern(uint32_t dwPixelFormat, uint8_t red, uint8_t green, uint8_t blue, TPattern& pattern)
{
    uint8_t bgr[3] = {blue, green, red};
    const uint32_t pixelBytes = GetPixelIncrementFromPixelFormat(dwPixelFormat);
    KaipImgInfo src{0, 1, 1, KaipPixelFormat_BGR8Packed, 0, 3, 3, bgr, nullptr, nullptr, nullptr};
    KaipImgInfo dst{0, 1, 1, dwPixelFormat, 0, pixelBytes, pixelBytes, pattern.aLine[0], nullptr, nullptr, nullptr};
    const KaipStatus status = ConvertToPixelFormat(&src, &dst, dwPixelFormat, 0);
    if (status != KASTATUS_OK) return status;
    pattern.pixelBytes = pixelBytes;
    std::memcpy(pattern.aLine[0] + pixelBytes, pattern.aLine[0], pixelBytes);
    std::memcpy(pattern.aLine[1], pattern.aLine[0], 2 * pixelBytes);
    return KASTATUS_OK;
}

bool IsPlanar(uint32_t dwPixelFormat)
{
    return dwPixelFormat == KaipPixelFormat_RGB8Planar || dwPixelFormat == KaipPixelFormat_RGB10Planar ||
           dwPixelFormat == KaipPixelFormat_RGB12Planar || dwPixelFormat == KaipPixelFormat_RGB16Planar;
}

}  // namespace

KaipStatus FillWithColor(KaipImgInfo* pImgInfo, uint8_t red, uint8_t green, uint8_t blue)
{
    if (pImgInfo == nullptr) return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: pImgInfo is NULL!", kFunc);
    if (!IsImgInfoInitialized(pImgInfo))
        return Refuse(KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED, "%s: pImgInfo is not initialized!", kFunc);
    KaipImgInfo& img = *pImgInfo;
    const bool bPlanes = (img.Flags & KaipImgFlag_ColorPlanes) != 0;
    if (bPlanes != IsPlanar(img.PixelFormat))
        return Refuse(KASTATUS_KAIP_INCOMPATIBLE_FLAGS,
                      "%s: pixel format 0x%.8x and KaipImgFlag_ColorPlanes (Flags=0x%x) do not agree", kFunc,
                      img.PixelFormat, img.Flags);
    if (bPlanes ? !img.pDataR || !img.pDataG || !img.pDataB : !img.pData)
        return Refuse(KASTATUS_KAIP_DST_NOT_ALLOCATED,
                      bPlanes ? "%s: pImgInfo->pDataR or pDataG or pDataB is NULL!" : "%s: pImgInfo->pData is NULL!",
                      kFunc);

    // Mono8: the plain mean, padding included.
    if (img.PixelFormat == KaipPixelFormat_Mono8) {
        std::memset(img.pData, (red + green + blue) / 3, ImageBytes(img));
        return KASTATUS_OK;
    }
    // Colour planes: each plane its own channel at the plane's depth.
    const uint8_t rgb[3] = {red, green, blue};
    if (bPlanes) {
        const unsigned depth = GetUsedBitsPerPixel(img.PixelFormat), sampleBytes = depth == 8 ? 1 : 2;
        uint8_t* apPlane[3] = {img.pDataR, img.pDataG, img.pDataB};
        for (int c = 0; c < 3; ++c) {
            TPattern pattern;
            pattern.pixelBytes = sampleBytes;
            PutSample(pattern.aLine[0], rgb[c], depth), PutSample(pattern.aLine[0] + sampleBytes, rgb[c], depth);
            std::memcpy(pattern.aLine[1], pattern.aLine[0], 2 * sampleBytes);
            FillImage(apPlane[c], img.LineIncrement, img.Height, size_t(img.Width) * sampleBytes, pattern);
        }
        return KASTATUS_OK;
    }
    // Unpacked Bayer mosaics by site; every other format the dispatcher can write from BGR8; packed, MIPI and
    // YUV formats have no conversion from colour.
    const TPixelFormatInfo* pFormat = FindPixelFormat(img.PixelFormat);
    TPattern pattern;
    const uint32_t base = pFormat ? pFormat->dwBase : 0;
    if (pFormat && pFormat->bBayer &&
        (base == KaipPixelFormat_Mono8 || base == KaipPixelFormat_Mono10 || base == KaipPixelFormat_Mono12 ||
         base == KaipPixelFormat_Mono16)) {
        pattern = BayerPattern(*pFormat, rgb);
    } else if (CanConvertToPixelFormat(KaipPixelFormat_BGR8Packed, img.PixelFormat)) {
        if (const KaipStatus status = ConvertedPattern(img.PixelFormat, red, green, blue, pattern)) return status;
    } else {
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, "%s: destination pixel format = 0x%.8x not supported",
                      kFunc, img.PixelFormat);
    }
    FillImage(img.pData, img.LineIncrement, img.Height, size_t(img.Width) * pattern.pixelBytes, pattern);
    return KASTATUS_OK;
}
