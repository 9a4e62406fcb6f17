// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A text that becomes part of a command never becomes a second one: with a line end inside it is
// refused whole, wherever that stands.

#include "protocol/protocol.h"
#include "support/session.h"
#include "vym_hfp_impl.h"
#include "vym_pbap.h"
#include "wire/rfcomm_support.h"

#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace {

using protocol::Field;
using protocol::Message;
using protocol::Profile;
using protocol::Type;
using wire::kSerialPort;

std::string Outcome(bt_status_t status) {
    return status == BT_STATUS_SUCCESS ? "sent"
           : status == BT_STATUS_FAIL  ? "refused"
                                       : std::to_string(status);
}

std::string Listen(char* name) {
    vym_bluetooth_server_socket_t* server = vym_rfcomm_listen(kSerialPort, 0, name);
    vym_rfcomm_server_close(server);
    return server != nullptr ? "sent" : "refused";
}

/** A call with a text, and the commands that it writes around that. */
struct TextCall {
    const char* name;
    std::string tag;
    std::function<std::string(char*)> call;
    std::string before;
    std::string behind = "\r\n";
    bool null_is_empty = false;
};

const TextCall kCalls[] = {
    {"dial", "HH", [](char* text) { return Outcome(vym_hfp_dial(text)); }, "AT#HH"},
    {"send_at_command", "HP",
     [](char* text) { return Outcome(vym_hfp_send_at_command(1, 2, 3, text)); }, "AT#HP000100020003"},
    {"pull_vcard_by_number", "TN",
     [](char* text) { return Outcome(vym_pbap_pull_vcard_by_number(4, text)); }, "AT#TN00000004"},
    {"listen_impl", "SL",
     [](char* text) { return Outcome(vym_rfcomm_listen_impl(kSerialPort, 0, text)); },
     "AT#SLFB349B5F80000080001000000111000000", "\r\n", true},
    {"listen", "SL", Listen, "AT#SLFB349B5F80000080001000000111000000", "\r\nAT#SN05\r\n", true},
};

const std::vector<std::string> kBreakTheLine = {"\r",
                                                "\n",
                                                "\r\n",
                                                "\n\r",
                                                "\r\r",
                                                "\n\n",
                                                "\r12",
                                                "\n12",
                                                "\r\n12",
                                                "12\r",
                                                "12\n",
                                                "12\r\n",
                                                "1\r2",
                                                "1\n2",
                                                "1\r\n2",
                                                "12\rAT#PC",
                                                "12\r\nAT#PC\r\n",
                                                "\r\nAT#PC",
                                                "\nAT#PC",
                                                "12;\nPC",
                                                "\x7F\r\xDC",
                                                std::string(5000, '7') + "\r"};

const std::vector<std::string> kDoNot = {
    "",       "12",           " ",        "\t",         "AT#PC",
    "\\r\\n", "\x0B\x0C\x1B", "\xDC\xDE", "Zo\xC3\xAB", std::string(5000, '7')};

class TextIntegrity : public support::AdapterTest {
protected:
    void SetUp() override {
        AdapterTest::SetUp();
        wire::RfcommProfile::Init(wire::Table::kWhole);
    }
    void TearDown() override {
        wire::RfcommProfile::Done();
        AdapterTest::TearDown();
    }

    void ExpectRefused(const TextCall& one, char* text) {
        EXPECT_EQ(one.call(text), "refused");
        char number[] = "112";
        EXPECT_EQ(vym_hfp_dial(number), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#HH112\r\n");
    }
    void ExpectSent(const TextCall& one, char* text) {
        Server().Send(support::Event("SL0005")); // what listening waits for
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(one.call(text), "sent");
        Server().ExpectCommand(one.before + (text != nullptr ? text : "") + one.behind);
        Server().ExpectNothingMore();
    }
};

TEST_F(TextIntegrity, ALineEndAnywhereSendsNothingAndTheNextCommandArrivesAlone) {
    for (const TextCall& one : kCalls) {
        for (std::string text : kBreakTheLine) {
            SCOPED_TRACE(one.name + (" " + support::Escaped(text).substr(0, 40)));
            ExpectRefused(one, text.data());
        }
    }
    Server().ExpectNothingMore();
}

TEST_F(TextIntegrity, NoTextIsRefusedToo) {
    for (const TextCall& one : kCalls) {
        SCOPED_TRACE(one.name);
        if (one.null_is_empty) {
            ExpectSent(one, nullptr);
        } else {
            ExpectRefused(one, nullptr);
        }
    }
}

TEST_F(TextIntegrity, AnyOtherTextIsSentAsItStands) {
    for (const TextCall& one : kCalls) {
        for (std::string text : kDoNot) {
            SCOPED_TRACE(one.name + (" " + support::Escaped(text).substr(0, 40)));
            ExpectSent(one, text.data());
        }
    }
}

// Fields of other kinds are digits, or bytes that are escaped.
TEST(TextIntegrityOfTheProtocol, HasNoOtherCommandsWithTexts) {
    std::set<std::string> with_text;
    for (const Profile* profile : protocol::profiles()) {
        for (const Message& message : profile->commands) {
            for (const Field& field : message.fields) {
                EXPECT_NE(field.type, Type::Counted) << message.tag;
                EXPECT_NE(field.type, Type::Character) << message.tag;
                if (field.type == Type::Text) {
                    with_text.insert(std::string(message.tag));
                }
            }
        }
    }
    std::set<std::string> tested;
    for (const TextCall& one : kCalls) {
        tested.insert(one.tag);
    }
    EXPECT_EQ(with_text, tested);
}

} // namespace
