// tiff.cpp: uncompressed single-strip little-endian TIFF files of the library's own layout.
#include <array>

#include "convert/convert_lines.h"
#include "core/check.h"
#include "core/common.h"
#include "core/log.h"
#include "file/file.h"
#include "file/file_io.h"
#include "platform/os_buffer.h"

namespace {

enum : uint16_t { kShort = 3, kLong = 4, kRational = 5 };
enum : uint16_t {
    kTagNewSubfileType = 254,
    kTagImageWidth = 256,
    kTagImageLength = 257,
    kTagBitsPerSample = 258,
    kTagCompression = 259,
    kTagPhotometric = 262,
    kTagStripOffsets = 273,
    kTagSamplesPerPixel = 277,
    kTagRowsPerStrip = 278,
    kTagStripByteCounts = 279,
    kTagMinSampleValue = 280,
    kTagMaxSampleValue = 281,
    kTagXResolution = 282,
    kTagYResolution = 283,
    kTagPlanarConfig = 284,
    kTagResolutionUnit = 296,
};

constexpr uint32_t kHeaderSize = 8, kEntrySize = 12, kMaxEntries = 32;
constexpr uint32_t kGreyEntries = 15, kColourEntries = 16;
constexpr uint32_t kGreyDataOffset = 210, kColourDataOffset = 228;

// What a source becomes in the file.
struct TTiffLayout {
    bool bColour;
    uint32_t dwSampleBits;  // 8 or 16 (grey), 8 per sample (colour)
    uint32_t dwMaxSample;   // MaxSampleValue
    uint32_t dwSrcBits;     // significant bits of a grey word source
    uint64_t qwLineBytes;
};

TTiffLayout LayoutFor(const KaipImgInfo& image, uint32_t dwMono, uint32_t dwOptions)
{
    TTiffLayout layout{};
    switch (dwMono) {
        case KaipPixelFormat_BGR565Packed:
        case KaipPixelFormat_BGR555:
        case KaipPixelFormat_RGB8Packed:
        case KaipPixelFormat_BGR8Packed:
        case KaipPixelFormat_RGBA8Packed:
        case KaipPixelFormat_BGRA8Packed:
            layout = {true, 8, 255, 0, uint64_t(image.Width) * 3};
            break;
        case KaipPixelFormat_Mono8:
            layout = {false, 8, 255, 8, image.Width};
            break;
        default: {
            const uint32_t dwBits = GetUsedBitsPerPixel(dwMono);
            const bool bFull = (dwOptions & KaipTiffOption_Scale16) || dwBits >= 16;
            layout = {false, 16, bFull ? 65535u : (1u << dwBits) - 1, dwBits, uint64_t(image.Width) * 2};
        }
    }
    return layout;
}

// The header, the directory and its values, laid out as the pixel data's prefix.
std::array<uint8_t, kColourDataOffset> BuildTiffHeader(const KaipImgInfo& image, const TTiffLayout& layout,
                                                       uint32_t dwDataBytes)
{
    std::array<uint8_t, kColourDataOffset> bytes{};
    const bool c = layout.bColour;
    const uint32_t dwEntries = c ? kColourEntries : kGreyEntries;
    const uint32_t dwValues = kHeaderSize + 2 + dwEntries * kEntrySize + 4;  // XResolution, YResolution, BitsPerSample
    PutLE16(&bytes[0], 0x4949);
    PutLE16(&bytes[2], 42);
    PutLE32(&bytes[4], kHeaderSize);
    PutLE16(&bytes[8], uint16_t(dwEntries));
    uint8_t* pEntry = &bytes[10];
    auto entry = [&pEntry](uint16_t tag, uint16_t type, uint32_t count, uint32_t value) {
        PutLE16(pEntry, tag);
        PutLE16(pEntry + 2, type);
        PutLE32(pEntry + 4, count);
        PutLE32(pEntry + 8, value);
        pEntry += kEntrySize;
    };
    entry(kTagNewSubfileType, kLong, 1, 0);
    entry(kTagImageWidth, kLong, 1, image.Width);
    entry(kTagImageLength, kLong, 1, image.Height);
    entry(kTagBitsPerSample, kShort, c ? 3 : 1, c ? dwValues + 16 : layout.dwSampleBits);
    entry(kTagCompression, kShort, 1, 1);
    entry(kTagPhotometric, kShort, 1, c ? 2 : 1);
    entry(kTagStripOffsets, kLong, 1, c ? kColourDataOffset : kGreyDataOffset);
    entry(kTagSamplesPerPixel, kShort, 1, c ? 3 : 1);
    entry(kTagRowsPerStrip, kLong, 1, image.Height);
    entry(kTagStripByteCounts, kLong, 1, dwDataBytes);
    entry(kTagMinSampleValue, kShort, 1, 0);
    entry(kTagMaxSampleValue, kShort, 1, layout.dwMaxSample);
    entry(kTagXResolution, kRational, 1, dwValues);
    entry(kTagYResolution, kRational, 1, dwValues + 8);
    if (c) entry(kTagPlanarConfig, kShort, 1, 1);
    entry(kTagResolutionUnit, kShort, 1, 2);  // inch: 750000 / 10000 = 75 pixels per inch
    PutLE32(pEntry, 0);                       // no next directory
    for (uint32_t offset : {dwValues, dwValues + 8}) {
        PutLE32(&bytes[offset], 750000);
        PutLE32(&bytes[offset + 4], 10000);
    }
    if (c)
        for (uint32_t i = 0; i < 3; ++i) PutLE16(&bytes[dwValues + 16 + 2 * i], 8);
    return bytes;
}

// Converts the image into the file's sample layout, top line first.
void FillTiffCopy(const KaipImgInfo& image, uint32_t dwMono, const TTiffLayout& layout, uint32_t dwOptions,
                  uint8_t* pDst)
{
    const uint32_t w = image.Width, h = image.Height, srcInc = image.LineIncrement;
    const uint32_t dstInc = uint32_t(layout.qwLineBytes);
    const uint8_t* pSrc = image.pData;
    const bool bReverse = (image.Flags & KaipImgFlag_BottomUp) != 0;
    switch (dwMono) {
        case KaipPixelFormat_Mono8:
        case KaipPixelFormat_RGB8Packed:
            CopyBitmapData(w, h, pSrc, pDst, srcInc, dstInc, bReverse);
            break;
        case KaipPixelFormat_BGR565Packed:
            Convert_BGR16_to_RGB24(w, h, pSrc, pDst, srcInc, dstInc, bReverse);
            break;
        case KaipPixelFormat_BGR555:
            Convert_BGR15_to_RGB24(w, h, pSrc, pDst, srcInc, dstInc, bReverse);
            break;
        case KaipPixelFormat_BGR8Packed:
            Convert_BGR24_to_RGB24(w, h, pSrc, pDst, srcInc, dstInc, bReverse);
            break;
        case KaipPixelFormat_RGBA8Packed:
            Convert_RGB32_to_RGB24(w, h, pSrc, pDst, srcInc, dstInc, bReverse);
            break;
        case KaipPixelFormat_BGRA8Packed:
            Convert_BGR32_to_RGB24(w, h, pSrc, pDst, srcInc, dstInc, bReverse);
            break;
        default:
            if (dwOptions & KaipTiffOption_Scale16) {
                Convert_MonoWord_to_MonoWord16(w, h, pSrc, pDst, srcInc, dstInc, layout.dwSrcBits, bReverse);
            } else {
                Copy_MonoWord_to_MonoWord(w, h, pSrc, pDst, srcInc, dstInc, bReverse);
            }
    }
}

// Bit length of a value: 1023 gives 10.
uint32_t BitLength(uint32_t value)
{
    uint32_t bits = 0;
    for (; value; value >>= 1) ++bits;
    return bits;
}

// The fields of a directory that pass the checks.
struct TTiffFields {
    uint32_t dwWidth = 0, dwHeight = 0, dwDataOffset = 0, dwStripBytes = 0;
    uint32_t dwBitsPerSample = 0, dwBitsOffset = 0, dwMaxSample = 0;
    uint32_t dwPhotometric = 0, dwSamples = 0;
    bool bColour = false;
    uint32_t dwSeen = 0;  // bit per required tag found
};

enum : uint32_t {
    kSeenWidth = 1,
    kSeenLength = 2,
    kSeenBits = 4,
    kSeenPhotometric = 8,
    kSeenStripOffsets = 16,
    kSeenSamples = 32,
    kSeenStripBytes = 64,
    kSeenMaxSample = 128,
};

// Reads and checks one directory entry; returns the log text of a failure or null.
const char* CheckEntry(const uint8_t* p, TTiffFields& f)
{
    const uint16_t tag = GetLE16(p), type = GetLE16(p + 2);
    const uint32_t count = GetLE32(p + 4), value = type == kShort ? GetLE16(p + 8) : GetLE32(p + 8);
    const bool bShort1 = type == kShort && count == 1, bLong1 = type == kLong && count == 1;
    switch (tag) {
        case kTagNewSubfileType:
            return bLong1 && value == 0 ? nullptr : "TIFFTAG_SUBFILETYPE error";
        case kTagImageWidth:
            f.dwWidth = value, f.dwSeen |= kSeenWidth;
            return bLong1 ? nullptr : "TIFFTAG_IMAGEWIDTH error";
        case kTagImageLength:
            f.dwHeight = value, f.dwSeen |= kSeenLength;
            return bLong1 ? nullptr : "TIFFTAG_IMAGELENGTH error";
        case kTagBitsPerSample:
            f.dwSeen |= kSeenBits;
            if (type != kShort || (count != 1 && count != 3)) return "TIFFTAG_BITSPERSAMPLE error";
            f.bColour = count == 3;
            if (f.bColour)
                f.dwBitsOffset = GetLE32(p + 8);
            else
                f.dwBitsPerSample = value;
            return nullptr;
        case kTagCompression:
            return bShort1 && value == 1 ? nullptr : "TIFFTAG_COMPRESSION error";
        case kTagPhotometric:
            f.dwPhotometric = value, f.dwSeen |= kSeenPhotometric;
            return bShort1 && (value == 1 || value == 2) ? nullptr : "TIFFTAG_PHOTOMETRIC error";
        case kTagStripOffsets:
            f.dwDataOffset = value, f.dwSeen |= kSeenStripOffsets;
            return bLong1 ? nullptr : "TIFFTAG_STRIPOFFSETS error";
        case kTagSamplesPerPixel:
            f.dwSamples = value, f.dwSeen |= kSeenSamples;
            return bShort1 && (value == 1 || value == 3) ? nullptr : "TIFFTAG_SAMPLESPERPIXEL error";
        default:
            return nullptr;
    }
}

// The entries the first pass has interpreted decide the second.
const char* CheckSecondPassEntry(const uint8_t* p, TTiffFields& f)
{
    const uint16_t tag = GetLE16(p), type = GetLE16(p + 2);
    const uint32_t count = GetLE32(p + 4), value = type == kShort ? GetLE16(p + 8) : GetLE32(p + 8);
    const bool bShort1 = type == kShort && count == 1, bLong1 = type == kLong && count == 1;
    switch (tag) {
        case kTagRowsPerStrip:
            return bLong1 && value == f.dwHeight ? nullptr : "TIFFTAG_ROWSPERSTRIP error";
        case kTagStripByteCounts:
            f.dwStripBytes = value, f.dwSeen |= kSeenStripBytes;
            return bLong1 ? nullptr : "TIFFTAG_STRIPBYTECOUNTS error";
        case kTagMinSampleValue:
            return bShort1 && value == 0 ? nullptr : "TIFFTAG_MINSAMPLEVALUE error";
        case kTagMaxSampleValue:
            f.dwMaxSample = value, f.dwSeen |= kSeenMaxSample;
            return bShort1 ? nullptr : "TIFFTAG_MAXSAMPLEVALUE error";
        case kTagPlanarConfig:
            return bShort1 && value == 1 ? nullptr : "TIFFTAG_PLANARCONFIG error";
        default:
            return nullptr;
    }
}

// Stricter than the tag checks alone: the fields that say how to read the pixels must be present
// and agree with each other and with the file's size. Returns the log text of a failure or null;
// on success qwLineBytes holds the bytes of one line.
const char* CheckShape(const TTiffFields& f, CFileReader& file, uint32_t dwEntries, uint64_t& qwLineBytes)
{
    if (!(f.dwSeen & kSeenWidth) || f.dwWidth == 0) return "TIFFTAG_IMAGEWIDTH error";
    if (!(f.dwSeen & kSeenLength) || f.dwHeight == 0) return "TIFFTAG_IMAGELENGTH error";
    if (!(f.dwSeen & kSeenBits)) return "TIFFTAG_BITSPERSAMPLE error";
    if (!(f.dwSeen & kSeenPhotometric) || f.dwPhotometric != (f.bColour ? 2u : 1u)) return "TIFFTAG_PHOTOMETRIC error";
    if (!(f.dwSeen & kSeenSamples) || f.dwSamples != (f.bColour ? 3u : 1u)) return "TIFFTAG_SAMPLESPERPIXEL error";
    if (!(f.dwSeen & kSeenMaxSample)) return "TIFFTAG_MAXSAMPLEVALUE error";
    uint32_t dwBytesPerPixel;
    if (f.bColour) {
        // Three 8-bit samples, their sizes stored at the BitsPerSample offset.
        uint8_t bits[6];
        if (uint64_t(f.dwBitsOffset) + sizeof(bits) > file.Size() || !file.Seek(f.dwBitsOffset) ||
            !file.Read(bits, sizeof(bits)) || GetLE16(bits) != 8 || GetLE16(bits + 2) != 8 || GetLE16(bits + 4) != 8)
            return "TIFFTAG_BITSPERSAMPLE error";
        if (f.dwMaxSample != 255) return "TIFFTAG_MAXSAMPLEVALUE error";
        dwBytesPerPixel = 3;
    } else {
        // MaxSampleValue 255 means bytes, 256 and above 16-bit words; BitsPerSample must agree.
        dwBytesPerPixel = f.dwMaxSample == 255 ? 1 : 2;
        if (f.dwBitsPerSample != dwBytesPerPixel * 8) return "TIFFTAG_BITSPERSAMPLE error";
        if (f.dwMaxSample < 256 && f.dwMaxSample != 255) return "TIFFTAG_MAXSAMPLEVALUE error";
    }
    qwLineBytes = uint64_t(f.dwWidth) * dwBytesPerPixel;
    const uint64_t qwDataBytes = qwLineBytes * f.dwHeight;
    if (qwDataBytes > UINT32_MAX) return "TIFFTAG_IMAGEWIDTH error";
    if (!(f.dwSeen & kSeenStripBytes) || f.dwStripBytes != qwDataBytes) return "TIFFTAG_STRIPBYTECOUNTS error";
    const uint64_t qwDirectoryEnd = kHeaderSize + 2 + uint64_t(dwEntries) * kEntrySize + 4;
    if (!(f.dwSeen & kSeenStripOffsets) || f.dwDataOffset < qwDirectoryEnd || f.dwDataOffset > file.Size())
        return "TIFFTAG_STRIPOFFSETS error";
    return nullptr;
}

}  // namespace

