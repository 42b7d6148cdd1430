// common_test.cpp: the pixel-format table, descriptor init, allocation with rollback, and release.
#include "core/common.h"

#include <gtest/gtest.h>

#include "core/check.h"
#include "platform/os_buffer.h"

namespace {

struct TFormatRow {
    uint32_t code, increment, bits;
    bool dib;
    int srcClass;
    uint32_t base, pattern;
    bool bayer;
    uint32_t mono;
};

constexpr uint32_t M8 = 0x01080001, M10 = 0x01100003, M12 = 0x01100005, M16 = 0x01100007;
constexpr uint32_t M10P = 0x010C0004, M12P = 0x010C0006, M10MIPI = 0x010A1004;
constexpr uint32_t kPatterns[4] = {0x200, 0, 0x100, 0x300};  // GR, RG, GB, BG

// The known formats, typed from the format table of the interface documentation.
std::vector<TFormatRow> KnownFormats()
{
    // Neither Bayer nor planar: increment (0 for YUV), used bits, DIB-compatible, source class.
    const struct {
        uint32_t code, increment, bits, dib;
        int cls;
    } plain[] = {
        {M8, 1, 8, 1, 0},           {1009, 2, 9, 0, 1},         {M10, 2, 10, 0, 2},         {1011, 2, 11, 0, 3},
        {M12, 2, 12, 0, 4},         {1013, 2, 13, 0, 5},        {0x01100025, 2, 14, 0, 6},  {1015, 2, 15, 0, 7},
        {M16, 2, 16, 0, 8},         {M10P, 2, 10, 0, 28},       {M12P, 2, 12, 0, 29},       {M10MIPI, 2, 10, 0, 28},
        {0x010C1006, 2, 12, 0, 29}, {0x021000E1, 2, 15, 1, 9},  {0x02100036, 2, 16, 1, 10}, {0x02180015, 3, 24, 1, 11},
        {0x02200017, 4, 32, 1, 12}, {0x02180014, 3, 24, 0, 13}, {0x02200016, 4, 32, 0, 14}, {0x0220001C, 4, 32, 0, 30},
        {0x0220001D, 4, 32, 0, 30}, {0x02300019, 6, 30, 0, 32}, {0x02300018, 6, 30, 0, 33}, {0x0230001B, 6, 36, 0, 34},
        {0x0230001A, 6, 36, 0, 35}, {0x0230004B, 6, 48, 0, 36}, {0x02300033, 6, 48, 0, 37}, {0x020C001E, 0, 12, 0, 16},
        {0x020C003C, 0, 12, 0, 16}, {0x020C005A, 0, 12, 0, 16}, {0x020C003F, 0, 12, 0, -1}, {0x020C0042, 0, 12, 0, -1},
        {0x0210001F, 0, 16, 0, 17}, {0x02100032, 0, 16, 0, 18}, {0x02180020, 0, 24, 0, 19}, {0x0218005B, 0, 24, 0, 20},
        {0x0218003A, 0, 24, 0, 21}, {0x0210003B, 0, 16, 0, 22}, {0x02100043, 0, 16, 0, 23}, {0x0210003E, 0, 16, 0, 24},
        {0x02100044, 0, 16, 0, 25}, {0x02100041, 0, 16, 0, 26}, {0x02100045, 0, 16, 0, 27}, {0x0218003D, 0, 24, 0, -1},
        {0x02180040, 0, 24, 0, -1}};
    std::vector<TFormatRow> rows;
    for (const auto& p : plain)
        rows.push_back({p.code, p.increment, p.bits, p.dib != 0, p.cls, p.code, 0, false, p.code});
    const struct {
        uint32_t code, bits;
    } planar[] = {{0x02180021, 8}, {0x02300022, 10}, {0x02300023, 12}, {0x02300024, 16}};
    for (const auto& p : planar) rows.push_back({p.code, 0, p.bits, false, -1, p.code, 1, false, p.code});
    const struct {
        uint32_t first, base, increment, bits;
        bool dib;
        int cls;
        bool monoMapped;
    } bayer[] = {{0x01080008, M8, 1, 8, true, 0, true},         {0x0110000C, M10, 2, 10, false, 2, true},
                 {0x01100010, M12, 2, 12, false, 4, true},      {0x0110002E, M16, 2, 16, false, 8, true},
                 {0x010C0026, M10P, 2, 10, false, 28, true},    {0x010C002A, M12P, 2, 12, false, 29, true},
                 {0x010A1026, M10MIPI, 0, 10, false, -1, false}};
    for (const auto& b : bayer)
        for (uint32_t i = 0; i < 4; ++i)
            rows.push_back({b.first + i, b.increment, b.bits, b.dib, b.cls, b.base, kPatterns[i], true,
                            b.monoMapped ? b.base : b.first + i});
    return rows;
}

// Unknown codes have no increment, 8 bits, no class, and are their own base and mono format.
TEST(PixelFormatTable, EveryFormatHasItsProperties)
{
    auto rows = KnownFormats();
    ASSERT_EQ(rows.size(), 77u);
    for (uint32_t code : {0u, 1u, 0x01080002u, 0xFFFFFFFFu})
        rows.push_back({code, 0, 8, false, -1, code, 0, false, code});
    for (const TFormatRow& row : rows) {
        SCOPED_TRACE(testing::Message() << "format 0x" << std::hex << row.code);
        EXPECT_EQ(GetPixelIncrementFromPixelFormat(row.code), row.increment);
        EXPECT_EQ(GetUsedBitsPerPixel(row.code), row.bits);
        EXPECT_EQ(IsPixelFormatDibCompatible(row.code), row.dib ? 1u : 0u);
        EXPECT_EQ(GetSrcPixelFormatClass(row.code), row.srcClass);
        EXPECT_EQ(BayerToMonoFormat(row.code), row.mono);
        uint32_t base = 0, flags = 0xFFFFFFFF;
        bool isBayer = !row.bayer;
        GetFlagsFromPixelFormat(row.code, base, flags, isBayer);
        EXPECT_EQ(base, row.base);
        EXPECT_EQ(flags, (0xFFFFFFFFu & ~0x301u) | row.pattern);
        EXPECT_EQ(isBayer, row.bayer);
    }
}

TEST(PixelFormatTable, DestinationClassesDifferForPackedFormats)
{
    for (uint32_t code = 0x010C0026; code <= 0x010C0029; ++code) EXPECT_EQ(GetDstPixelFormatClass(code), 2);
    for (uint32_t code = 0x010C002A; code <= 0x010C002D; ++code) EXPECT_EQ(GetDstPixelFormatClass(code), 4);
    for (uint32_t code : {M10P, M12P, M10MIPI, 0x010C1006u, 0x0220001Cu, 0x0220001Du, 0x0210003Eu, 0x02100044u,
                          0x02100041u, 0x02100045u})
        EXPECT_EQ(GetDstPixelFormatClass(code), -1) << std::hex << code;
    EXPECT_EQ(GetDstPixelFormatClass(0x02180015), 11);
}

TEST(InitImgInfo, AlignmentAndFlags)
{
    const struct {
        uint32_t width, format, flags, lineIncrement, resultFlags;
    } cases[] = {{5, M8, 0x14, 16, 0x10},  {5, M8, 0x0C, 8, 0x08},          {5, M8, 0x04, 8, 0x04},
                 {5, M8, 0x00, 5, 0x00},   {5, M8, 0x20, 5, 0x00},          {5, M8, 0x80, 5, 0x00},
                 {5, M8, 0xB03, 5, 0xB03}, {7, 0x02180015, 0x04, 24, 0x04}, {3, 0x02300019, 0x1010, 32, 0x10},
                 {16, M8, 0x10, 16, 0x10}, {1, M16, 0xFFFFFFFF, 16, 0xB13}};
    for (const auto& c : cases) {
        KaipImgInfo info{};
        info.Reserved = 77;
        ASSERT_EQ(KaipInitImgInfo(&info, c.width, 3, c.format, c.flags), KASTATUS_OK);
        EXPECT_EQ(info.LineIncrement, c.lineIncrement) << c.width << " " << std::hex << c.flags;
        EXPECT_EQ(info.Flags, c.resultFlags) << std::hex << c.flags;
        EXPECT_EQ(info.PixelIncrement, GetPixelIncrementFromPixelFormat(c.format));
        EXPECT_EQ(info.Reserved, 77u);
    }
}

// Formats without a pixel increment are refused after the first fields are set; a null descriptor and a line
// increment that would wrap are refused too.
TEST(InitImgInfo, Refusals)
{
    uint8_t byte = 0;
    for (uint32_t code : {0x010A1026u, 0x0210001Fu, 0x02180021u, 0x12345678u}) {
        KaipImgInfo info{};
        info.Flags = 0x55;
        info.LineIncrement = 99;
        info.pData = info.pDataR = &byte;
        EXPECT_EQ(KaipInitImgInfo(&info, 4, 2, code, 0), KASTATUS_KAIP_INVALID_PIXEL_FORMAT);
        EXPECT_EQ(info.Width, 4u);
        EXPECT_EQ(info.Height, 2u);
        EXPECT_EQ(info.PixelFormat, code);
        EXPECT_EQ(info.Flags, 0x55u);
        EXPECT_EQ(info.LineIncrement, 99u);
        EXPECT_EQ(info.pData, nullptr);
        EXPECT_EQ(info.pDataR, nullptr);
    }
    EXPECT_EQ(KaipInitImgInfo(nullptr, 4, 2, M8, 0), KASTATUS_KAIP_INVALID_POINTER);
    KaipImgInfo wide{};
    EXPECT_EQ(KaipInitImgInfo(&wide, 0x80000000u, 1, 0x02180015, 0), KASTATUS_KAIP_NOT_SUPPORTED);
}

TEST(ImageData, AllocateAndFree)
{
    KaipImgInfo info{};
    ASSERT_EQ(KaipInitImgInfo(&info, 33, 7, 0x02180015, 0x800 | 0x4), KASTATUS_OK);
    ASSERT_EQ(KaipAllocateImageData(&info), KASTATUS_OK);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(info.pData) % 64, 0u);
    EXPECT_TRUE(info.Flags & KaipImgFlag_DataAllocated);
    std::fill(info.pData, info.pData + KaipGetImageDataSize(&info), 0xAB);
    // NoDeallocate keeps the buffer; without it the buffer goes, the flag stays.
    EXPECT_EQ(KaipDeallocateImageData(&info), KASTATUS_OK);
    EXPECT_NE(info.pData, nullptr);
    info.Flags &= ~KaipImgFlag_NoDeallocate;
    EXPECT_EQ(KaipDeallocateImageData(&info), KASTATUS_OK);
    EXPECT_EQ(info.pData, nullptr);
    EXPECT_TRUE(info.Flags & KaipImgFlag_DataAllocated);
    EXPECT_EQ(KaipDeallocateImageData(nullptr), KASTATUS_KAIP_INVALID_POINTER);
    // A buffer the library did not allocate is forgotten, not freed (logged at fatal level).
    uint8_t own[16];
    info.pData = own;
    EXPECT_EQ(KaipDeallocateImageData(&info), KASTATUS_OK);
    EXPECT_EQ(info.pData, nullptr);
}

