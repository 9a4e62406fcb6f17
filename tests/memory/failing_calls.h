// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_MEMORY_FAILING_CALLS_H
#define VYM_TESTS_MEMORY_FAILING_CALLS_H

#include <atomic>
#include <cstddef>

namespace memory {

/** Which calls of one kind fail, whatever thread makes them. */
class Turnstile {
public:
    void Start(int skip, int count);
    void Stop();
    /** Whether the call that asks is one that fails. */
    bool MustFail();

    [[nodiscard]] int Asked() const { return asked_; }
    [[nodiscard]] int Failed() const { return failed_; }

private:
    std::atomic<int> first_failing_{0};
    std::atomic<int> failing_count_{0};
    std::atomic<int> asked_{0};
    std::atomic<int> failed_{0};
    std::atomic<bool> active_{false};
};

/**
 * While it lives calls of the library fail, on every thread: the first `skip` succeed, the next `count`
 * fail, and later ones succeed again. What the tests, their framework and the system's libraries do is
 * not touched. One of a kind at a time.
 */
class FailingCalls {
public:
    static constexpr int kAll = 1 << 30;

    FailingCalls(const FailingCalls&) = delete;
    FailingCalls& operator=(const FailingCalls&) = delete;
    FailingCalls(FailingCalls&&) = delete;
    FailingCalls& operator=(FailingCalls&&) = delete;

    /** How many calls there were so far. */
    [[nodiscard]] int Asked() const { return turnstile_.Asked(); }
    /** How many of them have failed. */
    [[nodiscard]] int Failed() const { return turnstile_.Failed(); }

protected:
    FailingCalls(Turnstile& turnstile, int skip, int count);
    ~FailingCalls();

private:
    Turnstile& turnstile_;
};

/** Allocations. */
class FailingAllocations : public FailingCalls {
public:
    explicit FailingAllocations(int skip = 0, int count = kAll);
};

/** Allocations that are counted and do not fail. */
class CountedAllocations : public FailingAllocations {
public:
    CountedAllocations() : FailingAllocations(0, 0) {}
};

/** Starts of threads. */
class FailingThreads : public FailingCalls {
public:
    explicit FailingThreads(int skip = 0, int count = kAll);
};

/** How many blocks of memory the library holds. */
size_t BlocksHeld();

} // namespace memory

#endif
