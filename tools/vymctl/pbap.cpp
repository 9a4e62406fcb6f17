// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "profiles.h"

#include <cstdlib>
#include <vym/vym_pbap.h>
#include <vym/vym_pbap_queue.h>

namespace vymctl {

template <>
struct slot::Record<phone_book_t> {
    static constexpr const char* kFields = "target index name=text type number=text call_time=text";
    static void add(Collector& to, const phone_book_t& entry) {
        to.add(static_cast<int64_t>(entry.target));
        to.add(static_cast<int64_t>(entry.index));
        to.add(std::string(entry.name));
        to.add(static_cast<int64_t>(entry.tel_type));
        to.add(std::string(entry.number));
        to.add(std::string(entry.time));
    }
};

namespace {

using callbacks = pbap_callback_t;

#define BOOK "book=outgoing:2|missed|incoming|sim|phone|calls"

/// The list that an application would keep.
LISTSTRU s_list{};

void add_to_list(bt_bdaddr_t address) {
    auto* node = static_cast<NODESTRU*>(std::calloc(1, sizeof(NODESTRU)));
    if (node != nullptr) {
        node->address = address;
        Pbap_List_AddTail(&s_list, node);
    }
}

Outcome found(const NODESTRU* node) {
    return node == nullptr ? Outcome{"not in the list", {}} : Outcome{"", to_text(node->address)};
}

Outcome remove_from_list(bt_bdaddr_t address) {
    const NODESTRU* head = s_list.head;
    NODESTRU* node = Pbap_List_RemoveNodeByAddress(&s_list, address);
    Outcome outcome = found(node);
    // Any other node than the head stays linked, see vym_pbap.h.
    if (node == head) {
        std::free(node);
    }
    return outcome;
}

Outcome read_queue() {
    pbap_queue_t* item = readfrom_pbap_queue();
    if (item == nullptr) {
        return {"the queue is empty", {}};
    }
    Outcome outcome{"", item->parse_index};
    std::free(item);
    return outcome;
}

Outcome write_queue(uint8_t kind) {
    auto* item = static_cast<pbap_queue_t*>(std::calloc(1, sizeof(pbap_queue_t)));
    if (item == nullptr) {
        return status_outcome(BT_STATUS_NOMEM);
    }
    item->parse_index = kind;
    writeto_pbap_queue(item);
    return {};
}

Outcome queue_count() {
    int count = 0;
    sem_getvalue(&sem, &count);
    return {"", count};
}

std::vector<Verb> phone_verbs() {
    return {
        verb(
            "init", "vym_pbap_init", [] { restart("pbap"); }, "", "starts the module anew")
            .alone(),
        verb(
            "done", "vym_pbap_done", [] { halt("pbap"); }, "", "stops the module")
            .alone(),
        verb("connect", VYMCTL_CALL(vym_pbap_connect), "address", "connects to a phone",
             "pbap.connection state==connected !state==disconnected"),
        verb("disconnect", VYMCTL_CALL(vym_pbap_disconnect), "address",
             "ends the connection to a phone", "pbap.connection state==disconnected"),
        verb(
            "connected", "vym_pbap_is_connected",
            [] {
                return Outcome{"", vym_pbap_is_connected() != 0 ? "yes" : "no"};
            },
            "", "shows whether a phone is connected")
            .alone(),
        verb("get", VYMCTL_CALL(vym_pbap_get_phonebook), BOOK " offset?0 count?65535",
             "downloads entries", "pbap.end"),
        verb("size", VYMCTL_CALL(vym_pbap_get_phonebook_size), BOOK, "asks for the number of entries",
             "pbap.size"),
        verb("cancel", VYMCTL_CALL(vym_pbap_cancel_get_phonebook), "", "ends a download early"),
        verb("filter", VYMCTL_CALL(vym_pbap_filter_mask), "mask=0..2147483647",
             "chooses what later downloads bring: 16 is photographs"),
        verb("find", VYMCTL_CALL(vym_pbap_pull_vcard_by_number), "index=0..65535 number",
             "fetches one entry", "pbap.end"),
    };
}

/// What the library offers applications to keep their own phones and work items with.
std::vector<Verb> tool_verbs() {
    return {
        verb("list-add", "Pbap_List_AddTail", &add_to_list, "address", "appends to a list of phones")
            .alone(),
        verb(
            "list-find", "Pbap_List_GetNodeByAddress",
            [](bt_bdaddr_t address) { return found(Pbap_List_GetNodeByAddress(&s_list, address)); },
            "address", "looks a phone up in the list")
            .alone(),
        verb("list-remove", "Pbap_List_RemoveNodeByAddress", &remove_from_list, "address",
             "removes a phone from the list")
            .alone(),
        verb(
            "list-clear", "Pbap_List_RemoveAll", [] { Pbap_List_RemoveAll(&s_list); }, "",
            "empties the list")
            .alone(),
        verb(
            "list-size", "Pbap_List_GetSize", [] { return Pbap_List_GetSize(&s_list); }, "",
            "shows how many are in the list")
            .alone(),
        verb("queue-start", VYMCTL_CALL(start_pbap_queue), "", "starts the queue of work items")
            .alone(),
        verb("queue-stop", VYMCTL_CALL(stop_pbap_queue), "", "stops it").alone(),
        verb("queue-write", "writeto_pbap_queue", &write_queue, "kind", "appends an item").alone(),
        verb("queue-read", "readfrom_pbap_queue", &read_queue, "", "takes the oldest item").alone(),
        verb("queue-wait", VYMCTL_CALL(pbap_thread_wait), "", "waits for an item").alone(),
        verb("queue-post", VYMCTL_CALL(pbap_thread_post), "", "wakes who waits").alone(),
        verb("queue-count", "sem", &queue_count, "", "shows how many items were not waited for")
            .alone(),
    };
}

std::vector<Verb> verbs() {
    // Waiting and counting use its semaphore, started or not.
    start_pbap_queue();
    std::vector<Verb> all = phone_verbs();
    std::vector<Verb> more = tool_verbs();
    std::move(more.begin(), more.end(), std::back_inserter(all));
    return all;
}

std::vector<EventRow> events() {
    return {
        on<&callbacks::connection_status_cb>("pbap.connection", "state=connected|disconnected address"),
        on<&callbacks::get_phonebook_status_cb>("pbap.end", VYMCTL_STATUS),
        on<&callbacks::get_phonebook_size_cb>("pbap.size", BOOK " size " VYMCTL_STATUS),
        on<&callbacks::index_data_ind_cb>("pbap.entry"),
        on<&callbacks::phonebook_photodata_ind_cb>("pbap.photo", "state index data"),
    };
}

} // namespace

Profile pbap_profile() {
    return make_profile<callbacks, vym_pbap_init, vym_pbap_done>("pbap", "The phone book (PBAP)",
                                                                 verbs(), events());
}

} // namespace vymctl
