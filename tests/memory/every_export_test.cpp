// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// That no exported function is left out here, and those that need no memory at all.

#include "internal_ev_process.h"
#include "memory/failing_calls.h"
#include "support/exercised.h"
#include "support/limits.h"
#include "support/session.h"
#include "vym_audio_stream.h"
#include "vym_avrcp.h"
#include "vym_debug.h"
#include "vym_pbap.h"
#include "vym_pbap_queue.h"
#include "vym_rfcomm.h"
#include "vym_sdk.h"

#include <atomic>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <thread>

namespace {

using memory::CountedAllocations;

TEST(EveryExport, HasATestWithoutMemory) {
    support::ExpectEveryExportExercised(VYM_EXPORTS, {first_exercised, end_of_exercised});
}

/** A block to be freed by the library, whose making is not counted among the library's. */
template <class Item>
Item* NewItem() {
    void* room = aligned_alloc(alignof(std::max_align_t), 64);
    static_assert(sizeof(Item) <= 64);
    return new (room) Item{};
}

struct Step {
    const char* name;
    std::function<void()> call;
};

void ExpectNoMemoryNeeded(const std::vector<Step>& steps) {
    for (const Step& one : steps) {
        const CountedAllocations needed;
        one.call();
        EXPECT_EQ(needed.Asked(), 0) << one.name;
    }
}

class NeedsNoMemory : public support::AdapterTest {};

TEST_F(NeedsNoMemory, AskingAndRegistering) {
    Server().Send(support::Event("PA01"));
    EXPECT_TRUE(Session().EventsAreHandled());
    ExpectNoMemoryNeeded({
        {"features", [] { EXPECT_EQ(CALL(convert_feature_to_avrcp_version)(0xA0), AVRCP_1_5); }},
        {"state", [] { EXPECT_EQ(CALL(vym_bluetooth_get_state)(), BT_STATE_ON); }},
        {"transport",
         [] {
             CALL(vym_bluetooth_register_data_transport_callback)
             (IPC_ID_SPP, nullptr);
         }},
        {"pbap_is_connected", [] { EXPECT_EQ(CALL(vym_pbap_is_connected)(), 0); }},
        {"audio init",
         [] {
             CALL(vym_audio_stream_init)
             (nullptr);
         }},
        {"audio send", [] { EXPECT_EQ(CALL(vym_audio_stream_send)(0, 0, 0, nullptr), -1); }},
        {"audio done",
         [] {
             CALL(vym_audio_stream_done)
             ();
         }},
    });
}

TEST_F(NeedsNoMemory, SendingAnInternalEventAndForgettingItsHandler) {
    static const internal_event_callback handler = [](ev_data_t* ev) {
        support::AdapterRecord().Add("internal(" + std::to_string(ev->type) + ")");
    };
    vym_internal_event_register(handler);
    ExpectNoMemoryNeeded({
        {"send",
         [] {
             uint8_t value = 5;
             EXPECT_EQ(CALL(vym_internal_event_send)(9, 1, &value), 1);
             EXPECT_TRUE(support::AdapterRecord().WaitForExactly({"internal(9)"}));
         }},
        {"unregister",
         [] {
             CALL(vym_internal_event_unregister)
             (handler);
         }},
    });
}

TEST(NeedsNoMemoryEither, TheListOfPhones) {
    const bt_bdaddr_t phone = {{1, 2, 3, 4, 5, 6}};
    LISTSTRU list{};
    NODESTRU* node = NewItem<NODESTRU>();
    node->address = phone;
    ExpectNoMemoryNeeded({
        {"add",
         [&] {
             CALL(Pbap_List_AddTail)
             (&list, node);
         }},
        {"find", [&] { EXPECT_EQ(CALL(Pbap_List_GetNodeByAddress)(&list, phone), node); }},
        {"size", [&] { EXPECT_EQ(CALL(Pbap_List_GetSize)(&list), 1); }},
        {"remove", [&] { EXPECT_EQ(CALL(Pbap_List_RemoveNodeByAddress)(&list, phone), node); }},
        {"add again", [&] { Pbap_List_AddTail(&list, node); }},
        {"remove all",
         [&] {
             CALL(Pbap_List_RemoveAll)
             (&list);
         }},
    });
    EXPECT_EQ(list.head, nullptr);
}

TEST(NeedsNoMemoryEither, TheQueueOfItems) {
    pbap_queue_t* item = NewItem<pbap_queue_t>();
    ExpectNoMemoryNeeded({
        {"start",
         [] {
             CALL(start_pbap_queue)
             ();
         }},
        {"write",
         [&] {
             CALL(writeto_pbap_queue)
             (item);
         }},
        {"wait",
         [] {
             CALL(pbap_thread_wait)
             ();
         }},
        {"read", [&] { EXPECT_EQ(CALL(readfrom_pbap_queue)(), item); }},
        {"post",
         [] {
             CALL(pbap_thread_post)();
             EXPECT_EQ(sem_trywait(CALL(sem)), 0);
         }},
        {"stop",
         [] {
             CALL(stop_pbap_queue)
             ();
         }},
    });
    free(item);
}

TEST(NeedsNoMemoryEither, TheCapture) {
    const support::OutputCapture output;
    const support::TempDir directory;
    std::string path = directory.Path() + "/capture";
    uint8_t command[] = {1, 0x03, 0x0C, 0};
    uint8_t event[] = {4, 0x0E, 1, 0};
    uint8_t acl[] = {2, 1, 0, 1, 0, 0};
    uint8_t sco[] = {3, 1, 0, 1, 0};
    ExpectNoMemoryNeeded({
        {"init",
         [] {
             CALL(vym_debug_init)
             ();
         }},
        {"status", [] { EXPECT_EQ(CALL(get_vym_debug_status)(), 1); }},
        {"set status",
         [] {
             CALL(set_vym_debug_status)
             (1);
         }},
        {"open",
         [&] {
             CALL(vym_debug_open)
             (path.data());
         }},
        {"is open", [] { EXPECT_EQ(CALL(vym_debug_is_open)(), 1); }},
        {"descriptor", [] { EXPECT_GT(*CALL(hci_vym_debug_fd), 0); }},
        {"capture",
         [&] {
             CALL(vym_debug_capture)
             (command, sizeof command, 0);
         }},
        {"command",
         [&] {
             CALL(vym_debug_hci_cmd)
             (command + 1);
         }},
        {"event",
         [&] {
             CALL(vym_debug_hci_evt)
             (event + 1);
         }},
        {"acl",
         [&] {
             CALL(vym_debug_acl_data)
             (acl + 1, 1);
         }},
        {"sco",
         [&] {
             CALL(vym_debug_sco_data)
             (sco + 1, 1);
         }},
        {"close",
         [] {
             CALL(vym_debug_close)
             ();
         }},
        {"log open", [&] { EXPECT_EQ(CALL(vym_debug_log_open)(path.data()), 1); }},
        {"log close", [] { EXPECT_EQ(CALL(vym_debug_log_close)(), 1); }},
        {"cleanup",
         [] {
             CALL(vym_debug_cleanup)
             ();
         }},
        {"dump",
         [&] {
             CALL(hex_dump)
             (command, sizeof command);
         }},
    });
}

// Named like the other tests that listen on the one port.
TEST(ExternalParserWithoutMemory, ListensAndStops) {
    const CountedAllocations needed;
    std::atomic<bool> ended{false};
    std::thread listener([&ended] {
        CALL(ext_parser_thread)(nullptr);
        ended = true;
    });
    EXPECT_EQ(CALL(send_ext_parser)(nullptr, 0), 0);
    EXPECT_TRUE(support::WaitUntil([&ended] {
        CALL(vym_debug_stop_listener)(); // one that has not begun to listen takes no notice
        return ended.load();
    }));
    listener.join();
    EXPECT_EQ(needed.Asked(), 0);
}

} // namespace
