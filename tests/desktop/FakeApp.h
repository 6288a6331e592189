#pragma once

#include <memory>
#include <string>

#include "ports/desktop/AppInterfaces.h"
#include "ports/desktop/SessionBus.h"
#include "tests/desktop/Awaited.h"
#include "tests/desktop/TakeName.h"

namespace zentavo::tests {

/// An app on the bus, for its notification service to ask and tell; it leaves when the object goes.
class FakeApp {
public:
    explicit FakeApp(const std::string& address, const std::string& name = "com.example.shop") : bus_(address) {
        namespace app = desktop::app_interface;
        bus_.serve(app::path, app::xml, [told = told_](const desktop::MethodCall& call) {
            const char* text = nullptr;
            g_variant_get(call.parameters().get(), "(&s)", &text);
            told->put(call.method() + " " + text);
            call.answer(call.method() == "WillPresent" ? desktop::Variant::share(g_variant_new("(u)", 7U))
                                                       : desktop::Variant());
        });
        takeName(bus_, name);
    }

    /// What it is told, "METHOD TEXT".
    Awaited<std::string>& told() { return *told_; }

    /// Calls the service, and says what came of it: null with the reason in `refused`.
    desktop::Variant call(const char* method, GVariant* parameters = nullptr, const char* answerType = "()",
                          const std::string& service = "com.example.shop.NotificationService") {
        namespace interface = desktop::service_interface;
        const auto answered = std::make_shared<Awaited<std::pair<desktop::Variant, std::string>>>();
        bus_.call({.destination = service,
                   .path = interface::path,
                   .interface = interface::name,
                   .method = method,
                   .parameters = desktop::Variant::share(parameters),
                   .answerType = answerType},
                  [answered](const Result<desktop::Variant>& answer) {
                      answered->put({answer ? *answer : desktop::Variant(), answer ? "" : answer.error().message});
                  });
        auto [values, why] = answered->next();
        refused = why;
        return values;
    }
    std::string refused;

private:
    const std::shared_ptr<Awaited<std::string>> told_ = std::make_shared<Awaited<std::string>>();
    desktop::SessionBus bus_;
};

} // namespace zentavo::tests
