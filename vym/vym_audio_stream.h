/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file vym_audio_stream.h
 * Audio from and to the server: voice (SCO) and music (A2DP) packets on a descriptor of their own.
 *
 * The server hands the descriptor over whenever it likes; the library then starts a reader thread that
 * calls back with each packet. The hand-over is an adapter event, so vym_bluetooth_init() must have
 * been called.
 */
#ifndef VYM_AUDIO_STREAM_H
#define VYM_AUDIO_STREAM_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Voice. */
#define AUDIO_STREAM_TYPE_SCO 0
/** Music. */
#define AUDIO_STREAM_TYPE_A2DP 1

/**
 * One packet of audio, on the reader thread and with no lock of the library held.
 *
 * @param stream_type AUDIO_STREAM_TYPE_SCO or AUDIO_STREAM_TYPE_A2DP.
 * @param codec_type  codec identifier as the server gave it.
 * @param len         bytes of `data`, 0 to 65535.
 * @param data        the samples or frames, freed when the callback returns.
 */
typedef void (*vym_audio_stream_cbk)(uint8_t stream_type, uint8_t codec_type, uint16_t len,
                                     uint8_t* data);

/** The application's callbacks; looked up for each packet, NULL members are skipped. */
typedef struct tag_audio_stream_callback {
    /** A packet has come. */
    vym_audio_stream_cbk vym_audio_stream_cb;
} audio_stream_callback_t;

/**
 * Prepares for audio hand-overs.
 *
 * @param cbks owned by the application. It must live as long as the library is started, even after
 *             vym_audio_stream_done(): a later hand-over starts a reader again. NULL: packets are
 * dropped.
 */
void vym_audio_stream_init(audio_stream_callback_t* cbks);

/**
 * Stops the reader and waits for its end. The transport is shut down, which the server sees as a close.
 * May be called twice; called from the audio callback it does not wait.
 *
 * A hand-over that is on its way starts a reader again, so an application that ends calls this last,
 * after vym_bluetooth_done() or vym_sdk_done(): from then on no hand-over is received.
 */
void vym_audio_stream_done(void);

/**
 * Sends voice to the server. Blocks while the transport is full.
 *
 * @param stream_type AUDIO_STREAM_TYPE_SCO sends; any other type sends nothing.
 * @param codec_type  not used.
 * @param len         bytes of `data`.
 * @param data        samples, sent as they are.
 * @return `len` when all was sent, 0 for types other than SCO, -1 without a transport (a message is
 * printed) or when it broke.
 */
int vym_audio_stream_send(uint8_t stream_type, uint8_t codec_type, uint16_t len, uint8_t* data);

#ifdef __cplusplus
}
#endif

#endif
