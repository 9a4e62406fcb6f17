// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The list of the phone's calls. The phone only ever lists the calls that exist; a call that was in the
// last answer and is missing from the next one has ended.

#include "bt_utils.h"
#include "vym_delegate.h"
#include "vym_hfp_impl.h"
#include "vym_thread.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace {

// The number that the log line has always shown.
constexpr int kClearLine = 326;
constexpr int kStandby = 5;
constexpr int kUnset = -1;
constexpr int kNoAction = -1;
constexpr uint8_t kRefreshEvent = 1;

struct tag_api_cb {
    vym::mutex lock;
    // Only whether one is unset counts; they are filled in the order of arrival, not by kind.
    int call_ind VYM_GUARDED_BY(lock) = kUnset;
    int callsetup_ind VYM_GUARDED_BY(lock) = kUnset;
    int callheld_ind VYM_GUARDED_BY(lock) = kUnset;
    int query_calls_start VYM_GUARDED_BY(lock) = 0; // the phone is being asked
    // The list, and the answer that is coming in. A call with index n stands in slot n - 1, idx 0 is
    // none.
    bluetooth_call_t m_calls[HFP_MAX_CALLS] VYM_GUARDED_BY(lock) = {};
    bluetooth_call_t m_update_calls[HFP_MAX_CALLS] VYM_GUARDED_BY(lock) = {};
    int call_state VYM_GUARDED_BY(lock) = kStandby; // for inspection
    int query_calls_wait VYM_GUARDED_BY(lock) = 0;  // a request was dropped; for inspection
};
typedef struct tag_api_cb api_cb_t;

api_cb_t s_api_cb;

using call_list_t = bluetooth_call_t (&)[HFP_MAX_CALLS];

bool is_present(const bluetooth_call_t& call) {
    return call.idx != 0;
}

int count_present(call_list_t calls) {
    int count = 0;
    for (const bluetooth_call_t& call : calls) {
        count += is_present(call) ? 1 : 0;
    }
    return count;
}

bluetooth_call_t* find_index(call_list_t calls, int index) {
    for (bluetooth_call_t& call : calls) {
        if (is_present(call) && call.idx == index) {
            return &call;
        }
    }
    return nullptr;
}

// The order of the states is their priority.
const bluetooth_call_t* get_call_by_state(std::initializer_list<int> states)
    VYM_REQUIRES(s_api_cb.lock) {
    for (const int state : states) {
        for (const bluetooth_call_t& call : s_api_cb.m_calls) {
            if (is_present(call) && call.state == state) {
                return &call;
            }
        }
    }
    return nullptr;
}

const bluetooth_call_t* get_call_by_index(int index) VYM_REQUIRES(s_api_cb.lock) {
    return find_index(s_api_cb.m_calls, index);
}

int calls_in_state(int state) VYM_REQUIRES(s_api_cb.lock) {
    int count = 0;
    for (const bluetooth_call_t& call : s_api_cb.m_calls) {
        count += is_present(call) && call.state == state ? 1 : 0;
    }
    return count;
}

void clear_update_calls() VYM_REQUIRES(s_api_cb.lock) {
    memset(s_api_cb.m_update_calls, 0, sizeof s_api_cb.m_update_calls);
}

void tell_call(const bluetooth_call_t& call) {
    vym::notify(vym_hfp_delegate(), &hfp_callback_t::current_calls_cb, call);
}

// Takes the call in this slot for ended if the answer has it no more.
bool end_missing_call(int slot, bluetooth_call_t* ended) {
    vym::lock_guard held(s_api_cb.lock);
    bluetooth_call_t& call = s_api_cb.m_calls[slot];
    if (!is_present(call) || find_index(s_api_cb.m_update_calls, call.idx) != nullptr) {
        return false;
    }
    call.state = CALL_STATE_TERMINATED;
    *ended = call;
    return true;
}

// Whether the numbers may be the same one, written in full or in part.
bool numbers_match(const char* number, const char* stored) {
    const size_t n = strlen(number);
    const size_t m = strlen(stored);
    if (n > m) {
        return strstr(number, stored) != nullptr;
    }
    return n < m ? strstr(stored, number) != nullptr : strncmp(number, stored, n) == 0;
}

