// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_PROBE_PARSER_H
#define VYM_TESTS_SUPPORT_PROBE_PARSER_H

#include "support/session.h"

#include "vym_event_parser.h"

#include <array>

namespace support {

/** Where the events of a ProbeParser leave one entry each, such as "XA(01)". */
Recorder& ProbeRecord();

/**
 * A profile of the tests' own, on the library's framework:
 *
 *     XA  2 fixed characters               XA(01)
 *     XB  14 fixed characters              XB(00112233445566)
 *     XT  2 fixed characters and a text    XT(05, text), delivered when its NUL is there
 *     XN  2 fixed characters               the decoder refuses, nothing is recorded
 */
class ProbeParser {
public:
    ProbeParser();

    [[nodiscard]] event_parser_t* Parser() { return &base_; }

private:
    std::array<parser_t, 4> table_;
    event_parser_t base_;
};

/** A session with a registered ProbeParser and no other profile. */
class ProbeTest : public SessionTest {
protected:
    void SetUp() override;
    void TearDown() override;

    [[nodiscard]] static Recorder& Events() { return ProbeRecord(); }

    /** Registers the probe again after a restart. */
    void RegisterProbe();

    /** All events sent so far have been handled; leaves no entry behind. */
    [[nodiscard]] ::testing::AssertionResult EventsAreHandled();

private:
    ProbeParser probe_;
};

} // namespace support

#endif
