#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include <httplib.h>

#include "devserver/Connection.h"
#include "devserver/FaultPlan.h"
#include "devserver/RequestLog.h"
#include "devserver/Slots.h"

namespace zentavo::devserver {

/// Tells the live page what happens, as server-sent events:
///   hello    {"server", "clearings"}: first; another server or count of clearings makes the page start over
///   request  the summary of a logged request
///   skipped  {"count"}: requests that came too fast to be told
///   cleared  {"clearings"}: the log was emptied
///   status   {"kept", "total", "dropped", "with_problems", "faults"}: after changes, and now and then
/// Each viewer has a thread and keeps nothing but its place in the log; a slow one misses requests, not memory.
class LiveStream {
public:
    static constexpr int maximumViewers = 64;

    LiveStream(const RequestLog& log, const FaultPlan& faults);

    /// Answers with the stream, from behind request number `since` on.
    void open(std::uint64_t since, Connection& connection, httplib::Response& response);
    /// The counters and faults, as the "status" event has them.
    std::string status() const;

private:
    class Viewer;

    const RequestLog& log_;
    const FaultPlan& faults_;
    /// Tells one run of the server from another.
    const std::string server_;
    Slots viewers_{maximumViewers};
};

} // namespace zentavo::devserver
