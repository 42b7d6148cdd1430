// jpeg_test.cpp: JPEG saving and loading, the libjpeg tools as independent reader and writer, hostile files.
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

// clang-format off
#include <jpeglib.h>  // after <cstdio>: it uses FILE and size_t without declaring them
// clang-format on

#include "file_test_util.h"
#include "platform/os_buffer.h"
#include "support/log_capture.h"

using namespace filetest;

namespace {

// A smooth picture (JPEG keeps it nearly exact) of w x h with the given bytes per pixel.
void FillGradient(TestImage& img, uint32_t pixelIncrement)
{
    for (uint32_t y = 0; y < img.info.Height; ++y)
        for (uint32_t x = 0; x < img.info.Width * pixelIncrement; ++x)
            img.info.pData[size_t(y) * img.info.LineIncrement + x] =
                uint8_t((x / pixelIncrement) * 3 + y * 2 + (x % pixelIncrement) * 40);
}

// A binary PGM or PPM file (the header exactly as djpeg writes it) of the image's pixels without line padding.
std::vector<uint8_t> Pnm(const KaipImgInfo& img, uint32_t channels)
{
    const std::string header =
        (channels == 1 ? "P5\n" : "P6\n") + std::to_string(img.Width) + " " + std::to_string(img.Height) + "\n255\n";
    std::vector<uint8_t> out(header.begin(), header.end());
    for (uint32_t y = 0; y < img.Height; ++y) {
        const uint8_t* row = PictureRow(img, y);
        out.insert(out.end(), row, row + size_t(img.Width) * channels);
    }
    return out;
}

// A CMYK file written straight through libjpeg.
void WriteCmykJpeg(const std::string& path)
{
    jpeg_compress_struct c;
    jpeg_error_mgr err;
    c.err = jpeg_std_error(&err);
    jpeg_create_compress(&c);
    FILE* f = std::fopen(path.c_str(), "wb");
    jpeg_stdio_dest(&c, f);
    c.image_width = 8, c.image_height = 8, c.input_components = 4, c.in_color_space = JCS_CMYK;
    jpeg_set_defaults(&c);
    jpeg_start_compress(&c, TRUE);
    std::vector<uint8_t> line(32, 100);
    while (c.next_scanline < c.image_height) {
        JSAMPROW row = line.data();
        jpeg_write_scanlines(&c, &row, 1);
    }
    jpeg_finish_compress(&c);
    jpeg_destroy_compress(&c);
    std::fclose(f);
}

}  // namespace

// Saving and loading back: the source survives within JPEG's loss, top line first whatever
// the orientation, and the descriptor is rebuilt top-down with 4-byte lines.
TEST(JpegFile, RoundTrips)
{
    TempDir dir;
    const std::string path = dir / "a.jpg";
    struct {
        uint32_t format, pixelIncrement, loadFormat, options;
    } const cases[] = {
        {KaipPixelFormat_Mono8, 1, KaipPixelFormat_Mono8, 0x1000},
        {KaipPixelFormat_RGB8Packed, 3, KaipPixelFormat_RGB8Packed, 0x1000},
        {KaipPixelFormat_BGR8Packed, 3, KaipPixelFormat_BGR8Packed, 0x5000},
    };
    for (const auto& c : cases) {
        for (uint32_t flags : {0u, uint32_t(KaipImgFlag_BottomUp)}) {
            TestImage src(37, 21, c.format, c.pixelIncrement, 37 * c.pixelIncrement, flags, 1);
            FillGradient(src, c.pixelIncrement);
            ASSERT_EQ(0, KaipSaveToJpeg(path.c_str(), &src.info, 100));
            Loaded img;
            ASSERT_EQ(0, KaipLoadFromJpeg(path.c_str(), &img.info, c.options));
            EXPECT_EQ(c.loadFormat, img.info.PixelFormat);
            EXPECT_EQ(37u, img.info.Width);
            EXPECT_EQ(21u, img.info.Height);
            EXPECT_EQ(uint32_t(KaipImgFlag_Align4 | KaipImgFlag_DataAllocated), img.info.Flags);
            EXPECT_EQ((37 * c.pixelIncrement + 3) & ~3u, img.info.LineIncrement);
            int worst = 0;
            for (uint32_t y = 0; y < 21; ++y)
                for (uint32_t x = 0; x < 37 * c.pixelIncrement; ++x)
                    worst = std::max(worst, std::abs(int(src.Row(y)[x]) - int(PictureRow(img.info, y)[x])));
            EXPECT_LE(worst, 6) << c.format << " flags " << flags;
        }
    }
}

