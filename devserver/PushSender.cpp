#include "devserver/PushSender.h"

#include <algorithm>
#include <array>
#include <utility>

#include "devserver/BodyChecks.h"
#include "devserver/Placeholders.h"
#include "devserver/PushAddress.h"
#include "devserver/Text.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {

namespace {

constexpr std::array<MemberRule, 5> orderRules{{
    {"file", Kind::filledText, Need::optional},
    {"payload", Kind::map, Need::optional},
    {"text", Kind::text, Need::optional},
    {"token", Kind::filledText, Need::optional},
    {"uid", Kind::filledText, Need::optional},
}};

/// JSON without the blanks that were there for reading; anything else as it stands.
std::string compact(const std::string& text) {
    const auto value = json::read(text);
    const auto written = value ? json::write(*value) : Result<std::string>(Error{});
    return written ? *written : text;
}

std::string textIn(const Value& device, std::string_view key) {
    const std::string* text = textMember(*device.asMap(), key);
    return text != nullptr ? *text : std::string();
}

/// What goes out to one device; says in `device` why nothing does.
std::string sealed(const std::string& body, const webpush::Receiver& receiver, PushLog::Device& device) {
    constexpr std::size_t most = PushEndpoints::maximumMessage - webpush::overhead;
    if (body.size() > most) {
        device.reason = "the push has " + std::to_string(body.size()) + " bytes; " + std::to_string(most) +
                        " are the most that can be encrypted";
        return {};
    }
    const auto sender = webpush::Sender::random();
    auto message = sender ? webpush::encrypt(body, receiver, *sender) : Result<std::string>(sender.error());
    if (!message) {
        device.reason = message.error().message;
        return {};
    }
    return *std::move(message);
}

} // namespace

List PushSender::wanted(const Map& order, Problems& problems) const {
    const std::string* token = textMember(order, "token");
    const std::string* uid = textMember(order, "uid");
    List devices = devices_.devices();
    if (devices.empty()) {
        problems.add("no device is known yet; an app has to register for push first");
        return {};
    }
    std::erase_if(devices, [&](const Value& device) {
        return (token != nullptr && textIn(device, "identifier") != *token) ||
               (uid != nullptr && textIn(device, "zentavo_apppush_uid") != *uid);
    });
    if (devices.empty()) {
        problems.add("no device has the " + (token != nullptr ? "token " + inQuotes(*token) : "uid " + inQuotes(*uid)));
    }
    if (devices.size() > maximumDevices) {
        problems.add("there are " + std::to_string(devices.size()) + " devices; token or uid has to choose one");
    }
    return devices;
}

Map PushSender::send(const Map& order, const std::string& server, Problems& problems) {
    checkMembers(order, "", orderRules, Others::refused, problems);
    const Map* payload = mapMember(order, "payload");
    const std::string* text = textMember(order, "text");
    const std::string* name = textMember(order, "file");
    if (order.contains("file") + order.contains("payload") + order.contains("text") != 1) {
        problems.add("one of file, payload and text says what to send");
    }
    if (order.contains("token") && order.contains("uid")) {
        problems.add("token or uid chooses the device, not both");
    }
    const PushFiles::File* file = name != nullptr ? files_.find(*name) : nullptr;
    if (name != nullptr && file == nullptr) {
        problems.add("there is no push " + inQuotes(*name));
    }
    const List devices = problems.empty() ? wanted(order, problems) : List();
    if (!problems.empty()) {
        return {};
    }
    Push push{log_->next(), {}, {}};
    const std::string source = file != nullptr ? file->name : payload != nullptr ? "payload" : "text";
    push.id = log_->idFor(source, push.number);
    const std::array<Placeholder, 3> values{{
        {"{{server}}", server},
        {"{{push}}", push.id},
        {"{{click}}", server + "/track/click?push=" + URL::encodeComponent(push.id)},
    }};
    if (text != nullptr) {
        push.body = fillIn(*text, values);
    } else {
        const auto written = payload != nullptr ? json::write(*payload) : Result<std::string>(file->text);
        push.body = compact(fillIn(*written, values)); // what was read from JSON can be written as JSON
    }
    log_->sent(push.number, push.id, source, push.body);
    return log_->arrived(push.number, deliver(push, devices));
}

std::vector<PushLog::Device> PushSender::deliver(const Push& push, const List& devices) {
    std::vector<PushLog::Device> results;
    std::vector<PushEndpoints::Posting> postings;
    std::vector<std::size_t> places;
    for (const Value& each : devices) {
        PushLog::Device device;
        device.uid = textIn(each, "zentavo_apppush_uid");
        const auto address = PushAddress::ofToken(textIn(each, "identifier"));
        const auto id = address ? endpoints_.idOf(address->endpoint) : std::nullopt;
        if (!address) {
            device.reason = address.error().message;
        } else {
            device.endpoint = address->endpoint;
            device.encrypted = address->receiver.has_value();
        }
        if (address && !id) {
            device.reason = "the endpoint is another server's; this one pushes to its own only";
        }
        std::string bytes;
        if (device.reason.empty()) {
            bytes = device.encrypted ? sealed(push.body, *address->receiver, device) : push.body;
            device.bytes = bytes.size();
        }
        if (device.reason.empty()) {
            postings.push_back({*id, push.id, std::move(bytes)});
            places.push_back(results.size());
        }
        results.push_back(std::move(device));
    }
    const auto outcomes = endpoints_.post(postings);
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        results[places[i]].status = outcomes[i].status;
        results[places[i]].reason = outcomes[i].reason;
    }
    return results;
}

} // namespace zentavo::devserver
