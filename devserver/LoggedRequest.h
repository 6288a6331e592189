#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/IncomingRequest.h"
#include "devserver/Service.h"
#include "zentavo/foundation/JSONWriter.h"

namespace zentavo::devserver {

/// A request that a service got, with what was found in it and what it was answered. Never changed once it is logged.
struct LoggedRequest {
    enum class BodyKind { none, json, text, bytes };

    /// Counts from 1 in the order of arrival and is never used twice while the server lives.
    std::uint64_t number = 0;
    std::chrono::system_clock::time_point time;
    Twin twin = Twin::production;
    IncomingRequest request;
    BodyKind bodyKind = BodyKind::none;
    Findings findings;
    /// None when a fault kept the client without an answer.
    std::optional<int> status;
    /// The scripted fault that was played instead of the plain answer; empty for none.
    std::string fault;

    /// The path without the twin's prefix.
    std::string_view servicePath() const noexcept;
    /// About how much memory this takes, in bytes.
    std::size_t weight() const noexcept;
    /// What the page's list shows, on one line.
    std::string summary() const;
    /// Everything, the body included, on one line.
    void write(JSONWriter& writer) const;

private:
    void writeSummary(JSONWriter& writer) const;
    void writeBody(JSONWriter& writer) const;
};

} // namespace zentavo::devserver
