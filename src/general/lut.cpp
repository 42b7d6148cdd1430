// lut.cpp: LUT objects (allocation, reset, release), the global tables, lookup of a body, depth conversion.
#include "general/lut.h"

#include <cstdlib>

#include "core/log.h"
#include "general/lut_body.h"

using namespace lut;

TKaIpLut8 g_Lut8;
TKaIpLut10 g_Lut10;
TKaIpLut12 g_Lut12;
TKaIpLut8 g_LutLinear8;
TKaIpLut10 g_LutLinear10;
TKaIpLut12 g_LutLinear12;

CGlobalLutInitializer::CGlobalLutInitializer()
{
    ResetBody(g_Lut8, kGlobalType);
    ResetBody(g_Lut10, kGlobalType);
    ResetBody(g_Lut12, kGlobalType);
    ResetBody(g_LutLinear8, kGlobalType);
    ResetBody(g_LutLinear10, kGlobalType);
    ResetBody(g_LutLinear12, kGlobalType);
}

// After the logger (101) and the configuration (102); the bodies themselves need no constructor.
CGlobalLutInitializer g_GlobalLutInitializer __attribute__((init_priority(103)));

namespace {

template <class TLut>
KaipStatus ResolveLut(KaipHLut hLut, TLut*& pLut, const char* pszFunc)
{
    pLut = nullptr;
    if (!hLut) return KASTATUS_KAIP_INVALID_LUT_HANDLE;
    pLut = BodyOfHandle<TLut>(hLut);
    if (pLut) return KASTATUS_OK;
    return Refuse(KASTATUS_KAIP_INVALID_LUT_TYPE, "%s - error KASTATUS_KAIP_INVALID_LUT_TYPE", pszFunc);
}

template <class TLut>
void* AllocateSingle(uint32_t dwType)
{
    return std::calloc(1, sizeof(uint32_t) + BodyBytes<TLut>(dwType));
}

void* AllocateUniversal(uint32_t dwType)
{
    auto* pLutAll = static_cast<TKaIpLutUniversal*>(std::calloc(1, sizeof(TKaIpLutUniversal)));
    if (!pLutAll) return nullptr;
    pLutAll->pLut8 = static_cast<TKaIpLut8*>(std::calloc(1, BodyBytes<TKaIpLut8>(dwType)));
    pLutAll->pLut10 = static_cast<TKaIpLut10*>(std::calloc(1, BodyBytes<TKaIpLut10>(dwType)));
    pLutAll->pLut12 = static_cast<TKaIpLut12*>(std::calloc(1, BodyBytes<TKaIpLut12>(dwType)));
    if (pLutAll->pLut8 && pLutAll->pLut10 && pLutAll->pLut12) return pLutAll;
    // An object with a missing body would be written through a null pointer: give none.
    std::free(pLutAll->pLut8);
    std::free(pLutAll->pLut10);
    std::free(pLutAll->pLut12);
    std::free(pLutAll);
    return nullptr;
}

}  // namespace

KaipStatus GetLut8(KaipHLut hLut, TKaIpLut8*& pLut)
{
    return ResolveLut(hLut, pLut, "GetLut8");
}
KaipStatus GetLut10(KaipHLut hLut, TKaIpLut10*& pLut)
{
    return ResolveLut(hLut, pLut, "GetLut10");
}
KaipStatus GetLut12(KaipHLut hLut, TKaIpLut12*& pLut)
{
    return ResolveLut(hLut, pLut, "GetLut12");
}

KaipHLut AllocateLut(uint32_t dwType)
{
    void* pObject;
    switch (dwType & kLutDepthMask) {
        case 0:
            pObject = AllocateUniversal(dwType);
            break;
        case 8:
            pObject = AllocateSingle<TKaIpLut8>(dwType);
            break;
        case 10:
            pObject = AllocateSingle<TKaIpLut10>(dwType);
            break;
        case 12:
            pObject = AllocateSingle<TKaIpLut12>(dwType);
            break;
        default:
            Log.Debug("%s - Invalid LutType: %d", "KaipAllocateLut", dwType);
            return nullptr;
    }
    const KaipHLut hLut = static_cast<KaipHLut>(pObject);
    if (hLut) *hLut = dwType;
    // A failed allocation resets the global LUT here, as the null handle names it.
    ResetLut(hLut);
    return hLut;
}

KaipStatus FreeLut(KaipHLut hLut)
{
    if (IsGlobalLutHandle(hLut)) return KASTATUS_KAIP_INVALID_LUT_HANDLE;
    if ((*hLut & kLutDepthMask) == 0) {
        TKaIpLutUniversal& lutAll = Universal(hLut);
        std::free(lutAll.pLut8);
        std::free(lutAll.pLut10);
        std::free(lutAll.pLut12);
    }
    std::free(hLut);
    return KASTATUS_OK;
}

KaipStatus ResetLut(KaipHLut hLut)
{
    if (ForEachBody(hLut, [](auto& lut, uint32_t dwType) { ResetBody(lut, dwType); })) return KASTATUS_OK;
    return Refuse(KASTATUS_KAIP_INVALID_LUT_HANDLE, "%s - KASTATUS_KAIP_INVALID_LUT_HANDLE", "ResetLut");
}

void Lut8toLut10(const uint8_t* pSrc, uint16_t* pDst)
{
    ConvertLut<8, 10>(pSrc, pDst);
}
void Lut8toLut12(const uint8_t* pSrc, uint16_t* pDst)
{
    ConvertLut<8, 12>(pSrc, pDst);
}
void Lut10toLut8(const uint16_t* pSrc, uint8_t* pDst)
{
    ConvertLut<10, 8>(pSrc, pDst);
}
void Lut10toLut12(const uint16_t* pSrc, uint16_t* pDst)
{
    ConvertLut<10, 12>(pSrc, pDst);
}
void Lut12toLut8(const uint16_t* pSrc, uint8_t* pDst)
{
    ConvertLut<12, 8>(pSrc, pDst);
}
void Lut12toLut10(const uint16_t* pSrc, uint16_t* pDst)
{
    ConvertLut<12, 10>(pSrc, pDst);
}

int32_t DoubleTo32Bit(double dValue)
{
    // The negative limit is one above INT32_MIN, so the range is symmetric.
    if (dValue < -2147483647.0) return -2147483647;
    if (dValue > 2147483647.0) return 2147483647;
    if (dValue != dValue) return 0;
    return int32_t(dValue);
}
