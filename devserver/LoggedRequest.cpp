#include "devserver/LoggedRequest.h"

#include <algorithm>
#include <cstdint>
#include <span>

#include "devserver/Text.h"
#include "zentavo/foundation/Base64.h"

namespace zentavo::devserver {

namespace {

/// For the object itself and its strings' own bookkeeping.
constexpr std::size_t weightOfNothing = 600;

std::string_view name(LoggedRequest::BodyKind kind) noexcept {
    switch (kind) {
    case LoggedRequest::BodyKind::json:
        return "json";
    case LoggedRequest::BodyKind::text:
        return "text";
    case LoggedRequest::BodyKind::bytes:
        return "base64";
    case LoggedRequest::BodyKind::none:
        break;
    }
    return "none";
}

} // namespace

std::string_view LoggedRequest::servicePath() const noexcept { return ServicePath::of(request.path).path; }

std::size_t LoggedRequest::weight() const noexcept {
    std::size_t bytes = weightOfNothing + request.path.size() + request.body.size() + fault.size();
    for (const auto& [key, value] : request.headers) {
        bytes += key.size() + value.size() + 64;
    }
    for (const QueryItem& item : request.query) {
        bytes += item.name.size() + (item.value ? item.value->size() : 0) + 72;
    }
    bytes += findings.event.size() + findings.uid.size() + findings.screen.size() + findings.customer.size();
    // Problems quote names in short, so that their number says enough.
    return bytes + 160 * std::min(findings.problems.count(), Problems::maximum);
}

void LoggedRequest::writeSummary(JSONWriter& writer) const {
    const auto member = [&](std::string_view key, const auto& value) {
        writer.key(key);
        writer.value(value);
    };
    const auto filled = [&](std::string_view key, const std::string& text) {
        if (!text.empty()) {
            member(key, text);
        }
    };
    member("number", static_cast<std::int64_t>(number));
    member("time", utcTimestamp(time));
    member("twin", devserver::name(twin));
    member("method", request.method);
    member("path", request.path);
    writer.key("status");
    if (status) {
        writer.value(static_cast<std::int64_t>(*status));
    } else {
        writer.null();
    }
    filled("fault", fault);
    filled("event", findings.event);
    filled("uid", findings.uid);
    filled("screen", findings.screen);
    filled("customer", findings.customer);
    writer.key("problems");
    writer.beginList();
    for (const std::string& problem : findings.problems.list()) {
        writer.value(problem);
    }
    writer.endList();
    member("body_kind", name(bodyKind));
    member("body_bytes", static_cast<std::int64_t>(request.body.size()));
}

std::string LoggedRequest::summary() const {
    JSONWriter writer;
    writer.beginMap();
    writeSummary(writer);
    writer.endMap();
    return *writer.finish(); // all that the log keeps is UTF-8
}

void LoggedRequest::write(JSONWriter& writer) const {
    writer.beginMap();
    writeSummary(writer);
    Map query;
    for (const QueryItem& item : request.query) {
        query.set(item.name, item.value ? Value(*item.value) : Value());
    }
    Map headers;
    for (const auto& [key, value] : request.headers) {
        const std::string* earlier = headers.contains(key) ? headers.find(key)->asString() : nullptr;
        headers.set(key, earlier != nullptr ? *earlier + ", " + value : value);
    }
    writer.key("query");
    writer.value(query);
    writer.key("headers");
    writer.value(headers);
    writer.key("body");
    writeBody(writer);
    writer.endMap();
}

void LoggedRequest::writeBody(JSONWriter& writer) const {
    const std::string& body = request.body;
    switch (bodyKind) {
    case BodyKind::none:
        writer.null();
        return;
    case BodyKind::json: {
        // As it was sent, so that numbers and double members stay what they were. Line breaks stand only between tokens.
        std::string line = body;
        std::ranges::replace_if(
            line, [](char c) { return c == '\n' || c == '\r'; }, ' ');
        writer.raw(line);
        return;
    }
    case BodyKind::text:
        writer.value(body);
        return;
    case BodyKind::bytes:
        writer.value(base64::encode(std::span(reinterpret_cast<const std::uint8_t*>(body.data()), body.size())));
        return;
    }
}

} // namespace zentavo::devserver
