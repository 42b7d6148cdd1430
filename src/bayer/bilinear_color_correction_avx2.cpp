// bilinear_color_correction_avx2.cpp: the gradient-corrected bilinear interior in AVX2 registers (this file alone
// is built with -mavx2).
#if defined(__AVX2__)
#include "bayer/color_correction_kernel.h"
#else
#include "bayer/bilinear_color_correction_simd.h"
#endif

// Runs only behind g_SSEChecker.UseAVX2() (see ColorCorrectionVector_intr).
TColorCorrectionVector ColorCorrectionVector_avx2(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
#if defined(__AVX2__)
    return ColorCorrectionVector<C256>(dwBits, dwDstBytes, bIdentity);
#else
    return {nullptr, nullptr, 0};
#endif
}
