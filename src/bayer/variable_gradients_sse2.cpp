// variable_gradients_sse2.cpp: the variable-gradients estimates and output stage in SSE2 registers, and the choice
// among the vector copies.
#include "core/unidef.h"

#if defined(__SSE2__)
#include "bayer/variable_gradients_kernel.h"
#else
#include "bayer/variable_gradients_simd.h"
#endif

TGradientsWriter GradientsWriter_intr(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
#if defined(__SSE2__)
    if (g_SSEChecker.UseAVX2()) return GradientsWriter_avx2(dwBits, dwDstBytes, bIdentity);
    if (g_SSEChecker.m_bUseSSSE3) return GradientsWriter_ssse3(dwBits, dwDstBytes, bIdentity);
    if (g_SSEChecker.m_bUseSSE2) return GradientsWriter<V128<false>>(dwBits, dwDstBytes, bIdentity);
#endif
    return nullptr;
}

TGradientsVector GradientsVector_intr(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
#if defined(__SSE2__)
    if (g_SSEChecker.UseAVX2()) return GradientsVector_avx2(dwBits, dwDstBytes, bIdentity);
    if (g_SSEChecker.m_bUseSSE2) return GradientsVector<W128, V128<false>>(dwBits, dwDstBytes, bIdentity);
#endif
    return {nullptr, nullptr, nullptr, false};
}
