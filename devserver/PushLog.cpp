#include "devserver/PushLog.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "devserver/BodyChecks.h"
#include "devserver/Text.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {

namespace {

/// Texts of the log are for reading.
constexpr std::size_t longestText = 200;

constexpr std::array<std::pair<const char*, const char*>, 3> idKeys{
    {{"story", "storyId"}, {"campaign", "campaignId"}, {"variant", "variantId"}}};
constexpr const char* leadSourceKey = "lead_source_id";

std::string shortened(std::string_view text) { return utf8Text(text.substr(0, longestText)); }

std::string textIn(const Map& map, std::string_view key) {
    const std::string* text = textMember(map, key);
    return text != nullptr ? *text : std::string();
}

/// The entries of `map` by which an app names the push that is rated.
Map idsIn(const Map& map) {
    Map ids;
    for (const char* key : {leadSourceKey, "story", "campaign", "variant"}) {
        if (const Value* value = map.find(key)) {
            ids.set(key, *value);
        }
    }
    return ids;
}

/// The same as the app makes them of the payload.
Map idsOf(const Map& aps) {
    const std::string* lead = textMember(aps, "leadSourceId");
    Map ids{{leadSourceKey, lead != nullptr ? *lead : std::string("123")}};
    for (const auto& [name, key] : idKeys) {
        if (const std::string* id = textMember(aps, key)) {
            ids.set(name, Map{{"id", *id}});
        }
    }
    return ids;
}

} // namespace

Map PushLog::Device::map() const {
    return {{"zentavo_apppush_uid", uid},
            {"endpoint", endpoint},
            {"encrypted", encrypted},
            {"bytes", static_cast<std::int64_t>(bytes)},
            {"status", status != 0 ? Value(status) : Value(nullptr)},
            {"result", reason.empty() ? std::string("delivered") : reason}};
}

Map PushLog::Entry::map() const {
    List list;
    for (const Device& device : devices) {
        list.emplace_back(device.map());
    }
    return {{"number", static_cast<std::int64_t>(number)},
            {"time", utcTimestamp(time)},
            {"id", id},
            {"source", source},
            {"push_id", pushId},
            {"template", shape},
            {"devices", std::move(list)},
            {"device_count", static_cast<std::int64_t>(deviceCount)},
            {"clicks", clicks},
            {"ratings", ratings},
            {"rating_count", ratingCount}};
}

std::uint64_t PushLog::next() {
    MutexLock lock(mutex_);
    return ++lastNumber_;
}

std::string PushLog::idFor(std::string_view name, std::uint64_t number) const {
    std::string id(name.substr(0, longestText));
    std::ranges::replace_if(
        id, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
    return id + "-" + std::to_string(run_) + "-" + std::to_string(number);
}

void PushLog::sent(std::uint64_t number, const std::string& id, std::string_view source, std::string_view body) {
    Entry entry;
    entry.number = number;
    entry.time = std::chrono::system_clock::now();
    entry.id = id;
    entry.source = shortened(source);
    const auto payload = json::readMap(body);
    if (const Map* aps = payload ? mapMember(*payload, "aps") : nullptr) {
        entry.pushId = shortened(textIn(*aps, "pushId"));
        entry.shape = shortened(textIn(*aps, "template"));
        entry.ids = idsOf(*aps);
    }
    MutexLock lock(mutex_);
    entries_.push_back(std::move(entry));
    if (entries_.size() > mostKept) {
        entries_.pop_front();
    }
    ++changes_;
}

Map PushLog::arrived(std::uint64_t number, const std::vector<Device>& devices) {
    MutexLock lock(mutex_);
    ++changes_;
    const auto entry = std::ranges::find(entries_, number, &Entry::number);
    Entry forgotten;
    forgotten.number = number;
    Entry& kept = entry != entries_.end() ? *entry : forgotten;
    kept.devices = devices;
    kept.deviceCount = devices.size();
    Map whole = kept.map();
    if (kept.devices.size() > mostDevices) {
        kept.devices.resize(mostDevices);
    }
    return whole;
}

bool PushLog::clicked(std::string_view id) {
    MutexLock lock(mutex_);
    const auto entry = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& each) {
        return each.id == id || (!each.pushId.empty() && each.pushId == id);
    });
    if (entry == entries_.rend()) {
        return false;
    }
    ++entry->clicks;
    ++changes_;
    return true;
}

void PushLog::rated(const Map& properties) {
    const Map ids = idsIn(properties);
    const auto number = [&](const char* key) {
        const Value* value = properties.find(key);
        const auto integer = value != nullptr ? value->exactInt64() : std::nullopt;
        return integer ? Value(*integer) : Value(nullptr);
    };
    MutexLock lock(mutex_);
    const auto entry = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& each) {
        return each.shape == "rating" && Value(each.ids) == Value(ids);
    });
    if (entry == entries_.rend()) {
        return;
    }
    ++entry->ratingCount;
    if (entry->ratings.size() < mostRatings) {
        entry->ratings.emplace_back(Map{{"time", utcTimestamp(std::chrono::system_clock::now())},
                                        {"selected", number("selected_rating")},
                                        {"scale", number("rating_scale")}});
    }
    ++changes_;
}

void PushLog::clear() {
    MutexLock lock(mutex_);
    entries_.clear();
    ++changes_;
}

List PushLog::list() const {
    MutexLock lock(mutex_);
    List all;
    for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
        all.emplace_back(entry->map());
    }
    return all;
}

std::int64_t PushLog::changes() const {
    MutexLock lock(mutex_);
    return changes_;
}

} // namespace zentavo::devserver
