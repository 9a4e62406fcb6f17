// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes that scanning, filters, batch scans and advertising write.

#include "vym_gatt_client_impl.h"
#include "wire/gatt_client_profile.h"

namespace {

using support::Bytes;

class GattScanCommands : public gattc::GattClientCommandTest {};

TEST_F(GattScanCommands, SwitchScanningAndAdvertising) {
    ExpectCommands({
        {"scan", [] { return vym_gatt_client_scan(1); }, "AT#KC01\r\n"},
        {"stop", [] { return vym_gatt_client_scan(0); }, "AT#KC00\r\n"},
        {"any number", [] { return vym_gatt_client_scan(0xA5); }, "AT#KCA5\r\n"},
        {"advertise", [] { return vym_gatt_client_set_adv_command(1); }, "AT#KZC01\r\n"},
    });
}

TEST_F(GattScanCommands, AClientsAdvertisementHasThreeBlocksEachBehindItsCount) {
    ExpectCommands({
        {"all three",
         [] {
             uint8_t manufacturer[] = {0x4C, 0x00, 0x15};
             uint8_t service[] = {'s', 'v'};
             uint8_t uuids[] = {0x0D, 0x18, 'u', 'v', 'w'};
             return vym_gatt_client_set_adv_data(0x05, 0x01, 0x02, 0x03, 0x0340, 3, manufacturer, 2,
                                                 service, 5, uuids);
         },
         "AT#KXQ050102030340"
         "0004" +
             Bytes({0x4C, 0xDC, 0xDD, 0x15}) + "0002sv" + "0006" +
             Bytes({0xDC, 0xDE, 0x18, 'u', 'v', 'w'}) + "\r\n"},
        {"none",
         [] {
             return vym_gatt_client_set_adv_data(0x05, 0x01, 0x02, 0x03, 0x0340, 3, nullptr, 2, nullptr,
                                                 5, nullptr);
         },
         "AT#KXQ050102030340000000000000\r\n"},
        {"only the one in the middle",
         [] {
             uint8_t unused[] = {1};
             uint8_t service[] = {'m'};
             return vym_gatt_client_set_adv_data(0, 0, 0, 0, 0, 0, unused, 1, service, 9, nullptr);
         },
         "AT#KXQ00000000000000000001m0000\r\n"},
    });
}

TEST_F(GattScanCommands, AServersAdvertisementHasItsIntervalsToo) {
    ExpectCommands({
        {"all three",
         [] {
             uint8_t manufacturer[] = {'m'};
             uint8_t service[] = {0xDC};
             uint8_t uuids[] = {'u', 'v'};
             return vym_gatt_set_adv_data(0x05, 0x01, 0x02, 0x03, 0x1234, 0x5678, 0x9ABC, 1,
                                          manufacturer, 1, service, 2, uuids);
         },
         "AT#KXR05010203123456789ABC0001m0002" + Bytes({0xDC, 0xDC}) + "0002uv\r\n"},
        {"none",
         [] {
             return vym_gatt_set_adv_data(0x05, 0x01, 0x02, 0x03, 0x1234, 0x5678, 0x9ABC, 1, nullptr, 0,
                                          nullptr, 2, nullptr);
         },
         "AT#KXR05010203123456789ABC000000000000\r\n"},
    });
}

TEST_F(GattScanCommands, AnAdvertisementOfOnesOwnGoesAsItIs) {
    ExpectCommands({
        {"flags",
         [] {
             uint8_t flags[] = {0x02, 0x01, 0x06};
             return vym_gatt_set_user_def_adv_data(0x05, 0x01, 3, flags);
         },
         "AT#KZB05010003" + Bytes({0x02, 0x01, 0x06}) + "\r\n"},
        {"nothing", [] { return vym_gatt_set_user_def_adv_data(0x05, 0x01, 3, nullptr); },
         "AT#KZB05010000\r\n"},
    });
}

TEST_F(GattScanCommands, ABlockTooLongForItsCountIsRefusedWhereverItStands) {
    std::vector<uint8_t> zeroes(32768, 0);
    uint8_t* const data = zeroes.data();
    uint8_t small[] = {'s'};
    EXPECT_EQ(vym_gatt_client_set_adv_data(1, 0, 0, 0, 0, 32768, data, 1, small, 1, small),
              BT_STATUS_NOMEM);
    EXPECT_EQ(vym_gatt_client_set_adv_data(1, 0, 0, 0, 0, 1, small, 32768, data, 1, small),
              BT_STATUS_NOMEM);
    EXPECT_EQ(vym_gatt_set_adv_data(1, 0, 0, 0, 0, 0, 0, 1, small, 1, small, 32768, data),
              BT_STATUS_NOMEM);
    EXPECT_EQ(vym_gatt_set_user_def_adv_data(1, 0, 32768, data), BT_STATUS_NOMEM);
    EXPECT_EQ(vym_gatt_client_scan_filter_add(1, 2, 3, 4, 5, 6, 7, 8, 9, 1, small, 1, small, 0, 1,
                                              small, 32768, data),
              BT_STATUS_NOMEM);
    Server().ExpectNothingMore();
}

TEST_F(GattScanCommands, SeveralLongBlocksFitIntoOneLine) {
    std::vector<uint8_t> letters(20000, 'l');
    EXPECT_EQ(vym_gatt_client_set_adv_data(1, 0, 0, 0, 0, 20000, letters.data(), 20000, letters.data(),
                                           20000, letters.data()),
              BT_STATUS_SUCCESS);
    const std::string block = "4E20" + std::string(20000, 'l');
    Server().ExpectCommand("AT#KXQ010000000000" + block + block + block + "\r\n");
}

using FilterCommand = decltype(&vym_gatt_client_scan_filter_add);

bt_status_t FilterOf(FilterCommand filter) {
    uint8_t name[] = {'n', 0x00};
    uint8_t address[] = {'a', 'b', 'c'};
    uint8_t data[] = {'d'};
    uint8_t mask[] = {0x0A};
    return filter(0x05, 0x1234, 0x5678, 0x9ABC, 0xDEF0, 0x01234567, -1, 0x7FFFFFFF, -2, 2, name, 3,
                  address, 0x5A, 1, data, 1, mask);
}

bt_status_t EmptyFilterOf(FilterCommand filter) {
    return filter(1, 2, 3, 4, 5, 6, 7, 8, 9, 100, nullptr, 100, nullptr, 10, 100, nullptr, 100,
                  nullptr);
}

// The type of the address stands with the fixed fields.
TEST_F(GattScanCommands, AFilterHasFourWordsAndFourBlocks) {
    const std::string fields = "05123456789ABCDEF001234567FFFFFFFF7FFFFFFFFFFFFFFE5A"
                               "0003" +
                               Bytes({'n', 0xDC, 0xDD}) + "0003abc" + "0001d" + "0002" +
                               Bytes({0xDC, 0xDF}) + "\r\n";
    const std::string empty = "01000200030004000500000006000000070000000800000009"
                              "0A"
                              "0000000000000000\r\n";
    ExpectCommands({
        {"add", [] { return FilterOf(vym_gatt_client_scan_filter_add); }, "AT#KXC" + fields},
        {"delete", [] { return FilterOf(vym_gatt_client_scan_filter_delete); }, "AT#KXD" + fields},
        {"add without blocks", [] { return EmptyFilterOf(vym_gatt_client_scan_filter_add); },
         "AT#KXC" + empty},
        {"delete without blocks", [] { return EmptyFilterOf(vym_gatt_client_scan_filter_delete); },
         "AT#KXD" + empty},
    });
}

TEST_F(GattScanCommands, AFiltersParametersGoInTheirOrder) {
    ExpectCommands({
        {"set_scan_parameters", [] { return vym_gatt_set_scan_parameters(0x05, 0x1234, 0xABCD); },
         "AT#KXB051234ABCD\r\n"},
        {"param_add",
         [] {
             return vym_gatt_client_scan_filter_param_add(0x05, 0x0102, 0x0304, 0x0506, 0x0708, 0x090A,
                                                          0x0B0C, 0x0D0E, 0x0F10, 0x1112, 0x1314,
                                                          0x1516);
         },
         "AT#KXE050102030405060708090A0B0C0D0E0F10111213141516\r\n"},
        {"param_clear_all", [] { return vym_gatt_client_scan_filter_param_clear_all(0xA5); },
         "AT#KXFA5\r\n"},
        {"param_delete", [] { return vym_gatt_client_scan_filter_param_delete(0x05, 0x1234); },
         "AT#KXG051234\r\n"},
        {"clear", [] { return vym_gatt_client_scan_filter_clear(0x05, 0x1234); }, "AT#KXH051234\r\n"},
        {"enable", [] { return vym_gatt_client_scan_filter_enable(0x05, 0x01); }, "AT#KXI0501\r\n"},
    });
}

TEST_F(GattScanCommands, BatchScansAndInstancesGoInTheirOrder) {
    ExpectCommands({
        {"config_batch_scan_storage",
         [] { return vym_gatt_client_config_batch_scan_storage(0x05, 0x1234, 0x5678, 0x9ABC); },
         "AT#KXJ05123456789ABC\r\n"},
        {"start_batch_scan",
         [] { return vym_gatt_client_start_batch_scan(0x05, 0x0102, 0x0304, 0x0506, 0x0708, 0x090A); },
         "AT#KXK050102030405060708090A\r\n"},
        {"stop_batch_scan", [] { return vym_gatt_client_stop_batch_scan(0xA5); }, "AT#KXLA5\r\n"},
        {"read_scan_reports", [] { return vym_gatt_client_read_scan_reports(0x05, 0x1234); },
         "AT#KXM051234\r\n"},
        {"disable_adv", [] { return vym_gatt_client_disable_adv(0xA5); }, "AT#KXNA5\r\n"},
        {"enable_adv",
         [] { return vym_gatt_client_enable_adv(0x05, 0x1234, 0x5678, 0x9A, 0xBC, 0xDE, 0xF012); },
         "AT#KXO05123456789ABCDEF012\r\n"},
        {"update_adv",
         [] { return vym_gatt_client_update_adv(0x05, 0x1234, 0x5678, 0x9A, 0xBC, 0xDE, 0xF012); },
         "AT#KXP05123456789ABCDEF012\r\n"},
    });
}

} // namespace
