// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Receiving takes no memory: whatever the server sends, an event is decoded and told in room that is
// there already. The few events that make the library keep or send something are named.

#include "memory/failing_calls.h"
#include "protocol/event_records.h"
#include "protocol/generated_values.h"
#include "protocol/modules.h"
#include "support/session.h"
#include "vym_bluetooth.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using modules::kModules;
using modules::Module;
using protocol::Message;
using protocol::Profile;

void CloseTransport(uint8_t /*id*/, int fd) {
    close(fd);
}

class EveryEvent : public support::AdapterTest {
protected:
    void SetUp() override {
        held_ = memory::BlocksHeld();
        AdapterTest::SetUp();
        StartModules();
    }
    void TearDown() override {
        StopModules();
        AdapterTest::TearDown();
        vym_bluetooth_register_data_transport_callback(IPC_ID_SPP, nullptr);
        vym_bluetooth_register_data_transport_callback(IPC_ID_AUDIO, nullptr);
        EXPECT_EQ(memory::BlocksHeld(), held_ + kept_);
        wire::ProfileRecord().Reset();
    }

    static void StartModules() {
        for (const Module& module : kModules) {
            module.init(wire::Table::kWhole);
        }
        vym_bluetooth_register_data_transport_callback(IPC_ID_SPP, CloseTransport);
        vym_bluetooth_register_data_transport_callback(IPC_ID_AUDIO, CloseTransport);
    }
    static void StopModules() {
        for (const Module& module : kModules) {
            module.done();
        }
    }

    /** All that the description makes of a message - empty, small, escaped, longest, at random - and
     * what decides what becomes of it. */
    static std::vector<std::string> TextsOf(const Message& message) {
        std::vector<std::string> texts;
        for (const generated::Kind kind : generated::kKinds) {
            for (size_t round = 0; round < generated::Rounds(message.fields); ++round) {
                texts.push_back(protocol::encode(message, generated::Values(kind, round).Of(message)));
            }
        }
        for (const records::Row& row : records::Rows()) {
            for (const uint32_t decision : row.decisions) {
                if (row.tag == message.tag) {
                    auto values = generated::Values(generated::Kind::kSmall, 0).Of(message);
                    generated::Find(values, row.deciding)->number = decision;
                    texts.push_back(protocol::encode(message, values));
                }
            }
        }
        if (message.tag == "BH") { // two devices, then one
            texts.insert(texts.end(),
                         {"BH00A504030201A002", "BH00B504030201B002", "BH00A504030201A000"});
        }
        return texts;
    }

    /** Calls `visit` with the tag and the text of every event, each on modules just started. */
    template <class Visit>
    static void ForEachEvent(Visit visit) {
        for (const Profile* profile : protocol::profiles()) {
            for (const Message& message : profile->events) {
                for (const std::string& text : TextsOf(message)) {
                    StopModules();
                    StartModules();
                    visit(std::string(message.tag), text);
                }
            }
        }
    }

    void Deliver(const std::string& text) {
        Server().Send(support::Event(text));
        if (text.substr(0, 2) == "PD") {
            const support::SocketPair transport;
            Server().SendDescriptor(transport.Far());
        }
        ASSERT_TRUE(Session().EventsAreHandled()) << support::Escaped(text).substr(0, 300);
    }

    size_t kept_ = 0;

private:
    size_t held_ = 0;
};

// What the others take memory for, and how often at most.
const std::map<std::string, int> kTakeMemory = {
    {"BB", 4}, // the server's list of bonded devices, as it grows
    {"BH", 1}, // a device more or less in the local list
    {"HD", 1}, // with a network the operator is asked for
    {"HX", 1}, // another number of calls: they are asked for
    {"KF", 1}, // what ended is confirmed
    {"SE", 3}, // a connection: its record, its buffer and the buffer's room
    {"TS", 1}, // a phone that connects
};

TEST_F(EveryEvent, IsReceivedWithoutMemory) {
    std::map<std::string, int> taken;
    size_t events = 0;
    ForEachEvent([&](const std::string& tag, const std::string& text) {
        const memory::CountedAllocations needed;
        Deliver(text);
        ++events;
        if (needed.Asked() > 0) {
            taken[tag] = std::max(taken[tag], needed.Asked());
        }
        if (tag == "SE" && needed.Asked() > 0) {
            kept_ = 1; // the record of a socket is used again, never given back
        }
    });
    EXPECT_GT(events, 500U);
    EXPECT_EQ(taken, kTakeMemory);
}

TEST_F(EveryEvent, IsSurvivedWithoutMemoryAndNothingIsSent) {
    ForEachEvent([this](const std::string& /*tag*/, const std::string& text) {
        const memory::FailingAllocations failing;
        Deliver(text);
    });
    Server().ExpectNothingMore();
    wire::ProfileRecord().Reset();
    Deliver("HC01");
    Deliver("RA4401");
    EXPECT_EQ(wire::ProfileRecord().Take(),
              (std::vector<std::string>{"vr_cmd(1)", "handle_passthrough_rsp(68, 1)"}));
    vym_bluetooth_enable();
    Server().ExpectCommand("AT#PB\r\n");
}

} // namespace
