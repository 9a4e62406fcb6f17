// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_E2E_TOP_DIRECTORY_H
#define VYM_TESTS_E2E_TOP_DIRECTORY_H

#include "support/temp_dir.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace e2e {

/**
 * The tree as it is after the demonstration: the build of these tests is build/demo, and a compiler is
 * there that builds as this build did. Where programs need an emulator, those of build/demo are scripts
 * that call it.
 */
class TopDirectory {
public:
    TopDirectory() {
        namespace fs = std::filesystem;
        fs::create_directories(Path() + "/bin");
        fs::create_directory(Path() + "/build");
        fs::create_directory_symlink(VYM_SOURCE_DIR "/docs", Path() + "/docs");
        Script("/bin/cc", VYM_C_COMPILER " " VYM_C_FLAGS);
        if (*VYM_EMULATOR == '\0') {
            fs::create_directory_symlink(VYM_BUILD_DIR, Path() + "/build/demo");
            return;
        }
        for (const std::string program : {"/sim/vym-sim", "/docs/snippets/nearby",
                                          "/docs/snippets/own_loop", "/docs/snippets/power"}) {
            Script("/build/demo" + program, VYM_EMULATOR " " VYM_BUILD_DIR + program);
        }
    }

    /** A command that is carried out there. */
    [[nodiscard]] std::vector<std::string> Command(const std::vector<std::string>& words) const {
        std::vector<std::string> all{"/usr/bin/env", "-C", Path()};
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }

    [[nodiscard]] const std::string& Path() const { return place_.Path(); }

private:
    // A program that is another one with its first words given.
    void Script(const std::string& name, const std::string& command) const {
        const std::filesystem::path path = Path() + name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << "#!/bin/sh\nexec " + command + " \"$@\"\n";
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }

    support::TempDir place_;
};

} // namespace e2e

#endif
