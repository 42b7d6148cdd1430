// tiff_test.cpp: the exact bytes of saved TIFF files, loading, and hostile files (other writers' layouts among them).
#include <cstring>
#include <random>

#include "file_test_util.h"
#include "platform/os_buffer.h"

using namespace filetest;

namespace {

struct TTiffFormat {
    uint32_t format, pixelIncrement, bits;  // bits: significant bits of grey words, 0 for colour
};
const TTiffFormat kFormats[] = {
    {KaipPixelFormat_Mono8, 1, 8},       {KaipPixelFormat_BayerGR8, 1, 8},   {KaipPixelFormat_Mono9, 2, 9},
    {KaipPixelFormat_Mono10, 2, 10},     {KaipPixelFormat_Mono11, 2, 11},    {KaipPixelFormat_Mono12, 2, 12},
    {KaipPixelFormat_Mono13, 2, 13},     {KaipPixelFormat_Mono14, 2, 14},    {KaipPixelFormat_Mono15, 2, 15},
    {KaipPixelFormat_Mono16, 2, 16},     {KaipPixelFormat_BayerRG10, 2, 10}, {KaipPixelFormat_BayerBG12, 2, 12},
    {KaipPixelFormat_BayerGB16, 2, 16},  {KaipPixelFormat_BGR555, 2, 0},     {KaipPixelFormat_BGR565Packed, 2, 0},
    {KaipPixelFormat_RGB8Packed, 3, 0},  {KaipPixelFormat_BGR8Packed, 3, 0}, {KaipPixelFormat_RGBA8Packed, 4, 0},
    {KaipPixelFormat_BGRA8Packed, 4, 0},
};

// Pixel data of the file, top line first, from the layouts and the depth rule.
std::vector<uint8_t> ExpectedData(const TestImage& src, const TTiffFormat& f, uint32_t options)
{
    std::vector<uint8_t> out;
    for (uint32_t r = 0; r < src.info.Height; ++r) {
        const uint8_t* p = src.Row(r);
        for (uint32_t x = 0; x < src.info.Width; ++x) {
            if (f.bits == 8) {
                out.push_back(p[x]);
            } else if (f.bits) {
                uint32_t word = p[2 * x] | p[2 * x + 1] << 8;
                if (options & 0x2000) word = (word << (16 - f.bits)) & 0xFFFF;
                out.push_back(uint8_t(word)), out.push_back(uint8_t(word >> 8));
            } else {
                const uint8_t* q = p + x * f.pixelIncrement;
                const uint32_t w = q[0] | q[1] << 8;
                const bool inOrder = f.format == KaipPixelFormat_RGB8Packed || f.format == KaipPixelFormat_RGBA8Packed;
                uint8_t rgb[3];
                if (f.pixelIncrement > 2) rgb[0] = q[inOrder ? 0 : 2], rgb[1] = q[1], rgb[2] = q[inOrder ? 2 : 0];
                if (f.format == KaipPixelFormat_BGR555)
                    rgb[0] = uint8_t((w & 0x7C00) >> 7), rgb[1] = uint8_t((w & 0x3E0) >> 2), rgb[2] = uint8_t(w << 3);
                if (f.format == KaipPixelFormat_BGR565Packed)
                    rgb[0] = uint8_t((w & 0xF800) >> 8), rgb[1] = uint8_t((w & 0x7E0) >> 3), rgb[2] = uint8_t(w << 3);
                out.insert(out.end(), rgb, rgb + 3);
            }
        }
    }
    return out;
}

// The whole file from the layout tables.
std::vector<uint8_t> ExpectedTiff(const TestImage& src, const TTiffFormat& f, uint32_t options)
{
    const bool c = f.bits == 0;
    const uint32_t w = src.info.Width, h = src.info.Height;
    const uint32_t lineBytes = c ? 3 * w : w * (f.bits == 8 ? 1 : 2);
    const uint32_t maxSample = c || f.bits == 8 ? 255 : (options & 0x2000) ? 65535 : (1u << f.bits) - 1;
    struct {
        uint16_t tag, type;
        uint32_t count, grey, rgb;
    } const entries[] = {
        {254, 4, 1, 0, 0},          {256, 4, 1, w, w},
        {257, 4, 1, h, h},          {258, 3, c ? 3u : 1u, f.bits == 8 ? 8u : 16u, 222},
        {259, 3, 1, 1, 1},          {262, 3, 1, 1, 2},
        {273, 4, 1, 210, 228},      {277, 3, 1, 1, 3},
        {278, 4, 1, h, h},          {279, 4, 1, h * lineBytes, h * lineBytes},
        {280, 3, 1, 0, 0},          {281, 3, 1, maxSample, maxSample},
        {282, 5, 1, 194, 206},      {283, 5, 1, 202, 214},
        {284, 3, 1, 0xFFFFFFFF, 1}, {296, 3, 1, 2, 2},
    };
    std::vector<uint8_t> b(c ? 228 : 210, 0);
    b[0] = b[1] = 'I';
    Put16(b, 2, 42);
    Put32(b, 4, 8);
    Put16(b, 8, c ? 16 : 15);
    size_t at = 10;
    for (const auto& e : entries) {
        if (!c && e.grey == 0xFFFFFFFF) continue;
        Put16(b, at, e.tag), Put16(b, at + 2, e.type), Put32(b, at + 4, e.count), Put32(b, at + 8, c ? e.rgb : e.grey);
        at += 12;
    }
    at += 4;  // next directory 0
    for (int i = 0; i < 2; ++i, at += 8) Put32(b, at, 750000), Put32(b, at + 4, 10000);
    if (c) Put16(b, 222, 8), Put16(b, 224, 8), Put16(b, 226, 8);
    const std::vector<uint8_t> data = ExpectedData(src, f, options);
    b.insert(b.end(), data.begin(), data.end());
    return b;
}

uint32_t LoadedFormat(const TTiffFormat& f, uint32_t options)
{
    static const uint32_t grey[] = {KaipPixelFormat_Mono8,  KaipPixelFormat_Mono9,  KaipPixelFormat_Mono10,
                                    KaipPixelFormat_Mono11, KaipPixelFormat_Mono12, KaipPixelFormat_Mono13,
                                    KaipPixelFormat_Mono14, KaipPixelFormat_Mono15, KaipPixelFormat_Mono16};
    if (f.bits == 0) return KaipPixelFormat_RGB8Packed;  // the preset stays
    return f.bits == 8 ? KaipPixelFormat_Mono8 : (options & 0x2000) ? KaipPixelFormat_Mono16 : grey[f.bits - 8];
}

}  // namespace

