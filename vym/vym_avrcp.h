/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_avrcp.h
 * Remote control of a media player (AVRCP controller): keys, player settings, absolute volume, track
 * metadata, browsing and cover art.
 *
 * Every call writes one command (a plain key two: press and release) and returns; what comes of it
 * arrives in the callbacks, on the receive thread (see vym_sdk.h). The server brings the link to the
 * player up and down by itself and reports it with `connection_state_changed_cb`.
 *
 * Functions return BT_STATUS_SUCCESS when the command was written (or dropped because the library is
 * not connected) and BT_STATUS_NOMEM, with nothing sent, when it could not be built: there was no
 * memory, or a block is too long. Those that say "always" return BT_STATUS_SUCCESS in any case. Values
 * are not checked: they are passed on, with the meaning that the profile gives them. Any thread may
 * call, before init as well.
 *
 * @par Blocks
 * A pointer and a length stand for bytes of any value. NULL or a length of 0 sends an empty block. Each
 * byte 00, 0A, 0D or DC counts twice, and a block may count 65535.
 */
#ifndef VYM_AVRCP_H
#define VYM_AVRCP_H

#include "bluetooth.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Version of the profile that a player speaks. 1, 2 and 7 may occur, without a name. */
typedef VYM_ENUM(tag_avrcp_version){
    AVRCP_1_0 = 0, /**< version 1.0 */
    AVRCP_1_3 = 3, /**< version 1.3 */
    AVRCP_1_4 = 4, /**< version 1.4 */
    AVRCP_1_5 = 5, /**< version 1.5 */
    AVRCP_1_6 = 6, /**< version 1.6 */
} avrcp_version_t;

/** One setting of a player, such as repeat or shuffle. */
struct AVRCP_IDPairStru {
    /** Which setting; 1 to 4 as in the profile. */
    uint8_t attr_id;
    /** What it is set to. */
    uint8_t value;
};

/** Settings of a player. */
struct AVRCP_NumIDPairStru {
    /** How many. */
    uint8_t num;
    /** `num` settings. */
    struct AVRCP_IDPairStru* id_value;
};

/** One attribute of a track, such as its title. */
struct AVRCP_4IDStringStru {
    /** 0: the track's UID. Others as in the profile: 1 title, 2 artist, 3 album ... */
    uint32_t attr_id;
    /** Bytes in `value`, the NUL of a text included. */
    uint16_t len;
    /** A text ended by a NUL, or the 8 bytes of a UID; NULL when `len` is 0. */
    uint8_t* value;
};

/** Attributes of a track. */
struct AVRCP_Num4IDValueStru {
    /** How many. */
    uint8_t num;
    /** `num` attributes, NULL when there are none. */
    struct AVRCP_4IDStringStru* id_value;
};

/*
 * Items of a player's folders, as the server lays them out: packed, numbers in processor order. Names
 * and texts fill their array and need not end with a NUL. Always whole: what the server left out is 0.
 */
#define VYM_PACKED __attribute__((packed)) /**< without gaps; for this header only */
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic" /* the open array, in C++ and in a union */

/** A player. */
typedef struct VYM_PACKED tag_btrc_item_player {
    /** Names it in calls. */
    uint16_t player_id;
    /** Bits as in the profile: 1 audio, 2 video ... */
    uint8_t major_type;
    /** Bits as in the profile: 1 audio book, 2 podcast. */
    uint32_t sub_type;
    /** As in `handle_play_status_changed_cb`. */
    uint8_t play_status;
    /** Bits as in the profile. */
    uint8_t features[16];
    /** IANA's number of the name's character set; 106 is UTF-8. */
    uint16_t charset_id;
    /** For people. */
    uint8_t name[255];
} btrc_item_player_t;

/** A folder. */
typedef struct VYM_PACKED tag_btrc_item_folder {
    /** Names it in calls. */
    uint8_t uid[8];
    /** As in the profile: 0 mixed, 1 titles, 2 albums ... */
    uint8_t type;
    /** 1: it can be played as a whole. */
    uint8_t playable;
    /** IANA's number of the name's character set; 106 is UTF-8. */
    uint16_t charset_id;
    /** For people. */
    uint8_t name[255];
} btrc_item_folder_t;

