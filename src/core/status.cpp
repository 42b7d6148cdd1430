// status.cpp: the message text of every status code.
#include "core/status.h"

#include <cstring>

namespace {

struct TStatusText {
    KaipStatus status;
    const char* pszText;
};

// Codes not listed (and those with an empty text) give the empty string.
constexpr TStatusText kStatusTexts[] = {
    {KASTATUS_KAIP_INVALID_POINTER, "Invalid pointer passed to the function."},
    {KASTATUS_KAIP_INVALID_SRC_POINTER, "Invalid pointer to source image info passed to the function."},
    {KASTATUS_KAIP_INVALID_DST_POINTER, "Invalid pointer to destination image info passed to the function."},
    {KASTATUS_KAIP_INVALID_PIXEL_FORMAT, "Invalid pixel format."},
    {KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED, "Image info not initialized."},
    {KASTATUS_KAIP_MEMORY_ALLOC_FAILED, "Memory allocation failed."},
    {KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER, "Unsupported type of Windows Bitmap header."},
    {KASTATUS_KAIP_INCOMPATIBLE_PIXEL_FORMAT, "Incompatible pixel format."},
    {KASTATUS_KAIP_INCOMPATIBLE_LINE_INCREMENT, "Line increment is not compatible for Windows Bitmap"},
    {KASTATUS_KAIP_IMGINFOS_NOT_EQUAL, "Image infos are not equal in width, height and/or pixel format."},
    {KASTATUS_KAIP_NOT_SUPPORTED, "The requested function or format is not supported."},
    {KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT, "Unsupported pixel format in the source info."},
    {KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, "Unsupported pixel format in the destination info."},
    {KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED, "Color planes not supported in this function."},
    {KASTATUS_KAIP_LINE_REVERSION_NOT_SUPPORTED, "Line revrsion is not supported by this function"},
    {KASTATUS_KAIP_LINE_INCREMENT_TOO_BIG, "Line increment too big for in-place deinterlace (max. width 2048)"},
    {KASTATUS_KAIP_INCOMPATIBLE_DST,
     "The destination bitmap has incompatible info and KaipOption_ReallocateDst is not set."},
    {KASTATUS_KAIP_INCOMPATIBLE_SIZE, "Incompatible source and destination width and height"},
    {KASTATUS_KAIP_INCOMPATIBLE_ROTATED_SIZE,
     "Incompatible source and destination width and height (must be reversed)."},
    {KASTATUS_KAIP_INCOMPATIBLE_SRC_DST_PIXEL_FORMAT, "Incompatible source and destination pixel format."},
    {KASTATUS_KAIP_INCOMPATIBLE_FLAGS, "Incompatible source and destination flags."},
    {KASTATUS_KAIP_DST_RECT_OUTSIDE_SRC, "Destination rectangle is outside of the source image.."},
    {KASTATUS_KAIP_SRC_NOT_ALLOCATED, "The source image info does not have image buffer allocated/specified."},
    {KASTATUS_KAIP_DST_NOT_ALLOCATED, "The destination image info does not have image buffer allocated/specified."},
    {KASTATUS_KAIP_NOT_DISPLAYABLE_FORMAT,
     "The image is in not displayable format and image info for conversion was not supplied."},
    {KASTATUS_KAIP_INVALID_LUT_TYPE,
     "Invalid LUT type: must correspond to the pixel format. Bayer decoding LUT requires KAIP_LUT_BAYER flag."},
    {KASTATUS_KAIP_REF_PIXEL_FORMAT_DIFFERS, "The reference image has different pixel format than the source image."},
    {KASTATUS_KAIP_REF_FLAGS_DIFFER,
     "The reference image has different flags (orientation, etc.) than the source image."},
    {KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, "Cannot open or read from the file."},
    {KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE, "Cannot create or write to the file."},
    {KASTATUS_KAIP_INVALID_TIFF_FILE,
     "The content of the TIFF file is invalid. Only TIFF files created by this libary are supported."},
    {KASTATUS_KAIP_INVALID_BMP_FILE, "The content of the BMP file is invalid or unsupported."},
};

const char* StatusText(KaipStatus status)
{
    for (const TStatusText& entry : kStatusTexts)
        if (entry.status == status) return entry.pszText;
    return "";
}

}  // namespace

char* GetStatusMsg(KaipStatus status, char* pszBuffer, uint64_t dwBufferSize)
{
    // strncpy semantics, then a terminator in the last byte whatever the text's length. A size
    // of 0 stores only that terminator, which lands on the byte before the buffer, as callers
    // of this interface have always had it.
    if (dwBufferSize == 0) {
        pszBuffer[-1] = '\0';
        return pszBuffer;
    }
    std::strncpy(pszBuffer, StatusText(status), size_t(dwBufferSize - 1));
    pszBuffer[dwBufferSize - 1] = '\0';
    return pszBuffer;
}
