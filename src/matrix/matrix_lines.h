// matrix_lines.h: the line workers of colour correction and convolution, once per instruction set.
//
// Every template takes a tag type TIsa first. Each file that includes this header declares its own
// tag in an unnamed namespace, so its instantiations are its own code, compiled with its own
// instruction-set options, and the linker can never substitute one file's copy for another's.
// For the same reason the workers use no out-of-line helpers from other headers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "core/unidef.h"
#include "matrix/matrix.h"

template <class TIsa, typename T>
inline T ClampTo(T v, T lo, T hi)
{
    return v < lo ? lo : hi < v ? hi : v;
}

// One row of 16.16 coefficients applied to a pixel. TSum is 32 bits for samples of up to 12 bits
// (a large coefficient wraps the sum as the processor's integer arithmetic does) and 64 bits for 16.
template <class TIsa, typename TSum>
inline int32_t CorrectChannel(const int32_t* c, TSum r, TSum g, TSum b, TSum max)
{
    using U = std::make_unsigned_t<TSum>;
    const TSum v = TSum(U(c[0]) * U(r) + U(c[1]) * U(g) + U(c[2]) * U(b));
    return int32_t(ClampTo<TIsa, TSum>(v >> 16, 0, max));
}

using TCorrectLine = void(const uint8_t*, uint8_t*, uint32_t, const int32_t*, int32_t, const TLutTables&);

// Whether an instruction-set tag brings its own correction of 8-bit pixels, template <int iStep> static
// uint32_t CorrectBytes(pSrc, pDst, dwWidth, c, iRed), which corrects the first pixels of an RGB/BGR
// line (iStep bytes each) without a LUT exactly as CorrectLine does and returns how many it did.
template <class TIsa, class = void>
struct THasCorrectBytes : std::false_type {
};
template <class TIsa>
struct THasCorrectBytes<TIsa, std::void_t<decltype(&TIsa::template CorrectBytes<3>)>> : std::true_type {
};

// One line of a packed RGB/BGR format: red at sample iRed, green at 1, blue at 2 - iRed, iStep
// samples per pixel (a fourth sample is left alone). The output may be the input line itself.
template <class TIsa, typename TSample, typename TSum, int iRed, int iStep, bool bLut>
void CorrectLine(const uint8_t* pSrcLine, uint8_t* pDstLine, uint32_t dwWidth, const int32_t* c, int32_t iMax,
                 const TLutTables& lut)
{
    const TSample* s = reinterpret_cast<const TSample*>(pSrcLine);
    TSample* d = reinterpret_cast<TSample*>(pDstLine);
    const TSample* pRed = static_cast<const TSample*>(lut.pRed);
    const TSample* pGreen = static_cast<const TSample*>(lut.pGreen);
    const TSample* pBlue = static_cast<const TSample*>(lut.pBlue);
    uint32_t x = 0;
    if constexpr (THasCorrectBytes<TIsa>::value && sizeof(TSample) == 1) {
        // With a LUT, the pixels done go through the tables afterwards.
        x = TIsa::template CorrectBytes<iStep>(pSrcLine, pDstLine, dwWidth, c, iRed);
        if constexpr (bLut) {
            for (TSample* p = d; p < d + size_t(x) * iStep; p += iStep)
                p[iRed] = pRed[p[iRed]], p[1] = pGreen[p[1]], p[2 - iRed] = pBlue[p[2 - iRed]];
        }
        s += size_t(x) * iStep, d += size_t(x) * iStep;
    }
    for (; x < dwWidth; ++x, s += iStep, d += iStep) {
        const TSum r = s[iRed], g = s[1], b = s[2 - iRed];
        const int32_t vr = CorrectChannel<TIsa, TSum>(c, r, g, b, iMax);
        const int32_t vg = CorrectChannel<TIsa, TSum>(c + 3, r, g, b, iMax);
        const int32_t vb = CorrectChannel<TIsa, TSum>(c + 6, r, g, b, iMax);
        if constexpr (bLut) {
            d[iRed] = pRed[vr], d[1] = pGreen[vg], d[2 - iRed] = pBlue[vb];
        } else {
            d[iRed] = TSample(vr), d[1] = TSample(vg), d[2 - iRed] = TSample(vb);
        }
    }
}

// What one convolution call hands its line workers: the kernel as unsigned words (so that the sum
// wraps at 32 bits as the processor's arithmetic does), the format's maximum, the table of each
// channel (by byte position for colour, green for mono) and, for threshold sharpening, 9 x the
// threshold that a sample's contrast must exceed to be sharpened (-1: every sample).
struct TConvolutionJob {
    uint32_t k[9];
    int32_t iMax;
    int32_t iLimit9;
    const void* apTables[3];
};

