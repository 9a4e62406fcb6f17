/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/* Serial channels both ways: answers whoever connects to our service, then talks to the service of a
 * phone.
 *
 * usage: serial_echo DIRECTORY      (the directory of the server's socket)
 */
#include "radio.h"

#include <string.h>
#include <vym/gatt_defines.h>
#include <vym/vym_rfcomm.h>

enum { LINE_ROOM = 80, ANY_CHANNEL = 0 };

static const bt_uuid_t serial_port = GATT_UUID_FROM_16(0x1101);
/* "Anna's phone" of the simulated world; a real application would have paired with it. */
static const bt_bdaddr_t phone = {{0x01, 0x61, 0x6E, 0x6E, 0x41, 0x2A}};

static struct {
    int channel; /* -1 while it is looked for */
    int fetched;
} service = {.channel = -1};

static void on_channel(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel) {
    note(&service.channel, channel);
}

static void on_channels_end(bt_bdaddr_t address, bt_uuid_t uuid, uint8_t channel) {
    note(&service.fetched, 1);
}

static rfcomm_callback_t callbacks = {
    .rfcomm_fetch_channels_cb = on_channel,
    .rfcomm_fetch_channels_end_cb = on_channels_end,
};

/* One line, without its end; 0 when the connection has gone, and the socket with it. */
static int read_line(vym_bluetooth_socket_t* socket, char line[LINE_ROOM]) {
    size_t length = 0;
    char c = 0;
    hurry("the end of a line");
    while (vym_rfcomm_read(socket, &c, 1) == 1) {
        if (c == '\n') {
            line[length] = '\0';
            no_hurry();
            return 1;
        }
        if (c != '\r' && length < LINE_ROOM - 1) {
            line[length++] = c;
        }
    }
    no_hurry();
    return 0;
}

static void write_line(vym_bluetooth_socket_t* socket, const char* line) {
    char text[LINE_ROOM + 2];
    const int length = snprintf(text, sizeof text, "%s\r\n", line);
    if (vym_rfcomm_write(socket, text, (size_t)length) != length) {
        give_up("\"%s\" could not be sent: the connection has gone", line);
    }
}

/* Says something and waits for the same to come back. */
static void expect_echo(vym_bluetooth_socket_t* socket, const char* text) {
    char line[LINE_ROOM];
    write_line(socket, text);
    if (!read_line(socket, line)) {
        give_up("the connection ended before the echo of \"%s\"", text);
    }
    say("   we say \"%s\", and hear \"%s\"", text, line);
}

/* A socket is the library's until a read has seen its end. */
static void read_to_the_end(vym_bluetooth_socket_t* socket) {
    char line[LINE_ROOM];
    while (read_line(socket, line)) {
    }
}

static void serve(void) {
    char text[18];
    char line[LINE_ROOM];
    char name[] = "vym serial echo";
    vym_bluetooth_server_socket_t* server = vym_rfcomm_listen(serial_port, ANY_CHANNEL, name);
    if (server == NULL) {
        give_up("the server opened no channel within five seconds");
    }
    say("   our service is on channel %d", server->server_channel);
    hurry("a caller");
    vym_bluetooth_socket_t* caller = vym_rfcomm_accept(server);
    no_hurry();
    if (caller == NULL) {
        give_up("the service was closed before anybody connected");
    }
    say("   %s connects", address_text(vym_rfcomm_get_address(caller), text));
    if (read_line(caller, line)) {
        say("   it says \"%s\"", line);
    }
    expect_echo(caller, "how are you?");
    /* It leaves at this word, maybe before the write returns: then that answers -1. */
    vym_rfcomm_write(caller, "bye\r\n", 5);
    read_to_the_end(caller);
    say("   it has left");
    vym_rfcomm_server_close(server);
}

static void call(void) {
    vym_rfcomm_fetch_channels(phone, serial_port);
    await(&service.fetched, 1, "the phone's serial services");
    if (noted(&service.channel) < 0) {
        give_up("the phone has no serial service");
    }
    say("   its service is on channel %d", noted(&service.channel));
    hurry("the connection");
    vym_bluetooth_socket_t* socket =
        vym_rfcomm_connect(phone, serial_port, (uint8_t)noted(&service.channel));
    no_hurry();
    if (socket == NULL) {
        give_up("the phone did not let us connect");
    }
    expect_echo(socket, "hello");
    expect_echo(socket, "one, two, three");
    vym_rfcomm_close(socket);
    read_to_the_end(socket);
}

int main(int argc, char** argv) {
    radio_begin("serial_echo", argc, argv);
    vym_rfcomm_init(&callbacks);
    radio_on();

    say("1. Wait for somebody to connect");
    serve();

    say("2. Connect to the phone");
    call();

    radio_off();
    vym_rfcomm_done();
    radio_end();
    return 0;
}
