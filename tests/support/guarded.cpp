// guarded.cpp: guard-page buffers and seeded random data for the tests.
#include "support/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

GuardedBuffer::GuardedBuffer(size_t size) : m_size(size)
{
    const size_t page = size_t(sysconf(_SC_PAGESIZE));
    const size_t dataPages = (size + page - 1) / page;
    m_mapSize = (dataPages + 1) * page;
    void* p = mmap(nullptr, m_mapSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) throw std::runtime_error("mmap failed");
    m_pMap = static_cast<uint8_t*>(p);
    mprotect(m_pMap + dataPages * page, page, PROT_NONE);
    m_pData = m_pMap + dataPages * page - size;
}

GuardedBuffer::~GuardedBuffer()
{
    munmap(m_pMap, m_mapSize);
}

GuardedImage::GuardedImage(uint32_t width, uint32_t height, uint32_t pixelFormat, uint32_t lineIncrement,
                           uint32_t flags, uint32_t pixelIncrement)
    : buffer(size_t(height) * lineIncrement)
{
    info.Width = width;
    info.Height = height;
    info.PixelFormat = pixelFormat;
    info.Flags = flags;
    info.PixelIncrement = pixelIncrement;
    info.LineIncrement = lineIncrement;
    info.pData = buffer.data();
}

void FillRandom(uint8_t* p, size_t n, uint32_t seed)
{
    std::mt19937 gen(seed);
    for (size_t i = 0; i < n; ++i) p[i] = uint8_t(gen());
}

std::vector<uint8_t> RandomBytes(size_t n, uint32_t seed)
{
    std::vector<uint8_t> v(n);
    FillRandom(v.data(), n, seed);
    return v;
}
