#pragma once

#include <string_view>

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {

/// Reads the bytes of an answer as one `Response`. What is odd about it without being wrong is handed to `remark`, line
/// by line.
template <class Response, class Remark>
Result<Response, DecodingFailure> readInboxAnswer(std::string_view bytes, Remark remark,
                                                  const json::Limits& limits = {}) {
    const auto source = json::readMap(bytes, limits);
    if (!source) {
        DecodingFailure failure;
        failure.message = source.error().message;
        return failure;
    }
    KeyedDecoder decoder(*source);
    Response response = Response::decode(decoder);
    if (decoder.failed()) {
        return *decoder.failure();
    }
    for (const std::string& line : decoder.remarks()) {
        remark(line);
    }
    return response;
}

} // namespace zentavo
