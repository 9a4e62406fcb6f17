// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "reading.h"

#include "capture/format.h"
#include "capture/writer.h"
#include "child.h"
#include "sockets.h"
#include "workload.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {
namespace {

constexpr int kRecords = 4000;
// Times as in a flood, some of them in one second.
constexpr int64_t kFirstUs = 1'790'000'000'000'000;
constexpr int64_t kStepUs = 37;

std::string records() {
    const std::string event = notification() + '\0';
    std::string text;
    for (int i = 0; i < kRecords; ++i) {
        capture::append_piece(&text, false, kFirstUs + i * kStepUs, event);
    }
    return text;
}

[[noreturn]] void become(const std::string& program, const std::string& option, int processor,
                         int input) {
    stay_on(processor);
    dup2(input, STDIN_FILENO);
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    const char* const file = "-";
    if (option.empty()) {
        execl(program.c_str(), program.c_str(), file, nullptr);
    } else {
        execl(program.c_str(), program.c_str(), option.c_str(), file, nullptr);
    }
    give_up(program);
}

bool write_to_pipe(int fd, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(fd, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

} // namespace

double Reading::median_ns() const {
    return middle_of(ns_of_rounds);
}

double middle_of(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    const size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

std::vector<Reading> readings() {
    return {{"vymtrace, text", "", {}, 0, {}}, {"vymtrace, JSON", "--json", {}, 0, {}}};
}

bool measure(const std::string& program, int processor, long megabytes, Reading* reading) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        give_up("pipe");
    }
    const pid_t pid = fork();
    if (pid < 0) {
        give_up("fork");
    }
    if (pid == 0) {
        become(program, reading->option, processor, ends[0]);
    }
    close(ends[0]);
    signal(SIGPIPE, SIG_IGN);
    const std::string block = records();
    double bytes = 0;
    bool good = write_to_pipe(ends[1], capture::kFileHeader);
    while (good && bytes < static_cast<double>(megabytes) * 1e6) {
        good = write_to_pipe(ends[1], block);
        bytes += static_cast<double>(block.size());
    }
    close(ends[1]);
    int status = 0;
    rusage used{};
    while (wait4(pid, &status, 0, &used) < 0 && errno == EINTR) {
    }
    const double cpu = seconds(used.ru_utime) + seconds(used.ru_stime);
    reading->ns_of_rounds.push_back(cpu * 1e9 / bytes);
    reading->resident_kib = std::max(reading->resident_kib, static_cast<double>(used.ru_maxrss));
    return good && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace bench
