// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// PBAP: the phone's contacts and past calls, entry by entry.
#include "modules.h"
#include "profile_link.h"
#include "timer.h"

#include <algorithm>
#include <array>

namespace sim {
namespace {

constexpr uint16_t kPhoneBookServer = 0x112F;

enum Object : uint8_t {
    kOutgoing = 2,
    kMissed = 3,
    kIncoming = 4,
    kSim = 5,
    kContacts = 6,
    kAllCalls = 7,
};

enum LinkCode : uint8_t { kConnected = 0, kDisconnected = 1 };

constexpr uint32_t kMaskPhoto = 0x10;

enum PhotoState : uint8_t { kPhotoMore = 0, kPhotoLast = 1 };
/// At worst every byte is escaped to two, and a client's buffer holds 4 KiB.
constexpr size_t kPhotoPiece = 1900;

/// Where the name's length has two digits in base 16 and clients keep one byte for the NUL.
constexpr size_t kMostName = 254;
/// And the number's length two digits in base 10.
constexpr size_t kMostNumber = 99;

/// Between two steps; a client may cancel there.
constexpr size_t kEntriesInStep = 4;

std::string digits(size_t value, size_t width, uint32_t base) {
    std::string text(width, '0');
    for (size_t i = width; i > 0; --i) {
        text[i - 1] = "0123456789ABCDEF"[value % base];
        value /= base;
    }
    return text;
}

/// Shorter by one character of UTF-8.
void drop_last_character(std::string& text) {
    while (!text.empty() && (static_cast<uint8_t>(text.back()) & 0xC0) == 0x80) {
        text.pop_back();
    }
    if (!text.empty()) {
        text.pop_back();
    }
}

/// A vCard's structured name; the longest parts give way when it is too long.
std::string structured_name(const std::string& last, const std::string& first,
                            const std::string& middle) {
    std::array<std::string, 3> parts{last, first, middle};
    const auto length = [&parts] { return parts[0].size() + parts[1].size() + parts[2].size(); };
    if (length() == 0) {
        return {};
    }
    constexpr std::string_view kEnd = ";;";
    constexpr size_t kSeparators = 2 + kEnd.size();
    while (length() + kSeparators > kMostName) {
        drop_last_character(*std::max_element(
            parts.begin(), parts.end(),
            [](const std::string& a, const std::string& b) { return a.size() < b.size(); }));
    }
    return parts[0] + ';' + parts[1] + ';' + parts[2] + std::string(kEnd);
}

Event entry(uint8_t object, size_t index, const std::string& kind, const std::string& name,
            std::string_view number, const std::string& time) {
    number = number.substr(0, kMostNumber);
    std::string text = digits(object, 1, 16) + digits(index, 4, 16) + kind;
    text += digits(name.size(), 2, 16) + digits(number.size(), 2, 10) + name;
    text += number;
    if (!time.empty()) {
        text += ' ' + time;
    }
    return Event("TD").text(text);
}

class PhoneBook : public Module {
public:
    explicit PhoneBook(Hub& hub)
        : Module(hub), link_(hub, "phone book", kPhoneBookServer,
                             [this](const Address& a, ProfileLink::State s) { link_changed(a, s); }),
          step_(hub.loop) {}

    std::vector<Command> commands() override {
        return {
            row("TA", &PhoneBook::get),           row("TC", &PhoneBook::connect),
            row("TD", &PhoneBook::disconnect),    row("TM", &PhoneBook::mask),
            row("TN", &PhoneBook::get_by_number), row("TW", &PhoneBook::cancel),
        };
    }

    void link_down(const Address& address) override { link_.lost(address); }
    void client_left() override { end_transfer(); }

private:
    // The connection.

    void connect(Fields& fields) { link_.connect(fields); }
    void disconnect(Fields& fields) { link_.disconnect(fields); }

    void link_changed(const Address& address, ProfileLink::State state) {
        if (state == ProfileLink::State::Connecting) {
            return;
        }
        const bool up = state == ProfileLink::State::Up;
        if (!link_.is_up() && transferring_) {
            finish(kFail);
        }
        send(Event("TS").byte(up ? kConnected : kDisconnected).address(address));
    }

    // What there is.

    const Phone& phone() { return world().phone; }

    static bool is_in(PastCallKind kind, uint8_t object) {
        return object == kAllCalls || (object == kOutgoing && kind == PastCallKind::Outgoing) ||
               (object == kMissed && kind == PastCallKind::Missed) ||
               (object == kIncoming && kind == PastCallKind::Incoming);
    }

    std::vector<PastCall> past_calls(uint8_t object) {
        std::vector<PastCall> calls;
        std::copy_if(phone().calls.begin(), phone().calls.end(), std::back_inserter(calls),
                     [object](const PastCall& call) { return is_in(call.kind, object); });
        return calls;
    }

    const std::vector<Contact>& contacts(uint8_t object) {
        return object == kSim ? phone().sim_contacts : phone().contacts;
    }

    static bool is_object(uint8_t object) { return object >= kOutgoing && object <= kAllCalls; }
    static bool has_contacts(uint8_t object) { return object == kSim || object == kContacts; }

