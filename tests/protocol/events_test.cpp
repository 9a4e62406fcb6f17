// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every event that the description can produce reaches the application with the values it was made of.

#include "protocol/event_records.h"
#include "protocol/generated_values.h"
#include "protocol/modules.h"

#include "support/session.h"
#include "vym_bluetooth_impl.h"
#include "vym_gatt_client_impl.h"
#include "vym_rfcomm_impl.h"

#include <gtest/gtest.h>
#include <map>
#include <unistd.h>

namespace {

using generated::Kind;
using modules::kModules;
using modules::Module;
using protocol::Decoded;
using protocol::Direction;
using protocol::Message;
using protocol::Profile;
using protocol::Value;
using records::Lines;
using wire::Table;

void TakeTransport(uint8_t id, int fd) {
    EXPECT_GT(fd, 0) << "the descriptor did not come";
    close(fd);
    support::AdapterRecord().Add("transport(" + std::to_string(id) + ")");
}

void TakeRegistration(uint8_t client_if, bt_uuid_t uuid) {
    wire::ProfileRecord().Add(support::CallText("registered", client_if, uuid));
}

// The parameter is a profile's name.
class ProtocolEvents : public support::SessionTest, public testing::WithParamInterface<std::string> {
protected:
    static const Profile* Tested() {
        const auto& all = protocol::profiles();
        return *std::find_if(all.begin(), all.end(),
                             [](const Profile* profile) { return profile->name == GetParam(); });
    }

    void SetUp() override {
        SessionTest::SetUp();
        Session().StartAdapter();
        wire::ProfileRecord().Reset();
        for (const Module& module : kModules) {
            module.init(Table::kWhole);
        }
        TakeHandovers();
        vym_gatt_client_set_server_hook(TakeRegistration);
    }
    void TearDown() override {
        vym_gatt_client_set_server_hook(nullptr);
        for (const Module& module : kModules) {
            module.done();
        }
        SessionTest::TearDown();
        vym_bluetooth_register_data_transport_callback(IPC_ID_SPP, nullptr);
        vym_bluetooth_register_data_transport_callback(IPC_ID_AUDIO, nullptr);
        wire::ProfileRecord().Reset();
    }

    static void TakeHandovers() {
        vym_bluetooth_register_data_transport_callback(IPC_ID_SPP, TakeTransport);
        vym_bluetooth_register_data_transport_callback(IPC_ID_AUDIO, TakeTransport);
    }

    // No event finds what an earlier one has left, such as calls.
    static void StartAfresh(const Profile* profile, Table others) {
        for (const Module& module : kModules) {
            if (module.profile == profile) {
                module.done();
                module.init(Table::kWhole);
            } else if (others == Table::kEmpty) {
                module.init(others);
            }
        }
        TakeHandovers();
    }

    void Send(const std::string& text) {
        const support::SocketPair transport;
        Server().Send(support::Event(text));
        if (text.substr(0, 2) == "PD") {
            Server().SendDescriptor(transport.Far());
        }
        EXPECT_TRUE(Session().EventsAreHandled());
    }

    // The event as it is decoded from what the description makes of these values, which must be the
    // same again.
    static Decoded SentAndRead(const Message& message, const std::vector<Value>& values,
                               std::string* text) {
        *text = protocol::encode(message, values);
        EXPECT_LE(text->size(), 4095U) << "longer than events may be";
        Decoded decoded = protocol::decode(Direction::Event, *text);
        EXPECT_EQ(decoded.problem, "");
        EXPECT_EQ(decoded.surplus, "");
        EXPECT_EQ(protocol::to_text(decoded.values), protocol::to_text(values));
        return decoded;
    }

