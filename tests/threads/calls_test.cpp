// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every function from every callback, and from four threads at once, as far as the page allows it.

#include "internal_ev_process.h"
#include "protocol/generated_values.h"
#include "support/output_capture.h"
#include "support/text.h"
#include "threads/functions.h"
#include "threads/watching.h"
#include "vym_bluetooth.h"
#include "vym_sdk.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <unistd.h>

namespace {

using e2e::Heard;
using generated::Kind;
using threads::Callback;
using threads::Function;
using threads::Names;
using threads::Stage;

constexpr int kThreads = 4;

// A callback's name, of what it leaves: "hfp.clip" of "hfp.clip("1")".
std::string NameOf(const std::string& entry) {
    return entry.substr(0, entry.find('('));
}

std::vector<const Function*> AllThat(bool (*allowed)(const Function&)) {
    std::vector<const Function*> all;
    for (const threads::Group& group : threads::Functions()) {
        for (const Function& function : group.functions) {
            if (function.call != nullptr && group.title != "start and stop" && allowed(function)) {
                all.push_back(&function);
            }
        }
    }
    return all;
}

// Events of everything that the protocol has, but for descriptors, which must really come.
std::vector<std::string> AllEvents() {
    std::vector<std::string> events{"HX05",       "HX06",       "HO010104001", "HQ0015",
                                    "BQ01000000", "BQ02000000", "BQ03000000"};
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const protocol::Message& message : profile->events) {
            const size_t rounds = generated::Rounds(message.fields);
            for (size_t round = 0; round < rounds; ++round) {
                for (const Kind kind : {Kind::kSmall, Kind::kRandom}) {
                    const std::string text =
                        protocol::encode(message, generated::Values(kind, round).Of(message));
                    if (message.tag != "PD") {
                        events.push_back(text);
                    }
                }
            }
        }
    }
    return events;
}

size_t MembersOfAllTables() {
    constexpr size_t kBytes = sizeof(bluetooth_callback_t) + sizeof(hfp_callback_t) +
                              sizeof(a2dp_callback_t) + sizeof(avrcp_callback_t) +
                              sizeof(pbap_callback_t) + sizeof(rfcomm_callback_t) +
                              sizeof(gatt_client_callback_t) + sizeof(gatt_server_callback_t) +
                              sizeof(hid_callback_t) + sizeof(audio_stream_callback_t);
    return kBytes / sizeof(void (*)());
}

// Calls them all in the first call of each callback, and notes its name.
class CallingAll {
public:
    void Begin() {
        Heard().SetHook([this](const std::string& entry) { Call(NameOf(entry)); });
    }
    void Call(const std::string& callback) {
        {
            const std::lock_guard<std::mutex> held(mutex_);
            if (!begun_.insert(callback).second) {
                return;
            }
        }
        threads::Hurry();
        for (const Function* function : functions_) {
            function->call();
        }
        const std::lock_guard<std::mutex> held(mutex_);
        ended_.insert(callback);
    }
    Names Ended() {
        const std::lock_guard<std::mutex> held(mutex_);
        return ended_;
    }

private:
    const std::vector<const Function*> functions_ = AllThat([](const Function& function) {
        return function.callback == Callback::kYes || function.callback == Callback::kInVain;
    });
    std::mutex mutex_;
    Names begun_;
    Names ended_;
};

class Calls : public ::testing::Test {
protected:
    Calls() { s_calling = &calling_; }
    Stage& TheStage() { return stage_; }
    CallingAll& Calling() { return calling_; }

    static inline CallingAll* s_calling;

private:
    support::OutputCapture quiet_;
    // Outlives the stage: until the library has ended a callback may be at work in it.
    CallingAll calling_;
    Stage stage_;
};

