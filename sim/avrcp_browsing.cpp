// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// AVRCP browsing: the players, their folders (one for each album, and an empty one), and their queues.
#include "media.h"
#include "modules.h"

#include <algorithm>

namespace sim {
namespace {

/// Results as the remote-control profile numbers them.
enum BrowseStatus : uint8_t {
    kBadDirection = 0x07,
    kNotADirectory = 0x08,
    kDoesNotExist = 0x09,
    kBadScope = 0x0A,
    kOutOfBounds = 0x0B,
    kNotPlayable = 0x0C,
    kDone = 0x04,
    kBadPlayer = 0x11,
};

enum ItemType : char { kPlayerItem = 1, kFolderItem = 2, kMediaItem = 3 };
enum Scope : uint8_t { kScopeFolders = 1, kScopeQueue = 3 };
enum Direction : uint8_t { kUp = 0, kDown = 1 };

constexpr uint16_t kUtf8 = 106;
constexpr size_t kNameBytes = 255;
constexpr uint32_t kAll = 0xFFFFFFFF;
/// Folders are numbered far above the tracks.
constexpr size_t kFirstFolder = 0xFFFF;

/// A name fills its place in a record, and the rest of it with zeros.
std::string padded(const std::string& name) {
    std::string field = name.substr(0, kNameBytes);
    field.resize(kNameBytes, '\0');
    return field;
}

std::string octet(uint32_t value) {
    return std::string(1, static_cast<char>(value));
}

std::string media_item(const Track& track, size_t index) {
    std::string item =
        octet(kMediaItem) + track_uid(index) + octet(0) + le16(kUtf8) + padded(track.title) + le32(3);
    uint32_t id = 1;
    for (const std::string* text : {&track.title, &track.artist, &track.album}) {
        item += le32(id++) + padded(*text);
    }
    return item;
}

std::string folder_item(const std::string& name, size_t index) {
    constexpr uint8_t kAlbums = 2;
    return octet(kFolderItem) + track_uid(kFirstFolder + index) + octet(kAlbums) + octet(0) +
           le16(kUtf8) + padded(name);
}

class Browsing : public Module {
public:
    Browsing(Hub& hub, std::shared_ptr<Media> media)
        : Module(hub), media_(std::move(media)), step_(hub.loop) {}

    std::vector<Command> commands() override {
        return {
            row("RI", &Browsing::list_folder),
            row("RJ", &Browsing::change_folder),
            row("RK", &Browsing::count_items),
            row("RL", &Browsing::play_item),
            row("RM", &Browsing::list_players),
            row("RO", &Browsing::list_queue),
            row("RP", &Browsing::set_browsed_player),
            row("RQ", &Browsing::set_addressed_player),
            row("RV", &Browsing::cancel),
        };
    }

    std::vector<Verb> verbs() override {
        return {verb("player choose NUMBER=1..255", "somebody at the phone turns to this player",
                     &Browsing::choose),
                verb("player remove NUMBER=1..255", "this player is no longer on the phone",
                     &Browsing::remove_player),
                verb("player install NUMBER=1..255", "it is there again", &Browsing::install_player)};
    }

    void client_left() override { end_list(); }
    void link_down(const Address&) override { end_list(); }

private:
    struct Folder {
        std::string name;
        /// Places in the queue.
        std::vector<size_t> tracks;
    };

    // The tree.

    std::vector<Folder> folders() {
        std::vector<Folder> all;
        const std::vector<Track>& tracks = media_->browsed().tracks();
        for (size_t i = 0; i < tracks.size(); ++i) {
            if (all.empty() || all.back().name != tracks[i].album) {
                all.push_back({tracks[i].album, {}});
            }
            all.back().tracks.push_back(i);
        }
        all.push_back({"Nothing here", {}});
        return all;
    }

    std::vector<std::string> items_here() {
        const std::vector<Folder> all = folders();
        const std::optional<size_t> open = media_->control->folder;
        std::vector<std::string> items;
        if (!open) {
            for (size_t i = 0; i < all.size(); ++i) {
                items.push_back(folder_item(all[i].name, i));
            }
            return items;
        }
        for (const size_t track : all.at(*open).tracks) {
            items.push_back(media_item(media_->browsed().tracks()[track], track));
        }
        return items;
    }

