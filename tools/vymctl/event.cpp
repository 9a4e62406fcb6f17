// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "event.h"

#include "console/words.h"
#include "profiles.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace vymctl {
namespace {

// What tells two connections, calls or devices apart, most telling first.
constexpr std::array kSubjects{"index", "address", "conn_id", "handle", "server_if", "client_if"};

struct Sign {
    const char* text;
    Comparison comparison;
};
// "!=" and "==" before what they begin with.
constexpr std::array kSigns{Sign{"==", Comparison::Equal}, Sign{"!=", Comparison::Unequal},
                            Sign{"<", Comparison::Less}, Sign{">", Comparison::More}};

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t");
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

std::string names_of(const std::vector<Field>& fields) {
    std::string text;
    for (const Field& field : fields) {
        text += (text.empty() ? "" : ", ") + field.name;
    }
    return text.empty() ? "it has none" : text;
}

std::pair<size_t, Sign> find_sign(const std::string& text) {
    std::pair<size_t, Sign> found{std::string::npos, kSigns[0]};
    for (const Sign& sign : kSigns) {
        const size_t at = text.find(sign.text);
        if (at < found.first) {
            found = {at, sign};
        }
    }
    return found;
}

} // namespace

std::optional<size_t> EventType::find(std::string_view field) const {
    const auto it = std::find_if(fields.begin(), fields.end(),
                                 [field](const Field& candidate) { return candidate.name == field; });
    return it == fields.end() ? std::nullopt : std::optional(static_cast<size_t>(it - fields.begin()));
}

Json Event::value(std::string_view field) const {
    const auto place = type->find(field);
    return place ? values.at(*place) : Json();
}

std::string Event::text() const {
    std::string line = type->name;
    for (size_t i = 0; i < values.size(); ++i) {
        line += ' ' + type->fields[i].name + '=' + to_word(values[i]);
    }
    return line;
}

Json Event::json() const {
    const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(time.time_since_epoch());
    Json object{{"event", type->name}, {"time", static_cast<double>(since.count()) / 1000}};
    for (size_t i = 0; i < values.size(); ++i) {
        object[type->fields[i].name] = values[i];
    }
    return object;
}

std::string Event::subject() const {
    std::string text = type->name;
    for (const char* field : kSubjects) {
        if (type->find(field)) {
            text += ' ' + to_word(value(field));
        }
    }
    return text;
}

bool Test::holds(const Json& value) const {
    const std::string text = value.is_string() ? value.get<std::string>() : to_word(value);
    if (comparison == Comparison::Equal || comparison == Comparison::Unequal) {
        return (text == wanted) == (comparison == Comparison::Equal);
    }
    const double number = std::strtod(text.c_str(), nullptr);
    const double limit = std::strtod(wanted.c_str(), nullptr);
    return value.is_number() && (comparison == Comparison::Less ? number < limit : number > limit);
}

bool Condition::holds(const Event& event) const {
    return event.type == type && std::all_of(tests.begin(), tests.end(), [&event](const Test& test) {
               return test.holds(event.value(test.field));
           });
}

Test read_test(const EventType& type, const std::string& text) {
    const auto [at, sign] = find_sign(text);
    if (at == std::string::npos) {
        throw Usage('"' + console::printable(text) + "\" has none of == != < >");
    }
    Test test{trimmed(text.substr(0, at)), sign.comparison,
              trimmed(text.substr(at + std::string(sign.text).size()))};
    const auto place = type.find(test.field);
    if (!place) {
        throw Usage(type.name + " has no field \"" + console::printable(test.field) +
                    "\"; its fields: " + names_of(type.fields));
    }
    const Field& field = type.fields[*place];
    if (field.kind == Kind::Words || field.kind == Kind::Number || field.kind == Kind::Address ||
        field.kind == Kind::Uuid) {
        const Value value = read_value(field, test.wanted);
        // As it is shown in events, however it was written here.
        test.wanted = field.kind == Kind::Address ? to_text(value.address)
                      : field.kind == Kind::Uuid  ? to_text(value.uuid)
                                                  : to_word(field.name_of(value.number));
    }
    return test;
}

Condition read_condition(const std::string& text) {
    Condition condition;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t end = std::min(text.find("&&", begin), text.size());
        const std::string part = trimmed(text.substr(begin, end - begin));
        begin = end + 2;
        const std::string path = trimmed(part.substr(0, std::min(find_sign(part).first, part.size())));
        const size_t first_dot = path.find('.');
        const size_t dot = first_dot == std::string::npos ? first_dot : path.find('.', first_dot + 1);
        const EventType& type = event_type(path.substr(0, dot));
        if (condition.type != nullptr && condition.type != &type) {
            throw Usage("both sides of && must be of the same event");
        }
        condition.type = &type;
        if (dot != std::string::npos) {
            condition.tests.push_back(read_test(type, part.substr(dot + 1)));
        } else if (part != path) {
            throw Usage('"' + console::printable(part) + "\" names no field of " + type.name +
                        "; its fields: " + names_of(type.fields));
        }
    }
    return condition;
}

} // namespace vymctl