// Conversions before saving and line order give the very same files as their plain twins.
TEST(JpegFile, SameFileAsThePlainTwin)
{
    TempDir dir;
    TestImage rgb(10, 6, KaipPixelFormat_RGB8Packed, 3, 30, 0, 21),
        bgr(10, 6, KaipPixelFormat_BGR8Packed, 3, 30, 0, 24), bgra(10, 6, KaipPixelFormat_BGRA8Packed, 4, 40, 0, 25),
        rgba(10, 6, KaipPixelFormat_RGBA8Packed, 4, 40, 0, 26);
    for (size_t i = 0; i < 60; ++i)
        for (size_t c = 0; c < 3; ++c) {
            bgr.info.pData[3 * i + c] = bgra.info.pData[4 * i + c] = rgb.info.pData[3 * i + 2 - c];
            rgba.info.pData[4 * i + c] = rgb.info.pData[3 * i + c];
        }
    TestImage mono(10, 6, KaipPixelFormat_Mono8, 1, 10, 0, 22), bayer(10, 6, KaipPixelFormat_BayerGR8, 1, 10, 0, 22);
    TestImage upside(10, 6, KaipPixelFormat_Mono8, 1, 10, KaipImgFlag_BottomUp, 22);
    for (uint32_t y = 0; y < 6; ++y) std::memcpy(upside.info.pData + (5 - y) * 10, mono.info.pData + y * 10, 10);
    TestImage mono12(10, 6, KaipPixelFormat_Mono12, 2, 20, 0, 23),
        mono8of12(10, 6, KaipPixelFormat_Mono8, 1, 10, 0, 23);
    for (size_t i = 0; i < 60; ++i)
        mono8of12.info.pData[i] = uint8_t((mono12.info.pData[2 * i] | (mono12.info.pData[2 * i + 1] & 15) << 8) >> 4);
    const std::pair<const TestImage*, const TestImage*> twins[] = {
        {&bgr, &rgb}, {&bgra, &rgb}, {&rgba, &rgb}, {&bayer, &mono}, {&upside, &mono}, {&mono12, &mono8of12}};
    for (const auto& t : twins) {
        ASSERT_EQ(0, KaipSaveToJpeg((dir / "a.jpg").c_str(), &t.first->info, 90));
        ASSERT_EQ(0, KaipSaveToJpeg((dir / "b.jpg").c_str(), &t.second->info, 90));
        EXPECT_EQ(ReadBytes(dir / "b.jpg"), ReadBytes(dir / "a.jpg")) << t.first->info.PixelFormat;
    }
    // Mono14 is not in the grey list: it is written as colour.
    TestImage mono14(4, 4, KaipPixelFormat_Mono14, 2, 8, 0, 24);
    ASSERT_EQ(0, KaipSaveToJpeg((dir / "c.jpg").c_str(), &mono14.info, 90));
    KaipImgInfo header{};
    ASSERT_EQ(0, KaipLoadFromJpeg((dir / "c.jpg").c_str(), &header, 0x8000));
    EXPECT_EQ(KaipPixelFormat_RGB8Packed, header.PixelFormat);
}

