#include "devserver/DeliveryLog.h"

#include <algorithm>
#include <ranges>
#include <utility>

#include "devserver/BodyChecks.h"
#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

/// Names come from outside and are kept for long.
constexpr std::size_t longestName = 200;
/// Bytes by which an event is recognised in an app's trace.
constexpr std::size_t comparedName = 60;

std::string shortened(const std::string& text) {
    return text.size() <= longestName ? text : utf8Text(text.substr(0, longestName)) + "…";
}

std::string limitIn(const Map& content, std::string_view key, std::string_view name) {
    const Map* limit = mapMember(content, key);
    if (limit == nullptr) {
        return {};
    }
    const auto word = [&](std::string_view member) {
        const std::string* text = textMember(*limit, member);
        return text != nullptr ? *text : std::string("?");
    };
    const Value* value = limit->find("value");
    const auto count = value != nullptr ? value->exactInt64() : std::nullopt;
    return std::string(name) + ": " + (count ? std::to_string(*count) : "?") + " × " + word("event") + " " +
           word("timeUnit");
}

std::string limitsOf(const Map& content) {
    std::string all;
    for (const auto& [key, name] : {std::pair{"frequencyCapping", "story"},
                                    {"destinationFrequencyCapping", "destination"},
                                    {"zoneFrequencyCapping", "zone"}}) {
        const std::string limit = limitIn(content, key, name);
        all += (all.empty() || limit.empty() ? "" : ", ") + limit;
    }
    return all;
}

} // namespace

std::string DeliveryLog::Offer::verdict() const {
    if (clicks > 0) {
        return "shown and clicked";
    }
    if (impressions + viewables > 0) {
        return "shown";
    }
    if (neverShown) {
        return "not shown: apps leave out the type " + type;
    }
    if (!contentRefused.empty()) {
        return "not shown: its content was refused, " + contentRefused;
    }
    if (contentGiven || layoutAsked) {
        return handWritten && !contentGiven ? "chosen: its layout was asked for, its content was not"
                                            : "chosen: its content was handed out";
    }
    return "nothing heard of it yet";
}

Map DeliveryLog::Offer::map(const TraceReport::Campaign* traced) const {
    return {{"name", name},
            {"story_id", story},
            {"template", type},
            {"hand_written", handWritten},
            {"limits", limits},
            {"layout_asked", layoutAsked},
            {"content", contentGiven             ? "given"
                        : contentRefused.empty() ? "not asked for"
                                                 : contentRefused},
            {"impression", impressions},
            {"viewable", viewables},
            {"click", clicks},
            {"left_out", traced != nullptr ? traced->leftOut : std::string()},
            {"verdict", verdict()}};
}

std::string DeliveryLog::Entry::verdict() const {
    if (!refusal.empty()) {
        return "nothing was offered: " + refusal;
    }
    if (offers.empty()) {
        return "nothing was offered: no campaign waits for this event";
    }
    const auto heard = std::ranges::find_if(offers, [](const Offer& offer) {
        return offer.impressions + offer.viewables + offer.clicks > 0 || offer.layoutAsked || offer.contentGiven ||
               !offer.contentRefused.empty();
    });
    if (trace && (heard == offers.end() || !trace->isPresented() || !trace->closedBy.empty())) {
        return trace->isPresented() && trace->chosen && *trace->chosen < offers.size()
                   ? offers[*trace->chosen].name + ": " + trace->verdict()
                   : trace->verdict();
    }
    if (heard != offers.end()) {
        return heard->name + ": " + heard->verdict();
    }
    if (std::ranges::all_of(offers, &Offer::neverShown)) {
        return "not shown: apps leave out " + std::string(offers.size() == 1 ? "its type" : "their types");
    }
    return "nothing heard since; the app's trace says whether it was capped, came while another message was on screen, "
           "or met no user interface";
}

bool DeliveryLog::Entry::fits(const TraceReport& report) const {
    // Traces cut long names elsewhere.
    const auto beginning = [](std::string_view name) { return name.substr(0, comparedName); };
    const bool isCut = report.campaigns.size() == TraceReport::mostCampaigns;
    const auto offered = std::views::take(offers, isCut ? TraceReport::mostCampaigns : offers.size());
    return beginning(event) == beginning(report.event) &&
           (!report.isRead() ||
            std::ranges::equal(report.campaigns, offered, {}, &TraceReport::Campaign::story, &Offer::story));
}

