#include "devserver/ScriptedFault.h"

#include <algorithm>

#include "devserver/QueryReader.h"
#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

using Kind = ScriptedFault::Kind;

constexpr std::int64_t mostTimes = 1'000'000;
constexpr std::int64_t longestDelay = 600'000; // milliseconds
constexpr std::int64_t largestBody = 1 << 30;

/// At most one of the parameters that say what the answer is may be given.
void choose(ScriptedFault& fault, Kind kind, Problems& problems) {
    if (fault.kind != Kind::plain) {
        problems.add("reset, hang, empty, body, size and redirect exclude each other");
    }
    fault.kind = kind;
}

void readKind(ScriptedFault& fault, QueryReader& reader, Problems& problems) {
    if (const auto where = reader.word("reset", {"1", "before", "mid"})) {
        choose(fault, *where == "mid" ? Kind::resetMidway : Kind::resetBefore, problems);
    }
    if (reader.flag("hang")) {
        choose(fault, Kind::hang, problems);
    }
    if (reader.flag("empty")) {
        choose(fault, Kind::empty, problems);
    }
    if (auto text = reader.text("body")) {
        choose(fault, Kind::body, problems);
        fault.text = *std::move(text);
    }
    if (const auto size = reader.number("size", 0, largestBody)) {
        choose(fault, Kind::size, problems);
        fault.size = static_cast<std::size_t>(*size);
    }
    if (auto location = reader.text("redirect")) {
        choose(fault, Kind::redirect, problems);
        fault.text = *std::move(location);
        if (!URL::parse(fault.text)) {
            problems.add("redirect is " + inQuotes(fault.text) + "; expected a URL");
        }
    }
}

void checkCombination(const ScriptedFault& fault, Problems& problems) {
    if (fault.kind == Kind::redirect && fault.status && (*fault.status < 300 || *fault.status > 399)) {
        problems.add("a redirect needs a status from 300 to 399");
    }
    if (fault.sessionId && fault.kind != Kind::plain) {
        problems.add("session_id goes into the plain answer only");
    }
    const bool answered = fault.kind != Kind::resetBefore && fault.kind != Kind::hang;
    if (!answered && (fault.status || fault.drip)) {
        problems.add("no status or drip without an answer");
    }
    if (fault.kind == Kind::plain && !fault.status && !fault.drip && !fault.sessionId && fault.delay.count() == 0) {
        problems.add("nothing to go wrong: give status, delay, reset, hang, empty, body, size, redirect, drip or "
                     "session_id");
    }
}

} // namespace

ScriptedFault ScriptedFault::from(const std::vector<QueryItem>& query, Problems& problems) {
    QueryReader reader(query, problems);
    ScriptedFault fault;
    fault.path = reader.text("path").value_or("");
    if (fault.path != "*" && !fault.path.starts_with('/')) {
        problems.add("path is " + inQuotes(fault.path) + "; expected a service's path such as /event, or *");
    }
    fault.times = static_cast<int>(reader.number("times", 1, mostTimes).value_or(1));
    if (const auto status = reader.number("status", 200, 599)) {
        fault.status = static_cast<int>(*status);
    }
    fault.delay = std::chrono::milliseconds(reader.number("delay", 0, longestDelay).value_or(0));
    if (const auto pace = reader.number("drip", 1, largestBody)) {
        fault.drip = static_cast<std::size_t>(*pace);
    }
    fault.sessionId = reader.text("session_id");
    readKind(fault, reader, problems);
    reader.finish();
    checkCombination(fault, problems);
    return fault;
}

bool ScriptedFault::matches(Twin twin, std::string_view servicePath) const {
    return path == "*" || path == servicePath || (twin == Twin::sandbox && ServicePath::of(path).path == servicePath);
}

bool ScriptedFault::isSlow() const noexcept {
    return kind == Kind::hang || kind == Kind::size || drip || delay.count() > 0;
}

std::string ScriptedFault::description() const {
    std::string words;
    const auto word = [&](std::string_view key, const std::string& value) {
        words += (words.empty() ? "" : " ") + std::string(key) + "=" + value;
    };
    switch (kind) {
    case Kind::plain:
        break;
    case Kind::resetBefore:
        word("reset", "before");
        break;
    case Kind::resetMidway:
        word("reset", "mid");
        break;
    case Kind::hang:
        word("hang", "1");
        break;
    case Kind::empty:
        word("empty", "1");
        break;
    case Kind::body:
        word("body", inQuotes(text));
        break;
    case Kind::size:
        word("size", std::to_string(size));
        break;
    case Kind::redirect:
        word("redirect", inQuotes(text));
        break;
    }
    if (status) {
        word("status", std::to_string(*status));
    }
    if (delay.count() > 0) {
        word("delay", std::to_string(delay.count()));
    }
    if (drip) {
        word("drip", std::to_string(*drip));
    }
    if (sessionId) {
        word("session_id", inQuotes(*sessionId));
    }
    return words;
}

} // namespace zentavo::devserver
