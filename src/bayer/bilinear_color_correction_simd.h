// bilinear_color_correction_simd.h: the vector interior of the gradient-corrected bilinear decoder, one copy per
// instruction set.
#pragma once

#include <cstdint>

#include "bayer/decoder_frame.h"

// The samples of one source line as words masked to the depth, split by column parity: column
// x at half[x & 1][x >> 1]. Each line is split once and read by the five output lines around it.
struct TSplitLine {
    uint16_t* half[2];
};

// Splits the dwWidth samples of a source line (8, 10 or 12 bits as the worker was picked for).
using TColorCorrectionSplit = void (*)(const uint8_t* pLine, uint32_t dwWidth, const TSplitLine& out);

// Decodes the pixels x0..x1-1 of one interior line from the split lines around it (rows[2] the
// line itself). x0 must be a red or blue column, x1 - x0 a multiple of the block, x0 >= 1 and
// x1 <= width - 1. bRedLine: the line holds red sites. The bytes are those of the scalar rule,
// except in columns 1 and width-2, whose neighbours two away lie outside the image (the words
// before and after a split line's halves are read instead); three-byte pixels may also spill
// two bytes into pixel x1. The caller rewrites all of these later.
// pBelow: the source line of rows[4] (two below), whose columns x0..x1-1 the worker splits into
// rows[4] as it reads them (the caller splits the others).
using TColorCorrectionLine = void (*)(const TSplitLine (&rows)[5], uint8_t* pOut, uint32_t x0, uint32_t x1,
                                      bool bRedLine, const TBayerLut& lut, const uint8_t* pBelow);

struct TColorCorrectionVector {
    TColorCorrectionSplit split;
    TColorCorrectionLine line;  // null (and split too) when the switches of g_SSEChecker are closed
    uint32_t dwBlock;           // pixels per step
};

// The line worker of the widest vector set the switches of g_SSEChecker allow for a depth
// (8, 10, 12) and a destination (3 or 4 bytes). bIdentity (null LUT): the identity tables
// (out = value shifted to 8 bits) are computed, not read.
TColorCorrectionVector ColorCorrectionVector_intr(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity);

// The AVX2 copy behind ColorCorrectionVector_intr, called only once its switch is checked.
TColorCorrectionVector ColorCorrectionVector_avx2(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity);