/** One attribute of a media item. */
typedef struct VYM_PACKED tag_btrc_element_attr_val {
    /** As in the profile: 1 title, 2 artist, 3 album ... */
    uint32_t attr_id;
    /** Its value. */
    uint8_t text[255];
} btrc_element_attr_val_t;

/** A media item. */
typedef struct VYM_PACKED tag_btrc_item_media {
    /** Names it in calls. */
    uint8_t uid[8];
    /** 0 audio, 1 video. */
    uint8_t type;
    /** IANA's number of the name's character set; 106 is UTF-8. */
    uint16_t charset_id;
    /** For people. */
    uint8_t name[255];
    /** Entries of `p_attrs`. */
    int num_attrs;
    /** `num_attrs` attributes. */
    btrc_element_attr_val_t p_attrs[];
} btrc_item_media_t;

/** An item behind its type, as it travels. */
typedef struct VYM_PACKED tag_btrc_folder_items {
    /** 1 player, 2 folder, 3 media. */
    uint8_t item_type;
    /** The one that `item_type` names. */
    union VYM_PACKED {
        btrc_item_player_t player; /**< a player */
        btrc_item_folder_t folder; /**< a folder */
        btrc_item_media_t media;   /**< a media item */
    } item;
} btrc_folder_items_t;

#pragma GCC diagnostic pop
#undef VYM_PACKED

/**
 * The application's callbacks. All run on the receive thread; NULL members are skipped. Pointers,
 * those inside of records included, are valid until the callback returns. Members are looked up for
 * each event; once started, change them in a callback only. `address` is the player's. `data_len` is
 * the length of the block in which the server sent a list; the list itself tells how many entries it
 * has.
 */
typedef struct tag_avrcp_callback {
    /** The player has taken a key. `id`: the key; `key_state`: 0 pressed, 1 released. */
    void (*handle_passthrough_rsp_cb)(uint8_t id, uint8_t key_state);
    /** `connected`: 1 connected, 0 disconnected. */
    void (*connection_state_changed_cb)(uint8_t connected, bt_bdaddr_t address);
    /** What the player can do: see convert_feature_to_avrcp_version(). `ca_psm`: where its cover art
     * is reached, for vym_avrcp_connect_bip(). */
    void (*get_rc_features_cb)(bt_bdaddr_t address, uint8_t features, int ca_psm);
    /** Answer to vym_avrcp_get_player_app_setting(): the values of the setting `current_id`, each
     * `attr_id` being the value's place in the list. */
    void (*handle_player_app_setting_cb)(bt_bdaddr_t address, uint16_t data_len, uint8_t current_id,
                                         struct AVRCP_NumIDPairStru settings);
    /** The player's settings have changed. */
    void (*handle_player_app_setting_changed_cb)(bt_bdaddr_t address, uint16_t data_len,
                                                 struct AVRCP_NumIDPairStru settings);
    /** The player sets the volume (0 to 127); answer with vym_avrcp_send_abs_vol_rsp(). */
    void (*handle_set_abs_volume_cb)(bt_bdaddr_t address, uint8_t abs_vol);
    /** The player wants to know the volume and its changes; answer with
     * vym_avrcp_send_register_abs_val_rsp(). */
    void (*handle_register_notification_abs_vol_cb)(bt_bdaddr_t address);
    /** Another track, or more about it. When the first attribute is the track's UID (`attr_id` 0), its
     * value is the UID's 8 bytes. */
    void (*handle_track_changed_cb)(bt_bdaddr_t address, uint16_t data_len,
                                    struct AVRCP_Num4IDValueStru attributes);
    /** Both in milliseconds. */
    void (*handle_play_position_changed_cb)(bt_bdaddr_t address, int song_len, int curr_song_position);
    /** 0 stopped, 1 playing, 2 paused, 3 seeking forward, 4 seeking backward. */
    void (*handle_play_status_changed_cb)(bt_bdaddr_t address, uint8_t play_status);
    /** The server's `status` with 0 and 4 exchanged. `count`: items in the folder. */
    void (*change_folder_path_rsp_cb)(bt_bdaddr_t address, uint8_t status, int count);
    /** Answer to vym_avrcp_get_total_number_of_items(). `status` as the server gives it. */
    void (*get_total_number_of_items_rsp_cb)(bt_bdaddr_t address, uint8_t status, int count);
    /** Answer to vym_avrcp_play_item(). `status` as the server gives it. */
    void (*play_item_rsp_cb)(bt_bdaddr_t address, uint8_t status);
    /** One player of a list. */
    void (*get_player_item_cb)(bt_bdaddr_t address, uint8_t status, btrc_item_player_t* item);
    /** One folder of a list. */
    void (*get_folder_item_cb)(bt_bdaddr_t address, uint8_t status, btrc_item_folder_t* item);
    /** One media item of a list. `num_attrs` is never more than there are. */
    void (*get_media_item_cb)(bt_bdaddr_t address, uint8_t status, btrc_item_media_t* item);
    /** What is being played, or the list of it, has changed. */
    void (*now_playing_content_changed_cb)(bt_bdaddr_t address, uint8_t state);
    /** The phone has turned to another of its players. */
    void (*addressed_player_changed_cb)(bt_bdaddr_t address, uint16_t player_id);
    /** A player was installed or removed. */
    void (*available_player_changed_cb)(bt_bdaddr_t address, uint8_t state);
    /** Answer to vym_avrcp_connect_bip(). */
    void (*connect_bip_result_cb)(bt_bdaddr_t address, uint8_t status);
    /** Answer to vym_avrcp_get_linked_thumbnail(). */
    void (*get_linked_thumbnail_result_cb)(bt_bdaddr_t address, uint8_t status);
    /** Answer to vym_avrcp_get_image(). */
    void (*get_image_result_cb)(bt_bdaddr_t address, uint8_t status);
} avrcp_callback_t;

