// fuzz_bmp_info.cpp: KaipBmpInfoToImgInfo on an arbitrary bitmap header; an accepted header must
// give a descriptor whose buffer size fits in 32 bits and that describes itself back the same.
#include <cstring>

#include "fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    tagBITMAPINFO bmi{};
    std::memcpy(&bmi, data, size < sizeof(bmi) ? size : sizeof(bmi));
    KaipImgInfo img{};
    const KaipStatus status = KaipBmpInfoToImgInfo(&bmi, &img);
    CheckStatus(status);
    if (status != KASTATUS_OK) return 0;
    if (uint64_t(img.Height) * img.LineIncrement > UINT32_MAX) std::abort();
    if (uint64_t(img.PixelIncrement) * img.Width > img.LineIncrement) std::abort();
    tagBITMAPINFO back{};
    const KaipStatus backStatus = KaipImgInfoToBmpInfo(&img, &back);
    CheckStatus(backStatus);
    if (backStatus == KASTATUS_OK &&
        (back.bmiHeader.biWidth != bmi.bmiHeader.biWidth || back.bmiHeader.biBitCount != bmi.bmiHeader.biBitCount))
        std::abort();
    return 0;
}
