#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace zentavo::rsa {

/// Overwrites memory with zeros. The optimiser keeps the writes, though nobody reads them.
void wipe(std::span<std::uint8_t> bytes) noexcept;

/// Bytes that are wiped when they go. Not copyable: a secret has one place.
class SecureBytes {
public:
    SecureBytes() = default;
    explicit SecureBytes(std::vector<std::uint8_t> bytes) : bytes_(std::move(bytes)) {}
    ~SecureBytes();
    SecureBytes(SecureBytes&& other) noexcept : bytes_(std::move(other.bytes_)) {}
    SecureBytes& operator=(SecureBytes&& other) noexcept {
        bytes_.swap(other.bytes_);
        return *this;
    }

    std::span<const std::uint8_t> span() const noexcept { return bytes_; }
    /// For filling. Whoever lets the vector grow leaves an unwiped copy behind.
    std::vector<std::uint8_t>& vector() noexcept { return bytes_; }

private:
    std::vector<std::uint8_t> bytes_;
};

} // namespace zentavo::rsa
