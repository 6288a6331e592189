#pragma once

#include <cstddef>
#include <string_view>

#include "zentavo/foundation/Result.h"
#include "zentavo/rsa/SecureBytes.h"

namespace zentavo::rsa {

/// One key out of text (RFC 7468), decoded.
struct PEM {
    enum class Kind { privateKey, publicKey };

    Kind kind = Kind::publicKey;
    SecureBytes der;

    static constexpr std::size_t longest = 64 * std::size_t{1024};

    /// The first block of `text`, labelled "PRIVATE KEY", "RSA PRIVATE KEY", "PUBLIC KEY" or "RSA PUBLIC KEY". Text
    /// before and behind it does not matter, line breaks neither: a block whose breaks were lost on the way is read as
    /// well. Encrypted keys are refused, and so is text of more than `longest` characters. No error quotes the text.
    static Result<PEM> read(std::string_view text);
};

} // namespace zentavo::rsa
