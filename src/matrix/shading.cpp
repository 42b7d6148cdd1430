// shading.cpp: flat-field correction of an image against a black and a white reference image.
//
// out = (in - black) x mean(white - black) / (white - black), rounded to nearest, clamped to the format's
// range. The mean belongs to the sample's class: the one class of a mono image, the colour channel of a
// packed pixel, the red, green or blue site of a Bayer mosaic; it is taken over the pixels whose white
// sample is above the black one, rounded to nearest. Those are the only pixels corrected; the others keep
// their input sample as it is.
#include <emmintrin.h>

#include <algorithm>
#include <memory>
#include <new>

#include "core/check.h"
#include "core/common.h"
#include "core/log.h"
#include "core/unidef.h"
#include "matrix/matrix.h"

namespace {

constexpr const char* kFunc = "KaipApplyShadingCorrection";
constexpr uint64_t kClassMask = KaipPixelFormatClass_Mono8 | KaipPixelFormatClass_Mono9 | KaipPixelFormatClass_Mono10 |
                                KaipPixelFormatClass_Mono11 | KaipPixelFormatClass_Mono12 |
                                KaipPixelFormatClass_Mono13 | KaipPixelFormatClass_Mono14 |
                                KaipPixelFormatClass_Mono15 | KaipPixelFormatClass_Mono16 |
                                KaipPixelFormatClass_BGR8Packed | KaipPixelFormatClass_BGRA8Packed |
                                KaipPixelFormatClass_RGB8Packed | KaipPixelFormatClass_RGBA8Packed;
// The flags that decide where a sample sits in the picture and in the mosaic.
constexpr uint32_t kRefFlags =
    KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp | KaipImgFlag_BayerShiftLine | KaipImgFlag_BayerShiftColumn;

// The samples of a line come in groups of iStep (a pixel; two pixels of a Bayer line), of which the first
// iChannels are corrected, sample c against the mean of class c. A Bayer line of odd width ends with a
// single sample of class 0.
struct TLineJob {
    uint32_t dwSamples;  // per line
    uint32_t dwMask;     // the format's depth
};

struct TSums {
    uint64_t aSum[6] = {}, aCount[6] = {};  // per line parity and class (at most three)
    uint32_t dwMaxDiff = 0;
};

// Adds up white - black per class over the samples where it is positive, and keeps the largest difference.
template <typename TSample, int iChannels, int iStep>
void SumLine(const uint8_t* pBlack, const uint8_t* pWhite, const TLineJob& job, uint64_t* pSum, uint64_t* pCount,
             uint32_t& dwMaxDiff)
{
    const TSample* bk = reinterpret_cast<const TSample*>(pBlack);
    const TSample* wt = reinterpret_cast<const TSample*>(pWhite);
    uint64_t sum[iChannels] = {}, count[iChannels] = {};
    int32_t maxDiff = int32_t(dwMaxDiff);
    auto add = [&](size_t j, int c) {
        const int32_t diff = int32_t(wt[j] & job.dwMask) - int32_t(bk[j] & job.dwMask);
        sum[c] += uint32_t(diff > 0 ? diff : 0);
        count[c] += diff > 0;
        maxDiff = diff > maxDiff ? diff : maxDiff;
    };
    const size_t whole = job.dwSamples - job.dwSamples % iStep;
    for (size_t i = 0; i < whole; i += iStep)
        for (int c = 0; c < iChannels; ++c) add(i + c, c);
    for (size_t j = whole; j < job.dwSamples; ++j) add(j, 0);
    for (int c = 0; c < iChannels; ++c) pSum[c] += sum[c], pCount[c] += count[c];
    dwMaxDiff = uint32_t(maxDiff);
}

// Corrects one line. The gain divides by white - black through pRecip[w] = ceil(2^63 / w): the high word
// of pRecip[w] x 2n is the exact quotient n / w for every numerator below 2^32 and divisor below 2^17
// (the error of the reciprocal, below 2w, times 2n stays below 2^64). The numerator
// (in - black) x mean + w / 2 is below 2^32. Selections are masks, so the loop has no data branches.
template <typename TSample, int iChannels, int iStep>
void CorrectLine(const uint8_t* pSrc, const uint8_t* pBlack, const uint8_t* pWhite, uint8_t* pDst, const TLineJob& job,
                 const uint32_t* pMean, const uint64_t* pRecip, uint32_t dwMaxDiff)
{
    const TSample* s = reinterpret_cast<const TSample*>(pSrc);
    const TSample* bk = reinterpret_cast<const TSample*>(pBlack);
    const TSample* wt = reinterpret_cast<const TSample*>(pWhite);
    TSample* d = reinterpret_cast<TSample*>(pDst);
    const uint32_t mask = job.dwMask;
    const int32_t maxDiff = int32_t(dwMaxDiff);
    uint32_t mean[iChannels];
    for (int c = 0; c < iChannels; ++c) mean[c] = pMean[c];
    auto correct = [&](size_t j, int c) {
        const uint32_t in = s[j];
        const int32_t black = int32_t(bk[j] & mask), above = int32_t(in & mask) - black;
        const int32_t w = int32_t(wt[j] & mask) - black;
        const uint32_t diff = uint32_t(above & ~(above >> 31));  // 0 below black
        const uint32_t wi = uint32_t(std::clamp(w, 1, maxDiff));
        const uint64_t n = uint64_t(diff) * mean[c] + (wi >> 1);
        const uint32_t q = uint32_t((unsigned __int128)pRecip[wi] * (n << 1) >> 64);
        const uint32_t valid = 0u - uint32_t(w > 0);
        d[j] = TSample((std::min(q, mask) & valid) | (in & ~valid));
    };
    const size_t whole = job.dwSamples - job.dwSamples % iStep;
    for (size_t i = 0; i < whole; i += iStep)
        for (int c = 0; c < iChannels; ++c) correct(i + c, c);
    for (size_t j = whole; j < job.dwSamples; ++j) correct(j, 0);
}

// The SSE2 workers take 8 samples at a time in 16-bit lanes, for byte samples and words of up to 12
// bits, in blocks that end at a multiple of 24 samples (a pixel boundary for every step), where the
// scalar worker goes on. Lane r % 8 of block r / 8 (r below 24, the block's position in the period)
// belongs to class r % iStep; a fourth sample of a pixel (lanes 3 and 7 with step 4) to none.
constexpr size_t kPeriod = 24;

template <typename TSample>
__m128i LoadSamples(const uint8_t* p)
{
    if constexpr (sizeof(TSample) == 1) {
        return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)), _mm_setzero_si128());
    } else {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    }
}

