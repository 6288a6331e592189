#include "devserver/Campaigns.h"

#include <algorithm>
#include <array>
#include <utility>

#include "devserver/BodyChecks.h"
#include "devserver/Placeholders.h"
#include "devserver/Text.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {

namespace {

constexpr std::array<MemberRule, 8> fileRules{{
    {"description", Kind::filledText},
    {"events", Kind::listOfTexts},
    {"webContent", Kind::map},
    {"page", Kind::map, Need::optional},          // how the template host's page shows it
    {"html", Kind::filledText, Need::optional},   // the file with its content
    {"script", Kind::filledText, Need::optional}, // a file that is run behind it
    {"templateInfo", Kind::map, Need::optional},
    {"media", Kind::any, Need::optional},
}};

/// What the SDK requires, so that a mistake in a file does not pass for one in the SDK.
constexpr std::array<MemberRule, 10> contentRules{{
    {"javascript", Kind::text, Need::optional}, // made of page, html and script unless it stands here
    {"template", Kind::filledText},
    {"designMode", Kind::filledText},
    {"storyId", Kind::integer},
    {"variantId", Kind::integer},
    {"destinationId", Kind::integer},
    {"zoneId", Kind::integer},
    {"frequencyCapping", Kind::map, Need::optional},
    {"destinationFrequencyCapping", Kind::map, Need::optional},
    {"zoneFrequencyCapping", Kind::map, Need::optional},
}};

/// The text of the file that `map` names under `key`.
std::string fileText(const Map& map, std::string_view key, const std::vector<SeedFile>& files, Problems& problems) {
    const std::string* name = textMember(map, key);
    if (name == nullptr) {
        return {};
    }
    const auto file = std::ranges::find(files, *name, &SeedFile::name);
    if (file == files.end()) {
        problems.add(std::string(key) + ": there is no file " + inQuotes(*name));
        return {};
    }
    return file->text;
}

/// Shows the content in the template host's page.
std::string showing(const Map& page, const std::string& html, const std::string& script) {
    Map options = page;
    options.set("html", html);
    options.set("impression", "{{impression}}");
    options.set("viewable", "{{viewable}}");
    options.set("click", "{{click}}");
    const auto text = json::write(options);
    return "showCampaign(" + (text ? *text : std::string("{}")) + ");\n" + script;
}

Campaign readCampaign(const Map& map, const std::vector<SeedFile>& files, Problems& problems) {
    Campaign campaign;
    checkMembers(map, "", fileRules, Others::refused, problems);
    if (const Map* content = mapMember(map, "webContent")) {
        checkMembers(*content, "webContent", contentRules, Others::refused, problems);
    }
    const std::string html = fileText(map, "html", files, problems);
    const std::string script = fileText(map, "script", files, problems);
    if (!problems.empty()) {
        return campaign;
    }
    campaign.description = *textMember(map, "description");
    for (const Value& event : *map.find("events")->asList()) {
        campaign.events.push_back(*event.asString());
    }
    campaign.webContent = *mapMember(map, "webContent");
    if (const Value* media = map.find("media")) {
        campaign.media = *media;
    }
    if (campaign.isHandWritten()) {
        const Map* info = mapMember(map, "templateInfo");
        campaign.templateInfo = info != nullptr ? *info : Map();
        campaign.html = html;
    }
    if (!campaign.webContent.contains("javascript")) {
        const Map* page = mapMember(map, "page");
        campaign.webContent.set(
            "javascript", campaign.isHandWritten() ? script : showing(page != nullptr ? *page : Map(), html, script));
    }
    return campaign;
}

} // namespace

bool Campaign::isFor(std::string_view event, bool catchAll) const {
    return std::ranges::any_of(events,
                               [&](const std::string& each) { return each == event || (catchAll && each == "*"); });
}

Result<Campaigns> Campaigns::read(const std::string& folder) {
    const auto files = seedFiles(folder, builtInCampaigns(), {".json", ".html", ".js"});
    if (!files) {
        return files.error();
    }
    Campaigns campaigns;
    for (const SeedFile& file : *files) {
        if (!file.name.ends_with(".json")) {
            continue;
        }
        Problems problems;
        const auto map = json::readMap(file.text);
        Campaign campaign;
        if (map) {
            campaign = readCampaign(*map, *files, problems);
        } else {
            problems.add(map.error().message);
        }
        if (problems.empty() && campaigns.find(campaign.story()) != nullptr) {
            problems.add("storyId is " + std::to_string(campaign.story()) + ", which another campaign has");
        }
        if (!problems.empty()) {
            return Error{file.name + ": " + problems.list().front()};
        }
        campaign.name = file.name.substr(0, file.name.size() - std::string_view(".json").size());
        campaigns.all_.push_back(std::move(campaign));
    }
    return campaigns;
}

const Campaign* Campaigns::find(std::int64_t story) const {
    const auto found = std::ranges::find(all_, story, &Campaign::story);
    return found != all_.end() ? &*found : nullptr;
}

std::string Tracking::url(std::string_view what) const {
    return server + "/track/" + std::string(what) + "?story=" + std::to_string(story) +
           "&delivery=" + std::to_string(delivery) + "&resp_type=pixel";
}

std::string filled(std::string_view text, const Tracking& tracking) {
    const std::array<Placeholder, 5> values{{
        {"{{server}}", tracking.server},
        {"{{story}}", std::to_string(tracking.story)},
        {"{{impression}}", tracking.url("impression")},
        {"{{viewable}}", tracking.url("viewable")},
        {"{{click}}", tracking.url("click")},
    }};
    return fillIn(text, values);
}

} // namespace zentavo::devserver
