// formats.h: every pixel format the library knows, with its name for failure messages.
#pragma once

#include <cstdint>

#include "pm.imgproc.h"

struct TFormatName {
    uint32_t code;
    const char* name;
};

// clang-format off
// The row of KaipPixelFormat_<name>.
#define F(name) TFormatName{KaipPixelFormat_##name, #name}
inline constexpr TFormatName kKnownFormats[] = {
    F(Mono8), F(BayerGR8), F(BayerRG8), F(BayerGB8), F(BayerBG8), F(Mono9), F(Mono10), F(BayerGR10), F(BayerRG10),
    F(BayerGB10), F(BayerBG10), F(Mono11), F(Mono12), F(BayerGR12), F(BayerRG12), F(BayerGB12), F(BayerBG12), F(Mono13),
    F(Mono14), F(Mono15), F(Mono16), F(BayerGR16), F(BayerRG16), F(BayerGB16), F(BayerBG16), F(Mono10Packed),
    F(BayerGR10Packed), F(BayerRG10Packed), F(BayerGB10Packed), F(BayerBG10Packed), F(Mono12Packed), F(BayerGR12Packed),
    F(BayerRG12Packed), F(BayerGB12Packed), F(BayerBG12Packed), F(Mono10Mipi), F(BayerGR10Mipi), F(BayerRG10Mipi),
    F(BayerGB10Mipi), F(BayerBG10Mipi), F(Mono12Mipi), F(BGR555), F(BGR565Packed), F(BGR8Packed), F(BGRA8Packed),
    F(RGB8Packed), F(RGBA8Packed), F(RGB10V1Packed), F(RGB10V2Packed), F(BGR10Packed), F(RGB10Packed), F(BGR12Packed),
    F(RGB12Packed), F(BGR16), F(RGB16Packed), F(YUV411Packed), F(YCbCr411_8_CbYYCrYY), F(YCbCr411_8),
    F(YCbCr601_411_8_CbYYCrYY), F(YCbCr709_411_8_CbYYCrYY), F(YUV422Packed), F(YUV422_YUYV_Packed), F(YUV444Packed),
    F(YCbCr8), F(YCbCr8_CbYCr), F(YCbCr422_8), F(YCbCr422_8_CbYCrY), F(YCbCr601_422_8), F(YCbCr601_422_8_CbYCrY),
    F(YCbCr709_422_8), F(YCbCr709_422_8_CbYCrY), F(YCbCr601_8_CbYCr), F(YCbCr709_8_CbYCr), F(RGB8Planar),
    F(RGB10Planar), F(RGB12Planar), F(RGB16Planar),
};
// clang-format on
#undef F

inline const char* FormatName(uint32_t code)
{
    for (const TFormatName& f : kKnownFormats)
        if (f.code == code) return f.name;
    return "?";
}
