// check.cpp: the common source/destination checks, in their fixed order, and the destination rebuild.
#include "core/check.h"

#include <cstdio>
#include <initializer_list>

#include "core/common.h"
#include "core/log.h"
#include "platform/os_buffer.h"

namespace {

bool InClassMask(int iClass, uint64_t qwMask)
{
    return iClass >= 0 && (qwMask & (1ull << iClass)) != 0;
}

bool HasBuffers(const KaipImgInfo* pImgInfo)
{
    if (pImgInfo->Flags & KaipImgFlag_ColorPlanes) return pImgInfo->pDataR && pImgInfo->pDataG && pImgInfo->pDataB;
    return pImgInfo->pData != nullptr;
}

// A misfit of the destination: with KaipOption_ReallocateDst the caller rebuilds it, without
// it the lines are logged and the status returned.
template <typename... TDetails>
KaipStatus Misfit(bool& bReallocate, uint32_t dwOptions, KaipStatus status, const char* pszFunc, const char* pszFormat,
                  TDetails... details)
{
    if (dwOptions & KaipOption_ReallocateDst) {
        bReallocate = true;
        return KASTATUS_OK;
    }
    Log.Debug(pszFormat, pszFunc);
    if constexpr (sizeof...(TDetails) > 0) (Log.Debug("%s    %s", pszFunc, details), ...);
    return status;
}

}  // namespace

KaipStatus CheckSrcImgInfo(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, uint64_t qwClassMask, uint64_t qwCheck)
{
    if (!pSrcImgInfo) return Refuse(KASTATUS_KAIP_INVALID_SRC_POINTER, "%s: pSrcImgInfo is NULL!", pszFunc);
    if (!IsImgInfoInitialized(pSrcImgInfo))
        return Refuse(KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED, "%s: pSrcImgInfo is not initialized!", pszFunc);
    const bool planes = (pSrcImgInfo->Flags & KaipImgFlag_ColorPlanes) != 0;
    if (!HasBuffers(pSrcImgInfo))
        return Refuse(
            KASTATUS_KAIP_SRC_NOT_ALLOCATED,
            planes ? "%s: pSrcImgInfo->pDataR or pDataG or pDataB is NULL!" : "%s: pSrcImgInfo->pData is NULL!",
            pszFunc);
    // The callers log their own line for an unsupported source format.
    if (qwClassMask != 0 && !InClassMask(GetSrcPixelFormatClass(pSrcImgInfo->PixelFormat), qwClassMask))
        return KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT;
    if (planes && !(qwCheck & KaipCheck_ColorPlanesAllowed))
        return Refuse(KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED, "%s: the color planes are not supported", pszFunc);
    return KASTATUS_OK;
}

