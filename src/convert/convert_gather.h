// convert_gather.h: the byte-shuffle line loops of the SSSE3 and AVX2 builds, written once over thin register
// traits V. Included only by convert_ssse3.cpp and convert_avx2.cpp, each defining KAIP_VECTOR_TARGET (its
// target attribute) before and its traits after; everything here has internal linkage, so the builds never mix.
#pragma once

#include "convert/convert_simd.h"

namespace convert {
namespace {

// V gives: the register type T; kLanes, the 16-byte lanes of a register (a byte shuffle stays within its
// lane), and kBytes, its size; kPixels, the pixels of one step; Load (a whole register), LoadLanes (one
// 16-byte load per lane), Store<kStream>, And, Or, Blend(a, b, mask) (b's bytes where the mask is set, else a's;
// a is 0 there wherever it is used), Shuffle (bytes picked per lane, 0 where the control's high
// bit is set), IsUnset (bytes equal to -128 as all ones), Set16, and the 16-bit lane shifts Srl16<k>, Sll16<k>.

// The shuffle controls of plan P, lane l of register o serving destination chunk kLanes o + l, and the bytes
// kept from the destination.
template <class V, class P>
struct TControls {
    static constexpr int kRegisters = P::kChunks / V::kLanes;
    using T = typename V::T;
    KAIP_VECTOR_TARGET TControls()
    {
        for (int o = 0; o < kRegisters; ++o) {
            const uint8_t *pA[V::kLanes], *pB[V::kLanes];
            for (int l = 0; l < V::kLanes; ++l) {
                pA[l] = reinterpret_cast<const uint8_t*>(P::kPlan[V::kLanes * o + l].ca.data());
                pB[l] = reinterpret_cast<const uint8_t*>(P::kPlan[V::kLanes * o + l].cb.data());
            }
            a[o] = V::LoadLanes(pA), b[o] = V::LoadLanes(pB);
            // Bytes that neither load fills are the ones the map leaves to the destination.
            keep[o] = V::IsUnset(V::And(a[o], b[o]));
        }
    }
    T a[kRegisters], b[kRegisters], keep[kRegisters];
};

// Register o of a step of plan P at s, the bytes the map leaves out 0.
template <class V, class P>
KAIP_VECTOR_TARGET inline typename V::T Gather(const uint8_t* s, const TControls<V, P>& k, int o)
{
    const uint8_t *pA[V::kLanes], *pB[V::kLanes];
    bool bTwo = false;
    for (int l = 0; l < V::kLanes; ++l) {
        const auto& ch = P::kPlan[V::kLanes * o + l];
        pA[l] = s + ch.a, pB[l] = s + ch.b, bTwo = bTwo || ch.bTwo;
    }
    typename V::T v = V::Shuffle(V::LoadLanes(pA), k.a[o]);
    if (bTwo) v = V::Or(v, V::Shuffle(V::LoadLanes(pB), k.b[o]));
    return v;
}

// The pixels of a line the steps cover: all its whole 16-pixel units once there is room for one step, so that a
// streamed line keeps streaming up to the scalar tail a 16-pixel step would leave too. The step at x starts at
// StepAt: a last step wider than 16 pixels moves back to end at `covered`, rewriting pixels with the same bytes.
template <class V>
inline uint32_t Covered(uint32_t dwWidth)
{
    return dwWidth >= V::kPixels ? dwWidth / 16 * 16 : 0;
}
template <class V>
inline uint32_t StepAt(uint32_t x, uint32_t covered)
{
    return x + V::kPixels <= covered ? x : covered - V::kPixels;
}

// Steps through the byte map M over the Covered pixels, then the rest of the line by the scalar member's
// reader R and writer W, with the group cut short at the line end when kCut is set.
template <class V, class M, class R, class W, bool kCut>
struct KGather {
    using P = TGatherPlan<M, V::kPixels>;
    using C = TControls<V, P>;
    uint32_t dwWidth;

