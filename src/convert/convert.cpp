// convert.cpp: the conversion dispatcher: which source may become which destination, through which line
// converter, and the whole-image conversions built on it.
#include "convert/convert.h"

#include "convert/convert_lines.h"
#include "core/check.h"
#include "core/common.h"
#include "core/log.h"

namespace {

// ---------------------------------------------------------------- what a member is called with

struct TLineJob {
    uint32_t dwWidth, dwHeight;
    const uint8_t* pSrc;
    uint8_t* pDst;
    uint32_t dwSrcLineInc, dwDstLineInc, dwSrcBits, dwDstBits;
    bool bReverseLines;
};
using PRunMember = void (*)(const TLineJob&);

#define KAIP_JOB_ARGS j.dwWidth, j.dwHeight, j.pSrc, j.pDst, j.dwSrcLineInc, j.dwDstLineInc

// Which bit counts a member takes.
template <void (*F)(KAIP_LINE_PARAMS, bool)>
void Plain(const TLineJob& j)
{
    F(KAIP_JOB_ARGS, j.bReverseLines);
}
template <void (*F)(KAIP_LINE_PARAMS, uint32_t, bool)>
void SrcBits(const TLineJob& j)
{
    F(KAIP_JOB_ARGS, j.dwSrcBits, j.bReverseLines);
}
template <void (*F)(KAIP_LINE_PARAMS, uint32_t, bool)>
void DstBits(const TLineJob& j)
{
    F(KAIP_JOB_ARGS, j.dwDstBits, j.bReverseLines);
}
template <void (*F)(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool)>
void BothBits(const TLineJob& j)
{
    F(KAIP_JOB_ARGS, j.dwSrcBits, j.dwDstBits, j.bReverseLines);
}

// ---------------------------------------------------------------- the destinations

// Each destination format, in the order of the bits of the allowed-destination masks.
// clang-format off
enum TDst : int {
    kDstMono8, kDstMono9, kDstMono10, kDstMono11, kDstMono12, kDstMono13, kDstMono14, kDstMono15, kDstMono16,
    kDstBGR555, kDstBGR565, kDstBGR8, kDstBGRA8, kDstRGB8, kDstRGBA8,
    kDstBGR10, kDstRGB10, kDstBGR12, kDstRGB12, kDstBGR16, kDstRGB16, kDstCount
};
// clang-format on

// The pixel layouts a destination is written in: the columns of the member table.
// clang-format off
enum TColumn : int {
    kToMono8, kToMonoWord, kToBGR15, kToBGR16, kToBGR24, kToRGB24, kToBGR32, kToRGB32,
    kToBGR30, kToRGB30, kToBGR36, kToRGB36, kToBGR48, kToRGB48
};
// clang-format on

struct TDstRow {
    uint32_t dwFormat;
    TColumn column;
};

// Indexed by TDst.
constexpr TDstRow g_Destinations[kDstCount] = {
    {KaipPixelFormat_Mono8, kToMono8},        {KaipPixelFormat_Mono9, kToMonoWord},
    {KaipPixelFormat_Mono10, kToMonoWord},    {KaipPixelFormat_Mono11, kToMonoWord},
    {KaipPixelFormat_Mono12, kToMonoWord},    {KaipPixelFormat_Mono13, kToMonoWord},
    {KaipPixelFormat_Mono14, kToMonoWord},    {KaipPixelFormat_Mono15, kToMonoWord},
    {KaipPixelFormat_Mono16, kToMonoWord},    {KaipPixelFormat_BGR555, kToBGR15},
    {KaipPixelFormat_BGR565Packed, kToBGR16}, {KaipPixelFormat_BGR8Packed, kToBGR24},
    {KaipPixelFormat_BGRA8Packed, kToBGR32},  {KaipPixelFormat_RGB8Packed, kToRGB24},
    {KaipPixelFormat_RGBA8Packed, kToRGB32},  {KaipPixelFormat_BGR10Packed, kToBGR30},
    {KaipPixelFormat_RGB10Packed, kToRGB30},  {KaipPixelFormat_BGR12Packed, kToBGR36},
    {KaipPixelFormat_RGB12Packed, kToRGB36},  {KaipPixelFormat_BGR16, kToBGR48},
    {KaipPixelFormat_RGB16Packed, kToRGB48},
};

constexpr uint32_t Bits(TDst first, TDst last)
{
    return ((2u << last) - 1) & ~((1u << first) - 1);
}
constexpr uint32_t Bit(TDst d)
{
    return 1u << d;
}

// Sets of allowed destinations.
constexpr uint32_t kMono = Bits(kDstMono8, kDstMono16);
constexpr uint32_t kMono8101216 = Bit(kDstMono8) | Bit(kDstMono10) | Bit(kDstMono12) | Bit(kDstMono16);
constexpr uint32_t kShort = Bits(kDstBGR555, kDstBGR565);
constexpr uint32_t kColour8 = Bits(kDstBGR8, kDstRGBA8);
constexpr uint32_t kDeep = Bits(kDstBGR10, kDstRGB16);
constexpr uint32_t kToAll = kMono | kShort | kColour8 | kDeep;
constexpr uint32_t kToMonoColour8 = kMono | kColour8;

// ---------------------------------------------------------------- the sources

// The pixel layouts a source is read in: the rows of the member table.
// clang-format off
enum TLayout : int {
    kFromMono8, kFromMonoWord, kFromMonoPacked, kFromMonoMipi, kFromBGR15, kFromBGR16,
    kFromRGB24, kFromBGR24, kFromRGB32, kFromBGR32, kFromRGB30, kFromBGR30, kFromRGB36, kFromBGR36,
    kFromRGB48, kFromBGR48, kFromYuv411, kFromYuv411YYuYYv, kFromYuv422, kFromYuv422yuyv, kFromYCbCr422_8,
    kFromYuv444, kFromYCbCr444
};
// clang-format on

struct TSrcRow {
    uint32_t dwFormat;
    TLayout layout;
    uint32_t dwAllowed;  // TDst bits
};

// Every source that converts at all. A Bayer mosaic is read as the mono image of its depth (the raw
// values, no demosaicing). Not listed, so never converted: Bayer16, the packed and MIPI Bayer codes,
// RGB10V1Packed and RGB10V2Packed, the 601/709 4:1:1 codes, the planar codes.
constexpr TSrcRow g_Sources[] = {
    {KaipPixelFormat_Mono8, kFromMono8, kToAll},
    {KaipPixelFormat_Mono9, kFromMonoWord, kToAll},
    {KaipPixelFormat_Mono10, kFromMonoWord, kToAll},
    {KaipPixelFormat_Mono11, kFromMonoWord, kToAll},
    {KaipPixelFormat_Mono12, kFromMonoWord, kToAll},
    {KaipPixelFormat_Mono13, kFromMonoWord, kToAll},
    {KaipPixelFormat_Mono14, kFromMonoWord, kToAll},
    {KaipPixelFormat_Mono15, kFromMonoWord, kToAll},
    {KaipPixelFormat_Mono16, kFromMonoWord, kToAll},
    {KaipPixelFormat_BGR8Packed, kFromBGR24, kToAll},
    {KaipPixelFormat_BGRA8Packed, kFromBGR32, kToAll},
    {KaipPixelFormat_RGB8Packed, kFromRGB24, kToAll},
    {KaipPixelFormat_RGBA8Packed, kFromRGB32, kToAll},
    {KaipPixelFormat_BayerGR8, kFromMono8, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerRG8, kFromMono8, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerGB8, kFromMono8, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerBG8, kFromMono8, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerGR10, kFromMonoWord, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerRG10, kFromMonoWord, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerGB10, kFromMonoWord, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerBG10, kFromMonoWord, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerGR12, kFromMonoWord, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerRG12, kFromMonoWord, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerGB12, kFromMonoWord, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_BayerBG12, kFromMonoWord, Bit(kDstMono8) | kColour8},
    {KaipPixelFormat_Mono10Packed, kFromMonoPacked, kMono8101216 | kColour8},
    {KaipPixelFormat_Mono12Packed, kFromMonoPacked, kMono8101216 | kColour8},
    {KaipPixelFormat_Mono10Mipi, kFromMonoMipi, kMono8101216},
    {KaipPixelFormat_Mono12Mipi, kFromMonoMipi, kMono8101216},
    {KaipPixelFormat_BGR555, kFromBGR15, kMono | kShort | kColour8},
    {KaipPixelFormat_BGR565Packed, kFromBGR16, kMono | kShort | kColour8},
    {KaipPixelFormat_BGR10Packed, kFromBGR30, kToMonoColour8 | kDeep},
    {KaipPixelFormat_RGB10Packed, kFromRGB30, kToMonoColour8 | kDeep},
    {KaipPixelFormat_BGR12Packed, kFromBGR36, kToMonoColour8 | kDeep},
    {KaipPixelFormat_RGB12Packed, kFromRGB36, kToMonoColour8 | kDeep},
    {KaipPixelFormat_BGR16, kFromBGR48, kToMonoColour8 | kDeep},
    {KaipPixelFormat_RGB16Packed, kFromRGB48, kToMonoColour8 | kDeep},
    {KaipPixelFormat_YUV411Packed, kFromYuv411, kToMonoColour8},
    {KaipPixelFormat_YCbCr411_8_CbYYCrYY, kFromYuv411, kToMonoColour8},
    {KaipPixelFormat_YCbCr411_8, kFromYuv411YYuYYv, kToMonoColour8},
    {KaipPixelFormat_YUV422Packed, kFromYuv422, kToMonoColour8},
    {KaipPixelFormat_YCbCr422_8_CbYCrY, kFromYuv422, kToMonoColour8},
    {KaipPixelFormat_YCbCr601_422_8_CbYCrY, kFromYuv422, kToMonoColour8},
    {KaipPixelFormat_YCbCr709_422_8_CbYCrY, kFromYuv422, kToMonoColour8},
    {KaipPixelFormat_YUV422_YUYV_Packed, kFromYuv422yuyv, kToMonoColour8},
    {KaipPixelFormat_YCbCr601_422_8, kFromYuv422yuyv, kToMonoColour8},
    {KaipPixelFormat_YCbCr709_422_8, kFromYuv422yuyv, kToMonoColour8},
    {KaipPixelFormat_YCbCr422_8, kFromYCbCr422_8, kToMonoColour8},
    {KaipPixelFormat_YUV444Packed, kFromYuv444, kToMonoColour8},
    {KaipPixelFormat_YCbCr8_CbYCr, kFromYuv444, kToMonoColour8},
    {KaipPixelFormat_YCbCr601_8_CbYCr, kFromYuv444, kToMonoColour8},
    {KaipPixelFormat_YCbCr709_8_CbYCr, kFromYuv444, kToMonoColour8},
    {KaipPixelFormat_YCbCr8, kFromYCbCr444, kToMonoColour8},
};

// ---------------------------------------------------------------- the members

struct TMemberRow {
    TLayout from;
    TColumn to;
    PRunMember pfnRun;
};

// The member for each source layout and destination layout. Where source and destination share their
// channel order the member whose names share their letters keeps it, elsewhere the one that swaps red and
// blue; "copy" is CopyBitmapData.
constexpr TMemberRow g_Members[] = {
    {kFromMono8, kToMono8, Plain<CopyBitmapData>},
    {kFromMono8, kToMonoWord, DstBits<Convert_Mono8_to_MonoWord>},
    {kFromMono8, kToBGR15, Plain<Convert_Mono8_to_BGR15>},
    {kFromMono8, kToBGR16, Plain<Convert_Mono8_to_BGR16>},
    {kFromMono8, kToBGR24, Plain<Convert_Mono8_to_BGR24>},
    {kFromMono8, kToRGB24, Plain<Convert_Mono8_to_BGR24>},
    {kFromMono8, kToBGR32, Plain<Convert_Mono8_to_BGR32>},
    {kFromMono8, kToRGB32, Plain<Convert_Mono8_to_BGR32>},
    {kFromMono8, kToBGR30, Plain<Convert_Mono8_to_RGB30>},
    {kFromMono8, kToRGB30, Plain<Convert_Mono8_to_RGB30>},
    {kFromMono8, kToBGR36, Plain<Convert_Mono8_to_RGB36>},
    {kFromMono8, kToRGB36, Plain<Convert_Mono8_to_RGB36>},
    {kFromMono8, kToBGR48, Plain<Convert_Mono8_to_RGB48>},
    {kFromMono8, kToRGB48, Plain<Convert_Mono8_to_RGB48>},

    {kFromMonoWord, kToMono8, SrcBits<Convert_MonoWord_to_Mono8>},
    {kFromMonoWord, kToMonoWord, BothBits<Convert_MonoWord_to_MonoWord>},
    {kFromMonoWord, kToBGR15, SrcBits<Convert_MonoWord_to_BGR15>},
    {kFromMonoWord, kToBGR16, SrcBits<Convert_MonoWord_to_BGR16>},
    {kFromMonoWord, kToBGR24, SrcBits<Convert_MonoWord_to_BGR24>},
    {kFromMonoWord, kToRGB24, SrcBits<Convert_MonoWord_to_BGR24>},
    {kFromMonoWord, kToBGR32, SrcBits<Convert_MonoWord_to_BGR32>},
    {kFromMonoWord, kToRGB32, SrcBits<Convert_MonoWord_to_BGR32>},
    {kFromMonoWord, kToBGR30, SrcBits<Convert_MonoWord_to_RGB30>},
    {kFromMonoWord, kToRGB30, SrcBits<Convert_MonoWord_to_RGB30>},
    {kFromMonoWord, kToBGR36, SrcBits<Convert_MonoWord_to_RGB36>},
    {kFromMonoWord, kToRGB36, SrcBits<Convert_MonoWord_to_RGB36>},
    {kFromMonoWord, kToBGR48, SrcBits<Convert_MonoWord_to_RGB48>},
    {kFromMonoWord, kToRGB48, SrcBits<Convert_MonoWord_to_RGB48>},

    {kFromMonoPacked, kToMono8, BothBits<Convert_MonoPacked_to_Mono8>},
    {kFromMonoPacked, kToMonoWord, BothBits<Convert_MonoPacked_to_MonoWord>},
    {kFromMonoPacked, kToBGR24, BothBits<Convert_MonoPacked_to_RGB24>},
    {kFromMonoPacked, kToRGB24, BothBits<Convert_MonoPacked_to_RGB24>},
    {kFromMonoPacked, kToBGR32, BothBits<Convert_MonoPacked_to_RGB32>},
    {kFromMonoPacked, kToRGB32, BothBits<Convert_MonoPacked_to_RGB32>},

    {kFromMonoMipi, kToMono8, BothBits<Convert_MonoMipi_to_Mono8>},
    {kFromMonoMipi, kToMonoWord, BothBits<Convert_MonoMipi_to_MonoWord>},

    {kFromBGR15, kToMono8, Plain<Convert_BGR15_to_Mono8>},
    {kFromBGR15, kToMonoWord, DstBits<Convert_BGR15_to_MonoWord>},
    {kFromBGR15, kToBGR15, Plain<CopyBitmapData>},
    {kFromBGR15, kToBGR16, Plain<Convert_BGR15_to_BGR16>},
    {kFromBGR15, kToBGR24, Plain<Convert_BGR15_to_BGR24>},
    {kFromBGR15, kToRGB24, Plain<Convert_BGR15_to_RGB24>},
    {kFromBGR15, kToBGR32, Plain<Convert_BGR15_to_BGR32>},
    {kFromBGR15, kToRGB32, Plain<Convert_BGR15_to_RGB32>},

    {kFromBGR16, kToMono8, Plain<Convert_BGR16_to_Mono8>},
    {kFromBGR16, kToMonoWord, DstBits<Convert_BGR16_to_MonoWord>},
    {kFromBGR16, kToBGR15, Plain<Convert_BGR16_to_BGR15>},
    {kFromBGR16, kToBGR16, Plain<CopyBitmapData>},
    {kFromBGR16, kToBGR24, Plain<Convert_BGR16_to_BGR24>},
    {kFromBGR16, kToRGB24, Plain<Convert_BGR16_to_RGB24>},
    {kFromBGR16, kToBGR32, Plain<Convert_BGR16_to_BGR32>},
    {kFromBGR16, kToRGB32, Plain<Convert_BGR16_to_RGB32>},

    {kFromRGB24, kToMono8, Plain<Convert_RGB24_to_Mono8>},
    {kFromRGB24, kToMonoWord, DstBits<Convert_RGB24_to_MonoWord>},
    {kFromRGB24, kToBGR15, Plain<Convert_RGB24_to_BGR15>},
    {kFromRGB24, kToBGR16, Plain<Convert_RGB24_to_BGR16>},
    {kFromRGB24, kToBGR24, Plain<SwapColor8Data>},
    {kFromRGB24, kToRGB24, Plain<CopyBitmapData>},
    {kFromRGB24, kToBGR32, Plain<Convert_RGB24_to_BGR32>},
    {kFromRGB24, kToRGB32, Plain<Convert_BGR24_to_BGR32>},
    {kFromRGB24, kToBGR30, Plain<Convert_BGR24_to_RGB30>},
    {kFromRGB24, kToRGB30, Plain<Convert_RGB24_to_RGB30>},
    {kFromRGB24, kToBGR36, Plain<Convert_BGR24_to_RGB36>},
    {kFromRGB24, kToRGB36, Plain<Convert_RGB24_to_RGB36>},
    {kFromRGB24, kToBGR48, Plain<Convert_BGR24_to_RGB48>},
    {kFromRGB24, kToRGB48, Plain<Convert_RGB24_to_RGB48>},

    {kFromBGR24, kToMono8, Plain<Convert_BGR24_to_Mono8>},
    {kFromBGR24, kToMonoWord, DstBits<Convert_BGR24_to_MonoWord>},
    {kFromBGR24, kToBGR15, Plain<Convert_BGR24_to_BGR15>},
    {kFromBGR24, kToBGR16, Plain<Convert_BGR24_to_BGR16>},
    {kFromBGR24, kToBGR24, Plain<CopyBitmapData>},
    {kFromBGR24, kToRGB24, Plain<SwapColor8Data>},
    {kFromBGR24, kToBGR32, Plain<Convert_BGR24_to_BGR32>},
    {kFromBGR24, kToRGB32, Plain<Convert_BGR24_to_RGB32>},
    {kFromBGR24, kToBGR30, Plain<Convert_RGB24_to_RGB30>},
    {kFromBGR24, kToRGB30, Plain<Convert_BGR24_to_RGB30>},
    {kFromBGR24, kToBGR36, Plain<Convert_RGB24_to_RGB36>},
    {kFromBGR24, kToRGB36, Plain<Convert_BGR24_to_RGB36>},
    {kFromBGR24, kToBGR48, Plain<Convert_RGB24_to_RGB48>},
    {kFromBGR24, kToRGB48, Plain<Convert_BGR24_to_RGB48>},

    {kFromRGB32, kToMono8, Plain<Convert_RGB32_to_Mono8>},
    {kFromRGB32, kToMonoWord, DstBits<Convert_RGB32_to_MonoWord>},
    {kFromRGB32, kToBGR15, Plain<Convert_RGB32_to_BGR15>},
    {kFromRGB32, kToBGR16, Plain<Convert_RGB32_to_BGR16>},
    {kFromRGB32, kToBGR24, Plain<Convert_BGR32_to_RGB24>},
    {kFromRGB32, kToRGB24, Plain<Convert_BGR32_to_BGR24>},
    {kFromRGB32, kToBGR32, Plain<Convert_RGB32_to_BGR32>},
    {kFromRGB32, kToRGB32, Plain<CopyBitmapData>},
    {kFromRGB32, kToBGR30, Plain<Convert_BGR32_to_RGB30>},
    {kFromRGB32, kToRGB30, Plain<Convert_RGB32_to_RGB30>},
    {kFromRGB32, kToBGR36, Plain<Convert_BGR32_to_RGB36>},
    {kFromRGB32, kToRGB36, Plain<Convert_RGB32_to_RGB36>},
    {kFromRGB32, kToBGR48, Plain<Convert_BGR32_to_RGB48>},
    {kFromRGB32, kToRGB48, Plain<Convert_RGB32_to_RGB48>},

    {kFromBGR32, kToMono8, Plain<Convert_BGR32_to_Mono8>},
    {kFromBGR32, kToMonoWord, DstBits<Convert_BGR32_to_MonoWord>},
    {kFromBGR32, kToBGR15, Plain<Convert_BGR32_to_BGR15>},
    {kFromBGR32, kToBGR16, Plain<Convert_BGR32_to_BGR16>},
    {kFromBGR32, kToBGR24, Plain<Convert_BGR32_to_BGR24>},
    {kFromBGR32, kToRGB24, Plain<Convert_BGR32_to_RGB24>},
    {kFromBGR32, kToBGR32, Plain<CopyBitmapData>},
    {kFromBGR32, kToRGB32, Plain<Convert_RGB32_to_BGR32>},
    {kFromBGR32, kToBGR30, Plain<Convert_RGB32_to_RGB30>},
    {kFromBGR32, kToRGB30, Plain<Convert_BGR32_to_RGB30>},
    {kFromBGR32, kToBGR36, Plain<Convert_RGB32_to_RGB36>},
    {kFromBGR32, kToRGB36, Plain<Convert_BGR32_to_RGB36>},
    {kFromBGR32, kToBGR48, Plain<Convert_RGB32_to_RGB48>},
    {kFromBGR32, kToRGB48, Plain<Convert_BGR32_to_RGB48>},

    {kFromRGB30, kToMono8, Plain<Convert_RGB30_to_Mono8>},
    {kFromRGB30, kToMonoWord, DstBits<Convert_RGB30_to_MonoWord>},
    {kFromRGB30, kToBGR24, Plain<Convert_RGB30_to_BGR24>},
    {kFromRGB30, kToRGB24, Plain<Convert_BGR30_to_BGR24>},
    {kFromRGB30, kToBGR32, Plain<Convert_RGB30_to_BGR32>},
    {kFromRGB30, kToRGB32, Plain<Convert_BGR30_to_BGR32>},
    {kFromRGB30, kToBGR30, Plain<SwapColor16Data>},
    {kFromRGB30, kToRGB30, Plain<CopyBitmapData>},
    {kFromRGB30, kToBGR36, Plain<Convert_BGR30_to_RGB36>},
    {kFromRGB30, kToRGB36, Plain<Convert_RGB30_to_RGB36>},
    {kFromRGB30, kToBGR48, Plain<Convert_BGR30_to_RGB48>},
    {kFromRGB30, kToRGB48, Plain<Convert_RGB30_to_RGB48>},

    {kFromBGR30, kToMono8, Plain<Convert_BGR30_to_Mono8>},
    {kFromBGR30, kToMonoWord, DstBits<Convert_BGR30_to_MonoWord>},
    {kFromBGR30, kToBGR24, Plain<Convert_BGR30_to_BGR24>},
    {kFromBGR30, kToRGB24, Plain<Convert_RGB30_to_BGR24>},
    {kFromBGR30, kToBGR32, Plain<Convert_BGR30_to_BGR32>},
    {kFromBGR30, kToRGB32, Plain<Convert_RGB30_to_BGR32>},
    {kFromBGR30, kToBGR30, Plain<CopyBitmapData>},
    {kFromBGR30, kToRGB30, Plain<SwapColor16Data>},
    {kFromBGR30, kToBGR36, Plain<Convert_RGB30_to_RGB36>},
    {kFromBGR30, kToRGB36, Plain<Convert_BGR30_to_RGB36>},
    {kFromBGR30, kToBGR48, Plain<Convert_RGB30_to_RGB48>},
    {kFromBGR30, kToRGB48, Plain<Convert_BGR30_to_RGB48>},

    {kFromRGB36, kToMono8, Plain<Convert_RGB36_to_Mono8>},
    {kFromRGB36, kToMonoWord, DstBits<Convert_RGB36_to_MonoWord>},
    {kFromRGB36, kToBGR24, Plain<Convert_RGB36_to_BGR24>},
    {kFromRGB36, kToRGB24, Plain<Convert_BGR36_to_BGR24>},
    {kFromRGB36, kToBGR32, Plain<Convert_RGB36_to_BGR32>},
    {kFromRGB36, kToRGB32, Plain<Convert_BGR36_to_BGR32>},
    {kFromRGB36, kToBGR30, Plain<Convert_BGR36_to_RGB30>},
    {kFromRGB36, kToRGB30, Plain<Convert_RGB36_to_RGB30>},
    {kFromRGB36, kToBGR36, Plain<SwapColor16Data>},
    {kFromRGB36, kToRGB36, Plain<CopyBitmapData>},
    {kFromRGB36, kToBGR48, Plain<Convert_BGR36_to_RGB48>},
    {kFromRGB36, kToRGB48, Plain<Convert_RGB36_to_RGB48>},

    {kFromBGR36, kToMono8, Plain<Convert_BGR36_to_Mono8>},
    {kFromBGR36, kToMonoWord, DstBits<Convert_BGR36_to_MonoWord>},
    {kFromBGR36, kToBGR24, Plain<Convert_BGR36_to_BGR24>},
    {kFromBGR36, kToRGB24, Plain<Convert_RGB36_to_BGR24>},
    {kFromBGR36, kToBGR32, Plain<Convert_BGR36_to_BGR32>},
    {kFromBGR36, kToRGB32, Plain<Convert_RGB36_to_BGR32>},
    {kFromBGR36, kToBGR30, Plain<Convert_RGB36_to_RGB30>},
    {kFromBGR36, kToRGB30, Plain<Convert_BGR36_to_RGB30>},
    {kFromBGR36, kToBGR36, Plain<CopyBitmapData>},
    {kFromBGR36, kToRGB36, Plain<SwapColor16Data>},
    {kFromBGR36, kToBGR48, Plain<Convert_RGB36_to_RGB48>},
    {kFromBGR36, kToRGB48, Plain<Convert_BGR36_to_RGB48>},

    {kFromRGB48, kToMono8, Plain<Convert_RGB48_to_Mono8>},
    {kFromRGB48, kToMonoWord, DstBits<Convert_RGB48_to_MonoWord>},
    {kFromRGB48, kToBGR24, Plain<Convert_RGB48_to_BGR24>},
    {kFromRGB48, kToRGB24, Plain<Convert_BGR48_to_BGR24>},
    {kFromRGB48, kToBGR32, Plain<Convert_RGB48_to_BGR32>},
    {kFromRGB48, kToRGB32, Plain<Convert_BGR48_to_BGR32>},
    {kFromRGB48, kToBGR30, Plain<Convert_RGB48_to_BGR30>},
    {kFromRGB48, kToRGB30, Plain<Convert_RGB48_to_RGB30>},
    {kFromRGB48, kToBGR36, Plain<Convert_RGB48_to_BGR36>},
    {kFromRGB48, kToRGB36, Plain<Convert_RGB48_to_RGB36>},
    {kFromRGB48, kToBGR48, Plain<SwapColor16Data>},
    {kFromRGB48, kToRGB48, Plain<CopyBitmapData>},

    {kFromBGR48, kToMono8, Plain<Convert_BGR48_to_Mono8>},
    {kFromBGR48, kToMonoWord, DstBits<Convert_BGR48_to_MonoWord>},
    {kFromBGR48, kToBGR24, Plain<Convert_BGR48_to_BGR24>},
    {kFromBGR48, kToRGB24, Plain<Convert_RGB48_to_BGR24>},
    {kFromBGR48, kToBGR32, Plain<Convert_BGR48_to_BGR32>},
    {kFromBGR48, kToRGB32, Plain<Convert_RGB48_to_BGR32>},
    {kFromBGR48, kToBGR30, Plain<Convert_RGB48_to_RGB30>},
    {kFromBGR48, kToRGB30, Plain<Convert_RGB48_to_BGR30>},
    {kFromBGR48, kToBGR36, Plain<Convert_RGB48_to_RGB36>},
    {kFromBGR48, kToRGB36, Plain<Convert_RGB48_to_BGR36>},
    {kFromBGR48, kToBGR48, Plain<CopyBitmapData>},
    {kFromBGR48, kToRGB48, Plain<SwapColor16Data>},

    {kFromYuv411, kToMono8, Plain<Convert_Yuv411_to_Mono8>},
    {kFromYuv411, kToMonoWord, DstBits<Convert_Yuv411_to_MonoWord>},
    {kFromYuv411, kToBGR24, Plain<Convert_Yuv411_to_BGR24>},
    {kFromYuv411, kToRGB24, Plain<Convert_Yuv411_to_RGB24>},
    {kFromYuv411, kToBGR32, Plain<Convert_Yuv411_to_BGR32>},
    {kFromYuv411, kToRGB32, Plain<Convert_Yuv411_to_RGB32>},

    {kFromYuv411YYuYYv, kToMono8, Plain<Convert_Yuv411YYuYYv_to_Mono8>},
    {kFromYuv411YYuYYv, kToMonoWord, DstBits<Convert_Yuv411YYuYYv_to_MonoWord>},
    {kFromYuv411YYuYYv, kToBGR24, Plain<Convert_Yuv411YYuYYv_to_BGR24>},
    {kFromYuv411YYuYYv, kToRGB24, Plain<Convert_Yuv411YYuYYv_to_RGB24>},
    {kFromYuv411YYuYYv, kToBGR32, Plain<Convert_Yuv411YYuYYv_to_BGR32>},
    {kFromYuv411YYuYYv, kToRGB32, Plain<Convert_Yuv411YYuYYv_to_RGB32>},

    {kFromYuv422, kToMono8, Plain<Convert_Yuv422_to_Mono8>},
    {kFromYuv422, kToMonoWord, DstBits<Convert_Yuv422_to_MonoWord>},
    {kFromYuv422, kToBGR24, Plain<Convert_Yuv422_to_BGR24>},
    {kFromYuv422, kToRGB24, Plain<Convert_Yuv422_to_RGB24>},
    {kFromYuv422, kToBGR32, Plain<Convert_Yuv422_to_BGR32>},
    {kFromYuv422, kToRGB32, Plain<Convert_Yuv422_to_RGB32>},

    {kFromYuv422yuyv, kToMono8, Plain<Convert_Yuv422yuyv_to_Mono8>},
    {kFromYuv422yuyv, kToMonoWord, DstBits<Convert_Yuv422yuyv_to_MonoWord>},
    {kFromYuv422yuyv, kToBGR24, Plain<Convert_Yuv422yuyv_to_BGR24>},
    {kFromYuv422yuyv, kToRGB24, Plain<Convert_Yuv422yuyv_to_RGB24>},
    {kFromYuv422yuyv, kToBGR32, Plain<Convert_Yuv422yuyv_to_BGR32>},
    {kFromYuv422yuyv, kToRGB32, Plain<Convert_Yuv422yuyv_to_RGB32>},

    {kFromYCbCr422_8, kToMono8, Plain<Convert_YCbCr422_8_to_Mono8>},
    {kFromYCbCr422_8, kToMonoWord, DstBits<Convert_YCbCr422_8_to_MonoWord>},
    {kFromYCbCr422_8, kToBGR24, Plain<Convert_YCbCr422_8_to_BGR24>},
    {kFromYCbCr422_8, kToRGB24, Plain<Convert_YCbCr422_8_to_RGB24>},
    {kFromYCbCr422_8, kToBGR32, Plain<Convert_YCbCr422_8_to_BGR32>},
    {kFromYCbCr422_8, kToRGB32, Plain<Convert_YCbCr422_8_to_RGB32>},

    {kFromYuv444, kToMono8, Plain<Convert_Yuv444_to_Mono8>},
    {kFromYuv444, kToMonoWord, DstBits<Convert_Yuv444_to_MonoWord>},
    {kFromYuv444, kToBGR24, Plain<Convert_Yuv444_to_BGR24>},
    {kFromYuv444, kToRGB24, Plain<Convert_Yuv444_to_RGB24>},
    {kFromYuv444, kToBGR32, Plain<Convert_Yuv444_to_BGR32>},
    {kFromYuv444, kToRGB32, Plain<Convert_Yuv444_to_RGB32>},

    {kFromYCbCr444, kToMono8, Plain<Convert_YCbCr444_to_Mono8>},
    {kFromYCbCr444, kToMonoWord, DstBits<Convert_YCbCr444_to_MonoWord>},
    {kFromYCbCr444, kToBGR24, Plain<Convert_YCbCr444_to_BGR24>},
    {kFromYCbCr444, kToRGB24, Plain<Convert_YCbCr444_to_RGB24>},
    {kFromYCbCr444, kToBGR32, Plain<Convert_YCbCr444_to_BGR32>},
    {kFromYCbCr444, kToRGB32, Plain<Convert_YCbCr444_to_RGB32>},
};

// ---------------------------------------------------------------- look-ups

template <class TRow, size_t N>
const TRow* FindFormat(const TRow (&rows)[N], uint32_t dwFormat)
{
    for (const TRow& row : rows)
        if (row.dwFormat == dwFormat) return &row;
    return nullptr;
}

PRunMember FindMember(TLayout from, TColumn to)
{
    for (const TMemberRow& row : g_Members)
        if (row.from == from && row.to == to) return row.pfnRun;
    return nullptr;
}

// The member for a pair the tables allow, else null.
PRunMember AllowedMember(uint32_t dwSrcPixelFormat, uint32_t dwDstPixelFormat)
{
    const TSrcRow* pSrc = FindFormat(g_Sources, dwSrcPixelFormat);
    const TDstRow* pDst = FindFormat(g_Destinations, dwDstPixelFormat);
    if (!pSrc || !pDst || !(pSrc->dwAllowed & Bit(TDst(pDst - g_Destinations)))) return nullptr;
    return FindMember(pSrc->layout, pDst->column);
}

}  // namespace

