// rotate_sse2_test.cpp: the gate of the SSE2 blocks of the quarter turn (their output against the model, at
// every SIMD level, is in rotate_test.cpp).
#include <gtest/gtest.h>

#include "general/geometry.h"
#include "general/geometry_test_util.h"
#include "support/simd_level.h"

using namespace geotest;

namespace {

TEST(Rotate90AndMirrorSse2, ClosedGateWritesNothing)
{
    auto src = RandomImage(32, 32, {KaipPixelFormat_Mono8, 1}, 0, 0, 1);
    auto dst = RandomImage(32, 32, {KaipPixelFormat_Mono8, 1}, 0, 0, 2);
    const auto before = Bytes(*dst);
    ScopedSimdLevel scalar(0);
    EXPECT_FALSE(geometry::TurnBlocks_intr(1, src->info.pData, 32, 1, dst->info, 0, 32, 0, 32));
    EXPECT_EQ(Bytes(*dst), before);
}

}  // namespace
