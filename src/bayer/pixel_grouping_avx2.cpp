// pixel_grouping_avx2.cpp: the 8-bit pixel grouping loops in AVX2 registers (this file alone is built with -mavx2).
#include "bayer/pixel_grouping_kernel.h"

// Runs only behind g_SSEChecker.UseAVX2().
#if defined(__AVX2__)
const TGroupingLoops g_GroupingAvx2 = GroupingLoops<TWide256>();
#else
const TGroupingLoops g_GroupingAvx2 = GroupingLoops<TWide128>();
#endif
