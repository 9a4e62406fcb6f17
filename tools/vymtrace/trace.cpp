// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "trace.h"

#include "capture/file.h"
#include "damage.h"
#include "follow.h"

#include <cerrno>
#include <memory>
#include <ostream>
#include <system_error>

namespace trace {
namespace {

class Run {
public:
    Run(std::string path, Filter filter, Consumer& consumer, std::ostream& err)
        : path_(std::move(path)), filter_(std::move(filter)), consumer_(consumer), err_(err),
          damage_(path_ == "-" ? "standard input" : path_, err) {}

    int to_end(bool follow) {
        if (file_.open(path_)) {
            follow ? read_for_ever() : read_all();
        } else {
            note_error();
        }
        consumer_.end();
        damage_.tell();
        return damage_.any() ? 1 : 0;
    }

private:
    void read_all() {
        while (read_block()) {
        }
        if (failed_) {
            return;
        }
        reader_->finish();
        drain();
        for (const bool is_command : {true, false}) {
            const capture::Text text = reader_->unfinished(is_command);
            if (!text.text.empty()) {
                take(text);
            }
        }
    }

    void read_for_ever() {
        const Waiting waiting;
        do {
            while (read_block()) {
            }
            consumer_.flush();
            damage_.tell();
            if (file_.was_cut(bytes_)) {
                begin_again();
            }
        } while (!failed_ && waiting.wait());
    }

    /// The library makes its capture anew when it starts.
    void begin_again() {
        err_ << path_ << ": was begun again" << std::endl;
        reader_ = std::make_unique<capture::TextReader>();
        bytes_ = 0;
        if (!file_.open(path_)) {
            note_error();
        }
    }

    /// False at the end for now.
    bool read_block() {
        const long count = file_.read(reader_->space());
        if (count < 0) {
            note_error();
        }
        if (count <= 0) {
            return false;
        }
        reader_->filled(static_cast<size_t>(count));
        bytes_ += static_cast<uint64_t>(count);
        drain();
        // The rest of a file of another kind says nothing.
        return !reader_->problem();
    }

    void drain() {
        for (;;) {
            capture::Text text;
            while (reader_->next(&text)) {
                take(text);
            }
            if (!reader_->problem()) {
                return;
            }
            damage_.note(*reader_->problem());
            if (!reader_->recover()) {
                failed_ = true;
                return;
            }
        }
    }

    void take(const capture::Text& text) {
        if (filter_.may_want(text)) {
            const Item item(text);
            if (filter_.wants(item)) {
                consumer_.take(item);
            }
        }
    }

    void note_error() {
        damage_.note("cannot be read: " + std::generic_category().message(errno) +
                     "; expected a capture");
        failed_ = true;
    }

    std::string path_;
    Filter filter_;
    Consumer& consumer_;
    std::ostream& err_;
    Damage damage_;
    capture::InputFile file_;
    std::unique_ptr<capture::TextReader> reader_ = std::make_unique<capture::TextReader>();
    uint64_t bytes_ = 0;
    bool failed_ = false;
};

} // namespace

int run(const std::string& file, bool follow, Filter filter, Consumer& consumer, std::ostream& err) {
    return Run(file, std::move(filter), consumer, err).to_end(follow);
}

} // namespace trace
