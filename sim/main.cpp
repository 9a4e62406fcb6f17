// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// vym-sim: a Bluetooth server without a radio.
#include "control_socket.h"
#include "prompt.h"
#include "server.h"
#include "text_file.h"
#include "world_file.h"

#include <CLI/CLI.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <chrono>
#include <csignal>
#include <exception>
#include <iostream>
#include <sys/signalfd.h>

namespace {

constexpr const char* kVersion = "vym-sim 1.0";
constexpr int kUsageError = 2;
constexpr int kBadScript = 2;

struct Settings {
    sim::Options options;
    sim::World world;
    bool prompt = false;
    /// For "ctl": what is to be sent to a running simulator.
    std::vector<std::string> words;
};

/// Refuses what a caller's number cannot be; for CLI11, which takes the text as the reason.
std::string why_no_number(const std::string& text) {
    const bool good = !text.empty() && text.find_first_not_of("0123456789*#+") == std::string::npos;
    return good ? "" : "\"" + text + "\" is no telephone number: only digits, *, # and + may be in it";
}

void add_ring_options(CLI::App& app, unsigned& ring_after_ms, std::string& number) {
    auto* after = app.add_option("--ring-after", ring_after_ms,
                                 "Let somebody call that long after a hands-free connection came up")
                      ->type_name("MILLISECONDS")
                      ->check(CLI::Range(0U, 3600000U));
    app.add_option("--ring-number", number, "Who calls")
        ->type_name("NUMBER")
        ->check(why_no_number)
        ->needs(after);
}

/// Voice in the formats of the Hands-Free Profile: CVSD and mSBC decoded.
sim::Sound voice_of(const std::string& path) {
    sim::Sound sound = sim::read_wav(path);
    if (sound.channels != 1 || (sound.rate != 8000 && sound.rate != 16000)) {
        throw sim::SoundError(path + " has " + std::to_string(sound.channels) + " channels and " +
                              std::to_string(sound.rate) +
                              " samples a second; voice has one channel and 8000 or 16000");
    }
    return sound;
}

sim::Sound music_of(const std::string& path) {
    sim::Sound sound = sim::read_wav(path);
    if (sound.channels > 2 || sound.rate < 16000 || sound.rate > 48000) {
        throw sim::SoundError(path + " has " + std::to_string(sound.channels) + " channels and " +
                              std::to_string(sound.rate) +
                              " samples a second; music has one or two channels and 16000 to 48000");
    }
    return sound;
}

struct SoundFiles {
    std::string voice;
    std::string music;
    std::string recording;

    void add_options(CLI::App& app) {
        app.add_option("--voice", voice, "What a call sounds like: a WAV file, played over and over")
            ->type_name("FILE");
        app.add_option("--music", music, "What the player plays: a WAV file, played over and over")
            ->type_name("FILE");
        app.add_option("--record", recording, "Write the client's voice to FILE, a WAV file")
            ->type_name("FILE");
    }