template <int iStep>
__m128i FourthLanes()
{
    return _mm_set1_epi64x(iStep == 4 ? int64_t(0xFFFF000000000000ull) : 0);
}

// SumLine in SSE2 registers: per class, pmaddwd of the positive differences (and of the lanes where
// they are positive, -1) by 1 in the lanes of the class; each line's 32-bit sums stay below 2^31.
template <typename TSample, int iChannels, int iStep>
void SumLineSse2(const uint8_t* pBlack, const uint8_t* pWhite, const TLineJob& job, uint64_t* pSum, uint64_t* pCount,
                 uint32_t& dwMaxDiff)
{
    constexpr size_t kBytes = sizeof(TSample);
    alignas(16) int16_t select[iChannels][kPeriod];
    for (int c = 0; c < iChannels; ++c)
        for (size_t r = 0; r < kPeriod; ++r) select[c][r] = int16_t(r % iStep == size_t(c));
    const __m128i mask = _mm_set1_epi16(int16_t(job.dwMask)), zero = _mm_setzero_si128();
    __m128i sum[iChannels], negativeCount[iChannels], maxDiff = zero;
    for (int c = 0; c < iChannels; ++c) sum[c] = negativeCount[c] = zero;
    const size_t end = job.dwSamples / kPeriod * kPeriod;
    for (size_t i = 0; i < end; i += kPeriod)
        for (size_t r = 0; r < kPeriod; r += 8) {
            const size_t j = i + r;
            const __m128i black = _mm_and_si128(LoadSamples<TSample>(pBlack + j * kBytes), mask);
            const __m128i white = _mm_and_si128(LoadSamples<TSample>(pWhite + j * kBytes), mask);
            const __m128i diff =
                _mm_andnot_si128(FourthLanes<iStep>(), _mm_max_epi16(_mm_sub_epi16(white, black), zero));
            const __m128i positive = _mm_cmpgt_epi16(diff, zero);
            for (int c = 0; c < iChannels; ++c) {
                const __m128i lanes = _mm_load_si128(reinterpret_cast<const __m128i*>(select[c] + r));
                sum[c] = _mm_add_epi32(sum[c], _mm_madd_epi16(diff, lanes));
                negativeCount[c] = _mm_add_epi32(negativeCount[c], _mm_madd_epi16(positive, lanes));
            }
            maxDiff = _mm_max_epi16(maxDiff, diff);
        }
    auto total = [](__m128i v) {
        alignas(16) int32_t a[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(a), v);
        return int64_t(a[0]) + a[1] + a[2] + a[3];
    };
    for (int c = 0; c < iChannels; ++c)
        pSum[c] += uint64_t(total(sum[c])), pCount[c] += uint64_t(-total(negativeCount[c]));
    alignas(16) int16_t lanes[8];
    _mm_store_si128(reinterpret_cast<__m128i*>(lanes), maxDiff);
    for (int16_t v : lanes) dwMaxDiff = std::max(dwMaxDiff, uint32_t(v));
    const TLineJob rest{uint32_t(job.dwSamples - end), job.dwMask};
    SumLine<TSample, iChannels, iStep>(pBlack + end * kBytes, pWhite + end * kBytes, rest, pSum, pCount, dwMaxDiff);
}

