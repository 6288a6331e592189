#pragma once

#include <optional>

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
constexpr std::optional<HTTPResponse> httpResponse(int code) noexcept {
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

/// What JSON turned out not to be.
enum class JSONError { notArray, notNSDictionary };

} // namespace zentavo
