// bilinear.cpp: bilinear Bayer interpolation: each missing colour is the truncated mean of its nearest sites.
#include "bayer/bayer.h"
#include "bayer/bilinear_simd.h"
#include "bayer/decoder_frame.h"

KaipStatus BdBilinearInterpolation(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwDstPixelFormat,
                                   uint32_t dwOptions, KaipHLut hLut)
{
    TBayerJob job;
    TBayerLut lut;
    uint32_t dwDstBytes = 0;
    const KaipStatus status = PrepareInterpolatingDecoder("KaipBdBilinearInterpolation", pSrcImgInfo, pDstImgInfo,
                                                          dwDstPixelFormat, dwOptions, hLut, job, lut, dwDstBytes);
    if (status != KASTATUS_OK) return status;
    const uint32_t w = job.src.Width, h = job.src.Height;
    const TBayerPlanes planes = JobPlanes(job);
    // Vector blocks first where the switches allow, the scalar rule for the rest.
    const uint32_t x0 = BilinearInterior_intr(planes, w, h, job.dwBits, dwDstBytes, lut, hLut == nullptr);
    WithDepth(job.dwBits, [&](auto bits) {
        WithPixelBytes(dwDstBytes,
                       [&](auto bytes) { RunInterior(TBilinear<bits, bytes>{lut}, planes, h, x0, w - 1, 1, h - 1); });
    });
    CalculateFrame1(planes.pSrc, w, h, planes.dwSrcLineIncrement, job.dwBits, job.bShiftLine, job.bShiftColumn,
                    planes.pDst, planes.dwDstLineIncrement, dwDstBytes * 8, hLut);
    return KASTATUS_OK;
}
