#pragma once

#include <string_view>

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/KeyedDecoder.h"
#include "zentavo/inbox/RecordLists.h"

namespace zentavo {

namespace inbox {

/// The answer that `decoder` has read, unless it failed; its remarks go to `remark`.
template <class Response, class Remark>
Result<Response, DecodingFailure> checked(Response response, const KeyedDecoder& decoder, Remark remark) {
    if (decoder.failed()) {
        return *decoder.failure();
    }
    for (const std::string& line : decoder.remarks()) {
        remark(line);
    }
    return response;
}

/// The object that an answer is, of what was read from its bytes.
inline Result<Map, DecodingFailure> object(Result<Value> answer) {
    DecodingFailure failure;
    if (!answer) {
        failure.message = answer.error().message;
    } else if (Map* map = answer->asMap()) {
        return std::move(*map);
    } else {
        using Kind = DecodingFailure::Kind;
        failure.kind = answer->isNull() ? Kind::valueNotFound : Kind::typeMismatch;
        failure.subject = "map";
        failure.message = std::string("expected a map, found ") + answer->kindName();
    }
    return failure;
}

} // namespace inbox

/// Reads the bytes of an answer as one `Response`. What is odd about it without being wrong is handed to `remark`, line
/// by line.
template <class Response, class Remark>
Result<Response, DecodingFailure> readInboxAnswer(std::string_view bytes, Remark remark,
                                                  const json::Limits& limits = {}) {
    const auto source = inbox::object(json::read(bytes, limits));
    if (!source) {
        return source.error();
    }
    KeyedDecoder decoder(*source);
    return inbox::checked(Response::decode(decoder), decoder, remark);
}

/// The same for answers whose "data" holds lists of records.
template <class Response, class Remark>
    requires requires { typename Response::Record; }
Result<Response, DecodingFailure> readInboxAnswer(std::string_view bytes, Remark remark,
                                                  const json::Limits& limits = {}) {
    RecordLists<typename Response::Record> lists;
    const auto source = inbox::object(json::read(bytes, lists, limits));
    if (!source) {
        return source.error();
    }
    KeyedDecoder decoder(*source);
    return inbox::checked(Response::decode(decoder, lists), decoder, remark);
}

} // namespace zentavo
