// convert_lines_test.cpp: every supported conversion against a per-pixel model of the line converters.
#include "convert/convert_lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "formats.h"
#include "pm.imgproc.h"
#include "support/guarded.h"

namespace {

// ---------------------------------------------------------------- the model, pixel by pixel

enum Kind { kGrey, kRgb, kShort, kYuv, kYCbCr };

// One decoded source pixel: grey value a of `bits`, colour a/b/c = R/G/B of `bits`, 15/16-bit colour as
// 8-bit R/G/B, or Y/U/V bytes.
struct MPixel {
    Kind kind;
    uint32_t a, b, c, bits;
};

bool IsOneOf(uint32_t f, std::initializer_list<uint32_t> list)
{
    return std::find(list.begin(), list.end(), f) != list.end();
}

uint32_t MonoWordBits(uint32_t f)
{
    const uint32_t words[] = {KaipPixelFormat_Mono9,  KaipPixelFormat_Mono10, KaipPixelFormat_Mono11,
                              KaipPixelFormat_Mono12, KaipPixelFormat_Mono13, KaipPixelFormat_Mono14,
                              KaipPixelFormat_Mono15, KaipPixelFormat_Mono16};
    for (uint32_t i = 0; i < 8; ++i)
        if (f == words[i]) return 9 + i;
    if (f >= KaipPixelFormat_BayerGR10 && f <= KaipPixelFormat_BayerBG10) return 10;
    if (f >= KaipPixelFormat_BayerGR12 && f <= KaipPixelFormat_BayerBG12) return 12;
    return 0;
}

bool IsMono8(uint32_t f)
{
    return f == KaipPixelFormat_Mono8 || (f >= KaipPixelFormat_BayerGR8 && f <= KaipPixelFormat_BayerBG8);
}

// Deep colour: channel depth and whether red comes first.
uint32_t DeepBits(uint32_t f)
{
    if (IsOneOf(f, {KaipPixelFormat_BGR10Packed, KaipPixelFormat_RGB10Packed})) return 10;
    if (IsOneOf(f, {KaipPixelFormat_BGR12Packed, KaipPixelFormat_RGB12Packed})) return 12;
    if (IsOneOf(f, {KaipPixelFormat_BGR16, KaipPixelFormat_RGB16Packed})) return 16;
    return 0;
}
bool RedFirst(uint32_t f)
{
    return IsOneOf(f, {KaipPixelFormat_RGB8Packed, KaipPixelFormat_RGBA8Packed, KaipPixelFormat_RGB10Packed,
                       KaipPixelFormat_RGB12Packed, KaipPixelFormat_RGB16Packed});
}
bool Is411(uint32_t f)
{
    return IsOneOf(f, {KaipPixelFormat_YUV411Packed, KaipPixelFormat_YCbCr411_8_CbYYCrYY, KaipPixelFormat_YCbCr411_8});
}
bool Is444(uint32_t f)
{
    return IsOneOf(f, {KaipPixelFormat_YUV444Packed, KaipPixelFormat_YCbCr8_CbYCr, KaipPixelFormat_YCbCr601_8_CbYCr,
                       KaipPixelFormat_YCbCr709_8_CbYCr, KaipPixelFormat_YCbCr8});
}
bool IsYuv422(uint32_t f)
{
    return f >= 0x02100000 && f < 0x02110000 && !IsOneOf(f, {KaipPixelFormat_BGR555, KaipPixelFormat_BGR565Packed});
}

uint32_t Word(const uint8_t* p)
{
    return uint32_t(p[0] | (p[1] << 8));
}

// Packed and MIPI mono: n pixels in `bytes` bytes, pixel i has its top eight bits in byte high[i] and its
// `low` low bits in byte lowByte from bit lowShift[i].
struct TPacking {
    uint32_t format, n, bytes, low, high[4], lowByte, lowShift[4];
};
const TPacking kPackings[] = {{KaipPixelFormat_Mono10Packed, 2, 3, 2, {0, 2}, 1, {0, 4}},
                              {KaipPixelFormat_Mono12Packed, 2, 3, 4, {0, 2}, 1, {0, 4}},
                              {KaipPixelFormat_Mono12Mipi, 2, 3, 4, {0, 1}, 2, {0, 4}},
                              {KaipPixelFormat_Mono10Mipi, 4, 5, 2, {0, 1, 2, 3}, 4, {0, 2, 4, 6}}};
const TPacking* PackingOf(uint32_t f)
{
    for (const TPacking& k : kPackings)
        if (k.format == f) return &k;
    return nullptr;
}

// Bytes of one pixel of the unpacked formats.
uint32_t PixelBytes(uint32_t f)
{
    if (f == KaipPixelFormat_Mono8) return 1;
    if (MonoWordBits(f) || IsOneOf(f, {KaipPixelFormat_BGR555, KaipPixelFormat_BGR565Packed})) return 2;
    if (DeepBits(f)) return 6;
    return IsOneOf(f, {KaipPixelFormat_BGRA8Packed, KaipPixelFormat_RGBA8Packed}) ? 4 : 3;
}

// Bytes a source line needs for w pixels.
size_t SrcLineBytes(uint32_t f, uint32_t w)
{
    if (const TPacking* k = PackingOf(f)) return (size_t(w) * k->bytes + k->n - 1) / k->n;
    if (Is411(f)) return (size_t(w) * 3 + 1) / 2;
    if (IsYuv422(f)) return size_t(w + 1) / 2 * 4;
    if (Is444(f)) return size_t(w) * 3;
    return size_t(w) * PixelBytes(IsMono8(f) ? KaipPixelFormat_Mono8 : f);
}

// The pixels of one source line that a converter writes, in order.
std::vector<MPixel> DecodeLine(uint32_t f, const uint8_t* p, uint32_t w, bool toMono8)
{
    std::vector<MPixel> px;
    if (IsMono8(f)) {
        for (uint32_t x = 0; x < w; ++x) px.push_back({kGrey, p[x], 0, 0, 8});
    } else if (uint32_t s = MonoWordBits(f)) {
        for (uint32_t x = 0; x < w; ++x) px.push_back({kGrey, Word(p + 2 * x), 0, 0, s});
    } else if (const TPacking* k = PackingOf(f)) {
        for (uint32_t x = 0; x + k->n <= w; x += k->n) {
            const uint8_t* g = p + x / k->n * k->bytes;
            for (uint32_t i = 0; i < k->n; ++i)
                px.push_back(toMono8 ? MPixel{kGrey, g[k->high[i]], 0, 0, 8}
                                     : MPixel{kGrey,
                                              (uint32_t(g[k->high[i]]) << k->low) |
                                                  ((g[k->lowByte] >> k->lowShift[i]) & ((1u << k->low) - 1)),
                                              0, 0, 8 + k->low});
        }
        // Into Mono8 the packed (not MIPI) formats also write the odd last pixel.
        if (toMono8 && w % 2 && k->bytes == 3 && k->lowByte == 1) px.push_back({kGrey, p[w / 2 * 3], 0, 0, 8});
    } else if (IsOneOf(f, {KaipPixelFormat_BGR555, KaipPixelFormat_BGR565Packed})) {
        const uint32_t g = f == KaipPixelFormat_BGR565Packed;  // green's extra bit
        for (uint32_t x = 0; x < w; ++x) {
            const uint32_t v = Word(p + 2 * x) << (1 - g);
            px.push_back({kShort, (v & 0xF800) >> 8, (v & (0x7C0 | g << 5)) >> 3, (Word(p + 2 * x) << 3) & 255, 8});
        }
    } else if (uint32_t d = DeepBits(f)) {
        const uint32_t r = RedFirst(f) ? 0 : 4;
        for (uint32_t x = 0; x < w; ++x)
            px.push_back({kRgb, Word(p + 6 * x + r), Word(p + 6 * x + 2), Word(p + 6 * x + 4 - r), d});
    } else if (Is411(f)) {
        // Walked in pairs: a pair starting at a multiple of 4 takes a new U, the other a new V.
        const bool yyc = f == KaipPixelFormat_YCbCr411_8;
        uint32_t u = 128, v = 128;
        for (uint32_t x = 0; x + 1 < w; x += 2) {
            const uint8_t* g = p + x / 2 * 3;
            const uint32_t c = yyc ? g[2] : g[0], y0 = yyc ? g[0] : g[1], y1 = yyc ? g[1] : g[2];
            (x % 4 == 0 ? u : v) = c;
            px.push_back({kYuv, y0, u, v, 8});
            px.push_back({kYuv, y1, u, v, 8});
        }
        // Only whole groups of four pixels are written.
        px.resize(w / 4 * 4);
    } else if (IsYuv422(f)) {
        const bool uyvy = IsOneOf(f, {KaipPixelFormat_YUV422Packed, KaipPixelFormat_YCbCr422_8_CbYCrY,
                                      KaipPixelFormat_YCbCr601_422_8_CbYCrY, KaipPixelFormat_YCbCr709_422_8_CbYCrY});
        const Kind k = f == KaipPixelFormat_YCbCr422_8 ? kYCbCr : kYuv;
        for (uint32_t x = 0; x + 1 < w; x += 2) {
            const uint8_t* g = p + x * 2;
            const uint32_t u = uyvy ? g[0] : g[1], v = uyvy ? g[2] : g[3];
            px.push_back({k, uyvy ? g[1] : g[0], u, v, 8});
            px.push_back({k, uyvy ? g[3] : g[2], u, v, 8});
        }
    } else if (Is444(f)) {
        const bool ycc = f == KaipPixelFormat_YCbCr8;
        for (uint32_t x = 0; x < w; ++x) {
            const uint8_t* g = p + 3 * x;
            px.push_back({ycc ? kYCbCr : kYuv, ycc ? g[0] : g[1], ycc ? g[1] : g[0], g[2], 8});
        }
    } else {
        const uint32_t step = IsOneOf(f, {KaipPixelFormat_BGRA8Packed, KaipPixelFormat_RGBA8Packed}) ? 4 : 3;
        const uint32_t r = RedFirst(f) ? 0 : 2;
        for (uint32_t x = 0; x < w; ++x) px.push_back({kRgb, p[step * x + r], p[step * x + 1], p[step * x + 2 - r], 8});
    }
    return px;
}

uint32_t Clamp(int v)
{
    return uint32_t(std::min(255, std::max(0, v)));
}

uint32_t Shift(uint32_t v, uint32_t s, uint32_t d)
{
    return s > d ? v >> (s - d) : v << (d - s);
}

uint32_t Grey8(const MPixel& p)
{
    switch (p.kind) {
        case kGrey:
            return (p.a & (0xFFFFu >> (16 - p.bits))) >> (p.bits - 8);
        case kRgb:
            return uint8_t((54 * p.a + 183 * p.b + 18 * p.c + 128) >> p.bits);
        case kShort:
            return (p.a + p.b + p.c) / 3;
        default:
            return p.a;
    }
}

// 8-bit R, G, B.
void Rgb8(const MPixel& p, uint32_t out[3])
{
    const int y = int(p.a), u = int(p.b) - 128, v = int(p.c) - 128;
    switch (p.kind) {
        case kGrey:
            out[0] = out[1] = out[2] = Grey8(p);
            return;
        case kRgb:
            out[0] = uint8_t(p.a >> (p.bits - 8)), out[1] = uint8_t(p.b >> (p.bits - 8)),
            out[2] = uint8_t(p.c >> (p.bits - 8));
            return;
        case kShort:
            out[0] = p.a, out[1] = p.b, out[2] = p.c;
            return;
        case kYuv:
            out[0] = Clamp((298 * (y - 16) + 409 * v + 128) >> 8);
            out[1] = Clamp((298 * (y - 16) - 100 * u - 208 * v + 128) >> 8);
            out[2] = Clamp((298 * (y - 16) + 516 * u + 128) >> 8);
            return;
        case kYCbCr:
            out[0] = Clamp((256 * y + 359 * v + 128) >> 8);
            out[1] = Clamp((256 * y - 88 * u - 183 * v + 128) >> 8);
            out[2] = Clamp((256 * y + 454 * u + 128) >> 8);
            return;
    }
}

void Put16(uint8_t* q, uint32_t v)
{
    q[0] = uint8_t(v);
    q[1] = uint8_t(v >> 8);
}

// Writes one model pixel in the destination format; keepFourth leaves a 32-bit pixel's fourth byte.
void EncodePixel(uint32_t f, const MPixel& p, uint8_t* q, bool keepFourth)
{
    uint32_t c[3];
    if (f == KaipPixelFormat_Mono8) {
        q[0] = uint8_t(Grey8(p));
    } else if (uint32_t d = MonoWordBits(f)) {
        Put16(q, p.kind == kGrey ? Shift(p.a, p.bits, d) : uint32_t(uint8_t(Grey8(p))) << (d - 8));
    } else if (IsOneOf(f, {KaipPixelFormat_BGR555, KaipPixelFormat_BGR565Packed})) {
        const uint32_t g = f == KaipPixelFormat_BGR565Packed;
        Rgb8(p, c);
        Put16(q, ((((c[0] << 8) & 0xF800) | ((c[1] << 3) & (0x7C0 | g << 5))) >> (1 - g)) | (c[2] >> 3));
    } else if (uint32_t d = DeepBits(f)) {
        const uint32_t r = RedFirst(f) ? 0 : 4;
        if (p.kind == kGrey)
            c[0] = c[1] = c[2] = Shift(p.a, p.bits, d);
        else
            for (int i = 0; i < 3; ++i) c[i] = Shift((&p.a)[i], p.bits, d);
        Put16(q + r, c[0]), Put16(q + 2, c[1]), Put16(q + 4 - r, c[2]);
    } else {
        const uint32_t r = RedFirst(f) ? 0 : 2;
        Rgb8(p, c);
        q[r] = uint8_t(c[0]), q[1] = uint8_t(c[1]), q[2 - r] = uint8_t(c[2]);
        if (IsOneOf(f, {KaipPixelFormat_BGRA8Packed, KaipPixelFormat_RGBA8Packed}) && !keepFourth) q[3] = 0;
    }
}

// A copy where source and destination hold the same layout (mono words are rewritten word by word).
bool IsCopy(uint32_t src, uint32_t dst)
{
    return (src == dst && !MonoWordBits(src)) || (IsMono8(src) && dst == KaipPixelFormat_Mono8);
}

// Only a reordering conversion into BGRA8Packed from red-first 24/32-bit pixels keeps the fourth byte.
bool KeepsFourth(uint32_t src, uint32_t dst)
{
    return (dst == KaipPixelFormat_BGRA8Packed &&
            IsOneOf(src, {KaipPixelFormat_RGB8Packed, KaipPixelFormat_RGBA8Packed})) ||
           (dst == KaipPixelFormat_RGBA8Packed && src == KaipPixelFormat_BGRA8Packed);
}

// The whole expected destination, starting from its previous content.
void ModelImage(const KaipImgInfo& src, uint32_t dstFormat, bool reverse, uint8_t* dst, uint32_t dstInc)
{
    for (uint32_t y = 0; y < src.Height; ++y) {
        const uint8_t* s = src.pData + size_t(y) * src.LineIncrement;
        uint8_t* d = dst + size_t(reverse ? src.Height - 1 - y : y) * dstInc;
        if (IsCopy(src.PixelFormat, dstFormat)) {
            std::memcpy(d, s, std::min(src.LineIncrement, dstInc));
            continue;
        }
        const std::vector<MPixel> px = DecodeLine(src.PixelFormat, s, src.Width, dstFormat == KaipPixelFormat_Mono8);
        for (size_t x = 0; x < px.size(); ++x)
            EncodePixel(dstFormat, px[x], d + x * PixelBytes(dstFormat), KeepsFourth(src.PixelFormat, dstFormat));
    }
}

// ---------------------------------------------------------------- the comparison

struct TCase {
    uint32_t src, dst, width, height, srcPad, dstPad, seed;
};

std::string Describe(const TCase& c)
{
    return std::string(FormatName(c.src)) + " -> " + FormatName(c.dst) + " w=" + std::to_string(c.width) +
           " h=" + std::to_string(c.height) + " srcPad=" + std::to_string(c.srcPad) +
           " dstPad=" + std::to_string(c.dstPad) + " seed=" + std::to_string(c.seed);
}

std::unique_ptr<GuardedImage> RandomSource(const TCase& c, uint32_t flags)
{
    auto src = std::make_unique<GuardedImage>(c.width, c.height, c.src,
                                              uint32_t(SrcLineBytes(c.src, c.width)) + c.srcPad, flags);
    FillRandom(src->buffer.data(), src->buffer.size(), c.seed);
    return src;
}

// Same orientation: the destination is the caller's, pre-filled, and compared whole (padding included).
void CheckInPlace(const TCase& c, uint32_t flags)
{
    const auto pSrc = RandomSource(c, flags);
    GuardedImage& src = *pSrc;
    const uint32_t dstInc = c.width * PixelBytes(c.dst) + c.dstPad;
    GuardedImage dst(c.width, c.height, c.dst, dstInc, flags);
    FillRandom(dst.buffer.data(), dst.buffer.size(), c.seed + 1);
    std::vector<uint8_t> expected(dst.buffer.data(), dst.buffer.data() + dst.buffer.size());
    ModelImage(src.info, c.dst, false, expected.data(), dstInc);

    ASSERT_EQ(KaipConvertToPixelFormat(&src.info, &dst.info, c.dst, 0), 0) << Describe(c);
    ASSERT_EQ(0, std::memcmp(expected.data(), dst.buffer.data(), expected.size())) << Describe(c);
}

// Other orientation: the destination is rebuilt top-down (with the options' line alignment) and the lines
// come out in reverse order; the pixels of every line are compared.
void CheckReversed(const TCase& c, uint32_t alignFlag)
{
    const auto pSrc = RandomSource(c, KaipImgFlag_BottomUp);
    GuardedImage& src = *pSrc;
    KaipImgInfo dst{};
    ASSERT_EQ(KaipConvertToPixelFormat(&src.info, &dst, c.dst, KaipOption_ReallocateDst | alignFlag), 0) << Describe(c);
    ASSERT_EQ(dst.Flags & KaipImgFlag_BottomUp, 0u);
    const size_t bytes = size_t(dst.Height) * dst.LineIncrement;
    std::vector<uint8_t> expected(dst.pData, dst.pData + bytes);
    ModelImage(src.info, c.dst, true, expected.data(), dst.LineIncrement);
    for (uint32_t y = 0; y < c.height; ++y) {
        const size_t used = IsCopy(c.src, c.dst) ? std::min(src.info.LineIncrement, dst.LineIncrement)
                                                 : size_t(c.width) * PixelBytes(c.dst);
        ASSERT_EQ(0, std::memcmp(expected.data() + size_t(y) * dst.LineIncrement,
                                 dst.pData + size_t(y) * dst.LineIncrement, used))
            << Describe(c) << " line " << y;
    }
    KaipDeallocateImageData(&dst);
}

TEST(ConvertLines, EverySupportedPairMatchesTheModel)
{
    uint32_t seed = 1, pairs = 0;
    for (const TFormatName& s : kKnownFormats)
        for (const TFormatName& d : kKnownFormats) {
            if (!KaipCanConvertToPixelFormat(s.code, d.code)) continue;
            ++pairs;
            if (IsOneOf(s.code, {KaipPixelFormat_YCbCr601_8_CbYCr, KaipPixelFormat_YCbCr709_8_CbYCr})) {
                // Convertible by the table, but the source check knows no class for them and refuses.
                const auto pSrc = RandomSource({s.code, d.code, 4, 2, 0, 0, seed}, 0);
                KaipImgInfo dst{};
                EXPECT_EQ(KaipConvertToPixelFormat(&pSrc->info, &dst, d.code, KaipOption_ReallocateDst),
                          KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT);
                continue;
            }
            for (uint32_t w = 1; w <= 70; ++w) {
                const TCase c{s.code, d.code, w, 1 + (w + seed) % 3, (w * 7) % 5, (w * 3) % 7, seed++};
                CheckInPlace(c, (w % 2) ? KaipImgFlag_BottomUp : 0);
                if (HasFatalFailure()) return;
                if (w % 3 == 0 || w < 6) CheckReversed(c, (w % 2) ? KaipImgFlag_Align16 : 0);
                if (HasFatalFailure()) return;
            }
        }
    EXPECT_GT(pairs, 600u);
}

TEST(ConvertLines, HeightOneReversedWritesTheLineInPlace)
{
    const TCase c{KaipPixelFormat_RGB8Packed, KaipPixelFormat_Mono8, 9, 1, 0, 0, 77};
    CheckReversed(c, 0);
}

// ---------------------------------------------------------------- members called directly

using PMember = void (*)(KAIP_LINE_PARAMS, bool);

// Reverse order straight into a pre-filled destination: the lines are flipped and the padding stays.
TEST(ConvertLines, ReversedLinesLeaveThePaddingAlone)
{
    const struct {
        PMember member;
        uint32_t src, dst;
    } cases[] = {{CopyBitmapData, KaipPixelFormat_BGR8Packed, KaipPixelFormat_BGR8Packed},
                 {Convert_BGR24_to_Mono8, KaipPixelFormat_BGR8Packed, KaipPixelFormat_Mono8},
                 {Convert_Yuv411_to_RGB32, KaipPixelFormat_YUV411Packed, KaipPixelFormat_RGBA8Packed},
                 {Convert_BGR16_to_BGR15, KaipPixelFormat_BGR565Packed, KaipPixelFormat_BGR555},
                 {Convert_RGB48_to_BGR36, KaipPixelFormat_RGB16Packed, KaipPixelFormat_BGR12Packed}};
    uint32_t seed = 900;
    for (const auto& c : cases)
        for (uint32_t w = 1; w <= 17; ++w) {
            const TCase tc{c.src, c.dst, w, 1 + w % 4, w % 3, 1 + w % 5, ++seed};
            const auto pSrc = RandomSource(tc, 0);
            const uint32_t dstInc = w * PixelBytes(c.dst) + tc.dstPad;
            GuardedBuffer dst(size_t(dstInc) * tc.height);
            FillRandom(dst.data(), dst.size(), seed + 1);
            std::vector<uint8_t> expected(dst.data(), dst.data() + dst.size());
            ModelImage(pSrc->info, c.dst, true, expected.data(), dstInc);
            c.member(w, tc.height, pSrc->info.pData, dst.data(), pSrc->info.LineIncrement, dstInc, true);
            ASSERT_EQ(0, std::memcmp(expected.data(), dst.data(), expected.size())) << Describe(tc);
        }
}

// Members the dispatcher does not pick still do what their names say.
TEST(ConvertLines, MembersOutsideTheDispatchTable)
{
    const uint32_t w = 7, h = 2;
    const std::vector<uint8_t> src = RandomBytes(w * h * 6, 31);
    auto run = [&](auto member, uint32_t srcInc, uint32_t dstInc, auto... bits) {
        std::vector<uint8_t> out(dstInc * h, 0xAA);
        member(w, h, src.data(), out.data(), srcInc, dstInc, bits..., false);
        return out;
    };
    EXPECT_EQ(run(Convert_RGB32_to_RGB24, 4 * w, 3 * w), run(Convert_BGR32_to_BGR24, 4 * w, 3 * w));
    EXPECT_EQ(run(Convert_BGR24_to_RGB24, 3 * w, 3 * w), run(SwapColor8Data, 3 * w, 3 * w));
    EXPECT_EQ(run(Convert_MonoWord_to_MonoWord16, 2 * w, 2 * w, 12u),
              run(Convert_MonoWord_to_MonoWord, 2 * w, 2 * w, 12u, 16u));
    std::vector<uint8_t> copied = run(Copy_MonoWord_to_MonoWord, 2 * w, 2 * w + 3);
    for (uint32_t y = 0; y < h; ++y) {
        EXPECT_EQ(0, std::memcmp(copied.data() + y * (2 * w + 3), src.data() + y * 2 * w, 2 * w));
        EXPECT_EQ(copied[y * (2 * w + 3) + 2 * w], 0xAA);
    }
    // A depth the unpackers do not know writes nothing.
    const std::vector<uint8_t> untouched(2 * w * h, 0xAA);
    EXPECT_EQ(run(Convert_MonoPacked_to_MonoWord, 2 * w, 2 * w, 11u, 16u), untouched);
    EXPECT_EQ(run(Convert_MonoMipi_to_MonoWord, 2 * w, 2 * w, 11u, 16u), untouched);
}

}  // namespace
