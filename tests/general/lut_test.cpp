// lut_test.cpp: LUT objects, the global tables, lookup of bodies, depth conversion and DoubleTo32Bit.
#include "general/lut.h"

#include <gtest/gtest.h>

#include <random>

#include "lut_model.h"
#include "support/log_capture.h"

using namespace lutmodel;

// Every test here may change the global LUT; it is identity again afterwards.
class LutReset : public GlobalLutTest {};

// The global bodies at load and fresh objects of every shape are identity, with the Bayer rows their type asks
// for; a single-depth object's body follows its type word.
TEST(LutObjects, GlobalBodiesAndFreshObjectsAreIdentity)
{
    ExpectIdentity(g_LutLinear8, true);
    ExpectIdentity(g_LutLinear10, true);
    ExpectIdentity(g_LutLinear12, true);
    ExpectIdentity(g_Lut8, true);
    ExpectIdentity(g_Lut10, true);
    ExpectIdentity(g_Lut12, true);
    for (auto [dwType, bFull] : {std::pair{0u, false},
                                 {KAIP_LUT_BAYER, false},
                                 {KAIP_LUT_BAYER_16, false},
                                 {KAIP_LUT_BAYER | KAIP_LUT_BAYER_16, true},
                                 {0xFF000000 | KAIP_LUT_BAYER, false}}) {
        SCOPED_TRACE(dwType);
        Lut all(dwType), l8(dwType | 8), l10(dwType | 10), l12(dwType | 12);
        ASSERT_TRUE(all.h && l8.h && l10.h && l12.h);
        EXPECT_EQ(*all.h, dwType);
        EXPECT_EQ(*l12.h, dwType | 12);
        EXPECT_EQ(reinterpret_cast<uint8_t*>(Body10(l10.h)), reinterpret_cast<uint8_t*>(l10.h) + 4);
        ExpectIdentity(*Body8(all.h), bFull);
        ExpectIdentity(*Body10(all.h), bFull);
        ExpectIdentity(*Body12(all.h), bFull);
        ExpectIdentity(*Body8(l8.h), bFull);
        ExpectIdentity(*Body10(l10.h), bFull);
        ExpectIdentity(*Body12(l12.h), bFull);
    }
}

