#include "devserver/PushEndpoints.h"

#include <utility>

#include "devserver/HTTPFront.h"
#include "devserver/Text.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/URL.h"

namespace zentavo::devserver {

namespace {

void answer(httplib::Response& response, int status, const Map& body) {
    const auto text = json::write(body);
    answerJSON(response, status, text ? *text : "{}");
}

bool isThisMachine(std::string_view host) { return host == "127.0.0.1" || host == "localhost" || host == "::1"; }

} // namespace

PushEndpoints::PushEndpoints(std::string base, std::shared_ptr<EndpointStore> store,
                             std::unique_ptr<Distributor> distributor, std::string problem,
                             std::shared_ptr<PushLog> log)
    : base_(std::move(base)), store_(std::move(store)), distributor_(std::move(distributor)),
      problem_(std::move(problem)), log_(std::move(log)) {}

std::optional<std::string> PushEndpoints::idOf(std::string_view url) const {
    const auto there = URL::parse(url);
    const auto here = URL::parse(base_);
    if (!there || !here || there->port() != here->port() || there->query() || !there->path().starts_with(path) ||
        !(isThisMachine(there->host()) || there->host() == here->host()) || there->scheme() != "http") {
        return std::nullopt;
    }
    return std::string(there->path().substr(path.size()));
}

std::vector<PushEndpoints::Outcome> PushEndpoints::post(const std::vector<Posting>& postings) {
    std::vector<Outcome> outcomes(postings.size());
    std::vector<Distributor::Message> messages;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < postings.size(); ++i) {
        const Posting& posting = postings[i];
        const auto registration = store_->at(posting.endpoint);
        if (!registration) {
            outcomes[i] = {404, "no app has this endpoint; it has been unregistered, or never was"};
        } else if (posting.bytes.empty()) {
            outcomes[i] = {400, "the message is empty"};
        } else if (posting.bytes.size() > maximumMessage) {
            outcomes[i] = {413, "the message has " + std::to_string(posting.bytes.size()) + " bytes; " +
                                    std::to_string(maximumMessage) + " are the most"};
        } else if (!distributor_) {
            outcomes[i] = {503, "no distributor runs: " + problem_};
        } else {
            messages.push_back({*registration, posting.messageId, posting.bytes});
            places.push_back(i);
        }
    }
    const auto reasons = messages.empty() ? std::vector<std::string>() : distributor_->deliver(messages);
    for (std::size_t i = 0; i < reasons.size(); ++i) {
        if (!reasons[i].empty()) {
            outcomes[places[i]] = {502, reasons[i]};
        }
    }
    return outcomes;
}

void PushEndpoints::handle(const IncomingRequest& request, httplib::Response& response) {
    if (request.method == "GET") {
        // By this a sender tells an endpoint from any other URL.
        answer(response, 200, {{"unifiedpush", Map{{"version", 1}}}});
        return;
    }
    if (request.method != "POST") {
        response.set_header("Allow", "GET, POST");
        answer(response, 405, {{"error", "an endpoint takes POST"}});
        return;
    }
    const auto slot = waiting_.take();
    if (!slot) {
        answer(response, 503, {{"error", "too many messages wait for their apps already"}});
        return;
    }
    const std::uint64_t number = log_->next();
    const std::string id = log_->idFor("post", number);
    log_->sent(number, id, "a POST to the endpoint", request.body);
    Outcome outcome{413, "the body is too large"};
    if (request.bodyState == IncomingRequest::Body::complete) {
        outcome = post({{request.path.substr(path.size()), id, request.body}}).front();
    }
    const bool sealed = request.header("Content-Encoding") == "aes128gcm";
    log_->arrived(number, {{"", base_ + request.path, sealed, request.body.size(), outcome.status, outcome.reason}});
    if (outcome.status == Outcome::delivered) {
        response.status = outcome.status;
    } else {
        answer(response, outcome.status, {{"error", outcome.reason}});
    }
}

bool PushEndpoints::drop(std::string_view token) {
    const auto registration = store_->find(token);
    if (!registration || !store_->remove(token)) {
        return false;
    }
    if (distributor_) {
        distributor_->tellUnregistered(*registration);
    }
    return true;
}

bool PushEndpoints::renew(std::string_view token) {
    const auto registration = store_->renew(token);
    if (registration && distributor_) {
        distributor_->tellEndpoint(*registration);
    }
    return registration.has_value();
}

Map PushEndpoints::map() const {
    List list;
    for (const EndpointStore::Registration& each : store_->all()) {
        list.emplace_back(Map{{"token", each.token},
                              {"service", each.service},
                              {"description", each.description},
                              {"vapid", each.vapid},
                              {"version", each.version},
                              {"endpoint", base_ + std::string(path) + each.id}});
    }
    return {{"distributor", distributor_ ? std::string("runs") : problem_}, {"registrations", std::move(list)}};
}

void PushEndpoints::stop() {
    if (distributor_) {
        distributor_->stop();
    }
}

} // namespace zentavo::devserver
