// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// AVRCP: keys, settings, volume, and what the player tells. Browsing and cover art have files of their
// own.
#include "media.h"
#include "modules.h"
#include "profile_link.h"

#include <algorithm>
#include <map>

namespace sim {
namespace {

constexpr uint16_t kRemoteTarget = 0x110C;

/// Version 1.6 in the top three bits; metadata, absolute volume, browsing, cover art.
constexpr uint8_t kFeatures = 0xCF;

constexpr uint8_t kFirstVolume = 64;
constexpr uint8_t kLabels = 16;

enum Key : uint8_t {
    kPlay = 0x44,
    kStop = 0x45,
    kPause = 0x46,
    kRewind = 0x48,
    kFastForward = 0x49,
    kForward = 0x4B,
    kBackward = 0x4C,
};

enum Group : uint8_t { kNextGroup = 0, kPreviousGroup = 1 };

constexpr uint8_t kPressed = 0;

enum Attribute : uint8_t {
    kUid = 0,
    kTitle = 1,
    kArtist = 2,
    kAlbum = 3,
    kTrackNumber = 4,
    kTrackCount = 5,
    kGenre = 6,
    kPlayingTime = 7,
    kCoverArt = 8,
};

char hex_digit(size_t value) {
    return "0123456789ABCDEF"[value & 0xF];
}

/// The ids of a request: one byte each, or four with the lowest first.
std::vector<uint8_t> attribute_ids(uint32_t count, const std::string& block) {
    const size_t width = block.size() == size_t{4} * count ? 4 : 1;
    if (block.size() != width * count) {
        throw BadCommand("attribute identifiers: " + std::to_string(count) + " announced, " +
                         std::to_string(block.size()) + " bytes there");
    }
    std::vector<uint8_t> ids;
    for (size_t i = 0; i < block.size(); i += width) {
        const std::string_view id = std::string_view(block).substr(i, width);
        ids.push_back(static_cast<uint8_t>(std::min<uint32_t>(from_le32(id), 0xFF)));
    }
    return ids;
}

class Avrcp : public Module {
public:
    Avrcp(Hub& hub, std::shared_ptr<Media> media)
        : Module(hub), media_(std::move(media)),
          link_(hub, "remote control", kRemoteTarget,
                [this](const Address& a, ProfileLink::State s) { link_changed(a, s); }) {
        media_->stream_link = [this](const Address& address, bool up) {
            up ? link_.connect(address) : link_.lost(address);
        };
        media_->turned = [this] { report_player(); };
        media_->listen({[this] { report_status(); },
                        [this] {
                            report_track({kUid, kTitle, kArtist, kAlbum, kPlayingTime});
                            report_position();
                        },
                        [this] { report_position(); }});
    }

    std::vector<Command> commands() override {
        return {
            row("RA", &Avrcp::connect),      row("RB", &Avrcp::disconnect),
            row("RC", &Avrcp::key),          row("RD", &Avrcp::group_key),
            row("RE", &Avrcp::get_settings), row("RF", &Avrcp::set_settings),
            row("RG", &Avrcp::volume_set),   row("RH", &Avrcp::volume_notification),
            row("RN", &Avrcp::play_status),  row("RZB", &Avrcp::get_attributes),
        };
    }

    std::vector<Verb> verbs() override {
        return {
            verb("player play", "somebody at the phone starts the music", &Avrcp::play),
            verb("player pause", "pauses it", &Avrcp::pause),
            verb("player stop", "stops it", &Avrcp::stop),
            verb("player skip", "goes to the next track", &Avrcp::skip),
            verb("player back", "goes to the track before", &Avrcp::back),
            verb("player repeat off|track|all", "changes what is repeated", &Avrcp::repeat),
            verb("player shuffle on|off", "changes the order", &Avrcp::shuffle),
            verb("player volume LEVEL=0..127", "sets the client's volume", &Avrcp::ask_for_volume),
        };
    }

    void link_down(const Address& address) override { link_.lost(address); }

private:
    Player& player() { return media_->player(); }

    // The connection.

    void connect(Fields& fields) { link_.connect(fields); }
    void disconnect(Fields& fields) { link_.disconnect(fields); }

    void link_changed(const Address& address, ProfileLink::State state) {
        if (state == ProfileLink::State::Connecting) {
            return;
        }
        const bool up = state == ProfileLink::State::Up;
        if (!link_.is_up()) {
            media_->control.reset();
        } else if (!media_->control) {
            media_->control.emplace();
            media_->control->peer = address;
        }
        send(Event("RC").byte(up ? 1 : 0).address(address));
        if (up) {
            greet(address);
        }
    }

    void greet(const Address& address) {
        send(Event("RD").address(address).byte(kFeatures).dword(kCoverArtPsm));
        report_status();
        report_track({kUid, kTitle, kArtist, kAlbum, kPlayingTime});
        volume_label_ = next_label();
        notification_label_ = next_label();
        send(Event("RH").address(address).byte(kFirstVolume).byte(*volume_label_));
        send(Event("RI").address(address).byte(*notification_label_));
    }

