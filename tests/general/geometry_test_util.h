// geometry_test_util.h: random guarded images, the formats each function admits, and random LUTs for the geometry
// tests.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <tuple>
#include <vector>

#include "core/common.h"
#include "general/lut.h"
#include "pm.imgproc.h"
#include "support/guarded.h"
#include "support/log_capture.h"

namespace geotest {

struct TFormat {
    uint32_t dwCode;
    uint32_t dwPixel;  // bytes per pixel
};

// Every format that has a source class, with its pixel size.
inline const std::vector<TFormat>& AllFormats()
{
    static const std::vector<TFormat> formats = {
        {KaipPixelFormat_Mono8, 1},        {KaipPixelFormat_BayerGR8, 1},      {KaipPixelFormat_BayerRG8, 1},
        {KaipPixelFormat_BayerGB8, 1},     {KaipPixelFormat_BayerBG8, 1},      {KaipPixelFormat_Mono9, 2},
        {KaipPixelFormat_Mono10, 2},       {KaipPixelFormat_BayerGR10, 2},     {KaipPixelFormat_BayerRG10, 2},
        {KaipPixelFormat_BayerGB10, 2},    {KaipPixelFormat_BayerBG10, 2},     {KaipPixelFormat_Mono11, 2},
        {KaipPixelFormat_Mono12, 2},       {KaipPixelFormat_BayerGR12, 2},     {KaipPixelFormat_BayerBG12, 2},
        {KaipPixelFormat_Mono13, 2},       {KaipPixelFormat_Mono14, 2},        {KaipPixelFormat_Mono15, 2},
        {KaipPixelFormat_Mono16, 2},       {KaipPixelFormat_BayerRG16, 2},     {KaipPixelFormat_BGR555, 2},
        {KaipPixelFormat_BGR565Packed, 2}, {KaipPixelFormat_BGR8Packed, 3},    {KaipPixelFormat_BGRA8Packed, 4},
        {KaipPixelFormat_RGB8Packed, 3},   {KaipPixelFormat_RGBA8Packed, 4},   {KaipPixelFormat_Mono10Packed, 2},
        {KaipPixelFormat_Mono12Packed, 2}, {KaipPixelFormat_RGB10V1Packed, 4}, {KaipPixelFormat_BGR10Packed, 6},
        {KaipPixelFormat_RGB10Packed, 6},  {KaipPixelFormat_BGR12Packed, 6},   {KaipPixelFormat_RGB12Packed, 6},
        {KaipPixelFormat_BGR16, 6},        {KaipPixelFormat_RGB16Packed, 6},
    };
    return formats;
}

// The formats of AllFormats whose class bit is in the mask.
inline std::vector<TFormat> FormatsOf(uint64_t qwClassMask)
{
    std::vector<TFormat> v;
    for (const TFormat& f : AllFormats()) {
        const int cls = GetSrcPixelFormatClass(f.dwCode);
        if (cls >= 0 && ((qwClassMask >> cls) & 1)) v.push_back(f);
    }
    return v;
}

// A guarded image of random bytes, padding included, with `pad` bytes after each line.
inline std::unique_ptr<GuardedImage> RandomImage(uint32_t w, uint32_t h, const TFormat& f, uint32_t pad, uint32_t flags,
                                                 uint32_t seed)
{
    auto img = std::make_unique<GuardedImage>(w, h, f.dwCode, w * f.dwPixel + pad, flags, f.dwPixel);
    FillRandom(img->info.pData, img->buffer.size(), seed);
    return img;
}

inline std::vector<uint8_t> Bytes(const KaipImgInfo& info)
{
    return std::vector<uint8_t>(info.pData, info.pData + size_t(info.Height) * info.LineIncrement);
}

inline uint8_t* Pixel(std::vector<uint8_t>& bytes, const KaipImgInfo& info, uint32_t x, uint32_t y)
{
    return bytes.data() + size_t(y) * info.LineIncrement +
           size_t(x) * GetPixelIncrementFromPixelFormat(info.PixelFormat);
}

// A universal LUT object whose channel tables hold random values (16-bit ones over the whole
// word range, so a missing mask or clamp shows).
class RandomLut {
public:
    explicit RandomLut(uint32_t seed) : m_hLut(KaipAllocateLut(KAIP_LUT_ALL_DEPTHS))
    {
        std::mt19937 gen(seed);
        EXPECT_TRUE(GetLut8(m_hLut, pLut8) == 0 && GetLut10(m_hLut, pLut10) == 0 && GetLut12(m_hLut, pLut12) == 0);
        auto fill = [&](auto& lut) {
            for (auto* t : {lut.Red, lut.Green, lut.Blue})
                for (auto* v = t; v < t + lut.N; ++v) *v = std::remove_reference_t<decltype(*v)>(gen());
        };
        fill(*pLut8), fill(*pLut10), fill(*pLut12);
    }
    ~RandomLut() { KaipFreeLut(m_hLut); }
    RandomLut(const RandomLut&) = delete;
    RandomLut& operator=(const RandomLut&) = delete;
    KaipHLut Handle() const { return m_hLut; }

    TKaIpLut8* pLut8;
    TKaIpLut10* pLut10;
    TKaIpLut12* pLut12;

private:
    KaipHLut m_hLut;
};

// One refusal of a function's own: a random source of `width` x 3 pixels, a destination of its size (turned when
// `turned`), the call, its status and any text its log must hold; no byte, flag or buffer may change.
struct TRefusal {
    const char* name;
    TFormat src, dst;
    bool turned;
    uint32_t dstFlags;
    std::function<KaipStatus(KaipImgInfo*, KaipImgInfo*)> call;
    KaipStatus status;
    const char* log = nullptr;
    uint32_t width = 4;
};

inline void ExpectRefusals(const std::vector<TRefusal>& cases)
{
    for (const TRefusal& c : cases) {
        auto src = RandomImage(c.width, 3, c.src, 1, 0, 1);
        auto dst = RandomImage(c.turned ? 3 : c.width, c.turned ? c.width : 3, c.dst, 2, c.dstFlags, 2);
        auto state = [&] { return std::make_tuple(Bytes(*src), Bytes(*dst), src->info.Flags, dst->info.pData); };
        const auto before = state();
        LogCapture log;
        EXPECT_EQ(c.call(&src->info, &dst->info), c.status) << c.name;
        EXPECT_TRUE(state() == before) << c.name;
        std::string lines;
        for (const std::string& line : log.Lines()) lines += line + "\n";
        EXPECT_TRUE(!c.log || lines.find(c.log) != std::string::npos) << c.name << ": " << lines;
    }
}

}  // namespace geotest
