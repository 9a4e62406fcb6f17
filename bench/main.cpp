// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// vym_bench: runs every candidate with every workload, one after the other in several rounds, and
// prints one table.

#include "measure.h"
#include "reading.h"
#include "results.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

namespace {

using bench::Bench;
using bench::Results;
using bench::Row;
using bench::Run;

// A slice shows that all of it works; its figures are worth nothing.
constexpr long kQuickPart = 40;
constexpr long kQuickLeast = 20;
/// Of a capture that is read.
constexpr long kMegabytes = 400;
constexpr long kManyMegabytes = 2000;

struct Options {
    int rounds = 5;
    bool quick = false;
    bool count = true;
    std::string json;
    std::string vymtrace;
    std::string directory = "/tmp";
    std::vector<std::string> workloads;
    std::vector<std::string> sizes;
};

void parse(CLI::App* app, Options* options) {
    app->add_option("--rounds", options->rounds, "Each candidate runs so many times; medians are shown")
        ->check(CLI::Range(1, 99));
    app->add_option("--json", options->json, "Write the results to this file, too");
    app->add_option("--directory", options->directory, "Where sockets and captures are made")
        ->check(CLI::ExistingDirectory);
    app->add_option("--vymtrace", options->vymtrace, "Measure this vymtrace, too")
        ->check(CLI::ExistingFile);
    app->add_option("--only", options->workloads,
                    "Only these workloads: event, flood, command, round-trip, ..., reading");
    app->add_option("--size", options->sizes, "LABEL=FILE: show this library's size, too");
    app->add_flag("--quick", options->quick, "One short round that only shows that everything works");
    app->add_flag("!--no-counts", options->count, "Without instructions and system calls");
}

bool wanted(const Options& options, std::string_view workload) {
    return options.workloads.empty() || std::find(options.workloads.begin(), options.workloads.end(),
                                                  workload) != options.workloads.end();
}

void progress(const std::string& what) {
    std::fprintf(stderr, "\r\033[K%s", what.c_str());
}

long count_of(const Options& options, const Run& run) {
    return options.quick ? std::max(run.count / kQuickPart, kQuickLeast) : run.count;
}

/// False when a run has failed.
bool measure(const Options& options, const Bench& bench, Results* results) {
    bool good = true;
    const int rounds = options.quick ? 1 : options.rounds;
    for (int round = 0; round < rounds; ++round) {
        for (Row& row : results->rows) {
            const std::string name =
                std::string(row.run->workload) + ", " + std::string(row.run->label);
            progress("round " + std::to_string(round + 1) + " of " + std::to_string(rounds) + ": " +
                     name);
            const auto cost = bench.measure(*row.run, count_of(options, *row.run));
            if (cost) {
                row.rounds.push_back(*cost);
            } else {
                std::fprintf(stderr, "\nvym_bench: no result of %s\n", name.c_str());
                good = false;
            }
        }
    }
    return good;
}

void count(const Bench& bench, Results* results) {
    for (Row& row : results->rows) {
        progress("counting: " + std::string(row.run->workload) + ", " + std::string(row.run->label));
        row.system_calls = bench.system_calls(*row.run);
        row.instructions = bench.instructions(*row.run);
    }
}

bool measure_reading(const Options& options, const Bench& bench, long megabytes,
                     bench::Reading* reading) {
    const bool good = bench::measure(options.vymtrace, bench.processor(), megabytes, reading);
    if (!good) {
        std::fprintf(stderr, "\nvym_bench: no result of %s\n", reading->label.c_str());
    }
    return good;
}

/// Whether memory depends on how long the capture is.
bool measure_growth(const Options& options, const Bench& bench, bench::Reading* reading) {
    progress("2 GB: " + reading->label);
    bench::Reading large = *reading;
    large.resident_kib = 0;
    const bool good = measure_reading(options, bench, kManyMegabytes, &large);
    reading->grown_kib = large.resident_kib - reading->resident_kib;
    return good;
}

/// False when a run has failed.
bool measure_readings(const Options& options, const Bench& bench, Results* results) {
    if (options.vymtrace.empty() || !wanted(options, "reading")) {
        return true;
    }
    bool good = true;
    results->readings = bench::readings();
    const int rounds = options.quick ? 1 : options.rounds;
    const long megabytes = options.quick ? kMegabytes / kQuickPart : kMegabytes;
    for (int round = 0; round < rounds; ++round) {
        for (bench::Reading& reading : results->readings) {
            progress("round " + std::to_string(round + 1) + " of " + std::to_string(rounds) + ": " +
                     reading.label);
            good &= measure_reading(options, bench, megabytes, &reading);
        }
    }
    for (bench::Reading& reading : results->readings) {
        good &= options.quick || measure_growth(options, bench, &reading);
    }
    return good;
}

void add_sizes(const Options& options, Results* results) {
    for (const std::string& size : options.sizes) {
        const size_t equals = size.find('=');
        if (equals == std::string::npos) {
            continue;
        }
        if (auto found = bench::size_of(size.substr(0, equals), size.substr(equals + 1))) {
            results->sizes.push_back(*found);
        }
    }
}

bool write_json(const Options& options, const Results& results) {
    if (options.json.empty()) {
        return true;
    }
    std::ofstream file(options.json);
    file << bench::to_json(results).dump(2) << '\n';
    return file.flush().good();
}

int run(const Options& options) {
    const Bench bench(std::filesystem::read_symlink("/proc/self/exe").parent_path(), options.directory);
    Results results;
    for (const Run& run : bench::plan()) {
        if (wanted(options, run.workload) && bench.has(run.candidate)) {
            Row row;
            row.run = &run;
            results.rows.push_back(row);
        }
    }
    bool good = measure(options, bench, &results);
    good &= measure_readings(options, bench, &results);
    if (options.count && !options.quick) {
        count(bench, &results);
    }
    add_sizes(options, &results);
    bench::judge(&results);
    progress("");
    std::fputs(bench::table(results).c_str(), stdout);
    if (!write_json(options, results)) {
        std::fprintf(stderr, "vym_bench: %s cannot be written\n", options.json.c_str());
        return 1;
    }
    return good ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
    try {
        CLI::App app("Measures the library beside what else could be used");
        Options options;
        parse(&app, &options);
        CLI11_PARSE(app, argc, argv);
        return run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vym_bench: %s\n", error.what());
        return 1;
    }
}
