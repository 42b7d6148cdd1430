// cpu.cpp: instruction sets from cpuid, with xgetbv for the operating system's state of the wide registers.
#include "platform/cpu.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>

namespace {

struct TCpuFeatures {
    bool bSSE2 = false, bSSSE3 = false, bSSE42 = false, bAVX = false, bAVX2 = false;
};

unsigned long long ReadXcr0()
{
    unsigned int eax, edx;
    __asm__ volatile("xgetbv" : "=a"(eax), "=d"(edx) : "c"(0));
    return (static_cast<unsigned long long>(edx) << 32) | eax;
}

TCpuFeatures Detect()
{
    TCpuFeatures f;
    unsigned int eax, ebx, ecx, edx;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) return f;
    f.bSSE2 = (edx & bit_SSE2) != 0;
    f.bSSSE3 = (ecx & bit_SSSE3) != 0;
    f.bSSE42 = (ecx & bit_SSE4_2) != 0;
    const bool osSavesYmm = (ecx & bit_OSXSAVE) != 0 && (ReadXcr0() & 0x6) == 0x6;
    f.bAVX = (ecx & bit_AVX) != 0 && osSavesYmm;
    if (f.bAVX && __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx)) f.bAVX2 = (ebx & bit_AVX2) != 0;
    return f;
}

const TCpuFeatures& Features()
{
    static const TCpuFeatures s_features = Detect();
    return s_features;
}

}  // namespace

int pmSSE2Supported()
{
    return Features().bSSE2;
}
int pmSSSE3Supported()
{
    return Features().bSSSE3;
}
int pmSSE42Supported()
{
    return Features().bSSE42;
}
int pmAVXSupported()
{
    return Features().bAVX;
}
int pmAVX2Supported()
{
    return Features().bAVX2;
}
int pmNEONSupported()
{
    return 0;
}

#else  // other processors: no x86 sets; NEON is part of every 64-bit Arm processor

int pmSSE2Supported()
{
    return 0;
}
int pmSSSE3Supported()
{
    return 0;
}
int pmSSE42Supported()
{
    return 0;
}
int pmAVXSupported()
{
    return 0;
}
int pmAVX2Supported()
{
    return 0;
}
#if defined(__aarch64__)
int pmNEONSupported()
{
    return 1;
}
#else
int pmNEONSupported()
{
    return 0;
}
#endif

#endif
