// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "evil.h"

#include "protocol/codec.h"
#include "running_sim.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace {

using namespace std::string_literals;
using sim::Deed;
using sim::Deeds;
using sim::Evil;
using What = sim::Deed::What;

constexpr int kPatience = 1000;

/// What the first event that does not get through unhurt comes to.
Deeds first_misdeed(Evil& evil, std::string_view event, bool has_descriptor = false) {
    for (int i = 0; i < kPatience; ++i) {
        Deeds deeds = evil.on_event(event, has_descriptor);
        if (!deeds.report.empty()) {
            return deeds;
        }
    }
    ADD_FAILURE() << "nothing was done to " << kPatience << " events";
    return {};
}

Deeds first_misdeed(const char* options, std::string_view event, bool has_descriptor = false) {
    Evil evil(sim::to_evil_options(options));
    return first_misdeed(evil, event, has_descriptor);
}

/// "write(5) pause descriptor"
std::string shape(const Deeds& deeds) {
    static constexpr std::array<const char*, 7> kNames{"write", "descriptor", "both", "spare",
                                                       "pause", "deafness",   "close"};
    std::string text;
    for (const Deed& deed : deeds.all) {
        text += (text.empty() ? "" : " ") + std::string(kNames.at(static_cast<size_t>(deed.what)));
    }
    return text;
}

/// Every byte that the client would get, with the one that a descriptor rides on.
std::string stream_of(const Deeds& deeds) {
    std::string stream;
    for (const Deed& deed : deeds.all) {
        const bool is_descriptor =
            deed.what == What::Descriptor || deed.what == What::Spare || deed.what == What::Both;
        stream += is_descriptor ? "\0"s : deed.bytes;
    }
    return stream;
}

