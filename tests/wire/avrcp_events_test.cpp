// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Each event of the remote control as the server writes it, and the callback that comes of it; then the
// same events short, with surplus, cut, and without a table to call.

#include "wire/avrcp_support.h"

namespace {

using avrcp::AllEvents;
using avrcp::EventCase;
using avrcp::EventsThatWait;
using avrcp::FixedEvents;
using avrcp::Record;

class AvrcpEvents : public avrcp::AvrcpWireTest {
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
            EXPECT_EQ(Record().Take(), one.Entries());
        }
    }

    // Starts the module again with this table: no event leaves an entry, and the library lives on.
    void ExpectNothingCalled(avrcp_callback_t* table) {
        vym_avrcp_init(table);
        std::vector<std::string> events;
        for (const EventCase& one : AllEvents()) {
            events.push_back(one.event);
        }
        Handle(events);
        EXPECT_EQ(Record().Size(), 0U);
        vym_avrcp_init(avrcp::RecordingTable());
        ExpectDelivered("RA0203", {"handle_passthrough_rsp(2, 3)"});
    }
};

TEST_F(AvrcpEvents, EachOneCallsItsCallbackWithItsFields) {
    for (const EventCase& one : AllEvents()) {
        ExpectDelivered(one.event, one.Entries());
    }
}

TEST_F(AvrcpEvents, AllOfThemArriveInOrderInOneBurst) {
    std::string burst;
    std::vector<std::string> entries;
    for (const EventCase& one : AllEvents()) {
        burst += wire::Event(one.event);
        for (const std::string& entry : one.Entries()) {
            entries.push_back(entry);
        }
    }
    Server().Send(burst);
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(Record().Take(), entries);
}

TEST_F(AvrcpEvents, OneThatEndsWithinItsFieldsCallsNothing) {
    for (const EventCase& one : AllEvents()) {
        SCOPED_TRACE(support::Escaped(one.event));
        const size_t tag = one.event[1] == 'W' ? 3 : 2;
        std::vector<std::string> cut;
        for (size_t length = 0; length < one.minimum; ++length) {
            cut.push_back(one.event.substr(0, tag + length));
        }
        Handle(cut);
        EXPECT_EQ(Record().Take(), std::vector<std::string>{});
    }
}

TEST_F(AvrcpEvents, SurplusBehindTheFieldsIsSkipped) {
    for (const EventCase& one : AllEvents()) {
        ExpectDelivered(one.event + "RA0203", one.Entries());
        ExpectDelivered(one.event + "\r\n", one.Entries());
    }
}

TEST_F(AvrcpEvents, OfFixedFieldsArriveOnceAtEveryCut) {
    for (const EventCase& one : FixedEvents()) {
        ExpectEveryCutDelivered(one);
    }
}

TEST_F(AvrcpEvents, ThatWaitArriveOnceAndWholeAtEveryCut) {
    for (const EventCase& one : EventsThatWait()) {
        ExpectEveryCutDelivered(one);
    }
}

TEST_F(AvrcpEvents, ATableOfNullsIsSkipped) {
    static avrcp_callback_t nothing{};
    ExpectNothingCalled(&nothing);
}

TEST_F(AvrcpEvents, NoTableIsATableOfNulls) {
    ExpectNothingCalled(nullptr);
}

TEST_F(AvrcpEvents, FeaturesMayEndBeforeThePsm) {
    ExpectDelivered("RD" + avrcp::kAddress + "40", {"get_rc_features(A1B2C3D4E5F6, 64, 0)"});
    ExpectDelivered("RD" + avrcp::kAddress + "400", {"get_rc_features(A1B2C3D4E5F6, 64, 0)"});
    ExpectDelivered("RD" + avrcp::kAddress + "4000001", {"get_rc_features(A1B2C3D4E5F6, 64, 1)"});
    ExpectDelivered("RD" + avrcp::kAddress + "40FFFFFFFF",
                    {"get_rc_features(A1B2C3D4E5F6, 64, 2147483647)"});
}

TEST_F(AvrcpEvents, OnlyAChangedPathExchangesItsStatuses) {
    ExpectDelivered("RNA1B2C3D4E5F60400000002", {"change_folder_path_rsp(A1B2C3D4E5F6, 0, 2)"});
    ExpectDelivered("RNA1B2C3D4E5F60000000002", {"change_folder_path_rsp(A1B2C3D4E5F6, 4, 2)"});
    for (const int status : {1, 2, 3, 5, 40, 255}) {
        const std::string number = std::to_string(status);
        ExpectDelivered("RNA1B2C3D4E5F6" + wire::Hex(static_cast<unsigned>(status), 2) + "FFFFFFFF",
                        {"change_folder_path_rsp(A1B2C3D4E5F6, " + number + ", 2147483647)"});
    }
    for (const std::string status : {"0", "4"}) {
        ExpectDelivered("ROA1B2C3D4E5F60" + status + "00000002",
                        {"get_total_number_of_items_rsp(A1B2C3D4E5F6, " + status + ", 2)"});
        ExpectDelivered("RPA1B2C3D4E5F60" + status, {"play_item_rsp(A1B2C3D4E5F6, " + status + ")"});
    }
}

TEST_F(AvrcpEvents, DigitsMayBeLowerCase) {
    ExpectDelivered("RWBa1b2c3d4e5f6abcd", {"addressed_player_changed(A1B2C3D4E5F6, 43981)"});
}

TEST_F(AvrcpEvents, UnknownTagsAreConsumed) {
    for (const char* event :
         {"RWDA1B2C3D4E5F601", "RWHA1B2C3D4E5F601", "RTA1B2C3D4E5F601", "RW", "ra4401", "Ra4401"}) {
        ExpectDelivered(event, {});
    }
    ExpectDelivered("RA4401", {"handle_passthrough_rsp(68, 1)"});
}

} // namespace