    template <bool kStream>
    KAIP_VECTOR_TARGET void Line(const uint8_t* pS, uint8_t* pD) const
    {
        static const C k;  // built once, on first use, by the thread-safe static initialisation
        // A map that keeps destination bytes takes whole steps only: a step moved back would read bytes that
        // the step before has just begun to stream, flushing them half written.
        const uint32_t covered = M::kKeep ? dwWidth / V::kPixels * V::kPixels : Covered<V>(dwWidth);
        for (uint32_t x = 0; x < covered; x += V::kPixels) {
            const uint32_t at = StepAt<V>(x, covered) / M::kUnitPixels;
            const uint8_t* s = pS + at * M::kUnitIn;
            uint8_t* d = pD + at * M::kUnitOut;
            // Every kept byte is read before the step's first store: reading a cache line that a non-temporal
            // store has begun would flush it half written.
            typename V::T v[C::kRegisters];
            for (int o = 0; o < C::kRegisters; ++o) {
                v[o] = Gather(s, k, o);
                if constexpr (M::kKeep) v[o] = V::Blend(v[o], V::Load(d + V::kBytes * o), k.keep[o]);
            }
            for (int o = 0; o < C::kRegisters; ++o) V::template Store<kStream>(d + V::kBytes * o, v[o]);
        }
        R rd;
        const W wr;
        ConvertGroups(rd, wr, covered / R::kPixels, dwWidth / R::kPixels, pS, pD);
        if constexpr (kCut) ConvertCutGroup(rd, wr, dwWidth, pS, pD);
    }
};

// The finishing steps of KPairs that take the (B, G) and (R, G) pairs of MChannelPairs.
struct FOnPairs {
    template <TOrder O, int kPixelBytes, int kPixels>
    using TMap = MChannelPairs<O, kPixelBytes, kPixels / 2>;
};

// The 15-bit (k565 false) or 16-bit words of a register of pixels from their (B, G) and (R, G) pairs, as
// Pack555 and Pack565 do: each channel's top bits shifted into their field.
template <class V, bool k565>
struct FPack : FOnPairs {
    using T = typename V::T;
    static constexpr uint32_t kOutBytes = 2 * V::kBytes;
    template <int kByte, int kBits, int kAt>
    KAIP_VECTOR_TARGET static T Field(T v)
    {
        constexpr int kShift = FieldShift(kByte, kBits, kAt);
        T x;
        if constexpr (kShift > 0)
            x = V::template Srl16<kShift>(v);
        else
            x = V::template Sll16<-kShift>(v);
        return V::And(x, V::Set16(int16_t(((1 << kBits) - 1) << kAt)));
    }
    KAIP_VECTOR_TARGET static T Pack(T bg, T rg)
    {
        constexpr int kRedAt = k565 ? 11 : 10, kGreenBits = k565 ? 6 : 5;
        return V::Or(V::Or(Field<0, 5, kRedAt>(rg), Field<1, kGreenBits, 5>(bg)), Field<0, 5, 0>(bg));
    }
    template <bool kStream>
    KAIP_VECTOR_TARGET static void Put(uint8_t* d, T bg0, T rg0, T bg1, T rg1)
    {
        V::template Store<kStream>(d, Pack(bg0, rg0));
        V::template Store<kStream>(d + V::kBytes, Pack(bg1, rg1));
    }
};

// Steps of pixels set out by F's map over the Covered pixels and finished by F, its four registers in turn (for
// MChannelPairs: the (B, G) pairs of the step's first half, their (R, G) pairs, then those of its second half).
// The rest of the line by the scalar member's reader R and writer W.
template <class V, TOrder O, int kPixelBytes, class R, class W, class F>
struct KPairs {
    using P = TGatherPlan<typename F::template TMap<O, kPixelBytes, V::kPixels>, V::kPixels>;
    uint32_t dwWidth;

    template <bool kStream>
    KAIP_VECTOR_TARGET void Line(const uint8_t* pS, uint8_t* pD) const
    {
        static const TControls<V, P> k;
        const uint32_t covered = Covered<V>(dwWidth);
        for (uint32_t x = 0; x < covered; x += V::kPixels) {
            const uint32_t at = StepAt<V>(x, covered);
            const uint8_t* s = pS + at * kPixelBytes;
            F::template Put<kStream>(pD + at * W::kBytes, Gather(s, k, 0), Gather(s, k, 1), Gather(s, k, 2),
                                     Gather(s, k, 3));
        }
        R rd;
        ConvertGroups(rd, W{}, covered, dwWidth, pS, pD);
    }
};

template <class V, class M, class R, class W, bool kCut>
int RunGather(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return RunLines(dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc, bReverseLines,
                    KGather<V, M, R, W, kCut>{dwWidth});
}

}  // namespace
}  // namespace convert
