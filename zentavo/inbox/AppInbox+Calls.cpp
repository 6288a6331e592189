#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/DecimalInteger.h"
#include "zentavo/foundation/Printable.h"
#include "zentavo/inbox/AppInbox.h"
#include "zentavo/inbox/AppInboxOperation.h"
#include "zentavo/inbox/DecodingDiagnostic.h"
#include "zentavo/inbox/InboxAnswer.h"
#include "zentavo/inbox/InboxResponses.h"

namespace zentavo {

namespace {

using Data = std::optional<std::string>;
using Failure = std::optional<Error>;

void send(const BaseOperation& operation, const std::optional<URL>& url, const char* method, const Map& body,
          HTTPClient::Completion completion) {
    if (url) {
        operation.httpClient->request(*url, method, body, std::move(completion));
    }
}

/// For the calls that cannot do without a number: the service would take another account for ours.
std::int64_t portalNumber(const std::string& portalId) {
    const auto number = decimalInteger(portalId);
    if (!number) {
        fatalError("the inbox needs a portal id that is a number, not \"" + portalId + "\"");
    }
    return *number;
}

/// Where an answer brought no data. That there is an error then is taken for granted.
void tellTransportError(const Zentavo::State& state, const Failure& error) {
    if (!error) {
        fatalError("an answer of the inbox service brought neither data nor an error");
    }
    state.platform->systemLog->write(platform::LogLevel::error, error->message);
}

template <class Response>
Result<Response, DecodingFailure> readAnswer(const std::string& data, const Zentavo::State& state) {
    return readInboxAnswer<Response>(data, [&](const std::string& line) { state.log->write(printable(line)); });
}

} // namespace

void AppInbox::forceFetchInboxItem(std::vector<std::string> catalogId, std::int64_t page,
                                   std::function<void(std::vector<InboxItem>)> completion) {
    entryPoint("forceFetchInboxItem", [&] {
        const std::int64_t portal = decimalInteger(portalId().value_or("0")).value_or(0);
        const Addressee to = addressee();
        appInboxOperation_->fetch(
            state_->account()->endpoints, to.lookupId, to.lookupType, portal, catalogId, to.destinationId, page,
            pageLimit(),
            [weak = weak_from_this(), completion = std::move(completion)](const Data& data, const Failure& error) {
                const auto self = weak.lock();
                if (!self) {
                    return;
                }
                if (!data || data->empty()) {
                    tellTransportError(*self->state_, error);
                    return;
                }
                auto response = readAnswer<InboxItemAPIResponse>(*data, *self->state_);
                if (!response) {
                    self->state_->platform->console->writeLine(diagnostic(response.error()));
                    return;
                }
                const auto messages = self->keepMessages(std::move(*response).entries());
                if (completion) {
                    completion(*messages);
                }
            });
    });
}

void AppInbox::fetchAllCatalog(std::function<void(std::vector<Catalog>)> completion) {
    entryPoint("fetchAllCatalog", [&] {
        const auto portal = portalId();
        if (!portal) {
            state_->log->write("ERROR WHEN FETCHING LABELS");
            return;
        }
        const Addressee to = addressee();
        const Map body{{"lookupId", to.lookupId},
                       {"lookupType", to.lookupType},
                       {"portalId", portalNumber(*portal)},
                       {"destinationId", to.destinationId}};
        auto url = AppInboxOperation::url(state_->account()->endpoints, "/catalog/performance");
        if (url) {
            url = url->withQueryItems({{"_network_id", *portal}});
        }
        send(*baseOperation(), url, "POST", body,
             [weak = weak_from_this(), completion = std::move(completion)](const Data& data, const Failure& error) {
                 const auto self = weak.lock();
                 if (!self) {
                     return;
                 }
                 if (!data) {
                     tellTransportError(*self->state_, error);
                     return;
                 }
                 auto response = readAnswer<CatalogAPIResponse>(*data, *self->state_);
                 if (!response) {
                     self->state_->log->write(printable(response.error().message));
                 } else if (completion) {
                     completion(std::move(*response).entries());
                 }
             });
    });
}

void AppInbox::countUnreadMessage(std::function<void(std::int64_t)> completion) {
    entryPoint("countUnreadMessage", [&] {
        const Addressee to = addressee();
        const Map body{{"lookupId", to.lookupId},
                       {"lookupType", to.lookupType},
                       {"portalId", portalNumber(portalId().value_or("0"))},
                       {"destinationId", to.destinationId}};
        send(*baseOperation(), AppInboxOperation::url(state_->account()->endpoints, "/message/count-unread"), "POST",
             body,
             [weak = weak_from_this(), state = state_, completion = std::move(completion)](const Data& data,
                                                                                           const Failure&) {
                 const auto response = data ? readAnswer<UnreadMessageAPIResponse>(*data, *state) : DecodingFailure();
                 if (!response) {
                     return;
                 }
                 const auto self = weak.lock();
                 if (!self) {
                     fatalError("the inbox is gone before its unread messages were counted");
                 }
                 self->keepUnreadCount(response->total());
                 if (completion) {
                     completion(self->numUnreadMessage().value_or(0));
                 }
             });
    });
}

void AppInbox::getMessageById(const std::string& messageId, std::function<void(InboxItem)> completion) {
    entryPoint("getMessageById", [&] {
        const auto portal = portalId();
        if (!portal) {
            state_->log->write("CUSTOMER ID NULL");
            return;
        }
        const Addressee to = addressee();
        // No destination: an id is enough.
        const Map body{{"lookupId", to.lookupId}, {"lookupType", to.lookupType}, {"portalId", portalNumber(*portal)}};
        // The service knows the path with both slashes.
        const std::string path = "/message//" + URL::encodeComponent(messageId);
        send(*baseOperation(), AppInboxOperation::url(state_->account()->endpoints, path), "POST", body,
             [state = state_, completion = std::move(completion)](const Data& data, const Failure&) {
                 if (!data) {
                     return;
                 }
                 auto response = readAnswer<GetMessageByIdAPIResponse>(*data, *state);
                 if (!response) {
                     state->log->write(printable(response.error().message));
                 } else if (completion) {
                     completion(std::move(response->data));
                 }
             });
    });
}

void AppInbox::modifyMessageStatus(const std::vector<std::string>& ids, ModifyAction action) {
    entryPoint("modifyMessageStatus", [&] {
        const Addressee to = addressee();
        // This call alone spells its destination so.
        const Map body{{"ids", List(ids.begin(), ids.end())}, {"status", static_cast<int>(action)},
                       {"destination_id", to.destinationId},  {"lookupId", to.lookupId},
                       {"lookupType", to.lookupType},         {"portalId", portalNumber(portalId().value_or("0"))}};
        send(*baseOperation(), AppInboxOperation::url(state_->account()->endpoints, "/message"), "PUT", body,
             [log = state_->log](const Data& data, const Failure&) {
                 const auto answer = json::readMap(data.value_or(""));
                 if (!answer) {
                     return;
                 }
                 KeyedDecoder decoder(*answer);
                 const HTTPResponse code = decodeHTTPResponse(decoder, "code");
                 if (!decoder.failed() && code == HTTPResponse::sucess) {
                     log->write("MODIFY SUCCESS");
                 }
             });
    });
}

void AppInbox::markAllAsRead() {
    entryPoint("markAllAsRead", [&] {
        const Addressee to = addressee();
        const Map body{{"lookupId", to.lookupId},
                       {"lookupType", to.lookupType},
                       {"destinationId", to.destinationId},
                       {"portalId", portalNumber(portalId().value_or("0"))}};
        send(*baseOperation(), AppInboxOperation::url(state_->account()->endpoints, "/message/mark-all-as-read"), "PUT",
             body, [weak = weak_from_this()](const Data& data, const Failure& error) {
                 const auto self = weak.lock();
                 if (!self) {
                     return;
                 }
                 if (data) {
                     self->keepUnreadCount(0);
                 } else {
                     tellTransportError(*self->state_, error);
                 }
             });
    });
}

} // namespace zentavo
