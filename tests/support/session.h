// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#ifndef VYM_TESTS_SUPPORT_SESSION_H
#define VYM_TESTS_SUPPORT_SESSION_H

#include "support/adapter_record.h"
#include "support/fake_server.h"
#include "support/leak_check.h"
#include "support/output_capture.h"
#include "support/temp_dir.h"

#include <memory>
#include <string>

namespace support {

/**
 * A library that is started against a fake server: directory, server, vym_sdk_init_ex(), accepted
 * connection; shut down with the object. One at a time, for the library is one per process.
 */
class ClientSession {
public:
    ClientSession();
    ~ClientSession();
    ClientSession(const ClientSession&) = delete;
    ClientSession& operator=(const ClientSession&) = delete;
    ClientSession(ClientSession&&) = delete;
    ClientSession& operator=(ClientSession&&) = delete;

    [[nodiscard]] const std::string& Directory() const { return directory_.Path(); }
    [[nodiscard]] std::string CapturePath() const { return Directory() + "/client_sock.log"; }
    [[nodiscard]] FakeServer& Server() { return server_; }

    /** What vym_sdk_init_ex() returned last. */
    [[nodiscard]] int Result() const { return result_; }

    /** Starts the adapter module with a table that records into Adapter(). */
    void StartAdapter();
    void StopAdapter();

    /** What the adapter's callbacks left; see adapter_record.h for the form of the entries. */
    [[nodiscard]] Recorder& Adapter() { return AdapterRecord(); }

    /** All events sent so far have been handled: one more is sent and its callback awaited. Needs the
     *  adapter; leaves no entry behind. */
    [[nodiscard]] ::testing::AssertionResult EventsAreHandled();

    /** Shuts the library down and starts it again; the adapter, if it was started, as well. */
    [[nodiscard]] bool Restart();

    /** Shuts the adapter and the library down; harmless when done before. */
    void Stop();

private:
    [[nodiscard]] bool Start();

    TempDir directory_;
    FakeServer server_;
    int result_ = -1;
    bool started_ = false;
    bool adapter_started_ = false;
};

/** Every test of a session: output kept apart, shut down afterwards, and nothing may be left over. */
class SessionTest : public ::testing::Test {
protected:
    SessionTest();
    ~SessionTest() override;

    void SetUp() override;
    void TearDown() override;

    /** Runs when the library and the server are gone and before descriptors are compared. */
    virtual void AfterStop(const LeakCheck& leaks);

    [[nodiscard]] ClientSession& Session() { return *session_; }
    [[nodiscard]] FakeServer& Server() { return session_->Server(); }
    [[nodiscard]] Recorder& Adapter() { return session_->Adapter(); }
    [[nodiscard]] OutputCapture& Output() { return *output_; }

private:
    std::unique_ptr<OutputCapture> output_;
    std::unique_ptr<LeakCheck> leaks_;
    std::unique_ptr<ClientSession> session_;
};

/** The same with the adapter module started. */
class AdapterTest : public SessionTest {
protected:
    void SetUp() override;
};

/** For tests that start and stop the library themselves: output kept apart, nothing may be left over.
 */
class QuietTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    [[nodiscard]] OutputCapture& Output() { return *output_; }

private:
    std::unique_ptr<OutputCapture> output_;
    std::unique_ptr<LeakCheck> leaks_;
};

} // namespace support

#endif
