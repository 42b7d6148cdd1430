// fuzz_descriptor.cpp: a source and a destination descriptor built from fuzzed fields (size,
// pixel format, flags, pixel and line increments) over buffers that hold exactly Height lines of
// LineIncrement bytes (per plane in colour-planes mode), handed to one image function chosen by
// the input. The line increment always covers a line of the format, as callers guarantee; every
// other field is free. A status outside the library's codes, or any access outside the buffers,
// is a failure.
#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <memory>
#include <vector>

#include "fuzz_util.h"

namespace {

const uint32_t kFormats[] = {
    KaipPixelFormat_Mono8,
    KaipPixelFormat_BayerGR8,
    KaipPixelFormat_BayerRG8,
    KaipPixelFormat_BayerGB8,
    KaipPixelFormat_BayerBG8,
    KaipPixelFormat_Mono9,
    KaipPixelFormat_Mono10,
    KaipPixelFormat_BayerGR10,
    KaipPixelFormat_BayerRG10,
    KaipPixelFormat_BayerGB10,
    KaipPixelFormat_BayerBG10,
    KaipPixelFormat_Mono11,
    KaipPixelFormat_Mono12,
    KaipPixelFormat_BayerGR12,
    KaipPixelFormat_BayerRG12,
    KaipPixelFormat_BayerGB12,
    KaipPixelFormat_BayerBG12,
    KaipPixelFormat_Mono13,
    KaipPixelFormat_Mono14,
    KaipPixelFormat_Mono15,
    KaipPixelFormat_Mono16,
    KaipPixelFormat_BayerGR16,
    KaipPixelFormat_BayerRG16,
    KaipPixelFormat_BayerGB16,
    KaipPixelFormat_BayerBG16,
    KaipPixelFormat_Mono10Packed,
    KaipPixelFormat_BayerGR10Packed,
    KaipPixelFormat_BayerRG10Packed,
    KaipPixelFormat_BayerGB10Packed,
    KaipPixelFormat_BayerBG10Packed,
    KaipPixelFormat_Mono12Packed,
    KaipPixelFormat_BayerGR12Packed,
    KaipPixelFormat_BayerRG12Packed,
    KaipPixelFormat_BayerGB12Packed,
    KaipPixelFormat_BayerBG12Packed,
    KaipPixelFormat_Mono10Mipi,
    KaipPixelFormat_BayerGR10Mipi,
    KaipPixelFormat_BayerRG10Mipi,
    KaipPixelFormat_BayerGB10Mipi,
    KaipPixelFormat_BayerBG10Mipi,
    KaipPixelFormat_Mono12Mipi,
    KaipPixelFormat_BGR555,
    KaipPixelFormat_BGR565Packed,
    KaipPixelFormat_BGR8Packed,
    KaipPixelFormat_BGRA8Packed,
    KaipPixelFormat_RGB8Packed,
    KaipPixelFormat_RGBA8Packed,
    KaipPixelFormat_RGB10V1Packed,
    KaipPixelFormat_RGB10V2Packed,
    KaipPixelFormat_BGR10Packed,
    KaipPixelFormat_RGB10Packed,
    KaipPixelFormat_BGR12Packed,
    KaipPixelFormat_RGB12Packed,
    KaipPixelFormat_BGR16,
    KaipPixelFormat_RGB16Packed,
    KaipPixelFormat_YUV411Packed,
    KaipPixelFormat_YCbCr411_8_CbYYCrYY,
    KaipPixelFormat_YCbCr411_8,
    KaipPixelFormat_YCbCr601_411_8_CbYYCrYY,
    KaipPixelFormat_YCbCr709_411_8_CbYYCrYY,
    KaipPixelFormat_YUV422Packed,
    KaipPixelFormat_YUV422_YUYV_Packed,
    KaipPixelFormat_YUV444Packed,
    KaipPixelFormat_YCbCr8,
    KaipPixelFormat_YCbCr8_CbYCr,
    KaipPixelFormat_YCbCr422_8,
    KaipPixelFormat_YCbCr422_8_CbYCrY,
    KaipPixelFormat_YCbCr601_422_8,
    KaipPixelFormat_YCbCr601_422_8_CbYCrY,
    KaipPixelFormat_YCbCr709_422_8,
    KaipPixelFormat_YCbCr709_422_8_CbYCrY,
    KaipPixelFormat_YCbCr601_8_CbYCr,
    KaipPixelFormat_YCbCr709_8_CbYCr,
    KaipPixelFormat_RGB8Planar,
    KaipPixelFormat_RGB10Planar,
    KaipPixelFormat_RGB12Planar,
    KaipPixelFormat_RGB16Planar,
};

// Bits of one pixel: the GigE Vision code carries them in bits 16..23; the library's own
// Mono9 .. Mono15 codes hold one 16-bit word. Unknown codes are given 64 so that any reading
// of them stays inside the line.
uint32_t PixelBits(uint32_t format)
{
    if (format < 0x10000) return 16;
    for (uint32_t known : kFormats)
        if (known == format) return (format >> 16) & 0xFF;
    return 64;
}

// A descriptor and the buffers it owns.
struct FuzzImage {
    KaipImgInfo info{};
    std::array<std::unique_ptr<uint8_t[]>, 3> planes;

