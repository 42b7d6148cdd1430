// convert_intr.cpp: the vector variants' gates. Each checks its switches in g_SSEChecker and hands the
// image to the widest build the switches allow (AVX2 only when the "use AVX" switch is on and AVX2 was
// detected); with its gate closed it returns 0 and the scalar member does the work. The x86 builds are
// compiled on x86 only; elsewhere every gate stays closed until NEON builds sit beside them.
#include "convert/convert_intr.h"

#include "core/unidef.h"

#if defined(__x86_64__) || defined(__i386__)
#define KAIP_CONVERT_X86 1
#include "convert/convert_simd.h"
#else
#define KAIP_CONVERT_X86 0
#endif

#define KAIP_LINE_ARGS dwWidth, dwHeight, pSrc, pDst, dwSrcLineInc, dwDstLineInc

#if KAIP_CONVERT_X86

using namespace convert;

namespace {

// A closed gate does nothing; an open one hands the image to the AVX2 build when the AVX switch is on
// and AVX2 was detected, else to the build the gate names.
template <class F, class... A>
int Widest(bool bGate, F avx2Fn, F baseFn, A... args)
{
    if (!bGate) return 0;
    return g_SSEChecker.UseAVX2() ? avx2Fn(args...) : baseFn(args...);
}

bool UseSSE2()
{
    return g_SSEChecker.m_bUseSSE2;
}
bool UseSSSE3()
{
    return g_SSEChecker.m_bUseSSSE3;
}

}  // namespace

int CopyBitmapData_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSE2(), avx2::CopyBitmapData, sse2::CopyBitmapData, KAIP_LINE_ARGS, bReverseLines);
}

int SwapColor8Data_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSSE3(), avx2::SwapColor8Data, ssse3::SwapColor8Data, KAIP_LINE_ARGS, bReverseLines);
}

int Convert_Mono8_to_BGR24_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSSE3(), avx2::Convert_Mono8_to_BGR24, ssse3::Convert_Mono8_to_BGR24, KAIP_LINE_ARGS,
                  bReverseLines);
}

int Convert_Mono8_to_BGR32_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSE2(), avx2::Convert_Mono8_to_BGR32, sse2::Convert_Mono8_to_BGR32, KAIP_LINE_ARGS, bReverseLines);
}

int Convert_BGR24_to_BGR32_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSSE3(), avx2::Convert_BGR24_to_BGR32, ssse3::Convert_BGR24_to_BGR32, KAIP_LINE_ARGS,
                  bReverseLines);
}

int Convert_RGB24_to_BGR32_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSSE3(), avx2::Convert_RGB24_to_BGR32, ssse3::Convert_RGB24_to_BGR32, KAIP_LINE_ARGS,
                  bReverseLines);
}

int Convert_RGB32_to_BGR32_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSE2(), avx2::Convert_RGB32_to_BGR32, sse2::Convert_RGB32_to_BGR32, KAIP_LINE_ARGS, bReverseLines);
}

// Source depths outside 8..16 have no defined reduction; the scalar member keeps them.
int Convert_MonoWord_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t dwSrcBits, bool bReverseLines)
{
    return Widest(UseSSE2() && dwSrcBits >= 8 && dwSrcBits <= 16, avx2::Convert_MonoWord_to_Mono8,
                  sse2::Convert_MonoWord_to_Mono8, KAIP_LINE_ARGS, dwSrcBits, bReverseLines);
}

// Only the high bytes are read, so the source depth does not matter.
int Convert_MonoPacked_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool bReverseLines)
{
    return Widest(UseSSSE3(), avx2::Convert_MonoPacked_to_Mono8, ssse3::Convert_MonoPacked_to_Mono8, KAIP_LINE_ARGS,
                  bReverseLines);
}

// A depth other than 10 or 12 goes to the scalar member, which reports it.
int Convert_MonoMipi_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t, bool bReverseLines)
{
    if (dwSrcBits == 10)
        return Widest(UseSSSE3(), avx2::Convert_MonoMipi10_to_Mono8, ssse3::Convert_MonoMipi10_to_Mono8, KAIP_LINE_ARGS,
                      bReverseLines);
    return Widest(UseSSSE3() && dwSrcBits == 12, avx2::Convert_MonoMipi12_to_Mono8, ssse3::Convert_MonoMipi12_to_Mono8,
                  KAIP_LINE_ARGS, bReverseLines);
}

