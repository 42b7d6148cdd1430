// bmp.cpp: Windows bitmap descriptors and uncompressed BMP files.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "convert/convert.h"
#include "core/check.h"
#include "core/common.h"
#include "core/log.h"
#include "file/file.h"
#include "file/file_io.h"

static_assert(sizeof(BITMAPFILEHEADER) == 14 && offsetof(BITMAPFILEHEADER, bfOffBits) == 10, "file header layout");
static_assert(sizeof(BITMAPINFOHEADER) == 40 && offsetof(BITMAPINFOHEADER, biClrImportant) == 36, "header layout");
static_assert(sizeof(RGBQUAD) == 4, "colour table entry layout");
static_assert(sizeof(tagBITMAPINFO) == 1064 && offsetof(tagBITMAPINFO, bmiColors) == 40, "descriptor layout");

namespace {

constexpr uint16_t kBmpType = 0x4D42;  // 'B','M'
constexpr uint32_t kFileHeaderSize = sizeof(BITMAPFILEHEADER);
constexpr uint32_t kInfoHeaderSize = sizeof(BITMAPINFOHEADER);
constexpr uint32_t kColorTableSize = 256 * sizeof(RGBQUAD);
constexpr uint32_t kMasksSize = 12;
constexpr uint32_t kMasks565[3] = {0x0000F800, 0x000007E0, 0x0000001F};

// Bytes of one file line: width pixels of bitCount bits, padded to 4 bytes.
constexpr uint64_t BmpLineBytes(uint64_t width, uint64_t bitCount)
{
    return (width * bitCount + 31) / 32 * 4;
}

// The pixel format a bit count loads as; 0 for a count without one.
uint32_t BmpPixelFormat(uint32_t bitCount, uint32_t compression)
{
    switch (bitCount) {
        case 8:
            return KaipPixelFormat_Mono8;
        case 16:
            return compression == KAIP_BI_BITFIELDS ? KaipPixelFormat_BGR565Packed : KaipPixelFormat_BGR555;
        case 24:
            return KaipPixelFormat_BGR8Packed;
        case 32:
            return KaipPixelFormat_BGRA8Packed;
        default:
            return 0;
    }
}

// |biHeight| without the overflow of abs(INT32_MIN).
uint32_t AbsHeight(int32_t height)
{
    return height < 0 ? 0u - uint32_t(height) : uint32_t(height);
}

// Writes the lines of image, each followed by the zero padding up to the file line increment,
// either as they lie in memory or last line first.
bool WriteBmpPixels(CFileWriter& file, const KaipImgInfo& image, uint64_t fileLineInc, uint64_t imageSize,
                    bool bReverse)
{
    if (image.LineIncrement == fileLineInc && !bReverse) return file.Write(image.pData, imageSize);
    static const uint8_t s_padding[4] = {};
    const size_t lineInc = image.LineIncrement, padding = size_t(fileLineInc - lineInc);
    if (!bReverse) {
        for (uint32_t y = 0; y < image.Height; ++y) {
            if (!file.Write(image.pData + y * lineInc, lineInc)) return false;
            // Kept as the format has always behaved: here a complete padding write counts as the
            // failure. The written image's lines are 4-byte multiples, so this runs only when the
            // conversion of an unaligned image failed.
            if (padding && file.Write(s_padding, padding)) return false;
        }
        return true;
    }
    for (uint32_t y = image.Height; y-- > 0;) {
        if (!file.Write(image.pData + y * lineInc, lineInc)) return false;
        if (padding && !file.Write(s_padding, padding)) return false;
    }
    return true;
}

}  // namespace