// CorrectLine in SSE2 registers. The numerator n = (in - black) x mean + w / 2 is one pmaddwd of
// (difference, w / 2) by (mean, 1); with at most 12 bits it stays below 2^24 - w, so single-precision
// division rounded to nearest is exact enough: n / w = q + r / w lies at least 1 / w below q + 1,
// farther than the rounding reaches while w x (q + 1) <= n + w < 2^24, and truncation gives q.
// Quotients are saturated to 16 bits before the clamp to the depth; a fourth sample is written back
// as the destination held it.
template <typename TSample, int iChannels, int iStep>
void CorrectLineSse2(const uint8_t* pSrc, const uint8_t* pBlack, const uint8_t* pWhite, uint8_t* pDst,
                     const TLineJob& job, const uint32_t* pMean, const uint64_t* pRecip, uint32_t dwMaxDiff)
{
    constexpr size_t kBytes = sizeof(TSample);
    auto load = [](const uint8_t* p) { return LoadSamples<TSample>(p); };
    alignas(16) int32_t meanOne[kPeriod];  // (mean, 1) of each lane's class
    for (size_t r = 0; r < kPeriod; ++r) meanOne[r] = r % iStep < iChannels ? int32_t(pMean[r % iStep] | 1u << 16) : 0;
    const __m128i mask = _mm_set1_epi16(int16_t(job.dwMask)), one = _mm_set1_epi16(1);
    const __m128i maxDiff = _mm_set1_epi16(int16_t(dwMaxDiff)), zero = _mm_setzero_si128();
    const __m128i fourth = FourthLanes<iStep>();
    const size_t end = job.dwSamples / kPeriod * kPeriod;
    for (size_t i = 0; i < end; i += kPeriod)
        for (size_t r = 0; r < kPeriod; r += 8) {
            const size_t j = i + r;
            const __m128i in = load(pSrc + j * kBytes), black = _mm_and_si128(load(pBlack + j * kBytes), mask);
            const __m128i diff = _mm_max_epi16(_mm_sub_epi16(_mm_and_si128(in, mask), black), zero);
            const __m128i w = _mm_sub_epi16(_mm_and_si128(load(pWhite + j * kBytes), mask), black);
            const __m128i wi = _mm_min_epi16(_mm_max_epi16(w, one), maxDiff), half = _mm_srli_epi16(wi, 1);
            auto quotient = [&](__m128i n, __m128i divisor) {
                return _mm_cvttps_epi32(_mm_div_ps(_mm_cvtepi32_ps(n), _mm_cvtepi32_ps(divisor)));
            };
            const __m128i* pM = reinterpret_cast<const __m128i*>(meanOne + r);
            const __m128i lo =
                quotient(_mm_madd_epi16(_mm_unpacklo_epi16(diff, half), pM[0]), _mm_unpacklo_epi16(wi, zero));
            const __m128i hi =
                quotient(_mm_madd_epi16(_mm_unpackhi_epi16(diff, half), pM[1]), _mm_unpackhi_epi16(wi, zero));
            const __m128i q = _mm_min_epi16(_mm_packs_epi32(lo, hi), mask);
            const __m128i valid = _mm_andnot_si128(fourth, _mm_cmpgt_epi16(w, zero));
            const __m128i kept =
                iStep == 4 ? _mm_or_si128(_mm_andnot_si128(fourth, in), _mm_and_si128(fourth, load(pDst + j * kBytes)))
                           : in;
            const __m128i out = _mm_or_si128(_mm_and_si128(valid, q), _mm_andnot_si128(valid, kept));
            if constexpr (kBytes == 1) {
                _mm_storel_epi64(reinterpret_cast<__m128i*>(pDst + j), _mm_packus_epi16(out, out));
            } else {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(pDst + j * 2), out);
            }
        }
    const TLineJob rest{uint32_t(job.dwSamples - end), job.dwMask};
    CorrectLine<TSample, iChannels, iStep>(pSrc + end * kBytes, pBlack + end * kBytes, pWhite + end * kBytes,
                                           pDst + end * kBytes, rest, pMean, pRecip, dwMaxDiff);
}

