// lut_exports.cpp: the exported LUT functions, each forwarding to its internal twin.
#include "general/lut.h"

KAIP_API KaipHLut KaipAllocateLut(uint32_t dwLutType) { return AllocateLut(dwLutType); }
KAIP_API KaipStatus KaipFreeLut(KaipHLut hLut) { return FreeLut(hLut); }
KAIP_API KaipStatus KaipResetLut(KaipHLut hLut) { return ResetLut(hLut); }

KAIP_API KaipStatus KaipApplyLut(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, KaipHLut hLut, uint32_t dwOptions)
{
    return ApplyLut(pSrcImgInfo, pDstImgInfo, hLut, dwOptions);
}
