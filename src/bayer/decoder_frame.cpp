// decoder_frame.cpp: the checks, LUT choice and two border rings (CalculateFrame1, CalculateFrame2) of the decoders.
#include "bayer/decoder_frame.h"

#include "bayer/decoder_window.h"
#include "core/check.h"
#include "core/common.h"
#include "core/log.h"

KaipStatus PrepareBayerJob(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                           uint32_t dwDstPixelFormat, uint32_t dwOptions, uint64_t qwDstClassMask, uint32_t dwMinSide,
                           TBayerJob& job)
{
    if (!pSrcImgInfo) {
        Log.Debug("%s: pSrcImgInfo is NULL!", pszFunc);
        return Refuse(KASTATUS_KAIP_INVALID_SRC_POINTER, "%s: returning status KASTATUS_KAIP_INVALID_SRC_POINTER",
                      pszFunc);
    }
    job.src = *pSrcImgInfo;
    job.pDst = pDstImgInfo;
    bool bBayer = false;
    GetFlagsFromPixelFormat(pSrcImgInfo->PixelFormat, job.src.PixelFormat, job.src.Flags, bBayer);
    if (!bBayer) {
        return Refuse(KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT, "%s: returning status KASTATUS_KAIP_NOT_BAYER_PIXEL_FORMAT",
                      pszFunc);
    }
    bool bReallocate = false;
    const KaipStatus status =
        CheckImgInfos(pszFunc, &job.src, pDstImgInfo, dwOptions,
                      KaipPixelFormatClass_Mono8 | KaipPixelFormatClass_Mono10 | KaipPixelFormatClass_Mono12,
                      dwDstPixelFormat, qwDstClassMask, KaipCheck_SameSize | KaipCheck_DstRequired, 0, &bReallocate);
    if (status != KASTATUS_OK) return status;
    if (job.src.Width < dwMinSide || job.src.Height < dwMinSide) {
        return Refuse(KASTATUS_KAIP_NOT_SUPPORTED, "%s: images below %ux%u pixels are not supported", pszFunc,
                      dwMinSide, dwMinSide);
    }
    if (bReallocate || pDstImgInfo->PixelFormat != dwDstPixelFormat) {
        const KaipStatus realloc =
            ReallocateDst(pszFunc, pDstImgInfo, job.src.Width, job.src.Height, dwDstPixelFormat, dwOptions);
        if (realloc != KASTATUS_OK) return realloc;
    }
    // Every worker writes pData: a destination held as colour planes has none to write.
    if (pDstImgInfo->Flags & KaipImgFlag_ColorPlanes) {
        return Refuse(KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED, "%s: the color planes are not supported", pszFunc);
    }
    // The source class mask above admits only the Mono8, Mono10 and Mono12 bases.
    job.dwBits = job.src.PixelFormat == KaipPixelFormat_Mono8    ? 8
                 : job.src.PixelFormat == KaipPixelFormat_Mono10 ? 10
                                                                 : 12;
    job.bShiftLine = (job.src.Flags & KaipImgFlag_BayerShiftLine) != 0;
    job.bShiftColumn = (job.src.Flags & KaipImgFlag_BayerShiftColumn) != 0;
    return KASTATUS_OK;
}

