// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The connected phones as the server's events make them known, with the nodes that stay behind.

#include "vym_pbap_impl.h"
#include "wire/pbap_profile.h"

#include <atomic>
#include <thread>

namespace {

const std::string kPhoneA = "A1B2C3D4E5F6";
const std::string kPhoneB = "0A1B2C3D4E5F";
const std::string kPhoneC = "001122334455";

class PbapConnections : public wire::ProfileConformance<wire::PbapProfile> {
protected:
    void Status(const std::string& status, const std::string& phone) {
        Server().Send(support::Event("TS" + status + phone));
        EXPECT_TRUE(Session().EventsAreHandled());
    }
    void Connect(const std::string& phone) { Status("00", phone); }
    void Disconnect(const std::string& phone) { Status("01", phone); }

    // How often the library has printed that a phone connects which is connected.
    size_t Repeated() {
        const std::string line = "PBAP: on_connection_status_cbk  device connection state error\n";
        const std::string out = Output().Out();
        size_t count = 0;
        for (size_t at = out.find(line); at != std::string::npos; at = out.find(line, at + 1)) {
            ++count;
        }
        return count;
    }

    void ExpectConnections(int count) {
        EXPECT_EQ(vym_pbap_count_connections(), count);
        EXPECT_EQ(vym_pbap_is_connected(), count > 0 ? 1 : 0);
    }
};

TEST_F(PbapConnections, OnePhoneComesAndGoes) {
    ExpectConnections(0);
    Connect(kPhoneA);
    ExpectConnections(1);
    Disconnect(kPhoneA);
    ExpectConnections(0);
    EXPECT_EQ(wire::ProfileRecord().Take(),
              (std::vector<std::string>{"connection_status(0, A1B2C3D4E5F6)",
                                        "connection_status(1, A1B2C3D4E5F6)"}));
}

TEST_F(PbapConnections, EveryStatusButZeroIsADisconnection) {
    for (const char* status : {"01", "02", "80", "FF"}) {
        Connect(kPhoneA);
        ExpectConnections(1);
        Status(status, kPhoneA);
        ExpectConnections(0);
    }
}

TEST_F(PbapConnections, AnUnknownPhoneThatGoesChangesNothing) {
    Disconnect(kPhoneB);
    ExpectConnections(0);
    Connect(kPhoneA);
    Disconnect(kPhoneB);
    ExpectConnections(1);
}

TEST_F(PbapConnections, APhoneThatConnectsTwiceIsReportedAndCountedOnce) {
    Connect(kPhoneA);
    EXPECT_EQ(Repeated(), 0U);
    Connect(kPhoneA);
    EXPECT_EQ(Repeated(), 1U);
    ExpectConnections(1);
    EXPECT_EQ(wire::ProfileRecord().Take().size(), 2U) << "the application hears of both";
    Disconnect(kPhoneA);
    ExpectConnections(0);
}

TEST_F(PbapConnections, APhoneBehindAnotherStaysCounted) {
    Connect(kPhoneA);
    Connect(kPhoneB);
    Disconnect(kPhoneB);
    ExpectConnections(2);
    // It is still found, so that it cannot connect again.
    Connect(kPhoneB);
    EXPECT_EQ(Repeated(), 1U);
    ExpectConnections(2);
    Disconnect(kPhoneA);
    ExpectConnections(1);
    Disconnect(kPhoneB);
    ExpectConnections(0);
}

TEST_F(PbapConnections, ThePhoneInFrontIsReallyGone) {
    Connect(kPhoneA);
    Connect(kPhoneB);
    Disconnect(kPhoneA);
    ExpectConnections(1);
    Connect(kPhoneA);
    EXPECT_EQ(Repeated(), 0U);
    ExpectConnections(2);
}

TEST_F(PbapConnections, APhoneLeftBehindIsLostWhenTheNextOneComes) {
    Connect(kPhoneA);
    Connect(kPhoneB);
    Disconnect(kPhoneB);
    Disconnect(kPhoneA);
    ExpectConnections(1);
    Connect(kPhoneC);
    ExpectConnections(1);
    Connect(kPhoneB);
    EXPECT_EQ(Repeated(), 0U) << "the lost node is not found any more";
    ExpectConnections(2);
    Disconnect(kPhoneC);
    Disconnect(kPhoneB);
    ExpectConnections(0);
}

TEST_F(PbapConnections, PhonesThatComeAndGoUseNoMoreMemory) {
    for (int i = 0; i < 100; ++i) {
        Server().SendEvents({"TS00" + kPhoneA, "TS00" + kPhoneB, "TS01" + kPhoneB, "TS01" + kPhoneA,
                             "TS00" + kPhoneC, "TS01" + kPhoneC});
    }
    EXPECT_TRUE(Session().EventsAreHandled());
    ExpectConnections(0);
    EXPECT_LE(vym_pbap_count_nodes(), 3);
    vym_pbap_done();
    EXPECT_EQ(vym_pbap_count_nodes(), 0);
}

TEST_F(PbapConnections, TheApplicationHearsBeforeTheListChanges) {
    static std::vector<int> seen;
    seen.clear();
    pbap_callback_t table = {};
    table.connection_status_cb = [](uint8_t, bt_bdaddr_t) { seen.push_back(vym_pbap_is_connected()); };
    vym_pbap_init(&table);
    Connect(kPhoneA);
    Disconnect(kPhoneA);
    Connect(kPhoneA);
    Disconnect(kPhoneA);
    EXPECT_EQ(seen, (std::vector<int>{0, 1, 0, 1}));
    ExpectConnections(0);
    vym_pbap_done();
}

TEST_F(PbapConnections, AreCountedWithoutAnyoneToTell) {
    wire::PbapProfile::Init(wire::Table::kEmpty);
    Connect(kPhoneA);
    ExpectConnections(1);
    wire::PbapProfile::Init(wire::Table::kNone);
    ExpectConnections(0);
    Connect(kPhoneA);
    Connect(kPhoneA);
    ExpectConnections(1);
    EXPECT_EQ(Repeated(), 1U);
}

TEST_F(PbapConnections, AreForgottenByDoneAndByInit) {
    Connect(kPhoneA);
    Connect(kPhoneB);
    Disconnect(kPhoneB);
    wire::PbapProfile::Init(wire::Table::kWhole);
    ExpectConnections(0);
    Connect(kPhoneA);
    Connect(kPhoneB);
    vym_pbap_done();
    ExpectConnections(0);
    vym_pbap_done();
    ExpectConnections(0);
    wire::PbapProfile::Init(wire::Table::kWhole);
    Connect(kPhoneB);
    ExpectConnections(1);
    EXPECT_EQ(Repeated(), 0U);
}

TEST_F(PbapConnections, MayBeAskedForFromAnyThread) {
    std::atomic<bool> stop{false};
    std::atomic<bool> sane{true};
    std::thread asking([&] {
        while (!stop) {
            const int answer = vym_pbap_is_connected();
            if (answer != 0 && answer != 1) {
                sane = false;
            }
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 50; ++i) {
        Server().SendEvents({"TS00" + kPhoneA, "TS00" + kPhoneB, "TS01" + kPhoneA, "TS01" + kPhoneB});
    }
    EXPECT_TRUE(Session().EventsAreHandled());
    vym_pbap_done();
    stop = true;
    asking.join();
    EXPECT_TRUE(sane);
    ExpectConnections(0);
}

} // namespace
