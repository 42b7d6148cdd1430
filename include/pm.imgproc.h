/* pm.imgproc.h: the public interface of libpm.imgproc, image processing for machine-vision cameras. */
#ifndef PM_IMGPROC_H
#define PM_IMGPROC_H

#include <stddef.h>
#include <stdint.h>

#if defined(KAIP_BUILDING_LIBRARY)
#define KAIP_API __attribute__((visibility("default")))
#else
#define KAIP_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ======================================================================================
 * Conventions
 *
 * Every image crosses the interface as a KaipImgInfo descriptor owned by the caller.
 * Every function returns a KaipStatus (0 = success) unless its comment says otherwise;
 * each refusal is also written as one line to the library log (see "Log and configuration"
 * below). Nothing is thrown, no thread is created and no lock is taken: the global LUT,
 * the log and the configuration are shared by every caller of the process.
 *
 * Options words: KaipOption_ReallocateDst (0x1000) lets a function free, re-initialise and
 * allocate a destination that does not fit; the KaipImgFlag_* bits of the same word become
 * the flags of such a rebuilt destination. Other bits are told with each function. A rebuild
 * asked for with KaipImgFlag_ColorPlanes in the options word is refused with
 * KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED before anything is freed: rebuilt destinations
 * are always written through pData.
 *
 * Buffers that the library allocates are 64-byte aligned and marked with
 * KaipImgFlag_DataAllocated; free them with KaipDeallocateImageData. The library never
 * frees a buffer the caller supplied unless the caller asks it to reallocate a destination
 * that does not carry KaipImgFlag_NoDeallocate.
 *
 * Caller guarantees: the library cannot see how large a caller's buffer really is. A
 * descriptor filled by hand must describe memory that holds Height lines of LineIncrement
 * bytes (per plane in colour-planes mode), and LineIncrement must cover a whole line of
 * Width pixels. Formats of 16-bit samples (Mono9..Mono16, their Bayer codes, BGR555,
 * BGR565Packed, the 30/36/48-bit RGB codes) are read and written as 16-bit words: their
 * buffers and line increments must be even (the library's own allocations always are).
 * Packed, MIPI and YUV lines hold Width pixels in whole bytes. Only KaipConvertToPixelFormat
 * (for its destination) and the file functions measure a line against its width; everywhere
 * else a shorter LineIncrement is the caller's error. PixelIncrement is informative: pixel
 * sizes are always taken from PixelFormat. Source and destination must not share memory unless
 * a function says it works in place (with pDstImgInfo null). A destination that would be
 * rebuilt while it holds a buffer that the library allocated for the source (and lacks
 * KaipImgFlag_NoDeallocate) is refused with KASTATUS_KAIP_INCOMPATIBLE_DST before anything is
 * freed, since freeing it would pull the pixels from under the source.
 *
 * Threads: calls on different images may run at the same time on any number of threads. An
 * image or LUT object that one call writes must not be used by another call meanwhile; a call
 * that changes the global LUT while others read it mixes their results.
 *
 * Log and configuration: set once when the library is loaded, from the environment:
 *   KAIP_LOG_LEVEL  "off" (or 0), "fatal" (or 1, the default) or "debug" (or 16);
 *   KAIP_LOG_FILE   append log lines to this file instead of standard error;
 *   KAIP_INI_FILE   the kit's ini file (default /etc/pm/tessera.ini); its section
 *                   [Processing.Options] holds "SIMD.Level" (0 = scalar code only,
 *                   1 = SSE2 (default), 2 = +SSSE3, 3 = +SSE4.2, 4 = +AVX/AVX2) and
 *                   "MP.Level" (kept and logged only).
 * ====================================================================================== */

/* ---------------------------------------------------------------- image descriptor */

/* The image descriptor. A descriptor is initialised when Width, Height, LineIncrement
 * and PixelFormat are all non-zero. */
typedef struct KaipImgInfo {
    uint32_t Reserved;       /* never read or written by the library */
    uint32_t Width;          /* pixels per line */
    uint32_t Height;         /* lines */
    uint32_t PixelFormat;    /* a KaipPixelFormat_* code */
    uint32_t Flags;          /* KaipImgFlag_* bits */
    uint32_t PixelIncrement; /* bytes from one pixel to the next (per plane for colour planes) */
    uint32_t LineIncrement;  /* bytes from the start of one line to the start of the next */
    uint8_t* pData;          /* interleaved buffer (KaipImgFlag_ColorPlanes clear) */
    uint8_t* pDataR;         /* red plane (KaipImgFlag_ColorPlanes set) */
    uint8_t* pDataG;         /* green plane */
    uint8_t* pDataB;         /* blue plane */
} KaipImgInfo;

typedef int32_t KaipStatus;

/* Handle of a LUT object (see "LUT objects" below); points to the object's type word.
 * The value (KaipHLut)1 names the global LUT. */
typedef uint32_t* KaipHLut;

/* Flags of KaipImgInfo.Flags. */
#define KaipImgFlag_ColorPlanes 0x00000001u      /* three planes pDataR/G/B instead of pData */
#define KaipImgFlag_BottomUp 0x00000002u         /* first line in memory is the bottom line */
#define KaipImgFlag_Align4 0x00000004u           /* line increment rounded up to 4 bytes */
#define KaipImgFlag_Align8 0x00000008u           /* ... to 8 bytes */
#define KaipImgFlag_Align16 0x00000010u          /* ... to 16 bytes */
#define KaipImgFlag_DataAllocated 0x00000020u    /* buffers allocated by the library */
#define KaipImgFlag_BayerShiftLine 0x00000100u   /* mosaic starts one line later (GB, BG) */
#define KaipImgFlag_BayerShiftColumn 0x00000200u /* mosaic starts one column later (GR, BG) */
#define KaipImgFlag_NoDeallocate 0x00000800u     /* buffers belong to someone else */
#define KaipImgFlag_InitMask 0x00000B03u         /* caller flags that initialisation keeps */

/* Options word. */
#define KaipOption_ReallocateDst 0x00001000u

/* Pixel formats (GigE Vision codes, and a few of the library's own). */
#define KaipPixelFormat_Mono8 0x01080001u
#define KaipPixelFormat_BayerGR8 0x01080008u
#define KaipPixelFormat_BayerRG8 0x01080009u
#define KaipPixelFormat_BayerGB8 0x0108000Au
#define KaipPixelFormat_BayerBG8 0x0108000Bu
#define KaipPixelFormat_Mono9 0x000003F1u /* library's own, 1009 */
#define KaipPixelFormat_Mono10 0x01100003u
#define KaipPixelFormat_BayerGR10 0x0110000Cu
#define KaipPixelFormat_BayerRG10 0x0110000Du
#define KaipPixelFormat_BayerGB10 0x0110000Eu
#define KaipPixelFormat_BayerBG10 0x0110000Fu
#define KaipPixelFormat_Mono11 0x000003F3u /* library's own, 1011 */
#define KaipPixelFormat_Mono12 0x01100005u
#define KaipPixelFormat_BayerGR12 0x01100010u
#define KaipPixelFormat_BayerRG12 0x01100011u
#define KaipPixelFormat_BayerGB12 0x01100012u
#define KaipPixelFormat_BayerBG12 0x01100013u
#define KaipPixelFormat_Mono13 0x000003F5u /* library's own, 1013 */
#define KaipPixelFormat_Mono14 0x01100025u
#define KaipPixelFormat_Mono15 0x000003F7u /* library's own, 1015 */
#define KaipPixelFormat_Mono16 0x01100007u
#define KaipPixelFormat_BayerGR16 0x0110002Eu
#define KaipPixelFormat_BayerRG16 0x0110002Fu
#define KaipPixelFormat_BayerGB16 0x01100030u
#define KaipPixelFormat_BayerBG16 0x01100031u
#define KaipPixelFormat_Mono10Packed 0x010C0004u
#define KaipPixelFormat_BayerGR10Packed 0x010C0026u
#define KaipPixelFormat_BayerRG10Packed 0x010C0027u
#define KaipPixelFormat_BayerGB10Packed 0x010C0028u
#define KaipPixelFormat_BayerBG10Packed 0x010C0029u
#define KaipPixelFormat_Mono12Packed 0x010C0006u
#define KaipPixelFormat_BayerGR12Packed 0x010C002Au
#define KaipPixelFormat_BayerRG12Packed 0x010C002Bu
#define KaipPixelFormat_BayerGB12Packed 0x010C002Cu
#define KaipPixelFormat_BayerBG12Packed 0x010C002Du
#define KaipPixelFormat_Mono10Mipi 0x010A1004u    /* library's own */
#define KaipPixelFormat_BayerGR10Mipi 0x010A1026u /* library's own */
#define KaipPixelFormat_BayerRG10Mipi 0x010A1027u
#define KaipPixelFormat_BayerGB10Mipi 0x010A1028u
#define KaipPixelFormat_BayerBG10Mipi 0x010A1029u
#define KaipPixelFormat_Mono12Mipi 0x010C1006u /* library's own */
#define KaipPixelFormat_BGR555 0x021000E1u     /* library's own, 5-5-5 in 16 bits */
#define KaipPixelFormat_BGR565Packed 0x02100036u
#define KaipPixelFormat_BGR8Packed 0x02180015u
#define KaipPixelFormat_BGRA8Packed 0x02200017u
#define KaipPixelFormat_RGB8Packed 0x02180014u
#define KaipPixelFormat_RGBA8Packed 0x02200016u
#define KaipPixelFormat_RGB10V1Packed 0x0220001Cu
#define KaipPixelFormat_RGB10V2Packed 0x0220001Du
#define KaipPixelFormat_BGR10Packed 0x02300019u
#define KaipPixelFormat_RGB10Packed 0x02300018u
#define KaipPixelFormat_BGR12Packed 0x0230001Bu
#define KaipPixelFormat_RGB12Packed 0x0230001Au
#define KaipPixelFormat_BGR16 0x0230004Bu
#define KaipPixelFormat_RGB16Packed 0x02300033u
#define KaipPixelFormat_YUV411Packed 0x020C001Eu
#define KaipPixelFormat_YCbCr411_8_CbYYCrYY 0x020C003Cu
#define KaipPixelFormat_YCbCr411_8 0x020C005Au
#define KaipPixelFormat_YCbCr601_411_8_CbYYCrYY 0x020C003Fu
#define KaipPixelFormat_YCbCr709_411_8_CbYYCrYY 0x020C0042u
#define KaipPixelFormat_YUV422Packed 0x0210001Fu
#define KaipPixelFormat_YUV422_YUYV_Packed 0x02100032u
#define KaipPixelFormat_YUV444Packed 0x02180020u
#define KaipPixelFormat_YCbCr8 0x0218005Bu
#define KaipPixelFormat_YCbCr8_CbYCr 0x0218003Au
#define KaipPixelFormat_YCbCr422_8 0x0210003Bu
#define KaipPixelFormat_YCbCr422_8_CbYCrY 0x02100043u
#define KaipPixelFormat_YCbCr601_422_8 0x0210003Eu
#define KaipPixelFormat_YCbCr601_422_8_CbYCrY 0x02100044u
#define KaipPixelFormat_YCbCr709_422_8 0x02100041u
#define KaipPixelFormat_YCbCr709_422_8_CbYCrY 0x02100045u
#define KaipPixelFormat_YCbCr601_8_CbYCr 0x0218003Du
#define KaipPixelFormat_YCbCr709_8_CbYCr 0x02180040u
#define KaipPixelFormat_RGB8Planar 0x02180021u
#define KaipPixelFormat_RGB10Planar 0x02300022u
#define KaipPixelFormat_RGB12Planar 0x02300023u
#define KaipPixelFormat_RGB16Planar 0x02300024u

/* ---------------------------------------------------------------- status codes */

#define KASTATUS_OK 0
#define KASTATUS_KAIP_INVALID_POINTER 100001
#define KASTATUS_KAIP_INVALID_SRC_POINTER 100002
#define KASTATUS_KAIP_INVALID_DST_POINTER 100003
#define KASTATUS_KAIP_INVALID_PIXEL_FORMAT 100004
#define KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED 100005
#define KASTATUS_KAIP_MEMORY_ALLOC_FAILED 100006
#define KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER 100007
#define KASTATUS_KAIP_INCOMPATIBLE_PIXEL_FORMAT 100008
#define KASTATUS_KAIP_INCOMPATIBLE_LINE_INCREMENT 100009
#define KASTATUS_KAIP_IMGINFOS_NOT_EQUAL 100011
#define KASTATUS_KAIP_NOT_SUPPORTED 100012
#define KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT 100013
#define KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT 100014
#define KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED 100015
#define KASTATUS_KAIP_LINE_REVERSION_NOT_SUPPORTED 100016 /* also: orientations differ */
#define KASTATUS_KAIP_LINE_INCREMENT_TOO_BIG 100017
#define KASTATUS_KAIP_INCOMPATIBLE_DST 100018
#define KASTATUS_KAIP_INCOMPATIBLE_SIZE 100020
#define KASTATUS_KAIP_INCOMPATIBLE_ROTATED_SIZE 100021
#define KASTATUS_KAIP_INCOMPATIBLE_SRC_DST_PIXEL_FORMAT 100023
#define KASTATUS_KAIP_INCOMPATIBLE_FLAGS 100024
#define KASTATUS_KAIP_DST_RECT_OUTSIDE_SRC 100025
#define KASTATUS_KAIP_SRC_NOT_ALLOCATED 100026
#define KASTATUS_KAIP_DST_NOT_ALLOCATED 100027
#define KASTATUS_KAIP_NOT_DISPLAYABLE_FORMAT 100028
#define KASTATUS_KAIP_INVALID_LUT_HANDLE 100029
#define KASTATUS_KAIP_INVALID_LUT_TYPE 100030
#define KASTATUS_KAIP_REF_PIXEL_FORMAT_DIFFERS 100032
#define KASTATUS_KAIP_REF_FLAGS_DIFFER 100033
#define KASTATUS_KAIP_CANNOT_OPEN_READ_FILE 100034
#define KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE 100035
#define KASTATUS_KAIP_INVALID_TIFF_FILE 100036
#define KASTATUS_KAIP_INVALID_BMP_FILE 100037
#define KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT 100038
#define KASTATUS_KAIP_JPEG_SAVE_FAILED 100039
#define KASTATUS_KAIP_JPEG_LOAD_FAILED 100040

/* ---------------------------------------------------------------- descriptor and buffers */

/* Initialises *pImgInfo for an image of the given size and format. The four buffer
 * pointers are set to null (nothing is freed), PixelIncrement comes from the format,
 * Flags keeps only the KaipImgFlag_InitMask bits of dwFlags plus the largest alignment
 * requested (Align16, Align8 or Align4), and LineIncrement is PixelIncrement x Width
 * rounded up to that alignment.
 * Returns 0; KASTATUS_KAIP_INVALID_POINTER for a null descriptor;
 * KASTATUS_KAIP_INVALID_PIXEL_FORMAT for a format that has no fixed pixel increment (YUV,
 * YCbCr, planar and MIPI Bayer codes, unknown codes): Width, Height, PixelFormat and the
 * pointers are then already written, Flags and LineIncrement are left as they were.
 * KASTATUS_KAIP_NOT_SUPPORTED when the line increment would not fit in 32 bits (the plain
 * product would wrap and describe a buffer too small for the image). */
KAIP_API KaipStatus KaipInitImgInfo(KaipImgInfo* pImgInfo, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwPixelFormat,
                                    uint32_t dwFlags);

/* Returns the size in bytes of the image buffer (of one plane in colour-planes mode):
 * Height x LineIncrement as a 32-bit product; 0 for a null pointer. Not a status. */
KAIP_API uint32_t KaipGetImageDataSize(const KaipImgInfo* pImgInfo);

/* Allocates the buffer (or the three planes) of an initialised descriptor, 64-byte aligned,
 * and sets KaipImgFlag_DataAllocated. Buffers already present are not freed first.
 * Returns 0; KASTATUS_KAIP_INVALID_POINTER (null descriptor);
 * KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED; KASTATUS_KAIP_MEMORY_ALLOC_FAILED (no plane is
 * kept when one of the three fails; also when Height x LineIncrement does not fit in 32
 * bits, where a wrapped size would give a buffer too small for the image). */
KAIP_API KaipStatus KaipAllocateImageData(KaipImgInfo* pImgInfo);

/* Frees pData, pDataR, pDataG and pDataB (whichever are set) and sets them to null, unless
 * the descriptor carries KaipImgFlag_NoDeallocate. Only buffers allocated by this library
 * may be present. Returns 0; KASTATUS_KAIP_INVALID_POINTER for a null descriptor. */
KAIP_API KaipStatus KaipDeallocateImageData(KaipImgInfo* pImgInfo);

/* ---------------------------------------------------------------- status messages */

/* Copies the message of a status into pszBuffer in the manner of strncpy (at most
 * dwBufferSize - 1 characters, the rest zero-filled) and always stores a terminating zero
 * at pszBuffer[dwBufferSize - 1]. Unknown codes, 0 and a few codes without text give the
 * empty string. Returns pszBuffer. The caller must pass a valid buffer of dwBufferSize >= 1
 * bytes: neither is checked. */
KAIP_API char* KaipGetStatusMsg(KaipStatus status, char* pszBuffer, uint64_t dwBufferSize);

/* ==== conversion ==================================================================== */

/* 1 when an image of dwSrcPixelFormat can be converted into dwDstPixelFormat by
 * KaipConvertToPixelFormat, else 0. A format converts to itself only where that is a copy
 * (for example Mono8, BGR8Packed, the 15/16-bit and the deep colour formats); Bayer mosaics
 * convert as the raw mono image of their depth (8, 10 and 12 bits only, to Mono8 and the
 * 24/32-bit colour formats); YUV and YCbCr sources to mono and 24/32-bit colour.
 * YCbCr601_8_CbYCr and YCbCr709_8_CbYCr are answered 1 here, but KaipConvertToPixelFormat
 * refuses them as sources (KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT): its source check
 * knows no pixel-format class for them. */
KAIP_API int KaipCanConvertToPixelFormat(uint32_t dwSrcPixelFormat, uint32_t dwDstPixelFormat);

/* Converts the whole source image into *pDstImgInfo in dwDstPixelFormat, line by line.
 * Depth changes are plain shifts (never rounded), colour becomes grey as
 * (54 R + 183 G + 18 B + 128) >> channel depth (white gives 254), mono becomes colour by
 * replication; new 32-bit pixels get 0 in their fourth byte, except from RGB8Packed and
 * RGBA8Packed to BGRA8Packed, where the destination's fourth byte is left as it was. Lines
 * are written in reverse order when source and destination differ in KaipImgFlag_BottomUp.
 * Only the pixels of each destination line are written, never its padding.
 * dwOptions: KaipOption_ReallocateDst lets the function rebuild a destination of another
 * size, orientation or pixel format, or without a buffer; the KaipImgFlag_* bits of
 * dwOptions are then its flags.
 * Returns 0; the statuses of the common checks (KASTATUS_KAIP_INVALID_SRC_POINTER,
 * KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT for a source without a class,
 * KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED, KASTATUS_KAIP_SRC_NOT_ALLOCATED,
 * KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED for colour-plane sources,
 * KASTATUS_KAIP_INVALID_DST_POINTER for a null destination, KASTATUS_KAIP_INCOMPATIBLE_SIZE,
 * KASTATUS_KAIP_DST_NOT_ALLOCATED, KASTATUS_KAIP_LINE_REVERSION_NOT_SUPPORTED,
 * KASTATUS_KAIP_INCOMPATIBLE_FLAGS without the option); KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT
 * for a destination format outside mono, 15/16/24/32-bit and 30/36/48-bit colour;
 * KASTATUS_KAIP_NOT_SUPPORTED for a pair KaipCanConvertToPixelFormat refuses;
 * KASTATUS_KAIP_INCOMPATIBLE_DST when the destination's pixel format differs and
 * KaipOption_ReallocateDst is not given; KASTATUS_KAIP_INCOMPATIBLE_SIZE when the destination's
 * LineIncrement cannot hold Width pixels (compared in 64 bits, so a product that would wrap
 * at 32 bits is refused too); the statuses of re-initialisation and allocation. Nothing is
 * written on any refusal.
 * The caller guarantees that the source buffer holds Height lines of LineIncrement bytes, each
 * with Width pixels, and that source and destination do not overlap. */
KAIP_API KaipStatus KaipConvertToPixelFormat(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                             uint32_t dwDstPixelFormat, uint32_t dwOptions);
/* ==== end conversion ================================================================ */

/* ==== bayer ========================================================================= */

/* Bayer decoding. Sources are Bayer mosaics of 8 bits (one byte per sample) or 10 and 12 bits
 * (the low bits of a little-endian 16-bit word): KaipPixelFormat_BayerXX8/10/12. The pattern
 * comes from the source's pixel format, not from its flags. 16-bit and packed Bayer formats
 * give KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT; any other format (Mono8 included)
 * KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT. Every output sample has 8 bits.
 *
 * The decoders share one order of checks and statuses:
 *   KASTATUS_KAIP_INVALID_SRC_POINTER      pSrcImgInfo is null;
 *   KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT   the source is no Bayer mosaic;
 *   KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED, KASTATUS_KAIP_SRC_NOT_ALLOCATED  for the source;
 *   KASTATUS_KAIP_INVALID_DST_POINTER      pDstImgInfo is null;
 *   KASTATUS_KAIP_INCOMPATIBLE_SIZE, KASTATUS_KAIP_DST_NOT_ALLOCATED  the destination's size
 *                                          differs or it has no buffer, without
 *                                          KaipOption_ReallocateDst;
 *   KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT  dwDstPixelFormat is not produced (even with
 *                                          KaipOption_ReallocateDst);
 *   KASTATUS_KAIP_NOT_SUPPORTED            images narrower or lower than 2 pixels, for the
 *                                          decoders with a border (all but KaipBdShowMosaic):
 *                                          their border reads one pixel further;
 *   KASTATUS_KAIP_INCOMPATIBLE_DST         the destination is described in another format
 *                                          than dwDstPixelFormat, without KaipOption_ReallocateDst.
 *                                          With it any misfit destination is freed (unless
 *                                          KaipImgFlag_NoDeallocate), re-initialised with dwOptions
 *                                          as flags, and allocated (statuses of KaipInitImgInfo
 *                                          and KaipAllocateImageData);
 *   KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED  a destination held as colour planes;
 *   KASTATUS_KAIP_INVALID_LUT_TYPE         (decoders with hLut) the handle is not a LUT of the
 *                                          source's depth or lacks the Bayer tables it needs.
 * hLut: null = identity tables, (KaipHLut)1 = the global LUT, otherwise a LUT object of the
 * source's depth (or of all depths). Every output sample is one table read of the LUT.
 * Lines are written in the source's memory order whatever KaipImgFlag_BottomUp says.
 *
 * Border: line 0, the last line, column 0 and the last column are computed from the 2x2
 * block of each pixel and its neighbours towards the inside; these pixels are always written
 * blue, green, red (so for RGB destinations the border carries red and blue swapped). */

/* Shows the raw mosaic in colour: each sample (scaled to 8 bits) in the channel of its site,
 * 0 in the others. Destinations BGR8Packed, BGRA8Packed (fourth byte 0). No LUT, no border. */
KAIP_API KaipStatus KaipBdShowMosaic(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                     uint32_t dwDstPixelFormat, uint32_t dwOptions);

/* A Mono8 image from the green sites: green sites as they are, red and blue sites the mean of
 * their four direct neighbours (identity LUT on the border). Destination Mono8 only; a Bayer 8
 * destination format is refused with KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT. */
KAIP_API KaipStatus KaipBdGreenToGreyscale(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                           uint32_t dwDstPixelFormat, uint32_t dwOptions);

/* The cheapest colour decoder: each pixel takes red, green and blue from the 2x2 block that
 * ends at it. Destinations RGB8Packed, BGR8Packed, RGBA8Packed, BGRA8Packed (fourth byte 0).
 * For 10- and 12-bit sources the LUT must carry KAIP_LUT_BAYER. */
KAIP_API KaipStatus KaipBdNearestNeighbour(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                           uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut);

/* Bilinear interpolation: each missing colour is the truncated mean of its two or four
 * nearest samples of that colour, run through the LUT. Destinations BGR8Packed and
 * BGRA8Packed (fourth byte 0); the LUT must carry KAIP_LUT_BAYER | KAIP_LUT_BAYER_16 at every
 * depth. */
KAIP_API KaipStatus KaipBdBilinearInterpolation(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                                uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut);

/* The 5x5 decoders. They share KaipBdBilinearInterpolation's frame: its checks and statuses
 * (KASTATUS_KAIP_NOT_SUPPORTED below 2x2), BGR8Packed and BGRA8Packed destinations (fourth byte
 * 0), a LUT with KAIP_LUT_BAYER | KAIP_LUT_BAYER_16 at every depth, and the 2x2 border rule
 * for line 0, the last line, column 0 and the last column. Their interpolation reads two
 * pixels on each side, so the second ring (line 1, line height-2, column 1, column width-2)
 * takes the bilinear rule, and an image below 5x5 is made of these two rings alone; nothing
 * outside the image is read. Inside, they interpolate the raw samples (10- and 12-bit ones at
 * full precision, bits above the depth ignored), round once to the source depth, clamp to
 * its range and read each output from the LUT's 8-bit table of its colour (Red, Green, Blue of
 * an 8-bit LUT; BayerRed8, BayerGreen8, BayerBlue8 of a 10- or 12-bit one). A uniform mosaic
 * decodes to its grey, and a horizontal or vertical grey ramp stays that ramp inside the border.
 * Colour PSNR on the 18 McMaster images (BayerRG8, 10-pixel border left out; bench/bayer's
 * kaip_quality measures it): bilinear 32.3 dB, gradient-corrected bilinear 35.0, variable
 * gradients 35.1, pixel grouping 35.4, each better than bilinear on every image. */

/* Variable number of gradients (Chang, Cheung and Pang, 1999): eight gradients (N, E, S, W
 * and the diagonals) over the 5x5 neighbourhood, each a mean of absolute differences of the
 * samples cut to 8 bits, two apart along the direction (one apart for the diagonals of red and
 * blue pixels), the nearer ones weighted twice, taken by nested rounded-up halvings in eighths
 * of an 8-bit step (so each fits a byte; this costs no measurable quality against exact sums);
 * the directions whose gradient is at most 1.5 x minimum + 0.5 x (maximum - minimum) are kept,
 * and each missing colour is the pixel's own sample plus the mean, over the kept directions,
 * of that colour's difference to the pixel's colour around the neighbour in the direction.
 * Measured at 2448x2048 on one thread: about 2.5 to 4 times the bilinear decoder's time with an
 * 8-bit LUT (SSE2 alone and with AVX2), 5.5 to 9 times without a LUT (the bilinear decoder then
 * only averages bytes), 5.5 to 9 times for 12-bit sources.
 * Allocates one strip buffer (about 230 KB; 390 KB for 10- and 12-bit sources with SIMD
 * switched off) per call: when that fails it returns KASTATUS_KAIP_MEMORY_ALLOC_FAILED, after
 * a rebuild of the destination but before any write. */
KAIP_API KaipStatus KaipBdVariableGradients(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                            uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut);

/* Patterned pixel grouping (after Chuan-kai Lin): green at red and blue sites is the mean of
 * four directional estimates (the nearer green three times, the farther once, corrected by
 * the slope of the pixel's own colour), weighted by (255 - gradient)^2 / 16 + 1 with the
 * gradient in 8-bit steps (clipped to 255); red and blue then follow the green plane by hue
 * transit: where green rises or falls steadily across the pixel, the mean of the colour's two
 * neighbours plus green's step there (green less the mean of the greens at those neighbours),
 * kept between the two values; otherwise the mean plus half that step. At red and blue sites
 * the transit runs along the diagonal of smaller gradient. The best PSNR of the library
 * (35.4 dB), at 4.2 to 5.4 times the bilinear decoder's time for 8-bit mosaics without a LUT
 * (3.1 to 4.4 with AVX2), about 3 to 3.5 times for 12-bit ones and with a LUT.
 * Allocates line buffers per call (about 26 bytes per column; 12 with SIMD.Level 0): when that
 * fails it returns KASTATUS_KAIP_MEMORY_ALLOC_FAILED, after a rebuild of the destination but
 * before any write. */
KAIP_API KaipStatus KaipBdPixelGrouping(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                        uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut);

/* Gradient-corrected bilinear interpolation (the 5x5 linear filters of Malvar, He and Cutler,
 * 2004, in integer sixteenths): each bilinear estimate plus a share of the Laplacian of the
 * pixel's own colour, rounded once; the result is then kept within the range of the samples
 * the bilinear estimate averages, which removes the coloured zipper the plain filters leave
 * beside saturated edges. About 1.4 to 1.8 times the bilinear decoder's time for 8-bit mosaics
 * without a LUT (1.1 to 1.9 for 12-bit ones, 1.1 to 1.8 with a LUT). */
KAIP_API KaipStatus KaipBdBilinearColorCorrection(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                                  uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut);

/* The inverse of KaipBdShowMosaic (BGR8/BGRA8 image to a Bayer 8/10/12 mosaic). Its source
 * passes the same Bayer test as the decoders', so a colour source is refused with
 * KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT and a Bayer source with
 * KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT: at present it encodes nothing. */
KAIP_API KaipStatus KaipBdEncodeToBayer(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                        uint32_t dwDstPixelFormat, uint32_t dwOptions);

/* Options of KaipCalcWbFactors. Any non-zero options word refines the caller's factors on
 * RGB images (Bayer mosaics ignore all but KaipWbOption_NoNormalize). */
#define KaipWbOption_NoNormalize 0x00000001u /* exactly 1: green stays 1000, others may be below */
#define KaipWbOption_Refine 0x00000002u      /* multiply into the factors passed in (RGB only) */

/* Measures white-balance factors in thousandths (1000 = gain 1.0) that make the image's
 * average colour grey, green being the reference; unless dwOptions is exactly 1 they are then
 * divided by the smallest, so none falls below 1000. Pixels with a channel above 249 (8-bit),
 * 999 (10-bit) or 3999 (12-bit) are left out unless too few remain. A factor below 0.001
 * sets all three to 1000; outputs are truncated. Each pointer may be null (neither read nor
 * written). Sources: RGB8/BGR8/RGBA8/BGRA8Packed, RGB10/BGR10Packed, RGB12/BGR12Packed and
 * Bayer 8/10/12 mosaics. With options non-zero, RGB images multiply the red and blue results
 * into *pdwRed and *pdwBlue as passed in and take *pdwGreen as it is.
 * Returns 0 (the outputs are left unchanged when nothing could be sampled); the source
 * statuses of the decoders above; KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT for other
 * depths. Bayer mosaics whose unsaturated sites are too few are measured on one byte per
 * site (for 10/12-bit data: the bytes of the first half of each line). */
KAIP_API KaipStatus KaipCalcWbFactors(const KaipImgInfo* pSrcImgInfo, uint32_t* pdwRed, uint32_t* pdwGreen,
                                      uint32_t* pdwBlue, uint32_t dwOptions);

/* ==== end bayer ===================================================================== */

/* ==== lut =========================================================================== */

/* LUT objects. A look-up table maps every input sample of one depth to an output value,
 * separately for red, green and blue (monochrome data uses the green table). A LUT object is
 * made by KaipAllocateLut from a type word: the depth in the low byte (KAIP_LUT_ALL_DEPTHS
 * makes a universal object holding an 8-, a 10- and a 12-bit table kept in step) and the
 * Bayer flags, which add the tables the Bayer decoders read. Every other bit is stored as
 * given and ignored.
 *
 * Handles: (KaipHLut)1 names the global LUT, one universal LUT with both Bayer flags that
 * every caller of the process shares and may change (without locking). A null handle means
 * the global LUT as well for the reset, set, get, builder functions and KaipApplyLut; the
 * Bayer decoders read identity tables for it instead, and the mirror does no lookup.
 * Any other handle must be one returned by KaipAllocateLut and not yet freed: the library
 * cannot detect a pointer to anything else, and reads or writes through it as a LUT. */
#define KAIP_LUT_ALL_DEPTHS 0x00000000u /* universal object: 8-, 10- and 12-bit tables */
#define KAIP_LUT_8BIT 0x00000008u
#define KAIP_LUT_10BIT 0x0000000Au
#define KAIP_LUT_12BIT 0x0000000Cu
#define KAIP_LUT_BAYER 0x00010000u    /* 10/12-bit tables also give 8-bit Bayer outputs */
#define KAIP_LUT_BAYER_16 0x00100000u /* with KAIP_LUT_BAYER: replicated 16/32-bit Bayer tables */

/* Channel selectors of the single-value functions; any other value addresses no table. */
#define KAIP_LUT_CHANNEL_MONO 0x502D0000u /* the green table */
#define KAIP_LUT_CHANNEL_RED 0x502D0001u
#define KAIP_LUT_CHANNEL_GREEN 0x502D0002u
#define KAIP_LUT_CHANNEL_BLUE 0x502D0003u

/* Returns a new LUT object of the given type, set to identity, or null. An unknown depth
 * byte gives null (and a log line). When memory runs out the global LUT is reset to
 * identity and null is returned. */
KAIP_API KaipHLut KaipAllocateLut(uint32_t dwLutType);

/* Frees an object made by KaipAllocateLut. Returns 0; KASTATUS_KAIP_INVALID_LUT_HANDLE for
 * null or 1 (the global LUT cannot be freed). */
KAIP_API KaipStatus KaipFreeLut(KaipHLut hLut);

/* Sets a LUT back to identity (null or 1: the global LUT). Returns 0;
 * KASTATUS_KAIP_INVALID_LUT_HANDLE for an object with an unknown depth byte. */
KAIP_API KaipStatus KaipResetLut(KaipHLut hLut);

/* LUT contents. hLut null or 1 addresses the global LUT. A single-depth object accepts only
 * the functions of its own depth (else KASTATUS_KAIP_INVALID_LUT_TYPE); a universal object
 * accepts all three depths. Values are stored as given, without clamping to the depth.
 *
 * Whole tables: arrays of 256 entries at 8 bits, 1024 at 10, 4096 at 12, which the caller
 * must provide in full; a null channel is skipped.
 * Setting through null or 1 changes only the global table of the function's depth. Setting a
 * universal object also sets its other two depths: upward by linear interpolation (the last
 * entry held flat over the last 4 or 16 entries), downward by taking every 4th or 16th entry
 * shifted down. Getting copies the tables of the function's depth as they stand. */
KAIP_API KaipStatus KaipSet8BitLut(KaipHLut hLut, const uint8_t* pRed, const uint8_t* pGreen, const uint8_t* pBlue);
KAIP_API KaipStatus KaipSet10BitLut(KaipHLut hLut, const uint16_t* pRed, const uint16_t* pGreen, const uint16_t* pBlue);
KAIP_API KaipStatus KaipSet12BitLut(KaipHLut hLut, const uint16_t* pRed, const uint16_t* pGreen, const uint16_t* pBlue);
KAIP_API KaipStatus KaipGet8BitLut(KaipHLut hLut, uint8_t* pRed, uint8_t* pGreen, uint8_t* pBlue);
KAIP_API KaipStatus KaipGet10BitLut(KaipHLut hLut, uint16_t* pRed, uint16_t* pGreen, uint16_t* pBlue);
KAIP_API KaipStatus KaipGet12BitLut(KaipHLut hLut, uint16_t* pRed, uint16_t* pGreen, uint16_t* pBlue);

/* Single entries of the table chosen by dwChannel (KAIP_LUT_CHANNEL_*). The value's low 8
 * bits (8-bit) or low 16 bits are used. An index beyond the table, an unknown selector or a
 * null pValue does nothing and returns 0. On a universal object a value set at one depth is
 * also written into the other two: at 8 bits as a step of 4 (10-bit) and 16 (12-bit) equal
 * entries scaled by 4 and 16; at 10 bits into 8-bit entry index/4 (value/4) and into four
 * 12-bit entries (value*4); at 12 bits, only for indexes 0..15 (8-bit) and 0..255 (10-bit),
 * into 8-bit entry index*16 (value*16) and 10-bit entry index*4 (value*4). */
KAIP_API KaipStatus KaipSet8BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue);
KAIP_API KaipStatus KaipSet10BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue);
KAIP_API KaipStatus KaipSet12BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue);
KAIP_API KaipStatus KaipGet8BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint8_t* pValue);
KAIP_API KaipStatus KaipGet10BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint16_t* pValue);
KAIP_API KaipStatus KaipGet12BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint16_t* pValue);

