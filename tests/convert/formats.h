// formats.h: every pixel format the library knows, with its name for failure messages.
#pragma once

#include <cstdint>

#include "pm.imgproc.h"

struct TFormatName {
    uint32_t code;
    const char* name;
};

inline constexpr TFormatName kKnownFormats[] = {
    {KaipPixelFormat_Mono8, "Mono8"},
    {KaipPixelFormat_BayerGR8, "BayerGR8"},
    {KaipPixelFormat_BayerRG8, "BayerRG8"},
    {KaipPixelFormat_BayerGB8, "BayerGB8"},
    {KaipPixelFormat_BayerBG8, "BayerBG8"},
    {KaipPixelFormat_Mono9, "Mono9"},
    {KaipPixelFormat_Mono10, "Mono10"},
    {KaipPixelFormat_BayerGR10, "BayerGR10"},
    {KaipPixelFormat_BayerRG10, "BayerRG10"},
    {KaipPixelFormat_BayerGB10, "BayerGB10"},
    {KaipPixelFormat_BayerBG10, "BayerBG10"},
    {KaipPixelFormat_Mono11, "Mono11"},
    {KaipPixelFormat_Mono12, "Mono12"},
    {KaipPixelFormat_BayerGR12, "BayerGR12"},
    {KaipPixelFormat_BayerRG12, "BayerRG12"},
    {KaipPixelFormat_BayerGB12, "BayerGB12"},
    {KaipPixelFormat_BayerBG12, "BayerBG12"},
    {KaipPixelFormat_Mono13, "Mono13"},
    {KaipPixelFormat_Mono14, "Mono14"},
    {KaipPixelFormat_Mono15, "Mono15"},
    {KaipPixelFormat_Mono16, "Mono16"},
    {KaipPixelFormat_BayerGR16, "BayerGR16"},
    {KaipPixelFormat_BayerRG16, "BayerRG16"},
    {KaipPixelFormat_BayerGB16, "BayerGB16"},
    {KaipPixelFormat_BayerBG16, "BayerBG16"},
    {KaipPixelFormat_Mono10Packed, "Mono10Packed"},
    {KaipPixelFormat_BayerGR10Packed, "BayerGR10Packed"},
    {KaipPixelFormat_BayerRG10Packed, "BayerRG10Packed"},
    {KaipPixelFormat_BayerGB10Packed, "BayerGB10Packed"},
    {KaipPixelFormat_BayerBG10Packed, "BayerBG10Packed"},
    {KaipPixelFormat_Mono12Packed, "Mono12Packed"},
    {KaipPixelFormat_BayerGR12Packed, "BayerGR12Packed"},
    {KaipPixelFormat_BayerRG12Packed, "BayerRG12Packed"},
    {KaipPixelFormat_BayerGB12Packed, "BayerGB12Packed"},
    {KaipPixelFormat_BayerBG12Packed, "BayerBG12Packed"},
    {KaipPixelFormat_Mono10Mipi, "Mono10Mipi"},
    {KaipPixelFormat_BayerGR10Mipi, "BayerGR10Mipi"},
    {KaipPixelFormat_BayerRG10Mipi, "BayerRG10Mipi"},
    {KaipPixelFormat_BayerGB10Mipi, "BayerGB10Mipi"},
    {KaipPixelFormat_BayerBG10Mipi, "BayerBG10Mipi"},
    {KaipPixelFormat_Mono12Mipi, "Mono12Mipi"},
    {KaipPixelFormat_BGR555, "BGR555"},
    {KaipPixelFormat_BGR565Packed, "BGR565Packed"},
    {KaipPixelFormat_BGR8Packed, "BGR8Packed"},
    {KaipPixelFormat_BGRA8Packed, "BGRA8Packed"},
    {KaipPixelFormat_RGB8Packed, "RGB8Packed"},
    {KaipPixelFormat_RGBA8Packed, "RGBA8Packed"},
    {KaipPixelFormat_RGB10V1Packed, "RGB10V1Packed"},
    {KaipPixelFormat_RGB10V2Packed, "RGB10V2Packed"},
    {KaipPixelFormat_BGR10Packed, "BGR10Packed"},
    {KaipPixelFormat_RGB10Packed, "RGB10Packed"},
    {KaipPixelFormat_BGR12Packed, "BGR12Packed"},
    {KaipPixelFormat_RGB12Packed, "RGB12Packed"},
    {KaipPixelFormat_BGR16, "BGR16"},
    {KaipPixelFormat_RGB16Packed, "RGB16Packed"},
    {KaipPixelFormat_YUV411Packed, "YUV411Packed"},
    {KaipPixelFormat_YCbCr411_8_CbYYCrYY, "YCbCr411_8_CbYYCrYY"},
    {KaipPixelFormat_YCbCr411_8, "YCbCr411_8"},
    {KaipPixelFormat_YCbCr601_411_8_CbYYCrYY, "YCbCr601_411_8_CbYYCrYY"},
    {KaipPixelFormat_YCbCr709_411_8_CbYYCrYY, "YCbCr709_411_8_CbYYCrYY"},
    {KaipPixelFormat_YUV422Packed, "YUV422Packed"},
    {KaipPixelFormat_YUV422_YUYV_Packed, "YUV422_YUYV_Packed"},
    {KaipPixelFormat_YUV444Packed, "YUV444Packed"},
    {KaipPixelFormat_YCbCr8, "YCbCr8"},
    {KaipPixelFormat_YCbCr8_CbYCr, "YCbCr8_CbYCr"},
    {KaipPixelFormat_YCbCr422_8, "YCbCr422_8"},
    {KaipPixelFormat_YCbCr422_8_CbYCrY, "YCbCr422_8_CbYCrY"},
    {KaipPixelFormat_YCbCr601_422_8, "YCbCr601_422_8"},
    {KaipPixelFormat_YCbCr601_422_8_CbYCrY, "YCbCr601_422_8_CbYCrY"},
    {KaipPixelFormat_YCbCr709_422_8, "YCbCr709_422_8"},
    {KaipPixelFormat_YCbCr709_422_8_CbYCrY, "YCbCr709_422_8_CbYCrY"},
    {KaipPixelFormat_YCbCr601_8_CbYCr, "YCbCr601_8_CbYCr"},
    {KaipPixelFormat_YCbCr709_8_CbYCr, "YCbCr709_8_CbYCr"},
    {KaipPixelFormat_RGB8Planar, "RGB8Planar"},
    {KaipPixelFormat_RGB10Planar, "RGB10Planar"},
    {KaipPixelFormat_RGB12Planar, "RGB12Planar"},
    {KaipPixelFormat_RGB16Planar, "RGB16Planar"},
};

inline const char* FormatName(uint32_t code)
{
    for (const TFormatName& f : kKnownFormats)
        if (f.code == code) return f.name;
    return "?";
}
