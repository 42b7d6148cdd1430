// variable_gradients_simd.h: the strip of the variable-gradients decoder and its vector stages, one copy per
// instruction set.
#pragma once

#include <cstdint>

#include "bayer/decoder_frame.h"

// The eight directions are one north and one north-east template turned by quarter turns;
// quarter turns keep every site's colour around a red or blue pixel and swap red and blue
// around a green one.
template <int Turn>
struct TTurned {
    static constexpr int Dy(int dy, int dx) { return Turn == 0 ? dy : Turn == 1 ? -dx : Turn == 2 ? -dy : dx; }
    static constexpr int Dx(int dy, int dx) { return Turn == 0 ? dx : Turn == 1 ? dy : Turn == 2 ? -dx : -dy; }
};

// The source lines of a strip of up to kStrip columns, widened to the lane type and split by
// column parity: column x0 - 4 + i lies in half i & 1 at index i >> 1. Columns x0 - 2 .. x1 + 1 are the image's,
// the two beyond them on either side are zero (only unused plane entries read them). The vector
// loops run whole blocks past the strip's last column: kSpare more entries keep them inside.
constexpr uint32_t kStrip = 2560;
constexpr uint32_t kSpare = 32;
constexpr uint32_t kHalf = kStrip / 2 + 4 + kSpare;
template <class T>
using TRow = T[2][kHalf];

// Every gradient is a rounded mean of absolute differences of samples cut to 8 bits, two apart
// along its direction (one apart for the diagonals of red and blue pixels), the nearer ones
// weighted twice, in eighths of an 8-bit step (so it is a byte); with avg(p, q) = (p + q + 1) / 2
// and d(p, q) = |w(p) - w(q)| the differences of each line are taken once, into byte planes,
// whose slot r & 3 holds at each column i:
//   tv  vertical pairs from line r: avg(d(r i, r+2 i), avg(d(r i-1, r+2 i-1), d(r i+1, r+2 i+1)))
//   hv  horizontal pairs on line r+1: avg(d(r+1 i-1, r+1 i+1), d(r+1 i, r+1 i+2))
//   da  rising diagonal around (r+1, i): avg(d(r i+1, r+2 i-1), avg(d(r i, r+1 i-1), d(r+1 i+1, r+2 i)))
//   dm  falling diagonal around (r+1, i): avg(d(r i-1, r+2 i+1), avg(d(r+1 i-1, r+2 i), d(r i, r+1 i+1)))
//   a2  rising pairs from line r: avg(d(r i, r+2 i-2), d(r i+1, r+2 i-1))
//   m2  falling pairs from line r: avg(d(r i, r+2 i+2), d(r i+1, r+2 i+3))
// Around line y the north gradient is avg(tv(y-2), tv(y-1)), the west one avg(hv(y-1), avg(hv(y-2),
// hv(y))) at the column left of the pixel, and so on (see Gradients). The vector stages take da and
// dm only at the red and blue columns of line r+1, the only ones read, from the samples cut to 8
// bits in src8.
template <class T>
struct TStrip {
    TRow<T> src[8];
    TRow<uint8_t> src8[4];
    TRow<uint8_t> tv[4], hv[4], da[4], dm[4], a2[4], m2[4];
    // What a direction adds to a vector estimate is a colour difference at the one site it points
    // to, in quarters, so each site's differences are taken once (slot r & 3 for line r, at the
    // site's index in its half). With s the site's sample, v and h the sums of its vertical and
    // horizontal neighbours, d4 of its four diagonal ones, rise of the upper right and lower left
    // one, fall of the other two: at green sites dv = 4s - 2v, dh = 4s - 2h, and dv - dh; at red
    // and blue sites 4s - 2v, 4s - 2h, d4 - 2v, d4 - 2h, (v + h) - 2 rise, 4s - 2 rise,
    // (v + h) - 2 fall, 4s - 2 fall (see EstimateBlock for which direction takes which).
    struct {
        T green[3][kHalf];
        T other[8][kHalf];
    } terms[4];
};
// The value at column offset dx from column 2k + H of a split row (the offset's half and index).
template <int H, class T>
inline __attribute__((always_inline)) const T& At(const TRow<T>& row, int32_t k, int dx)
{
    return row[(H + dx) & 1][k + ((H + dx) >> 1)];
}

// The two estimates of each column of a line's stretch, by column pair; [1] at green columns.
using TEstimates = int16_t[2][kStrip / 2 + kSpare];

// One stretch of an output line from its estimates: columns x0 (even) .. x1-1, whose column
// x0 + 2j + par has its estimates at pFirst[g][j] and pSecond[g][j], g = 1 at green columns
// (those of parity greenParity from x0) and 0 at the others. pCur: the source line.
struct TGradientsStretch {
    const uint8_t* pCur;
    const int16_t* pFirst[2];
    const int16_t* pSecond[2];
    uint32_t x0, x1;
    uint8_t* pOut;
    bool bRedLine;
    int greenParity;
};

// Writes whole blocks of the stretch from x0 on and returns the first column left to the scalar
// writer (x0 + a multiple of the block, so still even). The bytes are those of the scalar writer.
using TGradientsWriter = uint32_t (*)(const TGradientsStretch& s, const TBayerLut& lut);

// The writer of the widest vector set the switches of g_SSEChecker allow for a depth (8, 10,
// 12) and a destination (3 or 4 bytes), or null. bIdentity (null LUT): the identity tables
// (out = value shifted to 8 bits) are computed; otherwise 8-bit tables are looked up in
// registers (SSSE3, AVX2) or by a scalar loop of whole pixel stores (SSE2), and deeper ones
// are left to the scalar writer.
TGradientsWriter GradientsWriter_intr(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity);

// The copies behind GradientsWriter_intr, called only once their switch is checked.
TGradientsWriter GradientsWriter_ssse3(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity);
TGradientsWriter GradientsWriter_avx2(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity);

// The vector stages of strips in 16-bit lanes at every depth (byte lanes for the planes): a source line split like
// WidenRow (and cut to 8 bits into src8), the planes of slot y from lines y .. y+2 of a strip of n columns with the
// terms of line y+1 (green at the columns of parity greenHalf), and the estimates of both parities of line y (whose
// planes of lines y-2 .. y are taken), green columns of parity greenParity, stored for the scalar writer: the same
// values as the per-pixel loops, in whole blocks of lanes (the spare entries past n hold garbage). If bWrites, the
// estimates write the pixels of the stretch's whole blocks themselves (the writer is then not needed); they return the
// first column left to the scalar writer (x0 if none).
struct TGradientsVector {
    void (*widen)(const uint8_t* pLine, uint32_t x0, uint32_t n, TRow<int16_t>& row, TRow<uint8_t>& row8);
    void (*planes)(TStrip<int16_t>& s, uint32_t y, uint32_t n, int greenHalf);
    uint32_t (*estimates)(const TStrip<int16_t>& s, uint32_t y, uint32_t n, int greenParity, TEstimates& first,
                          TEstimates& second, const TGradientsStretch& stretch);
    bool bWrites;
};

// The stages for a depth (8, 10, 12), a destination (3 or 4 bytes) and a LUT (bIdentity: null) of
// the widest vector set the switches allow (null members without one); the AVX2 copy.
TGradientsVector GradientsVector_intr(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity);
TGradientsVector GradientsVector_avx2(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity);
