// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Counts what the C library's heap is asked for, by standing in front of it.

#include "meter.h"

#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace {

std::atomic<uint64_t> s_allocations{0};

void count() {
    s_allocations.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

uint64_t bench::allocations() {
    return s_allocations.load(std::memory_order_relaxed);
}

// glibc's own entries, under the names that it keeps for such a front.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t number, size_t size);
void* __libc_realloc(void* old, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

void* malloc(size_t size) {
    count();
    return __libc_malloc(size);
}

void* calloc(size_t nmemb, size_t size) {
    count();
    return __libc_calloc(nmemb, size);
}

void* realloc(void* ptr, size_t size) {
    count();
    return __libc_realloc(ptr, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    count();
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** memptr, size_t alignment, size_t size) {
    count();
    *memptr = __libc_memalign(alignment, size);
    return *memptr != nullptr ? 0 : ENOMEM;
}
}
