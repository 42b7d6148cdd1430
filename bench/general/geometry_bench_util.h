// geometry_bench_util.h: full-frame images for the geometry benchmarks.
#pragma once

#include <vector>

#include "bench_util.h"
#include "pm.imgproc.h"

// A frame of the given format over a vector the benchmark owns.
struct TBenchImage {
    TBenchImage(uint32_t width, uint32_t height, uint32_t format)
    {
        KaipInitImgInfo(&info, width, height, format, 0);
        bytes.assign(size_t(info.LineIncrement) * height, 0x5A);
        for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = uint8_t(i * 7 + (i >> 11));
        info.pData = bytes.data();
    }
    size_t Size() const { return bytes.size(); }
    KaipImgInfo info{};
    std::vector<uint8_t> bytes;
};
