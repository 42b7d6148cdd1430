// variable_gradients_simd.h: the vector output stage of the variable-gradients decoder, one copy per instruction set.
#pragma once

#include <cstdint>

#include "bayer/decoder_frame.h"

// One stretch of an output line from its estimates: columns x0 (even) .. x1-1, whose column
// x0 + 2j + par has its estimates at pFirst[g][j] and pSecond[g][j], g = 1 at green columns
// (those of parity greenParity from x0) and 0 at the others. pCur: the source line.
struct TGradientsStretch {
    const uint8_t* pCur;
    const int32_t* pFirst[2];
    const int32_t* pSecond[2];
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
// registers (SSSE3, AVX2), and deeper ones are left to the scalar writer.
TGradientsWriter GradientsWriter_intr(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity);

// The copies behind GradientsWriter_intr, called only once their switch is checked.
TGradientsWriter GradientsWriter_ssse3(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity);
TGradientsWriter GradientsWriter_avx2(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity);
