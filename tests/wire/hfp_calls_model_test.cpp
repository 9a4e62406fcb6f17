// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The list of calls as a state machine: random streams of indicators, call lines, completions and
// changes of connection, legal and not, against a model written from the rules. What the application
// hears and what the server is asked must be the same, and every call that was listed is reported ended
// exactly once.

#include "wire/hfp_profile.h"

#include <array>
#include <fcntl.h>
#include <map>
#include <random>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Instrumented and emulated runs take a tenth: they look for errors of another kind.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__) || defined(__arm__)
constexpr int kStreams = 10000;
#else
constexpr int kStreams = 100000;
#endif
constexpr int kSlots = 10;

using Entries = std::vector<std::string>;

struct Call {
    int direction = 0;
    int state = 0;
    int mpty = 0;
    std::string number;

    [[nodiscard]] std::string Entry(int index) const {
        return "call(" + std::to_string(index) + ", " + std::to_string(direction) + ", " +
               std::to_string(state) + ", " + std::to_string(mpty) + ", \"" + number + "\")";
    }
};

// The rules, in the plainest form: lists by index, what is heard, what is asked.
class Model {
public:
    Entries heard;
    int queries = 0;

    void Indicator() {
        if (++indicators_ >= 3) {
            Query();
        }
    }
    void Line(int index, const Call& call) {
        heard.push_back(call.Entry(index));
        if (index >= 1 && index <= kSlots) {
            update_[index] = call;
        }
    }
    void Completion(int result, int command) {
        if (command == 21) {
            if (result == 0 && querying_) {
                Swap();
            }
            querying_ = false;
            Complete(command, result);
            heard.push_back("current_call_num(" + std::to_string(current_.size()) + ")");
        } else if (result != 0) {
            Complete(command, result);
        }
    }
    void Connection(int state) {
        if (state == 0 || state == 2) {
            indicators_ = 0;
            querying_ = false;
        }
        if (state == 0) {
            Swap();
        }
        heard.push_back("connection_state(" + std::to_string(state) + ", 3, 511, A1B2C3D4E5F6)");
    }
    void PhoneState(int state) {
        if (state == 5) {
            heard.emplace_back("standby_indication()");
        } else if (state >= 6 && state <= 10) {
            Query();
        }
    }
    [[nodiscard]] const std::map<int, Call>& Current() const { return current_; }

private:
    void Query() {
        if (!querying_) {
            querying_ = true;
            update_.clear();
            ++queries;
        }
    }
    void Swap() {
        for (auto& [index, call] : current_) {
            if (update_.count(index) == 0) {
                call.state = 7;
                heard.push_back(call.Entry(index));
            }
        }
        current_ = update_;
        update_.clear();
    }
    void Complete(int command, int result) {
        heard.push_back("call_action_complete(" + std::to_string(command) + ", " +
                        std::to_string(result) + ")");
    }

    int indicators_ = 0;
    bool querying_ = false;
    std::map<int, Call> current_;
    std::map<int, Call> update_;
};

std::string Hex(int value) {
    char digits[3];
    snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(value));
    return digits;
}

// Makes events and tells the model of them.
class Stream {
public:
    explicit Stream(unsigned seed) : random_(seed) {}

    std::string Next(Model& model) {
        std::string text;
        const int events = Pick(1, 12);
        for (int i = 0; i < events; ++i) {
            text += OneEvent(model) + std::string(1, '\0');
        }
        return text;
    }

private:
    int Pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

    std::string OneEvent(Model& model) {
        switch (Pick(0, 9)) {
        case 0:
        case 1:
            model.Indicator();
            return std::string("H") + "IJK"[Pick(0, 2)] + Hex(Pick(0, 255));
        case 2:
        case 3:
        case 4:
            return Line(model);
        case 5:
        case 6:
            return Completion(model);
        case 7:
            return Connection(model);
        case 8:
            return PhoneState(model);
        default:
            return std::array<const char*, 4>{"HI0", "HO010203", "HQ00",
                                              "HY01"}[static_cast<size_t>(Pick(0, 3))];
        }
    }
    std::string Line(Model& model) {
        // Mostly few indices, so that they meet again; sometimes ones without a slot.
        const int index = Pick(0, 9) == 0 ? Pick(0, 255) : Pick(1, 4);
        const Call call = {Pick(0, 1), Pick(0, 6), Pick(0, 1),
                           std::to_string(Pick(0, 3) == 0 ? 0 : Pick(1, 999))};
        model.Line(index, call);
        return "HO" + Hex(index) + Hex(call.direction) + Hex(call.state) + Hex(call.mpty) + call.number;
    }
    std::string Completion(Model& model) {
        const int result = Pick(0, 2) == 0 ? Pick(1, 255) : 0;
        const int command = Pick(0, 3) == 0 ? Pick(0, 255) : 21;
        model.Completion(result, command);
        return "HQ" + Hex(result) + Hex(command);
    }
    std::string Connection(Model& model) {
        const int state = Pick(0, 3);
        model.Connection(state);
        return "HA" + Hex(state) + "00000003000001FFA1B2C3D4E5F6";
    }
    std::string PhoneState(Model& model) {
        const int state = Pick(4, 11);
        model.PhoneState(state);
        return "HX" + Hex(state);
    }

