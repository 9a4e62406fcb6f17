// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "threads/functions.h"

#include "support/end_all.h"
#include "support/text.h"
#include "vym_pbap_queue.h"
#include "vym_sdk.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

namespace threads {
namespace {

using e2e::Heard;

Stage* s_stage;

constexpr bt_bdaddr_t kPhone{{6, 5, 4, 3, 2, 1}};
constexpr uint8_t kChannel = 5;

// Takes what is there; false at the end of the stream.
bool TakeAll(int fd) {
    std::array<char, 65536> room{};
    return recv(fd, room.data(), room.size(), MSG_DONTWAIT) != 0;
}

} // namespace

Stage& Stage::Now() {
    return *s_stage;
}

Stage::Stage() : server_(directory_.Path()) {
    s_stage = this;
    Heard().Reset();
    connection_ = vym_sdk_init_ex(Directory().c_str());
    EXPECT_GT(connection_, 0);
    EXPECT_TRUE(server_.Accept());
    drain_ = std::thread([this] { Drain(); });
    e2e::StartProfiles(table_);
    vym_audio_stream_init(&table_.audio);
    start_pbap_queue();
    HandOver(1, audio_);
    HandOver(0, serial_);
}

Stage::~Stage() {
    end_all();
    stop_pbap_queue();
    while (pbap_queue_t* item = readfrom_pbap_queue()) {
        free(item);
    }
    CloseServerSocket();
    ended_ = true;
    drain_.join();
    Heard().Reset();
    s_stage = nullptr;
}

void Stage::Drain() {
    bool open = true;
    while (!ended_) {
        std::array<pollfd, 3> entries{{{open ? server_.ClientFd() : -1, POLLIN, 0},
                                       {audio_.Near(), POLLIN, 0},
                                       {serial_.Near(), POLLIN, 0}}};
        poll(entries.data(), entries.size(), 20);
        open = open && TakeAll(server_.ClientFd());
        TakeAll(audio_.Near());
        TakeAll(serial_.Near());
    }
}

void Stage::ExpectHandled() {
    const std::string version = std::to_string(++versions_);
    server_.SendEvents({"PV" + version});
    EXPECT_TRUE(Heard().WaitForEntry("bluetooth.bt_version(\"" + version + "\")"));
}

void Stage::Tell(const std::string& event) {
    server_.SendEvents({event});
    ExpectHandled();
}

void Stage::HandOver(int id, const support::SocketPair& pair) {
    server_.SendEvents({"PD0" + std::to_string(id) + "00000007"});
    server_.SendDescriptor(pair.Far());
    ExpectHandled();
}

// The result is there before anybody waits for it.
void Stage::MakeSocket() {
    Tell("SE0001020304050605000000770100010007" + std::string("0700"));
    socket_ = vym_rfcomm_connect(kPhone, {}, kChannel);
    EXPECT_NE(Socket(), nullptr);
}

void Stage::MakeServerSocket() {
    char name[] = "name";
    Tell("SL0005");
    server_socket_ = vym_rfcomm_listen({}, kChannel, name);
    EXPECT_NE(ServerSocket(), nullptr);
}

// The phone's state asks for the list of calls, whose end makes it valid.
void Stage::Ring() {
    server_.SendEvents({"HX06", "HO010104001", "HQ0015"});
    ExpectHandled();
}

void Stage::CloseServerSocket() {
    vym_rfcomm_server_close(server_socket_.exchange(nullptr));
}

} // namespace threads
