// pixel_grouping_simd.h: the vector loops of pixel grouping (8 to 12 bits) over lines split by column parity.
#pragma once

#include <array>
#include <cstdint>

// A line of 16-bit values split by column parity: half[p][k] is column 2k + p. Tap gives the
// pointer whose element k is column 2k + p + dx, for sites of parity p.
struct TSplitLine {
    int16_t* half[2];
    const int16_t* Tap(int p, int dx) const { return half[(p + dx) & 1] + ((p + dx) >> 1); }
};

// Taps on the left of a pair stand for both: element k + 1 of a tap one column to the left is
// the column one to the right, of a tap two columns to the left the column two to the right
// (the same half line, one site on).

// Green at count red or blue sites: the centre, its neighbours one and two away on the four
// sides (west and east from w and w2). The loop also asks for the source line split next and the
// destination line written next, a little of each per step (site k: byte 2 k of the samples and
// 2 k dwDstBytes of the pixels), so their memory arrives while it computes.
struct TGreenTaps {
    const int16_t *c, *n, *s, *w, *n2, *s2, *w2;
    int16_t* pOut;
    const uint8_t* pNextSrc;
    const uint8_t* pNextDst;
    uint32_t dwDstBytes;
};

// Red and blue at green sites: hue transit along the line (into pFirst) and across it (pSecond).
struct TGreenSiteTaps {
    const int16_t *c, *gL, *left, *gUp, *gDown, *up, *down;
    int16_t *pFirst, *pSecond;
};

// The opposite colour at red and blue sites: hue transit along the smoother diagonal.
struct TOtherSiteTaps {
    const int16_t *c, *gc, *gUpL, *gDownL, *upL, *downL, *up2L, *down2L;
    int16_t* pFirst;
};

// Blue, green and red of a line per column parity, for the identity LUT: bytes written as they are.
struct TColourPlanes {
    const int16_t *b[2], *g[2], *r[2];
};

// One copy of the loops per instruction set and depth (8, 10, 12 bits). The loops over sites run
// k from 1 to k1 - 1 in whole vectors: they read and write up to 16 elements past k1 (the
// buffers carry that margin) and only those below k1 are used.
struct TGroupingLoops {
    void (*split)(const uint8_t* pLine, uint32_t dwWidth, const TSplitLine& out);  // whole line
    void (*green)(const TGreenTaps& t, uint32_t count);
    void (*greenSites)(const TGreenSiteTaps& t, uint32_t count);
    void (*otherSites)(const TOtherSiteTaps& t, uint32_t count);
    // The identity LUT (the top 8 bits of each value): blocks of 16 pixels from x0 (even) as long
    // as a block ends before x1; returns the first pixel not written.
    uint32_t (*storeIdentity)(const TColourPlanes& c, uint32_t x0, uint32_t x1, uint32_t dwDstBytes, uint8_t* pOut);
};

extern const std::array<TGroupingLoops, 3> g_GroupingSse2;  // by (bits - 8) / 2
extern const std::array<TGroupingLoops, 3> g_GroupingAvx2;  // only behind g_SSEChecker.UseAVX2()
