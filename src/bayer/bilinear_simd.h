// bilinear_simd.h: the vector interior of the 8-bit bilinear decoder, one copy per instruction set.
#pragma once

#include <cstdint>

#include "bayer/decoder_frame.h"

// Decodes columns 1..x-1 of the interior lines 1..h-2 of an 8-bit mosaic with the widest
// vector set the switches of g_SSEChecker allow and returns x, the first column left to the
// scalar rule (1 when the switches are closed or the lines are too short). The bytes written
// are those of the scalar rule: each mean is the same truncated sum; with bIdentity the
// lookups of the identity tables (out = mean) are left out, otherwise the tables are read.
uint32_t BilinearInterior8_intr(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwDstBytes,
                                const TBayerLut& lut, bool bIdentity);

// The copies behind BilinearInterior8_intr, called only once their switch is checked.
uint32_t BilinearInterior8_ssse3(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwDstBytes,
                                 const TBayerLut& lut, bool bIdentity);
uint32_t BilinearInterior8_avx2(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwDstBytes,
                                const TBayerLut& lut, bool bIdentity);
