// hostile_test.cpp: every exported function through the public interface with hostile arguments:
// null pointers, zero and huge sizes, short line increments, unknown formats, colour-plane
// descriptors, missing or misfit destinations and overlapping images. Each case must return its
// documented status, leave the source and the destination's bytes as they were (buffers end at
// an unreadable page, so a stray access faults) and leak nothing.
#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "file/file_test_util.h"

namespace {

constexpr uint32_t kW = 8, kH = 6;
constexpr uint32_t kUnknownFormat = 0x12345678u;
constexpr uint32_t kBGR8 = KaipPixelFormat_BGR8Packed, kBGRA8 = KaipPixelFormat_BGRA8Packed,
                   kMono8 = KaipPixelFormat_Mono8;
constexpr uint8_t kSentinel = 0xA5;
const int32_t kIdentity[9] = {0, 0, 0, 0, 1000, 0, 0, 0, 0};

uint32_t Bytes(uint32_t format)
{
    KaipImgInfo probe{};
    KaipInitImgInfo(&probe, 1, 1, format, 0);
    return probe.PixelIncrement;
}

// The images of one case: a source of random pixels and a destination full of the sentinel, each
// with its own planes for colour-planes cases, and copies to tell what was written.
struct Images {
    Images(uint32_t srcFormat, uint32_t dstFormat)
        : src(kW, kH, srcFormat, kW * Bytes(srcFormat) + 3),
          dst(kW, kH, dstFormat, kW * Bytes(dstFormat) + 5),
          rot(kH, kW, srcFormat, kH * Bytes(srcFormat) + 1),
          planes{GuardedBuffer(kH * src.info.LineIncrement), GuardedBuffer(kH * src.info.LineIncrement),
                 GuardedBuffer(kH * src.info.LineIncrement)}
    {
        FillRandom(src.buffer.data(), src.buffer.size(), 7);
        // The destinations' buffers belong to the test: a rebuild must not free them.
        dst.info.Flags |= KaipImgFlag_NoDeallocate;
        rot.info.Flags |= KaipImgFlag_NoDeallocate;
        std::memset(dst.buffer.data(), kSentinel, dst.buffer.size());
        std::memset(rot.buffer.data(), kSentinel, rot.buffer.size());
        for (GuardedBuffer& plane : planes) FillRandom(plane.data(), plane.size(), 9);
        srcBefore.assign(src.buffer.data(), src.buffer.data() + src.buffer.size());
    }
    // Turns the source into a colour-planes descriptor over the three planes.
    void UsePlanes()
    {
        src.info.Flags |= KaipImgFlag_ColorPlanes;
        src.info.pData = nullptr;
        src.info.pDataR = planes[0].data();
        src.info.pDataG = planes[1].data();
        src.info.pDataB = planes[2].data();
    }
    bool Untouched() const
    {
        for (size_t i = 0; i < dst.buffer.size(); ++i)
            if (dst.buffer.data()[i] != kSentinel) return false;
        for (size_t i = 0; i < rot.buffer.size(); ++i)
            if (rot.buffer.data()[i] != kSentinel) return false;
        return std::memcmp(srcBefore.data(), src.buffer.data(), srcBefore.size()) == 0;
    }

