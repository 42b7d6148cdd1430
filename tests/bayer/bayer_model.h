// bayer_model.h: a per-pixel reference of the Bayer decoders, written from their rules, test images and the
// model runs the decoders share.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "general/lut.h"
#include "pm.imgproc.h"
#include "support/guarded.h"

namespace bayer_model {

enum Colour { R, G, B };

// A mosaic as stored (16-bit values may carry bits above the depth) with its pattern.
struct Mosaic {
    uint32_t w, h, bits;
    bool shiftLine, shiftColumn;
    std::vector<uint32_t> v;  // raw stored values, line by line
    uint32_t at(uint32_t x, uint32_t y) const { return v[size_t(y) * w + x]; }

    // Line y is red when (y even) equals (ShiftLine clear); red lines hold red where
    // (x even) equals (ShiftColumn clear), blue lines hold green there.
    Colour site(uint32_t x, uint32_t y) const
    {
        const bool firstKind = ((x % 2) == 0) == !shiftColumn;
        return redLine(y) ? (firstKind ? R : G) : (firstKind ? G : B);
    }
    bool redLine(uint32_t y) const { return ((y % 2) == 0) == !shiftLine; }
};

// The 8-bit outputs a LUT gives per channel and input value (2^bits entries each).
struct Outputs {
    std::vector<uint8_t> c[3];
};

struct Rgb {
    uint32_t r, g, b;
};

inline uint32_t Mask(const Mosaic& m, uint32_t k)
{
    return (k << m.bits) - 1;
}

// The LUT output of the truncated mean of n raw samples; the index is masked after the sum.
inline uint8_t Mean(const Mosaic& m, const Outputs& o, Colour c, std::initializer_list<uint32_t> samples)
{
    uint32_t sum = 0;
    for (uint32_t s : samples) sum += s;
    const uint32_t n = uint32_t(samples.size());
    return o.c[c][(sum & Mask(m, n)) / n];
}

// The border rule: 2x2 block towards the inside; own colour from the pixel, at green the
// others from the horizontal and vertical neighbours by their sites, at red/blue green from
// the horizontal neighbour and the opposite colour from the diagonal. Samples masked first.
inline Rgb FrameSamples(const Mosaic& m, uint32_t x, uint32_t y)
{
    const uint32_t xh = x == 0 ? 1 : x - 1, yv = y == 0 ? 1 : y - 1;
    uint32_t val[3] = {0, 0, 0};
    const Colour own = m.site(x, y);
    val[own] = m.at(x, y);
    if (own == G) {
        val[m.site(xh, y)] = m.at(xh, y);
        val[m.site(x, yv)] = m.at(x, yv);
    } else {
        val[G] = m.at(xh, y);
        val[m.site(xh, yv)] = m.at(xh, yv);
    }
    const uint32_t mk = Mask(m, 1);
    return {val[R] & mk, val[G] & mk, val[B] & mk};
}

inline bool IsFrame(const Mosaic& m, uint32_t x, uint32_t y)
{
    return x == 0 || y == 0 || x == m.w - 1 || y == m.h - 1;
}

// Decoder outputs of one pixel as (r, g, b) 8-bit values, plus whether it is written B G R.
struct Px {
    uint8_t r, g, b;
    bool bgrOrder;
};

inline Px FramePx(const Mosaic& m, const Outputs& o, uint32_t x, uint32_t y)
{
    const Rgb s = FrameSamples(m, x, y);
    return {o.c[R][s.r], o.c[G][s.g], o.c[B][s.b], true};
}

inline Px Bilinear(const Mosaic& m, const Outputs& o, uint32_t x, uint32_t y)
{
    if (IsFrame(m, x, y)) return FramePx(m, o, x, y);
    const uint32_t c = m.at(x, y), l = m.at(x - 1, y), r = m.at(x + 1, y), u = m.at(x, y - 1), d = m.at(x, y + 1);
    const uint32_t ul = m.at(x - 1, y - 1), ur = m.at(x + 1, y - 1), dl = m.at(x - 1, y + 1), dr = m.at(x + 1, y + 1);
    switch (m.site(x, y)) {
        case R:
            return {Mean(m, o, R, {c}), Mean(m, o, G, {u, d, l, r}), Mean(m, o, B, {ul, ur, dl, dr}), true};
        case B:
            return {Mean(m, o, R, {ul, ur, dl, dr}), Mean(m, o, G, {u, d, l, r}), Mean(m, o, B, {c}), true};
        default:
            if (m.redLine(y)) return {Mean(m, o, R, {l, r}), Mean(m, o, G, {c}), Mean(m, o, B, {u, d}), true};
            return {Mean(m, o, R, {u, d}), Mean(m, o, G, {c}), Mean(m, o, B, {l, r}), true};
    }
}

// Nearest neighbour: block of lines y-1, y and columns x-1, x; green from line y. Unlike the frame,
// the interior follows the destination's order.
inline Px Nearest(const Mosaic& m, const Outputs& o, uint32_t x, uint32_t y)
{
    if (IsFrame(m, x, y)) return FramePx(m, o, x, y);
    uint32_t val[3] = {0, 0, 0};
    for (uint32_t yy = y - 1; yy <= y; ++yy) {
        for (uint32_t xx = x - 1; xx <= x; ++xx) {
            const Colour c = m.site(xx, yy);
            if (c != G || yy == y) val[c] = m.at(xx, yy);
        }
    }
    const uint32_t mk = Mask(m, 1);
    return {o.c[R][val[R] & mk], o.c[G][val[G] & mk], o.c[B][val[B] & mk], false};
}

// Green to greyscale: interior green as it is (scaled), red/blue the mean of the four direct
// neighbours by shift; no masking. Border: identity green of (R + G + B) / 3.
inline uint8_t Grey(const Mosaic& m, uint32_t x, uint32_t y)
{
    if (IsFrame(m, x, y)) {
        const Rgb s = FrameSamples(m, x, y);
        const uint32_t mean = (s.r + s.g + s.b) / 3;
        return uint8_t(mean >> (m.bits - 8));
    }
    if (m.site(x, y) == G) return uint8_t(m.at(x, y) >> (m.bits - 8));
    const uint32_t sum = m.at(x - 1, y) + m.at(x + 1, y) + m.at(x, y - 1) + m.at(x, y + 1);
    return uint8_t(sum >> (m.bits - 6));
}

inline Px Mosaicked(const Mosaic& m, uint32_t x, uint32_t y)
{
    const uint8_t v = uint8_t(m.at(x, y) >> (m.bits - 8));
    const Colour c = m.site(x, y);
    return {uint8_t(c == R ? v : 0), uint8_t(c == G ? v : 0), uint8_t(c == B ? v : 0), true};
}

// ---- test images ----

inline uint32_t BayerFormat(uint32_t bits, bool shiftLine, bool shiftColumn)
{
    // Within each group the order is GR, RG, GB, BG.
    const uint32_t first = bits == 8 ? 0x01080008u : bits == 10 ? 0x0110000Cu : 0x01100010u;
    const uint32_t index = shiftLine ? (shiftColumn ? 3 : 2) : (shiftColumn ? 0 : 1);
    return first + index;
}

// A random mosaic in a guarded buffer with a few padding bytes per line; one value in eight
// of the 16-bit ones carries random bits above the depth.
struct BayerImage {
    Mosaic m;
    std::unique_ptr<GuardedImage> img;

