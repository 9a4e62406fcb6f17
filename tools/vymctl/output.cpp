// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "output.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace vymctl {
namespace {

constexpr const char* kEmptyLine = "\r\033[K";

/// On standard error. Nobody is left to be told when it fails.
void tell(const std::string& text) {
    static_cast<void>(!write(STDERR_FILENO, text.data(), text.size()));
}

} // namespace

void Output::claim(bool show_diagnostics) {
    std::fflush(stdout);
    fd_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    const int elsewhere = show_diagnostics ? STDERR_FILENO : open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(elsewhere, STDOUT_FILENO);
    if (elsewhere > STDERR_FILENO) {
        close(elsewhere);
    }
    // In step with our own messages.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

void Output::above_progress(const std::function<void()>& write_it) {
    const std::lock_guard lock(mutex_);
    if (!progress_.empty()) {
        tell(kEmptyLine);
    }
    write_it();
    if (!progress_.empty()) {
        tell(progress_);
    }
}

void Output::line(const std::string& text) {
    const std::string whole = text + '\n';
    above_progress([&] {
        for (size_t done = 0; done < whole.size() && open_;) {
            const ssize_t count = write(fd_, whole.data() + done, whole.size() - done);
            if (count > 0) {
                done += static_cast<size_t>(count);
            } else if (errno != EINTR) {
                open_ = false;
            }
        }
    });
}

void Output::message(const std::string& text) {
    above_progress([&] { tell("vymctl: " + text + '\n'); });
}

void Output::progress(const std::string& text) {
    static const bool s_is_terminal = isatty(STDERR_FILENO) != 0;
    const std::lock_guard lock(mutex_);
    if (s_is_terminal && text != progress_) {
        tell(kEmptyLine + text);
        progress_ = text;
    }
}

Output& output() {
    static Output s_output;
    return s_output;
}

void message(const std::string& text) {
    output().message(text);
}

std::string printed_by(const std::function<void()>& function) {
    std::string text;
    std::FILE* file = std::tmpfile();
    if (file == nullptr) {
        return text;
    }
    std::fflush(stdout);
    const int before = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    dup2(fileno(file), STDOUT_FILENO);
    function();
    std::fflush(stdout);
    dup2(before, STDOUT_FILENO);
    close(before);
    std::rewind(file);
    std::array<char, 4096> chunk{};
    while (const size_t count = std::fread(chunk.data(), 1, chunk.size(), file)) {
        text.append(chunk.data(), count);
    }
    std::fclose(file);
    if (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

} // namespace vymctl
