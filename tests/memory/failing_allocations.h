// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_MEMORY_FAILING_ALLOCATIONS_H
#define VYM_TESTS_MEMORY_FAILING_ALLOCATIONS_H

namespace memory {

/**
 * While it lives the library's allocations fail, on every thread: the first `skip` succeed, the next
 * `count` fail, and later ones succeed again. What the tests, their framework and the system's
 * libraries allocate is not touched. One at a time.
 */
class FailingAllocations {
public:
    static constexpr int kAll = 1 << 30;

    explicit FailingAllocations(int skip = 0, int count = kAll);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;
    FailingAllocations(FailingAllocations&&) = delete;
    FailingAllocations& operator=(FailingAllocations&&) = delete;

    /** How many have failed so far. */
    [[nodiscard]] int Failed() const;
};

} // namespace memory

#endif
