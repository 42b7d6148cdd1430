// bilinear_sse2.cpp: the 8-bit bilinear interior in SSE2 registers, and the choice among the vector copies.
#include "core/unidef.h"

#if defined(__SSE2__)
#include "bayer/bilinear_kernel.h"
#else
#include "bayer/bilinear_simd.h"
#endif

uint32_t BilinearInterior_intr(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwBits,
                               uint32_t dwDstBytes, const TBayerLut& lut, bool bIdentity)
{
#if defined(__SSE2__)
    if (g_SSEChecker.UseAVX2()) return BilinearInterior_avx2(p, dwWidth, dwHeight, dwBits, dwDstBytes, lut, bIdentity);
    if (g_SSEChecker.m_bUseSSSE3)
        return BilinearInterior_ssse3(p, dwWidth, dwHeight, dwBits, dwDstBytes, lut, bIdentity);
    if (g_SSEChecker.m_bUseSSE2)
        return BilinearInterior<V128<false>>(p, dwWidth, dwHeight, dwBits, dwDstBytes, lut, bIdentity);
#endif
    return 1;
}
