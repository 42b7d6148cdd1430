// bilinear_simd.h: the vector interiors of the bilinear and nearest-neighbour decoders, one copy per instruction set.
#pragma once

#include <cstdint>

#include "bayer/decoder_frame.h"

// Decodes columns 1..x-1 of the interior lines 1..h-2 of a mosaic of dwBits (8, 10, 12) with the
// widest vector set the switches of g_SSEChecker allow and returns x, the first column left to
// the scalar rule: w-1 (none left), or 1 when the switches are closed, the lines hold fewer
// interior columns than a register has lanes, or the LUT of a 10- or 12-bit mosaic has doubled or
// quadrupled tables that do not repeat its single ones. The bytes written are those of the scalar
// rule: each mean is the same truncated sum; with bIdentity (null LUT) the lookups of the identity
// tables (out = mean shifted to 8 bits) are left out, otherwise the tables are read.
uint32_t BilinearInterior_intr(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwBits,
                               uint32_t dwDstBytes, const TBayerLut& lut, bool bIdentity);

// The copies behind BilinearInterior_intr, called only once their switch is checked.
uint32_t BilinearInterior_ssse3(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwBits,
                                uint32_t dwDstBytes, const TBayerLut& lut, bool bIdentity);
uint32_t BilinearInterior_avx2(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwBits,
                               uint32_t dwDstBytes, const TBayerLut& lut, bool bIdentity);

// The nearest-neighbour interior (lines 1..h-1, columns 1..w-1) of an 8-bit mosaic with the identity
// tables (null LUT), into 3- or 4-byte pixels (bRgb: red first): returns the first column left to
// the scalar rule, w when none is, 1 when the switches are closed or the lines too short.
uint32_t NearestInterior_intr(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwDstBytes,
                              bool bRgb);
uint32_t NearestInterior_ssse3(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwDstBytes,
                               bool bRgb);
uint32_t NearestInterior_avx2(const TBayerPlanes& p, uint32_t dwWidth, uint32_t dwHeight, uint32_t dwDstBytes,
                              bool bRgb);