std::string reason_against(const char* options) {
    try {
        sim::to_evil_options(options);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

TEST(Evil, MostEventsPassUnhurt) {
    Evil evil(sim::to_evil_options("1"));
    int unhurt = 0;
    for (int i = 0; i < 800; ++i) {
        const Deeds deeds = evil.on_event("BE00", false);
        if (deeds.report.empty()) {
            EXPECT_NE(stream_of(deeds).find("BE00\0"s), std::string::npos);
            ++unhurt;
        }
    }
    EXPECT_GT(unhurt, 650);
    EXPECT_LT(unhurt, 750);
}

TEST(Evil, SplitsAnEventIntoWritesOfTheirOwn) {
    const Deeds deeds = first_misdeed("1:split", "PVvym-sim 1.0");
    EXPECT_EQ(shape(deeds).substr(0, 17), "write pause write");
    EXPECT_EQ(stream_of(deeds), "PVvym-sim 1.0\0"s);
}

TEST(Evil, GluesAnEventToTheNext) {
    Evil evil(sim::to_evil_options("1:glue"));
    EXPECT_EQ(shape(first_misdeed(evil, "PA01")), "");
    Deeds next;
    while (next.all.empty()) {
        next = evil.on_event("BE00", false);
    }
    EXPECT_EQ(shape(next), "write");
    EXPECT_EQ(stream_of(next).substr(0, 10), "PA01\0BE00\0"s);
}

TEST(Evil, WhatIsHeldBackIsNotForTheNextClient) {
    Evil evil(sim::to_evil_options("1:glue"));
    first_misdeed(evil, "PA01");
    evil.client_left();
    Deeds next;
    while (next.all.empty()) {
        next = evil.on_event("BE00", false);
    }
    EXPECT_EQ(stream_of(next).substr(0, 5), "BE00\0"s);
}

TEST(Evil, TruncatesAnEventWithOrWithoutItsEnd) {
    Evil evil(sim::to_evil_options("1:truncate"));
    std::set<bool> ends;
    for (int i = 0; i < 20; ++i) {
        const Deeds deeds = first_misdeed(evil, "BE00");
        std::string stream = stream_of(deeds);
        const bool is_ended = deeds.report.find(", with no end") == std::string::npos;
        ASSERT_LE(stream.size(), is_ended ? 4U : 3U);
        EXPECT_EQ(stream,
                  "BE00"s.substr(0, stream.size() - (is_ended ? 1 : 0)) + (is_ended ? "\0"s : ""s));
        ends.insert(is_ended);
    }
    EXPECT_EQ(ends.size(), 2U) << "either always an end or never one";
}

TEST(Evil, ChangesNothingButTheCountOfABlock) {
    Evil evil(sim::to_evil_options("1:counts"));
    std::set<bool> numbers;
    for (int i = 0; i < 20; ++i) {
        // A name is all that is counted here.
        const std::string stream = stream_of(first_misdeed(evil, "KC0123456789AB0004Last"));
        EXPECT_EQ(stream.substr(0, 14), "KC0123456789AB");
        EXPECT_EQ(stream.substr(18), "Last\0"s);
        const std::string count = stream.substr(14, 4);
        const bool is_number = count.find_first_not_of("0123456789ABCDEF") == std::string::npos;
        EXPECT_TRUE(!is_number || count > "0004") << count;
        numbers.insert(is_number);
    }
    EXPECT_EQ(numbers.size(), 2U) << "either only larger counts or only garbage";
}

TEST(Evil, CountsTooManyInsideABlock) {
    Evil evil(sim::to_evil_options("1:counts"));
    std::set<std::string> fields;
    for (int i = 0; i < 60; ++i) {
        // One property of the adapter, which has a name of four bytes.
        const Deeds deeds = first_misdeed(evil, "BB000100080104Name");
        fields.insert(deeds.report.substr(deeds.report.rfind(' ') + 1));
    }
    EXPECT_EQ(fields.count("count"), 1U);
    EXPECT_EQ(fields.count("length"), 1U);
}

TEST(Evil, LeavesCountsAloneWhereThereAreNone) {
    Evil evil(sim::to_evil_options("1:counts"));
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(stream_of(evil.on_event("BE00", false)), "BE00\0"s);
    }
}

TEST(Evil, ReplacesOneDigitByWhatIsNone) {
    const std::string stream = stream_of(first_misdeed("1:digits", "BE00"));
    ASSERT_EQ(stream.size(), 5U);
    EXPECT_EQ(stream.substr(0, 2), "BE");
    const bool is_first = stream[2] != '0';
    EXPECT_EQ(stream[is_first ? 3 : 2], '0');
    EXPECT_EQ("0123456789ABCDEFabcdef"s.find(stream[is_first ? 2 : 3]), std::string::npos);
}

TEST(Evil, SendsAnUnknownEventBefore) {
    const Deeds deeds = first_misdeed("1:unknown", "BE00");
    ASSERT_EQ(shape(deeds), "write write");
    EXPECT_FALSE(protocol::find(protocol::Direction::Event, deeds.all[0].bytes));
    EXPECT_EQ(deeds.all[1].bytes, "BE00\0"s);
}

TEST(Evil, SendsAnEventTwice) {
    const Deeds deeds = first_misdeed("1:duplicate", "BE00");
    EXPECT_EQ(shape(deeds), "write write");
    EXPECT_EQ(stream_of(deeds), "BE00\0BE00\0"s);
}

TEST(Evil, SendsWhatNobodyAskedForWithAllItsFields) {
    Evil evil(sim::to_evil_options("1:unasked"));
    std::set<std::string> names;
    for (int i = 0; i < 600; ++i) {
        const Deeds deeds = first_misdeed(evil, "BE00");
        ASSERT_EQ(shape(deeds), "write write");
        const std::string& event = deeds.all[0].bytes;
        const protocol::Decoded decoded =
            protocol::decode(protocol::Direction::Event, event.substr(0, event.size() - 1));
        ASSERT_TRUE(decoded.found) << event;
        EXPECT_EQ(event.find('\0'), event.size() - 1) << decoded.found.message->name;
        EXPECT_GE(event.size(), decoded.found.message->tag.size() + decoded.found.message->minimum);
        names.insert(std::string(decoded.found.message->name));
        EXPECT_EQ(deeds.all[1].bytes, "BE00\0"s);
    }
    EXPECT_GT(names.size(), 100U);
}

TEST(Evil, AnnouncesADescriptorAndSendsNone) {
    EXPECT_EQ(shape(first_misdeed("1:no-descriptor", "PD0100000007", true)), "write");
}

TEST(Evil, SendsADescriptorThatWasNotAnnounced) {
    EXPECT_EQ(shape(first_misdeed("1:stray-descriptor", "BE00")), "spare write");
}

TEST(Evil, SendsTwoDescriptorsWhereOneIsDue) {
    Evil evil(sim::to_evil_options("1:two-descriptors"));
    std::set<std::string> shapes;
    for (int i = 0; i < 20; ++i) {
        shapes.insert(shape(first_misdeed(evil, "PD0100000007", true)));
    }
    EXPECT_EQ(shapes, (std::set<std::string>{"write descriptor spare", "write both"}));
}

TEST(Evil, StallsAndIsDeafForAWhile) {
    const Deeds stalled = first_misdeed("1:stall", "BE00");
    ASSERT_EQ(shape(stalled), "pause write");
    EXPECT_GT(stalled.all[0].duration.count(), 0);
    const Deeds deaf = first_misdeed("1:deaf", "BE00");
    ASSERT_EQ(shape(deaf), "write deafness");
    EXPECT_GT(deaf.all[1].duration.count(), 0);
}

TEST(Evil, ClosesInTheMiddle) {
    const Deeds deeds = first_misdeed("1:close", "PVvym-sim 1.0");
    EXPECT_EQ(shape(deeds), "write close");
    EXPECT_EQ("PVvym-sim 1.0\0"s.substr(0, stream_of(deeds).size()), stream_of(deeds));
}

TEST(Evil, SendsAnOldEventAgain) {
    Evil evil(sim::to_evil_options("1:unasked"));
    for (int i = 0; i < 40; ++i) {
        static_cast<void>(evil.on_event("PA0" + std::to_string(i % 10), false));
    }
    Deeds deeds;
    while (deeds.report.find("unasked old onStateChanged before ") == std::string::npos) {
        deeds = first_misdeed(evil, "BE00");
    }
    EXPECT_EQ(deeds.all[0].bytes.substr(0, 3), "PA0");
}

TEST(Evil, StallsIsDeafOrClosesWhenACommandComes) {
    Evil evil(sim::to_evil_options("1"));
    std::set<std::string> shapes;
    int unhurt = 0;
    for (int i = 0; i < 6400; ++i) {
        const Deeds deeds = evil.on_command("PV");
        deeds.all.empty() ? ++unhurt : (shapes.insert(shape(deeds)), 0);
    }
    EXPECT_EQ(shapes, (std::set<std::string>{"pause", "deafness", "close"}));
    EXPECT_GT(unhurt, 6200);
}

TEST(Evil, WhenCommandsComeDoesNotChangeWhatHappensToEvents) {
    Evil first(sim::to_evil_options("7"));
    Evil second(sim::to_evil_options("7"));
    for (int i = 0; i < 200; ++i) {
        if (i % 3 == 0) {
            static_cast<void>(second.on_command("PV"));
        }
        const Deeds deeds = first.on_event("BB000100080104Name", false);
        const Deeds same = second.on_event("BB000100080104Name", false);
        EXPECT_EQ(same.report, deeds.report);
        EXPECT_EQ(shape(same), shape(deeds));
        EXPECT_EQ(stream_of(same), stream_of(deeds));
    }
}

TEST(Evil, ReportsWhatItDidToWhichEvent) {
    // Literal: another machine, compiler or day must not give another run.
    EXPECT_EQ(first_misdeed("17:truncate", "BE00").report,
              "10: truncate onDiscoveryStateChanged after 2 bytes, with no end");
}

TEST(Evil, RefusesBadOptionsInOneLine) {
    EXPECT_EQ(reason_against("17"), "");
    EXPECT_EQ(reason_against("18446744073709551615:split,no-descriptor"), "");
    EXPECT_EQ(reason_against("18446744073709551616"),
              "\"18446744073709551616\" is no seed; give a number of at most 64 bits, as in 17 or "
              "17:split,close");
    EXPECT_EQ(reason_against("-1").substr(0, 15), "\"-1\" is no seed");
    EXPECT_EQ(reason_against("1:splat"),
              "\"splat\" is no kind of misbehaviour; there are all, split, glue, truncate, counts, "
              "digits, unknown, duplicate, unasked, no-descriptor, stray-descriptor, two-descriptors, "
              "stall, deaf, close");
    EXPECT_EQ(reason_against("1:split,").substr(0, 30), "\"\" is no kind of misbehaviour;");
}

/// A running server's misbehaviour towards one client.
struct Outcome {
    std::string received;
    /// The lines of the log and of the traffic that say what was done.
    std::string reports;
    std::string sent;
};

std::string lines_with(const std::string& text, const std::string& beginning) {
    std::istringstream lines(text);
    std::string chosen;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(beginning, 0) == 0) {
            chosen += line + '\n';
        }
    }
    return chosen;
}

