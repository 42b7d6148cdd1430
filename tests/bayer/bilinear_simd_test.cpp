// bilinear_simd_test.cpp: the vector copies of the bilinear and nearest-neighbour interiors against the scalar rule,
// and their gates.
#include "bayer/bilinear_simd.h"

#include <gtest/gtest.h>

#include "bayer/bayer_model.h"
#include "core/unidef.h"
#include "support/simd_level.h"

using namespace bayer_model;

namespace {

// Widths 2..64 (every position of the last vector block) and a few large ones, every depth (16-bit
// samples with stray high bits now and then) and pattern, every destination each decoder takes, the
// identity, global and random LUTs (one whose doubled and quadrupled tables repeat its single ones, as
// the library builds them, and one whose do not): each vector level writes exactly the bytes of level 0
// into a fresh sentinel-filled destination, padding included.
TEST(BayerInterior8Simd, EveryLevelWritesTheScalarBytes)
{
    const std::pair<Decoder, std::vector<DstFormat>> decoders[] = {
        {KaipBdBilinearInterpolation, {kBgr8, kBgra8}}, {KaipBdNearestNeighbour, {kBgr8, kRgb8, kBgra8, kRgba8}}};
    std::vector<Size> sizes;
    for (uint32_t w = 2; w <= 64; ++w) sizes.push_back({w, 2 + w % 5});
    for (uint32_t w : {641u, 1000u, 2448u}) sizes.push_back({w, 5});
    const LutKind kinds[] = {LutKind::Identity, LutKind::Global, LutKind::Custom, LutKind::Custom};
    for (int variant = 0; variant < 4; ++variant) {
        const TestLut lut(kinds[variant], 99 + variant);
        if (variant == 3) {
            // Doubled and quadrupled tables that no longer repeat the single ones: the sums index them.
            TKaIpLut8* p8 = nullptr;
            TKaIpLut10* p10 = nullptr;
            TKaIpLut12* p12 = nullptr;
            ASSERT_EQ(GetLut8(lut.handle, p8) | GetLut10(lut.handle, p10) | GetLut12(lut.handle, p12), KASTATUS_OK);
            p8->BayerRed16[40] ^= 0x0100;
            p8->BayerGreen32[100] ^= 0x00010000;
            p10->BayerBlue16[300] ^= 0x0100;
            p12->BayerGreen32[1000] ^= 0x00010000;
        }
        for (const auto& [decode, dsts] : decoders)
            for (const DstFormat& d : dsts)
                for (uint32_t step = 0; step < 12; ++step) {
                    const uint32_t bits = 8 + 2 * (step / 4), pattern = step % 4;
                    for (const Size& s : sizes) {
                        const uint32_t seed = 17 + bits * 1000003u + pattern * 7919u + s.w * 131u + d.code;
                        SCOPED_TRACE("variant " + std::to_string(variant) + " format " + std::to_string(d.code) +
                                     " bits " + std::to_string(bits) + " pattern " + std::to_string(pattern) +
                                     " width " + std::to_string(s.w) + " seed " + std::to_string(seed));
                        const BayerImage src(s.w, s.h, bits, pattern & 2, pattern & 1, seed);
                        auto scalar = Destination(s.w, s.h, d.code, d.bytes);
                        {
                            ScopedSimdLevel level(0);
                            ASSERT_EQ(decode(&src.img->info, &scalar->info, d.code, 0, lut.handle), 0);
                        }
                        for (int level : {1, 2, 4}) {
                            auto vector = Destination(s.w, s.h, d.code, d.bytes);
                            ScopedSimdLevel set(level);
                            ASSERT_EQ(decode(&src.img->info, &vector->info, d.code, 0, lut.handle), 0);
                            ASSERT_EQ(Bytes(*vector), Bytes(*scalar)) << "level " << level;
                        }
                    }
                }
    }
}

// Closed gates: nothing written, every column left to the scalar rule; open, every interior column
// once a line holds one whole block.
TEST(BilinearInterior8Simd, ClosedGatesWriteNothing)
{
    const BayerImage src(100, 6, 8, false, true, 5);
    auto dst = Destination(100, 6, KaipPixelFormat_BGR8Packed, 3);
    const TBayerPlanes planes{
        src.img->info.pData, src.img->info.LineIncrement, dst->info.pData, dst->info.LineIncrement, false, true};
    TBayerLut lut{};
    const auto before = Bytes(*dst);
    {
        ScopedSimdLevel off(0);
        EXPECT_EQ(BilinearInterior_intr(planes, 100, 6, 8, 3, lut, true), 1u);
        EXPECT_EQ(NearestInterior_intr(planes, 100, 6, 3, false), 1u);
        EXPECT_EQ(Bytes(*dst), before);
    }
    ScopedSimdLevel sse2(1);
    EXPECT_EQ(BilinearInterior_intr(planes, 100, 6, 8, 3, lut, true), g_SSEChecker.m_bUseSSE2 ? 99u : 1u);
    EXPECT_EQ(BilinearInterior_intr(planes, 17, 6, 8, 3, lut, true), 1u);  // 15 interior columns: no whole block
    EXPECT_EQ(BilinearInterior_intr(planes, 18, 6, 8, 3, lut, true), g_SSEChecker.m_bUseSSE2 ? 17u : 1u);
    EXPECT_EQ(NearestInterior_intr(planes, 100, 6, 3, false), g_SSEChecker.m_bUseSSE2 ? 100u : 1u);
    EXPECT_EQ(NearestInterior_intr(planes, 16, 6, 3, false), 1u);  // 15 interior columns: no whole block
}

}  // namespace
