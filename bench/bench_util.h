// bench_util.h: frame sizes and the memcpy yardstick shared by every benchmark file.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

// A full 5-megapixel frame and an odd small one.
constexpr uint32_t kFrameWidth = 2448, kFrameHeight = 2048;
constexpr uint32_t kSmallWidth = 641, kSmallHeight = 479;

// Reports megapixels per second for a benchmark that processed `pixels` per iteration.
inline void SetPixelRate(benchmark::State& state, uint64_t pixels)
{
    state.counters["MP/s"] =
        benchmark::Counter(double(pixels) * double(state.iterations()) / 1e6, benchmark::Counter::kIsRate);
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

// ---- names the report pairs ----
// Every benchmark of an exported function is named Family/Case/Role, Role one of Ours, Memcpy or
// a peer's name (OpenCV, libyuv); Google Benchmark appends the arguments (/w:2448/h:2048).
// bench/report.py puts the roles of one Family/Case and arguments side by side.
inline std::string BenchName(const std::string& family, const std::string& kase, const std::string& role)
{
    return family + "/" + kase + "/" + role;
}

// Registers fn(state) as Family/Case/Role.
template <class F>
benchmark::internal::Benchmark* RegisterRole(const std::string& family, const std::string& kase,
                                             const std::string& role, F fn)
{
    return benchmark::RegisterBenchmark(BenchName(family, kase, role).c_str(), fn);
}

// The full frame and the odd small one as arguments w and h.
inline benchmark::internal::Benchmark* FrameSizes(benchmark::internal::Benchmark* b)
{
    return b->ArgNames({"w", "h"})->Args({kSmallWidth, kSmallHeight})->Args({kFrameWidth, kFrameHeight});
}

// Family/Case/Memcpy: one copy of the case's destination, dstBytesPerPixel times w * h.
inline benchmark::internal::Benchmark* RegisterMemcpy(const std::string& family, const std::string& kase,
                                                      double dstBytesPerPixel)
{
    return RegisterRole(family, kase, "Memcpy", [dstBytesPerPixel](benchmark::State& state) {
        const uint64_t pixels = uint64_t(state.range(0)) * uint64_t(state.range(1));
        MemcpyYardstick(state, size_t(double(pixels) * dstBytesPerPixel), pixels);
    });
}
