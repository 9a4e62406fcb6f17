// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Many threads at once: what each does arrives whole, and the thread sanitizer has something to look
// at.

#include "vym_sdk.h"

#include "internal_ev_process.h"
#include "vym_audio_stream.h"

#include "support/capture_reader.h"
#include "support/probe_parser.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>

#include <unistd.h>

namespace {

using support::Event;
using Entries = std::vector<std::string>;

constexpr int kRounds = 150;

// Threads that are joined with the object.
class Threads {
public:
    Threads() = default;
    ~Threads() { Join(); }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;
    Threads(Threads&&) = delete;
    Threads& operator=(Threads&&) = delete;

    void Add(const std::function<void()>& work) { threads_.emplace_back(work); }
    void AddRepeated(const std::function<void(int)>& work) {
        Add([work] {
            for (int i = 0; i < kRounds; ++i) {
                work(i);
            }
        });
    }
    void Join() {
        for (std::thread& thread : threads_) {
            thread.join();
        }
        threads_.clear();
    }

private:
    std::vector<std::thread> threads_;
};

void SendCommand(std::string command) {
    send_at_command(command.data(), 0);
}

std::string Command(int thread, int round) {
    return "AT#T" + std::to_string(thread) + "R" + std::to_string(round) + "\r\n";
}

Entries SortedLines(const std::string& text) {
    Entries lines = support::Lines(text);
    std::sort(lines.begin(), lines.end());
    return lines;
}

class ManyThreads : public support::ProbeTest {
protected:
    void ExpectAllEvents() {
        EXPECT_TRUE(EventsAreHandled());
        EXPECT_EQ(Events().Count("XB(00112233445566)"), size_t{kRounds});
    }
    void SendEvents() {
        for (int i = 0; i < kRounds; ++i) {
            Server().Send(Event("XB00112233445566"));
        }
    }
};

TEST_F(ManyThreads, CommandsStayWholeOnTheWireAndInTheCapture) {
    constexpr int kCommanders = 4;
    std::string expected;
    Threads threads;
    for (int thread = 0; thread < kCommanders; ++thread) {
        threads.AddRepeated([thread](int round) { SendCommand(Command(thread, round)); });
        for (int round = 0; round < kRounds; ++round) {
            expected += Command(thread, round);
        }
    }
    threads.Add([this] { SendEvents(); });
    const std::string received = Server().ReceiveBytes(expected.size());
    threads.Join();
    EXPECT_EQ(SortedLines(received), SortedLines(expected));
    ExpectAllEvents();
    const support::CaptureFile file = support::ReadCapture(Session().CapturePath());
    EXPECT_EQ(file.rest, "");
    EXPECT_EQ(SortedLines(file.Commands()), SortedLines(expected));
}

TEST_F(ManyThreads, CallbacksAndApplicationsCommandTogether) {
    Events().SetHook([](const std::string& entry) {
        if (entry == "XB(00112233445566)") {
            SendCommand("AT#CALLBACK\r\n");
        }
    });
    Threads threads;
    threads.AddRepeated([](int round) { SendCommand(Command(0, round)); });
    threads.Add([this] { SendEvents(); });
    std::string expected;
    for (int round = 0; round < kRounds; ++round) {
        expected += Command(0, round) + "AT#CALLBACK\r\n";
    }
    EXPECT_EQ(SortedLines(Server().ReceiveBytes(expected.size())), SortedLines(expected));
}

std::atomic<int>& Messages() {
    static std::atomic<int> count;
    return count;
}

TEST_F(ManyThreads, MessagesAndHandlersComeAndGo) {
    Messages() = 0;
    vym_internal_event_register([](ev_data_t*) { ++Messages(); });
    const internal_event_callback passing = [](ev_data_t*) {};
    std::atomic<int> sent{0};
    Threads threads;
    for (int sender = 0; sender < 2; ++sender) {
        threads.AddRepeated([&](int round) {
            uint8_t value = static_cast<uint8_t>(round);
            sent += round % 10 == 0 ? vym_internal_event_send(1, 1, &value) : 0;
        });
    }
    threads.AddRepeated([&](int) {
        vym_internal_event_register(passing);
        vym_internal_event_unregister(passing);
    });
    threads.Add([this] { SendEvents(); });
    threads.Join();
    EXPECT_TRUE(support::WaitUntil([&] { return Messages() == sent; }));
    EXPECT_EQ(sent, 2 * kRounds / 10);
    ExpectAllEvents();
}

TEST_F(ManyThreads, ParsersComeAndGoWhileEventsFlow) {
    event_parser_t passing{};
    passing.process_event = [](event_parser_t*, uint8_t*, int, int) { return -1; };
    Threads threads;
    threads.AddRepeated([&](int) {
        register_event_parser(&passing);
        unregister_event_parser(&passing);
    });
    threads.Add([this] { SendEvents(); });
    threads.Join();
    ExpectAllEvents();
}

TEST_F(ManyThreads, ASilentServerDoesNotHoldTheEndUp) {
    // Nobody reads the commands, so that the thread ends up waiting for room in the socket.
    std::atomic<bool> ended{false};
    std::atomic<int> sent{0};
    Threads threads;
    threads.Add([&] {
        const std::string command = "AT#HH" + std::string(4000, '7') + "\r\n";
        while (!ended) {
            SendCommand(command);
            ++sent;
        }
    });
    EXPECT_TRUE(support::WaitUntil([&] {
        const int before = sent;
        return before > 20 &&
               !support::WaitUntil([&] { return sent > before; }, support::Milliseconds(200));
    }));
    vym_sdk_done();
    ended = true;
    threads.Join();
}

TEST_F(ManyThreads, CommandsDuringEndAndStart) {
    std::atomic<bool> ended{false};
    Threads threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.Add([&ended, thread] {
            for (int round = 0; !ended; ++round) {
                SendCommand(Command(thread, round));
                vym_internal_event_send(1, 0, nullptr);
                usleep(200); // leaves room for the others on a machine with few cores
            }
        });
    }
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(Session().Restart());
        RegisterProbe();
        EXPECT_TRUE(EventsAreHandled());
    }
    ended = true;
    vym_sdk_done(); // nobody reads the commands: this frees a thread that waits for room
}

