// SPDX-License-Identifier: MIT
// Copyright (c) 2026 The vym authors

// What the targets share: how an input is cut into pieces, text that ends where its memory ends, and
// checks that stop the fuzzer.
#ifndef VYM_FUZZ_TARGET_H
#define VYM_FUZZ_TARGET_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz {

/// Stops with the input at hand when something that always holds does not.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

inline std::string_view text_of(const uint8_t* data, size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// A copy that ends where its memory ends, so that reading one byte further is noticed.
class Exact {
public:
    explicit Exact(std::string_view text) : size_(text.size()), bytes_(new uint8_t[size_]) {
        if (!text.empty()) {
            std::memcpy(bytes_.get(), text.data(), size_);
        }
    }

    uint8_t* data() const { return bytes_.get(); }
    char* chars() const { return reinterpret_cast<char*>(data()); }
    size_t size() const { return size_; }

private:
    size_t size_;
    std::unique_ptr<uint8_t[]> bytes_;
};

/// The lengths of the pieces in which a text arrives, one after the other and again from the first.
class Lengths {
public:
    static constexpr size_t kCount = 4;

    /// From the first bytes of the input, which are taken off.
    explicit Lengths(std::string_view& input) {
        for (size_t i = 0; i < kCount && !input.empty(); ++i) {
            const auto byte = static_cast<uint8_t>(input.front());
            // One length for each of the small numbers, and up to more than a buffer holds.
            lengths_[i] = byte < 0x80 ? byte + size_t{1} : (byte - 0x7FU) * 64;
            input.remove_prefix(1);
        }
    }
    /// Everything at once.
    Lengths() = default;

    /// No piece is shorter, so that a long text is not made of too many.
    void raise_to(size_t least) {
        for (size_t& length : lengths_) {
            length = length < least ? least : length;
        }
    }

    size_t next() { return lengths_[at_++ % kCount]; }

private:
    size_t lengths_[kCount] = {SIZE_MAX, SIZE_MAX, SIZE_MAX, SIZE_MAX};
    size_t at_ = 0;
};

/// Cuts an input into the pieces that its first bytes tell, about `most` of them, and calls
/// each(piece).
template <class Each>
void in_pieces(std::string_view input, size_t most, Each each) {
    Lengths lengths(input);
    lengths.raise_to(input.size() / most);
    while (!input.empty()) {
        const std::string_view piece = input.substr(0, lengths.next());
        input.remove_prefix(piece.size());
        each(piece);
    }
}

inline size_t byte_at(std::string_view text, size_t at) {
    return static_cast<uint8_t>(text[at]);
}

/// Calls each(message) for each whole message of a stream: a header and as much as length(header) says.
template <class Length, class Each>
void each_message(std::string_view stream, size_t header, Length length, Each each) {
    while (stream.size() >= header && stream.size() - header >= length(stream)) {
        const size_t size = header + length(stream);
        each(stream.substr(0, size));
        stream.remove_prefix(size);
    }
}

/// What the code under test prints is not looked at.
inline bool be_quiet() {
    static const bool done = std::freopen("/dev/null", "w", stdout) != nullptr;
    return done;
}

} // namespace fuzz

#endif
