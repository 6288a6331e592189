#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace zentavo::rsa::tests {

using Bytes = std::vector<std::uint8_t>;

inline Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// One element, its length written the shortest way.
inline Bytes element(std::uint8_t tag, const Bytes& contents) {
    const auto size = contents.size();
    const auto low = static_cast<std::uint8_t>(size);
    const auto high = static_cast<std::uint8_t>(size >> 8U);
    Bytes header{tag};
    if (size < 0x80) {
        header = header + Bytes{low};
    } else if (size < 0x100) {
        header = header + Bytes{0x81, low};
    } else {
        header = header + Bytes{0x82, high, low};
    }
    return header + contents;
}

inline Bytes sequence(const Bytes& contents) { return element(0x30, contents); }
inline Bytes integer(const Bytes& digits) { return element(0x02, digits); }

/// The parts of a key that looks like one, without being any: its numbers have the right sizes, and nothing else.
struct MadeUpKey {
    Bytes version = integer({0});
    Bytes modulus = integer(Bytes{0} + Bytes(128, 0xC5));
    Bytes exponent = integer({1, 0, 1});
    Bytes privateNumbers = integer(Bytes(128, 0x35)) + integer(Bytes(64, 0x37)) + integer(Bytes(64, 0x39)) +
                           integer(Bytes(64, 0x3B)) + integer(Bytes(64, 0x3D)) + integer(Bytes(64, 0x3F));
    Bytes infoVersion = integer({0});
    Bytes identifier = element(0x06, {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01});
    Bytes parameters = element(0x05, {});
    Bytes behind = {}; ///< attributes and what may follow them in PKCS#8

    Bytes publicKey() const { return sequence(modulus + exponent); }
    Bytes privateKey() const { return sequence(version + modulus + exponent + privateNumbers); }
    Bytes publicInfo() const {
        return sequence(sequence(identifier + parameters) + element(0x03, Bytes{0} + publicKey()));
    }
    Bytes privateInfo() const {
        return sequence(infoVersion + sequence(identifier + parameters) + element(0x04, privateKey()) + behind);
    }
};

} // namespace zentavo::rsa::tests
