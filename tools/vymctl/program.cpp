// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// vymctl: every function of the library from the shell.
#include "output.h"
#include "session.h"

#include <iostream>
#include <unistd.h>

namespace vymctl {
namespace {

constexpr const char* kVersion = "vymctl 1.0";

/// What is only to be written. Nothing when there is more to do.
std::optional<std::string> text_wanted(const Options& options) {
    if (options.help) {
        return help_text();
    }
    if (options.version) {
        return kVersion;
    }
    if (options.complete) {
        return complete_command_line(options.line);
    }
    return options.emit.empty() ? std::nullopt : std::optional(emit(options.emit));
}

int run_session(const Options& options) {
    Session session(options);
    int code = kDone;
    try {
        if (!options.script.empty()) {
            code = run_script(session, options.script);
        } else if (options.words.empty()) {
            code = run_prompt(session);
        } else {
            code = session.run(options.words);
        }
    } catch (const NoServer& error) {
        message("no server: " + std::string(error.what()) + " (vymctl doctor tells more)");
        code = kNoServer;
    }
    if (library().is_abandoned()) {
        // A thread is in a call that may never end; nothing may wait for it.
        std::cout << std::flush;
        _exit(code);
    }
    library().stop();
    return code;
}

} // namespace

int run(const std::vector<std::string>& words) {
    try {
        const Options options = read_options(words);
        if (const std::optional<std::string> text = text_wanted(options)) {
            output().line(*text);
            return kDone;
        }
        if (!options.script.empty() && !options.words.empty()) {
            throw Usage("-f FILE and a verb exclude each other");
        }
        if (options.script.empty() && options.words.empty() && isatty(STDIN_FILENO) == 0) {
            throw Usage("a verb is missing; without a terminal there is no prompt (vymctl --help)");
        }
        output().claim(options.verbose);
        // Before the first thread, so that signals come to one place.
        library();
        return run_session(options);
    } catch (const Usage& error) {
        message(error.what());
        return kUsage;
    } catch (const std::exception& error) {
        message(error.what());
        return kFailed;
    }
}

} // namespace vymctl
