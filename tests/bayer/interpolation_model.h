// interpolation_model.h: per-pixel references of the 5x5 decoders (gradient-corrected bilinear, variable
// gradients, pixel grouping) and the test runs they share.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <vector>

#include "bayer/bayer_model.h"
#include "platform/os_buffer.h"

namespace bayer_model {

// A sample masked to the depth; offsets relative to (x, y).
inline int32_t V(const Mosaic& m, uint32_t x, uint32_t y, int dx = 0, int dy = 0)
{
    return int32_t(m.at(uint32_t(int(x) + dx), uint32_t(int(y) + dy)) & Mask(m, 1));
}

inline int32_t ClampTo(const Mosaic& m, int64_t v)
{
    return int32_t(std::min<int64_t>(std::max<int64_t>(v, 0), Mask(m, 1)));
}

// floor(num / den + 1/2) for den > 0, exact in 64 bits.
inline int64_t RoundDiv(int64_t num, int64_t den)
{
    const int64_t n = 2 * num + den, d = 2 * den;
    return n >= 0 ? n / d : -((-n + d - 1) / d);
}

inline Px Output(const Outputs& o, int32_t r, int32_t g, int32_t b)
{
    return {o.c[R][r], o.c[G][g], o.c[B][b], true};
}

// The outer ring by the 2x2 rule, the second ring by the bilinear rule, the rest by `inner`.
inline Px Ringed(const Mosaic& m, const Outputs& o, uint32_t x, uint32_t y,
                 const std::function<Px(uint32_t, uint32_t)>& inner)
{
    if (IsFrame(m, x, y)) return FramePx(m, o, x, y);
    if (x == 1 || y == 1 || x == m.w - 2 || y == m.h - 2) return Bilinear(m, o, x, y);
    return inner(x, y);
}

// ---- gradient-corrected bilinear ----

inline int32_t Limited(int64_t sum16, std::initializer_list<int32_t> range)
{
    const int64_t v = RoundDiv(sum16, 16);
    return int32_t(std::min<int64_t>(std::max<int64_t>(v, std::min(range)), std::max(range)));
}

inline Px ColorCorrection(const Mosaic& m, const Outputs& o, uint32_t x, uint32_t y)
{
    return Ringed(m, o, x, y, [&](uint32_t x, uint32_t y) {
        auto v = [&](int dx, int dy) { return V(m, x, y, dx, dy); };
        const int32_t c = v(0, 0);
        const int32_t diag = v(-1, -1) + v(1, -1) + v(-1, 1) + v(1, 1);
        const int32_t h2 = v(-2, 0) + v(2, 0), v2 = v(0, -2) + v(0, 2);
        const Colour own = m.site(x, y);
        if (own == G) {
            // Colour of the left and right neighbours, and of the upper and lower ones.
            const int32_t side =
                Limited(10 * c + 8 * (v(-1, 0) + v(1, 0)) - 2 * diag - 2 * h2 + v2, {v(-1, 0), v(1, 0)});
            const int32_t vert =
                Limited(10 * c + 8 * (v(0, -1) + v(0, 1)) - 2 * diag - 2 * v2 + h2, {v(0, -1), v(0, 1)});
            return m.redLine(y) ? Output(o, side, c, vert) : Output(o, vert, c, side);
        }
        const int32_t g = Limited(8 * c + 4 * (v(-1, 0) + v(1, 0) + v(0, -1) + v(0, 1)) - 2 * (h2 + v2),
                                  {v(-1, 0), v(1, 0), v(0, -1), v(0, 1)});
        const int32_t opp = Limited(12 * c + 4 * diag - 3 * (h2 + v2), {v(-1, -1), v(1, -1), v(-1, 1), v(1, 1)});
        return own == R ? Output(o, c, g, opp) : Output(o, opp, g, c);
    });
}

// ---- variable number of gradients ----

struct Off {
    int dx, dy;
};
inline Off Turn(Off p, int quarters)  // a quarter turn maps north to west
{
    for (int i = 0; i < quarters; ++i) p = {p.dy, -p.dx};
    return p;
}

// The places whose colours are averaged, per colour, for the north (or north-east) direction.
inline const std::vector<Off>& Places(bool greenCentre, bool diagonal)
{
    static const std::vector<Off> rbNorth{{0, -2}, {0, 0}, {0, -1}, {-1, -1}, {1, -1}};
    static const std::vector<Off> rbNorthEast{{2, -2}, {0, 0}, {1, -2}, {0, -1}, {2, -1}, {1, 0}, {1, -1}};
    static const std::vector<Off> gNorth{{0, -2}, {0, 0}, {0, -1}, {-1, -2}, {1, -2}, {-1, 0}, {1, 0}};
    static const std::vector<Off> gNorthEast{{1, -1}, {1, -2}, {1, 0}, {0, -1}, {2, -1}};
    return greenCentre ? (diagonal ? gNorthEast : gNorth) : (diagonal ? rbNorthEast : rbNorth);
}

inline int32_t Avg(int32_t a, int32_t b)
{
    return (a + b + 1) >> 1;
}

// The eight gradients (north, west, south, east, north-east, north-west, south-west, south-east) in
// eighths of 8-bit steps: absolute differences of the samples cut to 8 bits, two apart along the
// direction (one apart for the diagonals of red and blue pixels), the nearer ones weighted twice,
// combined by rounded-up means in this order.
inline void Gradients(const Mosaic& m, int x, int y, bool green, int32_t (&g)[8])
{
    auto w = [&](int i, int r) { return V(m, uint32_t(i), uint32_t(r)) >> (m.bits - 8); };
    auto d = [&](int i, int r, int j, int s) { return std::abs(w(i, r) - w(j, s)); };
    auto tv = [&](int i, int r) {
        return Avg(d(i, r, i, r + 2), Avg(d(i - 1, r, i - 1, r + 2), d(i + 1, r, i + 1, r + 2)));
    };
    auto hv = [&](int i, int r) { return Avg(d(i - 1, r, i + 1, r), d(i, r, i + 2, r)); };
    auto hv3 = [&](int i) { return Avg(hv(i, y), Avg(hv(i, y - 1), hv(i, y + 1))); };
    g[0] = Avg(tv(x, y - 2), tv(x, y - 1));
    g[1] = hv3(x - 1);
    g[2] = Avg(tv(x, y - 1), tv(x, y));
    g[3] = hv3(x);
    if (green) {
        auto a2 = [&](int i, int r) { return Avg(d(i, r, i - 2, r + 2), d(i + 1, r, i - 1, r + 2)); };
        auto m2 = [&](int i, int r) { return Avg(d(i, r, i + 2, r + 2), d(i + 1, r, i + 3, r + 2)); };
        g[4] = Avg(a2(x + 1, y - 2), a2(x + 1, y - 1));
        g[5] = Avg(m2(x - 2, y - 2), m2(x - 2, y - 1));
        g[6] = Avg(a2(x, y - 1), a2(x, y));
        g[7] = Avg(m2(x - 1, y - 1), m2(x - 1, y));
    } else {
        auto da = [&](int i, int r) {
            return Avg(d(i + 1, r, i - 1, r + 2), Avg(d(i, r, i - 1, r + 1), d(i + 1, r + 1, i, r + 2)));
        };
        auto dm = [&](int i, int r) {
            return Avg(d(i - 1, r, i + 1, r + 2), Avg(d(i - 1, r + 1, i, r + 2), d(i, r, i + 1, r + 1)));
        };
        g[4] = Avg(da(x, y - 1), da(x + 1, y - 2));
        g[5] = Avg(dm(x, y - 1), dm(x - 1, y - 2));
        g[6] = Avg(da(x, y - 1), da(x - 1, y));
        g[7] = Avg(dm(x, y - 1), dm(x + 1, y));
    }
}

inline Px VariableGradients(const Mosaic& m, const Outputs& o, uint32_t x, uint32_t y)
{
    return Ringed(m, o, x, y, [&](uint32_t x, uint32_t y) {
        const Colour own = m.site(x, y);
        auto v = [&](Off p) { return V(m, x, y, p.dx, p.dy); };
        int32_t grad[8];
        Gradients(m, int(x), int(y), own == G, grad);
        double mean[8][3];  // per direction and colour; sums of 1, 2 or 4 values, so exact
        for (int d = 0; d < 8; ++d) {
            double sum[3] = {0, 0, 0}, count[3] = {0, 0, 0};
            for (Off p : Places(own == G, d >= 4)) {
                const Off q = Turn(p, d % 4);
                const Colour c = m.site(uint32_t(int(x) + q.dx), uint32_t(int(y) + q.dy));
                sum[c] += v(q), count[c] += 1;
            }
            for (int c = 0; c < 3; ++c) mean[d][c] = sum[c] / count[c];
        }
        const int32_t lo = *std::min_element(grad, grad + 8), hi = *std::max_element(grad, grad + 8);
        int n = 0;
        double diff[3] = {0, 0, 0};
        for (int d = 0; d < 8; ++d) {
            if (grad[d] > lo + hi / 2.0) continue;  // threshold 1.5 min + 0.5 (max - min)
            ++n;
            for (int c = 0; c < 3; ++c) diff[c] += mean[d][c] - mean[d][own];
        }
        int32_t out[3];
        for (int c = 0; c < 3; ++c) {
            // 4n times the estimate is an integer: the means are quarters.
            const int64_t num = int64_t(std::llround(4 * n * v({0, 0}) + 4 * diff[c]));
            out[c] = ClampTo(m, RoundDiv(std::min<int64_t>(std::max<int64_t>(num, 0), 4 * n * Mask(m, 1)), 4 * n));
        }
        return Output(o, out[R], out[G], out[B]);
    });
}

// ---- pixel grouping ----

// The green plane: green sites as they are, the second ring the truncated mean of the four
// direct neighbours, inside it the gradient-weighted mean of four directional estimates.
inline int32_t GroupingGreen(const Mosaic& m, uint32_t x, uint32_t y)
{
    auto v = [&](int dx, int dy) { return V(m, x, y, dx, dy); };
    if (m.site(x, y) == G) return v(0, 0);
    if (x == 1 || y == 1 || x == m.w - 2 || y == m.h - 2) return (v(-1, 0) + v(1, 0) + v(0, -1) + v(0, 1)) / 4;
    int64_t sum = 0, weights = 0;
    for (int q = 0; q < 4; ++q) {
        const Off a = Turn({0, -1}, q), b = Turn({0, 1}, q), a2 = Turn({0, -2}, q);
        const int32_t gradient = 2 * std::abs(v(0, 0) - v(a2.dx, a2.dy)) + std::abs(v(a.dx, a.dy) - v(b.dx, b.dy));
        const int64_t smooth = std::max(255 - (gradient >> (m.bits - 8)), 0);
        const int64_t weight = smooth * smooth / 16 + 1;
        sum += weight * (3 * v(a.dx, a.dy) + v(b.dx, b.dy) + v(0, 0) - v(a2.dx, a2.dy));
        weights += weight;
    }
    return ClampTo(m, RoundDiv(std::min<int64_t>(std::max<int64_t>(sum, 0), 4 * weights * Mask(m, 1)), 4 * weights));
}

// v at the place of l2: the mean of v1 and v3 plus green's step there (l2 less the mean of l1
// and l3) kept between v1 and v3 where green is monotonic across it, else plus half the step.
inline int32_t HueTransit(const Mosaic& m, int32_t l1, int32_t l2, int32_t l3, int32_t v1, int32_t v3)
{
    const double step = l2 - (l1 + l3) / 2.0, mean = (v1 + v3) / 2.0;
    if ((l1 < l2 && l2 < l3) || (l1 > l2 && l2 > l3)) {
        const int32_t follow = int32_t(std::floor(mean + step + 0.5));
        return std::min(std::max(follow, std::min(v1, v3)), std::max(v1, v3));
    }
    return ClampTo(m, int32_t(std::floor(mean + step / 2 + 0.5)));
}

inline Px PixelGrouping(const Mosaic& m, const Outputs& o, uint32_t x, uint32_t y)
{
    return Ringed(m, o, x, y, [&](uint32_t x, uint32_t y) {
        auto v = [&](int dx, int dy) { return V(m, x, y, dx, dy); };
        auto g = [&](int dx, int dy) { return GroupingGreen(m, uint32_t(int(x) + dx), uint32_t(int(y) + dy)); };
        const Colour own = m.site(x, y);
        const int32_t c = v(0, 0);
        if (own == G) {
            const int32_t side = HueTransit(m, g(-1, 0), c, g(1, 0), v(-1, 0), v(1, 0));
            const int32_t vert = HueTransit(m, g(0, -1), c, g(0, 1), v(0, -1), v(0, 1));
            return m.redLine(y) ? Output(o, side, c, vert) : Output(o, vert, c, side);
        }
        const int32_t gc = g(0, 0);
        int32_t gradient[2], along[2];
        for (int i = 0; i < 2; ++i) {
            const int s = i == 0 ? 1 : -1;  // north-east, then north-west
            gradient[i] = std::abs(v(s, -1) - v(-s, 1)) + std::abs(v(2 * s, -2) - c) + std::abs(c - v(-2 * s, 2)) +
                          std::abs(g(s, -1) - gc) + std::abs(gc - g(-s, 1));
            along[i] = HueTransit(m, g(s, -1), gc, g(-s, 1), v(s, -1), v(-s, 1));
        }
        const int32_t opp = gradient[0] < gradient[1]   ? along[0]
                            : gradient[1] < gradient[0] ? along[1]
                                                        : (along[0] + along[1] + 1) / 2;
        return own == R ? Output(o, c, gc, opp) : Output(o, opp, gc, c);
    });
}

// ---- runs shared by the 5x5 decoders ----

// Every width 2..64 (each position at which a vector block can end, lines starting with either
// site) at heights 5 to 11, and a few long lines: for decoders with vector copies.
inline const std::vector<Size>& EveryWidthSizes()
{
    static const std::vector<Size> sizes = [] {
        std::vector<Size> s;
        for (uint32_t w = 2; w <= 64; ++w) s.push_back({w, 5 + w % 7});
        for (uint32_t w : {641u, 1000u, 2448u}) s.push_back({w, 6});
        return s;
    }();
    return sizes;
}

// A uniform mosaic decodes to its grey everywhere; a horizontal or vertical grey ramp (five
// steps per column or line) stays that ramp inside the outer ring, whose 2x2 blocks shift it.
inline void ExpectFlatAndRampExact(Decoder decode)
{
    for (uint32_t bits : {8u, 12u}) {
        for (uint32_t pattern = 0; pattern < 4; ++pattern) {
            for (int ramp : {0, 1, 2}) {  // flat, along x, along y
                const uint32_t w = ramp == 2 ? 9 : 40, h = ramp == 2 ? 40 : 9, shift = bits - 8;
                auto grey = [ramp](uint32_t x, uint32_t y) { return ramp == 0 ? 77 : 30 + 5 * (ramp == 1 ? x : y); };
                BayerImage src(w, h, bits, pattern & 2, pattern & 1, 1);
                for (uint32_t y = 0; y < h; ++y)
                    for (uint32_t x = 0; x < w; ++x) src.Set(x, y, grey(x, y) << shift);
                auto dst = Destination(w, h, KaipPixelFormat_BGR8Packed, 3);
                ASSERT_EQ(decode(&src.img->info, &dst->info, KaipPixelFormat_BGR8Packed, 0, nullptr), 0);
                for (uint32_t y = 0; y < h; ++y) {
                    for (uint32_t x = 0; x < w; ++x) {
                        if (ramp && IsFrame(src.m, x, y)) continue;
                        const uint8_t want = uint8_t(grey(x, y));
                        const uint8_t* p = dst->buffer.data() + size_t(y) * dst->info.LineIncrement + 3 * x;
                        ASSERT_TRUE(p[0] == want && p[1] == want && p[2] == want)
                            << "bits " << bits << " pattern " << pattern << " ramp " << ramp << " at " << x << "," << y
                            << ": " << int(p[0]) << " " << int(p[1]) << " " << int(p[2]) << " want " << int(want);
                    }
                }
            }
        }
    }
}

// The decoder's status, and its BGR8 output in dst, when its first buffer allocation fails.
inline KaipStatus DecodeWithoutMemory(Decoder decode, const BayerImage& src, GuardedImage& dst)
{
    oxOsBufferFailAfter(0);
    const KaipStatus status = decode(&src.img->info, &dst.info, KaipPixelFormat_BGR8Packed, 0, nullptr);
    oxOsBufferFailAfter(-1);
    return status;
}

}  // namespace bayer_model
