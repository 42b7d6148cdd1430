// mirror_ssse3.cpp: the left-right mirror's blocks with SSSE3's byte shuffle (this file alone is built with -mssse3).
#include "general/geometry.h"

#if defined(__SSSE3__)
#include "general/mirror_kernel.h"
#endif

// Runs only behind g_SSEChecker.m_bUseSSSE3 (see MirrorBlocks_intr).
geometry::TMirrorBlocks geometry::MirrorBlocks_ssse3(unsigned P)
{
#if defined(__SSSE3__)
    return MirrorBlocks<V128<true>, V128<true>>(P);
#else
    return {};
#endif
}
