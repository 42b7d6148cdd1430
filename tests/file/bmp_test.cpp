// bmp_test.cpp: bitmap descriptors, the exact bytes of saved BMP files, loading, and hostile files.
#include <sys/stat.h>

#include <cstring>
#include <random>

#include "file/file.h"
#include "file_test_util.h"
#include "platform/os_buffer.h"

using namespace filetest;

namespace {

// The DIB-compatible formats, then two a bitmap cannot hold (converted to BGR8 and Mono8 before
// saving), with their pixel increment, file bit count, pixel offset (a grey ramp follows the header of
// 8-bit files, three masks that of BGR565) and the format a load gives.
struct TBmpFormat {
    uint32_t format, pixelIncrement, bitCount, offBits, loadFormat;
};
const TBmpFormat kFormats[] = {
    {KaipPixelFormat_Mono8, 1, 8, 1078, KaipPixelFormat_Mono8},
    {KaipPixelFormat_BayerRG8, 1, 8, 1078, KaipPixelFormat_Mono8},
    {KaipPixelFormat_BGR555, 2, 16, 54, KaipPixelFormat_BGR555},
    {KaipPixelFormat_BGR565Packed, 2, 16, 66, KaipPixelFormat_BGR565Packed},
    {KaipPixelFormat_BGR8Packed, 3, 24, 54, KaipPixelFormat_BGR8Packed},
    {KaipPixelFormat_BGRA8Packed, 4, 32, 54, KaipPixelFormat_BGRA8Packed},
    {KaipPixelFormat_RGB8Packed, 3, 24, 54, KaipPixelFormat_BGR8Packed},
    {KaipPixelFormat_Mono12, 2, 8, 1078, KaipPixelFormat_Mono8},
};

uint32_t Align4(uint32_t n)
{
    return (n + 3) & ~3u;
}

// Picture row r as the file holds it: RGB turned to BGR, 12-bit grey cut to its top 8 bits.
std::vector<uint8_t> FileRow(const TestImage& src, const TBmpFormat& f, uint32_t r)
{
    const uint8_t* p = src.Row(r);
    std::vector<uint8_t> row(p, p + src.info.Width * f.pixelIncrement);
    for (size_t i = 0; f.format == KaipPixelFormat_RGB8Packed && i < row.size(); i += 3) std::swap(row[i], row[i + 2]);
    for (size_t i = 0; f.format == KaipPixelFormat_Mono12 && i < src.info.Width; ++i)
        row[i] = uint8_t(p[2 * i] >> 4 | p[2 * i + 1] << 4);
    row.resize(src.info.Width * f.bitCount / 8);
    return row;
}

// The file the save must produce, from the format's own rules. care[i] is 0 for bytes nobody
// defines (the padding of a converted copy).
struct TExpected {
    std::vector<uint8_t> bytes, care;
};

TExpected ExpectedBmp(const TestImage& src, const TBmpFormat& f, uint32_t options)
{
    const KaipImgInfo& s = src.info;
    const uint32_t lineBytes = s.Width * f.bitCount / 8, fileLine = Align4(lineBytes);
    const bool converted = s.LineIncrement != fileLine || f.format == KaipPixelFormat_RGB8Packed ||
                           f.format == KaipPixelFormat_Mono12;  // the copy's line padding is its own
    const bool fileBottomUp = (!converted && (s.Flags & KaipImgFlag_BottomUp)) || (options & 2);
    const uint32_t headerSize = 40 + (f.bitCount == 8 ? 1024 : 0) + (f.format == KaipPixelFormat_BGR565Packed ? 12 : 0);
    const uint32_t imageSize = fileLine * s.Height;
    TExpected e;
    e.bytes.assign(14 + headerSize, 0);
    std::vector<uint8_t>& b = e.bytes;
    b[0] = 'B', b[1] = 'M';
    Put32(b, 2, 14 + headerSize + imageSize);
    Put32(b, 10, 14 + headerSize);
    Put32(b, 14, 40);
    Put32(b, 18, s.Width);
    Put32(b, 22, fileBottomUp ? s.Height : uint32_t(-int32_t(s.Height)));
    Put16(b, 26, 1);
    Put16(b, 28, f.bitCount);
    Put32(b, 30, f.format == KaipPixelFormat_BGR565Packed ? 3 : 0);
    Put32(b, 34, imageSize);
    Put32(b, 38, 9600);
    Put32(b, 42, 9600);
    if (f.bitCount == 8)
        for (uint32_t i = 0; i < 256; ++i) b[54 + 4 * i] = b[55 + 4 * i] = b[56 + 4 * i] = uint8_t(i);
    if (f.format == KaipPixelFormat_BGR565Packed) Put32(b, 54, 0xF800), Put32(b, 58, 0x07E0), Put32(b, 62, 0x001F);
    e.care.assign(b.size(), 1);
    for (uint32_t k = 0; k < s.Height; ++k) {
        const uint32_t r = fileBottomUp ? s.Height - 1 - k : k;
        const std::vector<uint8_t> row = FileRow(src, f, r);
        b.insert(b.end(), row.begin(), row.end());
        b.insert(b.end(), src.Row(r) + lineBytes, src.Row(r) + (converted ? lineBytes : fileLine));
        b.resize(b.size() + (converted ? fileLine - lineBytes : 0), 0);
        e.care.resize(b.size() - (fileLine - lineBytes), 1);
        e.care.resize(b.size(), converted ? 0 : 1);
    }
    return e;
}

void ExpectBytes(const TExpected& e, const std::vector<uint8_t>& actual)
{
    ASSERT_EQ(e.bytes.size(), actual.size());
    for (size_t i = 0; i < actual.size(); ++i)
        if (e.care[i] && e.bytes[i] != actual[i])
            FAIL() << "byte " << i << " is " << int(actual[i]) << ", expected " << int(e.bytes[i]);
}

}  // namespace