Map DeliveryLog::Entry::map() const {
    List campaigns;
    for (std::size_t i = 0; i < offers.size(); ++i) {
        const bool told = trace && i < trace->campaigns.size();
        campaigns.emplace_back(offers[i].map(told ? &trace->campaigns[i] : nullptr));
    }
    return {{"number", static_cast<std::int64_t>(number)},
            {"time", utcTimestamp(time)},
            {"twin", devserver::name(twin)},
            {"event", event},
            {"uid", uid},
            {"campaigns", std::move(campaigns)},
            {"traced", trace ? trace->verdict() : std::string()},
            {"verdict", verdict()}};
}

void DeliveryLog::keep(Entry entry) {
    entry.time = std::chrono::system_clock::now();
    entries_.push_back(std::move(entry));
    if (entries_.size() > mostKept) {
        entries_.pop_front();
    }
}

std::uint64_t DeliveryLog::offered(Twin twin, const Findings& findings, const std::vector<const Campaign*>& campaigns) {
    Entry entry;
    entry.twin = twin;
    entry.event = shortened(findings.event);
    entry.uid = shortened(findings.uid);
    for (const Campaign* each : campaigns) {
        Offer offer;
        offer.name = each->name;
        offer.story = each->story();
        offer.type = each->text("template");
        offer.handWritten = each->isHandWritten();
        offer.neverShown = each->isNeverShown();
        offer.limits = limitsOf(each->webContent);
        entry.offers.push_back(std::move(offer));
    }
    MutexLock lock(mutex_);
    entry.number = ++lastNumber_;
    keep(std::move(entry));
    return lastNumber_;
}

void DeliveryLog::refused(Twin twin, const Findings& findings) {
    Entry entry;
    entry.twin = twin;
    entry.event = shortened(findings.event);
    entry.uid = shortened(findings.uid);
    entry.refusal = shortened(findings.problems.list().front());
    MutexLock lock(mutex_);
    entry.number = ++lastNumber_;
    keep(std::move(entry));
}

DeliveryLog::Offer* DeliveryLog::newest(std::int64_t story, std::uint64_t& delivery) {
    for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
        const auto offer = std::ranges::find(entry->offers, story, &Offer::story);
        if (offer != entry->offers.end()) {
            delivery = entry->number;
            return &*offer;
        }
    }
    return nullptr;
}

void DeliveryLog::layoutAsked(std::int64_t story) {
    MutexLock lock(mutex_);
    std::uint64_t delivery = 0;
    if (Offer* const offer = newest(story, delivery)) {
        offer->layoutAsked = true;
    }
}

std::uint64_t DeliveryLog::contentAsked(std::int64_t story, const std::string& refusal) {
    MutexLock lock(mutex_);
    std::uint64_t delivery = 0;
    if (Offer* const offer = newest(story, delivery)) {
        offer->contentGiven = refusal.empty();
        offer->contentRefused = shortened(refusal);
    }
    return delivery;
}

void DeliveryLog::tracked(std::uint64_t delivery, std::int64_t story, std::string_view what) {
    MutexLock lock(mutex_);
    const auto entry = std::ranges::find(entries_, delivery, &Entry::number);
    if (entry == entries_.end()) {
        return;
    }
    const auto offer = std::ranges::find(entry->offers, story, &Offer::story);
    if (offer != entry->offers.end()) {
        ++(what == "click" ? offer->clicks : what == "viewable" ? offer->viewables : offer->impressions);
    }
}

std::uint64_t DeliveryLog::traced(const TraceReport& report) {
    MutexLock lock(mutex_);
    const auto entry = std::find_if(entries_.rbegin(), entries_.rend(), [&](const Entry& each) {
        const bool continues = each.trace && each.trace->isPresented() && each.trace->closedBy.empty() &&
                               each.trace->chosen == report.chosen;
        return each.fits(report) && (report.closedBy.empty() ? !each.trace : continues);
    });
    if (entry == entries_.rend()) {
        return 0;
    }
    entry->trace = report;
    return entry->number;
}

void DeliveryLog::clear() {
    MutexLock lock(mutex_);
    entries_.clear();
}

List DeliveryLog::list() const {
    MutexLock lock(mutex_);
    List all;
    for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
        all.emplace_back(entry->map());
    }
    return all;
}

} // namespace zentavo::devserver
