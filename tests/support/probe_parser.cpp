// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/probe_parser.h"

#include "vym_sdk.h"

namespace support {
namespace {

std::string TextAt(const uint8_t* buffer, int from, int to) {
    return {reinterpret_cast<const char*>(buffer) + from, static_cast<size_t>(to - from)};
}

int RecordFixed(const char* tag, const uint8_t* buffer, int pos, int width) {
    ProbeRecord().Add(std::string(tag) + "(" + TextAt(buffer, pos, pos + width) + ")");
    return pos + width;
}

int ParseXA(uint8_t* buffer, int pos) {
    return RecordFixed("XA", buffer, pos, 2);
}

int ParseXB(uint8_t* buffer, int pos) {
    return RecordFixed("XB", buffer, pos, 14);
}

int ParseXT(uint8_t* buffer, int pos) {
    int complete = 0;
    const int end = vym_event_text_end(buffer, pos, &complete);
    if (complete == 0) {
        return -1;
    }
    ProbeRecord().Add("XT(" + TextAt(buffer, pos, pos + 2) + ", " + TextAt(buffer, pos + 2, end) + ")");
    return end;
}

int ParseXN(uint8_t* /*buffer*/, int /*pos*/) {
    return -1;
}

int Two() {
    return 2;
}

int Fourteen() {
    return 14;
}

} // namespace

Recorder& ProbeRecord() {
    static Recorder record;
    return record;
}

ProbeParser::ProbeParser()
    : table_{{{[] { return "XA"; }, [] { return "onProbeA"; }, Two, ParseXA},
              {[] { return "XB"; }, [] { return "onProbeB"; }, Fourteen, ParseXB},
              {[] { return "XT"; }, [] { return "onProbeText"; }, Two, ParseXT},
              {[] { return "XN"; }, [] { return "onProbeRefused"; }, Two, ParseXN}}},
      base_{-1, static_cast<int>(table_.size()), table_.data(), process_event_impl} {}

void ProbeTest::SetUp() {
    SessionTest::SetUp();
    RegisterProbe();
}

void ProbeTest::TearDown() {
    unregister_event_parser(probe_.Parser());
    SessionTest::TearDown();
    ProbeRecord().Reset();
}

void ProbeTest::RegisterProbe() {
    register_event_parser(probe_.Parser());
}

::testing::AssertionResult ProbeTest::EventsAreHandled() {
    Server().Send(Event("XAEE"));
    return ProbeRecord().WaitAndRemove("XA(EE)");
}

} // namespace support
