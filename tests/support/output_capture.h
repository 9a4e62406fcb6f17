// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_OUTPUT_CAPTURE_H
#define VYM_TESTS_SUPPORT_OUTPUT_CAPTURE_H

#include "support/wait.h"

#include <array>
#include <string>

namespace support {

/**
 * Redirects the process's standard output (and standard error on request) into memory, at the level of
 * the descriptors, so that lines printed by any thread are caught. Ends with the object; the text of a
 * test that has failed by then is passed on to standard error. Standard error is left alone by default:
 * a sanitizer's report must not be lost.
 */
class OutputCapture {
public:
    enum class Streams { kOut, kOutAndErr };

    explicit OutputCapture(Streams streams = Streams::kOut);
    ~OutputCapture();
    OutputCapture(const OutputCapture&) = delete;
    OutputCapture& operator=(const OutputCapture&) = delete;
    OutputCapture(OutputCapture&&) = delete;
    OutputCapture& operator=(OutputCapture&&) = delete;

    /** What was written to standard output so far. */
    [[nodiscard]] std::string Out() const;

    /** What was written to standard error so far; empty unless it is redirected too. */
    [[nodiscard]] std::string Err() const;

    /** Waits until standard output contains `text`. */
    [[nodiscard]] bool WaitForOut(const std::string& text, Milliseconds limit = TimeLimit()) const;

    /** Ends the redirection. */
    void Stop();

private:
    struct Stream {
        int target = -1;
        int saved = -1;
        int file = -1;
    };
    static void Begin(Stream& stream, int target);
    static void End(Stream& stream);
    static std::string Content(const Stream& stream);

    std::array<Stream, 2> streams_;
};

} // namespace support

#endif
