// stats.cpp: one pass over the samples of a mono, mosaic or interleaved colour image.
#include "stats.h"

#include <algorithm>
#include <cstring>

#include "formats.h"
#include "pipeline.h"

namespace kaip {

namespace {

// How to read one pixel's samples: sample size, samples per pixel, the channel of each sample.
struct Layout {
    uint32_t sampleBytes;
    uint32_t samplesPerPixel;
    const char* channels;  // letters of the samples in memory order; alpha is not listed
    uint32_t mask;
};

bool LayoutOf(const FormatInfo& format, Layout* layout)
{
    uint32_t mask = (1u << format.bits) - 1;
    uint32_t word = format.bits > 8 ? 2 : 1;
    bool unpacked = format.kind == Kind::Mono || format.kind == Kind::Bayer;
    if (unpacked && RawLineBytes(format.code, 8) == 8 * word) {  // not packed or MIPI
        *layout = {word, 1, format.kind == Kind::Bayer ? "?" : "Y", mask};
        return true;
    }
    static const struct {
        uint32_t code;
        Layout layout;
    } colour[] = {
        {KaipPixelFormat_BGR8Packed, {1, 3, "BGR", 0xFF}},   {KaipPixelFormat_RGB8Packed, {1, 3, "RGB", 0xFF}},
        {KaipPixelFormat_BGRA8Packed, {1, 4, "BGR", 0xFF}},  {KaipPixelFormat_RGBA8Packed, {1, 4, "RGB", 0xFF}},
        {KaipPixelFormat_BGR10Packed, {2, 3, "BGR", 0x3FF}}, {KaipPixelFormat_RGB10Packed, {2, 3, "RGB", 0x3FF}},
        {KaipPixelFormat_BGR12Packed, {2, 3, "BGR", 0xFFF}}, {KaipPixelFormat_RGB12Packed, {2, 3, "RGB", 0xFFF}},
        {KaipPixelFormat_BGR16, {2, 3, "BGR", 0xFFFF}},      {KaipPixelFormat_RGB16Packed, {2, 3, "RGB", 0xFFFF}},
    };
    for (const auto& entry : colour)
        if (entry.code == format.code) return *layout = entry.layout, true;
    return false;
}

struct Accumulator {
    uint32_t minimum = UINT32_MAX;
    uint32_t maximum = 0;
    uint64_t sum = 0;
    uint64_t count = 0;
    void Add(uint32_t value)
    {
        minimum = std::min(minimum, value);
        maximum = std::max(maximum, value);
        sum += value;
        ++count;
    }
};

const char kOrder[] = "RGBY";

}  // namespace

Image Analysable(Image image)
{
    const FormatInfo* format = FindFormat(image.Format());
    Layout layout;
    if (!format || LayoutOf(*format, &layout)) return image;
    Timings unused;
    if (format->kind == Kind::Bayer) return UnpackBayer(std::move(image), &unused);
    uint32_t target = format->kind == Kind::Mono
                          ? (format->bits == 10 ? KaipPixelFormat_Mono10 : KaipPixelFormat_Mono12)
                          : KaipPixelFormat_BGR8Packed;
    if (!KaipCanConvertToPixelFormat(image.Format(), target)) return image;
    return ConvertTo(image, target);
}

std::vector<ChannelStats> MeasureChannels(const Image& image)
{
    const FormatInfo* format = FindFormat(image.Format());
    Layout layout;
    if (!format || !LayoutOf(*format, &layout)) return {};
    Accumulator channels[4];
    const KaipImgInfo* info = image.Info();
    uint32_t used = uint32_t(std::strlen(layout.channels));
    for (uint32_t y = 0; y < info->Height; ++y) {
        const uint8_t* line = info->pData + uint64_t(y) * info->LineIncrement;
        for (uint32_t x = 0; x < info->Width; ++x) {
            for (uint32_t s = 0; s < used; ++s) {
                const uint8_t* at = line + (uint64_t(x) * layout.samplesPerPixel + s) * layout.sampleBytes;
                uint32_t value = layout.sampleBytes == 1 ? at[0] : uint32_t(at[0] | at[1] << 8);
                char letter = format->kind == Kind::Bayer ? SiteColour(format->pattern, x, y) : layout.channels[s];
                channels[std::strchr(kOrder, letter) - kOrder].Add(value & layout.mask);
            }
        }
    }
    std::vector<ChannelStats> stats;
    for (int c = 0; c < 4; ++c)
        if (channels[c].count)
            stats.push_back({kOrder[c], channels[c].minimum, channels[c].maximum,
                             double(channels[c].sum) / double(channels[c].count)});
    return stats;
}

}  // namespace kaip
