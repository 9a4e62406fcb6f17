// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the adapter's events do: they keep the cache that the getters read, wake a getter whose answer
// came, maintain the bonded devices, and then tell the application.

#include "vym_bluetooth_impl.h"

#include "bt_utils.h"
#include "vym_delegate.h"
#include "vym_sdk.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace vym {

adapter_state s_adapter = {};

} // namespace vym

namespace {

using vym::pass_on;
using vym::s_adapter;
using app = bluetooth_callback_t;

constexpr int kListStep = 4;
constexpr int kListMax = 256; // all that a record's total can tell, in steps
constexpr int kTransports = 2;

// What an LE test command's completion belongs to.
enum le_test_t { LE_TEST_RECEIVE = 1, LE_TEST_TRANSMIT = 2, LE_TEST_END = 3 };

std::atomic<bluetooth_callback_t*> s_delegate; // the application's table
std::atomic<int> is_acl_connected{0};
// Survives done: whoever registered is still called when the adapter is started again.
std::atomic<data_transport_established_impl_callback> s_data_transport_cb[kTransports];

// Calls the application, if it wants to know.
template <class Slot, class... Values>
void tell(Slot slot, Values... values) {
    vym::notify(s_delegate.load(), slot, values...);
}

struct record_t {
    uint8_t type;
    uint8_t length;
    const uint8_t* bytes;
};

// Walks the records of a value: type and length in two digits each, then the bytes. It never leaves the
// value; a record cut by its end is dropped.
class record_walk {
public:
    record_walk(const uint8_t* value, uint16_t len, uint8_t count)
        : m_at(value), m_left(value != nullptr ? len : 0), m_count(count) {}

    bool next(record_t* record) {
        if (m_count == 0 || m_left < kHeader) {
            return false;
        }
        char digits[kHeader];
        memcpy(digits, m_at, sizeof digits);
        record->type = parse_byte(digits);
        record->length = parse_length(digits);
        record->bytes = m_at + kHeader;
        if (record->length > m_left - kHeader) {
            return false;
        }
        m_at += kHeader + record->length;
        m_left -= kHeader + record->length;
        --m_count;
        return true;
    }

private:
    static constexpr int kHeader = 4;

    static uint8_t parse_length(const char (&digits)[kHeader]) {
        char text[] = {digits[2], digits[3], '\0'};
        return parse_byte(text);
    }

