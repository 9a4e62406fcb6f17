// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "results.h"

#include "child.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <numeric>
#include <sstream>
#include <utility>

namespace bench {
namespace {

constexpr double kArmTextAndData = 48 * 1024;
constexpr double kArmBss = 16 * 1024;
// 200 MB/s.
constexpr double kNsOfByte = 5;
// Which pages of its program a process happens to touch differs by that much.
constexpr double kFlatKib = 128;
constexpr char kArmLabel[] = "libvym.so, armhf";

// Columns are what printf is good at; the compiler checks them.
__attribute__((format(printf, 1, 2))) std::string format(const char* text, ...) {
    std::array<char, 256> line{};
    va_list values;
    va_start(values, text);
    std::vsnprintf(line.data(), line.size(), text, values);
    va_end(values);
    return line.data();
}

double median_of(const std::vector<Cost>& rounds, double Cost::*member) {
    std::vector<double> values;
    values.reserve(rounds.size());
    for (const Cost& cost : rounds) {
        values.push_back(cost.*member);
    }
    return middle_of(std::move(values));
}

const Row* find(const Results& results, std::string_view workload, std::string_view label) {
    const auto found = std::find_if(results.rows.begin(), results.rows.end(), [&](const Row& row) {
        return row.run->workload == workload && row.run->label == label;
    });
    return found != results.rows.end() ? &*found : nullptr;
}

std::string optional_number(const std::optional<double>& number, int decimals) {
    return number ? format("%.*f", decimals, *number) : "-";
}

std::string line_of(const Row& row, double floor_cpu) {
    const Cost cost = row.median();
    const std::string ratio = floor_cpu > 0 ? format("%.2f", cost.cpu_ns / floor_cpu) : "-";
    return format("  %-31s %9.1f %7s %9.1f %9s %7s %7.2f %6.0f\n", row.run->label.data(), cost.cpu_ns,
                  ratio.c_str(), cost.wall_ns, optional_number(row.instructions, 0).c_str(),
                  optional_number(row.system_calls, 2).c_str(), cost.allocations, cost.resident_kib);
}

void add(Results* results, std::string text, double reached, double at_most) {
    results->verdicts.push_back({std::move(text), reached, at_most});
}

void judge_allocations(Results* results) {
    std::optional<double> most;
    for (const Row& row : results->rows) {
        const std::string_view workload = row.run->workload;
        if (row.run->candidate == "vym" && workload != "command" && workload != "round-trip" &&
            workload != "start") {
            most = std::max(most.value_or(0), row.median().allocations);
        }
    }
    if (most) {
        add(results, "allocations for an event, all profiles", *most, 0);
    }
    if (const Row* command = find(*results, "command", "vym")) {
        add(results, "allocations for a command", command->median().allocations, 1);
        if (command->system_calls) {
            add(results, "system calls for a command: the socket, the file", *command->system_calls,
                2.01);
        }
    }
}

void judge_sizes(Results* results) {
    for (const Size& size : results->sizes) {
        if (size.label == kArmLabel) {
            add(results, "armhf: text and data, bytes", static_cast<double>(size.text + size.data),
                kArmTextAndData);
            add(results, "armhf: bss, bytes", static_cast<double>(size.bss), kArmBss);
        }
    }
}

void judge_growth(Results* results) {
    if (const Row* row = find(*results, "ten-million", "vym, no capture")) {
        add(results, "memory grown over ten million events, KiB", row->median().grown_kib, 0);
    }
}

} // namespace

Cost Row::median() const {
    Cost middle;
    for (double Cost::*member :
         {&Cost::cpu_ns, &Cost::wall_ns, &Cost::allocations, &Cost::resident_kib, &Cost::grown_kib}) {
        middle.*member = median_of(rounds, member);
    }
    return middle;
}

std::optional<Size> size_of(const std::string& label, const std::string& file) {
    std::istringstream lines(output_of("size '" + file + "'"));
    std::string heading;
    std::getline(lines, heading);
    Size size;
    size.label = label;
    if (!(lines >> size.text >> size.data >> size.bss)) {
        return std::nullopt;
    }
    return size;
}

void judge(Results* results) {
    for (const Goal& goal : goals()) {
        const Row* row = find(*results, goal.workload, goal.label);
        const Row* against = find(*results, goal.against_workload, goal.against);
        if (row == nullptr || against == nullptr) {
            continue;
        }
        const bool exact = goal.by_instructions && row->instructions && against->instructions;
        const double cost = exact ? *row->instructions : row->median().cpu_ns;
        const double measure = exact ? *against->instructions : against->median().cpu_ns;
        if (measure > 0) {
            add(results, std::string(goal.text), cost / measure, goal.at_most);
        }
    }
    judge_allocations(results);
    judge_growth(results);
    for (const Reading& reading : results->readings) {
        add(results, reading.label + ": CPU ns for a byte of capture", reading.median_ns(), kNsOfByte);
        if (reading.grown_kib) {
            add(results, reading.label + ": KiB more for 2 GB than for 400 MB", *reading.grown_kib,
                kFlatKib);
        }
    }
    judge_sizes(results);
}

std::string table(const Results& results) {
    std::string text =
        format("\nfor each message                   CPU ns  /floor   wall ns  instruc.  "
               "sys.c.  alloc.    KiB\n");
    std::string_view workload;
    double floor_cpu = 0;
    for (const Row& row : results.rows) {
        if (row.run->workload != workload) {
            workload = row.run->workload;
            const Row* floor = find(results, workload, "floor");
            floor_cpu = floor != nullptr ? floor->median().cpu_ns : 0;
            text += std::string(title_of(workload)) + '\n';
        }
        text += line_of(row, floor_cpu);
    }
    if (!results.readings.empty()) {
        text += "Reading a capture from a pipe, on one processor          MB/s     KiB\n";
    }
    for (const Reading& reading : results.readings) {
        text += format("  %-50s %9.0f %7.0f\n", reading.label.c_str(), 1e3 / reading.median_ns(),
                       reading.resident_kib);
    }
    text += "Sizes in bytes                        text      data       bss\n";
    for (const Size& size : results.sizes) {
        text +=
            format("  %-31s %8ld  %8ld  %8ld\n", size.label.c_str(), size.text, size.data, size.bss);
    }
    text += "Goals                                                     reached   at most\n";
    for (const Verdict& verdict : results.verdicts) {
        const int decimals = verdict.at_most > 100 ? 0 : 2;
        text += format("  %-53s %9.*f %9.*f  %s\n", verdict.text.c_str(), decimals, verdict.reached,
                       decimals, verdict.at_most, verdict.met() ? "met" : "NOT MET");
    }
    return text;
}

nlohmann::json to_json(const Results& results) {
    nlohmann::json json = {{"rows", nlohmann::json::array()},
                           {"readings", nlohmann::json::array()},
                           {"sizes", nlohmann::json::array()},
                           {"goals", nlohmann::json::array()}};
    for (const Row& row : results.rows) {
        const Cost cost = row.median();
        nlohmann::json rounds = nlohmann::json::array();
        for (const Cost& round : row.rounds) {
            rounds.push_back(round.cpu_ns);
        }
        nlohmann::json one = {{"workload", row.run->workload},
                              {"candidate", row.run->label},
                              {"cpu_ns", cost.cpu_ns},
                              {"cpu_ns_of_rounds", rounds},
                              {"wall_ns", cost.wall_ns},
                              {"allocations", cost.allocations},
                              {"resident_kib", cost.resident_kib},
                              {"grown_kib", cost.grown_kib}};
        one["instructions"] = row.instructions ? nlohmann::json(*row.instructions) : nlohmann::json();
        one["system_calls"] = row.system_calls ? nlohmann::json(*row.system_calls) : nlohmann::json();
        json["rows"].push_back(one);
    }
    for (const Reading& reading : results.readings) {
        json["readings"].push_back({{"candidate", reading.label},
                                    {"cpu_ns_of_byte", reading.median_ns()},
                                    {"cpu_ns_of_byte_of_rounds", reading.ns_of_rounds},
                                    {"resident_kib", reading.resident_kib},
                                    {"grown_kib", reading.grown_kib.value_or(0)}});
    }
    for (const Size& size : results.sizes) {
        json["sizes"].push_back(
            {{"file", size.label}, {"text", size.text}, {"data", size.data}, {"bss", size.bss}});
    }
    for (const Verdict& verdict : results.verdicts) {
        json["goals"].push_back({{"goal", verdict.text},
                                 {"reached", verdict.reached},
                                 {"at_most", verdict.at_most},
                                 {"met", verdict.met()}});
    }
    return json;
}

} // namespace bench