namespace {

template <class TTable>
const uint8_t* Bytes(const TTable& table)
{
    return reinterpret_cast<const uint8_t*>(table);
}

// Bodies of types without both Bayer flags lack these rows: their addresses are taken but
// never read, since the decoders that read them demand the full layout first.
template <class TBody>
void FillReplicated(const TBody& body, TBayerLut& lut)
{
    lut.pRed2 = Bytes(body.BayerRed16);
    lut.pBlue2 = Bytes(body.BayerBlue16);
    lut.pRed4 = Bytes(body.BayerRed32);
    lut.pGreen4 = Bytes(body.BayerGreen32);
    lut.pBlue4 = Bytes(body.BayerBlue32);
}

void FillTables(const TKaIpLut8& body, TBayerLut& lut)
{
    lut.pRed = body.Red;
    lut.pGreen = body.Green;
    lut.pBlue = body.Blue;
    FillReplicated(body, lut);
}

template <unsigned Bits>
void FillTables(const TKaIpLutWord<Bits>& body, TBayerLut& lut)
{
    lut.pRed = body.BayerRed8;
    lut.pGreen = body.BayerGreen8;
    lut.pBlue = body.BayerBlue8;
    FillReplicated(body, lut);
}

// The body of one depth behind a handle; false when GetLut* refuses the handle.
template <class TBody>
bool Resolve(KaipHLut hLut, TBody& linear, TBody& global, KaipStatus (*getLut)(KaipHLut, TBody*&), TBayerLut& lut)
{
    TBody* pBody = nullptr;
    if (!hLut) {
        pBody = &linear;
    } else if (hLut == reinterpret_cast<KaipHLut>(1)) {
        pBody = &global;
    } else if (getLut(hLut, pBody) != KASTATUS_OK) {
        return false;
    }
    FillTables(*pBody, lut);
    return true;
}

bool ResolveBayerLut(KaipHLut hLut, uint32_t dwBits, TBayerLut& lut)
{
    switch (dwBits) {
        case 8:
            return Resolve(hLut, g_LutLinear8, g_Lut8, GetLut8, lut);
        case 10:
            return Resolve(hLut, g_LutLinear10, g_Lut10, GetLut10, lut);
        default:
            return Resolve(hLut, g_LutLinear12, g_Lut12, GetLut12, lut);
    }
}

}  // namespace

KaipStatus SelectBayerLut(const char* pszFunc, KaipHLut hLut, uint32_t dwBits, TLutDemand demand, TBayerLut& lut)
{
    if (!ResolveBayerLut(hLut, dwBits, lut)) {
        return Refuse(KASTATUS_KAIP_INVALID_LUT_TYPE, "%s: KASTATUS_KAIP_INVALID_LUT_TYPE", pszFunc);
    }
    // The identity and the global bodies, named by null and 1, have the full Bayer layout.
    const uint32_t dwType = IsGlobalLutHandle(hLut) ? kLutFullBayer : *hLut;
    if (demand == TLutDemand::BayerAboveEight && dwBits != 8 && !(dwType & KAIP_LUT_BAYER)) {
        // The text names the other Bayer flag; callers match on it as it stands.
        return Refuse(KASTATUS_KAIP_INVALID_LUT_TYPE,
                      "%s: invalid LUT type (not KAIP_LUT_BAYER_16), returning KASTATUS_KAIP_INVALID_LUT_TYPE",
                      pszFunc);
    }
    if (demand == TLutDemand::FullBayer && !HasFullBayerLayout(dwType)) {
        return Refuse(KASTATUS_KAIP_INVALID_LUT_TYPE,
                      "%s: invalid LUT type (not KAIP_LUT_BAYER), returning KASTATUS_KAIP_INVALID_LUT_TYPE", pszFunc);
    }
    return KASTATUS_OK;
}

KaipStatus PrepareInterpolatingDecoder(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo,
                                       uint32_t dwDstPixelFormat, uint32_t dwOptions, KaipHLut hLut, TBayerJob& job,
                                       TBayerLut& lut, uint32_t& dwDstBytes)
{
    KaipStatus status = PrepareBayerJob(pszFunc, pSrcImgInfo, pDstImgInfo, dwDstPixelFormat, dwOptions,
                                        KaipPixelFormatClass_BGR8Packed | KaipPixelFormatClass_BGRA8Packed, 2, job);
    if (status != KASTATUS_OK) return status;
    status = SelectBayerLut(pszFunc, hLut, job.dwBits, TLutDemand::FullBayer, lut);
    if (status != KASTATUS_OK) return status;
    dwDstBytes = dwDstPixelFormat == KaipPixelFormat_BGR8Packed    ? 3
                 : dwDstPixelFormat == KaipPixelFormat_BGRA8Packed ? 4
                                                                   : 0;
    if (dwDstBytes == 0) {
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, "%s: KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT.",
                      pszFunc);
    }
    return KASTATUS_OK;
}