    void ExpectDelivered(const records::Row& row, const Message& message,
                         const std::vector<Value>& values) {
        std::string text;
        const Decoded decoded = SentAndRead(message, values, &text);
        const records::Expected expected =
            records::Expect(row, records::Event(decoded.found, decoded.values));
        SCOPED_TRACE(support::Escaped(text).substr(0, 300));
        const size_t printed = Output().Out().size();
        Send(text);
        Lines entries = Adapter().Take();
        for (const std::string& entry : wire::ProfileRecord().Take()) {
            entries.push_back(entry);
        }
        EXPECT_EQ(entries, expected.entries);
        for (const std::string& command : expected.commands) {
            Server().ExpectCommand("AT#" + command + "\r\n");
        }
        EXPECT_NE(Output().Out().find(expected.printed, printed), std::string::npos)
            << "not printed: " << expected.printed;
    }
};

const records::Row* RowOf(const Message& message) {
    for (const records::Row& row : records::Rows()) {
        if (row.tag == message.tag) {
            return &row;
        }
    }
    return nullptr;
}

void SetBytes(Value* value, const std::string& bytes, Value* length) {
    value->bytes = bytes;
    if (length != nullptr) {
        length->number = static_cast<uint32_t>(bytes.size());
    }
}

// What the description leaves open and the library does not.
void MakeMeaningful(const Message& message, std::vector<Value>* values) {
    if (message.tag == "TD") { // a name is several parts
        Value* name = generated::Find(*values, "name");
        SetBytes(name, name->bytes.empty() ? "" : name->bytes + ";2nd;;",
                 generated::Find(*values, "name_length"));
    }
    Value* track = message.tag == "RJ" ? generated::Find(*values, "track") : nullptr;
    if (track != nullptr && !track->members.empty() && track->members[1].members[0].number == 0) {
        track->members[2].members[0].bytes = "0123456789ABCDEF"; // a UID
    }
    Value* state = message.tag == "BE" ? generated::Find(*values, "state") : nullptr;
    if (state != nullptr && state->number == 0xEE) {
        state->number = 0xED; // the other one is the session's own
    }
}

// All generated values of a message, and those that decide what becomes of it.
std::vector<std::vector<Value>> ValuesOf(const records::Row& row, const Message& message) {
    std::vector<std::vector<Value>> all;
    for (const Kind kind : generated::kKinds) {
        for (size_t round = 0; round < generated::Rounds(message.fields); ++round) {
            all.push_back(generated::Values(kind, round).Of(message));
        }
    }
    for (const uint32_t decision : row.decisions) {
        for (const Kind kind : {Kind::kEmpty, Kind::kSmall}) {
            all.push_back(generated::Values(kind, 0).Of(message));
            generated::Find(all.back(), row.deciding)->number = decision;
        }
    }
    for (std::vector<Value>& values : all) {
        MakeMeaningful(message, &values);
    }
    return all;
}

TEST_P(ProtocolEvents, ReachOneCallbackWithTheirValues) {
    for (const Message& message : Tested()->events) {
        const records::Row* row = RowOf(message);
        ASSERT_NE(row, nullptr) << message.tag << " " << message.name
                                << " is not in the table of records: say what becomes of it";
        for (const std::vector<Value>& values : ValuesOf(*row, message)) {
            StartAfresh(Tested(), Table::kWhole);
            ExpectDelivered(*row, message, values);
        }
    }
    Server().ExpectNothingMore();
}

// Profiles have members of the same name; with the other tables empty it can only be the right one.
TEST_P(ProtocolEvents, ReachTheCallbackOfTheirProfile) {
    StartAfresh(Tested(), Table::kEmpty);
    for (const Message& message : Tested()->events) {
        const records::Row* row = RowOf(message);
        ASSERT_NE(row, nullptr) << message.tag;
        ExpectDelivered(*row, message, generated::Values(Kind::kSmall, 0).Of(message));
    }
}

INSTANTIATE_TEST_SUITE_P(All, ProtocolEvents,
                         testing::Values("bluetooth", "rfcomm", "hfp", "a2dp", "avrcp", "pbap",
                                         "gatt_client", "gatt_server", "hid"),
                         [](const auto& one) { return one.param; });

TEST(ProtocolEventRecords, AreOfDescribedEventsAndOfEachOnce) {
    std::map<std::string_view, int> seen;
    for (const records::Row& row : records::Rows()) {
        const protocol::Found found = protocol::find(Direction::Event, row.tag);
        ASSERT_TRUE(found) << row.tag;
        EXPECT_EQ(found.message->tag, row.tag);
        EXPECT_EQ(++seen[row.tag], 1) << row.tag;
    }
}

} // namespace