using TConvolveLine = void(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint32_t, const TConvolutionJob&);

// The weighted sum of the nine samples around sample j (iStep samples apart), wrapping at 32 bits. A
// cross kernel (corners 0) skips the four corner products, which changes nothing in the result.
template <class TIsa, bool bCross, int iStep, typename TSample>
inline int32_t Weighted3x3(const TSample* a, const TSample* m, const TSample* b, size_t j, const uint32_t* k)
{
    const size_t l = j - iStep, r = j + iStep;
    uint32_t sum = k[1] * a[j] + k[3] * m[l] + k[4] * m[j] + k[5] * m[r] + k[7] * b[j];
    if constexpr (!bCross) sum += k[0] * a[l] + k[2] * a[r] + k[6] * b[l] + k[8] * b[r];
    return int32_t(sum);
}

// Whether an instruction-set tag brings vector registers (TIsa::TVector: TVec128 of matrix_sse2.h, or
// the AVX2 file's own) for the 8-bit 3x3 filters.
template <class TIsa, class = void>
struct THasVector : std::false_type {
};
template <class TIsa>
struct THasVector<TIsa, std::void_t<typename TIsa::TVector>> : std::true_type {
};

// The 3x3 filter of 8-bit samples d[j], a register of samples at a time from j while one fits before
// `end`; returns where it stopped (at once when a weight does not fit 16 bits). Each sum is made of
// the products of sample pairs (above, below) x (upper, lower weight), (left, right) x (k3, k5) and
// (centre, 0) x (k4, 0): with 16-bit weights and 8-bit samples every product and the sum are exact
// in 32 bits, as the scalar sums are. A cross kernel leaves out the corner pairs. Division: a sum
// below 0 gives 0; sum / 1000 = (sum >> 3) / 125 with (sum >> 3) saturated to 16 bits, and
// y / 125 = (y x 33555) >> 22 for every y below 2^15, so a sum from 256000 on gives at least 256,
// which the byte pack clamps. Threshold sharpening adds 9 x centre - the nine as a second kernel
// and keeps the centre where its magnitude does not exceed iLimit9. With a fourth sample per pixel,
// that byte of the destination is written back as it was.
template <class TIsa, class V, int iStep, bool bCross, bool bThreshold>
size_t Filter3x3Bytes(const uint8_t* a, const uint8_t* m, const uint8_t* b, uint8_t* d, size_t j, size_t end,
                      const uint32_t* k, int32_t iLimit9)
{
    using T = typename V::T;
    for (int i = 0; i < 9; ++i)
        if (int32_t(k[i]) != int16_t(k[i])) return j;
    auto pair = [](uint32_t lo, uint32_t hi) { return V::Set32(int32_t((lo & 0xFFFF) | hi << 16)); };
    const T k06 = pair(k[0], k[6]), k17 = pair(k[1], k[7]), k28 = pair(k[2], k[8]);
    const T k35 = pair(k[3], k[5]), k4 = pair(k[4], 0), minus = pair(~0u, ~0u), nine = pair(8, 0);
    const T zero = V::Zero(), limit = V::Set32(iLimit9), by125 = V::Set16(int16_t(33555));
    for (; j + V::kBytes <= end; j += V::kBytes) {
        T sum[4] = {zero, zero, zero, zero}, contrast[4] = {zero, zero, zero, zero};
        auto add = [&](T x, T y, T weights, T contrastWeights) {
            const T bytePairs[2] = {V::UnpackLo8(x, y), V::UnpackHi8(x, y)};
            for (int i = 0; i < 4; ++i) {
                const T p = i & 1 ? V::UnpackHi8(bytePairs[i / 2], zero) : V::UnpackLo8(bytePairs[i / 2], zero);
                sum[i] = V::Add32(sum[i], V::Madd(p, weights));
                if constexpr (bThreshold) contrast[i] = V::Add32(contrast[i], V::Madd(p, contrastWeights));
            }
        };
        auto at = [&](const uint8_t* p, int iOffset) { return V::Load(p + j + iOffset); };
        const T centre = at(m, 0);
        if constexpr (!bCross) {
            add(at(a, -iStep), at(b, -iStep), k06, minus);
            add(at(a, iStep), at(b, iStep), k28, minus);
        }
        add(at(a, 0), at(b, 0), k17, minus);
        add(at(m, -iStep), at(m, iStep), k35, minus);
        add(centre, zero, k4, nine);
        auto narrow = [&](T s0, T s1) {
            const T y = V::Max16(V::Packs32(V::template Srai32<3>(s0), V::template Srai32<3>(s1)), zero);
            return V::template Srli16<6>(V::MulhiU16(y, by125));
        };
        T out = V::PackUs16(narrow(sum[0], sum[1]), narrow(sum[2], sum[3]));
        if constexpr (bThreshold) {
            auto over = [&](T c) {
                const T sign = V::template Srai32<31>(c);
                return V::CmpGt32(V::Sub32(V::Xor(c, sign), sign), limit);
            };
            const T sharpen = V::Packs16(V::Packs32(over(contrast[0]), over(contrast[1])),
                                         V::Packs32(over(contrast[2]), over(contrast[3])));
            out = V::Select(sharpen, out, centre);
        }
        if constexpr (iStep == 4) out = V::Select(V::Set32(0x00FFFFFF), out, V::Load(d + j));
        V::Store(d + j, out);
    }
    return j;
}

