// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Standard output, which carries results and events and nothing else. The library prints there, too:
// what it prints is sent elsewhere, so that no reader of ours meets it.
#ifndef VYM_VYMCTL_OUTPUT_H
#define VYM_VYMCTL_OUTPUT_H

#include <functional>
#include <mutex>
#include <string>

namespace vymctl {

class Output {
public:
    /// Keeps standard output for this program, and lets descriptor 1 lead to standard error, or to
    /// nothing.
    void claim(bool show_diagnostics);
    /// A whole line in one piece; any thread may call.
    void line(const std::string& text);
    /// For who writes there without us.
    int descriptor() const { return fd_; }
    /// False when somebody reads who cannot take it any more.
    bool is_open() const { return open_; }

private:
    std::mutex mutex_;
    int fd_ = 1;
    bool open_ = true;
};

Output& output();

/// For people, on standard error: "vymctl: <text>".
void message(const std::string& text);

/// What a function of the library prints.
std::string printed_by(const std::function<void()>& function);

} // namespace vymctl

#endif
