// rotate_sse2_test.cpp: the SSE2 blocks of the quarter turn against the word-by-word blocks, and their gate.
#include <gtest/gtest.h>

#include "core/unidef.h"
#include "general/geometry.h"
#include "general/geometry_test_util.h"

using namespace geotest;

namespace {

// Sets the SSE2 switch for one scope.
class CSse2Switch {
public:
    explicit CSse2Switch(bool bOn) : m_bSaved(g_SSEChecker.m_bUseSSE2) { g_SSEChecker.m_bUseSSE2 = bOn; }
    ~CSse2Switch() { g_SSEChecker.m_bUseSSE2 = m_bSaved; }

private:
    bool m_bSaved;
};

TEST(Rotate90AndMirrorSse2, MatchesTheWordBlocks)
{
    if (!g_SSEChecker.m_bHasSSE2) GTEST_SKIP() << "no SSE2";
    uint32_t seed = 500;
    const std::pair<uint32_t, uint32_t> sizes[] = {{16, 16}, {17, 33}, {64, 48}, {70, 129}, {200, 31}};
    for (const TFormat& f : FormatsOf(0x7FFF))
        for (auto [w, h] : sizes)
            for (int c = 0; c < 8; ++c) {
                ++seed;
                const uint32_t flags = (seed & 8) ? KaipImgFlag_BottomUp : 0;
                SCOPED_TRACE(testing::Message() << "format 0x" << std::hex << f.dwCode << std::dec << " " << w << "x"
                                                << h << " case " << c << " seed " << seed);
                auto src = RandomImage(w, h, f, seed % 5, flags, seed);
                auto scalar = RandomImage(h, w, f, seed % 3, flags, ~seed);
                auto vector = RandomImage(h, w, f, seed % 3, flags, ~seed);
                {
                    CSse2Switch off(false);
                    ASSERT_EQ(KaipRotate90AndMirror(&src->info, &scalar->info, c & 1, c & 2, c & 4, 0, nullptr), 0);
                }
                {
                    CSse2Switch on(true);
                    ASSERT_EQ(KaipRotate90AndMirror(&src->info, &vector->info, c & 1, c & 2, c & 4, 0, nullptr), 0);
                }
                ASSERT_EQ(Bytes(*vector), Bytes(*scalar));
            }
}

TEST(Rotate90AndMirrorSse2, ClosedGateWritesNothing)
{
    auto src = RandomImage(32, 32, {KaipPixelFormat_Mono8, 1}, 0, 0, 1);
    auto dst = RandomImage(32, 32, {KaipPixelFormat_Mono8, 1}, 0, 0, 2);
    const auto before = Bytes(*dst);
    CSse2Switch off(false);
    EXPECT_FALSE(geometry::TurnBlocks_intr(1, src->info.pData, 32, 1, dst->info, 0, 32, 0, 32));
    EXPECT_EQ(Bytes(*dst), before);
}

}  // namespace
