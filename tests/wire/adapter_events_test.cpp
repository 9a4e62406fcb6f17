// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Each event as the server writes it, and the callback that comes of it; then the same events short,
// with surplus, and without a table to call.

#include "wire/adapter_events.h"

namespace {

using wire::AllEvents;
using wire::EventCase;
using wire::Record;

class AdapterEvents : public wire::AdapterWireTest {
protected:
    // Starts the adapter again with this table: no event leaves an entry, and the library lives on.
    void ExpectNothingCalled(bluetooth_callback_t* table) {
        vym_bluetooth_init(table);
        for (const EventCase& one : AllEvents()) {
            Server().Send(wire::Event(one.event));
        }
        // The changes of state, which would wait for the getter below, are dealt with by now.
        EXPECT_TRUE(Output().WaitForOut(", op_code[4],"));
        // A property that is in none of the events: those still on their way do not answer the getter.
        const auto answer = wire::AdapterProperties({Record(7, wire::Number(2))});
        EXPECT_EQ(Ask(vym_bluetooth_get_scan_mode, "AT#BA07\r\n", {answer}),
                  BT_SCAN_MODE_CONNECTABLE_DISCOVERABLE);
        EXPECT_EQ(Adapter().Size(), 0U);
    }
};

TEST_F(AdapterEvents, EachOneCallsItsCallbackWithItsFields) {
    for (const EventCase& one : AllEvents()) {
        ExpectDelivered(one.event, one.Entries());
    }
}

TEST_F(AdapterEvents, AllOfThemArriveInOrderInOneBurst) {
    std::string burst;
    std::vector<std::string> entries;
    for (const EventCase& one : AllEvents()) {
        burst += wire::Event(one.event);
        for (const std::string& entry : one.Entries()) {
            entries.push_back(entry);
        }
    }
    Server().Send(burst);
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Adapter().Take(), entries);
}

TEST_F(AdapterEvents, OneThatEndsWithinItsFieldsCallsNothing) {
    for (const EventCase& one : AllEvents()) {
        SCOPED_TRACE(support::Escaped(one.event));
        std::vector<std::string> cut;
        for (size_t length = 0; length < one.minimum; ++length) {
            cut.push_back(one.event.substr(0, 2 + length));
        }
        Handle(cut);
        EXPECT_EQ(Adapter().Take(), std::vector<std::string>{});
    }
}

TEST_F(AdapterEvents, SurplusBehindTheFieldsIsSkipped) {
    for (const EventCase& one : AllEvents()) {
        if (!one.has_rest) {
            ExpectDelivered(one.event + "BE01", one.Entries());
            ExpectDelivered(one.event + "\r\n", one.Entries());
        }
    }
}

TEST_F(AdapterEvents, ATableOfNullsIsSkipped) {
    static bluetooth_callback_t nothing{};
    ExpectNothingCalled(&nothing);
}

TEST_F(AdapterEvents, NoTableIsATableOfNulls) {
    ExpectNothingCalled(nullptr);
}

TEST_F(AdapterEvents, DigitsMayBeLowerCase) {
    ExpectDelivered("BH0aa1b2c3d4e5f6ff", {"bond_state_changed(10, A1B2C3D4E5F6, 255)"});
    ExpectDelivered("BUfffedcba98765432100123456789abcdef00112233445566778899aabbccddeeff",
                    {"read_local_device_oob_data(255, FEDCBA98765432100123456789ABCDEF, "
                     "00112233445566778899AABBCCDDEEFF)"});
}

TEST_F(AdapterEvents, TagsMustBeUpperCase) {
    ExpectDelivered("be01", {});
    ExpectDelivered("Be01", {});
    ExpectDelivered(" BE01", {});
}

TEST_F(AdapterEvents, EightDigitFieldsStopAt7FFFFFFF) {
    const std::string address = "A1B2C3D4E5F6";
    ExpectDelivered("BF" + address + "7FFFFFFF" + "00" + "n",
                    {"pin_request(A1B2C3D4E5F6, 2147483647, 0, \"n\")"});
    ExpectDelivered("BF" + address + "80000000" + "00" + "n",
                    {"pin_request(A1B2C3D4E5F6, 2147483647, 0, \"n\")"});
    ExpectDelivered("BG" + address + "FFFFFFFF" + "00" + "FFFFFFFE" + "n",
                    {"ssp_request(A1B2C3D4E5F6, 2147483647, 0, 2147483647, \"n\")"});
    ExpectDelivered("BD" + address + "01" + "FFFFFFFF" + "00" + "0000" + "n",
                    {"device_found(A1B2C3D4E5F6, 1, 2147483647, 0, \"n\", 0, null)"});
}

TEST_F(AdapterEvents, FieldsThatAreNoNumbersReadAsStrtolReadsThem) {
    ExpectDelivered("BE1G", {"discovery_state_changed(1)"});
    ExpectDelivered("BEG1", {"discovery_state_changed(0)"});
    ExpectDelivered("BE-1", {"discovery_state_changed(255)"});
    ExpectDelivered("BE 7", {"discovery_state_changed(7)"});
    ExpectDelivered("BQ0300-001", {"le_test_end(0, 65535)"});
}

TEST_F(AdapterEvents, NamesAreTheBytesThatCame) {
    const std::string fields = "BFA1B2C3D4E5F60024040401";
    ExpectDelivered(fields, {"pin_request(A1B2C3D4E5F6, 2360324, 1, \"\")"});
    ExpectDelivered(fields + "\xC3\x84\xFF\r\n\xDC\xDD",
                    {R"(pin_request(A1B2C3D4E5F6, 2360324, 1, "\xC3\x84\xFF\r\n\xDC\xDD"))"});
    const std::string longest(3000, 'L');
    ExpectDelivered(fields + longest, {"pin_request(A1B2C3D4E5F6, 2360324, 1, \"" + longest + "\")"});
}

TEST_F(AdapterEvents, AnEmptyVersionIsDelivered) {
    ExpectDelivered("PV", {"bt_version(\"\")"});
}

TEST_F(AdapterEvents, OnlyThreeTestsCompleteAndEachIsPrinted) {
    for (const int code : {0, 4, 5, 127, 255}) {
        ExpectDelivered("BQ" + wire::Hex(static_cast<unsigned>(code), 2) + "02" + "1234", {});
        const std::string line = "[A-Za-z_]+->[0-9]+, op_code\\[" + std::to_string(code) +
                                 "\\], status\\[0x2\\], num_packets\\[4660\\]\r\n";
        EXPECT_TRUE(wire::Occurs(line, Output().Out())) << code;
    }
    ExpectDelivered("BQ01AB0000", {"le_rx_test(171)"});
    EXPECT_EQ(Printed(", op_code[1], status[0xab], num_packets[0]\r\n"), 1U);
}

TEST_F(AdapterEvents, AConnectionRequestIsPrintedTwiceFromTheLastByteOfTheAddress) {
    ExpectDelivered("BO0A1B2C3D4E5FEB", {"connection_auth_req(0A1B2C3D4E5F, 235)"});
    const std::string out = Output().Out();
    EXPECT_TRUE(
        wire::Occurs("[A-Za-z_]+->[0-9]+, addr\\[5f4e3d2c1b0a\\], profile_id\\[235\\]\r\n", out))
        << out;
    EXPECT_TRUE(
        wire::Occurs("[A-Za-z_]+--address\\[5f\\]:\\[4e\\]:\\[3d\\]:\\[2c\\]:\\[1b\\]:\\[0a\\], "
                     "profile_id:eb\r\n",
                     out))
        << out;
}

} // namespace
