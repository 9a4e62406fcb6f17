// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_E2E_RUNNING_SIM_H
#define VYM_TESTS_E2E_RUNNING_SIM_H

#include "support/process.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace e2e {

/** The command line of one of the examples. */
inline std::vector<std::string> Example(const std::string& name,
                                        const std::vector<std::string>& arguments) {
    return support::BuiltProgram(VYM_EMULATOR, VYM_EXAMPLES_DIR "/" + name, arguments);
}

/** The lines stand in the text in this order. */
inline ::testing::AssertionResult HasInOrder(const std::string& text,
                                             const std::vector<std::string>& lines) {
    size_t at = 0;
    for (const std::string& line : lines) {
        const size_t found = text.find(line, at);
        if (found == std::string::npos) {
            return ::testing::AssertionFailure()
                   << "missing, or in the wrong place: " << line << "\nin:\n"
                   << text;
        }
        at = found + line.size();
    }
    return ::testing::AssertionSuccess();
}

/** A simulated server that listens, a process of its own; stopped with the object. */
class RunningSim {
public:
    explicit RunningSim(const std::vector<std::string>& options = {}) : process_(CommandLine(options)) {
        EXPECT_TRUE(process_.WaitForOut("vym-sim: listening on " + directory_.Path() + "/vym_socket\n"))
            << process_.Err();
    }
    [[nodiscard]] const std::string& Directory() const { return directory_.Path(); }
    support::Process& Program() { return process_; }

private:
    [[nodiscard]] std::vector<std::string> CommandLine(std::vector<std::string> options) const {
        options.insert(options.begin(), {"--dir", directory_.Path()});
        return support::BuiltProgram(VYM_EMULATOR, VYM_SIM_PATH, options);
    }

    support::TempDir directory_;
    support::Process process_;
};

} // namespace e2e

#endif
