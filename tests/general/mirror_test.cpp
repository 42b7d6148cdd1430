// mirror_test.cpp: KaipMirror, KaipReverseLines and KaipReverseLinesFast against a per-pixel model.
#include <gtest/gtest.h>

#include "general/geometry_test_util.h"
#include "platform/os_buffer.h"
#include "support/log_capture.h"

using namespace geotest;

namespace {

// The tables a mirror reads, or none.
struct TTables {
    const TKaIpLut8* p8 = nullptr;
    const TKaIpLut10* p10 = nullptr;
    const TKaIpLut12* p12 = nullptr;
};

// One pixel as the mirror writes it.
void MapPixel(const uint8_t* s, uint8_t* d, uint32_t format, uint32_t pixel, const TTables& t)
{
    if (!t.p8) {
        std::memcpy(d, s, pixel);
    } else if (pixel == 1) {
        d[0] = t.p8->Green[s[0]];
    } else if (pixel == 2) {
        const unsigned v = s[0] | s[1] << 8;
        const unsigned r = format == KaipPixelFormat_Mono10 ? t.p10->Green[v & 0x3FF] : t.p12->Green[v & 0xFFF];
        d[0] = uint8_t(r);
        d[1] = uint8_t(r >> 8);
    } else {
        const uint8_t r = s[0], g = s[1], b = s[2];
        d[0] = t.p8->Red[r];
        d[1] = t.p8->Green[g];
        d[2] = t.p8->Blue[b];
        if (pixel == 4) d[3] = s[3];
    }
}

// Expected destination bytes (starting from what the destination held).
std::vector<uint8_t> ModelInto(const KaipImgInfo& src, const KaipImgInfo& dst, std::vector<uint8_t> out, bool tb,
                               bool lr, const TTables& t)
{
    std::vector<uint8_t> in = Bytes(src);
    const uint32_t w = src.Width, h = src.Height, p = GetPixelIncrementFromPixelFormat(src.PixelFormat);
    for (uint32_t y = 0; y < h; ++y) {
        if (!tb && !lr && !t.p8) {
            std::memcpy(&out[size_t(y) * dst.LineIncrement], &in[size_t(y) * src.LineIncrement],
                        std::min(src.LineIncrement, dst.LineIncrement));
            continue;
        }
        for (uint32_t x = 0; x < w; ++x)
            MapPixel(Pixel(in, src, lr ? w - 1 - x : x, tb ? h - 1 - y : y), Pixel(out, dst, x, y), src.PixelFormat, p,
                     t);
    }
    return out;
}

// Expected bytes after an in-place mirror: mirrored pixels mapped once, an odd middle row or
// column left alone; with both directions the odd middle row keeps its order, mapped twice
// (its centre once).
std::vector<uint8_t> ModelInPlace(const KaipImgInfo& src, bool tb, bool lr, const TTables& t)
{
    std::vector<uint8_t> in = Bytes(src), out = in;
    const uint32_t w = src.Width, h = src.Height, p = GetPixelIncrementFromPixelFormat(src.PixelFormat);
    for (uint32_t y = 0; y < h; ++y)
        for (uint32_t x = 0; x < w; ++x) {
            const bool midRow = 2 * y + 1 == h, midColumn = 2 * x + 1 == w;
            uint8_t* d = Pixel(out, src, x, y);
            if (tb && !lr && !midRow) MapPixel(Pixel(in, src, x, h - 1 - y), d, src.PixelFormat, p, t);
            if (lr && !tb && !midColumn) MapPixel(Pixel(in, src, w - 1 - x, y), d, src.PixelFormat, p, t);
            if (tb && lr && !midRow) MapPixel(Pixel(in, src, w - 1 - x, h - 1 - y), d, src.PixelFormat, p, t);
            if (tb && lr && midRow) {
                uint8_t once[4];
                MapPixel(Pixel(in, src, x, y), once, src.PixelFormat, p, t);
                if (midColumn)
                    std::memcpy(d, once, p);
                else
                    MapPixel(once, d, src.PixelFormat, p, t);
            }
        }
    return out;
}

// One mirror of random w x h images into a destination and in place, against the models.
void CheckMirror(const TFormat& f, uint32_t w, uint32_t h, bool tb, bool lr, KaipHLut hLut, const TTables& t,
                 uint32_t seed)
{
    const uint32_t flags = (seed & 4) ? KaipImgFlag_BottomUp : 0;
    SCOPED_TRACE(testing::Message() << "format 0x" << std::hex << f.dwCode << std::dec << " " << w << "x" << h << " tb "
                                    << tb << " lr " << lr << " lut " << hLut << " seed " << seed);
    auto src = RandomImage(w, h, f, seed % 5, flags, seed);
    auto dst = RandomImage(w, h, f, seed % 3, flags, ~seed);
    const std::vector<uint8_t> srcBefore = Bytes(src->info);
    const auto expected = ModelInto(src->info, dst->info, Bytes(dst->info), tb, lr, t);
    ASSERT_EQ(KaipMirror(&src->info, &dst->info, tb, lr, 0, hLut), 0);
    ASSERT_EQ(Bytes(dst->info), expected);
    ASSERT_EQ(Bytes(src->info), srcBefore);
    const bool reversal = tb && !lr && !hLut;  // what the plain line reversal does too, flipping the flag
    auto again = RandomImage(w, h, f, seed % 3, flags, ~seed);
    ASSERT_TRUE(!reversal || (KaipReverseLines(&src->info, &again->info, 0) == 0 && Bytes(again->info) == expected &&
                              again->info.Flags == (flags ^ KaipImgFlag_BottomUp)));

    const auto inPlace = ModelInPlace(src->info, tb, lr, t);
    ASSERT_EQ(KaipMirror(&src->info, nullptr, tb ? 5 : 0, lr ? -1 : 0, 0, hLut), 0);
    ASSERT_EQ(Bytes(src->info), inPlace);
    ASSERT_EQ(src->info.Flags, flags);
    ASSERT_TRUE(!reversal || (KaipReverseLines(&src->info, nullptr, 0) == 0 && Bytes(src->info) == srcBefore &&
                              src->info.Flags == (flags ^ KaipImgFlag_BottomUp)));
}

TEST(Mirror, MatchesModelOverFormatsSizesAndLuts)
{
    KaipResetLut(nullptr);
    const RandomLut lut(7);
    const TTables none, global{&g_Lut8, &g_Lut10, &g_Lut12}, object{lut.pLut8, lut.pLut10, lut.pLut12};
    const KaipHLut handles[] = {nullptr, reinterpret_cast<KaipHLut>(1), lut.Handle()};
    const TTables* tables[] = {&none, &global, &object};
    const uint32_t widths[] = {1, 2, 3, 4, 5, 8, 17, 33}, heights[] = {1, 2, 3, 4, 5};
    uint32_t seed = 1;
    for (const TFormat& f : FormatsOf(0x7FFF))
        for (uint32_t w : widths)
            for (uint32_t h : heights)
                for (int dirs = 0; dirs < 4; ++dirs)
                    for (int l = 0; l < 3; ++l)
                        CheckMirror(f, w, h, dirs & 1, dirs & 2, handles[l], *tables[l], ++seed);
}

// The plain left-right copies run in vector blocks of whole pixels from the line start, then the
// scalar rest: every width up to a few blocks, some long lines, and tall images, for each pixel size.
TEST(Mirror, LeftRightCopiesOverEveryWidth)
{
    std::vector<uint32_t> widths = {100, 517, 1000};
    for (uint32_t w = 1; w <= 64; ++w) widths.push_back(w);  // width 0 is refused
    const TFormat formats[] = {{KaipPixelFormat_Mono8, 1},
                               {KaipPixelFormat_Mono12, 2},
                               {KaipPixelFormat_BGR8Packed, 3},
                               {KaipPixelFormat_BGRA8Packed, 4}};
    uint32_t seed = 0;  // bit 2 picks the line order, the low bits the paddings
    for (const TFormat& f : formats)
        for (uint32_t w : widths)
            for (uint32_t h : {1u, 2u, 3u})
                for (bool tb : {false, true})
                    for (uint32_t order : {0u, 4u})
                        CheckMirror(f, w, h, tb, true, nullptr, {}, ((seed += 9) & ~4u) | order);
    // Destinations of 8 MiB or more go out through a line buffer of 16 KiB: lines longer than that.
    for (const TFormat& f : formats) {
        const uint32_t w = 20000 / f.dwPixel + 1;
        CheckMirror(f, w, (8u << 20) / (w * f.dwPixel) + 1, false, true, nullptr, {}, seed += 7);
    }
}

TEST(Mirror, WorkedValues)
{
    // Both directions in place: the odd middle row keeps its order.
    GuardedImage img(3, 3, KaipPixelFormat_Mono8, 3);
    for (int i = 0; i < 9; ++i) img.info.pData[i] = uint8_t(i + 1);
    ASSERT_EQ(KaipMirror(&img.info, nullptr, 1, 1, 0, nullptr), 0);
    EXPECT_EQ(Bytes(img.info), (std::vector<uint8_t>{9, 8, 7, 4, 5, 6, 3, 2, 1}));

    // A Mono16 sample goes through the 12-bit green table, losing bits 12 to 15.
    const RandomLut lut(3);
    GuardedImage word(1, 1, KaipPixelFormat_Mono16, 2);
    word.info.pData[0] = 0x23;
    word.info.pData[1] = 0xF1;
    ASSERT_EQ(KaipMirror(&word.info, nullptr, 0, 1, 0, lut.Handle()), 0);  // middle pixel: untouched
    EXPECT_EQ(word.info.pData[0] | word.info.pData[1] << 8, 0xF123);
    GuardedImage out(1, 1, KaipPixelFormat_Mono16, 2);
    ASSERT_EQ(KaipMirror(&word.info, &out.info, 0, 1, 0, lut.Handle()), 0);
    EXPECT_EQ(out.info.pData[0] | out.info.pData[1] << 8, lut.pLut12->Green[0x123]);

    // BGR8Packed: the first byte (blue) deliberately goes through the red table.
    GuardedImage bgr(1, 1, KaipPixelFormat_BGR8Packed, 3), bgrOut(1, 1, KaipPixelFormat_BGR8Packed, 3);
    bgr.info.pData[0] = 10, bgr.info.pData[1] = 20, bgr.info.pData[2] = 30;
    ASSERT_EQ(KaipMirror(&bgr.info, &bgrOut.info, 1, 0, 0, lut.Handle()), 0);
    EXPECT_EQ(bgrOut.info.pData[0], lut.pLut8->Red[10]);
    EXPECT_EQ(bgrOut.info.pData[2], lut.pLut8->Blue[30]);
}

// The refusals of their own (the common ones are in tests/hostile); a plain reversal's refusal is the mirror's.
TEST(Mirror, RefusalsOfItsOwnAndOfTheReversals)
{
    const TFormat mono8{KaipPixelFormat_Mono8, 1}, mono10{KaipPixelFormat_Mono10, 2}, mono12{KaipPixelFormat_Mono12, 2};
    const TFormat packed{KaipPixelFormat_Mono10Packed, 2}, bgr16{KaipPixelFormat_BGR16, 6},
        bayer10{KaipPixelFormat_BayerGR10, 2};
    const std::shared_ptr<uint32_t> lut8(KaipAllocateLut(KAIP_LUT_8BIT), KaipFreeLut),
        lut10(KaipAllocateLut(KAIP_LUT_10BIT), KaipFreeLut);
    using I = KaipImgInfo*;
    auto mirror = [](KaipHLut h, bool inPlace = false) {
        return [h, inPlace](I s, I d) { return KaipMirror(s, inPlace ? nullptr : d, 1, 1, 0, h); };
    };
    // clang-format off
    ExpectRefusals({
        {"packed source", packed, mono10, false, 0, mirror(nullptr), 100013},
        {"six-byte source", bgr16, bgr16, false, 0, mirror(nullptr), 100013},
        {"other format", mono10, mono12, false, 0, mirror(nullptr), 100023},
        {"other orientation", mono10, mono10, false, KaipImgFlag_BottomUp, mirror(nullptr), 100024},
        {"8-bit LUT on Mono10", mono10, mono10, false, 0, mirror(lut8.get(), true), 100030},
        {"10-bit LUT on BayerGR10 (12-bit table)", bayer10, bayer10, false, 0, mirror(lut10.get()), 100030},
        {"reversal of a packed source", {KaipPixelFormat_Mono12Packed, 2}, mono8, false, 0,
         [](I s, I) { return KaipReverseLines(s, nullptr, 0); }, 100013},
        {"reversal into the other orientation", mono8, mono8, false, KaipImgFlag_BottomUp,
         [](I s, I d) { return KaipReverseLines(s, d, 0); }, KASTATUS_KAIP_INCOMPATIBLE_FLAGS,
         "Mirror: Src and Dst images differ in flags and KaipOption_ReallocateDst flag is not present.\n"
         "Mirror    Src Flags=0x0, Dst Flags=0x2, ChkFlagsMustBeEqual=0x3\n"},
        {"fast reversal of a six-byte source", {KaipPixelFormat_RGB16Packed, 6}, mono8, false, 0,
         [](I s, I) { return KaipReverseLinesFast(s, nullptr, nullptr, 0); }, 100013},
        {"fast reversal into another format", mono8, {KaipPixelFormat_Mono16, 2}, false, 0,
         [](I s, I d) { return KaipReverseLinesFast(s, d, nullptr, 0); }, 100023},
    });
    // clang-format on
}

// The fast reversal moves whole line increments (the shorter of the two, padding included) into a destination of
// the other orientation, or in place through its own or a caller's scratch line, and flips the flag.
TEST(ReverseLinesFast, MovesWholeLinesAndFlipsTheFlag)
{
    uint32_t seed = 40;
    const TFormat f{KaipPixelFormat_BGR565Packed, 2};
    for (uint32_t h : {1u, 2u, 3u, 6u})
        for (uint32_t flags : {0u, KaipImgFlag_BottomUp})
            for (uint32_t srcPad : {0u, 3u})
                for (uint32_t dstPad : {0u, 5u}) {
                    SCOPED_TRACE(testing::Message()
                                 << "h " << h << " flags " << flags << " pads " << srcPad << " " << dstPad);
                    auto src = RandomImage(7, h, f, srcPad, flags, ++seed);
                    auto dst = RandomImage(7, h, f, dstPad, KaipImgFlag_BottomUp, ++seed);
                    const uint32_t si = src->info.LineIncrement, di = dst->info.LineIncrement;
                    auto expected = Bytes(dst->info);
                    for (uint32_t y = 0; y < h; ++y)
                        std::memcpy(&expected[(h - 1 - y) * di], &src->info.pData[y * si], std::min(si, di));
                    ASSERT_EQ(KaipReverseLinesFast(&src->info, &dst->info, nullptr, 0), 0);
                    EXPECT_EQ(Bytes(dst->info), expected);
                    EXPECT_EQ(dst->info.Flags, flags ^ KaipImgFlag_BottomUp);
                    EXPECT_EQ(src->info.Flags, flags);
                    for (bool own : {false, true}) {
                        std::vector<uint8_t> line(si);
                        auto before = Bytes(src->info), after = before;
                        for (uint32_t y = 0; y < h; ++y) std::memcpy(&after[y * si], &before[(h - 1 - y) * si], si);
                        ASSERT_EQ(KaipReverseLinesFast(&src->info, nullptr, own ? line.data() : nullptr, 0), 0);
                        EXPECT_EQ(Bytes(src->info), after);
                        EXPECT_EQ(src->info.Flags, flags ^ (own ? 0 : KaipImgFlag_BottomUp));
                    }
                }
}

// A failed scratch allocation changes nothing and is logged with the function's name; a caller's line needs none.
TEST(ReverseLinesFast, FailedScratchAllocation)
{
    auto src = RandomImage(4, 3, {KaipPixelFormat_Mono8, 1}, 0, 0, 3);
    const auto before = Bytes(src->info);
    LogCapture log;
    oxOsBufferFailAfter(0);
    EXPECT_EQ(KaipReverseLinesFast(&src->info, nullptr, nullptr, 0), KASTATUS_KAIP_MEMORY_ALLOC_FAILED);
    uint8_t line[4];
    const KaipStatus withLine = KaipReverseLinesFast(&src->info, nullptr, line, 0);
    oxOsBufferFailAfter(-1);
    EXPECT_EQ(log.Lines(), std::vector<std::string>({"KaipReverseLinesFast: memory allocation of 4 bytes failed!"}));
    EXPECT_EQ(withLine, 0);
    EXPECT_EQ(src->info.Flags, KaipImgFlag_BottomUp);  // toggled once, by the call with a line
    EXPECT_EQ(Bytes(src->info)[0], before[8]);
}

}  // namespace
