// jpeg.cpp: baseline JPEG files through the system's IJG libjpeg interface.
#include <csetjmp>
#include <cstdio>
#include <memory>
#include <new>

// clang-format off
#include <jpeglib.h>  // after <cstdio>: it uses FILE and size_t without declaring them
// clang-format on

#include "convert/convert.h"
#include "core/check.h"
#include "core/common.h"
#include "core/log.h"
#include "file/file.h"
#include "file/file_io.h"

namespace {

// libjpeg's standard error manager with a way back to the job that is running.
struct TJpegErrorManager {
    jpeg_error_mgr pub;
    jmp_buf recovery;
};

// Leaves libjpeg's message in g_szErrorMessage and jumps back to the recovery point.
[[noreturn]] void my_error_exit(j_common_ptr cinfo)
{
    cinfo->err->format_message(cinfo, g_szErrorMessage);
    longjmp(reinterpret_cast<TJpegErrorManager*>(cinfo->err)->recovery, 1);
}

// A warning means a truncated or corrupt stream whose missing pixels libjpeg would make up:
// it fails like an error. Trace messages are dropped.
void EmitMessage(j_common_ptr cinfo, int iLevel)
{
    if (iLevel < 0) my_error_exit(cinfo);
}

void InstallErrorManager(TJpegErrorManager& err)
{
    jpeg_std_error(&err.pub);
    err.pub.error_exit = my_error_exit;
    err.pub.emit_message = EmitMessage;
}

// Everything a compression needs lives here, out of reach of the long jump; the compressor is
// destroyed whatever happened (destroying one never created is harmless).
struct TJpegSaveJob {
    jpeg_compress_struct cinfo{};
    TJpegErrorManager err{};
    ~TJpegSaveJob() { jpeg_destroy_compress(&cinfo); }
};

struct TJpegLoadJob {
    jpeg_decompress_struct cinfo{};
    TJpegErrorManager err{};
    ~TJpegLoadJob() { jpeg_destroy_decompress(&cinfo); }
};

// The colour space libjpeg reads a format in, JCS_UNKNOWN when it must be converted first.
// libjpeg-turbo reads the BGR and four-byte layouts directly, giving the same file as the
// converted RGB copy would.
J_COLOR_SPACE JpegInputSpace(uint32_t dwFormat)
{
    switch (dwFormat) {
        case KaipPixelFormat_Mono8:
            return JCS_GRAYSCALE;
        case KaipPixelFormat_RGB8Packed:
            return JCS_RGB;
#if defined(JCS_EXTENSIONS)
        case KaipPixelFormat_BGR8Packed:
            return JCS_EXT_BGR;
        case KaipPixelFormat_BGRA8Packed:
            return JCS_EXT_BGRX;
        case KaipPixelFormat_RGBA8Packed:
            return JCS_EXT_RGBX;
#endif
        default:
            return JCS_UNKNOWN;
    }
}

// Compresses an image that libjpeg reads directly into pFile, top line first; false when libjpeg failed.
bool Compress(TJpegSaveJob& job, FILE* pFile, const KaipImgInfo& image, uint32_t dwQuality)
{
    jpeg_compress_struct& c = job.cinfo;
    c.err = &job.err.pub;
    InstallErrorManager(job.err);
    if (setjmp(job.err.recovery)) return false;
    jpeg_create_compress(&c);
    jpeg_stdio_dest(&c, pFile);
    c.image_width = image.Width;
    c.image_height = image.Height;
    c.in_color_space = JpegInputSpace(image.PixelFormat);
    c.input_components = c.in_color_space == JCS_GRAYSCALE ? 1 : c.in_color_space == JCS_RGB ? 3 : 4;
#if defined(JCS_EXTENSIONS)
    if (c.in_color_space == JCS_EXT_BGR) c.input_components = 3;
#endif
    jpeg_set_defaults(&c);
    jpeg_set_quality(&c, int(dwQuality), TRUE);  // libjpeg clamps to 1..100
    c.dct_method = JDCT_ISLOW;
    jpeg_start_compress(&c, TRUE);
    const bool bBottomUp = (image.Flags & KaipImgFlag_BottomUp) != 0;
    while (c.next_scanline < c.image_height) {
        const size_t line = bBottomUp ? c.image_height - 1 - c.next_scanline : c.next_scanline;
        JSAMPROW row = const_cast<JSAMPLE*>(image.pData + line * image.LineIncrement);
        jpeg_write_scanlines(&c, &row, 1);
    }
    jpeg_finish_compress(&c);
    return true;
}

// Reads the header and works out the output size and colour space; false when libjpeg failed.
bool ReadHeader(TJpegLoadJob& job, FILE* pFile)
{
    jpeg_decompress_struct& c = job.cinfo;
    c.err = &job.err.pub;
    InstallErrorManager(job.err);
    if (setjmp(job.err.recovery)) return false;
    jpeg_create_decompress(&c);
    jpeg_stdio_src(&c, pFile);
    jpeg_read_header(&c, TRUE);
    jpeg_calc_output_dimensions(&c);
    return true;
}

// Decompresses into dst, top line first, colour samples reversed to B, G, R when asked.
bool ReadPixels(TJpegLoadJob& job, const KaipImgInfo& dst, bool bSwap)
{
    jpeg_decompress_struct& c = job.cinfo;
#if defined(JCS_EXTENSIONS)
    // libjpeg-turbo converts straight to B, G, R: the same samples in the other order.
    if (bSwap) c.out_color_space = JCS_EXT_BGR, bSwap = false;
#endif
    if (setjmp(job.err.recovery)) return false;
    jpeg_start_decompress(&c);
    const JDIMENSION samples = c.output_width * JDIMENSION(c.output_components);
    JSAMPARRAY line = (*c.mem->alloc_sarray)(reinterpret_cast<j_common_ptr>(&c), JPOOL_IMAGE, samples, 1);
    while (c.output_scanline < c.output_height) {
        uint8_t* pDst = dst.pData + size_t(c.output_scanline) * dst.LineIncrement;
        if (!bSwap) {
            jpeg_read_scanlines(&c, &pDst, 1);
            continue;
        }
        jpeg_read_scanlines(&c, line, 1);
        for (const JSAMPLE *p = line[0], *pEnd = p + samples; p < pEnd; p += 3, pDst += 3) {
            pDst[0] = p[2];
            pDst[1] = p[1];
            pDst[2] = p[0];
        }
    }
    jpeg_finish_decompress(&c);
    return true;
}

// What an image is converted to before compressing: grey for the mono and Bayer formats of
// 8 to 12 bits and Mono16, RGB for everything else.
uint32_t JpegTarget(uint32_t dwFormat)
{
    const bool bGrey = dwFormat == KaipPixelFormat_Mono8 || dwFormat == KaipPixelFormat_Mono10 ||
                       dwFormat == KaipPixelFormat_Mono12 || dwFormat == KaipPixelFormat_Mono16 ||
                       (dwFormat >= KaipPixelFormat_BayerGR8 && dwFormat <= KaipPixelFormat_BayerBG8) ||
                       (dwFormat >= KaipPixelFormat_BayerGR10 && dwFormat <= KaipPixelFormat_BayerBG12);
    return bGrey ? KaipPixelFormat_Mono8 : KaipPixelFormat_RGB8Packed;
}

}  // namespace

