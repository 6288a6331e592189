#include "ports/desktop/PushJournal.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

#include "ports/desktop/StoredRecords.h"

namespace zentavo::desktop {

namespace {

constexpr const char* key = "ZentavoPushJournal";

struct Kept {
    PushJournal::Entry entry;
    std::int64_t attempts = 1;
};

std::vector<Kept> read(const std::optional<Value>& stored) {
    return readRecords(stored, PushJournal::maximumCount, [](KeyedDecoder& decoder) {
        Kept kept{{decoder.string("identifier"), decoder.string("body")}, decoder.integer("attempts")};
        if (kept.entry.identifier.empty()) {
            decoder.fail("identifier", "is empty");
        }
        return kept;
    });
}

std::optional<Value> write(const std::vector<Kept>& kept) {
    return writeRecords(kept, [](const Kept& each) {
        return Map{{"identifier", each.entry.identifier}, {"body", each.entry.body}, {"attempts", each.attempts}};
    });
}

} // namespace

void PushJournal::add(const std::string& identifier, const std::string& body) const {
    suite_->update(key, [identifier, body](const std::optional<Value>& stored) {
        auto kept = read(stored);
        addRecord(kept, {{identifier, body}}, maximumCount);
        return write(kept);
    });
}

void PushJournal::remove(const std::string& identifier) const {
    suite_->update(key, [identifier](const std::optional<Value>& stored) {
        auto kept = read(stored);
        std::erase_if(kept, [&](const Kept& each) { return each.entry.identifier == identifier; });
        return write(kept);
    });
}

PushJournal::Left PushJournal::takeUp(const std::set<std::string>& known) const {
    Left left;
    for (const Kept& each : read(suite_->object(key))) {
        if (known.contains(each.entry.identifier)) {
            continue;
        }
        if (each.attempts >= maximumAttempts) {
            ++left.givenUp;
        } else {
            left.entries.push_back(each.entry);
        }
    }
    if (left.entries.empty() && left.givenUp == 0) {
        return left; // as a rule; nothing need be written
    }
    suite_->update(key, [known](const std::optional<Value>& stored) {
        auto kept = read(stored);
        const auto isKnownNow = [&](const Kept& each) { return known.contains(each.entry.identifier); };
        std::erase_if(kept, [&](const Kept& each) { return !isKnownNow(each) && each.attempts >= maximumAttempts; });
        for (Kept& each : kept) {
            each.attempts += isKnownNow(each) ? 0 : 1;
        }
        return write(kept);
    });
    return left;
}

} // namespace zentavo::desktop
