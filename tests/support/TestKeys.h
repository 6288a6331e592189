#pragma once

#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace zentavo::tests {

/// One of the files that tests/support/make-keys makes, for instance "2048.pkcs8.pem".
inline std::string testKeyText(const std::string& name) {
    std::ifstream file(std::string(ZENTAVO_TEST_KEYS) + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline std::vector<std::uint8_t> testKey(const std::string& name) {
    const std::string text = testKeyText(name);
    return {text.begin(), text.end()};
}

} // namespace zentavo::tests