namespace {

// Line 0 and the last line whole, then the first and last column of the lines between.
template <unsigned Bits, uint32_t DstBytes>
void RunFrame(const TBayerPlanes& p, const TBayerLut& lut, uint32_t dwWidth, uint32_t dwHeight)
{
    const uint32_t yLast = dwHeight - 1, xLast = dwWidth - 1;
    for (uint32_t x = 0; x < dwWidth; ++x) FramePixel<Bits, DstBytes>(p, lut, x, 0);
    if (yLast > 0) {
        for (uint32_t x = 0; x < dwWidth; ++x) FramePixel<Bits, DstBytes>(p, lut, x, yLast);
    }
    for (uint32_t y = 1; y < yLast; ++y) {
        FramePixel<Bits, DstBytes>(p, lut, 0, y);
        if (xLast > 0) FramePixel<Bits, DstBytes>(p, lut, xLast, y);
    }
}

// Calls f with the depth (8, 10, 12) and the destination pixel size (1, 3, 4) as compile-time constants.
template <class F>
void WithFrameKind(uint32_t dwSrcBits, uint32_t dwDstBytes, F&& f)
{
    WithDepth(dwSrcBits, [&](auto bits) {
        if (dwDstBytes == 1) f(bits, std::integral_constant<uint32_t, 1>{});
        WithPixelBytes(dwDstBytes, [&](auto bytes) { f(bits, bytes); });
    });
}

}  // namespace

void CalculateFrame1(const uint8_t* pSrc, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwSrcLineIncrement,
                     uint32_t dwSrcBits, bool bShiftLine, bool bShiftColumn, uint8_t* pDst, uint32_t dwDstLineIncrement,
                     uint32_t dwDstBitsPerPixel, KaipHLut hLut)
{
    const TBayerPlanes p{pSrc, dwSrcLineIncrement, pDst, dwDstLineIncrement, bShiftLine, bShiftColumn};
    TBayerLut lut;
    if (dwWidth == 0 || dwHeight == 0 || dwDstBitsPerPixel % 8 || !ResolveBayerLut(hLut, dwSrcBits, lut)) return;
    WithFrameKind(dwSrcBits, dwDstBitsPerPixel / 8,
                  [&](auto bits, auto bytes) { RunFrame<bits, bytes>(p, lut, dwWidth, dwHeight); });
}

void CalculateFrame2(const uint8_t* pSrc, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwSrcLineIncrement,
                     uint32_t dwSrcBits, bool bShiftLine, bool bShiftColumn, uint8_t* pDst, uint32_t dwDstLineIncrement,
                     uint32_t dwDstBitsPerPixel, KaipHLut hLut)
{
    TBayerLut lut;
    if (dwWidth < 3 || dwHeight < 3 || !ResolveBayerLut(hLut, dwSrcBits, lut)) return;
    const TBayerPlanes p{pSrc, dwSrcLineIncrement, pDst, dwDstLineIncrement, bShiftLine, bShiftColumn};
    const uint32_t xLast = dwWidth - 2, yLast = dwHeight - 2;  // the ring's last column and line
    WithDepth(dwSrcBits, [&](auto bits) {
        WithPixelBytes(dwDstBitsPerPixel / 8, [&](auto bytes) {
            const TBilinear<bits, bytes> k{lut};
            RunInterior(k, p, dwHeight, 1, xLast + 1, 1, 2);
            if (yLast > 1) RunInterior(k, p, dwHeight, 1, xLast + 1, yLast, yLast + 1);
            RunInterior(k, p, dwHeight, 1, 2, 2, yLast);
            if (xLast > 1) RunInterior(k, p, dwHeight, xLast, xLast + 1, 2, yLast);
        });
    });
}
