// Each input is the body of a message of the bus: its first byte says who reads it, the rest is the body as the library
// keeps it. Bodies are made well formed first, as the bus lets no other through; beyond that anything goes that has the
// declared type. Signals, which nobody declares, come in other types as well.

#include <array>
#include <string>

#include <gio/gio.h>

#include "fuzz/Check.h"
#include "ports/desktop/ConnectorCall.h"
#include "ports/desktop/Distributors.h"
#include "ports/desktop/MessageBody.h"
#include "ports/desktop/NotificationCodec.h"
#include "ports/desktop/NotificationServer.h"
#include "ports/desktop/PushEndpoint.h"

namespace {

using namespace zentavo;
using desktop::ConnectorCall;
using desktop::Variant;

constexpr std::string_view firstConnector = "org.unifiedpush.Connector1";
constexpr std::string_view secondConnector = "org.unifiedpush.Connector2";

void checkText(const std::string& text) {
    check(g_utf8_validate_len(text.data(), text.size(), nullptr) != FALSE, "a text of the bus is UTF-8 without a NUL");
}

void readConnectorCall(std::string_view interface, const char* method, const Variant& arguments) {
    const auto call = ConnectorCall::read(interface, method, arguments);
    if (!call) {
        check(interface == secondConnector && !call.error().message.empty(), "a refusal says why");
        return;
    }
    for (const std::string& text : {call->token, call->id, call->endpoint}) {
        checkText(text);
    }
    check(call->message.size() <= g_variant_get_size(arguments.get()), "no message is longer than its call");
    const auto endpoint = desktop::readPushEndpoint(call->endpoint);
    check(!endpoint || desktop::isPushToken(*endpoint), "an endpoint is something that senders can use");
}

void readOutcome(const Result<int>& version, int expected) {
    check(version ? *version == expected : !version.error().message.empty(), "a registration is taken, or why not");
}

/// Of an app, its service or its content extension.
void readText(const Variant& arguments) {
    const std::string text = desktop::body::text(arguments);
    checkText(text);
    desktop::isPushToken(text);
    if (const auto notification = desktop::codec::readNotification(text)) {
        check(!notification->request.identifier.empty(), "a notification has an identifier");
    }
    if (const auto sent = desktop::codec::readResponse(text)) {
        check(sent->id.size() <= desktop::codec::maximumIdBytes, "an id is kept");
    }
}

void readTexts(const Variant& arguments) {
    const auto texts = desktop::body::texts(arguments);
    for (const std::string& text : texts) {
        checkText(text);
    }
    check(desktop::body::texts(desktop::body::of(texts)) == texts, "texts travel as they are");
}

void readSignal(const Variant& signal) {
    const auto invoked = desktop::NotificationServer::readText(signal);
    const auto closed = desktop::NotificationServer::readClosed(signal);
    check(!invoked || !closed, "a signal is one of the two");
    if (invoked) {
        checkText(invoked->text);
    }
}

struct Reader {
    const char* type;
    void (*read)(const Variant& body);
};

constexpr std::array readers{
    Reader{"(says)", [](const Variant& body) { readConnectorCall(firstConnector, "Message", body); }},
    Reader{"(ss)", [](const Variant& body) { readConnectorCall(firstConnector, "NewEndpoint", body); }},
    Reader{"(s)", [](const Variant& body) { readConnectorCall(firstConnector, "Unregistered", body); }},
    Reader{"(a{sv})",
           [](const Variant& body) {
               for (const char* method : {"Message", "NewEndpoint", "Unregistered"}) {
                   readConnectorCall(secondConnector, method, body);
               }
           }},
    Reader{"(ss)", [](const Variant& body) { readOutcome(desktop::Distributors::firstOutcome(body), 1); }},
    Reader{"(a{sv})", [](const Variant& body) { readOutcome(desktop::Distributors::secondOutcome(body), 2); }},
    Reader{"(s)", readText},
    Reader{"(as)", readTexts},
    Reader{"(u)", [](const Variant& body) { desktop::body::number(body); }},
    Reader{"(us)", readSignal},
    Reader{"(uu)", readSignal},
    Reader{"(sv)", readSignal},
    Reader{"()", readSignal},
};

/// What the bus would have made of these bytes: what is damaged in them becomes empty.
Variant bodyOf(const char* type, std::string_view bytes) {
    const auto raw = Variant::share(
        g_variant_new_from_data(G_VARIANT_TYPE(type), bytes.data(), bytes.size(), FALSE, nullptr, nullptr));
    return Variant::take(g_variant_get_normal_form(raw.get()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const Reader& reader = readers[data[0] % readers.size()];
    const auto body = bodyOf(reader.type, textOf(data + 1, size - 1));
    check(g_variant_is_normal_form(body.get()) != FALSE, "a body is well formed");
    reader.read(body);
    return 0;
}
