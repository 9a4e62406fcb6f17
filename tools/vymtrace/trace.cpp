// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "trace.h"

#include "follow.h"
#include "reading.h"

#include <memory>
#include <ostream>

namespace trace {
namespace {

class Run {
public:
    Run(std::string path, Filter filter, Consumer& consumer, std::ostream& err)
        : path_(std::move(path)), filter_(std::move(filter)), consumer_(consumer), err_(err),
          damage_(path_ == "-" ? "standard input" : path_, err) {}

    int to_end(bool follow) {
        if (!file_.open(path_)) {
            damage_.note(cannot_be_read());
        } else if (follow) {
            read_for_ever();
        } else {
            read_all();
        }
        consumer_.end();
        damage_.tell();
        return damage_.any() ? 1 : 0;
    }

private:
    void read_all() {
        read();
        if (is_foreign()) {
            return;
        }
        reader_->finish();
        drain(*reader_, damage_, [this] { return take_next(); });
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
            read();
            consumer_.flush();
            damage_.tell();
            if (file_.was_cut(bytes_)) {
                begin_again();
            }
        } while (!is_foreign() && waiting.wait());
    }

    void read() {
        bytes_ += read_on(file_, *reader_, damage_, [this] { return take_next(); });
    }

    /// Behind other problems reading goes on.
    bool is_foreign() const { return reader_->problem().has_value(); }

    /// The library makes its capture anew when it starts.
    void begin_again() {
        err_ << path_ << ": was begun again" << std::endl;
        reader_ = std::make_unique<capture::TextReader>();
        bytes_ = 0;
        if (!file_.open(path_)) {
            damage_.note(cannot_be_read());
        }
    }

    bool take_next() {
        capture::Text text;
        const bool has_text = reader_->next(&text);
        if (has_text) {
            take(text);
        }
        return has_text;
    }

    void take(const capture::Text& text) {
        if (filter_.may_want(text)) {
            item_.set(text);
            if (filter_.wants(item_)) {
                consumer_.take(item_);
            }
        }
    }

    std::string path_;
    Filter filter_;
    Consumer& consumer_;
    std::ostream& err_;
    Damage damage_;
    capture::InputFile file_;
    std::unique_ptr<capture::TextReader> reader_ = std::make_unique<capture::TextReader>();
    uint64_t bytes_ = 0;
    Item item_;
};

} // namespace

int run(const std::string& file, bool follow, Filter filter, Consumer& consumer, std::ostream& err) {
    return Run(file, std::move(filter), consumer, err).to_end(follow);
}

} // namespace trace
