// lut_body.h: the per-body rules shared by the LUT sources, written once as templates on the body type.
#pragma once

#include <cstdint>
#include <cstring>

#include "general/lut.h"

namespace lut {

// The type word of the global bodies: they always have the full Bayer layout.
constexpr uint32_t kGlobalType = kLutFullBayer;

// Bytes a body of this type occupies: plain, with the 8-bit Bayer rows, or full.
template <class TLut>
constexpr size_t BodyBytes(uint32_t dwType)
{
    if (HasFullBayerLayout(dwType)) return sizeof(TLut);
    if constexpr (TLut::Bits > 8) {
        if (dwType & KAIP_LUT_BAYER) return offsetof(TLut, BayerRed16);
        return offsetof(TLut, BayerRed8);
    }
    return offsetof(TLut, BayerRed16);
}

// The body that follows the type word of a single-depth object.
template <class TLut>
TLut& SingleBody(KaipHLut hLut)
{
    return *reinterpret_cast<TLut*>(hLut + 1);
}

inline TKaIpLutUniversal& Universal(KaipHLut hLut)
{
    return *reinterpret_cast<TKaIpLutUniversal*>(hLut);
}

template <class TLut>
TLut*& UniversalBody(TKaIpLutUniversal& lutAll)
{
    if constexpr (TLut::Bits == 8)
        return lutAll.pLut8;
    else if constexpr (TLut::Bits == 10)
        return lutAll.pLut10;
    else
        return lutAll.pLut12;
}

template <class TLut>
TLut& GlobalBody()
{
    if constexpr (TLut::Bits == 8)
        return g_Lut8;
    else if constexpr (TLut::Bits == 10)
        return g_Lut10;
    else
        return g_Lut12;
}

// Calls fn(body, type) for every body a handle reaches: the three global bodies for null or 1,
// the three bodies of a universal object, or the one body of a single-depth object. False
// for an unknown depth byte.
template <class Fn>
bool ForEachBody(KaipHLut hLut, Fn&& fn)
{
    if (IsGlobalLutHandle(hLut)) {
        fn(g_Lut8, kGlobalType);
        fn(g_Lut10, kGlobalType);
        fn(g_Lut12, kGlobalType);
        return true;
    }
    const uint32_t dwType = *hLut;
    switch (dwType & kLutDepthMask) {
        case 0: {
            TKaIpLutUniversal& lutAll = Universal(hLut);
            fn(*lutAll.pLut8, dwType);
            fn(*lutAll.pLut10, dwType);
            fn(*lutAll.pLut12, dwType);
            return true;
        }
        case 8:
            fn(SingleBody<TKaIpLut8>(hLut), dwType);
            return true;
        case 10:
            fn(SingleBody<TKaIpLut10>(hLut), dwType);
            return true;
        case 12:
            fn(SingleBody<TKaIpLut12>(hLut), dwType);
            return true;
        default:
            return false;
    }
}

// The body of depth TLut that a handle addresses for the set and get functions: the global
// body for null or 1, the universal object's body, or the single body of the same depth;
// null for a single-depth object of another depth (or an unknown depth byte).
template <class TLut>
TLut* BodyOfHandle(KaipHLut hLut)
{
    if (IsGlobalLutHandle(hLut)) return &GlobalBody<TLut>();
    const uint32_t dwDepth = *hLut & kLutDepthMask;
    if (dwDepth == 0) return UniversalBody<TLut>(Universal(hLut));
    return dwDepth == TLut::Bits ? &SingleBody<TLut>(hLut) : nullptr;
}

// The 8-bit output of a channel value: the value itself at 8 bits, else shifted down to 8
// bits (truncating, and cut to a byte for values set beyond the depth's range).
template <class TLut>
constexpr uint8_t Bayer8(uint32_t dwValue)
{
    return uint8_t(dwValue >> (TLut::Bits - 8));
}

// Recomputes the replicated tables of a full-layout body from its channel tables, so that a
// decoder writes two or four equal 8-bit outputs with one store.
template <class TLut>
void UpdateBayerLut(TLut& lut)
{
    for (unsigned i = 0; i < TLut::N; ++i) {
        const uint32_t r = Bayer8<TLut>(lut.Red[i]), g = Bayer8<TLut>(lut.Green[i]), b = Bayer8<TLut>(lut.Blue[i]);
        lut.BayerRed16[i] = uint16_t(r * 0x0101u);
        lut.BayerBlue16[i] = uint16_t(b * 0x0101u);
        lut.BayerRed32[i] = r * 0x01010101u;
        lut.BayerGreen32[i] = g * 0x01010101u;
        lut.BayerBlue32[i] = b * 0x01010101u;
    }
}

// The Bayer tables of a full-layout body: the 8-bit rows (10 and 12 bits), then the
// replicated rows. Other layouts keep whatever Bayer rows they have untouched.
template <class TLut>
void DeriveBayerTables(TLut& lut, uint32_t dwType)
{
    if (!HasFullBayerLayout(dwType)) return;
    if constexpr (TLut::Bits > 8) {
        for (unsigned i = 0; i < TLut::N; ++i) {
            lut.BayerRed8[i] = Bayer8<TLut>(lut.Red[i]);
            lut.BayerGreen8[i] = Bayer8<TLut>(lut.Green[i]);
            lut.BayerBlue8[i] = Bayer8<TLut>(lut.Blue[i]);
        }
    }
    UpdateBayerLut(lut);
}

// Identity: every channel and 32-bit entry equals its index.
template <class TLut>
void ResetBody(TLut& lut, uint32_t dwType)
{
    for (unsigned i = 0; i < TLut::N; ++i) {
        lut.Red[i] = lut.Green[i] = lut.Blue[i] = typename TLut::TValue(i);
        lut.Red32[i] = lut.Green32[i] = lut.Blue32[i] = int32_t(i);
    }
    DeriveBayerTables(lut, dwType);
}

// Each channel table becomes its 32-bit curve clamped to the depth's range; the Bayer tables
// follow for a full-layout body.
template <class TLut>
void ClipLut(TLut& lut, uint32_t dwType)
{
    constexpr int32_t iMax = TLut::N - 1;
    auto clip = [](int32_t v) { return typename TLut::TValue(v < 0 ? 0 : v > iMax ? iMax : v); };
    for (unsigned i = 0; i < TLut::N; ++i) {
        lut.Red[i] = clip(lut.Red32[i]);
        lut.Green[i] = clip(lut.Green32[i]);
        lut.Blue[i] = clip(lut.Blue32[i]);
    }
    DeriveBayerTables(lut, dwType);
}

// Whole channel tables, stored as given in the channel and the 32-bit tables; a null
// channel is skipped.
template <class TLut>
void SetBody(TLut& lut, const typename TLut::TValue* pRed, const typename TLut::TValue* pGreen,
             const typename TLut::TValue* pBlue, uint32_t dwType)
{
    auto set = [](auto* pTable, int32_t* pTable32, const typename TLut::TValue* pValues) {
        if (!pValues) return;
        std::memmove(pTable, pValues, TLut::N * sizeof(typename TLut::TValue));
        for (unsigned i = 0; i < TLut::N; ++i) pTable32[i] = pValues[i];
    };
    set(lut.Red, lut.Red32, pRed);
    set(lut.Green, lut.Green32, pGreen);
    set(lut.Blue, lut.Blue32, pBlue);
    DeriveBayerTables(lut, dwType);
}

// Channel selectors; monochrome data is looked up in the green table.
enum class EChannel { None, Red, Green, Blue };
constexpr EChannel ChannelOfSelector(uint32_t dwChannel)
{
    switch (dwChannel) {
        case KAIP_LUT_CHANNEL_MONO:
        case KAIP_LUT_CHANNEL_GREEN:
            return EChannel::Green;
        case KAIP_LUT_CHANNEL_RED:
            return EChannel::Red;
        case KAIP_LUT_CHANNEL_BLUE:
            return EChannel::Blue;
        default:
            return EChannel::None;
    }
}

template <class TLut>
typename TLut::TValue* ChannelTable(TLut& lut, EChannel channel)
{
    return channel == EChannel::Red ? lut.Red : channel == EChannel::Blue ? lut.Blue : lut.Green;
}

// The Bayer entries of one index of one channel: with KAIP_LUT_BAYER the 8-bit row (10 and
// 12 bits), with both flags the replicated rows (green has no 16-bit row).
template <class TLut>
void UpdateBayerLutValue(TLut& lut, EChannel channel, uint32_t dwIndex, uint32_t dwType)
{
    const uint8_t b = Bayer8<TLut>(ChannelTable(lut, channel)[dwIndex]);
    if constexpr (TLut::Bits > 8) {
        if (!(dwType & KAIP_LUT_BAYER)) return;
        (channel == EChannel::Red    ? lut.BayerRed8
         : channel == EChannel::Blue ? lut.BayerBlue8
                                     : lut.BayerGreen8)[dwIndex] = b;
    }
    if (!HasFullBayerLayout(dwType)) return;
    if (channel == EChannel::Red) {
        lut.BayerRed16[dwIndex] = uint16_t(b * 0x0101u);
        lut.BayerRed32[dwIndex] = b * 0x01010101u;
    } else if (channel == EChannel::Blue) {
        lut.BayerBlue16[dwIndex] = uint16_t(b * 0x0101u);
        lut.BayerBlue32[dwIndex] = b * 0x01010101u;
    } else {
        lut.BayerGreen32[dwIndex] = b * 0x01010101u;
    }
}

// One entry of one channel and its 32-bit twin, if the index is inside the table; the Bayer
// entries follow for a full-layout body.
template <class TLut>
void SetBodyValue(TLut& lut, EChannel channel, uint64_t qwIndex, uint32_t dwValue, uint32_t dwType)
{
    if (channel == EChannel::None || qwIndex >= TLut::N) return;
    const auto value = typename TLut::TValue(dwValue);
    ChannelTable(lut, channel)[qwIndex] = value;
    (channel == EChannel::Red ? lut.Red32 : channel == EChannel::Blue ? lut.Blue32 : lut.Green32)[qwIndex] = value;
    if (HasFullBayerLayout(dwType)) UpdateBayerLutValue(lut, channel, uint32_t(qwIndex), dwType);
}

// One channel table converted between depths. Upward: linear interpolation scaled by the
// factor F (exact), the last source entry held flat over the last F entries; the source is
// first scaled by F in 16 bits, which only matters for 10-bit values set beyond the range.
// Downward: every F-th entry shifted down, without averaging. No clamping either way.
template <unsigned SrcBits, unsigned DstBits, class TSrc, class TDst>
void ConvertLut(const TSrc* pSrc, TDst* pDst)
{
    constexpr unsigned nSrc = 1u << SrcBits, nDst = 1u << DstBits;
    if constexpr (DstBits > SrcBits) {
        constexpr unsigned shift = DstBits - SrcBits, F = 1u << shift;
        for (unsigned i = 0; i < nDst - F; ++i) {
            const unsigned k = i >> shift, f = i & (F - 1);
            const uint32_t a = uint16_t(pSrc[k] << shift), b = uint16_t(pSrc[k + 1] << shift);
            pDst[i] = TDst((a * (F - f) + b * f) >> shift);
        }
        for (unsigned i = nDst - F; i < nDst; ++i) pDst[i] = TDst(pSrc[nSrc - 1] << shift);
    } else {
        constexpr unsigned shift = SrcBits - DstBits;
        for (unsigned i = 0; i < nDst; ++i) pDst[i] = TDst(pSrc[i << shift] >> shift);
    }
}

}  // namespace lut
