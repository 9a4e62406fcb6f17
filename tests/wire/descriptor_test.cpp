// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Descriptors that the server hands over: each belongs to one event, and none is lost or kept.

#include "vym_bluetooth.h"

#include "support/limits.h"
#include "support/session.h"

#include <array>
#include <list>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using support::Event;
using support::SocketPair;
using Entries = std::vector<std::string>;

// A descriptor to pass that can be told from others: whoever gets it reads its label.
class Labelled {
public:
    explicit Labelled(const std::string& label) {
        EXPECT_TRUE(support::WriteBytes(pair_.Near(), label));
    }

    [[nodiscard]] int Fd() const { return pair_.Far(); }
    /** After it was passed: only the client can hold it open. */
    void Passed() { pair_.CloseFar(); }
    /** Whether the client (or the kernel, for what was never read) has closed it. */
    [[nodiscard]] bool IsClosed() const { return support::ReadsEndOfStream(pair_.Near()); }

private:
    SocketPair pair_;
};

std::string LabelOf(int fd) {
    std::array<char, 32> label{};
    const ssize_t count = recv(fd, label.data(), label.size(), MSG_DONTWAIT);
    return {label.data(), static_cast<size_t>(std::max<ssize_t>(count, 0))};
}

// Records "transport(1, label)" or "transport(1, none)" and closes the descriptor.
void TakeTransport(uint8_t id, int fd) {
    const std::string label = fd == 0 ? "none" : LabelOf(fd);
    const bool inherited = fd > 0 && (fcntl(fd, F_GETFD) & FD_CLOEXEC) == 0;
    if (fd > 0) {
        close(fd);
    }
    support::AdapterRecord().Add("transport(" + std::to_string(id) + ", " + label +
                                 (inherited ? ", would be inherited" : "") + ")");
}

class Descriptor : public support::AdapterTest {
protected:
    void SetUp() override {
        support::AdapterTest::SetUp();
        vym_bluetooth_register_data_transport_callback(IPC_ID_SPP, TakeTransport);
        vym_bluetooth_register_data_transport_callback(IPC_ID_AUDIO, TakeTransport);
    }
    void TearDown() override {
        support::AdapterTest::TearDown();
        vym_bluetooth_register_data_transport_callback(IPC_ID_SPP, nullptr);
        vym_bluetooth_register_data_transport_callback(IPC_ID_AUDIO, nullptr);
    }
    void AfterStop(const support::LeakCheck& /*leaks*/) override {
        for (const Labelled& one : passed_) {
            EXPECT_TRUE(one.IsClosed()) << "a descriptor is still held after the end";
        }
        passed_.clear();
    }

    // Passes a new descriptor on a 00 byte.
    const Labelled& Pass(const std::string& label) {
        Labelled& one = passed_.emplace_back(label);
        Server().SendDescriptor(one.Fd());
        one.Passed();
        return one;
    }

    // One message of this text with a new descriptor for each label.
    void PassWith(const std::string& text, const Entries& labels) {
        std::vector<int> fds;
        std::vector<Labelled*> sent;
        for (const std::string& label : labels) {
            sent.push_back(&passed_.emplace_back(label));
            fds.push_back(sent.back()->Fd());
        }
        Server().SendWithDescriptors(text, fds);
        for (Labelled* one : sent) {
            one->Passed();
        }
    }

    void ExpectEntries(const Entries& expected, const std::string& what = "") {
        EXPECT_TRUE(Session().EventsAreHandled()) << what;
        EXPECT_EQ(Adapter().Take(), expected) << what;
    }

    // Keeps the receive thread in a callback, which leaves "discovery_state_changed(0)".
    void HoldTheReceiveThread(support::Gate& gate) {
        Adapter().SetHook([&gate](const std::string& entry) {
            if (entry == "discovery_state_changed(0)") {
                EXPECT_TRUE(gate.Wait());
            }
        });
        Server().Send(Event("BE00"));
        EXPECT_TRUE(Adapter().WaitForEntry("discovery_state_changed(0)"));
    }

private:
    std::list<Labelled> passed_;
};

constexpr const char* kAudio = "PD0100000007";
constexpr const char* kSerial = "PD0000000008";

