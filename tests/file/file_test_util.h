// file_test_util.h: scratch folders, file bytes, random images and the independent tools of the file tests.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "pm.imgproc.h"
#include "support/guarded.h"

namespace filetest {

// A fresh folder under /tmp, removed with everything in it.
class TempDir {
public:
    TempDir()
    {
        char name[] = "/tmp/kaip_file_XXXXXX";
        m_path = mkdtemp(name);
    }
    ~TempDir() { std::filesystem::remove_all(m_path); }
    std::string operator/(const std::string& name) const { return m_path + "/" + name; }
    const std::string& path() const { return m_path; }
    // Entries of the folder (a failed save must leave no temporary behind).
    size_t Count() const
    {
        return size_t(
            std::distance(std::filesystem::directory_iterator(m_path), std::filesystem::directory_iterator()));
    }

private:
    std::string m_path;
};

inline std::vector<uint8_t> ReadBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

inline uint32_t Le32(const std::vector<uint8_t>& b, size_t at)
{
    return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | uint32_t(b[at + 3]) << 24;
}
inline void Put16(std::vector<uint8_t>& b, size_t at, uint32_t v)
{
    b[at] = uint8_t(v);
    b[at + 1] = uint8_t(v >> 8);
}
inline void Put32(std::vector<uint8_t>& b, size_t at, uint32_t v)
{
    Put16(b, at, v);
    Put16(b, at + 2, v >> 16);
}
// A copy of the bytes with a 1-, 2- or 4-byte field replaced.
inline std::vector<uint8_t> With(std::vector<uint8_t> b, size_t at, uint32_t v, int size = 4)
{
    size == 1 ? void(b[at] = uint8_t(v)) : size == 2 ? Put16(b, at, v) : Put32(b, at, v);
    return b;
}

// Picture row r (0 = top) of any descriptor, whatever the memory order.
inline const uint8_t* PictureRow(const KaipImgInfo& img, uint32_t r)
{
    const uint32_t line = (img.Flags & KaipImgFlag_BottomUp) ? img.Height - 1 - r : r;
    return img.pData + size_t(line) * img.LineIncrement;
}

// A random image in a guarded buffer; padding bytes are random too.
struct TestImage : GuardedImage {
    TestImage(uint32_t w, uint32_t h, uint32_t format, uint32_t pixelIncrement, uint32_t lineIncrement, uint32_t flags,
              uint32_t seed)
        : GuardedImage(w, h, format, lineIncrement, flags, pixelIncrement)
    {
        FillRandom(buffer.data(), buffer.size(), seed);
    }
    // Picture row r (0 = top) whatever the memory order.
    const uint8_t* Row(uint32_t r) const { return PictureRow(info, r); }
};

// Frees a library-allocated descriptor at the end of a test.
struct Loaded {
    KaipImgInfo info{};
    ~Loaded() { KaipDeallocateImageData(&info); }
};

inline bool RunQuietly(const std::string& command)
{
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

}  // namespace filetest
