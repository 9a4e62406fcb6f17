// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// However the reads cut the stream, each event arrives once and whole.

#include "wire/adapter_events.h"

namespace {

using wire::EventCase;

class CutEvents : public wire::AdapterWireTest {
protected:
    // Sends a part that the library is to read on its own.
    void SendPart(std::string_view part) {
        Server().Send(part);
        EXPECT_TRUE(support::PeerHasRead(Server().ClientFd()));
    }

    // Cuts before each of the event's bytes, its NUL included.
    void ExpectEveryCutDelivered(const EventCase& one) {
        const std::string bytes = wire::Event(one.event);
        for (size_t cut = 1; cut < bytes.size(); ++cut) {
            SCOPED_TRACE(support::Escaped(one.event) + " cut at " + std::to_string(cut));
            SendPart(bytes.substr(0, cut));
            Server().Send(bytes.substr(cut));
            EXPECT_TRUE(Session().EventsAreHandled());
            EXPECT_EQ(Adapter().Take(), one.Entries());
        }
    }
};

TEST_F(CutEvents, OfFixedFieldsArriveOnceAtEveryCut) {
    for (const EventCase& one : wire::EventsWithFixedFields()) {
        ExpectEveryCutDelivered(one);
    }
}

TEST_F(CutEvents, WithTailsArriveOnceAndWholeAtEveryCut) {
    for (const EventCase& one : wire::EventsWithTails()) {
        ExpectEveryCutDelivered(one);
    }
}

TEST_F(CutEvents, ArriveOnceWhenTheyComeByteByByte) {
    for (const EventCase& one : wire::EventsWithTails()) {
        SCOPED_TRACE(support::Escaped(one.event));
        for (const char byte : wire::Event(one.event)) {
            SendPart(std::string(1, byte));
        }
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(Adapter().Take(), one.Entries());
    }
}

TEST_F(CutEvents, SurplusThatLooksLikeAnEventIsNoneAfterTheCutEither) {
    SendPart("BE01");
    Server().Send(wire::Event("BE02"));
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Adapter().Take(), (std::vector<std::string>{"discovery_state_changed(1)"}));
}

TEST_F(CutEvents, AFixedEventArrivesBeforeItsNul) {
    Server().Send("BH00A1B2C3D4E5F602");
    EXPECT_TRUE(Adapter().WaitForExactly({"bond_state_changed(0, A1B2C3D4E5F6, 2)"}));
    Server().Send(std::string(1, '\0'));
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Adapter().Size(), 1U);
}

TEST_F(CutEvents, AnAnswerInPiecesWakesItsGetter) {
    auto result = Start(vym_bluetooth_get_class);
    Server().ExpectCommand("AT#BA04\r\n");
    SendPart("BB00010007040");
    Server().Send(wire::Event("3\x04\x04\x24"));
    EXPECT_EQ(result.get(), 0x240404);
    EXPECT_EQ(TimeOuts(), 0U);
}

} // namespace
