#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::websocket {

/// How one end compresses.
struct DeflateSide {
    /// 8 to 15. Where it is less than 15 the other end needs less memory for this one's messages.
    int windowBits = 15;
    /// Messages may refer to earlier ones: smaller, for memory that stays with the connection.
    bool takeover = true;
};

/// What an end wishes for, or has agreed upon.
struct DeflateOptions {
    DeflateSide client;
    DeflateSide server;
    /// zlib's, 1 to 9; local.
    int level = 6;
    /// Shorter messages, in bytes, are sent as they are: the effort is larger than the gain. Local.
    std::size_t threshold = 128;
};
using DeflateAgreement = DeflateOptions;

/// An error for a window or a level that there is none of.
ZENTAVO_EXPORT Result<void> checkDeflate(const std::optional<DeflateOptions>& options);

/// The extension header of a client that wishes for `options`.
ZENTAVO_EXPORT std::string deflateOffer(const DeflateOptions& options);

/// What a client makes of the server's answer to `offered`; none where the server declined. An answer that was not
/// offered, or that no RFC 7692 server gives, is an error.
ZENTAVO_EXPORT Result<std::optional<DeflateAgreement>>
acceptDeflateAnswer(std::string_view answer, const std::optional<DeflateOptions>& offered);

struct DeflateAnswer {
    DeflateAgreement agreement;
    std::string header;
};
/// What a server that would grant `options` answers to a client's extension header: the first offer that it can meet,
/// none where there is none. An error for a header that does not follow the grammar.
ZENTAVO_EXPORT Result<std::optional<DeflateAnswer>> answerDeflateOffer(std::string_view offers,
                                                                       const DeflateOptions& options);

} // namespace zentavo::websocket