/* Builders: each composes a curve onto the unclipped curve a LUT holds, at every depth the
 * handle reaches (null or 1: all three global tables), and clips the result into the output
 * tables. Parameters are thousandths (1000 = 1.0); none is range-checked, extremes saturate.
 * Returns 0 or KASTATUS_KAIP_INVALID_LUT_TYPE for an object with an unknown depth byte.
 *
 * Gamma: v -> M * (v / M)^(1000 / dwGamma) rounded (M = 255, 1023 or 4095; dwGamma <= 9 acts
 * as exponent 100; the exponent is at least 0.01). dwGamma 1000 returns 0 at once, whatever
 * the handle. */
KAIP_API KaipStatus KaipAddGammaToLut(uint32_t dwGamma, KaipHLut hLut);
/* White balance: v -> v * factor / 1000 rounded, per channel. */
KAIP_API KaipStatus KaipAddWbToLut(uint32_t dwRedFactor, uint32_t dwGreenFactor, uint32_t dwBlueFactor, KaipHLut hLut);
/* v -> v * iGain / 1000 + M * iOffset / 1000, truncated toward zero (not rounded). */
KAIP_API KaipStatus KaipAddOffsetAndGainToLut(int32_t iOffset, int32_t iGain, KaipHLut hLut);
/* Offset and gain with offset = iBrightness - iContrast / 2 - 500 and gain = iContrast:
 * 1000 and 1000 change nothing; the contrast pivots about the middle of the range. */