// Writes value(j) for every colour sample j of an interior line from sample `begin` (the start of a
// pixel unless the line is one run) to the last pixel but one (iChannels of every iStep samples),
// through the channel's table with a LUT. Without a LUT and without a skipped fourth byte the interior
// is one run of samples. The whole pixels before `begin`, already written as plain values, only go
// through their tables.
template <class TIsa, typename TSample, int iChannels, int iStep, bool bLut, class TValue>
inline void WriteInterior(TSample* d, size_t begin, uint32_t dwWidth, const void* const* ppTables, TValue value)
{
    const size_t end = size_t(dwWidth - 1) * iStep;
    if constexpr (bLut) {
        begin -= (begin - iStep) % iStep;  // a pixel cut short is written again, whole
        for (size_t i = iStep; i < begin; i += iStep)
            for (int ch = 0; ch < iChannels; ++ch) d[i + ch] = static_cast<const TSample*>(ppTables[ch])[d[i + ch]];
    }
    if constexpr (iChannels == iStep && !bLut) {
        for (size_t j = begin; j < end; ++j) d[j] = TSample(value(j));
    } else {
        for (size_t i = begin; i < end; i += iStep) {
            for (int ch = 0; ch < iChannels; ++ch) {
                const int32_t v = value(i + ch);
                if constexpr (bLut) {
                    d[i + ch] = static_cast<const TSample*>(ppTables[ch])[v];
                } else {
                    d[i + ch] = TSample(v);
                }
            }
        }
    }
}

// Where the vector registers of TIsa take over the start of an interior line of 8-bit samples
// (Filter3x3Bytes), the sample from which the scalar loop goes on; else the first interior sample.
template <class TIsa, typename TSample, int iStep, bool bCross, bool bThreshold>
inline size_t VectorInterior(const TSample* a, const TSample* m, const TSample* b, TSample* d, uint32_t dwWidth,
                             const uint32_t* k, int32_t iLimit9)
{
    if constexpr (THasVector<TIsa>::value && sizeof(TSample) == 1)
        return Filter3x3Bytes<TIsa, typename TIsa::TVector, iStep, bCross, bThreshold>(
            a, m, b, d, iStep, size_t(dwWidth - 1) * iStep, k, iLimit9);
    return iStep;
}

// One interior line of the convolution: each colour channel on its own with the same channel of its
// neighbours; the sum divided by 1000 toward zero and clamped.
template <class TIsa, typename TSample, int iChannels, int iStep, bool bCross, bool bLut>
void ConvolveLine(const uint8_t* pAbove, const uint8_t* pLine, const uint8_t* pBelow, uint8_t* pDstLine,
                  uint32_t dwWidth, const TConvolutionJob& job)
{
    const TSample* a = reinterpret_cast<const TSample*>(pAbove);
    const TSample* m = reinterpret_cast<const TSample*>(pLine);
    const TSample* b = reinterpret_cast<const TSample*>(pBelow);
    TSample* d = reinterpret_cast<TSample*>(pDstLine);
    uint32_t k[9];  // a local copy, kept in registers although the stores may alias the job
    for (int i = 0; i < 9; ++i) k[i] = job.k[i];
    const int32_t iMax = job.iMax;
    const size_t begin = VectorInterior<TIsa, TSample, iStep, bCross, false>(a, m, b, d, dwWidth, k, 0);
    WriteInterior<TIsa, TSample, iChannels, iStep, bLut>(d, begin, dwWidth, job.apTables, [&](size_t j) {
        return ClampTo<TIsa, int32_t>(Weighted3x3<TIsa, bCross, iStep>(a, m, b, j, k) / 1000, 0, iMax);
    });
}

