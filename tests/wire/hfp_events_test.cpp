// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The hands-free events, each with the callback that comes of it and the commands it causes.

#include "internal_ev_process.h"
#include "vym_hfp_impl.h"
#include "wire/hfp_profile.h"

#include <atomic>
#include <regex>
#include <sstream>
#include <thread>

namespace wire {

INSTANTIATE_TYPED_TEST_SUITE_P(Hfp, ProfileConformance, HfpProfile, );

} // namespace wire

namespace {

using wire::ProfileRecord;
using Entries = std::vector<std::string>;

class HfpEvents : public wire::ProfileConformance<wire::HfpProfile> {
protected:
    void Event(const std::string& event) { Server().Send(support::Event(event)); }
    void ExpectQuery() { Server().ExpectCommand("AT#HK\r\n"); }
    void ExpectNoQuery() {
        EXPECT_TRUE(Session().EventsAreHandled());
        Server().ExpectNothingMore();
    }
    // A connection whose gate is open and whose first query has been answered with these lines.
    void ConnectWithCalls(const Entries& lines) {
        for (const char* event : {"HA0200000003000001FFA1B2C3D4E5F6", "HI00", "HJ00", "HK00"}) {
            Event(event);
        }
        ExpectQuery();
        Answer(lines);
        EXPECT_TRUE(Session().EventsAreHandled());
        ProfileRecord().Take();
    }
    void Answer(const Entries& lines, const std::string& completion = "HQ0015") {
        for (const std::string& line : lines) {
            Event(line);
        }
        Event(completion);
    }
    // How many lines of the output are like this and end with CR LF.
    size_t LinesMatching(const std::string& pattern) {
        const std::regex expression(pattern + "\r");
        std::istringstream out(Output().Out());
        size_t count = 0;
        for (std::string line; std::getline(out, line);) {
            count += !out.eof() && std::regex_match(line, expression) ? 1U : 0U;
        }
        return count;
    }
};

const std::string kTime = R"(\[\[\d\d:\d\d:\d\d:\d+\]\])";

TEST_F(HfpEvents, TheThirdIndicatorOfAnyKindOpensTheGate) {
    Event("HK01");
    Event("HK01");
    ExpectNoQuery();
    Event("HK01");
    ExpectQuery();
    Event("HQ0015");
    Event("HI01");
    ExpectQuery();
    Event("HQ0015");
    Event("HJ03");
    ExpectQuery();
    ExpectNoQuery();
}

TEST_F(HfpEvents, AnIndicatorOfFfIsAnIndicator) {
    Event("HIFF");
    Event("HJFF");
    ExpectNoQuery();
    Event("HKFF");
    ExpectQuery();
    Event("HQ0015");
    Event("HIFF");
    ExpectQuery();
    EXPECT_EQ(LinesMatching(kTime + "query_calls_start->start"), 2U);
}

TEST_F(HfpEvents, AnIndicatorThatIsTooShortDoesNotCount) {
    Event("HI0");
    Event("HI01");
    Event("HJ01");
    ExpectNoQuery();
    Event("HK01");
    ExpectQuery();
}

TEST_F(HfpEvents, ANewConnectionClosesTheGateAgain) {
    ConnectWithCalls({});
    Event("HA0200000003000001FFA1B2C3D4E5F6");
    Event("HI01");
    Event("HJ00");
    ExpectNoQuery();
    Event("HK00");
    ExpectQuery();
}

TEST_F(HfpEvents, InitAndDoneCloseTheGateAgain) {
    ConnectWithCalls({});
    wire::HfpProfile::Init(wire::Table::kWhole);
    Event("HI01");
    Event("HJ00");
    ExpectNoQuery();
    Event("HK00");
    ExpectQuery();
    vym_hfp_done(); // forgets the running query as well
    wire::HfpProfile::Init(wire::Table::kWhole);
    Event("HI01");
    ExpectNoQuery();
    Event("HX09");
    ExpectQuery();
}

TEST_F(HfpEvents, OtherStatesOfTheConnectionLeaveTheGateOpen) {
    ConnectWithCalls({});
    Event("HA0300000003000001FFA1B2C3D4E5F6");
    Event("HI01");
    ExpectQuery();
    ExpectNoQuery();
}

TEST_F(HfpEvents, WhileAQueryRunsAnotherIsDropped) {
    ConnectWithCalls({});
    Event("HI01");
    ExpectQuery();
    Event("HJ01");
    Event("HX06");
    ExpectNoQuery();
    EXPECT_EQ(LinesMatching(kTime + "query_calls_start->is querying, return"), 2U);
    Event("HQ0015"); // and no query follows by itself
    ExpectNoQuery();
}

TEST_F(HfpEvents, StatesOfThePhoneStartQueriesAndLeaveTheirLine) {
    for (const char* state : {"HX06", "HX07", "HX08", "HX09", "HX0A"}) {
        Event(state);
        ExpectQuery();
        Event("HQ0015");
    }
    for (const char* state : {"HX05", "HX04", "HX0B", "HX10", "HX00"}) {
        Event(state);
    }
    ExpectNoQuery();
    for (const char* line : {"5", "6", "7", "8"}) {
        EXPECT_EQ(LinesMatching(std::string("on_hfp_state_change_cbk -- 545 state=") + line), 1U)
            << line;
    }
    EXPECT_EQ(LinesMatching("on_hfp_state_change_cbk.*"), 4U);
}

TEST_F(HfpEvents, InternalEventOneRefreshesTheListAndOthersDoNot) {
    uint8_t value = 7;
    EXPECT_EQ(vym_internal_event_send(2, 0, nullptr), 1);
    EXPECT_EQ(vym_internal_event_send(1, 1, &value), 1);
    ExpectQuery();
    ExpectNoQuery();
}

TEST_F(HfpEvents, InternalEventOneIsDroppedWhileAQueryRuns) {
    Event("HX09");
    ExpectQuery();
    EXPECT_EQ(vym_internal_event_send(1, 0, nullptr), 1);
    EXPECT_TRUE(support::WaitUntil(
        [this] { return LinesMatching(kTime + "query_calls_start->is querying, return") == 1; }));
    ExpectNoQuery();
}

TEST_F(HfpEvents, InitialisedTwiceInternalEventOneAsksOnce) {
    wire::HfpProfile::Init(wire::Table::kWhole);
    EXPECT_EQ(vym_internal_event_send(1, 0, nullptr), 1);
    ExpectQuery();
    ExpectNoQuery();
    EXPECT_EQ(LinesMatching(kTime + "query_calls_start->is querying, return"), 0U);
}

TEST_F(HfpEvents, NoInternalEventIsNone) {
    internal_ev_process_callback(nullptr);
    ExpectNoQuery();
}

TEST_F(HfpEvents, AfterDoneInternalEventOneSendsNothing) {
    vym_hfp_done();
    EXPECT_EQ(vym_internal_event_send(1, 0, nullptr), 1);
    ExpectNoQuery();
}

TEST_F(HfpEvents, ANetworkAsksForTheOperatorBeforeTheApplicationHears) {
    ProfileRecord().SetHook([](const std::string&) { vym_hfp_query_last_voice_tag_name(); });
    Event("HD01");
    Server().ExpectCommand("AT#HL\r\n");
    Server().ExpectCommand("AT#HO\r\n");
    Event("HD02");
    Server().ExpectCommand("AT#HO\r\n");
    EXPECT_TRUE(Session().EventsAreHandled());
    Server().ExpectNothingMore();
    EXPECT_EQ(LinesMatching("on_network_state_cbk:1"), 1U);
    EXPECT_EQ(LinesMatching("on_network_state_cbk:2"), 1U);
}

TEST_F(HfpEvents, WithoutATableTheOperatorIsAskedForAllTheSame) {
    vym_hfp_done();
    vym_hfp_init(nullptr);
    Event("HD01");
    Server().ExpectCommand("AT#HL\r\n");
    for (const char* event : {"HI00", "HJ00", "HK00"}) {
        Event(event);
    }
    ExpectQuery();
}

TEST_F(HfpEvents, ACallMissingFromTheAnswerIsReportedEndedOnce) {
    ConnectWithCalls({"HO01000000111", "HO02000100222"});
    EXPECT_EQ(current_call_num(), 2);
    Event("HI01");
    ExpectQuery();
    Answer({"HO01000000111"});
    ExpectEntries({"call(1, 0, 0, 0, \"111\")", "call(2, 0, 7, 0, \"222\")",
                   "call_action_complete(21, 0)", "current_call_num(1)"});
    EXPECT_EQ(LinesMatching(kTime + "query_calls_done->CALL_STATE_TERMINATED"), 1U);
    Event("HI01");
    ExpectQuery();
    Answer({"HO01000000111"});
    ExpectEntries({"call(1, 0, 0, 0, \"111\")", "call_action_complete(21, 0)", "current_call_num(1)"});
}

TEST_F(HfpEvents, AFailedQueryKeepsTheList) {
    ConnectWithCalls({"HO01000000111", "HO02000100222"});
    Event("HI01");
    ExpectQuery();
    Answer({}, "HQ0115");
    ExpectEntries({"call_action_complete(21, 1)", "current_call_num(2)"});
    Event("HI01");
    ExpectQuery();
}

TEST_F(HfpEvents, ACompletionWithoutAQueryTellsTheOldCount) {
    ConnectWithCalls({"HO01000000111"});
    Event("HQ0015");
    ExpectEntries({"call_action_complete(21, 0)", "current_call_num(1)"});
}

TEST_F(HfpEvents, TwentyOneIsDecimal) {
    Event("HQ0021");
    Event("HQ0121");
    ExpectEntries({"call_action_complete(33, 1)"});
}

TEST_F(HfpEvents, ALostConnectionEndsEveryCallInOrder) {
    ConnectWithCalls({"HO02000100222", "HO01000000111"});
    Event("HA0000000003000001FFA1B2C3D4E5F6");
    ExpectEntries({"call(1, 0, 7, 0, \"111\")", "call(2, 0, 7, 0, \"222\")",
                   "connection_state(0, 3, 511, A1B2C3D4E5F6)"});
    EXPECT_EQ(current_call_num(), 0);
}

TEST_F(HfpEvents, CallsOfACutQuerySurfaceWhenTheConnectionIsLost) {
    ConnectWithCalls({"HO01000000111"});
    Event("HI01");
    ExpectQuery();
    Event("HO03000000333");
    Event("HA0000000003000001FFA1B2C3D4E5F6");
    ExpectEntries({"call(3, 0, 0, 0, \"333\")", "call(1, 0, 7, 0, \"111\")",
                   "connection_state(0, 3, 511, A1B2C3D4E5F6)"});
    EXPECT_EQ(current_call_num(), 1) << "what a running query has brought stays";
}

TEST_F(HfpEvents, ANumberIsCutAtThirtyOneCharacters) {
    Event("HO010000000123456789012345678901234567890123456789");
    ExpectEntries({"call(1, 0, 0, 0, \"0123456789012345678901234567890\")"});
    Event("HO01000000" + std::string(4000, '9'));
    ExpectEntries({"call(1, 0, 0, 0, \"" + std::string(31, '9') + "\")"});
}

TEST_F(HfpEvents, TheReportOfACallsEndHasItsCutNumber) {
    ConnectWithCalls({"HO01000000" + std::string(40, '7')});
    Event("HA0000000003000001FFA1B2C3D4E5F6");
    ExpectEntries({"call(1, 0, 7, 0, \"" + std::string(31, '7') + "\")",
                   "connection_state(0, 3, 511, A1B2C3D4E5F6)"});
}

TEST_F(HfpEvents, IndicesWithoutASlotReachTheApplicationOnly) {
    ConnectWithCalls({"HO00000000000", "HO0B000000011", "HOFF000000255", "HO0A000000010"});
    EXPECT_EQ(current_call_num(), 1);
    Event("HI01");
    ExpectQuery();
    Answer({"HO00000000000"});
    ExpectEntries({"call(0, 0, 0, 0, \"000\")", "call(10, 0, 7, 0, \"010\")",
                   "call_action_complete(21, 0)", "current_call_num(0)"});
}

TEST_F(HfpEvents, TheSameIndexTwiceInOneAnswerCountsOnce) {
    ConnectWithCalls({"HO01000000111", "HO01000100112"});
    EXPECT_EQ(current_call_num(), 1);
    EXPECT_EQ(vym_hfp_terminate_call({}, 1), BT_STATUS_FAIL) << "the last line says held";
}

TEST_F(HfpEvents, InTheReportOfItsEndACallIsEndedAlready) {
    static bt_status_t in_report = BT_STATUS_SUCCESS;
    static bt_status_t other_in_report = BT_STATUS_FAIL;
    ConnectWithCalls({"HO01000000111", "HO02000000222"});
    ProfileRecord().SetHook([](const std::string& entry) {
        if (entry == "call(1, 0, 7, 0, \"111\")") {
            in_report = vym_hfp_terminate_call({}, 1);
            other_in_report = vym_hfp_terminate_call({}, 2);
        }
    });
    Event("HA0000000003000001FFA1B2C3D4E5F6");
    EXPECT_TRUE(Session().EventsAreHandled());
    EXPECT_EQ(in_report, BT_STATUS_FAIL);
    EXPECT_EQ(other_in_report, BT_STATUS_SUCCESS) << "the second is still as it was";
    Server().ExpectCommand("AT#HJ0502\r\n");
}

TEST_F(HfpEvents, ANewCallCanBeAcceptedFromTheCompletionOnAndNotFromItsLine) {
    static std::vector<bt_status_t> accepted;
    accepted.clear();
    ConnectWithCalls({});
    Event("HI01");
    ExpectQuery();
    ProfileRecord().SetHook(
        [](const std::string&) { accepted.push_back(vym_hfp_accept_call({}, CALL_ACCEPT_NONE)); });
    Answer({"HO01010400111"});
    ExpectEntries({"call(1, 1, 4, 0, \"111\")", "call_action_complete(21, 0)", "current_call_num(1)"});
    EXPECT_EQ(accepted,
              (std::vector<bt_status_t>{BT_STATUS_FAIL, BT_STATUS_SUCCESS, BT_STATUS_SUCCESS}));
    Server().ExpectCommand("AT#HJ0700\r\nAT#HJ0700\r\n");
}

TEST_F(HfpEvents, CallsMayBeControlledWhileTheListChanges) {
    std::atomic<bool> stop{false};
    std::atomic<bool> sane{true};
    std::thread controlling([&] {
        while (!stop) {
            // Neither has a call in a state that it would act on.
            if (vym_hfp_terminate_call({}, 1) != BT_STATUS_FAIL ||
                vym_hfp_reject_call({}) != BT_STATUS_FAIL || current_call_num() > 2) {
                sane = false;
            }
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 50; ++i) {
        Event("HX09");
        Answer({"HO01000700111", "HO02000000222"});
        Event("HA0000000003000001FFA1B2C3D4E5F6");
    }
    EXPECT_TRUE(Session().EventsAreHandled());
    stop = true;
    controlling.join();
    EXPECT_TRUE(sane);
    EXPECT_EQ(current_call_num(), 0);
}

TEST_F(HfpEvents, InitAndDonePrintTheirLines) {
    EXPECT_EQ(LinesMatching("api_cb_clear -- 326"), 1U);
    vym_hfp_done();
    const std::string out = Output().Out();
    EXPECT_NE(out.find("vym_hfp_done -- 590\r\napi_cb_clear -- 326\r\n"), std::string::npos);
}

TEST_F(HfpEvents, AMemberSetToNullAfterInitIsHonouredAtTheNextEvent) {
    hfp_callback_t table = wire::HfpTable();
    vym_hfp_init(&table);
    Event("HC01");
    ExpectEntries({"vr_cmd(1)"});
    table.vr_cmd_cb = nullptr;
    Event("HC01");
    ExpectEntries({});
    vym_hfp_init(nullptr);
}

TEST_F(HfpEvents, ANumberThatMatchesNoCallEndsTheFirstThatDiffers) {
    ConnectWithCalls({"HO01000000111", "HO02000100222"});
    uint8_t longer[] = "+49111";
    EXPECT_EQ(clip_calls_update(longer), 1);
    ExpectEntries({"call(2, 0, 7, 0, \"222\")", "call_action_complete(21, 0)"});
    EXPECT_EQ(clip_calls_update(longer), 0);
    EXPECT_EQ(current_call_num(), 1);
    EXPECT_EQ(LinesMatching(kTime + R"(clip_calls_update number=\+49111, original number=222)"), 1U);
    EXPECT_EQ(
        LinesMatching(
            kTime + R"(clip_calls_update->CALL_STATE_TERMINATED number=\+49111, original number=222)"),
        1U);
}

TEST_F(HfpEvents, ANumberMatchesACallThatHasItWholeOrInPart) {
    ConnectWithCalls({"HO010000004930123", "HO02000100"});
    for (const char* number : {"4930123", "+4930123", "004930123#"}) {
        std::string text = number;
        EXPECT_EQ(clip_calls_update(reinterpret_cast<uint8_t*>(text.data())), 0) << number;
    }
    EXPECT_EQ(LinesMatching(kTime + R"(clip_calls_update number=\+4930123, original number=)"), 1U)
        << "a call without a number matches any";
    ExpectEntries({});
    EXPECT_EQ(current_call_num(), 2);
}

TEST_F(HfpEvents, ANumberOfTheSameLengthMustBeTheSame) {
    ConnectWithCalls({"HO01000000111"});
    uint8_t shorter[] = "11";
    EXPECT_EQ(clip_calls_update(shorter), 0);
    uint8_t other[] = "112";
    EXPECT_EQ(clip_calls_update(other), 1);
    ExpectEntries({"call(1, 0, 7, 0, \"111\")", "call_action_complete(21, 0)"});
    EXPECT_EQ(clip_calls_update(other), 0) << "no call is left";
    EXPECT_EQ(current_call_num(), 0);
}

} // namespace
