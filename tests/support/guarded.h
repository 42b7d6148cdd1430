// guarded.h: test buffers with an unreadable page right after their last byte, and seeded random data.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

#include "pm.imgproc.h"

// Bytes that end exactly at an inaccessible page, so any read or write past the end faults.
class GuardedBuffer {
public:
    explicit GuardedBuffer(size_t size);
    ~GuardedBuffer();
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    uint8_t* data() { return m_pData; }
    const uint8_t* data() const { return m_pData; }
    size_t size() const { return m_size; }

private:
    uint8_t* m_pMap = nullptr;
    size_t m_mapSize = 0;
    uint8_t* m_pData = nullptr;
    size_t m_size = 0;
};

// An image whose buffer is a GuardedBuffer; the descriptor is filled by hand, so any format
// (YUV and planar ones included) can be described.
struct GuardedImage {
    GuardedImage(uint32_t width, uint32_t height, uint32_t pixelFormat, uint32_t lineIncrement, uint32_t flags = 0,
                 uint32_t pixelIncrement = 0);
    KaipImgInfo info{};
    GuardedBuffer buffer;
};

// The whole buffer of a guarded image, padding included, whatever its descriptor now says.
inline std::vector<uint8_t> Bytes(const GuardedImage& img)
{
    return {img.buffer.data(), img.buffer.data() + img.buffer.size()};
}

// Fills bytes from a seeded generator.
void FillRandom(uint8_t* p, size_t n, uint32_t seed);
std::vector<uint8_t> RandomBytes(size_t n, uint32_t seed);
