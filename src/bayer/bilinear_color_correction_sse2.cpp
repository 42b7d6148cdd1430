// bilinear_color_correction_sse2.cpp: the gradient-corrected bilinear interior in SSE2 registers, and the choice
// among the vector copies.
#include "core/unidef.h"

#if defined(__SSE2__)
#include "bayer/color_correction_kernel.h"
#else
#include "bayer/bilinear_color_correction_simd.h"
#endif

TColorCorrectionVector ColorCorrectionVector_intr(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
#if defined(__SSE2__)
    if (g_SSEChecker.UseAVX2()) return ColorCorrectionVector_avx2(dwBits, dwDstBytes, bIdentity);
    if (g_SSEChecker.m_bUseSSE2) return ColorCorrectionVector<C128>(dwBits, dwDstBytes, bIdentity);
#endif
    return {nullptr, nullptr, 0};
}
