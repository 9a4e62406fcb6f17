// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Carrying out lines, wherever they come from: the command line, a script, the prompt.
#ifndef VYM_VYMCTL_SESSION_H
#define VYM_VYMCTL_SESSION_H

#include "ending.h"
#include "hub.h"
#include "library.h"
#include "options.h"
#include "pairing.h"
#include "profiles.h"

namespace vymctl {

enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2, kNoServer = 3, kTimedOut = 4, kInterrupted = 130 };

using Words = std::vector<std::string>;

class Session {
public:
    /// A verb of this program itself.
    struct OwnVerb {
        std::string name;
        std::string arguments;
        std::string help;
        size_t least = 0;
        size_t most = 0;
        int (Session::*run)(const Words& arguments, Deadline deadline) = nullptr;
        /// Throws Usage.
        void (*check)(const Words& arguments) = nullptr;

        std::string usage() const { return name + (arguments.empty() ? "" : " ") + arguments; }
    };
    static const std::vector<OwnVerb>& own_verbs();

    explicit Session(Options options);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    Session(Session&&) = delete;
    Session& operator=(Session&&) = delete;

    /// Carries one line out, and says on standard error what went wrong. Returns the exit code.
    int run(const Words& line);
    /// Only looks whether the line is understood. Throws Usage.
    static void check(const Words& line) { read(line, {}); }
    bool wants_to_end() const { return end_; }
    /// At the prompt everything is shown, and requests are asked about.
    void be_at_prompt();
    const Options& options() const { return options_; }
    /// Throws NoServer.
    void connect();

private:
    /// What a line is, read but not carried out.
    struct Order {
        const Verb* verb = nullptr;
        Values values;
        const OwnVerb* own = nullptr;
        Words arguments;
        std::chrono::milliseconds timeout{};
    };
    struct Call;

    static Order read(Words line, std::chrono::milliseconds timeout);
    int carry_out(const Verb& verb, const Values& values, Deadline deadline);
    int finish(const Verb& verb, Call& call, const Ending& ending, Deadline deadline);
    int confirm(Deadline deadline);
    static std::shared_ptr<Call> start_call(std::function<Outcome()> function);
    Wait wait(Deadline deadline, const std::function<bool()>& met);
    void put_question(Deadline deadline);
    int failure(Wait wait, const std::string& what) const;
    void see(const Event& event);
    bool is_shown(const Event& event) const;
    void show(const Event& event) const;
    void report(const Verb& verb, int code, const Outcome& outcome) const;

    int help(const Words& arguments, Deadline deadline);
    int monitor(const Words& arguments, Deadline deadline);
    int wait_for(const Words& arguments, Deadline deadline);
    int pause(const Words& arguments, Deadline deadline);
    int state(const Words& arguments, Deadline deadline);
    int answer(const Words& arguments, Deadline deadline);
    int doctor(const Words& arguments, Deadline deadline);
    int end(const Words& arguments, Deadline deadline);
    int save_book(const Words& arguments, Deadline deadline);
    int record(const Words& arguments, Deadline deadline);

    /// Carries a verb out without showing anything but what goes wrong.
    int quietly(const char* group, const char* name, const Words& arguments, Deadline deadline);
    void report_file(const char* verb, const std::string& path, const char* what, size_t count) const;

    Options options_;
    Pairing pairing_;
    /// Profiles and events that are shown; "*" for all, "-" and an event for all but this.
    std::set<std::string> shown_;
    /// Sees events while a verb runs; guarded by the hub.
    Ending* ending_ = nullptr;
    /// Sees every event, when there is one; guarded by the hub.
    Hub::Sink collector_;
    /// What is waited for, and how many events of its profile have come since; guarded by the hub.
    const Verb* working_ = nullptr;
    size_t seen_ = 0;
    std::atomic<bool> quiet_ = false;
    std::atomic<bool> confirming_ = false;
    bool show_time_ = false;
    /// Whether the verb was given a time: here or for all.
    bool has_time_ = false;
    bool end_ = false;
};

/// What long work is given. Throws Usage.
void check_book_file(const Words& words);
void check_recording(const Words& words);

/// The lines of a file; "-" is standard input. Returns the exit code.
int run_script(Session& session, const std::string& path);

/// Reads lines from the terminal until its end. Returns the exit code.
int run_prompt(Session& session);

/// What the last word of a line at the prompt may be.
std::vector<std::string> complete(const std::string& line);
/// The same of a command line, with its options.
std::string complete_command_line(const std::string& line);

/// One of man, bash, zsh, schema; also the verbs, as docs and help show them. Throws Usage.
std::string emit(const std::string& what);
std::string help_text();

/// The program. `words` are those behind its name.
int run(const std::vector<std::string>& words);

} // namespace vymctl

#endif
