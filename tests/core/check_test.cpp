// check_test.cpp: the order of the common checks, their statuses and log lines, and the destination rebuild.
#include "core/check.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/common.h"
#include "platform/os_buffer.h"
#include "support/log_capture.h"

namespace {

constexpr uint32_t kMono8 = KaipPixelFormat_Mono8, kBGR8 = KaipPixelFormat_BGR8Packed;
constexpr uint64_t kMono8Class = KaipPixelFormatClass_Mono8;

uint8_t g_byte;

KaipImgInfo Image(uint32_t width, uint32_t height, uint32_t format)
{
    KaipImgInfo info{};
    InitImgInfo(&info, width, height, format, 0);
    info.pData = &g_byte;
    return info;
}

// The arguments of one call: two 8x4 Mono8 images with buffers and no demands, as a case changes them.
struct TCall {
    KaipImgInfo src = Image(8, 4, kMono8), dst = Image(8, 4, kMono8);
    KaipImgInfo *pSrc = &src, *pDst = &dst;
    uint32_t options = 0, dstFormat = kMono8, flagsMustBeEqual = 0;
    uint64_t srcMask = 0, dstMask = 0;
};

void Planes(TCall& c)
{
    c.src.Flags |= 1, c.src.pDataR = c.src.pDataG = c.src.pDataB = &g_byte;
}

TEST(CheckImgInfos, StepsInOrder)
{
    const uint64_t all = KaipCheck_SameSize | KaipCheck_SamePixelFormat | KaipCheck_SameOrientation;
    const uint64_t rot = KaipCheck_RotatedSize;
    const uint32_t kRe = KaipOption_ReallocateDst;
    const std::string size = "F: Src and Dst images differ in size and KaipOption_ReallocateDst flag is not present.";
    const struct {
        const char* name;
        uint64_t check;
        KaipStatus status;
        void (*change)(TCall&);
        std::vector<std::string> lines;
        bool reallocate = false;
    } cases[] = {
        // clang-format off
        {"null source", 0, 100002, [](TCall& c) { c.pSrc = nullptr; }, {"F: pSrcImgInfo is NULL!"}},
        {"uninitialised width", 0, 100005, [](TCall& c) { c.src.Width = 0; }, {"F: pSrcImgInfo is not initialized!"}},
        {"uninitialised format", 0, 100005, [](TCall& c) { c.src.PixelFormat = 0; },
         {"F: pSrcImgInfo is not initialized!"}},
        {"no source buffer", 0, 100026, [](TCall& c) { c.src.pData = nullptr; }, {"F: pSrcImgInfo->pData is NULL!"}},
        {"no source plane", 0, 100026, [](TCall& c) { Planes(c), c.src.pDataB = nullptr; },
         {"F: pSrcImgInfo->pDataR or pDataG or pDataB is NULL!"}},
        {"source class, silently", 0, 100013, [](TCall& c) { c.src.PixelFormat = kBGR8, c.srcMask = kMono8Class; }, {}},
        {"MIPI Bayer has no class", 0, 100013, [](TCall& c) { c.src.PixelFormat = 0x010A1026, c.srcMask = ~0ull; }, {}},
        {"colour planes", 0, 100015, Planes, {"F: the color planes are not supported"}},
        {"colour planes allowed", KaipCheck_ColorPlanesAllowed, 0, [](TCall& c) { Planes(c), c.pDst = nullptr; }, {}},
        {"destination required", KaipCheck_DstRequired, 100003, [](TCall& c) { c.pDst = nullptr; },
         {"F: pDstImgInfo is NULL - must be supplied for this function"}},
        {"null destination accepted", all, 0, [](TCall& c) { c.pDst = nullptr, c.options = kRe; }, {}},
        {"size", all, 100020, [](TCall& c) { c.dst.Width = 9; }, {size, "F    Src: w=8, h=4", "F    Dst: w=9, h=4"}},
        {"rotated size", rot, 100021, [](TCall&) {},
         {"F: Src and Dst (rotated) images differ in size and KaipOption_ReallocateDst flag is not present.",
          "F    Src: w=8, h=4", "F    Dst: w=8, h=4"}},
        {"rotated size fits", rot, 0, [](TCall& c) { c.dst.Width = 4, c.dst.Height = 8; }, {}},
        {"pixel format", all, 100023, [](TCall& c) { c.dst.PixelFormat = kBGR8; },
         {"F: Src and Dst images differ in pixel format and KaipOption_ReallocateDst flag is not present.",
          "F    Src pixel format=0x01080001, Dst pixel format=0x02180015"}},
        {"size and format with the option", all, 0,
         [](TCall& c) { c.dst.Width = 1, c.dst.PixelFormat = kBGR8, c.options = kRe; }, {}, true},
        {"no destination buffer", all, 100027, [](TCall& c) { c.dst.pData = nullptr; },
         {"F: pDstImgInfo->pData is NULL and KaipOption_ReallocateDst flag is not present."}},
        {"no destination plane", all, 100027, [](TCall& c) { c.dst.Flags |= 1; },
         {"F: pDstImgInfo->pDataR or pDataG or pDataB is NULL and KaipOption_ReallocateDst flag is not present."}},
        {"no destination buffer with the option", all, 0, [](TCall& c) { c.dst.pData = nullptr, c.options = kRe; },
         {}, true},
        {"destination class beats the option", 0, 100014,
         [](TCall& c) { c.options = kRe, c.dstMask = kMono8Class, c.dstFormat = KaipPixelFormat_Mono10Packed; },
         {"F: destination pixel format = 0x010c0004 not supported"}},
        {"packed Bayer counts as its depth", 0, 0,
         [](TCall& c) { c.dstMask = KaipPixelFormatClass_Mono12, c.dstFormat = KaipPixelFormat_BayerRG12Packed; }, {}},
        {"orientation", all, 100016, [](TCall& c) { c.dst.Flags |= 2; },
         {"F: Src and Dst images differ in orientation and KaipOption_ReallocateDst flag is not present."}},
        {"flags", 0, 100024, [](TCall& c) { c.src.Flags |= 0x100, c.flagsMustBeEqual = 0x300; },
         {"F: Src and Dst images differ in flags and KaipOption_ReallocateDst flag is not present.",
          "F    Src Flags=0x100, Dst Flags=0x0, ChkFlagsMustBeEqual=0x300"}},
        {"size is checked before the format", all, 100020, [](TCall& c) { c.dst.Width = 2, c.dst.PixelFormat = kBGR8; },
         {size, "F    Src: w=8, h=4", "F    Dst: w=2, h=4"}},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        TCall call;
        c.change(call);
        LogCapture log;
        bool reallocate = true;
        const KaipStatus status = CheckImgInfos("F", call.pSrc, call.pDst, call.options, call.srcMask, call.dstFormat,
                                                call.dstMask, c.check, call.flagsMustBeEqual, &reallocate);
        EXPECT_EQ(status, c.status);
        EXPECT_EQ(reallocate, c.reallocate);
        EXPECT_EQ(log.Lines(), c.lines);
    }
}

// Without the option a misfit is refused with its log line; a buffer marked NoDeallocate is left to its owner
// and replaced; colour planes are refused before anything is freed; init and allocation failures are passed
// on. (The rebuilt descriptors of every image function are checked in tests/hostile.)
TEST(ReallocateDst, RefusalsForeignBuffersAndFailures)
{
    uint8_t own[4];
    KaipImgInfo dst = Image(2, 2, kMono8);
    dst.pData = own;
    dst.Flags |= KaipImgFlag_NoDeallocate;
    {
        LogCapture log;
        EXPECT_EQ(ReallocateDst("F", &dst, 5, 2, kBGR8, 0), KASTATUS_KAIP_INCOMPATIBLE_DST);
        EXPECT_EQ(log.Lines(), std::vector<std::string>{"F: the destination bitmap has incompatible info and "
                                                        "KaipOption_ReallocateDst is not set."});
    }
    ASSERT_EQ(ReallocateDst("F", &dst, 2, 2, kMono8, KaipOption_ReallocateDst), KASTATUS_OK);
    EXPECT_NE(dst.pData, own);
    uint8_t* before = dst.pData;
    EXPECT_EQ(ReallocateDst("F", &dst, 3, 3, kMono8, KaipOption_ReallocateDst | KaipImgFlag_ColorPlanes),
              KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED);
    EXPECT_EQ(dst.pData, before);
    EXPECT_EQ(KaipDeallocateImageData(&dst), KASTATUS_OK);

    dst = Image(2, 2, kMono8);
    dst.pData = nullptr;
    EXPECT_EQ(ReallocateDst("F", &dst, 2, 2, KaipPixelFormat_YUV422Packed, KaipOption_ReallocateDst),
              KASTATUS_KAIP_INVALID_PIXEL_FORMAT);
    oxOsBufferFailAfter(0);
    EXPECT_EQ(ReallocateDst("F", &dst, 2, 2, kMono8, KaipOption_ReallocateDst), KASTATUS_KAIP_MEMORY_ALLOC_FAILED);
    oxOsBufferFailAfter(-1);
    EXPECT_EQ(dst.pData, nullptr);
    EXPECT_EQ(dst.Width, 2u);
}

}  // namespace
