#pragma once

namespace zentavo {

/// What a record's JSON text may consist of.
enum class TextEncoding {
    utf8,
    /// Characters up to U+007F only.
    ascii,
};

} // namespace zentavo
