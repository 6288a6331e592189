#include "zentavo/websocket/Delivery.h"

#include <utility>

#include "zentavo/foundation/Fault.h"

namespace zentavo::websocket {

void Delivery::event(Kind kind, std::string_view content, DeliveryTarget& target) {
    if (!queue_) {
        call(kind, content, target);
        return;
    }
    batch_.items.push_back({kind, content.size()});
    batch_.bytes.append(content);
}

void Delivery::call(Kind kind, std::string_view content, DeliveryTarget& target) {
    if (detached_.load(std::memory_order_acquire)) {
        return;
    }
    entryPoint("WebSocket handler", [&] {
        switch (kind) {
        case Kind::open:
            target.deliverOpen();
            break;
        case Kind::text:
            target.deliverMessage(MessageKind::text, content);
            break;
        case Kind::binary:
            target.deliverMessage(MessageKind::binary, content);
            break;
        case Kind::drain:
            target.deliverDrain();
            break;
        case Kind::close:
            target.deliverClose();
            break;
        }
    });
}

void Delivery::run(const Batch& batch, DeliveryTarget& target) {
    std::string_view rest = batch.bytes;
    for (const Item& item : batch.items) {
        call(item.kind, rest.substr(0, item.size), target);
        rest.remove_prefix(item.size);
    }
}

void Delivery::post(std::shared_ptr<DeliveryTarget> target) {
    if (batch_.items.empty()) {
        return;
    }
    auto batch = std::make_shared<Batch>(std::exchange(batch_, {}));
    const std::size_t size = batch->size();
    outstanding_ += size;
    queue_->async([self = shared_from_this(), target = std::move(target), batch, size] {
        self->run(*batch, *target);
        const std::size_t before = self->outstanding_.fetch_sub(size);
        if (before > bound && before - size <= bound) {
            self->resume_();
        }
    });
}

} // namespace zentavo::websocket
