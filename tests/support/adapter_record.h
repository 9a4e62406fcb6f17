// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_ADAPTER_RECORD_H
#define VYM_TESTS_SUPPORT_ADAPTER_RECORD_H

#include "support/wait.h"

#include "vym_bluetooth.h"

namespace support {

/**
 * Where the callbacks of AdapterRecordingTable() leave one entry each: the member's name without "_cb"
 * and the arguments in their order, separated by ", ". Numbers are decimal, addresses twelve digits
 * with address[5] first, texts in quotes and escaped as by Escaped(), data blocks in hexadecimal digits
 * in array order, NULL pointers "null", UUID lists [110A 110B]:
 *
 *     state_changed(1)
 *     device_found(001122334455, 1, 5242884, 200, "Name", 2, [110A 110B])
 *     bond_state_changed(0, 001122334455, 2)
 *     app_gap_started(3, 0A00DC)
 *     read_local_device_oob_data(0, 000102...0F, 101112...1F)
 */
Recorder& AdapterRecord();

/** A callback table all of whose members record; lives for ever. */
bluetooth_callback_t* AdapterRecordingTable();

/** The address's twelve digits. */
std::string AddressText(const bt_bdaddr_t& address);

/** The address that "001122334455" stands for: address[5] is 0x00, address[0] 0x55. */
bt_bdaddr_t Address(const std::string& digits);

} // namespace support

#endif