// One interior line of threshold sharpening: the convolution where the sample differs from the mean of
// its nine samples by more than the threshold, |9 x centre - sum of the nine| > 9 x threshold (no
// division), else the sample itself; both clamped to the format's range. Branch-free: both are computed.
template <class TIsa, typename TSample, int iChannels, int iStep, bool bLut>
void ThresholdLine(const uint8_t* pAbove, const uint8_t* pLine, const uint8_t* pBelow, uint8_t* pDstLine,
                   uint32_t dwWidth, const TConvolutionJob& job)
{
    const TSample* a = reinterpret_cast<const TSample*>(pAbove);
    const TSample* m = reinterpret_cast<const TSample*>(pLine);
    const TSample* b = reinterpret_cast<const TSample*>(pBelow);
    TSample* d = reinterpret_cast<TSample*>(pDstLine);
    uint32_t k[9];
    for (int i = 0; i < 9; ++i) k[i] = job.k[i];
    const int32_t iMax = job.iMax, iLimit9 = job.iLimit9;
    const size_t begin = VectorInterior<TIsa, TSample, iStep, false, true>(a, m, b, d, dwWidth, k, iLimit9);
    WriteInterior<TIsa, TSample, iChannels, iStep, bLut>(d, begin, dwWidth, job.apTables, [&](size_t j) {
        const size_t l = j - iStep, r = j + iStep;
        const int32_t centre = m[j];
        const int32_t nine = int32_t(a[l] + a[j] + a[r]) + int32_t(m[l] + m[j] + m[r]) + int32_t(b[l] + b[j] + b[r]);
        const int32_t diff = 9 * centre - nine, contrast = diff < 0 ? -diff : diff;
        const int32_t sharpened = Weighted3x3<TIsa, false, iStep>(a, m, b, j, k) / 1000;
        return ClampTo<TIsa, int32_t>(contrast > iLimit9 ? sharpened : centre, 0, iMax);
    });
}

// One format and its workers: by LUT for the correction, by cross kernel and LUT for the convolution.
struct TCorrectionFormat {
    uint32_t dwPixelFormat;
    unsigned uDepth;            // 8, 10, 12 (with a LUT body of that depth) or 16 (never a LUT)
    TCorrectLine* apfnLine[2];  // [LUT]
};
struct TConvolutionFormat {
    uint32_t dwPixelFormat;
    int32_t iMax;
    unsigned uLutDepth;               // 8, 10 or 12; 0: the format takes no LUT
    bool bColor;                      // bytes 0, 1, 2 through the red, green and blue tables; mono: green
    TConvolveLine* apfnLine[2][2];    // [cross kernel][LUT]
    TConvolveLine* apfnThreshold[2];  // threshold sharpening [LUT]
};

template <class TIsa, typename TSample, int iRed, int iStep>
constexpr TCorrectionFormat CorrectionRow(uint32_t dwPixelFormat, unsigned uDepth)
{
    if constexpr (sizeof(TSample) == 2) {
        if (uDepth == 16)  // 64-bit sums, never a LUT
            return {dwPixelFormat, uDepth, {CorrectLine<TIsa, TSample, int64_t, iRed, iStep, false>, nullptr}};
    }
    return {dwPixelFormat,
            uDepth,
            {CorrectLine<TIsa, TSample, int32_t, iRed, iStep, false>,
             CorrectLine<TIsa, TSample, int32_t, iRed, iStep, true>}};
}

template <class TIsa, typename TSample, int iChannels, int iStep>
constexpr TConvolutionFormat ConvolutionRow(uint32_t dwPixelFormat, int32_t iMax, unsigned uLutDepth)
{
    return {
        dwPixelFormat,
        iMax,
        uLutDepth,
        iChannels == 3,
        {{ConvolveLine<TIsa, TSample, iChannels, iStep, false, false>,
          ConvolveLine<TIsa, TSample, iChannels, iStep, false, true>},
         {ConvolveLine<TIsa, TSample, iChannels, iStep, true, false>,
          ConvolveLine<TIsa, TSample, iChannels, iStep, true, true>}},
        {ThresholdLine<TIsa, TSample, iChannels, iStep, false>, ThresholdLine<TIsa, TSample, iChannels, iStep, true>}};
}

constexpr size_t kCorrectionFormatCount = 10, kConvolutionFormatCount = 10;

