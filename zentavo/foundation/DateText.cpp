#include "zentavo/foundation/DateText.h"

namespace zentavo {
namespace {

/// The last two digits of a number that is not negative.
std::string twoDigits(int number) {
    const int rest = number < 0 ? 0 : number % 100;
    return {static_cast<char>('0' + rest / 10), static_cast<char>('0' + rest % 10)};
}

} // namespace

std::string logTimestamp(const LocalTime& time) {
    return twoDigits(time.day) + '.' + twoDigits(time.month) + '.' + twoDigits(time.year) + " - " +
           twoDigits(time.hour) + ':' + twoDigits(time.minute) + ':' + twoDigits(time.second);
}

} // namespace zentavo
