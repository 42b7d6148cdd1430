// lut_builders_test.cpp: the four builders against a double-precision model over whole tables at every depth.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

#include "general/lut.h"
#include "lut_model.h"

using namespace lutmodel;

// Every test here may change the global LUT; it is identity again afterwards.
class LutBuilders : public GlobalLutTest {};

namespace {

const KaipHLut kOne = reinterpret_cast<KaipHLut>(1);

// Clamp to +-2147483647, then truncate toward zero.
int32_t To32(double v)
{
    if (v < -2147483647.0) return -2147483647;
    if (v > 2147483647.0) return 2147483647;
    return int32_t(std::trunc(v));
}

// The curve of one builder call: f(channel, v, M).
using Curve = std::function<double(unsigned, double, double)>;

Curve GammaCurve(uint32_t gamma)
{
    const double e = gamma <= 9 ? 100.0 : std::max(0.01, 1 / (gamma / 1000.0));
    return [e](unsigned, double v, double M) { return v <= 0 ? 0.0 : std::exp(std::log(v / M) * e) * M + 0.5; };
}
Curve WbCurve(uint32_t r, uint32_t g, uint32_t b)
{
    return [=](unsigned c, double v, double) { return v * ((c == 0 ? r : c == 1 ? g : b) / 1000.0) + 0.5; };
}
Curve OffsetGainCurve(int32_t offset, int32_t gain)
{
    return [=](unsigned, double v, double M) { return v * (gain / 1000.0) + M * offset / 1000.0; };
}

// Expected 32-bit tables after the curve, and the channel tables clipped from them.
template <class TLut>
void ExpectBuilt(const TLut& lut, const std::array<std::vector<int32_t>, 3>& before, const Curve& f, uint32_t type)
{
    const double M = TLut::N - 1;
    const int32_t* t32[3] = {lut.Red32, lut.Green32, lut.Blue32};
    const typename TLut::TValue* ch[3] = {lut.Red, lut.Green, lut.Blue};
    for (unsigned c = 0; c < 3; ++c) {
        for (unsigned i = 0; i < TLut::N; ++i) {
            const int32_t v = To32(f(c, before[c][i], M));
            ASSERT_EQ(t32[c][i], v) << "depth " << TLut::Bits << " channel " << c << " i " << i << " from "
                                    << before[c][i];
            ASSERT_EQ(ch[c][i], std::clamp<int32_t>(v, 0, TLut::N - 1)) << "depth " << TLut::Bits << " i " << i;
        }
    }
    const bool full = (type & 0x00110000) == 0x00110000;
    ExpectBayerDerived(lut, full, full);
}

template <class TLut>
std::array<std::vector<int32_t>, 3> Tables32(const TLut& lut)
{
    return {std::vector<int32_t>(lut.Red32, lut.Red32 + TLut::N),
            std::vector<int32_t>(lut.Green32, lut.Green32 + TLut::N),
            std::vector<int32_t>(lut.Blue32, lut.Blue32 + TLut::N)};
}

// Random working curves: mostly around the range, some far outside it.
template <class TLut>
void Scramble(TLut& lut, std::mt19937& rng)
{
    for (int32_t* t : {lut.Red32, lut.Green32, lut.Blue32}) {
        for (unsigned i = 0; i < TLut::N; ++i) {
            const unsigned kind = rng() % 16;
            t[i] = kind == 0 ? int32_t(rng()) : kind == 1 ? -int32_t(rng() % 5000) : int32_t(rng() % (TLut::N * 2));
        }
    }
}

}  // namespace

