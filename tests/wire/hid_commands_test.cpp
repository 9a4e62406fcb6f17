// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes that each call of the HID device writes.

#include "wire/hid_profile.h"

#include <array>
#include <future>

namespace {

using support::Bytes;

constexpr bt_bdaddr_t kHost = {{0xF6, 0xE5, 0xD4, 0xC3, 0xB2, 0xA1}};

struct CommandCase {
    const char* name;
    bt_status_t (*call)();
    std::string_view command;
};

// Six blocks, or any of them NULL with a length all the same.
struct Registration {
    std::array<std::string, 6> blocks;
    std::array<bool, 6> null = {};

    bt_status_t Send(uint8_t subclass) {
        return vym_hid_register_app(subclass, Length(0), Data(0), Length(1), Data(1), Length(2),
                                    Data(2), Length(3), Data(3), Length(4), Data(4), Length(5),
                                    Data(5));
    }

private:
    uint16_t Length(size_t i) { return static_cast<uint16_t>(blocks[i].size()); }
    uint8_t* Data(size_t i) { return null[i] ? nullptr : reinterpret_cast<uint8_t*>(blocks[i].data()); }
};

std::string Repeated(const std::string& part, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        text += part;
    }
    return text;
}

class HidCommands : public wire::ProfileConformance<wire::HidProfile> {
protected:
    bt_status_t SendReport(std::string report) {
        return vym_hid_send_report(0x01, 0x02, static_cast<uint16_t>(report.size()),
                                   reinterpret_cast<uint8_t*>(report.data()));
    }
    void ExpectReport(const std::string& report, const std::string& sent) {
        EXPECT_EQ(SendReport(report), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#DC0100000002" + sent + "\r\n");
    }
};

TEST_F(HidCommands, WithoutBlocksAreATagAndItsFields) {
    const CommandCase cases[] = {
        {"unregister_app", vym_hid_unregister_app, "AT#DB\r\n"},
        {"report_error", [] { return vym_hid_report_error_impl(0xAB); }, "AT#DEAB\r\n"},
        {"report_error 0", [] { return vym_hid_report_error_impl(0); }, "AT#DE00\r\n"},
        {"unplug", vym_hid_unplug_impl, "AT#DF\r\n"},
        {"connect", [] { return vym_hid_connect(kHost); }, "AT#DGA1B2C3D4E5F6\r\n"},
        {"disconnect", vym_hid_disconnect, "AT#DH\r\n"},
    };
    for (const CommandCase& one : cases) {
        SCOPED_TRACE(one.name);
        EXPECT_EQ(one.call(), BT_STATUS_SUCCESS);
        Server().ExpectCommand(one.command);
    }
    Server().ExpectNothingMore();
}

TEST_F(HidCommands, AReportFollowsItsTypeAndIdentifier) {
    uint8_t report[] = {0xA1, 0x00, 0x0D};
    EXPECT_EQ(vym_hid_send_report(1, 2, 3, report), BT_STATUS_SUCCESS);
    Server().ExpectCommand(
        Bytes({'A', 'T', '#', 'D', 'C', '0', '1',  '0',  '0',  '0',  '0',  '0',  '0',
               '0', '2', '0', '0', '0', '5', 0xA1, 0xDC, 0xDD, 0xDC, 0xDE, '\r', '\n'}));
    Server().ExpectNothingMore();
}

TEST_F(HidCommands, AnIdentifierIsEightDigitsOfItsTwosComplement) {
    struct {
        int id;
        const char* digits;
    } const cases[] = {
        {0, "00000000"},  {0x12345678, "12345678"}, {0x7FFFFFFF, "7FFFFFFF"},
        {-1, "FFFFFFFF"}, {-2, "FFFFFFFE"},         {INT32_MIN, "80000000"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(vym_hid_send_report(0xFE, one.id, 0, nullptr), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#DCFE" + std::string(one.digits) + "0000\r\n");
    }
}

TEST_F(HidCommands, AReportIsEscapedAndCountedEscaped) {
    ExpectReport("abc", "0003abc");
    ExpectReport(Bytes({0x0A, 0xDC, 0xDD, 0x00, 0x0D}),
                 "0009" + Bytes({0xDC, 0xDF, 0xDC, 0xDC, 0xDD, 0xDC, 0xDD, 0xDC, 0xDE}));
    Server().ExpectNothingMore();
}

TEST_F(HidCommands, AReportWithoutAPointerOrALengthIsEmpty) {
    uint8_t byte[] = {'x'};
    for (const uint16_t length : {uint16_t{0}, uint16_t{1}, uint16_t{0xFFFF}}) {
        EXPECT_EQ(vym_hid_send_report(1, 2, length, nullptr), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#DC01000000020000\r\n");
    }
    EXPECT_EQ(vym_hid_send_report(1, 2, 0, byte), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#DC01000000020000\r\n");
}

TEST_F(HidCommands, AReportMayBe65535EscapedBytesLong) {
    ExpectReport(std::string(65535, 'x'), "FFFF" + std::string(65535, 'x'));
    ExpectReport(std::string(32767, '\0') + "y", "FFFF" + Repeated("\xDC\xDD", 32767) + "y");
}

TEST_F(HidCommands, AReportLongerThanItsCountCanTellIsRefused) {
    EXPECT_EQ(SendReport(std::string(32768, '\0')), BT_STATUS_NOMEM);
    EXPECT_EQ(SendReport(std::string(40000, '\0')), BT_STATUS_NOMEM);
    EXPECT_EQ(SendReport(std::string(65534, 'x') + "\n"), BT_STATUS_NOMEM);
    Server().ExpectNothingMore();
}

TEST_F(HidCommands, ARegistrationIsASubclassAndSixBlocks) {
    Registration device{{"Keys", "Two\n", "P", Bytes({0x05, 0x01, 0xC0, 0x00}), "in", "out!!"}};
    EXPECT_EQ(device.Send(0xAB), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#DAAB"
                           "0004Keys"
                           "0005Two\xDC\xDF"
                           "0001P"
                           "0005\x05\x01\xC0\xDC\xDD"
                           "0002in"
                           "0005out!!\r\n");
    Server().ExpectNothingMore();
}

TEST_F(HidCommands, ARegistrationOfNothingIsSixEmptyBlocks) {
    Registration nothing;
    EXPECT_EQ(nothing.Send(0x40), BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#DA40000000000000000000000000\r\n");
    EXPECT_EQ(vym_hid_register_app(0x80, 0xFFFF, nullptr, 1, nullptr, 2, nullptr, 3, nullptr, 4,
                                   nullptr, 5, nullptr),
              BT_STATUS_SUCCESS);
    Server().ExpectCommand("AT#DA80000000000000000000000000\r\n");
    Server().ExpectNothingMore();
}

TEST_F(HidCommands, EachBlockOfARegistrationMayBeTheOnlyOne) {
    for (size_t at = 0; at < 6; ++at) {
        Registration device;
        device.blocks[at] = "x";
        EXPECT_EQ(device.Send(0x40), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#DA40" + Repeated("0000", at) + "0001x" + Repeated("0000", 5 - at) +
                               "\r\n");
        device.blocks.fill("y");
        device.null[at] = true;
        EXPECT_EQ(device.Send(0x40), BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#DA40" + Repeated("0001y", at) + "0000" + Repeated("0001y", 5 - at) +
                               "\r\n");
    }
}

// More than the socket holds: the call waits while the server reads.
TEST_F(HidCommands, ARegistrationMayHaveSixFullBlocks) {
    Registration plain;
    Registration escaped;
    std::string plain_blocks;
    std::string escaped_blocks;
    for (size_t i = 0; i < 6; ++i) {
        plain.blocks[i] = std::string(65535, static_cast<char>('a' + i));
        plain_blocks += "FFFF" + plain.blocks[i];
        escaped.blocks[i] = std::string(32767, '\0') + static_cast<char>('a' + i);
        escaped_blocks += "FFFF" + Repeated("\xDC\xDD", 32767) + static_cast<char>('a' + i);
    }
    auto first = std::async(std::launch::async, [&] { return plain.Send(0x40); });
    Server().ExpectCommand("AT#DA40" + plain_blocks + "\r\n");
    EXPECT_EQ(first.get(), BT_STATUS_SUCCESS);
    auto second = std::async(std::launch::async, [&] { return escaped.Send(0x40); });
    Server().ExpectCommand("AT#DA40" + escaped_blocks + "\r\n");
    EXPECT_EQ(second.get(), BT_STATUS_SUCCESS);
    Server().ExpectNothingMore();
}

TEST_F(HidCommands, OneBlockTooLongRefusesTheRegistration) {
    for (size_t at = 0; at < 6; ++at) {
        Registration device;
        device.blocks.fill("x");
        device.blocks[at] = std::string(32768, '\0');
        EXPECT_EQ(device.Send(0x40), BT_STATUS_NOMEM) << at;
    }
    Server().ExpectNothingMore();
}

class HidUnconnected : public support::QuietTest {};

TEST_F(HidUnconnected, CommandsAreDroppedWithSuccess) {
    Registration nothing;
    EXPECT_EQ(nothing.Send(0x40), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_hid_disconnect(), BT_STATUS_SUCCESS);
}

TEST_F(HidUnconnected, DoneWithoutInitDoesNothing) {
    vym_hid_done();
    EXPECT_EQ(Output().Out(), "");
}

} // namespace
