// convert_lines.cpp: every line converter as one instance of the line loop with a reader and a writer.
#include "convert/convert_lines.h"

#include <algorithm>
#include <cstring>

#include "convert/convert_intr.h"
#include "convert/convert_pixel.h"
#include "core/log.h"

using namespace convert;

#define KAIP_LINE_ARGS dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc

namespace {

// A member asked for a source depth it cannot read writes nothing and says so once per line.
void LogEachLine(uint32_t dwHeight, const char* pszFormat, const char* pszFunc)
{
    for (int32_t y = 0; y < int32_t(dwHeight); ++y) Log.Debug(pszFormat, pszFunc);
}

}  // namespace

void CopyBitmapData(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (CopyBitmapData_intr(KAIP_LINE_ARGS, bReverseLines)) return;
    const size_t bytes = std::min(dwSrcLineInc, dwDstLineInc);
    ForEachLine(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                [bytes](const uint8_t* pS, uint8_t* pD) { std::memcpy(pD, pS, bytes); });
}

void SwapColor8Data(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (SwapColor8Data_intr(KAIP_LINE_ARGS, bReverseLines) || SwapColor8Data_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB24{}, WBGR24{});
}

void SwapColor16Data(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB48{}, WBGR48{});
}

void Copy_MonoWord_to_MonoWord(KAIP_LINE_PARAMS, bool bReverseLines)
{
    const size_t bytes = size_t(dwWidth) * 2;
    ForEachLine(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                [bytes](const uint8_t* pS, uint8_t* pD) { std::memcpy(pD, pS, bytes); });
}

void Convert_BGR15_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR15{}, WMono8{});
}

void Convert_BGR16_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR16{}, WMono8{});
}

void Convert_BGR24_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR24_to_Mono8_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR24{}, WMono8{});
}

void Convert_RGB24_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_RGB24_to_Mono8_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB24{}, WMono8{});
}

void Convert_BGR30_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR30{}, WMono8{});
}

void Convert_RGB30_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB30{}, WMono8{});
}

void Convert_BGR32_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR32_to_Mono8_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR32{}, WMono8{});
}

void Convert_RGB32_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_RGB32_to_Mono8_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB32{}, WMono8{});
}

void Convert_BGR36_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR36{}, WMono8{});
}

void Convert_RGB36_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB36{}, WMono8{});
}

void Convert_BGR48_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR48{}, WMono8{});
}

void Convert_RGB48_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB48{}, WMono8{});
}

void Convert_MonoWord_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    if (Convert_MonoWord_to_Mono8_intr(KAIP_LINE_ARGS, dwSrcBits, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMonoWord{dwSrcBits}, WMono8{});
}

// Every pixel, the last one of an odd line from its high byte alone.
void Convert_MonoPacked_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines)
{
    if (Convert_MonoPacked_to_Mono8_intr(KAIP_LINE_ARGS, dwSrcBits, dwDstBits, bReverseLines) ||
        Convert_MonoPacked_to_Mono8_vec(KAIP_LINE_ARGS, dwSrcBits, dwDstBits, bReverseLines))
        return;
    ConvertImage<true>(KAIP_LINE_ARGS, bReverseLines, RPacked<8>{}, WMono8{});
}

void Convert_MonoMipi_to_Mono8(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines)
{
    if (Convert_MonoMipi_to_Mono8_intr(KAIP_LINE_ARGS, dwSrcBits, dwDstBits, bReverseLines) ||
        Convert_MonoMipi_to_Mono8_vec(KAIP_LINE_ARGS, dwSrcBits, dwDstBits, bReverseLines))
        return;
    if (dwSrcBits == 10) return ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMipi10<8>{}, WMono8{});
    if (dwSrcBits == 12) return ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMipi12<8>{}, WMono8{});
    LogEachLine(dwHeight, "%s: source pixel format not supported (iSrcUsedBitsPerPixel!=10)", __func__);
}

void Convert_Mono8_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMono8{}, WBGR15{});
}

void Convert_BGR16_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR16{}, WBGR15{});
}

void Convert_BGR24_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR24_to_BGR15_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR24{}, WBGR15{});
}

void Convert_RGB24_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_RGB24_to_BGR15_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB24{}, WBGR15{});
}

void Convert_BGR32_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR32_to_BGR15_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR32{}, WBGR15{});
}

void Convert_RGB32_to_BGR15(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_RGB32_to_BGR15_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB32{}, WBGR15{});
}

