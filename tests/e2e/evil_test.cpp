// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// An application of all profiles comes to its good end whatever the server does to it.

#include "e2e/running_sim.h"
#include "support/process.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

namespace {

using e2e::RunningSim;
using support::Process;

// So many in a test run; by hand VYM_EVIL_SEEDS says how many, and VYM_EVIL_FIRST_SEED from which on.
constexpr unsigned long kSeeds = 2;

unsigned long FromEnvironment(const char* name, unsigned long otherwise) {
    const char* text = std::getenv(name);
    return text == nullptr ? otherwise : std::strtoul(text, nullptr, 10);
}

void ExpectGoodEnd(RunningSim& sim) {
    Process application(support::BuiltProgram(VYM_EMULATOR, VYM_EVERY_PROFILE, {sim.Directory()}));
    EXPECT_EQ(application.ExitCode(3 * support::TimeLimit()), 0)
        << "the application said:\n"
        << application.Err() << "the server did:\n"
        << sim.Program().Err();
    EXPECT_NE(application.Err().find("every_profile: "), std::string::npos) << application.Err();
}

TEST(EvilServer, AnHonestOneCallsBackMoreThanAHundredTimes) {
    RunningSim sim;
    Process application(support::BuiltProgram(VYM_EMULATOR, VYM_EVERY_PROFILE, {sim.Directory()}));
    ASSERT_EQ(application.ExitCode(3 * support::TimeLimit()), 0) << application.Err();
    const std::string said = application.Err();
    const size_t at = said.find("every_profile: ");
    ASSERT_NE(at, std::string::npos) << said;
    EXPECT_GT(std::strtoul(said.c_str() + at + 15, nullptr, 10), 100UL) << said;
}

TEST(EvilServer, NeitherCrashesNorHangsAnApplicationOfAllProfiles) {
    const unsigned long first = FromEnvironment("VYM_EVIL_FIRST_SEED", 1);
    const unsigned long count = FromEnvironment("VYM_EVIL_SEEDS", kSeeds);
    for (unsigned long seed = first; seed < first + count && !HasFailure(); ++seed) {
        SCOPED_TRACE("--evil " + std::to_string(seed));
        RunningSim sim({"--evil", std::to_string(seed)});
        ExpectGoodEnd(sim);
        EXPECT_EQ(sim.Program().Err().find("ERROR: AddressSanitizer"), std::string::npos)
            << sim.Program().Err();
        EXPECT_NE(sim.Program().Err().find("evil "), std::string::npos) << "nothing was done";
    }
}

} // namespace
