// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "bt_utils.h"

#include "vym_os.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <sys/time.h>

namespace {

constexpr unsigned char kEscape = 0xDC;
constexpr int kMaxParsedBytes = 256;
constexpr size_t kTimeLen = sizeof "[hh:mm:ss:" - 1;
// The messages on descriptors name these lines: tools that watch the log know them.
constexpr char kSourceName[] = "bt_utils.cpp";
constexpr int kBadHeaderLine = 540;
constexpr int kNoHeaderLine = 546;

// strtol() on the target has 32 bits; the wire's users count on where it saturates.
int32_t to_long32(const char* text, int base) {
    const long long value = strtoll(text, nullptr, base);
    if (value > INT32_MAX) {
        return INT32_MAX;
    }
    return value < INT32_MIN ? INT32_MIN : static_cast<int32_t>(value);
}

constexpr size_t kWidest = 16;
constexpr unsigned kNoDigit = 0xFF;

struct digit_values {
    uint8_t of[256];
};

constexpr digit_values make_digit_values() {
    digit_values values{};
    for (uint8_t& value : values.of) {
        value = kNoDigit;
    }
    for (uint8_t digit = 0; digit < 16; ++digit) {
        const int letter = digit - 10;
        values.of[letter < 0 ? '0' + digit : 'A' + letter] = digit;
        values.of[letter < 0 ? '0' + digit : 'a' + letter] = digit;
    }
    return values;
}

constexpr digit_values kDigits = make_digit_values();

unsigned digit_value(char c) {
    return kDigits.of[static_cast<unsigned char>(c)];
}

// One field, never reading behind it nor behind the text's NUL.
int32_t parse_field(const char* p, size_t width, int base) {
    char field[kWidest + 1] = {};
    memcpy(field, p, strnlen(p, width));
    return to_long32(field, base);
}

// What servers write are digits and nothing else, and most of the time that an event takes goes into
// them; what else strtol() understands is left to it.
int32_t parse_digits(const char* p, size_t width, int base) {
    const unsigned digits = base == 16 || base == 10 ? static_cast<unsigned>(base) : 0;
    uint32_t value = 0;
    bool saturated = false;
    for (size_t i = 0; i < width; ++i) {
        const unsigned digit = digit_value(p[i]);
        if (digit >= digits) {
            return parse_field(p, width, base);
        }
        saturated |= value > INT32_MAX / 16; // ten digits of another base would be needed for this
        value = value * digits + digit;
    }
    return saturated ? INT32_MAX : static_cast<int32_t>(value);
}

int32_t parse_hex(const char* p, size_t width) {
    return parse_digits(p, width, 16);
}

// Bytes of two digits each; those behind the text's NUL are 0.
void parse_array(const char* p, uint8_t* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const unsigned high = digit_value(p[0]);
        const unsigned low = high != kNoDigit ? digit_value(p[1]) : kNoDigit;
        if (low != kNoDigit) {
            bytes[i] = static_cast<uint8_t>(high << 4 | low);
            p += 2;
        } else {
            bytes[i] = static_cast<uint8_t>(parse_field(p, 2, 16));
            p += strnlen(p, 2);
        }
    }
}

// The second character of a byte's escape, 0 for a byte that stands for itself.
unsigned char escape_of(unsigned char byte) {
    if (byte > 0x0D && byte != kEscape) {
        return 0; // nearly all
    }
    switch (byte) {
    case 0x00:
        return 0xDD;
    case 0x0D:
        return 0xDE;
    case 0x0A:
        return 0xDF;
    case kEscape:
        return kEscape;
    default:
        return 0;
    }
}

// Whether a word's bytes all stand for themselves.
bool is_plain(const unsigned char* bytes) {
    constexpr size_t kEach = ~size_t{0} / 0xFF; // 1 in each byte
    size_t word = 0;
    memcpy(&word, bytes, sizeof word);
    const size_t other = word ^ kEach * kEscape;
    // The upper bit of each byte that is less than 0x0E, and of each that is kEscape.
    const size_t found = ((word - kEach * 0x0E) & ~word) | ((other - kEach) & ~other);
    return (found & kEach * 0x80) == 0;
}

// How much of the beginning has certainly no byte to be escaped, looked at a word at a time: text has
// none anywhere.
size_t plain_beginning(const unsigned char* bytes, size_t len) {
    size_t at = 0;
    while (len - at >= sizeof(size_t) && is_plain(bytes + at)) {
        at += sizeof(size_t);
    }
    // The last word may begin in the one before.
    const bool near_end = at > 0 && len - at < sizeof(size_t);
    return near_end && is_plain(bytes + len - sizeof(size_t)) ? len : at;
}

// The next escape from `from` on, or `len`.
int next_escape(const unsigned char* bytes, int from, int len) {
    if (from >= len) {
        return len;
    }
    const void* at = memchr(bytes + from, kEscape, static_cast<size_t>(len - from));
    return at != nullptr ? static_cast<int>(static_cast<const unsigned char*>(at) - bytes) : len;
}

