/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* For each profile an application that reads every byte its callbacks are given. */
#ifndef VYM_FUZZ_APPLICATIONS_H
#define VYM_FUZZ_APPLICATIONS_H

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
    const char* profile; /* as protocol/ names it */
    void (*start)(void);
    void (*stop)(void);
} vym_application_t;

enum { VYM_APPLICATIONS = 9 };

extern const vym_application_t vym_applications[VYM_APPLICATIONS];

/** The application of a profile; ends the program when there is none. */
const vym_application_t* vym_application_of(const char* profile);

/** Prepares for audio; the callback reads all it is given. */
void vym_listen_to_audio(void);

/** How many callbacks have come. */
unsigned vym_callbacks_seen(void);

/** What they were given, boiled down; depends on no order. */
unsigned vym_callbacks_sum(void);

#ifdef __cplusplus
}
#endif

#endif
