// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What is made of the tables for people, shells and programs.
#include "session.h"

#include <sstream>

namespace vymctl {
namespace {

struct Row {
    std::string usage;
    std::string help;
};

struct Chapter {
    std::string title;
    std::vector<Row> rows;
};

std::vector<Chapter> chapters() {
    std::vector<Chapter> all;
    Chapter own{"vymctl itself", {}};
    for (const Session::OwnVerb& verb : Session::own_verbs()) {
        own.rows.push_back({verb.usage(), verb.help});
    }
    all.push_back(std::move(own));
    for (const Profile& profile : profiles()) {
        Chapter chapter{profile.name + ": " + profile.title, {}};
        for (const Verb& verb : profile.verbs) {
            chapter.rows.push_back({verb.usage(), verb.help});
        }
        all.push_back(std::move(chapter));
    }
    return all;
}

std::string option_usage(const OptionRow& row) {
    return std::string(row.name) + (row.argument == nullptr ? "" : std::string(" ") + row.argument);
}

std::string padded(const std::string& text, size_t width) {
    return text.size() < width ? text + std::string(width - text.size(), ' ') : text + ' ';
}

constexpr const char* kExitCodes =
    "0 done, 1 refused or failed, 2 wrong usage, 3 no server, 4 timed out, 130 interrupted";

/// For roff, in which some signs are orders.
std::string quoted(const std::string& text) {
    std::string result = !text.empty() && (text[0] == '.' || text[0] == '\'') ? "\\&" : "";
    for (const char c : text) {
        result += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return result;
}

std::string man() {
    std::ostringstream page;
    page
        << ".TH VYMCTL 1\n.SH NAME\nvymctl \\- every function of the vym library from the shell\n"
           ".SH SYNOPSIS\n.B vymctl\n[OPTION ...] PROFILE VERB [ARGUMENT ...]\n.br\n.B vymctl\n[OPTION "
           "...] \\-f FILE\n.br\n.B vymctl\n[OPTION ...]\n.SH DESCRIPTION\nResults and events go to "
           "standard output, messages to standard error. Without a verb and at a terminal it is a "
           "prompt.\n.SH OPTIONS\n";
    for (const OptionRow& row : option_rows()) {
        page << ".TP\n.B " << quoted(option_usage(row)) << '\n' << quoted(row.help) << '\n';
    }
    for (const Chapter& chapter : chapters()) {
        page << ".SH \"" << quoted(chapter.title) << "\"\n";
        for (const Row& row : chapter.rows) {
            page << ".TP\n.B " << quoted(row.usage) << '\n' << quoted(row.help) << '\n';
        }
    }
    page << ".SH EXIT STATUS\n" << kExitCodes << '\n';
    return page.str();
}

/// For the guide: a table of the options, of each profile's verbs, and of its events.
std::string list() {
    const auto cell = [](std::string text) {
        for (size_t at = 0; (at = text.find('|', at)) != std::string::npos; at += 2) {
            text.insert(at, "\\");
        }
        return text;
    };
    std::ostringstream page;
    page << "## Options\n\n| option | what it does |\n| --- | --- |\n";
    for (const OptionRow& row : option_rows()) {
        page << "| `" << option_usage(row) << "` | " << cell(row.help) << " |\n";
    }
    for (const Chapter& chapter : chapters()) {
        page << "\n## " << chapter.title << "\n\n| verb | what it does |\n| --- | --- |\n";
        for (const Row& row : chapter.rows) {
            page << "| `" << cell(row.usage) << "` | " << cell(row.help) << " |\n";
        }
    }
    page << "\n## Events\n\n| event | fields |\n| --- | --- |";
    for (const Profile& profile : profiles()) {
        for (const EventRow& row : profile.events) {
            std::string fields;
            for (const Field& field : row.type.fields) {
                fields += (fields.empty() ? "`" : " `") + field.name +
                          (field.kind == Kind::Words ? '=' + cell(field.domain()) : "") + '`';
            }
            page << "\n| `" << row.type.name << "` | " << fields << " |";
        }
    }
    return page.str();
}

// The shells ask the program itself: it knows its tables best.
constexpr const char* kBash = R"bash(_vymctl() {
    local line=${COMP_LINE:0:COMP_POINT}
    mapfile -t COMPREPLY < <("${COMP_WORDS[0]}" --complete "${line#* }" 2> /dev/null)
}
complete -o default -F _vymctl vymctl)bash";

constexpr const char* kZsh = R"zsh(#compdef vymctl
_vymctl() {
    local -a found
    found=(${(f)" $($words[1]-- complete "${(j: :)words[2,CURRENT]}" 2 > / dev / null) "})
    if (($ #found));
then compadd - Q - a found;
else _files;
fi
}
if [[ $funcstack[1] == _vymctl ]]; then _vymctl "$@"; else compdef _vymctl vymctl; fi)zsh";

Json schema_of(const Field& field) {
    switch (field.kind) {
    case Kind::Number:
        return {{"type", "integer"}};
    case Kind::List:
        return {{"type", {"array", "object"}}};
    case Kind::Words: {
        Json names = Json::array();
        for (const auto& entry : field.words) {
            names.push_back(entry.first);
        }
        // A number that has no name stays one.
        return {{"anyOf", {{{"enum", names}}, {{"type", "integer"}}}}};
    }
    default:
        return {{"type", "string"}};
    }
}

Json object_schema(const char* tag, const std::string& name, Json properties) {
    Json required = Json::array();
    for (const auto& entry : properties.items()) {
        required.push_back(entry.key());
    }
    required.push_back(tag);
    properties[tag] = {{"const", name}};
    return {{"type", "object"}, {"properties", properties}, {"required", required}};
}

std::string schema() {
    Json lines = Json::array();
    const auto add_result = [&lines](const std::string& name) {
        Json result = object_schema("result", name, {{"code", {{"type", "integer"}}}});
        result["properties"]["refusal"] = {{"type", "string"}};
        result["properties"]["value"] = Json::object();
        lines.push_back(result);
    };
    for (const Profile& profile : profiles()) {
        for (const EventRow& row : profile.events) {
            Json properties{{"time", {{"type", "number"}}}};
            for (const Field& field : row.type.fields) {
                properties[field.name] = schema_of(field);
            }
            lines.push_back(object_schema("event", row.type.name, properties));
        }
        for (const Verb& verb : profile.verbs) {
            add_result(verb.group + '.' + verb.name);
        }
    }
    for (const char* own : {"doctor", "save-book", "record"}) {
        add_result(own);
    }
    return Json{{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                {"title", "One line of vymctl --json"},
                {"oneOf", lines}}
        .dump(2);
}

} // namespace

std::string emit(const std::string& what) {
    if (what == "man") {
        return man();
    }
    if (what == "bash" || what == "zsh") {
        return what == "bash" ? kBash : kZsh;
    }
    if (what == "schema") {
        return schema();
    }
    if (what == "list") {
        return list();
    }
    throw Usage("--emit is man, bash, zsh, schema or list");
}

std::string help_text() {
    std::ostringstream text;
    text << "usage: vymctl [OPTION ...] PROFILE VERB [ARGUMENT ...]    one verb\n"
            "       vymctl [OPTION ...] -f FILE                        a script; - is standard input\n"
            "       vymctl [OPTION ...]                                a prompt, at a "
            "terminal\n\noptions\n";
    for (const OptionRow& row : option_rows()) {
        text << "  " << padded(option_usage(row), 16) << row.help << '\n';
    }
    for (const Chapter& chapter : chapters()) {
        text << '\n' << chapter.title << '\n';
        for (const Row& row : chapter.rows) {
            const std::string usage = padded(row.usage, 40);
            text << "  " << usage << (usage.size() > 41 ? "\n" + std::string(42, ' ') : "") << row.help
                 << '\n';
        }
    }
    text << "\nexit codes: " << kExitCodes;
    return text.str();
}

} // namespace vymctl
