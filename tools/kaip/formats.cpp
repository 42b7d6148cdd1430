// formats.cpp: the table of pixel formats the tool knows by name.
#include "formats.h"

#include <pm.imgproc.h>
#include <strings.h>

#include <cctype>
#include <cstdio>
#include <cstring>

namespace kaip {

namespace {

#define KAIP_BAYER4(suffix, bits, twin)                                                     \
    {"BayerGR" #suffix, KaipPixelFormat_BayerGR##suffix, Kind::Bayer, bits, kGR, twin},     \
        {"BayerRG" #suffix, KaipPixelFormat_BayerRG##suffix, Kind::Bayer, bits, kRG, twin}, \
        {"BayerGB" #suffix, KaipPixelFormat_BayerGB##suffix, Kind::Bayer, bits, kGB, twin}, \
    {                                                                                       \
        "BayerBG" #suffix, KaipPixelFormat_BayerBG##suffix, Kind::Bayer, bits, kBG, twin    \
    }
#define KAIP_FORMAT(name, kind, bits)                                  \
    {                                                                  \
#name, KaipPixelFormat_##name, Kind::kind, bits, kNoPattern, 0 \
    }

const std::vector<FormatInfo> g_formats = {
    KAIP_FORMAT(Mono8, Mono, 8),
    KAIP_FORMAT(Mono9, Mono, 9),
    KAIP_FORMAT(Mono10, Mono, 10),
    KAIP_FORMAT(Mono11, Mono, 11),
    KAIP_FORMAT(Mono12, Mono, 12),
    KAIP_FORMAT(Mono13, Mono, 13),
    KAIP_FORMAT(Mono14, Mono, 14),
    KAIP_FORMAT(Mono15, Mono, 15),
    KAIP_FORMAT(Mono16, Mono, 16),
    KAIP_FORMAT(Mono10Packed, Mono, 10),
    KAIP_FORMAT(Mono12Packed, Mono, 12),
    KAIP_FORMAT(Mono10Mipi, Mono, 10),
    KAIP_FORMAT(Mono12Mipi, Mono, 12),
    KAIP_BAYER4(8, 8, KaipPixelFormat_Mono8),
    KAIP_BAYER4(10, 10, KaipPixelFormat_Mono10),
    KAIP_BAYER4(12, 12, KaipPixelFormat_Mono12),
    KAIP_BAYER4(16, 16, KaipPixelFormat_Mono16),
    KAIP_BAYER4(10Packed, 10, KaipPixelFormat_Mono10Packed),
    KAIP_BAYER4(12Packed, 12, KaipPixelFormat_Mono12Packed),
    KAIP_BAYER4(10Mipi, 10, KaipPixelFormat_Mono10Mipi),
    KAIP_FORMAT(BGR555, Colour, 5),
    KAIP_FORMAT(BGR565Packed, Colour, 5),
    KAIP_FORMAT(BGR8Packed, Colour, 8),
    KAIP_FORMAT(BGRA8Packed, Colour, 8),
    KAIP_FORMAT(RGB8Packed, Colour, 8),
    KAIP_FORMAT(RGBA8Packed, Colour, 8),
    KAIP_FORMAT(RGB10V1Packed, Colour, 10),
    KAIP_FORMAT(RGB10V2Packed, Colour, 10),
    KAIP_FORMAT(BGR10Packed, Colour, 10),
    KAIP_FORMAT(RGB10Packed, Colour, 10),
    KAIP_FORMAT(BGR12Packed, Colour, 12),
    KAIP_FORMAT(RGB12Packed, Colour, 12),
    KAIP_FORMAT(BGR16, Colour, 16),
    KAIP_FORMAT(RGB16Packed, Colour, 16),
    KAIP_FORMAT(YUV411Packed, Yuv, 8),
    KAIP_FORMAT(YCbCr411_8_CbYYCrYY, Yuv, 8),
    KAIP_FORMAT(YCbCr411_8, Yuv, 8),
    KAIP_FORMAT(YCbCr601_411_8_CbYYCrYY, Yuv, 8),
    KAIP_FORMAT(YCbCr709_411_8_CbYYCrYY, Yuv, 8),
    KAIP_FORMAT(YUV422Packed, Yuv, 8),
    KAIP_FORMAT(YUV422_YUYV_Packed, Yuv, 8),
    KAIP_FORMAT(YUV444Packed, Yuv, 8),
    KAIP_FORMAT(YCbCr8, Yuv, 8),
    KAIP_FORMAT(YCbCr8_CbYCr, Yuv, 8),
    KAIP_FORMAT(YCbCr422_8, Yuv, 8),
    KAIP_FORMAT(YCbCr422_8_CbYCrY, Yuv, 8),
    KAIP_FORMAT(YCbCr601_422_8, Yuv, 8),
    KAIP_FORMAT(YCbCr601_422_8_CbYCrY, Yuv, 8),
    KAIP_FORMAT(YCbCr709_422_8, Yuv, 8),
    KAIP_FORMAT(YCbCr709_422_8_CbYCrY, Yuv, 8),
    KAIP_FORMAT(YCbCr601_8_CbYCr, Yuv, 8),
    KAIP_FORMAT(YCbCr709_8_CbYCr, Yuv, 8),
    KAIP_FORMAT(RGB8Planar, Planar, 8),
    KAIP_FORMAT(RGB10Planar, Planar, 10),
    KAIP_FORMAT(RGB12Planar, Planar, 12),
    KAIP_FORMAT(RGB16Planar, Planar, 16),
};

#undef KAIP_BAYER4
#undef KAIP_FORMAT

}  // namespace

const std::vector<FormatInfo>& AllFormats()
{
    return g_formats;
}

const FormatInfo* FindFormat(const std::string& name)
{
    for (const FormatInfo& format : g_formats)
        if (strcasecmp(format.name, name.c_str()) == 0) return &format;
    return nullptr;
}

const FormatInfo* FindFormat(uint32_t code)
{
    for (const FormatInfo& format : g_formats)
        if (format.code == code) return &format;
    return nullptr;
}

std::string FormatName(uint32_t code)
{
    if (const FormatInfo* format = FindFormat(code)) return format->name;
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", code);
    return text;
}

uint64_t RawLineBytes(uint32_t code, uint32_t width)
{
    // GigE Vision codes carry the bits a pixel occupies in bits 16-23; the library's own Mono9,
    // Mono11, Mono13 and Mono15 are 16-bit words.
    uint64_t bitsPerPixel = code >= 0x01000000u ? (code >> 16) & 0xFFu : 16u;
    return (uint64_t(width) * bitsPerPixel + 7) / 8;
}

uint32_t DecodableBayer(Pattern pattern, uint32_t bits)
{
    uint32_t first = bits == 8    ? KaipPixelFormat_BayerGR8
                     : bits == 10 ? KaipPixelFormat_BayerGR10
                                  : KaipPixelFormat_BayerGR12;
    return first + uint32_t(pattern);
}

char SiteColour(Pattern pattern, uint32_t x, uint32_t y)
{
    // Every pattern is RG shifted by a column (GR, BG) and/or a line (GB, BG).
    uint32_t column = x + (pattern == kGR || pattern == kBG);
    uint32_t line = y + (pattern == kGB || pattern == kBG);
    if ((column & 1) == 0 && (line & 1) == 0) return 'R';
    if ((column & 1) == 1 && (line & 1) == 1) return 'B';
    return 'G';
}

bool ParseSize(const std::string& text, uint32_t* width, uint32_t* height)
{
    unsigned long w = 0, h = 0;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%lu%*[xX]%lu%c", &w, &h, &rest) != 2) return false;
    if (w == 0 || h == 0 || w > 0x7FFFFFFF || h > 0x7FFFFFFF) return false;
    if (!std::isdigit(static_cast<unsigned char>(text[0]))) return false;
    *width = uint32_t(w);
    *height = uint32_t(h);
    return true;
}

namespace {

bool IsSeparator(const std::string& text, size_t at)
{
    return at >= text.size() || strchr("._- ", text[at]);
}

// The longest format name standing between separators in the text (BayerRG12Packed, not BayerRG12).
uint32_t FormatInName(const std::string& text)
{
    const FormatInfo* best = nullptr;
    for (const FormatInfo& format : g_formats) {
        size_t length = strlen(format.name);
        for (size_t at = 0; at + length <= text.size(); ++at) {
            bool bounded = (at == 0 || IsSeparator(text, at - 1)) && IsSeparator(text, at + length);
            if (bounded && strncasecmp(text.c_str() + at, format.name, length) == 0 &&
                (!best || length > strlen(best->name)))
                best = &format;
        }
    }
    return best ? best->code : 0;
}

}  // namespace

RawLayout RawSpecFromFileName(const std::string& path)
{
    RawLayout raw;
    std::string name = path.substr(path.find_last_of('/') + 1);
    raw.format = FormatInName(name);
    for (size_t start = 0; start < name.size();) {
        size_t end = name.find_first_of("._- ", start);
        if (end == std::string::npos) end = name.size();
        ParseSize(name.substr(start, end - start), &raw.width, &raw.height);
        start = end + 1;
    }
    return raw;
}

}  // namespace kaip
