#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/websocket/Frame.h"

namespace zentavo::websocket {

/// What a connection tells its host.
class DeliveryTarget {
public:
    virtual ~DeliveryTarget() = default;
    virtual void deliverOpen() = 0;
    virtual void deliverMessage(MessageKind kind, std::string_view content) = 0;
    virtual void deliverDrain() = 0;
    virtual void deliverClose() = 0;
};

/// Brings events to the host's queue in their order, all those of one turn of the I/O thread in one block; without a
/// queue it calls at once. Events are made and `post` is called on the I/O thread.
class Delivery : public std::enable_shared_from_this<Delivery> {
public:
    /// `resume` is called on any thread when `full` has come to an end.
    Delivery(std::shared_ptr<platform::DispatchQueue> queue, std::function<void()> resume)
        : queue_(std::move(queue)), resume_(std::move(resume)) {}

    void open(DeliveryTarget& target) { event(Kind::open, {}, target); }
    void message(MessageKind kind, std::string_view content, DeliveryTarget& target) {
        event(kind == MessageKind::text ? Kind::text : Kind::binary, content, target);
    }
    void drain(DeliveryTarget& target) { event(Kind::drain, {}, target); }
    void close(DeliveryTarget& target) { event(Kind::close, {}, target); }

    /// Sends off what has been collected.
    void post(std::shared_ptr<DeliveryTarget> target);
    /// The host is behind: nothing more should be read for now.
    bool full() const noexcept { return outstanding_.load() + batch_.size() > bound; }

    /// From now on nothing is called. Any thread.
    void detach() noexcept { detached_.store(true); }

private:
    enum class Kind : std::uint8_t { open, text, binary, drain, close };
    struct Item {
        Kind kind;
        std::size_t size;
    };
    struct Batch {
        std::vector<Item> items;
        std::string bytes;
        /// Events weigh something by themselves, or a peer that sends empty messages would never be held up.
        std::size_t size() const noexcept { return bytes.size() + items.size() * sizeof(Item); }
    };
    /// Bytes that may wait for the host, contents and items, besides the last message.
    static constexpr std::size_t bound = std::size_t{1} << 20U;

    void event(Kind kind, std::string_view content, DeliveryTarget& target);
    void call(Kind kind, std::string_view content, DeliveryTarget& target);
    void run(const Batch& batch, DeliveryTarget& target);

    const std::shared_ptr<platform::DispatchQueue> queue_;
    const std::function<void()> resume_;
    Batch batch_;
    std::atomic<std::size_t> outstanding_ = 0;
    std::atomic<bool> detached_ = false;
};

} // namespace zentavo::websocket
