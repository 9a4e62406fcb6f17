// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The registry of parsers, asked directly: the library is started without a server, so that no receive
// thread reads, and texts are handed to it by hand.

#include "vym_sdk.h"

#include "support/probe_parser.h"

#include <array>
#include <deque>

namespace {

// A parser that takes no text of others and notes each offer with its number.
struct NumberedParser {
    event_parser_t base;
    int number;
    bool takes;
};

std::vector<int>& Offers() {
    static std::vector<int> offers;
    return offers;
}

int NoteOffer(event_parser_t* parser, uint8_t* buffer, int offset, int length) {
    const auto* self = reinterpret_cast<NumberedParser*>(parser);
    Offers().push_back(self->number);
    return self->takes ? check_event_end_pos(buffer, offset, length) : -1;
}

class ParserRegistry : public support::QuietTest {
protected:
    void SetUp() override {
        support::QuietTest::SetUp();
        ASSERT_EQ(vym_sdk_init_ex(directory_.Path().c_str()), -1);
    }
    void TearDown() override {
        for (NumberedParser& parser : parsers_) {
            unregister_event_parser(&parser.base);
        }
        unregister_event_parser(probe_.Parser());
        vym_sdk_done();
        Offers().clear();
        support::ProbeRecord().Reset();
        support::QuietTest::TearDown();
    }

    event_parser_t* Register(int number, bool takes = false) {
        NumberedParser& parser = parsers_.emplace_back();
        parser.base.process_event = NoteOffer;
        parser.number = number;
        parser.takes = takes;
        register_event_parser(&parser.base);
        return &parser.base;
    }

    // The numbers of the parsers that one unknown event is offered to.
    static std::vector<int> OffersOfOneEvent() {
        Offers().clear();
        Process(support::Event("QQ01"));
        return Offers();
    }

    static int Process(std::string text) {
        return process_event(reinterpret_cast<uint8_t*>(text.data()), static_cast<int>(text.size()));
    }

    void RegisterProbe() { register_event_parser(probe_.Parser()); }

private:
    support::TempDir directory_;
    support::ProbeParser probe_;
    std::deque<NumberedParser> parsers_;
};

using support::Event;
using support::ProbeRecord;
using Entries = std::vector<std::string>;
using Numbers = std::vector<int>;

TEST_F(ParserRegistry, OffersAnEventInTheOrderOfRegistration) {
    Register(1);
    Register(2);
    Register(3);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{1, 2, 3}));
}

TEST_F(ParserRegistry, StopsAtTheParserThatTakesTheEvent) {
    Register(1);
    Register(2, true);
    Register(3);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{1, 2}));
}

TEST_F(ParserRegistry, DoesNotOfferToAParserThatWasTakenOut) {
    Register(1);
    event_parser_t* second = Register(2);
    unregister_event_parser(second);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{1}));
    unregister_event_parser(second);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{1}));
}

TEST_F(ParserRegistry, AfterTakingOutOfOrderTheNextOneOverwritesASlotInUse) {
    event_parser_t* first = Register(1);
    Register(2);
    Register(3);
    unregister_event_parser(first);
    Register(4);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{2, 4}))
        << "slots are not compacted: 4 has taken the slot of 3";
}

TEST_F(ParserRegistry, TakingOutInReverseOrderLeavesTheOthers) {
    Register(1);
    event_parser_t* second = Register(2);
    event_parser_t* third = Register(3);
    unregister_event_parser(third);
    unregister_event_parser(second);
    Register(4);
    Register(5);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{1, 4, 5}));
}

TEST_F(ParserRegistry, AParserRegisteredTwiceIsTakenOutOfBothSlots) {
    event_parser_t* parser = Register(1);
    register_event_parser(parser);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{1, 1}));
    unregister_event_parser(parser);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{}));
    Register(2);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{2}));
}

TEST_F(ParserRegistry, TakingOutAStrangerDoesNotMoveTheNextSlot) {
    Register(1);
    event_parser_t stranger{};
    unregister_event_parser(&stranger);
    unregister_event_parser(nullptr);
    Register(2);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{1, 2}));
}

TEST_F(ParserRegistry, BehindFifteenParsersUnknownEventsAreStillConsumed) {
    Numbers expected;
    for (int number = 1; number <= 15; ++number) {
        Register(number);
        expected.push_back(number);
    }
    EXPECT_EQ(Process(Event("QQ01")), 5);
    EXPECT_EQ(Offers(), expected);
}

TEST_F(ParserRegistry, TheSixteenthTakesTheLastSlotAndLaterOnesAreIgnored) {
    Numbers expected;
    for (int number = 1; number <= 18; ++number) {
        Register(number);
        if (number <= 16) {
            expected.push_back(number);
        }
    }
    EXPECT_EQ(OffersOfOneEvent(), expected);
}

TEST_F(ParserRegistry, IsEmptyAfterTheNextStart) {
    Register(1);
    const support::TempDir other;
    EXPECT_EQ(vym_sdk_init_ex(other.Path().c_str()), -1);
    EXPECT_EQ(OffersOfOneEvent(), (Numbers{}));
}

TEST_F(ParserRegistry, ConsumesEveryEventWithItsNul) {
    RegisterProbe();
    EXPECT_EQ(Process(Event("XA01") + Event("XA02")), 10);
    EXPECT_EQ(ProbeRecord().All(), (Entries{"XA(01)", "XA(02)"}));
}

TEST_F(ParserRegistry, SkipsNulsBeforeBetweenAndBehindEvents) {
    RegisterProbe();
    EXPECT_EQ(Process(std::string("\0\0XA01\0\0\0XA02\0\0", 15)), 15);
    EXPECT_EQ(ProbeRecord().All(), (Entries{"XA(01)", "XA(02)"}));
    EXPECT_EQ(Process(std::string("\0", 1)), 1);
    EXPECT_EQ(Process(""), 0);
}

TEST_F(ParserRegistry, StopsBeforeAnEventThatIsNotComplete) {
    RegisterProbe();
    EXPECT_EQ(Process(Event("XA01") + "XB0011"), 5);
    EXPECT_EQ(Process("XB0011"), 0);
    EXPECT_EQ(Process(std::string("\0XB0011", 7)), 1);
    EXPECT_EQ(ProbeRecord().All(), (Entries{"XA(01)"}));
}

TEST_F(ParserRegistry, ConsumesWhatNobodyKnows) {
    RegisterProbe();
    EXPECT_EQ(Process(Event("ZZ01") + Event("XA01") + Event("QQ") + Event("XA02")), 18);
    EXPECT_EQ(ProbeRecord().All(), (Entries{"XA(01)", "XA(02)"}));
}

TEST_F(ParserRegistry, AMalformedEventCostsOnlyItself) {
    RegisterProbe();
    EXPECT_EQ(Process(Event("XB0011") + Event("XN01") + Event("XA02")), 17);
    EXPECT_EQ(ProbeRecord().All(), (Entries{"XA(02)"}));
}

TEST_F(ParserRegistry, TagsAndBlanksMustBeExact) {
    RegisterProbe();
    Process(Event("xa01") + Event(" XA02") + Event("\r\nXA03") + Event("XA04\r\n"));
    EXPECT_EQ(ProbeRecord().All(), (Entries{"XA(04)"})) << "behind the fields CR LF is surplus";
}

} // namespace