// Unknown depths are refused at allocation; an object whose depth byte is unknown is read no further than
// its type word; null is no handle to look up and the global handles are not freed; the value 1 is the
// global LUT; a single-depth object answers for its own depth only.
TEST(LutObjects, HandlesResolveOrAreRefused)
{
    for (uint32_t dwType : {16u, 9u, 1u, 0x00110007u, 0xFFu}) EXPECT_EQ(KaipAllocateLut(dwType), nullptr) << dwType;
    uint32_t fake[4] = {9, 0, 0, 0};
    EXPECT_EQ(KaipResetLut(fake), KASTATUS_KAIP_INVALID_LUT_HANDLE);
    EXPECT_EQ(KaipFreeLut(nullptr), KASTATUS_KAIP_INVALID_LUT_HANDLE);
    EXPECT_EQ(KaipFreeLut(reinterpret_cast<KaipHLut>(1)), KASTATUS_KAIP_INVALID_LUT_HANDLE);
    EXPECT_EQ(KaipFreeLut(KaipAllocateLut(KAIP_LUT_BAYER | KAIP_LUT_BAYER_16)), KASTATUS_OK);

    Lut all(0), l8(8), l10(10), l12(12);
    const KaipHLut one = reinterpret_cast<KaipHLut>(1);
    TKaIpLut8* p8 = &g_Lut8;
    TKaIpLut10* p10 = &g_Lut10;
    TKaIpLut12* p12 = &g_Lut12;
    EXPECT_EQ(GetLut8(fake, p8), KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(GetLut10(nullptr, p10), KASTATUS_KAIP_INVALID_LUT_HANDLE);
    EXPECT_EQ(GetLut12(nullptr, p12), KASTATUS_KAIP_INVALID_LUT_HANDLE);
    EXPECT_TRUE(!p8 && !p10 && !p12);
    EXPECT_EQ(GetLut8(nullptr, p8), KASTATUS_KAIP_INVALID_LUT_HANDLE);
    EXPECT_EQ(GetLut8(one, p8), KASTATUS_OK);
    EXPECT_EQ(GetLut10(one, p10), KASTATUS_OK);
    EXPECT_EQ(GetLut12(one, p12), KASTATUS_OK);
    EXPECT_TRUE(p8 == &g_Lut8 && p10 == &g_Lut10 && p12 == &g_Lut12);

    const TKaIpLutUniversal& u = *reinterpret_cast<TKaIpLutUniversal*>(all.h);
    EXPECT_TRUE(GetLut8(all.h, p8) == KASTATUS_OK && p8 == u.pLut8);
    EXPECT_TRUE(GetLut10(all.h, p10) == KASTATUS_OK && p10 == u.pLut10);
    EXPECT_TRUE(GetLut12(all.h, p12) == KASTATUS_OK && p12 == u.pLut12);

    for (KaipHLut h : {l10.h, l12.h}) {
        EXPECT_EQ(GetLut8(h, p8), KASTATUS_KAIP_INVALID_LUT_TYPE);
        EXPECT_EQ(p8, nullptr);
    }
    for (KaipHLut h : {l8.h, l12.h}) EXPECT_EQ(GetLut10(h, p10), KASTATUS_KAIP_INVALID_LUT_TYPE);
    for (KaipHLut h : {l8.h, l10.h}) EXPECT_EQ(GetLut12(h, p12), KASTATUS_KAIP_INVALID_LUT_TYPE);
}

TEST_F(LutReset, ResetRestoresIdentityOfEveryBodyReached)
{
    for (KaipHLut h : {static_cast<KaipHLut>(nullptr), reinterpret_cast<KaipHLut>(1)}) {
        g_Lut8.Red[3] = 9;
        g_Lut10.Green32[7] = -5;
        g_Lut12.BayerBlue32[4095] = 1;
        EXPECT_EQ(KaipResetLut(h), KASTATUS_OK);
        ExpectIdentity(g_Lut8, true);
        ExpectIdentity(g_Lut10, true);
        ExpectIdentity(g_Lut12, true);
    }
    Lut all(KAIP_LUT_BAYER | KAIP_LUT_BAYER_16);
    Body8(all.h)->BayerRed16[0] = 7;
    Body12(all.h)->Blue[100] = 0;
    EXPECT_EQ(KaipResetLut(all.h), KASTATUS_OK);
    ExpectIdentity(*Body8(all.h), true);
    ExpectIdentity(*Body12(all.h), true);
}

// Depth conversion of one channel against the model.
template <class TSrc, class TDst>
void CheckConversion(void (*convert)(const TSrc*, TDst*), unsigned srcBits, unsigned dstBits, uint32_t seed)
{
    std::mt19937 rng(seed);
    std::vector<TSrc> src(1u << srcBits);
    for (auto& v : src) v = TSrc(rng());
    std::vector<TDst> dst(1u << dstBits, 0xAB);
    convert(src.data(), dst.data());
    const auto expected = ConvertModel(std::vector<uint32_t>(src.begin(), src.end()), srcBits, dstBits);
    ASSERT_EQ(std::vector<uint32_t>(dst.begin(), dst.end()), expected)
        << srcBits << "->" << dstBits << " seed " << seed;
}

TEST(LutConversion, WholeTablesFollowTheRules)
{
    for (uint32_t seed = 1; seed <= 20; ++seed) {
        CheckConversion(Lut8toLut10, 8, 10, seed);
        CheckConversion(Lut8toLut12, 8, 12, seed);
        CheckConversion(Lut10toLut8, 10, 8, seed);
        CheckConversion(Lut10toLut12, 10, 12, seed);
        CheckConversion(Lut12toLut8, 12, 8, seed);
        CheckConversion(Lut12toLut10, 12, 10, seed);
    }
}

TEST(LutConversion, IdentityWorkedValues)
{
    std::vector<uint16_t> d10(1024);
    Lut8toLut10(g_LutLinear8.Red, d10.data());
    for (unsigned i = 0; i < 1020; ++i) ASSERT_EQ(d10[i], i);
    for (unsigned i = 1020; i < 1024; ++i) ASSERT_EQ(d10[i], 1020);
}

// Clamped to +-2147483647, then truncated toward zero (the builders' model runs it over random curves).
TEST(LutConversion, DoubleTo32Bit)
{
    EXPECT_EQ(DoubleTo32Bit(-3e9), -2147483647);
    EXPECT_EQ(DoubleTo32Bit(2147483647.5), 2147483647);
    EXPECT_EQ(DoubleTo32Bit(-2.9), -2);
}

TEST(LutLog, EachRefusalIsOneLineNamingItsFunction)
{
    Lut l8(8);
    uint32_t fake[2] = {9, 0};
    uint8_t pixels[4] = {};
    KaipImgInfo bayer{};
    bayer.Width = bayer.Height = 2;
    bayer.LineIncrement = 2;
    bayer.PixelFormat = KaipPixelFormat_BayerRG8;
    bayer.pData = pixels;
    LogCapture log;
    TKaIpLut10* p10;
    uint16_t value;
    EXPECT_EQ(KaipAllocateLut(16), nullptr);
    GetLut10(l8.h, p10);
    GetLut10(nullptr, p10);
    KaipFreeLut(nullptr);
    KaipResetLut(fake);
    KaipSet10BitLut(l8.h, nullptr, nullptr, nullptr);
    KaipGet12BitLutValue(l8.h, KAIP_LUT_CHANNEL_RED, 0, &value);
    // A builder on an unknown depth changes nothing; gamma 1000 is no change, so it takes any handle.
    EXPECT_EQ(KaipAddGammaToLut(1000, fake), KASTATUS_OK);
    EXPECT_EQ(KaipAddGammaToLut(1000, reinterpret_cast<KaipHLut>(0x10)), KASTATUS_OK);
    EXPECT_EQ(KaipAddGammaToLut(999, fake), KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(KaipAddWbToLut(1, 1, 1, fake), KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(KaipAddOffsetAndGainToLut(0, 1000, fake), KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(KaipAddBrightnessAndContrastToLut(1, 1, fake), KASTATUS_KAIP_INVALID_LUT_TYPE);
    EXPECT_EQ(fake[1], 0u);
    KaipApplyLut(&bayer, nullptr, l8.h, 0);
    KaipApplyLut(&bayer, nullptr, nullptr, 0);
    const std::vector<std::string> expected = {
        "KaipAllocateLut - Invalid LutType: 16",
        "GetLut10 - error KASTATUS_KAIP_INVALID_LUT_TYPE",
        "ResetLut - KASTATUS_KAIP_INVALID_LUT_HANDLE",
        "KaipSet10BitLut - Invalid LUT type",
        "KaipGet12BitLutValue - Invalid LUT type",
        "KaipAddGammaToLut - Invalid LUT type",
        "KaipAddWbToLut - Invalid LUT type",
        "AddOffsetAndGainToLut - Invalid LUT type",
        "AddOffsetAndGainToLut - Invalid LUT type",
        "ApplyLut: KASTATUS_KAIP_INVALID_LUT_TYPE",
        "ApplyLut: KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT 0x01080009",
    };
    EXPECT_EQ(log.Lines(), expected);
}