KaipStatus BmpInfoToImgInfo(const tagBITMAPINFO* pBmpInfo, KaipImgInfo* pImgInfo)
{
    static const char* const pszFunc = "BmpInfoToImgInfo";
    if (!pBmpInfo) return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: pBmpInfo is NULL!", pszFunc);
    const BITMAPINFOHEADER& header = pBmpInfo->bmiHeader;
    if (header.biSize != kInfoHeaderSize)
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER, "%s: pBmpHeader->biSize is %d - unsupported", pszFunc,
                      int(header.biSize));
    if (header.biCompression != KAIP_BI_RGB && header.biCompression != KAIP_BI_BITFIELDS)
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER, "%s: pBmpHeader->biCompression is %d - unsupported",
                      pszFunc, int(header.biCompression));
    const uint32_t dwFormat = BmpPixelFormat(header.biBitCount, header.biCompression);
    const uint32_t dwHeight = AbsHeight(header.biHeight);
    // A descriptor whose line or buffer size wraps at 32 bits would be allocated too small (a line
    // counts even when there are no lines, since the line increment itself must fit).
    if (header.biWidth < 0 ||
        (dwFormat && BmpLineBytes(uint32_t(header.biWidth), header.biBitCount) * std::max(dwHeight, 1u) > UINT32_MAX))
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER, "%s: pBmpHeader->biWidth=%d, biHeight=%d - unsupported",
                      pszFunc, int(header.biWidth), int(header.biHeight));
    pImgInfo->Width = uint32_t(header.biWidth);
    pImgInfo->Height = dwHeight;
    pImgInfo->Flags = KaipImgFlag_Align4 | (header.biHeight > 0 ? KaipImgFlag_BottomUp : 0);
    if (!dwFormat)
        return Refuse(KASTATUS_KAIP_INVALID_PIXEL_FORMAT, "%s: unsupported biBitCount=%d", pszFunc,
                      int(header.biBitCount));
    pImgInfo->PixelFormat = dwFormat;
    pImgInfo->PixelIncrement = GetPixelIncrementFromPixelFormat(dwFormat);
    pImgInfo->LineIncrement = (pImgInfo->PixelIncrement * pImgInfo->Width + 3) & ~3u;
    return 0;
}

KaipStatus ImgInfoToBmpInfo(const KaipImgInfo* pImgInfo, tagBITMAPINFO* pBmpInfo)
{
    static const char* const pszFunc = "ImgInfoToBmpInfo";
    if (!pBmpInfo) return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: pBmpInfo is NULL!", pszFunc);
    if (pImgInfo->LineIncrement % 4 != 0)
        return Refuse(KASTATUS_KAIP_INCOMPATIBLE_LINE_INCREMENT, "%s: Incompatible line increment!", pszFunc);
    if (pImgInfo->Width > uint32_t(INT32_MAX) || pImgInfo->Height > uint32_t(INT32_MAX) ||
        ImageBytes(*pImgInfo) > UINT32_MAX)
        return Refuse(KASTATUS_KAIP_INCOMPATIBLE_SIZE, "%s: image of %ux%u, line increment %u, too large for a bitmap",
                      pszFunc, pImgInfo->Width, pImgInfo->Height, pImgInfo->LineIncrement);
    BITMAPINFOHEADER& header = pBmpInfo->bmiHeader;
    header.biSize = kInfoHeaderSize;
    header.biWidth = int32_t(pImgInfo->Width);
    header.biHeight = (pImgInfo->Flags & KaipImgFlag_BottomUp) ? int32_t(pImgInfo->Height) : -int32_t(pImgInfo->Height);
    header.biPlanes = 1;
    header.biXPelsPerMeter = 9600;
    header.biYPelsPerMeter = 9600;
    header.biClrUsed = 0;
    header.biClrImportant = 0;
    header.biCompression = KAIP_BI_RGB;
    switch (pImgInfo->PixelFormat) {
        case KaipPixelFormat_BGR565Packed:
            std::memcpy(pBmpInfo->bmiColors, kMasks565, sizeof(kMasks565));
            header.biCompression = KAIP_BI_BITFIELDS;
            header.biBitCount = 16;
            break;
        case KaipPixelFormat_Mono8:
        case KaipPixelFormat_BayerGR8:
        case KaipPixelFormat_BayerRG8:
        case KaipPixelFormat_BayerGB8:
        case KaipPixelFormat_BayerBG8:
            for (int i = 0; i < 256; ++i) pBmpInfo->bmiColors[i] = RGBQUAD{uint8_t(i), uint8_t(i), uint8_t(i), 0};
            header.biBitCount = 8;
            break;
        case KaipPixelFormat_BGR8Packed:
            header.biBitCount = 24;
            break;
        case KaipPixelFormat_BGRA8Packed:
            header.biBitCount = 32;
            break;
        case KaipPixelFormat_BGR555:
            header.biBitCount = 16;
            break;
        default:
            return Refuse(KASTATUS_KAIP_INCOMPATIBLE_PIXEL_FORMAT, "%s: incompatible color format %d", pszFunc,
                          int(pImgInfo->PixelFormat));
    }
    header.biSizeImage = pImgInfo->Height * pImgInfo->LineIncrement;
    return 0;
}

