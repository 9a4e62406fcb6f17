// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "serial_data.h"

#include "running_sim.h"

#include <asio/io_context.hpp>
#include <gtest/gtest.h>
#include <sys/socket.h>

namespace {

using namespace std::string_literals;
using Strings = std::vector<std::string>;

/// The connection of these tests, and its handle on the wire.
constexpr uint32_t kHandle = 0x01020304;
const std::string kWireHandle = "\x04\x03\x02\x01";

/// A message of the client's connection with a short payload.
std::string message(char credit, const std::string& payload) {
    return kWireHandle + credit + static_cast<char>(payload.size()) + '\0' + payload;
}

class KeptDescriptors : public sim::Outbox {
public:
    void send(const sim::Event&) override {}
    void hand_over(uint8_t id, sim::UniqueFd fd) override {
        ids.push_back(id);
        client = std::move(fd);
    }

    std::vector<uint8_t> ids;
    sim::UniqueFd client;
};

/// The data of one connection, with the client's end of the descriptor. The event loop turns only when
/// a test says so.
class SimSerialData : public testing::Test {
protected:
    SimSerialData() {
        pace_.serial_credit = std::chrono::hours(1);
        data_.open();
        data_.begin(kHandle);
    }

    /// Runs what is due now.
    void turn() {
        loop_.restart();
        loop_.poll();
    }

