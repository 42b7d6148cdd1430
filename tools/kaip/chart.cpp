// chart.cpp: the demo's test chart, rendered line by line in linear light and sampled into a mosaic.
#include "chart.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace kaip {

namespace {

struct Rgb {
    float r, g, b;
};

// Sensor response of the three channels to white light: the colour cast the white balance removes.
constexpr Rgb kCast = {0.52f, 0.95f, 0.68f};

float Linear(float srgb)
{
    return srgb <= 0.04045f ? srgb / 12.92f : std::pow((srgb + 0.055f) / 1.055f, 2.4f);
}

Rgb Linear8(int r, int g, int b)
{
    return {Linear(r / 255.f), Linear(g / 255.f), Linear(b / 255.f)};
}
Rgb Grey(float level)
{
    return {level, level, level};
}

// The 24 patches of the classic colour checker in sRGB, row by row.
const unsigned char kChecker[24][3] = {
    {115, 82, 68},   {194, 150, 130}, {98, 122, 157},  {87, 108, 67},   {133, 128, 177}, {103, 189, 170},
    {214, 126, 44},  {80, 91, 166},   {193, 90, 99},   {94, 60, 108},   {157, 188, 64},  {224, 163, 46},
    {56, 61, 150},   {70, 148, 73},   {175, 54, 60},   {231, 199, 31},  {187, 86, 149},  {8, 133, 161},
    {243, 243, 242}, {200, 200, 200}, {160, 160, 160}, {122, 122, 121}, {85, 85, 85},    {52, 52, 52},
};
const Rgb kSaturated[6] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 1, 1}, {1, 0, 1}, {1, 1, 0}};

class Chart {
public:
    // Linear values are looked up, not computed per pixel: a table for the ramps, one per patch.
    Chart(uint32_t width, uint32_t height) : m_width(width), m_height(height), m_linear(kLevels + 1)
    {
        for (uint32_t i = 0; i <= kLevels; ++i) m_linear[i] = Linear(float(i) / kLevels);
        for (int i = 0; i < 24; ++i) m_checker[i] = Linear8(kChecker[i][0], kChecker[i][1], kChecker[i][2]);
    }

    // Band boundaries as fractions of the height, from the top.
    void RenderLine(uint32_t y, Rgb* line) const
    {
        float v = (y + 0.5f) / m_height;
        if (v < 0.07f) return Ramp(line);
        if (v < 0.13f) return Steps(line);
        if (v < 0.19f) return Saturated(line);
        if (v < 0.60f) return Checker((v - 0.19f) / 0.41f, line);
        return Details(y, uint32_t(0.60f * m_height), line);
    }

private:
    float U(uint32_t x) const { return (x + 0.5f) / m_width; }

    void Ramp(Rgb* line) const
    {
        for (uint32_t x = 0; x < m_width; ++x) line[x] = Grey(m_linear[uint32_t(U(x) * kLevels)]);
    }

    void Steps(Rgb* line) const
    {
        for (uint32_t x = 0; x < m_width; ++x) line[x] = Grey(m_linear[uint32_t(U(x) * 16) * kLevels / 15]);
    }

    void Saturated(Rgb* line) const
    {
        for (uint32_t x = 0; x < m_width; ++x) line[x] = kSaturated[std::min(5, int(U(x) * 6))];
    }

    // Six patches across, four down, separated by dark gaps.
    void Checker(float v, Rgb* line) const
    {
        int row = std::min(3, int(v * 4));
        bool gapLine = std::fmod(v * 4, 1.f) < 0.08f;
        for (uint32_t x = 0; x < m_width; ++x) {
            float column = U(x) * 6;
            bool gap = gapLine || std::fmod(column, 1.f) < 0.06f;
            line[x] = gap ? Grey(0.02f) : m_checker[row * 6 + std::min(5, int(column))];
        }
    }

