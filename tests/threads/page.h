// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// docs/threads.md, made of what was seen of each function.
#ifndef VYM_TESTS_THREADS_PAGE_H
#define VYM_TESTS_THREADS_PAGE_H

#include "threads/watching.h"

#include <map>
#include <string>

namespace threads {

using SeenOfAll = std::map<std::string, Seen>;

/** Calls every function once, each as a thread of the application does. */
SeenOfAll WatchAll();

std::string Page(const SeenOfAll& seen);

} // namespace threads

#endif