TEST(BmpInfo, ImgInfoToBmpInfoRefusals)
{
    tagBITMAPINFO bmi{};
    KaipImgInfo img{};
    ASSERT_EQ(0, KaipInitImgInfo(&img, 5, 2, KaipPixelFormat_Mono8, 0));  // line increment 5
    EXPECT_EQ(KASTATUS_KAIP_INVALID_POINTER, KaipImgInfoToBmpInfo(nullptr, &bmi));
    EXPECT_EQ(KASTATUS_KAIP_INVALID_POINTER, KaipImgInfoToBmpInfo(&img, nullptr));
    EXPECT_EQ(KASTATUS_KAIP_INCOMPATIBLE_LINE_INCREMENT, KaipImgInfoToBmpInfo(&img, &bmi));
    ASSERT_EQ(0, KaipInitImgInfo(&img, 5, 2, KaipPixelFormat_RGB8Packed, KaipImgFlag_Align4));
    EXPECT_EQ(KASTATUS_KAIP_INCOMPATIBLE_PIXEL_FORMAT, KaipImgInfoToBmpInfo(&img, &bmi));
    EXPECT_EQ(40u, bmi.bmiHeader.biSize);  // the common fields are already written
    img.Height = 0x80000000u;
    EXPECT_EQ(KASTATUS_KAIP_INCOMPATIBLE_SIZE, KaipImgInfoToBmpInfo(&img, &bmi));
    // The descriptors it gives are pinned byte for byte by BmpFile.ExactBytesAndRoundTrips.
}

TEST(BmpInfo, BmpInfoToImgInfo)
{
    struct {
        uint32_t size;
        uint16_t bitCount;
        uint32_t compression;
        int32_t width, height;
        KaipStatus status;
        uint32_t format, flags, lineIncrement;
    } const cases[] = {
        // Every format and orientation the saver writes is also loaded by BmpFile.ExactBytesAndRoundTrips.
        {40, 8, 0, 5, 0, 0, KaipPixelFormat_Mono8, 4, 8},
        {40, 24, 3, 2, 2, 0, KaipPixelFormat_BGR8Packed, 6, 8},
        {12, 8, 0, 4, 4, KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER, 0, 0, 0},
        {40, 8, 1, 4, 4, KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER, 0, 0, 0},
        {40, 12, 0, 4, 4, KASTATUS_KAIP_INVALID_PIXEL_FORMAT, 0, 0, 0},
        {40, 32, 0, 0x7FFFFFFF, 0x7FFFFFFF, KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER, 0, 0, 0},
        {40, 8, 0, -4, 4, KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER, 0, 0, 0},
        {40, 24, 0, 5, INT32_MIN, KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER, 0, 0, 0},  // a height that cannot be negated
    };
    for (const auto& c : cases) {
        tagBITMAPINFO bmi{};
        bmi.bmiHeader = {c.size, c.width, c.height, 1, c.bitCount, c.compression, 0, 0, 0, 0, 0};
        KaipImgInfo img{};
        uint8_t sentinel;
        img.pData = &sentinel;
        ASSERT_EQ(c.status, KaipBmpInfoToImgInfo(&bmi, &img)) << c.bitCount << " " << c.width << "x" << c.height;
        EXPECT_EQ(&sentinel, img.pData);  // nothing allocated, pData untouched
        if (c.status == KASTATUS_KAIP_INVALID_PIXEL_FORMAT) {
            EXPECT_EQ(4u, img.Width);  // set before the bit count
        }
        if (c.status) continue;
        EXPECT_EQ(uint32_t(c.width), img.Width);
        EXPECT_EQ(uint32_t(std::abs(c.height)), img.Height);
        EXPECT_EQ(c.format, img.PixelFormat);
        EXPECT_EQ(c.flags, img.Flags);
        EXPECT_EQ(c.lineIncrement, img.LineIncrement);
    }
    tagBITMAPINFO bmi{};
    KaipImgInfo img{};
    EXPECT_EQ(KASTATUS_KAIP_INVALID_POINTER, KaipBmpInfoToImgInfo(nullptr, &img));
    EXPECT_EQ(KASTATUS_KAIP_INVALID_POINTER, KaipBmpInfoToImgInfo(&bmi, nullptr));
}

