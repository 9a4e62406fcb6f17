// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Days of traffic in minutes: nothing is lost, and nothing grows.
// usage: vym_soak SIMULATOR...   (its command line; SOAK_EVENTS and SOAK_COMMANDS say how much)

#include "soak/command_soak.h"
#include "soak/event_soak.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

/** A number of the environment; 0 when it is none. */
unsigned long long NumberOf(const char* name, const char* otherwise) {
    const char* value = std::getenv(name);
    const std::string text = value != nullptr ? value : otherwise;
    const bool is_number =
        text.find_first_not_of("0123456789") == std::string::npos && text.size() < 16;
    return is_number && !text.empty() ? std::stoull(text) : 0;
}

} // namespace

int main(int argc, char** argv) {
    const unsigned long long events = NumberOf("SOAK_EVENTS", "100000");
    const unsigned long long commands = NumberOf("SOAK_COMMANDS", "10000");
    if (argc < 2 || events == 0 || commands == 0) {
        std::fprintf(stderr,
                     "usage: vym_soak SIMULATOR...   (SOAK_EVENTS and SOAK_COMMANDS are numbers "
                     "above 0)\n");
        return 2;
    }
    // What the library says of each event.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        std::perror("soak: /dev/null");
        return 1;
    }
    std::fprintf(stderr, "events:\n");
    bool good = soak::SoakEvents(events);
    std::fprintf(stderr, "commands:\n");
    good = soak::SoakCommands(commands, {argv + 1, argv + argc}) && good;
    std::fprintf(stderr, good ? "soak: all is well\n" : "soak: FAILED\n");
    return good ? 0 : 1;
}
