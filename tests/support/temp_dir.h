// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_TEMP_DIR_H
#define VYM_TESTS_SUPPORT_TEMP_DIR_H

#include <string>

namespace support {

/** A fresh directory, removed with all its content at the end. */
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    TempDir(TempDir&&) = delete;
    TempDir& operator=(TempDir&&) = delete;

    [[nodiscard]] const std::string& Path() const { return path_; }

    /** Makes a directory below whose whole path has exactly `length` characters. @return its path. */
    [[nodiscard]] std::string MakeDirOfLength(size_t length) const;

private:
    std::string path_;
};

} // namespace support

#endif
