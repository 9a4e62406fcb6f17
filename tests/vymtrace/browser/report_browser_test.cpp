// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The page in a browser: what is to be seen, and what a click on a record does.

#include "support/process.h"
#include "vymtrace/capture_bytes.h"

#include <gtest/gtest.h>

namespace {

using capture_bytes::Command;
using capture_bytes::Events;
using capture_bytes::Traces;
using namespace std::string_literals;

std::string Conversation() {
    return Command("AT#HA001A7DDA7113\r\n") + Events("HA03000000FD0000002F001A7DDA7113\0"s, 250) +
           Events("HI01\0HO01010001+4930</script><b>\0"s, 1500) + Command("AT#HE\r\n", 2500) +
           Events("HI00\0"s, 4500) + Events("AB001A7DDA711302\0"s, 5000) +
           Events("AB001A7DDA711301\0"s, 6000) + Events("PA01\0"s, 9000);
}

/**
 * The document after this script has run in it. A click goes to what is to be seen at its place, as one
 * with a mouse does: whatever lies above it would get it.
 */
std::string DocumentAfter(const std::string& script, const std::string& records = Conversation()) {
    const Traces traces;
    const capture_bytes::Result result = traces.Run(records, {"--html", traces.Path("report.html")});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "");
    std::string page = support::ReadFile(traces.Path("report.html"));
    page.insert(page.rfind("</body>"), R"(<script>
        function at(selector) {
            const box = document.querySelector(selector).getBoundingClientRect();
            const x = box.left + box.width / 2;
            const y = box.top + box.height / 2;
            return { x, y, element: document.elementFromPoint(x, y) };
        }
        function click(selector) {
            const { x, y, element } = at(selector);
            for (const type of ["mouseover", "pointerdown", "pointerup", "click"]) {
                element.dispatchEvent(new MouseEvent(type, { bubbles: true, clientX: x, clientY: y }));
            }
        }
        function type(text) {
            document.getElementById("search").value = text;
            document.getElementById("search").dispatchEvent(new Event("input"));
        }
    )" + script + "</script>");
    traces.Write(page, "tested.html");
    support::Process browser({VYM_CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu",
                              "--disable-dev-shm-usage", "--no-first-run", "--window-size=1200,900",
                              "--user-data-dir=" + traces.Path("profile"), "--dump-dom",
                              "file://" + traces.Path("tested.html")});
    EXPECT_EQ(browser.ExitCode(6 * support::TimeLimit()), 0) << browser.Err();
    return browser.Out();
}

/** The text of the element with this id: all between its tags, without other tags. */
std::string TextOf(const std::string& document, const std::string& id) {
    const size_t begin = document.find(" id=\"" + id + "\"");
    const size_t from = document.find('>', begin) + 1;
    const size_t end =
        std::min(document.find("</main>", from),
                 std::min(document.find("\n</header>", from), document.find("\n<", from)));
    EXPECT_NE(begin, std::string::npos) << id;
    std::string text;
    bool in_tag = false;
    for (const char c : document.substr(from, end - from)) {
        text += c == '<' ? "|" : in_tag ? "" : std::string(1, c);
        in_tag = c == '<' || (in_tag && c != '>');
    }
    std::string joined;
    for (const char c : text) {
        joined += c == '|' && (joined.empty() || joined.back() == '|') ? "" : std::string(1, c);
    }
    return joined;
}

TEST(Report, HasALaneForEachProfileWithTicksAndBars) {
    const std::string document = DocumentAfter("");
    EXPECT_EQ(TextOf(document, "title").rfind("client_sock.log|", 0), 0U);
    EXPECT_EQ(TextOf(document, "found").rfind("9 of 9 records|", 0), 0U);
    size_t place = 0;
    for (const char* part :
         {"data-name=\"bluetooth\"", ">on</div>", "data-name=\"hfp\"", ">connection</div>",
          ">call</div>", "class=\"tick command\"", "data-name=\"a2dp\"", ">stream</div>"}) {
        const size_t found = document.find(part, place);
        EXPECT_NE(found, std::string::npos) << part;
        place = found == std::string::npos ? place : found;
    }
    EXPECT_EQ(document.find("data-name=\"avrcp\""), std::string::npos);
    // What a peer sends is text, whatever it looks like.
    EXPECT_NE(document.find("&lt;/script&gt;&lt;b&gt;"), std::string::npos);
    EXPECT_EQ(document.find("<b>"), std::string::npos);
    EXPECT_EQ(document.find("://"), std::string::npos) << "it needs nothing from elsewhere";
}

TEST(Report, AClickOnATickShowsTheFields) {
    const std::string document = DocumentAfter("click('.tick[data-record=\"1\"]');");
    EXPECT_EQ(
        TextOf(document, "details"),
        "hfp onConnectionState|time|2026-11-22T14:03:07.250000Z|record|2|offset|63|direction|event|"
        "profile|hfp|name|onConnectionState|tag|HA|state|3|peer_features|253|call_hold_features|47|"
        "address|00:1A:7D:DA:71:13|");
    EXPECT_NE(document.find("class=\"tick event selected\" data-record=\"1\""), std::string::npos);
    EXPECT_NE(TextOf(document, "hover").find("hfp onConnectionState state=3"), std::string::npos);
}

TEST(Report, AClickOnARowOrABarShowsTheFields) {
    EXPECT_NE(TextOf(DocumentAfter("click('.row[data-record=\"4\"]');"), "details")
                  .find("hfp start_voice_recognition|"),
              std::string::npos);
    const std::string document = DocumentAfter("click('[data-name=a2dp] .bar');");
    EXPECT_NE(TextOf(document, "details").find("|state|2|"), std::string::npos);
    EXPECT_NE(TextOf(document, "hover").find("stream, 1.000 s: a2dp onAudioStateChanged"),
              std::string::npos);
}

TEST(Report, TheSearchBoxLeavesWhatIsFound) {
    const std::string document = DocumentAfter("type('HFP state=3 001A'); type('onCall call=');");
    EXPECT_NE(TextOf(document, "found").find("2 of 9 records"), std::string::npos);
    const std::string list = TextOf(document, "list");
    EXPECT_NE(list.find("hfp onCall call=1"), std::string::npos);
    EXPECT_EQ(list.find("hfp connect"), std::string::npos);
    EXPECT_NE(document.find("class=\"tick command miss\""), std::string::npos);
}

TEST(Report, AnEmptyCaptureIsAPageToo) {
    EXPECT_NE(TextOf(DocumentAfter("", ""), "found").find("0 of 0 records"), std::string::npos);
}

} // namespace
