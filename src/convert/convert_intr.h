// convert_intr.h: the vector variants of the most used line converters. Each takes its scalar member's
// arguments and returns non-zero when it converted the whole image (also for a height below 1), 0 when its
// gate in g_SSEChecker is closed (or, for the MonoWord and MIPI variants, the source depth is one the scalar
// member alone handles) and it did nothing; the bytes written are exactly the scalar member's.
#pragma once

#include "convert/convert_lines.h"

int CopyBitmapData_intr(KAIP_LINE_PARAMS, bool bReverseLines);
int SwapColor8Data_intr(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_Mono8_to_BGR24_intr(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_Mono8_to_BGR32_intr(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_BGR24_to_BGR32_intr(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_RGB24_to_BGR32_intr(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_RGB32_to_BGR32_intr(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_MonoWord_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);
int Convert_MonoPacked_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);
int Convert_MonoMipi_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);
int Convert_YCbCr422_8_to_BGR24_intr(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_YCbCr422_8_to_RGB24_intr(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_YCbCr422_8_to_BGR32_intr(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_YCbCr422_8_to_RGB32_intr(KAIP_LINE_PARAMS, bool bReverseLines);

// The SSE2 builds of the members whose variant above asks for SSSE3, which the member tries when that
// variant's gate is closed: non-zero when the SSE2 switch is on and the whole image was converted (the
// scalar member's bytes, the same store policy), 0 otherwise.
int SwapColor8Data_sse2(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_Mono8_to_BGR24_sse2(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_BGR24_to_BGR32_sse2(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_RGB24_to_BGR32_sse2(KAIP_LINE_PARAMS, bool bReverseLines);
int Convert_MonoPacked_to_Mono8_sse2(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);
int Convert_MonoMipi_to_Mono8_sse2(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);
