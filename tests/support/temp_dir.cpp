// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/temp_dir.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace support {

TempDir::TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "vym-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "cannot make " + name);
    }
    path_ = name;
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::MakeDirOfLength(size_t length) const {
    constexpr size_t kLongestName = 200;
    std::string path = path_;
    while (path.size() < length) {
        const size_t missing = length - path.size();
        if (missing < 2) {
            throw std::length_error("no directory of that length below " + path_);
        }
        // One character must be left for another name when this one does not reach the end.
        const size_t name = missing - 1 <= kLongestName ? missing - 1 : kLongestName - 2;
        path += "/" + std::string(name, 'd');
        std::filesystem::create_directory(path);
    }
    if (path.size() != length) {
        throw std::length_error("the directory itself is longer: " + path_);
    }
    return path;
}

} // namespace support
