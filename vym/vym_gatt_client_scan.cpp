// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT client's scanning and advertising: scans, hardware filters, batch scans, advertising data
// and instances. What the server makes of the numbers is its own affair.

#include "vym_command.h"
#include "vym_gatt_client_impl.h"

namespace {

using vym::block;
using vym::hex2;
using vym::hex4;
using vym::hex8;
using vym::send_command;
using vym::tag;

} // namespace

extern "C" {

bt_status_t vym_gatt_client_scan(uint8_t start) {
    return send_command<tag("KC")>(hex2(start));
}

bt_status_t vym_gatt_client_set_adv_data(uint8_t client_if, uint8_t set_scan_rsp, uint8_t incl_name,
                                         uint8_t incl_txpower, uint16_t appearance,
                                         uint16_t manufacturer_dataLen, uint8_t* manufacturer_data,
                                         uint16_t service_dataLen, uint8_t* service_data,
                                         uint16_t service_uuidLen, uint8_t* service_uuid) {
    return send_command<tag("KXQ")>(
        hex2(client_if), hex2(set_scan_rsp), hex2(incl_name), hex2(incl_txpower), hex4(appearance),
        block(manufacturer_data, manufacturer_dataLen), block(service_data, service_dataLen),
        block(service_uuid, service_uuidLen));
}

bt_status_t vym_gatt_set_adv_data(uint8_t server_if, uint8_t setScanRsp, uint8_t inclName,
                                  uint8_t inclTxPower, uint16_t minSlaveConnectionInterval,
                                  uint16_t maxSlaveConnectionInterval, uint16_t appearance,
                                  uint16_t manufacturerDataLen, uint8_t* manufacturerData,
                                  uint16_t serviceDataLen, uint8_t* serviceData,
                                  uint16_t serviceUuidLen, uint8_t* serviceUuid) {
    return send_command<tag("KXR")>(
        hex2(server_if), hex2(setScanRsp), hex2(inclName), hex2(inclTxPower),
        hex4(minSlaveConnectionInterval), hex4(maxSlaveConnectionInterval), hex4(appearance),
        block(manufacturerData, manufacturerDataLen), block(serviceData, serviceDataLen),
        block(serviceUuid, serviceUuidLen));
}

bt_status_t vym_gatt_set_user_def_adv_data(uint8_t server_if, uint8_t setScanRsp, uint16_t data_len,
                                           uint8_t* adv_data) {
    return send_command<tag("KZB")>(hex2(server_if), hex2(setScanRsp), block(adv_data, data_len));
}

bt_status_t vym_gatt_client_set_adv_command(uint8_t enable) {
    return send_command<tag("KZC")>(hex2(enable));
}

bt_status_t vym_gatt_set_scan_parameters(uint8_t client_if, uint16_t scan_interval,
                                         uint16_t scan_window) {
    return send_command<tag("KXB")>(hex2(client_if), hex4(scan_interval), hex4(scan_window));
}

bt_status_t vym_gatt_client_scan_filter_add(
    uint8_t client_if, uint16_t filter_type, uint16_t filter_index, uint16_t company_id,
    uint16_t company_id_mask, long int uuid_lsb, long int uuid_msb, long int uuid_mask_lsb,
    long int uuid_mask_msb, uint16_t nameLen, uint8_t* name, uint16_t addressLen, uint8_t* address,
    uint8_t addr_type, uint16_t dataLen, uint8_t* data, uint16_t maskLen, uint8_t* mask) {
    // The address's type goes with the fixed fields, before the address.
    return send_command<tag("KXC")>(
        hex2(client_if), hex4(filter_type), hex4(filter_index), hex4(company_id), hex4(company_id_mask),
        hex8(uuid_lsb), hex8(uuid_msb), hex8(uuid_mask_lsb), hex8(uuid_mask_msb), hex2(addr_type),
        block(name, nameLen), block(address, addressLen), block(data, dataLen), block(mask, maskLen));
}

bt_status_t vym_gatt_client_scan_filter_delete(
    uint8_t client_if, uint16_t filter_type, uint16_t filter_index, uint16_t company_id,
    uint16_t company_id_mask, long int uuid_lsb, long int uuid_msb, long int uuid_mask_lsb,
    long int uuid_mask_msb, uint16_t nameLen, uint8_t* name, uint16_t addressLen, uint8_t* address,
    uint8_t addr_type, uint16_t dataLen, uint8_t* data, uint16_t maskLen, uint8_t* mask) {
    return send_command<tag("KXD")>(
        hex2(client_if), hex4(filter_type), hex4(filter_index), hex4(company_id), hex4(company_id_mask),
        hex8(uuid_lsb), hex8(uuid_msb), hex8(uuid_mask_lsb), hex8(uuid_mask_msb), hex2(addr_type),
        block(name, nameLen), block(address, addressLen), block(data, dataLen), block(mask, maskLen));
}

bt_status_t vym_gatt_client_scan_filter_param_add(
    uint8_t client_if, uint16_t filtIndex, uint16_t featSeln, uint16_t listLogicType,
    uint16_t filtLogicType, uint16_t rssiHighValue, uint16_t rssiLowValue, uint16_t delyMode,
    uint16_t foundTimeOut, uint16_t lostTimeOut, uint16_t foundTimeOutCnt, uint16_t numOfTrackEntries) {
    return send_command<tag("KXE")>(hex2(client_if), hex4(filtIndex), hex4(featSeln),
                                    hex4(listLogicType), hex4(filtLogicType), hex4(rssiHighValue),
                                    hex4(rssiLowValue), hex4(delyMode), hex4(foundTimeOut),
                                    hex4(lostTimeOut), hex4(foundTimeOutCnt), hex4(numOfTrackEntries));
}

bt_status_t vym_gatt_client_scan_filter_param_clear_all(uint8_t client_if) {
    return send_command<tag("KXF")>(hex2(client_if));
}

bt_status_t vym_gatt_client_scan_filter_param_delete(uint8_t client_if, uint16_t filt_index) {
    return send_command<tag("KXG")>(hex2(client_if), hex4(filt_index));
}

bt_status_t vym_gatt_client_scan_filter_clear(uint8_t client_if, uint16_t filt_index) {
    return send_command<tag("KXH")>(hex2(client_if), hex4(filt_index));
}

bt_status_t vym_gatt_client_scan_filter_enable(uint8_t client_if, uint8_t enable) {
    return send_command<tag("KXI")>(hex2(client_if), hex2(enable));
}

bt_status_t vym_gatt_client_config_batch_scan_storage(uint8_t client_if,
                                                      uint16_t max_full_reports_percent,
                                                      uint16_t max_truncated_reports_percent,
                                                      uint16_t notify_threshold_percent) {
    return send_command<tag("KXJ")>(hex2(client_if), hex4(max_full_reports_percent),
                                    hex4(max_truncated_reports_percent),
                                    hex4(notify_threshold_percent));
}

bt_status_t vym_gatt_client_start_batch_scan(uint8_t client_if, uint16_t scan_mode,
                                             uint16_t scan_interval_unit, uint16_t scan_window_unit,
                                             uint16_t address_type, uint16_t discard_rule) {
    return send_command<tag("KXK")>(hex2(client_if), hex4(scan_mode), hex4(scan_interval_unit),
                                    hex4(scan_window_unit), hex4(address_type), hex4(discard_rule));
}

bt_status_t vym_gatt_client_stop_batch_scan(uint8_t client_if) {
    return send_command<tag("KXL")>(hex2(client_if));
}

bt_status_t vym_gatt_client_read_scan_reports(uint8_t client_if, uint16_t scan_type) {
    return send_command<tag("KXM")>(hex2(client_if), hex4(scan_type));
}

bt_status_t vym_gatt_client_disable_adv(uint8_t client_if) {
    return send_command<tag("KXN")>(hex2(client_if));
}

bt_status_t vym_gatt_client_enable_adv(uint8_t client_if, uint16_t min_interval, uint16_t max_interval,
                                       uint8_t adv_type, uint8_t chnl_map, uint8_t tx_power,
                                       uint16_t timeout_s) {
    return send_command<tag("KXO")>(hex2(client_if), hex4(min_interval), hex4(max_interval),
                                    hex2(adv_type), hex2(chnl_map), hex2(tx_power), hex4(timeout_s));
}

bt_status_t vym_gatt_client_update_adv(uint8_t client_if, uint16_t min_interval, uint16_t max_interval,
                                       uint8_t adv_type, uint8_t chnl_map, uint8_t tx_power,
                                       uint16_t timeout_s) {
    return send_command<tag("KXP")>(hex2(client_if), hex4(min_interval), hex4(max_interval),
                                    hex2(adv_type), hex2(chnl_map), hex2(tx_power), hex4(timeout_s));
}

} // extern "C"