TEST_F(Descriptor, IsHandedToTheCallbackOfItsKind) {
    Server().Send(Event(kAudio));
    Pass("a");
    Server().Send(Event(kSerial));
    Pass("b");
    ExpectEntries({"transport(1, a)", "transport(0, b)"});
}

TEST_F(Descriptor, ItsReceiptIsPrinted) {
    Server().Send(Event("BE01") + Event(kAudio));
    Pass("a");
    ExpectEntries({"discovery_state_changed(1)", "transport(1, a)"});
    const Entries lines = support::LinesWith(Output().Out(), "recvfd_client");
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "recvfd_client ret 1.");
}

TEST_F(Descriptor, AThousandBurstsLoseNothing) {
    Entries expected;
    for (int i = 0; i < 1000; ++i) {
        const std::string label = std::to_string(i);
        Labelled one(label);
        Server().Send(Event("BE01") + Event(kAudio));
        Server().SendDescriptor(one.Fd());
        Server().Send(Event("BE02"));
        expected.insert(expected.end(), {"discovery_state_changed(1)", "transport(1, " + label + ")",
                                         "discovery_state_changed(2)"});
    }
    ExpectEntries(expected);
}

TEST_F(Descriptor, BurstsQueuedWhileTheClientIsBusyLoseNothing) {
    support::Gate gate;
    HoldTheReceiveThread(gate);
    Entries expected = {"discovery_state_changed(0)"};
    for (int i = 0; i < 40; ++i) {
        const std::string label = std::to_string(i);
        Server().Send(Event("BE01") + Event(kAudio));
        Pass(label);
        Server().Send(Event("BE02"));
        expected.insert(expected.end(), {"discovery_state_changed(1)", "transport(1, " + label + ")",
                                         "discovery_state_changed(2)"});
    }
    gate.Open();
    ExpectEntries(expected);
}

TEST_F(Descriptor, AStreamCutAtEveryByteLosesNothing) {
    const std::string before = Event("BE01") + Event("PD0100000007surplus");
    const std::string behind = Event("BH00001122334455") + Event("BE02");
    for (size_t cut = 1; cut < before.size(); ++cut) {
        Server().Send(before.substr(0, cut));
        ASSERT_TRUE(Server().ClientHasRead());
        Server().Send(before.substr(cut));
        Pass("a");
        Server().Send(behind.substr(0, cut));
        ASSERT_TRUE(Server().ClientHasRead());
        Server().Send(behind.substr(std::min(cut, behind.size())));
        ExpectEntries({"discovery_state_changed(1)", "transport(1, a)", "discovery_state_changed(2)"},
                      "cut at " + std::to_string(cut));
    }
}

TEST_F(Descriptor, ItsByteMayBeTheEventsNul) {
    Server().Send(kAudio);
    Pass("a");
    Server().Send(Event("BE01"));
    ExpectEntries({"transport(1, a)", "discovery_state_changed(1)"});
}

TEST_F(Descriptor, MayRideOnTheEventItself) {
    PassWith(Event(kAudio), {"a"});
    PassWith(Event("BE01") + Event(kAudio) + Event("BE02"), {"b"});
    ExpectEntries({"transport(1, a)", "discovery_state_changed(1)", "transport(1, b)",
                   "discovery_state_changed(2)"});
}

TEST_F(Descriptor, TwoEventsBeforeTwoDescriptorsGetTheirs) {
    Server().Send(Event(kAudio) + Event(kSerial));
    Pass("a");
    Pass("b");
    Server().Send(Event("BE01"));
    ExpectEntries({"transport(1, a)", "transport(0, b)", "discovery_state_changed(1)"});
}

TEST_F(Descriptor, AnotherEventMayComeBetween) {
    Server().Send(Event(kAudio) + Event("BE01"));
    Pass("a");
    Server().Send(Event("BE02"));
    ExpectEntries({"transport(1, a)", "discovery_state_changed(1)", "discovery_state_changed(2)"});
}