    BayerImage(uint32_t w, uint32_t h, uint32_t bits, bool shiftLine, bool shiftColumn, uint32_t seed)
        : m{w, h, bits, shiftLine, shiftColumn, {}}
    {
        const uint32_t bytes = bits == 8 ? 1 : 2;
        img = std::make_unique<GuardedImage>(w, h, BayerFormat(bits, shiftLine, shiftColumn), w * bytes + 2 * bytes + 1,
                                             0, bytes);
        std::mt19937 gen(seed);
        FillRandom(img->buffer.data(), img->buffer.size(), seed ^ 0x9e3779b9u);
        m.v.resize(size_t(w) * h);
        for (uint32_t y = 0; y < h; ++y) {
            for (uint32_t x = 0; x < w; ++x) {
                const uint32_t v = gen() & ((1u << bits) - 1);
                Set(x, y, bits > 8 && gen() % 8 == 0 ? gen() & 0xFFFF : v);
            }
        }
    }
    // Stores sample (x, y) in the model and in the image.
    void Set(uint32_t x, uint32_t y, uint32_t v)
    {
        m.v[size_t(y) * m.w + x] = v;
        uint8_t* p = img->buffer.data() + size_t(y) * img->info.LineIncrement + x * (m.bits == 8 ? 1 : 2);
        p[0] = uint8_t(v);
        if (m.bits > 8) p[1] = uint8_t(v >> 8);
    }
};

constexpr uint8_t kSentinel = 0xA5;

// A destination in a guarded buffer, pre-filled with the sentinel, padding included.
inline std::unique_ptr<GuardedImage> Destination(uint32_t w, uint32_t h, uint32_t format, uint32_t pixelBytes)
{
    auto d = std::make_unique<GuardedImage>(w, h, format, w * pixelBytes + 3, 0, pixelBytes);
    std::memset(d->buffer.data(), kSentinel, d->buffer.size());
    return d;
}

// The expected destination bytes: the model's pixels at their places, sentinel elsewhere.
template <class F>
std::vector<uint8_t> Expected(const GuardedImage& dst, uint32_t pixelBytes, bool rgbDst, F pixel)
{
    std::vector<uint8_t> e(dst.buffer.size(), kSentinel);
    for (uint32_t y = 0; y < dst.info.Height; ++y) {
        for (uint32_t x = 0; x < dst.info.Width; ++x) {
            uint8_t* p = e.data() + size_t(y) * dst.info.LineIncrement + size_t(x) * pixelBytes;
            const Px px = pixel(x, y);
            const bool bgr = px.bgrOrder || !rgbDst;
            if (pixelBytes == 1) {
                p[0] = px.g;
                continue;
            }
            p[0] = bgr ? px.b : px.r;
            p[1] = px.g;
            p[2] = bgr ? px.r : px.b;
            if (pixelBytes == 4) p[3] = 0;
        }
    }
    return e;
}

// The first differing byte as "x,y channel: got/want", or "" when equal.
inline std::string FirstDifference(const GuardedImage& dst, uint32_t pixelBytes, const std::vector<uint8_t>& e)
{
    for (size_t i = 0; i < e.size(); ++i) {
        if (dst.buffer.data()[i] != e[i]) {
            const size_t y = i / dst.info.LineIncrement, o = i % dst.info.LineIncrement;
            return "byte at x=" + std::to_string(o / pixelBytes) + " y=" + std::to_string(y) + " ch " +
                   std::to_string(o % pixelBytes) + ": got " + std::to_string(dst.buffer.data()[i]) + " want " +
                   std::to_string(e[i]);
        }
    }
    return "";
}

// ---- LUTs: null (identity), 1 (global, randomised here) and a custom universal object ----

enum class LutKind { Identity, Global, Custom };

// Writes random 8-bit outputs into a body and derives its replicated tables the documented
// way (b * 0x0101, b * 0x01010101); returns the outputs for the model.
template <class Body>
Outputs Randomise(Body& body, uint32_t seed)
{
    constexpr uint32_t n = Body::N;
    uint8_t* out[3];
    if constexpr (n == 256) {
        out[0] = body.Red, out[1] = body.Green, out[2] = body.Blue;
    } else {
        out[0] = body.BayerRed8, out[1] = body.BayerGreen8, out[2] = body.BayerBlue8;
    }
    Outputs o;
    std::mt19937 gen(seed);
    for (int c = 0; c < 3; ++c) {
        for (uint32_t i = 0; i < n; ++i) out[c][i] = uint8_t(gen());
        o.c[c].assign(out[c], out[c] + n);
    }
    for (uint32_t i = 0; i < n; ++i) {
        body.BayerRed16[i] = uint16_t(out[0][i] * 0x0101u);
        body.BayerBlue16[i] = uint16_t(out[2][i] * 0x0101u);
        body.BayerRed32[i] = out[0][i] * 0x01010101u;
        body.BayerGreen32[i] = out[1][i] * 0x01010101u;
        body.BayerBlue32[i] = out[2][i] * 0x01010101u;
    }
    return o;
}

inline Outputs IdentityOutputs(uint32_t bits)
{
    Outputs o;
    for (int c = 0; c < 3; ++c) {
        for (uint32_t i = 0; i < (1u << bits); ++i) o.c[c].push_back(uint8_t(i >> (bits - 8)));
    }
    return o;
}

// A LUT of one kind with the outputs it gives at each depth. The global LUT is reset to
// identity again when the object goes.
struct TestLut {
    KaipHLut handle = nullptr;
    LutKind kind;
    Outputs out8, out10, out12;

