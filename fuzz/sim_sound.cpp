// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The reader of WAV files: whole frames from the file, or one line that says what is wrong.

#include "memory_file.h"
#include "sim/sound.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const fuzz::MemoryFile file(fuzz::text_of(data, size));
    try {
        const sim::Sound sound = sim::read_wav(file.path());
        fuzz::require(sound.samples.size() <= size, "samples come from the file");
        fuzz::require(sound.samples.size() % sound.frame_bytes() == 0, "frames are whole");
        sim::Playback playback;
        for (const size_t count : {size_t{1}, size, size + 1}) {
            fuzz::require(playback.next(sound, count).size() == count, "it can be played on and on");
        }
    } catch (const sim::SoundError& error) {
        const std::string_view message = error.what();
        fuzz::require(message.find('\n') == std::string_view::npos, "one line says it");
    }
    return 0;
}
