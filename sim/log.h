// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the simulator tells the person who watches it: one line per happening.
#ifndef VYM_SIM_LOG_H
#define VYM_SIM_LOG_H

#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace sim {

enum class LogLevel {
    Quiet,    // nothing
    Problems, // commands that were not understood
    All,      // every command, event and note
};

class Log {
public:
    Log(LogLevel level, std::ostream& out) : level_(level), out_(out) {}

    /// Everything is recorded, too, whatever the level is.
    void record_with(std::function<void(std::string_view line)> record) { record_ = std::move(record); }

    /// Whether commands and events are worth the work of describing them.
    bool shows_traffic() const { return level_ >= LogLevel::All || record_; }

    void command(std::string_view line) { write(LogLevel::All, "<- ", line); }
    void event(std::string_view line) { write(LogLevel::All, "-> ", line); }
    /// What the world was told to do.
    void order(std::string_view line) { write(LogLevel::All, "== ", line); }
    void note(std::string_view line) { write(LogLevel::All, "   ", line); }
    /// What was done to the client on purpose.
    void misdeed(std::string_view line) { write(LogLevel::Problems, "evil ", line); }
    /// What a script says.
    void words(std::string_view line) { write(LogLevel::Problems, "-- ", line); }
    /// Why a script failed: shown however quiet it is to be.
    void failure(std::string_view line) { write(LogLevel::Quiet, "", line); }
    void problem(std::string_view line) { write(LogLevel::Problems, "vym-sim: ", line); }

private:
    void write(LogLevel least, std::string_view mark, std::string_view line) {
        if (level_ < least && !record_) {
            return;
        }
        const std::string text = std::string(mark).append(line);
        if (record_) {
            record_(text);
        }
        if (level_ >= least) {
            // One insertion and a flush: lines of two processes on one terminal must not mix.
            out_ << text + '\n' << std::flush;
        }
    }

    LogLevel level_;
    std::ostream& out_;
    std::function<void(std::string_view line)> record_;
};

} // namespace sim

#endif