KaipStatus SaveToJpeg(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwQuality)
{
    static const char* const pszFunc = "KaipSaveToJpeg";
    KaipStatus status = CheckSrcImgInfo(pszFunc, pSrcImgInfo, 0x7FFF, KaipCheck_ColorPlanesAllowed);
    if (status) return status;
    if (pSrcImgInfo->Flags & KaipImgFlag_ColorPlanes)
        return Refuse(KASTATUS_KAIP_NOT_SUPPORTED, "%s: color planes not supported", pszFunc);
    g_szErrorMessage[0] = 0;
    // libjpeg hands the file 4 KiB at a time, each a write call through a stream buffer of that
    // size; a large buffer of our own (freed after the file is closed) makes a few of them.
    constexpr size_t kStreamBuffer = size_t(1) << 20;
    const std::unique_ptr<char[]> pStreamBuffer(new (std::nothrow) char[kStreamBuffer]);
    CFileWriter file;
    if (!pszFileName || !file.Open(pszFileName))
        return Refuse(KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE, "%s: KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE: %s", pszFunc,
                      pszFileName ? pszFileName : "(null)");
    if (pStreamBuffer) std::setvbuf(file.Stream(), pStreamBuffer.get(), _IOFBF, kStreamBuffer);

    CTempImage converted;
    const KaipImgInfo* pImage = pSrcImgInfo;
    const uint32_t dwFormat = pSrcImgInfo->PixelFormat;
    if (JpegInputSpace(dwFormat) == JCS_UNKNOWN) {
        const uint32_t dwTarget = JpegTarget(dwFormat);
        status = InitImgInfo(&converted.info, pSrcImgInfo->Width, pSrcImgInfo->Height, dwTarget, 0);
        if (!status) status = ConvertToPixelFormat(pSrcImgInfo, &converted.info, dwTarget, KaipOption_ReallocateDst);
        if (status) return Refuse(status, "%s: ConvertToPixelFormat failed: %d", pszFunc, status);
        pImage = &converted.info;
    }
    TJpegSaveJob job;
    if (!Compress(job, file.Stream(), *pImage, dwQuality))
        return Refuse(KASTATUS_KAIP_JPEG_SAVE_FAILED, "%s: KASTATUS_KAIP_JPEG_SAVE_FAILED: %s", pszFunc,
                      g_szErrorMessage);
    if (!file.Commit())
        return Refuse(KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE, "%s: KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE: %s", pszFunc,
                      pszFileName);
    return 0;
}