    uint8_t next_label() { return label_ = static_cast<uint8_t>((label_ + 1) % kLabels); }

    // What the player tells.

    /// Another one plays from now on: everything is new.
    void report_player() {
        if (!media_->control) {
            return;
        }
        const Address& peer = media_->control->peer;
        send(Event("RWB").address(peer).word(static_cast<uint16_t>(media_->addressed + 1)));
        report_status();
        report_track({kUid, kTitle, kArtist, kAlbum, kPlayingTime});
        send(Event("RWA").address(peer).byte(1));
    }

    void report_status() {
        if (media_->control) {
            send(Event("RL")
                     .address(media_->control->peer)
                     .byte(static_cast<uint8_t>(player().status())));
        }
    }

    void report_position() {
        if (media_->control && player().track() != nullptr) {
            send(Event("RK")
                     .address(media_->control->peer)
                     .dword(player().track()->length_ms)
                     .dword(player().position_ms()));
        }
    }

    /// The value of one attribute of the current track; empty when it has none.
    std::string attribute(uint8_t id) {
        const Track& track = *player().track();
        const size_t index = player().index();
        switch (id) {
        case kUid:
            return uid_text(track_uid(index));
        case kTitle:
            return track.title;
        case kArtist:
            return track.artist;
        case kAlbum:
            return track.album;
        case kTrackNumber:
            return std::to_string(index + 1);
        case kTrackCount:
            return std::to_string(player().tracks().size());
        case kGenre:
            return track.genre;
        case kPlayingTime:
            return std::to_string(track.length_ms);
        case kCoverArt:
            return media_->control->cover_art ? picture_handle(index) : std::string();
        default:
            return {};
        }
    }

    /// A count, the ids, one digit each, and the values, each with its NUL.
    void report_track(const std::vector<uint8_t>& ids) {
        if (!media_->control) {
            return;
        }
        std::string digits;
        std::string values;
        for (const uint8_t id : ids) {
            const std::string value = player().track() == nullptr ? std::string() : attribute(id);
            // What is not there is left out, as phones do.
            if (!value.empty() && digits.size() < 0xF) {
                digits += hex_digit(id);
                values += value + '\0';
            }
        }
        send(Event("RJ")
                 .address(media_->control->peer)
                 .block(hex_digit(digits.size()) + digits + values));
    }

    // Keys.

    void key(Fields& fields) {
        const Address address = fields.address();
        const uint8_t key = fields.byte("key");
        const uint8_t state = fields.byte("state");
        fields.end();
        if (!media_->controls(hub(), address)) {
            return;
        }
        const bool held_key = key == kRewind || key == kFastForward;
        const auto action = press_actions().find(key);
        if (!held_key && action == press_actions().end()) {
            hub().log.note("the player has no key " + std::to_string(key));
            return;
        }
        send(Event("RA").byte(key).byte(state));
        if (held_key) {
            state == kPressed ? player().seek(key == kFastForward) : player().end_seek();
        } else if (state == kPressed) {
            action->second(player());
        }
    }

    static const std::map<uint8_t, void (*)(Player&)>& press_actions() {
        static const std::map<uint8_t, void (*)(Player&)> actions{
            {kPlay, [](Player& p) { p.play(); }},          {kStop, [](Player& p) { p.stop(); }},
            {kPause, [](Player& p) { p.pause(); }},        {kForward, [](Player& p) { p.skip(true); }},
            {kBackward, [](Player& p) { p.skip(false); }},
        };
        return actions;
    }

    void group_key(Fields& fields) {
        const Address address = fields.address();
        const uint8_t group = fields.byte("group");
        const uint8_t state = fields.byte("state");
        fields.end();
        if (!media_->controls(hub(), address)) {
            return;
        }
        if (group != kNextGroup && group != kPreviousGroup) {
            hub().log.note("the player has no group key " + std::to_string(group));
            return;
        }
        send(Event("RB").byte(group).byte(state));
        if (state == kPressed) {
            player().skip_album(group == kNextGroup);
        }
    }

    // Settings.

    void get_settings(Fields& fields) {
        const Address address = fields.address();
        const uint8_t count = fields.byte("count");
        const std::string block = fields.block("settings");
        fields.end();
        if (block.size() != count) {
            throw BadCommand("settings: the count does not fit the block");
        }
        if (!media_->controls(hub(), address)) {
            return;
        }
        std::vector<uint8_t> asked(block.begin(), block.end());
        if (asked.empty()) {
            asked = Player::settings();
        }
        std::vector<uint8_t> known;
        std::copy_if(asked.begin(), asked.end(), std::back_inserter(known),
                     [](uint8_t id) { return !Player::values_of(id).empty(); });
        for (const uint8_t id : known) {
            const std::vector<uint8_t>& values = Player::values_of(id);
            std::string choice{static_cast<char>(id), static_cast<char>(values.size())};
            choice.append(values.begin(), values.end());
            send(Event("RF").address(address).block(choice));
        }
        if (known.size() < asked.size()) {
            hub().log.note("the player does not know all of these settings");
        }
        report_settings(known);
    }

