// matrix_sse2.cpp: the matrix line workers with the 8-bit kernels in SSE2 registers (the x86-64 baseline).
#include "matrix/matrix_sse2.h"

#include "matrix/matrix_lines.h"

// The tag of the line workers built here; they run only when g_SSEChecker.m_bUseSSE2 is on.
namespace {
struct TSse2 : TSse2Kernels<TSse2> {};
}  // namespace

KAIP_MATRIX_TABLES(TSse2, Sse2)
