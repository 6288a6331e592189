#include "devserver/InboxMessages.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "devserver/BodyChecks.h"
#include "devserver/Text.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/URL.h"

namespace zentavo::devserver {

namespace {

constexpr std::array<std::string_view, 8> urlKeys{"launch_url",          "app_url",          "image_url",
                                                  "button_app_url_1",    "button_app_url_2", "button_launch_url_1",
                                                  "button_launch_url_2", "tracking_url"};

constexpr std::array<MemberRule, 20> messageRules{{
    {"item_id", Kind::filledText, Need::optional},
    {"heading", Kind::filledText},
    {"content", Kind::text},
    {"lookup_type", Kind::filledText, Need::optional},
    {"lookup_id", Kind::filledText, Need::optional},
    {"destination_id", Kind::integer, Need::optional},
    {"template_id", Kind::text, Need::optional},
    {"catalog_ids", Kind::listOfTexts, Need::optional},
    {"date_created", Kind::text, Need::optional},
    {"last_updated", Kind::text, Need::optional},
    {"launch_url", Kind::text, Need::optional},
    {"app_url", Kind::text, Need::optional},
    {"image_url", Kind::text, Need::optional},
    {"button_app_url_1", Kind::text, Need::optional},
    {"button_app_url_2", Kind::text, Need::optional},
    {"button_launch_url_1", Kind::text, Need::optional},
    {"button_launch_url_2", Kind::text, Need::optional},
    {"button_label_1", Kind::text, Need::optional},
    {"button_label_2", Kind::text, Need::optional},
    {"tracking_url", Kind::text, Need::optional},
}};

constexpr std::array<MemberRule, 2> catalogRules{{{"catalogId", Kind::filledText}, {"catalogName", Kind::filledText}}};
constexpr std::array<MemberRule, 2> fileRules{
    {{"catalogs", Kind::listOfMaps, Need::optional}, {"messages", Kind::listOfMaps, Need::optional}}};

std::string textOr(const Map& map, std::string_view key, std::string_view otherwise) {
    const std::string* text = textMember(map, key);
    return text != nullptr ? *text : std::string(otherwise);
}

/// Takes the entry out of `map`.
std::string taken(Map& map, std::string_view key, std::string_view otherwise) {
    std::string text = textOr(map, key, otherwise);
    map.remove(key);
    return text;
}

void checkURLs(const Map& message, const std::string& path, Problems& problems) {
    for (const std::string_view key : urlKeys) {
        const std::string* text = textMember(message, key);
        if (text != nullptr && !URL::parse(*text)) {
            problems.add(path + (path.empty() ? "" : ".") + std::string(key) + " is " + inQuotes(*text) +
                         "; expected a URL");
        }
    }
}

struct File {
    std::string name;
    std::string text;
};

Result<std::vector<File>> filesOf(const std::string& folder) {
    std::vector<File> files;
    if (folder.empty()) {
        for (const InboxSeed& seed : builtInInbox()) {
            files.push_back({std::string(seed.name), std::string(seed.text)});
        }
        return files;
    }
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        if (entry.path().extension() == ".json") {
            std::ifstream stream(entry.path(), std::ios::binary);
            files.push_back({entry.path().filename(), {std::istreambuf_iterator<char>(stream), {}}});
        }
    }
    if (error) {
        return Error{"the folder " + folder + " cannot be read: " + error.message()};
    }
    std::ranges::sort(files, {}, &File::name);
    return files;
}

} // namespace

