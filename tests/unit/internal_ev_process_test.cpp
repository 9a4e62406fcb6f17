// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The internal channel without a receive thread: read_all() is called by hand.

#include "internal_ev_process.h"

#include "support/fake_server.h"
#include "support/limits.h"
#include "support/session.h"

#include <array>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

namespace {

using support::Bytes;
using support::SocketPair;
using Entries = std::vector<std::string>;

support::Recorder& Record() {
    static support::Recorder record;
    return record;
}

// "A 1 3 abc": handler, type, length, the value bytes that count.
void Note(const char* handler, const ev_data_t* ev) {
    const size_t length = std::min<size_t>(ev->len, sizeof(ev->value));
    Record().Add(std::string(handler) + " " + std::to_string(ev->type) + " " + std::to_string(ev->len) +
                 " " + support::Escaped({reinterpret_cast<const char*>(ev->value), length}) +
                 (ev->off == 0 ? "" : " off " + std::to_string(ev->off)));
}

void HandlerA(ev_data_t* ev) {
    Note("A", ev);
}

void HandlerB(ev_data_t* ev) {
    Note("B", ev);
}

void Push(std::string bytes) {
    push_ev_data(bytes.data(), bytes.size());
    process_ev_data();
}

class InternalEvent : public support::QuietTest {
protected:
    void SetUp() override {
        support::QuietTest::SetUp();
        vym_internal_event_init();
    }
    void TearDown() override {
        vym_internal_event_done();
        Record().Reset();
        support::QuietTest::TearDown();
    }

    // One round of the receive thread's wait, which must have something to find.
    ssize_t ReadAll(std::string* text = nullptr) {
        std::array<char, 64> buffer{};
        const ssize_t count = read_all(server_.Far(), buffer.data(), buffer.size());
        if (text != nullptr) {
            text->assign(buffer.data(), static_cast<size_t>(std::max<ssize_t>(count, 0)));
        }
        return count;
    }

