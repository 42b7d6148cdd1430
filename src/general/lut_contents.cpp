// lut_contents.cpp: setting and reading LUT contents, whole channel tables or single entries.
#include <array>

#include "core/log.h"
#include "general/lut.h"
#include "general/lut_body.h"

using namespace lut;

namespace {

KaipStatus RefuseType(const char* pszFunc)
{
    return Refuse(KASTATUS_KAIP_INVALID_LUT_TYPE, "%s - Invalid LUT type", pszFunc);
}

// Whole tables given at the depth of TSrc, converted to the body's depth where they differ.
template <class TSrc, class TDst>
void SetConverted(TDst& lut, const typename TSrc::TValue* const pChannels[3], uint32_t dwType)
{
    if constexpr (TSrc::Bits == TDst::Bits) {
        SetBody(lut, pChannels[0], pChannels[1], pChannels[2], dwType);
    } else {
        std::array<typename TDst::TValue, TDst::N> converted[3];
        const typename TDst::TValue* pConverted[3] = {};
        for (unsigned c = 0; c < 3; ++c) {
            if (!pChannels[c]) continue;
            ConvertLut<TSrc::Bits, TDst::Bits>(pChannels[c], converted[c].data());
            pConverted[c] = converted[c].data();
        }
        SetBody(lut, pConverted[0], pConverted[1], pConverted[2], dwType);
    }
}

// Null or 1 sets the global body of this depth only; a universal object gets every body,
// the other depths through the whole-table converters.
template <class TLut>
KaipStatus SetLut(KaipHLut hLut, const typename TLut::TValue* pRed, const typename TLut::TValue* pGreen,
                  const typename TLut::TValue* pBlue, const char* pszFunc)
{
    const typename TLut::TValue* const pChannels[3] = {pRed, pGreen, pBlue};
    if (IsGlobalLutHandle(hLut)) {
        SetConverted<TLut>(GlobalBody<TLut>(), pChannels, kGlobalType);
        return KASTATUS_OK;
    }
    const uint32_t dwType = *hLut, dwDepth = dwType & kLutDepthMask;
    if (dwDepth == TLut::Bits) {
        SetConverted<TLut>(SingleBody<TLut>(hLut), pChannels, dwType);
        return KASTATUS_OK;
    }
    if (dwDepth != 0) return RefuseType(pszFunc);
    TKaIpLutUniversal& lutAll = Universal(hLut);
    SetConverted<TLut>(*lutAll.pLut8, pChannels, dwType);
    SetConverted<TLut>(*lutAll.pLut10, pChannels, dwType);
    SetConverted<TLut>(*lutAll.pLut12, pChannels, dwType);
    return KASTATUS_OK;
}

template <class TLut>
KaipStatus GetLutTables(KaipHLut hLut, typename TLut::TValue* pRed, typename TLut::TValue* pGreen,
                        typename TLut::TValue* pBlue, const char* pszFunc)
{
    const TLut* pLut = BodyOfHandle<TLut>(hLut);
    if (!pLut) return RefuseType(pszFunc);
    const size_t bytes = sizeof(pLut->Red);
    if (pRed) std::memmove(pRed, pLut->Red, bytes);
    if (pGreen) std::memmove(pGreen, pLut->Green, bytes);
    if (pBlue) std::memmove(pBlue, pLut->Blue, bytes);
    return KASTATUS_OK;
}

// A single value set at the depth of TSrc, carried into a universal object's body of another
// depth. Upward it becomes a step of equal entries (no interpolation); from 10 to 8 bits the
// index and the value are scaled down; from 12 bits both are deliberately scaled up, so only
// the lowest 12-bit indexes reach the smaller bodies.
template <class TSrc, class TDst>
void SpreadValue(TDst& lut, EChannel channel, uint64_t qwIndex, uint32_t dwValue, uint32_t dwType)
{
    constexpr unsigned s = TSrc::Bits, d = TDst::Bits;
    if constexpr (s < d || s == 12) {
        constexpr unsigned shift = s < d ? d - s : s - d, count = s < d ? 1u << shift : 1;
        for (unsigned j = 0; j < count; ++j)
            SetBodyValue(lut, channel, (qwIndex << shift) + j, dwValue << shift, dwType);
    } else {
        SetBodyValue(lut, channel, qwIndex >> 2, dwValue >> 2, dwType);
    }
}

template <class TLut>
KaipStatus SetLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue, const char* pszFunc)
{
    const EChannel channel = ChannelOfSelector(dwChannel);
    const uint32_t dwOwnValue = typename TLut::TValue(dwValue);
    if (IsGlobalLutHandle(hLut)) {
        SetBodyValue(GlobalBody<TLut>(), channel, dwIndex, dwOwnValue, kGlobalType);
        return KASTATUS_OK;
    }
    const uint32_t dwType = *hLut, dwDepth = dwType & kLutDepthMask;
    if (dwDepth == TLut::Bits) {
        SetBodyValue(SingleBody<TLut>(hLut), channel, dwIndex, dwOwnValue, dwType);
        return KASTATUS_OK;
    }
    if (dwDepth != 0) return RefuseType(pszFunc);
    TKaIpLutUniversal& lutAll = Universal(hLut);
    SetBodyValue(*UniversalBody<TLut>(lutAll), channel, dwIndex, dwOwnValue, dwType);
    if constexpr (TLut::Bits != 8) SpreadValue<TLut>(*lutAll.pLut8, channel, dwIndex, dwOwnValue, dwType);
    if constexpr (TLut::Bits != 10) SpreadValue<TLut>(*lutAll.pLut10, channel, dwIndex, dwOwnValue, dwType);
    if constexpr (TLut::Bits != 12) SpreadValue<TLut>(*lutAll.pLut12, channel, dwIndex, dwOwnValue, dwType);
    return KASTATUS_OK;
}

