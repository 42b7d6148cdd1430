// status_test.cpp: every status text, and the copy and truncation rules of KaipGetStatusMsg.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "pm.imgproc.h"

namespace {

const char kLutText[] =
    "Invalid LUT type: must correspond to the pixel format. Bayer decoding LUT requires KAIP_LUT_BAYER flag.";
const std::pair<KaipStatus, const char*> kTexts[] = {
    {100001, "Invalid pointer passed to the function."},
    {100002, "Invalid pointer to source image info passed to the function."},
    {100003, "Invalid pointer to destination image info passed to the function."},
    {100004, "Invalid pixel format."},
    {100005, "Image info not initialized."},
    {100006, "Memory allocation failed."},
    {100007, "Unsupported type of Windows Bitmap header."},
    {100008, "Incompatible pixel format."},
    {100009, "Line increment is not compatible for Windows Bitmap"},
    {100011, "Image infos are not equal in width, height and/or pixel format."},
    {100012, "The requested function or format is not supported."},
    {100013, "Unsupported pixel format in the source info."},
    {100014, "Unsupported pixel format in the destination info."},
    {100015, "Color planes not supported in this function."},
    {100016, "Line revrsion is not supported by this function"},
    {100017, "Line increment too big for in-place deinterlace (max. width 2048)"},
    {100018, "The destination bitmap has incompatible info and KaipOption_ReallocateDst is not set."},
    {100020, "Incompatible source and destination width and height"},
    {100021, "Incompatible source and destination width and height (must be reversed)."},
    {100023, "Incompatible source and destination pixel format."},
    {100024, "Incompatible source and destination flags."},
    {100025, "Destination rectangle is outside of the source image.."},
    {100026, "The source image info does not have image buffer allocated/specified."},
    {100027, "The destination image info does not have image buffer allocated/specified."},
    {100028, "The image is in not displayable format and image info for conversion was not supplied."},
    {100030, kLutText},
    {100032, "The reference image has different pixel format than the source image."},
    {100033, "The reference image has different flags (orientation, etc.) than the source image."},
    {100034, "Cannot open or read from the file."},
    {100035, "Cannot create or write to the file."},
    {100036, "The content of the TIFF file is invalid. Only TIFF files created by this libary are supported."},
    {100037, "The content of the BMP file is invalid or unsupported."},
};

TEST(StatusMsg, EveryCodeHasItsText)
{
    std::vector<std::pair<KaipStatus, const char*>> texts(std::begin(kTexts), std::end(kTexts));
    for (KaipStatus unused : {0, 100010, 100019, 100022, 100029, 100031, 100038, 100039, 100040, 100041, -1, -100001})
        texts.push_back({unused, ""});
    for (const auto& [status, text] : texts) {
        char buffer[256];
        std::memset(buffer, 'x', sizeof buffer);
        EXPECT_EQ(KaipGetStatusMsg(status, buffer, sizeof buffer), buffer);
        EXPECT_STREQ(buffer, text) << status;
        // strncpy fills the rest with zeros.
        for (size_t i = std::strlen(text); i < sizeof buffer; ++i) ASSERT_EQ(buffer[i], 0) << status;
    }
}

TEST(StatusMsg, TruncatesAndAlwaysTerminates)
{
    const std::string lutText = kLutText;
    for (size_t size : {1u, 2u, 20u, 47u, 48u, 49u, 64u}) {
        std::string buffer(size + 1, '#');
        KaipGetStatusMsg(100030, &buffer[0], size);
        EXPECT_EQ(std::string(buffer.c_str()), lutText.substr(0, size - 1)) << size;
        EXPECT_EQ(buffer[size - 1], '\0');
        EXPECT_EQ(buffer[size], '#') << "wrote past the buffer";
    }
}

TEST(StatusMsg, SizeZeroTerminatesTheByteBefore)
{
    char buffer[4] = {'a', 'b', 'c', 'd'};
    KaipGetStatusMsg(100001, buffer + 1, 0);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(buffer[1], 'b');
}

}  // namespace
