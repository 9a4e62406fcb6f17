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
    /// Shows on the terminal how far long work is, below what is written; nothing ends it. Nowhere
    /// else.
    void progress(const std::string& text);
    /// "vymctl: <text>" on standard error.
    void message(const std::string& text);
    /// For who writes there without us.
    int descriptor() const { return fd_; }
    /// False when somebody reads who cannot take it any more.
    bool is_open() const { return open_; }

private:
    void above_progress(const std::function<void()>& write_it);

    std::mutex mutex_;
    int fd_ = 1;
    bool open_ = true;
    std::string progress_;
};

Output& output();

/// While it lives, long work may say how far it is.
class Progress {
public:
    Progress() = default;
    ~Progress() { output().progress(""); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    Progress(Progress&&) = delete;
    Progress& operator=(Progress&&) = delete;

    static void show(const std::string& text) { output().progress(text); }
};

/// For people, on standard error: "vymctl: <text>".
void message(const std::string& text);

/// What a function of the library prints.
std::string printed_by(const std::function<void()>& function);

} // namespace vymctl

#endif