int CanConvertToPixelFormat(uint32_t dwSrcPixelFormat, uint32_t dwDstPixelFormat)
{
    return AllowedMember(dwSrcPixelFormat, dwDstPixelFormat) != nullptr;
}

KaipStatus ConvertToPixelFormat(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                                uint32_t dwOptions)
{
    const char* const pszFunc = "ConvertToPixelFormat";
    bool bReallocate = false;
    KaipStatus status = CheckImgInfos(
        pszFunc, pSrcImgInfo, pDstImgInfo, dwOptions, 0x3FFFFF7FFFull, dwDstPixelFormat, 0x3F00007FFFull,
        KaipCheck_DstRequired | KaipCheck_SameSize | KaipCheck_SameOrientation, KaipImgFlag_ColorPlanes, &bReallocate);
    if (status) return status;
    const PRunMember pfnRun = AllowedMember(pSrcImgInfo->PixelFormat, dwDstPixelFormat);
    if (!pfnRun)
        return Refuse(KASTATUS_KAIP_NOT_SUPPORTED, "%s: no conversion of pixel format 0x%.8x -> 0x%.8x", pszFunc,
                      pSrcImgInfo->PixelFormat, dwDstPixelFormat);
    const uint32_t dwSrcPixelFormat = BayerToMonoFormat(pSrcImgInfo->PixelFormat);

    if (bReallocate || pDstImgInfo->PixelFormat != dwDstPixelFormat) {
        status =
            ReallocateDst(pszFunc, pDstImgInfo, pSrcImgInfo->Width, pSrcImgInfo->Height, dwDstPixelFormat, dwOptions);
        if (status) return status;
    }
    if (!pSrcImgInfo->pData) {
        Log.Fatal("(mw) ConvertToPixelFormat: Invalid source pointer: pSrcImgInfo->pData=%p (%p)",
                  static_cast<void*>(pSrcImgInfo->pData), static_cast<const void*>(pSrcImgInfo));
        return KASTATUS_KAIP_INVALID_SRC_POINTER;
    }
    if (!pDstImgInfo->pData) {
        Log.Fatal("(mw) ConvertToPixelFormat: Invalid destination pointer: pDstImgInfo->pData=%p (%p)",
                  static_cast<void*>(pDstImgInfo->pData), static_cast<void*>(pDstImgInfo));
        return KASTATUS_KAIP_INVALID_DST_POINTER;
    }
    // Compared without wrapping: a product past 32 bits must not let a short buffer through.
    const uint64_t qwDstBuf = ImageBytes(*pDstImgInfo);
    const uint64_t qwDstWritten =
        uint64_t(pDstImgInfo->Height) * pDstImgInfo->Width * GetPixelIncrementFromPixelFormat(dwDstPixelFormat);
    if (qwDstBuf < qwDstWritten) {
        Log.Fatal("%s: Warning: dst buffer is of insufficient size: sizeDstBuf: %d sizeDstWritten: %d", pszFunc,
                  int32_t(qwDstBuf), int32_t(qwDstWritten));
        return KASTATUS_KAIP_INCOMPATIBLE_SIZE;
    }

    const bool bReverseLines = ((pSrcImgInfo->Flags ^ pDstImgInfo->Flags) & KaipImgFlag_BottomUp) != 0;
    pfnRun({pSrcImgInfo->Width, pSrcImgInfo->Height, pSrcImgInfo->pData, pDstImgInfo->pData, pSrcImgInfo->LineIncrement,
            pDstImgInfo->LineIncrement, GetUsedBitsPerPixel(dwSrcPixelFormat), GetUsedBitsPerPixel(dwDstPixelFormat),
            bReverseLines});
    return KASTATUS_OK;
}