TEST(ImageData, SizeAndAllocateRefusals)
{
    EXPECT_EQ(KaipAllocateImageData(nullptr), KASTATUS_KAIP_INVALID_POINTER);
    KaipImgInfo info{};
    ASSERT_EQ(KaipInitImgInfo(&info, 8, 8, M8, 0), KASTATUS_OK);
    for (uint32_t KaipImgInfo::*field :
         {&KaipImgInfo::Width, &KaipImgInfo::Height, &KaipImgInfo::LineIncrement, &KaipImgInfo::PixelFormat}) {
        KaipImgInfo copy = info;
        copy.*field = 0;
        EXPECT_EQ(KaipAllocateImageData(&copy), KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED);
    }
    // The size is the 32-bit product; one beyond 32 bits would wrap into a buffer too small for the image.
    EXPECT_EQ(KaipGetImageDataSize(nullptr), 0u);
    KaipImgInfo huge = info;
    huge.Height = 0x10000;
    huge.LineIncrement = 0x10001;
    EXPECT_EQ(KaipGetImageDataSize(&huge), 0x10000u);
    EXPECT_EQ(KaipAllocateImageData(&huge), KASTATUS_KAIP_MEMORY_ALLOC_FAILED);
    EXPECT_EQ(huge.pData, nullptr);
}

TEST(ImageData, ColourPlanesRollBackWhenOnePlaneFails)
{
    for (int succeeding = 0; succeeding <= 3; ++succeeding) {
        KaipImgInfo info{};
        ASSERT_EQ(KaipInitImgInfo(&info, 10, 10, M8, KaipImgFlag_ColorPlanes), KASTATUS_OK);
        oxOsBufferFailAfter(succeeding);
        const KaipStatus status = KaipAllocateImageData(&info);
        oxOsBufferFailAfter(-1);
        if (succeeding == 3) {
            ASSERT_EQ(status, KASTATUS_OK);
            EXPECT_TRUE(info.pDataR && info.pDataG && info.pDataB);
            EXPECT_EQ(info.pData, nullptr);
            EXPECT_EQ(KaipDeallocateImageData(&info), KASTATUS_OK);
        } else {
            EXPECT_EQ(status, KASTATUS_KAIP_MEMORY_ALLOC_FAILED);
            EXPECT_FALSE(info.Flags & KaipImgFlag_DataAllocated);
        }
        EXPECT_EQ(info.pDataR, nullptr);
        EXPECT_EQ(info.pDataG, nullptr);
        EXPECT_EQ(info.pDataB, nullptr);
    }
}

}  // namespace