Outcome run(const std::string& options, const std::string& commands, size_t length) {
    RunningSim sim(sim::built_in_world(), RunningSim::quick(), {}, false, options);
    TestClient client = sim.client();
    client.send(commands);
    Outcome result;
    // Without its descriptors: those that nobody takes are closed.
    result.received = read_exactly(client.fd(), length);
    sim.stop();
    result.reports = lines_with(sim.log(), "evil ");
    result.sent = lines_with(sim.traffic(), "> ");
    return result;
}

TEST(EvilServer, DoesTheSameForTheSameSeedAndTheSameEvents) {
    const std::string kinds = "5:split,glue,truncate,counts,digits,unknown,duplicate,unasked,"
                              "stray-descriptor,stall,deaf";
    const auto line = [](const Deeds& deeds) {
        return deeds.report.empty() ? "" : "evil " + deeds.report + '\n';
    };
    Evil evil(sim::to_evil_options(kinds));
    std::string commands;
    std::string stream;
    std::string reports;
    for (int i = 0; i < 100; ++i) {
        commands += "AT#PV\r\nAT#BTOR\r\n";
        for (const auto& [command, event] :
             {std::pair{"PV", "PVvym-sim 1.0"}, std::pair{"BTOR", "BR00001A7DDA7113"}}) {
            reports += line(evil.on_command(command));
            const Deeds deeds = evil.on_event(event, false);
            stream += stream_of(deeds);
            reports += line(deeds);
        }
    }
    const Outcome first = run(kinds, commands, stream.size());
    EXPECT_EQ(first.received, stream);
    EXPECT_EQ(first.reports, reports);
    const Outcome second = run(kinds, commands, stream.size());
    EXPECT_EQ(second.received, first.received);
    EXPECT_EQ(second.reports, first.reports);
    EXPECT_EQ(second.sent, first.sent);
}

