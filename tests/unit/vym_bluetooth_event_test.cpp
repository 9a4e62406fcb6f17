// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The adapter's decoders, offered text directly: what they hand to the adapter's handlers.

#include "vym_bluetooth_event.h"

#include "support/adapter_record.h"
#include "support/output_capture.h"
#include "support/text.h"
#include "unit/event_table.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

using support::Bytes;
using Texts = std::vector<std::string>;

Texts& Calls() {
    static Texts calls;
    return calls;
}

std::string Text(int value) {
    return std::to_string(value);
}
std::string Text(const bt_bdaddr_t& address) {
    return support::AddressText(address);
}
std::string Text(const char* text) {
    return support::Escaped(text);
}
std::string Text(const bt_oob_data_t& oob) {
    return Text(oob.data[0]) + ".." + Text(oob.data[15]);
}

template <typename... Values>
void Call(const char* name, const Values&... values) {
    std::string call = name;
    ((call += " " + Text(values)), ...);
    Calls().push_back(call);
}

std::string Block(uint16_t len, const uint8_t* data) {
    return data == nullptr ? "null" : std::string(reinterpret_cast<const char*>(data), len);
}

void CallDeviceFound(bt_bdaddr_t address, uint8_t type, int device_class, uint8_t rssi, char* name,
                     uint8_t count, uint16_t* uuids) {
    Call("BD", address, type, device_class, rssi, static_cast<const char*>(name), count);
    Calls().back() += uuids == nullptr ? " null" : "";
    for (int i = 0; i < count; ++i) {
        Calls().back() += " " + Text(uuids[i]);
    }
}

using oob = bt_oob_data_t;

bluetooth_impl_callback_t Handlers() {
    bluetooth_impl_callback_t table{};
    table.on_state_changed_cbk = [](uint8_t state) { Call("PA", state); };
    table.on_bt_version_cbk = [](char* version) { Call("PV", static_cast<const char*>(version)); };
    table.on_data_transport_established_cbk = [](uint8_t id, int number) { Call("PD", id, number); };
    table.on_adapter_properties_cbk = [](uint8_t status, uint8_t count, uint16_t len, uint8_t* value) {
        Call("BB", status, count, len, Block(len, value).c_str());
    };
    table.on_remote_device_properties_cbk = [](uint8_t status, bt_bdaddr_t address, uint8_t count,
                                               uint16_t len, uint8_t* value) {
        Call("BC", status, address, count, len, Block(len, value).c_str());
    };
    table.on_device_found_cbk = CallDeviceFound;
    table.on_discovery_state_changed_cbk = [](uint8_t state) { Call("BE", state); };
    table.on_pin_request_cbk = [](bt_bdaddr_t address, int device_class, uint8_t min_16, char* name) {
        Call("BF", address, device_class, min_16, static_cast<const char*>(name));
    };
    table.on_ssp_request_cbk = [](bt_bdaddr_t address, int device_class, uint8_t variant, int passkey,
                                  char* name) {
        Call("BG", address, device_class, variant, passkey, static_cast<const char*>(name));
    };
    table.on_bond_state_changed_cbk = [](uint8_t status, bt_bdaddr_t address, uint8_t state) {
        Call("BH", status, address, state);
    };
    table.on_acl_state_changed_cbk = [](uint8_t status, bt_bdaddr_t address, uint8_t state) {
        Call("BI", status, address, state);
    };
    table.on_app_gap_started_cbk = [](uint16_t len, uint8_t* data) {
        Call("BN", len, Block(len, data).c_str());
    };
    table.on_connection_auth_req_cbk = [](bt_bdaddr_t address, uint8_t profile) {
        Call("BO", address, profile);
    };
    table.on_le_test_cmd_complete_cbk = [](uint8_t code, uint8_t status, uint16_t packets) {
        Call("BQ", code, status, packets);
    };
    table.on_read_bt_address_cbk = [](uint8_t status, bt_bdaddr_t address) {
        Call("BR", status, address);
    };
    table.on_read_rssi_cbk = [](bt_bdaddr_t address, uint8_t status, uint8_t rssi) {
        Call("BS", address, status, rssi);
    };
    table.on_read_local_oob_data_cbk = [](uint8_t status, oob c, oob r) { Call("BU", status, c, r); };
    table.on_read_local_oob_data_ex_cbk = [](uint8_t status, oob c, oob r, oob c2, oob r2) {
        Call("BV", status, c, r, c2, r2);
    };
    return table;
}

class AdapterDecoders : public ::testing::Test {
protected:
    void SetUp() override {
        Calls().clear();
        output_ = std::make_unique<support::OutputCapture>(); // two of the decoders print
        parser_ = create_bluetooth_event_parser(&handlers_);
        ASSERT_NE(parser_, nullptr);
    }
    void TearDown() override {
        destroy_bluetooth_event_parser(parser_);
        output_.reset();
    }