/**
 * Starts the remote control. Call it after vym_sdk_init_ex(). Forgets the volume requests that were not
 * answered.
 *
 * @param cbk owned by the application, must live until vym_avrcp_done() returns. NULL: events are
 * dropped.
 */
void vym_avrcp_init(avrcp_callback_t* cbk);

/** Stops the remote control; no callback runs after it returns. Must not be called from a callback. */
void vym_avrcp_done(void);

/** Presses and releases "play". @return BT_STATUS_SUCCESS always. */
bt_status_t vym_avrcp_play(bt_bdaddr_t address);

/** Presses and releases "pause". @return BT_STATUS_SUCCESS always. */
bt_status_t vym_avrcp_pause(bt_bdaddr_t address);

/** Presses and releases "stop". @return BT_STATUS_SUCCESS always. */
bt_status_t vym_avrcp_stop(bt_bdaddr_t address);

/** Presses and releases "forward", the next track. @return BT_STATUS_SUCCESS always. */
bt_status_t vym_avrcp_forward(bt_bdaddr_t address);

/** Presses and releases "backward", the previous track. @return BT_STATUS_SUCCESS always. */
bt_status_t vym_avrcp_backward(bt_bdaddr_t address);

/**
 * Holds "fast forward" down, or lets it go. Prints a line.
 *
 * @param key_state not 0: press; 0: release.
 * @return BT_STATUS_SUCCESS always.
 */
bt_status_t vym_avrcp_fast_forward(bt_bdaddr_t address, uint8_t key_state);

/**
 * Holds "rewind" down, or lets it go. Prints a line.
 *
 * @param key_state not 0: press; 0: release.
 * @return BT_STATUS_SUCCESS always.
 */
bt_status_t vym_avrcp_rewind(bt_bdaddr_t address, uint8_t key_state);

/** Presses and releases "next group". @return BT_STATUS_SUCCESS always. */
bt_status_t vym_avrcp_next_group(bt_bdaddr_t address);

/** Presses and releases "previous group". @return BT_STATUS_SUCCESS always. */
bt_status_t vym_avrcp_previous_group(bt_bdaddr_t address);

/**
 * Asks for settings of the player; answered by `handle_player_app_setting_cb`.
 *
 * @param attrib_num how many settings. @param data their identifiers, `data_len` bytes.
 */
bt_status_t vym_avrcp_get_player_app_setting(bt_bdaddr_t address, uint8_t attrib_num, uint16_t data_len,
                                             uint8_t* data);

/** Changes settings of the player. @param settings without `id_value` sends the count alone. */
bt_status_t vym_avrcp_set_player_app_setting(bt_bdaddr_t address, struct AVRCP_NumIDPairStru settings);

/**
 * Answers `handle_set_abs_volume_cb`, once for each time.
 *
 * @param abs_vol the volume that is now set, 0 to 127.
 */
