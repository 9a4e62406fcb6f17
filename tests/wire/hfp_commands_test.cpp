// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes that each hands-free call writes, and which procedure the call-control rules choose.

#include "vym_hfp_impl.h"
#include "wire/hfp_profile.h"

namespace {

constexpr bt_bdaddr_t kPhone = {{0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}};

class HfpCommands : public wire::ProfileConformance<wire::HfpProfile> {
protected:
    // The phone's list becomes this one: "HO" lines, answered to a query.
    void SetCalls(const std::vector<std::string>& lines) {
        Server().Send(support::Event("HX09"));
        Server().ExpectCommand("AT#HK\r\n");
        for (const std::string& line : lines) {
            Server().Send(support::Event(line));
        }
        Server().Send(support::Event("HQ0015"));
        EXPECT_TRUE(Session().EventsAreHandled());
    }
    void ExpectRefused(bt_status_t status) {
        EXPECT_EQ(status, BT_STATUS_FAIL);
        Server().ExpectNothingMore();
    }
};

std::string CallLine(int state, int index) {
    char line[16];
    snprintf(line, sizeof line, "HO%02X00%02X00", static_cast<unsigned>(index),
             static_cast<unsigned>(state));
    return line;
}

TEST_F(HfpCommands, EachCallWritesItsBytes) {
    static char number[] = "+49 30%d#12";
    static char empty[] = "";
    const struct {
        bt_status_t (*call)();
        const char* command;
    } cases[] = {
        {[] { return vym_hfp_connect(kPhone); }, "AT#HAA1B2C3D4E5F6\r\n"},
        {[] { return vym_hfp_disconnect(kPhone); }, "AT#HBA1B2C3D4E5F6\r\n"},
        {[] { return vym_hfp_connect_audio(kPhone); }, "AT#HCA1B2C3D4E5F6\r\n"},
        {[] { return vym_hfp_disconnect_audio(kPhone); }, "AT#HDA1B2C3D4E5F6\r\n"},
        {[] { return vym_hfp_start_voice_recognition(); }, "AT#HE\r\n"},
        {[] { return vym_hfp_stop_voice_recognition(); }, "AT#HF\r\n"},
        {[] { return vym_hfp_volume_control(1, 15); }, "AT#HG01000F\r\n"},
        {[] { return vym_hfp_volume_control(0xFE, 0x1A2B); }, "AT#HGFE1A2B\r\n"},
        {[] { return vym_hfp_dial(number); }, "AT#HH+49 30%d#12\r\n"},
        {[] { return vym_hfp_dial(empty); }, "AT#HH\r\n"},
        {[] { return vym_hfp_dial_memory(0x1A); }, "AT#HI1A\r\n"},
        {[] { return vym_hfp_send_dtmf('#'); }, "AT#HN23\r\n"},
        {[] { return vym_hfp_query_last_voice_tag_name(); }, "AT#HO\r\n"},
        {[] { return vym_hfp_switch_mic_state(1); }, "AT#HR01\r\n"},
        {[] { return vym_hfp_terminate_call(kPhone, 0); }, "AT#HJ0800\r\n"},
        {[] { return vym_hfp_handle_call_action(0xAB, 0xCD); }, "AT#HJABCD\r\n"},
        {[] { return vym_hfp_query_current_calls(); }, "AT#HK\r\n"},
        {[] { return vym_hfp_query_current_operator_name(); }, "AT#HL\r\n"},
        {[] { return vym_hfp_retrieve_subscriber_info(); }, "AT#HM\r\n"},
        {[] { return vym_hfp_send_at_command(0x0102, 0x1A2B, 0xFFFF, number); },
         "AT#HP01021A2BFFFF+49 30%d#12\r\n"},
        {[] { return vym_hfp_switch_audio_hw(2); }, "AT#HQ02\r\n"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(one.call(), BT_STATUS_SUCCESS) << one.command;
        Server().ExpectCommand(one.command);
    }
    Server().ExpectNothingMore();
}

TEST_F(HfpCommands, ANumberOfAnyLengthIsDialled) {
    std::string number(5000, '7');
    EXPECT_EQ(vym_hfp_dial(number.data()), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#HH" + number + "\r\n");
}

TEST_F(HfpCommands, ATextThatWouldBreakTheLineIsRefused) {
    char with_command[] = "123\r\nAT#PC";
    char with_newline[] = "123\n";
    ExpectRefused(vym_hfp_dial(with_command));
    ExpectRefused(vym_hfp_dial(with_newline));
    ExpectRefused(vym_hfp_dial(nullptr));
    ExpectRefused(vym_hfp_send_at_command(1, 2, 3, with_command));
    ExpectRefused(vym_hfp_send_at_command(1, 2, 3, nullptr));
}

TEST_F(HfpCommands, TerminateChoosesByTheStateOfTheCall) {
    SetCalls({CallLine(0, 2), CallLine(2, 3), CallLine(3, 4), CallLine(1, 5), CallLine(4, 6),
              CallLine(5, 7), CallLine(6, 8)});
    const struct {
        int index;
        const char* command; // NULL: refused
    } cases[] = {{2, "AT#HJ0502\r\n"}, {3, "AT#HJ0803\r\n"}, {4, "AT#HJ0804\r\n"}, {5, nullptr},
                 {6, nullptr},         {7, nullptr},         {8, nullptr},         {1, nullptr},
                 {9, nullptr},         {256, nullptr},       {258, nullptr},       {-1, nullptr},
                 {-254, nullptr}};
    for (const auto& one : cases) {
        SCOPED_TRACE(one.index);
        const bt_status_t status = vym_hfp_terminate_call(kPhone, one.index);
        EXPECT_EQ(status, one.command != nullptr ? BT_STATUS_SUCCESS : BT_STATUS_FAIL);
        if (one.command != nullptr) {
            Server().ExpectCommand(one.command);
        }
    }
    Server().ExpectNothingMore();
}

TEST_F(HfpCommands, RejectTakesIncomingThenWaitingThenHeldByResponseThenHeld) {
    const struct {
        std::vector<std::string> calls;
        const char* command;
    } cases[] = {
        {{CallLine(1, 1), CallLine(6, 2), CallLine(5, 3), CallLine(4, 4)}, "AT#HJ0800\r\n"},
        {{CallLine(1, 1), CallLine(6, 2), CallLine(5, 3)}, "AT#HJ0000\r\n"},
        {{CallLine(1, 1), CallLine(6, 2)}, "AT#HJ0B00\r\n"},
        {{CallLine(0, 1), CallLine(1, 2)}, "AT#HJ0000\r\n"},
    };
    for (const auto& one : cases) {
        SetCalls(one.calls);
        EXPECT_EQ(vym_hfp_reject_call(kPhone), BT_STATUS_SUCCESS);
        Server().ExpectCommand(one.command);
    }
    SetCalls({CallLine(0, 1), CallLine(2, 2), CallLine(3, 3), CallLine(7, 4)});
    ExpectRefused(vym_hfp_reject_call(kPhone));
}

// One row of the rules: the calls, the flag and retry, and the action sent (-1: refused).
struct AcceptCase {
    std::vector<int> states;
    int flag;
    int retry;
    int action;
};

TEST_F(HfpCommands, AcceptFollowsTheRulesForEachStateAndFlag) {
    const std::vector<AcceptCase> cases = {
        {{}, 0, 0, -1},     {{4}, 0, 0, 7},     {{4}, 1, 0, 7},     {{4}, 2, 0, 7},
        {{4}, 3, 0, 7},     {{4}, 0, 1, 1},     {{4}, 1, 1, 7},     {{4, 0}, 0, 1, 7},
        {{5}, 0, 0, 2},     {{5}, 1, 0, 7},     {{5}, 2, 0, 7},     {{5}, 0, 1, 7},
        {{5}, -1, 0, 7},    {{5, 0}, 0, 0, -1}, {{5, 0}, 1, 0, 2},  {{5, 0}, 2, 0, 1},
        {{5, 0}, 3, 0, -1}, {{5, 0}, 0, 1, -1}, {{1}, 0, 0, 2},     {{1}, 1, 0, 2},
        {{1}, 2, 0, 1},     {{1}, 3, 0, -1},    {{1, 0}, 0, 0, 3},  {{6}, 0, 0, 10},
        {{6}, 1, 0, -1},    {{6}, 2, 0, -1},    {{6, 1}, 0, 0, 10}, {{1, 6}, 0, 0, 10},
        {{5, 4}, 0, 0, 7},  {{1, 5}, 0, 0, 2},  {{0}, 0, 0, -1},    {{2}, 0, 0, -1},
        {{3}, 1, 0, -1},    {{7}, 0, 0, -1},
    };
    for (const AcceptCase& one : cases) {
        std::vector<std::string> lines;
        for (size_t i = 0; i < one.states.size(); ++i) {
            lines.push_back(CallLine(one.states[i], static_cast<int>(i) + 1));
        }
        SetCalls(lines);
        SCOPED_TRACE(testing::PrintToString(one.states) + " flag " + std::to_string(one.flag) +
                     " retry " + std::to_string(one.retry));
        const auto flag = static_cast<accept_flag_t>(one.flag);
        const bt_status_t status = one.retry == 0
                                       ? vym_hfp_accept_call(kPhone, flag)
                                       : vym_hfp_accept_call_with_retry(kPhone, flag, one.retry);
        EXPECT_EQ(status, one.action < 0 ? BT_STATUS_FAIL : BT_STATUS_SUCCESS);
        if (one.action >= 0) {
            char command[16];
            snprintf(command, sizeof command, "AT#HJ%02X00\r\n", static_cast<unsigned>(one.action));
            Server().ExpectCommand(command);
        } else {
            Server().ExpectNothingMore();
        }
    }
}

TEST_F(HfpCommands, AfterDoneTheOldListStillAnswersAndInitEmptiesIt) {
    SetCalls({CallLine(0, 2)});
    vym_hfp_done();
    EXPECT_EQ(vym_hfp_terminate_call(kPhone, 2), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#HJ0502\r\n");
    wire::HfpProfile::Init(wire::Table::kWhole);
    ExpectRefused(vym_hfp_terminate_call(kPhone, 2));
}

TEST_F(HfpCommands, AreDroppedWhileUnconnected) {
    Session().Stop();
    char number[] = "123";
    EXPECT_EQ(vym_hfp_connect(kPhone), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_hfp_dial(number), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_hfp_dial(nullptr), BT_STATUS_FAIL);
    EXPECT_EQ(vym_hfp_terminate_call(kPhone, 0), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_hfp_terminate_call(kPhone, 1), BT_STATUS_FAIL);
}

} // namespace