    std::mt19937 random_;
};

class HfpCallsModel : public wire::ProfileConformance<wire::HfpProfile> {
protected:
    void SetUp() override {
        ProfileConformance::SetUp();
        // Millions of lines that nobody reads.
        const int nothing = open("/dev/null", O_WRONLY | O_CLOEXEC);
        fflush(stdout);
        saved_ = dup(STDOUT_FILENO);
        dup2(nothing, STDOUT_FILENO);
        close(nothing);
    }
    void TearDown() override {
        fflush(stdout);
        dup2(saved_, STDOUT_FILENO);
        close(saved_);
        ProfileConformance::TearDown();
    }
    // The queries that the server has been asked so far; anything else it was asked fails the test.
    int TakeQueries() {
        std::array<char, 4096> bytes{};
        std::string asked;
        ssize_t n = 0;
        while ((n = recv(Server().ClientFd(), bytes.data(), bytes.size(), MSG_DONTWAIT)) > 0) {
            asked.append(bytes.data(), static_cast<size_t>(n));
        }
        const std::string query = "AT#HK\r\n";
        int count = 0;
        for (size_t at = 0; at < asked.size(); at += query.size()) {
            EXPECT_EQ(asked.substr(at, query.size()), query);
            ++count;
        }
        return count;
    }

private:
    int saved_ = -1;
};

TEST_F(HfpCallsModel, EveryStreamIsHeardAsTheRulesSay) {
    Stream stream(20261121);
    Model model;
    int queries = 0;
    std::map<std::string, int> listed;
    for (int i = 0; i < kStreams && !HasFailure(); ++i) {
        std::string text = stream.Next(model);
        const int length = static_cast<int>(text.size());
        // On this thread, as the receive thread would: what it causes is there when the call returns.
        ASSERT_EQ(process_event(reinterpret_cast<uint8_t*>(text.data()), length), length);
        ASSERT_EQ(wire::ProfileRecord().Take(), model.heard)
            << "stream " << i << ": " << support::Escaped(text);
        queries += TakeQueries();
        ASSERT_EQ(queries, model.queries) << "stream " << i << ": " << support::Escaped(text);
        model.heard.clear();
    }
}

TEST_F(HfpCallsModel, EveryListedCallIsReportedEndedExactlyOnce) {
    // NOLINTNEXTLINE(cert-msc32-c,cert-msc51-cpp): the same sequence in each run
    std::mt19937 random(7);
    std::map<int, int> ended;
    std::map<int, int> listed;
    const auto feed = [](const std::string& event) {
        std::string text = support::Event(event);
        process_event(reinterpret_cast<uint8_t*>(text.data()), static_cast<int>(text.size()));
    };
    for (int i = 0; i < kStreams / 10; ++i) {
        // A set of calls is listed by a whole query, then a connection is lost: each ends once.
        feed("HX09");
        for (int index = 1; index <= kSlots; ++index) {
            if (random() % 2 == 0) {
                feed("HO" + Hex(index) + "000000" + std::to_string(index));
                ++listed[index];
            }
        }
        feed("HQ0015");
        feed(random() % 2 == 0 ? "HA0000000003000001FFA1B2C3D4E5F6" : "HX09");
        feed("HQ0015");
        for (const std::string& entry : wire::ProfileRecord().Take()) {
            if (entry.find(", 7, ") != std::string::npos) {
                ++ended[std::stoi(entry.substr(5))];
            }
        }
        TakeQueries();
    }
    EXPECT_EQ(ended, listed);
}

} // namespace
