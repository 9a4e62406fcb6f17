// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The parser of one profile: text as it may stand in the receive buffer, behind which nothing may be
// read.

#include "applications.h"
#include "target.h"
#include "vym_sdk.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = fuzz::be_quiet();
    static const vym_application_t* const application = vym_application_of(VYM_FUZZ_PROFILE);
    fuzz::require(quiet, "standard output can be closed");
    const fuzz::Exact text(fuzz::text_of(data, size));
    application->start();
    const int taken = process_event(text.data(), static_cast<int>(size));
    application->stop();
    fuzz::require(taken >= 0 && static_cast<size_t>(taken) <= size, "no more is taken than there is");
    return 0;
}
