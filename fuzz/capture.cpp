// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// The reader of captures.

#include "sim/capture.h"
#include "sim/text_file.h"
#include "target.h"

#include <string>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int fd = memfd_create("capture", MFD_CLOEXEC);
    fuzz::require(ftruncate(fd, 0) == 0 && pwrite(fd, data, size, 0) == static_cast<ssize_t>(size),
                  "there is room for a file");
    try {
        for (const sim::CapturedText& text : sim::read_capture("/proc/self/fd/" + std::to_string(fd))) {
            fuzz::require(!text.text.empty() && text.text.size() <= size, "texts come from the file");
        }
    } catch (const sim::FileError&) {
        // As it should be for nearly every input.
    }
    return 0;
}
