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
        // Each body the handle reaches, with its 32-bit tables before the call.
        TKaIpLut8* p8 = depth == 0 || depth == 8 ? Body8(read) : nullptr;
        TKaIpLut10* p10 = depth == 0 || depth == 10 ? Body10(read) : nullptr;
        TKaIpLut12* p12 = depth == 0 || depth == 12 ? Body12(read) : nullptr;
        const bool scramble = rng() % 2;
        std::array<std::vector<int32_t>, 3> before[3];
        auto each = [&](auto body) {
            if (p8) body(*p8, before[0]);
            if (p10) body(*p10, before[1]);
            if (p12) body(*p12, before[2]);
        };
        each([&](auto& lut, auto& b) {
            if (scramble) Scramble(lut, rng);
            b = Tables32(lut);
        });
        Curve f;
        KaipStatus status;
        const uint32_t builder = rng() % 4, a = rng(), b = rng(), c = rng();
        if (builder == 0) {
            const uint32_t gamma = a % 3 ? b % 4000 : b % 300000;
            status = KaipAddGammaToLut(gamma, h);
            f = gamma == 1000 ? Curve([](unsigned, double v, double) { return v; }) : GammaCurve(gamma);
        } else if (builder == 1) {
            status = KaipAddWbToLut(a % 3000, b % 3000, c % 3000, h);
            f = WbCurve(a % 3000, b % 3000, c % 3000);
        } else if (builder == 2) {
            status = KaipAddOffsetAndGainToLut(int32_t(a % 2001) - 1000, int32_t(b % 4001) - 1000, h);
            f = OffsetGainCurve(int32_t(a % 2001) - 1000, int32_t(b % 4001) - 1000);
        } else {
            const int32_t brightness = int32_t(a % 3001) - 1000, contrast = int32_t(b % 4001) - 1000;
            status = KaipAddBrightnessAndContrastToLut(brightness, contrast, h);
            f = OffsetGainCurve(brightness - contrast / 2 - 500, contrast);
        }
        SCOPED_TRACE(::testing::Message() << "seed " << seed << " round " << round << " type 0x" << std::hex << type);
        ASSERT_EQ(status, KASTATUS_OK);
        each([&](auto& lut, auto& b) { ExpectBuilt(lut, b, f, type); });
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
