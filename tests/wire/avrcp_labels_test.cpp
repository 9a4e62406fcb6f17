// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The labels of volume requests: each comes back with its answer, once.

#include "wire/avrcp_support.h"

#include <map>
#include <thread>

namespace {

using avrcp::kDevice;

class AvrcpLabels : public avrcp::AvrcpWireTest {
protected:
    void ExpectVolumeAnswer(const std::string& label) {
        EXPECT_EQ(vym_avrcp_send_abs_vol_rsp(kDevice, 0x2A), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#RGA1B2C3D4E5F62A" + label + "\r\n");
    }
    void ExpectRegistrationAnswer(const std::string& label) {
        EXPECT_EQ(vym_avrcp_send_register_abs_val_rsp(kDevice, 0x0F, 0x2B), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#RHA1B2C3D4E5F60F2B" + label + "\r\n");
    }
};

TEST_F(AvrcpLabels, ComeBackWithTheAnswerOnce) {
    Handle({"RHA1B2C3D4E5F6407B"});
    ExpectVolumeAnswer("7B");
    ExpectVolumeAnswer("00");
    Handle({"RIA1B2C3D4E5F6E1"});
    ExpectRegistrationAnswer("E1");
    ExpectRegistrationAnswer("00");
}

TEST_F(AvrcpLabels, OfTheTwoRequestsAreApart) {
    Handle({"RHA1B2C3D4E5F640FE", "RIA1B2C3D4E5F681"});
    ExpectRegistrationAnswer("81");
    ExpectRegistrationAnswer("00");
    ExpectVolumeAnswer("FE");
    Handle({"RHA1B2C3D4E5F6407B", "RIA1B2C3D4E5F6E1"});
    ExpectVolumeAnswer("7B");
    ExpectVolumeAnswer("00");
    ExpectRegistrationAnswer("E1");
}

TEST_F(AvrcpLabels, ThatWereNotAnsweredMerge) {
    Handle({"RHA1B2C3D4E5F64002", "RHA1B2C3D4E5F64105"});
    ExpectVolumeAnswer("07");
    Handle({"RIA1B2C3D4E5F610", "RIA1B2C3D4E5F681"});
    ExpectRegistrationAnswer("91");
}

TEST_F(AvrcpLabels, AreKeptAlsoWhenNobodyIsTold) {
    static avrcp_callback_t nothing{};
    for (avrcp_callback_t* const table : {&nothing, static_cast<avrcp_callback_t*>(nullptr)}) {
        vym_avrcp_init(table);
        Handle({"RHA1B2C3D4E5F64003", "RIA1B2C3D4E5F604"});
        ExpectVolumeAnswer("03");
        ExpectRegistrationAnswer("04");
    }
}

TEST_F(AvrcpLabels, AreForgottenByInit) {
    Handle({"RHA1B2C3D4E5F64003", "RIA1B2C3D4E5F604"});
    vym_avrcp_init(avrcp::RecordingTable());
    ExpectVolumeAnswer("00");
    ExpectRegistrationAnswer("00");
}

TEST_F(AvrcpLabels, MayBeAnsweredInTheCallback) {
    avrcp::Record().SetHook([](const std::string& entry) {
        if (entry == "handle_set_abs_volume(A1B2C3D4E5F6, 64)") {
            vym_avrcp_send_abs_vol_rsp(kDevice, 64);
        } else {
            vym_avrcp_send_register_abs_val_rsp(kDevice, 0x0F, 65);
        }
    });
    Handle({"RHA1B2C3D4E5F64003", "RIA1B2C3D4E5F604", "RHA1B2C3D4E5F64005"});
    Server().ExpectCommand("AT#RGA1B2C3D4E5F64003\r\n");
    Server().ExpectCommand("AT#RHA1B2C3D4E5F60F4104\r\n");
    Server().ExpectCommand("AT#RGA1B2C3D4E5F64005\r\n");
    Server().ExpectNothingMore();
}

// How often each bit of a label stands in these answers, by their tag.
std::map<std::string, std::vector<int>> CountBits(const std::string& answers) {
    std::map<std::string, std::vector<int>> counts;
    for (const std::string& line : support::Lines(answers)) {
        std::vector<int>& bits = counts[line.substr(0, 5)];
        bits.resize(8);
        const auto label = std::stoul(line.substr(line.size() - 2), nullptr, 16);
        for (size_t bit = 0; bit < 8; ++bit) {
            bits[bit] += (label >> bit & 1U) != 0 ? 1 : 0;
        }
    }
    return counts;
}

TEST_F(AvrcpLabels, ComeBackExactlyOnceWhenThreadsAnswerWhileTheyArrive) {
    constexpr int kRounds = 10;
    constexpr int kAnswers = 20;
    const std::vector<int> once(8, 1);
    const auto answer = [](int times) {
        for (int i = 0; i < times; ++i) {
            vym_avrcp_send_abs_vol_rsp(kDevice, 0);
            vym_avrcp_send_register_abs_val_rsp(kDevice, 0, 0);
        }
    };
    const size_t one_pair = std::string("AT#RGA1B2C3D4E5F60000\r\nAT#RHA1B2C3D4E5F6000000\r\n").size();
    for (int round = 0; round < kRounds; ++round) {
        std::thread first(answer, kAnswers);
        std::thread second(answer, kAnswers);
        std::vector<std::string> requests;
        for (unsigned bit = 0; bit < 8; ++bit) {
            requests.push_back("RHA1B2C3D4E5F600" + wire::Hex(1U << bit, 2));
            requests.push_back("RIA1B2C3D4E5F6" + wire::Hex(1U << bit, 2));
        }
        Handle(requests);
        first.join();
        second.join();
        answer(1);
        const auto counts = CountBits(Server().ReceiveBytes((2 * kAnswers + 1) * one_pair));
        EXPECT_EQ(counts, (std::map<std::string, std::vector<int>>{{"AT#RG", once}, {"AT#RH", once}}));
    }
}

} // namespace
