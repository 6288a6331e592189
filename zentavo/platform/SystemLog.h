#pragma once

#include <string_view>

#include "zentavo/foundation/Export.h"

namespace zentavo::platform {

enum class LogLevel { info, warning, error };

/// The system's own log, for what an operator must learn even when the SDK's `debug` is off: a damaged store, a
/// contained fault. Any thread; does not wait.
class ZENTAVO_EXPORT SystemLog {
public:
    virtual ~SystemLog() = default;
    virtual void write(LogLevel level, std::string_view message) = 0;
};

/// The process's standard output, where `Zentavo::log` writes. Whole lines: lines of several threads never mix.
class ZENTAVO_EXPORT Console {
public:
    virtual ~Console() = default;
    /// `line` is without its newline.
    virtual void writeLine(std::string_view line) = 0;
};

} // namespace zentavo::platform
