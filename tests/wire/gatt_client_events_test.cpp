// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT client's events: each with the callback that comes of it, and what becomes of those that are
// odd, cut or wrong.

#include "wire/gatt_client_profile.h"

#include <algorithm>
#include <utility>

namespace wire {

INSTANTIATE_TYPED_TEST_SUITE_P(GattClient, ProfileConformance, gattc::Profile, );

} // namespace wire

namespace {

using gattc::kCharIds;
using gattc::kCharText;
using gattc::kDescrIds;
using gattc::kDescrText;
using gattc::kNotifyIds;
using gattc::kNotifyText;
using support::Bytes;

class GattClientEvents : public gattc::GattClientTest {};

TEST_F(GattClientEvents, ArriveBeforeTheirNulUnlessTheyEndInABlock) {
    for (const wire::ProfileEvent& one : gattc::FixedEvents()) {
        if (!one.entry.empty()) {
            SCOPED_TRACE(one.event);
            Server().Send(one.event);
            EXPECT_TRUE(wire::ProfileRecord().WaitFor(1));
            Server().Send(std::string(1, '\0'));
            ExpectEntries({one.entry});
        }
    }
    for (const wire::ProfileEvent& one : gattc::EventsThatWait()) {
        SCOPED_TRACE(one.event);
        SendPart(one.event);
        EXPECT_EQ(wire::ProfileRecord().Size(), 0U);
        Server().Send(std::string(1, '\0'));
        ExpectEntries(one.Entries());
    }
}

// The properties' last six characters count as not read. They must not become an event of their own
// when the event's end comes in a later read; the two here would be one of the adapter's and one of the
// HID device's.
TEST_F(GattClientEvents, TheEndOfACharacteristicsPropertiesIsNoEvent) {
    for (const auto& [digits, value] : {std::pair<const char*, const char*>{"7FBE0102", "2143158530"},
                                        {"7FDF0102", "2145321218"},
                                        {"00KG1234", "0"}}) {
        SCOPED_TRACE(digits);
        const std::string entry = "get_characteristic(" + kCharText + ", " + value + ")";
        SendPart("KI" + kCharIds + digits);
        Server().Send(std::string(1, '\0') + support::Event("KG123485"));
        ExpectEntries({entry, "search_completed(4660, 133)"});
        ExpectDelivered("KI" + kCharIds + digits, {entry});
        SendPart("KI" + kCharIds + digits);
        SendPart("BE01");
        Server().Send(std::string(1, '\0') + support::Event("KI" + kCharIds + digits) +
                      support::Event("KG123485"));
        ExpectEntries({entry, entry, "search_completed(4660, 133)"});
    }
    EXPECT_EQ(Adapter().Take(), std::vector<std::string>{});
    EXPECT_EQ(Output().Out().find("not processed"), std::string::npos)
        << "nobody is told on the output";
}

TEST_F(GattClientEvents, NumbersOfEightDigitsStopAt7FFFFFFF) {
    ExpectDelivered("KI" + kCharIds + "FFFFFFFE",
                    {"get_characteristic(" + kCharText + ", 2147483647)"});
    ExpectDelivered("KI" + kCharIds + "7FFFFFFF",
                    {"get_characteristic(" + kCharText + ", 2147483647)"});
    ExpectDelivered("KT80000000FFFFFFFFFF", {"configure_mtu(2147483647, 255, 2147483647)"});
    ExpectDelivered("KT7654321000zzzzzzzz", {"configure_mtu(1985229328, 0, 0)"});
}

TEST_F(GattClientEvents, FieldsThatAreNoNumbersReadAsStrtolReadsThem) {
    ExpectDelivered("KG12z4zz", {"search_completed(18, 0)"});
    ExpectDelivered("KG-001-1", {"search_completed(65535, 255)"});
    ExpectDelivered("KO  1F0x", {"execute_completed(31, 0)"});
}

// The fixed fields of a scan result have two characters more than its minimum.
TEST_F(GattClientEvents, AScanResultMayEndWithinItsCount) {
    ExpectDelivered("KBA1B2C3D4E5F6C402", {});
    ExpectDelivered("KBA1B2C3D4E5F6C4020", {});
    ExpectDelivered("KBA1B2C3D4E5F6C40200", {"scan_result(A1B2C3D4E5F6, 196, 0, null, 2)"});
    ExpectDelivered("KBA1B2C3D4E5F6C402000", {"scan_result(A1B2C3D4E5F6, 196, 0, null, 2)"});
    ExpectDelivered("KBA1B2C3D4E5F6C4020000", {"scan_result(A1B2C3D4E5F6, 196, 0, null, 2)"});
    ExpectDelivered("KBA1B2C3D4E5F6C40205", {});
    ExpectDelivered("KBA1B2C3D4E5F6C402005", {});
    SendPart("KBA1B2C3D4E5F6C40200");
    ExpectDelivered("03abc", {"scan_result(A1B2C3D4E5F6, 196, 3, 616263, 2)"});
}

struct BlockCase {
    std::string fields; // up to the count
    std::string before; // what the entry has before the block
    std::string after;
};

std::vector<BlockCase> BlockCases() {
    return {
        {"KBA1B2C3D4E5F6C402", "scan_result(A1B2C3D4E5F6, 196, ", ", 2)"},
        {"KCA1B2C3D4E5F6", "scan_address_name(A1B2C3D4E5F6, ", ")"},
        {"KD" + kNotifyIds + "01", "notify(" + kNotifyText + ", 1, ", ")"},
        {"KM" + kCharIds + "09", "read_characteristic(" + kCharText + ", 9, ", ")"},
        {"KP" + kDescrIds + "0A", "read_descriptor(" + kDescrText + ", 10, ", ")"},
        {"KS1234A1B2C3D4E5F6", "receive_data_from_central(4660, A1B2C3D4E5F6, ", ")"},
    };
}

TEST_F(GattClientEvents, ABlockIsDecodedAndMayBeEmptyOrShorterThanItsText) {
    for (const BlockCase& one : BlockCases()) {
        ExpectDelivered(one.fields + "0000", {one.before + "0, null" + one.after});
        ExpectDelivered(one.fields + "0000abc", {one.before + "0, null" + one.after});
        ExpectDelivered(one.fields + "0001abc", {one.before + "1, 61" + one.after});
        ExpectDelivered(one.fields + "zzzzabc", {one.before + "0, null" + one.after});
        ExpectDelivered(one.fields + "0003" + Bytes({0xDC, 0xDE, 'A'}),
                        {one.before + "2, 0D41" + one.after});
        ExpectDelivered(one.fields + "0008" + Bytes({0xDC, 0xDC, 0xDC, 0xDD, 0xDC, 0xDE, 0xDC, 0xDF}),
                        {one.before + "4, DC000D0A" + one.after});
    }
}

TEST_F(GattClientEvents, ABlockThatRunsPastTheEventCallsNothing) {
    for (const BlockCase& one : BlockCases()) {
        for (const char* count : {"0004", "0005", "0100", "1000", "7FFF", "8000", "FFFF", "-001"}) {
            ExpectDelivered(one.fields + count + "abc", {});
        }
        Server().Send(support::Event(one.fields + "0006abc") + support::Event("KG123485"));
        ExpectEntries({"search_completed(4660, 133)"});
    }
    ExpectDelivered("KZL05060000000100000002FFFFabc", {});
}

TEST_F(GattClientEvents, ABlockWithABadEscapeNeverShowsOldMemory) {
    for (const BlockCase& one : BlockCases()) {
        ExpectDelivered(one.fields + "0004" + Bytes({'A', 0xDC, 'x', 'B'}),
                        {one.before + "3, 410042" + one.after});
        ExpectDelivered(one.fields + "0002" + Bytes({0xDC, 'x'}), {one.before + "1, 00" + one.after});
    }
}

TEST_F(GattClientEvents, ABlockOfALoneEscapeIsEmptyButNotNull) {
    for (const BlockCase& one : BlockCases()) {
        ExpectDelivered(one.fields + "0001" + Bytes({0xDC}), {one.before + "0, " + one.after});
    }
}

TEST_F(GattClientEvents, ABlockMayFillTheReceiveBuffer) {
    std::string digits;
    for (int i = 0; i < 4072; ++i) {
        digits += "76";
    }
    // With its NUL the last one has 4095 characters.
    ExpectDelivered("KBA1B2C3D4E5F6C4020FE8" + std::string(4072, 'v'),
                    {"scan_result(A1B2C3D4E5F6, 196, 4072, " + digits + ", 2)"});
}

TEST_F(GattClientEvents, ABlockLivesInRoomOfItsOwn) {
    static gatt_client_callback_t table;
    table = gattc::RecordingTable();
    table.receive_data_from_central_cb = [](uint16_t, bt_bdaddr_t, uint16_t length, uint8_t* data) {
        std::fill(data, data + length, uint8_t{'K'});
        gattc::Say("overwritten", length);
    };
    vym_gatt_client_init(&table);
    Server().Send(support::Event("KS1234A1B2C3D4E5F60003xyz") + support::Event("KG123485"));
    ExpectEntries({"overwritten(3)", "search_completed(4660, 133)"});
}

TEST_F(GattClientEvents, MembersAreLookedUpForEachEvent) {
    static gatt_client_callback_t table;
    table = gattc::RecordingTable();
    vym_gatt_client_init(&table);
    table.search_completed_cb = nullptr;
    ExpectDelivered("KG123401", {});
    table.search_completed_cb = gattc::RecordingTable().search_completed_cb;
    ExpectDelivered("KG123402", {"search_completed(4660, 2)"});
}

TEST_F(GattClientEvents, StartedTwiceTheyArriveInTheNewTable) {
    static gatt_client_callback_t other;
    other = {};
    other.search_completed_cb = [](uint16_t, uint8_t status) { gattc::Say("other", status); };
    vym_gatt_client_init(&other);
    ExpectDelivered("KG123403", {"other(3)"});
    gattc::Profile::Init(wire::Table::kWhole);
    ExpectDelivered("KG123404", {"search_completed(4660, 4)"});
}

// ---- the end of a connection ----

TEST_F(GattClientEvents, ADisconnectionUnregistersItsClientAfterTheCallback) {
    wire::ProfileRecord().SetHook([](const std::string&) { vym_gatt_client_scan(1); });
    ExpectDelivered("KFA5123413A1B2C3D4E5F6", {"disconnected(165, 4660, 19, A1B2C3D4E5F6)"});
    Server().ExpectCommand("AT#KC01\r\n");
    Server().ExpectCommand("AT#KBA5\r\n");
    Server().ExpectNothingMore();
}

TEST_F(GattClientEvents, ADisconnectionNobodyHearsUnregistersAllTheSame) {
    gattc::Profile::Init(wire::Table::kEmpty);
    ExpectDelivered("KF05123413A1B2C3D4E5F6", {});
    Server().ExpectCommand("AT#KB05\r\n");
    gattc::Profile::Init(wire::Table::kNone);
    ExpectDelivered("KF06123413A1B2C3D4E5F6", {});
    Server().ExpectCommand("AT#KB06\r\n");
    vym_gatt_client_done();
    Server().Send(support::Event("KF07123413A1B2C3D4E5F6"));
    EXPECT_TRUE(Session().EventsAreHandled());
    Server().ExpectNothingMore();
}

TEST_F(GattClientEvents, ADisconnectionUnregistersOnceWhereverItIsCut) {
    const std::string event = support::Event("KF05123413A1B2C3D4E5F6");
    for (size_t cut = 1; cut < event.size(); ++cut) {
        SendPart(event.substr(0, cut));
        Server().Send(event.substr(cut));
        EXPECT_TRUE(Session().EventsAreHandled());
        Server().ExpectCommand("AT#KB05\r\n");
    }
    Server().ExpectNothingMore();
}

TEST_F(GattClientEvents, ADisconnectionTooShortUnregistersNobody) {
    ExpectDelivered("KF05123413A1B2C3D4E5F", {});
    ExpectDelivered("KF", {});
    Server().ExpectNothingMore();
}

TEST_F(GattClientEvents, OtherEventsSendNothing) {
    for (const wire::ProfileEvent& one : gattc::Profile::Events()) {
        if (one.event.compare(0, 2, "KF") != 0) {
            Server().Send(support::Event(one.event));
        }
    }
    EXPECT_TRUE(Session().EventsAreHandled());
    Server().ExpectNothingMore();
}

} // namespace