KAIP_API KaipStatus KaipAddBrightnessAndContrastToLut(int32_t iBrightness, int32_t iContrast, KaipHLut hLut);

/* Runs every sample of pSrcImgInfo through the LUT's channel tables into pDstImgInfo, or in
 * place when pDstImgInfo is null. Formats: Mono8, Mono10, Mono12 (green table; source bits
 * above the depth are ignored), RGB8Packed, BGR8Packed, RGBA8Packed, BGRA8Packed (the fourth
 * byte of the destination is not written), RGB10Packed, BGR10Packed, RGB12Packed,
 * BGR12Packed. hLut null or 1: the global LUT; otherwise a LUT object whose depth is that of
 * the format, or a universal object. A destination must match the source in size, pixel
 * format, colour planes and orientation; with KaipOption_ReallocateDst in dwOptions one that
 * does not is rebuilt with the source's size and format (before the LUT is checked).
 * Returns 0, a status of the common checks, KASTATUS_KAIP_INVALID_LUT_TYPE (LUT object of
 * another depth, or any other format with a LUT object),
 * KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT (any other format with the global LUT). */
KAIP_API KaipStatus KaipApplyLut(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, KaipHLut hLut, uint32_t dwOptions);
/* ==== end lut ======================================================================= */

/* ==== geometry ====================================================================== */

