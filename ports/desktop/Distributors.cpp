#include "ports/desktop/Distributors.h"

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <utility>

#include "ports/desktop/MessageBody.h"
#include "ports/desktop/PushRegistration.h"

namespace zentavo::desktop {

namespace {

constexpr std::string_view namePrefix = "org.unifiedpush.Distributor.";
constexpr const char* path = "/org/unifiedpush/Distributor";
constexpr const char* firstInterface = "org.unifiedpush.Distributor1";
constexpr const char* secondInterface = "org.unifiedpush.Distributor2";
constexpr std::string_view succeeded = "REGISTRATION_SUCCEEDED";

SessionBus::Call busCall(const char* method) {
    return {.destination = "org.freedesktop.DBus",
            .path = "/org/freedesktop/DBus",
            .interface = "org.freedesktop.DBus",
            .method = method,
            .parameters = {},
            .answerType = "(as)"};
}

SessionBus::Call distributorCall(const std::string& distributor, const char* interface, const char* method,
                                 GVariant* parameters, const char* answerType) {
    return {.destination = distributor,
            .path = path,
            .interface = interface,
            .method = method,
            .parameters = Variant::share(parameters),
            .answerType = answerType};
}

/// What is empty is left out.
GVariant* dictionary(std::initializer_list<std::pair<const char*, std::string>> entries) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("(a{sv})"));
    g_variant_builder_open(&builder, G_VARIANT_TYPE_VARDICT);
    for (const auto& [name, text] : entries) {
        if (!text.empty()) {
            g_variant_builder_add(&builder, "{sv}", name, g_variant_new_string(text.c_str()));
        }
    }
    g_variant_builder_close(&builder);
    return g_variant_builder_end(&builder);
}

Result<int> outcome(int version, std::string_view result, std::string_view reason) {
    if (result == succeeded) {
        return version;
    }
    return Error{"the distributor does not take the registration: " + std::string(reason.empty() ? result : reason)};
}

} // namespace

Result<int> Distributors::firstOutcome(const Variant& answer) {
    return outcome(PushRegistration::plainVersion, body::text(answer, 0), body::text(answer, 1));
}

Result<int> Distributors::secondOutcome(const Variant& answer) {
    body::Dictionary entries(answer);
    const std::string result = entries.text("success");
    return outcome(PushRegistration::encryptedVersion, result.empty() ? "it did not say why" : result,
                   entries.text("reason"));
}

void Distributors::list(std::function<void(std::vector<std::string> names)> found) {
    const auto names = std::make_shared<std::vector<std::string>>();
    const auto add = [names](const Result<Variant>& answer) {
        if (!answer) {
            return; // without a bus there are no distributors either
        }
        for (std::string& name : body::texts(*answer)) {
            if (name.starts_with(namePrefix)) {
                names->push_back(std::move(name));
            }
        }
    };
    bus_.call(busCall("ListNames"), add);
    // Answered after the call before it: the same program answers both.
    bus_.call(busCall("ListActivatableNames"), [names, add, found = std::move(found)](const Result<Variant>& answer) {
        add(answer);
        std::sort(names->begin(), names->end());
        names->erase(std::unique(names->begin(), names->end()), names->end());
        found(std::move(*names));
    });
}

void Distributors::add(const std::string& distributor, const Request& request,
                       std::function<void(Result<int> version)> done) {
    auto call = distributorCall(distributor, secondInterface, "Register",
                                dictionary({{"service", request.service},
                                            {"token", request.token},
                                            {"description", request.description},
                                            {"vapid", request.vapid}}),
                                "(a{sv})");
    call.expected = SessionBus::Expected::unknownMethod;
    bus_.call(std::move(call), [this, distributor, request, done = std::move(done)](const Result<Variant>& answer) {
        if (!answer) {
            return done(answer.error());
        }
        if (*answer) {
            return done(secondOutcome(*answer));
        }
        bus_.call(distributorCall(distributor, firstInterface, "Register",
                                  g_variant_new("(sss)", request.service.c_str(), request.token.c_str(),
                                                request.description.c_str()),
                                  "(ss)"),
                  [done](const Result<Variant>& first) { done(first ? firstOutcome(*first) : first.error()); });
    });
}

void Distributors::remove(const std::string& distributor, int version, const std::string& token) {
    bus_.call(
        version == PushRegistration::plainVersion
            ? distributorCall(distributor, firstInterface, "Unregister", g_variant_new("(s)", token.c_str()), "()")
            : distributorCall(distributor, secondInterface, "Unregister", dictionary({{"token", token}}), "(a{sv})"));
}

std::string Distributors::choose(const std::vector<std::string>& names, const std::string& wanted,
                                 const std::string& last) {
    for (const std::string& name : {wanted, last}) {
        if (std::binary_search(names.begin(), names.end(), name)) {
            return name;
        }
    }
    return names.empty() ? "" : names.front();
}

} // namespace zentavo::desktop