TEST(JpegFile, DestinationRules)
{
    TempDir dir;
    const std::string path = dir / "d.jpg";
    TestImage src(9, 5, KaipPixelFormat_RGB8Packed, 3, 27, 0, 1);
    FillGradient(src, 3);
    ASSERT_EQ(0, KaipSaveToJpeg(path.c_str(), &src.info, 95));

    KaipImgInfo header{};  // header only: filled, nothing allocated
    ASSERT_EQ(0, KaipLoadFromJpeg(path.c_str(), &header, 0x8000));
    EXPECT_EQ(9u, header.Width);
    EXPECT_EQ(5u, header.Height);
    EXPECT_EQ(KaipPixelFormat_RGB8Packed, header.PixelFormat);
    EXPECT_EQ(uint32_t(KaipImgFlag_Align4), header.Flags);
    EXPECT_EQ(28u, header.LineIncrement);
    EXPECT_EQ(nullptr, header.pData);
    const KaipImgInfo filled = header;
    ASSERT_EQ(0, KaipLoadFromJpeg(path.c_str(), &header, 0x8000));  // fits: untouched
    EXPECT_EQ(0, std::memcmp(&filled, &header, sizeof(header)));
    EXPECT_EQ(KASTATUS_KAIP_INCOMPATIBLE_DST, KaipLoadFromJpeg(path.c_str(), &header, 0));  // fits, no buffer
    KaipImgInfo other{};
    ASSERT_EQ(0, KaipInitImgInfo(&other, 3, 3, KaipPixelFormat_Mono8, 0));
    EXPECT_EQ(KASTATUS_KAIP_INCOMPATIBLE_DST, KaipLoadFromJpeg(path.c_str(), &other, 0));
    EXPECT_EQ(9u, other.Width);  // rewritten in any case

    // A caller's buffer that fits is filled in place, its padding left alone.
    TestImage mine(9, 5, KaipPixelFormat_RGB8Packed, 3, 32, KaipImgFlag_NoDeallocate, 2);
    std::memset(mine.info.pData, 0xEE, 32 * 5);
    ASSERT_EQ(0, KaipLoadFromJpeg(path.c_str(), &mine.info, 0));
    EXPECT_EQ(mine.buffer.data(), mine.info.pData);
    Loaded plain;
    ASSERT_EQ(0, KaipLoadFromJpeg(path.c_str(), &plain.info, 0x1000));
    for (uint32_t y = 0; y < 5; ++y) {
        EXPECT_EQ(0, std::memcmp(PictureRow(plain.info, y), mine.info.pData + 32 * y, 27));
        for (uint32_t x = 27; x < 32; ++x) EXPECT_EQ(0xEE, mine.info.pData[32 * y + x]);
    }
    // BGR: the same samples reversed.
    Loaded bgr;
    ASSERT_EQ(0, KaipLoadFromJpeg(path.c_str(), &bgr.info, 0x5000));
    for (uint32_t i = 0; i < 27; i += 3) {
        EXPECT_EQ(plain.info.pData[i], bgr.info.pData[i + 2]);
        EXPECT_EQ(plain.info.pData[i + 1], bgr.info.pData[i + 1]);
    }
    // A caller's buffer with too short lines is not written past: it is re-described instead.
    TestImage narrow(9, 5, KaipPixelFormat_RGB8Packed, 3, 20, KaipImgFlag_NoDeallocate, 3);
    EXPECT_EQ(KASTATUS_KAIP_INCOMPATIBLE_DST, KaipLoadFromJpeg(path.c_str(), &narrow.info, 0));
    EXPECT_EQ(nullptr, narrow.info.pData);
}

// A failed save keeps the old file; the refusals every saver shares are in tests/hostile.
TEST(JpegFile, SaveFailures)
{
    TempDir dir;
    const std::string path = dir / "keep.jpg";
    WriteBytes(path, {5, 6});
    TestImage wide(70000, 1, KaipPixelFormat_Mono8, 1, 70000, 0, 1);
    EXPECT_EQ(KASTATUS_KAIP_JPEG_SAVE_FAILED, KaipSaveToJpeg(path.c_str(), &wide.info, 90));
    TestImage bayer16(4, 4, KaipPixelFormat_BayerGR16, 2, 8, 0, 2);
    EXPECT_EQ(KASTATUS_KAIP_NOT_SUPPORTED, KaipSaveToJpeg(path.c_str(), &bayer16.info, 90));
    EXPECT_EQ((std::vector<uint8_t>{5, 6}), ReadBytes(path));
    EXPECT_EQ(1u, dir.Count());
}

