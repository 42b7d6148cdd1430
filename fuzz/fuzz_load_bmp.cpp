// fuzz_load_bmp.cpp: KaipLoadFromBmp on arbitrary bytes, under each line-order option; a loaded
// image is read whole and saved again.
#include "fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static CMemFile file;
    const char* path = file.Write(data, size);
    for (uint32_t options : {0u, KaipBmpOption_BottomUpFile, KaipBmpOption_BottomUpImage}) {
        KaipImgInfo img{};
        const KaipStatus status = KaipLoadFromBmp(path, &img, options);
        CheckStatus(status);
        if (status == KASTATUS_OK) {
            TouchImage(img);
            CheckStatus(KaipSaveToBmp("/dev/null", &img, options & KaipBmpOption_BottomUpFile));
        }
        KaipDeallocateImageData(&img);
    }
    return 0;
}
