// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The GATT server's permissions and tables.

#include "vym_gatt_server_impl.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

// What the permissions come to, bit by bit from bit 0.
constexpr uint16_t kOfBit[16] = {2, 2, 2, 0, 8, 8, 8, 8, 8, 0, 0, 0, 0, 0, 0, 0};

TEST(GattServerPermissions, AreTheKnownBits) {
    EXPECT_EQ(PERMISSION_READ, 1);
    EXPECT_EQ(PERMISSION_READ_ENCRYPTED, 2);
    EXPECT_EQ(PERMISSION_READ_ENCRYPTED_MITM, 4);
    EXPECT_EQ(PERMISSION_WRITE, 16);
    EXPECT_EQ(PERMISSION_WRITE_ENCRYPTED, 32);
    EXPECT_EQ(PERMISSION_WRITE_ENCRYPTED_MITM, 64);
    EXPECT_EQ(PERMISSION_WRITE_SIGNED, 128);
    EXPECT_EQ(PERMISSION_WRITE_SIGNED_MITM, 256);
}

TEST(GattServerPermissions, ComeToOneBitForReadingAndOneForWriting) {
    for (unsigned permissions = 0; permissions <= 0xFFFF; ++permissions) {
        unsigned expected = 0;
        for (unsigned bit = 0; bit < 16; ++bit) {
            expected |= (permissions >> bit & 1U) != 0 ? kOfBit[bit] : 0U;
        }
        ASSERT_EQ(convert_permissions(static_cast<uint16_t>(permissions)), expected) << permissions;
    }
}

constexpr size_t kSlot = sizeof(void (*)());

TEST(GattServerTables, TheApplicationHasFifteenMembers) {
    EXPECT_EQ(sizeof(gatt_server_callback_t), 15 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, server_registered_cb), 0U);
    EXPECT_EQ(offsetof(gatt_server_callback_t, client_connected_cb), kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, service_added_cb), 2 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, included_service_added_cb), 3 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, characteristic_added_cb), 4 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, descriptor_added_cb), 5 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, service_started_cb), 6 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, service_stopped_cb), 7 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, service_deleted_cb), 8 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, response_send_completed_cb), 9 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, attribute_read_cb), 10 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, attribute_write_cb), 11 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, execute_write_cb), 12 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, notification_sent_cb), 13 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_callback_t, mtu_changed_cb), 14 * kSlot);
}

TEST(GattServerTables, TheEventsHaveOneMoreBetweenTheLastTwo) {
    EXPECT_EQ(sizeof(gatt_server_impl_callback_t), 16 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_impl_callback_t, notification_sent_cb), 13 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_impl_callback_t, server_congestion_cb), 14 * kSlot);
    EXPECT_EQ(offsetof(gatt_server_impl_callback_t, mtu_changed_cb), 15 * kSlot);
}

} // namespace
