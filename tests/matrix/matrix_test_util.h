// matrix_test_util.h: guarded random images, sample access and LUTs with random tables for the matrix tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "general/lut.h"
#include "support/guarded.h"
#include "support/simd_level.h"

// Samples are bytes or little-endian 16-bit words.
inline uint32_t GetSample(const uint8_t* p, size_t i, unsigned bytes)
{
    return bytes == 1 ? p[i] : uint32_t(p[2 * i] | p[2 * i + 1] << 8);
}
inline void PutSample(uint8_t* p, size_t i, unsigned bytes, uint32_t v)
{
    for (unsigned b = 0; b < bytes; ++b) p[bytes * i + b] = uint8_t(v >> (8 * b));
}

// An image of width x height pixels of pixelBytes each in a guarded buffer, each line padded by
// `pad` bytes, filled with random bytes (or with `fill` when seed is 0).
inline std::unique_ptr<GuardedImage> MakeImage(uint32_t width, uint32_t height, uint32_t format, uint32_t pixelBytes,
                                               uint32_t flags, uint32_t pad, uint32_t seed, uint8_t fill = 0xA5)
{
    auto image = std::make_unique<GuardedImage>(width, height, format, width * pixelBytes + pad, flags, pixelBytes);
    if (seed) {
        FillRandom(image->buffer.data(), image->buffer.size(), seed);
    } else {
        std::memset(image->buffer.data(), fill, image->buffer.size());
    }
    return image;
}

// The red, green and blue tables of a LUT as the tests see them.
using TModelLut = std::array<std::vector<uint32_t>, 3>;

// Fills the channel tables of a body with random values of its depth and returns a copy of them.
template <typename TBody>
TModelLut FillTables(TBody& body, unsigned depth, uint32_t seed)
{
    std::mt19937 gen(seed);
    TModelLut model;
    auto fill = [&](auto& table, std::vector<uint32_t>& copy) {
        for (auto& v : table) {
            v = gen() & ((1u << depth) - 1);
            copy.push_back(v);
        }
    };
    fill(body.Red, model[0]), fill(body.Green, model[1]), fill(body.Blue, model[2]);
    return model;
}

// A LUT object of one depth (8, 10 or 12) with random channel tables, freed at the end of the scope.
class RandomLut {
public:
    RandomLut(unsigned depth, uint32_t seed) : m_hLut(KaipAllocateLut(depth))
    {
        if (depth == 8) m_tables = Fill(GetLut8, depth, seed);
        if (depth == 10) m_tables = Fill(GetLut10, depth, seed);
        if (depth == 12) m_tables = Fill(GetLut12, depth, seed);
    }
    ~RandomLut() { KaipFreeLut(m_hLut); }
    KaipHLut Handle() const { return m_hLut; }
    const TModelLut& Tables() const { return m_tables; }

private:
    template <typename TBody>
    TModelLut Fill(KaipStatus (*pfnGetLut)(KaipHLut, TBody*&), unsigned depth, uint32_t seed)
    {
        TBody* pBody = nullptr;
        EXPECT_EQ(pfnGetLut(m_hLut, pBody), KASTATUS_OK);
        return FillTables(*pBody, depth, seed);
    }
    KaipHLut m_hLut;
    TModelLut m_tables;
};

// Random tables in the global LUT of one depth for one scope; it is identity again afterwards.
class RandomGlobalLut {
public:
    RandomGlobalLut(unsigned depth, uint32_t seed)
    {
        if (depth == 8) m_tables = FillTables(g_Lut8, depth, seed);
        if (depth == 10) m_tables = FillTables(g_Lut10, depth, seed);
        if (depth == 12) m_tables = FillTables(g_Lut12, depth, seed);
    }
    ~RandomGlobalLut() { KaipResetLut(nullptr); }
    const TModelLut& Tables() const { return m_tables; }

private:
    TModelLut m_tables;
};

enum class LutMode { None, Object, Global };

// A LUT of one mode for one scope (none, a random object or random global tables) with its model tables.
struct TModeLut {
    TModeLut(LutMode mode, unsigned depth, uint32_t seed)
    {
        if (mode == LutMode::Object) object = std::make_unique<RandomLut>(depth, seed), handle = object->Handle();
        if (mode == LutMode::Global) global = std::make_unique<RandomGlobalLut>(depth, seed), handle = KaipHLut(1);
        tables = object ? &object->Tables() : global ? &global->Tables() : nullptr;
    }
    std::unique_ptr<RandomLut> object;
    std::unique_ptr<RandomGlobalLut> global;
    KaipHLut handle = nullptr;
    const TModelLut* tables;
};

