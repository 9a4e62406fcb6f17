// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What lasts, and the data of the page.

#include "vymtrace/bars.h"
#include "vymtrace/capture_bytes.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using capture_bytes::Events;
using capture_bytes::kHeader;
using capture_bytes::Result;
using capture_bytes::Traces;
using namespace std::string_literals;

nlohmann::json DataOf(const std::string& records) {
    const Traces traces;
    const Result result = traces.Run(records, {"--html", traces.Path("page")});
    EXPECT_EQ(result.code, 0) << result.err;
    const std::string page = support::ReadFile(traces.Path("page"));
    const std::string begin = "<script type=\"application/json\" id=\"data\">";
    const size_t from = page.find(begin) + begin.size();
    return nlohmann::json::parse(page.substr(from, page.find("</script>", from) - from));
}

/** "lane kind begin-end index" of each bar. */
std::vector<std::string> BarsOf(const std::string& records) {
    std::vector<std::string> bars;
    const nlohmann::json data = DataOf(records);
    for (const auto& bar : data["bars"]) {
        bars.push_back(bar["lane"].get<std::string>() + " " + bar["kind"].get<std::string>() + " " +
                       bar["begin"].dump() + "-" + bar["end"].dump() + " " + bar["index"].dump());
    }
    return bars;
}

using Strings = std::vector<std::string>;

TEST(Bars, LastFromTheirBeginningToTheirEnd) {
    EXPECT_EQ(BarsOf(Events("HJ01\0"s, 0) + Events("HI01\0"s, 1000) + Events("HJ00\0"s, 1500) +
                     Events("HI01\0"s, 2000) + Events("HI00\0"s, 3000) + Events("HI00\0"s, 4000)),
              (Strings{"hfp call setup 0.0-1.5 0", "hfp call 1.0-3.0 1"}));
}

TEST(Bars, WithoutAnEndLastUntilTheCaptureEnds) {
    EXPECT_EQ(BarsOf(Events("PA01\0"s, 0) + Events("HU\0"s, 500)), (Strings{"bluetooth on 0.0-0.5 0"}));
}

TEST(Bars, OfSeveralDevicesAreToldApart) {
    EXPECT_EQ(BarsOf(Events("KE0100010000112233445566\0"s, 0) +
                     Events("KE010002000011223344"
                            "7788\0"s,
                            1000) +
                     Events("KE01000385001122334499AA\0"s, 1500) +
                     Events("KF0100010000112233445566\0"s, 2000) + Events("HU\0"s, 3000)),
              (Strings{"gatt_client connection 0.0-2.0 0", "gatt_client connection 1.0-3.0 1"}));
}

TEST(Report, DataHasRecordsAndLanes) {
    const nlohmann::json data = DataOf(Events("HU\0"s, 0) + Events("ZZ</script>\0"s, 250));
    EXPECT_EQ(data["file"], "client_sock.log");
    EXPECT_EQ(data["lanes"], nlohmann::json::parse(R"(["hfp","?"])"));
    EXPECT_EQ(data["records"][1]["t"], 0.25);
    EXPECT_EQ(data["records"][1]["record"]["text"], "ZZ</script>");
}

TEST(Report, APageThatCannotBeWrittenIsAnError) {
    const Traces traces;
    const Result result = traces.Run(Events("HU\0"s), {"--html", traces.Path("no/page")});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "vymtrace: no/page cannot be written: No such file or directory\n");
    const std::string path = traces.Path("client_sock.log");
    EXPECT_EQ(traces.Run({"--html", path, path}).code, 1);
    EXPECT_EQ(support::ReadFile(path), kHeader + Events("HU\0"s));
}

} // namespace
