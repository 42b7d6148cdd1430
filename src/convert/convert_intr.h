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

// The vector builds the members try first (after their variant above, if they have one): non-zero when the
// SSE2 switch is on and the whole image was converted (the scalar member's bytes, the variants' store
// policy) by the widest build the switches allow, 0 otherwise. They serve the members whose variant asks for
// SSSE3 when that gate is closed, and members without a variant. Each entry: the member, then 1 or 0 for
// whether it has an SSSE3 build and an AVX2 build beside its SSE2 one.
#define KAIP_VECTOR_MEMBERS(X)             \
    X(SwapColor8Data, 0, 0)                \
    X(Convert_Mono8_to_BGR24, 0, 0)        \
    X(Convert_BGR24_to_BGR32, 0, 0)        \
    X(Convert_RGB24_to_BGR32, 0, 0)        \
    X(Convert_BGR15_to_BGR24, 0, 1)        \
    X(Convert_BGR15_to_RGB24, 0, 1)        \
    X(Convert_BGR15_to_BGR32, 0, 1)        \
    X(Convert_BGR15_to_RGB32, 0, 1)        \
    X(Convert_BGR16_to_BGR24, 0, 1)        \
    X(Convert_BGR16_to_RGB24, 0, 1)        \
    X(Convert_BGR16_to_BGR32, 0, 1)        \
    X(Convert_BGR16_to_RGB32, 0, 1)        \
    X(Convert_BGR24_to_Mono8, 1, 1)        \
    X(Convert_RGB24_to_Mono8, 1, 1)        \
    X(Convert_BGR32_to_Mono8, 1, 1)        \
    X(Convert_RGB32_to_Mono8, 1, 1)        \
    X(Convert_BGR24_to_BGR15, 1, 1)        \
    X(Convert_RGB24_to_BGR15, 1, 1)        \
    X(Convert_BGR32_to_BGR15, 0, 1)        \
    X(Convert_RGB32_to_BGR15, 0, 1)        \
    X(Convert_BGR24_to_BGR16, 1, 1)        \
    X(Convert_RGB24_to_BGR16, 1, 1)        \
    X(Convert_BGR32_to_BGR16, 0, 1)        \
    X(Convert_RGB32_to_BGR16, 0, 1)        \
    X(Convert_BGR32_to_BGR24, 1, 1)        \
    X(Convert_RGB32_to_RGB24, 1, 1)        \
    X(Convert_BGR32_to_RGB24, 1, 1)        \
    X(Convert_Yuv411_to_BGR24, 0, 1)       \
    X(Convert_Yuv411_to_RGB24, 0, 1)       \
    X(Convert_Yuv411_to_BGR32, 0, 1)       \
    X(Convert_Yuv411_to_RGB32, 0, 1)       \
    X(Convert_Yuv411YYuYYv_to_BGR24, 0, 1) \
    X(Convert_Yuv411YYuYYv_to_RGB24, 0, 1) \
    X(Convert_Yuv411YYuYYv_to_BGR32, 0, 1) \
    X(Convert_Yuv411YYuYYv_to_RGB32, 0, 1) \
    X(Convert_Yuv422_to_BGR24, 0, 1)       \
    X(Convert_Yuv422_to_RGB24, 0, 1)       \
    X(Convert_Yuv422_to_BGR32, 0, 1)       \
    X(Convert_Yuv422_to_RGB32, 0, 1)       \
    X(Convert_Yuv422yuyv_to_BGR24, 0, 1)   \
    X(Convert_Yuv422yuyv_to_RGB24, 0, 1)   \
    X(Convert_Yuv422yuyv_to_BGR32, 0, 1)   \
    X(Convert_Yuv422yuyv_to_RGB32, 0, 1)   \
    X(Convert_Yuv444_to_BGR24, 0, 1)       \
    X(Convert_Yuv444_to_RGB24, 0, 1)       \
    X(Convert_Yuv444_to_BGR32, 0, 1)       \
    X(Convert_Yuv444_to_RGB32, 0, 1)       \
    X(Convert_YCbCr444_to_BGR24, 0, 1)     \
    X(Convert_YCbCr444_to_RGB24, 0, 1)     \
    X(Convert_YCbCr444_to_BGR32, 0, 1)     \
    X(Convert_YCbCr444_to_RGB32, 0, 1)
#define KAIP_DECLARE_VECTOR_MEMBER(name, kSsse3, kAvx2) int name##_vec(KAIP_LINE_PARAMS, bool bReverseLines);
KAIP_VECTOR_MEMBERS(KAIP_DECLARE_VECTOR_MEMBER)
int Convert_MonoPacked_to_Mono8_vec(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);
int Convert_MonoMipi_to_Mono8_vec(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);
