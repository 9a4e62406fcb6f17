// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace capture {

InputFile::~InputFile() {
    close();
}

void InputFile::close() {
    if (owned_) {
        ::close(fd_);
    }
    owned_ = false;
}

bool InputFile::open(const std::string& path) {
    close();
    owned_ = path != "-";
    fd_ = owned_ ? ::open(path.c_str(), O_RDONLY | O_CLOEXEC) : STDIN_FILENO;
    owned_ = owned_ && fd_ != -1;
    return fd_ != -1;
}

long InputFile::read(RecordReader::Space space) const {
    ssize_t count = 0;
    do {
        count = ::read(fd_, space.begin, space.size);
    } while (count == -1 && errno == EINTR);
    return count;
}

bool InputFile::was_cut(uint64_t bytes_read) const {
    struct stat status {};
    return fstat(fd_, &status) == 0 && S_ISREG(status.st_mode) &&
           static_cast<uint64_t>(status.st_size) < bytes_read;
}

} // namespace capture
