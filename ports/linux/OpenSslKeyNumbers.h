#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "ports/linux/OpenSslLibrary.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::linux_port {

/// The numbers of an RSA key as OpenSSL takes them over. OpenSSL's own decoders leave copies of a private key's bytes in
/// memory that they give back unwiped; numbers it keeps in wiped memory, and ours are wiped when this goes.
class OpenSslKeyNumbers {
public:
    using Slice = std::span<const std::uint8_t>;

    OpenSslKeyNumbers(const OpenSslLibrary& library, Slice der, bool isPrivate);
    ~OpenSslKeyNumbers();
    OpenSslKeyNumbers(const OpenSslKeyNumbers&) = delete;
    OpenSslKeyNumbers& operator=(const OpenSslKeyNumbers&) = delete;

    /// Why `der` is not the PKCS#1 structure; without an error there is a list.
    const Result<void>& read() const noexcept { return read_; }
    /// Lives as long as this.
    OSSL_PARAM* list() noexcept { return entries_.data(); }

private:
    void add(const char* name, Slice digits);

    const OpenSslLibrary& library_;
    std::vector<std::uint8_t> digits_; ///< never grows
    std::size_t used_ = 0;
    std::array<OSSL_PARAM, 9> entries_{}; ///< eight numbers and the end
    std::size_t count_ = 0;
    Result<void> read_;
};

} // namespace zentavo::linux_port