    // Buffers made here carry KaipImgFlag_NoDeallocate when the library could rebuild them.
    void Build(FuzzedDataProvider& fdp, uint32_t width, uint32_t height, uint32_t format, uint32_t extraFlags)
    {
        info.Width = width;
        info.Height = height;
        info.PixelFormat = format;
        info.Flags = (fdp.ConsumeIntegral<uint32_t>() &
                      (KaipImgFlag_InitMask | KaipImgFlag_Align4 | KaipImgFlag_Align8 | KaipImgFlag_Align16)) |
                     extraFlags;
        info.PixelIncrement = fdp.ConsumeIntegralInRange<uint32_t>(0, 8);
        const uint32_t bits = PixelBits(format);
        const uint32_t line = uint32_t((uint64_t(width) * bits + 7) / 8);
        // Formats of 16- and 32-bit words keep their lines aligned to the word, as callers guarantee.
        const uint32_t align = bits % 32 == 0 ? 4 : bits % 16 == 0 ? 2 : 1;
        info.LineIncrement = (line + fdp.ConsumeIntegralInRange<uint32_t>(0, 16) + align - 1) / align * align;
        const size_t bytes = size_t(height) * info.LineIncrement;
        const bool bPlanes = info.Flags & KaipImgFlag_ColorPlanes;
        for (int i = 0; i < (bPlanes ? 3 : 1); ++i) {
            planes[i].reset(new uint8_t[bytes ? bytes : 1]);
            for (size_t b = 0; b < bytes; ++b) planes[i][b] = uint8_t(b * 131 + i * 7 + fdp.ConsumeIntegral<uint8_t>());
        }
        if (bPlanes) {
            info.pDataR = planes[0].get();
            info.pDataG = planes[1].get();
            info.pDataB = planes[2].get();
        } else {
            info.pData = planes[0].get();
        }
        // Now and then a missing buffer.
        if (fdp.ConsumeIntegralInRange<int>(0, 15) == 0) info.pData = info.pDataG = nullptr;
    }
};

uint32_t PickFormat(FuzzedDataProvider& fdp)
{
    const uint32_t i = fdp.ConsumeIntegralInRange<uint32_t>(0, std::size(kFormats));
    return i < std::size(kFormats) ? kFormats[i] : fdp.ConsumeIntegral<uint32_t>();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider fdp(data, size);
    const uint32_t op = fdp.ConsumeIntegral<uint8_t>();
    const uint32_t width = fdp.ConsumeIntegralInRange<uint32_t>(0, 40);
    const uint32_t height = fdp.ConsumeIntegralInRange<uint32_t>(0, 24);
    const uint32_t srcFormat = PickFormat(fdp);
    const uint32_t dstFormat = PickFormat(fdp);
    const uint32_t options = fdp.ConsumeIntegral<uint32_t>() & (KaipOption_ReallocateDst | KaipImgFlag_InitMask |
                                                                KaipImgFlag_Align4 | KaipImgFlag_Align16);
    // The destination: none, a fitting one in the wanted format, or one of fuzzed shape.
    const int dstKind = fdp.ConsumeIntegralInRange<int>(0, 2);
    const KaipHLut hLut = fdp.ConsumeBool() ? nullptr : KaipHLut(1);
    std::array<int32_t, 9> matrix;
    for (int32_t& m : matrix) m = fdp.ConsumeIntegralInRange<int32_t>(-4000, 4000);
    const int32_t a = fdp.ConsumeIntegralInRange<int32_t>(-50, 50), b = fdp.ConsumeIntegralInRange<int32_t>(-50, 50);
    const int32_t c = fdp.ConsumeIntegralInRange<int32_t>(-50, 50), d = fdp.ConsumeIntegralInRange<int32_t>(-50, 50);

    FuzzImage src;
    src.Build(fdp, width, height, srcFormat, 0);
    FuzzImage dst;
    if (dstKind == 1) {
        dst.Build(fdp, width, height, dstFormat, KaipImgFlag_NoDeallocate);
    } else if (dstKind == 2) {
        dst.Build(fdp, fdp.ConsumeIntegralInRange<uint32_t>(0, 40), fdp.ConsumeIntegralInRange<uint32_t>(0, 40),
                  dstFormat, KaipImgFlag_NoDeallocate);
    }
    KaipImgInfo* pDst = dstKind ? &dst.info : nullptr;
    KaipImgInfo rebuilt{};  // for functions that need a destination when none was built
    KaipImgInfo* pAny = pDst ? pDst : &rebuilt;

    KaipStatus status = 0;
    uint32_t wb[3] = {1000, 1000, 1000};
    switch (op % 25) {
        case 0:
            status = KaipConvertToPixelFormat(&src.info, pAny, dstFormat, options);
            break;
        case 1:
            status = KaipBdShowMosaic(&src.info, pAny, dstFormat, options);
            break;
        case 2:
            status = KaipBdGreenToGreyscale(&src.info, pAny, dstFormat, options);
            break;
        case 3:
            status = KaipBdNearestNeighbour(&src.info, pAny, dstFormat, options, hLut);
            break;
        case 4:
            status = KaipBdBilinearInterpolation(&src.info, pAny, dstFormat, options, hLut);
            break;
        case 5:
            status = KaipBdEncodeToBayer(&src.info, pAny, dstFormat, options);
            break;
        case 6:
            status = KaipCalcWbFactors(&src.info, &wb[0], &wb[1], &wb[2], options & 3);
            break;
        case 7:
            status = KaipMirror(&src.info, pDst, a & 1, b & 1, options, hLut);
            break;
        case 8:
            status = KaipReverseLines(&src.info, pDst, options);
            break;
        case 9:
            status = KaipReverseLinesFast(&src.info, pDst, nullptr, options);
            break;
        case 10:
            status = KaipRotate90AndMirror(&src.info, pAny, a & 1, b & 1, c & 1, options, hLut);
            break;
        case 11:
            status = KaipDeinterlace(&src.info, pDst, options);
            break;
        case 12:
            status = KaipCopyArea(&src.info, pAny, a, b, c, d, options);
            break;
        case 13:
            status = KaipApplyLut(&src.info, pDst, hLut, options);
            break;
        case 14:
            status = KaipApplyRgbColorCorrection(&src.info, pDst, matrix.data(), options, hLut);
            break;
        case 15:
            status = KaipApply3x3Convolution(&src.info, pAny, matrix.data(), options, hLut);
            break;
        case 16:
            status = KaipFillWithColor(&src.info, uint8_t(a), uint8_t(b), uint8_t(c));
            break;
        case 17:
            status = KaipApplyShadingCorrection(&src.info, &src.info, &src.info, pDst, options);
            break;
        case 18:
            status = Kaip3x3ThresholdSharpening(&src.info, pAny, matrix.data(), a * 20, options, hLut);
            break;
        case 19:
            status = KaipSaveToBmp("/dev/null", &src.info, options & KaipBmpOption_BottomUpFile);
            break;
        case 20:
            status = KaipSaveToTiff("/dev/null", &src.info, options & KaipTiffOption_Scale16);
            break;
        case 21:
            status = KaipSaveToJpeg("/dev/null", &src.info, uint32_t(a + 50));
            break;
        case 22:
            status = KaipBdVariableGradients(&src.info, pAny, dstFormat, options, hLut);
            break;
        case 23:
            status = KaipBdPixelGrouping(&src.info, pAny, dstFormat, options, hLut);
            break;
        case 24:
            status = KaipBdBilinearColorCorrection(&src.info, pAny, dstFormat, options, hLut);
            break;
    }
    CheckStatus(status);
    // A destination rebuilt by the library (its buffers then carry KaipImgFlag_DataAllocated)
    // is read whole and released, whatever flags the options gave it.
    for (KaipImgInfo* p : {&rebuilt, &dst.info}) {
        if (p->Flags & KaipImgFlag_DataAllocated) {
            if (status == KASTATUS_OK) TouchImage(*p);
            p->Flags &= ~KaipImgFlag_NoDeallocate;
            KaipDeallocateImageData(p);
        }
    }
    return 0;
}