    size_t size_of(uint8_t object) {
        if (!is_object(object)) {
            return 0;
        }
        return has_contacts(object) ? contacts(object).size() : past_calls(object).size();
    }

    // Downloads.

    void get(Fields& fields) {
        const uint8_t object = fields.byte("object");
        const uint16_t offset = fields.word("offset");
        const uint16_t count = fields.word("count");
        fields.end();
        Status status = kSuccess;
        if (!link_.is_up()) {
            status = kNotReady;
        } else if (!is_object(object)) {
            status = kInvalid;
        }
        if (count == 0) {
            const size_t size = status == kSuccess ? size_of(object) : 0;
            send(Event("TE").word(object).word(static_cast<uint16_t>(size)).word(status));
        } else if (status != kSuccess) {
            finish(status);
        } else if (transferring_) {
            // An answer would pass for the end of the transfer that runs.
            hub().log.note("refused: another transfer is under way");
        } else {
            collect(object, offset, count);
            begin_transfer();
        }
    }

    void collect(uint8_t object, size_t offset, size_t count) {
        const size_t end = std::min(offset + count, size_of(object));
        const std::vector<PastCall> calls = past_calls(object);
        for (size_t i = offset; i < end; ++i) {
            if (has_contacts(object)) {
                collect_contact(object, i);
            } else {
                const PastCall& call = calls[i];
                // Only the combined list carries times.
                events_.push_back(entry(object, i, {}, structured_name(call.last, call.first, {}),
                                        call.number, object == kAllCalls ? call.time : ""));
            }
        }
    }

    /// An entry for each number - or for the one that is asked for - then the photo.
    void collect_contact(uint8_t object, size_t index, const std::string& only = {}) {
        const Contact& contact = contacts(object)[index];
        const std::string name = structured_name(contact.last, contact.first, contact.middle);
        for (const Number& number : contact.numbers) {
            if (only.empty() || number.digits == only) {
                events_.push_back(entry(object, index, digits(static_cast<size_t>(number.kind), 1, 16),
                                        name, number.digits, {}));
            }
        }
        if (contact.numbers.empty()) {
            events_.push_back(entry(object, index, "0", name, {}, {}));
        }
        if ((mask_ & kMaskPhoto) != 0) {
            collect_photo(contact.photo, index);
        }
    }

    void collect_photo(std::string_view photo, size_t index) {
        while (!photo.empty()) {
            const std::string_view piece = photo.substr(0, kPhotoPiece);
            photo.remove_prefix(piece.size());
            events_.push_back(Event("TP")
                                  .byte(photo.empty() ? kPhotoLast : kPhotoMore)
                                  .word(static_cast<uint16_t>(index))
                                  .block(piece));
        }
    }

    void begin_transfer() {
        transferring_ = true;
        next_ = 0;
        wait();
    }

    void wait() {
        step_.start(hub().pace.list_step, [this] { step(); });
    }

    void step() {
        const size_t end = std::min(next_ + kEntriesInStep, events_.size());
        for (; next_ < end; ++next_) {
            send(events_[next_]);
        }
        if (next_ < events_.size()) {
            wait();
        } else {
            finish(kSuccess);
        }
    }

    void end_transfer() {
        transferring_ = false;
        step_.stop();
        events_.clear();
    }

    void finish(Status status) {
        end_transfer();
        send(Event("TC").word(status));
    }

    void cancel(Fields& fields) {
        fields.end();
        if (transferring_) {
            finish(kFail);
        } else {
            hub().log.note("no transfer is under way");
        }
    }

    void mask(Fields& fields) {
        mask_ = fields.dword("mask");
        fields.end();
        hub().log.note((mask_ & kMaskPhoto) != 0 ? "with photos" : "without photos");
    }

    /// The contact with this index if the number is its, or else the first contact with the number. An
    /// empty number leaves the index to decide.
    void get_by_number(Fields& fields) {
        const uint32_t index = fields.dword("index");
        const std::string number = fields.rest();
        if (!link_.is_up()) {
            finish(kNotReady);
            return;
        }
        if (transferring_) {
            hub().log.note("refused: another transfer is under way");
            return;
        }
        const std::vector<Contact>& all = phone().contacts;
        const auto fits = [&number](const Contact& contact) {
            return number.empty() ||
                   std::any_of(contact.numbers.begin(), contact.numbers.end(),
                               [&number](const Number& n) { return n.digits == number; });
        };
        size_t found = index;
        if (index >= all.size() || !fits(all[index])) {
            found = number.empty()
                        ? all.size()
                        : static_cast<size_t>(std::find_if(all.begin(), all.end(), fits) - all.begin());
        }
        if (found == all.size()) {
            finish(kFail);
            return;
        }
        collect_contact(kContacts, found, number);
        begin_transfer();
    }

    ProfileLink link_;
    Timer step_;
    uint32_t mask_ = 0;
    bool transferring_ = false;
    std::vector<Event> events_;
    size_t next_ = 0;
};

} // namespace

std::unique_ptr<Module> make_phone_book(Hub& hub) {
    return std::make_unique<PhoneBook>(hub);
}

} // namespace sim
