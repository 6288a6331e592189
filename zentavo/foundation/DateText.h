#pragma once

#include <string>

#include "zentavo/foundation/Export.h"

namespace zentavo {

/// A moment on the wall clock of some time zone, in the Gregorian calendar.
struct LocalTime {
    int year = 1970;
    int month = 1; ///< 1 to 12
    int day = 1;   ///< 1 to 31
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// The pattern "dd.MM.yy - HH:mm:ss" of the diagnostic log: "05.11.26 - 09:03:07".
ZENTAVO_EXPORT std::string logTimestamp(const LocalTime& time);

} // namespace zentavo
