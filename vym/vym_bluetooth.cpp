// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vym_bluetooth.h"

#include "bt_utils.h"
#include "vym_bluetooth_event.h"
#include "vym_bluetooth_impl.h"
#include "vym_command.h"
#include "vym_os.h"
#include "vym_sdk.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <semaphore.h>

namespace {

using vym::block;
using vym::hex2;
using vym::hex4;
using vym::hex8;
using vym::s_adapter;
using vym::send_command;
using vym::tag;

// LE test commands: what to do, then how many bytes of parameters follow.
constexpr uint16_t kLeTestReceive = 1;
constexpr uint16_t kLeTestTransmit = 2;
constexpr uint16_t kLeTestEnd = 3;

event_parser_t* s_bluetooth_event_parser;

void await(int property, const bt_bdaddr_t* device) {
    vym::lock_guard held(s_adapter.cache_lock);
    s_adapter.current_req_api = property;
    if (device != nullptr) {
        s_adapter.rmt_device = *device;
    }
}

// Returns the property that was awaited.
int await_nothing() {
    vym::lock_guard held(s_adapter.cache_lock);
    const int awaited = s_adapter.current_req_api;
    s_adapter.current_req_api = vym::kNoRequest;
    return awaited;
}

// Waits at most a second, on the monotonic clock where there is one to wait on: an embedded system sets
// its wall clock while it boots.
int timed_wait(sem_t* sem) {
#if defined(__GLIBC_PREREQ) && __GLIBC_PREREQ(2, 30)
    constexpr clockid_t kClock = CLOCK_MONOTONIC;
    const auto wait = [sem](const timespec* until) { return sem_clockwait(sem, kClock, until); };
#else
    constexpr clockid_t kClock = CLOCK_REALTIME;
    const auto wait = [sem](const timespec* until) { return sem_timedwait(sem, until); };
#endif
    timespec until = {};
    clock_gettime(kClock, &until);
    until.tv_sec += 1;
    int result = 0;
    do {
        result = wait(&until);
    } while (result != 0 && errno == EINTR);
    return result;
}

// A post that an earlier answer left behind ends this wait at once; that is known and kept.
void wait_for_sync_event() VYM_REQUIRES(s_adapter.event_lock) {
    const bool timed_out = timed_wait(&s_adapter.sem) != 0;
    const int awaited = await_nothing();
    if (timed_out) {
        printf("wait for sync event(%d) Failed!!!\n", awaited);
    }
}

// Sends a request and waits for the answer; before init there is nothing to wait with. A request that
// could not be built is answered at once.
template <class Request>
bt_status_t request_and_wait(int property, const bt_bdaddr_t* device, Request request)
    VYM_REQUIRES(s_adapter.event_lock) {
    if (!s_adapter.open) {
        return BT_STATUS_NOT_READY;
    }
    await(property, device);
    const bt_status_t status = request();
    if (status == BT_STATUS_SUCCESS) {
        wait_for_sync_event();
    } else {
        await_nothing();
    }
    return status;
}

bt_status_t get_and_wait(bt_property_type_t property) VYM_REQUIRES(s_adapter.event_lock) {
    return request_and_wait(property, nullptr, [property] {
        return vym_bluetooth_get_adapter_property(static_cast<uint8_t>(property));
    });
}

// Returns whether the request was sent.
bool get_remote_and_wait(bt_bdaddr_t address, bt_property_type_t property)
    VYM_REQUIRES(s_adapter.event_lock) {
    return request_and_wait(property, &address, [address, property] {
               return vym_bluetooth_get_remote_device_propertie(address,
                                                                static_cast<uint8_t>(property));
           }) == BT_STATUS_SUCCESS;
}

// A setter that waits for the server to confirm; before init it is sent all the same.
bt_status_t set_and_wait(bt_property_type_t property, uint16_t len, uint8_t* value) {
    vym::lock_guard held(s_adapter.event_lock);
    const auto set = [=] {
        return vym_bluetooth_set_adapter_property(static_cast<uint8_t>(property), len, value);
    };
    return s_adapter.open ? request_and_wait(property, nullptr, set) : set();
}

// 32-bit values travel as they lie in memory, that is little-endian on every supported target.
bt_status_t set_number(bt_property_type_t property, int number) {
    uint8_t bytes[sizeof number];
    memcpy(bytes, &number, sizeof number);
    return vym_bluetooth_set_adapter_property(static_cast<uint8_t>(property), sizeof bytes, bytes);
}

bool is_listed_before(int number, int i, int index_of_last) VYM_REQUIRES(s_adapter.cache_lock) {
    const bt_remote_device_t* list = s_adapter.bonded_devices;
    const uint8_t* a = list[index_of_last - i].address.address;
    for (int j = 0; j < number; ++j) {
        const uint8_t* b = list[index_of_last - j].address.address;
        printf("compare dev[%d][%02X----%02X] with dev[%d][%02X----%02X]\n", i, a[0], a[5], j, b[0],
               b[5]);
        if (memcmp(a, b, sizeof(bt_bdaddr_t)) == 0) {
            printf("index : %d address is same at :%d\n", j, i);
            return true;
        }
    }
    return false;
}

// Delivers `n` entries from the end of the server's list, each address once, and refreshes the local
// list. Returns how many duplicates were dropped.
int deliver_server_list(bt_remote_device_t* devices, int n) VYM_REQUIRES(s_adapter.cache_lock) {
    const int last = s_adapter.bonded_device_number - 1;
    int delivered = 0;
    for (int i = 0; i < n; ++i) {
        if (is_listed_before(i, i, last)) {
            continue;
        }
        bt_remote_device_t* device = &devices[delivered++];
        *device = s_adapter.bonded_devices[last - i];
        auto* name = reinterpret_cast<char*>(device->name.name);
        handle_bond_device_name_update(device->address, name, static_cast<int>(strlen(name)));
        handle_bond_device_class_update(device->address, device->class_of_device);
    }
    return n - delivered;
}

} // namespace

