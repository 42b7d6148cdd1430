// bilinear_ssse3.cpp: the 8-bit bilinear interior with SSSE3's byte shuffles (this file alone is built with -mssse3).
#if defined(__SSSE3__)
#include "bayer/bilinear_kernel.h"
#else
#include "bayer/bilinear_simd.h"
#endif

// Runs only behind g_SSEChecker.m_bUseSSSE3 (see BilinearInterior_intr).
uint32_t BilinearInterior_ssse3(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwBits,
                                uint32_t dwDstBytes, const TBayerLut& lut, bool bIdentity)
{
#if defined(__SSSE3__)
    return BilinearInterior<V128<true>>(p, dwWidth, dwHeight, dwBits, dwDstBytes, lut, bIdentity);
#else
    return 1;
#endif
}

uint32_t NearestInterior_ssse3(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwDstBytes,
                               bool bRgb)
{
#if defined(__SSSE3__)
    return NearestInterior<V128<true>>(p, dwWidth, dwHeight, dwDstBytes, bRgb);
#else
    return 1;
#endif
}
