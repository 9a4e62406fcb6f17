// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Lists of connected phones. Removing a node that is not the head leaves it linked: what an application
// sees of its connections has always been counted this way, so it stays.

#include "vym_pbap.h"
#include "vym_pbap_impl.h"
#include "vym_thread.h"

#include <cstdlib>
#include <cstring>

namespace {

// One lock for all lists: an application's lists may be shared between its threads, and have no lock of
// their own.
vym::mutex s_pbap_conn_list_lock;

// A node of the module's own list. A removed node may be linked still, and may fall out of the list
// without anybody being told, so the list does not own its nodes: this chain does.
struct owned_node_t {
    NODESTRU node; // first: the list sees only this
    owned_node_t* next_owned;
};

struct {
    LISTSTRU list VYM_GUARDED_BY(s_pbap_conn_list_lock);
    owned_node_t* owned VYM_GUARDED_BY(s_pbap_conn_list_lock);
} s_pbap_conn;

bool same_address(const bt_bdaddr_t& a, const bt_bdaddr_t& b) {
    return memcmp(a.address, b.address, sizeof a.address) == 0;
}

void add_tail(LISTSTRU& list, NODESTRU* node) VYM_REQUIRES(s_pbap_conn_list_lock) {
    NODESTRU* last = list.head;
    while (last != nullptr && last->next != nullptr) {
        last = last->next;
    }
    if (list.tail == nullptr || last == nullptr) {
        list.head = node;
    } else {
        last->next = node;
    }
    list.tail = node;
    node->next = nullptr; // after linking: a node that was the last already must not follow itself
}

NODESTRU* find(const LISTSTRU& list, const bt_bdaddr_t& address) VYM_REQUIRES(s_pbap_conn_list_lock) {
    NODESTRU* node = list.head;
    while (node != nullptr && !same_address(node->address, address)) {
        node = node->next;
    }
    return node;
}

// The predecessor keeps its link: see above.
NODESTRU* remove(LISTSTRU& list, const bt_bdaddr_t& address) VYM_REQUIRES(s_pbap_conn_list_lock) {
    NODESTRU* node = find(list, address);
    if (node == nullptr) {
        return nullptr;
    }
    NODESTRU* previous = nullptr;
    for (NODESTRU* at = list.head; at != node; at = at->next) {
        previous = at;
    }
    if (node == list.head) {
        list.head = node->next;
    }
    if (node == list.tail) {
        list.tail = previous;
    }
    return node;
}

int size(const LISTSTRU& list) VYM_REQUIRES(s_pbap_conn_list_lock) {
    int count = 0;
    for (const NODESTRU* node = list.head; node != nullptr; node = node->next) {
        ++count;
    }
    return count;
}

bool is_linked(const NODESTRU* wanted) VYM_REQUIRES(s_pbap_conn_list_lock) {
    const NODESTRU* node = s_pbap_conn.list.head;
    while (node != nullptr && node != wanted) {
        node = node->next;
    }
    return node != nullptr;
}

// A node for another phone: one that has fallen out of the list, else a new one, so that phones which
// come and go for years use no more memory than those that are there together.
NODESTRU* take_node() VYM_REQUIRES(s_pbap_conn_list_lock) {
    owned_node_t* own = s_pbap_conn.owned;
    while (own != nullptr && is_linked(&own->node)) {
        own = own->next_owned;
    }
    if (own == nullptr) {
        own = static_cast<owned_node_t*>(calloc(1, sizeof(owned_node_t)));
        if (own == nullptr) {
            return nullptr;
        }
        own->next_owned = s_pbap_conn.owned;
        s_pbap_conn.owned = own;
    }
    return &own->node;
}

} // namespace

extern "C" {

void Pbap_List_AddTail(LISTSTRU* list, NODESTRU* node) {
    if (list == nullptr || node == nullptr) {
        return;
    }
    const vym::lock_guard guard(s_pbap_conn_list_lock);
    add_tail(*list, node);
}

NODESTRU* Pbap_List_GetNodeByAddress(LISTSTRU* list, bt_bdaddr_t address) {
    if (list == nullptr) {
        return nullptr;
    }
    const vym::lock_guard guard(s_pbap_conn_list_lock);
    return find(*list, address);
}

NODESTRU* Pbap_List_RemoveNodeByAddress(LISTSTRU* list, bt_bdaddr_t address) {
    if (list == nullptr) {
        return nullptr;
    }
    const vym::lock_guard guard(s_pbap_conn_list_lock);
    return remove(*list, address);
}

void Pbap_List_RemoveAll(LISTSTRU* list) {
    if (list == nullptr) {
        return;
    }
    const vym::lock_guard guard(s_pbap_conn_list_lock);
    NODESTRU* node = list->head;
    *list = {};
    while (node != nullptr) {
        NODESTRU* next = node->next;
        free(node);
        node = next;
    }
}

int Pbap_List_GetSize(LISTSTRU* list) {
    if (list == nullptr) {
        return 0;
    }
    const vym::lock_guard guard(s_pbap_conn_list_lock);
    return size(*list);
}

int vym_pbap_add_connection(bt_bdaddr_t address) {
    const vym::lock_guard guard(s_pbap_conn_list_lock);
    if (find(s_pbap_conn.list, address) != nullptr) {
        return 0;
    }
    NODESTRU* node = take_node();
    if (node != nullptr) { // else the phone is not counted; the application has been told of it
        node->address = address;
        add_tail(s_pbap_conn.list, node);
    }
    return 1;
}

void vym_pbap_remove_connection(bt_bdaddr_t address) {
    const vym::lock_guard guard(s_pbap_conn_list_lock);
    remove(s_pbap_conn.list, address);
}

int vym_pbap_count_connections(void) {
    const vym::lock_guard guard(s_pbap_conn_list_lock);
    return size(s_pbap_conn.list);
}

void vym_pbap_forget_connections(void) {
    const vym::lock_guard guard(s_pbap_conn_list_lock);
    s_pbap_conn.list = {};
    while (s_pbap_conn.owned != nullptr) {
        owned_node_t* own = s_pbap_conn.owned;
        s_pbap_conn.owned = own->next_owned;
        free(own);
    }
}

int vym_pbap_count_nodes(void) {
    const vym::lock_guard guard(s_pbap_conn_list_lock);
    int count = 0;
    for (const owned_node_t* own = s_pbap_conn.owned; own != nullptr; own = own->next_owned) {
        ++count;
    }
    return count;
}

} // extern "C"
