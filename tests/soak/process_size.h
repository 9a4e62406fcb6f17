// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What a process takes: memory and descriptors.
#ifndef VYM_TESTS_SOAK_PROCESS_SIZE_H
#define VYM_TESTS_SOAK_PROCESS_SIZE_H

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/types.h>

namespace soak {

struct ProcessSize {
    long resident_kb = 0;
    long descriptors = 0;
};

inline ProcessSize SizeOf(pid_t process) {
    const std::string directory = "/proc/" + std::to_string(process);
    ProcessSize size;
    std::ifstream status(directory + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) {
            size.resident_kb = std::stol(line.substr(sizeof "VmRSS:"));
        }
    }
    const std::filesystem::directory_iterator all(directory + "/fd");
    size.descriptors = std::distance(begin(all), end(all));
    return size;
}

/** Compares what a process takes after a while with what it takes at the end. */
class Flatness {
public:
    Flatness(std::string name, pid_t process) : name_(std::move(name)), process_(process) {}

    void WarmedUp() { first_ = last_ = SizeOf(process_); }

    /** Says what it was and is. False when it has grown. */
    bool IsFlat() {
        last_ = SizeOf(process_);
        std::fprintf(stderr, "  %s: %ld kB resident (%ld after warm-up), %ld descriptors (%ld)\n",
                     name_.c_str(), last_.resident_kb, first_.resident_kb, last_.descriptors,
                     first_.descriptors);
        return last_.descriptors == first_.descriptors &&
               (!kMemoryCounts || last_.resident_kb <= first_.resident_kb + kMostGrowthKb);
    }

private:
    // Sanitizers keep what was freed, and an emulator keeps what it has translated.
#ifdef VYM_SOAK_MEMORY
    static constexpr bool kMemoryCounts = true;
#else
    static constexpr bool kMemoryCounts = false;
#endif
    // Less than a byte for each ten events of a whole run.
    static constexpr long kMostGrowthKb = 768;

    std::string name_;
    pid_t process_;
    ProcessSize first_;
    ProcessSize last_;
};

} // namespace soak

#endif
