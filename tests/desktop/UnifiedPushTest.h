#pragma once

#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/desktop/UnifiedPushConnector.h"
#include "ports/desktop/WebPushKeys.h"
#include "ports/memory/MemoryPlatform.h"
#include "tests/desktop/Awaited.h"
#include "tests/desktop/FakeDistributor.h"
#include "tests/desktop/PrivateBus.h"
#include "tests/desktop/TakeName.h"
#include "tests/desktop/WebPushSender.h"

namespace zentavo::tests {

inline constexpr const char* service = "com.example.shop.NotificationService";
inline constexpr const char* endpoint = "https://push.example/up?id=4711";

/// The receiver's process: what is stored outlives it.
class Receiver {
public:
    Receiver(const PrivateBus& bus, const std::shared_ptr<platform::Platform>& platform, const std::string& vapid = "")
        : bus_(bus.address()),
          connector_(bus_, *platform, {service, "Shop", vapid},
                     {[told = told_](const std::string& body) { told->put("message " + body); },
                      [told = told_](const std::string& text) { told->put("token " + text); },
                      [told = told_](const std::string& reason) { told->put("failed " + reason); }}) {
        connector_.start();
        takeName(bus_, service);
    }

    void request() { connector_.request(); }
    /// Until nobody has `name`. All that its owner had answered before has arrived then.
    void waitForTheEndOf(const std::string& name) {
        const auto owned = std::make_shared<Awaited<bool>>();
        do {
            bus_.call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
                       desktop::Variant::share(g_variant_new("(s)", name.c_str())), "(b)"},
                      [owned](const Result<desktop::Variant>& answer) {
                          gboolean has = FALSE;
                          g_variant_get(answer.value().get(), "(b)", &has);
                          owned->put(has != FALSE);
                      });
        } while (owned->next());
    }
    /// The next thing that the app, or the user, is told.
    std::string told() { return told_->next(); }
    bool toldNothing() {
        settle();
        return told_->empty();
    }

private:
    /// What was asked for before has happened then: one thread does it all.
    void settle() {
        const auto done = std::make_shared<Awaited<bool>>();
        bus_.run([done] { done->put(true); });
        done->next();
    }

    const std::shared_ptr<Awaited<std::string>> told_ = std::make_shared<Awaited<std::string>>();
    desktop::SessionBus bus_;
    desktop::UnifiedPushConnector connector_;
};

class UnifiedPushTest : public ::testing::Test {
protected:
    /// Registers; the distributor's next word is the endpoint. Returns the registration's token.
    std::string registered(FakeDistributor& distributor, Receiver& receiver, int version) {
        receiver.request();
        const auto asked = distributor.asked.next();
        EXPECT_EQ(asked.method, "Register");
        EXPECT_EQ(asked.version, version);
        EXPECT_EQ(asked.service, service);
        EXPECT_EQ(asked.description, "Shop");
        EXPECT_EQ(distributor.newEndpoint(version, service, asked.token, endpoint), "");
        return asked.token;
    }
    /// The receiver's keys as a sender knows them: from what the app was told.
    static WebPushSender senderFor(const std::string& told) {
        WebPushSender sender;
        const std::size_t key = told.find("#p256dh=");
        const std::size_t auth = told.find("&auth=");
        sender.publicKey = WebPushSender::bytes(told.substr(key + 8, auth - key - 8));
        sender.auth = WebPushSender::bytes(told.substr(auth + 6));
        return sender;
    }
    std::string encrypted(const std::string& told, const std::string& text) {
        testing::SeededRandom unused(9);
        return senderFor(told).encrypt(desktop::WebPushKeys::make(unused), text);
    }
    std::string logged() const {
        std::string all;
        for (const auto& entry : memory.systemLog->entries()) {
            all += entry.message + "\n";
        }
        return all;
    }

    PrivateBus bus;
    testing::MemoryPlatform memory{service};
};

} // namespace zentavo::tests