    TestLut(LutKind k, uint32_t seed) : kind(k)
    {
        if (k == LutKind::Identity) {
            out8 = IdentityOutputs(8), out10 = IdentityOutputs(10), out12 = IdentityOutputs(12);
            return;
        }
        // The handle 1 resolves to the global bodies.
        handle = k == LutKind::Global ? reinterpret_cast<KaipHLut>(1)
                                      : KaipAllocateLut(KAIP_LUT_ALL_DEPTHS | KAIP_LUT_BAYER | KAIP_LUT_BAYER_16);
        TKaIpLut8* p8 = nullptr;
        TKaIpLut10* p10 = nullptr;
        TKaIpLut12* p12 = nullptr;
        EXPECT_EQ(GetLut8(handle, p8) | GetLut10(handle, p10) | GetLut12(handle, p12), KASTATUS_OK);
        out8 = Randomise(*p8, seed), out10 = Randomise(*p10, seed + 1), out12 = Randomise(*p12, seed + 2);
    }
    ~TestLut()
    {
        if (kind == LutKind::Custom) KaipFreeLut(handle);
        if (kind == LutKind::Global) KaipResetLut(nullptr);
    }
    const Outputs& of(uint32_t bits) const { return bits == 8 ? out8 : bits == 10 ? out10 : out12; }
};

inline const char* Name(LutKind k)
{
    return k == LutKind::Identity ? "identity" : k == LutKind::Global ? "global" : "custom";
}

// Sizes from the smallest the border decoders take to a few odd and larger ones.
struct Size {
    uint32_t w, h;
};
inline const std::vector<Size>& Sizes()
{
    static const std::vector<Size> sizes{{2, 2}, {3, 3}, {4, 4}, {5, 7}, {2, 5}, {7, 2}, {33, 17}, {130, 67}};
    return sizes;
}

// Sizes from the smallest (frames only) past a 5x5 support to a few larger odd ones.
inline const std::vector<Size>& WindowSizes()
{
    static const std::vector<Size> sizes{{2, 2}, {3, 3}, {4, 4}, {5, 5}, {2, 5},   {5, 3},
                                         {6, 5}, {5, 8}, {7, 6}, {9, 9}, {33, 17}, {70, 41}};
    return sizes;
}

// Calls f(mosaic) for every depth, pattern and size with a seed of its own, traced so a
// failure names its case; stops at the first fatal failure.
template <class F>
void ForEachMosaic(const std::vector<Size>& sizes, uint32_t salt, F f)
{
    for (uint32_t bits : {8u, 10u, 12u}) {
        for (uint32_t pattern = 0; pattern < 4; ++pattern) {
            for (const Size& s : sizes) {
                const uint32_t seed = salt + bits * 1000003u + pattern * 7919u + s.w * 131u + s.h;
                SCOPED_TRACE("bits " + std::to_string(bits) + " pattern " + std::to_string(pattern) + " size " +
                             std::to_string(s.w) + "x" + std::to_string(s.h) + " seed " + std::to_string(seed));
                const BayerImage src(s.w, s.h, bits, pattern & 2, pattern & 1, seed);
                f(src);
                if (::testing::Test::HasFatalFailure()) return;
            }
        }
    }
}

// ---- runs shared by the decoders ----

using Decoder = KaipStatus (*)(const KaipImgInfo*, KaipImgInfo*, uint32_t, uint32_t, KaipHLut);
using PixelModel = Px (*)(const Mosaic&, const Outputs&, uint32_t, uint32_t);

struct DstFormat {
    uint32_t code, bytes;
    bool rgb;  // red first
};
constexpr DstFormat kBgr8{KaipPixelFormat_BGR8Packed, 3, false}, kBgra8{KaipPixelFormat_BGRA8Packed, 4, false};
constexpr DstFormat kRgb8{KaipPixelFormat_RGB8Packed, 3, true}, kRgba8{KaipPixelFormat_RGBA8Packed, 4, true};

// Random mosaics of every depth, pattern and size, three LUTs and the given destinations, compared
// byte for byte (padding included) with the model.
inline void ExpectMatchesModel(Decoder decode, PixelModel model, const std::vector<Size>& sizes = WindowSizes(),
                               std::initializer_list<DstFormat> dsts = {kBgr8, kBgra8})
{
    for (LutKind kind : {LutKind::Identity, LutKind::Global, LutKind::Custom}) {
        const TestLut lut(kind, 4321);
        for (DstFormat f : dsts) {
            SCOPED_TRACE(std::string(Name(kind)) + " dst " + std::to_string(f.code));
            ForEachMosaic(sizes, 17 * f.bytes, [&](const BayerImage& src) {
                auto dst = Destination(src.m.w, src.m.h, f.code, f.bytes);
                ASSERT_EQ(decode(&src.img->info, &dst->info, f.code, 0, lut.handle), 0);
                const auto want = Expected(*dst, f.bytes, f.rgb, [&](uint32_t x, uint32_t y) {
                    return model(src.m, lut.of(src.m.bits), x, y);
                });
                ASSERT_EQ(FirstDifference(*dst, f.bytes, want), "");
            });
            if (::testing::Test::HasFatalFailure()) return;
        }
    }
}

// LUTs without both Bayer flags are refused at every depth, and so are the red-first
// destinations, before anything is written.
inline void ExpectLutAndDestinationRefusals(Decoder decode)
{
    for (uint32_t bits : {8u, 10u, 12u}) {
        for (uint32_t type : {KAIP_LUT_BAYER, KAIP_LUT_BAYER_16, 0u, bits | KAIP_LUT_BAYER}) {
            const KaipHLut h = KaipAllocateLut(type);
            ASSERT_NE(h, nullptr);
            BayerImage src(7, 6, bits, false, true, bits);
            auto dst = Destination(7, 6, KaipPixelFormat_BGR8Packed, 3);
            EXPECT_EQ(decode(&src.img->info, &dst->info, KaipPixelFormat_BGR8Packed, 0, h),
                      KASTATUS_KAIP_INVALID_LUT_TYPE)
                << "bits " << bits << " type " << type;
            EXPECT_EQ(FirstDifference(*dst, 3, std::vector<uint8_t>(dst->buffer.size(), kSentinel)), "");
            KaipFreeLut(h);
        }
    }
    BayerImage src(6, 6, 8, true, false, 1);
    for (uint32_t f : {KaipPixelFormat_RGB8Packed, KaipPixelFormat_RGBA8Packed, KaipPixelFormat_Mono8}) {
        auto dst = Destination(6, 6, f, 4);
        EXPECT_EQ(decode(&src.img->info, &dst->info, f, KaipOption_ReallocateDst, nullptr),
                  KASTATUS_KAIP_UNSUPPORTED_DST_PIXEL_FORMAT);
    }
}

}  // namespace bayer_model