void IgnoreAudio(uint8_t /*type*/, uint8_t /*codec*/, uint16_t /*len*/, uint8_t* /*data*/) {
    ++Messages();
}

class ManyAudioThreads : public support::AdapterTest {
protected:
    void SetUp() override {
        support::AdapterTest::SetUp();
        Messages() = 0;
        vym_audio_stream_init(&table_);
    }
    void TearDown() override {
        vym_audio_stream_done();
        support::AdapterTest::TearDown();
    }
    void AfterStop(const support::LeakCheck& leaks) override {
        for (const int fd : leaks.LeftOpen()) {
            close(fd); // the transports stay open at the end of a session
        }
    }

    void HandOver(const support::SocketPair& pair) {
        Server().Send(Event("PD0100000007"));
        Server().SendDescriptor(pair.Far());
        EXPECT_TRUE(Session().EventsAreHandled());
    }

private:
    audio_stream_callback_t table_{IgnoreAudio};
};

TEST_F(ManyAudioThreads, VoiceGoesOutWhilePacketsComeIn) {
    const support::SocketPair pair;
    HandOver(pair);
    Threads threads;
    threads.AddRepeated([&](int) {
        EXPECT_TRUE(support::WriteBytes(pair.Near(), support::Bytes({0, 5, 3, 0, 'a', 'b', 'c'})));
    });
    threads.AddRepeated([](int) {
        uint8_t voice[] = {'v', 'o', 'i', 'c', 'e'};
        EXPECT_EQ(vym_audio_stream_send(AUDIO_STREAM_TYPE_SCO, 0, 5, voice), 5);
    });
    threads.AddRepeated([](int) { vym_bluetooth_enable(); });
    EXPECT_EQ(support::ReadBytes(pair.Near(), size_t{5} * kRounds).size(), size_t{5} * kRounds);
    threads.Join();
    EXPECT_TRUE(support::WaitUntil([] { return Messages() == kRounds; }));
}

TEST_F(ManyAudioThreads, HandOversAndEndsMeetVoice) {
    std::atomic<bool> ended{false};
    Threads threads;
    threads.Add([&] {
        while (!ended) {
            uint8_t voice[] = {'v'};
            vym_audio_stream_send(AUDIO_STREAM_TYPE_SCO, 0, 1, voice);
            usleep(100); // leaves room for the others on a machine with few cores
        }
    });
    for (int i = 0; i < 10; ++i) {
        const support::SocketPair pair;
        HandOver(pair);
        EXPECT_TRUE(support::WriteBytes(pair.Near(), support::Bytes({0, 5, 3, 0, 'a', 'b', 'c'})));
        EXPECT_TRUE(support::WaitUntil([&] { return Messages() == i + 1; }));
        if (i % 2 == 0) {
            vym_audio_stream_done();
        }
    }
    ended = true;
}

} // namespace