struct TShadingWorkers {
    int iChannels;  // classes per line
    void (*pfnSum)(const uint8_t*, const uint8_t*, const TLineJob&, uint64_t*, uint64_t*, uint32_t&);
    void (*pfnCorrect)(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, const TLineJob&, const uint32_t*,
                       const uint64_t*, uint32_t);
};

template <typename TSample, int iChannels, int iStep, bool bVector>
constexpr TShadingWorkers kWorkers = {
    iChannels, bVector ? SumLineSse2<TSample, iChannels, iStep> : SumLine<TSample, iChannels, iStep>,
    bVector ? CorrectLineSse2<TSample, iChannels, iStep> : CorrectLine<TSample, iChannels, iStep>};

// The workers of a format: mono, Bayer (pairs of sites), packed colour with or without a fourth byte.
template <bool bVector>
const TShadingWorkers& WorkersOf(bool bColor, bool bBayer, bool bWords, bool bFourth)
{
    return bColor   ? (bFourth ? kWorkers<uint8_t, 3, 4, bVector> : kWorkers<uint8_t, 3, 3, bVector>)
           : bBayer ? (bWords ? kWorkers<uint16_t, 2, 2, bVector> : kWorkers<uint8_t, 2, 2, bVector>)
                    : (bWords ? kWorkers<uint16_t, 1, 1, bVector> : kWorkers<uint8_t, 1, 1, bVector>);
}

// A reference must describe the same samples as the source: size, format and the placement flags.
KaipStatus CheckReference(const char* pszName, const KaipImgInfo* pRef, const KaipImgInfo& src)
{
    if (pRef == nullptr) return Refuse(KASTATUS_KAIP_INVALID_POINTER, "%s: %s is NULL!", kFunc, pszName);
    if (!IsImgInfoInitialized(pRef))
        return Refuse(KASTATUS_KAIP_IMGINFO_NOT_INITIALIZED, "%s: %s is not initialized!", kFunc, pszName);
    if (pRef->Width != src.Width || pRef->Height != src.Height)
        return Refuse(KASTATUS_KAIP_IMGINFOS_NOT_EQUAL, "%s: %s differs in size: w=%d, h=%d, Src: w=%d, h=%d", kFunc,
                      pszName, pRef->Width, pRef->Height, src.Width, src.Height);
    if (pRef->PixelFormat != src.PixelFormat)
        return Refuse(KASTATUS_KAIP_REF_PIXEL_FORMAT_DIFFERS,
                      "%s: %s differs in pixel format: 0x%.8x, Src pixel format=0x%.8x", kFunc, pszName,
                      pRef->PixelFormat, src.PixelFormat);
    if ((pRef->Flags ^ src.Flags) & kRefFlags)
        return Refuse(KASTATUS_KAIP_REF_FLAGS_DIFFER, "%s: %s differs in flags: 0x%x, Src Flags=0x%x", kFunc, pszName,
                      pRef->Flags, src.Flags);
    if (pRef->pData == nullptr)
        return Refuse(KASTATUS_KAIP_SRC_NOT_ALLOCATED, "%s: %s->pData is NULL!", kFunc, pszName);
    return KASTATUS_OK;
}

}  // namespace

