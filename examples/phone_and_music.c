/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* A head unit's afternoon: the phone rings, a second call is made while the first is on hold, both end;
 * a song plays with its title; the phone book comes down.
 *
 * usage: phone_and_music DIRECTORY      (the directory of the server's socket)
 */
#include "scene.h"

#include <vym/vym_a2dp.h>
#include <vym/vym_audio_stream.h>
#include <vym/vym_avrcp.h>
#include <vym/vym_bluetooth.h>
#include <vym/vym_hfp.h>
#include <vym/vym_pbap.h>
#include <vym/vym_sdk.h>

#include <string.h>

enum { MAX_CALLS = 10, NO_CALL = -1, ENTRIES_SHOWN = 3, STREAMING_PACKETS = 50 };
enum { AVRCP_TITLE = 1, AVRCP_ARTIST = 2 };

/* The phone of vym-sim; a real application takes it from discovery or from the bonded devices. */
static const bt_bdaddr_t phone = {{0x01, 0x61, 0x6E, 0x6E, 0x41, 0x2A}};
static char other_number[] = "+4989987654";

static const char* const state_names[] = {"active",   "on hold", "dialing",           "alerting",
                                          "incoming", "waiting", "held by the phone", "ended"};

/* What the callbacks have told us. */
static struct {
    int powered;
    int bonded;
    int hands_free;
    int heard[MAX_CALLS + 1];      /* by the phone's index, as the calls are listed */
    int call_state[MAX_CALLS + 1]; /* the same when the list is complete */
    int music_connected;
    int player_connected;
    int has_title;
    int music_packets;
    int music_streams;
    int book_connected;
    int book_size;
    int entries;
    int book_ended;
} world;

/* The adapter. */

static void on_state_changed(uint8_t state) {
    note(&world.powered, state == BT_STATE_ON);
}

static void on_ssp_request(bt_bdaddr_t address, int class_of_device, uint8_t pairing_variant,
                           int passkey, char* name) {
    (void)class_of_device;
    (void)name;
    vym_bluetooth_ssp_reply(address, pairing_variant, 1, passkey);
}

static void on_bond_state_changed(uint8_t status, bt_bdaddr_t address, uint8_t state) {
    (void)address;
    note(&world.bonded, status == BT_STATUS_SUCCESS && state == BT_BOND_STATE_BONDED);
}

static bluetooth_callback_t bluetooth_callbacks = {
    .state_changed_cb = on_state_changed,
    .ssp_request_cb = on_ssp_request,
    .bond_state_changed_cb = on_bond_state_changed,
};

/* Calls. */

static void on_hands_free(uint8_t state, int peer_feat, int chld_feat, bt_bdaddr_t address) {
    (void)peer_feat;
    (void)chld_feat;
    (void)address;
    note(&world.hands_free, state >= 2);
}

static void on_ring(void) {
    say("   ... it rings");
}

static void on_clip(char* number) {
    say("   the caller is %s", number);
}

/* Each refresh of the list brings every call; only changes are worth a line. */
static void on_call(bluetooth_call_t call) {
    if (call.idx > MAX_CALLS || call.state > CALL_STATE_TERMINATED ||
        world.heard[call.idx] == call.state) {
        return;
    }
    say("   call %d with %s is %s", call.idx, call.number, state_names[call.state]);
    world.heard[call.idx] = call.state;
}

/* The refresh is complete: only now does the library decide by it how a call is answered or ended. */
static void on_calls_listed(int num) {
    (void)num;
    for (int i = 0; i <= MAX_CALLS; i++) {
        note(&world.call_state[i], world.heard[i]);
    }
}

static void on_operator(char* name) {
    say("   the phone is in the network \"%s\"", name);
}

static hfp_callback_t hfp_callbacks = {
    .connection_state_cb = on_hands_free,
    .current_operator_cb = on_operator,
    .clip_cb = on_clip,
    .current_calls_cb = on_call,
    .ring_indication_cb = on_ring,
    .current_call_num_cb = on_calls_listed,
};

/* Music. */

static void on_music_connection(bt_bdaddr_t address, uint8_t state) {
    (void)address;
    note(&world.music_connected, state == 2);
}

static void on_music_config(bt_bdaddr_t address, int sample_rate, uint8_t channels) {
    (void)address;
    say("   music comes with %d samples per second on %d channels", sample_rate, channels);
}

static a2dp_callback_t a2dp_callbacks = {
    .connection_state_changed_cb = on_music_connection,
    .audio_config_changed_cb = on_music_config,
};

static void on_player_connection(uint8_t connected, bt_bdaddr_t address) {
    (void)address;
    note(&world.player_connected, connected != 0);
}

static void on_track(bt_bdaddr_t address, uint16_t data_len, struct AVRCP_Num4IDValueStru attributes) {
    (void)address;
    (void)data_len;
    for (int i = 0; i < attributes.num; i++) {
        const struct AVRCP_4IDStringStru* attribute = &attributes.id_value[i];
        if (attribute->value != NULL && attribute->attr_id == AVRCP_TITLE) {
            say("   title:  %s", (const char*)attribute->value);
            note(&world.has_title, 1);
        } else if (attribute->value != NULL && attribute->attr_id == AVRCP_ARTIST) {
            say("   artist: %s", (const char*)attribute->value);
        }
    }
}

static void on_position(bt_bdaddr_t address, int song_len, int curr_song_position) {
    (void)address;
    say("   at %d of %d seconds", curr_song_position / 1000, song_len / 1000);
}

/* The phone changes its volume: we take it over and say so. */
static void on_set_volume(bt_bdaddr_t address, uint8_t volume) {
    vym_avrcp_send_abs_vol_rsp(address, volume);
}

static avrcp_callback_t avrcp_callbacks = {
    .connection_state_changed_cb = on_player_connection,
    .handle_set_abs_volume_cb = on_set_volume,
    .handle_track_changed_cb = on_track,
    .handle_play_position_changed_cb = on_position,
};

/* On the audio thread: one packet, of music or of voice. */
static void on_audio(uint8_t stream_type, uint8_t codec_type, uint16_t len, uint8_t* data) {
    (void)codec_type;
    (void)len;
    (void)data;
    if (stream_type == AUDIO_STREAM_TYPE_A2DP) {
        note(&world.music_packets, world.music_packets + 1);
        note(&world.music_streams, world.music_packets >= STREAMING_PACKETS);
    }
}

static audio_stream_callback_t audio_callbacks = {.vym_audio_stream_cb = on_audio};

/* The phone book. */

static void on_book_connection(uint8_t status, bt_bdaddr_t address) {
    (void)address;
    note(&world.book_connected, status == 0);
}

static void on_book_size(uint16_t type, uint16_t size, uint16_t result) {
    (void)type;
    (void)result;
    note(&world.book_size, size);
}

static void on_entry(phone_book_t entry) {
    if (world.entries < ENTRIES_SHOWN) {
        say("   %-20s %s", entry.name, entry.number);
    }
    note(&world.entries, world.entries + 1);
}

static void on_book_status(uint16_t result) {
    (void)result;
    note(&world.book_ended, 1);
}

static pbap_callback_t pbap_callbacks = {
    .connection_status_cb = on_book_connection,
    .get_phonebook_status_cb = on_book_status,
    .get_phonebook_size_cb = on_book_size,
    .index_data_ind_cb = on_entry,
};

/* The scenes. */

static void make_calls(void) {
    for (int i = 0; i <= MAX_CALLS; i++) {
        world.heard[i] = NO_CALL;
        world.call_state[i] = NO_CALL;
    }
    vym_hfp_connect(phone);
    await(&world.hands_free, 1, "the hands-free connection");

    say("2. Somebody calls");
    await(&world.call_state[1], CALL_STATE_INCOMING, "an incoming call");
    vym_hfp_accept_call(phone, CALL_ACCEPT_NONE);
    await(&world.call_state[1], CALL_STATE_ACTIVE, "the answered call");

    say("3. We call somebody else; the first call is put on hold");
    vym_hfp_dial(other_number);
    await(&world.call_state[1], CALL_STATE_HELD, "the call on hold");
    await(&world.call_state[2], CALL_STATE_ACTIVE, "the second call");

    say("4. We end the second call, take up the first again, and end it");
    vym_hfp_terminate_call(phone, 2);
    await(&world.call_state[2], CALL_STATE_TERMINATED, "the end of the second call");
    if (noted(&world.call_state[1]) == CALL_STATE_HELD) {
        vym_hfp_accept_call(phone, CALL_ACCEPT_NONE);
    }
    await(&world.call_state[1], CALL_STATE_ACTIVE, "the first call taken up again");
    vym_hfp_terminate_call(phone, 1);
    await(&world.call_state[1], CALL_STATE_TERMINATED, "the end of the first call");
}

static void play_music(void) {
    say("5. A song plays");
    vym_a2dp_connect(phone);
    await(&world.music_connected, 1, "the connection for music");
    await(&world.player_connected, 1, "the connection to the player");
    vym_avrcp_play(phone);
    await(&world.has_title, 1, "the title");
    await(&world.music_streams, 1, "packets of music");
    say("   %d packets of music and counting", STREAMING_PACKETS);
    vym_avrcp_stop(phone);
    vym_a2dp_disconnect(phone);
    await(&world.music_connected, 0, "the end of the music");
}

static void load_phone_book(void) {
    say("6. The phone book comes down");
    world.book_size = NO_CALL;
    vym_pbap_connect(phone);
    await(&world.book_connected, 1, "the phone-book connection");
    vym_pbap_get_phonebook_size(SYNC_PHONE_CONTACT);
    await(&world.book_size, 50, "a phone book of 50 entries");
    vym_pbap_get_phonebook(SYNC_PHONE_CONTACT, 0, 50);
    await(&world.book_ended, 1, "the end of the phone book");
    say("   ... and so on, %d numbers of %d contacts", noted(&world.entries), noted(&world.book_size));
    vym_pbap_disconnect(phone);
    await(&world.book_connected, 0, "the end of the phone-book connection");
}

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: phone_and_music DIRECTORY   (where the server's vym_socket is)\n");
        return 2;
    }
    scene_begin("phone_and_music", argv[1]);
    say("1. Switch on, pair and connect with the phone");
    if (vym_sdk_init_ex(argv[1]) < 0) {
        give_up("no server answers on %s/vym_socket; start vym-sim --dir %s --ring-after 500", argv[1],
                argv[1]);
    }
    vym_bluetooth_init(&bluetooth_callbacks);
    vym_audio_stream_init(&audio_callbacks);
    vym_hfp_init(&hfp_callbacks);
    vym_a2dp_init(&a2dp_callbacks);
    vym_avrcp_init(&avrcp_callbacks);
    vym_pbap_init(&pbap_callbacks);

    vym_bluetooth_enable();
    await(&world.powered, 1, "power on");
    vym_bluetooth_create_bond(phone);
    await(&world.bonded, 1, "the bond with the phone");

    make_calls();
    play_music();
    load_phone_book();

    vym_pbap_done();
    vym_avrcp_done();
    vym_a2dp_done();
    vym_hfp_done();
    vym_audio_stream_done();
    vym_bluetooth_done();
    vym_sdk_done();
    say("Done. Diagnostics: %s/phone_and_music.log", argv[1]);
    return 0;
}
