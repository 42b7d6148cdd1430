// rotate_test.cpp: KaipRotate90AndMirror against the eight cases of the quarter turn, and the gate of its SSE2
// blocks.
#include <gtest/gtest.h>

#include "general/geometry_test_util.h"

using namespace geotest;

namespace {

// Where source pixel (x, y) lands, by the turn in memory and the two mirrors: the column is
// y or H-1-y, the row x or W-1-x.
struct TTurn {
    bool bClockwise, bTopBottom, bLeftRight, bColumnFlip, bRowFlip;
};
constexpr TTurn kTurns[] = {
    {true, false, false, true, false}, {true, false, true, true, true},    {true, true, false, false, false},
    {true, true, true, false, true},   {false, false, false, false, true}, {false, false, true, false, false},
    {false, true, false, true, true},  {false, true, true, true, false},
};

std::vector<uint8_t> Model(const KaipImgInfo& src, const KaipImgInfo& dst, bool cw, bool tb, bool lr)
{
    if (src.Flags & KaipImgFlag_BottomUp) cw = !cw;
    const TTurn* t = nullptr;
    for (const TTurn& turn : kTurns)
        if (turn.bClockwise == cw && turn.bTopBottom == tb && turn.bLeftRight == lr) t = &turn;
    std::vector<uint8_t> in = Bytes(src), out = Bytes(dst);
    const uint32_t w = src.Width, h = src.Height, p = GetPixelIncrementFromPixelFormat(src.PixelFormat);
    for (uint32_t y = 0; y < h; ++y)
        for (uint32_t x = 0; x < w; ++x)
            std::memcpy(Pixel(out, dst, t->bColumnFlip ? h - 1 - y : y, t->bRowFlip ? w - 1 - x : x),
                        Pixel(in, src, x, y), p);
    return out;
}

TEST(Rotate90AndMirror, MatchesModel)
{
    const RandomLut lut(11);
    uint32_t seed = 100;
    // Small sizes, and sizes that cover whole vector tiles and cross their edges (run at every SIMD level).
    const std::pair<uint32_t, uint32_t> sizes[] = {{1, 1},   {3, 2},   {2, 5},   {5, 4},   {8, 3},    {1, 7},
                                                   {16, 16}, {17, 33}, {64, 48}, {70, 67}, {129, 35}, {200, 31}};
    for (const TFormat& f : FormatsOf(0x7FFF)) {
        for (auto [w, h] : sizes)
            for (uint32_t flags : {0u, KaipImgFlag_BottomUp})
                for (int c = 0; c < 8; ++c) {
                    ++seed;
                    const bool cw = c & 1, tb = c & 2, lr = c & 4;
                    SCOPED_TRACE(testing::Message()
                                 << "format 0x" << std::hex << f.dwCode << std::dec << " " << w << "x" << h << " flags "
                                 << flags << " cw " << cw << " tb " << tb << " lr " << lr << " seed " << seed);
                    auto src = RandomImage(w, h, f, seed % 4, flags, seed);
                    auto dst = RandomImage(h, w, f, seed % 3, flags, ~seed);
                    const auto srcBefore = Bytes(src->info);
                    const auto expected = Model(src->info, dst->info, cw, tb, lr);
                    ASSERT_EQ(KaipRotate90AndMirror(&src->info, &dst->info, cw ? 7 : 0, tb, lr ? 2 : 0, 0, nullptr), 0);
                    ASSERT_EQ(Bytes(dst->info), expected);
                    ASSERT_EQ(Bytes(src->info), srcBefore);

                    // With a LUT the turned image is then run through the LUT application in place.
                    if (c != 5) continue;
                    GuardedImage mapped(dst->info.Width, dst->info.Height, f.dwCode, dst->info.LineIncrement, flags);
                    std::memcpy(mapped.info.pData, expected.data(), expected.size());
                    ApplyLut(&mapped.info, nullptr, lut.Handle(), 0);
                    ASSERT_EQ(KaipRotate90AndMirror(&src->info, &dst->info, cw, tb, lr, 0, lut.Handle()), 0);
                    ASSERT_EQ(Bytes(dst->info), Bytes(mapped.info));
                }
    }
}

TEST(Rotate90AndMirror, WorkedValues)
{
    for (uint32_t flags : {0u, KaipImgFlag_BottomUp}) {
        GuardedImage src(3, 2, KaipPixelFormat_Mono8, 3, flags), dst(2, 3, KaipPixelFormat_Mono8, 2, flags);
        for (int i = 0; i < 6; ++i) src.info.pData[i] = uint8_t(i + 1);
        ASSERT_EQ(KaipRotate90AndMirror(&src.info, &dst.info, KaipRotate_Clockwise, 0, 0, 0, nullptr), 0);
        // A bottom-up source turns the other way in memory.
        const std::vector<uint8_t> clockwise{4, 1, 5, 2, 6, 3}, counterClockwise{3, 6, 2, 5, 1, 4};
        EXPECT_EQ(Bytes(dst.info), flags ? counterClockwise : clockwise);
    }
}

TEST(Rotate90AndMirror, LutOfTheWrongDepthIsIgnored)
{
    KaipHLut lut10 = KaipAllocateLut(KAIP_LUT_10BIT);
    auto src = RandomImage(4, 3, {KaipPixelFormat_Mono8, 1}, 0, 0, 5);
    auto dst = RandomImage(3, 4, {KaipPixelFormat_Mono8, 1}, 0, 0, 6);
    const auto expected = Model(src->info, dst->info, true, false, false);
    EXPECT_EQ(KaipRotate90AndMirror(&src->info, &dst->info, 1, 0, 0, 0, lut10), 0);
    EXPECT_EQ(Bytes(dst->info), expected);
    KaipFreeLut(lut10);
}

// The refusals of its own, and the log line of a missing destination (the other common ones are in tests/hostile).
TEST(Rotate90AndMirror, Refusals)
{
    const TFormat mono8{KaipPixelFormat_Mono8, 1};
    auto turn = [](KaipImgInfo* s, KaipImgInfo* d) { return KaipRotate90AndMirror(s, d, 1, 0, 0, 0, nullptr); };
    ExpectRefusals({
        {"six-byte source", {KaipPixelFormat_RGB16Packed, 6}, mono8, true, 0, turn, 100013},
        {"other format", mono8, {KaipPixelFormat_Mono16, 2}, true, 0, turn, 100023},
        {"other orientation", mono8, mono8, true, KaipImgFlag_BottomUp, turn, 100024},
        {"no destination", mono8, mono8, true, 0, [&](KaipImgInfo* s, KaipImgInfo*) { return turn(s, nullptr); },
         KASTATUS_KAIP_INVALID_DST_POINTER,
         "KaipRotate90AndMirror: pDstImgInfo is NULL - must be supplied for this function"},
    });
}

}  // namespace