KaipStatus SaveToBmp(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwOptions)
{
    static const char* const pszFunc = "KaipSaveToBmp";
    const KaipStatus status = CheckSrcImgInfo(pszFunc, pSrcImgInfo, 0x7FFF, KaipCheck_ColorPlanesAllowed);
    if (status) return status;
    if (pSrcImgInfo->Flags & KaipImgFlag_ColorPlanes)
        return Refuse(KASTATUS_KAIP_NOT_SUPPORTED, "%s: color planes not supported", pszFunc);

    // Formats a bitmap cannot hold go through a converted copy; if that fails the source is
    // written as it is and the steps below refuse what does not fit.
    CTempImage converted;
    int32_t iConverted = 0;
    ConvertToWinBmpCompatibleFormat(pSrcImgInfo, &converted.info, KaipOption_ReallocateDst, &iConverted);
    const KaipImgInfo& image = iConverted == 1 ? converted.info : *pSrcImgInfo;

    const uint64_t qwFileLineInc = (uint64_t(image.LineIncrement) + 3) & ~uint64_t(3);
    KaipImgInfo described = image;
    described.LineIncrement = uint32_t(qwFileLineInc);
    if (dwOptions & KaipBmpOption_BottomUpFile) described.Flags |= KaipImgFlag_BottomUp;
    tagBITMAPINFO bmi{};
    if (qwFileLineInc > UINT32_MAX)
        return Refuse(KASTATUS_KAIP_INCOMPATIBLE_SIZE, "%s: line increment %u too large for a bitmap", pszFunc,
                      image.LineIncrement);
    const KaipStatus bmpStatus = ImgInfoToBmpInfo(&described, &bmi);
    if (bmpStatus) return bmpStatus;

    const BITMAPINFOHEADER& header = bmi.bmiHeader;
    const uint32_t dwHeaderSize = kInfoHeaderSize + (header.biBitCount == 8 ? kColorTableSize : 0) +
                                  (header.biCompression == KAIP_BI_BITFIELDS ? kMasksSize : 0);
    const uint64_t qwLineBytes = BmpLineBytes(uint32_t(header.biWidth), header.biBitCount);
    const uint64_t qwImageSize = AbsHeight(header.biHeight) * qwLineBytes;
    // The pixels written come from the image's own buffer, which must hold whole file lines.
    if (qwLineBytes > qwFileLineInc)
        return Refuse(KASTATUS_KAIP_INCOMPATIBLE_LINE_INCREMENT, "%s: Incompatible line increment!", pszFunc);
    if (qwImageSize + dwHeaderSize + kFileHeaderSize > UINT32_MAX)
        return Refuse(KASTATUS_KAIP_INCOMPATIBLE_SIZE, "%s: image too large for a bitmap", pszFunc);
    BITMAPFILEHEADER fileHeader{};
    fileHeader.bfType = kBmpType;
    fileHeader.bfSize = uint32_t(dwHeaderSize + qwImageSize + kFileHeaderSize);
    fileHeader.bfOffBits = dwHeaderSize + kFileHeaderSize;

    CFileWriter file;
    if (!pszFileName || !file.Open(pszFileName))
        return Refuse(KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE,
                      "%s: Cannot create %s, KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE", pszFunc,
                      pszFileName ? pszFileName : "(null)");
    const bool bHeadersWritten = file.Write(&fileHeader, kFileHeaderSize) && file.Write(&bmi, dwHeaderSize);
    const bool bReverse = ((described.Flags ^ image.Flags) & KaipImgFlag_BottomUp) != 0;
    if (!WriteBmpPixels(file, image, qwFileLineInc, qwImageSize, bReverse) || !bHeadersWritten || !file.Commit())
        return Refuse(KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE,
                      "%s: cannot write to %s - KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE", pszFunc, pszFileName);
    return 0;
}