TEST_F(Descriptor, TextThatComesWhileItIsAwaitedIsKept) {
    Server().Send(Event(kAudio));
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send(Event("BE01") + Event(kSerial) + "BE0");
    ASSERT_TRUE(Server().ClientHasRead());
    Pass("a");
    Pass("b");
    Server().Send(Event("3") + Event("BE02"));
    EXPECT_TRUE(Session().EventsAreHandled());
    // The descriptors' bytes are NULs behind "BE0", which ends that event before its field.
    EXPECT_EQ(Adapter().Take(), (Entries{"transport(1, a)", "discovery_state_changed(1)",
                                         "transport(0, b)", "discovery_state_changed(2)"}));
}

TEST_F(Descriptor, OneThatNeverComesIsReportedAsZero) {
    Server().Send(Event(kAudio) + Event("BE01"));
    ExpectEntries({"transport(1, none)", "discovery_state_changed(1)"});
    Server().Send(Event(kAudio));
    Pass("b");
    ExpectEntries({"transport(1, b)"});
}

TEST_F(Descriptor, AServerThatDiesInsteadOfPassingItIsReportedAsZero) {
    Server().Send(Event("BE01") + Event(kAudio));
    Server().CloseClient();
    EXPECT_TRUE(Adapter().WaitForExactly({"discovery_state_changed(1)", "transport(1, none)"}));
}

TEST_F(Descriptor, WaitingForItDoesNotBlockTheEnd) {
    // The event in front says when the hand-over is being dealt with, in the same burst.
    Server().Send(Event("BE01") + Event(kAudio));
    ASSERT_TRUE(Adapter().WaitForEntry("discovery_state_changed(1)"));
    Session().Stop();
    EXPECT_EQ(Adapter().Take(), (Entries{"discovery_state_changed(1)", "transport(1, none)"}));
}

// A descriptor that belongs to nothing, then a regular hand-over.
struct StrayCase {
    const char* what;
    std::string before;
    Entries entries;
};

TEST_F(Descriptor, AStrayOneIsClosedAndNotGivenToALaterEvent) {
    const std::vector<StrayCase> cases = {
        {"nothing before it", "", {}},
        {"an unknown tag", Event("ZZ0100000007"), {}},
        {"a hand-over cut short", Event("PD010000007"), {}},
        {"another event", Event("BE01"), {"discovery_state_changed(1)"}},
        {"an id above 1", Event("PD0200000007"), {}},
        {"the highest id", Event("PDFF00000007"), {}},
    };
    for (const StrayCase& one : cases) {
        Server().Send(one.before);
        const Labelled& stray = Pass("stray");
        Server().Send(Event(kAudio));
        Pass("good");
        Entries expected = one.entries;
        expected.emplace_back("transport(1, good)");
        ExpectEntries(expected, one.what);
        EXPECT_TRUE(stray.IsClosed()) << one.what;
    }
}

TEST_F(Descriptor, AStrayOneBeforeAKeptHalfEventIsStillStray) {
    const Labelled& stray = Pass("stray");
    Server().Send("PD01000");
    ASSERT_TRUE(Server().ClientHasRead());
    Server().Send(Event("00007"));
    Pass("good");
    ExpectEntries({"transport(1, good)"});
    EXPECT_TRUE(stray.IsClosed());
}

TEST_F(Descriptor, OnesThatRideOnAHalfEventAreClosedAtTheEnd) {
    PassWith("BE0", {"a"});
    ASSERT_TRUE(Server().ClientHasRead());
}

TEST_F(Descriptor, OnesThatRideOnAHalfEventMayBeMoreThanAreKept) {
    PassWith("BH", {"first"});
    for (int i = 0; i < 16; ++i) {
        PassWith("0", {"surplus"});
    }
    Server().Send(Event(""));
    ExpectEntries({"bond_state_changed(0, 000000000000, 0)"});
    Server().Send(Event(kAudio));
    Pass("good");
    ExpectEntries({"transport(1, good)"});
}

TEST_F(Descriptor, OneThatComesTooLateIsNotGivenToALaterEvent) {
    Server().Send(Event(kAudio));
    EXPECT_TRUE(Adapter().WaitForExactly({"transport(1, none)"}));
    const Labelled& late = Pass("late");
    Server().Send(Event(kAudio));
    Pass("good");
    ExpectEntries({"transport(1, none)", "transport(1, good)"});
    EXPECT_TRUE(late.IsClosed());
}

