// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// usage: bench_<candidate> serve|run <workload> <variant> <count> <directory>
//
// The result goes to descriptor 3: standard output belongs to what is measured.

#include "candidate.h"
#include "sockets.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr int kResult = 3;

} // namespace

int main(int argc, char** argv) {
    if (argc != 6) {
        std::fprintf(stderr, "usage: %s serve|run WORKLOAD VARIANT COUNT DIRECTORY\n", argv[0]);
        return 2;
    }
    bench::Job job;
    job.workload = argv[2];
    job.variant = argv[3];
    job.count = std::strtol(argv[4], nullptr, 10);
    job.directory = argv[5];
    if (std::strcmp(argv[1], "serve") == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        bench::serve(job);
    }
    const std::string result = bench::run(job);
    if (write(kResult, result.data(), result.size()) != static_cast<ssize_t>(result.size())) {
        bench::give_up("descriptor 3, for the result");
    }
    return 0;
}
