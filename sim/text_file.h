// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Files that people write for the simulator, and how it says what is wrong in them.
#ifndef VYM_SIM_TEXT_FILE_H
#define VYM_SIM_TEXT_FILE_H

#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace sim {

/// "FILE:LINE: what was found; what was expected", always one line.
class FileError : public std::runtime_error {
public:
    FileError(const std::string& file, unsigned line, const std::string& problem);
    /// Of the file as a whole.
    FileError(const std::string& file, const std::string& problem);
};

/// The whole content of a file. Throws FileError, also when it is longer than `most` bytes.
std::string read_text_file(const std::string& path, size_t most);

/// A file to be written, empty. Throws std::runtime_error; `what` is how its message calls the file.
std::ofstream create_file(const std::string& path, const std::string& what);

bool is_utf8(std::string_view text);

/// Text in quotation marks, fit for one line.
std::string in_quotes(std::string_view text);

} // namespace sim

#endif