// Any other second character writes nothing: the output keeps what was there.
void unescape_into(unsigned char& output, unsigned char second) {
    switch (second) {
    case 0xDD:
        output = 0x00;
        break;
    case 0xDE:
        output = 0x0D;
        break;
    case 0xDF:
        output = 0x0A;
        break;
    case kEscape:
        output = kEscape;
        break;
    default:
        break;
    }
}

void set_length(unsigned short* result_len, size_t length) {
    if (result_len != nullptr) {
        *result_len = static_cast<unsigned short>(length);
    }
}

// Plain ASCII instead of isalpha() and isblank(): the host application may have set a locale.
bool is_latin(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == ' ' || c == '\t';
}

struct name_part_t {
    int start;
    int len;
};

// Appends parts until one does not fit whole.
void join_parts(unsigned char* des, int room, unsigned char* raw, const name_part_t (&parts)[3]) {
    for (const name_part_t& part : parts) {
        if (part.len == 0) {
            continue;
        }
        if (reliable_memcpy(des, room, raw + part.start, part.len) == 0) {
            return;
        }
        des += part.len;
        room -= part.len;
    }
}

} // namespace

extern "C" {

unsigned char parse_byte(char* p) {
    return static_cast<unsigned char>(parse_hex(p, 2));
}

unsigned char parse_byte_with_base(char* p, int base) {
    return static_cast<unsigned char>(parse_digits(p, 2, base));
}

unsigned char parse_char_with_base(char* p, int base) {
    return static_cast<unsigned char>(parse_digits(p, 1, base));
}

unsigned short parse_uuid16(char* p) {
    return parse_short(p);
}

unsigned short parse_short(char* p) {
    return static_cast<unsigned short>(parse_hex(p, 4));
}

unsigned int parse_int(char* p) {
    return static_cast<unsigned int>(parse_hex(p, 8));
}

long parse_long(char* p) {
    return parse_hex(p, 16);
}

void parse_oob_data(char* p, bt_oob_data_t* oob_data) {
    parse_array(p, oob_data->data, sizeof oob_data->data);
}

bt_bdaddr_t parse_address(char* p) {
    uint8_t wire[6];
    parse_array(p, wire, sizeof wire);
    bt_bdaddr_t address;
    for (int i = 0; i < 6; ++i) {
        address.address[i] = wire[5 - i];
    }
    return address;
}

unsigned char* parse_bytes(char* p, int* len) {
    thread_local unsigned char bytes[kMaxParsedBytes];
    if (*len > kMaxParsedBytes || *len < 0) {
        *len = 0;
        return nullptr;
    }
    memset(bytes, 0, sizeof bytes);
    unsigned short decoded = 0;
    str_bytes_to_raw_bytes(reinterpret_cast<unsigned char*>(p), static_cast<unsigned short>(*len),
                           bytes, &decoded);
    *len = decoded;
    return bytes;
}

void parse_uuid128(char* p, bt_uuid_t* uuid_128) {
    parse_array(p, uuid_128->uu, sizeof uuid_128->uu);
}

size_t vym_escaped_length(const unsigned char* raw_bytes, size_t raw_len) {
    if (raw_bytes == nullptr) {
        return 0;
    }
    size_t length = raw_len;
    for (size_t i = plain_beginning(raw_bytes, raw_len); i < raw_len; ++i) {
        length += escape_of(raw_bytes[i]) != 0 ? 1u : 0u;
    }
    return length;
}

unsigned char* vym_escape(const unsigned char* raw_bytes, size_t raw_len, unsigned char* out) {
    const size_t plain = plain_beginning(raw_bytes, raw_len);
    if (plain > 0) {
        memcpy(out, raw_bytes, plain);
    }
    out += plain;
    for (size_t i = plain; i < raw_len; ++i) {
        const unsigned char byte = raw_bytes[i];
        const unsigned char second = escape_of(byte);
        if (second != 0) {
            *out++ = kEscape;
        }
        *out++ = second != 0 ? second : byte;
    }
    return out;
}

unsigned char* raw_bytes_to_str_bytes(const unsigned char* raw_bytes, unsigned short raw_len,
                                      unsigned char* result_bytes, unsigned short* result_len) {
    set_length(result_len, vym_escaped_length(raw_bytes, raw_len));
    if (raw_bytes == nullptr) {
        return nullptr;
    }
    if (result_bytes != nullptr) {
        vym_escape(raw_bytes, raw_len, result_bytes);
    }
    return result_bytes;
}

unsigned char* str_bytes_to_raw_bytes(const unsigned char* raw_bytes, unsigned short raw_len,
                                      unsigned char* result_bytes, unsigned short* result_len) {
    int escapes = 0;
    if (raw_bytes != nullptr) {
        for (int i = next_escape(raw_bytes, 0, raw_len); i < raw_len;
             i = next_escape(raw_bytes, i + 2, raw_len)) {
            ++escapes;
        }
    }
    if (raw_bytes == nullptr || raw_len <= escapes) {
        set_length(result_len, 0);
        return nullptr;
    }
    // A lone DC at the end was counted as an escape, yet it is copied below: the length reported is one
    // short of what is written. Peers rely on neither, and the room is that of the wire length.
    set_length(result_len, static_cast<size_t>(raw_len - escapes));
    if (result_bytes != nullptr) {
        unsigned char* out = result_bytes;
        for (int i = 0; i < raw_len;) {
            const int plain = next_escape(raw_bytes, i, raw_len) - i;
            memcpy(out, raw_bytes + i, static_cast<size_t>(plain));
            out += plain;
            i += plain;
            if (i + 1 < raw_len) {
                unescape_into(*out++, raw_bytes[i + 1]);
            } else if (i < raw_len) {
                *out++ = raw_bytes[i];
            }
            i += 2;
        }
    }
    return result_bytes;
}

int reliable_memcpy(unsigned char* des, int des_remain_len, unsigned char* src, int src_len) {
    if (des_remain_len < 1) {
        return 0;
    }
    const int n = src_len < des_remain_len ? src_len : des_remain_len;
    if (n > 0) {
        memcpy(des, src, static_cast<size_t>(n));
    }
    return src_len <= des_remain_len ? 1 : 0;
}

void combine_name(unsigned char* des_name, int des_name_len, unsigned char* raw_name,
                  int raw_name_len) {
    name_part_t parts[3] = {}; // last, first, middle; a part without its ';' keeps length 0
    int closed = 0;
    bool latin = false;
    for (int i = 0; i < raw_name_len && closed < 3; ++i) {
        if (raw_name[i] == ';') {
            parts[closed].len = i - parts[closed].start;
            ++closed;
            if (closed < 3) {
                parts[closed].start = i + 1;
            }
        } else if (is_latin(raw_name[i])) {
            latin = true;
        }
    }
    const int total = parts[0].len + parts[1].len + parts[2].len;
    if (raw_name_len > 0 && total >= des_name_len) {
        printf("Name Len Error. MAX_NAME_LEN = %d, real_len = %d", des_name_len, total);
    }
    if (latin) {
        join_parts(des_name, des_name_len, raw_name, {parts[1], parts[2], parts[0]});
    } else {
        join_parts(des_name, des_name_len, raw_name, {parts[0], parts[2], parts[1]});
    }
}

int sendfd_client(int sock_fd, int send_me_fd) {
    char data = 0;
    iovec text = {&data, 1};
    alignas(cmsghdr) unsigned char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message = {};
    message.msg_iov = &text;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_len = CMSG_LEN(sizeof(int));
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    memcpy(CMSG_DATA(header), &send_me_fd, sizeof send_me_fd);
    ssize_t sent = 0;
    do {
        sent = sendmsg(sock_fd, &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == 1 ? 1 : 0;
}

int vym_report_descriptor(const vym::received_t* received) {
    if (received->bytes < 0) {
        return 0;
    }
    printf("%s ret %d.\n", "recvfd_client", static_cast<int>(received->bytes));
    if (received->fd > 0) {
        return received->fd;
    }
    if (received->has_header) {
        fprintf(stderr, "%s:%d: protocol failure: %d %d %d\n", kSourceName, kBadHeaderLine,
                received->header_len, received->header_level, received->header_type);
    } else {
        fprintf(stderr, "%s:%d: protocol failure: NULL cmsghdr*\n", kSourceName, kNoHeaderLine);
    }
    return 0;
}

int recvfd_client(int sock_fd) {
    unsigned char data = 0;
    const vym::received_t received = vym_os_receive(sock_fd, &data, 1);
    return vym_report_descriptor(&received);
}

char* get_current_time_string(void) {
    thread_local char time_string[64];
    thread_local time_t shown; // the second whose local time the string holds,
    thread_local long zone;    // and where
    timeval now = {};
    gettimeofday(&now, nullptr);
    if (now.tv_sec != shown || timezone != zone || time_string[0] == '\0') {
        tm local = {};
        localtime_r(&now.tv_sec, &local);
        snprintf(time_string, sizeof time_string, "[%02d:%02d:%02d:", local.tm_hour, local.tm_min,
                 local.tm_sec);
        shown = now.tv_sec;
        zone = timezone;
    }
    char* end = vym_put_number(time_string + kTimeLen, static_cast<unsigned>(now.tv_usec), 1, '0');
    end[0] = ']';
    end[1] = '\0';
    return time_string;
}

char* vym_put_number(char* at, unsigned number, int width, char fill) {
    int length = 1;
    for (unsigned rest = number; rest >= 10; rest /= 10) {
        ++length;
    }
    for (; width > length; --width) {
        *at++ = fill;
    }
    char* digit = at + length;
    do {
        *--digit = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (digit != at);
    return at + length;
}

} // extern "C"