extern "C" {

void vym_bluetooth_init(bluetooth_callback_t* cbk) {
    vym_adapter_open(cbk);
    vym_profile_start(&s_bluetooth_event_parser, create_bluetooth_event_parser(vym_adapter_handlers()),
                      destroy_bluetooth_event_parser);
}

void vym_bluetooth_done(void) {
    vym_profile_stop(&s_bluetooth_event_parser, destroy_bluetooth_event_parser);
    vym_adapter_close();
}

bt_status_t vym_bluetooth_preset_addr(bt_bdaddr_t address) {
    bt_status_t status = BT_STATUS_SUCCESS;
    const vym::malloc_ptr<char> command(vym::build_command<tag("PD")>(&status, address));
    if (command != nullptr) {
        printf("[%s] -vym- [%s] [%s]\r\n", get_current_time_string(), __func__, command.get());
        send_at_command(command.get(), static_cast<int>(strlen(command.get())));
    }
    return status;
}

bt_status_t vym_bluetooth_enable(void) {
    return send_command<tag("PB")>();
}

bt_status_t vym_bluetooth_enable_ex(int down_firmware) {
    return down_firmware == 1 ? vym_bluetooth_enable() : send_command<tag("PE")>();
}

bt_status_t vym_bluetooth_disable(void) {
    return send_command<tag("PC")>();
}

bt_state_t vym_bluetooth_get_state(void) {
    vym::lock_guard held(s_adapter.event_lock);
    return s_adapter.state;
}

char* vym_bluetooth_get_version(void) {
    vym::lock_guard held(s_adapter.event_lock);
    const bt_status_t status =
        request_and_wait(BT_PROPERTY_VERSION, nullptr, [] { return send_command<tag("PV")>(); });
    if (status == BT_STATUS_NOMEM) {
        // The status in the place of a pointer: callers compare with it.
        return reinterpret_cast<char*>(
            static_cast<uintptr_t>(BT_STATUS_NOMEM)); // NOLINT(performance-no-int-to-ptr)
    }
    return s_adapter.sw_version;
}

bt_status_t vym_bluetooth_get_adapter_property(uint8_t type) {
    return send_command<tag("BA")>(hex2(type));
}

bt_status_t vym_bluetooth_set_adapter_property(uint8_t type, uint16_t len, uint8_t* val) {
    return send_command<tag("BB")>(hex2(type), block(val, len));
}

bt_bdname_t* vym_bluetooth_get_name(void) {
    vym::lock_guard held(s_adapter.event_lock);
    get_and_wait(BT_PROPERTY_BDNAME);
    return &s_adapter.name;
}

bt_bdaddr_t* vym_bluetooth_get_address(void) {
    vym::lock_guard held(s_adapter.event_lock);
    {
        vym::lock_guard cache_held(s_adapter.cache_lock);
        s_adapter.address = {};
    }
    get_and_wait(BT_PROPERTY_BDADDR);
    return &s_adapter.address;
}

bt_status_t vym_bluetooth_read_address(void) {
    return send_command<tag("BTOR")>();
}

bt_scan_mode_t vym_bluetooth_get_scan_mode(void) {
    vym::lock_guard held(s_adapter.event_lock);
    get_and_wait(BT_PROPERTY_ADAPTER_SCAN_MODE);
    vym::lock_guard cache_held(s_adapter.cache_lock);
    return static_cast<bt_scan_mode_t>(s_adapter.scan_mode);
}

int vym_bluetooth_get_class(void) {
    vym::lock_guard held(s_adapter.event_lock);
    get_and_wait(BT_PROPERTY_CLASS_OF_DEVICE);
    vym::lock_guard cache_held(s_adapter.cache_lock);
    return static_cast<int>(s_adapter.class_of_device);
}

bt_status_t vym_bluetooth_set_name(bt_bdname_t name) {
    const size_t len = strnlen(reinterpret_cast<const char*>(name.name), sizeof name.name);
    return set_and_wait(BT_PROPERTY_BDNAME, static_cast<uint16_t>(len), name.name);
}

bt_status_t vym_bluetooth_set_scan_mode(bt_scan_mode_t mode) {
    uint8_t bytes[sizeof mode];
    memcpy(bytes, &mode, sizeof mode);
    return set_and_wait(BT_PROPERTY_ADAPTER_SCAN_MODE, sizeof bytes, bytes);
}

bt_status_t vym_bluetooth_set_discoverable_timeout(int timeout) {
    return set_number(BT_PROPERTY_ADAPTER_DISCOVERY_TIMEOUT, timeout);
}

bt_status_t vym_bluetooth_set_discovery_internval(int interval) {
    return set_number(BT_PROPERTY_DISCOVERY_INTERVAL, interval);
}

bt_status_t vym_bluetooth_get_adapter_properties(void) {
    return send_command<tag("BG")>();
}

bt_status_t vym_bluetooth_add_AA_uuid(bt_uuid_t eir_uuid) {
    return send_command<tag("BTE")>(vym::uuid_forward(eir_uuid));
}

bt_status_t vym_bluetooth_start_discovery(void) {
    return send_command<tag("BK")>();
}

bt_status_t vym_bluetooth_stop_discovery(void) {
    return send_command<tag("BL")>();
}

bt_status_t vym_bluetooth_create_bond(bt_bdaddr_t address) {
    return send_command<tag("BM")>(address);
}

bt_status_t vym_bluetooth_create_bond_out_of_bond(bt_bdaddr_t address, int transport, uint16_t oob_len,
                                                  uint8_t* oob) {
    if (oob == nullptr || oob_len == 0) {
        return BT_STATUS_NOMEM; // what the server would call "no data" has always been told this way
    }
    return send_command<tag("BN")>(address, hex8(transport), block(oob, oob_len));
}

bt_status_t vym_bluetooth_remove_bond(bt_bdaddr_t address) {
    return send_command<tag("BO")>(address);
}

bt_status_t vym_bluetooth_cancel_bond(bt_bdaddr_t address) {
    return send_command<tag("BP")>(address);
}

bt_status_t vym_bluetooth_pin_reply(bt_bdaddr_t address, uint8_t accept, uint16_t pin_len,
                                    uint8_t* pincode) {
    return send_command<tag("BR")>(address, hex2(accept), block(pincode, pin_len));
}

bt_status_t vym_bluetooth_ssp_reply(bt_bdaddr_t address, uint8_t ssp_variant, uint8_t accept,
                                    int passkey) {
    return send_command<tag("BS")>(address, hex2(ssp_variant), hex2(accept), hex8(passkey));
}

bt_status_t vym_bluetooth_set_bond_mode(int mode) {
    return send_command<tag("BF")>(hex8(mode));
}

bt_status_t vym_bluetooth_get_bonded_devices(bt_remote_device_t* devices, int* size) {
    int unwanted = 0;
    size = size != nullptr ? size : &unwanted;
    const int room = *size;
    vym::lock_guard held(s_adapter.event_lock);
    {
        vym::lock_guard cache_held(s_adapter.cache_lock);
        s_adapter.bonded_device_number = 0;
    }
    get_and_wait(BT_PROPERTY_ADAPTER_SAVED_DEVICES);

    vym::lock_guard cache_held(s_adapter.cache_lock);
    *size = s_adapter.bonded_device_number;
    if (*size == 0) {
        printf("vym_bluetooth_get_bonded_devices size is 0");
        *size = vym_bonded_list_copy(devices, room);
        return BT_STATUS_SUCCESS;
    }
    const int n = *size < room ? *size : room;
    if (devices != nullptr && n >= 1) {
        *size -= deliver_server_list(devices, n);
    }
    return BT_STATUS_SUCCESS;
}

int vym_bluetooth_get_number_of_bonded_devices(void) {
    vym::lock_guard held(s_adapter.event_lock);
    get_and_wait(BT_PROPERTY_BONDED_DEVICE_NUM);
    vym::lock_guard cache_held(s_adapter.cache_lock);
    return static_cast<int>(s_adapter.num_of_bonded_devices);
}

bt_status_t vym_bluetooth_set_number_of_bonded_devices(int num) {
    return set_number(BT_PROPERTY_BONDED_DEVICE_NUM, num);
}

bt_status_t vym_bluetooth_read_local_device_oob_data(void) {
    return send_command<tag("BEA")>();
}

bt_status_t vym_bluetooth_read_local_device_oob_data_ex(void) {
    return send_command<tag("BEB")>();
}

bt_status_t vym_bluetooth_set_remote_device_oob_data(bt_bdaddr_t address, bt_oob_data_t c192,
                                                     bt_oob_data_t r192) {
    return send_command<tag("BEC")>(address, c192, r192);
}

bt_status_t vym_bluetooth_get_remote_device_propertie(bt_bdaddr_t address, uint8_t type) {
    return send_command<tag("BC")>(address, hex2(type));
}

bt_status_t vym_bluetooth_set_remote_device_propertie(bt_bdaddr_t address, uint8_t type, uint16_t len,
                                                      uint8_t* val) {
    return send_command<tag("BD")>(address, hex2(type), block(val, len));
}

bt_status_t vym_bluetooth_get_remote_device_properties(bt_bdaddr_t address) {
    return send_command<tag("BH")>(address);
}

bt_status_t vym_bluetooth_get_remote_service_record(bt_bdaddr_t address, bt_uuid_t uuid) {
    return send_command<tag("BI")>(address, vym::uuid_reverse(uuid));
}

bt_status_t vym_bluetooth_get_remote_services(bt_bdaddr_t address) {
    return send_command<tag("BJ")>(address);
}

uint8_t vym_bluetooth_get_device_priority(bt_bdaddr_t address) {
    vym::lock_guard held(s_adapter.event_lock);
    const bool sent = get_remote_and_wait(address, BT_PROPERTY_REMOTE_DEVICE_PRIORITY);
    vym::lock_guard cache_held(s_adapter.cache_lock);
    return sent ? s_adapter.priority : uint8_t{0};
}

bt_manufacturer_code_t vym_bluetooth_get_manufacturer_code(bt_bdaddr_t address) {
    vym::lock_guard held(s_adapter.event_lock);
    const bool sent = get_remote_and_wait(address, BT_PROPERTY_REMOTE_MANUFACTURER_CODE);
    vym::lock_guard cache_held(s_adapter.cache_lock);
    return sent ? s_adapter.manuf_code : bt_manufacturer_code_t{0};
}

bt_128_service_t vym_bluetooth_get_devices_uuids(bt_bdaddr_t address) {
    vym::lock_guard held(s_adapter.event_lock);
    const bool sent = get_remote_and_wait(address, BT_PROPERTY_UUIDS);
    vym::lock_guard cache_held(s_adapter.cache_lock);
    return sent ? s_adapter.uuids : bt_128_service_t{};
}

bt_acl_state_t vym_bluetooth_get_connection_state(bt_bdaddr_t address) {
    const bt_status_t status = send_command<tag("BQ")>(address);
    return static_cast<bt_acl_state_t>(status); // 0 once sent, which is no statement about the link
}

bt_status_t vym_bluetooth_read_connected_device_rssi(bt_bdaddr_t address) {
    return send_command<tag("BTB")>(address);
}

bt_status_t vym_bluetooth_acl_cancel_connect(bt_bdaddr_t address) {
    const int connected = vym_adapter_is_acl_connected();
    printf("is acl connected = %d\r\n", connected);
    return connected != 0 ? BT_STATUS_FAIL : send_command<tag("BTD")>(address);
}

bt_status_t vym_bluetooth_connection_auth(bt_bdaddr_t address, uint8_t profile_id, uint8_t accept) {
    return send_command<tag("BTA")>(address, hex2(profile_id), hex2(accept));
}

bt_status_t vym_bluetooth_os_suspend_action(void) {
    return send_command<tag("BTOS")>();
}

bt_status_t vym_bluetooth_os_wakeup_action(void) {
    return send_command<tag("BTOW")>();
}

bt_status_t vym_bluetooth_le_receiver_test(uint8_t rx_frequency) {
    return send_command<tag("BTL")>(hex4(kLeTestReceive), hex4(1), hex2(rx_frequency));
}

bt_status_t vym_bluetooth_le_transmitter_test(uint8_t tx_frequency, uint8_t length_of_test_data,
                                              uint8_t packet_payload) {
    return send_command<tag("BTL")>(hex4(kLeTestTransmit), hex4(3), hex2(tx_frequency),
                                    hex2(length_of_test_data), hex2(packet_payload));
}

bt_status_t vym_bluetooth_le_test_end(void) {
    return send_command<tag("BTL")>(hex4(kLeTestEnd), hex4(0));
}

bt_status_t vym_bluetooth_write_loopback_mode(uint8_t mode) {
    return send_command<tag("BTP")>(hex2(mode));
}

} // extern "C"