std::string InboxMessages::add(const Map& message, const std::string& path, Problems& problems) {
    const std::size_t before = problems.count();
    checkMembers(message, path, messageRules, Others::refused, problems);
    checkURLs(message, path, problems);
    const std::string place = path.empty() ? "" : path + ".";
    InboxStore::Message made;
    const Value* labels = message.find("catalog_ids");
    if (const List* list = labels != nullptr ? labels->asList() : nullptr) {
        for (const Value& label : *list) {
            if (const std::string* id = label.asString()) {
                made.catalogs.push_back(*id);
                if (!store_.hasCatalog(*id)) {
                    problems.add(place + "catalog_ids: there is no catalog " + inQuotes(*id));
                }
            }
        }
    }
    if (const std::string* id = textMember(message, "item_id"); id != nullptr && store_.hasMessage(*id)) {
        problems.add(place + "item_id is " + inQuotes(*id) + ", which another message has");
    }
    if (problems.count() > before) {
        return {};
    }

    const std::string now = utcTimestamp(std::chrono::system_clock::now());
    Map item = message;
    made.id = taken(item, "item_id", "");
    for (std::int64_t n = 1; made.id.empty(); ++n) {
        if (std::string id = "message-" + std::to_string(n); !store_.hasMessage(id)) {
            made.id = std::move(id);
        }
    }
    made.user = {taken(item, "lookup_type", InboxStore::everybody), taken(item, "lookup_id", InboxStore::everybody)};
    const Value* destination = item.find("destination_id");
    made.destination = destination != nullptr ? *destination->exactInt64() : usualDestination;
    item.remove("destination_id");
    item.set("item_type", "message");
    item.set("catalog_ids", List(made.catalogs.begin(), made.catalogs.end()));
    item.set("template_id", textOr(message, "template_id", "basic"));
    item.set("date_created", textOr(message, "date_created", now));
    item.set("last_updated", textOr(message, "last_updated", *textMember(item, "date_created")));
    made.item = std::move(item);
    if (!store_.add(made)) {
        problems.add("the inbox is full: it holds " + std::to_string(InboxStore::maximumMessages) + " messages");
        return {};
    }
    return made.id;
}

void InboxMessages::addCatalogs(const Map& file, Problems& problems) {
    const Value* catalogs = file.find("catalogs");
    for (std::size_t i = 0; catalogs != nullptr && i < catalogs->asList()->size(); ++i) {
        const Map& catalog = *(*catalogs->asList())[i].asMap();
        const std::size_t before = problems.count();
        checkMembers(catalog, "catalogs[" + std::to_string(i) + "]", catalogRules, Others::refused, problems);
        if (problems.count() == before) {
            store_.addCatalog(*textMember(catalog, "catalogId"), *textMember(catalog, "catalogName"));
        }
    }
}

void InboxMessages::addMessages(const Map& file, Problems& problems) {
    const Value* messages = file.find("messages");
    for (std::size_t i = 0; messages != nullptr && i < messages->asList()->size(); ++i) {
        add(*(*messages->asList())[i].asMap(), "messages[" + std::to_string(i) + "]", problems);
    }
}

Result<void> InboxMessages::seed(const std::string& folder) {
    if (!store_.isEmpty()) {
        return {};
    }
    auto filled = fill(folder);
    if (!filled) {
        store_.clear(); // half an inbox would pass for a whole one at the next start
    }
    return filled;
}

Result<void> InboxMessages::fill(const std::string& folder) {
    const auto files = filesOf(folder);
    if (!files) {
        return files.error();
    }
    // Catalogs of all files first: messages name them.
    std::vector<Map> contents;
    for (const File& file : *files) {
        Problems problems;
        auto map = json::readMap(file.text);
        if (map) {
            checkMembers(*map, "", fileRules, Others::refused, problems);
        } else {
            problems.add(map.error().message);
        }
        if (problems.empty()) {
            addCatalogs(*map, problems);
        }
        if (!problems.empty()) {
            return Error{file.name + ": " + problems.list().front()};
        }
        contents.push_back(*std::move(map));
    }
    for (std::size_t i = 0; i < contents.size(); ++i) {
        Problems problems;
        addMessages(contents[i], problems);
        if (!problems.empty()) {
            return Error{(*files)[i].name + ": " + problems.list().front()};
        }
    }
    return {};
}

} // namespace zentavo::devserver
