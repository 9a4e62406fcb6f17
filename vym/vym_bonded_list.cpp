// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_bluetooth_impl.h"
#include "vym_os.h"
#include "vym_thread.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

typedef struct _bonded_device_info {
    vym::mutex bonded_device_lock;
    bt_remote_device_t*
        bonded_devices VYM_GUARDED_BY(bonded_device_lock); // exactly as many as there are
    int bonded_device_num VYM_GUARDED_BY(bonded_device_lock);
} bonded_device_info;

bonded_device_info s_bonded_device_info = {};

// Returns the index of the address, -1 when it is not listed.
int find(const bt_bdaddr_t& address) VYM_REQUIRES(s_bonded_device_info.bonded_device_lock) {
    for (int i = 0; i < s_bonded_device_info.bonded_device_num; ++i) {
        if (memcmp(&s_bonded_device_info.bonded_devices[i].address, &address, sizeof address) == 0) {
            return i;
        }
    }
    return -1;
}

bt_remote_device_t* find_entry(const bt_bdaddr_t& address)
    VYM_REQUIRES(s_bonded_device_info.bonded_device_lock) {
    const int at = find(address);
    return at >= 0 ? &s_bonded_device_info.bonded_devices[at] : nullptr;
}

// Puts a list of `count` zeroed entries in the place of the old one, which is returned. Without memory
// the old list stays and nothing is returned.
bool replace_list(int count, vym::malloc_ptr<bt_remote_device_t>* old)
    VYM_REQUIRES(s_bonded_device_info.bonded_device_lock) {
    bt_remote_device_t* devices = nullptr;
    if (count > 0) {
        devices = static_cast<bt_remote_device_t*>(calloc(static_cast<size_t>(count), sizeof *devices));
        if (devices == nullptr) {
            return false;
        }
    }
    old->reset(s_bonded_device_info.bonded_devices);
    s_bonded_device_info.bonded_devices = devices;
    s_bonded_device_info.bonded_device_num = count;
    return true;
}

void copy_entries(bt_remote_device_t* to, const bt_remote_device_t* from, int count) {
    if (count > 0) {
        memcpy(to, from, static_cast<size_t>(count) * sizeof *to);
    }
}

void append(const bt_bdaddr_t& address) VYM_REQUIRES(s_bonded_device_info.bonded_device_lock) {
    const int count = s_bonded_device_info.bonded_device_num;
    vym::malloc_ptr<bt_remote_device_t> old;
    if (replace_list(count + 1, &old)) {
        copy_entries(s_bonded_device_info.bonded_devices, old.get(), count);
        s_bonded_device_info.bonded_devices[count].address = address;
    }
}

void remove_at(int at) VYM_REQUIRES(s_bonded_device_info.bonded_device_lock) {
    const int left = s_bonded_device_info.bonded_device_num - 1;
    vym::malloc_ptr<bt_remote_device_t> old;
    if (replace_list(left, &old)) {
        copy_entries(s_bonded_device_info.bonded_devices, old.get(), at);
        copy_entries(s_bonded_device_info.bonded_devices + at, old.get() + at + 1, left - at);
    }
}

} // namespace

extern "C" {

void handle_device_bond_state_change(bt_bdaddr_t address, uint8_t state) {
    vym::lock_guard held(s_bonded_device_info.bonded_device_lock);
    const int at = find(address);
    if (state == BT_BOND_STATE_BONDED && at < 0) {
        append(address);
    } else if (state == BT_BOND_STATE_NONE && at >= 0) {
        remove_at(at);
    }
}

void resort_bonded_dev_by_last_connect(bt_bdaddr_t address) {
    vym::lock_guard held(s_bonded_device_info.bonded_device_lock);
    if (s_bonded_device_info.bonded_device_num == 0) {
        return;
    }
    const int at = find(address);
    if (at <= 0) {
        puts("no resort is required, return\r");
        return;
    }
    bt_remote_device_t* devices = s_bonded_device_info.bonded_devices;
    const bt_remote_device_t connected = devices[at];
    memmove(devices + 1, devices, static_cast<size_t>(at) * sizeof *devices);
    devices[0] = connected;
}

void handle_bond_device_name_update(bt_bdaddr_t address, char* name, int len) {
    vym::lock_guard held(s_bonded_device_info.bonded_device_lock);
    bt_remote_device_t* device = find_entry(address);
    if (device != nullptr && len > 0) {
        // No NUL is added, as ever: "Xy" over "Anna" leaves "Xyna".
        memcpy(device->name.name, name,
               static_cast<size_t>(len < BT_NAME_MAX_LEN ? len : BT_NAME_MAX_LEN));
    }
}

void handle_bond_device_class_update(bt_bdaddr_t address, uint dev_cls) {
    vym::lock_guard held(s_bonded_device_info.bonded_device_lock);
    bt_remote_device_t* device = find_entry(address);
    if (device != nullptr) {
        device->class_of_device = dev_cls;
    }
}

int handle_get_bonded_device_count(void) {
    vym::lock_guard held(s_bonded_device_info.bonded_device_lock);
    return s_bonded_device_info.bonded_device_num;
}

int vym_bonded_list_copy(bt_remote_device_t* devices, int room) {
    vym::lock_guard held(s_bonded_device_info.bonded_device_lock);
    const int count = s_bonded_device_info.bonded_device_num;
    for (int i = 0; devices != nullptr && i < count && i < room; ++i) {
        devices[i] = s_bonded_device_info.bonded_devices[count - 1 - i];
    }
    return count;
}

void vym_bonded_list_clear(void) {
    vym::lock_guard held(s_bonded_device_info.bonded_device_lock);
    vym::malloc_ptr<bt_remote_device_t> old;
    replace_list(0, &old);
}

} // extern "C"
