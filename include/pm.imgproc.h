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
 * the flags of such a rebuilt destination. Other bits are told with each function.
 *
 * Buffers that the library allocates are 64-byte aligned and marked with
 * KaipImgFlag_DataAllocated; free them with KaipDeallocateImageData. The library never
 * frees a buffer the caller supplied unless the caller asks it to reallocate a destination
 * that does not carry KaipImgFlag_NoDeallocate.
 *
 * Caller guarantees: the library cannot see how large a caller's buffer really is. A
 * descriptor filled by hand must describe memory that holds Height lines of LineIncrement
 * bytes (per plane in colour-planes mode), and LineIncrement must cover a whole line of
 * Width pixels.
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
#define KaipImgFlag_ColorPlanes       0x00000001u /* three planes pDataR/G/B instead of pData */
#define KaipImgFlag_BottomUp          0x00000002u /* first line in memory is the bottom line */
#define KaipImgFlag_Align4            0x00000004u /* line increment rounded up to 4 bytes */
#define KaipImgFlag_Align8            0x00000008u /* ... to 8 bytes */
#define KaipImgFlag_Align16           0x00000010u /* ... to 16 bytes */
#define KaipImgFlag_DataAllocated     0x00000020u /* buffers allocated by the library */
#define KaipImgFlag_BayerShiftLine    0x00000100u /* mosaic starts one line later (GB, BG) */
#define KaipImgFlag_BayerShiftColumn  0x00000200u /* mosaic starts one column later (GR, BG) */
#define KaipImgFlag_NoDeallocate      0x00000800u /* buffers belong to someone else */
#define KaipImgFlag_InitMask          0x00000B03u /* caller flags that initialisation keeps */

/* Options word. */
#define KaipOption_ReallocateDst      0x00001000u