    SocketPair server_;
};

int Send(uint8_t type, const std::string& value) {
    std::string copy = value;
    return vym_internal_event_send(type, static_cast<uint8_t>(value.size()), copy.data());
}

TEST_F(InternalEvent, AMessageWithoutDataReachesTheHandler) {
    vym_internal_event_register(HandlerA);
    EXPECT_EQ(vym_internal_event_send(1, 0, nullptr), 1);
    EXPECT_EQ(ReadAll(), 0);
    EXPECT_EQ(Record().All(), (Entries{"A 1 0 "}));
}

TEST_F(InternalEvent, AMessageBringsItsBytes) {
    vym_internal_event_register(HandlerA);
    EXPECT_EQ(Send(7, "abc"), 1);
    EXPECT_EQ(ReadAll(), 0);
    EXPECT_EQ(Record().All(), (Entries{"A 7 3 abc"}));
}

TEST_F(InternalEvent, AMessageIsCutTo64Bytes) {
    vym_internal_event_register(HandlerA);
    EXPECT_EQ(Send(7, std::string(63, 'x') + "yz" + std::string(135, '!')), 1);
    EXPECT_EQ(Send(8, ""), 1);
    EXPECT_EQ(ReadAll(), 0);
    EXPECT_EQ(Record().All(), (Entries{"A 7 64 " + std::string(63, 'x') + "y", "A 8 0 "}));
    EXPECT_EQ(Output().Out(), "");
}

TEST_F(InternalEvent, NoDataCountsAsLengthZero) {
    vym_internal_event_register(HandlerA);
    EXPECT_EQ(vym_internal_event_send(1, 5, nullptr), 1);
    EXPECT_EQ(ReadAll(), 0);
    EXPECT_EQ(Record().All(), (Entries{"A 1 0 "}));
}

TEST_F(InternalEvent, HandlersRunNewestFirst) {
    vym_internal_event_register(HandlerA);
    vym_internal_event_register(HandlerB);
    Push(Bytes({1, 0}));
    EXPECT_EQ(Record().All(), (Entries{"B 1 0 ", "A 1 0 "}));
}

TEST_F(InternalEvent, AHandlerRegisteredTwiceRunsTwiceAndLeavesTheNewestFirst) {
    vym_internal_event_register(HandlerA);
    vym_internal_event_register(HandlerB);
    vym_internal_event_register(HandlerA);
    Push(Bytes({1, 0}));
    EXPECT_EQ(Record().Take(), (Entries{"A 1 0 ", "B 1 0 ", "A 1 0 "}));
    vym_internal_event_unregister(HandlerA);
    Push(Bytes({1, 0}));
    EXPECT_EQ(Record().Take(), (Entries{"B 1 0 ", "A 1 0 "}));
}

TEST_F(InternalEvent, UnregisteringAStrangerChangesNothing) {
    vym_internal_event_register(HandlerA);
    vym_internal_event_unregister(HandlerB);
    Push(Bytes({1, 0}));
    EXPECT_EQ(Record().All(), (Entries{"A 1 0 "}));
    vym_internal_event_unregister(HandlerA);
    vym_internal_event_unregister(HandlerA);
    Push(Bytes({1, 0}));
    EXPECT_EQ(Record().Size(), 1U);
}

TEST_F(InternalEvent, WithoutAHandlerMessagesAreDropped) {
    Push(Bytes({1, 0, 2, 1, 'x'}));
    vym_internal_event_register(HandlerA);
    Push(Bytes({3, 0}));
    EXPECT_EQ(Record().All(), (Entries{"A 3 0 "}));
}

TEST_F(InternalEvent, AMessageCutAnywhereArrivesOnceAndWhole) {
    vym_internal_event_register(HandlerA);
    const std::string stream = Bytes({1, 3, 'a', 'b', 'c', 2, 0, 3, 1, 'd'});
    for (size_t cut = 0; cut <= stream.size(); ++cut) {
        Push(stream.substr(0, cut));
        Push(stream.substr(cut));
        EXPECT_EQ(Record().Take(), (Entries{"A 1 3 abc", "A 2 0 ", "A 3 1 d"})) << "cut at " << cut;
    }
    for (const char byte : stream) {
        Push(std::string(1, byte));
    }
    EXPECT_EQ(Record().Take(), (Entries{"A 1 3 abc", "A 2 0 ", "A 3 1 d"}));
}

TEST_F(InternalEvent, SeveralPushesAreProcessedTogether) {
    vym_internal_event_register(HandlerA);
    for (int i = 0; i < 100; ++i) {
        std::string message = Bytes({1, 2, 'x', 'y'});
        push_ev_data(message.data(), message.size());
    }
    process_ev_data();
    EXPECT_EQ(Record().Count("A 1 2 xy"), 100U);
}

std::string Warning(int length) {
    return "Warning!!! The maximum length of internal event data size should be less than 64, current "
           "len:" +
           std::to_string(length) + ".type:7.\n";
}

TEST_F(InternalEvent, AValueOf64BytesPassesSilently) {
    vym_internal_event_register(HandlerA);
    Push(Bytes({7, 64}) + std::string(64, 'x'));
    EXPECT_EQ(Record().All(), (Entries{"A 7 64 " + std::string(64, 'x')}));
    EXPECT_EQ(Output().Out(), "");
}

TEST_F(InternalEvent, ALongerValueIsCutAndTheStreamStaysInStep) {
    vym_internal_event_register(HandlerA);
    for (const int length : {65, 100, 255}) {
        const size_t rest = static_cast<size_t>(length) - 64;
        const std::string stream =
            Bytes({7, length}) + std::string(64, 'x') + std::string(rest, '!') + Bytes({8, 1, 'n'});
        const Entries expected = {"A 7 " + std::to_string(length) + " " + std::string(64, 'x'),
                                  "A 8 1 n"};
        for (const size_t cut :
             std::vector<size_t>{0, 1, 2, 40, 65, 66, 67, stream.size() - 4, stream.size() - 3}) {
            Push(stream.substr(0, cut));
            Push(stream.substr(cut));
            EXPECT_EQ(Record().Take(), expected) << length << " bytes, cut at " << cut;
        }
        for (const char byte : stream) {
            Push(std::string(1, byte));
        }
        EXPECT_EQ(Record().Take(), expected) << length << " bytes one by one";
    }
    EXPECT_EQ(support::Lines(Output().Out()).size(), 30U);
    EXPECT_EQ(Output().Out().substr(0, Warning(65).size()), Warning(65));
}

TEST_F(InternalEvent, NullIsNoMessage) {
    vym_internal_event_register(HandlerA);
    notify_internal_event(nullptr);
    EXPECT_EQ(Record().Size(), 0U);
}

TEST_F(InternalEvent, TheServersTextIsReadWhenNoMessageWaits) {
    std::string text;
    EXPECT_TRUE(support::WriteBytes(server_.Near(), "BE01"));
    EXPECT_EQ(ReadAll(&text), 4);
    EXPECT_EQ(text, "BE01");
}

TEST_F(InternalEvent, AMessageGoesBeforeTheServersTextAndDoesNotTouchTheBuffer) {
    vym_internal_event_register(HandlerA);
    EXPECT_TRUE(support::WriteBytes(server_.Near(), "BE01"));
    EXPECT_EQ(Send(7, "abc"), 1);
    std::array<char, 8> buffer{};
    buffer.fill('.');
    EXPECT_EQ(read_all(server_.Far(), buffer.data(), buffer.size()), 0);
    EXPECT_EQ(std::string(buffer.data(), buffer.size()), "........");
    EXPECT_EQ(Record().All(), (Entries{"A 7 3 abc"}));
    EXPECT_EQ(read_all(server_.Far(), buffer.data(), buffer.size()), 4);
    EXPECT_EQ(std::string(buffer.data(), 4), "BE01");
}

TEST_F(InternalEvent, AMessageIsReadWhenTheBufferHasNoRoom) {
    vym_internal_event_register(HandlerA);
    EXPECT_EQ(Send(7, "abc"), 1);
    char none = 0;
    EXPECT_EQ(read_all(server_.Far(), &none, 1), 0);
    EXPECT_EQ(Record().All(), (Entries{"A 7 3 abc"}));
}

TEST_F(InternalEvent, TheServersEndReadsAsZero) {
    SocketPair closing;
    closing.CloseNear();
    char byte = 0;
    EXPECT_EQ(read_all(closing.Far(), &byte, 1), 0);
}

TEST_F(InternalEvent, TheServersTextMayComeThroughAPipe) {
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    ASSERT_EQ(write(ends[1], "BE01", 4), 4);
    std::array<char, 8> buffer{};
    EXPECT_EQ(read_all(ends[0], buffer.data(), buffer.size()), 4);
    EXPECT_EQ(std::string(buffer.data(), 4), "BE01");
    close(ends[0]);
    close(ends[1]);
}

TEST_F(InternalEvent, ADescriptorAbove1023CanBeWaitedOn) {
    const support::ManyDescriptors limit;
    const int high = fcntl(server_.Far(), F_DUPFD_CLOEXEC, 1500);
    ASSERT_GE(high, 1500);
    EXPECT_TRUE(support::WriteBytes(server_.Near(), "BE01"));
    std::array<char, 8> buffer{};
    EXPECT_EQ(read_all(high, buffer.data(), buffer.size()), 4);
    close(high);
}

TEST_F(InternalEvent, WithoutAPairSendingFailsAndTheReasonIsPrinted) {
    vym_internal_event_done();
    {
        const support::NoMoreDescriptors limit;
        vym_internal_event_init();
    }
    EXPECT_EQ(Output().Out(),
              "Create socketpair failed in vym_internal_event_init. Error:Too many open files.\n");
    EXPECT_EQ(vym_internal_event_send(1, 0, nullptr), 0);
}

TEST_F(InternalEvent, WithoutAPairTheServerIsReadAndStandardInputIsLeftAlone) {
    vym_internal_event_done();
    {
        const support::NoMoreDescriptors limit;
        vym_internal_event_init();
    }
    vym_internal_event_register(HandlerA);
    SocketPair typed;
    EXPECT_TRUE(support::WriteBytes(typed.Near(), Bytes({1, 0})));
    support::StandardInput standard_input;
    standard_input.Replace(typed.Far());
    EXPECT_TRUE(support::WriteBytes(server_.Near(), "BE01"));
    std::string text;
    EXPECT_EQ(ReadAll(&text), 4);
    standard_input.Restore();
    EXPECT_EQ(text, "BE01");
    EXPECT_EQ(Record().Size(), 0U);
    EXPECT_EQ(support::ReadBytes(typed.Far(), 2), Bytes({1, 0}));
}

TEST_F(InternalEvent, SendingFailsBeforeTheStartAndAfterTheEnd) {
    vym_internal_event_done();
    EXPECT_EQ(vym_internal_event_send(1, 0, nullptr), 0);
    vym_internal_event_done();
    vym_internal_event_init();
    EXPECT_EQ(vym_internal_event_send(1, 0, nullptr), 1);
}

TEST_F(InternalEvent, HandlersDoNotSurviveTheEnd) {
    vym_internal_event_register(HandlerA);
    vym_internal_event_done();
    vym_internal_event_init();
    Push(Bytes({1, 0}));
    EXPECT_EQ(Record().Size(), 0U);
}

TEST_F(InternalEvent, RegisteringWithoutAStartIsHarmless) {
    vym_internal_event_done();
    vym_internal_event_register(HandlerA);
    vym_internal_event_unregister(HandlerA);
    vym_internal_event_unregister(HandlerB);
    vym_internal_event_register(HandlerB);
}

TEST_F(InternalEvent, HalfAMessageDoesNotSurviveTheEnd) {
    Push(Bytes({7, 3, 'a'}));
    vym_internal_event_done();
    vym_internal_event_init();
    vym_internal_event_register(HandlerA);
    Push(Bytes({1, 0}));
    EXPECT_EQ(Record().All(), (Entries{"A 1 0 "}));
}

TEST_F(InternalEvent, AFullChannelThatNobodyReadsFailsInsteadOfBlocking) {
    int sent = 0;
    while (sent < 100000 && Send(1, std::string(64, 'x')) == 1) {
        ++sent;
    }
    EXPECT_GT(sent, 0);
    EXPECT_LT(sent, 100000);
    vym_internal_event_register(HandlerA);
    while (Record().Size() < static_cast<size_t>(sent)) {
        ASSERT_EQ(ReadAll(), 0);
    }
    EXPECT_EQ(Record().Count("A 1 64 " + std::string(64, 'x')), static_cast<size_t>(sent))
        << "all whole";
    EXPECT_EQ(Send(2, ""), 1);
}

TEST_F(InternalEvent, MessagesOfSeveralThreadsStayWhole) {
    vym_internal_event_register(HandlerA);
    constexpr size_t kEach = 40;
    std::vector<std::thread> senders;
    for (const uint8_t type : {uint8_t{1}, uint8_t{2}, uint8_t{3}}) {
        senders.emplace_back([type] {
            for (size_t i = 0; i < kEach; ++i) {
                EXPECT_EQ(Send(type, std::string(size_t{20} * type, static_cast<char>('a' + type))), 1);
            }
        });
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
    while (Record().Size() < 3 * kEach) {
        ASSERT_EQ(ReadAll(), 0);
    }
    EXPECT_EQ(Record().Count("A 1 20 " + std::string(20, 'b')), kEach);
    EXPECT_EQ(Record().Count("A 2 40 " + std::string(40, 'c')), kEach);
    EXPECT_EQ(Record().Count("A 3 60 " + std::string(60, 'd')), kEach);
}

// The list's members in order, checked to be the same backwards.
std::vector<list_head*> Members(list_head& head) {
    std::vector<list_head*> members;
    for (list_head* entry = head.next; entry != &head; entry = entry->next) {
        EXPECT_EQ(entry->prev, members.empty() ? &head : members.back());
        members.push_back(entry);
    }
    EXPECT_EQ(head.prev, members.empty() ? &head : members.back());
    return members;
}

TEST(InternalEventList, InsertsBehindTheHeadAndUnlinks) {
    using Expected = std::vector<list_head*>;
    list_head head;
    list_head first;
    list_head second;
    INIT_LIST_HEAD(&head);
    EXPECT_EQ(Members(head), Expected{});
    list_add(&first, &head);
    list_add(&second, &head);
    EXPECT_EQ(Members(head), (Expected{&second, &first}));
    list_del(&second);
    EXPECT_EQ(Members(head), Expected{&first});
    list_del(&first);
    EXPECT_EQ(Members(head), Expected{});
}

TEST(InternalEventList, ANodeKeepsItsHandler) {
    internal_ev_cbk_node_t* node = node_alloc(HandlerA);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->cbk, HandlerA);
    free(node);
}

} // namespace
