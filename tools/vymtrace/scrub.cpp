// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "scrub.h"

#include "capture/format.h"
#include "capture/joiner.h"
#include "capture/texts.h"
#include "capture/writer.h"
#include "output.h"
#include "reading.h"
#include "scrub_stream.h"
#include "scrub_text.h"

#include <algorithm>
#include <deque>
#include <ostream>

namespace trace {
namespace {

/// What one read or one command put into the file: full pieces, and one that need not be full.
struct Group {
    bool is_command = false;
    struct Part {
        StreamMap::Range from;
        int64_t time_us = 0;
    };
    std::vector<Part> parts;

    bool is_open(bool ended) const {
        return !ended && parts.back().from.end - parts.back().from.begin >= capture::kPiece;
    }
};

class Scrubber {
public:
    explicit Scrubber(Output& out) : out_(out) { out_.line() += capture::kFileHeader; }

    void take(const capture::Record& record, const capture::Piece& piece) {
        Direction& direction = directions_[piece.is_command ? 1 : 0];
        const uint64_t before = direction.joiner.position();
        const size_t repeated = direction.joiner.add(piece.text);
        const StreamMap::Range from{before - repeated, before - repeated + piece.text.size()};
        add_part(piece, {from, record.time_us}, repeated > 0);
        capture::Text text;
        text.is_command = piece.is_command;
        while (direction.joiner.next(&text.text, &text.whole)) {
            add_text(text, direction.joiner.position());
        }
        write_what_is_known();
    }

    void end() {
        for (Direction& direction : directions_) {
            capture::Text text;
            text.is_command = &direction == &directions_[1];
            text.whole = false;
            text.text = direction.joiner.unfinished();
            add_text(text, direction.joiner.position());
        }
        ended_ = true;
        write_what_is_known();
        out_.flush();
    }

private:
    struct Direction {
        explicit Direction(bool is_command) : joiner(is_command) {}
        capture::Joiner joiner;
        StreamMap map;
    };

    void add_part(const capture::Piece& piece, Group::Part part, bool is_next_read) {
        const bool goes_on = !groups_.empty() && groups_.back().is_command == piece.is_command &&
                             groups_.back().is_open(ended_) && !is_next_read && !command_ended_;
        if (!goes_on) {
            groups_.push_back({piece.is_command, {}});
        }
        groups_.back().parts.push_back(part);
        command_ended_ = piece.is_command && piece.text.size() >= 2 &&
                         piece.text.substr(piece.text.size() - 2) == "\r\n";
    }

    /// A text that ends at `end` of its direction, with its end mark; what is before it are NULs.
    void add_text(const capture::Text& text, uint64_t end) {
        StreamMap& map = directions_[text.is_command ? 1 : 0].map;
        const bool has_nul = !text.is_command && text.whole;
        const uint64_t begin = end - text.text.size() - (has_nul ? 1 : 0);
        const std::string nuls(static_cast<size_t>(begin - map.known()), '\0');
        map.add(nuls.size(), nuls);
        map.add(text.text.size(), scrubbed(Item(text), pseudonyms_));
        map.add(has_nul ? 1 : 0, std::string(has_nul ? 1 : 0, '\0'));
    }

    void write_what_is_known() {
        while (!groups_.empty()) {
            const Group& group = groups_.front();
            StreamMap& map = directions_[group.is_command ? 1 : 0].map;
            const bool is_open = groups_.size() == 1 && !command_ended_ && group.is_open(ended_);
            if (is_open || group.parts.back().from.end > map.known()) {
                return;
            }
            write(group, map);
            const uint64_t begin = group.parts.front().from.begin;
            groups_.pop_front();
            // An event that a read has cut may be repeated, from its beginning.
            map.forget(begin);
        }
    }

    void write(const Group& group, const StreamMap& map) {
        bool same = true;
        for (const Group::Part& part : group.parts) {
            same &= map.bytes(part.from).size() == part.from.end - part.from.begin;
        }
        if (same) {
            for (const Group::Part& part : group.parts) {
                write_piece(group, part.time_us, map.bytes(part.from));
            }
            return;
        }
        std::string_view bytes =
            map.bytes({group.parts.front().from.begin, group.parts.back().from.end});
        for (size_t i = 0; !bytes.empty(); ++i) {
            const size_t part = std::min(i, group.parts.size() - 1);
            write_piece(group, group.parts[part].time_us, bytes.substr(0, capture::kPiece));
            bytes.remove_prefix(std::min(bytes.size(), capture::kPiece));
        }
    }

    void write_piece(const Group& group, int64_t time_us, std::string_view piece) {
        capture::append_piece(&out_.line(), group.is_command, time_us, piece);
        out_.flush_full();
    }

    Output& out_;
    Pseudonyms pseudonyms_;
    /// Events, and commands.
    Direction directions_[2] = {Direction(false), Direction(true)};
    /// In the order of the file; written when all of their texts are known.
    std::deque<Group> groups_;
    bool command_ended_ = false;
    bool ended_ = false;
};

} // namespace

int scrub(const std::string& from, const std::string& to, std::ostream& err) {
    refuse_same_file(from, to);
    Damage damage(from, err);
    capture::InputFile file;
    if (!file.open(from)) {
        damage.note(cannot_be_read());
        damage.tell();
        return 1;
    }
    const NewFile new_file(to);
    Output out(new_file.fd(), to);
    Scrubber scrubber(out);
    capture::RecordReader reader;
    size_t others = 0;
    const auto take_next = [&] {
        capture::Record record;
        if (!reader.next(&record)) {
            return false;
        }
        std::optional<capture::Problem> problem;
        if (const auto piece = capture::piece_of(record, &problem)) {
            scrubber.take(record, *piece);
        } else if (problem) {
            damage.note(*problem);
        } else {
            ++others;
        }
        return true;
    };
    read_on(file, reader, damage, take_next);
    if (!reader.problem()) {
        reader.finish();
        drain(reader, damage, take_next);
    }
    scrubber.end();
    if (others > 0) {
        err << from << ": " << others
            << " packets of other kinds are left out: nobody knows what is private in them\n";
    }
    damage.tell();
    return damage.any() ? 1 : 0;
}

} // namespace trace
