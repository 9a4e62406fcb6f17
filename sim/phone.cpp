// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "phone.h"

#include <array>

namespace sim {
namespace {

constexpr size_t kContacts = 50;

std::string repeated(std::string_view text, size_t times) {
    std::string all;
    while (times-- > 0) {
        all += text;
    }
    return all;
}

/// The picture, with a comment inside that brings it to many times a client's buffer and holds every
/// byte that has to be escaped.
std::string long_picture() {
    constexpr size_t kComment = 6000;
    std::string comment;
    while (comment.size() < kComment) {
        comment += static_cast<char>(comment.size() % 256);
    }
    // Behind the file's start: a marker, and a length that counts itself.
    const size_t length = kComment + 2;
    std::string file(picture().substr(0, 2));
    file += {'\xFF', '\xFE', static_cast<char>(length >> 8), static_cast<char>(length & 0xFF)};
    return file + comment + std::string(picture().substr(2));
}

Contact mobile_contact(const char* last, const char* first, const char* middle, const char* number) {
    return {last, first, middle, {{NumberKind::Mobile, number}}, {}};
}

/// What has broken readers of phone books: other scripts, missing parts, lengths at and above limits.
std::vector<Contact> nasty_contacts() {
    std::vector<Contact> all{
        {"Bergmann", "Anna", "", {{NumberKind::Mobile, "+491701234567"}}, std::string(picture())},
        {"Miller",
         "Bob",
         "Lee",
         {{NumberKind::Home, "+4930111222"},
          {NumberKind::Mobile, "+491711112223"},
          {NumberKind::Work, "+4930333444"}},
         long_picture()},
        mobile_contact("Müller", "Jürgen", "", "+491722223334"),
        mobile_contact("Толстой", "Лев", "Николаевич", "+79161234567"),
        mobile_contact("王", "小明", "", "+8613800138000"),
        mobile_contact("الخوارزمي", "محمد", "", "+9647701234567"),
        mobile_contact("शर्मा", "प्रिया", "", "+919812345678"),
        mobile_contact("🦊", "👩‍🚀", "", "+15550100"),
        mobile_contact("", "", "", "+4930555666"),
        {"Silent", "Sam", "", {}, {}},
        mobile_contact("100% %s%n", "\"Quote\" \\ AT#", "TD60007", "+4930777888"),
        mobile_contact("Calling card", "", "", "08001234567,,,1234567890123456#,4930999000"),
        mobile_contact("Short", "Code", "", "*#06#"),
    };
    all.push_back({repeated("Long", 50), "Larry", "", {{NumberKind::Work, "+4930100100"}}, {}});
    all.push_back({repeated("長", 200), "名", "", {{NumberKind::Other, "+81312345678"}}, {}});
    return all;
}

std::vector<Contact> fifty_contacts() {
    static constexpr std::array<const char*, 5> kLast{"Adams", "Brown", "Clark", "Davis", "Evans"};
    static constexpr std::array<const char*, 7> kFirst{"Carla", "David",  "Eva",  "Frank",
                                                       "Grace", "Hector", "Irene"};
    std::vector<Contact> all = nasty_contacts();
    for (size_t i = 0; all.size() < kContacts; ++i) {
        const std::string number = "+4930" + std::to_string(5000000 + i);
        all.push_back(
            {kLast[i % kLast.size()], kFirst[i / kLast.size()], "", {{NumberKind::Home, number}}, {}});
    }
    return all;
}

std::vector<PastCall> past_calls() {
    return {
        {PastCallKind::Missed, "Bergmann", "Anna", "+491701234567", "20260130T201500"},
        {PastCallKind::Outgoing, "王", "小明", "+8613800138000", "20260130T180102"},
        {PastCallKind::Incoming, "", "", "", "20260129T093000"},
        {PastCallKind::Missed, "", "", "+4930123456", "20260128T235959"},
        {PastCallKind::Outgoing, "Miller", "Bob", "+4930333444", "20260127T070000"},
        {PastCallKind::Incoming, "Müller", "Jürgen", "+491722223334", "20251231T235959"},
    };
}

std::vector<Track> tracks() {
    return {
        {"First Light", "The Simulators", "Radio Silence", "Electronic", 8000},
        {"Carrier Wave", "The Simulators", "Radio Silence", "Electronic", 187000},
        {"Grüße aus dem Äther", "Frau Müller & das Echo", "Überreichweite", "Pop", 204000},
        {"夜の電波", "短波", "Überreichweite", "", 241000},
    };
}

MediaPlayer podcasts() {
    return {"Podcasts",
            {{"How a badge finds its reader", "Anna Bergmann", "On the Air", "Speech", 1800000},
             {"The last 31 bytes", "Anna Bergmann", "On the Air", "Speech", 2400000}}};
}

} // namespace

Phone plain_phone() {
    Phone phone;
    phone.model = "Sim Phone 1";
    phone.manufacturer = "vym";
    phone.operator_name = "Sim Mobile";
    phone.subscriber = "+491701234567";
    phone.voice_tag_number = "+4930111222";
    phone.signal = 4;
    phone.battery = 5;
    phone.in_band_ring = true;
    phone.ring_number = "+4930123456";
    phone.player_name = "Music";
    return phone;
}

Phone built_in_phone() {
    Phone phone = plain_phone();
    phone.memory = {"+4930111222", "+491711112223"};
    phone.tracks = tracks();
    phone.other_players = {podcasts()};
    phone.contacts = fifty_contacts();
    phone.sim_contacts = {
        {"Voicemail", "", "", {{NumberKind::Other, "3311"}}, {}},
        {"Home", "", "", {{NumberKind::Home, "+4930111222"}}, {}},
        {"Taxi", "", "", {{NumberKind::Other, "+4930202020"}}, {}},
    };
    phone.calls = past_calls();
    return phone;
}

} // namespace sim