/* Pixel formats (GigE Vision codes, and a few of the library's own). */
#define KaipPixelFormat_Mono8                   0x01080001u
#define KaipPixelFormat_BayerGR8                0x01080008u
#define KaipPixelFormat_BayerRG8                0x01080009u
#define KaipPixelFormat_BayerGB8                0x0108000Au
#define KaipPixelFormat_BayerBG8                0x0108000Bu
#define KaipPixelFormat_Mono9                   0x000003F1u /* library's own, 1009 */
#define KaipPixelFormat_Mono10                  0x01100003u
#define KaipPixelFormat_BayerGR10               0x0110000Cu
#define KaipPixelFormat_BayerRG10               0x0110000Du
#define KaipPixelFormat_BayerGB10               0x0110000Eu
#define KaipPixelFormat_BayerBG10               0x0110000Fu
#define KaipPixelFormat_Mono11                  0x000003F3u /* library's own, 1011 */
#define KaipPixelFormat_Mono12                  0x01100005u
#define KaipPixelFormat_BayerGR12               0x01100010u
#define KaipPixelFormat_BayerRG12               0x01100011u
#define KaipPixelFormat_BayerGB12               0x01100012u
#define KaipPixelFormat_BayerBG12               0x01100013u
#define KaipPixelFormat_Mono13                  0x000003F5u /* library's own, 1013 */
#define KaipPixelFormat_Mono14                  0x01100025u
#define KaipPixelFormat_Mono15                  0x000003F7u /* library's own, 1015 */
#define KaipPixelFormat_Mono16                  0x01100007u
#define KaipPixelFormat_BayerGR16               0x0110002Eu
#define KaipPixelFormat_BayerRG16               0x0110002Fu
#define KaipPixelFormat_BayerGB16               0x01100030u
#define KaipPixelFormat_BayerBG16               0x01100031u
#define KaipPixelFormat_Mono10Packed            0x010C0004u
#define KaipPixelFormat_BayerGR10Packed         0x010C0026u
#define KaipPixelFormat_BayerRG10Packed         0x010C0027u
#define KaipPixelFormat_BayerGB10Packed         0x010C0028u
#define KaipPixelFormat_BayerBG10Packed         0x010C0029u
#define KaipPixelFormat_Mono12Packed            0x010C0006u
#define KaipPixelFormat_BayerGR12Packed         0x010C002Au
#define KaipPixelFormat_BayerRG12Packed         0x010C002Bu
#define KaipPixelFormat_BayerGB12Packed         0x010C002Cu
#define KaipPixelFormat_BayerBG12Packed         0x010C002Du
#define KaipPixelFormat_Mono10Mipi              0x010A1004u /* library's own */
#define KaipPixelFormat_BayerGR10Mipi           0x010A1026u /* library's own */
#define KaipPixelFormat_BayerRG10Mipi           0x010A1027u
#define KaipPixelFormat_BayerGB10Mipi           0x010A1028u
#define KaipPixelFormat_BayerBG10Mipi           0x010A1029u
#define KaipPixelFormat_Mono12Mipi              0x010C1006u /* library's own */
#define KaipPixelFormat_BGR555                  0x021000E1u /* library's own, 5-5-5 in 16 bits */
#define KaipPixelFormat_BGR565Packed            0x02100036u
#define KaipPixelFormat_BGR8Packed              0x02180015u
#define KaipPixelFormat_BGRA8Packed             0x02200017u
#define KaipPixelFormat_RGB8Packed              0x02180014u
#define KaipPixelFormat_RGBA8Packed             0x02200016u
#define KaipPixelFormat_RGB10V1Packed           0x0220001Cu
#define KaipPixelFormat_RGB10V2Packed           0x0220001Du
#define KaipPixelFormat_BGR10Packed             0x02300019u
#define KaipPixelFormat_RGB10Packed             0x02300018u
#define KaipPixelFormat_BGR12Packed             0x0230001Bu
#define KaipPixelFormat_RGB12Packed             0x0230001Au
#define KaipPixelFormat_BGR16                   0x0230004Bu
#define KaipPixelFormat_RGB16Packed             0x02300033u
#define KaipPixelFormat_YUV411Packed            0x020C001Eu
#define KaipPixelFormat_YCbCr411_8_CbYYCrYY     0x020C003Cu
#define KaipPixelFormat_YCbCr411_8              0x020C005Au
#define KaipPixelFormat_YCbCr601_411_8_CbYYCrYY 0x020C003Fu
#define KaipPixelFormat_YCbCr709_411_8_CbYYCrYY 0x020C0042u
#define KaipPixelFormat_YUV422Packed            0x0210001Fu
#define KaipPixelFormat_YUV422_YUYV_Packed      0x02100032u
#define KaipPixelFormat_YUV444Packed            0x02180020u
#define KaipPixelFormat_YCbCr8                  0x0218005Bu
#define KaipPixelFormat_YCbCr8_CbYCr            0x0218003Au
#define KaipPixelFormat_YCbCr422_8              0x0210003Bu
#define KaipPixelFormat_YCbCr422_8_CbYCrY       0x02100043u
#define KaipPixelFormat_YCbCr601_422_8          0x0210003Eu
#define KaipPixelFormat_YCbCr601_422_8_CbYCrY   0x02100044u
#define KaipPixelFormat_YCbCr709_422_8          0x02100041u
#define KaipPixelFormat_YCbCr709_422_8_CbYCrY   0x02100045u
#define KaipPixelFormat_YCbCr601_8_CbYCr        0x0218003Du
#define KaipPixelFormat_YCbCr709_8_CbYCr        0x02180040u
#define KaipPixelFormat_RGB8Planar              0x02180021u
#define KaipPixelFormat_RGB10Planar             0x02300022u
#define KaipPixelFormat_RGB12Planar             0x02300023u
#define KaipPixelFormat_RGB16Planar             0x02300024u

/* ---------------------------------------------------------------- status codes */

