// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "running_sim.h"

#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace {

using Strings = std::vector<std::string>;

void expect_alive(const RunningSim& sim) {
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
}

/// Opens a server in `dir` and returns what it says when it cannot.
std::string start_error(const std::string& dir) {
    asio::io_context loop(1);
    std::ostringstream log;
    sim::Options options;
    options.dir = dir;
    try {
        const sim::Server server(loop, sim::built_in_world(), options, log);
    } catch (const sim::StartError& error) {
        return error.what();
    }
    return "";
}

TEST(SimConnection, CommandsMayComeInPieces) {
    RunningSim sim;
    TestClient client = sim.client();
    for (const char c : std::string("AT#PV\r\nAT#BTOR\r\n")) {
        client.send(std::string(1, c));
    }
    EXPECT_EQ(client.events(2), (Strings{"PVvym-sim 1.0", "BR00001A7DDA7113"}));
}

TEST(SimConnection, AnUnknownCommandIsNamedAndSkipped) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#XYZ123\r\nAT#PV\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
    sim.stop();
    EXPECT_NE(sim.log().find("vym-sim: unknown command, ignored: \"AT#XYZ123\"\n"), std::string::npos);
}

TEST(SimConnection, SurvivesGarbage) {
    RunningSim sim;
    TestClient client = sim.client();
    std::string garbage;
    uint32_t state = 1;
    for (int i = 0; i < 100000; ++i) {
        state = state * 1664525U + 1013904223U;
        garbage += static_cast<char>(state >> 24);
    }
    client.send(garbage + "\r\nAT#PV\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
}

TEST(SimConnection, EveryCommandSurvivesEveryCut) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    const Strings commands{
        "AT#BB070007\x02\xDC\xDD\xDC\xDD\xDC\xDD",
        "AT#BD112233445566200001\x07",
        "AT#BI112233445566FB349B5F80000080001000000B110000",
        "AT#BN2A416E6E6101000000010004a\xDC\xDDz",
        "AT#BR1122334455660100040000",
        "AT#BS2A416E6E610100010001E240",
        "AT#BTL00020003272507",
        "AT#BTE000102030405060708090A0B0C0D0E0F",
        "AT#BTA1122334455660501",
    };
    for (const std::string& command : commands) {
        for (size_t length = 5; length < command.size(); ++length) {
            client.send(command.substr(0, length) + "\r\n");
        }
    }
    EXPECT_EQ(client.events_until_version(), Strings{});
}

TEST(SimConnection, SurvivesAMegabyteWithoutALineEnd) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send(std::string(size_t{1} << 20, 'A'));
    client.send("\r\nAT#PV\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
    sim.stop();
    EXPECT_NE(sim.log().find("vym-sim: a line is longer than any command, ignored\n"),
              std::string::npos);
}

TEST(SimConnection, SurvivesAClientThatDiesInACommand) {
    RunningSim sim;
    for (const char* begun :
         {"", "A", "AT#B", "AT#PV\r", "AT#BB01FFFFxxx", "AT#PB\r\nAT#BG\r\nAT#BM2A"}) {
        TestClient client = sim.client();
        client.send(begun);
        client.close();
    }
    expect_alive(sim);
}

TEST(SimConnection, LastCommandsOfAClientThatLeavesCount) {
    RunningSim sim;
    TestClient client = sim.client();
    // Most of their answers find nobody there.
    std::string commands;
    for (int i = 0; i < 2000; ++i) {
        commands += "AT#PV\r\n";
    }
    client.send(commands + "AT#BB010004Last\r\n");
    client.close();
    TestClient next = sim.client();
    next.send("AT#BA01\r\n");
    EXPECT_EQ(next.event(), "BB000100080104Last");
}

TEST(SimConnection, ServesOneClientAfterTheOther) {
    RunningSim sim;
    TestClient first = sim.client();
    first.send("AT#BB010004Anna\r\n");
    EXPECT_EQ(first.event(), "BB000100080104Anna");
    TestClient second = sim.client();
    second.send("AT#BA01\r\n");
    // The first is still served while the second waits.
    first.send("AT#BB010003Bob\r\n");
    EXPECT_EQ(first.event(), "BB000100070103Bob");
    first.close();
    EXPECT_EQ(second.event(), "BB000100070103Bob");
}

/// Sends one command over and over, without reading, until the server takes no more. How many were
/// sent.
size_t send_until_refused(const TestClient& client, std::string_view command, size_t limit) {
    constexpr int kRefusedAfterMs = 500;
    size_t count = 0;
    pollfd entry{client.fd(), POLLOUT, 0};
    while (count < limit && poll(&entry, 1, kRefusedAfterMs) == 1) {
        // Whole or not at all: a command is far smaller than the room that POLLOUT promises.
        if (send(client.fd(), command.data(), command.size(), MSG_NOSIGNAL | MSG_DONTWAIT) > 0) {
            ++count;
        }
    }
    return count;
}

TEST(SimConnection, AClientThatDoesNotReadIsNotReadEitherAndMissesNothing) {
    constexpr size_t kLimit = 20000;
    RunningSim sim;
    TestClient client = sim.client();
    const size_t commands = send_until_refused(client, "AT#BA0F\r\n", kLimit);
    // Otherwise the answers of all of them are in the server's memory.
    ASSERT_LT(commands, kLimit);
    for (size_t i = 0; i < commands; ++i) {
        ASSERT_EQ(client.event().substr(0, 18), "BB000100560F34\x03\xDC\xDD\x74") << "answer " << i;
        ASSERT_EQ(client.event().substr(0, 18), "BB000100600F3C\x03\x01\x64\x62") << "answer " << i;
        ASSERT_EQ(client.event().substr(0, 18), "BB0001005D0F38\x03\x02\x70\x6F") << "answer " << i;
    }
    EXPECT_EQ(client.events_until_version(), Strings{});
}

