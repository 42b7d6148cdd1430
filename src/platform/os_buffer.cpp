// os_buffer.cpp: aligned buffers that know their own blocks, so a foreign pointer is refused, not freed.
#include "platform/os_buffer.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <new>
#include <unordered_set>

namespace {

// The live blocks of this allocator. Freeing asks here first, so a pointer that did not come
// from us is answered with an error without ever reading the memory around it.
struct TRegistry {
    std::mutex mutex;
    std::unordered_set<void*> blocks;
};

TRegistry& Registry()
{
    static TRegistry* s_pRegistry = new TRegistry;  // never destroyed: buffers may outlive static teardown
    return *s_pRegistry;
}

// No image of the library needs more (sizes are 32-bit products); larger requests are refused
// rather than handed to the system allocator.
constexpr uint64_t kMaxBufferSize = uint64_t(1) << 36;

std::atomic<int> g_iAllocationsLeft{-1};

bool AllocationAllowed()
{
    int left = g_iAllocationsLeft.load();
    while (left >= 0) {
        if (left == 0) return false;
        if (g_iAllocationsLeft.compare_exchange_weak(left, left - 1)) return true;
    }
    return true;
}

}  // namespace

void* oxOsBufferCreateAligned(uint64_t dwSize, uint64_t dwAlignment, uint32_t /*dwFlags*/)
{
    if (dwAlignment < sizeof(void*)) dwAlignment = sizeof(void*);
    if ((dwAlignment & (dwAlignment - 1)) != 0) return nullptr;
    if (dwSize == 0) dwSize = 1;
    if (dwSize > kMaxBufferSize || dwAlignment > kMaxBufferSize) return nullptr;
    if (!AllocationAllowed()) return nullptr;
    const uint64_t rounded = (dwSize + dwAlignment - 1) & ~(dwAlignment - 1);
    void* p = std::aligned_alloc(size_t(dwAlignment), size_t(rounded));
    if (!p) return nullptr;
    TRegistry& registry = Registry();
    try {
        std::lock_guard<std::mutex> lock(registry.mutex);
        registry.blocks.insert(p);
    } catch (const std::bad_alloc&) {
        std::free(p);
        return nullptr;
    }
    return p;
}

bool oxOsBufferOwns(const void* pBuffer)
{
    if (!pBuffer) return false;
    TRegistry& registry = Registry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    return registry.blocks.count(const_cast<void*>(pBuffer)) != 0;
}

int oxOsBufferFree(void* pBuffer)
{
    if (!pBuffer) return 1;
    TRegistry& registry = Registry();
    {
        std::lock_guard<std::mutex> lock(registry.mutex);
        if (registry.blocks.erase(pBuffer) == 0) return 1;
    }
    std::free(pBuffer);
    return 0;
}

void oxOsBufferFailAfter(int n)
{
    g_iAllocationsLeft.store(n);
}