#define KASTATUS_OK                                     0
#define KASTATUS_KAIP_INVALID_POINTER                   100001
#define KASTATUS_KAIP_INVALID_SRC_POINTER               100002
#define KASTATUS_KAIP_INVALID_DST_POINTER               100003
#define KASTATUS_KAIP_INVALID_PIXEL_FORMAT              100004
#define KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED           100005
#define KASTATUS_KAIP_MEMORY_ALLOC_FAILED               100006
#define KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER            100007
#define KASTATUS_KAIP_INCOMPATIBLE_PIXEL_FORMAT         100008
#define KASTATUS_KAIP_INCOMPATIBLE_LINE_INCREMENT       100009
#define KASTATUS_KAIP_IMGINFOS_NOT_EQUAL                100011
#define KASTATUS_KAIP_NOT_SUPPORTED                     100012
#define KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT      100013
#define KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT      100014
#define KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED        100015
#define KASTATUS_KAIP_LINE_REVERSION_NOT_SUPPORTED      100016 /* also: orientations differ */
#define KASTATUS_KAIP_LINE_INCREMENT_TOO_BIG            100017
#define KASTATUS_KAIP_INCOMPATIBLE_DST                  100018
#define KASTATUS_KAIP_INCOMPATIBLE_SIZE                 100020
#define KASTATUS_KAIP_INCOMPATIBLE_ROTATED_SIZE         100021
#define KASTATUS_KAIP_INCOMPATIBLE_SRC_DST_PIXEL_FORMAT 100023
#define KASTATUS_KAIP_INCOMPATIBLE_FLAGS                100024
#define KASTATUS_KAIP_DST_RECT_OUTSIDE_SRC              100025
#define KASTATUS_KAIP_SRC_NOT_ALLOCATED                 100026
#define KASTATUS_KAIP_DST_NOT_ALLOCATED                 100027
#define KASTATUS_KAIP_NOT_DISPLAYABLE_FORMAT            100028
#define KASTATUS_KAIP_INVALID_LUT_HANDLE                100029
#define KASTATUS_KAIP_INVALID_LUT_TYPE                  100030
#define KASTATUS_KAIP_REF_PIXEL_FORMAT_DIFFERS          100032
#define KASTATUS_KAIP_REF_FLAGS_DIFFER                  100033
#define KASTATUS_KAIP_CANNOT_OPEN_READ_FILE             100034
#define KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE          100035
#define KASTATUS_KAIP_INVALID_TIFF_FILE                 100036
#define KASTATUS_KAIP_INVALID_BMP_FILE                  100037
#define KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT            100038
#define KASTATUS_KAIP_JPEG_SAVE_FAILED                  100039
#define KASTATUS_KAIP_JPEG_LOAD_FAILED                  100040

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
KAIP_API KaipStatus KaipInitImgInfo(KaipImgInfo* pImgInfo, uint32_t dwWidth, uint32_t dwHeight,
                                    uint32_t dwPixelFormat, uint32_t dwFlags);

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
/* ==== end conversion ================================================================ */

/* ==== bayer ========================================================================= */
/* ==== end bayer ===================================================================== */

/* ==== lut =========================================================================== */
/* ==== end lut ======================================================================= */

/* ==== geometry ====================================================================== */

/* Direction arguments of KaipMirror and KaipRotate90AndMirror: any non-zero value means yes. */
#define KaipMirror_No                   0
#define KaipMirror_Yes                  1
#define KaipRotate_CounterClockwise     0u
#define KaipRotate_Clockwise            1u

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
 * directions 0 nothing happens, not even the lookup; the middle row (top-bottom) or middle
 * column (left-right) of an odd size is neither moved nor mapped; with both directions the
 * middle row of an odd height keeps its order and, with a LUT, is mapped twice (its centre
 * pixel once).
 * Into a destination with both directions 0 and no LUT each line is copied whole, padding
 * included (as many bytes as the shorter of the two line increments).
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
                                          uint32_t dwClockwise, uint32_t dwMirrorTopBottom,
                                          uint32_t dwMirrorLeftRight, uint32_t dwOptions, KaipHLut hLut);

/* Removes the comb of an interlaced frame: every line but the last becomes the average
 * (rounded down) of itself and the line below, as they were before the call; the last line
 * is not written (in a destination it keeps what it held). Mono8 and the 8-bit Bayer formats,
 * BGR8Packed and BGRA8Packed average every byte of the line, padding included; BGR555 and
 * BGR565Packed average each colour field of every pixel. In place (pDstImgInfo null) or into
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

/* Fills the whole image with one colour given as three 8-bit components; a Mono8 image gets
 * the integer mean of the three in every byte of its buffer (LineIncrement x Height bytes). */
KAIP_API KaipStatus KaipFillWithColor(KaipImgInfo* pImgInfo, uint8_t red, uint8_t green, uint8_t blue);

/* ==== end geometry ================================================================== */

/* ==== matrix ======================================================================== */
/* ==== end matrix ==================================================================== */

/* ==== file ========================================================================== */
/* ==== end file ====================================================================== */

#ifdef __cplusplus
}
#endif

#endif /* PM_IMGPROC_H */
