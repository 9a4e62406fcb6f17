// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "vcard.h"

#include "text_file.h"
#include "vcard_lines.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string_view>

namespace sim {
namespace {

constexpr size_t kLongestFile = 16U << 20U;
/// A phone shrinks its pictures to less.
constexpr size_t kLongestPhoto = 256U << 10U;
/// Entries are numbered with sixteen bits.
constexpr size_t kMostCards = 65535;

/// What is the same for contacts and past calls.
struct Card {
    unsigned begun = 0;
    std::optional<std::vector<std::string>> name;
    std::string formatted_name;
    std::vector<Number> numbers;
    std::string photo;
    std::optional<PastCallKind> kind;
    std::string time;

    std::string part(size_t index) const {
        return name && index < name->size() ? (*name)[index] : std::string();
    }
    /// The family name, or the only name that there is.
    std::string last() const {
        const bool is_named = !(part(0) + part(1) + part(2)).empty();
        return is_named ? part(0) : formatted_name;
    }
};

NumberKind kind_of(const VcardLine& line) {
    if (line.has("CELL")) {
        return NumberKind::Mobile;
    }
    if (line.has("HOME")) {
        return NumberKind::Home;
    }
    return line.has("WORK") ? NumberKind::Work : NumberKind::Other;
}

class CardReader {
public:
    CardReader(const std::string& file, std::string_view text) : lines_(file, text) {}

    /// The next card, or nothing at the end of the file.
    std::optional<Card> next() {
        VcardLine line;
        if (!lines_.next(line)) {
            return std::nullopt;
        }
        if (line.property != "BEGIN") {
            lines_.fail(line.line, in_quotes(line.property) + " stands outside of a card; expected "
                                                              "BEGIN:VCARD");
        }
        Card card;
        card.begun = line.line;
        has_version_ = false;
        lines_.set_version_3(false);
        do {
            if (!lines_.next(line)) {
                lines_.fail(card.begun, "this card has no end; expected END:VCARD");
            }
            take(line, card);
        } while (line.property != "END");
        if (!has_version_) {
            lines_.fail(card.begun, "this card has no version; expected VERSION:2.1 or VERSION:3.0");
        }
        return card;
    }

    [[noreturn]] void fail(unsigned line, const std::string& problem) const {
        lines_.fail(line, problem);
    }

private:
    void take(const VcardLine& line, Card& card) {
        if (line.property == "BEGIN") {
            fail(line.line, "a card begins inside of the one of line " + std::to_string(card.begun) +
                                "; expected END:VCARD first");
        }
        if (line.property == "VERSION") {
            take_version(line);
        } else if (line.property == "N") {
            card.name = lines_.components_of(line);
        } else if (line.property == "FN") {
            const std::vector<std::string> parts = lines_.components_of(line);
            card.formatted_name = parts.front();
            std::for_each(parts.begin() + 1, parts.end(),
                          [&card](const std::string& part) { card.formatted_name += ';' + part; });
        } else if (line.property == "TEL") {
            take_number(line, card);
        } else if (line.property == "PHOTO") {
            take_photo(line, card);
        } else if (line.property == "X-IRMC-CALL-DATETIME") {
            take_call(line, card);
        }
    }

    void take_version(const VcardLine& line) {
        if (line.value != "2.1" && line.value != "3.0") {
            fail(line.line, "VERSION: " + in_quotes(line.value) + " is not known; expected 2.1 or 3.0");
        }
        has_version_ = true;
        lines_.set_version_3(line.value == "3.0");
    }

    void take_number(const VcardLine& line, Card& card) {
        std::string digits = lines_.text_of(line);
        const auto is_ornament = [](char c) {
            return std::string_view(" -()./\\").find(c) != std::string_view::npos;
        };
        digits.erase(std::remove_if(digits.begin(), digits.end(), is_ornament), digits.end());
        // A withheld number is there and empty.
        if (digits.find_first_not_of("0123456789*#+,;pPwW") != std::string::npos) {
            fail(line.line, "TEL: " + in_quotes(line.value) +
                                " is no telephone number; expected digits, *, #, + and pauses");
        }
        if (!digits.empty()) {
            card.numbers.push_back({kind_of(line), digits});
        }
    }

    void take_photo(const VcardLine& line, Card& card) {
        if (line.has("B") || line.has("BASE64")) {
            card.photo = lines_.bytes_of(line, kLongestPhoto);
        }
        // Else it says where the picture is to be found.
    }

    void take_call(const VcardLine& line, Card& card) {
        if (line.has("MISSED")) {
            card.kind = PastCallKind::Missed;
        } else if (line.has("RECEIVED")) {
            card.kind = PastCallKind::Incoming;
        } else if (line.has("DIALED")) {
            card.kind = PastCallKind::Outgoing;
        } else {
            fail(line.line, line.property + ": there is no kind of call; expected MISSED, RECEIVED or "
                                            "DIALED as a parameter");
        }
        constexpr std::string_view kForm = "00000000T000000";
        const std::string& t = line.value;
        const bool is_time = t.size() >= kForm.size() &&
                             (t.substr(kForm.size()).empty() || t.substr(kForm.size()) == "Z") &&
                             std::equal(kForm.begin(), kForm.end(), t.begin(), [](char f, char c) {
                                 return f == 'T' ? c == 'T' : c >= '0' && c <= '9';
                             });
        if (!is_time) {
            fail(line.line, line.property + ": " + in_quotes(t) +
                                " is no time; expected one as in 20260131T235959");
        }
        card.time = t;
    }

    VcardReader lines_;
    bool has_version_ = false;
};

template <typename Take>
void read_cards(const std::string& file, const std::string& text, Take take) {
    CardReader reader(file, text);
    size_t count = 0;
    while (const std::optional<Card> card = reader.next()) {
        if (++count > kMostCards) {
            reader.fail(card->begun, "too many cards; expected at most " + std::to_string(kMostCards));
        }
        take(reader, *card);
    }
}

} // namespace

std::vector<Contact> contacts_from_vcards(const std::string& file, const std::string& text) {
    std::vector<Contact> contacts;
    read_cards(file, text, [&contacts](const CardReader&, const Card& card) {
        contacts.push_back({card.last(), card.part(1), card.part(2), card.numbers, card.photo});
    });
    return contacts;
}

std::vector<PastCall> calls_from_vcards(const std::string& file, const std::string& text) {
    std::vector<PastCall> calls;
    read_cards(file, text, [&calls](const CardReader& reader, const Card& card) {
        if (!card.kind) {
            reader.fail(card.begun, "this card has no time of a call; expected X-IRMC-CALL-DATETIME");
        }
        const std::string number = card.numbers.empty() ? std::string() : card.numbers[0].digits;
        calls.push_back({*card.kind, card.last(), card.part(1), number, card.time});
    });
    return calls;
}

std::vector<Contact> load_contacts(const std::string& path) {
    return contacts_from_vcards(path, read_text_file(path, kLongestFile));
}

std::vector<PastCall> load_calls(const std::string& path) {
    return calls_from_vcards(path, read_text_file(path, kLongestFile));
}

} // namespace sim
