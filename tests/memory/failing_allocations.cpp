// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "memory/failing_allocations.h"

#include <atomic>
#include <cstddef>

namespace {

std::atomic<int> s_first_failing{memory::FailingAllocations::kAll};
std::atomic<int> s_failing_count{0};
std::atomic<int> s_asked{0};
std::atomic<int> s_failed{0};
std::atomic<bool> s_active{false};

bool MustFail() {
    if (!s_active) {
        return false;
    }
    const int number = s_asked++;
    if (number < s_first_failing || number - s_first_failing >= s_failing_count) {
        return false;
    }
    ++s_failed;
    return true;
}

} // namespace

// The linker sends the program's own references here and gives the originals these names.
extern "C" {

void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);

void* __wrap_malloc(size_t size);
void* __wrap_calloc(size_t count, size_t size);
void* __wrap_realloc(void* block, size_t size);

void* __wrap_malloc(size_t size) {
    return MustFail() ? nullptr : __real_malloc(size);
}

void* __wrap_calloc(size_t count, size_t size) {
    return MustFail() ? nullptr : __real_calloc(count, size);
}

void* __wrap_realloc(void* block, size_t size) {
    return MustFail() ? nullptr : __real_realloc(block, size);
}

} // extern "C"

namespace memory {

FailingAllocations::FailingAllocations(int skip, int count) {
    s_first_failing = skip;
    s_failing_count = count;
    s_asked = 0;
    s_failed = 0;
    s_active = true;
}

FailingAllocations::~FailingAllocations() {
    s_active = false;
}

int FailingAllocations::Failed() const {
    return s_failed;
}

} // namespace memory
