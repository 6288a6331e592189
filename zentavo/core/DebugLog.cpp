#include "zentavo/core/DebugLog.h"

#include <string>

#include "zentavo/foundation/SingleLine.h"

namespace zentavo {

void DebugLog::write(std::string_view message) const {
    if (!enabled()) {
        return;
    }
    std::string line = "<ZENTAVO> - ";
    line += logTimestamp(clock_->local(clock_->now()));
    line += ": ";
    line += message;
    makeSingleLine(line);
    console_->writeLine(line);
}

} // namespace zentavo