    /// The values as they stand.
    void report_settings(const std::vector<uint8_t>& ids) {
        std::string block(1, static_cast<char>(ids.size()));
        block.append(ids.begin(), ids.end());
        for (const uint8_t id : ids) {
            block += static_cast<char>(player().value_of(id));
        }
        send(Event("RG").address(media_->control->peer).block(block));
    }

    void set_settings(Fields& fields) {
        const Address address = fields.address();
        const size_t count = fields.byte("count");
        const std::string block = fields.block("settings");
        fields.end();
        if (block.size() != 2 * count) {
            throw BadCommand("settings: the count does not fit the block");
        }
        if (!media_->controls(hub(), address)) {
            return;
        }
        const std::vector<uint8_t> ids(block.begin(), block.begin() + static_cast<long>(count));
        const std::vector<uint8_t> values(block.begin() + static_cast<long>(count), block.end());
        bool good = count > 0;
        for (size_t i = 0; i < count; ++i) {
            const std::vector<uint8_t>& choice = Player::values_of(ids[i]);
            good = good && std::find(choice.begin(), choice.end(), values[i]) != choice.end();
        }
        send(Event("RE").address(address).byte(good ? 1 : 0));
        if (good) {
            change_settings(ids, values);
        }
    }

    void change_settings(const std::vector<uint8_t>& ids, const std::vector<uint8_t>& values) {
        bool changed = false;
        for (size_t i = 0; i < ids.size(); ++i) {
            changed = changed || player().value_of(ids[i]) != values[i];
            player().set(ids[i], values[i]);
        }
        if (changed) {
            report_settings(ids);
        }
    }

    // Volume.

    void volume_set(Fields& fields) {
        const Address address = fields.address();
        const uint8_t volume = fields.byte("volume");
        const uint8_t label = fields.byte("label");
        fields.end();
        if (media_->controls(hub(), address)) {
            note_volume(volume, "set", volume_label_ == label);
            volume_label_.reset();
        }
    }

    void volume_notification(Fields& fields) {
        const Address address = fields.address();
        const uint8_t type = fields.byte("type");
        const uint8_t volume = fields.byte("volume");
        const uint8_t label = fields.byte("label");
        fields.end();
        if (media_->controls(hub(), address)) {
            note_volume(volume, "notified with type " + std::to_string(type),
                        notification_label_ == label);
        }
    }

    void note_volume(uint8_t volume, const std::string& how, bool expected) {
        hub().log.note("volume " + std::to_string(volume) + " " + how +
                       (expected ? "" : ", with a label that nobody waits for"));
    }

    // For the verbs.

    Player& playable() {
        if (player().track() == nullptr) {
            throw Refused("the player has no tracks");
        }
        return player();
    }

    void play(Given& /*given*/) { playable().play(); }
    void pause(Given& /*given*/) { playable().pause(); }
    void stop(Given& /*given*/) { playable().stop(); }
    void skip(Given& /*given*/) { playable().skip(true); }
    void back(Given& /*given*/) { playable().skip(false); }

    void set_by_phone(PlayerSetting setting, uint8_t value) {
        player().set(setting, value);
        if (media_->control) {
            report_settings({setting});
        }
    }

    void repeat(Given& given) {
        const std::string& what = given.text(0);
        set_by_phone(kRepeat, what == "off" ? kRepeatOff : what == "track" ? kRepeatTrack : kRepeatAll);
    }

    void shuffle(Given& given) { set_by_phone(kShuffle, given.is_on(0) ? 2 : 1); }

    void ask_for_volume(Given& given) {
        if (!media_->control) {
            throw Refused("there is no remote control connection");
        }
        volume_label_ = next_label();
        send(Event("RH").address(media_->control->peer).byte(given.number(0)).byte(*volume_label_));
    }

    // Questions.

    void play_status(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (media_->controls(hub(), address)) {
            report_status();
        }
    }

    void get_attributes(Fields& fields) {
        const Address address = fields.address();
        const uint32_t count = fields.dword("count");
        std::vector<uint8_t> ids = attribute_ids(count, fields.block("attribute identifiers"));
        fields.end();
        if (!media_->controls(hub(), address)) {
            return;
        }
        if (ids.empty()) {
            ids = {kTitle, kArtist, kAlbum, kTrackNumber, kTrackCount, kGenre, kPlayingTime, kCoverArt};
        }
        report_track(ids);
    }

    std::shared_ptr<Media> media_;
    ProfileLink link_;
    uint8_t label_ = 0;
    std::optional<uint8_t> volume_label_;
    std::optional<uint8_t> notification_label_;
};

} // namespace

std::unique_ptr<Module> make_avrcp(Hub& hub, std::shared_ptr<Media> media) {
    return std::make_unique<Avrcp>(hub, std::move(media));
}

} // namespace sim
