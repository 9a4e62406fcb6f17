// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "measure.h"

#include "child.h"
#include "job.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sched.h>
#include <sstream>
#include <unistd.h>

namespace bench {
namespace {

constexpr useconds_t kLookEveryUs = 1000;
constexpr int kLooks = 10000;

// Start and end of a process are no part of a message: the difference of two runs is.
constexpr long kShort = 2000;
constexpr long kLong = 6000;
constexpr long kFewShort = 4;
constexpr long kFewLong = 12;

int last_processor() {
    cpu_set_t set;
    if (sched_getaffinity(0, sizeof set, &set) != 0) {
        return -1;
    }
    int last = -1;
    for (int i = 0; i < CPU_SETSIZE; ++i) {
        if (CPU_ISSET(static_cast<size_t>(i), &set)) {
            last = i;
        }
    }
    return last;
}

bool wait_for(const std::string& path) {
    for (int i = 0; i < kLooks; ++i) {
        if (access(path.c_str(), F_OK) == 0) {
            return true;
        }
        usleep(kLookEveryUs);
    }
    return false;
}

/// The number behind a word; -1 when it is not there.
double number_behind(const std::string& text, const std::string& word) {
    const size_t at = text.rfind(word);
    return at == std::string::npos ? -1 : std::strtod(text.c_str() + at + word.size(), nullptr);
}

std::string file_text(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

/// The calls of the last line, that of the sum: "100.00 0.034 2 12345 7 total".
double total_of(const std::string& table) {
    std::istringstream line(table.substr(table.rfind('\n', table.size() - 2) + 1));
    double percent = 0;
    double seconds = 0;
    double each = 0;
    double calls = -1;
    line >> percent >> seconds >> each >> calls;
    return calls;
}

struct Lengths {
    long shorter;
    long longer;
};

Lengths lengths_of(const Run& run) {
    return run.workload == "start" ? Lengths{kFewShort, kFewLong} : Lengths{kShort, kLong};
}

} // namespace

Bench::Bench(std::string programs, std::string directory)
    : programs_(std::move(programs)), directory_(std::move(directory)), processor_(last_processor()),
      has_strace_(on_path("strace")), has_valgrind_(on_path("valgrind")) {}

bool Bench::has(std::string_view candidate) const {
    return access((programs_ + "/bench_" + std::string(candidate)).c_str(), X_OK) == 0;
}

std::string Bench::run_client(const Run& run, long count, const std::vector<std::string>& under) const {
    const TempDirectory directory(directory_);
    Job job;
    job.directory = directory.path();
    const std::string program = programs_ + "/bench_" + std::string(run.candidate);
    const std::vector<std::string> arguments = {std::string(run.workload), std::string(run.variant),
                                                std::to_string(count), directory.path()};
    std::vector<std::string> server = {program, "serve"};
    server.insert(server.end(), arguments.begin(), arguments.end());
    std::vector<std::string> client = under;
    client.insert(client.end(), {program, "run"});
    client.insert(client.end(), arguments.begin(), arguments.end());

    const Child serving(server, processor_);
    if (!wait_for(job.socket_path())) {
        return {};
    }
    return Child(client, processor_).result();
}

std::optional<Cost> Bench::measure(const Run& run, long count) const {
    const std::string text = run_client(run, count, {});
    const auto report = nlohmann::json::parse(text, nullptr, false);
    if (!report.is_object()) {
        return std::nullopt;
    }
    const auto messages = report.value("messages", 1.0);
    Cost cost;
    cost.cpu_ns = report.value("cpu_ns", 0.0) / messages;
    cost.wall_ns = report.value("wall_ns", 0.0) / messages;
    cost.allocations = report.value("allocations", 0.0) / messages;
    cost.resident_kib = report.value("resident_kib", 0.0);
    cost.grown_kib = report.value("grown_kib", 0.0);
    return cost;
}

std::optional<double>
Bench::difference(const Run& run, const std::vector<std::string>& under,
                  const std::function<double(const std::string& log)>& counted) const {
    const TempDirectory logs(directory_);
    const std::string log = logs.path() + "/log";
    std::vector<std::string> command = under;
    command.back() += log;
    const auto count = [&](long messages) {
        return run_client(run, messages, command).empty() ? -1 : counted(file_text(log));
    };
    const Lengths lengths = lengths_of(run);
    const double few = count(lengths.shorter);
    const double many = count(lengths.longer);
    if (few < 0 || many < 0) {
        return std::nullopt;
    }
    return (many - few) / static_cast<double>(lengths.longer - lengths.shorter);
}

std::optional<double> Bench::instructions(const Run& run) const {
    if (!has_valgrind_) {
        return std::nullopt;
    }
    return difference(run,
                      {"valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", "--log-file="},
                      [](const std::string& log) { return number_behind(log, "Collected : "); });
}

std::optional<double> Bench::system_calls(const Run& run) const {
    if (!has_strace_) {
        return std::nullopt;
    }
    return difference(run, {"strace", "-f", "-c", "--output="}, total_of);
}

} // namespace bench
