// fuzz_util.h: what the fuzz targets share: the fuzzer's bytes as a file, and full reads of a
// descriptor's buffers so that a descriptor promising more bytes than were allocated faults at once.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

#include "pm.imgproc.h"

// One in-memory file per process, rewritten for every input; loaders open it by its
// /proc/self/fd path, which is a regular file to stat and fstat.
class CMemFile {
public:
    CMemFile()
    {
        m_fd = memfd_create("kaip-fuzz", 0);
        if (m_fd < 0) std::abort();
        std::snprintf(m_path, sizeof(m_path), "/proc/self/fd/%d", m_fd);
    }
    const char* Write(const uint8_t* data, size_t size)
    {
        if (ftruncate(m_fd, 0) != 0 || pwrite(m_fd, data, size, 0) != ssize_t(size)) std::abort();
        return m_path;
    }

private:
    int m_fd = -1;
    char m_path[64] = {};
};

// Reads every byte of Height lines of LineIncrement bytes (per plane), so ASan sees a buffer
// smaller than its descriptor.
inline uint32_t TouchImage(const KaipImgInfo& info)
{
    const size_t n = size_t(info.Height) * info.LineIncrement;
    const uint8_t* planes[3] = {info.pData, nullptr, nullptr};
    if (info.Flags & KaipImgFlag_ColorPlanes) {
        planes[0] = info.pDataR;
        planes[1] = info.pDataG;
        planes[2] = info.pDataB;
    }
    uint32_t sum = 0;
    for (const uint8_t* p : planes)
        if (p)
            for (size_t i = 0; i < n; ++i) sum += p[i];
    return sum;
}

// A status is either success or one of the library's codes: anything else is a bug.
inline void CheckStatus(KaipStatus status)
{
    if (status != KASTATUS_OK && (status < KASTATUS_KAIP_INVALID_POINTER || status > KASTATUS_KAIP_JPEG_LOAD_FAILED))
        std::abort();
}
