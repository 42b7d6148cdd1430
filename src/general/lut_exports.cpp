// lut_exports.cpp: the exported LUT functions, each forwarding to its internal twin.
#include "general/lut.h"

KAIP_API KaipHLut KaipAllocateLut(uint32_t dwLutType)
{
    return AllocateLut(dwLutType);
}
KAIP_API KaipStatus KaipFreeLut(KaipHLut hLut)
{
    return FreeLut(hLut);
}
KAIP_API KaipStatus KaipResetLut(KaipHLut hLut)
{
    return ResetLut(hLut);
}

KAIP_API KaipStatus KaipApplyLut(KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, KaipHLut hLut, uint32_t dwOptions)
{
    return ApplyLut(pSrcImgInfo, pDstImgInfo, hLut, dwOptions);
}

KAIP_API KaipStatus KaipSet8BitLut(KaipHLut hLut, const uint8_t* pRed, const uint8_t* pGreen, const uint8_t* pBlue)
{
    return Set8BitLut(hLut, pRed, pGreen, pBlue);
}
KAIP_API KaipStatus KaipSet10BitLut(KaipHLut hLut, const uint16_t* pRed, const uint16_t* pGreen, const uint16_t* pBlue)
{
    return Set10BitLut(hLut, pRed, pGreen, pBlue);
}
KAIP_API KaipStatus KaipSet12BitLut(KaipHLut hLut, const uint16_t* pRed, const uint16_t* pGreen, const uint16_t* pBlue)
{
    return Set12BitLut(hLut, pRed, pGreen, pBlue);
}
KAIP_API KaipStatus KaipGet8BitLut(KaipHLut hLut, uint8_t* pRed, uint8_t* pGreen, uint8_t* pBlue)
{
    return Get8BitLut(hLut, pRed, pGreen, pBlue);
}
KAIP_API KaipStatus KaipGet10BitLut(KaipHLut hLut, uint16_t* pRed, uint16_t* pGreen, uint16_t* pBlue)
{
    return Get10BitLut(hLut, pRed, pGreen, pBlue);
}
KAIP_API KaipStatus KaipGet12BitLut(KaipHLut hLut, uint16_t* pRed, uint16_t* pGreen, uint16_t* pBlue)
{
    return Get12BitLut(hLut, pRed, pGreen, pBlue);
}
KAIP_API KaipStatus KaipSet8BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue)
{
    return Set8BitLutValue(hLut, dwChannel, dwIndex, dwValue);
}
KAIP_API KaipStatus KaipSet10BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue)
{
    return Set10BitLutValue(hLut, dwChannel, dwIndex, dwValue);
}
KAIP_API KaipStatus KaipSet12BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue)
{
    return Set12BitLutValue(hLut, dwChannel, dwIndex, dwValue);
}
KAIP_API KaipStatus KaipGet8BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint8_t* pValue)
{
    return Get8BitLutValue(hLut, dwChannel, dwIndex, pValue);
}
KAIP_API KaipStatus KaipGet10BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint16_t* pValue)
{
    return Get10BitLutValue(hLut, dwChannel, dwIndex, pValue);
}
KAIP_API KaipStatus KaipGet12BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint16_t* pValue)
{
    return Get12BitLutValue(hLut, dwChannel, dwIndex, pValue);
}

KAIP_API KaipStatus KaipAddGammaToLut(uint32_t dwGamma, KaipHLut hLut)
{
    return AddGammaToLut(dwGamma, hLut);
}
KAIP_API KaipStatus KaipAddWbToLut(uint32_t dwRedFactor, uint32_t dwGreenFactor, uint32_t dwBlueFactor, KaipHLut hLut)
{
    return AddWbToLut(dwRedFactor, dwGreenFactor, dwBlueFactor, hLut);
}
KAIP_API KaipStatus KaipAddOffsetAndGainToLut(int32_t iOffset, int32_t iGain, KaipHLut hLut)
{
    return AddOffsetAndGainToLut(iOffset, iGain, hLut);
}
KAIP_API KaipStatus KaipAddBrightnessAndContrastToLut(int32_t iBrightness, int32_t iContrast, KaipHLut hLut)
{
    return AddBrightnessAndContrastToLut(iBrightness, iContrast, hLut);
}