KaipStatus SaveToTiff(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwOptions)
{
    static const char* const pszFunc = "KaipSaveToTiff";
    const KaipStatus status = CheckSrcImgInfo(pszFunc, pSrcImgInfo, 0x7FFF, KaipCheck_ColorPlanesAllowed);
    if (status) return status;
    if (pSrcImgInfo->Flags & KaipImgFlag_ColorPlanes)
        return Refuse(KASTATUS_KAIP_NOT_SUPPORTED, "%s: color planes not supported", pszFunc);
    const KaipImgInfo& image = *pSrcImgInfo;
    const uint32_t dwMono = BayerToMonoFormat(image.PixelFormat);
    const TTiffLayout layout = LayoutFor(image, dwMono, dwOptions);
    const uint64_t qwDataBytes = layout.qwLineBytes * image.Height;
    if (qwDataBytes > UINT32_MAX - kColourDataOffset)
        return Refuse(KASTATUS_KAIP_INCOMPATIBLE_SIZE, "%s: image of %ux%u too large for a TIFF file", pszFunc,
                      image.Width, image.Height);
    const auto header = BuildTiffHeader(image, layout, uint32_t(qwDataBytes));

    CFileWriter file;
    if (!pszFileName || !file.Open(pszFileName))
        return Refuse(KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE, "%s: Error: cannot create %s", pszFunc,
                      pszFileName ? pszFileName : "(null)");
    const bool bHeaderWritten = file.Write(header.data(), layout.bColour ? kColourDataOffset : kGreyDataOffset);
    bool bDataWritten;
    const bool bDirect = (!layout.bColour || image.PixelFormat == KaipPixelFormat_RGB8Packed) &&
                         image.LineIncrement == layout.qwLineBytes && !(image.Flags & KaipImgFlag_BottomUp) &&
                         !(dwOptions & KaipTiffOption_Scale16);
    if (bDirect) {
        bDataWritten = file.Write(image.pData, qwDataBytes);
    } else {
        void* pCopy = oxOsBufferCreateAligned(qwDataBytes, 64, 0);
        if (!pCopy)
            return Refuse(KASTATUS_KAIP_MEMORY_ALLOC_FAILED, "%s: Error: failed to allocate memory for the image copy",
                          pszFunc);
        FillTiffCopy(image, dwMono, layout, dwOptions, static_cast<uint8_t*>(pCopy));
        bDataWritten = file.Write(pCopy, qwDataBytes);
        if (const int error = oxOsBufferFree(pCopy))
            Log.Debug("%s: Error: failed to deallocate memory: buffer corrupted, error code:%d", pszFunc, error);
    }
    if (!bHeaderWritten || !bDataWritten || !file.Commit())
        return Refuse(KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE, "%s: Error: cannot write to %s", pszFunc, pszFileName);
    return 0;
}

