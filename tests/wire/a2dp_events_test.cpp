// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The music profile's events, and the sign of the one number that has one.

#include "wire/a2dp_profile.h"

namespace wire {

INSTANTIATE_TYPED_TEST_SUITE_P(A2dp, ProfileConformance, A2dpProfile, );

} // namespace wire

namespace {

class A2dpEvents : public wire::ProfileConformance<wire::A2dpProfile> {
protected:
    void ExpectDelivered(const std::string& event, const std::vector<std::string>& entries) {
        SCOPED_TRACE(event);
        Server().Send(support::Event(event));
        ExpectEntries(entries);
    }
    void ExpectDevicesEvent(const std::string& event, int expected) {
        ExpectDelivered("AE00000001" + event, {"devices_event(1, " + std::to_string(expected) + ")"});
    }
};

TEST_F(A2dpEvents, ADevicesEventIsNeverPositive) {
    ExpectDevicesEvent("00000000", 0);
    ExpectDevicesEvent("00000001", -1);
    ExpectDevicesEvent("00000003", -3);
    ExpectDevicesEvent("FFFFFFFD", -3);
    ExpectDevicesEvent("FFFFFFFF", -1);
    ExpectDevicesEvent("12345678", -305419896);
    ExpectDevicesEvent("7FFFFFFF", -2147483647);
    ExpectDevicesEvent("80000001", -2147483647);
    ExpectDevicesEvent("80000000", -2147483647 - 1);
}

TEST_F(A2dpEvents, ADevicesEventThatIsNoNumberReadsAsStrtolReadsIt) {
    ExpectDevicesEvent("-0000005", -5);
    ExpectDevicesEvent("zzzzzzzz", 0);
    ExpectDevicesEvent("0000001G", -1);
    ExpectDevicesEvent("      0a", -10);
    ExpectDevicesEvent("0x000010", -16);
}

TEST_F(A2dpEvents, OtherNumbersOfEightDigitsStopAt7FFFFFFF) {
    ExpectDelivered("AEFFFFFFFD00000000", {"devices_event(2147483647, 0)"});
    ExpectDelivered("AE8000000000000000", {"devices_event(2147483647, 0)"});
    ExpectDelivered("AC554433221100FFFFFFFF01", {"audio_config(554433221100, 2147483647, 1)"});
    ExpectDelivered("AC5544332211008000000001", {"audio_config(554433221100, 2147483647, 1)"});
}

TEST_F(A2dpEvents, ArriveBeforeTheirNul) {
    for (const char* event :
         {"AA55443322110002", "AB55443322110002", "AC5544332211000000AC4402", "AE0000000100000003"}) {
        SCOPED_TRACE(event);
        Server().Send(event);
        EXPECT_TRUE(wire::ProfileRecord().WaitFor(1));
        Server().Send(std::string(1, '\0'));
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(wire::ProfileRecord().Take().size(), 1U);
    }
}

TEST_F(A2dpEvents, MembersAreLookedUpForEachEvent) {
    a2dp_callback_t table = wire::A2dpTable();
    vym_a2dp_init(&table);
    table.audio_state_changed_cb = nullptr;
    ExpectDelivered("ABA1B2C3D4E5F601", {});
    table.audio_state_changed_cb = wire::A2dpTable().audio_state_changed_cb;
    ExpectDelivered("ABA1B2C3D4E5F602", {"audio_state(A1B2C3D4E5F6, 2)"});
    vym_a2dp_done();
}

TEST_F(A2dpEvents, StartedTwiceTheyArriveInTheNewTable) {
    static a2dp_callback_t other;
    other = {};
    other.audio_state_changed_cb = [](bt_bdaddr_t, uint8_t state) {
        wire::ProfileRecord().Add(support::CallText("other", state));
    };
    vym_a2dp_init(&other);
    ExpectDelivered("ABA1B2C3D4E5F603", {"other(3)"});
    wire::A2dpProfile::Init(wire::Table::kWhole);
    ExpectDelivered("ABA1B2C3D4E5F604", {"audio_state(A1B2C3D4E5F6, 4)"});
}

} // namespace