template <class TIsa>
constexpr TCorrectionFormat kCorrectionFormats[kCorrectionFormatCount] = {
    CorrectionRow<TIsa, uint8_t, 2, 3>(KaipPixelFormat_BGR8Packed, 8),
    CorrectionRow<TIsa, uint8_t, 2, 4>(KaipPixelFormat_BGRA8Packed, 8),
    CorrectionRow<TIsa, uint8_t, 0, 3>(KaipPixelFormat_RGB8Packed, 8),
    CorrectionRow<TIsa, uint8_t, 0, 4>(KaipPixelFormat_RGBA8Packed, 8),
    CorrectionRow<TIsa, uint16_t, 2, 3>(KaipPixelFormat_BGR10Packed, 10),
    CorrectionRow<TIsa, uint16_t, 0, 3>(KaipPixelFormat_RGB10Packed, 10),
    CorrectionRow<TIsa, uint16_t, 2, 3>(KaipPixelFormat_BGR12Packed, 12),
    CorrectionRow<TIsa, uint16_t, 0, 3>(KaipPixelFormat_RGB12Packed, 12),
    CorrectionRow<TIsa, uint16_t, 2, 3>(KaipPixelFormat_BGR16, 16),
    CorrectionRow<TIsa, uint16_t, 0, 3>(KaipPixelFormat_RGB16Packed, 16),
};

// Formats of the convolution's class mask that are not listed (the Bayer codes, Mono14) have no
// sample range here and are refused.
template <class TIsa>
constexpr TConvolutionFormat kConvolutionFormats[kConvolutionFormatCount] = {
    ConvolutionRow<TIsa, uint8_t, 1, 1>(KaipPixelFormat_Mono8, 255, 8),
    ConvolutionRow<TIsa, uint8_t, 3, 3>(KaipPixelFormat_BGR8Packed, 255, 8),
    ConvolutionRow<TIsa, uint8_t, 3, 4>(KaipPixelFormat_BGRA8Packed, 255, 8),
    ConvolutionRow<TIsa, uint16_t, 1, 1>(KaipPixelFormat_Mono10, 1023, 10),
    ConvolutionRow<TIsa, uint16_t, 1, 1>(KaipPixelFormat_Mono12, 4095, 12),
    ConvolutionRow<TIsa, uint16_t, 1, 1>(KaipPixelFormat_Mono9, 511, 0),
    ConvolutionRow<TIsa, uint16_t, 1, 1>(KaipPixelFormat_Mono11, 2047, 0),
    ConvolutionRow<TIsa, uint16_t, 1, 1>(KaipPixelFormat_Mono13, 8191, 0),
    ConvolutionRow<TIsa, uint16_t, 1, 1>(KaipPixelFormat_Mono15, 32767, 0),
    ConvolutionRow<TIsa, uint16_t, 1, 1>(KaipPixelFormat_Mono16, 65535, 0),
};

// The same tables with the 8-bit kernels in SSE2 registers (matrix_sse2.cpp), compiled for SSE4.2
// (matrix_sse4.cpp) and with AVX2 registers (matrix_avx2.cpp); FindFormatRow picks the widest one that
// g_SSEChecker allows.
// Defines them for a file's tag: g_pCorrectionFormats##Name and g_pConvolutionFormats##Name. Addresses
// only: nothing of these tables runs before the callers have checked the gate.
#define KAIP_MATRIX_TABLES(Tag, Name)                                                    \
    const TCorrectionFormat* const g_pCorrectionFormats##Name = kCorrectionFormats<Tag>; \
    const TConvolutionFormat* const g_pConvolutionFormats##Name = kConvolutionFormats<Tag>;
extern const TCorrectionFormat* const g_pCorrectionFormatsSse2;
extern const TConvolutionFormat* const g_pConvolutionFormatsSse2;
extern const TCorrectionFormat* const g_pCorrectionFormatsSse4;
extern const TConvolutionFormat* const g_pConvolutionFormatsSse4;
extern const TCorrectionFormat* const g_pCorrectionFormatsAvx2;
extern const TConvolutionFormat* const g_pConvolutionFormatsAvx2;

// The row of a format in the table of the widest instruction set allowed (the baseline's without
// bVector), or null. File-local, so that no copy of it is built with wider instructions.
template <typename TRow>
static const TRow* FindFormatRow(const TRow* pBaseline, const TRow* pSse2, const TRow* pSse4, const TRow* pAvx2,
                                 size_t n, uint32_t dwPixelFormat, bool bVector = true)
{
    const TRow* pRows = !bVector                  ? pBaseline
                        : g_SSEChecker.UseAVX2()  ? pAvx2
                        : g_SSEChecker.m_bUseSSE4 ? pSse4
                        : g_SSEChecker.m_bUseSSE2 ? pSse2
                                                  : pBaseline;
    for (size_t i = 0; i < n; ++i)
        if (pRows[i].dwPixelFormat == dwPixelFormat) return &pRows[i];
    return nullptr;
}
