#include "zentavo/core/DebugLog.h"

#include <string>

namespace zentavo {

void DebugLog::write(std::string_view message) const {
    if (!enabled()) {
        return;
    }
    std::string line = "<ZENTAVO> - ";
    line += logTimestamp(clock_->local(clock_->now()));
    line += ": ";
    line += message;
    console_->writeLine(line);
}

} // namespace zentavo
