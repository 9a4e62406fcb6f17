// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The bytes that each call of the GATT server writes.

#include "wire/gatt_server_profile.h"

namespace {

using support::Bytes;
using wire::gatt_server::kRemote;
using wire::gatt_server::kUuid;

// kUuid as commands write it.
const std::string kDigits = "FFEEDDCCBBAA99887766554433221100";

struct CommandCase {
    const char* name;
    bt_status_t (*call)();
    std::string command;
};

class GattServerCommands : public wire::ProfileConformance<wire::GattServerProfile> {
protected:
    void ExpectCommands(const std::vector<CommandCase>& cases) {
        for (const CommandCase& one : cases) {
            SCOPED_TRACE(one.name);
            EXPECT_EQ(one.call(), BT_STATUS_SUCCESS);
            Server().ExpectCommand(one.command);
        }
        Server().ExpectNothingMore();
    }
};

TEST_F(GattServerCommands, ApplicationsAreNamedByUuidAndInterface) {
    ExpectCommands({
        {"register_app", [] { return vym_gatt_server_register_app(kUuid); },
         "AT#JA" + kDigits + "\r\n"},
        {"register_app of zeroes", [] { return vym_gatt_server_register_app(bt_uuid_t{}); },
         "AT#JA00000000000000000000000000000000\r\n"},
        {"unregister_app", [] { return vym_gatt_server_unregister_app(0xAB); }, "AT#JCAB\r\n"},
        {"unregister_app 0", [] { return vym_gatt_server_unregister_app(0); }, "AT#JC00\r\n"},
    });
}

TEST_F(GattServerCommands, ClientInterfacesAreTheClientModulesCommands) {
    ExpectCommands({
        {"register_client", [] { return vym_gatt_server_register_client(kUuid, nullptr); },
         "AT#KA" + kDigits + "\r\n"},
        {"unregister_client", [] { return vym_gatt_server_unregister_client(0xAB); }, "AT#KBAB\r\n"},
    });
}

TEST_F(GattServerCommands, ConnectionsNameTheAddressMostSignificantByteFirst) {
    ExpectCommands({
        {"connect", [] { return vym_gatt_server_connect(0x07, kRemote, 0x01); },
         "AT#JD07A1B2C3D4E5F601\r\n"},
        {"connect later", [] { return vym_gatt_server_connect(0xFE, kRemote, 0xAB); },
         "AT#JDFEA1B2C3D4E5F6AB\r\n"},
        {"disconnect", [] { return vym_gatt_server_disconnect(0x07, kRemote, 0x1234); },
         "AT#JE07A1B2C3D4E5F61234\r\n"},
    });
}

TEST_F(GattServerCommands, ServicesAreBuiltFieldByField) {
    ExpectCommands({
        {"add_service", [] { return vym_gatt_server_add_service(0x01, 0x02, 0x3456, kUuid, 0x78); },
         "AT#JF01023456" + kDigits + "78\r\n"},
        {"add_included_service",
         [] { return vym_gatt_server_add_included_service(0x01, 0x2345, 0x6789); },
         "AT#JG0123456789\r\n"},
        {"add_characteristic",
         [] { return vym_gatt_server_add_characteristic(0x01, 0x2345, kUuid, 0x67, 0x89AB); },
         "AT#JH012345" + kDigits + "6789AB\r\n"},
        {"add_descriptor",
         [] { return vym_gatt_server_add_descriptor(0x01, 0x2345, kUuid, PERMISSION_READ); },
         "AT#JI012345" + kDigits + "0002\r\n"},
        {"start_service", [] { return vym_gatt_server_start_service(0x01, 0x2345, 0x67); },
         "AT#JJ01234567\r\n"},
        {"stop_service", [] { return vym_gatt_server_stop_service(0x02, 0x3456); }, "AT#JK023456\r\n"},
        {"delete_service", [] { return vym_gatt_server_delete_service(0x03, 0x4567); },
         "AT#JL034567\r\n"},
    });
}

TEST_F(GattServerCommands, ADescriptorsPermissionsAreSimplified) {
    struct {
        int permissions;
        const char* sent;
    } const cases[] = {
        {0, "0000"},
        {PERMISSION_READ, "0002"},
        {PERMISSION_READ_ENCRYPTED, "0002"},
        {PERMISSION_READ_ENCRYPTED_MITM, "0002"},
        {PERMISSION_WRITE, "0008"},
        {PERMISSION_WRITE_ENCRYPTED, "0008"},
        {PERMISSION_WRITE_ENCRYPTED_MITM, "0008"},
        {PERMISSION_WRITE_SIGNED, "0008"},
        {PERMISSION_WRITE_SIGNED_MITM, "0008"},
        {PERMISSION_READ_ENCRYPTED_MITM | PERMISSION_WRITE_SIGNED, "000A"},
        {PERMISSION_READ | PERMISSION_WRITE_SIGNED_MITM, "000A"},
        {0x0008, "0000"}, // no bit of theirs
        {0xFE08, "0000"},
        {0xFFFF, "000A"},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.permissions);
        EXPECT_EQ(vym_gatt_server_add_descriptor(1, 2, kUuid, static_cast<uint16_t>(one.permissions)),
                  BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#JI010002" + kDigits + one.sent + "\r\n");
    }
    Server().ExpectNothingMore();
}

TEST_F(GattServerCommands, ACharacteristicsPermissionsAreSentAsTheyAre) {
    struct {
        int permissions;
        const char* sent;
    } const cases[] = {
        {0, "0000"},
        {PERMISSION_READ_ENCRYPTED_MITM | PERMISSION_WRITE_SIGNED, "0084"},
        {PERMISSION_WRITE_SIGNED_MITM, "0100"},
        {0xFE08, "FE08"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(
            vym_gatt_server_add_characteristic(1, 2, kUuid, 3, static_cast<uint16_t>(one.permissions)),
            BT_STATUS_SUCCESS);
        Server().ExpectCommand("AT#JH010002" + kDigits + "03" + one.sent + "\r\n");
    }
    Server().ExpectNothingMore();
}

// A call that carries a value, and its command without the value.
struct ValueCase {
    const char* name;
    bt_status_t (*call)(uint16_t length, uint8_t* value);
    const char* fixed;
};

const ValueCase kValueCases[] = {
    {"indication",
     [](uint16_t length, uint8_t* value) {
         return vym_gatt_server_send_indication(0x01, 0x2345, 0x6789, 0xAB, length, value);
     },
     "AT#JM0123456789AB"},
    {"notification",
     [](uint16_t length, uint8_t* value) {
         return vym_gatt_server_send_notification(0x01, 0x2345, 0x6789, length, value);
     },
     "AT#JN0123456789"},
    {"response",
     [](uint16_t length, uint8_t* value) {
         return vym_gatt_server_send_response(0x01, 0x2345, 0x6789, 0xAB, 0xCDEF, 0x1032, 0x54, length,
                                              value);
     },
     "AT#JO0123456789ABCDEF103254"},
};

class GattServerValues : public GattServerCommands {
protected:
    void ExpectValue(const std::string& value, const std::string& sent) {
        std::vector<uint8_t> bytes(value.begin(), value.end());
        for (const ValueCase& one : kValueCases) {
            SCOPED_TRACE(one.name);
            EXPECT_EQ(one.call(static_cast<uint16_t>(bytes.size()), bytes.data()), BT_STATUS_SUCCESS);
            Server().ExpectCommand(one.fixed + sent + "\r\n");
        }
    }
    void ExpectRefused(const std::string& value) {
        std::vector<uint8_t> bytes(value.begin(), value.end());
        for (const ValueCase& one : kValueCases) {
            EXPECT_EQ(one.call(static_cast<uint16_t>(bytes.size()), bytes.data()), BT_STATUS_NOMEM)
                << one.name;
        }
        Server().ExpectNothingMore();
    }
};

TEST_F(GattServerValues, FollowTheFieldsBehindTheirCount) {
    ExpectValue("Hello", "0005Hello");
    ExpectValue(std::string(1, '\xFF'), "0001\xFF");
    Server().ExpectNothingMore();
}

TEST_F(GattServerValues, AreEscapedAndCountedEscaped) {
    ExpectValue("\n", Bytes({'0', '0', '0', '2', 0xDC, 0xDF}));
    ExpectValue(Bytes({0x00, 0x0D, 0x0A, 0xDC, 0xDD, 'A'}),
                "000A" + Bytes({0xDC, 0xDD, 0xDC, 0xDE, 0xDC, 0xDF, 0xDC, 0xDC, 0xDD, 'A'}));
    Server().ExpectNothingMore();
}

TEST_F(GattServerValues, WithoutAPointerOrALengthAreEmpty) {
    uint8_t byte[] = {'x'};
    for (const ValueCase& one : kValueCases) {
        SCOPED_TRACE(one.name);
        for (const uint16_t length : {uint16_t{0}, uint16_t{1}, uint16_t{0xFFFF}}) {
            EXPECT_EQ(one.call(length, nullptr), BT_STATUS_SUCCESS);
            Server().ExpectCommand(std::string(one.fixed) + "0000\r\n");
        }
        EXPECT_EQ(one.call(0, byte), BT_STATUS_SUCCESS);
        Server().ExpectCommand(std::string(one.fixed) + "0000\r\n");
    }
    Server().ExpectNothingMore();
}

TEST_F(GattServerValues, MayBe65535EscapedBytesLong) {
    ExpectValue(std::string(65535, 'x'), "FFFF" + std::string(65535, 'x'));
    std::string escaped;
    for (int i = 0; i < 32767; ++i) {
        escaped += "\xDC\xDF";
    }
    ExpectValue(std::string(32767, '\n') + "y", "FFFF" + escaped + "y");
    Server().ExpectNothingMore();
}

TEST_F(GattServerValues, LongerThanTheirCountCanTellAreRefused) {
    ExpectRefused(std::string(32768, '\n'));
    ExpectRefused(std::string(65535, '\xDC'));
    ExpectRefused(std::string(65534, 'x') + "\r");
}

} // namespace
