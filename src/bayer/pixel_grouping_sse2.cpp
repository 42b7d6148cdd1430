// pixel_grouping_sse2.cpp: the pixel grouping loops in SSE2 registers.
#include "bayer/pixel_grouping_kernel.h"

// Runs only behind g_SSEChecker.m_bUseSSE2.
const std::array<TGroupingLoops, 3> g_GroupingSse2 = GroupingDepths<TWide128>();