    std::optional<size_t> folder_of(const std::string& uid) {
        const size_t count = folders().size();
        for (size_t i = 0; i < count; ++i) {
            if (uid == track_uid(kFirstFolder + i)) {
                return i;
            }
        }
        return std::nullopt;
    }

    std::optional<size_t> track_of(const Player& player, const std::string& uid) {
        for (size_t i = 0; i < player.tracks().size(); ++i) {
            if (uid == track_uid(i)) {
                return i;
            }
        }
        return std::nullopt;
    }

    // Lists come one item at a time, so that they can be cancelled.

    void list_folder(Fields& fields) {
        const Address address = fields.address();
        const uint32_t start = fields.dword("start");
        const uint32_t count = fields.dword("count");
        fields.end();
        if (media_->controls(hub(), address)) {
            begin_list(items_here(), start, count);
        }
    }

    void list_queue(Fields& fields) {
        const Address address = fields.address();
        const uint32_t start = fields.dword("start");
        const uint32_t count = fields.dword("count");
        fields.end();
        if (!media_->controls(hub(), address)) {
            return;
        }
        std::vector<std::string> items;
        const std::vector<Track>& tracks = media_->player().tracks();
        for (size_t i = 0; i < tracks.size(); ++i) {
            items.push_back(media_item(tracks[i], i));
        }
        begin_list(std::move(items), start, count);
    }

    void list_players(Fields& fields) {
        const Address address = fields.address();
        const uint32_t start = fields.byte("start");
        const uint32_t count = fields.byte("count");
        fields.end();
        if (media_->controls(hub(), address)) {
            // Here "all" has one byte.
            std::vector<std::string> items;
            for (size_t i = 0; i < media_->players.size(); ++i) {
                if (media_->players[i].is_installed()) {
                    items.push_back(player_item(i));
                }
            }
            begin_list(std::move(items), start, count == 0xFF ? kAll : count);
        }
    }

    /// Players are numbered from 1 on.
    std::string player_item(size_t index) {
        constexpr uint8_t kAudioPlayer = 1;
        // Play, stop, pause, rewind, fast forward, forward and backward; advanced control, browsing.
        static constexpr std::string_view kPlayerFeatures("\0\0\0\0\0\xB7\x01\x0C\x0A\0\0\0\0\0\0\0",
                                                          16);
        return octet(kPlayerItem) + le16(static_cast<uint16_t>(index + 1)) + octet(kAudioPlayer) +
               le32(0) + octet(static_cast<uint32_t>(media_->players[index].status())) +
               std::string(kPlayerFeatures) + le16(kUtf8) + padded(media_->players[index].name());
    }

    void begin_list(std::vector<std::string> items, uint32_t start, uint32_t count) {
        if (!items_.empty()) {
            hub().log.note("the list before is cut short");
        }
        end_list();
        if (start >= items.size() || count == 0) {
            send_item(kOutOfBounds, 0, {});
            return;
        }
        const size_t end = std::min<size_t>(items.size(), size_t{start} + count);
        items_.assign(items.begin() + static_cast<long>(start), items.begin() + static_cast<long>(end));
        next_ = 0;
        wait();
    }

    void wait() {
        step_.start(hub().pace.list_step, [this] { step(); });
    }

    void step() {
        if (!media_->control) {
            end_list();
            return;
        }
        send_item(kDone, static_cast<uint16_t>(items_.size()), items_[next_]);
        if (++next_ < items_.size()) {
            wait();
        } else {
            end_list();
        }
    }

    void send_item(BrowseStatus status, uint16_t count, const std::string& item) {
        send(Event("RM").address(media_->control->peer).byte(status).word(count).block(item));
    }

    void end_list() {
        step_.stop();
        items_.clear();
    }

    void cancel(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (media_->controls(hub(), address)) {
            hub().log.note(items_.empty() ? "no list is under way" : "the list is cancelled");
            end_list();
        }
    }

    // Moving and playing.

    void change_folder(Fields& fields) {
        const Address address = fields.address();
        const uint8_t direction = fields.byte("direction");
        const std::string uid = fields.block("UID");
        fields.end();
        if (!media_->controls(hub(), address)) {
            return;
        }
        const BrowseStatus status = move(direction, uid);
        const size_t count = status == kDone ? items_here().size() : 0;
        send(Event("RN").address(address).byte(status).dword(static_cast<uint32_t>(count)));
    }

