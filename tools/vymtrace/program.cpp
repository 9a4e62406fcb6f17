// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "program.h"

#include "dissector.h"
#include "json_lines.h"
#include "lines.h"
#include "options.h"
#include "report.h"
#include "scrub.h"
#include "stats.h"
#include "trace.h"

#include <cstdlib>
#include <exception>
#include <memory>
#include <ostream>
#include <unistd.h>

namespace trace {
namespace {

constexpr int kUsageError = 2;

bool wants_colour(int out) {
    const char* refused = std::getenv("NO_COLOR");
    return isatty(out) == 1 && (refused == nullptr || *refused == '\0');
}

std::string file_name(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::unique_ptr<Consumer> make_consumer(const Options& options, Output& out, bool colour) {
    switch (options.task) {
    case Task::Json:
        return std::make_unique<JsonLines>(out);
    case Task::Html:
        return std::make_unique<Report>(file_name(options.file), options.to);
    case Task::Stats:
        return std::make_unique<Stats>(out, Stats::Style{options.json, options.conditions.utc});
    default:
        return std::make_unique<Lines>(out, Lines::Style{options.conditions.utc, colour});
    }
}

int run(const Options& options, int out_fd, std::ostream& err) {
    Output out(out_fd);
    if (options.task == Task::Done || options.task == Task::Dissector) {
        out.line() += options.task == Task::Done ? options.text : dissector();
        out.flush();
        return 0;
    }
    if (options.task == Task::Scrub) {
        return scrub(options.file, options.to, err);
    }
    if (options.task == Task::Html) {
        refuse_same_file(options.file, options.to);
    }
    const auto consumer = make_consumer(options, out, wants_colour(out_fd));
    return trace::run(options.file, options.follow, Filter(options.conditions), *consumer, err);
}

} // namespace

int run_program(int argc, const char* const* argv, int out, std::ostream& err) {
    try {
        return run(parse_options(argc, argv), out, err);
    } catch (const UsageError& error) {
        err << "vymtrace: " << error.what() << " (vymtrace --help shows the options)\n";
        return kUsageError;
    } catch (const std::exception& error) {
        err << "vymtrace: " << error.what() << "\n";
        return 1;
    }
}

} // namespace trace
