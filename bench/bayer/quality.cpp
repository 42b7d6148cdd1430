// quality.cpp: kaip_quality, colour PSNR of the Bayer decoders on a directory of reference BMP images.
//
// Usage: kaip_quality DIR [--decoder NAME] [--pattern RG|GR|GB|BG] [--crops OUTDIR]
// NAME as the kaip tool names the decoders: bilinear, hq, vng, ppg.
// Every *.bmp of DIR (24-bit colour) is mosaicked in the pattern (RG unless told), decoded by
// each decoder (all unless one is named) and compared with the original over R, G and B
// together, leaving out a 10-pixel border: CPSNR = 10 log10(255^2 / MSE). Prints a Markdown
// table per image and the mean. With --crops, writes the 96x96 centre of every reference and
// decoded image as OUTDIR/<image>_<decoder>.bmp. Uses the public interface only.
#include <dirent.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "pm.imgproc.h"

namespace {

using TDecoder = KaipStatus (*)(const KaipImgInfo*, KaipImgInfo*, uint32_t, uint32_t, KaipHLut);

// The decoders by the kaip tool's names (tools/kaip), with the names this program used before.
struct TNamedDecoder {
    const char* pszName;
    const char* pszOldName;
    TDecoder decode;
};

const TNamedDecoder kDecoders[] = {
    {"bilinear", "bilinear", KaipBdBilinearInterpolation},
    {"hq", "correction", KaipBdBilinearColorCorrection},
    {"vng", "gradients", KaipBdVariableGradients},
    {"ppg", "grouping", KaipBdPixelGrouping},
};

struct TPattern {
    const char* pszName;
    uint32_t dwFormat;
    bool bShiftLine, bShiftColumn;
};

const TPattern kPatterns[] = {
    {"RG", KaipPixelFormat_BayerRG8, false, false},
    {"GR", KaipPixelFormat_BayerGR8, false, true},
    {"GB", KaipPixelFormat_BayerGB8, true, false},
    {"BG", KaipPixelFormat_BayerBG8, true, true},
};

constexpr uint32_t kBorder = 10, kCrop = 96;

// An image descriptor whose buffer the library allocated, released at the end.
struct TImage {
    KaipImgInfo info{};
    ~TImage() { KaipDeallocateImageData(&info); }
};

// The channel of each pixel's site, taken from a BGR8 image.
bool Mosaic(const KaipImgInfo& bgr, const TPattern& pattern, TImage& mosaic)
{
    if (KaipInitImgInfo(&mosaic.info, bgr.Width, bgr.Height, pattern.dwFormat, 0) != 0 ||
        KaipAllocateImageData(&mosaic.info) != 0) {
        return false;
    }
    for (uint32_t y = 0; y < bgr.Height; ++y) {
        const uint8_t* pIn = bgr.pData + size_t(y) * bgr.LineIncrement;
        uint8_t* pOut = mosaic.info.pData + size_t(y) * mosaic.info.LineIncrement;
        const bool bRedLine = ((y & 1) != 0) == pattern.bShiftLine;
        for (uint32_t x = 0; x < bgr.Width; ++x) {
            const bool bFirstKind = ((x & 1) != 0) == pattern.bShiftColumn;
            const int channel = bRedLine ? (bFirstKind ? 2 : 1) : (bFirstKind ? 1 : 0);  // B G R bytes
            pOut[x] = pIn[3 * x + channel];
        }
    }
    return true;
}

double Cpsnr(const KaipImgInfo& ref, const KaipImgInfo& out)
{
    double sum = 0;
    uint64_t count = 0;
    for (uint32_t y = kBorder; y + kBorder < ref.Height; ++y) {
        const uint8_t* a = ref.pData + size_t(y) * ref.LineIncrement;
        const uint8_t* b = out.pData + size_t(y) * out.LineIncrement;
        for (uint32_t i = 3 * kBorder; i < 3 * (ref.Width - kBorder); ++i, ++count) {
            const double d = double(a[i]) - double(b[i]);
            sum += d * d;
        }
    }
    return count == 0 || sum == 0 ? 99.0 : 10.0 * std::log10(255.0 * 255.0 * double(count) / sum);
}

void SaveCrop(const KaipImgInfo& img, const std::string& path)
{
    const uint32_t w = std::min(kCrop, img.Width), h = std::min(kCrop, img.Height);
    const uint32_t x0 = (img.Width - w) / 2, y0 = (img.Height - h) / 2;
    TImage crop;
    if (KaipInitImgInfo(&crop.info, w, h, KaipPixelFormat_BGR8Packed, 0) != 0 ||
        KaipAllocateImageData(&crop.info) != 0) {
        return;
    }
    for (uint32_t y = 0; y < h; ++y) {
        std::memcpy(crop.info.pData + size_t(y) * crop.info.LineIncrement,
                    img.pData + size_t(y0 + y) * img.LineIncrement + 3 * x0, 3 * size_t(w));
    }
    if (KaipSaveToBmp(path.c_str(), &crop.info, 0) != 0) std::fprintf(stderr, "cannot write %s\n", path.c_str());
}

std::vector<std::string> BmpFiles(const std::string& dir)
{
    std::vector<std::string> names;
    if (DIR* d = opendir(dir.c_str())) {
        while (const dirent* e = readdir(d)) {
            const std::string n = e->d_name;
            if (n.size() > 4 && n.compare(n.size() - 4, 4, ".bmp") == 0) names.push_back(n);
        }
        closedir(d);
    }
    std::sort(names.begin(), names.end());
    return names;
}

int Usage()
{
    std::fprintf(stderr,
                 "usage: kaip_quality DIR [--decoder bilinear|hq|vng|ppg] "
                 "[--pattern RG|GR|GB|BG] [--crops OUTDIR]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2) return Usage();
    const std::string dir = argv[1];
    std::vector<TNamedDecoder> decoders(std::begin(kDecoders), std::end(kDecoders));
    TPattern pattern = kPatterns[0];
    std::string cropDir;
    for (int i = 2; i + 1 < argc; i += 2) {
        const std::string option = argv[i], value = argv[i + 1];
        if (option == "--decoder") {
            decoders.erase(
                std::remove_if(decoders.begin(), decoders.end(),
                               [&](const TNamedDecoder& d) { return value != d.pszName && value != d.pszOldName; }),
                decoders.end());
        } else if (option == "--pattern") {
            const auto* p = std::find_if(std::begin(kPatterns), std::end(kPatterns),
                                         [&](const TPattern& t) { return value == t.pszName; });
            if (p == std::end(kPatterns)) return Usage();
            pattern = *p;
        } else if (option == "--crops") {
            cropDir = value;
        } else {
            return Usage();
        }
    }
    if (decoders.empty() || (argc % 2) != 0) return Usage();
    const std::vector<std::string> files = BmpFiles(dir);
    if (files.empty()) {
        std::fprintf(stderr, "no .bmp files in %s\n", dir.c_str());
        return 1;
    }

    std::printf("CPSNR in dB, Bayer%s8, %u-pixel border left out\n\n| image |", pattern.pszName, kBorder);
    for (const auto& d : decoders) std::printf(" %s |", d.pszName);
    std::printf("\n|---|");
    for (size_t i = 0; i < decoders.size(); ++i) std::printf("---:|");
    std::printf("\n");
    std::vector<double> total(decoders.size(), 0.0);
    for (const std::string& name : files) {
        TImage ref, mosaic;
        if (KaipLoadFromBmp((dir + "/" + name).c_str(), &ref.info, KaipBmpOption_BottomUpFile) != 0 ||
            ref.info.PixelFormat != KaipPixelFormat_BGR8Packed || !Mosaic(ref.info, pattern, mosaic)) {
            std::fprintf(stderr, "cannot use %s (24-bit colour BMP expected)\n", name.c_str());
            return 1;
        }
        const std::string stem = name.substr(0, name.size() - 4);
        if (!cropDir.empty()) SaveCrop(ref.info, cropDir + "/" + stem + "_reference.bmp");
        std::printf("| %s |", stem.c_str());
        for (size_t i = 0; i < decoders.size(); ++i) {
            TImage out;
            const KaipStatus status = decoders[i].decode(&mosaic.info, &out.info, KaipPixelFormat_BGR8Packed,
                                                         KaipOption_ReallocateDst, nullptr);
            if (status != 0) {
                std::fprintf(stderr, "%s on %s: status %d\n", decoders[i].pszName, name.c_str(), status);
                return 1;
            }
            const double q = Cpsnr(ref.info, out.info);
            total[i] += q;
            std::printf(" %.2f |", q);
            if (!cropDir.empty()) SaveCrop(out.info, cropDir + "/" + stem + "_" + decoders[i].pszName + ".bmp");
        }
        std::printf("\n");
    }
    std::printf("| **mean** |");
    for (double t : total) std::printf(" **%.2f** |", t / double(files.size()));
    std::printf("\n");
    return 0;
}
