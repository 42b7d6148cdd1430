// bench_util.h: frame sizes and the memcpy yardstick shared by every benchmark file.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

// A full 5-megapixel frame and an odd small one.
constexpr uint32_t kFrameWidth = 2448, kFrameHeight = 2048;
constexpr uint32_t kSmallWidth = 641, kSmallHeight = 479;

// Reports megapixels per second for a benchmark that processed `pixels` per iteration.
inline void SetPixelRate(benchmark::State& state, uint64_t pixels)
{
    state.counters["MP/s"] = benchmark::Counter(double(pixels) * double(state.iterations()) / 1e6,
                                                benchmark::Counter::kIsRate);
}

// The physical limit for moving `bytes`: copying them once.
inline void MemcpyYardstick(benchmark::State& state, size_t bytes, uint64_t pixels)
{
    std::vector<uint8_t> src(bytes, 1), dst(bytes);
    for (auto _ : state) {
        std::memcpy(dst.data(), src.data(), bytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(bytes) * state.iterations());
    SetPixelRate(state, pixels);
}
