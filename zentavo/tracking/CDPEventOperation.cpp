#include "zentavo/tracking/CDPEventOperation.h"

namespace zentavo {

Result<std::shared_ptr<const std::string>> CDPEventOperation::text(const EventBody& body) const {
    auto text = body.text(expectedBytes_.load(std::memory_order_relaxed));
    if (!text) {
        return text.error();
    }
    // A number may get another digit or two, and the writer wants some room ahead.
    expectedBytes_.store(text->size() + 48, std::memory_order_relaxed);
    return std::make_shared<const std::string>(*std::move(text));
}

void CDPEventOperation::send(Result<std::shared_ptr<const std::string>> text, const Endpoints& endpoints,
                             const std::string& portalId, const std::string& propId,
                             HTTPClient::Completion completion) const {
    URL target = eventURL(endpoints.collectionFor(portalId), portalId, propId);
    if (const auto& log = httpClient->log(); log->enabled()) {
        log->write("TrackEvent: URL: " + target.text());
        log->write("TrackEvent: BODY: " + (text ? **text : text.error().message));
    }
    httpClient->request(std::move(target), "POST", std::move(text), std::move(completion));
}

URL CDPEventOperation::eventURL(const std::string& base, const std::string& portalId, const std::string& propId) const {
    {
        MutexLock lock(mutex_);
        if (last_ && last_->propId == propId && last_->portalId == portalId && last_->base == base) {
            return last_->url;
        }
    }
    URL formed =
        urlWithQuery(url(base, "/event"), {{"resp_type", "json"}, {"portal_id", portalId}, {"prop_id", propId}});
    MutexLock lock(mutex_);
    last_ = Formed{base, portalId, propId, formed};
    return formed;
}

} // namespace zentavo
