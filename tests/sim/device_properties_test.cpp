// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "running_sim.h"

#include <gtest/gtest.h>

namespace {

using Strings = std::vector<std::string>;

// The speaker's UUIDs 110B, 110E and 111E as they travel.
const std::string kZeros = "\xDC\xDD\xDC\xDD";
const std::string kBase = kZeros + "\x10\xDC\xDD\x80" + kZeros + "\x80\x5F\x9B\x34\xFB";
const std::string kSpeakerUuids =
    kZeros + "\x11\x0B" + kBase + kZeros + "\x11\x0E" + kBase + kZeros + "\x11\x1E" + kBase;

struct Case {
    std::string command;
    std::string answer;
};

void expect_answers(const std::vector<Case>& cases) {
    RunningSim sim;
    TestClient client = sim.client();
    const sim::UniqueFd audio = client.enable();
    for (const Case& c : cases) {
        client.send(c.command);
        EXPECT_EQ(client.event(), c.answer) << c.command;
    }
}

TEST(SimDeviceProperties, EachPropertyHasItsRecord) {
    expect_answers({
        {"AT#BC11223344556601\r\n", "BC00112233445566010013010FKitchen speaker"},
        {"AT#BC11223344556603\r\n", "BC001122334455660100490330" + kSpeakerUuids},
        {"AT#BC11223344556604\r\n", "BC00112233445566010009"
                                    "0404\x14\x04\x24\xDC\xDD"},
        {"AT#BC11223344556620\r\n", "BC001122334455660100052001\x01"},
        {"AT#BC11223344556621\r\n", "BC00112233445566010009"
                                    "2104\xFF\xFF\x08\xDC\xDD"},
    });
}

TEST(SimDeviceProperties, AllPropertiesComeInOneEvent) {
    expect_answers({
        {"AT#BH112233445566\r\n", "BC00112233445566050073"
                                  "010FKitchen speaker"
                                  "0330" +
                                      kSpeakerUuids +
                                      "0404\x14\x04\x24\xDC\xDD"
                                      "2001\x01"
                                      "2104\xFF\xFF\x08\xDC\xDD"},
    });
}

TEST(SimDeviceProperties, UnknownDevicesAndPropertiesAreRefused) {
    expect_answers({
        {"AT#BC99999999999901\r\n", "BC0A999999999999000000"},
        {"AT#BC11223344556663\r\n", "BC01112233445566000000"},
        {"AT#BH999999999999\r\n", "BC0A999999999999000000"},
        {"AT#BJ999999999999\r\n", "BC0A999999999999000000"},
        {"AT#BD99999999999901"
         "0001x\r\n",
         "BC0A999999999999000000"},
    });
}

TEST(SimDeviceProperties, ServicesAreTheUuidsRecord) {
    expect_answers({{"AT#BJ112233445566\r\n", "BC001122334455660100490330" + kSpeakerUuids}});
}

TEST(SimDeviceProperties, AServiceRecordIsFoundByItsUuidLastByteFirst) {
    expect_answers({
        {"AT#BI112233445566FB349B5F80000080001000000B110000\r\n",
         "BC0011223344556601001B0310" + kZeros + "\x11\x0B" + kBase},
        {"AT#BI112233445566FB349B5F80000080001000000D180000\r\n", "BC01112233445566000000"},
    });
}

TEST(SimDeviceProperties, ServicesNeedTheRadio) {
    RunningSim sim;
    TestClient client = sim.client();
    client.send("AT#BJ112233445566\r\nAT#BI112233445566FB349B5F80000080001000000B110000\r\n");
    EXPECT_EQ(client.events(2), (Strings{"BC02112233445566000000", "BC02112233445566000000"}));
}

TEST(SimDeviceProperties, ASetPropertyIsEchoedAndKept) {
    expect_answers({
        {"AT#BD11223344556601"
         "0004Desk\r\n",
         "BC00112233445566010008"
         "0104Desk"},
        {"AT#BC11223344556601\r\n", "BC00112233445566010008"
                                    "0104Desk"},
        {"AT#BD112233445566200001\x07\r\n", "BC00112233445566010005"
                                            "2001\x07"},
        {"AT#BD11223344556604"
         "0006\x01\x02\xDC\xDD\xDC\xDD\r\n",
         "BC0011223344556601000A"
         "0404\x01\x02\xDC\xDD\xDC\xDD"},
        {"AT#BD11223344556621"
         "0004wxyz\r\n",
         "BC00112233445566010008"
         "2104wxyz"},
        {"AT#BD11223344556603"
         "0010abcdefghijklmnop\r\n",
         "BC00112233445566010014"
         "0310abcdefghijklmnop"},
    });
}

TEST(SimDeviceProperties, AValueOfTheWrongLengthIsRefused) {
    expect_answers({
        {"AT#BD11223344556620"
         "0002xx\r\n",
         "BC07112233445566000000"},
        {"AT#BD11223344556604"
         "0003xxx\r\n",
         "BC07112233445566000000"},
        {"AT#BD11223344556621"
         "0000\r\n",
         "BC07112233445566000000"},
        {"AT#BD11223344556603"
         "0011abcdefghijklmnopq\r\n",
         "BC07112233445566000000"},
        {"AT#BD11223344556607"
         "0000\r\n",
         "BC01112233445566000000"},
    });
}

} // namespace
