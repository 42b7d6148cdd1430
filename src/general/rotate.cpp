// rotate.cpp: the quarter turn, optionally mirrored first, worked in tiles that stay in the cache.
#include <algorithm>

#include "core/check.h"
#include "core/common.h"
#include "core/unidef.h"
#include "general/geometry.h"
#include "general/lut.h"

using geometry::CheckAndFitDst;
using geometry::Line;
using geometry::Load8;
using geometry::Store8;

namespace {

// Classes 0 to 14: Mono8 up to RGBA8Packed.
constexpr uint64_t kRotateClasses = 0x7FFF;

// The destination pixels (c, r) of rows r0..r1-1 and columns c0..c1-1, one at a time.
template <unsigned P>
void TurnPixels(const uint8_t* s0, ptrdiff_t dc, ptrdiff_t dr, const KaipImgInfo& dst, uint32_t r0, uint32_t r1,
                uint32_t c0, uint32_t c1)
{
    for (uint32_t r = r0; r < r1; ++r) {
        const uint8_t* s = s0 + ptrdiff_t(r) * dr + ptrdiff_t(c0) * dc;
        uint8_t* d = Line(dst, r) + size_t(c0) * P;
        for (uint32_t i = 0; i < c1 - c0; ++i) std::memcpy(d + i * P, s + ptrdiff_t(i) * dc, P);
    }
}

// Words whose lower half of every group of 2 * bits bits is set.
constexpr uint64_t LowHalves(unsigned bits)
{
    uint64_t m = 0;
    for (unsigned b = 0; b < 64; b += 2 * bits) m |= ((uint64_t(1) << bits) - 1) << b;
    return m;
}

// Transposes the K x K pixels held in K words, K = 8 / P, by exchanging the off-diagonal
// blocks of S x S pixels, then of ever smaller ones. Fully unrolled, the words stay in registers.
template <unsigned P, unsigned S = 4 / P>
inline void Transpose(uint64_t* w)
{
    constexpr unsigned K = 8 / P, bits = S * P * 8;
    constexpr uint64_t low = LowHalves(bits);
#pragma GCC unroll 8
    for (unsigned r = 0; r < K; ++r)
        if (!(r & S)) {
            const uint64_t a = w[r], b = w[r + S];
            w[r] = (a & low) | ((b & low) << bits);
            w[r + S] = ((a >> bits) & low) | (b & ~low);
        }
    if constexpr (S > 1) Transpose<P, S / 2>(w);
}

// Destination rows and columns r0..r1-1, c0..c1-1 in blocks of K x K pixels of P = 1, 2 or 4
// bytes: K words are read along the source rows, transposed and written as destination rows.
template <unsigned P>
void TurnBlocks(const uint8_t* s0, ptrdiff_t dc, ptrdiff_t dr, const KaipImgInfo& dst, uint32_t r0, uint32_t r1,
                uint32_t c0, uint32_t c1)
{
    constexpr unsigned K = 8 / P;
    // A source row read backwards starts at its lowest address and yields the rows reversed.
    const ptrdiff_t back = dr < 0 ? ptrdiff_t(K - 1) * dr : 0;
    for (uint32_t r = r0; r < r1; r += K)
        for (uint32_t c = c0; c < c1; c += K) {
            uint64_t w[K];
            const uint8_t* s = s0 + ptrdiff_t(r) * dr + ptrdiff_t(c) * dc + back;
#pragma GCC unroll 8
            for (unsigned i = 0; i < K; ++i, s += dc) w[i] = Load8(s);
            Transpose<P>(w);
#pragma GCC unroll 8
            for (unsigned j = 0; j < K; ++j) Store8(Line(dst, dr < 0 ? r + K - 1 - j : r + j) + size_t(c) * P, w[j]);
        }
}

// Writes every destination pixel (c, r) from s0 + c * dc + r * dr. Each destination row reads
// one source column, so the work goes in square tiles: the source lines a tile touches stay
// in the cache while its columns are read. Inside a tile, blocks of 16 x 16 bytes go through
// SSE2 registers (or of 8 x 8 bytes through 64-bit words); three-byte pixels go one at a time.
template <unsigned P>
void Turn(const uint8_t* s0, ptrdiff_t dc, ptrdiff_t dr, const KaipImgInfo& dst)
{
    constexpr uint32_t kTile = P <= 2 ? 64 : 32;
    const bool bVector = P != 3 && g_SSEChecker.m_bUseSSE2;
    const uint32_t k = P == 3 ? 1 : (bVector ? 16 : 8) / P;
    const uint32_t w = dst.Width, h = dst.Height;
    for (uint32_t r0 = 0; r0 < h; r0 += kTile) {
        const uint32_t r1 = std::min(h, r0 + kTile);
        for (uint32_t c0 = 0; c0 < w; c0 += kTile) {
            const uint32_t c1 = std::min(w, c0 + kTile);
            if constexpr (P == 3) {
                TurnPixels<P>(s0, dc, dr, dst, r0, r1, c0, c1);
            } else {
                // Whole blocks, then the columns and rows left over at the image's edges.
                const uint32_t rb = r0 + (r1 - r0) / k * k, cb = c0 + (c1 - c0) / k * k;
                if (!bVector || !geometry::TurnBlocks_intr(P, s0, dc, dr, dst, r0, rb, c0, cb))
                    TurnBlocks<P>(s0, dc, dr, dst, r0, rb, c0, cb);
                TurnPixels<P>(s0, dc, dr, dst, r0, rb, cb, c1);
                TurnPixels<P>(s0, dc, dr, dst, rb, r1, c0, c1);
            }
        }
    }
}

}  // namespace

