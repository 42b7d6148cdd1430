// mirror_sse2.cpp: the left-right mirror's SSE2 blocks, and the choice of the widest set allowed.
#include "core/unidef.h"
#include "general/geometry.h"

#if defined(__SSE2__)
#include "general/mirror_kernel.h"
#endif

geometry::TMirrorBlocks geometry::MirrorBlocks_intr(unsigned P)
{
#if defined(__SSE2__)
    if (g_SSEChecker.UseAVX2()) return MirrorBlocks_avx2(P);
    if (g_SSEChecker.m_bUseSSSE3) return MirrorBlocks_ssse3(P);
    if (g_SSEChecker.m_bUseSSE2) {
        // Without a byte shuffle, reversing 16 single bytes takes six register operations: two 64-bit
        // byte swaps of the scalar words cost less, so they copy single bytes here.
        geometry::TMirrorBlocks blocks = MirrorBlocks<V128<false>, V128<false>>(P);
        if (P == 1) blocks.Reverse = nullptr;
        return blocks;
    }
#endif
    return {};
}
