// convert_steps.h: the step loop of the SSE2 and AVX2 builds and the steps they share, written once over thin
// register traits V. The including file defines KAIP_VECTOR_TARGET (its target attribute, empty for SSE2) and
// its traits first; everything here has internal linkage, so the builds never mix.
#pragma once

#include <type_traits>

#include "convert/convert_simd.h"

namespace convert {
namespace {

// Whole steps of S::kPixels pixels, then the rest of the line by the scalar member's reader and writer, with
// the group cut short at the line end when kCut is set.
template <class S, class R, class W, bool kCut = false>
struct KSteps {
    uint32_t dwWidth;
    S step;
    R rd;
    W wr;
    template <bool kStream>
    KAIP_VECTOR_TARGET void Line(const uint8_t* pS, uint8_t* pD) const
    {
        // Steps wider than 16 pixels cover every whole 16-pixel unit too, the last one moving back to end there
        // (rewriting some pixels with the same bytes), so that a streamed line keeps streaming up to its tail.
        constexpr uint32_t kUnit = S::kPixels < 16 ? S::kPixels : 16;
        const uint32_t covered = dwWidth >= S::kPixels ? dwWidth / kUnit * kUnit : 0;
        for (uint32_t x = 0; x < covered; x += S::kPixels) {
            const size_t at = x + S::kPixels <= covered ? x : covered - S::kPixels;
            step.template Run<kStream>(pS + at * S::kInBytes / S::kPixels, pD + at * S::kOutBytes / S::kPixels);
        }
        R r = rd;
        ConvertGroups(r, wr, covered / R::kPixels, dwWidth / R::kPixels, pS, pD);
        if constexpr (kCut) ConvertCutGroup(r, wr, dwWidth, pS, pD);
    }
};

// V gives: the register type T and its size kBytes; Load, Store<kStream>; And, Or, Set32; MAdd16 (the signed
// products of 16-bit lanes summed in pairs into 32 bits); Sll32<k>, Sra32<k>; PackS32 (the 32-bit lanes of
// two registers to 16 bits with signed saturation, in pixel order); kByteMAdd, and where it is set MAddUbs (the
// products of unsigned by signed bytes summed in pairs into 16 bits), Srl32<k> and PackUS32 (as PackS32, with
// unsigned saturation).

// 4 registers of pixels of 4 bytes in the order O to 15-bit (k565 false) or 16-bit words, as Pack555 and
// Pack565 do, each found in its pixel's 32-bit lane shifted left by kUp, which puts green's top bits where the
// green byte has them: green by a mask, blue and red (bytes 0 and 2, the low bytes of the lane's two words) by
// one multiply-add. Moved to the top of the lane and back, the word comes out sign-extended, so the signed
// pack keeps it.
template <class V, bool k565, TOrder O>
struct SBytes4ToShort {
    using T = typename V::T;
    static constexpr uint32_t kPixels = V::kBytes, kInBytes = 4 * kPixels, kOutBytes = 2 * kPixels;
    static constexpr int kGreenBits = k565 ? 6 : 5, kUp = 11 - kGreenBits, kRedAt = k565 ? 11 : 10;
    static constexpr int32_t kBlue = 1 << (kUp - 3), kRed = 1 << (kRedAt - 3 + kUp);
    KAIP_VECTOR_TARGET static T Pack(T v)
    {
        const T top5 = V::And(v, V::Set32(0x00F800F8));
        const T sum = V::MAdd16(top5, V::Set32(O == kBGR ? kRed << 16 | kBlue : kBlue << 16 | kRed));
        const T green = V::And(v, V::Set32(((1 << kGreenBits) - 1) << (16 - kGreenBits)));
        return V::template Sra32<16>(V::template Sll32<16 - kUp>(V::Or(sum, green)));
    }
    // With byte multiply-adds: the channels masked to their top bits (B', G', R') weighted into 8 times the word,
    // B' + kG G' + kR R', by a byte multiply-add (blue and green, or red and green with red at kR / kG) and a word
    // one, then shifted down; the word is never negative, so the unsigned pack keeps it.
    KAIP_VECTOR_TARGET static T PackByBytes(T v)
    {
        constexpr int32_t kG = 1 << kGreenBits, kR = 1 << kRedAt, kRG = kR / kG;
        const T top = V::And(v, V::Set32(0xF8 << 16 | (0xFF << (8 - kGreenBits) & 0xFF) << 8 | 0xF8));
        const T pairs = V::MAddUbs(top, V::Set32(O == kBGR ? 1 << 16 | kG << 8 | 1 : 1 << 16 | 1 << 8 | kRG));
        return V::template Srl32<3>(V::MAdd16(pairs, V::Set32(O == kBGR ? kR << 16 | 1 : 1 << 16 | kG)));
    }
    // The words of the pixels of two registers, in pixel order.
    KAIP_VECTOR_TARGET static T Words(T a, T b)
    {
        if constexpr (V::kByteMAdd)
            return V::PackUS32(PackByBytes(a), PackByBytes(b));
        else
            return V::PackS32(Pack(a), Pack(b));
    }
    template <bool kStream>
    KAIP_VECTOR_TARGET void Run(const uint8_t* s, uint8_t* d) const
    {
        constexpr int n = V::kBytes;
        V::template Store<kStream>(d, Words(V::Load(s), V::Load(s + n)));
        V::template Store<kStream>(d + n, Words(V::Load(s + 2 * n), V::Load(s + 3 * n)));
    }
};

// For KPairs: the 3-byte pixels of a step set out as 4 bytes B, G, R, 0 each, then made 15-bit (k565
// false) or 16-bit words by SBytes4ToShort.
template <class V, bool k565>
struct FBytes4ToShort {
    template <TOrder O, int kPixelBytes, int kPixels>
    using TMap = std::conditional_t<O == kBGR, MBGR24ToBGR32, MRGB24ToBGR32>;
    using S = SBytes4ToShort<V, k565, kBGR>;
    template <bool kStream>
    KAIP_VECTOR_TARGET static void Put(uint8_t* d, typename V::T v0, typename V::T v1, typename V::T v2,
                                       typename V::T v3)
    {
        V::template Store<kStream>(d, S::Words(v0, v1));
        V::template Store<kStream>(d + V::kBytes, S::Words(v2, v3));
    }
};

}  // namespace
}  // namespace convert
