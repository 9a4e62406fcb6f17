// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "output.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace trace {
namespace {

constexpr size_t kBlock = 65536;

bool write_all(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(fd, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<size_t>(count));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

[[noreturn]] void fail(const std::string& what, int error) {
    throw Failure(what + " cannot be written: " + std::generic_category().message(error));
}

} // namespace

void Output::end_line() {
    buffer_ += '\n';
    flush_full();
}

void Output::flush_full() {
    if (buffer_.size() >= kBlock) {
        flush();
    }
}

void Output::flush() {
    if (!write_all(fd_, buffer_)) {
        fail(name_, errno);
    }
    buffer_.clear();
}

void refuse_same_file(const std::string& capture, const std::string& to) {
    struct stat one {};
    struct stat other {};
    if (stat(capture.c_str(), &one) == 0 && stat(to.c_str(), &other) == 0 &&
        one.st_dev == other.st_dev && one.st_ino == other.st_ino && S_ISREG(one.st_mode)) {
        throw Failure(to + " is the capture itself; give another name for what is written");
    }
}

NewFile::NewFile(const std::string& path)
    : fd_(path == "-" ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                      : open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644)) {
    if (fd_ == -1) {
        fail(path, errno);
    }
}

NewFile::~NewFile() {
    close(fd_);
}

} // namespace trace
