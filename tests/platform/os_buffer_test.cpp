// os_buffer_test.cpp: alignment of every power of two, refusal of foreign pointers, failure injection.
#include "platform/os_buffer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>

namespace {

TEST(OsBuffer, AlignsToAnyPowerOfTwo)
{
    for (uint64_t alignment = 1; alignment <= 4096; alignment *= 2) {
        for (uint64_t size : {1ull, 7ull, 64ull, 1000ull}) {
            void* p = oxOsBufferCreateAligned(size, alignment, 0);
            ASSERT_NE(p, nullptr);
            EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % alignment, 0u);
            static_cast<uint8_t*>(p)[size - 1] = 1;
            EXPECT_EQ(oxOsBufferFree(p), 0);
        }
    }
    EXPECT_EQ(oxOsBufferCreateAligned(16, 48, 0), nullptr);
    EXPECT_EQ(oxOsBufferCreateAligned(UINT64_MAX, 64, 0), nullptr);
    EXPECT_EQ(oxOsBufferCreateAligned(UINT64_MAX / 2, 64, 0), nullptr);
    EXPECT_EQ(oxOsBufferCreateAligned((1ull << 36) + 1, 64, 0), nullptr);
}

TEST(OsBuffer, RefusesPointersItDidNotHandOut)
{
    EXPECT_NE(oxOsBufferFree(nullptr), 0);
    int onStack = 0;
    EXPECT_NE(oxOsBufferFree(&onStack), 0);
    void* heap = std::malloc(32);
    EXPECT_NE(oxOsBufferFree(heap), 0);
    std::free(heap);
    void* p = oxOsBufferCreateAligned(100, 64, 0);
    EXPECT_NE(oxOsBufferFree(static_cast<uint8_t*>(p) + 1), 0);
    EXPECT_EQ(oxOsBufferFree(p), 0);
    EXPECT_NE(oxOsBufferFree(p), 0) << "a second free is refused";
}

TEST(OsBuffer, FailureInjection)
{
    oxOsBufferFailAfter(1);
    void* first = oxOsBufferCreateAligned(8, 64, 0);
    void* second = oxOsBufferCreateAligned(8, 64, 0);
    oxOsBufferFailAfter(-1);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    EXPECT_EQ(oxOsBufferFree(first), 0);
}

}  // namespace