int Convert_YCbCr422_8_to_BGR24_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSE2(), avx2::Convert_YCbCr422_8_to_BGR24, sse2::Convert_YCbCr422_8_to_BGR24, KAIP_LINE_ARGS,
                  bReverseLines);
}

int Convert_YCbCr422_8_to_RGB24_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSE2(), avx2::Convert_YCbCr422_8_to_RGB24, sse2::Convert_YCbCr422_8_to_RGB24, KAIP_LINE_ARGS,
                  bReverseLines);
}

int Convert_YCbCr422_8_to_BGR32_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSE2(), avx2::Convert_YCbCr422_8_to_BGR32, sse2::Convert_YCbCr422_8_to_BGR32, KAIP_LINE_ARGS,
                  bReverseLines);
}

int Convert_YCbCr422_8_to_RGB32_intr(KAIP_LINE_PARAMS, bool bReverseLines)
{
    return Widest(UseSSE2(), avx2::Convert_YCbCr422_8_to_RGB32, sse2::Convert_YCbCr422_8_to_RGB32, KAIP_LINE_ARGS,
                  bReverseLines);
}

// A vector member runs behind the SSE2 switch, by its AVX2 build when the AVX switch is on and AVX2 was
// detected, else by its SSSE3 build when that switch is on, else by its SSE2 build; a missing build is null.
template <class F, class... A>
int Vector(F avx2Fn, F ssse3Fn, F sse2Fn, A... args)
{
    if (!UseSSE2()) return 0;
    if (avx2Fn && g_SSEChecker.UseAVX2()) return avx2Fn(args...);
    return ssse3Fn && UseSSSE3() ? ssse3Fn(args...) : sse2Fn(args...);
}

using TLineFn = int (*)(KAIP_LINE_PARAMS, bool);
#define KAIP_BUILD_0(fn) nullptr
#define KAIP_BUILD_1(fn) fn
#define KAIP_DEFINE_VECTOR_MEMBER(name, kSsse3, kAvx2)                                                       \
    int name##_vec(KAIP_LINE_PARAMS, bool bReverseLines)                                                     \
    {                                                                                                        \
        return Vector<TLineFn>(KAIP_BUILD_##kAvx2(avx2::name), KAIP_BUILD_##kSsse3(ssse3::name), sse2::name, \
                               KAIP_LINE_ARGS, bReverseLines);                                               \
    }
KAIP_VECTOR_MEMBERS(KAIP_DEFINE_VECTOR_MEMBER)

int Convert_MonoPacked_to_Mono8_vec(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool bReverseLines)
{
    return UseSSE2() && sse2::Convert_MonoPacked_to_Mono8(KAIP_LINE_ARGS, bReverseLines);
}

int Convert_MonoMipi_to_Mono8_vec(KAIP_LINE_PARAMS, uint32_t dwSrcBits, uint32_t, bool bReverseLines)
{
    if (!UseSSE2()) return 0;
    if (dwSrcBits == 10) return sse2::Convert_MonoMipi10_to_Mono8(KAIP_LINE_ARGS, bReverseLines);
    return dwSrcBits == 12 && sse2::Convert_MonoMipi12_to_Mono8(KAIP_LINE_ARGS, bReverseLines);
}

#else  // not x86: the scalar members do all the work

#pragma GCC diagnostic ignored "-Wunused-parameter"

// clang-format off
int CopyBitmapData_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int SwapColor8Data_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_Mono8_to_BGR24_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_Mono8_to_BGR32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_BGR24_to_BGR32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_RGB24_to_BGR32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_RGB32_to_BGR32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_MonoWord_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t, bool) { return 0; }
int Convert_MonoPacked_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool) { return 0; }
int Convert_MonoMipi_to_Mono8_intr(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool) { return 0; }
int Convert_YCbCr422_8_to_BGR24_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_YCbCr422_8_to_RGB24_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_YCbCr422_8_to_BGR32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
int Convert_YCbCr422_8_to_RGB32_intr(KAIP_LINE_PARAMS, bool) { return 0; }
#define KAIP_DEFINE_VECTOR_MEMBER(name, kSsse3, kAvx2) int name##_vec(KAIP_LINE_PARAMS, bool) { return 0; }
KAIP_VECTOR_MEMBERS(KAIP_DEFINE_VECTOR_MEMBER)
int Convert_MonoPacked_to_Mono8_vec(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool) { return 0; }
int Convert_MonoMipi_to_Mono8_vec(KAIP_LINE_PARAMS, uint32_t, uint32_t, bool) { return 0; }
// clang-format on

#endif
