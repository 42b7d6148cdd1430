// bilinear_avx2.cpp: the 8-bit bilinear interior in AVX2 registers (this file alone is built with -mavx2).
#if defined(__AVX2__)
#include "bayer/bilinear_kernel.h"
#else
#include "bayer/bilinear_simd.h"
#endif

// Runs only behind g_SSEChecker.UseAVX2() (see BilinearInterior_intr).
uint32_t BilinearInterior_avx2(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwBits,
                               uint32_t dwDstBytes, const TBayerLut& lut, bool bIdentity)
{
#if defined(__AVX2__)
    return BilinearInterior<V256>(p, dwWidth, dwHeight, dwBits, dwDstBytes, lut, bIdentity);
#else
    return 1;
#endif
}

uint32_t NearestInterior_avx2(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwDstBytes,
                              bool bRgb)
{
#if defined(__AVX2__)
    return NearestInterior<V256>(p, dwWidth, dwHeight, dwDstBytes, bRgb);
#else
    return 1;
#endif
}
