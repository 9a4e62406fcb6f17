// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every verb, and what may go wrong: the exit code says which it was.
#include "examples.h"
#include "profiles.h"
#include "session.h"

#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

// The thread sanitizer would let each of several hundred processes sleep for a second at its end.
extern "C" const char* __tsan_default_options() {
    return "atexit_sleep_ms=0";
}

namespace {

using vymctl::Profile;
using vymctl::Verb;
using Words = std::vector<std::string>;

class Directory {
public:
    Directory() { EXPECT_NE(mkdtemp(path_.data()), nullptr); }
    ~Directory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Directory(const Directory&) = delete;
    Directory& operator=(const Directory&) = delete;
    Directory(Directory&&) = delete;
    Directory& operator=(Directory&&) = delete;
    const std::string& path() const { return path_; }

private:
    std::string path_ = ::testing::TempDir() + "vymctl.XXXXXX";
};

/// Takes connections, and neither reads nor answers.
class SilentServer {
public:
    SilentServer() : fd_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        (directory_.path() + "/vym_socket").copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(listen(fd_, 128), 0);
    }
    ~SilentServer() { close(fd_); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;
    SilentServer(SilentServer&&) = delete;
    SilentServer& operator=(SilentServer&&) = delete;
    const std::string& path() const { return directory_.path(); }

private:
    Directory directory_;
    int fd_;
};

/// The whole program, in a process of its own without anybody who looks at it.
int exit_code_of(const Words& words, const std::string& where) {
    vymctl::profiles();
    const pid_t pid = fork();
    if (pid == 0) {
        const int nothing = open("/dev/null", O_RDWR);
        for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            dup2(nothing, fd);
        }
        _exit(chdir(where.c_str()) == 0 ? vymctl::run(words) : 99);
    }
    int status = 0;
    EXPECT_EQ(waitpid(pid, &status, 0), pid);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

Words line_of(const Verb& verb, const Words& arguments, const Words& options) {
    Words words = options;
    words.insert(words.end(), {verb.group, verb.name});
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

/// What a verb comes to without a server and with one that is silent, where it is not what its kind
/// says: the library's own have no server to miss, and the others need one that answers.
struct Codes {
    int no_server;
    int silent;
};
const std::map<std::string, Codes> kOthers = {
    // They start the library themselves.
    {"core init", {vymctl::kNoServer, vymctl::kNoServer}},
    {"core init-in", {vymctl::kNoServer, vymctl::kNoServer}},
    // Nothing to find, to end, to send to.
    {"pbap list-find", {vymctl::kFailed, vymctl::kFailed}},
    {"pbap list-remove", {vymctl::kFailed, vymctl::kFailed}},
    {"pbap queue-read", {vymctl::kFailed, vymctl::kFailed}},
    {"core log-close", {vymctl::kFailed, vymctl::kFailed}},
    {"core message", {vymctl::kFailed, vymctl::kFailed}},
    // It waits for another thread, without a server as well.
    {"pbap queue-wait", {vymctl::kTimedOut, vymctl::kTimedOut}},
    // The library knows of no call.
    {"hfp accept", {vymctl::kNoServer, vymctl::kFailed}},
    {"hfp reject", {vymctl::kNoServer, vymctl::kFailed}},
    {"hfp hang-up", {vymctl::kNoServer, vymctl::kFailed}},
    // There is no transport for audio.
    {"audio send", {vymctl::kNoServer, vymctl::kFailed}},
    // A socket is one of the same session.
    {"rfcomm accept", {vymctl::kNoServer, vymctl::kUsage}},
    {"rfcomm read", {vymctl::kNoServer, vymctl::kUsage}},
    {"rfcomm write", {vymctl::kNoServer, vymctl::kUsage}},
    {"rfcomm close", {vymctl::kNoServer, vymctl::kUsage}},
    {"rfcomm server-close", {vymctl::kNoServer, vymctl::kUsage}},
    {"rfcomm address", {vymctl::kUsage, vymctl::kUsage}},
};

Codes codes_of(const Verb& verb) {
    if (const auto it = kOthers.find(verb.title()); it != kOthers.end()) {
        return it->second;
    }
    return verb.local ? Codes{vymctl::kDone, vymctl::kDone}
                      : Codes{vymctl::kNoServer, vymctl::kTimedOut};
}

/// A port of the whole machine is nothing for a test beside others.
bool is_for_one_only(const Verb& verb) {
    return verb.title() == "core parser-start";
}

class EveryVerb : public ::testing::TestWithParam<size_t> {
protected:
    static const Profile& profile() { return vymctl::profiles()[GetParam()]; }
};

TEST_P(EveryVerb, RefusesAWordTooManyAsWrongUsage) {
    const Directory here;
    for (const Verb& verb : profile().verbs) {
        Words words = example_arguments(verb);
        words.emplace_back("superfluous");
        EXPECT_EQ(exit_code_of(line_of(verb, words, {}), here.path()), vymctl::kUsage) << verb.title();
    }
}

TEST_P(EveryVerb, RefusesEachArgumentThatIsNoneAsWrongUsage) {
    for (const Verb& verb : profile().verbs) {
        const Words good = example_arguments(verb);
        for (size_t i = 0; i < good.size(); ++i) {
            Words words = good;
            words[i] = verb.parameters[i].kind == vymctl::Kind::Text ? std::string("a\0b", 3) : "?";
            EXPECT_THROW(read_values(verb, words), vymctl::Usage) << verb.title() << ", argument " << i;
        }
        if (!good.empty() && !verb.parameters[0].fallback) {
            EXPECT_THROW(read_values(verb, {}), vymctl::Usage) << verb.title() << " without arguments";
        }
    }
}

TEST_P(EveryVerb, SaysThatThereIsNoServer) {
    const Directory here;
    for (const Verb& verb : profile().verbs) {
        if (!is_for_one_only(verb)) {
            // The default directory must not be looked at either.
            const Words words =
                line_of(verb, example_arguments(verb), {"--dir", here.path(), "--timeout", "2s"});
            EXPECT_EQ(exit_code_of(words, here.path()), codes_of(verb).no_server) << verb.title();
        }
    }
}

TEST_P(EveryVerb, GivesUpOnASilentServer) {
    const SilentServer server;
    const Directory here;
    for (const Verb& verb : profile().verbs) {
        // What does not wait for the server must not be cut short here.
        const int code = codes_of(verb).silent;
        const char* timeout = code == vymctl::kTimedOut ? "30ms" : "20s";
        if (!is_for_one_only(verb)) {
            const Words words =
                line_of(verb, example_arguments(verb), {"--dir", server.path(), "--timeout", timeout});
            EXPECT_EQ(exit_code_of(words, here.path()), code) << verb.title();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, EveryVerb, ::testing::Range(size_t{0}, vymctl::profiles().size()),
                         [](const ::testing::TestParamInfo<size_t>& parameter) {
                             return vymctl::profiles()[parameter.param].name;
                         });

TEST(ExitCode, OfThisProgramsOwnVerbs) {
    const Directory empty;
    const SilentServer server;
    const auto code = [&](const Words& words) { return exit_code_of(words, empty.path()); };
    const Words nobody{"--dir", empty.path()};
    const Words silent{"--dir", server.path(), "--timeout", "30ms"};
    const auto with = [](Words options, const Words& words) {
        options.insert(options.end(), words.begin(), words.end());
        return options;
    };
    EXPECT_EQ(code({"help"}), 0);
    EXPECT_EQ(code({"help", "hfp", "dial"}), 0);
    EXPECT_EQ(code({"help", "nothing"}), 2);
    EXPECT_EQ(code({"nothing"}), 2);
    EXPECT_EQ(code({"hfp"}), 2);
    EXPECT_EQ(code({"hfp", "nothing"}), 2);
    EXPECT_EQ(code({}), 2) << "no terminal, no prompt";
    EXPECT_EQ(code({"--nothing"}), 2);
    EXPECT_EQ(code({"--timeout", "soon", "help"}), 2);
    EXPECT_EQ(code(with(nobody, {"monitor"})), 3);
    EXPECT_EQ(code(with(nobody, {"monitor", "nothing"})), 2);
    EXPECT_EQ(code(with(silent, {"monitor", "hfp"})), 4);
    EXPECT_EQ(code(with(nobody, {"wait-for", "hfp.ring"})), 3);
    EXPECT_EQ(code(with(nobody, {"wait-for", "hfp.nothing"})), 2);
    EXPECT_EQ(code(with(silent, {"wait-for", "hfp.ring"})), 4);
    EXPECT_EQ(code(with(nobody, {"doctor"})), 3);
    EXPECT_EQ(code(with(silent, {"doctor"})), 4);
    EXPECT_EQ(code(with(nobody, {"answer", "yes"})), 1);
    EXPECT_EQ(code(with(nobody, {"save-book", "phone", "book.vcf"})), 3);
    EXPECT_EQ(code(with(nobody, {"save-book", "phone", "book.doc"})), 2);
    EXPECT_EQ(code(with(nobody, {"save-book", "cookery", "book.vcf"})), 2);
    EXPECT_EQ(code(with(silent, {"save-book", "phone", "book.vcf"})), 4);
    EXPECT_EQ(code(with(nobody, {"record", "voice", "call.wav", "1s"})), 3);
    EXPECT_EQ(code(with(nobody, {"record", "noise", "call.wav", "1s"})), 2);
    EXPECT_EQ(code(with(nobody, {"record", "voice", "call.mp3", "1s"})), 2);
    EXPECT_EQ(code(with(nobody, {"record", "voice", "call.wav", "long"})), 2);
    EXPECT_EQ(code(with(silent, {"record", "voice", "call.wav", "1s"})), 4);
    EXPECT_EQ(code({"pause", "10ms"}), 0);
    EXPECT_EQ(code({"pause", "long"}), 2);
    EXPECT_EQ(code({"state"}), 0);
    EXPECT_EQ(code({"exit"}), 0);
    EXPECT_EQ(code({"-f", "missing.txt"}), 2);
    EXPECT_EQ(code({"-f", "missing.txt", "help"}), 2);
    EXPECT_EQ(code({"--emit", "schema"}), 0);
    EXPECT_EQ(code({"--emit", "poetry"}), 2);
}

} // namespace
