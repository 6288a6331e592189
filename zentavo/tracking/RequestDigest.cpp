#include "zentavo/tracking/RequestDigest.h"

#include <bit>
#include <string_view>

namespace zentavo {

namespace {

/// Both hashes over the same bytes: an exclusive-or before each multiplication (FNV-1a), and a sum that is rotated.
class TwoHashes {
public:
    void add(std::string_view text) noexcept {
        add(static_cast<std::uint64_t>(text.size())); // where one text ends is part of what is told apart
        for (const char c : text) {
            step(static_cast<unsigned char>(c));
        }
    }
    void add(std::uint64_t number) noexcept {
        for (int i = 0; i < 8; ++i, number >>= 8U) {
            step(number & 0xFFU);
        }
    }

    std::uint64_t first = 0xCBF29CE484222325U;
    std::uint64_t second = 0x6A09E667F3BCC909U;

private:
    void step(std::uint64_t byte) noexcept {
        first = (first ^ byte) * 0x100000001B3U;
        second = std::rotl(second + byte, 23) * 0x9E3779B97F4A7C15U;
    }
};

} // namespace

RequestDigest::RequestDigest(const platform::URLRequest& request) noexcept
    : bodyBytes(request.body ? request.body->size() : 0) {
    TwoHashes hashes;
    hashes.add(request.url.text());
    hashes.add(request.method);
    hashes.add(request.headers.size());
    for (const auto& [name, value] : request.headers) {
        hashes.add(name);
        hashes.add(value);
    }
    hashes.add(request.body ? 1U : 0U); // an empty body is not the same as none
    if (request.body) {
        hashes.add(*request.body);
    }
    first = hashes.first;
    second = hashes.second;
}

} // namespace zentavo