TEST(JpegHostile, RefusedFiles)
{
    TempDir dir;
    const std::string path = dir / "h.jpg";
    WriteCmykJpeg(path);
    KaipImgInfo img{};
    {
        LogCapture log;
        EXPECT_EQ(KASTATUS_KAIP_JPEG_LOAD_FAILED, KaipLoadFromJpeg(path.c_str(), &img, 0x1000));
        WriteBytes(dir / "cut.jpg", std::vector<uint8_t>(2, 0xFF));
        EXPECT_EQ(KASTATUS_KAIP_JPEG_LOAD_FAILED, KaipLoadFromJpeg((dir / "cut.jpg").c_str(), &img, 0x1000));
        const std::vector<std::string> lines = log.Lines();  // the second line ends in libjpeg's own words
        ASSERT_EQ(2u, lines.size());
        EXPECT_EQ("KaipLoadFromJpeg: KASTATUS_KAIP_JPEG_LOAD_FAILED: Invalid color space in the source image.",
                  lines[0]);
        EXPECT_EQ(0u, lines[1].rfind("KaipLoadFromJpeg: KASTATUS_KAIP_JPEG_LOAD_FAILED: Not a JPEG file", 0))
            << lines[1];
    }
    EXPECT_EQ(nullptr, img.pData);

    TestImage src(40, 24, KaipPixelFormat_RGB8Packed, 3, 120, 0, 1);
    FillGradient(src, 3);
    ASSERT_EQ(0, KaipSaveToJpeg(path.c_str(), &src.info, 90));
    const std::vector<uint8_t> good = ReadBytes(path);
    WriteBytes(path, RandomBytes(500, 8));
    EXPECT_EQ(KASTATUS_KAIP_JPEG_LOAD_FAILED, KaipLoadFromJpeg(path.c_str(), &img, 0x1000));
    // A frame header of 65500 x 65500 colour pixels, and one of 20000 x 20000 (which fits the 32-bit
    // sizes but not a file of a few hundred bytes): both refused before anything is allocated (with
    // allocations failing, an attempt would answer 100006 instead).
    for (uint32_t side : {65500u, 20000u}) {
        std::vector<uint8_t> huge = good;
        const uint8_t marker[] = {0xFF, 0xC0};  // then length, precision, height and width, big-endian
        const size_t sof = size_t(std::search(huge.begin(), huge.end(), marker, marker + 2) - huge.begin()) + 1;
        huge[sof + 4] = huge[sof + 6] = uint8_t(side >> 8), huge[sof + 5] = huge[sof + 7] = uint8_t(side);
        WriteBytes(path, huge);
        oxOsBufferFailAfter(0);
        EXPECT_EQ(KASTATUS_KAIP_JPEG_LOAD_FAILED, KaipLoadFromJpeg(path.c_str(), &img, 0x1000)) << side;
        oxOsBufferFailAfter(-1);
        EXPECT_EQ(nullptr, img.pData);
    }
}

// The library's files decode in djpeg to exactly the pixels it loads, and files made by cjpeg
// load to exactly what djpeg decodes from them.
TEST(JpegInterop, LibjpegTools)
{
    if (!RunQuietly("command -v djpeg && command -v cjpeg")) GTEST_SKIP() << "libjpeg-turbo-progs is not installed";
    TempDir dir;
    for (uint32_t channels : {1u, 3u}) {
        TestImage src(23, 11, channels == 1 ? KaipPixelFormat_Mono8 : KaipPixelFormat_RGB8Packed, channels,
                      23 * channels, 0, 50 + channels);
        const std::string ours = dir / "ours.jpg", theirs = dir / "theirs.jpg", pnm = dir / "p.pnm";
        ASSERT_EQ(0, KaipSaveToJpeg(ours.c_str(), &src.info, 80));
        WriteBytes(dir / "src.pnm", Pnm(src.info, channels));
        ASSERT_TRUE(RunQuietly("cjpeg -quality 75 -outfile " + theirs + " " + (dir / "src.pnm")));
        for (const std::string& file : {ours, theirs}) {
            ASSERT_TRUE(RunQuietly("djpeg -pnm -outfile " + pnm + " " + file));
            Loaded img;
            ASSERT_EQ(0, KaipLoadFromJpeg(file.c_str(), &img.info, 0x1000));
            EXPECT_EQ(ReadBytes(pnm), Pnm(img.info, channels)) << file;
        }
    }
}
