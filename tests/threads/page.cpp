// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "threads/page.h"

#include "support/output_capture.h"
#include "threads/functions.h"
#include "vym_sdk.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace threads {
namespace {

std::string Joined(const Names& names, const char* note = nullptr) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : "; ") + name;
    }
    if (note != nullptr) {
        text += (text.empty() ? "" : "; ") + std::string(note);
    }
    return text.empty() ? "-" : text;
}

const char* Text(Callback callback) {
    switch (callback) {
    case Callback::kYes:
        return "yes";
    case Callback::kInVain:
        return "in vain";
    case Callback::kNever:
        return "no";
    case Callback::kNotInHandler:
        return "not from a handler";
    case Callback::kSpecial:
        return "see right";
    }
    return "";
}

Seen WatchOne(const Function& function) {
    if (function.prepare != nullptr) {
        function.prepare();
    }
    std::atomic<bool> returned{false};
    std::thread rescuer([&] {
        // Whatever it waits for comes only when it waits, and once: the library would remember another
        // answer, and the next call would not wait.
        bool rescued = false;
        EXPECT_TRUE(support::WaitUntil([&] {
            if (function.rescue != nullptr && !rescued && EndlessWaits() > 0) {
                function.rescue();
                rescued = true;
            }
            return returned.load();
        }));
    });
    Seen seen = Watch(function.call, Stage::Now().Connection());
    returned = true;
    rescuer.join();
    if (function.restore != nullptr) {
        function.restore();
    }
    return seen;
}

// What ends something comes last, profiles in the reverse order of their start; internal events are
// prepared and ended by hand only without a library.
constexpr const char* kLast[] = {
    "vym_internal_event_register",
    "vym_internal_event_send",
    "vym_internal_event_unregister",
    "vym_bluetooth_init",
    "vym_rfcomm_init",
    "vym_hfp_init",
    "vym_a2dp_init",
    "vym_avrcp_init",
    "vym_pbap_init",
    "vym_gatt_client_init",
    "vym_gatt_server_init",
    "vym_hid_init",
    "vym_audio_stream_init",
    "vym_audio_stream_done",
    "vym_hid_done",
    "vym_gatt_server_done",
    "vym_gatt_client_done",
    "vym_pbap_done",
    "vym_avrcp_done",
    "vym_a2dp_done",
    "vym_hfp_done",
    "vym_rfcomm_done",
    "vym_bluetooth_done",
    "vym_sdk_init_ex",
    "vym_sdk_init",
    "vym_sdk_init_ex", // the session before was none
    "vym_sdk_done",
    "vym_internal_event_init",
    "vym_internal_event_done",
};

constexpr const char* kHead = R"(# Threads and waiting

Made by `tests/threads` from calls of every function, each watched while it ran: the locks that it took and what it waited
for. To make it anew: `VYM_WRITE_THREADS_PAGE=1 ctest --preset dev -R ThreadsPage`.

The library has these threads of its own: the **receive thread**, which reads the server's events and calls every callback
of every profile, one after the other; one **reader** for each audio descriptor and one for each serial data descriptor,
between their hand-over and their end. All callbacks come from the receive thread but one: audio packets come from the
audio reader, and no lock is held then. The application's own threads may be as many as it likes. None may be cancelled
(`pthread_cancel`) while it is inside a function of the library: what it had locked would stay locked.

## The functions

*From a callback*: **yes**; **in vain**: it returns, but the answer cannot come before the callback has ended, so it waits
for its whole limit and then returns what was known before (while the receive thread waits, nothing else is heard); **no**:
it would wait for ever, for itself; **not from a handler** of internal events, but from any other callback. On the audio
reader's thread everything is as on a thread of the application's own, except where the table says otherwise.

*Threads*: **any**: from any number of threads at once; **one**: from one thread at a time, and nobody is inside another
function of the module.

*May wait*: what for, and for how long; "-": for a lock at most. Locks are held for moments, with three exceptions that the
last section names.

)";

constexpr const char* kTail = R"(## Waits and time-outs

