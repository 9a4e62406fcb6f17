// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Where there is no fuzzer: gives a target each file that it is told, or that is in a directory.

#include "target.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

std::vector<std::filesystem::path> files_of(int argc, char** argv) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            files.emplace_back(argv[i]);
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::filesystem::path> files = files_of(argc, argv);
    for (const std::filesystem::path& path : files) {
        std::ifstream file(path, std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "%s cannot be read\n", path.c_str());
            return 1;
        }
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        // Who looks for the file that ended the program finds its name last.
        std::fprintf(stderr, "%s\n", path.c_str());
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
    }
    if (files.empty()) {
        std::fprintf(stderr, "usage: %s FILE|DIRECTORY...   (at least one file)\n", argv[0]);
        return 1;
    }
    return 0;
}
