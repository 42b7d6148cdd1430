// variable_gradients_kernel.h: the vector output stage of the variable-gradients decoder, written once over the
// bilinear decoder's register sets. Included only by variable_gradients_sse2/ssse3/avx2.cpp, each compiled for
// its own instruction set: everything here has internal linkage, so the copies never mix.
#pragma once

#include "bayer/bilinear_kernel.h"
#include "bayer/variable_gradients_simd.h"

namespace {

// The words of V::N / 2 estimates (values below 2^15) in memory order.
inline __m128i EstimateWords(__m128i, const int32_t* p)
{
    return _mm_packs_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)),
                           _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 4)));
}

// Bytes of even columns in the low byte of each word, odd ones in the high byte.
inline __m128i Interleave(__m128i even, __m128i odd)
{
    return _mm_or_si128(even, _mm_slli_epi16(odd, 8));
}

#if defined(__AVX2__)
inline __m256i EstimateWords(__m256i, const int32_t* p)
{
    const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 8));
    return _mm256_permute4x64_epi64(_mm256_packs_epi32(a, b), 0xD8);
}

inline __m256i Interleave(__m256i even, __m256i odd)
{
    return _mm256_or_si256(even, _mm256_slli_epi16(odd, 8));
}
#endif

// Blocks of V::N pixels. At a colour site the line's own colour (red on red lines, blue on blue
// ones) is the sample, green the first estimate; at a green site green is the sample and the
// own colour the first estimate; the other colour is the second estimate at both. Values above
// 8 bits go out as their top 8 bits (the identity tables); with Table the 8-bit tables are
// looked up in registers.
template <class V, unsigned Bits, uint32_t DstBytes, bool Table>
uint32_t WriteGradients(const TGradientsStretch& s, const TBayerLut& lut)
{
    using T = typename V::T;
    using D = TDepth<Bits>;
    struct TNone {
        explicit TNone(const uint8_t*) {}
        T operator()(T v) const { return v; }
    };
    using TTable = std::conditional_t<Table, TByteTable<V>, TNone>;
    const TTable mapB(lut.pBlue), mapG(lut.pGreen), mapR(lut.pRed);
    const T colour = V::Set16(s.greenParity == 0 ? int16_t(0xFF00) : 0x00FF);  // byte lanes of the colour sites
    const int even = s.greenParity == 0 ? 1 : 0;                               // estimates of the even columns
    auto estimates = [&](const int32_t* const(&pArray)[2], size_t j) {
        const T e = V::template Shr<Bits - 8>(EstimateWords(T{}, pArray[even] + j));
        const T o = V::template Shr<Bits - 8>(EstimateWords(T{}, pArray[1 - even] + j));
        return Interleave(e, o);
    };
    uint32_t x = s.x0;
    for (; x + V::N <= s.x1; x += V::N) {
        const size_t j = (x - s.x0) / 2;
        T c;
        if constexpr (Bits == 8) {
            c = V::Load(s.pCur + x);
        } else {
            const T mask = V::Set16(int16_t(D::kMask1));
            const uint8_t* pIn = s.pCur + 2 * size_t(x);
            c = V::PackOrdered(V::template Shr<Bits - 8>(V::And16(V::Load(pIn), mask)),
                               V::template Shr<Bits - 8>(V::And16(V::Load(pIn + sizeof(T)), mask)));
        }
        const T first = estimates(s.pFirst, j), other = estimates(s.pSecond, j);
        const T own = V::Select(colour, c, first), g = mapG(V::Select(colour, first, c));
        const T b = s.bRedLine ? mapB(other) : mapB(own), r = s.bRedLine ? mapR(own) : mapR(other);
        uint8_t* p = s.pOut + size_t(x) * DstBytes;
        if constexpr (DstBytes == 3) {
            V::StoreBgr(p, b, g, r);
        } else {
            V::StoreBgra(p, b, g, r);
        }
    }
    return x;
}

template <class V>
TGradientsWriter GradientsWriter(uint32_t dwBits, uint32_t dwDstBytes, bool bIdentity)
{
    TGradientsWriter f = nullptr;
    WithDepth(dwBits, [&](auto bits) {
        WithPixelBytes(dwDstBytes, [&](auto bytes) {
            if (bIdentity) {
                f = WriteGradients<V, bits, bytes, false>;
            } else if constexpr (bits == 8 && V::kShuffle) {
                f = WriteGradients<V, bits, bytes, true>;
            }
        });
    });
    return f;
}

}  // namespace