/* Direction arguments of KaipMirror and KaipRotate90AndMirror: any non-zero value means yes. */
#define KaipMirror_No 0
#define KaipMirror_Yes 1
#define KaipRotate_CounterClockwise 0u
#define KaipRotate_Clockwise 1u

/* Longest line (in bytes) that KaipDeinterlace accepts in place. */
#define KaipDeinterlace_MaxLineIncrement 8192u

/* Mirrors an image top-bottom, left-right or both (a half turn), into pDstImgInfo or, when it
 * is null, in place. Formats of one to four bytes per pixel: Mono8 up to Mono16 and the
 * unpacked Bayer formats, BGR555, BGR565Packed, BGR8Packed, BGRA8Packed, RGB8Packed,
 * RGBA8Packed. Source and destination must agree in size, format, and the ColorPlanes and
 * BottomUp flags, or carry KaipOption_ReallocateDst in dwOptions.
 * hLut: null copies samples unchanged; otherwise each written sample is looked up (handle 1:
 * the global LUT): 8-bit samples through the Green table of the 8-bit body; Mono10 words
 * masked to 10 bits through the Green table of the 10-bit body; every other 16-bit pixel
 * masked to 12 bits through the Green table of the 12-bit body; bytes 0, 1, 2 of three- and
 * four-byte pixels through Red, Green, Blue whatever the channel order, the fourth byte
 * copied.
 * In place, pixels are exchanged pairwise and mapped as they are written: with both
 * directions 0 no pixel is touched, not even mapped (the handle is still resolved, so a LUT
 * of the wrong type is refused); the middle row (top-bottom) or middle
 * column (left-right) of an odd size is neither moved nor mapped; with both directions the
 * middle row of an odd height keeps its order and, with a LUT, is mapped twice (its centre
 * pixel once).
 * Into a destination with both directions 0 and no LUT each line is copied whole, padding
 * included (as many bytes as the shorter of the two line increments). A destination must not
 * share memory with the source: to mirror in place, pass a null pDstImgInfo.
 * Returns 0, the statuses of the common checks (KASTATUS_KAIP_INVALID_SRC_POINTER,
 * _IMGINFO_NOT_INITIALIZED, _SRC_NOT_ALLOCATED, _UNSUPPORTED_SRC_PIXEL_FORMAT,
 * _COLOR_PLANES_NOT_SUPPORTED, _INCOMPATIBLE_SIZE, _INCOMPATIBLE_SRC_DST_PIXEL_FORMAT,
 * _DST_NOT_ALLOCATED, _INCOMPATIBLE_FLAGS), of the reallocation (_INVALID_PIXEL_FORMAT,
 * _MEMORY_ALLOC_FAILED) or of the LUT lookup (_INVALID_LUT_HANDLE, _INVALID_LUT_TYPE; the
 * destination may already have been reallocated then). */
