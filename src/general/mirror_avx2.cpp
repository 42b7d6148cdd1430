// mirror_avx2.cpp: the left-right mirror's 32-byte blocks (this file alone is built with -mavx2); three-byte
// pixels keep 16-byte blocks.
#include "general/geometry.h"

#if defined(__AVX2__)
#include "general/mirror_kernel.h"
#endif

// Runs only behind g_SSEChecker.UseAVX2() (see MirrorBlocks_intr).
geometry::TMirrorBlocks geometry::MirrorBlocks_avx2(unsigned P)
{
#if defined(__AVX2__)
    return MirrorBlocks<V256, V128<true>>(P);
#else
    return {};
#endif
}