    void from_client(const std::string& bytes) {
        ASSERT_EQ(send(out_.client.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(bytes.size()));
        turn();
    }

    /// What has come to the client.
    std::string to_client() {
        std::string all;
        std::array<char, 4096> chunk{};
        for (;;) {
            const ssize_t count = recv(out_.client.get(), chunk.data(), chunk.size(), MSG_DONTWAIT);
            if (count <= 0) {
                return all;
            }
            all.append(chunk.data(), static_cast<size_t>(count));
            turn();
        }
    }

    sim::Pace pace_;
    asio::io_context loop_{1};
    sim::World world_;
    KeptDescriptors out_;
    std::ostringstream log_text_;
    sim::Log log_{sim::LogLevel::All, log_text_};
    sim::Hub hub_{loop_, world_, out_, log_, pace_, {}, {}, {}};
    Strings received_;
    /// Called for each payload after it is recorded.
    std::function<void(uint32_t, std::string_view)> answer_ = [](uint32_t, std::string_view) {};
    sim::SerialData data_{hub_, [this](uint32_t handle, std::string_view payload) {
                              received_.emplace_back(payload);
                              answer_(handle, payload);
                          }};
};

TEST_F(SimSerialData, IsHandedOverAsTransportZero) {
    EXPECT_EQ(out_.ids, std::vector<uint8_t>{0});
    EXPECT_TRUE(out_.client);
}

TEST_F(SimSerialData, AMessageIsHandleCreditLengthAndPayload) {
    data_.write(kHandle, "hi\r\n");
    EXPECT_EQ(to_client(), "\x04\x03\x02\x01\x00\x04\x00hi\r\n"s);
}

TEST_F(SimSerialData, EveryByteOfALengthCounts) {
    const std::string payload(0x0201, 'p');
    from_client("\x04\x03\x02\x01\x00\x01\x02"s + payload);
    EXPECT_EQ(received_, Strings{payload});
}

TEST_F(SimSerialData, MessagesCutAnywhereArriveWhole) {
    const std::string stream = message(1, "one") + message(2, "") + message(0, "\r\n\0three"s);
    const Strings whole{"one", "\r\n\0three"s};
    for (size_t cut = 0; cut <= stream.size(); ++cut) {
        received_.clear();
        from_client(stream.substr(0, cut));
        from_client(stream.substr(cut));
        EXPECT_EQ(received_, whole) << "cut at " << cut;
    }
    received_.clear();
    for (const char c : stream) {
        from_client(std::string(1, c));
    }
    EXPECT_EQ(received_, whole);
}

TEST_F(SimSerialData, ATakenMessageGivesItsCreditBackAtOnce) {
    from_client(message(0, "data"));
    EXPECT_EQ(to_client(), "\x04\x03\x02\x01\x01\x00\x00"s);
}

TEST_F(SimSerialData, AnAnswerCarriesTheCreditAndOnlyItsFirstMessageDoes) {
    answer_ = [this](uint32_t handle, std::string_view) {
        data_.write(handle, "one");
        data_.write(handle, "two");
    };
    from_client(message(0, "data"));
    EXPECT_EQ(to_client(), "\x04\x03\x02\x01\x01\x03\x00one"
                           "\x04\x03\x02\x01\x00\x03\x00two"s);
}

TEST_F(SimSerialData, AMessageWithoutPayloadIsNeitherPassedOnNorPaidBack) {
    from_client(message(5, ""));
    EXPECT_EQ(received_, Strings{});
    EXPECT_EQ(to_client(), "");
}

TEST_F(SimSerialData, WithoutCreditsMessagesWaitForAGrant) {
    for (char c = 'a'; c < 'a' + 20; ++c) {
        data_.write(kHandle, std::string(1, c));
    }
    // Sixteen credits, eight bytes a message.
    const std::string first = to_client();
    EXPECT_EQ(first.size(), 16U * 8);
    EXPECT_EQ(first.back(), 'p');
    EXPECT_TRUE(data_.has_backlog(kHandle));

    from_client(message(1, ""));
    EXPECT_EQ(to_client(), message(0, "q"));
    // Only three of these are needed.
    from_client(message(16, ""));
    EXPECT_EQ(to_client(), message(0, "r") + message(0, "s") + message(0, "t"));
    EXPECT_FALSE(data_.has_backlog(kHandle));
}

TEST_F(SimSerialData, GrantsAddUpToTheMostThatACreditCanSay) {
    from_client(message('\xFF', ""));
    from_client(message('\xFF', ""));
    for (int i = 0; i < 256; ++i) {
        data_.write(kHandle, "x");
    }
    EXPECT_EQ(to_client().size(), 255U * 8);
}

TEST_F(SimSerialData, EachConnectionHasCreditsOfItsOwn) {
    data_.begin(9);
    for (int i = 0; i < 17; ++i) {
        data_.write(kHandle, "x");
    }
    EXPECT_EQ(to_client().size(), 16U * 8);
    data_.write(9, "y");
    EXPECT_EQ(to_client(), "\x09\x00\x00\x00\x00\x01\x00y"s);
    from_client("\x09\x00\x00\x00\x05\x00\x00"s);
    EXPECT_EQ(to_client(), "") << "a grant for one is none for another";
}

TEST_F(SimSerialData, AClientThatNeverGrantsGetsEverythingInTime) {
    pace_.serial_credit = std::chrono::milliseconds(1);
    std::string sent;
    for (char c = 'a'; c <= 'z'; ++c) {
        data_.write(kHandle, std::string(1, c));
        data_.write(kHandle, std::string(1, c));
        sent += message(0, std::string(1, c)) + message(0, std::string(1, c));
    }
    std::string got;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (got.size() < sent.size() && std::chrono::steady_clock::now() < deadline) {
        loop_.restart();
        loop_.run_for(std::chrono::milliseconds(1));
        got += to_client();
    }
    EXPECT_EQ(got, sent);
}

TEST_F(SimSerialData, LongTextsAreDivided) {
    data_.write(kHandle, std::string(990, 'a') + std::string(990, 'b') + "c");
    EXPECT_EQ(to_client(), kWireHandle + "\x00\xDE\x03"s + std::string(990, 'a') + kWireHandle +
                               "\x00\xDE\x03"s + std::string(990, 'b') + kWireHandle + "\x00\x01\x00"s +
                               "c");
}

TEST_F(SimSerialData, GarbageForUnknownHandlesIsDroppedWithItsPayload) {
    const std::string largest = std::string(7, '\xFF') + std::string(65535, 'g');
    // More than the socket takes at once.
    for (size_t at = 0; at < largest.size(); at += 4096) {
        from_client(largest.substr(at, 4096));
    }
    from_client("\x00\x00\x00\x00\x07\x00\x00"s + "\x05\x03\x02\x01\x07\x02\x00no"s);
    from_client(message(0, "known"));
    EXPECT_EQ(received_, Strings{"known"});
    EXPECT_EQ(to_client(), "\x04\x03\x02\x01\x01\x00\x00"s);
    EXPECT_NE(log_text_.str().find(
                  "serial data for no connection, dropped: handle 4294967295, 65535 bytes\n"),
              std::string::npos);
}

TEST_F(SimSerialData, NothingIsSentForAnEndedConnection) {
    for (int i = 0; i < 17; ++i) {
        data_.write(kHandle, "x");
    }
    EXPECT_EQ(to_client().size(), 16U * 8);
    data_.end(kHandle);
    data_.write(kHandle, "y");
    from_client(message(16, "z"));
    EXPECT_EQ(to_client(), "");
    EXPECT_EQ(received_, Strings{});
    // Nor does the past count for a later connection.
    data_.begin(kHandle);
    data_.write(kHandle, "new");
    EXPECT_EQ(to_client(), message(0, "new"));
}

TEST_F(SimSerialData, AConnectionMayEndWhileItsMessageIsTaken) {
    answer_ = [this](uint32_t handle, std::string_view) { data_.end(handle); };
    from_client(message(0, "last") + message(0, "late"));
    EXPECT_EQ(received_, Strings{"last"});
    EXPECT_EQ(to_client(), "");
}

TEST_F(SimSerialData, TheEndOfAConnectionLeavesTheFramingWhole) {
    data_.begin(9);
    from_client(message('\xFF', ""));
    // Far more than the socket takes.
    data_.write(kHandle, std::string(200000, 'x'));
    EXPECT_TRUE(data_.has_backlog(kHandle));
    data_.end(kHandle);
    data_.write(9, "other");
    std::string stream = to_client();
    const std::string full = kWireHandle + "\x00\xDE\x03"s + std::string(990, 'x');
    size_t messages = 0;
    for (; stream.rfind(full, 0) == 0; ++messages) {
        stream.erase(0, full.size());
    }
    EXPECT_EQ(stream, "\x09\x00\x00\x00\x00\x05\x00other"s);
    EXPECT_GT(messages, 0U);
    EXPECT_LT(messages, 200U) << "some had to be forgotten";
}

TEST_F(SimSerialData, AClientThatNeverReadsIsNotReadEitherAndMissesNothing) {
    answer_ = [this](uint32_t handle, std::string_view payload) { data_.write(handle, payload); };
    constexpr size_t kLimit = 200000;
    const std::string sent = message('\xFF', "0123456789");
    size_t messages = 0;
    for (int refused = 0; refused < 2 && messages < kLimit;) {
        if (send(out_.client.get(), sent.data(), sent.size(), MSG_NOSIGNAL | MSG_DONTWAIT) > 0) {
            ++messages;
            refused = 0;
        } else {
            // Unless the server makes room now, it has stopped reading.
            ++refused;
            turn();
        }
    }
    // Otherwise all of it is in the server's memory.
    ASSERT_LT(messages, kLimit);
    std::string stream;
    for (std::string more = to_client(); !more.empty(); more = to_client()) {
        stream += more;
        turn();
    }
    std::string expected;
    for (size_t i = 0; i < messages; ++i) {
        expected += message(1, "0123456789");
    }
    EXPECT_EQ(stream.size(), expected.size());
    EXPECT_TRUE(stream == expected);
}

TEST_F(SimSerialData, AClientThatClosesEndsTheDescriptorButNotTheConnection) {
    from_client("\x04\x03\x02"s);
    out_.client.reset();
    turn();
    EXPECT_FALSE(data_.is_open());
    // To nobody.
    data_.write(kHandle, "lost");
    data_.open();
    EXPECT_TRUE(data_.is_open());
    from_client(message(0, "whole"));
    EXPECT_EQ(received_, Strings{"whole"}) << "half a message of the old descriptor is forgotten";
    EXPECT_EQ(to_client(), "\x04\x03\x02\x01\x01\x00\x00"s);
}

TEST_F(SimSerialData, AClientMayCloseWhileMuchWaitsForIt) {
    from_client(message('\xFF', ""));
    data_.write(kHandle, std::string(200000, 'x'));
    ASSERT_TRUE(data_.has_backlog(kHandle));
    out_.client.reset();
    turn();
    EXPECT_FALSE(data_.is_open());
    EXPECT_FALSE(data_.has_backlog(kHandle));
    data_.open();
    data_.write(kHandle, "fresh");
    EXPECT_EQ(to_client(), message(0, "fresh"));
}

TEST_F(SimSerialData, ASecondDescriptorReplacesTheFirst) {
    const sim::UniqueFd first = std::move(out_.client);
    data_.open();
    EXPECT_EQ(out_.ids, (std::vector<uint8_t>{0, 0}));
    char byte = 0;
    EXPECT_EQ(recv(first.get(), &byte, 1, 0), 0) << "the first has ended";
    data_.write(kHandle, "x");
    EXPECT_EQ(to_client(), message(0, "x"));
}

} // namespace
