// bilinear_sse2.cpp: the bilinear and nearest-neighbour interiors in SSE2 registers, and the choice among the vector
// copies.
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

uint32_t NearestInterior_intr(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwDstBytes,
                              bool bRgb)
{
#if defined(__SSE2__)
    if (g_SSEChecker.UseAVX2()) return NearestInterior_avx2(p, dwWidth, dwHeight, dwDstBytes, bRgb);
    if (g_SSEChecker.m_bUseSSSE3) return NearestInterior_ssse3(p, dwWidth, dwHeight, dwDstBytes, bRgb);
    if (g_SSEChecker.m_bUseSSE2) return NearestInterior<V128<false>>(p, dwWidth, dwHeight, dwDstBytes, bRgb);
#endif
    return 1;
}
