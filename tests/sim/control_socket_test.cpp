// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The control socket and those who misuse it.
#include "control_client.h"
#include "phone_sim.h"

#include <sys/stat.h>

namespace {

TEST(ControlSocket, AnswersLineByLine) {
    RunningSim sim;
    ControlClient desk(sim.dir());
    desk.say("phone battery 3\n# nothing\n\nphone battery 9\nworld show\n");
    EXPECT_EQ(desk.answer(), Strings{"ok"});
    EXPECT_EQ(desk.answer(), Strings{"ok"});
    EXPECT_EQ(desk.answer(), Strings{"ok"});
    EXPECT_EQ(desk.answer(), Strings{"error: LEVEL is a number from 0 to 5, not \"9\""});
    EXPECT_EQ(desk.answer().size(), 12U);
}

TEST(ControlSocket, TheLastLineNeedsNoEnd) {
    RunningSim sim;
    ControlClient desk(sim.dir());
    desk.say("phone battery 1\nphone battery 2");
    desk.end_of_orders();
    EXPECT_EQ(desk.answer(), Strings{"ok"});
    EXPECT_EQ(desk.answer(), Strings{"ok"});
    EXPECT_EQ(desk.line(), "");
    sim.stop();
    EXPECT_EQ(sim.world().phone.battery, 2);
}

TEST(ControlSocket, ClientsAreServedSideBySide) {
    RunningSim sim;
    ControlClient waiting(sim.dir());
    waiting.say("wait client within 1h\nwait client within 60s\n");
    EXPECT_EQ(waiting.answer().back().rfind("error: \"1h\"", 0), 0U);
    ControlClient other(sim.dir());
    EXPECT_EQ(other.order("phone battery 2"), "ok");
    const TestClient client = sim.client();
    EXPECT_EQ(waiting.answer(), Strings{"ok"});
}

TEST(ControlSocket, TwoWhoWaitForTheSameBothHearOfIt) {
    RunningSim sim;
    ControlClient first(sim.dir());
    ControlClient second(sim.dir());
    const std::string order = "wait command bluetooth.get_version within 60s\n";
    first.say(order);
    second.say(order);
    // An answer says that the orders before it are being waited for.
    for (ControlClient* desk : {&first, &second}) {
        static_cast<void>(desk);
        ControlClient after(sim.dir());
        EXPECT_EQ(after.order("log waiting"), "ok");
    }
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(first.answer(), Strings{"ok"});
    EXPECT_EQ(second.answer(), Strings{"ok"});
}

TEST(ControlSocket, AnEndlessLineIsRefusedAndTheServerGoesOn) {
    RunningSim sim;
    ControlClient evil(sim.dir());
    evil.say(std::string(size_t{1024} * 1024, 'x'));
    EXPECT_EQ(evil.line(), "error: the line is longer than 65536 characters");
    EXPECT_EQ(evil.line(), "");
    ControlClient good(sim.dir());
    EXPECT_EQ(good.order("phone battery 3"), "ok");
}

TEST(ControlSocket, GarbageIsAnsweredInOneLine) {
    RunningSim sim;
    ControlClient desk(sim.dir());
    for (const std::string& line :
         {std::string("\0\0\0", 3), std::string("\xFF\xFE\x80"), std::string(60000, '"'),
          std::string(60000, 'a') + " b", std::string("phone call \x1B[2J")}) {
        const std::string answer = desk.order(line);
        EXPECT_TRUE(answer.rfind("error: ", 0) == 0) << answer;
        EXPECT_LT(answer.size(), 1000U);
    }
    EXPECT_EQ(desk.order("phone battery 3"), "ok");
}

TEST(ControlSocket, WhoLeavesWhileWaitingLeavesNothingBehind) {
    RunningSim sim;
    {
        ControlClient gone(sim.dir());
        gone.say("wait command bluetooth.get_version within 60s\n");
        ControlClient also_gone(sim.dir());
        also_gone.say("pause 60s\nphone battery 0\n");
        ControlClient in_the_middle(sim.dir());
        in_the_middle.say("phone batt");
    }
    TestClient client = sim.client();
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
    ControlClient good(sim.dir());
    EXPECT_EQ(good.order("phone battery 3"), "ok");
    sim.stop();
    EXPECT_EQ(sim.world().phone.battery, 3);
}

TEST(ControlSocket, WhoDoesNotReadHoldsUpNobody) {
    RunningSim sim;
    ControlClient deaf(sim.dir());
    // Not a blocking send: this server takes no more when its answers are not read.
    std::string orders;
    while (orders.size() < size_t{512} * 1024) {
        orders += "help\n";
    }
    EXPECT_GT(send(deaf.fd(), orders.data(), orders.size(), MSG_DONTWAIT | MSG_NOSIGNAL), 0);
    ControlClient good(sim.dir());
    EXPECT_EQ(good.order("phone battery 3"), "ok");
}

TEST(ControlSocket, ALeftOverSocketIsReplacedAndTheOwnOneRemoved) {
    const TemporaryDirectory dir;
    const auto run = [&dir] {
        asio::io_context loop(1);
        std::ostringstream log;
        sim::Options options;
        options.dir = dir.path();
        sim::Server server(loop, sim::built_in_world(), options, log);
        struct stat info {};
        EXPECT_EQ(stat(dir.file("vym_control").c_str(), &info), 0);
        EXPECT_EQ(log.str(), "");
    };
    run();
    struct stat info {};
    EXPECT_NE(stat(dir.file("vym_control").c_str(), &info), 0);
    const sim::UniqueFd left(socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = dir.file("vym_control");
    std::memcpy(static_cast<char*>(address.sun_path), path.data(), path.size());
    ASSERT_EQ(bind(left.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    run();
}

} // namespace
