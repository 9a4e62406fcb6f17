// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Each field that can hold text is named here, with what is private about it: a new one must be thought
// about before a capture with it is given to others.

#include "protocol/protocol.h"

#include <gtest/gtest.h>
#include <map>
#include <string>

namespace {

using protocol::Field;
using protocol::Fields;
using protocol::Private;
using protocol::Type;

using Table = std::map<std::string, std::string>;

bool CanHoldText(const Field& field) {
    switch (field.type) {
    case Type::HexBytes:
    case Type::Counted:
    case Type::Character:
    case Type::Text:
    case Type::Bytes:
    case Type::FixedText:
    case Type::RestText:
    case Type::NulText:
    case Type::SizedBytes:
        return true;
    case Type::Block:
    case Type::ShortBlock:
        return field.inner == nullptr;
    default:
        return false;
    }
}

std::string Name(Private kind) {
    switch (kind) {
    case Private::No:
        return "no";
    case Private::Address:
        return "address";
    case Private::Name:
        return "name";
    case Private::Title:
        return "title";
    case Private::Number:
        return "number";
    case Private::Contact:
        return "contact";
    case Private::Secret:
        return "secret";
    case Private::Advertised:
        return "advertised";
    case Private::Data:
        return "data";
    }
    return "?";
}

void Collect(const Fields& fields, const std::string& path, Table* table) {
    for (const Field& field : fields) {
        const std::string name = path + " " + std::string(field.name);
        if (CanHoldText(field) || field.is_private != Private::No) {
            (*table)[name] = Name(field.is_private);
        }
        for (const protocol::Layout* inner = field.inner; inner != nullptr; inner = inner->next) {
            // A choice's layouts are told apart by their names.
            Collect(inner->fields,
                    field.type == Type::Choice ? name + " " + std::string(inner->name) : name, table);
        }
    }
}

Table AllFields() {
    Table table;
    for (const protocol::Profile* profile : protocol::profiles()) {
        for (const protocol::Messages& messages : {profile->commands, profile->events}) {
            for (const protocol::Message& message : messages) {
                Collect(message.fields, std::string(profile->name) + " " + std::string(message.name),
                        &table);
            }
        }
    }
    return table;
}

const Table kFields = {
    {"avrcp change_folder_path uid", "no"},
    {"avrcp get_element_attribute ids", "no"},
    {"avrcp get_image encoding", "no"},
    {"avrcp get_image handle", "no"},
    {"avrcp get_image path", "no"},
    {"avrcp get_image pixel", "no"},
    {"avrcp get_linked_thumbnail handle", "no"},
    {"avrcp get_linked_thumbnail path", "no"},
    {"avrcp onGetFolderItemsRsp item item folder name", "title"},
    {"avrcp onGetFolderItemsRsp item item folder uid", "no"},
    {"avrcp onGetFolderItemsRsp item item media attributes text", "title"},
    {"avrcp onGetFolderItemsRsp item item media name", "title"},
    {"avrcp onGetFolderItemsRsp item item media uid", "no"},
    {"avrcp onGetFolderItemsRsp item item player features", "no"},
    {"avrcp onGetFolderItemsRsp item item player name", "title"},
    {"avrcp onGetPlayerItemsRsp features", "no"},
    {"avrcp onHandleTrackChanged track values", "title"},
    {"avrcp play_item uid", "no"},
    {"bluetooth create_bond_out_of_band data", "secret"},
    {"bluetooth le_test parameters", "no"},
    {"bluetooth onAdapterProperties value properties value manufacturer code", "no"},
    {"bluetooth onAdapterProperties value properties value name name", "name"},
    {"bluetooth onAdapterProperties value properties value other value", "data"},
    {"bluetooth onAdapterProperties value properties value saved_device device name", "name"},
    {"bluetooth onAdapterProperties value properties value version version", "no"},
    {"bluetooth onAppGapStarted data", "data"},
    {"bluetooth onBtVersion version", "no"},
    {"bluetooth onDeviceFound name", "name"},
    {"bluetooth onPinRequest name", "name"},
    {"bluetooth onRemoteDeviceProperties value properties value manufacturer code", "no"},
    {"bluetooth onRemoteDeviceProperties value properties value name name", "name"},
    {"bluetooth onRemoteDeviceProperties value properties value other value", "data"},
    {"bluetooth onRemoteDeviceProperties value properties value saved_device device name", "name"},
    {"bluetooth onRemoteDeviceProperties value properties value version version", "no"},
    {"bluetooth onSspRequest name", "name"},
    {"bluetooth onSspRequest passkey", "secret"},
    {"bluetooth pin_reply pin", "secret"},
    {"bluetooth set_adapter_property value value manufacturer code", "no"},
    {"bluetooth set_adapter_property value value name name", "name"},
    {"bluetooth set_adapter_property value value other value", "data"},
    {"bluetooth set_adapter_property value value saved_device device name", "name"},
    {"bluetooth set_adapter_property value value version version", "no"},
    {"bluetooth set_remote_device_property value value manufacturer code", "no"},
    {"bluetooth set_remote_device_property value value name name", "name"},
    {"bluetooth set_remote_device_property value value other value", "data"},
    {"bluetooth set_remote_device_property value value saved_device device name", "name"},
    {"bluetooth set_remote_device_property value value version version", "no"},
    {"bluetooth ssp_reply passkey", "secret"},
    {"gatt_client onBatchScanReports data", "secret"},
    {"gatt_client onNotify value", "data"},
    {"gatt_client onReadCharacteristic value", "data"},
    {"gatt_client onReadDescriptor value", "data"},
    {"gatt_client onReceiveDataFromCentral data", "data"},
    {"gatt_client onScanAddressName name", "name"},
    {"gatt_client onScanResult data", "advertised"},
    {"gatt_client scan_filter_add address", "address"},
    {"gatt_client scan_filter_add data", "data"},
    {"gatt_client scan_filter_add mask", "data"},
    {"gatt_client scan_filter_add name", "name"},
    {"gatt_client scan_filter_delete address", "address"},
    {"gatt_client scan_filter_delete data", "data"},
    {"gatt_client scan_filter_delete mask", "data"},
    {"gatt_client scan_filter_delete name", "name"},
    {"gatt_client send_data data", "data"},
    {"gatt_client set_adv_data manufacturer_data", "data"},
    {"gatt_client set_adv_data service_data", "data"},
    {"gatt_client set_adv_data service_uuids", "no"},
    {"gatt_client set_client_adv_data manufacturer_data", "data"},
    {"gatt_client set_client_adv_data service_data", "data"},
    {"gatt_client set_client_adv_data service_uuids", "no"},
    {"gatt_client set_user_def_adv_data data", "advertised"},
    {"gatt_client write_characteristic value", "data"},
    {"gatt_client write_descriptor value", "data"},
    {"gatt_server onAttributeWrite value", "data"},
    {"gatt_server send_indication value", "data"},
    {"gatt_server send_notification value", "data"},
    {"gatt_server send_response value", "data"},
    {"hfp dial number", "number"},
    {"hfp onAgManufacturerId name", "no"},
    {"hfp onAgModelName name", "no"},
    {"hfp onCallWaiting number", "number"},
    {"hfp onClip number", "number"},
    {"hfp onCurrentCalls number", "number"},
    {"hfp onCurrentOperator name", "name"},
    {"hfp onLastVoiceTagNumber number", "number"},
    {"hfp onSubscriberInfo name", "number"},
    {"hfp send_at_command argument", "number"},
    {"hfp send_dtmf code", "secret"},
    {"hid onIntrData data", "data"},
    {"hid onSetReport data", "data"},
    {"hid register_app description", "no"},
    {"hid register_app in_qos", "no"},
    {"hid register_app name", "no"},
    {"hid register_app out_qos", "no"},
    {"hid register_app provider", "no"},
    {"hid register_app report_descriptor", "no"},
    {"hid send_report report", "secret"},
    {"pbap onIndexDataInd name", "name"},
    {"pbap onIndexDataInd number", "number"},
    {"pbap onIndexDataInd separator", "no"},
    {"pbap onIndexDataInd time", "no"},
    {"pbap onPhonebookPhotodataInd data", "secret"},
    {"pbap onPhonebookRawdataInd data", "contact"},
    {"pbap onVcfDataInd line", "contact"},
    {"pbap pull_vcard_by_number number", "number"},
    {"rfcomm listen service_name", "no"},
};

TEST(PrivateFields, EachFieldThatCanHoldTextIsThoughtAbout) {
    const Table all = AllFields();
    for (const auto& [name, kind] : all) {
        const auto known = kFields.find(name);
        if (known == kFields.end()) {
            ADD_FAILURE() << "{\"" << name << "\", \"" << kind << "\"},";
        } else {
            EXPECT_EQ(known->second, kind) << name;
        }
    }
    for (const auto& [name, kind] : kFields) {
        EXPECT_EQ(all.count(name), 1U) << "there is no field " << name;
    }
}

} // namespace
