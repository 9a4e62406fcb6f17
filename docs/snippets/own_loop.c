/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* An application with a loop of its own: events of the library come as messages through a pipe, and a
 * server that has gone is waited for.
 *
 * usage: own_loop DIRECTORY      (the directory of the server's socket; Ctrl-C ends it)
 */
#define _GNU_SOURCE
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <vym/vym_bluetooth.h>
#include <vym/vym_sdk.h>

enum { RETRY_MS = 500 };

/* What a callback has to say, small enough for one write() to be whole. */
struct message {
    enum { ADAPTER_STATE } kind;
    int value;
};

static int mailbox[2]; /* read by the loop, written by callbacks */

static void on_state(uint8_t state) { /* on the receive thread */
    const struct message message = {ADAPTER_STATE, state};
    if (write(mailbox[1], &message, sizeof message) != sizeof message) {
        perror("own_loop: an event is lost");
    }
}

static bluetooth_callback_t callbacks = {.state_changed_cb = on_state};

static void stop(int connection) {
    vym_bluetooth_done();
    vym_sdk_done();
    if (connection >= 0) {
        close(connection);
    }
}

/* Returns a descriptor of our own of the connection, to be watched; -1 when there is no server. */
static int start(const char* directory) {
    int connection = vym_sdk_init_ex(directory);
    if (connection < 0) {
        return -1;
    }
    connection = fcntl(connection, F_DUPFD_CLOEXEC, 0);
    vym_bluetooth_init(&callbacks);
    vym_bluetooth_enable();
    if (connection < 0) {
        stop(connection);
    }
    return connection;
}

static void take_message(void) { /* on the loop's thread, where everything may be called */
    struct message message;
    if (read(mailbox[0], &message, sizeof message) == sizeof message && message.kind == ADAPTER_STATE) {
        printf("own_loop: the adapter is %s\n", message.value == BT_STATE_ON ? "on" : "off");
    }
}

static void loop(const char* directory, int signals) {
    enum { SIGNALS, MAILBOX, SERVER, SOURCES };
    struct pollfd sources[SOURCES] = {{signals, POLLIN, 0}, {mailbox[0], POLLIN, 0}, {-1, 0, 0}};
    int* connection = &sources[SERVER].fd; /* -1 is passed over, and a hang-up is always told */
    *connection = start(directory);
    while (poll(sources, SOURCES, *connection < 0 ? RETRY_MS : -1) >= 0) {
        if (sources[SIGNALS].revents != 0) {
            break;
        }
        if (sources[MAILBOX].revents != 0) {
            take_message();
        } else if (*connection < 0) {
            *connection = start(directory);
        } else if (sources[SERVER].revents != 0) {
            printf("own_loop: the server has gone\n");
            stop(*connection);
            *connection = -1;
        }
    }
    stop(*connection);
}

int main(int argc, char** argv) {
    sigset_t ends;
    int signals = -1;
    if (argc != 2) {
        fprintf(stderr, "usage: own_loop DIRECTORY\n");
        return 2;
    }
    /* Before the library starts: its threads inherit what is blocked here. */
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, NULL);
    signals = signalfd(-1, &ends, SFD_CLOEXEC);
    if (signals < 0 || pipe2(mailbox, O_CLOEXEC) != 0) {
        perror("own_loop: no descriptors");
        return 1;
    }
    loop(argv[1], signals);
    printf("own_loop: good bye\n");
    return 0;
}
