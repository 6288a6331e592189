#include "zentavo/tracking/HTTPResponse.h"

#include <string>

namespace zentavo {

HTTPResponse decodeHTTPResponse(KeyedDecoder& decoder, std::string_view key) {
    const std::int64_t code = decoder.integer(key);
    const auto response = httpResponse(code);
    if (!response) {
        decoder.fail(key, std::to_string(code) + " is no code that the services answer with");
    }
    return response.value_or(HTTPResponse::appError);
}

} // namespace zentavo
