// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// vymctl as a person and a script use it, against the simulated server.

#include "e2e/running_sim.h"
#include "e2e/terminal.h"
#include "support/process.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace {

using e2e::HasInOrder;
using e2e::RunningSim;
using support::Process;
using support::TempDir;
using Words = std::vector<std::string>;

constexpr const char* kPhone = "2A:41:6E:6E:61:01";

Words CommandLine(const std::string& directory, Words words) {
    words.insert(words.begin(), {"--dir", directory});
    return support::BuiltProgram(VYM_EMULATOR, VYMCTL_PATH, words);
}

std::string ContentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Ran {
    int code;
    std::string out;
    std::string err;
};

Ran Vymctl(const std::string& directory, const Words& words) {
    Process process(CommandLine(directory, words));
    const int code = process.ExitCode(3 * support::TimeLimit());
    return {code, process.Out(), process.Err()};
}

Ran RunScript(const std::string& directory, const std::string& text, Words words = {}) {
    const TempDir place;
    const std::string path = place.Path() + "/steps.txt";
    std::ofstream(path) << text;
    words.insert(words.end(), {"-f", path});
    Ran ran = Vymctl(directory, words);
    ran.err = std::regex_replace(ran.err, std::regex(path), "steps.txt");
    return ran;
}

void Ctl(const RunningSim& sim, Words words) {
    words.insert(words.begin(), {"--dir", sim.Directory(), "ctl"});
    Process process(support::BuiltProgram(VYM_EMULATOR, VYM_SIM_PATH, words));
    EXPECT_EQ(process.ExitCode(), 0) << process.Err();
}

std::string WithoutTimes(const std::string& text) {
    return std::regex_replace(text, std::regex(R"re("time":[0-9.]+)re"), R"("time":0)");
}

constexpr const char* kPairedPhone = "adapter enable\n"
                                     "adapter bond 2A:41:6E:6E:61:01\n"
                                     "hfp connect 2A:41:6E:6E:61:01\n";

TEST(VymctlOnce, ShowsWhatAGetterReturnsAndNothingElse) {
    RunningSim sim;
    const Ran ran = Vymctl(sim.Directory(), {"adapter", "name"});
    EXPECT_EQ(ran.code, 0);
    EXPECT_EQ(ran.out, "vym-sim\n");
    EXPECT_EQ(ran.err, "");
    EXPECT_EQ(Vymctl(sim.Directory(), {"adapter", "version", "--json"}).out,
              "{\"result\":\"adapter.version\",\"code\":0,\"value\":\"vym-sim 1.0\"}\n");
    EXPECT_EQ(Vymctl(sim.Directory(), {"adapter", "bonded"}).out,
              "address=2E:4C:70:74:6F:70 name=\"Work laptop\" class=268\n"
              "address=26:4B:65:79:62:64 name=\"Office keyboard\" class=9536\n"
              "address=2E:43:61:72:4B:74 name=\"Car kit\" class=2360328\n");
}

TEST(VymctlOnce, ShowsEventsAsTextOrAsJson) {
    RunningSim sim;
    EXPECT_EQ(Vymctl(sim.Directory(), {"adapter", "enable"}).out, "adapter.state state=on\n");
    const Ran text = Vymctl(sim.Directory(), {"adapter", "discover"});
    EXPECT_EQ(text.out,
              "adapter.discovery state=started\n"
              "adapter.found address=2A:41:6E:6E:61:01 type=both class=5898764 rssi=-52 "
              "name=\"Anna's phone\" uuids=1101,110A,110C,111F,112F,1800\n"
              "adapter.found address=11:22:33:44:55:66 type=br-edr class=2360340 rssi=-67 "
              "name=\"Kitchen speaker\" uuids=110B,110E,111E\n"
              "adapter.found address=C6:48:65:61:72:74 type=le class=0 rssi=-74 name=\"Heart strap\" "
              "uuids=180D,180F,180A\n"
              "adapter.discovery state=stopped\n");
    const Ran json =
        Vymctl(sim.Directory(), {"--json", "adapter", "bond", kPhone, "--pairing", "accept"});
    EXPECT_EQ(json.code, 0) << json.err;
    EXPECT_EQ(
        WithoutTimes(json.out),
        R"({"event":"adapter.bond","time":0,"status":"success","address":"2A:41:6E:6E:61:01","state":"bonding"}
{"event":"adapter.pairing-request","time":0,"address":"2A:41:6E:6E:61:01","class":5898764,"variant":"confirm","passkey":123456,"name":"Anna's phone"}
{"event":"adapter.link","time":0,"status":"success","address":"2A:41:6E:6E:61:01","state":"connected"}
{"event":"adapter.bond","time":0,"status":"success","address":"2A:41:6E:6E:61:01","state":"bonded"}
{"result":"adapter.bond","code":0}
)");
}