KaipStatus LoadFromJpeg(const char* pszFileName, KaipImgInfo* pDstImgInfo, uint32_t dwOptions)
{
    static const char* const pszFunc = "KaipLoadFromJpeg";
    if (!pDstImgInfo) return Refuse(KASTATUS_KAIP_INVALID_DST_POINTER, "%s: pDstImgInfo is NULL!", pszFunc);
    CFileReader file;
    if (!pszFileName || !file.Open(pszFileName))
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: KASTATUS_KAIP_CANNOT_OPEN_READ_FILE: %s", pszFunc,
                      pszFileName ? pszFileName : "(null)");
    TJpegLoadJob job;
    if (!ReadHeader(job, file.Stream()))
        return Refuse(KASTATUS_KAIP_JPEG_LOAD_FAILED, "%s: KASTATUS_KAIP_JPEG_LOAD_FAILED: %s", pszFunc,
                      g_szErrorMessage);
    const jpeg_decompress_struct& c = job.cinfo;
    if (c.out_color_space != JCS_GRAYSCALE && c.out_color_space != JCS_RGB)
        return Refuse(KASTATUS_KAIP_JPEG_LOAD_FAILED,
                      "%s: KASTATUS_KAIP_JPEG_LOAD_FAILED: Invalid color space in the source image.", pszFunc);
    const bool bGrey = c.out_color_space == JCS_GRAYSCALE;
    const bool bSwap = !bGrey && (dwOptions & KaipJpegOption_BGR);
    const uint32_t dwTarget = bGrey   ? KaipPixelFormat_Mono8
                              : bSwap ? KaipPixelFormat_BGR8Packed
                                      : KaipPixelFormat_RGB8Packed;
    const uint32_t w = c.output_width, h = c.output_height;
    const uint64_t qwLineBytes = uint64_t(w) * (bGrey ? 1 : 3);
    if (((qwLineBytes + 3) & ~uint64_t(3)) * h > UINT32_MAX)
        return Refuse(KASTATUS_KAIP_JPEG_LOAD_FAILED, "%s: KASTATUS_KAIP_JPEG_LOAD_FAILED: image of %ux%u too large",
                      pszFunc, w, h);
    // Huffman-coded data spends at least one bit on every 8x8 block of the first component, so a
    // file far too short for the frame it declares is refused before that frame is allocated.
    const uint64_t qwBlocks = ((uint64_t(c.image_width) + 7) / 8) * ((uint64_t(c.image_height) + 7) / 8);
    if (!c.arith_code && qwBlocks > file.Size() * 16 && !(dwOptions & KaipJpegOption_HeaderOnly))
        return Refuse(KASTATUS_KAIP_JPEG_LOAD_FAILED,
                      "%s: KASTATUS_KAIP_JPEG_LOAD_FAILED: %llu bytes cannot hold an image of %ux%u", pszFunc,
                      static_cast<unsigned long long>(file.Size()), w, h);

    KaipImgInfo& dst = *pDstImgInfo;
    const bool bFits = dst.Width == w && dst.Height == h && dst.PixelFormat == dwTarget &&
                       !(dst.Flags & KaipImgFlag_ColorPlanes) && dst.LineIncrement >= qwLineBytes;
    if (bFits && (dwOptions & KaipJpegOption_HeaderOnly)) return 0;
    if (!bFits) {
        if (!(dst.Flags & KaipImgFlag_NoDeallocate)) DeallocateImageData(&dst);
        const KaipStatus status = InitImgInfo(&dst, w, h, dwTarget, KaipImgFlag_Align4);
        if (status) return status;
        if (dwOptions & KaipJpegOption_HeaderOnly) return 0;
        if (!(dwOptions & KaipOption_ReallocateDst))
            return Refuse(KASTATUS_KAIP_INCOMPATIBLE_DST,
                          "%s: the supplied image info is not compatible and KaipOption_ReallocateDst is not set.",
                          pszFunc);
        if (const KaipStatus allocStatus = AllocateImageData(&dst))
            return Refuse(allocStatus, "%s: AllocateImageData failed.", pszFunc);
    }
    if (!dst.pData) {
        if (!(dwOptions & KaipOption_ReallocateDst))
            return Refuse(
                KASTATUS_KAIP_INCOMPATIBLE_DST,
                "%s: the supplied image info does not have bufer allocated KaipOption_ReallocateDst is not set.",
                pszFunc);
        if (const KaipStatus allocStatus = AllocateImageData(&dst))
            return Refuse(allocStatus, "%s: AllocateImageData failed: w=%d, h=%d, error=%d", pszFunc, int(w), int(h),
                          allocStatus);
    }
    if (!ReadPixels(job, dst, bSwap))
        return Refuse(KASTATUS_KAIP_JPEG_LOAD_FAILED, "%s: KASTATUS_KAIP_JPEG_LOAD_FAILED: %s", pszFunc,
                      g_szErrorMessage);
    return 0;
}