TEST(TiffFile, ExactBytesAndRoundTrips)
{
    TempDir dir;
    const std::string path = dir / "a.tif";
    const uint32_t seed = 4242;
    std::mt19937 gen(seed);
    int n = 0;
    for (const TTiffFormat& f : kFormats) {
        for (int trial = 0; trial < 12; ++trial) {
            const uint32_t w = 1 + gen() % 11, h = 1 + gen() % 4;
            const uint32_t lineInc = w * f.pixelIncrement + ((trial & 4) ? gen() % 7 : 0);
            const uint32_t flags = (trial & 1) ? KaipImgFlag_BottomUp : 0, options = (trial & 2) ? 0x2000 : 0;
            TestImage src(w, h, f.format, f.pixelIncrement, lineInc, flags, seed + n++);
            SCOPED_TRACE(testing::Message() << "seed " << seed << " format " << f.format << " " << w << "x" << h
                                            << " lineInc " << lineInc << " flags " << flags << " options " << options);
            ASSERT_EQ(0, KaipSaveToTiff(path.c_str(), &src.info, options));
            const std::vector<uint8_t> expected = ExpectedTiff(src, f, options), actual = ReadBytes(path);
            ASSERT_EQ(expected.size(), actual.size());
            for (size_t i = 0; i < actual.size(); ++i) ASSERT_EQ(expected[i], actual[i]) << "byte " << i;

            Loaded img;
            img.info.PixelFormat = KaipPixelFormat_RGB8Packed;  // colour files keep the caller's preset
            img.info.Flags = KaipImgFlag_BottomUp;
            ASSERT_EQ(0, KaipLoadFromTiff(path.c_str(), &img.info));
            EXPECT_EQ(LoadedFormat(f, options), img.info.PixelFormat);
            EXPECT_EQ(w, img.info.Width);
            EXPECT_EQ(h, img.info.Height);
            EXPECT_EQ(uint32_t(KaipImgFlag_DataAllocated), img.info.Flags);
            const size_t offset = f.bits ? 210 : 228;
            ASSERT_EQ(actual.size() - offset, size_t(img.info.LineIncrement) * h);
            EXPECT_EQ(0, std::memcmp(actual.data() + offset, img.info.pData, actual.size() - offset));
        }
    }
}

TEST(TiffFile, PresetFormatsForColour)
{
    TempDir dir;
    const std::string path = dir / "p.tif";
    TestImage rgb(5, 2, KaipPixelFormat_RGB8Packed, 3, 15, 0, 4);
    ASSERT_EQ(0, KaipSaveToTiff(path.c_str(), &rgb.info, 0));
    Loaded bgr;  // a BGR8 preset stays, holding the file's R, G, B order
    bgr.info.PixelFormat = KaipPixelFormat_BGR8Packed;
    ASSERT_EQ(0, KaipLoadFromTiff(path.c_str(), &bgr.info));
    EXPECT_EQ(KaipPixelFormat_BGR8Packed, bgr.info.PixelFormat);
    EXPECT_EQ(0, std::memcmp(rgb.info.pData, bgr.info.pData, 30));
    KaipImgInfo wide{};
    wide.PixelFormat = KaipPixelFormat_BGRA8Packed;  // four bytes a pixel would overrun three-byte lines
    EXPECT_EQ(KASTATUS_KAIP_INCOMPATIBLE_DST, KaipLoadFromTiff(path.c_str(), &wide));
    EXPECT_EQ(nullptr, wide.pData);
    Loaded none;  // no preset: the buffer is read, the format stays 0 as the caller left it
    ASSERT_EQ(0, KaipLoadFromTiff(path.c_str(), &none.info));
    EXPECT_EQ(0u, none.info.PixelFormat);
    EXPECT_EQ(15u, none.info.LineIncrement);
    EXPECT_EQ(0, std::memcmp(rgb.info.pData, none.info.pData, 30));
}