TEST(VymctlOnce, SaysOnStandardErrorWhatWentWrong) {
    RunningSim sim;
    const Ran refused = Vymctl(sim.Directory(), {"hfp", "accept"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err, "vymctl: hfp accept: refused: fail\n");
    const Ran failed = RunScript(sim.Directory(), "adapter enable\nadapter bond 2A:41:6E:6E:61:01\n",
                                 {"--pairing", "reject"});
    EXPECT_EQ(failed.code, 1);
    EXPECT_TRUE(HasInOrder(failed.err, {"vymctl: adapter bond: failed: adapter.bond status=",
                                        "vymctl: steps.txt:2: ended here, exit code 1\n"}));
    EXPECT_EQ(Vymctl(sim.Directory(), {"--json", "hfp", "accept"}).out,
              "{\"result\":\"hfp.accept\",\"code\":1,\"refusal\":\"fail\"}\n");
}

TEST(VymctlOnce, WithoutAServerItSaysWhereNoneIs) {
    const TempDir empty;
    const Ran ran = Vymctl(empty.Path(), {"adapter", "name"});
    EXPECT_EQ(ran.code, 3);
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(ran.err, "vymctl: no server: " + empty.Path() +
                           "/vym_socket: No such file or directory (vymctl doctor tells more)\n");
}

TEST(VymctlOnce, ASecretPinIsGivenByThePolicy) {
    RunningSim sim;
    const Ran wrong = RunScript(sim.Directory(), "adapter enable\nadapter bond 11:22:33:44:55:66\n",
                                {"--pairing", "pin=1234"});
    EXPECT_EQ(wrong.code, 1) << wrong.out;
    const Ran right =
        RunScript(sim.Directory(), "adapter bond 11:22:33:44:55:66\n", {"--pairing", "pin=0000"});
    EXPECT_EQ(right.code, 0) << right.out << right.err;
}

TEST(VymctlOnce, LeavesTheCaptureOfAnApplicationAlone) {
    RunningSim sim;
    const std::string capture = sim.Directory() + "/client_sock.log";
    std::ofstream(capture) << "an application's";
    EXPECT_EQ(Vymctl(sim.Directory(), {"adapter", "name"}).code, 0);
    EXPECT_EQ(ContentOf(capture), "an application's");
    const std::string own = sim.Directory() + "/own.log";
    EXPECT_EQ(Vymctl(sim.Directory(), {"adapter", "name", "--capture", own}).code, 0);
    const std::string bytes = ContentOf(own);
    EXPECT_EQ(bytes.substr(0, 8), std::string("btsnoop\0", 8));
    EXPECT_NE(bytes.find("AT#PV"), std::string::npos);
}

TEST(VymctlScript, TakesACall) {
    RunningSim sim({"--ring-after", "0", "--ring-number", "+4930123456"});
    const Ran ran =
        RunScript(sim.Directory(),
                  std::string(kPairedPhone) + "wait-for 'hfp.call.state==incoming'\n"
                                              "hfp accept\n"
                                              "wait-for hfp.call.state==active  # it is answered\n"
                                              "wait-for hfp.call.state==active  # and it stays true\n"
                                              "hfp hang-up\n"
                                              "wait-for hfp.call.state==terminated\n"
                                              "state hfp.call\n",
                  {"--pairing", "accept"});
    EXPECT_EQ(ran.code, 0) << ran.out << ran.err;
    EXPECT_EQ(ran.err, "");
    EXPECT_TRUE(HasInOrder(ran.out, {"hfp.connection state=ready",
                                     "hfp.call index=1 direction=in state=terminated conference=no "
                                     "number=+4930123456\n"}));
}

TEST(VymctlScript, IsReadWholeBeforeItBegins) {
    RunningSim sim;
    const Ran ran = RunScript(sim.Directory(), "adapter enable\n\n# nothing\nhfp volume speaker 99\n");
    EXPECT_EQ(ran.code, 2);
    EXPECT_EQ(ran.out, "");
    EXPECT_EQ(ran.err, "vymctl: steps.txt:4: hfp volume: level is a number from 0 to 15, not \"99\"\n");
    EXPECT_EQ(RunScript(sim.Directory(), "wait-for hfp.nothing\n").code, 2);
    EXPECT_EQ(RunScript(sim.Directory(), "hfp dial \"123\n").err,
              "vymctl: steps.txt:1: a quote is opened and not closed\n");
}

TEST(VymctlScript, GoesOnBehindALineThatMayFail) {
    RunningSim sim;
    const Ran ran = RunScript(sim.Directory(), "- hfp accept\nadapter name\nexit\nadapter name\n");
    EXPECT_EQ(ran.code, 0);
    EXPECT_EQ(ran.out, "vym-sim\n");
}

TEST(VymctlScript, TalksOverASerialChannel) {
    RunningSim sim;
    const Ran ran = RunScript(sim.Directory(),
                              "adapter enable\n"
                              "adapter bond 2A:41:6E:6E:61:01\n"
                              "rfcomm channels 2A:41:6E:6E:61:01\n"
                              "rfcomm connect 2A:41:6E:6E:61:01 1101 11\n"
                              "rfcomm write 1 \"hello\\n\"\n"
                              "rfcomm read 1\n"
                              "- rfcomm read 2\n"
                              "rfcomm close 1\n",
                              {"--pairing", "accept"});
    EXPECT_EQ(ran.code, 0) << ran.out << ran.err;
    EXPECT_TRUE(HasInOrder(ran.out, {"rfcomm.channel address=2A:41:6E:6E:61:01 uuid=1101 channel=11\n",
                                     "socket=1 address=2A:41:6E:6E:61:01 handle=1\n",
                                     "data=68656C6C6F0A text=\"hello\\n\"\n"}));
    EXPECT_EQ(ran.err, "vymctl: there is no socket 2 in this session\n");
}

TEST(VymctlScript, ReadsAPulseAndThePhoneBook) {
    RunningSim sim;
    const Ran ran = RunScript(sim.Directory(),
                              "adapter enable\n"
                              "gattc connect C6:48:65:61:72:74\n"
                              "gattc search 1\n"
                              "gattc read 1 primary 0 180D 0 2A38\n"
                              "adapter bond 2A:41:6E:6E:61:01\n"
                              "pbap connect 2A:41:6E:6E:61:01\n"
                              "pbap size phone\n"
                              "pbap get phone 0 2\n",
                              {"--pairing", "accept"});
    EXPECT_EQ(ran.code, 0) << ran.out << ran.err;
    EXPECT_TRUE(HasInOrder(
        ran.out, {"gattc.connected client_if=1 conn_id=1 status=success address=C6:48:65:61:72:74\n",
                  "gattc.service conn_id=1 service_type=primary service_instance=0 service=180D\n",
                  "gattc.search-end conn_id=1 status=success\n", "gattc.read conn_id=1 status=success",
                  "pbap.size book=phone size=50 status=success\n", "pbap.entry ", "pbap.entry ",
                  "pbap.end status=success\n"}));
}

TEST(VymctlFiles, APhoneBookIsSavedAsVcardsOrJson) {
    RunningSim sim;
    const TempDir place;
    const std::string cards = place.Path() + "/book.vcf";
    const std::string json = place.Path() + "/book.json";
    const Ran ran = RunScript(sim.Directory(),
                              "adapter enable\n"
                              "adapter bond 2A:41:6E:6E:61:01\n"
                              "pbap connect 2A:41:6E:6E:61:01\n"
                              "save-book phone " +
                                  cards + "\nsave-book phone " + json + '\n',
                              {"--pairing", "accept"});
    EXPECT_EQ(ran.code, 0) << ran.out << ran.err;
    EXPECT_TRUE(
        HasInOrder(ran.out, {"file=" + cards + " contacts=50\n", "file=" + json + " contacts=50\n"}));
    EXPECT_EQ(ran.out.find("pbap.entry"), std::string::npos);
    EXPECT_EQ(ran.err, "") << "no progress without a terminal";
    const std::string text = ContentOf(cards);
    const std::regex card("BEGIN:VCARD\r\nVERSION:3.0\r\n");
    EXPECT_EQ(std::distance(std::sregex_iterator(text.begin(), text.end(), card), {}), 50);
    EXPECT_EQ(text.substr(text.size() - 11), "END:VCARD\r\n");
    EXPECT_TRUE(HasInOrder(ContentOf(json), {"\"index\": ", "\"name\": ", "\"numbers\": "}));
}

TEST(VymctlFiles, MusicIsRecordedInTheFormatThatWasAgreedOn) {
    RunningSim sim;
    const TempDir place;
    const std::string path = place.Path() + "/music.wav";
    const Ran ran = RunScript(sim.Directory(),
                              "adapter enable\n"
                              "adapter bond 2A:41:6E:6E:61:01\n"
                              "a2dp connect 2A:41:6E:6E:61:01\n"
                              "wait-for avrcp.connection.state==connected\n"
                              "avrcp play 2A:41:6E:6E:61:01\n"
                              "record music " +
                                  path + " 100ms\n",
                              {"--pairing", "accept"});
    EXPECT_EQ(ran.code, 0) << ran.out << ran.err;
    const std::string sound = ContentOf(path);
    EXPECT_EQ(sound.substr(0, 4), "RIFF");
    EXPECT_EQ(sound.substr(22, 6), std::string("\x02\0\x44\xAC\0\0", 6))
        << "two channels, 44100 a second";
    EXPECT_GE(sound.size(), 44U + 4U * 4410U);
}

TEST(VymctlWaits, ForAnUnansweredConnectionAndThenEnds) {
    RunningSim sim;
    // Nobody is there: the library's call would wait for ever.
    EXPECT_EQ(Vymctl(sim.Directory(), {"adapter", "enable"}).code, 0);
    const Ran ran =
        RunScript(sim.Directory(), "rfcomm listen 1101 5 nobody\nrfcomm accept 1 --timeout 200ms\n");
    EXPECT_EQ(ran.code, 4) << ran.out << ran.err;
    EXPECT_TRUE(HasInOrder(ran.err, {"vymctl: rfcomm accept: timed out\n"}));
}

TEST(VymctlMonitor, ShowsWhatIsAskedForUntilItIsStopped) {
    RunningSim sim;
    Process monitor(CommandLine(sim.Directory(), {"--json", "monitor", "adapter.state"}));
    Ctl(sim, {"wait", "command", "bluetooth.get_version"});
    Ctl(sim, {"event", "PA01"});
    Ctl(sim, {"event", "HG0003"});
    Ctl(sim, {"event", "PA00"});
    EXPECT_TRUE(monitor.WaitForOut("\"state\":\"off\"}\n")) << monitor.Err();
    monitor.Signal(SIGINT);
    EXPECT_EQ(monitor.ExitCode(), 0);
    EXPECT_EQ(WithoutTimes(monitor.Out()),
              "{\"event\":\"adapter.state\",\"time\":0,\"state\":\"on\"}\n"
              "{\"event\":\"adapter.state\",\"time\":0,\"state\":\"off\"}\n");
}

TEST(VymctlMonitor, EndsWithTheServer) {
    RunningSim sim;
    Process monitor(CommandLine(sim.Directory(), {"monitor", "core", "adapter"}));
    Ctl(sim, {"wait", "command", "bluetooth.get_version"});
    Ctl(sim, {"event", "PA01"});
    EXPECT_TRUE(monitor.WaitForOut("adapter.state state=on\n"));
    sim.Program().Signal(SIGTERM);
    EXPECT_EQ(monitor.ExitCode(), 3);
    EXPECT_EQ(monitor.Err(), "vymctl: monitor: the server has closed the connection\n");
}

TEST(VymctlDoctor, WritesAPageForABugReport) {
    RunningSim sim;
    const Ran ran = Vymctl(sim.Directory(), {"doctor"});
    EXPECT_EQ(ran.code, 0);
    EXPECT_TRUE(HasInOrder(
        ran.out, {"system      Linux", "directory   " + sim.Directory() + ": directory, mode 07",
                  "socket      socket, mode ", "capture     No such file or directory\n",
                  "connection  accepted\n", "answer      after ", "server      vym-sim 1.0\n",
                  "adapter     00:1A:7D:DA:71:13 vym-sim"}));
}

#if VYM_SIM_HAS_PROMPT

Words AtATerminal(const RunningSim& sim) {
    return {VYMCTL_PATH, "--dir", sim.Directory()};
}

TEST(VymctlPrompt, CarriesOutCompletesAndRemembers) {
    RunningSim sim;
    e2e::Terminal terminal(AtATerminal(sim), "vymctl> ");
    terminal.Type("adapter ena\t\x15"
                  "adapter na\t\r");
    EXPECT_TRUE(terminal.WaitFor("\nvym-sim\r\n")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vymctl> ")) << terminal.Text();
    terminal.Type("\x10\r");
    EXPECT_TRUE(terminal.WaitFor("\nvym-sim\r\n")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vymctl> ")) << terminal.Text();
    terminal.Type("hfp volume \t");
    EXPECT_TRUE(terminal.WaitFor("speaker  microphone")) << terminal.Text();
    terminal.Type("\x15"
                  "exit\r");
    EXPECT_EQ(terminal.ExitCode(), 0) << terminal.Text();
}

TEST(VymctlPrompt, ShowsEventsThatComeWhileNobodyTypes) {
    RunningSim sim;
    e2e::Terminal terminal(AtATerminal(sim), "vymctl> ");
    Ctl(sim, {"event", "HG0003"});
    EXPECT_TRUE(terminal.WaitFor("hfp.battery level=3")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vymctl> ")) << terminal.Text();
    terminal.Type("\x04");
    EXPECT_EQ(terminal.ExitCode(), 0) << terminal.Text();
}

TEST(VymctlPrompt, KeepsWhatIsHalfTypedWhenAnEventComes) {
    RunningSim sim;
    e2e::Terminal terminal(AtATerminal(sim), "vymctl> ");
    terminal.Type("adapter \xC3\xA4me\x02\x02\x02"); // the cursor goes back to a letter of two bytes
    EXPECT_TRUE(terminal.WaitFor("adapter \xC3\xA4me")) << terminal.Text();
    Ctl(sim, {"event", "HG0003"});
    EXPECT_TRUE(terminal.WaitFor("hfp.battery level=3")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vymctl> adapter \xC3\xA4me")) << terminal.Text();
    terminal.Type("\x04na\r");
    EXPECT_TRUE(terminal.WaitFor("\nvym-sim\r\n")) << terminal.Text();
    // While a command runs, the terminal itself takes this key, as it does at a shell.
    EXPECT_TRUE(terminal.WaitFor("vymctl> ")) << terminal.Text();
    terminal.Type("\x04");
    EXPECT_EQ(terminal.ExitCode(), 0) << terminal.Text();
}

TEST(VymctlPrompt, AsksWhetherToPairAndCompletesTheAddressItHeardOf) {
    RunningSim sim;
    e2e::Terminal terminal(AtATerminal(sim), "vymctl> ");
    terminal.Type("adapter enable\r");
    EXPECT_TRUE(terminal.WaitFor("adapter.state state=on")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vymctl> ")) << terminal.Text();
    terminal.Type("adapter discover\r");
    EXPECT_TRUE(terminal.WaitFor("\r\x1B[Kadapter discover: 1 event")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("adapter.discovery state=stopped")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vymctl> ")) << terminal.Text();
    terminal.Type("adapter bond 2A\t\r");
    EXPECT_TRUE(terminal.WaitFor("2A:41:6E:6E:61:01 \"Anna's phone\" wants to pair and shows 123456: "
                                 "yes or no?"))
        << terminal.Text();
    terminal.Type("yes\r");
    EXPECT_TRUE(terminal.WaitFor("state=bonded")) << terminal.Text();
    terminal.Type("exit\r"); // further events may come; this is kept over them
    EXPECT_EQ(terminal.ExitCode(), 0) << terminal.Text();
}

TEST(VymctlPrompt, LeavesRoomForTypingWhileSomebodyTalks) {
    RunningSim sim;
    e2e::Terminal terminal(AtATerminal(sim), "vymctl> ");
    for (const char* line : {"adapter enable", "hfp connect 2A:41:6E:6E:61:01"}) {
        terminal.Type(std::string(line) + "\r");
        EXPECT_TRUE(terminal.WaitFor("vymctl> ")) << terminal.Text();
    }
    Ctl(sim, {"phone", "call", "+4930123456"});
    EXPECT_TRUE(terminal.WaitFor("hfp.audio state=connected")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("hfp.ring\r\n")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("hfp.ring\r\n")) << "three seconds later\n" << terminal.Text();
    EXPECT_EQ(terminal.Text().find("audio.packet"), std::string::npos) << terminal.Text();
    terminal.Type("\x15"
                  "monitor audio --timeout 1s\r");
    EXPECT_TRUE(terminal.WaitFor("audio.packet stream=voice")) << terminal.Text();
    EXPECT_TRUE(terminal.WaitFor("vymctl> ")) << terminal.Text();
    terminal.Type("exit\r");
    EXPECT_EQ(terminal.ExitCode(), 0) << terminal.Text();
}

TEST(VymctlPrompt, AnInterruptEndsIt) {
    RunningSim sim;
    e2e::Terminal terminal(AtATerminal(sim), "vymctl> ");
    terminal.Type("\x03");
    EXPECT_EQ(terminal.ExitCode(), 130) << terminal.Text();
}

#endif

} // namespace
