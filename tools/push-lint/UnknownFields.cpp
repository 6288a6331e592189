#include "tools/push-lint/UnknownFields.h"

#include <algorithm>
#include <functional>
#include <map>

#include "zentavo/push/PayloadFields.h"

namespace zentavo::tools {

namespace {

constexpr std::size_t mostReported = 100;

/// What systems read for themselves.
constexpr const char* systemFields[] = {"alert", "interruption-level", "thread-id"};

class Search {
public:
    template <class Record>
    void in(const Map& map, const std::string& path) {
        std::map<std::string_view, std::function<void(const Value&, const std::string&)>> known;
        Record record;
        visitFields(record, [&](const char* key, const auto& field) { known.emplace(key, follow(field)); });
        for (const auto& [key, value] : map) {
            const auto found = known.find(key);
            if (found != known.end()) {
                found->second(value, path + key);
            } else if (paths.size() < mostReported && !(path.empty() && isSystems(key))) {
                paths.push_back(path + key);
            }
        }
    }

    std::vector<std::string> paths;

private:
    using Follow = std::function<void(const Value&, const std::string&)>;

    static bool isSystems(const std::string& key) {
        return std::find(std::begin(systemFields), std::end(systemFields), key) != std::end(systemFields);
    }

    // How to go on below a field: records have fields of their own, all else is a leaf.
    template <class Leaf>
    Follow follow(const Leaf&) {
        return [](const Value&, const std::string&) {};
    }
    template <class Record>
        requires requires(const Record& record) { record.encode(); }
    Follow follow(const std::optional<Record>&) {
        return [this](const Value& value, const std::string& path) {
            if (const Map* map = value.asMap()) {
                in<Record>(*map, path + ".");
            }
        };
    }
    template <class Record>
        requires requires(const Record& record) { record.encode(); }
    Follow follow(const std::vector<Record>&) {
        return [this](const Value& value, const std::string& path) {
            if (const List* list = value.asList()) {
                for (std::size_t i = 0; i < list->size(); ++i) {
                    if (const Map* map = (*list)[i].asMap()) {
                        in<Record>(*map, path + "[" + std::to_string(i) + "].");
                    }
                }
            }
        };
    }
};

} // namespace

std::vector<std::string> unknownFields(const Map& aps) {
    Search search;
    search.in<NotificationProperties>(aps, "");
    return std::move(search.paths);
}

} // namespace zentavo::tools
