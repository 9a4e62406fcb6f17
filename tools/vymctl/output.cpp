// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "output.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace vymctl {

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

void Output::line(const std::string& text) {
    const std::string whole = text + '\n';
    const std::lock_guard lock(mutex_);
    for (size_t done = 0; done < whole.size() && open_;) {
        const ssize_t count = write(fd_, whole.data() + done, whole.size() - done);
        if (count > 0) {
            done += static_cast<size_t>(count);
        } else if (errno != EINTR) {
            open_ = false;
        }
    }
}

Output& output() {
    static Output s_output;
    return s_output;
}

void message(const std::string& text) {
    const std::string whole = "vymctl: " + text + '\n';
    // Nobody is left to be told when it fails.
    static_cast<void>(!write(STDERR_FILENO, whole.data(), whole.size()));
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