    // The lower band: a Siemens star, line pairs, and two slanted edges side by side.
    void Details(uint32_t y, uint32_t top, Rgb* line) const
    {
        uint32_t third = m_width / 3, bandHeight = m_height - top, row = y - top;
        for (uint32_t x = 0; x < third; ++x) line[x] = Star(x, row, third, bandHeight);
        for (uint32_t x = third; x < 2 * third; ++x) line[x] = LinePairs(x - third, row, third, bandHeight);
        for (uint32_t x = 2 * third; x < m_width; ++x) line[x] = Edge(x - 2 * third, row, bandHeight);
    }

    static Rgb Star(uint32_t x, uint32_t y, uint32_t width, uint32_t height)
    {
        float dx = x + 0.5f - width / 2.f, dy = y + 0.5f - height / 2.f;
        float radius = 0.45f * std::min(width, height);
        if (dx * dx + dy * dy > radius * radius) return Grey(0.18f);
        return Grey(std::sin(36 * std::atan2(dy, dx)) > 0 ? 0.85f : 0.03f);
    }

    // Four rows of lines one, two, three and four pixels wide: vertical on the left, horizontal on the right.
    static Rgb LinePairs(uint32_t x, uint32_t y, uint32_t width, uint32_t height)
    {
        uint32_t lineWidth = std::min(3u, 4 * y / std::max(1u, height)) + 1;
        uint32_t along = x < width / 2 ? x : y;
        return Grey((along / lineWidth) & 1 ? 0.85f : 0.03f);
    }

    // Edges tilted by about 5 degrees: black/white above, red/blue below.
    static Rgb Edge(uint32_t x, uint32_t y, uint32_t height)
    {
        float split = 0.5f * height * 0.6f + y * 0.0875f;
        bool right = x > split;
        if (y < height / 2) return Grey(right ? 0.85f : 0.03f);
        return right ? Rgb{0.02f, 0.02f, 0.7f} : Rgb{0.7f, 0.02f, 0.02f};
    }

    static constexpr uint32_t kLevels = 4095;
    uint32_t m_width, m_height;
    std::vector<float> m_linear;
    Rgb m_checker[24];
};

// A small deterministic noise in [-1, 1): the same frame every run.
float Noise(uint32_t x, uint32_t y)
{
    uint32_t h = x * 0x9E3779B1u ^ (y + 0x7F4A7C15u) * 0x85EBCA77u;
    h ^= h >> 15;
    h *= 0x2C1B3C6Du;
    h ^= h >> 12;
    return (h & 0xFFFF) / 32768.f - 1.f;
}

template <class Sample>
void SampleLine(const Rgb* line, uint32_t y, uint32_t width, float maximum, Pattern pattern, Sample* out)
{
    for (uint32_t x = 0; x < width; ++x) {
        char site = SiteColour(pattern, x, y);
        float value = site == 'R' ? line[x].r * kCast.r : site == 'G' ? line[x].g * kCast.g : line[x].b * kCast.b;
        float level = value * maximum + Noise(x, y) * maximum * 0.004f + 0.5f;
        out[x] = Sample(std::clamp(level, 0.f, maximum));
    }
}

}  // namespace

Image RenderChart(uint32_t width, uint32_t height, uint32_t bits, Pattern pattern)
{
    uint32_t format = DecodableBayer(pattern, bits);
    uint32_t lineBytes = uint32_t(RawLineBytes(format, width));
    std::vector<uint8_t> bytes(uint64_t(lineBytes) * height);
    std::vector<Rgb> line(width);
    std::vector<uint16_t> words(width);
    Chart chart(width, height);
    float maximum = float((1u << bits) - 1);
    for (uint32_t y = 0; y < height; ++y) {
        chart.RenderLine(y, line.data());
        uint8_t* out = bytes.data() + uint64_t(y) * lineBytes;
        if (bits == 8) {
            SampleLine(line.data(), y, width, maximum, pattern, out);
        } else {
            SampleLine(line.data(), y, width, maximum, pattern, words.data());
            std::memcpy(out, words.data(), lineBytes);  // little-endian words, as the format lays them out
        }
    }
    return Image::Own(std::move(bytes), width, height, format, lineBytes);
}

}  // namespace kaip