    GuardedImage src, dst, rot;
    GuardedBuffer planes[3];
    std::vector<uint8_t> srcBefore;
};

// A function under test: its formats and the call, given the (possibly hostile) source and
// destination descriptors and the options word. A source-only function has no destination format;
// where its refusals of unknown formats and colour planes are its own, they are given.
struct ImageFunction {
    const char* name;
    uint32_t srcFormat;
    uint32_t dstFormat;
    bool dstRequired;
    bool rotated;  // the destination is the quarter-turned one
    std::function<KaipStatus(KaipImgInfo*, KaipImgInfo*, uint32_t)> call;
    KaipStatus unknownFormat = 0, planes = 0;
};

struct Case {
    std::string name;
    KaipStatus expected;
    std::function<KaipStatus()> call;
};

void PrintTo(const Case& c, std::ostream* os)
{
    *os << c.name;
}

// Files of this process only, so that runs side by side do not meet.
const std::string kTmp = testing::TempDir() + "kaip_hostile_" + std::to_string(getpid()) + "_";

// The loaders and savers of the three file kinds by their first letter (B, T, J).
KaipStatus Load(char kind, const char* name, KaipImgInfo* img)
{
    return kind == 'B'   ? KaipLoadFromBmp(name, img, 0)
           : kind == 'T' ? KaipLoadFromTiff(name, img)
                         : KaipLoadFromJpeg(name, img, KaipOption_ReallocateDst);
}
KaipStatus Save(char kind, const char* name, const KaipImgInfo* img, uint32_t option)
{
    return kind == 'B'   ? KaipSaveToBmp(name, img, option)
           : kind == 'T' ? KaipSaveToTiff(name, img, option)
                         : KaipSaveToJpeg(name, img, option);
}

const std::vector<ImageFunction>& ImageFunctions()
{
    using I = KaipImgInfo*;
    // clang-format off
    static const std::vector<ImageFunction> functions = {
        {"KaipConvertToPixelFormat", kMono8, kBGR8, true, false,
         [](I s, I d, uint32_t o) { return KaipConvertToPixelFormat(s, d, kBGR8, o); }},
        {"KaipBdShowMosaic", KaipPixelFormat_BayerRG8, kBGR8, true, false,
         [](I s, I d, uint32_t o) { return KaipBdShowMosaic(s, d, kBGR8, o); }},
        {"KaipBdGreenToGreyscale", KaipPixelFormat_BayerGB8, kMono8, true, false,
         [](I s, I d, uint32_t o) { return KaipBdGreenToGreyscale(s, d, kMono8, o); }},
        {"KaipBdNearestNeighbour", KaipPixelFormat_BayerGR8, KaipPixelFormat_RGB8Packed, true, false,
         [](I s, I d, uint32_t o) { return KaipBdNearestNeighbour(s, d, KaipPixelFormat_RGB8Packed, o, nullptr); }},
        {"KaipBdBilinearInterpolation", KaipPixelFormat_BayerBG8, kBGRA8, true, false,
         [](I s, I d, uint32_t o) { return KaipBdBilinearInterpolation(s, d, kBGRA8, o, KaipHLut(1)); }},
        {"KaipBdVariableGradients", KaipPixelFormat_BayerGR8, kBGR8, true, false,
         [](I s, I d, uint32_t o) { return KaipBdVariableGradients(s, d, kBGR8, o, nullptr); }},
        {"KaipBdPixelGrouping", KaipPixelFormat_BayerGB8, kBGRA8, true, false,
         [](I s, I d, uint32_t o) { return KaipBdPixelGrouping(s, d, kBGRA8, o, KaipHLut(1)); }},
        {"KaipBdBilinearColorCorrection", KaipPixelFormat_BayerRG8, kBGR8, true, false,
         [](I s, I d, uint32_t o) { return KaipBdBilinearColorCorrection(s, d, kBGR8, o, nullptr); }},
        {"KaipMirror", kBGR8, kBGR8, false, false,
         [](I s, I d, uint32_t o) { return KaipMirror(s, d, 1, 1, o, nullptr); }},
        {"KaipReverseLines", KaipPixelFormat_Mono16, KaipPixelFormat_Mono16, false, false,
         [](I s, I d, uint32_t o) { return KaipReverseLines(s, d, o); }},
        {"KaipReverseLinesFast", kMono8, kMono8, false, false,
         [](I s, I d, uint32_t o) { return KaipReverseLinesFast(s, d, nullptr, o); }},
        {"KaipRotate90AndMirror", kBGRA8, kBGRA8, true, true,
         [](I s, I d, uint32_t o) { return KaipRotate90AndMirror(s, d, 1, 0, 1, o, nullptr); }},
        {"KaipDeinterlace", KaipPixelFormat_BGR565Packed, KaipPixelFormat_BGR565Packed, false, false,
         [](I s, I d, uint32_t o) { return KaipDeinterlace(s, d, o); }},
        {"KaipCopyArea", kMono8, kMono8, true, false,
         [](I s, I d, uint32_t o) { return KaipCopyArea(s, d, 0, 0, kW, kH, o); }},
        {"KaipApplyLut", KaipPixelFormat_RGB8Packed, KaipPixelFormat_RGB8Packed, false, false,
         [](I s, I d, uint32_t o) { return KaipApplyLut(s, d, nullptr, o); }},
        {"KaipApplyRgbColorCorrection", kBGR8, kBGR8, false, false,
         [](I s, I d, uint32_t o) { return KaipApplyRgbColorCorrection(s, d, kIdentity, o, nullptr); }},
        {"KaipApply3x3Convolution", kMono8, kMono8, true, false,
         [](I s, I d, uint32_t o) { return KaipApply3x3Convolution(s, d, kIdentity, o, nullptr); }},
        {"Kaip3x3ThresholdSharpening", kMono8, kMono8, true, false,
         [](I s, I d, uint32_t o) { return Kaip3x3ThresholdSharpening(s, d, kIdentity, 3, o, nullptr); }},
        // The source is its own black and white reference (it outlives the call).
        {"KaipApplyShadingCorrection", kMono8, kMono8, false, false,
         [](I s, I d, uint32_t o) { return KaipApplyShadingCorrection(s, s, s, d, o); }},
        // The source-only functions; the savers refuse colour planes themselves.
        {"KaipCalcWbFactors", kBGR8, 0, false, false,
         [](I s, I, uint32_t) {
             uint32_t r = 1000, g = 1000, b = 1000;
             return KaipCalcWbFactors(s, &r, &g, &b, 0);
         },
         KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT, KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED},
        {"KaipSaveToBmp", kBGR8, 0, false, false,
         [](I s, I, uint32_t) { return KaipSaveToBmp((kTmp + "hostile.bmp").c_str(), s, 0); }, 0,
         KASTATUS_KAIP_NOT_SUPPORTED},
        {"KaipSaveToTiff", KaipPixelFormat_Mono12, 0, false, false,
         [](I s, I, uint32_t) { return KaipSaveToTiff((kTmp + "hostile.tif").c_str(), s, 0); }, 0,
         KASTATUS_KAIP_NOT_SUPPORTED},
        {"KaipSaveToJpeg", KaipPixelFormat_RGB8Packed, 0, false, false,
         [](I s, I, uint32_t) { return KaipSaveToJpeg((kTmp + "hostile.jpg").c_str(), s, 80); }, 0,
         KASTATUS_KAIP_NOT_SUPPORTED},
    };
    // clang-format on
    return functions;
}

// The hostile variants every function meets, with the status the common checks give. The Bayer
// decoders and the white balance look at the format first, so their unknown and zero formats are
// not Bayer.
void AddImageCases(std::vector<Case>& cases)
{
    for (const ImageFunction& f : ImageFunctions()) {
        const bool bayer =
            std::strncmp(f.name, "KaipBd", 6) == 0 || f.unknownFormat == KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT;
        const bool sourceOnly = f.dstFormat == 0;
        const KaipStatus unknownFormat = f.unknownFormat ? f.unknownFormat
                                         : bayer         ? KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT
                                                         : KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT;
        const uint32_t dstFormat = sourceOnly ? f.srcFormat : f.dstFormat;
        auto add = [&](const std::string& what, KaipStatus expected, std::function<void(Images&)> spoil,
                       bool withDst = true, uint32_t options = 0) {
            cases.push_back({std::string(f.name) + "_" + what, expected, [f, dstFormat, spoil, withDst, options] {
                                 Images images(f.srcFormat, dstFormat);
                                 spoil(images);
                                 KaipImgInfo* dst =
                                     withDst ? (f.rotated ? &images.rot.info : &images.dst.info) : nullptr;
                                 const KaipStatus status = f.call(&images.src.info, dst, options);
                                 if (!images.Untouched()) ADD_FAILURE() << "bytes changed";
                                 return status;
                             }});
        };
        cases.push_back({std::string(f.name) + "_NullSource", KASTATUS_KAIP_INVALID_SRC_POINTER, [f, dstFormat] {
                             Images images(f.srcFormat, dstFormat);
                             return f.call(nullptr, &images.dst.info, 0);
                         }});
        add("ZeroWidth", KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED, [](Images& i) { i.src.info.Width = 0; });
        add("ZeroHeight", KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED, [](Images& i) { i.src.info.Height = 0; });
        add("ZeroLineIncrement", KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED,
            [](Images& i) { i.src.info.LineIncrement = 0; });
        add("ZeroFormat", bayer ? unknownFormat : KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED,
            [](Images& i) { i.src.info.PixelFormat = 0; });
        add("UnknownFormat", unknownFormat, [](Images& i) { i.src.info.PixelFormat = kUnknownFormat; });
        add("NullData", KASTATUS_KAIP_SRC_NOT_ALLOCATED, [](Images& i) { i.src.info.pData = nullptr; });
        // The Bayer decoders read a mosaic through pData whatever the flags say.
        add("ColourPlanes",
            f.planes ? f.planes
            : bayer  ? KASTATUS_KAIP_SRC_NOT_ALLOCATED
                     : KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED,
            [](Images& i) { i.UsePlanes(); });
        if (sourceOnly) continue;
        add("ColourPlanesMissing", KASTATUS_KAIP_SRC_NOT_ALLOCATED, [](Images& i) {
            i.UsePlanes();
            i.src.info.pDataB = nullptr;
        });
        if (f.dstRequired)
            add(
                "NullDestination", KASTATUS_KAIP_INVALID_DST_POINTER, [](Images&) {}, false);
        add("DestinationNoData", KASTATUS_KAIP_DST_NOT_ALLOCATED,
            [](Images& i) { i.dst.info.pData = i.rot.info.pData = nullptr; });
        // The area copy measures the clipped rectangle itself.
        const bool area = std::strcmp(f.name, "KaipCopyArea") == 0;
        add("DestinationOtherSize",
            f.rotated ? KASTATUS_KAIP_INCOMPATIBLE_ROTATED_SIZE
            : area    ? KASTATUS_KAIP_INCOMPATIBLE_DST
                      : KASTATUS_KAIP_INCOMPATIBLE_SIZE,
            [](Images& i) {
                i.dst.info.Height -= 1;
                i.rot.info.Width -= 1;
            });
        // Huge sizes with the rebuild allowed: the destination's line or buffer would not fit in
        // 32 bits, so the rebuild fails before a pixel is read (the source holds six short lines).
        // The area copy clips the rectangle to the source first and needs no rebuild; the shading
        // correction measures its references (here the source) before it rebuilds.
        const bool lineWraps = !f.rotated && uint64_t(Bytes(f.dstFormat)) * 0x80000000u > UINT32_MAX;
        if (!area && std::strcmp(f.name, "KaipApplyShadingCorrection") != 0)
            add(
                "HugeSizeRebuilt", lineWraps ? KASTATUS_KAIP_NOT_SUPPORTED : KASTATUS_KAIP_MEMORY_ALLOC_FAILED,
                [](Images& i) {
                    i.src.info.Width = 0x80000000u;
                    i.src.info.Height = 0x10000u;
                },
                true, KaipOption_ReallocateDst);
        // The source as its own destination: where the call would rebuild the destination (a
        // format or shape of its own) the rebuild would free the source under the reader, so it is
        // refused; elsewhere the call works on the one buffer.
        const bool rebuilds = f.rotated || f.srcFormat != f.dstFormat;
        cases.push_back(
            {std::string(f.name) + "_SourceAsDestination", rebuilds ? KASTATUS_KAIP_INCOMPATIBLE_DST : 0, [f] {
                 KaipImgInfo img{};
                 KaipInitImgInfo(&img, kW, kH, f.srcFormat, 0);
                 KaipAllocateImageData(&img);
                 FillRandom(img.pData, KaipGetImageDataSize(&img), 3);
                 const KaipImgInfo before = img;
                 const KaipStatus status = f.call(&img, &img, KaipOption_ReallocateDst);
                 if (status != 0 && std::memcmp(&before, &img, sizeof img) != 0) ADD_FAILURE() << "descriptor changed";
                 KaipDeallocateImageData(&img);
                 return status;
             }});
        // A misfit destination is rebuilt with the option: the source's size (turned for the quarter turn),
        // the function's format and the options' alignment and line order as flags (line reversal then
        // marks it bottom-up too, the source being top-down).
        cases.push_back({std::string(f.name) + "_MisfitRebuilt", 0, [f] {
                             Images images(f.srcFormat, f.dstFormat);
                             KaipImgInfo dst{};
                             KaipInitImgInfo(&dst, 2, 1, KaipPixelFormat_Mono16, 0);
                             KaipAllocateImageData(&dst);
                             const KaipStatus status =
                                 f.call(&images.src.info, &dst,
                                        KaipOption_ReallocateDst | KaipImgFlag_Align16 | KaipImgFlag_BottomUp);
                             const uint32_t w = f.rotated ? kH : kW, h = f.rotated ? kW : kH;
                             if (dst.Width != w || dst.Height != h || dst.PixelFormat != f.dstFormat ||
                                 dst.LineIncrement != (w * Bytes(f.dstFormat) + 15) / 16 * 16 ||
                                 dst.Flags != (KaipImgFlag_Align16 | KaipImgFlag_DataAllocated | KaipImgFlag_BottomUp))
                                 ADD_FAILURE() << "rebuilt as " << dst.Width << "x" << dst.Height << " format 0x"
                                               << std::hex << dst.PixelFormat << " line " << std::dec
                                               << dst.LineIncrement << " flags 0x" << std::hex << dst.Flags;
                             KaipDeallocateImageData(&dst);
                             return status;
                         }});
    }
}

// Every other argument that can be hostile: null pointers, impossible sizes, unknown selectors,
// LUT handles of the wrong kind, files that are not there or not files.
void AddArgumentCases(std::vector<Case>& cases)
{
    auto add = [&](const std::string& name, KaipStatus expected, std::function<KaipStatus()> call) {
        cases.push_back({name, expected, std::move(call)});
    };
    add("KaipAllocateImageData_PlanesBeyond32Bits", KASTATUS_KAIP_MEMORY_ALLOC_FAILED, [] {
        KaipImgInfo img{};
        KaipInitImgInfo(&img, 0x10000u, 0x10001u, KaipPixelFormat_Mono8, KaipImgFlag_ColorPlanes);
        const KaipStatus status = KaipAllocateImageData(&img);
        return img.pDataR || img.pDataG || img.pDataB ? 0 : status;
    });
    add("KaipCanConvertToPixelFormat_Unknown", 0,
        [] { return KaipStatus(KaipCanConvertToPixelFormat(kUnknownFormat, KaipPixelFormat_Mono8)); });
    add("KaipConvertToPixelFormat_ShortDestinationLine", KASTATUS_KAIP_INCOMPATIBLE_SIZE, [] {
        Images images(KaipPixelFormat_Mono8, KaipPixelFormat_BGR8Packed);
        images.dst.info.LineIncrement = kW * 3 - 1;
        const KaipStatus status =
            KaipConvertToPixelFormat(&images.src.info, &images.dst.info, KaipPixelFormat_BGR8Packed, 0);
        return images.Untouched() ? status : -1;
    });
    add("KaipConvertToPixelFormat_UnknownTarget", KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, [] {
        Images images(KaipPixelFormat_Mono8, KaipPixelFormat_BGR8Packed);
        return KaipConvertToPixelFormat(&images.src.info, &images.dst.info, kUnknownFormat, KaipOption_ReallocateDst);
    });
    add("KaipConvertToPixelFormat_RebuildAsPlanes", KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED, [] {
        Images images(KaipPixelFormat_Mono8, KaipPixelFormat_BGR8Packed);
        KaipImgInfo dst{};
        return KaipConvertToPixelFormat(&images.src.info, &dst, KaipPixelFormat_BGR8Packed,
                                        KaipOption_ReallocateDst | KaipImgFlag_ColorPlanes);
    });
    // Builder parameters are not range-checked: extremes saturate without overflow.
    add("KaipLutBuilders_ExtremeParameters", 0, [] {
        KaipHLut h = KaipAllocateLut(KAIP_LUT_ALL_DEPTHS | KAIP_LUT_BAYER | KAIP_LUT_BAYER_16);
        KaipStatus status = 0;
        for (uint32_t gamma : {0u, 1u, 9u, 10u, 0xFFFFFFFFu}) status |= KaipAddGammaToLut(gamma, h);
        status |= KaipAddWbToLut(0xFFFFFFFFu, 0, 0x80000000u, h);
        for (int32_t v : {INT32_MIN, -1, INT32_MAX}) {
            status |= KaipAddOffsetAndGainToLut(v, v, h);
            status |= KaipAddBrightnessAndContrastToLut(v, -v - 1, h);
        }
        KaipFreeLut(h);
        return status;
    });
    // Files: names that are null, missing, folders or devices, and saves that cannot be made.
    for (const char* name : {"KaipLoadFromBmp", "KaipLoadFromTiff", "KaipLoadFromJpeg"}) {
        const char kind = name[12];
        add(std::string(name) + "_NullDescriptor", KASTATUS_KAIP_INVALID_DST_POINTER,
            [kind] { return Load(kind, "/dev/null", nullptr); });
        for (const auto& [what, path] : {std::pair<const char*, const char*>{"NullName", nullptr},
                                         {"Missing", "/nonexistent/kaip.img"},
                                         {"Folder", "/"},
                                         {"Device", "/dev/zero"},
                                         {"Empty", "/dev/null"}})
            add(std::string(name) + "_" + what, KASTATUS_KAIP_CANNOT_OPEN_READ_FILE, [kind, path = path] {
                KaipImgInfo img{};
                const KaipStatus status = Load(kind, path, &img);
                return img.pData ? -1 : status;
            });
    }
    const struct {
        const char* name;
        uint32_t format, option;
    } savers[] = {{"KaipSaveToBmp", kBGR8, 0},
                  {"KaipSaveToTiff", KaipPixelFormat_Mono16, KaipTiffOption_Scale16},
                  {"KaipSaveToJpeg", kMono8, 1000}};
    for (const auto& s : savers)
        for (const auto& [what, path] : {std::pair<const char*, const char*>{"NullName", nullptr},
                                         {"MissingFolder", "/nonexistent/kaip.img"},
                                         {"Folder", "/"},
                                         {"FullDevice", "/dev/full"}})
            // A device is written in place; libjpeg reports the failed write itself.
            add(std::string(s.name) + "_" + what,
                s.name[10] == 'J' && std::strcmp(what, "FullDevice") == 0 ? KASTATUS_KAIP_JPEG_SAVE_FAILED
                                                                          : KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE,
                [s, path = path] {
                    Images images(s.format, s.format);
                    return Save(s.name[10], path, &images.src.info, s.option);
                });
}

std::vector<Case> AllCases()
{
    std::vector<Case> cases;
    AddImageCases(cases);
    AddArgumentCases(cases);
    return cases;
}

class Hostile : public testing::TestWithParam<Case> {};

TEST_P(Hostile, ReturnsItsStatusAndTouchesNothing)
{
    EXPECT_EQ(GetParam().call(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(All, Hostile, testing::ValuesIn(AllCases()),
                         [](const testing::TestParamInfo<Case>& info) { return info.param.name; });

// Every loader meets every truncation of a small valid file (each must be refused with its status;
// the BMP and TIFF loaders read the whole file before allocating) and each of its header bytes set to
// 0x00 and to 0xFF (each must give a status); whatever was allocated is released, so that
// LeakSanitizer sees every failure path. A TIFF cut inside its directory (which ends where the pixels
// start) is invalid, elsewhere unreadable.
struct FileKind {
    const char* name;  // its first letter picks the saver and the loader
    uint32_t format, saveOption;
    size_t directoryEnd;
    KaipStatus cutInDirectory, cut;
    bool allocatesLate;  // a refused load allocates nothing
};

void PrintTo(const FileKind& kind, std::ostream* os)
{
    *os << kind.name;
}

KaipStatus LoadAndRelease(const FileKind& kind, const std::string& path)
{
    KaipImgInfo img{};
    img.PixelFormat = KaipPixelFormat_RGB8Packed;  // how a colour TIFF is delivered
    const KaipStatus status = Load(kind.name[0], path.c_str(), &img);
    if (status != 0 && img.pData && kind.allocatesLate) ADD_FAILURE() << kind.name << ": a refused load allocated";
    KaipDeallocateImageData(&img);
    return status;
}

class HostileFile : public testing::TestWithParam<FileKind> {};

TEST_P(HostileFile, EveryTruncationIsRefusedAndEveryCorruptionGivesAStatus)
{
    const FileKind& kind = GetParam();
    KaipImgInfo img{};
    ASSERT_EQ(KaipInitImgInfo(&img, 7, 5, kind.format, KaipImgFlag_Align4), 0);
    ASSERT_EQ(KaipAllocateImageData(&img), 0);
    FillRandom(img.pData, KaipGetImageDataSize(&img), 5);
    const std::string good = kTmp + "hostile_good_" + kind.name, bad = kTmp + "hostile_bad_" + kind.name;
    ASSERT_EQ(Save(kind.name[0], good.c_str(), &img, kind.saveOption), 0);
    KaipDeallocateImageData(&img);
    const std::vector<uint8_t> bytes = filetest::ReadBytes(good);
    ASSERT_FALSE(bytes.empty());
    ASSERT_EQ(LoadAndRelease(kind, good), 0);

    for (size_t n = 0; n < bytes.size(); ++n) {
        filetest::WriteBytes(bad, std::vector<uint8_t>(bytes.begin(), bytes.begin() + std::ptrdiff_t(n)));
        EXPECT_EQ(LoadAndRelease(kind, bad), n >= 8 && n < kind.directoryEnd ? kind.cutInDirectory : kind.cut)
            << kind.name << " truncated to " << n << " bytes";
    }
    // Every header byte, then every 16th byte of the data.
    for (size_t i = 0; i < bytes.size(); i += i < 160 ? 1 : 16)
        for (uint8_t value : {uint8_t(0x00), uint8_t(0xFF)}) {
            filetest::WriteBytes(bad, filetest::With(bytes, i, value, 1));
            const KaipStatus status = LoadAndRelease(kind, bad);
            EXPECT_TRUE(status == 0 ||
                        (status >= KASTATUS_KAIP_INVALID_POINTER && status <= KASTATUS_KAIP_JPEG_LOAD_FAILED))
                << kind.name << " byte " << i << " = " << int(value) << ": " << status;
        }
    std::remove(good.c_str());
    std::remove(bad.c_str());
}

constexpr KaipStatus kInvalidTiff = KASTATUS_KAIP_INVALID_TIFF_FILE, kUnreadable = KASTATUS_KAIP_CANNOT_OPEN_READ_FILE;
INSTANTIATE_TEST_SUITE_P(
    Loaders, HostileFile,
    testing::Values(FileKind{"Bmp", kBGR8, KaipBmpOption_BottomUpFile, 0, 0, kUnreadable, true},
                    FileKind{"Tiff", KaipPixelFormat_Mono12, 0, 210, kInvalidTiff, kUnreadable, true},
                    FileKind{"TiffColour", KaipPixelFormat_RGB8Packed, 0, 228, kInvalidTiff, kUnreadable, true},
                    FileKind{"Jpeg", KaipPixelFormat_RGB8Packed, 90, 0, 0, KASTATUS_KAIP_JPEG_LOAD_FAILED, false}),
    [](const testing::TestParamInfo<FileKind>& info) { return std::string(info.param.name); });

}  // namespace
