/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* A WAV file of 16-bit samples, as they come in audio packets. */
#ifndef VYM_EXAMPLES_WAV_H
#define VYM_EXAMPLES_WAV_H

#include "scene.h"

enum { WAV_HEADER = 44, WAV_SAMPLE = 2 };

typedef struct {
    FILE* file; /* NULL: not recording */
    uint32_t size;
} wav_t;

/* The header says how much there is, and is written at the end. */
static inline void wav_begin(wav_t* wav, const char* directory, const char* name) {
    const char space[WAV_HEADER] = {0};
    char path[300];
    FILE* file = NULL;
    snprintf(path, sizeof path, "%s/%s", directory, name);
    file = fopen(path, "wb");
    if (file == NULL || fwrite(space, sizeof space, 1, file) != 1) {
        give_up("cannot write %s", path);
    }
    pthread_mutex_lock(&scene.lock);
    wav->size = 0;
    wav->file = file;
    pthread_mutex_unlock(&scene.lock);
}

/* On the audio thread. */
static inline void wav_append(wav_t* wav, const uint8_t* samples, uint16_t length) {
    pthread_mutex_lock(&scene.lock);
    if (wav->file != NULL) {
        wav->size += (uint32_t)fwrite(samples, 1, length, wav->file);
    }
    pthread_mutex_unlock(&scene.lock);
}

/* Least significant byte first. */
static inline void wav_number(FILE* file, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; i++) {
        fputc((int)(value >> (8 * i) & 0xFF), file);
    }
}

/* Packets that come later are dropped. */
static inline void wav_end(wav_t* wav, int sample_rate, int channel_count) {
    const uint32_t rate = (uint32_t)sample_rate;
    const uint32_t channels = (uint32_t)channel_count;
    FILE* file = NULL;
    pthread_mutex_lock(&scene.lock);
    file = wav->file;
    wav->file = NULL;
    pthread_mutex_unlock(&scene.lock);
    rewind(file);
    fputs("RIFF", file);
    wav_number(file, WAV_HEADER - 8 + wav->size, 4);
    fputs("WAVEfmt ", file);
    wav_number(file, 16, 4); /* bytes of this part */
    wav_number(file, 1, 2);  /* samples as they are */
    wav_number(file, channels, 2);
    wav_number(file, rate, 4);
    wav_number(file, rate * channels * WAV_SAMPLE, 4);
    wav_number(file, channels * WAV_SAMPLE, 2);
    wav_number(file, 8 * WAV_SAMPLE, 2);
    fputs("data", file);
    wav_number(file, wav->size, 4);
    if (ferror(file) || fclose(file) != 0) {
        give_up("the recording could not be written; is the disk full?");
    }
}

#endif
