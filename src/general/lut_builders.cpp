// lut_builders.cpp: gamma, white balance, offset and gain, brightness and contrast composed onto a LUT.
#include <algorithm>
#include <cmath>
#include <type_traits>

#include "core/log.h"
#include "general/lut.h"
#include "general/lut_body.h"

using namespace lut;

namespace {

// Replaces every 32-bit entry v of every body the handle reaches by curve(channel, v, M) in
// double precision, then derives the clipped channel tables and the Bayer tables. The curves
// work on the unclipped tables, so successive corrections compose without losing range.
template <class Curve>
KaipStatus AddCurveToLut(KaipHLut hLut, const char* pszFunc, Curve curve)
{
    const bool bKnown = ForEachBody(hLut, [&](auto& lut, uint32_t dwType) {
        using TLut = std::remove_reference_t<decltype(lut)>;
        constexpr double dMax = TLut::N - 1;
        int32_t* const tables[3] = {lut.Red32, lut.Green32, lut.Blue32};
        for (unsigned c = 0; c < 3; ++c) {
            for (unsigned i = 0; i < TLut::N; ++i) tables[c][i] = DoubleTo32Bit(curve(c, double(tables[c][i]), dMax));
        }
        ClipLut(lut, dwType);
    });
    if (bKnown) return KASTATUS_OK;
    return Refuse(KASTATUS_KAIP_INVALID_LUT_TYPE, "%s - Invalid LUT type", pszFunc);
}

}  // namespace

KaipStatus AddGammaToLut(uint32_t dwGamma, KaipHLut hLut)
{
    if (dwGamma == 1000) return KASTATUS_OK;
    const double dExponent = dwGamma <= 9 ? 100.0 : std::max(0.01, 1.0 / (dwGamma / 1000.0));
    // The +0.5 rounds half up for the positive results of the truncating conversion.
    return AddCurveToLut(hLut, "KaipAddGammaToLut", [dExponent](unsigned, double v, double dMax) {
        return v <= 0 ? 0.0 : std::exp(std::log(v / dMax) * dExponent) * dMax + 0.5;
    });
}

KaipStatus AddWbToLut(uint32_t dwRedFactor, uint32_t dwGreenFactor, uint32_t dwBlueFactor, KaipHLut hLut)
{
    const double factors[3] = {dwRedFactor / 1000.0, dwGreenFactor / 1000.0, dwBlueFactor / 1000.0};
    return AddCurveToLut(hLut, "KaipAddWbToLut",
                         [&factors](unsigned c, double v, double) { return v * factors[c] + 0.5; });
}

// Deliberately without a rounding term: this builder truncates where gamma and white balance round.
KaipStatus AddOffsetAndGainToLut(int32_t iOffset, int32_t iGain, KaipHLut hLut)
{
    const double dGain = iGain / 1000.0;
    return AddCurveToLut(hLut, "AddOffsetAndGainToLut", [iOffset, dGain](unsigned, double v, double dMax) {
        const double dOffset = dMax * iOffset / 1000.0;
        return v * dGain + dOffset;
    });
}

// The contrast pivots about the middle of the range: M / 2 maps to M * (brightness / 1000 - 1/2).
KaipStatus AddBrightnessAndContrastToLut(int32_t iBrightness, int32_t iContrast, KaipHLut hLut)
{
    const int64_t qwOffset = int64_t(iBrightness) - iContrast / 2 - 500;
    return AddOffsetAndGainToLut(int32_t(uint32_t(qwOffset)), iContrast, hLut);
}
