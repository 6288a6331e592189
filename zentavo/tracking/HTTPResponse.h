#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {

/// How the services' answers are told apart.
enum class HTTPResponse : int {
    appError = 0,
    sucess = 200,
    notFound = 404,
    forbidden = 403,
    switchingProtocols = 101,
    processing = 102,
    created = 201,
    accepted = 202,
    nonAuthoritativeInformation = 203,
    noContent = 204,
    alreadyReported = 208,
    multiStatus = 207,
};

/// The case of a status code; none for a code that has no case (205 and 206 among them).
constexpr std::optional<HTTPResponse> httpResponse(std::int64_t code) noexcept {
    if (code < 0 || code > 999) { // also keeps the conversion below from wrapping around
        return std::nullopt;
    }
    switch (static_cast<HTTPResponse>(code)) {
    case HTTPResponse::appError:
    case HTTPResponse::sucess:
    case HTTPResponse::notFound:
    case HTTPResponse::forbidden:
    case HTTPResponse::switchingProtocols:
    case HTTPResponse::processing:
    case HTTPResponse::created:
    case HTTPResponse::accepted:
    case HTTPResponse::nonAuthoritativeInformation:
    case HTTPResponse::noContent:
    case HTTPResponse::alreadyReported:
    case HTTPResponse::multiStatus:
        return static_cast<HTTPResponse>(code);
    }
    return std::nullopt;
}

/// The required code under `key`; one that has no case fails the record.
HTTPResponse decodeHTTPResponse(KeyedDecoder& decoder, std::string_view key);

/// What JSON turned out not to be.
enum class JSONError { notArray, notNSDictionary };

} // namespace zentavo
