// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every command that the library can send is recognised by the description with the same values.

#include "protocol/codec.h"
#include "protocol/command_rows.h"

#include "support/session.h"
#include "support/text.h"
#include "wire/avrcp_support.h"
#include "wire/hfp_profile.h"
#include "wire/rfcomm_support.h"

#include <algorithm>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <set>

namespace {

using commands::Row;
using protocol::Decoded;
using protocol::Direction;

// "vym_hfp_dial" of "vym_hfp_dial(s_text)".
std::string FunctionOf(const Row& row) {
    const std::string call = row.call;
    return call.substr(0, call.find('('));
}

// What a server says to a command that somebody is waiting for; empty for others.
std::string AnswerTo(const std::string& command) {
    const std::string tag = command.substr(0, 2);
    if (tag == "PV") {
        return "PV1.0";
    }
    if (tag == "BA" || tag == "BB") {
        return "BB00010004" + command.substr(2, 2) + "00";
    }
    if (tag == "BC") {
        return "BC00" + command.substr(2, 12) + "010004" + command.substr(14, 2) + "00";
    }
    if (tag == "SE") {
        return "SE01" + command.substr(2, 12) + "1E000000010001000101" + "0100";
    }
    if (tag == "SL") {
        return "SL0005";
    }
    return tag == "KA" ? "KA0005" + command.substr(2, 32) : "";
}

class ProtocolCommands : public support::AdapterTest {
protected:
    void SetUp() override {
        AdapterTest::SetUp();
        wire::RfcommProfile::Init(wire::Table::kWhole);
        wire::HfpProfile::Init(wire::Table::kWhole);
        vym_avrcp_init(avrcp::RecordingTable());
        vym_gatt_client_init(nullptr);
    }
    void TearDown() override {
        vym_gatt_client_done();
        vym_avrcp_done();
        wire::HfpProfile::Done();
        wire::RfcommProfile::Done();
        AdapterTest::TearDown();
        wire::ProfileRecord().Reset();
    }

    // The next command without "AT#" and line end.
    std::string NextCommand() {
        std::string line;
        while (line.size() < 2 || line.substr(line.size() - 2) != "\r\n") {
            const std::string next = Server().ReceiveBytes(1);
            if (next.empty()) {
                ADD_FAILURE() << "no command came, but " << support::Escaped(line);
                return "";
            }
            line += next;
        }
        EXPECT_EQ(line.substr(0, 3), "AT#");
        return line.substr(3, line.size() - 5);
    }

    // "hfp dial number="+49""
    std::string Recognised(const std::string& command) {
        const Decoded decoded = protocol::decode(Direction::Command, command);
        EXPECT_EQ(decoded.problem, "") << support::Escaped(command);
        EXPECT_EQ(decoded.surplus, "") << support::Escaped(command);
        if (!decoded.found) {
            return "";
        }
        EXPECT_EQ(protocol::encode(*decoded.found.message, decoded.values), command);
        recognised_.insert(std::string(decoded.found.message->tag));
        const std::string fields = protocol::to_text(decoded.values);
        return std::string(decoded.found.profile->name) + " " +
               std::string(decoded.found.message->name) + (fields.empty() ? "" : " " + fields);
    }

    void ExpectSent(const Row& row) {
        SCOPED_TRACE(row.call);
        Server().SendEvents(row.before);
        EXPECT_TRUE(Session().EventsAreHandled());
        const auto done = std::async(std::launch::async, row.run);
        for (const std::string& expected : row.sent) {
            const std::string command = NextCommand();
            EXPECT_EQ(Recognised(command), expected);
            const std::string answer = AnswerTo(command);
            if (!answer.empty()) {
                Server().Send(support::Event(answer));
            }
        }
        done.wait();
    }

    std::set<std::string> recognised_;
};

TEST_F(ProtocolCommands, AreRecognisedWithTheirValuesAndNoneIsLeftOut) {
    for (const Row& row : commands::AllRows()) {
        ExpectSent(row);
        ASSERT_FALSE(HasFailure()) << "later rows would find this one's commands";
    }
    Server().ExpectNothingMore();
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const protocol::Message& message : profile->commands) {
            EXPECT_EQ(recognised_.count(std::string(message.tag)), 1U)
                << "no call sends " << message.tag << " " << profile->name << " " << message.name;
        }
    }
}

std::set<std::string> ExportedFunctions() {
    std::ifstream map(VYM_SYMBOL_MAP);
    EXPECT_TRUE(map) << "cannot read " VYM_SYMBOL_MAP;
    std::set<std::string> names;
    for (std::string line; std::getline(map, line);) {
        const std::vector<std::string> match = support::Match(line, "^ *(vym_[A-Za-z0-9_]+);$");
        if (!match.empty()) {
            names.insert(match[1]);
        }
    }
    return names;
}

TEST(ProtocolCommandRows, HaveEveryExportedFunctionThatSends) {
    const std::set<std::string> exported = ExportedFunctions();
    EXPECT_GT(exported.size(), 200U);
    std::set<std::string> called;
    for (const Row& row : commands::AllRows()) {
        called.insert(FunctionOf(row));
    }
    const auto& silent = commands::kSendNothing;
    for (const std::string& name : exported) {
        const bool is_silent = std::find(silent.begin(), silent.end(), name) != silent.end();
        EXPECT_NE(is_silent, called.count(name) == 1)
            << name << " wants one place: a row, or the list of those that send nothing";
    }
    for (const std::string& name : silent) {
        EXPECT_EQ(exported.count(name), 1U) << name << " is not exported";
    }
}

} // namespace
