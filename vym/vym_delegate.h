// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Calling the application. Its table is kept by pointer and each member is looked up when its event
// comes; a table or a member that is NULL drops the event.
#ifndef VYM_DELEGATE_H
#define VYM_DELEGATE_H

#include <atomic>

namespace vym {

// Calls a slot of a table, if there is a table and it has one.
template <class Callbacks, class... Parameters, class... Values>
void notify(const Callbacks* callbacks, void (*Callbacks::*slot)(Parameters...), Values... values) {
    const auto call = callbacks != nullptr ? callbacks->*slot : nullptr;
    if (call != nullptr) {
        call(values...);
    }
}

// A handler that only passes its event on to a slot of the application's table.
template <auto& Table, auto Slot>
struct pass_on;
template <class App, std::atomic<App*>& Table, class... Parameters, void (*App::*Slot)(Parameters...)>
struct pass_on<Table, Slot> {
    static void handler(Parameters... values) { notify(Table.load(), Slot, values...); }
};

} // namespace vym

#endif