    const uint8_t* m_at;
    int m_left;
    int m_count;
};

// A number shorter than its field overwrites only the first bytes; a longer one is cut.
template <class Number>
void copy_number(Number* field, const record_t& record) {
    memcpy(field, record.bytes, record.length < sizeof *field ? record.length : sizeof *field);
}

void copy_name(bt_bdname_t* name, const uint8_t* bytes, size_t length) {
    memset(name, 0, sizeof *name);
    memcpy(name->name, bytes, length < BT_NAME_MAX_LEN ? length : BT_NAME_MAX_LEN);
}

uint32_t little_endian(const uint8_t* bytes, int count) {
    uint32_t value = 0;
    for (int i = count - 1; i >= 0; --i) {
        value = value << 8 | bytes[i];
    }
    return value;
}

void notify_for_sync_event() {
    sem_post(&s_adapter.sem);
}

bool is_awaited(uint8_t type) {
    vym::lock_guard held(s_adapter.cache_lock);
    return s_adapter.current_req_api == type;
}

bool is_awaited_of(uint8_t type, const bt_bdaddr_t& address) {
    vym::lock_guard held(s_adapter.cache_lock);
    return s_adapter.current_req_api == type &&
           memcmp(&s_adapter.rmt_device, &address, sizeof address) == 0;
}

bool has_room_for_device() VYM_REQUIRES(s_adapter.cache_lock) {
    if (s_adapter.bonded_device_number < s_adapter.bonded_device_size) {
        return true;
    }
    if (s_adapter.bonded_device_size >= kListMax) {
        return false;
    }
    const int size = s_adapter.bonded_device_size + kListStep;
    void* grown =
        realloc(s_adapter.bonded_devices, static_cast<size_t>(size) * sizeof(bt_remote_device_t));
    if (grown == nullptr) {
        return false;
    }
    s_adapter.bonded_devices = static_cast<bt_remote_device_t*>(grown);
    s_adapter.bonded_device_size = size;
    return true;
}

// Layout of a bonded-device record: total, index, address, class, number of services, 16 services,
// name.
constexpr int kDeviceAddress = 2;
constexpr int kDeviceClass = 8;
constexpr int kDeviceServiceCount = 12;
constexpr int kDeviceServices = 13;
constexpr int kDeviceName = 45;

void append_device(const uint8_t (&fixed)[kDeviceName], const record_t& record) {
    vym::lock_guard held(s_adapter.cache_lock);
    if (!has_room_for_device()) {
        return;
    }
    bt_remote_device_t* device = &s_adapter.bonded_devices[s_adapter.bonded_device_number++];
    memset(device, 0, sizeof *device);
    memcpy(device->address.address, fixed + kDeviceAddress, sizeof device->address.address);
    device->class_of_device = little_endian(fixed + kDeviceClass, 4);
    device->num_service = fixed[kDeviceServiceCount];
    const uint8_t* service = fixed + kDeviceServices;
    for (uint16_t& uuid : device->services) {
        uuid = static_cast<uint16_t>(little_endian(service, 2));
        service += 2;
    }
    if (record.length > kDeviceName) {
        copy_name(&device->name, record.bytes + kDeviceName, record.length - size_t{kDeviceName});
    }
    printf("get bonded device[%d] name :%s.\n", s_adapter.bonded_device_number,
           reinterpret_cast<const char*>(device->name.name));
}

// One bonded device of the server's list. Returns whether `sem` is to be posted. The last device posts
// even when nobody waits for the list; the next getter then returns at once. Kept, since applications
// that ask for the list twice have been built around it.
bool on_saved_device(const record_t& record, bool awaited) {
    if (record.length == 0) {
        return awaited;
    }
    uint8_t fixed[kDeviceName] = {}; // a short record counts as zeroes
    memcpy(fixed, record.bytes, record.length < kDeviceName ? record.length : kDeviceName);
    const int total = fixed[0];
    if (total == 0) {
        return true;
    }
    append_device(fixed, record);
    return fixed[1] >= total - 1;
}

// Addresses most significant byte first; a rest of fewer than six bytes is none.
void on_bonded_addresses(const record_t& record) {
    for (int at = 0; at + 6 <= record.length; at += 6) {
        bt_bdaddr_t address;
        for (int i = 0; i < 6; ++i) {
            address.address[i] = record.bytes[at + 5 - i];
        }
        handle_device_bond_state_change(address, BT_BOND_STATE_BONDED);
    }
}

void cache_adapter_property(const record_t& record) {
    vym::lock_guard held(s_adapter.cache_lock);
    switch (record.type) {
    case BT_PROPERTY_BDNAME:
        copy_name(&s_adapter.name, record.bytes, record.length);
        break;
    case BT_PROPERTY_BDADDR:
        s_adapter.address = {};
        copy_number(&s_adapter.address, record);
        break;
    case BT_PROPERTY_CLASS_OF_DEVICE:
        copy_number(&s_adapter.class_of_device, record);
        break;
    case BT_PROPERTY_ADAPTER_SCAN_MODE:
        copy_number(&s_adapter.scan_mode, record);
        break;
    case BT_PROPERTY_ADAPTER_DISCOVERY_TIMEOUT:
        copy_number(&s_adapter.discoverable_timeout, record);
        break;
    case BT_PROPERTY_BONDED_DEVICE_NUM:
        copy_number(&s_adapter.num_of_bonded_devices, record);
        break;
    default:
        break;
    }
}

// Returns whether `sem` is to be posted.
bool on_adapter_property(const record_t& record, bool awaited) {
    switch (record.type) {
    case BT_PROPERTY_ADAPTER_BONDED_DEVICES:
        on_bonded_addresses(record);
        return awaited;
    case BT_PROPERTY_ADAPTER_SAVED_DEVICES:
        return on_saved_device(record, awaited);
    default:
        cache_adapter_property(record);
        return awaited;
    }
}

// The cache is one for all devices: what a device nobody asked about says is kept as well, and is what
// a getter returns that waits in vain.
void cache_remote_property(const record_t& record) {
    vym::lock_guard held(s_adapter.cache_lock);
    switch (record.type) {
    case BT_PROPERTY_UUIDS: {
        const size_t room = sizeof s_adapter.uuids.services_128bit;
        const size_t length = record.length < room ? record.length : room;
        s_adapter.uuids.num_service_128bit = static_cast<uint8_t>(length / sizeof(bt_uuid_t));
        memcpy(s_adapter.uuids.services_128bit, record.bytes, length);
        break;
    }
    case BT_PROPERTY_REMOTE_DEVICE_PRIORITY:
        copy_number(&s_adapter.priority, record);
        break;
    case BT_PROPERTY_REMOTE_MANUFACTURER_CODE:
        copy_number(&s_adapter.manuf_code, record);
        break;
    default:
        break;
    }
}

void on_remote_property(const bt_bdaddr_t& address, const record_t& record) {
    char text[UINT8_MAX];
    switch (record.type) {
    case BT_PROPERTY_BDNAME:
        memcpy(text, record.bytes, record.length);
        handle_bond_device_name_update(address, text, record.length);
        break;
    case BT_PROPERTY_CLASS_OF_DEVICE:
        if (record.length >= 4) {
            handle_bond_device_class_update(address, little_endian(record.bytes, 4));
        }
        break;
    default:
        cache_remote_property(record);
        break;
    }
}

void on_state_changed_cbk(uint8_t state) {
    {
        // A getter holds this lock while it waits, so a change of state waits for the getter's end.
        vym::lock_guard held(s_adapter.event_lock);
        s_adapter.state = static_cast<bt_state_t>(state);
    }
    tell(&app::state_changed_cb, state);
}

void on_bt_version_cbk(char* version) {
    {
        vym::lock_guard held(s_adapter.cache_lock);
        memset(s_adapter.sw_version, 0, sizeof s_adapter.sw_version);
        memcpy(s_adapter.sw_version, version, strnlen(version, sizeof s_adapter.sw_version - 1));
    }
    if (is_awaited(BT_PROPERTY_VERSION)) {
        notify_for_sync_event();
    }
    tell(&app::bt_version_cb, version);
}

// The number is the server's own; the descriptor itself rides on the connection.
void on_data_transport_established_cbk(uint8_t id, int number) {
    (void)number;
    const int fd = recv_data_transport_fd();
    const auto take = id < kTransports ? s_data_transport_cb[id].load() : nullptr;
    if (take != nullptr) {
        take(id, fd);
    } else if (fd > 0) {
        close(fd);
    }
}

void on_adapter_properties_cbk(uint8_t status, uint8_t num_of_props, uint16_t len, uint8_t* value) {
    (void)status; // the records count, whatever it says
    record_walk walk(value, len, num_of_props);
    record_t record;
    while (walk.next(&record)) {
        if (on_adapter_property(record, is_awaited(record.type))) {
            notify_for_sync_event();
        }
    }
}

void on_remote_device_properties_cbk(uint8_t status, bt_bdaddr_t address, uint8_t num_of_props,
                                     uint16_t len, uint8_t* value) {
    (void)status;
    record_walk walk(value, len, num_of_props);
    record_t record;
    while (walk.next(&record)) {
        const bool awaited = is_awaited_of(record.type, address);
        on_remote_property(address, record);
        if (awaited) {
            notify_for_sync_event();
        }
    }
}

void on_bond_state_changed_cbk(uint8_t status, bt_bdaddr_t address, uint8_t state) {
    if (status == BT_STATUS_SUCCESS) {
        handle_device_bond_state_change(address, state);
    }
    tell(&app::bond_state_changed_cb, status, address, state);
}

// One flag for all devices, set by the state alone: a failed connection that reports state 0 sets it
// too.
void on_acl_state_changed_cbk(uint8_t status, bt_bdaddr_t address, uint8_t state) {
    const bool connected = state == BT_ACL_STATE_CONNECTED;
    if (connected) {
        resort_bonded_dev_by_last_connect(address);
    }
    is_acl_connected = connected ? 1 : 0;
    tell(&app::acl_state_changed_cb, status, address, state);
}

void on_connection_auth_req_cbk(bt_bdaddr_t address, uint8_t profile_id) {
    const uint8_t* a = address.address;
    printf("%s--address[%02x]:[%02x]:[%02x]:[%02x]:[%02x]:[%02x], profile_id:%02x\r\n", __func__, a[0],
           a[1], a[2], a[3], a[4], a[5], profile_id);
    tell(&app::connection_auth_req_cb, address, profile_id);
}

void on_le_test_cmd_complete_cbk(uint8_t op_code, uint8_t status, uint16_t num_packets) {
    switch (op_code) {
    case LE_TEST_RECEIVE:
        tell(&app::le_rx_test_cb, status);
        break;
    case LE_TEST_TRANSMIT:
        tell(&app::le_tx_test_cb, status);
        break;
    case LE_TEST_END:
        tell(&app::le_test_end_cb, status, num_packets);
        break;
    default:
        break;
    }
}

bluetooth_impl_callback_t s_handlers = {
    on_state_changed_cbk,
    on_bt_version_cbk,
    on_data_transport_established_cbk,
    on_adapter_properties_cbk,
    on_remote_device_properties_cbk,
    pass_on<s_delegate, &app::device_found_cb>::handler,
    pass_on<s_delegate, &app::discovery_state_changed_cb>::handler,
    pass_on<s_delegate, &app::pin_request_cb>::handler,
    pass_on<s_delegate, &app::ssp_request_cb>::handler,
    on_bond_state_changed_cbk,
    on_acl_state_changed_cbk,
    pass_on<s_delegate, &app::app_gap_started_cb>::handler,
    on_connection_auth_req_cbk,
    on_le_test_cmd_complete_cbk,
    pass_on<s_delegate, &app::read_bt_address_cb>::handler,
    pass_on<s_delegate, &app::read_rssi_cb>::handler,
    pass_on<s_delegate, &app::read_local_device_oob_data_cb>::handler,
    pass_on<s_delegate, &app::read_local_device_oob_data_ex_cb>::handler,
};

void empty_server_list() VYM_REQUIRES(s_adapter.cache_lock) {
    free(s_adapter.bonded_devices);
    s_adapter.bonded_devices = nullptr;
    s_adapter.bonded_device_number = 0;
    s_adapter.bonded_device_size = 0;
}

} // namespace

