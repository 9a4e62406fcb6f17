// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// That every exported function is exercised, and those that concern no single profile: start and stop,
// internal events, diagnosis.

#include "e2e/every_function.h"
#include "internal_ev_process.h"
#include "support/capture_reader.h"
#include "support/text.h"
#include "vym_debug.h"
#include "vym_pbap_queue.h"

#include <arpa/inet.h>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>
#include <sched.h>
#include <string>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <vector>

namespace {

using e2e::Heard;
using e2e::kPhone;

TEST(EveryExport, IsExercisedAndNothingElse) {
    support::ExpectEveryExportExercised(VYM_EXPORTS, {first_exercised, end_of_exercised});
}

class EveryStartAndStop : public ::testing::Test {
protected:
    void SetUp() override { Heard().Reset(); }
    void TearDown() override { vym_sdk_done(); }

    [[nodiscard]] const std::string& Directory() const { return sim_.Directory(); }

    void Send(const std::string& event) {
        EXPECT_EQ(e2e::OrderOf(Directory(), "event " + event), "ok\n");
    }
    [[nodiscard]] bool Notes(const std::string& text) {
        return support::WaitUntil([&] { return sim_.Program().Err().find(text) != std::string::npos; });
    }

    support::OutputCapture output_;
    e2e::Callbacks callbacks_;
    e2e::RunningSim sim_{{"--log"}};
};

TEST_F(EveryStartAndStop, TheLibraryConnectsAndDisconnects) {
    EXPECT_GT(CALL(vym_sdk_init_ex)(Directory().c_str()), 0);
    EXPECT_TRUE(Notes("   client connected\n"));
    CALL(vym_sdk_done)();
    EXPECT_TRUE(Notes("   client left\n"));
}

TEST_F(EveryStartAndStop, TheDefaultDirectoryIsEtcBackup) {
    const std::string root = Directory();
    std::filesystem::create_directories(root + "/etc/backup");
    std::filesystem::create_hard_link(root + "/vym_socket", root + "/etc/backup/vym_socket");
    const pid_t child = fork();
    if (child == 0) {
        const bool inside =
            chroot(root.c_str()) == 0 || (unshare(CLONE_NEWUSER) == 0 && chroot(root.c_str()) == 0);
        const bool connected = inside && chdir("/") == 0 && CALL(vym_sdk_init)() > 0;
        vym_bluetooth_enable();
        vym_sdk_done();
        _exit(connected ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "changing the root directory needs root or user namespaces";
    EXPECT_TRUE(Notes("<- bluetooth enable\n"));
}

TEST_F(EveryStartAndStop, TheAdapterHearsEventsFromItsStartToItsEnd) {
    EXPECT_GT(vym_sdk_init_ex(Directory().c_str()), 0);
    vym_hfp_init(&callbacks_.hfp);
    CALL(vym_bluetooth_init)(&callbacks_.bluetooth);
    Send("PVone");
    EXPECT_TRUE(Heard().WaitAndRemove("bluetooth.bt_version(\"one\")"));
    CALL(vym_bluetooth_done)();
    Send("PVtwo");
    Send("HM3");
    EXPECT_TRUE(Heard().WaitForExactly({"hfp.clip(\"3\")"}));
    vym_hfp_done();
}

struct Profile {
    const char* name;
    void (*start)(e2e::Callbacks& callbacks);
    void (*stop)();
    const char* event;
    const char* heard;
};

void PrintTo(const Profile& profile, std::ostream* out) {
    *out << profile.name;
}

const Profile kProfiles[] = {
    {"HandsFree",
     [](e2e::Callbacks& c) {
         CALL(vym_hfp_init)
         (&c.hfp);
     },
     CALL(vym_hfp_done), "HM7", "hfp.clip(\"7\")"},
    {"Music",
     [](e2e::Callbacks& c) {
         CALL(vym_a2dp_init)
         (&c.a2dp);
     },
     CALL(vym_a2dp_done), "AA2A416E6E610103", "a2dp.connection_state_changed(2A416E6E6101, 3)"},
    {"RemoteControl",
     [](e2e::Callbacks& c) {
         CALL(vym_avrcp_init)
         (&c.avrcp);
     },
     CALL(vym_avrcp_done), "RC012A416E6E6101", "avrcp.connection_state_changed(1, 2A416E6E6101)"},
    {"PhoneBook",
     [](e2e::Callbacks& c) {
         CALL(vym_pbap_init)
         (&c.pbap);
     },
     CALL(vym_pbap_done), "TE000600320000", "pbap.get_phonebook_size(6, 50, 0)"},
    {"Serial",
     [](e2e::Callbacks& c) {
         CALL(vym_rfcomm_init)
         (&c.rfcomm);
     },
     CALL(vym_rfcomm_done), "SM2A416E6E61010000110100001000800000805F9B34FB0B",
     "rfcomm.rfcomm_fetch_channels(2A416E6E6101, 1101, 11)"},
    {"GattClient",
     [](e2e::Callbacks& c) {
         CALL(vym_gatt_client_init)
         (&c.gatt_client);
     },
     CALL(vym_gatt_client_done), "KZA0007", "gatt_client.advertise_callback(0, 7)"},
    {"GattServer",
     [](e2e::Callbacks& c) {
         CALL(vym_gatt_server_init)
         (&c.gatt_server);
     },
     CALL(vym_gatt_server_done), "JN000105", "gatt_server.notification_sent(1, 5)"},
    {"Hid",
     [](e2e::Callbacks& c) {
         CALL(vym_hid_init)
         (&c.hid);
     },
     CALL(vym_hid_done), "DB2E4C70746F7000000002", "hid.hid_connection_state(2E4C70746F70, 2)"},
};

class EveryProfile : public EveryStartAndStop, public ::testing::WithParamInterface<Profile> {};

TEST_P(EveryProfile, HearsEventsFromItsStartToItsEnd) {
    EXPECT_GT(vym_sdk_init_ex(Directory().c_str()), 0);
    vym_bluetooth_init(&callbacks_.bluetooth);
    GetParam().start(callbacks_);
    Send(GetParam().event);
    EXPECT_TRUE(Heard().WaitForExactly({GetParam().heard}));
    Heard().Take();
    GetParam().stop();
    Send(GetParam().event);
    Send("PVbehind");
    EXPECT_TRUE(Heard().WaitForExactly({"bluetooth.bt_version(\"behind\")"}));
    vym_bluetooth_done();
}

INSTANTIATE_TEST_SUITE_P(OfTheLibrary, EveryProfile, ::testing::ValuesIn(kProfiles),
                         [](const auto& one) { return std::string(one.param.name); });

TEST_F(EveryStartAndStop, InternalEventsReachTheirHandlers) {
    uint8_t data[] = {5, 6};
    CALL(vym_internal_event_done)();
    EXPECT_EQ(CALL(vym_internal_event_send)(9, sizeof data, data), 0);
    CALL(vym_internal_event_init)();
    EXPECT_EQ(vym_internal_event_send(9, sizeof data, data), 1);
    vym_internal_event_done();

    EXPECT_GT(vym_sdk_init_ex(Directory().c_str()), 0);
    const internal_event_callback first = [](ev_data_t* ev) {
        Heard().Add(e2e::CallText("first", ev->type, ev->len, ev->value));
    };
    const internal_event_callback second = [](ev_data_t* ev) {
        Heard().Add(e2e::CallText("second", ev->type));
    };
    CALL(vym_internal_event_register)(first);
    vym_internal_event_register(second);
    EXPECT_EQ(vym_internal_event_send(9, sizeof data, data), 1);
    EXPECT_TRUE(Heard().WaitForExactly({"second(9)", "first(9, 2, 0506)"}));
    CALL(vym_internal_event_unregister)(first);
    EXPECT_EQ(vym_internal_event_send(8, 0, nullptr), 1);
    EXPECT_TRUE(Heard().WaitForExactly({"second(9)", "first(9, 2, 0506)", "second(8)"}));
}

TEST_F(EveryStartAndStop, PacketsOfTheApplicationAreCapturedToo) {
    EXPECT_GT(vym_sdk_init_ex(Directory().c_str()), 0);
    EXPECT_GT(*CALL(hci_vym_debug_fd), 0);
    EXPECT_EQ(CALL(vym_debug_is_open)(), 1);
    unsigned char command[] = {0x03, 0x0C, 0};
    unsigned char event[] = {0x0E, 1, 7};
    unsigned char voice[] = {1, 0, 2, 8, 9};
    unsigned char data[] = {1, 0, 2, 0, 8, 9};
    unsigned char whole[] = {1, 0x03, 0x0C, 1, 6};
    CALL(vym_debug_hci_cmd)(command);
    CALL(vym_debug_hci_evt)(event);
    CALL(vym_debug_sco_data)(voice, 1);
    CALL(vym_debug_acl_data)(data, 0);
    CALL(vym_debug_capture)(whole, sizeof whole, 0);
    EXPECT_EQ(CALL(vym_debug_log_close)(), 1);
    EXPECT_EQ(vym_debug_log_close(), 0);
    EXPECT_EQ(*CALL(hci_vym_debug_fd), -1);
    std::vector<std::string> packets;
    for (const auto& record : support::ReadCapture(Directory() + "/client_sock.log").records) {
        packets.push_back(support::Escaped(record.packet));
    }
    EXPECT_EQ(packets, (std::vector<std::string>{
                           "\\x01\\x03\\x0C\\0", "\\x04\\x0E\\x01\\x07", "\\x03\\x01\\0\\x02\\x08\\x09",
                           "\\x02\\x01\\0\\x02\\0\\x08\\x09", "\\x01\\x03\\x0C\\x01\\x06"}));
}

TEST_F(EveryStartAndStop, ACaptureIsOpenedAndClosed) {
    std::string path = Directory() + "/own.log";
    CALL(vym_debug_open)(path.data());
    EXPECT_EQ(vym_debug_is_open(), 1);
    CALL(vym_debug_close)();
    EXPECT_EQ(vym_debug_is_open(), 0);
    EXPECT_EQ(support::ReadCapture(path).header.substr(0, 7), "btsnoop");
    path = Directory() + "/none/own.log";
    EXPECT_EQ(CALL(vym_debug_log_open)(path.data()), 0);
}

TEST_F(EveryStartAndStop, TheDebugStatusIsKeptAndBytesArePrinted) {
    CALL(vym_debug_init)();
    EXPECT_EQ(CALL(get_vym_debug_status)(), 1);
    CALL(set_vym_debug_status)(7);
    EXPECT_EQ(get_vym_debug_status(), 7);
    CALL(vym_debug_cleanup)();
    EXPECT_EQ(get_vym_debug_status(), 0);
    CALL(hex_dump)(e2e::Bytes("vym"), 3);
    EXPECT_NE(output_.Out().find("76 79 6d"), std::string::npos) << output_.Out();
}

TEST(ExternalParserFunctions, SendToWhoeverListens) {
    const int turn = open("/tmp/vym-parser-port.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    ASSERT_EQ(flock(turn, LOCK_EX), 0);
    std::thread listener([] { CALL(ext_parser_thread)(nullptr); });
    const int parser = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(4338);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_TRUE(support::WaitUntil([&] {
        return connect(parser, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }));
    char text[] = "x";
    EXPECT_TRUE(support::WaitUntil([&text] { return CALL(send_ext_parser)(text, 1) == 1; }));
    EXPECT_EQ(recv(parser, text, 1, 0), 1);
    CALL(vym_debug_stop_listener)();
    listener.join();
    EXPECT_EQ(recv(parser, text, 1, 0), 0) << "it is disconnected";
    close(parser);
    close(turn);
}

NODESTRU* NewNode(const bt_bdaddr_t& address) {
    auto* node = static_cast<NODESTRU*>(calloc(1, sizeof(NODESTRU)));
    node->address = address;
    return node;
}

TEST(EveryPhoneBookTool, AListOfPhonesIsKept) {
    LISTSTRU phones{};
    NODESTRU* phone = NewNode(kPhone);
    CALL(Pbap_List_AddTail)(&phones, phone);
    Pbap_List_AddTail(&phones, NewNode(e2e::kLaptop));
    EXPECT_EQ(CALL(Pbap_List_GetSize)(&phones), 2);
    EXPECT_EQ(CALL(Pbap_List_GetNodeByAddress)(&phones, kPhone), phone);
    EXPECT_EQ(CALL(Pbap_List_RemoveNodeByAddress)(&phones, kPhone), phone);
    free(phone);
    EXPECT_EQ(Pbap_List_GetNodeByAddress(&phones, kPhone), nullptr);
    CALL(Pbap_List_RemoveAll)(&phones);
    EXPECT_EQ(Pbap_List_GetSize(&phones), 0);
}

TEST(EveryPhoneBookTool, AQueueOfWorkIsWaitedForAndRead) {
    CALL(start_pbap_queue)();
    pbap_queue_t item{};
    item.parse_index = 4;
    std::thread worker([&item] {
        CALL(pbap_thread_wait)();
        EXPECT_EQ(CALL(readfrom_pbap_queue)(), &item);
        pbap_thread_wait();
        EXPECT_EQ(readfrom_pbap_queue(), nullptr);
    });
    CALL(writeto_pbap_queue)(&item);
    CALL(pbap_thread_post)();
    worker.join();
    pbap_thread_post();
    int waiting = 0;
    EXPECT_EQ(sem_getvalue(CALL(sem), &waiting), 0);
    EXPECT_EQ(waiting, 1) << "it is the library's own semaphore";
    CALL(stop_pbap_queue)();
}

} // namespace
