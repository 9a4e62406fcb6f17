// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Days of traffic in minutes: nothing is lost, and nothing grows.
// SOAK_EVENTS says how much (100000).

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

int main() {
    const unsigned long long events = NumberOf("SOAK_EVENTS", "100000");
    if (events == 0) {
        std::fprintf(stderr, "soak: SOAK_EVENTS is to be a number above 0\n");
        return 2;
    }
    // What the library says of each event.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        std::perror("soak: /dev/null");
        return 1;
    }
    std::fprintf(stderr, "events:\n");
    const bool good = soak::SoakEvents(events);
    std::fprintf(stderr, good ? "soak: all is well\n" : "soak: FAILED\n");
    return good ? 0 : 1;
}
