#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace bench {

/// What a collector has seen so far. Lies in memory that the collector's process shares with the process that is
/// measured and with the one that measures, so that nobody has to ask over the network.
struct Traffic {
    std::atomic<std::uint64_t> connections{0};
    std::atomic<std::uint64_t> requests{0};      ///< received whole, whatever was answered
    std::atomic<std::uint64_t> bodyBytes{0};     ///< of all requests together
    std::atomic<std::uint64_t> lastBodyBytes{0}; ///< of the request received last
    std::atomic<std::int64_t> firstAt{0};        ///< `steadyNanoseconds` of the first request's last byte
    std::atomic<std::int64_t> lastAt{0};
};

/// Looks every `step` whether `count` requests have arrived. False when `limit` has passed first.
bool waitForRequests(const Traffic& traffic, std::uint64_t count, std::chrono::milliseconds limit,
                     std::chrono::microseconds step = std::chrono::milliseconds(1));

/// The shared piece of memory itself: one process creates it, others attach to its file descriptor, which child
/// processes inherit.
class SharedTraffic {
public:
    SharedTraffic();
    explicit SharedTraffic(int descriptor);
    ~SharedTraffic();
    SharedTraffic(const SharedTraffic&) = delete;
    SharedTraffic& operator=(const SharedTraffic&) = delete;

    Traffic& operator*() const noexcept { return *traffic_; }
    Traffic* operator->() const noexcept { return traffic_; }
    int descriptor() const noexcept { return descriptor_; }

private:
    void map();

    int descriptor_;
    Traffic* traffic_ = nullptr;
};

} // namespace bench
