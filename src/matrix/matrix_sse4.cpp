// matrix_sse4.cpp: the matrix line workers compiled for SSE4.2 (the only file of this subsystem built with -msse4.2).
#include "matrix/matrix_lines.h"

namespace {

// The tag of the line workers built here; they run only when g_SSEChecker.m_bUseSSE4 is on.
struct TSse4 {};

}  // namespace

// Addresses only: nothing in this file runs before the callers have checked the gate.
const TCorrectionFormat* const g_pCorrectionFormatsSse4 = kCorrectionFormats<TSse4>;
const TConvolutionFormat* const g_pConvolutionFormatsSse4 = kConvolutionFormats<TSse4>;