// The formats of the 3x3 filters: bytes per sample, filtered samples and samples per pixel, the
// largest sample and the LUT depth (0: takes no LUT).
struct TFilterFormat {
    uint32_t code;
    unsigned bytes, channels, step;
    int32_t max;
    unsigned lutDepth;
    unsigned PixelBytes() const { return bytes * step; }
};
constexpr TFilterFormat kFilterFormats[] = {
    {KaipPixelFormat_Mono8, 1, 1, 1, 255, 8},       {KaipPixelFormat_BGR8Packed, 1, 3, 3, 255, 8},
    {KaipPixelFormat_BGRA8Packed, 1, 3, 4, 255, 8}, {KaipPixelFormat_Mono10, 2, 1, 1, 1023, 10},
    {KaipPixelFormat_Mono12, 2, 1, 1, 4095, 12},    {KaipPixelFormat_Mono9, 2, 1, 1, 511, 0},
    {KaipPixelFormat_Mono11, 2, 1, 1, 2047, 0},     {KaipPixelFormat_Mono13, 2, 1, 1, 8191, 0},
    {KaipPixelFormat_Mono15, 2, 1, 1, 32767, 0},    {KaipPixelFormat_Mono16, 2, 1, 1, 65535, 0},
};

// The 3x3 filter by its rules, interior samples only, each channel with the same channel of its
// neighbours: the kernel sum wrapped to 32 bits and divided toward zero where
// |9 x centre - sum of the nine samples| > 9 x threshold (everywhere without a threshold), else the
// centre; clamped; then the LUT table of the byte position (colour) or the green table (mono).
// `out` holds what the destination held before.
inline void ModelFilter(const TFilterFormat& f, const KaipImgInfo& src, std::vector<uint8_t>& out,
                        uint32_t outIncrement, const int32_t* k, const int32_t* threshold, const TModelLut* lut)
{
    for (uint32_t y = 1; y + 1 < src.Height; ++y)
        for (uint32_t x = 1; x + 1 < src.Width; ++x)
            for (unsigned ch = 0; ch < f.channels; ++ch) {
                auto sample = [&](uint32_t yy, uint32_t xx) {
                    return int64_t(GetSample(src.pData + yy * src.LineIncrement, xx * f.step + ch, f.bytes));
                };
                int64_t weighted = 0, nine = 0;
                for (int dy = 0; dy < 3; ++dy)
                    for (int dx = 0; dx < 3; ++dx) {
                        weighted += k[3 * dy + dx] * sample(y - 1 + dy, x - 1 + dx);
                        nine += sample(y - 1 + dy, x - 1 + dx);
                    }
                const int64_t centre = sample(y, x);
                const bool sharpen = !threshold || std::abs(9 * centre - nine) > 9 * int64_t(*threshold);
                int64_t v = sharpen ? int32_t(uint32_t(uint64_t(weighted))) / 1000 : centre;
                v = std::min<int64_t>(std::max<int64_t>(v, 0), f.max);
                if (lut) v = (*lut)[f.channels == 3 ? ch : 1][size_t(v)];
                PutSample(out.data() + y * outIncrement, x * f.step + ch, f.bytes, uint32_t(v));
            }
}

// The SIMD levels the twin tests compare: the baseline, SSE2, SSE4.2 and AVX2.
constexpr int kSimdLevels[] = {0, 1, 3, 4};

// Every width up to 64 (every tail of every register width) and a few large ones.
inline std::vector<uint32_t> TwinWidths()
{
    std::vector<uint32_t> widths;
    for (uint32_t w = 0; w <= 64; ++w) widths.push_back(w);
    for (uint32_t w : {641u, 1000u, 2448u}) widths.push_back(w);
    return widths;
}

// Calls test(width, flags, seed, gen) for every twin width in both line orders, counting `seeds` up and
// seeding gen with each.
template <class TTest>
void ForEachTwinLine(uint32_t& seeds, TTest test)
{
    for (uint32_t width : TwinWidths()) {
        for (uint32_t flags : {0u, KaipImgFlag_BottomUp}) {
            std::mt19937 gen(++seeds);
            test(width, flags, seeds, gen);
        }
    }
}

// A random source with lines padded by 1 to 5 bytes and a sentinel-filled destination, for twin tests.
inline std::vector<std::unique_ptr<GuardedImage>> SourceAndDestination(uint32_t width, uint32_t height, uint32_t format,
                                                                       uint32_t pixelBytes, uint32_t flags,
                                                                       uint32_t seed)
{
    std::vector<std::unique_ptr<GuardedImage>> images;
    images.push_back(MakeImage(width, height, format, pixelBytes, flags, seed % 5, seed));
    images.push_back(MakeImage(width, height, format, pixelBytes, flags, 3, 0));
    return images;
}

// Runs `run` at SIMD level 0 (the baseline workers) and at every vector level, each time on images
// made afresh by `make` (the same each time), and expects the baseline's status and every byte of the
// images, padding included.
template <class TMake, class TRun>
void ExpectBaselineBytes(TMake make, TRun run)
{
    KaipStatus baselineStatus = KASTATUS_OK;
    std::vector<uint8_t> baseline;
    for (int level : kSimdLevels) {
        std::vector<std::unique_ptr<GuardedImage>> images = make();
        KaipStatus status;
        {
            ScopedSimdLevel simd(level);
            status = run(images);
        }
        std::vector<uint8_t> bytes;
        for (const auto& image : images)
            bytes.insert(bytes.end(), image->buffer.data(), image->buffer.data() + image->buffer.size());
        if (level == 0) {
            baselineStatus = status, baseline = std::move(bytes);
        } else {
            ASSERT_EQ(status, baselineStatus) << "level " << level;
            ASSERT_EQ(bytes, baseline) << "level " << level;
        }
    }
}
