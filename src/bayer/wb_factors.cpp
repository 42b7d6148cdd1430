// wb_factors.cpp: white-balance factors that make the average colour of an RGB image or a Bayer mosaic grey.
#include <cstring>

#include "bayer/bayer.h"
#include "core/check.h"
#include "core/common.h"
#include "core/log.h"

namespace {

// Sums and counts per channel (unsigned 32-bit, as measured).
struct TWbSums {
    uint32_t dwSum[3] = {0, 0, 0};  // red, green, blue
    uint32_t dwCount[3] = {0, 0, 0};
};

// Layout of a packed RGB/BGR format: bytes per channel and pixel, first channel in memory.
struct TRgbLayout {
    uint32_t dwChannelBytes;
    uint32_t dwPixelBytes;
    bool bBgr;
    uint32_t dwLimit;  // a channel above it is saturated
};

bool FindRgbLayout(uint32_t dwPixelFormat, TRgbLayout& layout)
{
    switch (dwPixelFormat) {
        case KaipPixelFormat_RGB8Packed:
            layout = {1, 3, false, 249};
            return true;
        case KaipPixelFormat_BGR8Packed:
            layout = {1, 3, true, 249};
            return true;
        case KaipPixelFormat_RGBA8Packed:
            layout = {1, 4, false, 249};
            return true;
        case KaipPixelFormat_BGRA8Packed:
            layout = {1, 4, true, 249};
            return true;
        case KaipPixelFormat_RGB10Packed:
            layout = {2, 6, false, 999};
            return true;
        case KaipPixelFormat_BGR10Packed:
            layout = {2, 6, true, 999};
            return true;
        case KaipPixelFormat_RGB12Packed:
            layout = {2, 6, false, 3999};
            return true;
        case KaipPixelFormat_BGR12Packed:
            layout = {2, 6, true, 3999};
            return true;
        default:
            return false;
    }
}

inline uint32_t Word(const uint8_t* p)
{
    uint16_t w;
    std::memcpy(&w, p, 2);
    return w;
}

// One pass over an RGB image; bTest skips pixels with a saturated channel.
template <uint32_t ChannelBytes, uint32_t PixelBytes>
TWbSums SumRgb(const KaipImgInfo& img, bool bBgr, uint32_t dwLimit, bool bTest)
{
    TWbSums s;
    const uint32_t ir = bBgr ? 2 : 0, ib = bBgr ? 0 : 2;
    for (uint32_t y = 0; y < img.Height; ++y) {
        const uint8_t* p = img.pData + size_t(y) * img.LineIncrement;
        for (uint32_t x = 0; x < img.Width; ++x, p += PixelBytes) {
            uint32_t c[3];
            for (uint32_t i = 0; i < 3; ++i) c[i] = ChannelBytes == 1 ? p[i] : Word(p + 2 * i);
            const uint32_t r = c[ir], g = c[1], b = c[ib];
            if (bTest && (r > dwLimit || g > dwLimit || b > dwLimit)) continue;
            s.dwSum[0] += r, s.dwSum[1] += g, s.dwSum[2] += b;
            ++s.dwCount[0], ++s.dwCount[1], ++s.dwCount[2];
        }
    }
    return s;
}

TWbSums SumRgb(const KaipImgInfo& img, const TRgbLayout& l, bool bTest)
{
    if (l.dwChannelBytes == 2) return SumRgb<2, 6>(img, l.bBgr, l.dwLimit, bTest);
    return l.dwPixelBytes == 3 ? SumRgb<1, 3>(img, l.bBgr, l.dwLimit, bTest)
                               : SumRgb<1, 4>(img, l.bBgr, l.dwLimit, bTest);
}

// First Bayer pass, lines and columns from 1: a site counts only when it, its left
// neighbour and the site above (green) or above-left (red, blue) are all unsaturated, so
// each test sees one red, one green and one blue value of the block ending at the site.
template <uint32_t SampleBytes>
TWbSums SumBayerTested(const KaipImgInfo& img, bool bShiftLine, bool bShiftColumn, uint32_t dwLimit)
{
    TWbSums s;
    const auto at = [](const uint8_t* pLine, uint32_t x) { return SampleBytes == 1 ? pLine[x] : Word(pLine + 2 * x); };
    bool bRedLine = !bShiftLine;  // line 0 is a red line unless the pattern is shifted
    for (uint32_t y = 1; y < img.Height; ++y) {
        bRedLine = !bRedLine;
        const uint8_t* pCur = img.pData + size_t(y) * img.LineIncrement;
        const uint8_t* pUp = pCur - img.LineIncrement;
        bool bRedColumn = bShiftColumn;  // column 1 holds the red-line red sites when shifted
        for (uint32_t x = 1; x < img.Width; ++x, bRedColumn = !bRedColumn) {
            const bool bGreen = bRedLine != bRedColumn;
            const uint32_t v = at(pCur, x);
            if (v > dwLimit || at(pCur, x - 1) > dwLimit || at(pUp, bGreen ? x : x - 1) > dwLimit) continue;
            const int c = bGreen ? 1 : bRedLine ? 0 : 2;
            s.dwSum[c] += v;
            ++s.dwCount[c];
        }
    }
    return s;
}

// Second Bayer pass over every site without the test. It reads one byte per site and steps
// one byte per column at every depth, so 16-bit mosaics contribute the bytes of the first
// half of each line; measurements taken with this library depend on that.
TWbSums SumBayerBytes(const KaipImgInfo& img, bool bShiftLine, bool bShiftColumn)
{
    TWbSums s;
    bool bRedLine = bShiftLine;
    for (uint32_t y = 0; y < img.Height; ++y) {
        bRedLine = !bRedLine;
        const uint8_t* p = img.pData + size_t(y) * img.LineIncrement;
        bool bRedColumn = !bShiftColumn;
        for (uint32_t x = 0; x < img.Width; ++x, bRedColumn = !bRedColumn) {
            const int c = bRedLine != bRedColumn ? 1 : bRedLine ? 0 : 2;
            s.dwSum[c] += p[x];
            ++s.dwCount[c];
        }
    }
    return s;
}

// Factor x 1000 truncated toward zero, saturating where the product leaves 32 bits.
uint32_t Thousandths(float f)
{
    const float v = f * 1000.0f;
    return v >= 4294967296.0f ? 0xFFFFFFFFu : uint32_t(v);
}

// Averages to factors (green the reference), the caller's gains when refining, the
// normalisation to the smallest factor, the 0.001 rule and the outputs.
KaipStatus WriteFactors(const TWbSums& s, uint32_t* pdwRed, uint32_t* pdwGreen, uint32_t* pdwBlue, bool bRefine,
                        bool bNormalise)
{
    if (s.dwCount[0] == 0 || s.dwCount[1] == 0 || s.dwCount[2] == 0) return KASTATUS_OK;
    float r = 1.0f, g = 1.0f, b = 1.0f;
    if (s.dwSum[0] != 0 && s.dwSum[1] != 0 && s.dwSum[2] != 0) {
        const float avgR = float(s.dwSum[0]) / float(s.dwCount[0]);
        const float avgG = float(s.dwSum[1]) / float(s.dwCount[1]);
        const float avgB = float(s.dwSum[2]) / float(s.dwCount[2]);
        r = avgR != 0.0f ? avgG / avgR : 1.0f;
        b = avgB != 0.0f ? avgG / avgB : 1.0f;
    }
    if (bRefine) {
        const auto current = [](const uint32_t* p) { return p ? float(*p) / 1000.0f : 1.0f; };
        r *= current(pdwRed);
        b *= current(pdwBlue);
        g = current(pdwGreen);
    }
    if (bNormalise) {
        const float m = r < g ? (r < b ? r : b) : (g < b ? g : b);
        if (m != 0.0f) r /= m, g /= m, b /= m;
    }
    if (double(r) < 0.001 || double(g) < 0.001 || double(b) < 0.001) r = g = b = 1.0f;
    if (pdwRed) *pdwRed = Thousandths(r);
    if (pdwGreen) *pdwGreen = Thousandths(g);
    if (pdwBlue) *pdwBlue = Thousandths(b);
    return KASTATUS_OK;
}

}  // namespace

