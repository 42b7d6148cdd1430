// convert_lines.h: the line converters, each converting a whole image between two raw pixel layouts line by line.
//
// Arguments: width and height of the source, source and destination buffers and line increments, the bit
// counts some families take, and the reverse-lines flag (source line i is written to destination line
// height-1-i). Exactly width pixels are written per line (CopyBitmapData: the smaller line increment, padding
// included); destination padding is never written. Names: same letter order keeps the channel order, a
// different one swaps red and blue.
#pragma once

#include <cstdint>

// The six leading arguments every member shares.
#define KAIP_LINE_PARAMS                                                                            \
    uint32_t dwWidth, uint32_t dwHeight, const uint8_t *pSrc, uint8_t *pDst, uint32_t dwSrcLineInc, \
        uint32_t dwDstLineInc

// Copies and swaps
void CopyBitmapData(KAIP_LINE_PARAMS, bool bReverseLines);
void SwapColor8Data(KAIP_LINE_PARAMS, bool bReverseLines);
void SwapColor16Data(KAIP_LINE_PARAMS, bool bReverseLines);
void Copy_MonoWord_to_MonoWord(KAIP_LINE_PARAMS, bool bReverseLines);

// To Mono8
void Convert_BGR15_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR16_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR24_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB24_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR30_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB30_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR32_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB32_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR36_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB36_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR48_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB48_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_MonoWord_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);
void Convert_MonoPacked_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);
void Convert_MonoMipi_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);

// To BGR15
void Convert_Mono8_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR16_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR24_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB24_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR32_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB32_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_MonoWord_to_BGR15(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);

// To BGR16
void Convert_Mono8_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR15_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR24_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB24_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR32_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB32_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_MonoWord_to_BGR16(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);

// To BGR24
void Convert_Mono8_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR15_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR16_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR30_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB30_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR32_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR36_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB36_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR48_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB48_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_MonoWord_to_BGR24(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);

// To RGB24
void Convert_BGR15_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR16_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR24_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR32_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB32_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_MonoPacked_to_RGB24(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);

// To BGR32
void Convert_Mono8_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR15_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR16_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR24_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB24_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR30_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB30_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB32_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR36_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB36_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR48_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB48_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_MonoWord_to_BGR32(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);

// To RGB32
void Convert_BGR15_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR16_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR24_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_MonoPacked_to_RGB32(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);

// To RGB30 and BGR30
void Convert_Mono8_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR24_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB24_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR32_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB32_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR36_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB36_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB48_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_MonoWord_to_RGB30(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);
void Convert_RGB48_to_BGR30(KAIP_LINE_PARAMS, bool bReverseLines);

// To RGB36 and BGR36
void Convert_Mono8_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR24_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB24_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR32_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB32_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR30_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB30_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB48_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_MonoWord_to_RGB36(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);
void Convert_RGB48_to_BGR36(KAIP_LINE_PARAMS, bool bReverseLines);

// To RGB48
void Convert_Mono8_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR24_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB24_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR32_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB32_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR30_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB30_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_BGR36_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_RGB36_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_MonoWord_to_RGB48(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);

// To MonoWord
void Convert_Mono8_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_MonoWord_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);
void Convert_MonoWord_to_MonoWord16(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines);
void Convert_MonoPacked_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);
void Convert_MonoMipi_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines);
void Convert_BGR15_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_BGR16_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_BGR24_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_RGB24_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_BGR30_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_RGB30_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_RGB32_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_BGR32_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_BGR36_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_RGB36_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_BGR48_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_RGB48_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);

// Yuv411
void Convert_Yuv411_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv411_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_Yuv411_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv411_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv411_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv411_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines);

// Yuv411YYuYYv
void Convert_Yuv411YYuYYv_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv411YYuYYv_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_Yuv411YYuYYv_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv411YYuYYv_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv411YYuYYv_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv411YYuYYv_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines);

// Yuv422
void Convert_Yuv422_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv422_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_Yuv422_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv422_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv422_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv422_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines);

// Yuv422yuyv
void Convert_Yuv422yuyv_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv422yuyv_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_Yuv422yuyv_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv422yuyv_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv422yuyv_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv422yuyv_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines);

// YCbCr422_8
void Convert_YCbCr422_8_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_YCbCr422_8_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_YCbCr422_8_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_YCbCr422_8_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_YCbCr422_8_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_YCbCr422_8_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines);

// Yuv444
void Convert_Yuv444_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv444_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_Yuv444_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv444_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv444_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_Yuv444_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines);

// YCbCr444
void Convert_YCbCr444_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_YCbCr444_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines);
void Convert_YCbCr444_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_YCbCr444_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_YCbCr444_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines);
void Convert_YCbCr444_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines);
