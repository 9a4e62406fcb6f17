/* SPDX-License-Identifier: MIT
 * Copyright (c) 2026 The vym authors */

/**
 * @file bt_utils.h
 * How values are written into commands and read out of events: hexadecimal fields, addresses, UUIDs,
 * escaped binary blocks, structured names; and how a descriptor travels over the server's socket.
 *
 * The number decoders read a field of fixed width and never look behind it. They are strtol() with a
 * 32-bit long on every host: leading blanks, a sign and "0x" are accepted, the conversion stops at the
 * first character that is no digit, and what does not fit saturates.
 */
#ifndef VYM_BT_UTILS_H
#define VYM_BT_UTILS_H

#include "bluetooth.h"

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

#ifndef VYM_API_ONLY
/* Inside the library: not exported, not installed. */

/** 2 hexadecimal characters. */
unsigned char parse_byte(char* p);
/** 2 characters in `base`. */
unsigned char parse_byte_with_base(char* p, int base);
/** 1 character in `base`. */
unsigned char parse_char_with_base(char* p, int base);
/** 4 hexadecimal characters, a 16-bit UUID. */
unsigned short parse_uuid16(char* p);
/** 4 hexadecimal characters. */
unsigned short parse_short(char* p);
/** 8 hexadecimal characters; above 7FFFFFFF it is 0x7FFFFFFF. */
unsigned int parse_int(char* p);
/** 16 hexadecimal characters; above 7FFFFFFF it is 0x7FFFFFFF, on hosts with a 64-bit long as well. */
long parse_long(char* p);
/** 32 characters, `data[0]` first. */
void parse_oob_data(char* p, bt_oob_data_t* oob_data);
/** 12 characters, `address[5]` first. */
bt_bdaddr_t parse_address(char* p);
/** 32 characters, `uu[0]` first. */
void parse_uuid128(char* p, bt_uuid_t* uuid_128);

/**
 * Unescapes `*len` characters, at most 256.
 *
 * @param len in: characters; out: bytes decoded, 0 when there were too many.
 * @return storage of the calling thread that the next call overwrites; NULL when there were too many
 *         characters.
 */
unsigned char* parse_bytes(char* p, int* len);

/** The longest escaped block that a command's four-digit count can announce. */
#define VYM_MAX_ESCAPED_LEN 0xFFFFu

/** @return how many characters escaping makes of `raw_len` bytes; may exceed what 16 bits hold. */
size_t vym_escaped_length(const unsigned char* raw_bytes, size_t raw_len);

/** Writes `raw_len` bytes with their escapes. @return behind the last, without a NUL. */
unsigned char* vym_escape(const unsigned char* raw_bytes, size_t raw_len, unsigned char* out);

/**
 * Escapes a block: 00, 0D, 0A and DC become DC DD, DC DE, DC DF and DC DC.
 *
 * @param result_bytes room for the escaped text (2 x `raw_len` always suffices), or NULL to only count.
 * @param result_len   out: characters, cut to 16 bits; may be NULL.
 * @return `result_bytes`; NULL when `raw_bytes` is NULL (the length is 0 then).
 */
unsigned char* raw_bytes_to_str_bytes(const unsigned char* raw_bytes, unsigned short raw_len,
                                      unsigned char* result_bytes, unsigned short* result_len);

/**
 * Undoes raw_bytes_to_str_bytes(). A DC before any other character leaves its output byte as it was, so
 * give zeroed room of `raw_len` bytes; a DC in the last place is copied.
 *
 * @param result_bytes room for the bytes, or NULL to only count.
 * @param result_len   out: bytes; may be NULL.
 * @return `result_bytes`; NULL (and length 0) when there is nothing to decode.
 */
unsigned char* str_bytes_to_raw_bytes(const unsigned char* raw_bytes, unsigned short raw_len,
                                      unsigned char* result_bytes, unsigned short* result_len);

/** Copies what fits. @return 1 when all of `src_len` fitted, else 0. */
int reliable_memcpy(unsigned char* des, int des_remain_len, unsigned char* src, int src_len);

/**
 * Makes a display name of a structured one ("last;first;middle;...", the order of a vCard's N
 * property): first, middle, last for Latin script, last, middle, first for others; nothing between the
 * parts. Only parts closed by ';' count. Writes no NUL: pass a zeroed buffer.
 */
void combine_name(unsigned char* des_name, int des_name_len, unsigned char* raw_name, int raw_name_len);

/** Passes a descriptor to the peer with one data byte 00. @return 1, or 0 on failure. */
int sendfd_client(int sock_fd, int send_me_fd);

/**
 * Receives one byte and the descriptor that may ride on it.
 *
 * @return the descriptor (> 0, close-on-exec, owned by the caller), or 0.
 */
int recvfd_client(int sock_fd);

/** @return local time as "[hh:mm:ss:us]" in storage of the calling thread that the next call
 * overwrites. */
char* get_current_time_string(void);

/** Writes a decimal number of at least `width` characters, filled up with `fill`; no NUL. For lines
 * that are printed with every read, for which printf() is too slow. @return behind the last character.
 */
char* vym_put_number(char* at, unsigned number, int width, char fill);

#endif /* VYM_API_ONLY */

#ifdef __cplusplus
}
#endif

#endif