KaipStatus ApplyShadingCorrection(const KaipImgInfo* pSrcImgInfo, const KaipImgInfo* pBlackImgInfo,
                                  const KaipImgInfo* pWhiteImgInfo, KaipImgInfo* pDstImgInfo, uint32_t dwOptions)
{
    bool bReallocate = false;
    KaipStatus status = CheckImgInfos(
        kFunc, pSrcImgInfo, pDstImgInfo, dwOptions, kClassMask, pSrcImgInfo ? pSrcImgInfo->PixelFormat : 0, 0,
        KaipCheck_SameSize | KaipCheck_SamePixelFormat, KaipImgFlag_ColorPlanes | KaipImgFlag_BottomUp, &bReallocate);
    if (status == KASTATUS_KAIP_UNSUPPORTED_SRC_PIXEL_FORMAT)
        return Refuse(status, "%s: Unsupported source color format 0x%8.8x", kFunc, pSrcImgInfo->PixelFormat);
    if (status != KASTATUS_OK) return status;
    const KaipImgInfo& src = *pSrcImgInfo;
    if ((status = CheckReference("pBlackImgInfo", pBlackImgInfo, src)) != KASTATUS_OK) return status;
    if ((status = CheckReference("pWhiteImgInfo", pWhiteImgInfo, src)) != KASTATUS_OK) return status;

    const TPixelFormatInfo& format = *FindPixelFormat(src.PixelFormat);
    const bool bColor = (format.dwCode >> 24) == 0x02, bBayer = format.bBayer;
    const bool bWords = format.dwPixelIncrement == 2, bFourth = format.dwPixelIncrement == 4;
    // Byte samples, and words of up to 12 bits, go through the vector workers.
    const bool bVector = g_SSEChecker.m_bUseSSE2 && (!bWords || format.dwUsedBits <= 12);
    const TShadingWorkers& workers =
        bVector ? WorkersOf<true>(bColor, bBayer, bWords, bFourth) : WorkersOf<false>(bColor, bBayer, bWords, bFourth);
    const TLineJob job{src.Width * (bColor ? format.dwPixelIncrement : 1u),
                       bColor ? 0xFFu : uint32_t((1ull << format.dwUsedBits) - 1)};
    const size_t blackInc = pBlackImgInfo->LineIncrement, whiteInc = pWhiteImgInfo->LineIncrement;

    // Sums per class and line parity (the four sites of a Bayer cell), then the classes they make up.
    TSums sums;
    for (size_t y = 0; y < src.Height; ++y) {
        const size_t row = (y & 1) * size_t(workers.iChannels);
        workers.pfnSum(pBlackImgInfo->pData + y * blackInc, pWhiteImgInfo->pData + y * whiteInc, job, sums.aSum + row,
                       sums.aCount + row, sums.dwMaxDiff);
    }
    // Mono and colour: a class is a column of both line parities. Bayer: each site of the cell is its own
    // class, except that both green sites (row + column + the pattern's shifts odd) form one, numbered 4.
    const int cells = 2 * workers.iChannels;
    const int shifts = (format.dwPattern & KaipImgFlag_BayerShiftLine ? 1 : 0) +
                       (format.dwPattern & KaipImgFlag_BayerShiftColumn ? 1 : 0);
    auto classOf = [&](int cell) {
        const int row = cell / workers.iChannels, column = cell % workers.iChannels;
        return !bBayer ? column : ((row + column + shifts) & 1) ? 4 : cell;
    };
    uint64_t classSum[5] = {}, classCount[5] = {};
    for (int cell = 0; cell < cells; ++cell)
        classSum[classOf(cell)] += sums.aSum[cell], classCount[classOf(cell)] += sums.aCount[cell];
    uint32_t aMean[6] = {};  // per line parity and class
    for (int cell = 0; cell < cells; ++cell) {
        const uint64_t sum = classSum[classOf(cell)], count = classCount[classOf(cell)];
        aMean[cell] = count ? uint32_t((sum + count / 2) / count) : 0;
    }

    // The reciprocal of every difference that occurs, once per call.
    const uint32_t dwMaxDiff = std::max<uint32_t>(sums.dwMaxDiff, 1);
    std::unique_ptr<uint64_t[]> pRecip(new (std::nothrow) uint64_t[size_t(dwMaxDiff) + 1]);
    if (!pRecip)
        return Refuse(KASTATUS_KAIP_MEMORY_ALLOC_FAILED, "%s: memory allocation of %d bytes failed!", kFunc,
                      int((dwMaxDiff + 1) * 8));
    pRecip[0] = 0;
    for (uint32_t w = 1; w <= dwMaxDiff; ++w) pRecip[w] = ((uint64_t(1) << 63) - 1) / w + 1;

    if (bReallocate) {
        status = ReallocateDst(kFunc, pDstImgInfo, src.Width, src.Height, src.PixelFormat, dwOptions);
        if (status != KASTATUS_OK) return status;
    }
    uint8_t* pOut = pDstImgInfo ? pDstImgInfo->pData : src.pData;
    const size_t outInc = pDstImgInfo ? pDstImgInfo->LineIncrement : src.LineIncrement;
    for (size_t y = 0; y < src.Height; ++y)
        workers.pfnCorrect(src.pData + y * src.LineIncrement, pBlackImgInfo->pData + y * blackInc,
                           pWhiteImgInfo->pData + y * whiteInc, pOut + y * outInc, job,
                           aMean + (y & 1) * size_t(workers.iChannels), pRecip.get(), dwMaxDiff);
    return KASTATUS_OK;
}
