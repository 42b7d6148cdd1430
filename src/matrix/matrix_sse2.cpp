// matrix_sse2.cpp: the matrix line workers with the 8-bit kernels in SSE2 registers (the x86-64 baseline).
#include "matrix/matrix_sse2.h"

#include "matrix/matrix_lines.h"

// The tag of the line workers built here; they run only when g_SSEChecker.m_bUseSSE2 is on.
namespace {
struct TSse2 {
    using TVector = TVec128<TSse2>;
    template <int iStep>
    static uint32_t CorrectBytes(const uint8_t* pSrc, uint8_t* pDst, uint32_t dwWidth, const int32_t* c, int iRed)
    {
        return CorrectBytesSse2<TSse2, iStep>(pSrc, pDst, dwWidth, c, iRed);
    }
};
}  // namespace

KAIP_MATRIX_TABLES(TSse2, Sse2)
