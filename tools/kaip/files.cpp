// files.cpp: raw dumps through plain file I/O, image files through the library.
#include "files.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>

namespace kaip {

namespace {

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

bool EndsWith(const std::string& text, const std::string& tail)
{
    return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

uint64_t FileSize(const std::string& path)
{
    struct stat info;
    if (stat(path.c_str(), &info) != 0) throw ToolError("cannot read " + path + ": " + std::strerror(errno));
    if (!S_ISREG(info.st_mode)) throw ToolError("cannot read " + path + ": not a regular file");
    return uint64_t(info.st_size);
}

RawLayout CompleteLayout(const std::string& path, RawLayout raw)
{
    RawLayout named = RawSpecFromFileName(path);
    if (!raw.format) raw.format = named.format;
    if (!raw.width) raw.width = named.width, raw.height = named.height;
    if (!raw.format)
        throw ToolError(path + ": raw dump without a pixel format: give --format NAME (see kaip formats)", 2);
    if (!raw.width) throw ToolError(path + ": raw dump without a size: give --size WxH", 2);
    return raw;
}

Image LoadImageFile(const std::string& path, FileType type)
{
    FileSize(path);  // a missing file is told as such, not as a library status
    Image image;
    KaipImgInfo* info = image.Info();
    if (type == FileType::Bmp) {
        // A bottom-up file is delivered top-down, like every other image the tool handles.
        Check(KaipLoadFromBmp(path.c_str(), info, KaipBmpOption_BottomUpFile), "loading the BMP file " + path);
    } else if (type == FileType::Tiff) {
        info->PixelFormat = KaipPixelFormat_RGB8Packed;  // colour TIFF files are R, G, B in this format
        Check(KaipLoadFromTiff(path.c_str(), info), "loading the TIFF file " + path);
    } else {
        Check(KaipLoadFromJpeg(path.c_str(), info, KaipOption_ReallocateDst | KaipJpegOption_BGR),
              "loading the JPEG file " + path);
    }
    return image;
}

void WriteRaw(const std::string& path, const Image& image)
{
    const KaipImgInfo* info = image.Info();
    if (info->Flags & KaipImgFlag_ColorPlanes) throw ToolError("saving " + path + ": colour planes have no raw layout");
    uint64_t lineBytes = RawLineBytes(info->PixelFormat, info->Width);
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    for (uint32_t y = 0; y < info->Height && file; ++y)
        file.write(reinterpret_cast<const char*>(info->pData) + uint64_t(y) * info->LineIncrement,
                   std::streamsize(lineBytes));
    file.close();
    if (!file) throw ToolError("saving the raw dump " + path + " failed: " + std::strerror(errno));
}

}  // namespace

FileType FileTypeOf(const std::string& path)
{
    std::string name = Lower(path);
    if (EndsWith(name, ".bmp")) return FileType::Bmp;
    if (EndsWith(name, ".tif") || EndsWith(name, ".tiff")) return FileType::Tiff;
    if (EndsWith(name, ".jpg") || EndsWith(name, ".jpeg")) return FileType::Jpeg;
    return FileType::Raw;
}

const char* FileTypeName(FileType type)
{
    static const char* const names[] = {"BMP", "TIFF", "JPEG", "raw"};
    return names[int(type)];
}

Image LoadRaw(const std::string& path, RawLayout raw)
{
    uint64_t fileBytes = FileSize(path);
    raw = CompleteLayout(path, raw);
    uint64_t lineBytes = RawLineBytes(raw.format, raw.width);
    uint64_t expected = lineBytes * raw.height;
    if (fileBytes != expected)
        throw ToolError(path + " has " + std::to_string(fileBytes) + " bytes, but " + FormatName(raw.format) + " at " +
                        std::to_string(raw.width) + "x" + std::to_string(raw.height) + " takes " +
                        std::to_string(expected) + " bytes");
    if (lineBytes > 0xFFFFFFFFu) throw ToolError(path + ": lines too long for the library");
    std::vector<uint8_t> bytes(expected);
    std::ifstream file(path, std::ios::binary);
    if (!file.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(expected)))
        throw ToolError("cannot read " + path + ": " + std::strerror(errno));
    return Image::Own(std::move(bytes), raw.width, raw.height, raw.format, uint32_t(lineBytes));
}

Image LoadAny(const std::string& path, const RawLayout& raw)
{
    FileType type = FileTypeOf(path);
    return type == FileType::Raw ? LoadRaw(path, raw) : LoadImageFile(path, type);
}

void SaveAny(const std::string& path, const Image& image, uint32_t jpegQuality)
{
    switch (FileTypeOf(path)) {
        case FileType::Bmp:
            Check(KaipSaveToBmp(path.c_str(), image.Info(), 0), "saving the BMP file " + path);
            break;
        case FileType::Tiff:
            Check(KaipSaveToTiff(path.c_str(), image.Info(), 0), "saving the TIFF file " + path);
            break;
        case FileType::Jpeg:
            Check(KaipSaveToJpeg(path.c_str(), image.Info(), jpegQuality), "saving the JPEG file " + path);
            break;
        case FileType::Raw:
            WriteRaw(path, image);
            break;
    }
}

}  // namespace kaip
