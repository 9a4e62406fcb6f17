// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_LIMITS_H
#define VYM_TESTS_SUPPORT_LIMITS_H

#include <vector>

#include <sys/resource.h>

namespace support {

/** While it lives the process may have `count` descriptors; restored with the object. */
class DescriptorLimit {
public:
    explicit DescriptorLimit(rlim_t count);
    ~DescriptorLimit();
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;
    DescriptorLimit(DescriptorLimit&&) = delete;
    DescriptorLimit& operator=(DescriptorLimit&&) = delete;

private:
    rlimit before_{};
};

/** Makes every new descriptor fail. */
class NoMoreDescriptors : public DescriptorLimit {
public:
    NoMoreDescriptors() : DescriptorLimit(3) {}
};

/** Allows descriptors up to 2047. */
class ManyDescriptors : public DescriptorLimit {
public:
    ManyDescriptors() : DescriptorLimit(2048) {}
};

/** Takes all free numbers below `first_free`, so that the next descriptor lies at or above it. */
class OccupiedDescriptors {
public:
    explicit OccupiedDescriptors(int first_free);
    ~OccupiedDescriptors();
    OccupiedDescriptors(const OccupiedDescriptors&) = delete;
    OccupiedDescriptors& operator=(const OccupiedDescriptors&) = delete;
    OccupiedDescriptors(OccupiedDescriptors&&) = delete;
    OccupiedDescriptors& operator=(OccupiedDescriptors&&) = delete;

private:
    std::vector<int> fds_;
};

/** Closes or replaces standard input for a while; what it was comes back with the object at the latest.
 */
class StandardInput {
public:
    StandardInput();
    ~StandardInput();
    StandardInput(const StandardInput&) = delete;
    StandardInput& operator=(const StandardInput&) = delete;
    StandardInput(StandardInput&&) = delete;
    StandardInput& operator=(StandardInput&&) = delete;

    static void Close();
    static void Replace(int fd);
    void Restore();

private:
    int saved_;
};

} // namespace support

#endif
