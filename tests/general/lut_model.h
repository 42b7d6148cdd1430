// lut_model.h: an independent model of what a LUT body holds, for the LUT tests.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "general/lut.h"

namespace lutmodel {

// One channel table converted between depths, entry by entry: upward interpolation scaled by
// F with the source first scaled into 16 bits and the last entry held over F entries;
// downward every F-th entry divided by F. The result is cut to the destination's element.
inline std::vector<uint32_t> ConvertModel(const std::vector<uint32_t>& src, unsigned srcBits, unsigned dstBits)
{
    const unsigned nSrc = 1u << srcBits, nDst = 1u << dstBits, elementMask = dstBits == 8 ? 0xFF : 0xFFFF;
    std::vector<uint32_t> dst(nDst);
    for (unsigned i = 0; i < nDst; ++i) {
        if (dstBits > srcBits) {
            const unsigned F = nDst / nSrc, k = i / F, f = i % F;
            if (i >= nDst - F) {
                dst[i] = src[nSrc - 1] * F;
            } else {
                const uint32_t a = (src[k] * F) % 65536, b = (src[k + 1] * F) % 65536;
                dst[i] = (a * (F - f) + b * f) / F;
            }
        } else {
            const unsigned F = nSrc / nDst;
            dst[i] = src[F * i] / F;
        }
        dst[i] &= elementMask;
    }
    return dst;
}

// The Bayer rows of a body must be what its channel tables imply: the 8-bit output is the
// channel value, shifted down to 8 bits for the wider depths and cut to a byte.
template <class TLut>
void ExpectBayerDerived(const TLut& lut, bool b8Rows, bool bReplicated)
{
    const unsigned shift = TLut::Bits - 8;
    for (unsigned i = 0; i < TLut::N; ++i) {
        const uint32_t r = (lut.Red[i] >> shift) & 0xFF, g = (lut.Green[i] >> shift) & 0xFF,
                       b = (lut.Blue[i] >> shift) & 0xFF;
        if constexpr (TLut::Bits > 8) {
            ASSERT_TRUE(!b8Rows || (lut.BayerRed8[i] == r && lut.BayerGreen8[i] == g && lut.BayerBlue8[i] == b))
                << "8-bit rows, depth " << TLut::Bits << " i " << i;
        }
        ASSERT_TRUE(!bReplicated || (lut.BayerRed16[i] == r * 257 && lut.BayerBlue16[i] == b * 257 &&
                                     lut.BayerRed32[i] == r * 0x01010101u && lut.BayerGreen32[i] == g * 0x01010101u &&
                                     lut.BayerBlue32[i] == b * 0x01010101u))
            << "replicated rows, depth " << TLut::Bits << " i " << i;
    }
}

// Identity in the channel and 32-bit tables, Bayer rows as the type has them.
template <class TLut>
void ExpectIdentity(const TLut& lut, bool bFullBayer)
{
    for (unsigned i = 0; i < TLut::N; ++i) {
        ASSERT_TRUE(lut.Red[i] == i && lut.Green[i] == i && lut.Blue[i] == i) << "depth " << TLut::Bits << " i " << i;
        ASSERT_TRUE(lut.Red32[i] == int32_t(i) && lut.Green32[i] == int32_t(i) && lut.Blue32[i] == int32_t(i))
            << "depth " << TLut::Bits << " i " << i;
    }
    ExpectBayerDerived(lut, bFullBayer, bFullBayer);
}

// The bodies of a handle, through the public lookup.
template <class TLut>
TLut* BodyOf(KaipStatus (*get)(KaipHLut, TLut*&), KaipHLut h)
{
    TLut* p = nullptr;
    EXPECT_EQ(get(h, p), KASTATUS_OK);
    return p;
}
inline const auto Body8 = [](KaipHLut h) { return BodyOf(GetLut8, h); };
inline const auto Body10 = [](KaipHLut h) { return BodyOf(GetLut10, h); };
inline const auto Body12 = [](KaipHLut h) { return BodyOf(GetLut12, h); };

// A LUT object freed at the end of the scope.
struct Lut {
    explicit Lut(uint32_t dwType) : h(KaipAllocateLut(dwType)) {}
    ~Lut() { KaipFreeLut(h); }
    Lut(const Lut&) = delete;
    Lut& operator=(const Lut&) = delete;
    KaipHLut h;
};

// Puts the global LUT back to identity around each test that changes it.
class GlobalLutTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(KaipResetLut(nullptr), KASTATUS_OK); }
    void TearDown() override { KaipResetLut(nullptr); }
};

}  // namespace lutmodel