extern "C" {

void vym_adapter_open(bluetooth_callback_t* cbk) {
    vym::lock_guard held(s_adapter.event_lock);
    if (!s_adapter.open) {
        sem_init(&s_adapter.sem, 0, 0);
    }
    s_adapter.open = true;
    s_delegate = cbk;
    vym_bonded_list_clear();

    vym::lock_guard cache_held(s_adapter.cache_lock);
    s_adapter.current_req_api = vym::kNoRequest;
    empty_server_list();
    has_room_for_device(); // the first four; without memory the next record tries again
}

void vym_adapter_close(void) {
    vym::lock_guard held(s_adapter.event_lock);
    if (!s_adapter.open) {
        return;
    }
    s_adapter.open = false;
    s_delegate = nullptr;
    sem_destroy(&s_adapter.sem);
    vym_bonded_list_clear();

    vym::lock_guard cache_held(s_adapter.cache_lock);
    empty_server_list();
}

bluetooth_impl_callback_t* vym_adapter_handlers(void) {
    return &s_handlers;
}

int vym_adapter_is_acl_connected(void) {
    return is_acl_connected;
}

void vym_bluetooth_register_data_transport_callback(uint8_t id,
                                                    data_transport_established_impl_callback callback) {
    if (id < kTransports) {
        s_data_transport_cb[id] = callback;
    }
}

} // extern "C"
