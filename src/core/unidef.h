// unidef.h: the processor's vector capabilities and the configured SIMD level, read once at load.
#pragma once

#include <cstdint>

class SSEChecker {
public:
    SSEChecker();
    // Re-derives the switches from the detected sets and the levels (used by tests).
    void DeriveSwitches();

    bool m_bUseSSE2;
    bool m_bUseSSSE3;
    bool m_bUseSSE4;
    bool m_bUseAVX;
    bool m_bUseNEON;
    bool m_bHasSSE2;
    bool m_bHasSSSE3;
    bool m_bHasSSE4;
    bool m_bHasAVX;
    bool m_bHasNEON;
    int32_t m_iEffectiveMPLevel;
    int32_t m_iMaxMPLevel;
    int32_t m_iSIMDLevel;
    int32_t m_iMPLevel;
    char m_szIniFile[512];
    int64_t m_qwIniModificationTime;
    // AVX2 on top of AVX (our wide paths need it); used only where m_bUseAVX is on.
    bool m_bHasAVX2;

    // The AVX2 code paths run only when both the configuration and the processor allow.
    bool UseAVX2() const { return m_bUseAVX && m_bHasAVX2; }

private:
    void SSEReadConfiguration();
};

extern SSEChecker g_SSEChecker;
