// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The serial channels' decoders, offered text directly: what they hand to the handlers.

#include "vym_rfcomm_event.h"

#include "support/record_text.h"
#include "support/text.h"
#include "unit/event_table.h"

#include <vector>

namespace {

using Texts = std::vector<std::string>;

Texts& Calls() {
    static Texts calls;
    return calls;
}

rfcomm_impl_callback_t Handlers() {
    rfcomm_impl_callback_t table = {};
    table.rfcomm_connection_result_cb = [](uint8_t status, bt_bdaddr_t address, uint8_t server_channel,
                                           int handle, uint16_t max_tx, uint16_t max_rx,
                                           uint8_t credit_in, uint8_t credit_out, uint8_t is_server) {
        Calls().push_back(support::CallText("SE", status, address, server_channel, handle, max_tx,
                                            max_rx, credit_in, credit_out, is_server));
    };
    table.rfcomm_disconnection_result_cb = [](uint8_t status, int handle) {
        Calls().push_back(support::CallText("SF", status, handle));
    };
    table.rfcomm_listen_result_cb = [](uint8_t status, uint8_t channel) {
        Calls().push_back(support::CallText("SL", status, channel));
    };
    table.rfcomm_fetch_channels_cb = [](bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel) {
        Calls().push_back(support::CallText("SM", address, uuid.uu[0], uuid.uu[15], channel));
    };
    table.rfcomm_fetch_channels_end_cb = [](bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel) {
        Calls().push_back(support::CallText("SN", address, uuid.uu[0], uuid.uu[15], channel));
    };
    return table;
}

class RfcommDecoders : public ::testing::Test {
protected:
    void SetUp() override {
        Calls().clear();
        parser_ = create_rfcomm_event_parser(&handlers_);
        ASSERT_NE(parser_, nullptr);
    }
    void TearDown() override { destroy_rfcomm_event_parser(parser_); }

    int Offer(const std::string& bytes) { return unit::OfferBytes(parser_, bytes); }

    event_parser_t* parser_ = nullptr;
    rfcomm_impl_callback_t handlers_ = Handlers();
};

const std::string kResult = "SE0AA1B2C3D4E5F61E1234567812AB34CD9F8E02";
const std::string kDecoded = "SE(10, A1B2C3D4E5F6, 30, 305419896, 4779, 13517, 159, 142, 2)";
const std::string kChannel = "A1B2C3D4E5F6110102030405060708090A0B0C0D0E221E";

TEST_F(RfcommDecoders, TheTableHasItsRowsInOrder) {
    constexpr unit::Row kRows[] = {{"SE", "onRfcommConnectionResult", 32},
                                   {"SF", "onRfcommDisconnectionResult", 10},
                                   {"SL", "onRfcommListenResult", 4},
                                   {"SM", "onRfcommFetchChannels", 46},
                                   {"SN", "onRfcommFetchChannelsEnd", 46}};
    unit::ExpectRows(*parser_, kRows);
}

TEST_F(RfcommDecoders, EachEventGivesItsFieldsAndItsEnd) {
    EXPECT_EQ(Offer(support::Event(kResult)), 40);
    EXPECT_EQ(Offer(support::Event("SF0112345678")), 12);
    EXPECT_EQ(Offer(support::Event("SL010C")), 6);
    EXPECT_EQ(Offer(support::Event("SM" + kChannel)), 48);
    EXPECT_EQ(Offer(support::Event("SN" + kChannel)), 48);
    EXPECT_EQ(Calls(), (Texts{kDecoded, "SF(1, 305419896)", "SL(1, 12)", "SM(A1B2C3D4E5F6, 17, 34, 30)",
                              "SN(A1B2C3D4E5F6, 17, 34, 30)"}));
}

TEST_F(RfcommDecoders, HandlesStopAtTheLargestNumber) {
    Offer(support::Event("SF0080000001"));
    Offer(support::Event("SFFFFFFFFFFF"));
    EXPECT_EQ(Calls(), (Texts{"SF(0, 2147483647)", "SF(255, 2147483647)"}));
}

TEST_F(RfcommDecoders, AConnectionResultWaitsForItsLastCharacterOrItsEnd) {
    for (size_t length = 2; length < kResult.size(); ++length) {
        EXPECT_LE(Offer(kResult.substr(0, length)), 0) << length;
    }
    EXPECT_EQ(Calls(), Texts{});
    EXPECT_EQ(Offer(kResult), 40);
    EXPECT_EQ(Calls(), Texts{kDecoded});
}

TEST_F(RfcommDecoders, WhatAShortConnectionResultLacksIsZero) {
    const std::string start = "SE(10, A1B2C3D4E5F6, 30, 305419896, 4779, 13517, ";
    const Texts expected = {"0, 0, 0)",   "9, 0, 0)",     "159, 0, 0)",
                            "159, 8, 0)", "159, 142, 0)", "159, 142, 0)"};
    for (size_t i = 0; i < expected.size(); ++i) {
        Calls().clear();
        Offer(support::Event(kResult.substr(0, 34 + i)) + support::Event("FFFFFFFF"));
        EXPECT_EQ(Calls(), Texts{start + expected[i]});
    }
    Calls().clear();
    EXPECT_EQ(Offer(support::Event(kResult.substr(0, 33))), 33) << "skipped";
    EXPECT_EQ(Calls(), Texts{});
}

TEST_F(RfcommDecoders, WithoutATableOrAMemberNothingIsCalled) {
    handlers_ = {};
    EXPECT_EQ(Offer(support::Event(kResult)), 40);
    destroy_rfcomm_event_parser(parser_);
    parser_ = create_rfcomm_event_parser(nullptr);
    EXPECT_EQ(Offer(support::Event("SL010C")), 6);
    EXPECT_EQ(Calls(), Texts{});
}

} // namespace
