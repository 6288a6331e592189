// What Calendar.h promises, held against every port.

#include <ctime>

#include <gmock/gmock.h>

#include "tests/ports/Machine.h"

namespace zentavo::tests {
namespace {

using platform::CalendarPeriod;
using platform::TimePoint;

/// "2024-02-29T22:15:00Z" as a moment and back.
TimePoint at(const char* text) {
    std::tm parts{};
    ::strptime(text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return std::chrono::system_clock::from_time_t(::timegm(&parts));
}

std::string textOf(std::optional<TimePoint> moment) {
    if (!moment) {
        return "none";
    }
    const std::time_t seconds = std::chrono::system_clock::to_time_t(*moment);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

struct Case {
    const char* moment;
    CalendarPeriod period;
    const char* end;
};

class CalendarConformance : public MachineTest {
protected:
    static void check(const platform::Calendar& calendar, const std::vector<Case>& cases) {
        for (const Case& one : cases) {
            EXPECT_EQ(textOf(calendar.endOfPeriod(one.period, at(one.moment))), one.end)
                << one.moment << ", period " << static_cast<int>(one.period);
        }
    }
    std::shared_ptr<platform::Calendar> zone(const char* locale, const char* timeZone) {
        return machine->calendar(locale, timeZone);
    }
};

/// What needs a choice of time zones and locales, which a port for tests does not have.
class ZonedCalendarConformance : public CalendarConformance {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(ZonedCalendarConformance);

TEST_P(CalendarConformance, EndsPeriodsOnTheLocalClock) {
    // Two hours east: the local day of the first moment is the 1st of March, a Friday of a leap year.
    check(*machine->calendar(std::chrono::Monday),
          {{"2024-02-29T22:15:00Z", CalendarPeriod::hour, "2024-02-29T23:00:00Z"},
           {"2024-02-29T22:15:00Z", CalendarPeriod::day, "2024-03-01T22:00:00Z"},
           {"2024-02-29T22:15:00Z", CalendarPeriod::week, "2024-03-03T22:00:00Z"},
           {"2024-02-29T22:15:00Z", CalendarPeriod::month, "2024-03-31T22:00:00Z"},
           {"2024-02-29T22:15:00Z", CalendarPeriod::year, "2024-12-31T22:00:00Z"},
           // The 28th of February of a leap year, and of another one; the 31st before a shorter month.
           {"2024-02-28T12:00:00Z", CalendarPeriod::day, "2024-02-28T22:00:00Z"},
           {"2023-02-28T12:00:00Z", CalendarPeriod::month, "2023-02-28T22:00:00Z"},
           {"2024-01-31T12:00:00Z", CalendarPeriod::month, "2024-01-31T22:00:00Z"},
           // The last second of a year, and the first moment of the next, which belongs to that.
           {"2023-12-31T21:59:59Z", CalendarPeriod::year, "2023-12-31T22:00:00Z"},
           {"2023-12-31T22:00:00Z", CalendarPeriod::year, "2024-12-31T22:00:00Z"},
           {"2023-12-31T22:00:00Z", CalendarPeriod::week, "2024-01-07T22:00:00Z"},
           // Before 1970.
           {"1969-12-31T21:59:59Z", CalendarPeriod::hour, "1969-12-31T22:00:00Z"},
           {"1969-07-20T20:17:40Z", CalendarPeriod::month, "1969-07-31T22:00:00Z"}});
}

TEST_P(CalendarConformance, TheUserChoosesTheFirstWeekday) {
    // A Sunday: the first day of the one's week, the last of the other's.
    check(*machine->calendar(std::chrono::Sunday),
          {{"2024-03-03T12:00:00Z", CalendarPeriod::week, "2024-03-09T22:00:00Z"}});
    check(*machine->calendar(std::chrono::Monday),
          {{"2024-03-03T12:00:00Z", CalendarPeriod::week, "2024-03-03T22:00:00Z"}});
}

TEST_P(CalendarConformance, FractionsOfASecondAreThePeriodsOwn) {
    const auto calendar = machine->calendar(std::chrono::Monday);
    const TimePoint end = at("2024-03-01T22:00:00Z");
    EXPECT_EQ(calendar->endOfPeriod(CalendarPeriod::day, end - TimePoint::duration(1)), end);
    EXPECT_EQ(calendar->endOfPeriod(CalendarPeriod::day, end), at("2024-03-02T22:00:00Z"));
}

TEST_P(CalendarConformance, NoMomentBreaksIt) {
    const auto calendar = machine->calendar(std::chrono::Monday);
    for (const auto period : {CalendarPeriod::hour, CalendarPeriod::week, CalendarPeriod::year}) {
        EXPECT_EQ(calendar->endOfPeriod(period, TimePoint::max()), std::nullopt);
        const auto end = calendar->endOfPeriod(period, TimePoint::min());
        EXPECT_TRUE(!end || *end > TimePoint::min());
    }
}

TEST_P(ZonedCalendarConformance, DaysAreAsLongAsTheTimeZoneHasThem) {
    const auto berlin = zone("de-DE", "Europe/Berlin");
    check(*berlin, {// A day of 23 hours and one of 25.
                    {"2024-03-30T23:00:00Z", CalendarPeriod::day, "2024-03-31T22:00:00Z"},
                    {"2024-10-26T22:00:00Z", CalendarPeriod::day, "2024-10-27T23:00:00Z"},
                    // The hour before the gap, and both hours of one name.
                    {"2024-03-31T00:30:00Z", CalendarPeriod::hour, "2024-03-31T01:00:00Z"},
                    {"2024-10-27T00:30:00Z", CalendarPeriod::hour, "2024-10-27T01:00:00Z"},
                    {"2024-10-27T01:30:00Z", CalendarPeriod::hour, "2024-10-27T02:00:00Z"},
                    // Longer periods across a change.
                    {"2024-03-27T12:00:00Z", CalendarPeriod::week, "2024-03-31T22:00:00Z"},
                    {"2024-10-15T12:00:00Z", CalendarPeriod::month, "2024-10-31T23:00:00Z"},
                    {"2024-07-01T12:00:00Z", CalendarPeriod::year, "2024-12-31T23:00:00Z"}});
    // Midnight is skipped: the day begins at one o'clock. Midnight comes twice: the day begins at the first.
    check(*zone("pt-BR", "America/Sao_Paulo"), {{"2018-11-03T12:00:00Z", CalendarPeriod::day, "2018-11-04T03:00:00Z"},
                                                {"2018-11-03T12:00:00Z", CalendarPeriod::week, "2018-11-04T03:00:00Z"},
                                                {"2018-11-04T03:00:00Z", CalendarPeriod::day, "2018-11-05T02:00:00Z"},
                                                {"2018-02-17T12:00:00Z", CalendarPeriod::day, "2018-02-18T03:00:00Z"}});
    check(*zone("es-CU", "America/Havana"), {{"2024-11-02T12:00:00Z", CalendarPeriod::day, "2024-11-03T04:00:00Z"},
                                             {"2024-11-03T04:30:00Z", CalendarPeriod::day, "2024-11-04T05:00:00Z"},
                                             {"2024-11-03T05:30:00Z", CalendarPeriod::day, "2024-11-04T05:00:00Z"}});
    // Half an hour of change; a day that was left out; quarters of an hour.
    check(*zone("en-AU", "Australia/Lord_Howe"),
          {{"2024-04-06T14:45:00Z", CalendarPeriod::hour, "2024-04-06T15:00:00Z"},
           {"2024-04-06T15:15:00Z", CalendarPeriod::hour, "2024-04-06T15:30:00Z"}});
    check(*zone("en-WS", "Pacific/Apia"), {{"2011-12-30T01:00:00Z", CalendarPeriod::day, "2011-12-30T10:00:00Z"},
                                           {"2011-12-30T12:00:00Z", CalendarPeriod::day, "2011-12-31T10:00:00Z"}});
    check(*zone("ne-NP", "Asia/Kathmandu"), {{"2024-01-01T00:10:00Z", CalendarPeriod::hour, "2024-01-01T00:15:00Z"}});
}

TEST_P(ZonedCalendarConformance, TheLocaleChoosesTheCalendar) {
    check(*zone("de-DE", "Etc/UTC"), {{"2024-03-03T12:00:00Z", CalendarPeriod::week, "2024-03-04T00:00:00Z"}});
    check(*zone("en-US", "Etc/UTC"), {{"2024-03-03T12:00:00Z", CalendarPeriod::week, "2024-03-10T00:00:00Z"}});
    check(*zone("ar-EG", "Etc/UTC"), {{"2024-03-03T12:00:00Z", CalendarPeriod::week, "2024-03-09T00:00:00Z"}});
    // The year 5784 ends with the autumn; the year of the Buddha and of the emperor with ours.
    check(*zone("he-IL-u-ca-hebrew", "Etc/UTC"),
          {{"2024-03-03T12:00:00Z", CalendarPeriod::year, "2024-10-03T00:00:00Z"},
           {"2024-03-03T12:00:00Z", CalendarPeriod::month, "2024-03-11T00:00:00Z"}});
    check(*zone("th-TH", "Etc/UTC"), {{"2024-03-03T12:00:00Z", CalendarPeriod::year, "2025-01-01T00:00:00Z"}});
    check(*zone("zh-CN-u-ca-chinese", "Etc/UTC"),
          {{"2024-03-03T12:00:00Z", CalendarPeriod::year, "2025-01-29T00:00:00Z"},
           {"2043-12-31T12:00:00Z", CalendarPeriod::year, "2044-01-30T00:00:00Z"}});
    check(*zone("ja-JP-u-ca-japanese", "Etc/UTC"),
          {{"2018-12-31T12:00:00Z", CalendarPeriod::year, "2019-01-01T00:00:00Z"},
           {"2019-04-30T12:00:00Z", CalendarPeriod::year, "2020-01-01T00:00:00Z"},
           {"2019-05-01T12:00:00Z", CalendarPeriod::year, "2020-01-01T00:00:00Z"}});
    // A zone or locale that nobody knows is no reason to fall over.
    EXPECT_NE(zone("xx-XX", "Nowhere/Land")->endOfPeriod(CalendarPeriod::day, at("2024-03-03T12:00:00Z")),
              std::nullopt);
}

ZENTAVO_FOR_EACH_MACHINE(CalendarConformance);
INSTANTIATE_TEST_SUITE_P(Ports, ZonedCalendarConformance, ::testing::ValuesIn(machinesWithZones()),
                         [](const auto& machine) { return machine.param.name; });

} // namespace
} // namespace zentavo::tests
