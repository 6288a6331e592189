#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "support/Job.h"

namespace bench {

/// The values of the benchmark's event, the same as the SDK's program sends.
struct FloorEvent {
    const char* sku = "SKU-20481-BLUE";
    double price = 49.95;
    int quantity = 2;
    const char* list = "home";
    const char* category = "shoes/running";
    const char* brand = "Swift";
    const char* currency = "EUR";
    int position = 7;
    bool available = true;
    double rating = 4.5;
};

/// The yardstick: the least that brings one POST an event to the server. It knows its one event by heart, writes the
/// body by hand into a buffer that is large enough, and hands it to one thread, which keeps four libcurl connections
/// busy. There is no store, no retry, no log, no bound, and nothing is checked.
class FloorClient {
public:
    explicit FloorClient(const Job& job);
    ~FloorClient();
    FloorClient(const FloorClient&) = delete;
    FloorClient& operator=(const FloorClient&) = delete;

    void start();
    void prepare() {}
    void track() { track(event_); }
    void buildAndTrack() { track(FloorEvent()); }

private:
    struct Transfer;

    void track(const FloorEvent& event);
    std::string body(const FloorEvent& event) const;
    bool take(std::string& body);
    void work();

    const FloorEvent event_;
    const std::string url_;
    std::string context_;
    std::size_t bodyBytes_;

    std::mutex mutex_;
    std::deque<std::string> waiting_; ///< guarded by `mutex_`
    bool workerWaits_ = false;        ///< guarded by `mutex_`: it has looked and found nothing
    std::atomic<bool> over_{false};
    int wake_;
    std::thread worker_;
};

} // namespace bench
