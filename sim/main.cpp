// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// vym-sim: a Bluetooth server without a radio.
#include "server.h"

#include <CLI/CLI.hpp>
#include <asio/signal_set.hpp>
#include <csignal>
#include <exception>
#include <iostream>

namespace {

constexpr const char* kVersion = "vym-sim 1.0";
constexpr int kUsageError = 2;

/// Fills the options from the command line. Throws CLI::ParseError, also for --help and --version.
sim::Options parse(CLI::App& app, int argc, char** argv) {
    sim::Options options;
    bool log = false;
    bool quiet = false;
    app.add_option("--dir", options.dir, "Directory of the socket: vym-sim listens on DIR/vym_socket")
        ->required()
        ->type_name("DIR");
    auto* log_flag = app.add_flag("--log", log, "Show every command and event on standard error");
    app.add_flag("--quiet", quiet,
                 "Show nothing on standard error, not even commands that are not understood")
        ->excludes(log_flag);
    app.add_option("--traffic", options.traffic_file,
                   "Write the bytes that cross the socket to FILE, as text")
        ->type_name("FILE");
    app.set_version_flag("--version", kVersion);
    app.parse(argc, argv);
    if (quiet) {
        options.log = sim::LogLevel::Quiet;
    } else if (log) {
        options.log = sim::LogLevel::All;
    }
    return options;
}

int run(sim::Options options) {
    asio::io_context loop(1);
    // The handlers come first: a signal right after the ready line must find them.
    asio::signal_set signals(loop, SIGINT, SIGTERM);
    sim::Server server(loop, sim::built_in_world(), std::move(options), std::cerr);
    signals.async_wait([&server](const asio::error_code& error, int) {
        if (!error) {
            server.stop();
        }
    });
    std::cout << "vym-sim: listening on " << server.path() << std::endl;
    loop.run();
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    // Whoever reads our output may go away first.
    static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
    try {
        CLI::App app("A Bluetooth server without a radio, for developing and testing clients.",
                     "vym-sim");
        try {
            return run(parse(app, argc, argv));
        } catch (const CLI::ParseError& error) {
            if (error.get_exit_code() == 0) {
                return app.exit(error);
            }
            std::cerr << "vym-sim: " << error.what() << " (vym-sim --help shows the options)\n";
            return kUsageError;
        }
    } catch (const std::exception& error) {
        std::cerr << "vym-sim: " << error.what() << "\n";
        return 1;
    }
}