KaipStatus ConvertToWinBmpCompatibleFormat(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions,
                                           int32_t* piConverted)
{
    const char* const pszFunc = "ConvertToWinBmpCompatibleFormat";
    if (piConverted) *piConverted = 0;
    if (!pSrcImgInfo) return Refuse(KASTATUS_KAIP_INVALID_SRC_POINTER, "%s: pSrcImgInfo is NULL!", pszFunc);

    const uint64_t qwBmpLine = (uint64_t(pSrcImgInfo->PixelIncrement) * pSrcImgInfo->Width + 3) & ~uint64_t(3);
    if (pSrcImgInfo->LineIncrement == qwBmpLine && IsPixelFormatDibCompatible(pSrcImgInfo->PixelFormat))
        return KASTATUS_OK;
    if (!pDstImgInfo) {
        Log.Debug("%s: Image in incompatible format, ImgInfo for conversion is NULL", pszFunc);
        return Refuse(KASTATUS_KAIP_NOT_DISPLAYABLE_FORMAT, "%s: returning KASTATUS_KAIP_NOT_DISPLAYABLE_FORMAT",
                      pszFunc);
    }

    // Colour that a bitmap can show in BGR order stays colour; the deep RGB formats and RGB16Packed are
    // deliberately reduced to grey although BGR16 is not.
    uint32_t dwTarget = KaipPixelFormat_Mono8;
    switch (pSrcImgInfo->PixelFormat) {
        case KaipPixelFormat_BGR565Packed:
        case KaipPixelFormat_BGR555:
        case KaipPixelFormat_BGR8Packed:
        case KaipPixelFormat_BGRA8Packed:
        case KaipPixelFormat_BGR16:
        case KaipPixelFormat_RGB8Packed:
        case KaipPixelFormat_RGBA8Packed:
            dwTarget = KaipPixelFormat_BGR8Packed;
            break;
        default:
            break;
    }
    const KaipStatus status = ConvertToPixelFormat(pSrcImgInfo, pDstImgInfo, dwTarget, dwOptions | KaipImgFlag_Align4);
    if (status == KASTATUS_OK && piConverted) *piConverted = 1;
    return status;
}
