// files.h: reading and writing raw dumps and BMP, TIFF and JPEG files.
#pragma once

#include <string>

#include "formats.h"
#include "image.h"

namespace kaip {

enum class FileType { Bmp, Tiff, Jpeg, Raw };

// By extension: .bmp, .tif/.tiff, .jpg/.jpeg; anything else is a raw dump.
FileType FileTypeOf(const std::string& path);
const char* FileTypeName(FileType type);

// A raw dump needs its pixel format and size: from the raw, else from the file name. A file whose
// size does not match says what it holds and what was expected.
Image LoadRaw(const std::string& path, RawLayout raw);
// Any file: images by their extension, everything else as a raw dump.
Image LoadAny(const std::string& path, const RawLayout& raw);

// Saves by extension; a raw dump gets the image's lines without padding.
void SaveAny(const std::string& path, const Image& image, uint32_t jpegQuality);

}  // namespace kaip
