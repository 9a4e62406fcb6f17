// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the GATT client's API, its events and its handlers share.
#ifndef VYM_GATT_CLIENT_IMPL_H
#define VYM_GATT_CLIENT_IMPL_H

#include "vym_gatt_client.h"

extern "C" {

// The module's handlers, in the order of the event table. They run on the receive thread. Beside what
// the application's table has, there is a registration in front and what no application hears at the
// end.
typedef struct tag_gatt_client_impl_callback {
    void (*client_registered_cb)(uint8_t status, uint8_t client_if, bt_uuid_t Uuid);
    void (*scan_result_cb)(bt_bdaddr_t address, uint8_t rssi, uint16_t adv_dataLen, uint8_t* adv_data,
                           uint8_t data_type);
    void (*scan_address_name_cb)(bt_bdaddr_t address, uint16_t nameLen, uint8_t* name);
    void (*notify_cb)(uint16_t conn_id, bt_bdaddr_t address, uint8_t srvcType, uint16_t srvcInstId,
                      bt_uuid_t srvcUuid, uint16_t charInstId, bt_uuid_t charUuid, uint8_t isNotify,
                      uint16_t dataLen, uint8_t* data);
    void (*connected_cb)(uint8_t client_if, uint16_t conn_id, uint8_t status, bt_bdaddr_t address);
    void (*disconnected_cb)(uint8_t client_if, uint16_t conn_id, uint8_t status, bt_bdaddr_t address);
    void (*search_completed_cb)(uint16_t conn_id, uint8_t status);
    void (*search_result_cb)(uint16_t conn_id, uint8_t srvcType, uint16_t srvcInstId,
                             bt_uuid_t srvcUuid);
    void (*get_characteristic_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                  uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                                  bt_uuid_t charUuid, int charProp);
    void (*get_descriptor_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType, uint16_t srvcInstId,
                              bt_uuid_t srvcUuid, uint16_t charInstId, bt_uuid_t charUuid,
                              uint16_t descrInstId, bt_uuid_t descrUuid);
    void (*get_included_service_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                    uint16_t srvcInstId, bt_uuid_t srvcUuid, uint8_t inclSrvcType,
                                    uint16_t inclSrvcInstId, bt_uuid_t inclSrvcUuid);
    void (*register_for_notifications_cb)(uint16_t conn_id, uint8_t status, uint8_t registered,
                                          uint8_t srvcType, uint16_t srvcInstId, bt_uuid_t srvcUuid,
                                          uint16_t charInstId, bt_uuid_t charUuid);
    void (*read_characteristic_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                   uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                                   bt_uuid_t charUuid, uint8_t charType, uint16_t dataLen,
                                   uint8_t* data);
    void (*write_characteristic_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType,
                                    uint16_t srvcInstId, bt_uuid_t srvcUuid, uint16_t charInstId,
                                    bt_uuid_t charUuid);
    void (*execute_completed_cb)(uint16_t conn_id, uint8_t status);
    void (*read_descriptor_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType, uint16_t srvcInstId,
                               bt_uuid_t srvcUuid, uint16_t charInstId, bt_uuid_t charUuid,
                               uint16_t descrInstId, bt_uuid_t descrUuid, uint8_t charType,
                               uint16_t dataLen, uint8_t* data);
    void (*write_descriptor_cb)(uint16_t conn_id, uint8_t status, uint8_t srvcType, uint16_t srvcInstId,
                                bt_uuid_t srvcUuid, uint16_t charInstId, bt_uuid_t charUuid,
                                uint16_t descrInstId, bt_uuid_t descrUuid);
    void (*read_remote_rssi_cb)(uint8_t client_if, bt_bdaddr_t address, uint8_t rssi, uint8_t status);
    void (*receive_data_from_central_cb)(uint16_t conn_id, bt_bdaddr_t address, uint16_t dataLen,
                                         uint8_t* data);
    void (*configure_mtu_cb)(int conn_id, uint8_t status, int mtu);
    void (*advertise_callback_cb)(uint8_t status, uint8_t client_if);
    // From here on nothing is passed on.
    void (*scan_filter_config_cb)(int action, uint8_t client_if, uint8_t status, int filt_type,
                                  int avbl_space);
    void (*scan_filter_params_configured_cb)(int action, uint8_t client_if, uint8_t status,
                                             int avbl_space);
    void (*scan_filter_enable_disabled_cb)(int action, uint8_t client_if, uint8_t status);
    void (*advertise_instance_enabled_cb)(uint8_t client_if, uint8_t status);
    void (*advertise_data_updated_cb)(uint8_t client_if, uint8_t status);
    void (*advertise_data_set_cb)(uint8_t client_if, uint8_t status);
    void (*advertise_instance_disabled_cb)(uint8_t client_if, uint8_t status);
    void (*client_congestion_cb)(int conn_id, uint8_t congested);
    void (*batch_scan_storage_configured_cb)(uint8_t client_if, uint8_t status);
    void (*batch_scan_start_stopped_cb)(int startstop_action, uint8_t client_if, uint8_t status);
    void (*batch_scan_reports_cb)(uint8_t client_if, uint8_t status, int report_format, int num_records,
                                  uint16_t rep_dataLen, uint8_t* rep_data);
    void (*batch_scan_threshold_crossed_cb)(uint8_t client_if);
    void (*scan_param_setup_completed_cb)(uint8_t client_if, uint8_t status);
} gatt_client_impl_callback_t;

// The handlers, and what they tell: the application's table, and whoever wants every registration.
gatt_client_impl_callback_t* vym_gatt_client_handlers(void);
void vym_gatt_client_set_delegate(gatt_client_callback_t* cbk);
void vym_gatt_client_set_server_hook(server_register_client_cbk_hlp cb);

// Forgets the registrations that nobody has waited for, and the last one's id.
void vym_gatt_client_forget_registrations(void);
// Waits, without limit, until there is a registration that nobody has waited for. Returns the id that
// was reported last.
uint8_t vym_gatt_client_wait_for_registration(void);

// Single commands behind the calls that do more.
bt_status_t vym_gatt_client_register_client(bt_uuid_t uuid);
bt_status_t vym_gatt_client_unregister_client(uint8_t client_if);
bt_status_t vym_gatt_client_connect_impl(uint8_t client_if, bt_bdaddr_t address, uint8_t is_direct,
                                         uint8_t transport);

// Commands that nothing in the library sends.
bt_status_t vym_gatt_client_dump(uint16_t conn_id);
bt_status_t vym_gatt_cleanup(void);
bt_status_t vym_gatt_send_data(uint16_t len, uint8_t* data);
bt_status_t vym_gatt_test(int command, long int uuid1_lsb, long int uuid1_msb, bt_bdaddr_t address,
                          int p1, int p2, int p3, int p4, int p5);
bt_status_t vym_gatt_set_scan_parameters(uint8_t client_if, uint16_t scan_interval,
                                         uint16_t scan_window);
bt_status_t vym_gatt_client_scan_filter_add(
    uint8_t client_if, uint16_t filter_type, uint16_t filter_index, uint16_t company_id,
    uint16_t company_id_mask, long int uuid_lsb, long int uuid_msb, long int uuid_mask_lsb,
    long int uuid_mask_msb, uint16_t nameLen, uint8_t* name, uint16_t addressLen, uint8_t* address,
    uint8_t addr_type, uint16_t dataLen, uint8_t* data, uint16_t maskLen, uint8_t* mask);
bt_status_t vym_gatt_client_scan_filter_delete(
    uint8_t client_if, uint16_t filter_type, uint16_t filter_index, uint16_t company_id,
    uint16_t company_id_mask, long int uuid_lsb, long int uuid_msb, long int uuid_mask_lsb,
    long int uuid_mask_msb, uint16_t nameLen, uint8_t* name, uint16_t addressLen, uint8_t* address,
    uint8_t addr_type, uint16_t dataLen, uint8_t* data, uint16_t maskLen, uint8_t* mask);
bt_status_t vym_gatt_client_scan_filter_param_add(uint8_t client_if, uint16_t filtIndex,
                                                  uint16_t featSeln, uint16_t listLogicType,
                                                  uint16_t filtLogicType, uint16_t rssiHighValue,
                                                  uint16_t rssiLowValue, uint16_t delyMode,
                                                  uint16_t foundTimeOut, uint16_t lostTimeOut,
                                                  uint16_t foundTimeOutCnt, uint16_t numOfTrackEntries);
bt_status_t vym_gatt_client_scan_filter_param_clear_all(uint8_t client_if);
bt_status_t vym_gatt_client_scan_filter_param_delete(uint8_t client_if, uint16_t filt_index);
bt_status_t vym_gatt_client_scan_filter_clear(uint8_t client_if, uint16_t filt_index);
bt_status_t vym_gatt_client_scan_filter_enable(uint8_t client_if, uint8_t enable);
bt_status_t vym_gatt_client_config_batch_scan_storage(uint8_t client_if,
                                                      uint16_t max_full_reports_percent,
                                                      uint16_t max_truncated_reports_percent,
                                                      uint16_t notify_threshold_percent);
bt_status_t vym_gatt_client_start_batch_scan(uint8_t client_if, uint16_t scan_mode,
                                             uint16_t scan_interval_unit, uint16_t scan_window_unit,
                                             uint16_t address_type, uint16_t discard_rule);
bt_status_t vym_gatt_client_stop_batch_scan(uint8_t client_if);
bt_status_t vym_gatt_client_read_scan_reports(uint8_t client_if, uint16_t scan_type);
bt_status_t vym_gatt_client_disable_adv(uint8_t client_if);
bt_status_t vym_gatt_client_enable_adv(uint8_t client_if, uint16_t min_interval, uint16_t max_interval,
                                       uint8_t adv_type, uint8_t chnl_map, uint8_t tx_power,
                                       uint16_t timeout_s);
bt_status_t vym_gatt_client_update_adv(uint8_t client_if, uint16_t min_interval, uint16_t max_interval,
                                       uint8_t adv_type, uint8_t chnl_map, uint8_t tx_power,
                                       uint16_t timeout_s);

} // extern "C"

#endif