// A failed save keeps the old file; the refusals every saver shares are in tests/hostile.
TEST(TiffFile, SaveFailures)
{
    TempDir dir;
    const std::string path = dir / "keep.tif";
    WriteBytes(path, {7});
    TestImage src(8, 4, KaipPixelFormat_Mono12, 2, 16, KaipImgFlag_BottomUp, 5);
    oxOsBufferFailAfter(0);
    const KaipStatus status = KaipSaveToTiff(path.c_str(), &src.info, 0);
    oxOsBufferFailAfter(-1);
    EXPECT_EQ(KASTATUS_KAIP_MEMORY_ALLOC_FAILED, status);
    EXPECT_EQ(std::vector<uint8_t>{7}, ReadBytes(path));
    EXPECT_EQ(1u, dir.Count());
}

// Fields other writers fill otherwise, one at a time (the cuts at every byte are in tests/hostile).
TEST(TiffHostile, WrongTags)
{
    TempDir dir;
    const std::string path = dir / "h.tif";
    TestImage grey(3, 2, KaipPixelFormat_Mono12, 2, 6, 0, 6), colour(3, 2, KaipPixelFormat_RGB8Packed, 3, 9, 0, 7);
    ASSERT_EQ(0, KaipSaveToTiff(path.c_str(), &grey.info, 0));
    const std::vector<uint8_t> g = ReadBytes(path);
    ASSERT_EQ(0, KaipSaveToTiff(path.c_str(), &colour.info, 0));
    const std::vector<uint8_t> c = ReadBytes(path);
    // Entry i sits at 10 + 12 i: type at +2, count at +4, value at +8.
    auto entry = [](int i, int field) { return size_t(10 + 12 * i + field); };
    struct {
        const char* name;
        std::vector<uint8_t> bytes;
        KaipStatus status;
    } const cases[] = {
        {"big-endian", With(g, 0, 0x4D4D, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"not 42", With(g, 2, 43, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"directory elsewhere", With(g, 4, 16), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"33 tags", With(g, 8, 33, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"no tags", With(g, 8, 0, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"subfile 1", With(g, entry(0, 8), 1, 4), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"width short", With(g, entry(1, 2), 3, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"width 0", With(g, entry(1, 8), 0, 4), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"bits count 2", With(g, entry(3, 4), 2, 4), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"bits 8 max 4095", With(g, entry(3, 8), 8, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"compressed", With(g, entry(4, 8), 5, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"white is zero", With(g, entry(5, 8), 0, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"grey says RGB", With(g, entry(5, 8), 2, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"offset inside directory", With(g, entry(6, 8), 20, 4), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"offset past end", With(g, entry(6, 8), 0xFFFFFF00u, 4), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"samples 2", With(g, entry(7, 8), 2, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"two strips", With(g, entry(8, 8), 1, 4), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"byte count", With(g, entry(9, 8), 11, 4), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"min 1", With(g, entry(10, 8), 1, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"max long", With(g, entry(11, 2), 4, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"max 200 in words", With(g, entry(11, 8), 200, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"planar 2", With(c, entry(14, 8), 2, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"RGB 16 bits", With(c, 222, 16, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"RGB bits outside", With(c, entry(3, 8), 0xFFFFFFF0u, 4), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"RGB max 4095", With(c, entry(11, 8), 4095, 2), KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"huge",
         With(With(With(With(g, entry(1, 8), 0x10000, 4), entry(2, 8), 0x10000, 4), entry(8, 8), 0x10000, 4),
              entry(9, 8), 0, 4),
         KASTATUS_KAIP_INVALID_TIFF_FILE},
        {"taller than the data", With(With(With(g, entry(2, 8), 3, 4), entry(8, 8), 3, 4), entry(9, 8), 18, 4),
         KASTATUS_KAIP_CANNOT_OPEN_READ_FILE},
    };
    for (const auto& k : cases) {
        WriteBytes(path, k.bytes);
        KaipImgInfo img{};
        img.Width = 99;
        EXPECT_EQ(k.status, KaipLoadFromTiff(path.c_str(), &img)) << k.name;
        EXPECT_EQ(99u, img.Width) << k.name << ": descriptor touched";
        EXPECT_EQ(nullptr, img.pData) << k.name;
    }
}
