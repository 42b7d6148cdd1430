// exports.cpp: the exported image file functions, each forwarding to its internal twin.
#include "core/log.h"
#include "file/file.h"

KAIP_API KaipStatus KaipBmpInfoToImgInfo(const tagBITMAPINFO* pBmpInfo, KaipImgInfo* pImgInfo)
{
    if (!pImgInfo) return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: pImgInfo is NULL!", __func__);
    return BmpInfoToImgInfo(pBmpInfo, pImgInfo);
}

KAIP_API KaipStatus KaipImgInfoToBmpInfo(const KaipImgInfo* pImgInfo, tagBITMAPINFO* pBmpInfo)
{
    if (!pImgInfo) return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: pImgInfo is NULL!", __func__);
    return ImgInfoToBmpInfo(pImgInfo, pBmpInfo);
}

KAIP_API KaipStatus KaipSaveToBmp(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwOptions)
{
    return SaveToBmp(pszFileName, pSrcImgInfo, dwOptions);
}

KAIP_API KaipStatus KaipLoadFromBmp(const char* pszFileName, KaipImgInfo* pDstImgInfo, uint32_t dwOptions)
{
    return LoadFromBmp(pszFileName, pDstImgInfo, dwOptions);
}

KAIP_API KaipStatus KaipSaveToTiff(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwOptions)
{
    return SaveToTiff(pszFileName, pSrcImgInfo, dwOptions);
}

KAIP_API KaipStatus KaipLoadFromTiff(const char* pszFileName, KaipImgInfo* pDstImgInfo)
{
    return LoadFromTiff(pszFileName, pDstImgInfo);
}

KAIP_API KaipStatus KaipSaveToJpeg(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwQuality)
{
    return SaveToJpeg(pszFileName, pSrcImgInfo, dwQuality);
}

KAIP_API KaipStatus KaipLoadFromJpeg(const char* pszFileName, KaipImgInfo* pDstImgInfo, uint32_t dwOptions)
{
    return LoadFromJpeg(pszFileName, pDstImgInfo, dwOptions);
}