// Every DIB format and two that are converted first, both orientations, with and without option 2,
// lines aligned or padded further (then copied to aligned lines first): the file against the model,
// byte for byte, and the load in every line order against the source picture.
TEST(BmpFile, ExactBytesAndRoundTrips)
{
    TempDir dir;
    const std::string path = dir / "a.bmp";
    const uint32_t seed = 20261121;
    std::mt19937 gen(seed);
    int cases = 0;
    for (const TBmpFormat& f : kFormats) {
        for (int trial = 0; trial < 24; ++trial) {
            const uint32_t w = 1 + gen() % 13, h = 1 + gen() % 5;
            const bool padded = (f.pixelIncrement == 1 || f.pixelIncrement == 3) && trial % 3 == 2;
            const uint32_t lineInc = Align4(w * f.pixelIncrement) + (padded ? 4 * (1 + gen() % 2) : 0);
            const uint32_t flags = (trial & 1) ? KaipImgFlag_BottomUp : 0, options = (trial & 2) ? 2 : 0;
            TestImage src(w, h, f.format, f.pixelIncrement, lineInc, flags, seed + cases++);
            const std::vector<uint8_t> before = Bytes(src);
            SCOPED_TRACE(testing::Message() << "seed " << seed << " format " << f.format << " " << w << "x" << h
                                            << " flags " << flags << " options " << options << " lineInc " << lineInc);
            ASSERT_EQ(0, KaipSaveToBmp(path.c_str(), &src.info, options));
            ExpectBytes(ExpectedBmp(src, f, options), ReadBytes(path));
            EXPECT_EQ(f.offBits, Le32(ReadBytes(path), 10));
            EXPECT_TRUE(std::equal(before.begin(), before.end(), src.buffer.data())) << "source changed";

            // A flip while reading when option 2 meets a bottom-up file or 0x8000 a top-down one; 0x8000
            // marks the image bottom-up, option 2 alone top-down.
            const bool fileBottomUp = ReadBytes(path)[25] < 0x80;
            for (uint32_t loadOptions : {0u, 2u, 0x8000u, 0x8002u}) {
                Loaded img;
                ASSERT_EQ(0, KaipLoadFromBmp(path.c_str(), &img.info, loadOptions));
                EXPECT_EQ(f.loadFormat, img.info.PixelFormat);
                EXPECT_EQ(w, img.info.Width);
                EXPECT_EQ(h, img.info.Height);
                EXPECT_EQ(Align4(w * f.bitCount / 8), img.info.LineIncrement);
                const bool flip = (loadOptions & (fileBottomUp ? 2 : 0x8000)) != 0;
                const bool bottomUp = (loadOptions & 0x8000) || (loadOptions == 0 && fileBottomUp);
                EXPECT_EQ(KaipImgFlag_Align4 | KaipImgFlag_DataAllocated | (bottomUp ? KaipImgFlag_BottomUp : 0),
                          img.info.Flags)
                    << "load options " << loadOptions;
                for (uint32_t r = 0; r < h; ++r) {
                    const uint32_t line = bottomUp ? h - 1 - r : r, fileLine = flip ? h - 1 - line : line;
                    ASSERT_EQ(
                        FileRow(src, f, fileBottomUp ? h - 1 - fileLine : fileLine),
                        std::vector<uint8_t>(PictureRow(img.info, r), PictureRow(img.info, r) + w * f.bitCount / 8))
                        << "load options " << loadOptions << " row " << r;
                }
            }
        }
    }
}

// Null pointers, names that cannot be written and colour planes are refused by every saver alike
// (tests/hostile); a format without a bitmap twin is refused here, leaving no file behind.
TEST(BmpFile, SaveRefusesFormatsWithoutABitmapTwin)
{
    TempDir dir;
    TestImage yuv(4, 4, KaipPixelFormat_YUV422Packed, 2, 8, 0, 3);
    EXPECT_EQ(KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT, KaipSaveToBmp((dir / "x.bmp").c_str(), &yuv.info, 0));
    EXPECT_EQ(0u, dir.Count());
}