    int Offer(const std::string& bytes) { return unit::OfferBytes(parser_, bytes); }

    // The decoder of the tag, asked for where its fields end; NULs included the text is an event.
    int Parse(const std::string& event) {
        for (int i = 0; i < parser_->num_of_parsers; ++i) {
            const parser_t& entry = parser_->parser_list[i];
            if (event.compare(0, 2, entry.get_keyword()) == 0) {
                std::string text = event;
                return entry.parse(reinterpret_cast<uint8_t*>(text.data()), 2);
            }
        }
        return -2;
    }

    bluetooth_impl_callback_t handlers_ = Handlers();
    event_parser_t* parser_ = nullptr;

private:
    std::unique_ptr<support::OutputCapture> output_;
};

TEST_F(AdapterDecoders, AreTheEighteenEventsInTheirOrder) {
    constexpr unit::Row kExpected[] = {
        {"PA", "onStateChanged", 2},
        {"PV", "onBtVersion", 0},
        {"PD", "onDataTransportEstablished", 10},
        {"BB", "onAdapterProperties", 8},
        {"BC", "onRemoteDeviceProperties", 20},
        {"BD", "onDeviceFound", 28},
        {"BE", "onDiscoveryStateChanged", 2},
        {"BF", "onPinRequest", 22},
        {"BG", "onSspRequest", 30},
        {"BH", "onBondStateChanged", 16},
        {"BI", "onAclStateChanged", 16},
        {"BN", "onAppGapStarted", 4},
        {"BO", "onConnectionAuthReq", 14},
        {"BQ", "onLETestCmdComplete", 8},
        {"BR", "onReadBTAddress", 14},
        {"BS", "onReadRssi", 16},
        {"BU", "onReadLocalOobData", 66},
        {"BV", "onReadLocalOobDataEX", 130},
    };
    unit::ExpectRows(*parser_, kExpected);
}

// The event, the call that comes of it, and where its last fixed or counted field ends.
struct Case {
    std::string event;
    std::string call;
    int fields_end;
};

std::vector<Case> Cases() {
    const std::string digits = "00112233445566778899AABBCCDDEE";
    return {
        {"PA7F", "PA 127", 4},
        {"PV1.2", "PV 1.2", 2},
        {"PD01000000FF", "PD 1 255", 12},
        {"PDFEFFFFFFFF", "PD 254 2147483647", 12},
        {"BB01020004abcd", "BB 1 2 4 abcd", 14},
        {"BB01020004abcdsurplus", "BB 1 2 4 abcd", 14},
        {"BB01020002" + Bytes({0xDC, 0xDF}), "BB 1 2 1 \\n", 12},
        {"BB01020000", "BB 1 2 0 null", 10},
        {"BC01A1B2C3D4E5F6020003xyz", "BC 1 A1B2C3D4E5F6 2 3 xyz", 25},
        {"BDA1B2C3D4E5F60200240404C80004abcdCar", "BD A1B2C3D4E5F6 2 2360324 200 Car 2 25185 25699",
         34},
        {"BDA1B2C3D4E5F60200240404C80000Car", "BD A1B2C3D4E5F6 2 2360324 200 Car 0 null", 30},
        {"BE02", "BE 2", 4},
        {"BFA1B2C3D4E5F60024040401Car", "BF A1B2C3D4E5F6 2360324 1 Car", 24},
        {"BGA1B2C3D4E5F60024040403000F423FCar", "BG A1B2C3D4E5F6 2360324 3 999999 Car", 32},
        {"BH01A1B2C3D4E5F602", "BH 1 A1B2C3D4E5F6 2", 18},
        {"BI01A1B2C3D4E5F602", "BI 1 A1B2C3D4E5F6 2", 18},
        {"BN0003abc", "BN 3 abc", 9},
        {"BN0103" + std::string(259, 'g'), "BN 3 ggg", 265},
        {"BOA1B2C3D4E5F61B", "BO A1B2C3D4E5F6 27", 16},
        {"BQ04051234", "BQ 4 5 4660", 10},
        {"BR01A1B2C3D4E5F6", "BR 1 A1B2C3D4E5F6", 16},
        {"BSA1B2C3D4E5F601C8", "BS A1B2C3D4E5F6 1 200", 18},
        {"BU01" + digits + "01" + digits + "02", "BU 1 0..1 0..2", 68},
        {"BV01" + digits + "01" + digits + "02" + digits + "03" + digits + "04",
         "BV 1 0..1 0..2 0..3 0..4", 132},
    };
}