// A call that waits: beside an active call the flag must say what becomes of that.
int accept_waiting(accept_flag_t flag, int retry) VYM_REQUIRES(s_api_cb.lock) {
    if (calls_in_state(CALL_STATE_ACTIVE) > 0) {
        if (flag == CALL_ACCEPT_HOLD) {
            return CALL_ACTION_CHLD_2;
        }
        return flag == CALL_ACCEPT_TERMINATE ? int{CALL_ACTION_CHLD_1} : kNoAction;
    }
    return flag == CALL_ACCEPT_NONE && retry == 0 ? CALL_ACTION_CHLD_2 : CALL_ACTION_ATA;
}

int accept_incoming(accept_flag_t flag, int retry) VYM_REQUIRES(s_api_cb.lock) {
    const bool alone = count_present(s_api_cb.m_calls) == 1;
    return flag == CALL_ACCEPT_NONE && retry != 0 && alone ? CALL_ACTION_CHLD_1 : CALL_ACTION_ATA;
}

int accept_held(accept_flag_t flag) VYM_REQUIRES(s_api_cb.lock) {
    switch (flag) {
    case CALL_ACCEPT_HOLD:
        return CALL_ACTION_CHLD_2;
    case CALL_ACCEPT_TERMINATE:
        return CALL_ACTION_CHLD_1;
    case CALL_ACCEPT_NONE:
        return calls_in_state(CALL_STATE_ACTIVE) > 0 ? CALL_ACTION_CHLD_3 : CALL_ACTION_CHLD_2;
    }
    return kNoAction;
}

} // namespace

