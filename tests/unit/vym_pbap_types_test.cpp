// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What applications have compiled in.

#include "vym_pbap_event.h"
#include "vym_pbap_queue.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

namespace {

constexpr size_t kPointer = sizeof(void (*)());

TEST(PbapTypes, AnEntryIsNaturallyAligned) {
    EXPECT_EQ(offsetof(phone_book_t, target), 0U);
    EXPECT_EQ(offsetof(phone_book_t, index), 4U);
    EXPECT_EQ(offsetof(phone_book_t, name), 8U);
    EXPECT_EQ(offsetof(phone_book_t, tel_type), 264U);
    EXPECT_EQ(offsetof(phone_book_t, number), 268U);
    EXPECT_EQ(offsetof(phone_book_t, time), 300U);
    EXPECT_EQ(sizeof(phone_book_t), 340U);
    EXPECT_EQ(alignof(phone_book_t), alignof(int));
    EXPECT_EQ(sizeof(phone_book_t::name), 255U);
    EXPECT_EQ(sizeof(phone_book_t::number), 32U);
    EXPECT_EQ(sizeof(phone_book_t::time), 40U);
    EXPECT_TRUE(std::is_trivially_copyable_v<phone_book_t>);
    EXPECT_TRUE(std::is_standard_layout_v<phone_book_t>);
}

TEST(PbapTypes, ObjectsAndFilterBitsHaveTheirValues) {
    EXPECT_EQ(SYNC_OCH, 2);
    EXPECT_EQ(SYNC_MCH, 3);
    EXPECT_EQ(SYNC_ICH, 4);
    EXPECT_EQ(SYNC_SIM_CONTACT, 5);
    EXPECT_EQ(SYNC_PHONE_CONTACT, 6);
    EXPECT_EQ(SYNC_CALLLOG, 7);
    EXPECT_EQ(PBAP_INFO_MASK_PHOTO, 16);
}

TEST(PbapTypes, EnumerationsCarryAny32Bits) {
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<sync_type_t>, int>));
    EXPECT_TRUE((std::is_same_v<std::underlying_type_t<mask_type_t>, int>));
    EXPECT_EQ(sizeof(sync_type_t), 4U);
    EXPECT_EQ(sizeof(mask_type_t), 4U);
}

TEST(PbapTypes, TheApplicationsTableHasItsMembersInOrder) {
    EXPECT_EQ(offsetof(pbap_callback_t, connection_status_cb), 0U);
    EXPECT_EQ(offsetof(pbap_callback_t, get_phonebook_status_cb), kPointer);
    EXPECT_EQ(offsetof(pbap_callback_t, get_phonebook_size_cb), 2 * kPointer);
    EXPECT_EQ(offsetof(pbap_callback_t, index_data_ind_cb), 3 * kPointer);
    EXPECT_EQ(offsetof(pbap_callback_t, phonebook_photodata_ind_cb), 4 * kPointer);
    EXPECT_EQ(sizeof(pbap_callback_t), 5 * kPointer);
}

TEST(PbapTypes, TheHandlersComeInTheOrderOfTheEvents) {
    EXPECT_EQ(offsetof(pbap_impl_callback_t, connection_status_cb), 0U);
    EXPECT_EQ(offsetof(pbap_impl_callback_t, get_phonebook_status_cb), kPointer);
    EXPECT_EQ(offsetof(pbap_impl_callback_t, get_phonebook_size_cb), 2 * kPointer);
    EXPECT_EQ(offsetof(pbap_impl_callback_t, vcf_data_ind_cb), 3 * kPointer);
    EXPECT_EQ(offsetof(pbap_impl_callback_t, index_data_ind_cb), 4 * kPointer);
    EXPECT_EQ(offsetof(pbap_impl_callback_t, phonebook_rawdata_ind_cb), 5 * kPointer);
    EXPECT_EQ(offsetof(pbap_impl_callback_t, phonebook_photodata_ind_cb), 6 * kPointer);
    EXPECT_EQ(sizeof(pbap_impl_callback_t), 7 * kPointer);
}

TEST(PbapTypes, ListsAndTheirNodesAreNaturallyAligned) {
    EXPECT_EQ(offsetof(LISTSTRU, head), 0U);
    EXPECT_EQ(offsetof(LISTSTRU, tail), kPointer);
    EXPECT_EQ(sizeof(LISTSTRU), 2 * kPointer);
    EXPECT_EQ(offsetof(NODESTRU, address), 0U);
    EXPECT_EQ(offsetof(NODESTRU, next), 8U);
    EXPECT_EQ(sizeof(NODESTRU), 8 + kPointer);
}

TEST(PbapTypes, AWorkItemIsNaturallyAligned) {
    EXPECT_EQ(offsetof(pbap_queue_t, parse_index), 0U);
    EXPECT_EQ(offsetof(pbap_queue_t, param), kPointer);
    EXPECT_EQ(offsetof(pbap_queue_t, next), 2 * kPointer);
    EXPECT_EQ(sizeof(pbap_queue_t), 3 * kPointer);
}

} // namespace
