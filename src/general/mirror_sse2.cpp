// mirror_sse2.cpp: the left-right mirror's SSE2 blocks and non-temporal line copy, and the choice of the widest
// set allowed.
#include <algorithm>
#include <cstring>

#include "core/unidef.h"
#include "general/geometry.h"

#if defined(__SSE2__)
#include "general/mirror_kernel.h"

namespace {

// n bytes from s to d: the part of d on whole 16-byte blocks with non-temporal stores, the edges with plain ones.
void StreamBytes(const uint8_t* s, uint8_t* d, size_t n)
{
    const size_t head = std::min(n, size_t(-reinterpret_cast<uintptr_t>(d) & 15));
    std::memcpy(d, s, head);
    size_t i = head;
    for (; i + 64 <= n; i += 64) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 16));
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 32));
        const __m128i e = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i + 48));
        _mm_stream_si128(reinterpret_cast<__m128i*>(d + i), a);
        _mm_stream_si128(reinterpret_cast<__m128i*>(d + i + 16), b);
        _mm_stream_si128(reinterpret_cast<__m128i*>(d + i + 32), c);
        _mm_stream_si128(reinterpret_cast<__m128i*>(d + i + 48), e);
    }
    for (; i + 16 <= n; i += 16)
        _mm_stream_si128(reinterpret_cast<__m128i*>(d + i), _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i)));
    std::memcpy(d + i, s + i, n - i);
}

void StreamFence()
{
    _mm_sfence();
}

}  // namespace
#endif

geometry::TMirrorBlocks geometry::MirrorBlocks_intr(unsigned P)
{
#if defined(__SSE2__)
    if (!g_SSEChecker.m_bUseSSE2) return {};
    TMirrorBlocks blocks;
    if (g_SSEChecker.UseAVX2()) {
        blocks = MirrorBlocks_avx2(P);
    } else if (g_SSEChecker.m_bUseSSSE3) {
        blocks = MirrorBlocks_ssse3(P);
    } else {
        // Without a byte shuffle, reversing 16 single bytes takes six register operations: two 64-bit
        // byte swaps of the scalar words cost less, so they copy single bytes here.
        blocks = MirrorBlocks<V128<false>, V128<false>>(P);
        if (P == 1) blocks.Reverse = nullptr;
    }
    blocks.Stream = StreamBytes;
    blocks.StreamFence = StreamFence;
    return blocks;
#else
    return {};
#endif
}
