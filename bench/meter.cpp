// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "meter.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace bench {
namespace {

int64_t now_ns(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

// "1234 567 ...": all pages, those in memory, and more; without allocating, since that is counted.
long resident_kib() {
    std::array<char, 256> text{};
    const int fd = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    if (fd < 0 || read(fd, text.data(), text.size() - 1) <= 0) {
        return 0;
    }
    close(fd);
    const char* behind_first = std::strchr(text.data(), ' ');
    const long pages = behind_first != nullptr ? std::strtol(behind_first, nullptr, 10) : 0;
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

} // namespace

Reading take_reading() {
    Reading reading;
    reading.resident_kib = resident_kib();
    reading.allocations = allocations();
    reading.wall_ns = now_ns(CLOCK_MONOTONIC);
    reading.cpu_ns = now_ns(CLOCK_PROCESS_CPUTIME_ID);
    return reading;
}

Meter::Meter(long warm_up, long count) : warm_up_(warm_up), count_(count), ended_{} {
    sem_init(&ended_, 0, 0);
}

Meter::~Meter() {
    sem_destroy(&ended_);
}

void Meter::read() {
    if (seen_ == warm_up_) {
        first_ = take_reading();
        // The memory that taking a reading needs is there now, and what the reading has used is
        // nobody's.
        const Reading again = take_reading();
        first_.resident_kib = again.resident_kib;
        first_.allocations = again.allocations + (again.allocations - first_.allocations);
        first_.cpu_ns = again.cpu_ns;
        first_.wall_ns = again.wall_ns;
        return;
    }
    last_.cpu_ns = now_ns(CLOCK_PROCESS_CPUTIME_ID);
    last_.wall_ns = now_ns(CLOCK_MONOTONIC);
    const Reading rest = take_reading();
    last_.allocations = rest.allocations;
    last_.resident_kib = rest.resident_kib;
    sem_post(&ended_);
}

void Meter::wait() {
    while (sem_wait(&ended_) != 0 && errno == EINTR) {
    }
}

std::string Meter::report(long messages_per_tick) const {
    const nlohmann::json report = {
        {"messages", count_ * messages_per_tick},
        {"cpu_ns", last_.cpu_ns - first_.cpu_ns},
        {"wall_ns", last_.wall_ns - first_.wall_ns},
        {"allocations", last_.allocations - first_.allocations},
        {"resident_kib", last_.resident_kib},
        {"grown_kib", last_.resident_kib - first_.resident_kib},
    };
    return report.dump() + '\n';
}

} // namespace bench
