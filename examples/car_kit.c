/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* A car kit: takes a call and makes another, plays a song into a WAV file, and loads the phone book.
 *
 * usage: car_kit DIRECTORY      (the directory of the server's socket; music.wav comes there, too)
 */
#include "calls.h"
#include "radio.h"
#include "wav.h"

#include <vym/vym_a2dp.h>
#include <vym/vym_audio_stream.h>
#include <vym/vym_avrcp.h>
#include <vym/vym_hfp.h>
#include <vym/vym_pbap.h>

enum { ENTRIES_SHOWN = 3, CONTACTS = 50, PACKETS_OF_MUSIC = 50, TITLE = 1 };
enum { CONNECTED = 2 }; /* and above, as the server numbers the states of a connection */

/* The phone of vym-sim; a real application takes it from discovery or from the bonded devices. */
static const bt_bdaddr_t phone = {{0x01, 0x61, 0x6E, 0x6E, 0x41, 0x2A}};
static char other_number[] = "+4989987654";

/* What the callbacks have told us. */
static struct {
    int hands_free;
    int music_connected;
    int player_connected;
    int has_title;
    int sample_rate;
    int channels;
    int packets;
    int enough_music;
    int book_connected;
    int entries;
    int book_ended;
} car;

static wav_t recording;

/* Calls. Callbacks run on the library's receive thread, one event of the server each. */
static void on_hands_free(uint8_t state, int peer_feat, int chld_feat, bt_bdaddr_t address) {
    note(&car.hands_free, state >= CONNECTED);
}

static hfp_callback_t hfp_callbacks = {
    .connection_state_cb = on_hands_free,
    .current_calls_cb = on_call,
    .current_call_num_cb = on_calls_listed,
};

/* Music: A2DP brings the sound, AVRCP is the player's buttons and display. */

static void on_music_connection(bt_bdaddr_t address, uint8_t state) {
    note(&car.music_connected, state == CONNECTED);
}

static void on_music_config(bt_bdaddr_t address, int sample_rate, uint8_t channels) {
    say("   music comes with %d samples per second on %d channels", sample_rate, channels);
    note(&car.channels, channels);
    note(&car.sample_rate, sample_rate);
}

static a2dp_callback_t a2dp_callbacks = {
    .connection_state_changed_cb = on_music_connection,
    .audio_config_changed_cb = on_music_config,
};

static void on_player_connection(uint8_t connected, bt_bdaddr_t address) {
    note(&car.player_connected, connected != 0);
}

static void on_track(bt_bdaddr_t address, uint16_t data_len, struct AVRCP_Num4IDValueStru attributes) {
    for (int i = 0; i < attributes.num; i++) {
        const struct AVRCP_4IDStringStru* attribute = &attributes.id_value[i];
        if (attribute->value != NULL && attribute->attr_id == TITLE) {
            say("   title:  %s", (const char*)attribute->value);
            note(&car.has_title, 1);
        }
    }
}

static avrcp_callback_t avrcp_callbacks = {
    .connection_state_changed_cb = on_player_connection,
    .handle_track_changed_cb = on_track,
};

/* On the audio thread: one packet, of music or of a call's voice. */
static void on_audio(uint8_t stream_type, uint8_t codec_type, uint16_t len, uint8_t* data) {
    if (stream_type == AUDIO_STREAM_TYPE_A2DP) {
        wav_append(&recording, data, len);
        note(&car.enough_music, ++car.packets >= PACKETS_OF_MUSIC);
    }
}

static audio_stream_callback_t audio_callbacks = {.vym_audio_stream_cb = on_audio};

/* The phone book. */
static void on_book_connection(uint8_t status, bt_bdaddr_t address) {
    note(&car.book_connected, status == 0);
}

static void on_entry(phone_book_t entry) {
    if (car.entries < ENTRIES_SHOWN) {
        say("   %-20s %s", entry.name, entry.number);
    }
    note(&car.entries, car.entries + 1);
}

static void on_book_end(uint16_t result) {
    note(&car.book_ended, 1);
}

static pbap_callback_t pbap_callbacks = {
    .connection_status_cb = on_book_connection,
    .index_data_ind_cb = on_entry,
    .get_phonebook_status_cb = on_book_end,
};

/* The scenes. */
static void make_calls(void) {
    say("2. Somebody calls");
    await(&call_state[1], CALL_STATE_INCOMING, "an incoming call (vym-sim --ring-after 500)");
    vym_hfp_accept_call(phone, CALL_ACCEPT_NONE);
    await(&call_state[1], CALL_STATE_ACTIVE, "the answered call");

    say("3. We call somebody else; the first call is put on hold");
    vym_hfp_dial(other_number);
    await(&call_state[1], CALL_STATE_HELD, "the call on hold");
    await(&call_state[2], CALL_STATE_ACTIVE, "the second call");

    say("4. We end the second call, take up the first again, and end it");
    vym_hfp_terminate_call(phone, 2);
    await(&call_state[2], CALL_STATE_TERMINATED, "the end of the second call");
    if (noted(&call_state[1]) == CALL_STATE_HELD) {
        vym_hfp_accept_call(phone, CALL_ACCEPT_NONE);
    }
    await(&call_state[1], CALL_STATE_ACTIVE, "the first call taken up again");
    vym_hfp_terminate_call(phone, 1);
    await(&call_state[1], CALL_STATE_TERMINATED, "the end of the first call");
}

static void play_music(const char* directory) {
    wav_begin(&recording, directory, "music.wav");
    vym_a2dp_connect(phone);
    await(&car.music_connected, 1, "the connection for music");
    await(&car.player_connected, 1, "the connection to the player");
    vym_avrcp_play(phone);
    await(&car.has_title, 1, "the title");
    await(&car.enough_music, 1, "packets of music");
    await_other(&car.sample_rate, 0, "how the music is coded");
    vym_avrcp_stop(phone);
    vym_a2dp_disconnect(phone);
    await(&car.music_connected, 0, "the end of the music");
    wav_end(&recording, noted(&car.sample_rate), noted(&car.channels));
    say("   %u bytes of music are in %s/music.wav", recording.size, directory);
}

static void load_phone_book(void) {
    vym_pbap_connect(phone);
    await(&car.book_connected, 1, "the phone-book connection");
    vym_pbap_get_phonebook(SYNC_PHONE_CONTACT, 0, CONTACTS);
    await(&car.book_ended, 1, "the end of the phone book");
    say("   ... and so on, %d numbers of %d contacts", noted(&car.entries), CONTACTS);
    vym_pbap_disconnect(phone);
    await(&car.book_connected, 0, "the end of the phone-book connection");
}

int main(int argc, char** argv) {
    radio_begin("car_kit", argc, argv);
    vym_audio_stream_init(&audio_callbacks);
    vym_hfp_init(&hfp_callbacks);
    vym_a2dp_init(&a2dp_callbacks);
    vym_avrcp_init(&avrcp_callbacks);
    vym_pbap_init(&pbap_callbacks);
    radio_on();

    say("1. Pair and connect with the phone");
    radio_bond(phone);
    vym_hfp_connect(phone);
    await(&car.hands_free, 1, "the hands-free connection");
    make_calls();
    say("5. A song plays");
    play_music(argv[1]);
    say("6. The phone book comes down");
    load_phone_book();

    radio_off();
    vym_pbap_done();
    vym_avrcp_done();
    vym_a2dp_done();
    vym_hfp_done();
    radio_end();
    vym_audio_stream_done();
    return 0;
}
