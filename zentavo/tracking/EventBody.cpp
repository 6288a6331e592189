#include "zentavo/tracking/EventBody.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "zentavo/foundation/JSONWriter.h"
#include "zentavo/tracking/CDPEvent.h"

namespace zentavo {

namespace {

/// Writes the description as JSON text.
class TextSink {
public:
    explicit TextSink(std::size_t expectedBytes) : writer_(buffer(expectedBytes)) { writer_.beginMap(); }

    void beginMap(std::string_view key) {
        writer_.key(key);
        writer_.beginMap();
    }
    void endMap() { writer_.endMap(); }
    template <class T>
    void entry(std::string_view key, const T& value) {
        writer_.key(key);
        writer_.value(value);
    }
    void entry(std::string_view key, const std::vector<Map>& maps) {
        writer_.key(key);
        writer_.beginList();
        for (const Map& map : maps) {
            writer_.value(map);
        }
        writer_.endList();
    }
    /// `text` is `map` rendered before.
    void rendered(std::string_view key, const Map& map, const Result<std::string>& text) {
        if (!text) {
            entry(key, map); // fails again, and thereby tells where
            return;
        }
        writer_.key(key);
        writer_.raw(*text);
    }
    Result<std::string> finish() {
        writer_.endMap();
        return writer_.finish();
    }

private:
    static std::string buffer(std::size_t bytes) {
        std::string empty;
        empty.reserve(bytes);
        return empty;
    }

    JSONWriter writer_;
};

/// Builds the description as a map.
class MapSink {
public:
    void beginMap(std::string_view key) { open_.push_back({std::string(key), Map()}); }
    void endMap() {
        Map::Entry done = std::move(open_.back());
        open_.pop_back();
        entry(done.key, std::move(done.value));
    }
    void entry(std::string_view key, Value value) {
        Map& map = open_.empty() ? map_ : *open_.back().value.asMap();
        map.set(std::string(key), std::move(value));
    }
    void entry(std::string_view key, const std::vector<Map>& maps) { entry(key, List(maps.begin(), maps.end())); }
    void rendered(std::string_view key, const Map& map, const Result<std::string>&) { entry(key, map); }
    Map take() { return std::move(map_); }

private:
    Map map_;
    /// The maps inside `map_` that are being filled, the innermost last.
    std::vector<Map::Entry> open_;
};

/// A few named texts, for the entries that the SDK itself adds to "extra".
class Texts {
public:
    void add(std::string_view key, std::string_view text) { *(entries_.begin() + count_++) = {key, text}; }
    auto begin() const noexcept { return entries_.begin(); }
    auto end() const noexcept { return begin() + count_; }
    bool contains(std::string_view key) const noexcept {
        return std::any_of(begin(), end(), [&](const auto& entry) { return entry.first == key; });
    }

private:
    std::array<std::pair<std::string_view, std::string_view>, 5> entries_;
    std::ptrdiff_t count_ = 0;
};

const Map* asMap(const std::optional<Value>& value) noexcept { return value ? value->asMap() : nullptr; }
const std::string* asText(const std::optional<Value>& value) noexcept { return value ? value->asString() : nullptr; }

/// Hands the entries of `first` to `sink`, and then those of the layers after it. A key that stands in several layers
/// comes once, from the last of them.
template <class Sink>
void mergeInto(Sink&) {}
template <class Sink, class First, class... Later>
void mergeInto(Sink& sink, const First& first, const Later&... later) {
    for (const auto& [key, value] : first) {
        if (!(later.contains(key) || ...)) {
            sink.entry(key, value);
        }
    }
    mergeInto(sink, later...);
}

} // namespace

EventBody::EventBody(const Zentavo::State& state, std::shared_ptr<const Account> account, const CDPEvent& event,
                     const std::string& portalId, const std::string& propsId)
    : event_(event), account_(std::move(account)), portalId_(event.portal_id.empty() ? portalId : event.portal_id),
      propId_(event.prop_id.empty() ? propsId : event.prop_id),
      stored_(state.storedFacts.facts(account_->store, state.keys, *state.platform->device)),
      attributed_(state.isAssociatedUTM) {}

const char* EventBody::identifyType() const noexcept {
    if (!event_.customerProps.empty()) {
        return "exact";
    }
    return !stored_->customerId.empty() ? "predict" : event_.identifyType.c_str();
}

template <class Sink>
void EventBody::describe(Sink& sink) const {
    sink.beginMap("dims");
    describeDims(sink);
    sink.endMap();
    sink.beginMap("extra");
    describeExtra(sink);
    sink.endMap();
    sink.rendered("context", account_->context, account_->contextText);
    sink.entry("uid", std::string_view(stored_->uid));
    sink.entry("en", std::string_view(event_.en));
    sink.entry("items", event_.items);
    sink.entry("portal_id", std::string_view(portalId_));
    sink.entry("prop_id", std::string_view(propId_));
    sink.entry("resp_type", std::string_view("json"));
    sink.entry("identify_type", std::string_view(identifyType()));
}

template <class Sink>
void EventBody::describeDims(Sink& sink) const {
    if (!event_.userProps.empty()) {
        sink.entry("users", event_.userProps);
    }
    if (!event_.customerProps.empty()) {
        sink.entry("customers", event_.customerProps);
    } else if (!stored_->customerId.empty()) {
        sink.beginMap("customers");
        sink.entry("customer_id", std::string_view(stored_->customerId));
        sink.endMap();
    }
}

template <class Sink>
void EventBody::describeExtra(Sink& sink) const {
    static const Map none;
    const Map* utmEntries = asMap(stored_->utm);
    const Map* atmEntries = asMap(stored_->atm);

    Texts screen;
    if (!event_.screenName.empty()) {
        screen.add("screen_name", event_.screenName);
    }
    if (!event_.screenLabel.empty()) {
        screen.add("screen_label", event_.screenLabel);
    }
    Texts attribution;
    if (const std::string* utm = asText(stored_->utm); utm != nullptr && attributed_) {
        attribution.add("utm", *utm);
    }
    if (const std::string* atm = asText(stored_->atm); atm != nullptr && attributed_) {
        attribution.add("atm", *atm);
    }
    Texts own;
    own.add("identify_type", identifyType());
    if (stored_->clickId) {
        own.add("_clk_bc", *stored_->clickId);
    }
    if (!stored_->sessionId.empty()) {
        own.add("session_id", stored_->sessionId);
    }
    if (!event_.screenType.empty()) {
        own.add("screen_type", event_.screenType);
    }
    own.add("visitor_type", stored_->visitorType);

    mergeInto(sink, utmEntries != nullptr ? *utmEntries : none, atmEntries != nullptr ? *atmEntries : none,
              event_.eventProps, event_.objectProps, screen, attribution, own);
}

Result<std::string> EventBody::text(std::size_t expectedBytes) const {
    // The text is held until the answer is there, perhaps among thousands: what it takes beyond its length counts.
    constexpr std::size_t generous = 128;
    TextSink sink(expectedBytes);
    describe(sink);
    auto text = sink.finish();
    if (text && text->capacity() - text->size() > generous) {
        text->shrink_to_fit();
    }
    return text;
}

Map EventBody::map() const {
    MapSink sink;
    describe(sink);
    return sink.take();
}

} // namespace zentavo