KAIP_API KaipStatus KaipMirror(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, int32_t iTopBottom,
                               int32_t iLeftRight, uint32_t dwOptions, KaipHLut hLut);

/* Reverses the order of the lines in memory and flips KaipImgFlag_BottomUp, so the picture
 * stays the same: KaipMirror(src, dst, 1, 0, dwOptions, NULL), then the destination's
 * BottomUp flag becomes the opposite of the source's (in place: the source's is toggled).
 * Returns what KaipMirror returns; on failure no flag changes. */
KAIP_API KaipStatus KaipReverseLines(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions);

/* KaipReverseLines with whole-line copies (padding moves with its line) for the same formats.
 * Into a destination (same size and format, same ColorPlanes flag, or KaipOption_ReallocateDst)
 * each line copies as many bytes as the shorter line increment. In place, lines are exchanged
 * through pLineBuffer, which must hold one source LineIncrement, or when it is null through a
 * line allocated here. Returns 0, the statuses of the common checks and the reallocation, or
 * KASTATUS_KAIP_MEMORY_ALLOC_FAILED when the scratch line cannot be allocated (nothing is
 * changed then). */
KAIP_API KaipStatus KaipReverseLinesFast(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, void* pLineBuffer,
                                         uint32_t dwOptions);

/* Turns an image by a quarter turn into pDstImgInfo (required; it must be as wide as the
 * source is high and as high as the source is wide, of the same format and ColorPlanes and
 * BottomUp flags, or KaipOption_ReallocateDst rebuilds it so). The mirrors are applied to
 * the source before the turn. Clockwise refers to the picture: for a bottom-up source the
 * turn in memory is the opposite one. Formats as for KaipMirror; pixels are copied whole.
 * When hLut is not null, KaipApplyLut is then run in place on the destination; its status is
 * ignored (a LUT of the wrong type leaves the turned pixels unmapped).
 * Returns 0 or the statuses of the common checks (also KASTATUS_KAIP_INVALID_DST_POINTER and
 * _INCOMPATIBLE_ROTATED_SIZE) and of the reallocation. */
KAIP_API KaipStatus KaipRotate90AndMirror(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                          uint32_t dwClockwise, uint32_t dwMirrorTopBottom, uint32_t dwMirrorLeftRight,
                                          uint32_t dwOptions, KaipHLut hLut);

/* Removes the comb of an interlaced frame: every line but the last becomes the average
 * (rounded down) of itself and the line below, as they were before the call; the last line
 * is not written (in a destination it keeps what it held). Mono8 and the 8-bit Bayer formats,
 * BGR8Packed and BGRA8Packed average every byte of the line, padding included (as many bytes
 * as the shorter of the two line increments); BGR555 and BGR565Packed average each colour
 * field of every pixel. In place (pDstImgInfo null) or into
 * a destination of the same size, format and ColorPlanes and BottomUp flags (or
 * KaipOption_ReallocateDst). Returns 0, the statuses of the common checks and the
 * reallocation, or KASTATUS_KAIP_LINE_INCREMENT_TOO_BIG in place when the line increment
 * exceeds KaipDeinterlace_MaxLineIncrement. */
KAIP_API KaipStatus KaipDeinterlace(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions);

/* Copies the rectangle of iDstWidth x iDstHeight pixels whose top-left corner is at
 * (iXOffset, iYOffset) of the picture (offsets may be negative; rows count from the top of
 * the picture also for a bottom-up source) into pDstImgInfo (required). The rectangle is
 * clipped to the source; the destination must have exactly the clipped size, the source's
 * format and its ColorPlanes and BottomUp flags, or KaipOption_ReallocateDst rebuilds it so.
 * Formats: one and two bytes per pixel up to RGBA8Packed, and BGR10Packed, RGB10Packed,
 * BGR12Packed, RGB12Packed, BGR16, RGB16Packed.
 * Returns 0, the statuses of the common checks (KASTATUS_KAIP_INVALID_DST_POINTER among
 * them), KASTATUS_KAIP_DST_RECT_OUTSIDE_SRC when the clipped rectangle is empty,
 * KASTATUS_KAIP_INCOMPATIBLE_DST for a destination of another size without
 * KaipOption_ReallocateDst, or the statuses of the reallocation. */
KAIP_API KaipStatus KaipCopyArea(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, int32_t iXOffset,
                                 int32_t iYOffset, int32_t iDstWidth, int32_t iDstHeight, uint32_t dwOptions);