TEST_F(Descriptor, TheSurplusOfOneMessageIsClosed) {
    Server().Send(Event(kAudio));
    PassWith(std::string("\0", 1), {"a", "b"});
    Server().Send(Event(kAudio));
    Pass("c");
    ExpectEntries({"transport(1, a)", "transport(1, c)"});
}

TEST_F(Descriptor, AMessageWithFortyOfThemIsHarmless) {
    Server().Send(Event(kAudio));
    PassWith(std::string("\0", 1), Entries(40, "a"));
    Server().Send(Event("BE01"));
    ExpectEntries({"transport(1, a)", "discovery_state_changed(1)"});
}

TEST_F(Descriptor, HundredsThatNobodyAskedForAreHarmless) {
    Entries expected;
    for (int i = 0; i < 100; ++i) {
        Pass("stray");
        Server().Send(Event("BE01"));
        expected.emplace_back("discovery_state_changed(1)");
    }
    ExpectEntries(expected);
    // The hand-over and its descriptor wait together, so that one read brings both.
    support::Gate gate;
    HoldTheReceiveThread(gate);
    Server().Send(Event(kAudio));
    Pass("good");
    gate.Open();
    ExpectEntries({"discovery_state_changed(0)", "transport(1, good)"},
                  "strays must not crowd out a good one");
}

TEST_F(Descriptor, WhatIsNeverAskedForIsClosedAtTheEnd) {
    const Labelled& stray = Pass("stray");
    ExpectEntries({});
    Session().Stop();
    EXPECT_TRUE(stray.IsClosed());
}

TEST_F(Descriptor, OneOfTheLastConnectionIsNotGivenToTheNext) {
    const Labelled& stray = Pass("stray");
    ExpectEntries({});
    ASSERT_TRUE(Session().Restart());
    EXPECT_TRUE(stray.IsClosed());
    Server().Send(Event(kAudio));
    Pass("good");
    ExpectEntries({"transport(1, good)"});
}

TEST_F(Descriptor, OfAKindThatNobodyTakesIsClosed) {
    vym_bluetooth_register_data_transport_callback(IPC_ID_SPP, nullptr);
    Server().Send(Event(kSerial));
    const Labelled& unwanted = Pass("unwanted");
    ExpectEntries({});
    EXPECT_TRUE(unwanted.IsClosed());
}

TEST_F(Descriptor, OtherKindsCannotBeRegistered) {
    for (const uint8_t id : {uint8_t{2}, uint8_t{3}, uint8_t{255}}) {
        vym_bluetooth_register_data_transport_callback(id, TakeTransport);
    }
    Server().Send(Event("PD0200000007"));
    const Labelled& unwanted = Pass("unwanted");
    Server().Send(Event("PDFF00000007"));
    Pass("unwanted");
    ExpectEntries({});
    EXPECT_TRUE(unwanted.IsClosed());
}

TEST_F(Descriptor, TheRegistrationOutlivesTheAdapter) {
    Session().StopAdapter();
    Session().StartAdapter();
    Server().Send(Event(kAudio));
    Pass("a");
    ExpectEntries({"transport(1, a)"});
}

TEST_F(Descriptor, ReceivedAsZeroIsMovedUp) {
    Labelled one("a");
    support::StandardInput standard_input;
    support::StandardInput::Close();
    Server().Send(Event(kAudio));
    Server().SendDescriptor(one.Fd());
    one.Passed();
    Server().Send(Event("BE01"));
    ExpectEntries({"transport(1, a)", "discovery_state_changed(1)"});
    standard_input.Restore();
    EXPECT_TRUE(one.IsClosed());
}

TEST_F(Descriptor, TheNumberInTheEventIsNotUsed) {
    Server().Send(Event("PD01FFFFFFFF"));
    Pass("a");
    Server().Send(Event("PD0100000000"));
    Pass("b");
    Server().Send(Event("PD01garbage!"));
    Pass("c");
    ExpectEntries({"transport(1, a)", "transport(1, b)", "transport(1, c)"});
}

} // namespace
