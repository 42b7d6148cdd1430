// check_test.cpp: the order of the common checks, their statuses and log lines, and the destination rebuild.
#include "core/check.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "core/common.h"
#include "platform/os_buffer.h"
#include "support/log_capture.h"

namespace {

constexpr uint32_t kMono8 = KaipPixelFormat_Mono8, kBGR8 = KaipPixelFormat_BGR8Packed;
constexpr uint64_t kMono8Class = KaipPixelFormatClass_Mono8;

struct TCheckCase {
    const char* name;
    std::function<void(KaipImgInfo& src, KaipImgInfo& dst)> change;
    uint32_t options;
    uint64_t srcMask, dstMask, check;
    uint32_t dstFormat, flagsMustBeEqual;
    bool nullSrc, nullDst;
    KaipStatus status;
    bool reallocate;
    std::vector<std::string> lines;
};

uint8_t g_byte;

KaipImgInfo Image(uint32_t width, uint32_t height, uint32_t format)
{
    KaipImgInfo info{};
    InitImgInfo(&info, width, height, format, 0);
    info.pData = &g_byte;
    return info;
}

TEST(CheckImgInfos, StepsInOrder)
{
    const uint64_t all = KaipCheck_SameSize | KaipCheck_SamePixelFormat | KaipCheck_SameOrientation;
    const uint64_t rot = KaipCheck_RotatedSize, planesOk = KaipCheck_ColorPlanesAllowed, dstReq = KaipCheck_DstRequired;
    const uint32_t kRe = KaipOption_ReallocateDst;
    auto none = [](KaipImgInfo&, KaipImgInfo&) {};
    auto planes = [](KaipImgInfo& s, KaipImgInfo&) { s.Flags |= 1, s.pDataR = s.pDataG = s.pDataB = &g_byte; };
    // clang-format off
    const std::vector<TCheckCase> cases = {
        {"null source", none, 0, 0, 0, 0, kMono8, 0, true, false, 100002, false, {"F: pSrcImgInfo is NULL!"}},
        {"uninitialised width", [](auto& s, auto&) { s.Width = 0; }, 0, 0, 0, 0, kMono8, 0, false, false, 100005, false,
         {"F: pSrcImgInfo is not initialized!"}},
        {"uninitialised format", [](auto& s, auto&) { s.PixelFormat = 0; }, 0, 0, 0, 0, kMono8, 0, false, false, 100005,
         false, {"F: pSrcImgInfo is not initialized!"}},
        {"no source buffer", [](auto& s, auto&) { s.pData = nullptr; }, 0, 0, 0, 0, kMono8, 0, false, false, 100026,
         false, {"F: pSrcImgInfo->pData is NULL!"}},
        {"no source plane", [](auto& s, auto&) { s.Flags |= 1, s.pDataR = s.pDataG = &g_byte; }, 0, 0, 0, 0, kMono8, 0,
         false, false, 100026, false, {"F: pSrcImgInfo->pDataR or pDataG or pDataB is NULL!"}},
        {"source class, silently", [](auto& s, auto&) { s.PixelFormat = kBGR8; }, 0, kMono8Class, 0, 0, kMono8, 0,
         false, false, 100013, false, {}},
        {"MIPI Bayer has no class", [](auto& s, auto&) { s.PixelFormat = 0x010A1026; }, 0, ~0ull, 0, 0, kMono8, 0,
         false, false, 100013, false, {}},
        {"colour planes", planes, 0, 0, 0, 0, kMono8, 0, false, false, 100015, false,
         {"F: the color planes are not supported"}},
        {"colour planes allowed", planes, 0, 0, 0, planesOk, kMono8, 0, false, true, 0, false, {}},
        {"destination required", none, 0, 0, 0, dstReq, kMono8, 0, false, true, 100003, false,
         {"F: pDstImgInfo is NULL - must be supplied for this function"}},
        {"null destination accepted", none, kRe, 0, 0, all, kMono8, 0, false, true, 0, false, {}},
        {"size", [](auto&, auto& d) { d.Width = 9; }, 0, 0, 0, all, kMono8, 0, false, false, 100020, false,
         {"F: Src and Dst images differ in size and KaipOption_ReallocateDst flag is not present.",
          "F    Src: w=8, h=4", "F    Dst: w=9, h=4"}},
        {"rotated size", none, 0, 0, 0, rot, kMono8, 0, false, false, 100021, false,
         {"F: Src and Dst (rotated) images differ in size and KaipOption_ReallocateDst flag is not present.",
          "F    Src: w=8, h=4", "F    Dst: w=8, h=4"}},
        {"rotated size fits", [](auto&, auto& d) { d.Width = 4, d.Height = 8; }, 0, 0, 0, rot, kMono8, 0, false, false,
         0, false, {}},
        {"pixel format", [](auto&, auto& d) { d.PixelFormat = kBGR8; }, 0, 0, 0, all, kMono8, 0, false, false, 100023,
         false, {"F: Src and Dst images differ in pixel format and KaipOption_ReallocateDst flag is not present.",
                 "F    Src pixel format=0x01080001, Dst pixel format=0x02180015"}},
        {"size and format with the option", [](auto&, auto& d) { d.Width = 1, d.PixelFormat = kBGR8; }, kRe, 0, 0, all,
         kMono8, 0, false, false, 0, true, {}},
        {"no destination buffer", [](auto&, auto& d) { d.pData = nullptr; }, 0, 0, 0, all, kMono8, 0, false, false,
         100027, false, {"F: pDstImgInfo->pData is NULL and KaipOption_ReallocateDst flag is not present."}},
        {"no destination plane", [](auto&, auto& d) { d.Flags |= 1; }, 0, 0, 0, all, kMono8, 0, false, false, 100027,
         false,
         {"F: pDstImgInfo->pDataR or pDataG or pDataB is NULL and KaipOption_ReallocateDst flag is not present."}},
        {"no destination buffer with the option", [](auto&, auto& d) { d.pData = nullptr; }, kRe, 0, 0, all, kMono8, 0,
         false, false, 0, true, {}},
        {"destination class beats the option", none, kRe, 0, kMono8Class, 0, KaipPixelFormat_Mono10Packed, 0, false,
         false, 100014, false, {"F: destination pixel format = 0x010c0004 not supported"}},
        {"packed Bayer counts as its depth", none, 0, 0, KaipPixelFormatClass_Mono12, 0,
         KaipPixelFormat_BayerRG12Packed, 0, false, false, 0, false, {}},
        {"orientation", [](auto&, auto& d) { d.Flags |= 2; }, 0, 0, 0, all, kMono8, 0, false, false, 100016, false,
         {"F: Src and Dst images differ in orientation and KaipOption_ReallocateDst flag is not present."}},
        {"flags", [](auto& s, auto&) { s.Flags |= 0x100; }, 0, 0, 0, 0, kMono8, 0x300, false, false, 100024, false,
         {"F: Src and Dst images differ in flags and KaipOption_ReallocateDst flag is not present.",
          "F    Src Flags=0x100, Dst Flags=0x0, ChkFlagsMustBeEqual=0x300"}},
        {"size is checked before the format", [](auto&, auto& d) { d.Width = 2, d.PixelFormat = kBGR8; }, 0, 0, 0, all,
         kMono8, 0, false, false, 100020, false,
         {"F: Src and Dst images differ in size and KaipOption_ReallocateDst flag is not present.",
          "F    Src: w=8, h=4", "F    Dst: w=2, h=4"}},
    };
    // clang-format on
    for (const TCheckCase& c : cases) {
        SCOPED_TRACE(c.name);
        KaipImgInfo src = Image(8, 4, kMono8), dst = Image(8, 4, kMono8);
        c.change(src, dst);
        LogCapture log;
        bool reallocate = true;
        const KaipStatus status =
            CheckImgInfos("F", c.nullSrc ? nullptr : &src, c.nullDst ? nullptr : &dst, c.options, c.srcMask,
                          c.dstFormat, c.dstMask, c.check, c.flagsMustBeEqual, &reallocate);
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
