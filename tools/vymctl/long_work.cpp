// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// Verbs that make a file of many events.
#include "files.h"
#include "output.h"
#include "session.h"

#include "console/words.h"

namespace vymctl {
namespace {

/// Nobody hears music at another rate unless the player said so.
constexpr uint32_t kMusicRate = 44100;
constexpr uint32_t kWidebandRate = 16000;
constexpr int kWidebandCodec = 2;

bool ends_with(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// Takes part in what happens until its end.
class Collecting {
public:
    Collecting(Hub::Sink& collector, Hub::Sink collect) : collector_(collector) {
        hub().change([&] { collector_ = std::move(collect); });
    }
    ~Collecting() {
        hub().change([this] { collector_ = {}; });
    }
    Collecting(const Collecting&) = delete;
    Collecting& operator=(const Collecting&) = delete;
    Collecting(Collecting&&) = delete;
    Collecting& operator=(Collecting&&) = delete;

private:
    Hub::Sink& collector_;
};

/// The samples of one stream, with what is known of its format.
struct Recording {
    std::string stream;
    WavFormat format;
    std::string samples;

    void take(const Event& event) {
        if (event.type->name == "a2dp.config" && stream == "music") {
            format = {event.value("rate").get<uint32_t>(), event.value("channels").get<uint16_t>()};
        } else if (event.type->name == "audio.packet" && event.value("stream") == stream) {
            if (stream == "voice") {
                format.rate = event.value("codec") == kWidebandCodec ? kWidebandRate : 8000;
            }
            samples += from_hex(event.value("data").get<std::string>()).value();
        }
    }
    /// In milliseconds.
    size_t length() const { return samples.size() * 1000 / 2 / format.channels / format.rate; }
};

} // namespace

void check_book_file(const Words& words) {
    read_values(*find_verb("pbap", "size"), {words[0]});
    if (!ends_with(words[1], ".vcf") && !ends_with(words[1], ".json")) {
        throw Usage("the file ends in .vcf or .json");
    }
}

void check_recording(const Words& words) {
    if (words[0] != "voice" && words[0] != "music") {
        throw Usage("the stream is voice or music, not \"" + console::printable(words[0]) + '"');
    }
    if (!ends_with(words[1], ".wav")) {
        throw Usage("the file ends in .wav");
    }
    try {
        console::to_duration(words[2]);
    } catch (const console::Refused& error) {
        throw Usage(error.what());
    }
}

int Session::quietly(const char* group, const char* name, const Words& arguments, Deadline deadline) {
    const Verb& verb = *find_verb(group, name);
    quiet_ = true;
    const int code = carry_out(verb, read_values(verb, arguments), deadline);
    quiet_ = false;
    return code;
}

void Session::report_file(const char* verb, const std::string& path, const char* what,
                          size_t count) const {
    const Json value{{"file", path}, {what, count}};
    output().line(options_.json ? dump({{"result", verb}, {"code", kDone}, {"value", value}})
                                : "file=" + to_word(path) + ' ' + what + '=' + std::to_string(count));
}

int Session::save_book(const Words& arguments, Deadline deadline) {
    size_t all = 0;
    size_t entries = 0;
    std::vector<Contact> contacts;
    const Progress progress;
    const Collecting collecting(collector_, [&](const Event& event) {
        if (event.type->name == "pbap.size") {
            all = event.value("size").get<size_t>();
        } else if (event.type->name == "pbap.entry") {
            add_entry(contacts, event);
            Progress::show("entry " + std::to_string(++entries) + ", contact " +
                           std::to_string(contacts.size()) + " of " + std::to_string(all));
        }
    });
    int code = quietly("pbap", "size", {arguments[0]}, deadline);
    if (code == kDone) {
        code = quietly("pbap", "get", {arguments[0]}, deadline);
    }
    if (code != kDone) {
        return code;
    }
    const std::string& path = arguments[1];
    if (!write_file(path, ends_with(path, ".vcf") ? to_vcards(contacts) : to_json_text(contacts))) {
        return kFailed;
    }
    report_file("save-book", path, "contacts", contacts.size());
    return kDone;
}

int Session::record(const Words& arguments, Deadline /*deadline*/) {
    Recording recording{arguments[0], {}, {}};
    if (recording.stream == "music") {
        recording.format = {kMusicRate, 2};
        // What was agreed on before.
        for (const Event& event : hub().latest()) {
            if (event.type->name == "a2dp.config") {
                recording.take(event);
            }
        }
    }
    connect();
    const Progress progress;
    const size_t wanted = static_cast<size_t>(console::to_duration(arguments[2]).count());
    Wait result = Wait::Met;
    {
        const Collecting collecting(collector_, [&](const Event& event) {
            recording.take(event);
            Progress::show(std::to_string(recording.length() / 1000) + " s");
        });
        // As much sound as was asked for, however long that takes; the time-out is for silence.
        size_t before = 0;
        bool enough = false;
        const auto more = [&] {
            enough = recording.length() >= wanted;
            return enough || std::exchange(before, recording.samples.size()) < recording.samples.size();
        };
        do {
            result = wait(std::chrono::steady_clock::now() + options_.timeout, more);
        } while (result == Wait::Met && !enough);
    }
    if (result != Wait::Met && recording.samples.empty()) {
        return failure(result, "record: no sound came");
    }
    if (!write_file(arguments[1], to_wav(recording.format, recording.samples))) {
        return kFailed;
    }
    report_file("record", arguments[1], "milliseconds", recording.length());
    return result == Wait::Met || result == Wait::Interrupted ? kDone : failure(result, "record");
}

} // namespace vymctl
