// convert_intr.cpp: the vector variants' entry points. No vector code is built yet, so every gate stays
// closed: each returns 0 and its scalar member does the work.
#include "convert/convert_intr.h"

#pragma GCC diagnostic ignored "-Wunused-parameter"

// clang-format off
int CopyBitmapData_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int SwapColor8Data_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_Mono8_to_BGR24_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_Mono8_to_BGR32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_BGR24_to_BGR32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_RGB24_to_BGR32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_RGB32_to_BGR32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_MonoWord_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t, bool) { return 0; }
int Convert_MonoPacked_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool) { return 0; }
int Convert_MonoMipi_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool) { return 0; }
int Convert_YCbCr422_8_to_BGR24_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_YCbCr422_8_to_RGB24_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_YCbCr422_8_to_BGR32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_YCbCr422_8_to_RGB32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
// clang-format on