KaipStatus Rotate90AndMirror(const KaipImgInfo* pSrcImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwClockwise,
                             uint32_t dwMirrorTopBottom, uint32_t dwMirrorLeftRight, uint32_t dwOptions, KaipHLut hLut)
{
    static const char* const pszFunc = "KaipRotate90AndMirror";
    if (const KaipStatus status =
            CheckAndFitDst(pszFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kRotateClasses,
                           KaipCheck_RotatedSize | KaipCheck_SamePixelFormat | KaipCheck_DstRequired,
                           KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp))
        return status;

    // A bottom-up source keeps its picture upside down in memory, so the turn in memory is
    // the opposite of the one asked for the picture.
    const KaipImgInfo& src = *pSrcImgInfo;
    const bool bClockwise = (dwClockwise != 0) != ((src.Flags & KaipImgFlag_BottomUp) != 0);
    // Destination column c reads source row c or H-1-c, destination row r source column r or W-1-r.
    const bool bReverseRows = bClockwise != (dwMirrorTopBottom != 0);
    const bool bReverseColumns = bClockwise == (dwMirrorLeftRight != 0);
    const size_t pixel = GetPixelIncrementFromPixelFormat(src.PixelFormat);
    const ptrdiff_t line = ptrdiff_t(src.LineIncrement);
    const uint8_t* s0 = src.pData + (bReverseRows ? (src.Height - 1) * size_t(line) : 0) +
                        (bReverseColumns ? (src.Width - 1) * pixel : 0);
    const ptrdiff_t dc = bReverseRows ? -line : line;
    const ptrdiff_t dr = bReverseColumns ? -ptrdiff_t(pixel) : ptrdiff_t(pixel);
    switch (pixel) {
        case 1:
            Turn<1>(s0, dc, dr, *pDstImgInfo);
            break;
        case 2:
            Turn<2>(s0, dc, dr, *pDstImgInfo);
            break;
        case 3:
            Turn<3>(s0, dc, dr, *pDstImgInfo);
            break;
        case 4:
            Turn<4>(s0, dc, dr, *pDstImgInfo);
            break;
        default:
            break;
    }

    // The pixels are turned whatever the LUT: a LUT that does not fit the format leaves them unmapped.
    if (hLut) (void)ApplyLut(pDstImgInfo, nullptr, hLut, dwOptions);
    return KASTATUS_OK;
}
