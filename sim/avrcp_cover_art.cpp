// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// AVRCP cover art: the picture of a track, written to the file that the client names.
#include "media.h"
#include "modules.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <system_error>

namespace sim {
namespace {

class CoverArt : public Module {
public:
    CoverArt(Hub& hub, std::shared_ptr<Media> media) : Module(hub), media_(std::move(media)) {}

    std::vector<Command> commands() override {
        return {
            row("RZA", &CoverArt::connect),
            row("RZC", &CoverArt::thumbnail),
            row("RZD", &CoverArt::image),
        };
    }

private:
    void report(const char* tag, const Address& address, bool done) {
        send(Event(tag).address(address).byte(done ? kSuccess : kFail));
    }

    void connect(Fields& fields) {
        const Address address = fields.address();
        const uint32_t psm = fields.dword("PSM");
        fields.end();
        if (media_->controls(hub(), address)) {
            media_->control->cover_art = psm == kCoverArtPsm;
            report("RWE", address, media_->control->cover_art);
        }
    }

    void thumbnail(Fields& fields) {
        const Address address = fields.address();
        const std::string handle = fields.block("handle");
        const std::string path = fields.block("path");
        fields.end();
        if (media_->controls(hub(), address)) {
            report("RWF", address, is_there(handle) && write(path));
        }
    }

    void image(Fields& fields) {
        const Address address = fields.address();
        const uint32_t most_bytes = fields.dword("most bytes");
        const std::string handle = fields.block("handle");
        const std::string encoding = fields.block("encoding");
        fields.block("pixels");
        const std::string path = fields.block("path");
        fields.end();
        if (!media_->controls(hub(), address)) {
            return;
        }
        // There is one file, and it is not converted.
        const bool fits = (most_bytes == 0 || most_bytes >= picture().size()) &&
                          (encoding.empty() || encoding == "JPEG");
        if (!fits) {
            hub().log.note("the image is a JPEG file of " + std::to_string(picture().size()) +
                           " bytes");
        }
        report("RWG", address, fits && is_there(handle) && write(path));
    }

    bool is_there(const std::string& handle) {
        const size_t count = media_->player().tracks().size();
        bool known = false;
        for (size_t i = 0; i < count; ++i) {
            known = known || picture_handle(i) == handle;
        }
        if (!media_->control->cover_art) {
            hub().log.note("refused: no cover art connection");
        } else if (!known) {
            hub().log.note("no picture \"" + printable(handle, 20) + '"');
        }
        return media_->control->cover_art && known;
    }

    bool write(const std::string& path) {
        errno = 0;
        std::ofstream file(path.c_str(), std::ios::binary | std::ios::trunc);
        file << picture() << std::flush;
        if (!file) {
            hub().log.note("cannot write " + printable(path) + ": " +
                           std::generic_category().message(errno));
        }
        return file.good();
    }

    std::shared_ptr<Media> media_;
};

} // namespace

std::unique_ptr<Module> make_avrcp_cover_art(Hub& hub, std::shared_ptr<Media> media) {
    return std::make_unique<CoverArt>(hub, std::move(media));
}

} // namespace sim
