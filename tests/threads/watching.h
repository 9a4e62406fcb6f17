// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What a call of the library does to the thread that makes it: the locks it takes and what it waits
// for. The library's calls of the system come by here, see CMakeLists.txt.
#ifndef VYM_TESTS_THREADS_WATCHING_H
#define VYM_TESTS_THREADS_WATCHING_H

#include <functional>
#include <set>
#include <string>

namespace threads {

using Names = std::set<std::string>;

struct Seen {
    Names locks;
    Names waits;
};

/** Calls it, and says what it did on this thread. Waits with a limit end at once, as if it had passed.
 * What is sent to `server` is sent to the server, all else to a channel. */
Seen Watch(const std::function<void()>& call, int server);

/** From now on this thread's waits with a limit end at once, and it does not sleep. For threads of the
 * library's and for those that do nothing but call it. */
void Hurry();

/** How many threads wait for something without a limit now. */
int EndlessWaits();

/** "parsers_lock (vym_sdk)", from the program's own symbols. */
std::string LockName(const void* lock);

} // namespace threads

#endif