KaipStatus LoadFromTiff(const char* pszFileName, KaipImgInfo* pDstImgInfo)
{
    static const char* const pszFunc = "KaipLoadFromTiff";
    if (!pDstImgInfo) return Refuse(KASTATUS_KAIP_INVALID_DST_POINTER, "%s: pDstImgInfo is NULL!", pszFunc);
    CFileReader file;
    if (!pszFileName || !file.Open(pszFileName))
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: Error: cannot open %s", pszFunc,
                      pszFileName ? pszFileName : "(null)");
    uint8_t header[kHeaderSize];
    if (!file.Read(header, kHeaderSize))
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: Error: cannot read TiffHeader from %s", pszFunc,
                      pszFileName);
    if (GetLE16(header) != 0x4949 || GetLE16(header + 2) != 42 || GetLE32(header + 4) != kHeaderSize)
        return Refuse(KASTATUS_KAIP_INVALID_TIFF_FILE, "%s: TiffHeader contents is not correct.", pszFunc);
    uint8_t countBytes[2];
    if (!file.Read(countBytes, 2))
        return Refuse(KASTATUS_KAIP_INVALID_TIFF_FILE, "Cannot read ImageFileDirectory.wNumberOfTags");
    const uint32_t dwEntries = GetLE16(countBytes);
    if (dwEntries > kMaxEntries)
        return Refuse(KASTATUS_KAIP_INVALID_TIFF_FILE, "ImageFileDirectory.wNumberOfTags is too big.");
    uint8_t directory[kMaxEntries * kEntrySize + 4];
    if (!file.Read(directory, dwEntries * kEntrySize + 4))
        return Refuse(KASTATUS_KAIP_INVALID_TIFF_FILE, "Cannot read ImageFileDirectory");

    TTiffFields f;
    for (uint32_t i = 0; i < dwEntries; ++i)
        if (const char* pszError = CheckEntry(directory + i * kEntrySize, f))
            return Refuse(KASTATUS_KAIP_INVALID_TIFF_FILE, "%s", pszError);
    for (uint32_t i = 0; i < dwEntries; ++i)
        if (const char* pszError = CheckSecondPassEntry(directory + i * kEntrySize, f))
            return Refuse(KASTATUS_KAIP_INVALID_TIFF_FILE, "%s", pszError);

    uint64_t qwLineBytes = 0;
    if (const char* pszError = CheckShape(f, file, dwEntries, qwLineBytes))
        return Refuse(KASTATUS_KAIP_INVALID_TIFF_FILE, "%s", pszError);
    const uint64_t qwDataBytes = qwLineBytes * f.dwHeight;
    if (f.dwDataOffset + qwDataBytes > file.Size())
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: Error: cannot read data from %s", pszFunc, pszFileName);

    // Grey files name their format by significant bits; colour files keep the caller's preset.
    uint32_t dwFormat = pDstImgInfo->PixelFormat;
    static const uint32_t s_grey[] = {KaipPixelFormat_Mono8,  KaipPixelFormat_Mono9,  KaipPixelFormat_Mono10,
                                      KaipPixelFormat_Mono11, KaipPixelFormat_Mono12, KaipPixelFormat_Mono13,
                                      KaipPixelFormat_Mono14, KaipPixelFormat_Mono15, KaipPixelFormat_Mono16};
    const uint32_t dwSignificant = BitLength(f.dwMaxSample);
    if (!f.bColour && dwSignificant >= 8 && dwSignificant <= 16) dwFormat = s_grey[dwSignificant - 8];
    if (uint64_t(GetPixelIncrementFromPixelFormat(dwFormat)) * f.dwWidth > qwLineBytes)
        return Refuse(KASTATUS_KAIP_INCOMPATIBLE_DST,
                      "%s: the preset pixel format 0x%.8x needs more than the file's %u bytes per line", pszFunc,
                      dwFormat, uint32_t(qwLineBytes));

    InitImgInfo(pDstImgInfo, f.dwWidth, f.dwHeight, dwFormat, 0);
    // A preset format that initialisation refused leaves the old flags: the pixels go to pData
    // in top-down order whatever they said.
    pDstImgInfo->Flags &= ~(KaipImgFlag_BottomUp | KaipImgFlag_ColorPlanes);
    pDstImgInfo->LineIncrement = uint32_t(qwLineBytes);
    const KaipStatus status = AllocateImageData(pDstImgInfo);
    if (status) return status;
    if (!file.Seek(f.dwDataOffset) || !file.Read(pDstImgInfo->pData, qwDataBytes)) {
        DeallocateImageData(pDstImgInfo);
        return Refuse(KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "%s: Error: cannot read data from %s", pszFunc, pszFileName);
    }
    return 0;
}
