// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes of a capture file.
#ifndef VYM_CAPTURE_FILE_H
#define VYM_CAPTURE_FILE_H

#include "records.h"

#include <string>

namespace capture {

/// A file to be read from its beginning to its end, or standard input.
class InputFile {
public:
    InputFile() = default;
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    InputFile(InputFile&&) = delete;
    InputFile& operator=(InputFile&&) = delete;

    /// "-" is standard input. False with the reason in errno.
    bool open(const std::string& path);

    /// What read() returns: the number of bytes, 0 at the end for now, -1 with the reason in errno.
    long read(RecordReader::Space space) const;

    /// Whether the file is now shorter than what was read of it.
    bool was_cut(uint64_t bytes_read) const;

private:
    void close();

    int fd_ = -1;
    bool owned_ = false;
};

} // namespace capture

#endif
