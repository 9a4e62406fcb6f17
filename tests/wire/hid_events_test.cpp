// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The HID device's events, each with the callback that comes of it.

#include "wire/hid_profile.h"

namespace wire {

INSTANTIATE_TYPED_TEST_SUITE_P(Hid, ProfileConformance, HidProfile, );

} // namespace wire

namespace {

using Entries = std::vector<std::string>;

const std::string kState = "DAA1B2C3D4E5F600000001";
const Entries kStateTold = {"application_state(A1B2C3D4E5F6, 1)"};

class HidEvents : public wire::ProfileConformance<wire::HidProfile> {
protected:
    void ExpectFrom(const std::string& event, const Entries& entries) {
        SCOPED_TRACE(support::Escaped(event).substr(0, 200));
        Server().Send(support::Event(event));
        ExpectEntries(entries);
    }
};

TEST_F(HidEvents, AStateIsNeverNegative) {
    struct {
        const char* digits;
        const char* state;
    } const cases[] = {
        {"00000000", "0"},          {"7FFFFFFF", "2147483647"}, {"80000000", "2147483647"},
        {"FFFFFFFE", "2147483647"}, {"0000000A", "10"},
    };
    for (const auto& one : cases) {
        ExpectFrom("DBA1B2C3D4E5F6" + std::string(one.digits),
                   {"connection_state(A1B2C3D4E5F6, " + std::string(one.state) + ")"});
    }
}

// In whatever pieces the host's data arrives, nothing of it becomes an event.
TEST_F(HidEvents, BehindTheHostsRequestsNothingIsAnEvent) {
    for (const std::string request : {"DH", "DF01", "DC010200000040", "DE01020000", "DG010000",
                                      "DE01020004", "DG010016", "DE0102FFFF", "DG01FFFF"}) {
        const std::string bytes = support::Event(request + kState);
        for (size_t cut = 1; cut < bytes.size(); ++cut) {
            SCOPED_TRACE(request + " cut at " + std::to_string(cut));
            SendPart(bytes.substr(0, cut));
            Server().Send(bytes.substr(cut));
            ExpectEntries({});
        }
    }
    ExpectFrom(kState, kStateTold);
}

TEST_F(HidEvents, AnEventFollowsEachRequestOfTheHost) {
    for (const wire::ProfileEvent& one : wire::HidProfile::Events()) {
        if (one.entry.empty()) {
            SCOPED_TRACE(support::Escaped(one.event));
            Server().Send(support::Event(one.event) + support::Event(kState));
            ExpectEntries(kStateTold);
        }
    }
}

TEST_F(HidEvents, ACountBeyondTheEventCostsTheEventAlone) {
    for (const char* event :
         {"DE01020001", "DE0102FFFFabc", "DE0102-001abc", "DG010001", "DG01FFFFabc", "DG01-001abc"}) {
        ExpectFrom(event, {});
        ExpectFrom(kState, kStateTold);
    }
}

TEST_F(HidEvents, ThereIsNoDd) {
    ExpectFrom("DD", {});
    ExpectFrom("DD" + kState, {});
    ExpectFrom(kState, kStateTold);
}

TEST_F(HidEvents, TheLongestDataIsConsumed) {
    ExpectFrom("DG010FF6" + std::string(4086, 'x'), {}); // 4094 characters and the NUL
    ExpectFrom(kState, kStateTold);
}

TEST_F(HidEvents, ACallbackMaySendCommands) {
    wire::ProfileRecord().SetHook([](const std::string&) {
        uint8_t report[] = {0x00};
        vym_hid_send_report(1, 2, 1, report);
    });
    ExpectFrom("DBA1B2C3D4E5F600000000", {"connection_state(A1B2C3D4E5F6, 0)"});
    Server().ExpectCommand("AT#DC01000000020002\xDC\xDD\r\n");
}

TEST_F(HidEvents, AMemberMayBeChangedAfterInit) {
    static hid_callback_t table;
    table = wire::HidProfile::RecordingTable();
    vym_hid_init(&table);
    ExpectFrom(kState, kStateTold);
    table.application_state_changed_cb = nullptr;
    ExpectFrom(kState, {});
    ExpectFrom("DBA1B2C3D4E5F600000002", {"connection_state(A1B2C3D4E5F6, 2)"});
}

TEST_F(HidEvents, ManyPairsOfInitAndDoneLeaveRoomForMore) {
    for (int i = 0; i < 40; ++i) {
        vym_hid_done();
        wire::HidProfile::Init(wire::Table::kWhole);
        wire::HidProfile::Init(wire::Table::kWhole);
    }
    ExpectFrom(kState, kStateTold);
}

TEST_F(HidEvents, PrintNothingOfTheirOwn) {
    for (const wire::ProfileEvent& one : wire::HidProfile::Events()) {
        ExpectDelivered(one);
    }
    EXPECT_EQ(vym_hid_disconnect(), BT_STATUS_SUCCESS);
    vym_hid_done();
    for (const std::string& line : support::Lines(Output().Out())) {
        const bool of_the_core = line.find("evt_buf:") != std::string::npos ||
                                 line.find("connect socket") != std::string::npos;
        EXPECT_TRUE(of_the_core) << line;
    }
}

TEST_F(HidEvents, CommandsNeedNoInit) {
    vym_hid_done();
    EXPECT_EQ(vym_hid_disconnect(), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#DH\r\n");
}

} // namespace