    BrowseStatus move(uint8_t direction, const std::string& uid) {
        std::optional<size_t>& open = media_->control->folder;
        if (direction == kUp && open) {
            open.reset();
            return kDone;
        }
        if (direction != kDown) {
            return kBadDirection;
        }
        const std::optional<size_t> folder = folder_of(uid);
        if (!folder || open) {
            return track_of(media_->browsed(), uid) ? kNotADirectory : kDoesNotExist;
        }
        open = folder;
        return kDone;
    }

    void count_items(Fields& fields) {
        const Address address = fields.address();
        fields.end();
        if (media_->controls(hub(), address)) {
            send(Event("RO").address(address).byte(kDone).dword(
                static_cast<uint32_t>(items_here().size())));
        }
    }

    void play_item(Fields& fields) {
        const Address address = fields.address();
        const uint8_t scope = fields.byte("scope");
        const std::string uid = fields.block("UID");
        fields.end();
        if (!media_->controls(hub(), address)) {
            return;
        }
        Player& player = scope == kScopeFolders ? media_->browsed() : media_->player();
        const std::optional<size_t> track = track_of(player, uid);
        BrowseStatus status = kDone;
        if (scope != kScopeFolders && scope != kScopeQueue) {
            status = kBadScope;
        } else if (!track) {
            status = folder_of(uid) ? kNotPlayable : kDoesNotExist;
        }
        send(Event("RP").address(address).byte(status));
        if (status == kDone) {
            media_->turn_to(index_of(player));
            player.play_track(*track);
        }
    }

    // Players.

    bool is_player(size_t id) {
        return id >= 1 && id <= media_->players.size() && media_->players[id - 1].is_installed();
    }

    size_t index_of(const Player& player) {
        size_t index = 0;
        while (&media_->players[index] != &player) {
            ++index;
        }
        return index;
    }

    void set_browsed_player(Fields& fields) {
        const Address address = fields.address();
        const uint16_t id = fields.word("player");
        fields.end();
        if (!media_->controls(hub(), address)) {
            return;
        }
        const bool known = is_player(id);
        if (known) {
            media_->control->browsed = id - 1U;
            media_->control->folder.reset();
        }
        send(Event("RR")
                 .address(address)
                 .byte(known ? kDone : kBadPlayer)
                 .word(static_cast<uint16_t>(known ? items_here().size() : 0))
                 .word(kUtf8)
                 .byte(0));
    }

    void set_addressed_player(Fields& fields) {
        const Address address = fields.address();
        const uint16_t id = fields.word("player");
        fields.end();
        if (media_->controls(hub(), address)) {
            send(Event("RS").byte(is_player(id) ? kDone : kBadPlayer));
            if (is_player(id)) {
                media_->turn_to(id - 1U);
            }
        }
    }

    void choose(Given& given) { media_->turn_to(player_of(given, true)); }

    size_t player_of(Given& given, bool installed) {
        const size_t id = given.number(0);
        if (id > media_->players.size() || is_player(id) != installed) {
            throw Refused(std::string("no player ") + std::to_string(id) +
                          (installed ? " is on the phone" : " can be installed"));
        }
        return id - 1;
    }

    void remove_player(Given& given) {
        const size_t index = player_of(given, true);
        if (index == media_->addressed) {
            throw Refused("this player is in use; \"player choose\" another one first");
        }
        set_installed(index, false);
    }

    void install_player(Given& given) { set_installed(player_of(given, false), true); }

    void set_installed(size_t index, bool yes) {
        media_->players[index].install(yes);
        if (!media_->control) {
            return;
        }
        if (!yes && media_->control->browsed == index) {
            media_->control->browsed.reset();
            media_->control->folder.reset();
        }
        send(Event("RWC").address(media_->control->peer).byte(1));
    }

    std::shared_ptr<Media> media_;
    Timer step_;
    std::vector<std::string> items_;
    size_t next_ = 0;
};

} // namespace

std::unique_ptr<Module> make_avrcp_browsing(Hub& hub, std::shared_ptr<Media> media) {
    return std::make_unique<Browsing>(hub, std::move(media));
}

} // namespace sim