// A foreign depth is refused before the output, the index and the selector are looked at.
template <class TLut>
KaipStatus GetLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, typename TLut::TValue* pValue,
                       const char* pszFunc)
{
    TLut* pLut = BodyOfHandle<TLut>(hLut);
    if (!pLut) return RefuseType(pszFunc);
    const EChannel channel = ChannelOfSelector(dwChannel);
    if (pValue && dwIndex < TLut::N && channel != EChannel::None) *pValue = ChannelTable(*pLut, channel)[dwIndex];
    return KASTATUS_OK;
}

}  // namespace

KaipStatus Set8BitLut(KaipHLut hLut, const uint8_t* pRed, const uint8_t* pGreen, const uint8_t* pBlue)
{
    return SetLut<TKaIpLut8>(hLut, pRed, pGreen, pBlue, "KaipSet8BitLut");
}
KaipStatus Set10BitLut(KaipHLut hLut, const uint16_t* pRed, const uint16_t* pGreen, const uint16_t* pBlue)
{
    return SetLut<TKaIpLut10>(hLut, pRed, pGreen, pBlue, "KaipSet10BitLut");
}
KaipStatus Set12BitLut(KaipHLut hLut, const uint16_t* pRed, const uint16_t* pGreen, const uint16_t* pBlue)
{
    return SetLut<TKaIpLut12>(hLut, pRed, pGreen, pBlue, "KaipSet12BitLut");
}
KaipStatus Get8BitLut(KaipHLut hLut, uint8_t* pRed, uint8_t* pGreen, uint8_t* pBlue)
{
    return GetLutTables<TKaIpLut8>(hLut, pRed, pGreen, pBlue, "KaipGet8BitLut");
}
KaipStatus Get10BitLut(KaipHLut hLut, uint16_t* pRed, uint16_t* pGreen, uint16_t* pBlue)
{
    return GetLutTables<TKaIpLut10>(hLut, pRed, pGreen, pBlue, "KaipGet10BitLut");
}
KaipStatus Get12BitLut(KaipHLut hLut, uint16_t* pRed, uint16_t* pGreen, uint16_t* pBlue)
{
    return GetLutTables<TKaIpLut12>(hLut, pRed, pGreen, pBlue, "KaipGet12BitLut");
}
KaipStatus Set8BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue)
{
    return SetLutValue<TKaIpLut8>(hLut, dwChannel, dwIndex, dwValue, "KaipSet8BitLutValue");
}
KaipStatus Set10BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue)
{
    return SetLutValue<TKaIpLut10>(hLut, dwChannel, dwIndex, dwValue, "KaipSet10BitLutValue");
}
KaipStatus Set12BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint32_t dwValue)
{
    return SetLutValue<TKaIpLut12>(hLut, dwChannel, dwIndex, dwValue, "KaipSet12BitLutValue");
}
KaipStatus Get8BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint8_t* pValue)
{
    return GetLutValue<TKaIpLut8>(hLut, dwChannel, dwIndex, pValue, "KaipGet8BitLutValue");
}
KaipStatus Get10BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint16_t* pValue)
{
    return GetLutValue<TKaIpLut10>(hLut, dwChannel, dwIndex, pValue, "KaipGet10BitLutValue");
}
KaipStatus Get12BitLutValue(KaipHLut hLut, uint32_t dwChannel, uint32_t dwIndex, uint16_t* pValue)
{
    return GetLutValue<TKaIpLut12>(hLut, dwChannel, dwIndex, pValue, "KaipGet12BitLutValue");
}