| who | waits for | at most | until it ends early |
| --- | --- | --- | --- |
| a command | room in the socket, while the server reads nothing | no limit | the server reads or ends; vym_sdk_done() |
| a getter, or a setter that is confirmed | the server's answer | 1 s | the answer |
| every other getter, and the event of a change of power | the getter that waits, one at a time | 1 s for each | it has its answer |
| vym_gatt_client_register(), vym_gatt_client_connect() | a registration | no limit | any registration |
| vym_rfcomm_connect() | a result of a connection | no limit | any such result |
| vym_rfcomm_listen() | the result | 5 s | the result, or that of a connection |
| vym_rfcomm_accept() | a caller | no limit | vym_rfcomm_server_close() before anybody was accepted; vym_rfcomm_done() |
| vym_rfcomm_read() | data | no limit | the disconnection event; vym_rfcomm_done() |
| vym_rfcomm_write() | room in the descriptor | no limit | the server reads or ends |
| vym_audio_stream_send() | room in the descriptor | no limit | the server reads or ends; vym_audio_stream_done() |
| vym_audio_stream_done() | the callback in progress on the reader | as long as that takes | |
| a profile's init and done | the callback in progress | as long as that takes | |
| vym_sdk_done(), and a new start | the callback in progress, the receive thread's end | as long as that takes, and 0.5 s | |
| vym_internal_event_send() | room in the channel, looked for every 50 ms | no limit | the receive thread reads, or ends |
| pbap_thread_wait() | an item, or a post | no limit | writeto_pbap_queue(), pbap_thread_post() |
| send_ext_parser() | an external parser that does not read | 2 s | it reads, or has gone |
| the receive thread | a descriptor that was announced | 1 s | it comes; the server ends; vym_sdk_done() |
| the receive thread | the server, after an internal event and once the server has gone | 0.5 s each time | |
| the readers | the server's next packet | no limit | the server ends; the module's done |

## When the server has gone

The library neither reports nor repairs it. Commands are dropped without a word, getters return what they knew after their
second, and the calls without limit above that wait for an event wait for ever: vym_rfcomm_connect(), vym_rfcomm_read(),
vym_rfcomm_accept(), vym_gatt_client_register(), vym_gatt_client_connect(). An application that must not hang looks at the
descriptor that vym_sdk_init_ex() returned, with poll(): POLLHUP says that the server has gone (`examples/watch.h`). It then
ends its profiles and the library and starts anew; vym_rfcomm_done() frees those who wait for data and callers. The same is
true of a server that lives and does not answer, which no descriptor tells.

`make killed` takes the server away from every example after each message: killed, silent, and raving.

## Locks

`parsers_lock` (vym_sdk) is held while callbacks run, so what takes it cannot be called from one, and waits for the one in
progress. `event_lock` (vym_bluetooth) is held by a getter while it waits. `s_lifecycle_lock` (vym_sdk) is held while the
library is started or stopped. All others are held for moments, never while the application is called or the server waited
for - but for `s_handler_lock` (internal_ev_process), under which handlers of internal events run, and the one that keeps a
serial message in one piece while it is sent. What each lock guards, and their order: [architecture.md](architecture.md).
)";

} // namespace

SeenOfAll WatchAll() {
    SeenOfAll seen;
    std::map<std::string, const Function*> last;
    const support::OutputCapture quiet;
    EXPECT_EQ(LockName(nullptr), "one of the socket's own"); // reads the symbols, which takes a while
    Stage stage;
    for (const Group& group : Functions()) {
        for (const Function& function : group.functions) {
            const std::string name = function.name;
            if (std::count(std::begin(kLast), std::end(kLast), name) > 0 ||
                group.title == "start and stop" || group.title == "internal events") {
                last[name] = &function;
            } else if (function.call != nullptr) {
                seen[name] = WatchOne(function);
            }
        }
    }
    for (const char* name : kLast) {
        Seen now = WatchOne(*last.at(name));
        seen[name].locks.merge(now.locks);
        seen[name].waits.merge(now.waits);
    }
    for (const auto& [name, function] : last) {
        EXPECT_EQ(seen.count(name), 1U) << name << " was not called";
    }
    return seen;
}

std::string Page(const SeenOfAll& seen) {
    std::string page = kHead;
    for (const Group& group : Functions()) {
        page += "### " + group.title +
                "\n\n| function | from a callback | threads | may wait | locks |\n"
                "| --- | --- | --- | --- | --- |\n";
        for (const Function& function : group.functions) {
            const auto found = seen.find(function.name);
            const Seen mine = found == seen.end() ? Seen{} : found->second;
            page += std::string("| `") + function.name + "` | " + Text(function.callback) + " | " +
                    (function.threads == Threads::kAny ? "any" : "one") + " | " +
                    Joined(mine.waits, function.note) + " | " + Joined(mine.locks) + " |\n";
        }
        page += "\n";
    }
    return page + kTail;
}

} // namespace threads
