// bilinear_simd_test.cpp: the vector copies of the bilinear and nearest-neighbour interiors against the scalar rule,
// and their gates.
#include "bayer/bilinear_simd.h"

#include <gtest/gtest.h>

#include "bayer/bayer_model.h"
#include "core/unidef.h"

using namespace bayer_model;

namespace {

// Sets SIMD.Level (0 scalar, 1 SSE2, 2 SSSE3, 4 AVX2) and its switches for one scope.
class CSimdLevel {
public:
    explicit CSimdLevel(int level) : m_saved(g_SSEChecker.m_iSIMDLevel) { Set(level); }
    ~CSimdLevel() { Set(m_saved); }

private:
    static void Set(int level)
    {
        g_SSEChecker.m_iSIMDLevel = level;
        g_SSEChecker.DeriveSwitches();
    }
    int m_saved;
};

std::vector<uint8_t> Whole(const GuardedImage& img)
{
    return {img.buffer.data(), img.buffer.data() + img.buffer.size()};
}

using TDecoder = KaipStatus (*)(const KaipImgInfo*, KaipImgInfo*, uint32_t, uint32_t, KaipHLut);

// Decodes at level 0, then at levels 1, 2 and 4, each into a fresh sentinel-filled destination
// that must come out the same, padding included.
void ExpectEveryLevelWritesTheScalarBytes(TDecoder decode, const BayerImage& src, uint32_t format, uint32_t bytes,
                                          KaipHLut hLut)
{
    auto scalar = Destination(src.m.w, src.m.h, format, bytes);
    {
        CSimdLevel level(0);
        ASSERT_EQ(decode(&src.img->info, &scalar->info, format, 0, hLut), 0);
    }
    for (int level : {1, 2, 4}) {
        auto vector = Destination(src.m.w, src.m.h, format, bytes);
        CSimdLevel set(level);
        ASSERT_EQ(decode(&src.img->info, &vector->info, format, 0, hLut), 0);
        ASSERT_EQ(Whole(*vector), Whole(*scalar)) << "level " << level;
    }
}

// Widths 2..64 (every position of the last vector block) and a few large ones, every depth (16-bit
// samples with stray high bits now and then) and pattern, both destinations, the identity, global
// and random LUTs (one whose doubled and quadrupled tables repeat its single ones, as the library
// builds them, and one whose do not): each vector level writes exactly the bytes of level 0,
// sentinel-filled padding included.
TEST(BilinearInterior8Simd, EveryLevelWritesTheScalarBytes)
{
    std::vector<Size> sizes;
    for (uint32_t w = 2; w <= 64; ++w) sizes.push_back({w, 3 + w % 4});
    for (uint32_t w : {641u, 1000u, 2448u}) sizes.push_back({w, 5});
    for (int variant = 0; variant < 4; ++variant) {
        const LutKind kind = variant == 0 ? LutKind::Identity : variant == 1 ? LutKind::Global : LutKind::Custom;
        const TestLut lut(kind, 99 + variant);
        if (variant == 3) {
            // Doubled and quadrupled tables that no longer repeat the single ones: the sums index them.
            TKaIpLut8* p8 = nullptr;
            TKaIpLut10* p10 = nullptr;
            TKaIpLut12* p12 = nullptr;
            ASSERT_EQ(GetLut8(lut.handle, p8), KASTATUS_OK);
            ASSERT_EQ(GetLut10(lut.handle, p10), KASTATUS_OK);
            ASSERT_EQ(GetLut12(lut.handle, p12), KASTATUS_OK);
            p8->BayerRed16[40] ^= 0x0100;
            p8->BayerGreen32[100] ^= 0x00010000;
            p10->BayerBlue16[300] ^= 0x0100;
            p12->BayerGreen32[1000] ^= 0x00010000;
        }
        for (uint32_t bytes : {3u, 4u}) {
            const uint32_t format = bytes == 3 ? KaipPixelFormat_BGR8Packed : KaipPixelFormat_BGRA8Packed;
            for (uint32_t step = 0; step < 12; ++step) {
                const uint32_t bits = 8 + 2 * (step / 4), pattern = step % 4;
                for (const Size& s : sizes) {
                    const uint32_t seed = 17 + bits * 1000003u + pattern * 7919u + s.w * 131u + bytes;
                    SCOPED_TRACE(std::string(Name(kind)) + " variant " + std::to_string(variant) + " bytes " +
                                 std::to_string(bytes) + " bits " + std::to_string(bits) + " pattern " +
                                 std::to_string(pattern) + " width " + std::to_string(s.w) + " seed " +
                                 std::to_string(seed));
                    const BayerImage src(s.w, s.h, bits, pattern & 2, pattern & 1, seed);
                    ExpectEveryLevelWritesTheScalarBytes(KaipBdBilinearInterpolation, src, format, bytes, lut.handle);
                }
            }
        }
    }
}

// Nearest neighbour: widths 2..64 and a few large ones, heights 2..5, every pattern and the four
// destinations, 8 bits with the identity tables (the vector interior) and with the global LUT and
// 12 bits (the scalar rule at every level).
TEST(NearestInterior8Simd, EveryLevelWritesTheScalarBytes)
{
    struct TDst {
        uint32_t format, bytes;
    };
    const TDst dsts[] = {{KaipPixelFormat_BGR8Packed, 3},
                         {KaipPixelFormat_RGB8Packed, 3},
                         {KaipPixelFormat_BGRA8Packed, 4},
                         {KaipPixelFormat_RGBA8Packed, 4}};
    std::vector<Size> sizes;
    for (uint32_t w = 2; w <= 64; ++w) sizes.push_back({w, 2 + w % 4});
    for (uint32_t w : {641u, 2448u}) sizes.push_back({w, 3});
    for (int variant = 0; variant < 3; ++variant) {
        const TestLut lut(variant == 1 ? LutKind::Global : LutKind::Identity, 5);
        const uint32_t bits = variant == 2 ? 12 : 8;
        for (const TDst& d : dsts) {
            for (uint32_t pattern = 0; pattern < 4; ++pattern) {
                for (const Size& s : sizes) {
                    const uint32_t seed = 23 + pattern * 7919u + s.w * 131u + d.format + bits;
                    SCOPED_TRACE("variant " + std::to_string(variant) + " format " + std::to_string(d.format) +
                                 " pattern " + std::to_string(pattern) + " width " + std::to_string(s.w) + " seed " +
                                 std::to_string(seed));
                    const BayerImage src(s.w, s.h, bits, pattern & 2, pattern & 1, seed);
                    ExpectEveryLevelWritesTheScalarBytes(KaipBdNearestNeighbour, src, d.format, d.bytes, lut.handle);
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
    const auto before = Whole(*dst);
    {
        CSimdLevel off(0);
        EXPECT_EQ(BilinearInterior_intr(planes, 100, 6, 8, 3, lut, true), 1u);
        EXPECT_EQ(NearestInterior_intr(planes, 100, 6, 3, false), 1u);
        EXPECT_EQ(Whole(*dst), before);
    }
    CSimdLevel sse2(1);
    EXPECT_EQ(BilinearInterior_intr(planes, 100, 6, 8, 3, lut, true), g_SSEChecker.m_bUseSSE2 ? 99u : 1u);
    EXPECT_EQ(BilinearInterior_intr(planes, 17, 6, 8, 3, lut, true), 1u);  // 15 interior columns: no whole block
    EXPECT_EQ(BilinearInterior_intr(planes, 18, 6, 8, 3, lut, true), g_SSEChecker.m_bUseSSE2 ? 17u : 1u);
    EXPECT_EQ(NearestInterior_intr(planes, 100, 6, 3, false), g_SSEChecker.m_bUseSSE2 ? 100u : 1u);
    EXPECT_EQ(NearestInterior_intr(planes, 16, 6, 3, false), 1u);  // 15 interior columns: no whole block
}

}  // namespace