// A failed save keeps the old file and leaves no temporary: here the copy of an unaligned
// image cannot be allocated, so the image is written as it is and its padding write fails.
TEST(BmpFile, FailedSaveKeepsTheOldFile)
{
    TempDir dir;
    const std::string path = dir / "keep.bmp";
    WriteBytes(path, {1, 2, 3});
    TestImage src(5, 3, KaipPixelFormat_BGR8Packed, 3, 15, 0, 5);
    oxOsBufferFailAfter(0);
    const KaipStatus status = KaipSaveToBmp(path.c_str(), &src.info, 0);
    oxOsBufferFailAfter(-1);
    EXPECT_EQ(KASTATUS_KAIP_CANNOT_CREATE_WRITE_FILE, status);
    EXPECT_EQ((std::vector<uint8_t>{1, 2, 3}), ReadBytes(path));
    EXPECT_EQ(1u, dir.Count());
    // The same image with the copy available replaces the file, keeping its permissions.
    chmod(path.c_str(), 0640);
    ASSERT_EQ(0, KaipSaveToBmp(path.c_str(), &src.info, 0));
    EXPECT_EQ(54u + 16 * 3, ReadBytes(path).size());
    struct stat st;
    ASSERT_EQ(0, stat(path.c_str(), &st));
    EXPECT_EQ(0640u, st.st_mode & 0777);
    EXPECT_EQ(1u, dir.Count());
}

TEST(BmpHostile, RefusedBeforeAllocating)
{
    TempDir dir;
    const std::string path = dir / "h.bmp";
    // A valid bottom-up 3x2 file; the fields a loader ignores (image size, resolution, colours used)
    // hold filler, as other writers put their own values there.
    const TestImage src(3, 2, KaipPixelFormat_BGR8Packed, 3, 12, KaipImgFlag_BottomUp, 9);
    std::vector<uint8_t> good = ExpectedBmp(src, kFormats[4], 0).bytes;
    std::fill(good.begin() + 34, good.begin() + 54, 0x5A);
    struct {
        const char* name;
        std::vector<uint8_t> bytes;
        KaipStatus status;
    } const cases[] = {
        {"not BM", With(good, 0, 0x4142, 2), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"OS/2 header", With(good, 14, 12), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"4 bits", With(good, 28, 4, 2), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"12 bits", With(good, 28, 12, 2), KASTATUS_KAIP_INVALID_PIXEL_FORMAT},
        {"run-length", With(good, 30, 1), KASTATUS_KAIP_UNSUPPORTED_BMP_HEADER},
        {"width 0", With(good, 18, 0), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"negative width", With(good, 18, uint32_t(-3)), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"height 0", With(good, 22, 0), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"height INT32_MIN", With(good, 22, 0x80000000u), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"huge", With(With(good, 18, 0x7FFFFFFF), 22, 0x7FFFFFFF), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"wraps at 32 bits", With(With(good, 18, 0x10000), 22, 0x8000), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"huge negative height", With(good, 22, uint32_t(-0x7FFFFFFF)), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"offset inside header", With(good, 10, 30), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"offset past end", With(good, 10, 0xFFFFFFF0u), KASTATUS_KAIP_INVALID_BMP_FILE},
        {"pixels short", With(good, 22, 3), KASTATUS_KAIP_CANNOT_OPEN_READ_FILE},
        {"big but short", With(With(good, 18, 4000), 22, 4000), KASTATUS_KAIP_CANNOT_OPEN_READ_FILE},
    };
    for (const auto& c : cases) {
        WriteBytes(path, c.bytes);
        KaipImgInfo img{};
        img.Width = 77;
        const KaipImgInfo before = img;
        EXPECT_EQ(c.status, KaipLoadFromBmp(path.c_str(), &img, 0)) << c.name;
        EXPECT_EQ(0, std::memcmp(&before, &img, sizeof(img))) << c.name << ": descriptor touched";
    }
}

// The skip rule: an empty bfOffBits puts the pixels right behind the header, the colour table
// and the masks.
TEST(BmpHostile, EmptyOffsetUsesTheSkipRule)
{
    TempDir dir;
    const std::string path = dir / "s.bmp";
    const TestImage src(2, 1, KaipPixelFormat_BGR565Packed, 2, 4, 0, 10);
    WriteBytes(path, With(ExpectedBmp(src, kFormats[3], 0).bytes, 10, 0));
    Loaded img;
    ASSERT_EQ(0, KaipLoadFromBmp(path.c_str(), &img.info, 0));
    EXPECT_EQ(KaipPixelFormat_BGR565Packed, img.info.PixelFormat);
    EXPECT_EQ(0, std::memcmp(src.Row(0), img.info.pData, 4));
}