/* Fills the whole image with one colour given as three 8-bit components.
 * Mono8: every byte of the buffer, padding included (LineIncrement x Height bytes), gets the
 * integer mean (red + green + blue) / 3.
 * Every other format gets the colour as the library's pixel conversion turns a BGR8Packed
 * pixel into it (KaipConvertToPixelFormat), so Mono9 .. Mono16 get the weighted grey
 * (54 R + 183 G + 18 B + 128) >> 8 shifted up to their depth (white gives 254, not 255),
 * BGR555 and BGR565Packed the truncated 5/6-bit fields, BGR8Packed, RGB8Packed, BGRA8Packed and
 * RGBA8Packed the bytes in their order (the fourth byte 0), BGR10/RGB10/BGR12/RGB12Packed,
 * BGR16 and RGB16Packed the channels shifted left by 2, 4 or 8.
 * The unpacked Bayer formats (8, 10, 12, 16 bits) get at each site the channel of its colour
 * (pattern from the pixel format code, lines in memory order) shifted to their depth, as
 * KaipBdEncodeToBayer writes it. RGB8Planar, RGB10Planar, RGB12Planar and RGB16Planar (with
 * KaipImgFlag_ColorPlanes) get each channel in its plane (pDataR, pDataG, pDataB), shifted to
 * the depth, one byte or 16-bit word per sample.
 * Only Width pixels of each line are written for all formats but Mono8: padding keeps its bytes.
 * Returns 0; KASTATUS_KAIP_INVALID_POINTER (null descriptor);
 * KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED; KASTATUS_KAIP_INCOMPATIBLE_FLAGS when
 * KaipImgFlag_ColorPlanes is set for a format that is not planar or clear for a planar one;
 * KASTATUS_KAIP_DST_NOT_ALLOCATED for a null pData (or plane pointer);
 * KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT for formats no colour converts into (the packed and
 * MIPI mono and Bayer formats, YUV and YCbCr, RGB10V1/V2Packed, unknown codes). */
KAIP_API KaipStatus KaipFillWithColor(KaipImgInfo* pImgInfo, uint8_t red, uint8_t green, uint8_t blue);

/* ==== end geometry ================================================================== */

/* ==== matrix ======================================================================== */

/* Colour matrices and 3x3 kernels are nine int32_t entries in row-major order, in
 * thousandths: KaipMatrix_One (1000) stands for 1.0. A colour matrix's rows are the output
 * channels red, green, blue and its columns the input channels red, green, blue, whatever
 * the byte order of the format. A kernel's rows are the previous, the same and the next
 * line in memory order (whatever KaipImgFlag_BottomUp says), its columns left, same, right;
 * it is applied as written and divided by 1000. */
#define KaipMatrix_One 1000

/* Sharpness range of KaipSet3x3MatrixSharpening: -100 smooths most, 0 is the identity. */
#define KaipSharpness_Min (-100)
#define KaipSharpness_Max 100

/* Option of KaipSet3x3MatrixSharpening: weight all eight neighbours (else only the four
 * edge neighbours, with the corners 0). */
#define KaipSharpening_AllNeighbours 0x00000001u

/* Multiplies every pixel of a packed RGB/BGR image by the colour matrix piMatrix and writes
 * the result into pDstImgInfo, or back into the source when pDstImgInfo is null.
 * Formats: BGR8Packed, BGRA8Packed, RGB8Packed, RGBA8Packed (8 bits), BGR10Packed,
 * RGB10Packed (10 bits in 16-bit words), BGR12Packed, RGB12Packed (12 bits), BGR16,
 * RGB16Packed (16 bits). Each entry becomes the 16.16 fixed-point coefficient
 * entry x 65.536 truncated toward zero (1 gives 65; entries beyond +-32767999, whose
 * coefficient would not fit in 32 bits, give INT32_MIN); each output channel is the sum of
 * the three products (32-bit arithmetic that wraps for very large entries, 64-bit for the
 * 16-bit formats), 0 below 0, the format's maximum above it, else shifted right by 16.
 * With a LUT each channel is then replaced by the entry of its own table (red, green,
 * blue). The fourth byte of BGRA8/RGBA8 destination pixels is not written.
 * Speed: the 8-bit formats are fastest with entries off the diagonal within -499..499 and
 * on it within 500..1499 (KaipSetSaturationMatrix from 44 to 156); other matrices, such as
 * sensor matrices with larger entries, take a slower path with the same results.
 * The destination must match the source in size, format, colour planes and orientation;
 * with KaipOption_ReallocateDst in dwOptions a misfit is rebuilt from the source's size and
 * format with the other dwOptions bits as flags.
 * hLut: null = no LUT; (KaipHLut)1 = the global LUT; otherwise a LUT object holding a body
 * of the format's depth (8, 10 or 12). The 16-bit formats ignore hLut.
 * Returns 0; the statuses of the common checks (KASTATUS_KAIP_INVALID_SRC_POINTER,
 * ..._IMGINFO_NOT_INITIALIZED, ..._SRC_NOT_ALLOCATED, ..._UNSUPPORTED_SRC_PIXEL_FORMAT,
 * ..._COLOR_PLANES_NOT_SUPPORTED, ..._INCOMPATIBLE_SIZE, ..._INCOMPATIBLE_SRC_DST_PIXEL_FORMAT,
 * ..._DST_NOT_ALLOCATED, ..._INCOMPATIBLE_FLAGS) and of the reallocation
 * (..._INVALID_PIXEL_FORMAT, ..._MEMORY_ALLOC_FAILED); KASTATUS_KAIP_INVALID_POINTER for a
 * null piMatrix; KASTATUS_KAIP_INVALID_LUT_TYPE when hLut has no body of the format's
 * depth; KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED when dwOptions would rebuild the
 * destination in colour-planes mode. Nothing is written to pixels on a refusal. */
KAIP_API KaipStatus KaipApplyRgbColorCorrection(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                                const int32_t* piMatrix, uint32_t dwOptions, KaipHLut hLut);

/* Fills piMatrix with the colour matrix of a saturation in percent (100 = unchanged,
 * 0 = grey, above 100 = stronger colours). With s = dwSaturation / 100.0 and the luma
 * weights 0.299, 0.587, 0.114, each entry is computed in double precision and truncated:
 * diagonal (0.701 s + 0.299), (0.413 s + 0.587), (0.886 s + 0.114); off the diagonal
 * (1 - s) x the weight of the input column; all x 1000. 0 gives 299, 587, 114 in every row;
 * 100 the identity; 150 gives 1350, -293, -57 / -149, 1206, -57 / -149, -293, 1443.
 * Entries that would not fit in 32 bits (saturations above about 300 million) become
 * INT32_MIN. Returns 0; KASTATUS_KAIP_INVALID_POINTER for a null piMatrix. */
KAIP_API KaipStatus KaipSetSaturationMatrix(uint32_t dwSaturation, int32_t* piMatrix);

/* Filters the interior of an image with the 3x3 kernel piMatrix into pDstImgInfo (required;
 * its buffer must not overlap the source's). Formats: Mono8, BGR8Packed, BGRA8Packed (each
 * of the three colour bytes on its own; the fourth byte of BGRA8 is not written), Mono10,
 * Mono12 and Mono9, Mono11, Mono13, Mono15, Mono16 (16-bit words). Every pixel except those
 * of the first and last line and column gets the sum of the nine weighted samples (32-bit
 * arithmetic) divided by 1000 with truncation toward zero, clamped to 0..the format's
 * maximum (255, 1023, 4095, 511, 2047, 8191, 32767, 65535). The border pixels of the
 * destination are not written: they keep what the destination held (a freshly allocated
 * destination has them undefined). Images of 2 lines or fewer are not written at all.
 * With a LUT the value is replaced by a table entry: for BGR8 and BGRA8 by byte position
 * (first byte through the red table, second green, third blue, so the blue channel goes
 * through the red table), for Mono8, Mono10 and Mono12 through the green table.
 * The destination must match the source in size, format, colour planes and orientation;
 * with KaipOption_ReallocateDst a misfit is rebuilt as for KaipApplyRgbColorCorrection.
 * hLut: null = none; (KaipHLut)1 = the global LUT; otherwise a LUT object with a body of
 * the format's depth (Mono8, BGR8, BGRA8: 8; Mono10: 10; Mono12: 12). The other 16-bit
 * formats take no LUT.
 * Returns 0; the statuses of the common checks as for KaipApplyRgbColorCorrection, plus
 * KASTATUS_KAIP_INVALID_DST_POINTER for a null pDstImgInfo; KASTATUS_KAIP_INVALID_POINTER
 * for a null piMatrix; KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT also for the Bayer codes
 * and Mono14, which have no sample range here; KASTATUS_KAIP_INVALID_LUT_TYPE for a LUT
 * without a body of the format's depth or any non-null hLut with a 16-bit format other
 * than Mono10 and Mono12; the statuses of the reallocation. */
KAIP_API KaipStatus KaipApply3x3Convolution(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                            const int32_t* piMatrix, uint32_t dwOptions, KaipHLut hLut);

