/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* The phone's calls, as a hands-free unit hears of them. */
#ifndef VYM_EXAMPLES_CALLS_H
#define VYM_EXAMPLES_CALLS_H

#include "scene.h"

#include <vym/vym_hfp.h>

enum { MAX_CALLS = 2, NO_CALL = -1 };

/* By the phone's index, which begins with 1. */
static int calls_heard[MAX_CALLS + 1] = {NO_CALL, NO_CALL, NO_CALL};
static int call_state[MAX_CALLS + 1] = {NO_CALL, NO_CALL, NO_CALL};

/* current_calls_cb: each refresh of the list brings every call; only changes are worth a line. */
static inline void on_call(bluetooth_call_t call) {
    static const char* const names[] = {"active",   "on hold", "dialing",           "alerting",
                                        "incoming", "waiting", "held by the phone", "ended"};
    if (call.idx <= MAX_CALLS && call.state <= CALL_STATE_TERMINATED &&
        calls_heard[call.idx] != call.state) {
        say("   call %d with %s is %s", call.idx, call.number, names[call.state]);
        calls_heard[call.idx] = call.state;
    }
}

/* current_call_num_cb: the list is complete, and only now does the library decide by it how a call is
 * answered or ended. */
static inline void on_calls_listed(int num) {
    (void)num;
    for (int i = 0; i <= MAX_CALLS; i++) {
        note(&call_state[i], calls_heard[i]);
    }
}

#endif