void Convert_MonoWord_to_BGR15(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMonoWord{dwSrcBits}, WBGR15{});
}

void Convert_Mono8_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMono8{}, WBGR16{});
}

void Convert_BGR15_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR15{}, WBGR16{});
}

void Convert_BGR24_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR24_to_BGR16_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR24{}, WBGR16{});
}

void Convert_RGB24_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_RGB24_to_BGR16_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB24{}, WBGR16{});
}

void Convert_BGR32_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR32_to_BGR16_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR32{}, WBGR16{});
}

void Convert_RGB32_to_BGR16(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_RGB32_to_BGR16_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB32{}, WBGR16{});
}

void Convert_MonoWord_to_BGR16(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMonoWord{dwSrcBits}, WBGR16{});
}

void Convert_Mono8_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Mono8_to_BGR24_intr(KAIP_LINE_ARGS, bReverseLines) ||
        Convert_Mono8_to_BGR24_vec(KAIP_LINE_ARGS, bReverseLines))
        return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMono8{}, WBGR24{});
}

void Convert_BGR15_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR15_to_BGR24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR15{}, WBGR24{});
}

void Convert_BGR16_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR16_to_BGR24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR16{}, WBGR24{});
}

void Convert_BGR30_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR30{}, WBGR24{});
}

void Convert_RGB30_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB30{}, WBGR24{});
}

void Convert_BGR32_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR32_to_BGR24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR32{}, WBGR24{});
}

void Convert_BGR36_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR36{}, WBGR24{});
}

void Convert_RGB36_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB36{}, WBGR24{});
}

void Convert_BGR48_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR48{}, WBGR24{});
}

void Convert_RGB48_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB48{}, WBGR24{});
}

void Convert_MonoWord_to_BGR24(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMonoWord{dwSrcBits}, WBGR24{});
}

void Convert_BGR15_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR15_to_RGB24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR15{}, WRGB24{});
}

void Convert_BGR16_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR16_to_RGB24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR16{}, WRGB24{});
}

void Convert_BGR24_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR24{}, WRGB24{});
}

void Convert_BGR32_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR32_to_RGB24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR32{}, WRGB24{});
}

void Convert_RGB32_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_RGB32_to_RGB24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB32{}, WRGB24{});
}

void Convert_MonoPacked_to_RGB24(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RPacked<8>{}, WRGB24{});
}

void Convert_Mono8_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Mono8_to_BGR32_intr(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMono8{}, WBGR32{});
}

void Convert_BGR15_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR15_to_BGR32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR15{}, WBGR32{});
}

void Convert_BGR16_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR16_to_BGR32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR16{}, WBGR32{});
}

void Convert_BGR24_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR24_to_BGR32_intr(KAIP_LINE_ARGS, bReverseLines) ||
        Convert_BGR24_to_BGR32_vec(KAIP_LINE_ARGS, bReverseLines))
        return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR24{}, WBGR32{});
}

void Convert_RGB24_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_RGB24_to_BGR32_intr(KAIP_LINE_ARGS, bReverseLines) ||
        Convert_RGB24_to_BGR32_vec(KAIP_LINE_ARGS, bReverseLines))
        return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB24{}, WBGR32Kept{});
}

void Convert_BGR30_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR30{}, WBGR32{});
}

void Convert_RGB30_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB30{}, WBGR32{});
}

void Convert_RGB32_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_RGB32_to_BGR32_intr(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB32{}, WBGR32Kept{});
}

void Convert_BGR36_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR36{}, WBGR32{});
}

void Convert_RGB36_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB36{}, WBGR32{});
}

void Convert_BGR48_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR48{}, WBGR32{});
}

void Convert_RGB48_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB48{}, WBGR32{});
}

void Convert_MonoWord_to_BGR32(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMonoWord{dwSrcBits}, WBGR32{});
}

void Convert_BGR15_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR15_to_RGB32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR15{}, WRGB32{});
}

void Convert_BGR16_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_BGR16_to_RGB32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR16{}, WRGB32{});
}

void Convert_BGR24_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR24{}, WRGB32{});
}

void Convert_MonoPacked_to_RGB32(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RPacked<8>{}, WRGB32{});
}

void Convert_Mono8_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMono8{}, WRGB30{});
}

void Convert_BGR24_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR24{}, WRGB30{});
}

void Convert_RGB24_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB24{}, WRGB30{});
}

void Convert_BGR32_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR32{}, WRGB30{});
}

void Convert_RGB32_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB32{}, WRGB30{});
}

