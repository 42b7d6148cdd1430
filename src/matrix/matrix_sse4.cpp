// matrix_sse4.cpp: the matrix line workers compiled for SSE4.2 (the only file of this subsystem built with -msse4.2).
#include "matrix/matrix_lines.h"
#include "matrix/matrix_sse2.h"

// The tag of the line workers built here; they run only when g_SSEChecker.m_bUseSSE4 is on.
namespace {
struct TSse4 : TSse2Kernels<TSse4> {};
}  // namespace

KAIP_MATRIX_TABLES(TSse4, Sse4)