extern "C" {

void api_cb_clear(void) {
    printf("%s -- %d\r\n", __func__, kClearLine);
    vym::lock_guard held(s_api_cb.lock);
    s_api_cb.call_ind = kUnset;
    s_api_cb.callsetup_ind = kUnset;
    s_api_cb.callheld_ind = kUnset;
    s_api_cb.query_calls_start = 0;
    s_api_cb.query_calls_wait = 0;
    s_api_cb.call_state = kStandby;
}

void vym_hfp_forget_calls(void) {
    vym::lock_guard held(s_api_cb.lock);
    memset(s_api_cb.m_calls, 0, sizeof s_api_cb.m_calls);
    clear_update_calls();
}

void query_calls_start(void) {
    bool running = false;
    {
        vym::lock_guard held(s_api_cb.lock);
        running = s_api_cb.query_calls_start != 0;
        s_api_cb.query_calls_start = 1;
        s_api_cb.query_calls_wait = running ? 1 : 0;
        if (!running) {
            clear_update_calls();
        }
    }
    if (running) {
        // The request is dropped: the answer on its way is nearly as fresh.
        printf("[%s]%s->is querying, return\r\n", get_current_time_string(), __func__);
        return;
    }
    printf("[%s]%s->start\r\n", get_current_time_string(), __func__);
    vym_hfp_query_current_calls();
}

void query_calls_update(bluetooth_call_t call) {
    if (call.idx < 1 || call.idx > HFP_MAX_CALLS) {
        return; // there is no slot for it; the application hears of it all the same
    }
    vym::lock_guard held(s_api_cb.lock);
    s_api_cb.m_update_calls[call.idx - 1] = call;
}

void query_calls_done(void) {
    // Each call is reported with the lock released and the old list still in place, in which it is
    // ended already.
    for (int slot = 0; slot < HFP_MAX_CALLS; ++slot) {
        bluetooth_call_t ended;
        if (end_missing_call(slot, &ended)) {
            printf("[%s]%s->CALL_STATE_TERMINATED\r\n", get_current_time_string(), __func__);
            tell_call(ended);
        }
    }
    vym::lock_guard held(s_api_cb.lock);
    memcpy(s_api_cb.m_calls, s_api_cb.m_update_calls, sizeof s_api_cb.m_calls);
    clear_update_calls();
    s_api_cb.query_calls_start = 0;
}

void vym_hfp_query_ended(int succeeded) {
    {
        vym::lock_guard held(s_api_cb.lock);
        if (s_api_cb.query_calls_start == 0) {
            return;
        }
        if (succeeded == 0) {
            s_api_cb.query_calls_start = 0; // what came of the answer stays until the next query
            return;
        }
    }
    query_calls_done();
}

int wait_for_indicators(uint8_t call, uint8_t callsetup, uint8_t callheld) {
    {
        vym::lock_guard held(s_api_cb.lock);
        if (s_api_cb.call_ind == kUnset) {
            s_api_cb.call_ind = call;
            return 1;
        }
        if (s_api_cb.callsetup_ind == kUnset) {
            s_api_cb.callsetup_ind = callsetup;
            return 1;
        }
        if (s_api_cb.callheld_ind != kUnset) {
            return 0;
        }
        s_api_cb.callheld_ind = callheld;
    }
    query_calls_start(); // the third opens the gate
    return 1;
}

int current_call_num(void) {
    vym::lock_guard held(s_api_cb.lock);
    return count_present(s_api_cb.m_calls);
}

int current_update_call_num(void) {
    vym::lock_guard held(s_api_cb.lock);
    return count_present(s_api_cb.m_update_calls);
}

int clip_calls_update(uint8_t* num) {
    const auto* number = reinterpret_cast<const char*>(num);
    for (int slot = 0; slot < HFP_MAX_CALLS; ++slot) {
        bluetooth_call_t call;
        {
            vym::lock_guard held(s_api_cb.lock);
            call = s_api_cb.m_calls[slot];
        }
        if (!is_present(call)) {
            continue;
        }
        printf("[%s]%s number=%s, original number=%s\r\n", get_current_time_string(), __func__, number,
               call.number);
        if (numbers_match(number, call.number)) {
            continue;
        }
        printf("[%s]%s->CALL_STATE_TERMINATED number=%s, original number=%s\r\n",
               get_current_time_string(), __func__, number, call.number);
        call.state = CALL_STATE_TERMINATED;
        {
            vym::lock_guard held(s_api_cb.lock);
            s_api_cb.m_calls[slot].state = call.state;
        }
        tell_call(call);
        vym::notify(vym_hfp_delegate(), &hfp_callback_t::call_action_complete_cb,
                    HFP_CMD_QUERY_CURRENT_CALLS, 0);
        vym::lock_guard held(s_api_cb.lock);
        s_api_cb.m_calls[slot] = {};
        return 1;
    }
    return 0;
}

void vym_hfp_note_state(int state) {
    vym::lock_guard held(s_api_cb.lock);
    s_api_cb.call_state = state;
}

void internal_ev_process_callback(ev_data_t* ev) {
    if (ev != nullptr && ev->type == kRefreshEvent) {
        query_calls_start();
    }
}

int vym_hfp_accept_action(accept_flag_t flag, int retry) {
    vym::lock_guard held(s_api_cb.lock);
    const bluetooth_call_t* call = get_call_by_state(
        {CALL_STATE_INCOMING, CALL_STATE_WAITING, CALL_STATE_HELD_BY_RESP_HOLD, CALL_STATE_HELD});
    if (call == nullptr) {
        return kNoAction;
    }
    switch (call->state) {
    case CALL_STATE_INCOMING:
        return accept_incoming(flag, retry);
    case CALL_STATE_WAITING:
        return accept_waiting(flag, retry);
    case CALL_STATE_HELD:
        return accept_held(flag);
    case CALL_STATE_HELD_BY_RESP_HOLD:
        return flag == CALL_ACCEPT_NONE ? int{CALL_ACTION_BTRH_1} : kNoAction;
    default:
        return kNoAction;
    }
}

int vym_hfp_reject_action(void) {
    vym::lock_guard held(s_api_cb.lock);
    const bluetooth_call_t* call = get_call_by_state(
        {CALL_STATE_INCOMING, CALL_STATE_WAITING, CALL_STATE_HELD_BY_RESP_HOLD, CALL_STATE_HELD});
    if (call == nullptr) {
        return kNoAction;
    }
    switch (call->state) {
    case CALL_STATE_INCOMING:
        return CALL_ACTION_CHUP;
    case CALL_STATE_HELD_BY_RESP_HOLD:
        return CALL_ACTION_BTRH_2;
    default:
        return CALL_ACTION_CHLD_0;
    }
}

int vym_hfp_terminate_action(int index) {
    vym::lock_guard held(s_api_cb.lock);
    const bluetooth_call_t* call = get_call_by_index(index);
    if (call == nullptr) {
        return kNoAction;
    }
    switch (call->state) {
    case CALL_STATE_ACTIVE:
        return CALL_ACTION_CHLD_1X;
    case CALL_STATE_DIALING:
    case CALL_STATE_ALERTING:
        return CALL_ACTION_CHUP;
    default:
        return kNoAction;
    }
}

} // extern "C"
