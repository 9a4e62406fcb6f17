// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What programs have recorded, read and made fit for others.

#include "capture/file.h"
#include "capture/texts.h"
#include "e2e/example_capture.h"
#include "support/capture_reader.h"
#include "support/text.h"

#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using e2e::ExampleCapture;
using e2e::RunningSim;

const std::vector<std::string> kSomebodyCalls = {"--ring-after", "1000", "--ring-number",
                                                 "+4930123456"};

struct Step {
    bool is_command;
    std::string text;
};

std::vector<Step> StepsOf(const std::string& path) {
    capture::InputFile file;
    EXPECT_TRUE(file.open(path));
    capture::TextReader reader;
    std::vector<Step> steps;
    long count = 0;
    while ((count = file.read(reader.space())) > 0) {
        reader.filled(static_cast<size_t>(count));
        capture::Text text;
        while (reader.next(&text)) {
            steps.push_back({text.is_command, std::string(text.text)});
        }
    }
    return steps;
}

/** The client's side of a capture: it sends the commands, and reads the events behind them. */
class RecordedClient {
public:
    explicit RecordedClient(const std::string& directory)
        : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = directory + "/vym_socket";
        EXPECT_LT(path.size(), sizeof(address.sun_path));
        std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
        EXPECT_EQ(connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        const timeval limit{static_cast<time_t>(support::TimeLimit().count() / 1000), 0};
        EXPECT_EQ(setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit)), 0);
    }
    ~RecordedClient() { close(fd_); }
    RecordedClient(const RecordedClient&) = delete;
    RecordedClient& operator=(const RecordedClient&) = delete;
    RecordedClient(RecordedClient&&) = delete;
    RecordedClient& operator=(RecordedClient&&) = delete;

    void Take(const Step& step) {
        if (step.is_command) {
            EXPECT_EQ(send(fd_, step.text.data(), step.text.size(), MSG_NOSIGNAL),
                      static_cast<ssize_t>(step.text.size()));
        } else {
            EXPECT_EQ(Comparable(NextEvent()), Comparable(step.text));
        }
    }

private:
    /** A descriptor has another number each time. */
    static std::string Comparable(const std::string& event) {
        return support::Escaped(event.rfind("PD", 0) == 0 ? event.substr(0, 4) : event);
    }

    std::string NextEvent() {
        std::string event;
        char byte = 0;
        while (recv(fd_, &byte, 1, 0) == 1 && (byte != '\0' || event.empty())) {
            event.append(byte == '\0' ? 0 : 1, byte);
        }
        return event;
    }

    int fd_;
};

std::vector<std::string> Vymtrace(const std::vector<std::string>& arguments) {
    return support::BuiltProgram(VYM_EMULATOR, VYM_TRACE_PATH, arguments);
}

TEST(Vymtrace, TellsACallAsItHappened) {
    const ExampleCapture recording("car_kit", kSomebodyCalls);
    EXPECT_TRUE(e2e::HasInOrder(support::OutputOf(Vymtrace({recording.Path()})),
                                {" > hfp         connect address=2A:41:6E:6E:61:01\n",
                                 " < hfp         onConnectionState state=3 ",
                                 " > pbap        get_phonebook type=6 offset=0 count=50\n",
                                 " name=\"Bergmann;Anna;;;\" number=\"+491701234567\"\n"}));
}

TEST(Vymtrace, AScrubbedCaptureTellsNoNamesAndIsPlayedAgain) {
    const ExampleCapture recording("car_kit", kSomebodyCalls);
    const support::TempDir dir;
    const std::string scrubbed = dir.Path() + "/scrubbed.log";
    EXPECT_EQ(support::OutputOf(Vymtrace({"scrub", recording.Path(), scrubbed})), "");
    const std::string bytes = support::ReadFile(scrubbed);
    for (const char* secret :
         {"2A416E6E6101", "Anna", "Bergmann", "1701234567", "\xD0\x9B\xD0\xB5\xD0\xB2", "4930555666",
          "Sim Mobile", "Radio Silence"}) {
        EXPECT_EQ(bytes.find(secret), std::string::npos) << secret;
    }
    EXPECT_EQ(bytes.size(), support::ReadFile(recording.Path()).size());

    const std::vector<Step> steps = StepsOf(scrubbed);
    EXPECT_EQ(steps.size(), StepsOf(recording.Path()).size());
    RunningSim replay({"--time", "virtual", "--replay", scrubbed});
    {
        RecordedClient client(replay.Directory());
        for (const Step& step : steps) {
            client.Take(step);
        }
    }
    EXPECT_EQ(replay.Program().ExitCode(), 0);
    EXPECT_EQ(replay.Program().Err(), "");
}

} // namespace