void Convert_BGR36_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR36{}, WRGB30{});
}

void Convert_RGB36_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB36{}, WRGB30{});
}

void Convert_RGB48_to_RGB30(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB48{}, WRGB30{});
}

void Convert_MonoWord_to_RGB30(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMonoWord{dwSrcBits}, WRGB30{});
}

void Convert_RGB48_to_BGR30(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB48{}, WBGR30{});
}

void Convert_Mono8_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMono8{}, WRGB36{});
}

void Convert_BGR24_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR24{}, WRGB36{});
}

void Convert_RGB24_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB24{}, WRGB36{});
}

void Convert_BGR32_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR32{}, WRGB36{});
}

void Convert_RGB32_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB32{}, WRGB36{});
}

void Convert_BGR30_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR30{}, WRGB36{});
}

void Convert_RGB30_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB30{}, WRGB36{});
}

void Convert_RGB48_to_RGB36(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB48{}, WRGB36{});
}

void Convert_MonoWord_to_RGB36(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMonoWord{dwSrcBits}, WRGB36{});
}

void Convert_RGB48_to_BGR36(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB48{}, WBGR36{});
}

void Convert_Mono8_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMono8{}, WRGB48{});
}

void Convert_BGR24_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR24{}, WRGB48{});
}

void Convert_RGB24_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB24{}, WRGB48{});
}

void Convert_BGR32_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR32{}, WRGB48{});
}

void Convert_RGB32_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB32{}, WRGB48{});
}

void Convert_BGR30_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR30{}, WRGB48{});
}

void Convert_RGB30_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB30{}, WRGB48{});
}

void Convert_BGR36_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR36{}, WRGB48{});
}

void Convert_RGB36_to_RGB48(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB36{}, WRGB48{});
}

void Convert_MonoWord_to_RGB48(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMonoWord{dwSrcBits}, WRGB48{});
}

void Convert_Mono8_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMono8{}, WMonoWord{dwDstBits});
}

void Convert_MonoWord_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMonoWord{dwSrcBits}, WMonoWord{dwDstBits});
}

void Convert_MonoWord_to_MonoWord16(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMonoWord{dwSrcBits}, WMonoWord{16});
}

void Convert_MonoPacked_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines)
{
    if (dwSrcBits == 10) return ConvertImage(KAIP_LINE_ARGS, bReverseLines, RPacked<10>{}, WMonoWord{dwDstBits});
    if (dwSrcBits == 12) return ConvertImage(KAIP_LINE_ARGS, bReverseLines, RPacked<12>{}, WMonoWord{dwDstBits});
    LogEachLine(dwHeight, "%s: source pixel format not supported (iSrcUsedBitsPerPixel!=10 && !=12)", __func__);
}

void Convert_MonoMipi_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t dwDstBits, bool bReverseLines)
{
    if (dwSrcBits == 10) return ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMipi10<10>{}, WMonoWord{dwDstBits});
    if (dwSrcBits == 12) return ConvertImage(KAIP_LINE_ARGS, bReverseLines, RMipi12<12>{}, WMonoWord{dwDstBits});
    LogEachLine(dwHeight, "%s: source pixel format not supported (iSrcUsedBitsPerPixel!=10)", __func__);
}

void Convert_BGR15_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR15{}, WMonoWord{dwDstBits});
}

void Convert_BGR16_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR16{}, WMonoWord{dwDstBits});
}

void Convert_BGR24_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR24{}, WMonoWord{dwDstBits});
}

void Convert_RGB24_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB24{}, WMonoWord{dwDstBits});
}

void Convert_BGR30_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR30{}, WMonoWord{dwDstBits});
}

void Convert_RGB30_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB30{}, WMonoWord{dwDstBits});
}

void Convert_RGB32_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB32{}, WMonoWord{dwDstBits});
}

void Convert_BGR32_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR32{}, WMonoWord{dwDstBits});
}

void Convert_BGR36_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR36{}, WMonoWord{dwDstBits});
}

void Convert_RGB36_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB36{}, WMonoWord{dwDstBits});
}

void Convert_BGR48_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RBGR48{}, WMonoWord{dwDstBits});
}

void Convert_RGB48_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RRGB48{}, WMonoWord{dwDstBits});
}

void Convert_Yuv411_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411{}, WMono8{});
}

void Convert_Yuv411_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411{}, WMonoWord{dwDstBits});
}

void Convert_Yuv411_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv411_to_BGR24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411{}, WBGR24{});
}

