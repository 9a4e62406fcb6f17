// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "phone_sim.h"

namespace {

class PhoneBookSim : public PhoneSim {
public:
    explicit PhoneBookSim(const sim::Pace& pace = phone_pace(),
                          const sim::World& world = sim::built_in_world())
        : PhoneSim(pace, world) {
        send("TC" + kPhone);
        EXPECT_EQ(client.events(2), (Strings{"BI00" + kPhone + "00", "TS00" + kPhone}));
    }

    /// A download with the result that ends it.
    Strings get(const std::string& command) {
        send(command);
        return until("TC");
    }
};

sim::Pace never_a_step() {
    sim::Pace pace = phone_pace();
    pace.list_step = std::chrono::hours(1);
    return pace;
}

TEST(SimPhoneBook, ConnectsAndDisconnects) {
    PhoneBookSim sim;
    EXPECT_EQ(sim.answers("TC" + kPhone), Strings{"TS00" + kPhone});
    EXPECT_EQ(sim.answers("TD" + kPhone), Strings{"TS01" + kPhone});
    EXPECT_EQ(sim.answers("TC" + kSpeaker), Strings{"TS01" + kSpeaker});
}

TEST(SimPhoneBook, WithoutAConnectionThereIsNothing) {
    PhoneSim sim;
    EXPECT_EQ(sim.answers("TA0600000000"), Strings{"TE000600000002"});
    EXPECT_EQ(sim.answers("TA0600000001"), Strings{"TC0002"});
    EXPECT_EQ(sim.answers("TN00000000123"), Strings{"TC0002"});
    EXPECT_EQ(sim.answers("TW"), Strings{});
}

TEST(SimPhoneBook, SizesAreAskedForWithACountOfZero) {
    PhoneBookSim sim;
    EXPECT_EQ(sim.answers("TA0600000000"), Strings{"TE000600320000"});
    EXPECT_EQ(sim.answers("TA0500000000"), Strings{"TE000500030000"});
    EXPECT_EQ(sim.answers("TA0700000000"), Strings{"TE000700060000"});
    EXPECT_EQ(sim.answers("TA0200000000"), Strings{"TE000200020000"});
    EXPECT_EQ(sim.answers("TA0300000000"), Strings{"TE000300020000"});
    EXPECT_EQ(sim.answers("TA0400000000"), Strings{"TE000400020000"});
    EXPECT_EQ(sim.answers("TA0100000000"), Strings{"TE000100000007"});
    EXPECT_EQ(sim.answers("TA0800000001"), Strings{"TC0007"});
}

TEST(SimPhoneBook, AContactHasAnEntryForEachNumber) {
    PhoneBookSim sim;
    EXPECT_EQ(
        sim.get("TA0600000003"),
        (Strings{"TD6000021013Bergmann;Anna;;;+491701234567", "TD6000111011Miller;Bob;Lee;;+4930111222",
                 "TD6000121013Miller;Bob;Lee;;+491711112223", "TD6000131011Miller;Bob;Lee;;+4930333444",
                 "TD6000221213M\xC3\xBCller;J\xC3\xBCrgen;;;+491722223334", "TC0000"}));
}

TEST(SimPhoneBook, NamesAndNumbersMayBeMissing) {
    PhoneBookSim sim;
    EXPECT_EQ(sim.get("TA0600080002"),
              (Strings{"TD6000820011+4930555666", "TD6000900D00Silent;Sam;;;", "TC0000"}));
}

TEST(SimPhoneBook, TheLengthOfANumberIsDecimal) {
    PhoneBookSim sim;
    EXPECT_EQ(
        sim.get("TA06000B0001"),
        (Strings{"TD6000B21042Calling card;;;;08001234567,,,1234567890123456#,4930999000", "TC0000"}));
}

TEST(SimPhoneBook, LongNamesAreCutBetweenCharactersAndKeepTheirSeparators) {
    PhoneBookSim sim;
    const Strings entries = sim.get("TA06000D0002");
    ASSERT_EQ(entries.size(), 3U);
    std::string longlong;
    for (int i = 0; i < 50; ++i) {
        longlong += "Long";
    }
    EXPECT_EQ(entries[0], "TD6000D3D111" + longlong + ";Larry;;;+4930100100");
    // 82 characters of three bytes, one more in the first name, four separators: 253.
    std::string cut;
    for (int i = 0; i < 82; ++i) {
        cut += "\xE9\x95\xB7";
    }
    EXPECT_EQ(entries[1], "TD6000E0FD12" + cut + ";\xE5\x90\x8D;;;+81312345678");
}

TEST(SimPhoneBook, TheWholeBookComesInOrder) {
    PhoneBookSim sim;
    const Strings entries = sim.get("TA06000001F4");
    // Fifty contacts, of which one has three numbers.
    ASSERT_EQ(entries.size(), 53U);
    EXPECT_EQ(entries.back(), "TC0000");
    EXPECT_EQ(entries[51], "TD6003110E12Evans;Irene;;;+49305000034");
    std::string last;
    for (size_t i = 0; i < 52; ++i) {
        EXPECT_EQ(entries[i].substr(0, 3), "TD6");
        EXPECT_LE(last, entries[i].substr(3, 4));
        last = entries[i].substr(3, 4);
    }
}

TEST(SimPhoneBook, APartMayLieAtOrBeyondTheEnd) {
    PhoneBookSim sim;
    EXPECT_EQ(sim.get("TA060031FFFF").size(), 2U);
    EXPECT_EQ(sim.get("TA060032FFFF"), Strings{"TC0000"});
    EXPECT_EQ(sim.get("TA06FFFFFFFF"), Strings{"TC0000"});
}

TEST(SimPhoneBook, TheSimCardHasABookOfItsOwn) {
    PhoneBookSim sim;
    EXPECT_EQ(sim.get("TA050000FFFF"),
              (Strings{"TD5000000D04Voicemail;;;;3311", "TD5000110811Home;;;;+4930111222",
                       "TD5000200811Taxi;;;;+4930202020", "TC0000"}));
}

TEST(SimPhoneBook, AllCallsCarryTheirTimes) {
    PhoneBookSim sim;
    EXPECT_EQ(
        sim.get("TA07000000FF"),
        (Strings{"TD700001013Bergmann;Anna;;;+491701234567 20260130T201500",
                 "TD700010D14\xE7\x8E\x8B;\xE5\xB0\x8F\xE6\x98\x8E;;;+8613800138000 20260130T180102",
                 "TD700020000 20260129T093000", "TD700030011+4930123456 20260128T235959",
                 "TD700040D11Miller;Bob;;;+4930333444 20260127T070000",
                 "TD700051213M\xC3\xBCller;J\xC3\xBCrgen;;;+491722223334 20251231T235959", "TC0000"}));
}

TEST(SimPhoneBook, CallsOfOneKindCarryNone) {
    PhoneBookSim sim;
    EXPECT_EQ(sim.get("TA02000000FF"),
              (Strings{"TD200000D14\xE7\x8E\x8B;\xE5\xB0\x8F\xE6\x98\x8E;;;+8613800138000",
                       "TD200010D11Miller;Bob;;;+4930333444", "TC0000"}));
    EXPECT_EQ(sim.get("TA03000000FF"), (Strings{"TD300001013Bergmann;Anna;;;+491701234567",
                                                "TD300010011+4930123456", "TC0000"}));
    EXPECT_EQ(sim.get("TA04000100FF"),
              (Strings{"TD400011213M\xC3\xBCller;J\xC3\xBCrgen;;;+491722223334", "TC0000"}));
}

/// Undoes the escaping of a block.
std::string plain(const std::string& escaped) {
    std::string raw;
    for (size_t i = 0; i < escaped.size(); ++i) {
        if (escaped[i] != '\xDC') {
            raw += escaped[i];
            continue;
        }
        switch (escaped.at(++i)) {
        case '\xDD':
            raw += '\0';
            break;
        case '\xDE':
            raw += '\r';
            break;
        case '\xDF':
            raw += '\n';
            break;
        default:
            raw += escaped[i];
        }
    }
    return raw;
}

TEST(SimPhoneBook, PhotosComeWhenTheyAreAskedFor) {
    PhoneBookSim sim;
    EXPECT_EQ(sim.answers("TM00000010"), Strings{});
    const Strings events = sim.get("TA0600000001");
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(events[0].substr(0, 8), "TD600002");
    EXPECT_EQ(events[1].substr(0, 8), "TP010000");
    const std::string photo = plain(events[1].substr(12));
    EXPECT_EQ(photo.size(), 172U);
    EXPECT_EQ(photo.substr(0, 4), "\xFF\xD8\xFF\xE0");
    EXPECT_EQ(sim.answers("TM00000000"), Strings{});
    EXPECT_EQ(sim.get("TA0600000001").size(), 2U);
}

TEST(SimPhoneBook, ALongPhotoComesInPieces) {
    PhoneBookSim sim;
    EXPECT_EQ(sim.answers("TM000000FF"), Strings{});
    const Strings events = sim.get("TA0600010001");
    // Three numbers, and 6176 bytes in pieces of 1900.
    ASSERT_EQ(events.size(), 8U);
    std::string photo;
    for (size_t i = 3; i < 7; ++i) {
        EXPECT_EQ(events[i].substr(0, 8), i < 6 ? "TP000001" : "TP010001");
        EXPECT_LT(events[i].size(), 4095U);
        photo += plain(events[i].substr(12));
    }
    EXPECT_EQ(photo.size(), 6176U);
    EXPECT_EQ(photo.substr(0, 10), std::string("\xFF\xD8\xFF\xFE\x17\x72\x00\x01\x02\x03", 10));
    EXPECT_EQ(photo.substr(6174), "\xFF\xD9");
}

TEST(SimPhoneBook, ADownloadIsCancelled) {
    PhoneBookSim sim(never_a_step());
    EXPECT_EQ(sim.answers("TA06000001F4"), Strings{});
    EXPECT_EQ(sim.answers("TA0700000010"), Strings{}); // one at a time
    EXPECT_EQ(sim.answers("TN00000000"), Strings{});
    EXPECT_EQ(sim.answers("TW"), Strings{"TC0001"});
    EXPECT_EQ(sim.answers("TW"), Strings{});
    sim.stop();
    EXPECT_NE(sim.log().find("refused: another transfer is under way\n"), std::string::npos);
    EXPECT_NE(sim.log().find("no transfer is under way\n"), std::string::npos);
}

TEST(SimPhoneBook, ADisconnectEndsTheDownloadFirst) {
    PhoneBookSim sim(never_a_step());
    EXPECT_EQ(sim.answers("TA06000001F4"), Strings{});
    EXPECT_EQ(sim.answers("TD" + kPhone), (Strings{"TC0001", "TS01" + kPhone}));
}

TEST(SimPhoneBook, ADownloadEndsWithItsClient) {
    PhoneBookSim sim(never_a_step());
    EXPECT_EQ(sim.answers("TA06000001F4"), Strings{});
    sim.client.close();
    sim.client = static_cast<RunningSim&>(sim).client();
    EXPECT_EQ(sim.answers("TW"), Strings{});
    EXPECT_EQ(sim.answers("TC" + kPhone), Strings{"TS00" + kPhone});
}

TEST(SimPhoneBook, OneEntryIsFoundByItsNumber) {
    PhoneBookSim sim;
    EXPECT_EQ(sim.get("TN00000000+4930333444"),
              (Strings{"TD6000131011Miller;Bob;Lee;;+4930333444", "TC0000"}));
    EXPECT_EQ(sim.get("TN0000000C*#06#"), (Strings{"TD6000C20D05Short;Code;;;*#06#", "TC0000"}));
    EXPECT_EQ(sim.get("TN00000009"), (Strings{"TD6000900D00Silent;Sam;;;", "TC0000"}));
    EXPECT_EQ(sim.get("TN0000000012345"), Strings{"TC0001"});
    EXPECT_EQ(sim.get("TNFFFFFFFE"), Strings{"TC0001"});
}

} // namespace
