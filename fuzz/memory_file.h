// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A file for readers that want the name of one.
#ifndef VYM_FUZZ_MEMORY_FILE_H
#define VYM_FUZZ_MEMORY_FILE_H

#include "target.h"

#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace fuzz {

class MemoryFile {
public:
    MemoryFile() : fd_(memfd_create("input", MFD_CLOEXEC)) { require(fd_ >= 0, "there is memory"); }
    explicit MemoryFile(std::string_view bytes) : MemoryFile() {
        require(write(fd_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
                "there is room for a file");
    }
    ~MemoryFile() { close(fd_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }

private:
    int fd_;
};

} // namespace fuzz

#endif
