// unidef.cpp: detection of the vector sets, the configured SIMD level, and the switches derived from both.
#include "core/unidef.h"

#include <algorithm>
#include <cstdio>

#include "core/log.h"
#include "platform/cpu.h"
#include "platform/ini.h"

// Built right after the logger, before anything that could run a converter.
SSEChecker g_SSEChecker __attribute__((init_priority(102)));

SSEChecker::SSEChecker()
{
    m_iSIMDLevel = 1;
    m_iMPLevel = 1;
    m_bHasSSE2 = pmSSE2Supported() != 0;
    m_bHasNEON = pmNEONSupported() != 0;
    m_bHasSSSE3 = pmSSSE3Supported() != 0;
    m_bHasSSE4 = pmSSE42Supported() != 0;
    m_bHasAVX = pmAVXSupported() != 0;
    m_bHasAVX2 = pmAVX2Supported() != 0;
    m_iMaxMPLevel = 4;
    SSEReadConfiguration();
    DeriveSwitches();
    m_iEffectiveMPLevel = std::min(m_iMaxMPLevel, m_iMPLevel);
    Log.Debug("SSEChecker:: SSE2:%1d SSSE3:%1d SSE4:%1d AVX:%1d NEON:%1d MP:%d\n", m_bUseSSE2, m_bUseSSSE3, m_bUseSSE4,
              m_bUseAVX, m_bUseNEON, m_iMPLevel);
}

void SSEChecker::SSEReadConfiguration()
{
    std::snprintf(m_szIniFile, sizeof m_szIniFile, "%s", KaOsGetTesseraIniFile());
    m_qwIniModificationTime = KaOsGetFileModificationTime(m_szIniFile);
    KaIniHandle hIni = KaIniOpen(";");
    if (KaIniLoad(hIni, m_szIniFile)) {
        m_iSIMDLevel = KaIniGetInteger(hIni, "Processing.Options", "SIMD.Level", 1, 1);
        m_iMPLevel = KaIniGetInteger(hIni, "Processing.Options", "MP.Level", 1, 1);
        Log.Debug("SSEChecker::SSEReadConfiguration: SSEMode=%d MPMode=%d\n", m_iSIMDLevel, m_iMPLevel);
    }
    KaIniClose(hIni);
}

void SSEChecker::DeriveSwitches()
{
    // Each level adds one set; a set is used only where it was also detected.
    const int level = m_iSIMDLevel;
    m_bUseSSE2 = m_bHasSSE2 && level >= 1;
    m_bUseNEON = m_bHasNEON && level >= 1;
    m_bUseSSSE3 = m_bHasSSSE3 && level >= 2;
    m_bUseSSE4 = m_bHasSSE4 && level >= 3;
    m_bUseAVX = m_bHasAVX && level >= 4;
}