KaipStatus LoadFromBmp(const char* pszFileName, KaipImgInfo* pDstImgInfo, uint32_t dwOptions)
{
    static const char* const pszFunc = "KaipLoadFromBmp";
    if (!pDstImgInfo) return Refuse(KASTATUS_KAIP_INVALID_DST_POINTER, "%s: pDstImgInfo is NULL!", pszFunc);
    CFileReader file;
    if (!pszFileName || !file.Open(pszFileName))
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: cannot open file %s", pszFunc,
                      pszFileName ? pszFileName : "(null)");
    BITMAPFILEHEADER fileHeader;
    if (!file.Read(&fileHeader, kFileHeaderSize))
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: cannot read file %s", pszFunc, pszFileName);
    if (fileHeader.bfType != kBmpType)
        return Refuse(KASTATUS_KAIP_INVALID_BMP_FILE, "%s: Error: invalid BMP header %s", pszFunc, pszFileName);
    tagBITMAPINFO bmi{};
    const BITMAPINFOHEADER& header = bmi.bmiHeader;
    if (!file.Read(&bmi.bmiHeader, kInfoHeaderSize))
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: Error: cannot read file %s", pszFunc, pszFileName);
    if (header.biSize != kInfoHeaderSize || header.biBitCount < 8)
        return Refuse(KASTATUS_KAIP_INVALID_BMP_FILE, "%s: Error: invalid header in %s", pszFunc, pszFileName);
    if (header.biWidth <= 0 || header.biHeight == 0 ||
        BmpLineBytes(uint32_t(header.biWidth), header.biBitCount) * AbsHeight(header.biHeight) > UINT32_MAX)
        return Refuse(KASTATUS_KAIP_INVALID_BMP_FILE, "%s: Error: invalid image size %dx%d in %s", pszFunc,
                      int(header.biWidth), int(header.biHeight), pszFileName);

    // The pixels start at bfOffBits; writers that leave it empty put them right behind the
    // header, the colour table (never read: 8-bit files load as Mono8) and the masks.
    const uint32_t dwBehindHeaders = kFileHeaderSize + kInfoHeaderSize;
    uint64_t qwPixelOffset = fileHeader.bfOffBits;
    if (fileHeader.bfOffBits <= kFileHeaderSize) {
        qwPixelOffset = dwBehindHeaders + (header.biBitCount == 8 ? kColorTableSize : 0) +
                        (header.biCompression == KAIP_BI_BITFIELDS ? kMasksSize : 0);
    }
    if (qwPixelOffset < dwBehindHeaders || qwPixelOffset > file.Size())
        return Refuse(KASTATUS_KAIP_INVALID_BMP_FILE, "%s: Error: invalid pixel offset %u in %s", pszFunc,
                      fileHeader.bfOffBits, pszFileName);

    KaipImgInfo info = *pDstImgInfo;
    KaipStatus status = BmpInfoToImgInfo(&bmi, &info);
    if (status) return status;
    if (qwPixelOffset + ImageBytes(info) > file.Size())
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: Error: cannot read file %s", pszFunc, pszFileName);
    *pDstImgInfo = info;
    status = AllocateImageData(pDstImgInfo);
    if (status) return status;

    const bool bFlip = header.biHeight > 0 ? (dwOptions & KaipBmpOption_BottomUpFile) != 0
                                           : (dwOptions & KaipBmpOption_BottomUpImage) != 0;
    if (dwOptions & KaipBmpOption_BottomUpImage) {
        pDstImgInfo->Flags |= KaipImgFlag_BottomUp;
    } else if (dwOptions & KaipBmpOption_BottomUpFile) {
        pDstImgInfo->Flags &= ~KaipImgFlag_BottomUp;
    }
    const size_t lineInc = pDstImgInfo->LineIncrement;
    if (!file.Seek(qwPixelOffset))
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: Error: cannot read file %s", pszFunc, pszFileName);
    if (bFlip) {
        for (uint32_t y = pDstImgInfo->Height; y-- > 0;) {
            if (!file.Read(pDstImgInfo->pData + y * lineInc, lineInc))
                return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: Error: cannot read file %s", pszFunc,
                              pszFileName);
        }
    } else if (!file.Read(pDstImgInfo->pData, ImageBytes(*pDstImgInfo))) {
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s - Error: cannot read file %s", pszFunc, pszFileName);
    }
    return 0;
}
