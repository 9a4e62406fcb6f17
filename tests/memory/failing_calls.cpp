// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "memory/failing_calls.h"

#include <cerrno>
#include <mutex>
#include <pthread.h>
#include <unordered_set>

namespace memory {

namespace {

Turnstile s_allocations;
Turnstile s_threads;

// What new and the containers use is not what is counted here: the system's libraries keep their own
// malloc().
class Blocks {
public:
    void* Add(void* block) {
        const std::lock_guard<std::mutex> held(lock_);
        if (block != nullptr) {
            blocks_.insert(block);
        }
        return block;
    }
    void Remove(void* block) {
        const std::lock_guard<std::mutex> held(lock_);
        blocks_.erase(block); // one that a system's library has made is not among them
    }
    size_t Count() {
        const std::lock_guard<std::mutex> held(lock_);
        return blocks_.size();
    }

private:
    std::mutex lock_;
    std::unordered_set<void*> blocks_;
};

// Never destroyed: the program's last threads may still free.
Blocks& AllBlocks() {
    static auto* const blocks = new Blocks;
    return *blocks;
}

} // namespace

void Turnstile::Start(int skip, int count) {
    first_failing_ = skip;
    failing_count_ = count;
    asked_ = 0;
    failed_ = 0;
    active_ = true;
}

void Turnstile::Stop() {
    active_ = false;
}

bool Turnstile::MustFail() {
    if (!active_) {
        return false;
    }
    const int number = asked_++;
    if (number < first_failing_ || number - first_failing_ >= failing_count_) {
        return false;
    }
    ++failed_;
    return true;
}

FailingCalls::FailingCalls(Turnstile& turnstile, int skip, int count) : turnstile_(turnstile) {
    turnstile_.Start(skip, count);
}

FailingCalls::~FailingCalls() {
    turnstile_.Stop();
}

FailingAllocations::FailingAllocations(int skip, int count)
    : FailingCalls(s_allocations, skip, count) {}

FailingThreads::FailingThreads(int skip, int count) : FailingCalls(s_threads, skip, count) {}

size_t BlocksHeld() {
    return AllBlocks().Count();
}

} // namespace memory

// The linker sends the program's own references here and gives the originals these names.
extern "C" {

void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
void __real_free(void* block);
int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                          void* argument);

void* __wrap_malloc(size_t size);
void* __wrap_calloc(size_t count, size_t size);
void* __wrap_realloc(void* block, size_t size);
void __wrap_free(void* block);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                          void* argument);

void* __wrap_malloc(size_t size) {
    return memory::s_allocations.MustFail() ? nullptr : memory::AllBlocks().Add(__real_malloc(size));
}

void* __wrap_calloc(size_t count, size_t size) {
    return memory::s_allocations.MustFail() ? nullptr
                                            : memory::AllBlocks().Add(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, size_t size) {
    if (memory::s_allocations.MustFail()) {
        return nullptr;
    }
    memory::AllBlocks().Remove(block); // before another thread can be given the same one
    void* grown = __real_realloc(block, size);
    memory::AllBlocks().Add(grown != nullptr ? grown : block);
    return grown;
}

void __wrap_free(void* block) {
    memory::AllBlocks().Remove(block);
    __real_free(block);
}

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                          void* argument) {
    return memory::s_threads.MustFail() ? EAGAIN
                                        : __real_pthread_create(thread, attributes, run, argument);
}

} // extern "C"