void Convert_Yuv411_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv411_to_RGB24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411{}, WRGB24{});
}

void Convert_Yuv411_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv411_to_BGR32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411{}, WBGR32{});
}

void Convert_Yuv411_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv411_to_RGB32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411{}, WRGB32{});
}

void Convert_Yuv411YYuYYv_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411YYuYYv{}, WMono8{});
}

void Convert_Yuv411YYuYYv_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411YYuYYv{}, WMonoWord{dwDstBits});
}

void Convert_Yuv411YYuYYv_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv411YYuYYv_to_BGR24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411YYuYYv{}, WBGR24{});
}

void Convert_Yuv411YYuYYv_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv411YYuYYv_to_RGB24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411YYuYYv{}, WRGB24{});
}

void Convert_Yuv411YYuYYv_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv411YYuYYv_to_BGR32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411YYuYYv{}, WBGR32{});
}

void Convert_Yuv411YYuYYv_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv411YYuYYv_to_RGB32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv411YYuYYv{}, WRGB32{});
}

void Convert_Yuv422_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422{}, WMono8{});
}

void Convert_Yuv422_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422{}, WMonoWord{dwDstBits});
}

void Convert_Yuv422_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv422_to_BGR24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422{}, WBGR24{});
}

void Convert_Yuv422_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv422_to_RGB24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422{}, WRGB24{});
}

void Convert_Yuv422_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv422_to_BGR32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422{}, WBGR32{});
}

void Convert_Yuv422_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv422_to_RGB32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422{}, WRGB32{});
}

void Convert_Yuv422yuyv_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422yuyv{}, WMono8{});
}

void Convert_Yuv422yuyv_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422yuyv{}, WMonoWord{dwDstBits});
}

void Convert_Yuv422yuyv_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv422yuyv_to_BGR24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422yuyv{}, WBGR24{});
}

void Convert_Yuv422yuyv_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv422yuyv_to_RGB24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422yuyv{}, WRGB24{});
}

void Convert_Yuv422yuyv_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv422yuyv_to_BGR32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422yuyv{}, WBGR32{});
}

void Convert_Yuv422yuyv_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv422yuyv_to_RGB32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv422yuyv{}, WRGB32{});
}

void Convert_YCbCr422_8_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr422_8{}, WMono8{});
}

void Convert_YCbCr422_8_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr422_8{}, WMonoWord{dwDstBits});
}

void Convert_YCbCr422_8_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_YCbCr422_8_to_BGR24_intr(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr422_8{}, WBGR24{});
}

void Convert_YCbCr422_8_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_YCbCr422_8_to_RGB24_intr(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr422_8{}, WRGB24{});
}

void Convert_YCbCr422_8_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_YCbCr422_8_to_BGR32_intr(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr422_8{}, WBGR32{});
}

void Convert_YCbCr422_8_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_YCbCr422_8_to_RGB32_intr(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr422_8{}, WRGB32{});
}

void Convert_Yuv444_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv444{}, WMono8{});
}

void Convert_Yuv444_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv444{}, WMonoWord{dwDstBits});
}

void Convert_Yuv444_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv444_to_BGR24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv444{}, WBGR24{});
}

void Convert_Yuv444_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv444_to_RGB24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv444{}, WRGB24{});
}

void Convert_Yuv444_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv444_to_BGR32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv444{}, WBGR32{});
}

void Convert_Yuv444_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_Yuv444_to_RGB32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYuv444{}, WRGB32{});
}

void Convert_YCbCr444_to_Mono8(KAIP_LINE_PARAMS, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr444{}, WMono8{});
}

void Convert_YCbCr444_to_MonoWord(KAIP_LINE_PARAMS, uint32_t dwDstBits, bool bReverseLines)
{
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr444{}, WMonoWord{dwDstBits});
}

void Convert_YCbCr444_to_BGR24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_YCbCr444_to_BGR24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr444{}, WBGR24{});
}

void Convert_YCbCr444_to_RGB24(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_YCbCr444_to_RGB24_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr444{}, WRGB24{});
}

void Convert_YCbCr444_to_BGR32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_YCbCr444_to_BGR32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr444{}, WBGR32{});
}

void Convert_YCbCr444_to_RGB32(KAIP_LINE_PARAMS, bool bReverseLines)
{
    if (Convert_YCbCr444_to_RGB32_vec(KAIP_LINE_ARGS, bReverseLines)) return;
    ConvertImage(KAIP_LINE_ARGS, bReverseLines, RYCbCr444{}, WRGB32{});
}
