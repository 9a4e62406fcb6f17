// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// A2DP: the phone as the source of a music stream. The stream itself is on the audio descriptor.
#include "media.h"
#include "modules.h"
#include "profile_link.h"

namespace sim {
namespace {

constexpr uint16_t kAudioSource = 0x110A;

enum AudioCode : uint8_t { kStreamStopped = 1, kStreamStarted = 2 };

class A2dp : public Module {
public:
    A2dp(Hub& hub, std::shared_ptr<Media> media)
        : Module(hub), media_(std::move(media)),
          link_(hub, "A2DP", kAudioSource,
                [this](const Address& a, ProfileLink::State s) { link_changed(a, s); }) {
        media_->listen({[this] { stream_changed(); }, {}, {}});
    }

    std::vector<Command> commands() override {
        return {
            row("AA", &A2dp::connect), row("AB", &A2dp::disconnect),      row("AC", &A2dp::focus),
            row("AD", &A2dp::gain),    row("AQ", &A2dp::switch_hardware),
        };
    }

    void link_down(const Address& address) override { link_.lost(address); }

private:
    void connect(Fields& fields) { link_.connect(fields); }
    void disconnect(Fields& fields) { link_.disconnect(fields); }

    void link_changed(const Address& address, ProfileLink::State state) {
        // Not when it is only a second device that was refused.
        if (state == ProfileLink::State::Down && !link_.is_up()) {
            // As a phone does that loses its loudspeaker.
            media_->player().pause();
            stream_changed();
            media_->stream_link(address, false);
        }
        send(Event("AA").address(address).byte(static_cast<uint8_t>(state)));
        if (state == ProfileLink::State::Up) {
            send(Event("AC")
                     .address(address)
                     .dword(world().music.rate)
                     .byte(static_cast<uint8_t>(world().music.channels)));
            stream_changed();
            media_->stream_link(address, true);
        }
    }

    void stream_changed() {
        const bool on = link_.is_up() && media_->player().is_sounding();
        if (on != streaming_ && link_.is_up()) {
            send(Event("AB").address(link_.peer()).byte(on ? kStreamStarted : kStreamStopped));
        }
        streaming_ = on;
        world().phone.music_on_air = on && has_focus_;
    }

    /// A client that has lost its loudspeaker to something else gets no packets meanwhile.
    void focus(Fields& fields) {
        has_focus_ = fields.byte("state") != 0;
        fields.end();
        hub().log.note(has_focus_ ? "the client has audio focus" : "the client has no audio focus");
        stream_changed();
    }

    void gain(Fields& fields) {
        const uint16_t gain = fields.word("gain");
        fields.end();
        hub().log.note("the client plays with gain " + std::to_string(gain));
    }

    void switch_hardware(Fields& fields) {
        const uint8_t mode = fields.byte("mode");
        fields.end();
        hub().log.note("music hardware in mode " + std::to_string(mode));
    }

    std::shared_ptr<Media> media_;
    ProfileLink link_;
    bool has_focus_ = true;
    bool streaming_ = false;
};

} // namespace

std::unique_ptr<Module> make_a2dp(Hub& hub, std::shared_ptr<Media> media) {
    return std::make_unique<A2dp>(hub, std::move(media));
}

} // namespace sim
