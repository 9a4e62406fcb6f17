// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_E2E_EXAMPLE_CAPTURE_H
#define VYM_TESTS_E2E_EXAMPLE_CAPTURE_H

#include "e2e/running_sim.h"
#include "support/process.h"
#include "support/temp_dir.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace e2e {

/**
 * An example's run in the simulated world, and what it recorded. Each server has a directory of its
 * own, for the program writes its capture beside the socket.
 */
class ExampleCapture {
public:
    explicit ExampleCapture(const std::string& example, const std::vector<std::string>& options = {}) {
        RunningSim world(options);
        support::Process program(Example(example, {world.Directory()}));
        EXPECT_EQ(program.ExitCode(3 * support::TimeLimit()), 0) << program.Out() << program.Err();
        std::filesystem::copy_file(world.Directory() + "/client_sock.log", Path());
    }
    [[nodiscard]] std::string Path() const { return kept_.Path() + "/recorded.log"; }

private:
    support::TempDir kept_;
};

} // namespace e2e

#endif
