// bench_main.cpp: the Google Benchmark entry point of kaip_bench.
#include <benchmark/benchmark.h>

#if defined(KAIP_BENCH_OPENCV)
#include <opencv2/core.hpp>

namespace {
// Every peer runs on one thread, as ours does.
const int kOneThread = (cv::setNumThreads(1), 0);
}  // namespace
#endif

BENCHMARK_MAIN();