KaipStatus CheckImgInfos(const char* pszFunc, const KaipImgInfo* pSrcImgInfo, const KaipImgInfo* pDstImgInfo,
                         uint32_t dwOptions, uint64_t qwSrcClassMask, uint32_t dwDstPixelFormat,
                         uint64_t qwDstClassMask, uint64_t qwCheck, uint32_t ChkFlagsMustBeEqual, bool* pbReallocate)
{
    bool bReallocate = false;
    if (pbReallocate) *pbReallocate = false;
    KaipStatus status = CheckSrcImgInfo(pszFunc, pSrcImgInfo, qwSrcClassMask, qwCheck);
    if (status != KASTATUS_OK) return status;
    if (!pDstImgInfo) {
        if (qwCheck & KaipCheck_DstRequired)
            return Refuse(KASTATUS_KAIP_INVALID_DST_POINTER,
                          "%s: pDstImgInfo is NULL - must be supplied for this function", pszFunc);
        return KASTATUS_OK;
    }
    const KaipImgInfo& src = *pSrcImgInfo;
    const KaipImgInfo& dst = *pDstImgInfo;
    char srcDetail[64], dstDetail[64];
    if ((qwCheck & KaipCheck_SameSize) && (src.Width != dst.Width || src.Height != dst.Height)) {
        std::snprintf(srcDetail, sizeof srcDetail, "Src: w=%d, h=%d", int(src.Width), int(src.Height));
        std::snprintf(dstDetail, sizeof dstDetail, "Dst: w=%d, h=%d", int(dst.Width), int(dst.Height));
        status = Misfit(bReallocate, dwOptions, KASTATUS_KAIP_INCOMPATIBLE_SIZE, pszFunc,
                        "%s: Src and Dst images differ in size and KaipOption_ReallocateDst flag is not present.",
                        srcDetail, dstDetail);
        if (status != KASTATUS_OK) return status;
    }
    if ((qwCheck & KaipCheck_RotatedSize) && (src.Width != dst.Height || src.Height != dst.Width)) {
        std::snprintf(srcDetail, sizeof srcDetail, "Src: w=%d, h=%d", int(src.Width), int(src.Height));
        std::snprintf(dstDetail, sizeof dstDetail, "Dst: w=%d, h=%d", int(dst.Width), int(dst.Height));
        status =
            Misfit(bReallocate, dwOptions, KASTATUS_KAIP_INCOMPATIBLE_ROTATED_SIZE, pszFunc,
                   "%s: Src and Dst (rotated) images differ in size and KaipOption_ReallocateDst flag is not present.",
                   srcDetail, dstDetail);
        if (status != KASTATUS_OK) return status;
    }
    if ((qwCheck & KaipCheck_SamePixelFormat) && src.PixelFormat != dst.PixelFormat) {
        std::snprintf(srcDetail, sizeof srcDetail, "Src pixel format=0x%.8x, Dst pixel format=0x%.8x", src.PixelFormat,
                      dst.PixelFormat);
        status =
            Misfit(bReallocate, dwOptions, KASTATUS_KAIP_INCOMPATIBLE_SRC_DST_PIXEL_FORMAT, pszFunc,
                   "%s: Src and Dst images differ in pixel format and KaipOption_ReallocateDst flag is not present.",
                   srcDetail);
        if (status != KASTATUS_OK) return status;
    }
    if (!HasBuffers(pDstImgInfo)) {
        status = Misfit(bReallocate, dwOptions, KASTATUS_KAIP_DST_NOT_ALLOCATED, pszFunc,
                        (dst.Flags & KaipImgFlag_ColorPlanes)
                            ? "%s: pDstImgInfo->pDataR or pDataG or pDataB is NULL and KaipOption_ReallocateDst "
                              "flag is not present."
                            : "%s: pDstImgInfo->pData is NULL and KaipOption_ReallocateDst flag is not present.");
        if (status != KASTATUS_OK) return status;
    }
    if (qwDstClassMask != 0 && !InClassMask(GetDstPixelFormatClass(dwDstPixelFormat), qwDstClassMask))
        return Refuse(KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT, "%s: destination pixel format = 0x%.8x not supported",
                      pszFunc, dwDstPixelFormat);
    if ((qwCheck & KaipCheck_SameOrientation) && ((src.Flags ^ dst.Flags) & KaipImgFlag_BottomUp)) {
        status = Misfit(bReallocate, dwOptions, KASTATUS_KAIP_LINE_REVERSION_NOT_SUPPORTED, pszFunc,
                        "%s: Src and Dst images differ in orientation and KaipOption_ReallocateDst flag is not "
                        "present.");
        if (status != KASTATUS_OK) return status;
    }
    if (ChkFlagsMustBeEqual & (src.Flags ^ dst.Flags)) {
        std::snprintf(srcDetail, sizeof srcDetail, "Src Flags=0x%x, Dst Flags=0x%x, ChkFlagsMustBeEqual=0x%x",
                      src.Flags, dst.Flags, ChkFlagsMustBeEqual);
        status = Misfit(bReallocate, dwOptions, KASTATUS_KAIP_INCOMPATIBLE_FLAGS, pszFunc,
                        "%s: Src and Dst images differ in flags and KaipOption_ReallocateDst flag is not present.",
                        srcDetail);
        if (status != KASTATUS_OK) return status;
    }
    // A destination to be rebuilt (for its shape, or for the format the caller will produce) on the
    // source's own buffer would be freed under the reader.
    const bool bFormatMisfit =
        (dwOptions & KaipOption_ReallocateDst) && dwDstPixelFormat != 0 && dwDstPixelFormat != dst.PixelFormat;
    if ((bReallocate || bFormatMisfit) && RebuildFreesSource(pSrcImgInfo, pDstImgInfo))
        return Refuse(KASTATUS_KAIP_INCOMPATIBLE_DST, "%s: the destination to rebuild holds the source's buffer",
                      pszFunc);
    if (pbReallocate) *pbReallocate = bReallocate;
    return KASTATUS_OK;
}

bool RebuildFreesSource(const KaipImgInfo* pSrcImgInfo, const KaipImgInfo* pDstImgInfo)
{
    if (pDstImgInfo->Flags & KaipImgFlag_NoDeallocate) return false;
    const uint8_t* const src[] = {pSrcImgInfo->pData, pSrcImgInfo->pDataR, pSrcImgInfo->pDataG, pSrcImgInfo->pDataB};
    for (const uint8_t* d : {pDstImgInfo->pData, pDstImgInfo->pDataR, pDstImgInfo->pDataG, pDstImgInfo->pDataB})
        for (const uint8_t* s : src)
            if (d && d == s && oxOsBufferOwns(d)) return true;
    return false;
}

KaipStatus ReallocateDst(const char* pszFunc, KaipImgInfo* pDstImgInfo, uint32_t dwWidth, uint32_t dwHeight,
                         uint32_t dwPixelFormat, uint32_t dwOptions)
{
    if (!(dwOptions & KaipOption_ReallocateDst))
        return Refuse(KASTATUS_KAIP_INCOMPATIBLE_DST,
                      "%s: the destination bitmap has incompatible info and KaipOption_ReallocateDst is not set.",
                      pszFunc);
    // A rebuilt destination is always written through pData: the colour-planes bit of the options
    // word would leave it without one, so it is refused before anything is freed.
    if (dwOptions & KaipImgFlag_ColorPlanes)
        return Refuse(KASTATUS_KAIP_COLOR_PLANES_NOT_SUPPORTED, "%s: the color planes are not supported", pszFunc);
    if (!(pDstImgInfo->Flags & KaipImgFlag_NoDeallocate)) DeallocateImageData(pDstImgInfo);
    KaipStatus status = InitImgInfo(pDstImgInfo, dwWidth, dwHeight, dwPixelFormat, dwOptions);
    if (status != KASTATUS_OK) return status;
    return AllocateImageData(pDstImgInfo);
}
