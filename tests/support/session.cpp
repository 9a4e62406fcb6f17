// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/session.h"

#include "vym_bluetooth.h"
#include "vym_sdk.h"

namespace support {

ClientSession::ClientSession() : server_(directory_.Path()) {
    EXPECT_TRUE(Start());
}

ClientSession::~ClientSession() {
    Stop();
    AdapterRecord().Reset();
}

bool ClientSession::Start() {
    result_ = vym_sdk_init_ex(directory_.Path().c_str());
    started_ = true;
    return result_ > 0 && server_.Accept();
}

void ClientSession::StartAdapter() {
    vym_bluetooth_init(AdapterRecordingTable());
    adapter_started_ = true;
}

void ClientSession::StopAdapter() {
    if (adapter_started_) {
        vym_bluetooth_done();
        adapter_started_ = false;
    }
}

::testing::AssertionResult ClientSession::EventsAreHandled() {
    // A state that no server sends, so that it is not mistaken for the test's own.
    server_.Send(Event("BEEE"));
    return AdapterRecord().WaitAndRemove("discovery_state_changed(238)");
}

bool ClientSession::Restart() {
    const bool with_adapter = adapter_started_;
    Stop();
    const bool connected = Start();
    if (with_adapter) {
        StartAdapter();
    }
    return connected;
}

void ClientSession::Stop() {
    StopAdapter();
    if (started_) {
        vym_sdk_done();
        started_ = false;
    }
}

SessionTest::SessionTest() = default;
SessionTest::~SessionTest() = default;

void SessionTest::SetUp() {
    output_ = std::make_unique<OutputCapture>();
    leaks_ = std::make_unique<LeakCheck>();
    session_ = std::make_unique<ClientSession>();
}

void SessionTest::TearDown() {
    session_.reset();
    AfterStop(*leaks_);
    EXPECT_TRUE(leaks_->NothingLeft());
    output_.reset();
}

void SessionTest::AfterStop(const LeakCheck& /*leaks*/) {}

void AdapterTest::SetUp() {
    SessionTest::SetUp();
    Session().StartAdapter();
}

void QuietTest::SetUp() {
    output_ = std::make_unique<OutputCapture>();
    leaks_ = std::make_unique<LeakCheck>();
}

void QuietTest::TearDown() {
    EXPECT_TRUE(leaks_->NothingLeft());
    output_.reset();
}

} // namespace support
