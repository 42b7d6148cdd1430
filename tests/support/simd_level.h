// simd_level.h: the configured SIMD level for one scope, for tests that compare the vector workers with
// the baseline.
#pragma once

#include "core/unidef.h"

// 0 runs the baseline workers, 1 the SSE2 ones, 2 adds SSSE3, 3 SSE4 and 4 AVX/AVX2 (each as far as
// the processor has them); the old level comes back at the end of the scope.
class ScopedSimdLevel {
public:
    explicit ScopedSimdLevel(int level) : m_saved(g_SSEChecker.m_iSIMDLevel) { Set(level); }
    ~ScopedSimdLevel() { Set(m_saved); }
    ScopedSimdLevel(const ScopedSimdLevel&) = delete;
    ScopedSimdLevel& operator=(const ScopedSimdLevel&) = delete;

private:
    static void Set(int level)
    {
        g_SSEChecker.m_iSIMDLevel = level;
        g_SSEChecker.DeriveSwitches();
    }
    int m_saved;
};
