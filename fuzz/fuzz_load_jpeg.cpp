// fuzz_load_jpeg.cpp: KaipLoadFromJpeg on arbitrary bytes: header only, then into a destination
// rebuilt by the loader, and into one that already fits (which the loader must reuse).
#include "fuzz_util.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static CMemFile file;
    const char* path = file.Write(data, size);

    KaipImgInfo header{};
    CheckStatus(KaipLoadFromJpeg(path, &header, KaipJpegOption_HeaderOnly));
    if (header.pData || (header.Flags & KaipImgFlag_DataAllocated)) std::abort();  // header only allocates nothing
    // The loader allocates what the header declares (up to 4 GiB) before it can tell that the
    // compressed data is short; frames beyond 4 megapixels are left to the header-only load.
    if (uint64_t(header.Width) * header.Height > (1u << 22)) return 0;

    for (uint32_t options : {KaipOption_ReallocateDst, KaipOption_ReallocateDst | KaipJpegOption_BGR}) {
        KaipImgInfo img{};
        KaipStatus status = KaipLoadFromJpeg(path, &img, options);
        CheckStatus(status);
        if (status == KASTATUS_OK) {
            TouchImage(img);
            // A second load into the fitting destination reuses its buffer.
            uint8_t* const pBefore = img.pData;
            status = KaipLoadFromJpeg(path, &img, options & ~KaipOption_ReallocateDst);
            CheckStatus(status);
            if (status == KASTATUS_OK && img.pData != pBefore) std::abort();
            if (uint64_t(img.Width) * img.Height <= 1u << 16 && img.pData)
                CheckStatus(KaipSaveToJpeg("/dev/null", &img, 75));
        }
        KaipDeallocateImageData(&img);
    }
    return 0;
}
