// make_seeds.cpp: writes the seed corpora of the fuzz targets into <folder>/<target>/: small
// valid BMP, TIFF and JPEG files and bitmap headers made by the library itself, and one
// descriptor input per image function.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "pm.imgproc.h"

namespace fs = std::filesystem;

namespace {

// A small image of the format with a deterministic pattern; the caller frees it.
KaipImgInfo Pattern(uint32_t format, uint32_t width, uint32_t height, uint32_t flags = 0)
{
    KaipImgInfo img{};
    if (KaipInitImgInfo(&img, width, height, format, flags) || KaipAllocateImageData(&img)) std::exit(1);
    for (uint32_t i = 0; i < KaipGetImageDataSize(&img); ++i) img.pData[i] = uint8_t(i * 37 + 11);
    return img;
}

void Check(KaipStatus status, const std::string& what)
{
    if (status == KASTATUS_OK) return;
    std::fprintf(stderr, "make_seeds: %s failed with %d\n", what.c_str(), status);
    std::exit(1);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_seeds <corpus folder>\n");
        return 2;
    }
    const fs::path root = argv[1];
    for (const char* target : {"fuzz_load_bmp", "fuzz_load_tiff", "fuzz_load_jpeg", "fuzz_bmp_info", "fuzz_descriptor"})
        fs::create_directories(root / target);

    const uint32_t bmpFormats[] = {KaipPixelFormat_Mono8, KaipPixelFormat_BGR555, KaipPixelFormat_BGR565Packed,
                                   KaipPixelFormat_BGR8Packed, KaipPixelFormat_BGRA8Packed};
    for (uint32_t format : bmpFormats) {
        KaipImgInfo img = Pattern(format, 6, 3, KaipImgFlag_Align4);
        for (uint32_t options : {0u, KaipBmpOption_BottomUpFile}) {
            const fs::path file =
                root / "fuzz_load_bmp" / (std::to_string(format) + "_" + std::to_string(options) + ".bmp");
            Check(KaipSaveToBmp(file.c_str(), &img, options), file.string());
        }
        tagBITMAPINFO bmi{};
        Check(KaipImgInfoToBmpInfo(&img, &bmi), "bitmap header");
        std::ofstream(root / "fuzz_bmp_info" / std::to_string(format), std::ios::binary)
            .write(reinterpret_cast<const char*>(&bmi), sizeof(bmi.bmiHeader) + 3 * sizeof(RGBQUAD));
        KaipDeallocateImageData(&img);
    }

    const std::pair<uint32_t, uint32_t> tiffs[] = {{KaipPixelFormat_Mono8, 0},
                                                   {KaipPixelFormat_Mono12, 0},
                                                   {KaipPixelFormat_Mono12, KaipTiffOption_Scale16},
                                                   {KaipPixelFormat_Mono16, 0},
                                                   {KaipPixelFormat_RGB8Packed, 0}};
    for (const auto& [format, options] : tiffs) {
        KaipImgInfo img = Pattern(format, 5, 3);
        const fs::path file =
            root / "fuzz_load_tiff" / (std::to_string(format) + "_" + std::to_string(options) + ".tif");
        Check(KaipSaveToTiff(file.c_str(), &img, options), file.string());
        KaipDeallocateImageData(&img);
    }

    for (uint32_t format : {KaipPixelFormat_Mono8, KaipPixelFormat_RGB8Packed}) {
        KaipImgInfo img = Pattern(format, 9, 7);
        const fs::path file = root / "fuzz_load_jpeg" / (std::to_string(format) + ".jpg");
        Check(KaipSaveToJpeg(file.c_str(), &img, 50), file.string());
        KaipDeallocateImageData(&img);
    }

    // Descriptor inputs: the first byte picks the function, the rest is seeded noise.
    std::mt19937 gen(12);
    for (int op = 0; op < 25; ++op) {
        std::vector<char> bytes(256);
        for (char& b : bytes) b = char(gen());
        bytes[0] = char(op);
        std::ofstream(root / "fuzz_descriptor" / ("op" + std::to_string(op)), std::ios::binary)
            .write(bytes.data(), std::streamsize(bytes.size()));
    }
    return 0;
}
