#pragma once

#include "zentavo/platform/SystemLog.h"

namespace zentavo::linux_port {

/// Standard output, flushed line by line, so that a pipe's reader sees a line when it is written. Where nobody reads any
/// more a line is lost, and the process is not ended.
class ZENTAVO_EXPORT StdoutConsole final : public platform::Console {
public:
    void writeLine(std::string_view line) override;
};

} // namespace zentavo::linux_port
