#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zentavo::rsa::tests {

/// Looks into every block of memory that this program's C++ code gives back, before it goes, while one of these exists.
/// One thread, one at a time.
class FreedMemory {
public:
    /// `secret` must outlive this.
    explicit FreedMemory(std::span<const std::uint8_t> secret);
    ~FreedMemory();
    FreedMemory(const FreedMemory&) = delete;
    FreedMemory& operator=(const FreedMemory&) = delete;

    /// Blocks given back so far, and those of them that still held the secret.
    std::size_t blocks() const;
    std::size_t betrayals() const;
};

} // namespace zentavo::rsa::tests
