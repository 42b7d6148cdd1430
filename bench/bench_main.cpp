// bench_main.cpp: the Google Benchmark entry point of kaip_bench.
#include <benchmark/benchmark.h>

BENCHMARK_MAIN();
