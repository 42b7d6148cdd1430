// exports.cpp: the exported functions of the image core.
#include "core/common.h"
#include "core/log.h"
#include "core/status.h"

extern "C" {

KAIP_API KaipStatus KaipInitImgInfo(KaipImgInfo* pImgInfo, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwPixelFormat,
                                    uint32_t dwFlags)
{
    if (!pImgInfo) return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: pImgInfo is NULL!", "KaipInitImgInfo");
    return InitImgInfo(pImgInfo, dwWidth, dwHeight, dwPixelFormat, dwFlags);
}

KAIP_API uint32_t KaipGetImageDataSize(const KaipImgInfo* pImgInfo)
{
    return pImgInfo ? pImgInfo->Height * pImgInfo->LineIncrement : 0;
}

KAIP_API KaipStatus KaipAllocateImageData(KaipImgInfo* pImgInfo)
{
    if (!pImgInfo) return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: pImgInfo is NULL!", "KaipAllocateImageData");
    if (!IsImgInfoInitialized(pImgInfo))
        return Refuse(KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED, "%s: pImgInfo is not initialized!",
                      "KaipAllocateImageData");
    return AllocateImageData(pImgInfo);
}

KAIP_API KaipStatus KaipDeallocateImageData(KaipImgInfo* pImgInfo)
{
    if (!pImgInfo) return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: pImgInfo is NULL!", "KaipDeallocateImageData");
    if (!(pImgInfo->Flags & KaipImgFlag_NoDeallocate)) DeallocateImageData(pImgInfo);
    return KASTATUS_OK;
}

KAIP_API char* KaipGetStatusMsg(KaipStatus status, char* pszBuffer, uint64_t dwBufferSize)
{
    return GetStatusMsg(status, pszBuffer, dwBufferSize);
}

}  // extern "C"
