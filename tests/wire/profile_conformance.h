// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What every profile owes the application, whatever its events are. A profile says how it starts and
// what its events are, and one line gives it the whole set:
//
//     INSTANTIATE_TYPED_TEST_SUITE_P(Hfp, ProfileConformance, HfpProfile, );
//
// Behind the last comma there could be a generator of names; without the comma that would be GNU C++.
//
// A profile is a type with
//     static void Init(Table table);             // kWhole records into Record()
//     static void Done();
//     static std::vector<ProfileEvent> Events();
//     static std::vector<std::string> Unknown(); // tags that look like its own and are not
#ifndef VYM_TESTS_WIRE_PROFILE_CONFORMANCE_H
#define VYM_TESTS_WIRE_PROFILE_CONFORMANCE_H

#include "support/session.h"
#include "support/text.h"
#include "vym_sdk.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace wire {

enum class Table { kWhole, kEmpty, kNone };

struct ProfileEvent {
    std::string event;
    size_t minimum;        // characters after the tag without which nothing is delivered
    std::string entry;     // what the callback leaves; "" for events that call nothing
    bool has_text = false; // ends in a text, so that there is no surplus
    size_t tag = 2;

    [[nodiscard]] std::vector<std::string> Entries() const {
        return entry.empty() ? std::vector<std::string>{} : std::vector<std::string>{entry};
    }
};

/** What the callbacks of the profile under test leave. */
inline support::Recorder& ProfileRecord() {
    static support::Recorder record;
    return record;
}

template <class Profile>
class ProfileConformance : public support::SessionTest {
protected:
    void SetUp() override {
        SessionTest::SetUp();
        Session().StartAdapter();
        ProfileRecord().Reset();
        Profile::Init(Table::kWhole);
    }
    void TearDown() override {
        Profile::Done();
        SessionTest::TearDown();
        ProfileRecord().Reset();
    }

    // All that was sent has been dealt with, and the profile has left exactly these entries.
    void ExpectEntries(const std::vector<std::string>& entries) {
        EXPECT_TRUE(Session().EventsAreHandled());
        EXPECT_EQ(ProfileRecord().Take(), entries);
    }

    void ExpectDelivered(const ProfileEvent& one) {
        SCOPED_TRACE(support::Escaped(one.event));
        Server().Send(support::Event(one.event));
        ExpectEntries(one.Entries());
    }

    void ExpectNothingDelivered() {
        for (const ProfileEvent& one : Profile::Events()) {
            Server().Send(support::Event(one.event));
        }
        ExpectEntries({});
    }

    // Sends a part that the library is to read on its own.
    void SendPart(const std::string& part) {
        Server().Send(part);
        EXPECT_TRUE(Server().ClientHasRead());
    }
};

TYPED_TEST_SUITE_P(ProfileConformance);

TYPED_TEST_P(ProfileConformance, EachEventCallsItsCallbackWithItsFields) {
    for (const ProfileEvent& one : TypeParam::Events()) {
        this->ExpectDelivered(one);
    }
}

TYPED_TEST_P(ProfileConformance, ABurstOfAllEventsArrivesInOrder) {
    std::string burst;
    std::vector<std::string> entries;
    for (const ProfileEvent& one : TypeParam::Events()) {
        burst += support::Event(one.event);
        for (const std::string& entry : one.Entries()) {
            entries.push_back(entry);
        }
    }
    this->Server().Send(burst);
    this->ExpectEntries(entries);
}

TYPED_TEST_P(ProfileConformance, AnEventThatEndsWithinItsFieldsCallsNothing) {
    for (const ProfileEvent& one : TypeParam::Events()) {
        for (size_t length = 0; length < one.minimum; ++length) {
            this->Server().Send(support::Event(one.event.substr(0, one.tag + length)));
        }
    }
    this->ExpectEntries({});
}

TYPED_TEST_P(ProfileConformance, SurplusBehindTheFieldsIsSkipped) {
    for (const ProfileEvent& one : TypeParam::Events()) {
        if (!one.has_text) {
            ProfileEvent longer = one;
            longer.event += "HU01PA01";
            this->ExpectDelivered(longer);
        }
    }
}

TYPED_TEST_P(ProfileConformance, WhereverAnEventIsCutItArrivesOnceAndWhole) {
    for (const ProfileEvent& one : TypeParam::Events()) {
        const std::string bytes = support::Event(one.event);
        for (size_t cut = 1; cut < bytes.size(); ++cut) {
            SCOPED_TRACE(support::Escaped(one.event) + " cut at " + std::to_string(cut));
            this->SendPart(bytes.substr(0, cut));
            this->Server().Send(bytes.substr(cut));
            this->ExpectEntries(one.Entries());
        }
    }
}

TYPED_TEST_P(ProfileConformance, SurplusInALaterReadIsNoEvent) {
    for (const ProfileEvent& one : TypeParam::Events()) {
        if (!one.has_text) {
            SCOPED_TRACE(support::Escaped(one.event));
            this->SendPart(one.event);
            this->Server().Send(support::Event(one.event));
            this->ExpectEntries(one.Entries());
        }
    }
}

TYPED_TEST_P(ProfileConformance, UnknownTagsCostOnlyThemselves) {
    for (const std::string& unknown : TypeParam::Unknown()) {
        this->Server().Send(support::Event(unknown));
    }
    this->ExpectDelivered(TypeParam::Events().front());
}

TYPED_TEST_P(ProfileConformance, ATableWithoutMembersDropsEveryEvent) {
    TypeParam::Done();
    TypeParam::Init(Table::kEmpty);
    this->ExpectNothingDelivered();
}

TYPED_TEST_P(ProfileConformance, WithoutATableEveryEventIsDropped) {
    TypeParam::Done();
    TypeParam::Init(Table::kNone);
    this->ExpectNothingDelivered();
}

TYPED_TEST_P(ProfileConformance, AfterDoneNothingIsDelivered) {
    TypeParam::Done();
    this->ExpectNothingDelivered();
    TypeParam::Init(Table::kWhole);
}

TYPED_TEST_P(ProfileConformance, DoneTwiceIsHarmless) {
    TypeParam::Done();
    TypeParam::Done();
    TypeParam::Init(Table::kWhole);
    this->ExpectDelivered(TypeParam::Events().front());
}

TYPED_TEST_P(ProfileConformance, InitialisedTwiceItDeliversOnce) {
    TypeParam::Init(Table::kWhole);
    this->ExpectDelivered(TypeParam::Events().front());
}

REGISTER_TYPED_TEST_SUITE_P(ProfileConformance, EachEventCallsItsCallbackWithItsFields,
                            ABurstOfAllEventsArrivesInOrder, AnEventThatEndsWithinItsFieldsCallsNothing,
                            SurplusBehindTheFieldsIsSkipped, WhereverAnEventIsCutItArrivesOnceAndWhole,
                            SurplusInALaterReadIsNoEvent, UnknownTagsCostOnlyThemselves,
                            ATableWithoutMembersDropsEveryEvent, WithoutATableEveryEventIsDropped,
                            AfterDoneNothingIsDelivered, DoneTwiceIsHarmless,
                            InitialisedTwiceItDeliversOnce);
// Other suites borrow a profile's tables without these tests.
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ProfileConformance);

} // namespace wire

#endif