TEST_F(AdapterDecoders, HandTheirFieldsToTheirHandler) {
    for (const Case& one : Cases()) {
        SCOPED_TRACE(support::Escaped(one.event));
        EXPECT_EQ(Offer(support::Event(one.event)), static_cast<int>(one.event.size()));
        EXPECT_EQ(Calls(), Texts{one.call});
        Calls().clear();
    }
}

TEST_F(AdapterDecoders, ReturnWhereTheirFixedOrCountedFieldsEnd) {
    for (const Case& one : Cases()) {
        EXPECT_EQ(Parse(one.event), one.fields_end) << support::Escaped(one.event);
    }
}

TEST_F(AdapterDecoders, WaitForTheNulOnlyWhenTheyHaveATail) {
    for (const Case& one : Cases()) {
        SCOPED_TRACE(support::Escaped(one.event));
        const std::string tag = one.event.substr(0, 2);
        const bool has_tail = std::string("PV BB BC BD BF BG BN").find(tag) != std::string::npos;
        EXPECT_EQ(Offer(one.event), has_tail ? -1 : one.fields_end);
        EXPECT_EQ(Calls(), has_tail ? Texts{} : Texts{one.call});
        Calls().clear();
    }
}

TEST_F(AdapterDecoders, TakeEachShortEventAndCallNothing) {
    for (const Case& one : Cases()) {
        SCOPED_TRACE(support::Escaped(one.event));
        size_t fixed = 0;
        for (int i = 0; i < parser_->num_of_parsers; ++i) {
            if (one.event.compare(0, 2, parser_->parser_list[i].get_keyword()) == 0) {
                fixed = static_cast<size_t>(parser_->parser_list[i].get_min_expected_length());
            }
        }
        for (size_t length = 0; length < fixed; ++length) {
            const std::string cut = one.event.substr(0, 2 + length);
            EXPECT_EQ(Offer(support::Event(cut)), static_cast<int>(cut.size()));
            EXPECT_EQ(Offer(cut), -1) << "more of it may come";
        }
        EXPECT_EQ(Calls(), Texts{});
    }
}

TEST_F(AdapterDecoders, TakeABlockThatRunsPastTheEventAndCallNothing) {
    for (const char* event :
         {"BB01020005abcd", "BC01A1B2C3D4E5F6020004xyz", "BDA1B2C3D4E5F60200240404C80008abcdCar",
          "BN0004abc", "BNFFFFabc", "BB0102FFFFabcd", "BN01FFabc"}) {
        EXPECT_EQ(Offer(support::Event(event)), static_cast<int>(strlen(event))) << event;
        EXPECT_EQ(Calls(), Texts{}) << event;
    }
}

TEST_F(AdapterDecoders, LeaveOtherTagsAlone) {
    for (const char* event : {"BA01", "BJ01", "pa01", "P", "B", "XX", " PA01", "BX00112233445566"}) {
        EXPECT_EQ(Offer(support::Event(event)), -1) << event;
    }
    EXPECT_EQ(Offer(std::string(1, '\0')), -1);
    EXPECT_EQ(Offer(""), -1);
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(AdapterDecoders, SkipHandlersThatAreNull) {
    handlers_ = bluetooth_impl_callback_t{};
    for (const Case& one : Cases()) {
        EXPECT_EQ(Offer(support::Event(one.event)), static_cast<int>(one.event.size()));
    }
    EXPECT_EQ(Calls(), Texts{});
}

TEST(AdapterParser, WithoutATableCallsNothing) {
    const support::OutputCapture quiet;
    event_parser_t* parser = create_bluetooth_event_parser(nullptr);
    ASSERT_NE(parser, nullptr);
    for (const Case& one : Cases()) {
        std::string text = support::Event(one.event);
        EXPECT_EQ(parser->process_event(parser, reinterpret_cast<uint8_t*>(text.data()), 0,
                                        static_cast<int>(text.size())),
                  static_cast<int>(one.event.size()));
    }
    destroy_bluetooth_event_parser(parser);
}

TEST(AdapterParser, DestroyedIsNoLongerCalledThrough) {
    Calls().clear();
    bluetooth_impl_callback_t handlers = Handlers();
    event_parser_t* parser = create_bluetooth_event_parser(&handlers);
    ASSERT_NE(parser, nullptr);
    const parser_t state_changed = parser->parser_list[0];
    std::string text = "PA01";
    EXPECT_EQ(state_changed.parse(reinterpret_cast<uint8_t*>(text.data()), 2), 4);
    EXPECT_EQ(Calls(), Texts{"PA 1"});
    destroy_bluetooth_event_parser(parser);
    EXPECT_EQ(state_changed.parse(reinterpret_cast<uint8_t*>(text.data()), 2), 4);
    EXPECT_EQ(Calls(), Texts{"PA 1"});
}

TEST(AdapterParser, NoneCanBeDestroyed) {
    destroy_bluetooth_event_parser(nullptr);
}

} // namespace