TEST_F(LutBuilders, RandomBuildersMatchTheModelAtEveryDepth)
{
    const uint32_t kFull = KAIP_LUT_BAYER | KAIP_LUT_BAYER_16;
    std::vector<std::pair<KaipHLut, uint32_t>> handles = {{nullptr, kFull}, {kOne, kFull}};
    for (uint32_t flags : {0u, KAIP_LUT_BAYER, kFull}) {
        for (uint32_t bits : {0u, 8u, 10u, 12u}) handles.push_back({KaipAllocateLut(flags | bits), flags | bits});
    }
    const uint32_t seed = 4711;
    std::mt19937 rng(seed);
    for (unsigned round = 0; round < 120; ++round) {
        const auto [h, type] = handles[rng() % handles.size()];
        const KaipHLut read = h ? h : kOne;
        const unsigned depth = type & 0xFF;
        TKaIpLut8* p8 = nullptr;
        TKaIpLut10* p10 = nullptr;
        TKaIpLut12* p12 = nullptr;
        if (depth == 0 || depth == 8) p8 = Body8(read);
        if (depth == 0 || depth == 10) p10 = Body10(read);
        if (depth == 0 || depth == 12) p12 = Body12(read);
        if (rng() % 2) {
            if (p8) Scramble(*p8, rng);
            if (p10) Scramble(*p10, rng);
            if (p12) Scramble(*p12, rng);
        }
        std::array<std::vector<int32_t>, 3> b8, b10, b12;
        if (p8) b8 = Tables32(*p8);
        if (p10) b10 = Tables32(*p10);
        if (p12) b12 = Tables32(*p12);

        Curve f;
        KaipStatus status;
        switch (rng() % 4) {
            case 0: {
                const uint32_t gamma = rng() % 3 ? rng() % 4000 : rng() % 300000;
                status = KaipAddGammaToLut(gamma, h);
                f = gamma == 1000 ? Curve([](unsigned, double v, double) { return v; }) : GammaCurve(gamma);
                break;
            }
            case 1: {
                const uint32_t r = rng() % 3000, g = rng() % 3000, b = rng() % 3000;
                status = KaipAddWbToLut(r, g, b, h);
                f = WbCurve(r, g, b);
                break;
            }
            case 2: {
                const int32_t offset = int32_t(rng() % 2001) - 1000, gain = int32_t(rng() % 4001) - 1000;
                status = KaipAddOffsetAndGainToLut(offset, gain, h);
                f = OffsetGainCurve(offset, gain);
                break;
            }
            default: {
                const int32_t brightness = int32_t(rng() % 3001) - 1000, contrast = int32_t(rng() % 4001) - 1000;
                status = KaipAddBrightnessAndContrastToLut(brightness, contrast, h);
                f = OffsetGainCurve(brightness - contrast / 2 - 500, contrast);
                break;
            }
        }
        SCOPED_TRACE(::testing::Message() << "seed " << seed << " round " << round << " type 0x" << std::hex << type);
        ASSERT_EQ(status, KASTATUS_OK);
        if (p8) ExpectBuilt(*p8, b8, f, type);
        if (p10) ExpectBuilt(*p10, b10, f, type);
        if (p12) ExpectBuilt(*p12, b12, f, type);
        if (HasFailure()) break;
    }
    for (auto& [h, type] : handles) {
        if (h) KaipFreeLut(h);
    }
}

TEST_F(LutBuilders, WorkedValues)
{
    Lut l8(8), l10(10);
    // Gamma 2000: 255 * (64 / 255)^0.5 = 127.75, rounded to 128.
    ASSERT_EQ(KaipAddGammaToLut(2000, l8.h), KASTATUS_OK);
    EXPECT_EQ(Body8(l8.h)->Red[64], 128);
    // Gamma below 10 uses exponent 100.
    ASSERT_EQ(KaipResetLut(l8.h), KASTATUS_OK);
    ASSERT_EQ(KaipAddGammaToLut(5, l8.h), KASTATUS_OK);
    EXPECT_EQ(Body8(l8.h)->Green[254], 172);
    // White balance keeps the unclipped curve in the 32-bit table.
    ASSERT_EQ(KaipResetLut(l8.h), KASTATUS_OK);
    ASSERT_EQ(KaipAddWbToLut(1500, 1000, 500, l8.h), KASTATUS_OK);
    EXPECT_EQ(Body8(l8.h)->Red32[200], 300);
    EXPECT_EQ(Body8(l8.h)->Red[200], 255);
    // Offset -10 % truncates toward zero.
    ASSERT_EQ(KaipAddOffsetAndGainToLut(-100, 1000, l10.h), KASTATUS_OK);
    EXPECT_EQ(Body10(l10.h)->Red32[50], -52);
    // Brightness 1000 / contrast 2000 pivots about the middle.
    ASSERT_EQ(KaipResetLut(l8.h), KASTATUS_OK);
    ASSERT_EQ(KaipAddBrightnessAndContrastToLut(1000, 2000, l8.h), KASTATUS_OK);
    EXPECT_EQ(Body8(l8.h)->Red32[64], 0);
    EXPECT_EQ(Body8(l8.h)->Red32[192], 256);
}

TEST_F(LutBuilders, UnknownDepthIsRefusedButGammaOneIsNot)
{
    uint32_t fake[2] = {9, 0};
    EXPECT_EQ(KaipAddGammaToLut(1000, fake), KASTATUS_OK);
    EXPECT_EQ(KaipAddGammaToLut(1000, reinterpret_cast<KaipHLut>(0x10)), KASTATUS_OK);
    EXPECT_EQ(KaipAddGammaToLut(999, fake), KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(KaipAddWbToLut(1000, 1000, 1000, fake), KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(KaipAddOffsetAndGainToLut(0, 1000, fake), KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(KaipAddBrightnessAndContrastToLut(1000, 1000, fake), KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(fake[1], 0u);
}
