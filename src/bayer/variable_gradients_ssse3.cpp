// variable_gradients_ssse3.cpp: the variable-gradients output stage with SSSE3's registers (this file alone is built
// with -mssse3).
#if defined(__SSSE3__)
#include "bayer/variable_gradients_kernel.h"
#else
#include "bayer/variable_gradients_simd.h"
#endif

// Runs only behind g_SSEChecker.m_bUseSSSE3 (see GradientsWriter_intr).
TGradientsWriter GradientsWriter_ssse3(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
#if defined(__SSSE3__)
    return GradientsWriter<V128<true>>(dwBits, dwDstBytes, bIdentity);
#else
    return nullptr;
#endif
}
