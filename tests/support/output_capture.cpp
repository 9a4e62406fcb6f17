// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

#include "support/output_capture.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace support {

OutputCapture::OutputCapture(Streams streams) {
    std::fflush(nullptr);
    Begin(streams_[0], STDOUT_FILENO);
    if (streams == Streams::kOutAndErr) {
        Begin(streams_[1], STDERR_FILENO);
    }
}

OutputCapture::~OutputCapture() {
    Stop();
}

void OutputCapture::Stop() {
    if (streams_[0].file < 0) {
        return;
    }
    const std::string text = Out() + Err();
    for (Stream& stream : streams_) {
        End(stream);
    }
    if (::testing::Test::HasFailure()) {
        std::fprintf(stderr, "--- output of the failed test ---\n%s\n---\n", text.c_str());
    }
}

void OutputCapture::Begin(Stream& stream, int target) {
    stream.target = target;
    stream.saved = fcntl(target, F_DUPFD_CLOEXEC, 3);
    stream.file = memfd_create("captured output", MFD_CLOEXEC);
    if (stream.saved < 0 || stream.file < 0 || dup2(stream.file, target) < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot redirect the output");
    }
}

void OutputCapture::End(Stream& stream) {
    if (stream.file < 0) {
        return;
    }
    dup2(stream.saved, stream.target);
    close(stream.saved);
    close(stream.file);
    stream = Stream{};
}

std::string OutputCapture::Content(const Stream& stream) {
    std::string text;
    if (stream.file < 0) {
        return text;
    }
    std::fflush(nullptr);
    std::array<char, 4096> part{};
    ssize_t count = 0;
    // The descriptor's offset is the writers'; reading must not move it.
    while ((count = pread(stream.file, part.data(), part.size(), static_cast<off_t>(text.size()))) >
           0) {
        text.append(part.data(), static_cast<size_t>(count));
    }
    return text;
}

std::string OutputCapture::Out() const {
    return Content(streams_[0]);
}

std::string OutputCapture::Err() const {
    return Content(streams_[1]);
}

bool OutputCapture::WaitForOut(const std::string& text, Milliseconds limit) const {
    return WaitUntil([&] { return Out().find(text) != std::string::npos; }, limit);
}

} // namespace support
