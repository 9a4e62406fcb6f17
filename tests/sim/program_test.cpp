// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The program as a person starts it.
#include "running_sim.h"
#include "sound.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

using Strings = std::vector<std::string>;

/// Reads from a pipe until `end` or the end of the stream.
std::string read_until(int fd, char end) {
    std::string text;
    char c = 0;
    while (wait_readable(fd) && read(fd, &c, 1) == 1) {
        text += c;
        if (c == end) {
            break;
        }
    }
    return text;
}

class Program {
public:
    explicit Program(Strings arguments) {
        arguments.insert(arguments.begin(), VYM_SIM_PROGRAM);
        if (*VYM_SIM_EMULATOR != '\0') {
            std::istringstream emulator(VYM_SIM_EMULATOR);
            Strings words;
            for (std::string word; std::getline(emulator, word, '|');) {
                words.push_back(word);
            }
            arguments.insert(arguments.begin(), words.begin(), words.end());
        }
        start(arguments);
    }

    ~Program() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    std::string line() const { return read_until(out_.get(), '\n'); }
    void signal(int number) const { kill(pid_, number); }

    /// Waits for the end. The exit code, or the negative signal.
    int exit_code() {
        out_text_ = read_until(out_.get(), '\0');
        error_text_ = read_until(error_.get(), '\0');
        int status = 0;
        waitpid(std::exchange(pid_, -1), &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }
    /// Known after exit_code().
    const std::string& output() const { return out_text_; }
    const std::string& errors() const { return error_text_; }

private:
    void start(const Strings& arguments) {
        std::array<int, 2> out{};
        std::array<int, 2> error{};
        ASSERT_EQ(pipe(out.data()), 0);
        ASSERT_EQ(pipe(error.data()), 0);
        std::vector<char*> argv;
        for (const std::string& argument : arguments) {
            argv.push_back(const_cast<char*>(argument.c_str()));
        }
        argv.push_back(nullptr);
        pid_ = fork();
        if (pid_ == 0) {
            dup2(out[1], STDOUT_FILENO);
            dup2(error[1], STDERR_FILENO);
            for (const int fd : {out[0], out[1], error[0], error[1]}) {
                close(fd);
            }
            execvp(argv[0], argv.data());
            _exit(127);
        }
        close(out[1]);
        close(error[1]);
        out_ = sim::UniqueFd(out[0]);
        error_ = sim::UniqueFd(error[0]);
    }

    pid_t pid_ = -1;
    sim::UniqueFd out_;
    sim::UniqueFd error_;
    std::string out_text_;
    std::string error_text_;
};

TEST(SimProgram, SaysWhenItIsReadyAndEndsOnSignals) {
    for (const int number : {SIGTERM, SIGINT}) {
        const TemporaryDirectory dir;
        Program program({"--dir", dir.path()});
        ASSERT_EQ(program.line(), "vym-sim: listening on " + dir.path() + "/vym_socket\n");
        TestClient client(dir.path());
        client.send("AT#PV\r\n");
        EXPECT_EQ(client.event(), "PVvym-sim 1.0");
        program.signal(number);
        EXPECT_EQ(program.exit_code(), 0);
        EXPECT_EQ(program.output(), "");
        EXPECT_EQ(program.errors(), "");
        struct stat info {};
        EXPECT_NE(stat(dir.file("vym_socket").c_str(), &info), 0);
    }
}

TEST(SimProgram, UnknownCommandsAreNamedOnStandardErrorUnlessQuiet) {
    for (const bool quiet : {false, true}) {
        const TemporaryDirectory dir;
        Strings arguments{"--dir", dir.path()};
        if (quiet) {
            arguments.emplace_back("--quiet");
        }
        Program program(arguments);
        ASSERT_NE(program.line(), "");
        TestClient client(dir.path());
        client.send("AT#ZZ\r\nAT#PV\r\n");
        EXPECT_EQ(client.event(), "PVvym-sim 1.0");
        program.signal(SIGTERM);
        EXPECT_EQ(program.exit_code(), 0);
        EXPECT_EQ(program.errors(), quiet ? "" : "vym-sim: unknown command, ignored: \"AT#ZZ\"\n");
    }
}

TEST(SimProgram, LogShowsCommandsAndEvents) {
    const TemporaryDirectory dir;
    Program program({"--dir", dir.path(), "--log"});
    ASSERT_NE(program.line(), "");
    TestClient client(dir.path());
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
    program.signal(SIGTERM);
    EXPECT_EQ(program.exit_code(), 0);
    EXPECT_EQ(program.errors(), "   client connected\n<- bluetooth get_version\n"
                                "-> bluetooth onBtVersion version=\"vym-sim 1.0\"\n");
}

TEST(SimProgram, TrafficGoesToItsFile) {
    const TemporaryDirectory dir;
    Program program({"--dir", dir.path(), "--traffic", dir.file("traffic")});
    ASSERT_NE(program.line(), "");
    TestClient client(dir.path());
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
    program.signal(SIGTERM);
    EXPECT_EQ(program.exit_code(), 0);
    EXPECT_EQ(content_of(dir.file("traffic")), "< 41542350560D0A\n> 505676796D2D73696D20312E3000\n");
}

TEST(SimProgram, SomebodyCallsWhenToldTo) {
    const TemporaryDirectory dir;
    Program program({"--dir", dir.path(), "--ring-after", "0", "--ring-number", "*555#"});
    ASSERT_NE(program.line(), "");
    TestClient client(dir.path());
    const sim::UniqueFd audio = client.enable();
    client.send("AT#HA2A416E6E6101\r\n");
    std::string event;
    do {
        event = client.event();
    } while (!event.empty() && event.rfind("HM", 0) != 0);
    EXPECT_EQ(event, "HM*555#");
    program.signal(SIGTERM);
    EXPECT_EQ(program.exit_code(), 0);
}

TEST(SimProgram, AKilledServerDoesNotStopTheNext) {
    const TemporaryDirectory dir;
    Program killed({"--dir", dir.path()});
    ASSERT_NE(killed.line(), "");
    killed.signal(SIGKILL);
    EXPECT_EQ(killed.exit_code(), -SIGKILL);
    Program next({"--dir", dir.path()});
    EXPECT_EQ(next.line(), "vym-sim: listening on " + dir.path() + "/vym_socket\n");
    next.signal(SIGTERM);
    EXPECT_EQ(next.exit_code(), 0);
}

TEST(SimProgram, IsKilledAfterTheMessageThatItIsToldTo) {
    constexpr std::array<const char*, 2> kEvents{"", "PVvym-sim 1.0"};
    for (size_t after = 1; after <= kEvents.size(); ++after) { // a command, an event
        const TemporaryDirectory dir;
        Program program({"--dir", dir.path(), "--kill-after", std::to_string(after)});
        ASSERT_NE(program.line(), "");
        TestClient client(dir.path());
        client.send("AT#PV\r\n");
        EXPECT_EQ(program.exit_code(), -SIGKILL);
        const std::string expected = kEvents[after - 1];
        char room[64];
        const ssize_t count = recv(client.fd(), room, sizeof room, MSG_WAITALL);
        const size_t length = expected.empty() ? 0 : expected.size() + 1;
        EXPECT_EQ(std::string(room, static_cast<size_t>(std::max<ssize_t>(count, 0))),
                  std::string(expected.c_str(), length));
    }
}

TEST(SimProgram, FallsSilentAfterTheMessageThatItIsToldTo) {
    const TemporaryDirectory dir;
    Program program({"--dir", dir.path(), "--stall-after", "2"});
    ASSERT_NE(program.line(), "");
    TestClient client(dir.path());
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
    client.send("AT#PV\r\n");
    // It goes on reading nothing: what was sent stays in the socket.
    program.signal(SIGTERM);
    EXPECT_EQ(program.exit_code(), 0);
    char byte = 0;
    EXPECT_LE(recv(client.fd(), &byte, 1, 0), 0);
}

TEST(SimProgram, ASecondServerInOneDirectoryIsRefused) {
    const TemporaryDirectory dir;
    Program first({"--dir", dir.path(), "--traffic", dir.file("traffic")});
    ASSERT_NE(first.line(), "");
    Program second({"--dir", dir.path(), "--traffic", dir.file("other")});
    EXPECT_EQ(second.exit_code(), 1);
    EXPECT_EQ(second.errors(), "vym-sim: another server is listening on " + dir.path() +
                                   "/vym_socket; stop it or use another directory\n");
    TestClient client(dir.path());
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVvym-sim 1.0");
}

TEST(SimProgram, BadCommandLinesGetOneLineAndFail) {
    const TemporaryDirectory dir;
    std::ofstream(dir.file("text")) << "no sound";
    sim::WavWriter(dir.file("music.wav"), 44100, 2).write("abcd", 4);
    sim::WavWriter(dir.file("voice.wav"), 8000, 1).write("abcd", 4);
    const std::vector<std::pair<Strings, std::string>> cases{
        {{}, "--dir is required"},
        {{"--dir"}, "--dir"},
        {{"--dir", dir.path(), "--nonsense"}, "--nonsense"},
        {{"--dir", dir.path(), "surplus"}, "surplus"},
        {{"--dir", dir.path(), "--log", "--quiet"}, "--log"},
        {{"--dir", dir.path(), "--ring-after", "soon"}, "soon"},
        {{"--dir", dir.path(), "--ring-after", "-1"}, "--ring-after"},
        {{"--dir", dir.path(), "--ring-after", "1", "--ring-number", "Anna"}, "no telephone number"},
        {{"--dir", dir.path(), "--ring-number", "123"}, "--ring-after"},
        {{"--dir", dir.path(), "--hall", "100001"}, "--hall"},
        {{"--dir", dir.path(), "--hall", "many"}, "many"},
        {{"--dir", dir.path(), "--world", dir.file("none")}, "No such file or directory"},
        {{"--dir", dir.file("none")}, "No such file or directory"},
        {{"--dir", dir.path(), "--traffic", dir.file("none/file")}, "cannot write the traffic file"},
        {{"--dir", dir.path(), "--voice", dir.file("none.wav")}, "cannot read the sound"},
        {{"--dir", dir.path(), "--music", dir.file("text")}, "is no WAV file"},
        {{"--dir", dir.path(), "--voice", dir.file("music.wav")}, "voice has one channel"},
        {{"--dir", dir.path(), "--music", dir.file("voice.wav")}, "music has one or two channels"},
        {{"--dir", dir.path(), "--record", dir.file("none/out.wav")}, "cannot write the sound"},
    };
    for (const auto& [arguments, words] : cases) {
        Program program(arguments);
        EXPECT_GT(program.exit_code(), 0) << words;
        EXPECT_EQ(program.output(), "") << words;
        EXPECT_NE(program.errors().find(words), std::string::npos) << program.errors();
        EXPECT_EQ(program.errors().find('\n'), program.errors().size() - 1) << program.errors();
    }
}

TEST(SimProgram, TheBuiltInWorldIsPrintedAndPlayedAgain) {
    Program printing({"--print-world"});
    EXPECT_EQ(printing.exit_code(), 0);
    EXPECT_EQ(printing.errors(), "");
    std::string text = printing.output();
    const std::string name = "\"vym-sim 1.0\"";
    ASSERT_NE(text.find(name), std::string::npos);
    text.replace(text.find(name), name.size(), "\"mine\"");
    const TemporaryDirectory dir;
    std::ofstream(dir.file("world.json")) << text;
    Program program({"--dir", dir.path(), "--world", dir.file("world.json"), "--hall", "10"});
    ASSERT_EQ(program.line(), "vym-sim: listening on " + dir.path() + "/vym_socket\n");
    TestClient client(dir.path());
    client.send("AT#PV\r\n");
    EXPECT_EQ(client.event(), "PVmine");
    program.signal(SIGTERM);
    EXPECT_EQ(program.exit_code(), 0);
}

TEST(SimProgram, AMistakeInAWorldIsOneLineThatBeginsWithItsPlace) {
    const TemporaryDirectory dir;
    std::ofstream(dir.file("world.json")) << "{\n\"hall\": -1 }";
    Program program({"--dir", dir.path(), "--world", dir.file("world.json")});
    EXPECT_EQ(program.exit_code(), 2);
    EXPECT_EQ(program.output(), "");
    EXPECT_EQ(program.errors(),
              dir.file("world.json") +
                  ":2: hall: -1 is out of range; expected a whole number from 0 to 100000\n");
}

TEST(SimProgram, WhatIsNoCaptureIsOneLineThatBeginsWithItsName) {
    const TemporaryDirectory dir;
    std::ofstream(dir.file("notes")) << "not recorded by anybody";
    Program program({"--dir", dir.path(), "--replay", dir.file("notes")});
    EXPECT_EQ(program.exit_code(), 2);
    EXPECT_EQ(program.output(), "");
    EXPECT_EQ(program.errors(),
              dir.file("notes") +
                  ": at byte 0: this is no capture; expected the library's client_sock.log\n");
}

TEST(SimProgram, ACaptureIsNotPlayedInAWorld) {
    const TemporaryDirectory dir;
    for (const char* option : {"--world", "--script", "--hall", "--ring-after", "--record"}) {
        Program program({"--dir", dir.path(), "--replay", "file", option, "1"});
        EXPECT_EQ(program.exit_code(), 2) << option;
        EXPECT_NE(program.errors().find("excludes"), std::string::npos) << program.errors();
    }
}

TEST(SimProgram, HelpAndVersionGoToStandardOutput) {
    Program help({"--help"});
    EXPECT_EQ(help.exit_code(), 0);
    for (const char* option :
         {"--dir", "--log", "--quiet", "--traffic", "--ring-after", "--ring-number", "--voice",
          "--music", "--record", "--world", "--hall", "--print-world", "--replay", "--version"}) {
        EXPECT_NE(help.output().find(option), std::string::npos) << option;
    }
    Program version({"--version"});
    EXPECT_EQ(version.exit_code(), 0);
    EXPECT_EQ(version.output(), "vym-sim 1.0\n");
}

} // namespace