/* Fills piMatrix with a sharpening (iSharpness > 0) or smoothing (< 0) kernel; iSharpness
 * is clamped to KaipSharpness_Min..KaipSharpness_Max and 0 gives the identity.
 * Sharpening: centre 1000 + 90 s; neighbours -(9000 s / 400) on the four edges (corners 0),
 * or -(9000 s / 800) on all eight with KaipSharpening_AllNeighbours (integer division, so
 * the sum is 1000 only where it divides exactly). Smoothing with a = -s: edges 2a, corners
 * 0, centre (250 - 2a) x 4; or, with all neighbours, t = 111 a / 100 on all eight and
 * centre (125 - t) x 8. 100 gives centre 10000 with edges -2250 (all eight: -1125).
 * Returns 0; KASTATUS_KAIP_INVALID_POINTER for a null piMatrix. */
KAIP_API KaipStatus KaipSet3x3MatrixSharpening(int32_t iSharpness, int32_t* piMatrix, uint32_t dwOptions);

/* Flat-field (shading) correction of pSrcImgInfo against a black (dark) and a white (flat)
 * reference image, into pDstImgInfo or, when it is null, in place:
 *   out = (in - black) x mean(white - black) / (white - black)
 * per sample, rounded to nearest (halves up), 0 where in is below black, clamped to the
 * format's maximum. Samples of all three images are masked to the format's depth first.
 * The mean belongs to the sample's class: the whole image for mono formats, each colour channel
 * for packed colour, each site colour (red, green, blue; both greens of the cell together) for a
 * Bayer mosaic, whose pattern comes from the pixel format code. It is the mean of white - black
 * over the samples of that class where white is above black, summed in 64 bits and rounded to
 * nearest. Where white is not above black the input sample is passed on as it is (unmasked).
 * The arithmetic is exact integer arithmetic (no floating point).
 * Formats: Mono8, Mono9 .. Mono16, the 8-, 10-, 12- and 16-bit Bayer formats (one sample per
 * pixel), BGR8Packed, RGB8Packed, BGRA8Packed, RGBA8Packed (three channels; the fourth byte is
 * neither read nor written, so in place alpha stays and a destination keeps its own).
 * pBlackImgInfo and pWhiteImgInfo must have the source's Width, Height and PixelFormat and the
 * same KaipImgFlag_ColorPlanes, _BottomUp, _BayerShiftLine and _BayerShiftColumn bits (their
 * line increments and other flags may differ). The destination must match the source in size,
 * format, colour planes and orientation, or KaipOption_ReallocateDst rebuilds it as for
 * KaipApplyRgbColorCorrection. Temporary memory: one 64-bit reciprocal per possible
 * white - black difference (at most 512 KiB for 16-bit formats).
 * Returns 0; the statuses of the common checks on source and destination (as for
 * KaipApplyRgbColorCorrection; KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT for other formats);
 * for a reference: KASTATUS_KAIP_INVALID_POINTER (null), KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED,
 * KASTATUS_KAIP_IMGINFOS_NOT_EQUAL (size), KASTATUS_KAIP_REF_PIXEL_FORMAT_DIFFERS,
 * KASTATUS_KAIP_REF_FLAGS_DIFFER, KASTATUS_KAIP_SRC_NOT_ALLOCATED (null pData), checked in this
 * order, black before white; KASTATUS_KAIP_MEMORY_ALLOC_FAILED; the statuses of the
 * reallocation. Nothing is written on a refusal. */
KAIP_API KaipStatus KaipApplyShadingCorrection(const KaipImgInfo* pSrcImgInfo, const KaipImgInfo* pBlackImgInfo,
                                               const KaipImgInfo* pWhiteImgInfo, KaipImgInfo* pDstImgInfo,
                                               uint32_t dwOptions);

/* Threshold sharpening: KaipApply3x3Convolution with the kernel piMatrix (typically from
 * KaipSet3x3MatrixSharpening) applied only where the local contrast exceeds iThreshold, so
 * flat, noisy areas keep their values. The local contrast of a sample is its distance from the
 * mean of the nine samples of its 3x3 neighbourhood (itself included, same channel), compared
 * without division: the kernel is applied where
 *   |9 x centre - sum of the nine samples| > 9 x iThreshold,
 * elsewhere the result is the sample itself; either is clamped to 0..the format's maximum and
 * then goes through the LUT as in KaipApply3x3Convolution. iThreshold is in the format's sample
 * units; below 0 every interior pixel is sharpened (as by KaipApply3x3Convolution), from
 * 65535 up none is.
 * Formats, the untouched border (first and last line and column), images of 2 lines or fewer,
 * the destination (required, not overlapping the source), hLut and dwOptions: as for
 * KaipApply3x3Convolution. Returns the same statuses, logged with this function's name. */
KAIP_API KaipStatus Kaip3x3ThresholdSharpening(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                               const int32_t* piMatrix, int32_t iThreshold, uint32_t dwOptions,
                                               KaipHLut hLut);

/* ==== end matrix ==================================================================== */

/* ==== file ========================================================================== */

/* Windows device-independent bitmap descriptors, laid out byte for byte as in a .bmp file
 * (little-endian, the same on every platform). */

#pragma pack(push, 2)
/* The 14-byte file header in front of every .bmp file (packed: bfSize sits at offset 2). */
typedef struct tagBITMAPFILEHEADER {
    uint16_t bfType;      /* 'B','M' = 0x4D42 */
    uint32_t bfSize;      /* bytes of the whole file */
    uint16_t bfReserved1; /* 0 */
    uint16_t bfReserved2; /* 0 */
    uint32_t bfOffBits;   /* offset of the pixel data from the start of the file */
} BITMAPFILEHEADER;
#pragma pack(pop)

/* The 40-byte bitmap header. */
typedef struct tagBITMAPINFOHEADER {
    uint32_t biSize;         /* 40, the only size accepted */
    int32_t biWidth;         /* pixels per line */
    int32_t biHeight;        /* lines; positive = stored bottom-up, negative = top-down */
    uint16_t biPlanes;       /* 1 */
    uint16_t biBitCount;     /* 8, 16, 24 or 32 */
    uint32_t biCompression;  /* KAIP_BI_RGB or KAIP_BI_BITFIELDS */
    uint32_t biSizeImage;    /* bytes of the pixel data */
    int32_t biXPelsPerMeter; /* written as 9600 */
    int32_t biYPelsPerMeter; /* written as 9600 */
    uint32_t biClrUsed;      /* 0 */
    uint32_t biClrImportant; /* 0 */
} BITMAPINFOHEADER;

/* One colour-table entry. */
typedef struct tagRGBQUAD {
    uint8_t rgbBlue;
    uint8_t rgbGreen;
    uint8_t rgbRed;
    uint8_t rgbReserved;
} RGBQUAD;

/* The header and a 256-entry colour table: 1064 bytes. With KAIP_BI_BITFIELDS the first three
 * table entries hold the red, green and blue masks (offsets 40, 44, 48) as 32-bit words. */
typedef struct tagBITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[256];
} tagBITMAPINFO, BITMAPINFO;

#define KAIP_BI_RGB 0u       /* uncompressed */
#define KAIP_BI_BITFIELDS 3u /* uncompressed with colour masks (16-bit 5-6-5) */

/* Option bits of the file functions (besides KaipOption_ReallocateDst). */
#define KaipBmpOption_BottomUpFile                                                                   \
    0x00000002u                                 /* save: write a bottom-up file (positive biHeight); \
                                                   load: deliver a bottom-up file top-down */
#define KaipBmpOption_BottomUpImage 0x00008000u /* load: deliver a bottom-up image */
#define KaipTiffOption_Scale16 0x00002000u      /* save: scale 9..15-bit grey to the full 16 bits */
#define KaipJpegOption_BGR 0x00004000u          /* load: deliver colour as BGR8Packed */
#define KaipJpegOption_HeaderOnly 0x00008000u   /* load: only fill the descriptor, read no pixels */

/* Hostile files. Every loader accepts regular files only, computes every size in 64 bits and
 * refuses, before it allocates anything from the file's numbers, a file whose dimensions are
 * zero or negative, whose line increment x height does not fit in 32 bits, whose offsets point
 * outside the file or whose header fields contradict each other (status 100037 for BMP,
 * 100036 for TIFF, 100040 for JPEG), and a file whose pixel data is shorter than its header
 * promises (100034). These checks are stricter than a plain reading of the headers; each is
 * named with the function it applies to.
 *
 * Saving never destroys what was there: the file is written under a temporary name in the same
 * folder and renamed over the target only when everything was written; on any failure the
 * temporary is removed and an existing file keeps its old contents (a target that is not a
 * regular file, such as a device, is written in place). */

/* Fills pImgInfo from a bitmap header: Width = biWidth, Height = |biHeight|, Flags =
 * KaipImgFlag_Align4 plus KaipImgFlag_BottomUp for a positive biHeight, PixelFormat by
 * biBitCount (8: Mono8; 16: BGR565Packed with KAIP_BI_BITFIELDS, else BGR555; 24: BGR8Packed;
 * 32: BGRA8Packed), PixelIncrement from the format and LineIncrement = PixelIncrement x Width
 * rounded up to 4. pData and the other fields are left alone; nothing is allocated.
 * Returns 0; KASTATUS_KAIP_INVALID_POINTER (null pointer); KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER
 * (biSize other than 40, biCompression other than 0 and 3, and, stricter than the plain
 * header, a negative biWidth, or a LineIncrement, or LineIncrement x Height, beyond 32 bits);
 * KASTATUS_KAIP_INVALID_PIXEL_FORMAT (other bit counts; the fields set so far stay set). */
KAIP_API KaipStatus KaipBmpInfoToImgInfo(const tagBITMAPINFO* pBmpInfo, KaipImgInfo* pImgInfo);

