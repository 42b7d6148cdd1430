// os_buffer.h: the kit's aligned buffer allocator.
#pragma once

#include <cstddef>
#include <cstdint>

// A buffer of at least dwSize bytes aligned to dwAlignment (a power of two), or null; sizes
// above 64 GiB are refused.
void* oxOsBufferCreateAligned(uint64_t dwSize, uint64_t dwAlignment, uint32_t dwFlags);
// Frees a buffer of this allocator: 0 on success, non-zero (nothing freed) for null or a
// pointer that this allocator did not hand out.
int oxOsBufferFree(void* pBuffer);
// True when pBuffer is a live buffer of this allocator (one that oxOsBufferFree would free).
bool oxOsBufferOwns(const void* pBuffer);
// Test hook: the next n allocations succeed, every later one fails, until reset with -1.
void oxOsBufferFailAfter(int n);