/// What a client that only asks for the version gets until it is dropped.
std::string until_closed(Evil& evil) {
    std::string stream;
    for (int i = 0; i < kPatience; ++i) {
        if (!evil.on_command("PV").report.empty()) {
            return stream;
        }
        const Deeds deeds = evil.on_event("PVvym-sim 1.0", false);
        stream += stream_of(deeds);
        if (!deeds.report.empty()) {
            return stream;
        }
    }
    ADD_FAILURE() << "never closed";
    return stream;
}

TEST(EvilServer, DropsAClientAtAnEventOrACommandAndServesTheNext) {
    Evil evil(sim::to_evil_options("2:close"));
    RunningSim sim(sim::built_in_world(), RunningSim::quick(), {}, false, "2:close");
    for (int i = 0; i < 20; ++i) {
        const std::string stream = until_closed(evil);
        TestClient client = sim.client();
        // As one, and more than will be answered: what is behind the end does not count.
        std::string commands;
        while (commands.size() < stream.size() + 14) {
            commands += "AT#PV\r\n";
        }
        client.send(commands);
        EXPECT_EQ(read_exactly(client.fd(), stream.size() + 1), stream);
    }
    sim.stop();
    EXPECT_NE(sim.log().find(": close at get_version\n"), std::string::npos);
    EXPECT_NE(sim.log().find(" of onBtVersion\n"), std::string::npos);
}

TEST(EvilServer, SendsRealDescriptors) {
    Evil evil(sim::to_evil_options("1:stray-descriptor"));
    RunningSim sim(sim::built_in_world(), RunningSim::quick(), {}, false, "1:stray-descriptor");
    TestClient client = sim.client();
    for (bool is_there = false; !is_there;) {
        is_there = !evil.on_event("PVvym-sim 1.0", false).report.empty();
        client.send("AT#PV\r\n");
        EXPECT_EQ(client.event(), "PVvym-sim 1.0");
    }
    EXPECT_EQ(client.descriptors_waiting(), 1U);
}

/// How many descriptors the first byte that has any brings.
size_t first_descriptors(int socket) {
    char byte = 0;
    alignas(cmsghdr) std::array<char, CMSG_SPACE(4 * sizeof(int))> control{};
    iovec part{&byte, 1};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    while (wait_readable(socket)) {
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        if (recvmsg(socket, &message, MSG_CMSG_CLOEXEC) <= 0) {
            break;
        }
        const cmsghdr* header = CMSG_FIRSTHDR(&message);
        if (header != nullptr) {
            const size_t count = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
            for (size_t i = 0; i < count; ++i) {
                int fd = -1;
                std::memcpy(&fd, CMSG_DATA(header) + i * sizeof fd, sizeof fd);
                close(fd);
            }
            return count;
        }
    }
    return 0;
}

/// A seed that does this to the first descriptor of a server that is switched on.
std::string seed_of(const std::string& kind, const std::string& wanted) {
    for (int seed = 1; seed < kPatience; ++seed) {
        std::string options = std::to_string(seed) + kind;
        Evil evil(sim::to_evil_options(options));
        static_cast<void>(evil.on_event("PA01", false));
        if (shape(evil.on_event("PD0100000007", true)) == wanted) {
            return options;
        }
    }
    ADD_FAILURE() << "no seed for " << wanted;
    return "1" + kind;
}

TEST(EvilServer, SendsTwoDescriptorsWithOneByte) {
    RunningSim sim(sim::built_in_world(), RunningSim::quick(), {}, false,
                   seed_of(":two-descriptors", "write both"));
    TestClient client = sim.client();
    client.send("AT#PB\r\n");
    EXPECT_EQ(first_descriptors(client.fd()), 2U);
}

} // namespace
