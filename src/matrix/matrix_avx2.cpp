// matrix_avx2.cpp: the matrix line workers compiled for AVX2 (the only file of this subsystem built with -mavx2).
#include "matrix/matrix_lines.h"

namespace {

// The tag of the line workers built here; they run only when g_SSEChecker.UseAVX2() is on.
struct TAvx2 {};

}  // namespace

// Addresses only: nothing in this file runs before the callers have checked the gate.
const TCorrectionFormat* const g_pCorrectionFormatsAvx2 = kCorrectionFormats<TAvx2>;
const TConvolutionFormat* const g_pConvolutionFormatsAvx2 = kConvolutionFormats<TAvx2>;
