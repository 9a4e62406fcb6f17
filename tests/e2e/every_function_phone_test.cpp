// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Every function of hands-free, the phone book and the audio stream, against the simulated phone.

#include "e2e/every_function.h"

#include <gtest/gtest.h>
#include <string>

namespace {

using e2e::Heard;
using e2e::kPhone;
using e2e::kSpeaker;

class EveryHandsFreeFunction : public e2e::EveryFunction {
protected:
    void Connect() {
        EXPECT_EQ(vym_hfp_connect(kPhone), BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("hfp.connection_state", 3, 0xFD, 0x2F, kPhone));
        EXPECT_TRUE(CallsAre(0));
    }

    /** The list of calls was asked for, has come, and has so many. */
    ::testing::AssertionResult CallsAre(int count) { return Hears("hfp.current_call_num", count); }
    ::testing::AssertionResult Call(int index, int direction, call_state_t state, const char* number) {
        return Hears("hfp.current_calls", index, direction, state, 0, number);
    }
};

TEST_F(EveryHandsFreeFunction, ConnectsAndDisconnects) {
    EXPECT_EQ(CALL(vym_hfp_connect)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.connection_state", 1, 0, 0, kPhone));
    EXPECT_TRUE(Hears("hfp.connection_state", 2, 0, 0, kPhone));
    EXPECT_TRUE(Hears("hfp.connection_state", 3, 0xFD, 0x2F, kPhone));
    EXPECT_TRUE(Hears("hfp.ag_model_name", "Sim Phone 1"));
    EXPECT_TRUE(Hears("hfp.ag_manufacturer_id", "vym"));
    EXPECT_TRUE(Hears("hfp.network_state", 1));
    EXPECT_TRUE(Hears("hfp.network_signal", 4));
    EXPECT_TRUE(Hears("hfp.battery_level", 5));
    EXPECT_TRUE(Hears("hfp.current_operator", "Sim Mobile"));
    EXPECT_EQ(CALL(vym_hfp_disconnect)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.connection_state", 0, 0, 0, kPhone));

    EXPECT_EQ(vym_hfp_connect(kSpeaker), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.connection_state", 0, 0, 0, kSpeaker)) << "it is no phone";
}

TEST_F(EveryHandsFreeFunction, PlacesACallMovesItsSoundAndEndsIt) {
    Connect();
    char number[] = "+4930777777";
    EXPECT_EQ(CALL(vym_hfp_dial)(number), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Call(1, 0, CALL_STATE_DIALING, "+4930777777"));
    EXPECT_TRUE(Hears("hfp.audio_state", 2, kPhone));
    EXPECT_EQ(Order("phone answer"), "ok\n");
    EXPECT_TRUE(Call(1, 0, CALL_STATE_ACTIVE, "+4930777777"));

    EXPECT_EQ(CALL(vym_hfp_disconnect_audio)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.audio_state", 0, kPhone));
    EXPECT_EQ(CALL(vym_hfp_connect_audio)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.audio_state", 2, kPhone));

    EXPECT_EQ(CALL(vym_hfp_send_dtmf)('5'), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("tone 5\n"));
    EXPECT_EQ(CALL(vym_hfp_terminate_call)(kPhone, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Call(1, 0, CALL_STATE_TERMINATED, "+4930777777"));
    EXPECT_TRUE(CallsAre(0));
}

TEST_F(EveryHandsFreeFunction, DialsFromThePhonesMemory) {
    Connect();
    EXPECT_EQ(CALL(vym_hfp_dial_memory)(2), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Call(1, 0, CALL_STATE_DIALING, "+491711112223"));
    EXPECT_EQ(vym_hfp_dial_memory(3), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.call_action_complete", 4, 1)) << "there is no third place";
}

TEST_F(EveryHandsFreeFunction, AcceptsACallAndRejectsAnother) {
    Connect();
    EXPECT_EQ(CALL(vym_hfp_accept_call)(kPhone, CALL_ACCEPT_NONE), BT_STATUS_FAIL);
    EXPECT_EQ(Order("phone call +4930111111"), "ok\n");
    EXPECT_TRUE(Call(1, 1, CALL_STATE_INCOMING, "+4930111111"));
    EXPECT_TRUE(CallsAre(1));
    EXPECT_EQ(CALL(vym_hfp_accept_call)(kPhone, CALL_ACCEPT_NONE), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Call(1, 1, CALL_STATE_ACTIVE, "+4930111111"));

    EXPECT_EQ(Order("phone call +4930222222"), "ok\n");
    EXPECT_TRUE(Hears("hfp.call_waiting", "+4930222222"));
    EXPECT_TRUE(Call(2, 1, CALL_STATE_WAITING, "+4930222222"));
    EXPECT_TRUE(CallsAre(2));
    EXPECT_EQ(CALL(vym_hfp_reject_call)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Call(2, 1, CALL_STATE_TERMINATED, "+4930222222"));
    EXPECT_EQ(vym_hfp_reject_call(kPhone), BT_STATUS_FAIL);
}

TEST_F(EveryHandsFreeFunction, StartsAndStopsVoiceRecognition) {
    Connect();
    EXPECT_EQ(CALL(vym_hfp_start_voice_recognition)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.vr_cmd", 1));
    EXPECT_TRUE(Hears("hfp.audio_state", 2, kPhone));
    EXPECT_EQ(CALL(vym_hfp_stop_voice_recognition)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.vr_cmd", 0));
    EXPECT_TRUE(Hears("hfp.audio_state", 0, kPhone));
}

TEST_F(EveryHandsFreeFunction, SetsTheVolumeMutesTheMicrophoneAndAsksForTheVoiceTag) {
    Connect();
    EXPECT_EQ(CALL(vym_hfp_volume_control)(1, 13), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.volume_change", 1, 13));
    EXPECT_EQ(vym_hfp_volume_control(0, 16), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.call_action_complete", 2, 1)) << "15 is the loudest";
    EXPECT_EQ(CALL(vym_hfp_switch_mic_state)(1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("microphone muted\n"));
    EXPECT_EQ(vym_hfp_switch_mic_state(0), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("microphone open\n"));
    EXPECT_EQ(CALL(vym_hfp_query_last_voice_tag_name)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.last_voice_tag_number", "+4930111222"));
}

class EveryPhoneBookFunction : public e2e::EveryFunction {
protected:
    /** Whether the picture of the first entry came since this was asked last. */
    static bool HeardAPhotograph() {
        bool heard = false;
        for (const std::string& entry : Heard().Take()) {
            heard = heard || (entry.rfind("pbap.phonebook_photodata_ind(1, 0, ", 0) == 0 &&
                              entry.find(", FFD8") != std::string::npos);
        }
        return heard;
    }

    void Connect() {
        EXPECT_EQ(vym_pbap_connect(kPhone), BT_STATUS_SUCCESS);
        EXPECT_TRUE(Hears("pbap.connection_status", 0, kPhone));
    }
};

TEST_F(EveryPhoneBookFunction, ConnectsAndDisconnects) {
    EXPECT_EQ(CALL(vym_pbap_is_connected)(), 0);
    EXPECT_EQ(CALL(vym_pbap_connect)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("pbap.connection_status", 0, kPhone));
    EXPECT_TRUE(support::WaitUntil([] { return vym_pbap_is_connected() == 1; }));
    EXPECT_EQ(CALL(vym_pbap_disconnect)(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("pbap.connection_status", 1, kPhone));
    EXPECT_TRUE(support::WaitUntil([] { return vym_pbap_is_connected() == 0; }));
}

TEST_F(EveryPhoneBookFunction, DownloadsEntriesWithAndWithoutPhotographs) {
    Connect();
    EXPECT_EQ(CALL(vym_pbap_get_phonebook_size)(SYNC_SIM_CONTACT), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("pbap.get_phonebook_size", SYNC_SIM_CONTACT, 3, 0));
    EXPECT_EQ(CALL(vym_pbap_get_phonebook)(SYNC_CALLLOG, 4, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("pbap.index_data_ind", SYNC_CALLLOG, 4, "BobMiller", 0, "+4930333444",
                      "20260127T070000"));
    EXPECT_TRUE(Hears("pbap.get_phonebook_status", 0));

    EXPECT_EQ(CALL(vym_pbap_filter_mask)(PBAP_INFO_MASK_PHOTO), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_pbap_get_phonebook(SYNC_PHONE_CONTACT, 0, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("pbap.get_phonebook_status", 0));
    EXPECT_TRUE(HeardAPhotograph());
    EXPECT_EQ(vym_pbap_filter_mask(static_cast<mask_type_t>(0)), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_pbap_get_phonebook(SYNC_PHONE_CONTACT, 0, 1), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("pbap.get_phonebook_status", 0));
    EXPECT_FALSE(HeardAPhotograph());
}

TEST_F(EveryPhoneBookFunction, FetchesOneEntryAndCancelsADownload) {
    Connect();
    char number[] = "+4930333444";
    EXPECT_EQ(CALL(vym_pbap_pull_vcard_by_number)(1, number), BT_STATUS_SUCCESS);
    EXPECT_TRUE(
        Hears("pbap.index_data_ind", SYNC_PHONE_CONTACT, 1, "BobLeeMiller", 3, "+4930333444", ""));
    EXPECT_TRUE(Hears("pbap.get_phonebook_status", 0));

    EXPECT_EQ(CALL(vym_pbap_cancel_get_phonebook)(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Notes("no transfer is under way\n"));
    // Both commands are there before the first entry goes out.
    EXPECT_EQ(Order("server stall 1s"), "ok\n");
    EXPECT_EQ(vym_pbap_get_phonebook(SYNC_PHONE_CONTACT, 0, 50), BT_STATUS_SUCCESS);
    EXPECT_EQ(vym_pbap_cancel_get_phonebook(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("pbap.get_phonebook_status", 1));
}

class EveryAudioFunction : public e2e::EveryFunction {};

TEST_F(EveryAudioFunction, CarriesVoiceBothWays) {
    EXPECT_EQ(vym_hfp_connect(kPhone), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("hfp.connection_state", 3, 0xFD, 0x2F, kPhone));
    CALL(vym_audio_stream_done)();
    EXPECT_TRUE(Notes("audio closed: "));
    uint8_t samples[320] = {};
    EXPECT_EQ(CALL(vym_audio_stream_send)(AUDIO_STREAM_TYPE_SCO, 1, sizeof samples, samples), -1);

    Heard().Take();
    CALL(vym_audio_stream_init)(&Table().audio);
    EXPECT_EQ(vym_bluetooth_enable(), BT_STATUS_SUCCESS);
    EXPECT_TRUE(Hears("audio.packet", AUDIO_STREAM_TYPE_SCO, 1, 320));
    EXPECT_EQ(vym_audio_stream_send(AUDIO_STREAM_TYPE_SCO, 1, sizeof samples, samples), 320);
    EXPECT_EQ(vym_audio_stream_send(AUDIO_STREAM_TYPE_A2DP, 1, sizeof samples, samples), 0);
    EXPECT_TRUE(Notes("voice from the client begins\n"));
    vym_audio_stream_done();
    EXPECT_TRUE(Notes(" 320 voice bytes received\n"));
}

} // namespace