    void load(sim::World& world) const {
        if (!voice.empty()) {
            world.voice = voice_of(voice);
        }
        if (!music.empty()) {
            world.music = music_of(music);
        }
        world.voice_recording = recording;
    }
};

void add_world_options(CLI::App& app, std::string& file, uint32_t& hall) {
    app.add_option("--world", file, "Play the world that FILE describes (docs/simulator.md says how)")
        ->type_name("FILE");
    app.add_option("--hall", hall, "Let that many further devices advertise")
        ->type_name("NUMBER")
        ->check(CLI::Range(uint32_t{0}, sim::kLargestHall));
    app.add_flag_callback(
        "--print-world",
        [] {
            if (!(std::cout << sim::built_in_world_text() << std::flush)) {
                throw std::runtime_error("cannot write to standard output");
            }
            throw CLI::Success();
        },
        "Write the built-in world as such a file to standard output, and do nothing else");
}

void add_control_options(CLI::App& app, Settings& settings) {
    auto* script = app.add_option("--script", settings.options.script_file,
                                  "Carry out the lines of FILE (- is standard input), then end; the "
                                  "exit code is 1 if one failed")
                       ->type_name("FILE");
    app.add_flag("--stay", settings.options.stay, "Go on when the script has come to its good end")
        ->needs(script);
    app.add_flag("--prompt", settings.prompt, "Take orders from the terminal; \"help\" lists them");
    auto* ctl = app.add_subcommand("ctl", "Send an order to the simulator that runs in DIR");
    ctl->fallthrough();
    ctl->add_option("order", settings.words, "Such as 'phone call +4930123456', or help")
        ->required()
        ->type_name("WORD");
}

void add_time_options(CLI::App& app, sim::Options& options) {
    app.add_option_function<std::string>(
           "--time", [&options](const std::string& time) { options.virtual_time = time == "virtual"; },
           "How time passes: as in the real world, or as fast as the client allows")
        ->type_name("real|virtual")
        ->check(CLI::IsMember({"real", "virtual"}));
    app.add_option("--seed", options.seed,
                   "What changes by chance (how strongly devices are received, and when) follows from "
                   "this number; without it nothing does")
        ->type_name("NUMBER");
    app.add_option("--transcript", options.transcript_file,
                   "Write all that happens to FILE, with the time of the simulated world")
        ->type_name("FILE");
}

/// A capture is played instead of a world, and has its own course.
void add_replay_option(CLI::App& app, std::string& file) {
    auto* replay =
        app.add_option("--replay", file,
                       "Play the server's side of a recorded conversation, the library's "
                       "client_sock.log; the exit code is 1 if the client does not follow it")
            ->type_name("FILE");
    for (const char* other : {"--world", "--hall", "--script", "--ring-after", "--voice", "--music",
                              "--record", "--evil"}) {
        replay->excludes(app.get_option(other));
    }
}

/// Refuses what to_evil_options() refuses; for CLI11, which takes the text as the reason.
std::string why_not_evil(const std::string& text) {
    try {
        sim::to_evil_options(text);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

void add_evil_option(CLI::App& app, sim::Options& options) {
    app.add_option_function<std::string>(
           "--evil", [&options](const std::string& text) { options.evil = sim::to_evil_options(text); },
           "Misbehave towards the client, each time in the same way (docs/simulator.md says how)")
        ->type_name("SEED[:KIND,...]")
        ->check(why_not_evil);
}

/// A server that is there no more, or as good as that.
void add_end_options(CLI::App& app, sim::Options& options) {
    constexpr unsigned kMost = 1000000000;
    auto* kill = app.add_option("--kill-after", options.kill_after,
                                "Be killed by signal 9 right after the N-th command or event")
                     ->type_name("N")
                     ->check(CLI::Range(1U, kMost));
    app.add_option("--stall-after", options.stall_after,
                   "Let nothing cross the socket any more after the N-th command or event")
        ->type_name("N")
        ->check(CLI::Range(1U, kMost))
        ->excludes(kill);
}

/// What else the options say is for a simulator that is to be started.
void only_dir_for_ctl(CLI::App& app) {
    CLI::App* ctl = app.get_subcommand("ctl");
    for (CLI::Option* option : app.get_options()) {
        if (option->get_name() != "--dir") {
            ctl->excludes(option);
        }
    }
}

/// Fills the settings from the command line. Throws CLI::ParseError, also for --help and --version.
Settings parse(CLI::App& app, int argc, char** argv) {
    Settings settings;
    sim::Options& options = settings.options;
    std::string world_file;
    uint32_t hall = 0;
    unsigned ring_after_ms = 0;
    std::string ring_number;
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
    add_control_options(app, settings);
    add_time_options(app, options);
    add_evil_option(app, options);
    add_end_options(app, options);
    add_ring_options(app, ring_after_ms, ring_number);
    add_world_options(app, world_file, hall);
    SoundFiles sounds;
    sounds.add_options(app);
    add_replay_option(app, options.replay_file);
    app.set_version_flag("--version", kVersion);
    only_dir_for_ctl(app);
    app.parse(argc, argv);
    if (quiet) {
        options.log = sim::LogLevel::Quiet;
    } else if (log) {
        options.log = sim::LogLevel::All;
    }
    settings.world = app.count("--world") > 0 ? sim::load_world(world_file) : sim::built_in_world();
    sounds.load(settings.world);
    if (app.count("--hall") > 0) {
        settings.world.hall = hall;
    }
    if (app.count("--ring-after") > 0) {
        settings.world.phone.ring_after = std::chrono::milliseconds(ring_after_ms);
    }
    if (app.count("--ring-number") > 0) {
        settings.world.phone.ring_number = ring_number;
    }
    return settings;
}

// A descriptor that can be read when the program is to end. No handler: one that interrupts the program
// anywhere is more than this needs, and is lost when it comes early under the thread sanitizer.
int ending_signals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    return signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

int run(Settings settings) {
    if (!settings.words.empty()) {
        return sim::send_to_control(settings.options.dir, settings.words);
    }
    asio::io_context loop(1);
    // These come first: a signal right after the ready line must find somebody who waits for it.
    asio::posix::stream_descriptor signals(loop, ending_signals());
    sim::Server server(loop, std::move(settings.world), std::move(settings.options), std::cerr);
    signals.async_wait(asio::posix::stream_descriptor::wait_read,
                       [&server](const asio::error_code& error) {
                           if (!error) {
                               server.stop();
                           }
                       });
    std::cout << "vym-sim: listening on " << server.path() << std::endl;
    std::unique_ptr<sim::Prompt> prompt;
    if (settings.prompt) {
        prompt = sim::make_prompt(loop, server.control(), [&server] { server.stop(); });
    }
    sim::Clock::of(loop).run(loop);
    return server.result();
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
    } catch (const sim::FileError& error) {
        // Without the program's name: editors and terminals make a link of it.
        std::cerr << error.what() << "\n";
        return kUsageError;
    } catch (const sim::ScriptError& error) {
        std::cerr << error.what() << "\n";
        return kBadScript;
    } catch (const std::exception& error) {
        std::cerr << "vym-sim: " << error.what() << "\n";
        return 1;
    }
}
