#include "zentavo/inapp/Frequency.h"

#include <atomic>
#include <chrono>
#include <limits>
#include <memory>

#include "zentavo/foundation/Fault.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/Printable.h"

namespace zentavo {

namespace {

/// Only "person" is enforced. ASCII alone: the services write nothing else.
bool isPerson(const std::optional<std::string>& object) {
    if (!object) {
        return false;
    }
    std::string lower = *object;
    for (char& c : lower) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return lower == "person";
}

std::optional<platform::CalendarPeriod> period(const std::optional<std::string>& timeUnit) {
    using platform::CalendarPeriod;
    if (!timeUnit) {
        return std::nullopt;
    }
    if (*timeUnit == "hourly") {
        return CalendarPeriod::hour;
    }
    if (*timeUnit == "daily") {
        return CalendarPeriod::day;
    }
    if (*timeUnit == "weekly") {
        return CalendarPeriod::week;
    }
    if (*timeUnit == "monthly") {
        return CalendarPeriod::month;
    }
    if (*timeUnit == "yearly") {
        return CalendarPeriod::year;
    }
    return std::nullopt;
}

std::optional<DeliveryTrace::Capped> used(CappingLevel level, const Map& entries, std::int64_t id,
                                          const CappingLimit& limit) {
    const bool limits = limit.timeUnit && !limit.timeUnit->empty() && limit.value && *limit.value >= 1 && limit.event &&
                        !limit.event->empty();
    if (!limits) {
        return std::nullopt;
    }
    const Value* entry = entries.find(std::to_string(id));
    if (entry == nullptr || entry->asMap() == nullptr) {
        return std::nullopt;
    }
    const Value* member = entry->asMap()->find(*limit.event);
    const auto counter = member != nullptr ? member->exactInt64() : std::nullopt;
    if (!counter || *counter < *limit.value) {
        return std::nullopt;
    }
    return DeliveryTrace::Capped{level, *limit.event, *limit.value, *counter};
}

template <class Capping>
std::string described(const std::optional<Capping>& capping) {
    return capping ? printable(json::write(capping->encode()).value()) : "none";
}

void logRecord(const Zentavo::State& state, const Frequency::Subject& subject) {
    if (!state.log->enabled()) {
        return;
    }
    const auto text = json::write(Frequency::load(state).map());
    state.log->write("Frequency: " + (text ? *text : text.error().message));
    state.log->write("frequencyCapping: " + described(subject.frequencyCapping));
    state.log->write("destinationFrequencyCapping: " + described(subject.destinationFrequencyCapping));
    state.log->write("zoneFrequencyCapping: " + described(subject.zoneFrequencyCapping));
    state.log->write("zoneId: " + std::to_string(subject.zoneId));
}

void count(const Zentavo::State& state, platform::Preferences& store, const std::string& key, std::int64_t id,
           const std::string& event, const CappingLimit& limit) {
    const double expires = Frequency::expiry(*state.platform, limit.timeUnit);
    const double now = state.platform->clock->secondsSince1970();
    // By value and shared: a busy store makes the change again when this function is long over.
    const auto overflow = std::make_shared<std::atomic<bool>>(false);
    store.update(key, [=](const std::optional<Value>& stored) -> std::optional<Value> {
        const std::string* text = stored ? stored->asString() : nullptr;
        auto next = Frequency::counted(text != nullptr ? *text : std::string(), now, id, event, expires);
        *overflow = !next;
        return next ? std::optional<Value>(*std::move(next)) : stored;
    });
    if (*overflow) {
        fatalError("the count of \"" + event + "\" under " + key + " cannot go any higher");
    }
}

} // namespace

Map Frequency::entries(std::string_view stored, double now) {
    auto map = json::readMap(stored);
    if (!map) {
        return {};
    }
    Map living;
    living.reserve(map->size());
    for (const auto& [id, entry] : *map) {
        const Value* expires = entry.asMap() != nullptr ? entry.asMap()->find("timeExpire") : nullptr;
        const auto moment = expires != nullptr ? expires->number() : std::nullopt;
        if (!moment || *moment > now) {
            living.set(id, entry);
        }
    }
    return living;
}

std::optional<std::string> Frequency::counted(std::string_view stored, double now, std::int64_t id,
                                              const std::string& event, double expiry) {
    Map level = entries(stored, now);
    const std::string key = std::to_string(id);
    Value* present = level.find(key);
    Value& entry = present != nullptr && present->asMap() != nullptr ? *present : level.set(key, Map());
    Map& members = *entry.asMap();
    const Value* counter = members.find(event);
    const std::int64_t before = counter != nullptr ? counter->exactInt64().value_or(0) : 0;
    if (before == std::numeric_limits<std::int64_t>::max()) {
        return std::nullopt;
    }
    members.set("timeExpire", expiry);
    members.set(event, before + 1);
    auto text = json::write(level);
    // Everything in it was read from JSON a moment ago, but for `event`, which is the SDK's own.
    return text ? *std::move(text) : std::string(stored);
}

double Frequency::expiry(const platform::Platform& platform, const std::optional<std::string>& timeUnit) {
    const auto now = platform.clock->now();
    const auto length = period(timeUnit);
    if (!length) {
        return std::chrono::duration<double>(now.time_since_epoch()).count();
    }
    const auto end = platform.calendar->endOfPeriod(*length, now);
    if (!end) {
        fatalError("the calendar does not know when the current period ends");
    }
    return std::chrono::duration<double>(end->time_since_epoch() - std::chrono::nanoseconds(1)).count();
}

Frequency::Counters Frequency::load(const Zentavo::State& state) {
    const auto store = state.store();
    if (!store) {
        return {};
    }
    const double now = state.platform->clock->secondsSince1970();
    const auto level = [&](const std::string& key) { return entries(store->string(key).value_or("{}"), now); };
    return {level(state.keys.storyFrequency), level(state.keys.destinationFrequency), level(state.keys.zoneFrequency)};
}

std::optional<DeliveryTrace::Capped> Frequency::check(const Counters& counters, const WebContent& content) {
    std::optional<DeliveryTrace::Capped> capped;
    if (const auto& story = content.frequencyCapping; story && isPerson(story->object)) {
        capped = used(CappingLevel::story, counters.story, content.storyId, *story);
    }
    if (const auto& destination = content.destinationFrequencyCapping; !capped && destination) {
        capped = used(CappingLevel::destination, counters.destination, content.destinationId, *destination);
    }
    if (const auto& zone = content.zoneFrequencyCapping; !capped && zone) {
        capped = used(CappingLevel::zone, counters.zone, content.zoneId, *zone);
    }
    return capped;
}

Frequency::Subject Frequency::Subject::of(const WebContent& content) {
    return {content.storyId,
            content.destinationId,
            content.zoneId,
            content.frequencyCapping,
            content.destinationFrequencyCapping,
            content.zoneFrequencyCapping};
}

void Frequency::record(const Zentavo::State& state, const Subject& subject, const std::string& event) {
    logRecord(state, subject);
    const auto store = state.store();
    if (!store) {
        return;
    }
    if (const auto& story = subject.frequencyCapping; story && isPerson(story->object)) {
        count(state, *store, state.keys.storyFrequency, subject.storyId, event, *story);
    }
    if (const auto& destination = subject.destinationFrequencyCapping) {
        count(state, *store, state.keys.destinationFrequency, subject.destinationId, event, *destination);
    }
    if (const auto& zone = subject.zoneFrequencyCapping) {
        count(state, *store, state.keys.zoneFrequency, subject.zoneId, event, *zone);
    }
}

} // namespace zentavo
