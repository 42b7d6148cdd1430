// fuzz_load_tiff.cpp: KaipLoadFromTiff on arbitrary bytes into descriptors preset with the
// formats that decide how colour files are delivered; a loaded image is read whole and saved again.
#include "fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static CMemFile file;
    const char* path = file.Write(data, size);
    for (uint32_t preset : {0u, KaipPixelFormat_RGB8Packed, KaipPixelFormat_BGRA8Packed}) {
        KaipImgInfo img{};
        img.PixelFormat = preset;
        const KaipStatus status = KaipLoadFromTiff(path, &img);
        CheckStatus(status);
        if (status == KASTATUS_OK) {
            TouchImage(img);
            CheckStatus(KaipSaveToTiff("/dev/null", &img, 0));
        }
        KaipDeallocateImageData(&img);
    }
    return 0;
}
