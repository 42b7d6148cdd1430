// formats.h: pixel-format names, their raw layout on disk, and Bayer patterns.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kaip {

enum class Kind { Mono, Bayer, Colour, Yuv, Planar };

// The four Bayer patterns in the order the pixel-format codes give them (GR, RG, GB, BG).
enum Pattern : int { kNoPattern = -1, kGR = 0, kRG = 1, kGB = 2, kBG = 3 };

struct FormatInfo {
    const char* name;  // the GenICam name, as the user types it
    uint32_t code;
    Kind kind;
    uint32_t bits;      // bits of one sample (of one channel for colour)
    Pattern pattern;    // Bayer formats only
    uint32_t monoTwin;  // Bayer formats: the mono format with the same bytes (BayerRG12Packed: Mono12Packed)
};

const std::vector<FormatInfo>& AllFormats();
// Case-insensitive; null when the name is unknown.
const FormatInfo* FindFormat(const std::string& name);
const FormatInfo* FindFormat(uint32_t code);
// The format's name, or its code in hex for codes the tool does not know.
std::string FormatName(uint32_t code);

// Bytes of one line of a headerless dump: the pixels packed as the format packs them, no padding.
uint64_t RawLineBytes(uint32_t code, uint32_t width);

// The Bayer format the decoders take for a pattern at 8, 10 or 12 bits.
uint32_t DecodableBayer(Pattern pattern, uint32_t bits);
// 'R', 'G' or 'B': the colour of the site at (x, y) of a mosaic with this pattern.
char SiteColour(Pattern pattern, uint32_t x, uint32_t y);

// What a file name tells about a raw dump, e.g. "frame.BayerRG12.2448x2048.raw": a token that is a
// pixel-format name and a token WxH. Fields the name does not give stay 0.
struct RawLayout {
    uint32_t format = 0;
    uint32_t width = 0;
    uint32_t height = 0;
};
RawLayout RawSpecFromFileName(const std::string& path);
// "2448x2048" into width and height; false when it is not two positive numbers.
bool ParseSize(const std::string& text, uint32_t* width, uint32_t* height);

}  // namespace kaip
