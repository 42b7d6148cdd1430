// image.cpp: the owning image record and the plain-spoken status messages.
#include "image.h"

#include <utility>

#include "formats.h"

namespace kaip {

std::string StatusText(KaipStatus status)
{
    char text[256];
    KaipGetStatusMsg(status, text, sizeof text);
    std::string message = text[0] ? text : "no message for this status";
    return message + " (status " + std::to_string(status) + ")";
}

void Check(KaipStatus status, const std::string& step)
{
    if (status != KASTATUS_OK) throw ToolError(step + " failed: " + StatusText(status));
}

Image& Image::operator=(Image&& other) noexcept
{
    if (this != &other) {
        Release();
        m_info = other.m_info;
        m_bytes = std::move(other.m_bytes);  // a moved vector keeps its buffer, so pData stays valid
        other.m_info = KaipImgInfo{};
    }
    return *this;
}

Image Image::Allocate(uint32_t width, uint32_t height, uint32_t pixelFormat, const std::string& step)
{
    Image image;
    Check(KaipInitImgInfo(&image.m_info, width, height, pixelFormat, 0), step);
    Check(KaipAllocateImageData(&image.m_info), step);
    return image;
}

Image Image::Own(std::vector<uint8_t> bytes, uint32_t width, uint32_t height, uint32_t pixelFormat, uint32_t lineBytes)
{
    Image image;
    KaipImgInfo probe{};
    // The pixel increment where the format has one (0 for YUV and the MIPI Bayer codes); the line
    // increment is always the file's own, which for packed formats is shorter than width x increment.
    KaipInitImgInfo(&probe, width, height, pixelFormat, 0);
    image.m_bytes = std::move(bytes);
    image.m_info.Width = width;
    image.m_info.Height = height;
    image.m_info.PixelFormat = pixelFormat;
    image.m_info.Flags = KaipImgFlag_NoDeallocate;
    image.m_info.PixelIncrement = probe.PixelIncrement;
    image.m_info.LineIncrement = lineBytes;
    image.m_info.pData = image.m_bytes.data();
    return image;
}

Image ConvertTo(const Image& image, uint32_t pixelFormat)
{
    std::string pair = FormatName(image.Format()) + " to " + FormatName(pixelFormat);
    if (!KaipCanConvertToPixelFormat(image.Format(), pixelFormat))
        throw ToolError("the library converts nothing from " + pair + " (see kaip formats)");
    Image converted;
    Check(KaipConvertToPixelFormat(image.Info(), converted.Info(), pixelFormat, KaipOption_ReallocateDst),
          "converting " + pair);
    return converted;
}

void Image::Release()
{
    // Library buffers are freed; the NoDeallocate flag of an own buffer makes this a no-op.
    if (m_info.pData || m_info.pDataR) KaipDeallocateImageData(&m_info);
    m_info = KaipImgInfo{};
}

}  // namespace kaip