bt_status_t vym_avrcp_send_abs_vol_rsp(bt_bdaddr_t address, uint8_t abs_vol);

/**
 * Answers `handle_register_notification_abs_vol_cb`.
 *
 * @param rsp_type the AV/C response: the volume as it is (interim), or a change.
 * @param abs_vol  0 to 127.
 */
bt_status_t vym_avrcp_send_register_abs_val_rsp(bt_bdaddr_t address, uint8_t rsp_type, uint8_t abs_vol);

/** Asks for items of the current folder, each answered by `get_folder_item_cb` or `get_media_item_cb`.
 * @param start the first, from 0. @param items how many; negative numbers go as 32 bits. */
bt_status_t vym_avrcp_get_folder_list(bt_bdaddr_t address, int start, int items);

/** Goes to another folder; answered by `change_folder_path_rsp_cb`.
 * @param direction 0 up, 1 down. @param uid the folder's, `uid_len` bytes. */
bt_status_t vym_avrcp_change_folder_path(bt_bdaddr_t address, uint8_t direction, uint16_t uid_len,
                                         uint8_t* uid);

/** Asks for the size of the current folder; answered by `get_total_number_of_items_rsp_cb`. */
bt_status_t vym_avrcp_get_total_number_of_items(bt_bdaddr_t address);

/** Plays an item; answered by `play_item_rsp_cb`.
 * @param scope where the item is: 1 folders, 2 search, 3 now playing. @param uid `uid_len` bytes. */
bt_status_t vym_avrcp_play_item(bt_bdaddr_t address, uint8_t scope, uint16_t uid_len, uint8_t* uid);

/** Asks for the players of the device, each answered by `get_player_item_cb`.
 * @param start the first, from 0. @param items how many. @return BT_STATUS_SUCCESS always. */
bt_status_t vym_avrcp_get_player_list(bt_bdaddr_t address, uint8_t start, uint8_t items);

/** Asks for the list being played, each item answered by `get_media_item_cb`.
 * @param start the first, from 0. @param items how many. @return BT_STATUS_SUCCESS always. */
bt_status_t vym_avrcp_get_nowplaying_list(bt_bdaddr_t address, int start, int items);

/** Chooses the player that the keys go to. @return BT_STATUS_SUCCESS always. */
bt_status_t vym_avrcp_set_addressed_player(bt_bdaddr_t address, uint16_t player_id);

/** Ends a list that is being sent. */
bt_status_t vym_avrcp_cancel_browsing(bt_bdaddr_t address);

/** Connects to the player's cover art; answered by `connect_bip_result_cb`.
 * @param l2cap_psm from `get_rc_features_cb`. */
bt_status_t vym_avrcp_connect_bip(bt_bdaddr_t address, int l2cap_psm);

/** Asks for attributes of the track; answered by `handle_track_changed_cb`.
 * @param num_attributes how many. @param attrib_ids their identifiers, `attrib_ids_len` bytes. */
bt_status_t vym_avrcp_get_element_attribute(bt_bdaddr_t address, int num_attributes,
                                            uint16_t attrib_ids_len, uint8_t* attrib_ids);

/** Has the server fetch a small picture; answered by `get_linked_thumbnail_result_cb`.
 * @param img_handle the picture's handle. @param storage_path the file that the server writes. */
bt_status_t vym_avrcp_get_linked_thumbnail(bt_bdaddr_t address, uint16_t img_handle_len,
                                           uint8_t* img_handle, uint16_t storage_path_len,
                                           uint8_t* storage_path);

/** Has the server fetch a picture; answered by `get_image_result_cb`.
 * @param maxSize      in bytes; its low 32 bits are sent.
 * @param img_handle   the picture's handle.
 * @param encoding     such as "JPEG".
 * @param pixel        such as "200*200".
 * @param storage_path the file that the server writes. */
bt_status_t vym_avrcp_get_image(bt_bdaddr_t address, long maxSize, uint16_t img_handle_len,
                                uint8_t* img_handle, uint16_t encoding_len, uint8_t* encoding,
                                uint16_t pixel_len, uint8_t* pixel, uint16_t storage_path_len,
                                uint8_t* storage_path);

/** @param feature from `get_rc_features_cb`. @return its top three bits; see avrcp_version_t. */
avrcp_version_t convert_feature_to_avrcp_version(uint8_t feature);

#ifdef __cplusplus
}
#endif

#endif