TEST(SimConnection, TrafficIsEveryByteOfBothDirections) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#PV\r\nhm\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
    client.send("AT#PB\r\nAT#P");
    EXPECT_EQ(client.event(), "PA01");
    const std::string number = client.event().substr(4);
    EXPECT_TRUE(client.descriptor());
    const std::string other_number = client.event().substr(4);
    EXPECT_TRUE(client.descriptor());
    client.close();
    // The next client is served only after the first one's end was seen.
    expect_alive(sim);
    sim.stop();
    const auto digits_of = [](const std::string& text) {
        std::string digits;
        for (const char c : text) {
            // The byte of a digit is 30 and up, that of a letter 41 and up.
            digits +=
                c < 'A' ? std::string{'3', c} : std::string{'4', static_cast<char>('1' + (c - 'A'))};
        }
        return digits;
    };
    EXPECT_EQ(sim.traffic(), "< 41542350560D0A\n"
                             "> 505676796D2D73696D20312E3000\n"
                             "< 686D0D0A\n"
                             "< 41542350420D0A\n"
                             "> 5041303100\n"
                             "> 50443031" +
                                 digits_of(number) +
                                 "00\n"
                                 "> fd 00\n"
                                 "> 50443030" +
                                 digits_of(other_number) +
                                 "00\n"
                                 "> fd 00\n"
                                 "< 41542350\n"
                                 "< 41542350560D0A\n"
                                 "> 505676796D2D73696D20312E3000\n");
}

TEST(SimConnection, DroppedBytesAreTrafficToo) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send(std::string(500000, 'A') + "\r\nAT#PV\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
    sim.stop();
    size_t received = 0;
    std::istringstream lines(sim.traffic());
    for (std::string line; std::getline(lines, line);) {
        if (line[0] == '<') {
            received += (line.size() - 2) / 2;
        }
    }
    EXPECT_EQ(received, 500000U + 2 + 7);
}

TEST(SimConnection, TheLogNamesCommandsAndEvents) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    client.send("AT#BK\r\n");
    EXPECT_EQ(client.events(5).back(), "BE00");
    sim.stop();
    const std::string log = sim.log();
    EXPECT_NE(log.find("<- bluetooth start_discovery\n"), std::string::npos);
    EXPECT_NE(log.find("-> bluetooth onDiscoveryStateChanged state=1\n"), std::string::npos);
    EXPECT_NE(log.find("-> bluetooth onDeviceFound address=11:22:33:44:55:66 type=1 class=2360340 "
                       "rssi=189 services={services=[4363, 4366, 4382]} name=\"Kitchen speaker\"\n"),
              std::string::npos);
}

TEST(SimConnection, ASocketFileLeftBehindIsReplaced) {
    const TemporaryDirectory dir;
    {
        // Bound and closed without being removed, as by a server that was killed.
        const sim::UniqueFd dead(socket(AF_UNIX, SOCK_STREAM, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        dir.file("vym_socket").copy(static_cast<char*>(address.sun_path), 107);
        ASSERT_EQ(bind(dead.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    EXPECT_EQ(start_error(dir.path()), "");
}

TEST(SimConnection, ALiveServerIsNotReplaced) {
    const RunningSim sim;
    EXPECT_EQ(start_error(sim.dir()), "another server is listening on " + sim.dir() +
                                          "/vym_socket; stop it or use another directory");
    expect_alive(sim);
}

TEST(SimConnection, AFileThatIsNoSocketIsNotTouched) {
    const TemporaryDirectory dir;
    std::ofstream(dir.file("vym_socket")) << "precious";
    EXPECT_EQ(start_error(dir.path()),
              dir.file("vym_socket") + " exists and is no socket; move it away");
    EXPECT_EQ(content_of(dir.file("vym_socket")), "precious");
}

TEST(SimConnection, TheSocketPathMayBe107CharactersLong) {
    const TemporaryDirectory dir;
    const auto sub = [&dir](size_t socket_path_length) {
        std::string path = dir.path() + "/";
        path.append(socket_path_length - path.size() - std::string("/vym_socket").size(), 'd');
        mkdir(path.c_str(), 0700);
        return path;
    };
    EXPECT_EQ(start_error(sub(107)), "");
    const std::string longer = sub(108);
    EXPECT_EQ(start_error(longer),
              "the path " + longer +
                  "/vym_socket has 108 characters, a socket's path has at most 107; "
                  "use a shorter directory");
}

TEST(SimConnection, AMissingDirectoryIsNamed) {
    const TemporaryDirectory dir;
    EXPECT_EQ(start_error(dir.file("none")), "cannot use directory \"" + dir.file("none") +
                                                 "\": No such file or directory; create it first");
}

TEST(SimConnection, TheSocketIsRemovedAtTheEnd) {
    RunningSim sim;
    struct stat info {};
    const std::string path = sim.dir() + "/vym_socket";
    EXPECT_EQ(stat(path.c_str(), &info), 0);
    sim.stop();
    EXPECT_NE(stat(path.c_str(), &info), 0);
}

TEST(SimConnection, StopWithAClientEndsItsConnection) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    sim.stop();
    EXPECT_EQ(read_exactly(client.fd(), 1), "");
}

} // namespace