TEST_F(Calls, AreMadeFromEveryCallback) {
    Calling().Begin();
    for (const std::string& event : AllEvents()) {
        TheStage().Server().SendEvents({event});
    }
    TheStage().ExpectHandled();
    // Whatever was called has not ended the hand-over of audio, which is made anew.
    vym_audio_stream_init(&TheStage().Table().audio);
    const support::SocketPair audio;
    TheStage().HandOver(1, audio);
    EXPECT_TRUE(support::WriteBytes(audio.Near(), support::Bytes({0, 5, 1, 0, 'a'})));
    EXPECT_TRUE(support::WaitUntil([&] { return Calling().Ended().count("audio.packet") > 0; }));
    std::string all;
    for (const std::string& name : Calling().Ended()) {
        all += name + '\n';
    }
    // A member of the music's table is never called.
    EXPECT_EQ(Calling().Ended().size(), MembersOfAllTables() - 1) << all;
}

TEST_F(Calls, AreMadeFromHandlersAndRegistrationsToo) {
    Calling().Begin();
    vym_internal_event_register([](ev_data_t* event) {
        if (event->type == 7) {
            s_calling->Call("handler");
        }
    });
    EXPECT_EQ(vym_internal_event_send(7, 0, nullptr), 1);
    EXPECT_TRUE(support::WaitUntil([&] { return Calling().Ended().count("handler") > 0; }));

    vym_gatt_server_register_client({}, [](uint8_t, bt_uuid_t) { s_calling->Call("registration"); });
    TheStage().Server().SendEvents({"KA0007" + std::string(32, '0')});
    EXPECT_TRUE(support::WaitUntil([&] { return Calling().Ended().count("registration") > 0; }));

    vym_bluetooth_register_data_transport_callback(0, [](uint8_t, int fd) {
        close(fd);
        s_calling->Call("descriptor");
    });
    const support::SocketPair serial;
    TheStage().HandOver(0, serial);
    EXPECT_TRUE(support::WaitUntil([&] { return Calling().Ended().count("descriptor") > 0; }));
}

// Writes events until it goes.
class Pouring {
public:
    explicit Pouring(support::FakeServer& server)
        : thread_([this, &server] {
              const std::vector<std::string> events = AllEvents();
              for (size_t i = 0; !ended_; i = (i + 1) % events.size()) {
                  server.SendEvents({events[i]});
              }
          }) {}
    ~Pouring() {
        ended_ = true;
        thread_.join();
    }
    Pouring(const Pouring&) = delete;
    Pouring& operator=(const Pouring&) = delete;
    Pouring(Pouring&&) = delete;
    Pouring& operator=(Pouring&&) = delete;

private:
    std::atomic<bool> ended_{false};
    std::thread thread_;
};

TEST_F(Calls, AreMadeFromFourThreadsAtOnce) {
    const std::vector<const Function*> functions = AllThat([](const Function& function) {
        return function.threads == threads::Threads::kAny && function.rescue == nullptr;
    });
    for (const Function* function : functions) {
        if (function->prepare != nullptr) {
            function->prepare();
        }
    }
    const Pouring events(TheStage().Server());
    std::vector<std::thread> all;
    for (size_t thread = 0; thread < kThreads; ++thread) {
        all.emplace_back([&, thread] {
            threads::Hurry();
            // Each begins elsewhere, and all meet.
            for (size_t i = 0; i < 3 * functions.size(); ++i) {
                functions[(i + thread * functions.size() / kThreads) % functions.size()]->call();
            }
        });
    }
    for (std::thread& one : all) {
        one.join();
    }
}

TEST_F(Calls, ThatWaitWithoutLimitAreMadeFromFourThreadsAtOnce) {
    const auto functions = AllThat([](const Function& function) { return function.rescue != nullptr; });
    EXPECT_EQ(functions.size(), 6U);
    for (const Function* function : functions) {
        SCOPED_TRACE(function->name);
        if (function->prepare != nullptr) {
            function->prepare();
        }
        std::atomic<int> returned{0};
        std::vector<std::thread> all;
        for (size_t thread = 0; thread < kThreads; ++thread) {
            all.emplace_back([&] {
                function->call();
                ++returned;
            });
        }
        EXPECT_TRUE(support::WaitUntil([&] {
            // As often as it takes: some answers end one wait only.
            if (threads::EndlessWaits() > 0) {
                function->rescue();
            }
            return returned == kThreads;
        }));
        for (std::thread& one : all) {
            one.join();
        }
    }
}

} // namespace
