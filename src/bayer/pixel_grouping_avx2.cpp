// pixel_grouping_avx2.cpp: the pixel grouping loops in AVX2 registers (this file alone is built with -mavx2).
#include "bayer/pixel_grouping_kernel.h"

// Runs only behind g_SSEChecker.UseAVX2().
#if defined(__AVX2__)
const std::array<TGroupingLoops, 3> g_GroupingAvx2 = GroupingDepths<TWide256>();
#else
const std::array<TGroupingLoops, 3> g_GroupingAvx2 = GroupingDepths<TWide128>();
#endif
