// file.h: the image file functions behind the exported Kaip* wrappers (BMP, TIFF, JPEG).
#pragma once

#include <cstdint>

#include "core/common.h"
#include "pm.imgproc.h"

// A scratch image allocated by the library, released when it goes out of scope.
struct CTempImage {
    KaipImgInfo info{};
    CTempImage() = default;
    CTempImage(const CTempImage&) = delete;
    CTempImage& operator=(const CTempImage&) = delete;
    ~CTempImage() { DeallocateImageData(&info); }
};

KaipStatus BmpInfoToImgInfo(const tagBITMAPINFO* pBmpInfo, KaipImgInfo* pImgInfo);
KaipStatus ImgInfoToBmpInfo(const KaipImgInfo* pImgInfo, tagBITMAPINFO* pBmpInfo);
KaipStatus SaveToBmp(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwOptions);
KaipStatus LoadFromBmp(const char* pszFileName, KaipImgInfo* pDstImgInfo, uint32_t dwOptions);

KaipStatus SaveToTiff(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwOptions);
KaipStatus LoadFromTiff(const char* pszFileName, KaipImgInfo* pDstImgInfo);

KaipStatus SaveToJpeg(const char* pszFileName, const KaipImgInfo* pSrcImgInfo, uint32_t dwQuality);
KaipStatus LoadFromJpeg(const char* pszFileName, KaipImgInfo* pDstImgInfo, uint32_t dwOptions);
