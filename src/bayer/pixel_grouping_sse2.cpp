// pixel_grouping_sse2.cpp: the 8-bit pixel grouping loops in SSE2 registers.
#include "bayer/pixel_grouping_kernel.h"

// Runs only behind g_SSEChecker.m_bUseSSE2.
const TGroupingLoops g_GroupingSse2 = GroupingLoops<TWide128>();
