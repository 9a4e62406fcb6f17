// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "control_client.h"
#include "phone_sim.h"

namespace {

class BrowsingSim : public PhoneSim {
public:
    explicit BrowsingSim(const sim::Pace& pace = phone_pace(),
                         const sim::World& world = sim::built_in_world())
        : PhoneSim(pace, world) {
        send("AA" + kPhone);
        until("RI");
    }

    Strings list(const std::string& command, size_t count) {
        send(command);
        Strings items = client.events(count);
        const Strings more = client.events_until_version();
        EXPECT_EQ(more, Strings{});
        return items;
    }
};

/// The last bytes of a folder's and a track's UID, escaped.
std::string folder_uid(char number) {
    return zeros(5) + "\x01" + (number == 0 ? zeros(1) + zeros(1) : zeros(1) + std::string(1, number));
}

std::string track_uid(char number) {
    return zeros(7) + number;
}

const std::string kFolder1 = "RM" + kPhone + "0400030207\x02" + folder_uid(0) + "\x02" + zeros(1) +
                             "j" + zeros(1) + "Radio Silence" + zeros(242);
const std::string kFolder3 = "RM" + kPhone + "0400030207\x02" + folder_uid(2) + "\x02" + zeros(1) +
                             "j" + zeros(1) + "Nothing here" + zeros(243);

/// Track 2 as an item of a list of `count`: 1048 bytes, and an escape for each zero.
std::string track2(const std::string& count) {
    return "RM" + kPhone + "04" + count + "07F6\x03" + track_uid(2) + zeros(1) + "j" + zeros(1) +
           "Carrier Wave" + zeros(243) + "\x03" + zeros(3) + "\x01" + zeros(3) + "Carrier Wave" +
           zeros(243) + "\x02" + zeros(3) + "The Simulators" + zeros(241) + "\x03" + zeros(3) +
           "Radio Silence" + zeros(242);
}

std::string down(const std::string& uid, const std::string& length) {
    return "RJ" + kPhone + "01" + length + uid;
}

TEST(SimBrowsing, TheRootHasAFolderForEachAlbum) {
    BrowsingSim sim;
    const Strings items = sim.list("RI" + kPhone + "00000000FFFFFFFF", 3);
    EXPECT_EQ(items[0], kFolder1);
    EXPECT_EQ(items[1].substr(0, 26), "RM" + kPhone + "0400030204\x02\xDC");
    EXPECT_NE(items[1].find("j\xDC\xDD\xC3\x9C"
                            "berreichweite\xDC\xDD"),
              std::string::npos);
    EXPECT_EQ(items[2], kFolder3);
    EXPECT_EQ(sim.answers("RK" + kPhone), Strings{"RO" + kPhone + "0400000003"});
}

TEST(SimBrowsing, APartOfAListCountsItself) {
    BrowsingSim sim;
    const Strings items = sim.list("RI" + kPhone + "0000000200000005", 1);
    EXPECT_EQ(items[0].substr(0, 20), "RM" + kPhone + "040001");
}

TEST(SimBrowsing, AListBeyondTheEndIsOutOfBounds) {
    BrowsingSim sim;
    EXPECT_EQ(sim.answers("RI" + kPhone + "0000000300000001"), Strings{"RM" + kPhone + "0B00000000"});
    EXPECT_EQ(sim.answers("RI" + kPhone + "0000000000000000"), Strings{"RM" + kPhone + "0B00000000"});
    EXPECT_EQ(sim.answers("RO" + kPhone + "FFFFFFFF00000001"), Strings{"RM" + kPhone + "0B00000000"});
}

TEST(SimBrowsing, AFolderIsEnteredListedAndLeft) {
    BrowsingSim sim;
    EXPECT_EQ(sim.answers(down(folder_uid(0), "000F")), Strings{"RN" + kPhone + "0400000002"});
    EXPECT_EQ(sim.answers("RK" + kPhone), Strings{"RO" + kPhone + "0400000002"});
    const Strings items = sim.list("RI" + kPhone + "00000000FFFFFFFF", 2);
    EXPECT_EQ(items[1], track2("0002"));
    EXPECT_EQ(sim.answers("RJ" + kPhone + "000000"), Strings{"RN" + kPhone + "0400000003"});
    EXPECT_EQ(sim.answers(down(folder_uid(2), "000E")), Strings{"RN" + kPhone + "0400000000"});
    EXPECT_EQ(sim.answers("RI" + kPhone + "00000000FFFFFFFF"), Strings{"RM" + kPhone + "0B00000000"});
}

TEST(SimBrowsing, PathsThatDoNotExistAreRefused) {
    BrowsingSim sim;
    EXPECT_EQ(sim.answers("RJ" + kPhone + "000000"),
              Strings{"RN" + kPhone + "0700000000"}); // at the root
    EXPECT_EQ(sim.answers("RJ" + kPhone + "020000"), Strings{"RN" + kPhone + "0700000000"});
    EXPECT_EQ(sim.answers(down(folder_uid(3), "000E")), Strings{"RN" + kPhone + "0900000000"});
    EXPECT_EQ(sim.answers(down(track_uid(1), "000F")), Strings{"RN" + kPhone + "0800000000"});
    EXPECT_EQ(sim.answers(down("", "0000")), Strings{"RN" + kPhone + "0900000000"});
}

TEST(SimBrowsing, TheQueueHoldsAllTracks) {
    BrowsingSim sim;
    const Strings items = sim.list("RO" + kPhone + "00000000FFFFFFFF", 4);
    EXPECT_EQ(items[1], track2("0004"));
    for (const std::string& item : items) {
        // A client reads 4 KiB at a time.
        EXPECT_LT(item.size(), 4095U);
    }
}

TEST(SimBrowsing, ThePlayersAreListed) {
    BrowsingSim sim;
    const Strings items = sim.list("RM" + kPhone + "00FF", 2);
    EXPECT_EQ(items[0], "RM" + kPhone + "0400020228\x01\x01" + zeros(1) + "\x01" + zeros(4) + zeros(1) +
                            zeros(5) + "\xB7\x01\x0C\xDC\xDF" + zeros(7) + "j" + zeros(1) + "Music" +
                            zeros(250));
    EXPECT_EQ(items[1].substr(0, 27), "RM" + kPhone + "0400020225\x01\x02\xDC");
    EXPECT_NE(items[1].find("Podcasts" + zeros(247)), std::string::npos);
    EXPECT_EQ(sim.answers("RM" + kPhone + "0201"), Strings{"RM" + kPhone + "0B00000000"});
}

TEST(SimBrowsing, PlayersAreChosenByNumber) {
    BrowsingSim sim;
    EXPECT_EQ(sim.answers(down(folder_uid(0), "000F"))[0].substr(0, 16), "RN" + kPhone + "04");
    EXPECT_EQ(sim.answers("RP" + kPhone + "0001"), Strings{"RR" + kPhone + "040003006A00"});
    EXPECT_EQ(sim.answers("RP" + kPhone + "0002"), Strings{"RR" + kPhone + "040002006A00"});
    EXPECT_EQ(sim.answers("RP" + kPhone + "0003"), Strings{"RR" + kPhone + "110000006A00"});
    EXPECT_EQ(sim.answers("RQ" + kPhone + "0001"), Strings{"RS04"});
    EXPECT_EQ(sim.answers("RQ" + kPhone + "0003"), Strings{"RS11"});
}

TEST(SimBrowsing, AnotherPlayerTakesOver) {
    BrowsingSim sim;
    const std::string episode = "1237" + std::string("0000000000000001\xDC\xDD") +
                                "How a badge finds its reader\xDC\xDD"
                                "Anna Bergmann\xDC\xDDOn the Air\xDC\xDD"
                                "1800000\xDC\xDD";
    sim.answers("RC" + kPhone + "4400"); // plays
    const Strings events = sim.answers("RQ" + kPhone + "0002");
    EXPECT_EQ(events, (Strings{"RS04", "AB" + kPhone + "01", "RL" + kPhone + "02",
                               "RWB" + kPhone + "0002", "RL" + kPhone + "00",
                               "RJ" + kPhone + "005A50" + episode, "RWA" + kPhone + "01"}));
    // What is browsed is the one that is controlled, while no other is chosen.
    EXPECT_EQ(sim.answers("RK" + kPhone), Strings{"RO" + kPhone + "0400000002"});
    EXPECT_EQ(sim.answers("RQ" + kPhone + "0002"), Strings{"RS04"}) << "it is already";
    // The first player's second track, from its folders.
    sim.answers("RP" + kPhone + "0001");
    const Strings played = sim.answers("RL" + kPhone + "01000F" + track_uid(2));
    ASSERT_GE(played.size(), 2U);
    EXPECT_EQ(played[0], "RP" + kPhone + "04");
    EXPECT_EQ(played[1], "RWB" + kPhone + "0001");
    EXPECT_EQ(played.back(), "RL" + kPhone + "01");
}

TEST(SimBrowsing, PlayersAreChosenRemovedAndInstalledAtThePhone) {
    BrowsingSim sim;
    ControlClient desk(sim.dir());
    EXPECT_EQ(desk.order("player remove 1"),
              "error: this player is in use; \"player choose\" another one first");
    EXPECT_EQ(desk.order("player choose 2"), "ok");
    EXPECT_EQ(desk.order("player remove 1"), "ok");
    EXPECT_EQ(desk.order("player choose 1"), "error: no player 1 is on the phone");
    const Strings events = sim.client.events_until_version();
    EXPECT_EQ(events.front(), "RWB" + kPhone + "0002");
    EXPECT_EQ(events.back(), "RWC" + kPhone + "01");
    EXPECT_EQ(sim.answers("RQ" + kPhone + "0001"), Strings{"RS11"});
    EXPECT_EQ(sim.list("RM" + kPhone + "00FF", 1)[0].substr(0, 26),
              "RM" + kPhone + "0400010225\x01\x02");
    EXPECT_EQ(desk.order("player install 1"), "ok");
    EXPECT_EQ(desk.order("player install 3"), "error: no player 3 can be installed");
    EXPECT_EQ(sim.client.events_until_version(), Strings{"RWC" + kPhone + "01"});
    sim.list("RM" + kPhone + "00FF", 2);
}

TEST(SimBrowsing, AnItemIsPlayed) {
    BrowsingSim sim;
    const Strings events = sim.answers("RL" + kPhone + "03000F" + track_uid(2));
    ASSERT_EQ(events.size(), 5U);
    EXPECT_EQ(events[0], "RP" + kPhone + "04");
    EXPECT_NE(events[1].find("Carrier Wave"), std::string::npos);
    EXPECT_EQ(events[2], "RK" + kPhone + "0002DA7800000000");
    EXPECT_EQ(events[3], "AB" + kPhone + "02");
    EXPECT_EQ(events[4], "RL" + kPhone + "01");
}

TEST(SimBrowsing, WhatCannotBePlayedIsRefused) {
    BrowsingSim sim;
    EXPECT_EQ(sim.answers("RL" + kPhone + "03000F" + track_uid(9)), Strings{"RP" + kPhone + "09"});
    EXPECT_EQ(sim.answers("RL" + kPhone + "01000F" + folder_uid(0)), Strings{"RP" + kPhone + "0C"});
    EXPECT_EQ(sim.answers("RL" + kPhone + "00000F" + track_uid(1)), Strings{"RP" + kPhone + "0A"});
}

TEST(SimBrowsing, AListIsCancelled) {
    sim::Pace pace = phone_pace();
    pace.list_step = std::chrono::hours(1);
    BrowsingSim sim(pace);
    EXPECT_EQ(sim.answers("RV" + kPhone), Strings{});
    EXPECT_EQ(sim.answers("RO" + kPhone + "00000000FFFFFFFF"), Strings{});
    EXPECT_EQ(sim.answers("RV" + kPhone), Strings{});
    sim.stop();
    EXPECT_NE(sim.log().find("no list is under way\n"), std::string::npos);
    EXPECT_NE(sim.log().find("the list is cancelled\n"), std::string::npos);
}

TEST(SimBrowsing, AListEndsWithTheConnection) {
    sim::World world = sim::built_in_world();
    world.phone.tracks.resize(1000, world.phone.tracks[0]);
    BrowsingSim sim(phone_pace(), world);
    sim.send("RO" + kPhone + "00000000FFFFFFFF");
    EXPECT_EQ(sim.client.event().substr(0, 20), "RM" + kPhone + "0403E8");
    sim.send("RB" + kPhone);
    EXPECT_EQ(sim.until("RC").back(), "RC00" + kPhone);
    EXPECT_EQ(sim.client.events_until_version(), Strings{});
}

} // namespace
