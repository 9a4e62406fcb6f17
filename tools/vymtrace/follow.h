// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Waiting for a file to grow.
#ifndef VYMTRACE_FOLLOW_H
#define VYMTRACE_FOLLOW_H

namespace trace {

/// From here on SIGINT and SIGTERM end only the waiting.
class Waiting {
public:
    Waiting();

    /// Waits a moment; false once a signal has asked to stop.
    static bool wait();
};

} // namespace trace

#endif
