// image.h: an owning image record around KaipImgInfo and the tool's error type.
#pragma once

#include <pm.imgproc.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace kaip {

// A failure the tool reports to the user and ends the command with: the message says which step
// failed and why; the exit code is 1 for work that failed and 2 for a wrong command line.
class ToolError : public std::runtime_error {
public:
    explicit ToolError(const std::string& message, int exitCode = 1) : std::runtime_error(message), m_exitCode(exitCode)
    {
    }
    int ExitCode() const { return m_exitCode; }

private:
    int m_exitCode;
};

// "<step> failed: <library message> (status <n>)".
std::string StatusText(KaipStatus status);
void Check(KaipStatus status, const std::string& step);

// An image whose buffer belongs either to the library (released on destruction) or to the
// record itself (raw files read from disk, marked KaipImgFlag_NoDeallocate for the library).
class Image {
public:
    Image() = default;
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    Image(Image&& other) noexcept { *this = std::move(other); }
    Image& operator=(Image&& other) noexcept;
    ~Image() { Release(); }

    // An image whose buffer the library allocates.
    static Image Allocate(uint32_t width, uint32_t height, uint32_t pixelFormat, const std::string& step);
    // An image over bytes the record holds itself; lineBytes apart, no padding.
    static Image Own(std::vector<uint8_t> bytes, uint32_t width, uint32_t height, uint32_t pixelFormat,
                     uint32_t lineBytes);

    KaipImgInfo* Info() { return &m_info; }
    const KaipImgInfo* Info() const { return &m_info; }
    uint32_t Width() const { return m_info.Width; }
    uint32_t Height() const { return m_info.Height; }
    uint32_t Format() const { return m_info.PixelFormat; }
    double Megapixels() const { return double(m_info.Width) * m_info.Height / 1e6; }
    // Names the same bytes as another pixel format of the same layout (BayerRG16 as Mono16).
    void Relabel(uint32_t pixelFormat) { m_info.PixelFormat = pixelFormat; }

private:
    void Release();

    KaipImgInfo m_info{};
    std::vector<uint8_t> m_bytes;
};

// The image in another pixel format, through the library's conversion; a pair it does not support
// is told as such.
Image ConvertTo(const Image& image, uint32_t pixelFormat);

}  // namespace kaip
