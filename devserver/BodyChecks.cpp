#include "devserver/BodyChecks.h"

#include <algorithm>

#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

std::string step(std::string_view path, std::string_view name) {
    return path.empty() ? std::string(name) : std::string(path) + "." + std::string(name);
}

bool is(const Value& value, Kind kind) {
    switch (kind) {
    case Kind::any:
        return true;
    case Kind::text:
    case Kind::filledText:
        return value.asString() != nullptr;
    case Kind::number:
        return value.isNumber();
    case Kind::integer:
        return value.exactInt64().has_value();
    case Kind::textOrNumber:
        return value.asString() != nullptr || value.isNumber();
    case Kind::map:
        return value.asMap() != nullptr;
    case Kind::list:
    case Kind::listOfMaps:
    case Kind::listOfTexts:
        return value.asList() != nullptr;
    }
    return false;
}

const char* noun(Kind kind) {
    switch (kind) {
    case Kind::any:
        return "a value";
    case Kind::text:
    case Kind::filledText:
        return "text";
    case Kind::number:
        return "a number";
    case Kind::integer:
        return "an integer";
    case Kind::textOrNumber:
        return "text or a number";
    case Kind::map:
        return "a map";
    case Kind::list:
    case Kind::listOfMaps:
    case Kind::listOfTexts:
        return "a list";
    }
    return "";
}

void checkMember(const Value& value, const std::string& path, Kind kind, Problems& problems) {
    if (!is(value, kind)) {
        problems.add(path + " is " + value.kindName() + "; expected " + noun(kind));
        return;
    }
    if (kind == Kind::filledText && value.asString()->empty()) {
        problems.add(path + " is empty");
    }
    if (kind == Kind::listOfMaps || kind == Kind::listOfTexts) {
        const Kind element = kind == Kind::listOfMaps ? Kind::map : Kind::text;
        const List& list = *value.asList();
        for (std::size_t i = 0; i < list.size(); ++i) {
            checkMember(list[i], path + "[" + std::to_string(i) + "]", element, problems);
        }
    }
}

} // namespace

void checkMembers(const Map& map, std::string_view path, std::span<const MemberRule> rules, Others others,
                  Problems& problems) {
    for (const MemberRule& rule : rules) {
        if (const Value* value = map.find(rule.name)) {
            checkMember(*value, step(path, rule.name), rule.kind, problems);
        } else if (rule.need == Need::required) {
            problems.add(step(path, rule.name) + " is missing");
        }
    }
    if (others == Others::accepted) {
        return;
    }
    for (const Map::Entry& entry : map) {
        if (std::ranges::none_of(rules, [&](const MemberRule& rule) { return rule.name == entry.key; })) {
            problems.add(inQuotes(entry.key) + " does not belong in " +
                         (path.empty() ? "the body" : std::string(path)));
        }
    }
}

void checkQuery(const std::vector<QueryItem>& query, std::span<const QueryRule> rules, Problems& problems) {
    for (const QueryRule& rule : rules) {
        const std::string name = "query item " + std::string(rule.name);
        const auto count = std::ranges::count(query, rule.name, &QueryItem::name);
        if (count == 0) {
            problems.add(name + " is missing");
            continue;
        }
        if (count > 1) {
            problems.add(name + " comes " + std::to_string(count) + " times");
        }
        const std::string* value = queryValue(query, rule.name);
        if (value == nullptr) {
            problems.add(name + " has no value");
        } else if (!rule.value.empty() && *value != rule.value) {
            problems.add(name + " is " + inQuotes(*value) + "; expected " + inQuotes(rule.value));
        }
    }
    for (const QueryItem& item : query) {
        if (std::ranges::none_of(rules, [&](const QueryRule& rule) { return rule.name == item.name; })) {
            problems.add("query item " + inQuotes(item.name) + " does not belong here");
        }
    }
}

const std::string* queryValue(const std::vector<QueryItem>& query, std::string_view name) {
    const auto item = std::ranges::find(query, name, &QueryItem::name);
    return item != query.end() && item->value ? &*item->value : nullptr;
}

const std::string* textMember(const Map& map, std::string_view name) {
    const Value* value = map.find(name);
    return value != nullptr ? value->asString() : nullptr;
}

const Map* mapMember(const Map& map, std::string_view name) {
    const Value* value = map.find(name);
    return value != nullptr ? value->asMap() : nullptr;
}

} // namespace zentavo::devserver
