#pragma once

#include <string>

#include "zentavo/foundation/Result.h"

namespace zentavo {

/// Why a record could not be read, taken apart for those who tell the kinds apart. `message` says all of it in a
/// sentence, and where that is enough, this is a plain `Error`.
struct DecodingFailure : Error {
    enum class Kind {
        typeMismatch,  ///< a member of another type
        keyNotFound,   ///< a required member is absent
        valueNotFound, ///< null where a value is required
        dataCorrupted, ///< no JSON at all, or a value that the record has no place for
    };

    Kind kind = Kind::dataCorrupted;
    /// The type that was asked for ("text", "integer", "map"), or the absent key; empty for corrupted data.
    std::string subject;
    /// The way to the place: "data.entries[3].heading". Empty for the whole.
    std::string codingPath;

    friend bool operator==(const DecodingFailure&, const DecodingFailure&) = default;
};

} // namespace zentavo
