// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT server's events, each with the callback that comes of it.

#include "wire/gatt_server_profile.h"

namespace wire {

INSTANTIATE_TYPED_TEST_SUITE_P(GattServer, ProfileConformance, GattServerProfile, );

} // namespace wire

namespace {

using support::Bytes;
using Entries = std::vector<std::string>;

// A write to the attribute 0009 and what comes of it, but for the value.
const std::string kWrite = "JLA1B2C3D4E5F60001000200090000"
                           "0100";
const std::string kWritten = "attribute_write(A1B2C3D4E5F6, 1, 2, 9, 0, 1, 0, ";

class GattServerEvents : public wire::ProfileConformance<wire::GattServerProfile> {
protected:
    void Event(const std::string& event) { Server().Send(support::Event(event)); }
    void ExpectFrom(const std::string& event, const Entries& entries) {
        SCOPED_TRACE(support::Escaped(event).substr(0, 200));
        Event(event);
        ExpectEntries(entries);
    }
};

int& FirstByte() {
    static int byte = -1;
    return byte;
}

TEST_F(GattServerEvents, AnAddressArrivesLeastSignificantByteFirst) {
    static gatt_server_callback_t table = {};
    table.client_connected_cb = [](bt_bdaddr_t address, uint8_t, uint16_t, uint8_t) {
        FirstByte() = address.address[0];
    };
    vym_gatt_server_init(&table);
    ExpectFrom("JBA1B2C3D4E5F601000107", {});
    EXPECT_EQ(FirstByte(), 0xF6);
}

TEST_F(GattServerEvents, AUuidArrivesInTheOrderOfItsDigits) {
    static gatt_server_callback_t table = {};
    table.server_registered_cb = [](uint8_t, uint8_t, bt_uuid_t uuid) { FirstByte() = uuid.uu[0]; };
    vym_gatt_server_init(&table);
    ExpectFrom("JA0007A000000000000000000000000000000B", {});
    EXPECT_EQ(FirstByte(), 0xA0);
}

TEST_F(GattServerEvents, CongestionIsToldToNobodyAndTheMtuToItsOwnCallback) {
    Event("JN000100");
    Event("JO000101");
    Event("JP00010017");
    ExpectEntries({"notification_sent(1, 0)", "mtu_changed(1, 23)"});
}

TEST_F(GattServerEvents, AWrittenValueIsUnescaped) {
    ExpectFrom(kWrite + "0005Hello", {kWritten + "5, 48656C6C6F)"});
    ExpectFrom(kWrite + "0008" + Bytes({0xDC, 0xDD, 0xDC, 0xDE, 0xDC, 0xDF, 0xDC, 0xDC}),
               {kWritten + "4, 000D0ADC)"});
    ExpectFrom(kWrite + "0004" + Bytes({0xDC, 0xDC, 0xDC, 0xDD}), {kWritten + "2, DC00)"});
}

TEST_F(GattServerEvents, AWrittenValueMayFillTheLongestEvent) {
    const std::string value(4094 - 38, 'v'); // 4094 characters and the NUL
    std::string digits;
    for (size_t i = 0; i < value.size(); ++i) {
        digits += "76";
    }
    ExpectFrom(kWrite + "0FD8" + value, {kWritten + "4056, " + digits + ")"});
}

TEST_F(GattServerEvents, AWrittenValueThatLooksLikeAnEventIsAValue) {
    const std::string event = kWrite + "000AJP00010017";
    const Entries entries = {kWritten + "10, 4A503030303130303137)"};
    ExpectFrom(event, entries);
    const std::string bytes = support::Event(event);
    for (size_t cut = 1; cut < bytes.size(); ++cut) {
        SCOPED_TRACE(cut);
        SendPart(bytes.substr(0, cut));
        Server().Send(bytes.substr(cut));
        ExpectEntries(entries);
    }
}

TEST_F(GattServerEvents, OfTextLongerThanItsCountTheRestIsSkipped) {
    ExpectFrom(kWrite + "0001xJP00010017", {kWritten + "1, 78)"});
    ExpectFrom(kWrite + "0000JP00010017", {kWritten + "0, null)"});
}

TEST_F(GattServerEvents, ACountBeyondTheEventCostsTheEventAlone) {
    for (const char* tail :
         {"0001", "0004abc", "0003\xDC\xDD", "FFFF", "FFFFabc", "FFFFJP00010017", "-001abc", "ZZZ1"}) {
        Event(kWrite + tail);
        Event("JP00010017");
    }
    Entries expected(8, "mtu_changed(1, 23)");
    expected.insert(expected.end() - 1, kWritten + "0, null)"); // ZZZ1 is no number, that is 0
    ExpectEntries(expected);
}

TEST_F(GattServerEvents, AMalformedWriteInPiecesIsNoEvent) {
    for (const char* count : {"FFFF", "0020"}) {
        SendPart(kWrite + count);
        SendPart("JP00010017");
        Event("JN000100");
        ExpectEntries({});
    }
    ExpectFrom("JP00010017", {"mtu_changed(1, 23)"});
}

TEST_F(GattServerEvents, AnUnknownEscapeIsZero) {
    ExpectFrom(kWrite + "0003" + Bytes({0xDC, 'a', 'b'}), {kWritten + "2, 0062)"});
}

TEST_F(GattServerEvents, AValueOfALoneEscapeIsEmptyButNotNull) {
    ExpectFrom(kWrite + "0001" + Bytes({0xDC}), {kWritten + "0, )"});
}

TEST_F(GattServerEvents, ACallbackMayAnswer) {
    wire::ProfileRecord().SetHook([](const std::string&) {
        uint8_t value[] = {0x00, 'b'};
        vym_gatt_server_send_response(7, 1, 2, 0, 9, 0, 0, 2, value);
    });
    ExpectFrom("JKA1B2C3D4E5F6000100020009000000", {"attribute_read(A1B2C3D4E5F6, 1, 2, 9, 0, 0)"});
    Server().ExpectCommand("AT#JO07000100020000090000000003\xDC\xDD"
                           "b\r\n");
}

TEST_F(GattServerEvents, AMemberMayBeChangedAfterInit) {
    static gatt_server_callback_t table;
    table = wire::gatt_server::RecordingTable();
    vym_gatt_server_init(&table);
    ExpectFrom("JP00010017", {"mtu_changed(1, 23)"});
    table.mtu_changed_cb = nullptr;
    ExpectFrom("JP00010017", {});
    ExpectFrom("JN000100", {"notification_sent(1, 0)"});
}

TEST_F(GattServerEvents, ManyPairsOfInitAndDoneLeaveRoomForMore) {
    for (int i = 0; i < 40; ++i) {
        vym_gatt_server_done();
        wire::GattServerProfile::Init(wire::Table::kWhole);
        wire::GattServerProfile::Init(wire::Table::kWhole);
    }
    ExpectFrom("JP00010017", {"mtu_changed(1, 23)"});
}

TEST_F(GattServerEvents, CommandsNeedNoInit) {
    vym_gatt_server_done();
    EXPECT_EQ(vym_gatt_server_unregister_app(7), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#JC07\r\n");
}

TEST_F(GattServerEvents, PrintNothingOfTheirOwn) {
    for (const wire::ProfileEvent& one : wire::GattServerProfile::Events()) {
        ExpectDelivered(one);
    }
    EXPECT_EQ(vym_gatt_server_unregister_app(7), BT_STATUS_SUCCESS);
    vym_gatt_server_done();
    for (const std::string& line : support::Lines(Output().Out())) {
        const bool of_the_core = line.find("evt_buf:") != std::string::npos ||
                                 line.find("connect socket") != std::string::npos;
        EXPECT_TRUE(of_the_core) << line;
    }
}

class GattServerUnconnected : public support::QuietTest {};

TEST_F(GattServerUnconnected, CommandsAreDroppedWithSuccess) {
    uint8_t value[] = {1, 2};
    EXPECT_EQ(vym_gatt_server_register_app(wire::gatt_server::kUuid), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_gatt_server_send_notification(1, 2, 3, 2, value), BT_STATUS_SUCCESS);
}

TEST_F(GattServerUnconnected, DoneWithoutInitDoesNothing) {
    vym_gatt_server_done();
    EXPECT_EQ(Output().Out(), "");
}

} // namespace