/* Describes pImgInfo as a bitmap: biSize 40, biWidth, biHeight (negative unless the image is
 * bottom-up), biPlanes 1, 9600 pixels per metre, biSizeImage = Height x LineIncrement, and by
 * format: Mono8 and the 8-bit Bayer formats 8 bits with a grey ramp colour table;
 * BGR565Packed 16 bits, KAIP_BI_BITFIELDS and the masks 0xF800, 0x07E0, 0x001F; BGR555 16 bits;
 * BGR8Packed 24; BGRA8Packed 32. pBmpInfo must point to all 1064 bytes.
 * Returns 0; KASTATUS_KAIP_INVALID_POINTER; KASTATUS_KAIP_INCOMPATIBLE_LINE_INCREMENT (not a
 * multiple of 4); KASTATUS_KAIP_INCOMPATIBLE_PIXEL_FORMAT (other formats; the common header
 * fields are then already written); KASTATUS_KAIP_INCOMPATIBLE_SIZE (stricter: a width or
 * height beyond 2^31 - 1, or Height x LineIncrement beyond 32 bits, which the fields cannot
 * hold). */
KAIP_API KaipStatus KaipImgInfoToBmpInfo(const KaipImgInfo* pImgInfo, tagBITMAPINFO* pBmpInfo);

/* Saves an image as an uncompressed BMP file. Formats a bitmap cannot hold, or lines not
 * padded to 4 bytes, are converted first (colour to BGR8Packed, everything else to Mono8);
 * the source is not changed. The file is top-down (negative biHeight) in memory line order,
 * or bottom-up with KaipBmpOption_BottomUpFile (lines reversed if the image is top-down).
 * Accepts the source formats Mono8 .. Mono16, the Bayer formats of 8 to 12 bits, BGR555,
 * BGR565Packed, BGR8Packed, BGRA8Packed, RGB8Packed and RGBA8Packed (16-bit Bayer has no
 * conversion and gives KASTATUS_KAIP_INCOMPATIBLE_PIXEL_FORMAT).
 * Returns 0; the statuses of the source check; KASTATUS_KAIP_NOT_SUPPORTED (colour planes);
 * those of KaipImgInfoToBmpInfo; KASTATUS_KAIP_INCOMPATIBLE_LINE_INCREMENT (stricter: lines
 * shorter than the pixels they must hold); KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE (the file
 * cannot be created or fully written, among them an image whose conversion failed and whose
 * lines are not 4-byte multiples; the target then keeps its old contents). */
KAIP_API KaipStatus KaipSaveToBmp(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwOptions);

/* Loads an uncompressed BMP file of 8 (loaded as Mono8 whatever its colour table), 16, 24 or
 * 32 bits into pDstImgInfo, which is re-described by KaipBmpInfoToImgInfo and given a new
 * buffer (a buffer it held is not freed: release it first). Lines: a bottom-up file gives a
 * bottom-up image, a top-down file a top-down image; KaipBmpOption_BottomUpFile turns a
 * bottom-up file into a top-down image and KaipBmpOption_BottomUpImage a top-down file into a
 * bottom-up image.
 * Returns 0; KASTATUS_KAIP_INVALID_DST_POINTER; KASTATUS_KAIP_CANNOT_OPEN_READ_FILE (cannot
 * open, not a regular file, short read, pixel data shorter than the header promises);
 * KASTATUS_KAIP_INVALID_BMP_FILE (not 'BM', header size other than 40, fewer than 8 bits, and,
 * stricter: width or height zero or negative, line increment x height beyond 32 bits,
 * bfOffBits inside the 54 header bytes or beyond the end of the file);
 * KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER and KASTATUS_KAIP_INVALID_PIXEL_FORMAT as
 * KaipBmpInfoToImgInfo; KASTATUS_KAIP_MEMORY_ALLOC_FAILED. Refusals before the allocation
 * leave the descriptor as it was; a failed read after it leaves the descriptor allocated (the
 * caller releases it with KaipDeallocateImageData). */
KAIP_API KaipStatus KaipLoadFromBmp(const char* pszFileName, KaipImgInfo* pDstImgInfo, uint32_t dwOptions);

/* Saves an image as an uncompressed little-endian single-strip TIFF file at 75 pixels per
 * inch: Mono8 and the 8-bit Bayer formats as 8-bit grey (MaxSampleValue 255); Mono9 .. Mono16
 * and the other Bayer formats as 16-bit grey with MaxSampleValue 2^bits - 1, or with
 * KaipTiffOption_Scale16 shifted to 16 bits with MaxSampleValue 65535; the colour formats
 * (BGR555, BGR565Packed, BGR8Packed, BGRA8Packed, RGB8Packed, RGBA8Packed) as RGB 8,8,8.
 * The top line is always written first.
 * Returns 0; the statuses of the source check; KASTATUS_KAIP_NOT_SUPPORTED (colour planes);
 * KASTATUS_KAIP_MEMORY_ALLOC_FAILED (no memory for the converted copy);
 * KASTATUS_KAIP_INCOMPATIBLE_SIZE (stricter: pixel data beyond the 32-bit offsets of TIFF);
 * KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE (the target then keeps its old contents). */
KAIP_API KaipStatus KaipSaveToTiff(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwOptions);

/* Loads a TIFF file of exactly the shape KaipSaveToTiff writes into pDstImgInfo, top-down, in
 * a new buffer (a buffer it held is not freed: release it first). Grey files give Mono8 ..
 * Mono16 by MaxSampleValue. Colour files are delivered as 3 bytes per pixel in the file's
 * order R, G, B, and the descriptor keeps the pixel format it carried on entry: preset
 * RGB8Packed (or BGR8Packed, the bytes still being R, G, B).
 * Returns 0; KASTATUS_KAIP_INVALID_DST_POINTER; KASTATUS_KAIP_CANNOT_OPEN_READ_FILE (cannot
 * open, not a regular file, short read, pixel data shorter than promised: the buffer is then
 * released); KASTATUS_KAIP_INVALID_TIFF_FILE (any other layout: byte order, more than 32 tags,
 * a checked tag with another type, count or value, and, stricter: a missing size, sample,
 * photometric, strip or MaxSampleValue tag, zero dimensions, BitsPerSample that disagrees with
 * MaxSampleValue, SamplesPerPixel or PhotometricInterpretation, a StripByteCounts other than
 * the line bytes x height, data offsets inside the directory or outside the file, a size beyond
 * 32 bits); KASTATUS_KAIP_INCOMPATIBLE_DST (stricter: the preset format of a colour file
 * needs more than 3 bytes per pixel, so its lines would overrun the buffer);
 * KASTATUS_KAIP_MEMORY_ALLOC_FAILED. */
KAIP_API KaipStatus KaipLoadFromTiff(const char* pszFileName, KaipImgInfo* pDstImgInfo);

/* Saves an image as a baseline JPEG file with the given quality (0..100): Mono8 as grey,
 * RGB8Packed as colour; Mono10, Mono12, Mono16 and the Bayer formats of 8 to 12 bits are
 * converted to Mono8 first, every other format to RGB8Packed. The top line is written first.
 * Returns 0; the statuses of the source check; KASTATUS_KAIP_NOT_SUPPORTED (colour planes);
 * KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE; the status of a failed conversion;
 * KASTATUS_KAIP_JPEG_SAVE_FAILED (the JPEG library failed, for example beyond 65500 pixels;
 * its message is in the log). On every failure the target keeps its old contents. */
KAIP_API KaipStatus KaipSaveToJpeg(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwQuality);

/* Loads a JPEG file: grey files as Mono8, colour files as RGB8Packed (BGR8Packed with
 * KaipJpegOption_BGR), top-down, top line first. A destination that differs in width, height
 * or format (or, stricter, is in colour-planes mode or has lines too short) is released
 * (unless KaipImgFlag_NoDeallocate) and re-described with KaipImgFlag_Align4; it is then
 * allocated only under KaipOption_ReallocateDst. KaipJpegOption_HeaderOnly fills the
 * descriptor and returns without reading pixels or allocating.
 * Returns 0; KASTATUS_KAIP_INVALID_DST_POINTER; KASTATUS_KAIP_CANNOT_OPEN_READ_FILE;
 * KASTATUS_KAIP_INCOMPATIBLE_DST (the destination does not fit and KaipOption_ReallocateDst is
 * not given); KASTATUS_KAIP_MEMORY_ALLOC_FAILED; KASTATUS_KAIP_JPEG_LOAD_FAILED (the JPEG
 * library failed, CMYK or YCCK colour, and, stricter: any warning of the JPEG library such as
 * a truncated or corrupt scan, or an image whose line increment x height does not fit in 32
 * bits, or, stricter still, a Huffman-coded file too short to hold one bit for every 8x8
 * block of the frame it declares; the destination may then hold a partly decoded buffer).
 * The buffer is allocated from the header's dimensions before the compressed data is read: the
 * length check above stops a file of a few hundred bytes from asking for gigabytes, but a file
 * of some megabytes can still ask for up to 4 GiB, so a caller that takes files from anywhere
 * loads with KaipJpegOption_HeaderOnly first and checks the size. */
KAIP_API KaipStatus KaipLoadFromJpeg(const char* pszFileName, KaipImgInfo* pDstImgInfo, uint32_t dwOptions);

/* ==== end file ====================================================================== */

#ifdef __cplusplus
}
#endif

#endif /* PM_IMGPROC_H */
