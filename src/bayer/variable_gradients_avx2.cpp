// variable_gradients_avx2.cpp: the variable-gradients estimates and output stage with AVX2's registers (this file
// alone is built with -mavx2).
#if defined(__AVX2__)
#include "bayer/variable_gradients_kernel.h"
#else
#include "bayer/variable_gradients_simd.h"
#endif

// Runs only behind g_SSEChecker.UseAVX2() (see GradientsWriter_intr).
TGradientsWriter GradientsWriter_avx2(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
#if defined(__AVX2__)
    return GradientsWriter<V256>(dwBits, dwDstBytes, bIdentity);
#else
    return nullptr;
#endif
}

// Runs only behind g_SSEChecker.UseAVX2() (see GradientsVector_intr).
TGradientsVector GradientsVector_avx2(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
#if defined(__AVX2__)
    return GradientsVector<W256, V256>(dwBits, dwDstBytes, bIdentity);
#else
    return {nullptr, nullptr, nullptr, false};
#endif
}