KaipStatus CalcWbFactors(const KaipImgInfo* pSrcImgInfo, uint32_t* pdwRed, uint32_t* pdwGreen, uint32_t* pdwBlue,
                         uint32_t dwOptions)
{
    TRgbLayout layout;
    if (!pSrcImgInfo || !FindRgbLayout(pSrcImgInfo->PixelFormat, layout)) {
        return KAIP_BdCalcWbFactors(pSrcImgInfo, pdwRed, pdwGreen, pdwBlue, dwOptions);
    }
    const KaipStatus status = CheckSrcImgInfo("KaipCalcWbFactors", pSrcImgInfo, 0xF00007800ull, 0);
    if (status != KASTATUS_OK) return status;
    TWbSums s = SumRgb(*pSrcImgInfo, layout, true);
    const uint32_t dwHalf = (pSrcImgInfo->Height * pSrcImgInfo->Width) >> 1;
    if (s.dwCount[0] < dwHalf || s.dwCount[1] < dwHalf || s.dwCount[2] < dwHalf) {
        s = SumRgb(*pSrcImgInfo, layout, false);
    }
    return WriteFactors(s, pdwRed, pdwGreen, pdwBlue, dwOptions != 0, dwOptions != KaipWbOption_NoNormalize);
}

KaipStatus KAIP_BdCalcWbFactors(const KaipImgInfo* pSrcImgInfo, uint32_t* pdwRed, uint32_t* pdwGreen, uint32_t* pdwBlue,
                                uint32_t dwOptions)
{
    static const char* const pszFunc = "KAIP_BdCalcWbFactors";
    if (!pSrcImgInfo) {
        Log.Debug("%s: pSrcImgInfo is NULL!", pszFunc);
        return Refuse(KASTATUS_KAIP_INVALID_SRC_POINTER, "%s: returning status KASTATUS_KAIP_INVALID_SRC_POINTER",
                      pszFunc);
    }
    KaipImgInfo mono = *pSrcImgInfo;
    bool bBayer = false;
    GetFlagsFromPixelFormat(pSrcImgInfo->PixelFormat, mono.PixelFormat, mono.Flags, bBayer);
    if (!bBayer) {
        return Refuse(KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT, "%s: returning status KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT",
                      pszFunc);
    }
    const KaipStatus status = CheckSrcImgInfo(pszFunc, &mono, 0x15, 0);
    if (status != KASTATUS_OK) return status;
    const uint32_t dwLimit = mono.PixelFormat == KaipPixelFormat_Mono8    ? 249
                             : mono.PixelFormat == KaipPixelFormat_Mono10 ? 999
                             : mono.PixelFormat == KaipPixelFormat_Mono12 ? 3999
                                                                          : 0;
    if (dwLimit == 0) {
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT, "%s: KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT.",
                      pszFunc);
    }
    const bool bShiftLine = (mono.Flags & KaipImgFlag_BayerShiftLine) != 0;
    const bool bShiftColumn = (mono.Flags & KaipImgFlag_BayerShiftColumn) != 0;
    TWbSums s = dwLimit == 249 ? SumBayerTested<1>(mono, bShiftLine, bShiftColumn, dwLimit)
                               : SumBayerTested<2>(mono, bShiftLine, bShiftColumn, dwLimit);
    const uint32_t dwPixels = mono.Height * mono.Width;
    if (s.dwCount[0] < (dwPixels >> 3) || s.dwCount[1] < (dwPixels >> 2) || s.dwCount[2] < (dwPixels >> 3)) {
        s = SumBayerBytes(mono, bShiftLine, bShiftColumn);
        Log.Debug("dwCountR=%d, dwCountG=%d, dwCountB=%d", int(s.dwCount[0]), int(s.dwCount[1]), int(s.dwCount[2]));
    }
    return WriteFactors(s, pdwRed, pdwGreen, pdwBlue, false, dwOptions != KaipWbOption_NoNormalize);
}
