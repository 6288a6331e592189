#pragma once

#include <cstddef>
#include <cstdint>

#include "zentavo/platform/URLSession.h"

namespace zentavo {

/// Stands for a request (URL, method, headers and the bytes of the body) where only "the same again?" is asked, in a few
/// bytes whatever the body's size.
///
/// Two different requests with one digest are next to impossible, and would do no harm: they would share a count of
/// failures, and one of them be tried again later than its own failures ask for. What is sent is never looked up by it.
struct RequestDigest {
    explicit RequestDigest(const platform::URLRequest& request) noexcept;

    // Two hashes that have nothing in common, over the whole request.
    std::uint64_t first;
    std::uint64_t second;
    std::size_t bodyBytes;

    friend bool operator==(const RequestDigest&, const RequestDigest&) noexcept = default;

    struct Hash {
        std::size_t operator()(const RequestDigest& digest) const noexcept {
            return static_cast<std::size_t>(digest.first);
        }
    };
};

} // namespace zentavo
