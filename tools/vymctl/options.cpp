// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "options.h"

#include "console/words.h"
#include "field.h"
#include "pairing.h"

#include <algorithm>
#include <cctype>

namespace vymctl {
namespace {

std::chrono::milliseconds read_timeout(const std::string& text) {
    try {
        return console::to_duration(text);
    } catch (const console::Refused& error) {
        throw Usage(std::string("--timeout: ") + error.what());
    }
}

/// A negative number is none.
bool is_option(const std::string& word) {
    return word.size() > 1 && word[0] == '-' && std::isdigit(static_cast<unsigned char>(word[1])) == 0;
}

const OptionRow& find(const std::string& name) {
    for (const OptionRow& row : option_rows()) {
        if (row.name == name) {
            return row;
        }
    }
    throw Usage("there is no option " + console::printable(name) + " (vymctl --help shows them)");
}

} // namespace

const std::vector<OptionRow>& option_rows() {
    using std::string;
    static const std::vector<OptionRow> s_rows = {
        {"--dir", "DIR", "directory of the server's socket (/etc/backup)",
         [](Options& o, const string& v) { o.directory = v; }},
        {"-f", "FILE", "carries out the lines of FILE, - is standard input",
         [](Options& o, const string& v) { o.script = v; }},
        {"--json", nullptr, "writes results and events as JSON, one object a line",
         [](Options& o, const string&) { o.json = true; }},
        {"--timeout", "TIME", "gives up after that long (30s); on every verb, such as 5s or 200ms",
         [](Options& o, const string& v) {
             o.timeout = read_timeout(v);
             o.timeout_given = true;
         }},
        {"--pairing", "HOW", "answers pairing requests: accept, reject, ask or pin=0000",
         [](Options& o, const string& v) {
             check_pairing_policy(v);
             o.pairing = v;
         },
         "accept|reject|ask|pin="},
        {"--events", nullptr, "shows all events, not only those of the verb's profile",
         [](Options& o, const string&) { o.events = true; }},
        {"--capture", "FILE", "captures the traffic of this run in FILE",
         [](Options& o, const string& v) { o.capture = v; }},
        {"--verbose", nullptr, "shows what the library prints, on standard error",
         [](Options& o, const string&) { o.verbose = true; }},
        {"--emit", "WHAT", "writes man, bash, zsh, schema or list, and does nothing else",
         [](Options& o, const string& v) { o.emit = v; }, "man|bash|zsh|schema|list"},
        {"--complete", "LINE", "writes what the last word of LINE may be; for shells",
         [](Options& o, const string& v) {
             o.complete = true;
             o.line = v;
         }},
        {"--help", nullptr, "shows this, and does nothing else",
         [](Options& o, const string&) { o.help = true; }},
        {"--version", nullptr, "shows the version, and does nothing else",
         [](Options& o, const string&) { o.version = true; }},
    };
    return s_rows;
}

Options read_options(const std::vector<std::string>& words) {
    Options options;
    for (size_t i = 0; i < words.size(); ++i) {
        if (words[i] == "--") {
            options.words.insert(options.words.end(), words.begin() + static_cast<long>(i) + 1,
                                 words.end());
            break;
        }
        if (!is_option(words[i])) {
            options.words.push_back(words[i]);
            continue;
        }
        const size_t equals = words[i].rfind("--", 0) == 0 ? words[i].find('=') : std::string::npos;
        const OptionRow& row = find(words[i].substr(0, equals));
        if (row.argument == nullptr) {
            if (equals != std::string::npos) {
                throw Usage(std::string(row.name) + " takes no value");
            }
            row.set(options, "");
        } else if (equals != std::string::npos) {
            row.set(options, words[i].substr(equals + 1));
        } else if (++i < words.size()) {
            row.set(options, words[i]);
        } else {
            throw Usage(std::string(row.name) + " needs " + row.argument);
        }
    }
    return options;
}

std::chrono::milliseconds take_timeout(std::vector<std::string>& words,
                                       std::chrono::milliseconds otherwise) {
    const auto it = std::find(words.begin(), words.end(), "--timeout");
    if (it == words.end()) {
        return otherwise;
    }
    if (it + 1 == words.end()) {
        throw Usage("--timeout needs TIME");
    }
    const std::chrono::milliseconds timeout = read_timeout(it[1]);
    words.erase(it, it + 2);
    return timeout;
}

} // namespace vymctl
