// Registration for pushes and their arrival, with distributors of both versions on a bus of the test's own.

#include <optional>

#include "tests/desktop/UnifiedPushTest.h"

namespace zentavo::tests {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

using UnifiedPushConnectorTest = UnifiedPushTest;

TEST_F(UnifiedPushConnectorTest, TheFirstVersionBringsPlainPushes) {
    FakeDistributor distributor(bus.address(), "One", 1);
    Receiver receiver(bus, memory.platform());
    const std::string token = registered(distributor, receiver, 1);
    EXPECT_EQ(receiver.told(), std::string("token ") + endpoint);
    EXPECT_EQ(token.size(), 36U); // a UUID: nobody guesses it

    EXPECT_EQ(distributor.message(1, service, token, "{\"aps\":1}", "m1"), "");
    EXPECT_EQ(receiver.told(), "message {\"aps\":1}");
    EXPECT_EQ(distributor.message(1, service, token, std::string(4'096, 'x'), ""), "");
    EXPECT_EQ(receiver.told().size(), 8U + 4'096U);

    EXPECT_THAT(distributor.message(1, service, token, "", "m2"), HasSubstr("0 bytes"));
    EXPECT_THAT(distributor.message(1, service, token, std::string(4'097, 'x'), "m3"), HasSubstr("4097 bytes"));
    EXPECT_THAT(distributor.message(1, service, "another", "{}", "m4"), HasSubstr("registration of ours"));
    EXPECT_THAT(distributor.message(1, service, "", "{}", "m5"), HasSubstr("registration of ours"));
    EXPECT_THAT(distributor.message(2, service, token, "{}", "m6"), HasSubstr("version"));
    EXPECT_TRUE(receiver.toldNothing());
    EXPECT_EQ(logged().find(token), std::string::npos);
}

TEST_F(UnifiedPushConnectorTest, TheSecondVersionIsPreferredAndBringsEncryptedOnes) {
    FakeDistributor distributor(bus.address(), "Both", 12);
    Receiver receiver(bus, memory.platform());
    const std::string token = registered(distributor, receiver, 2);
    const std::string told = receiver.told();
    ASSERT_THAT(told, StartsWith(std::string("token ") + endpoint + "#p256dh="));

    EXPECT_EQ(distributor.message(2, service, token, encrypted(told, "{}"), "m1"), "");
    EXPECT_EQ(receiver.told(), "message {}");

    std::string tampered = encrypted(told, "{}");
    tampered.back() = static_cast<char>(tampered.back() ^ 1);
    EXPECT_THAT(distributor.message(2, service, token, tampered, "m2"), HasSubstr("has been changed"));
    EXPECT_THAT(distributor.message(2, service, token, "{}", "m3"), HasSubstr("cut off"));
    // Nobody gets around the encryption by the other interface.
    EXPECT_THAT(distributor.message(1, service, token, "{}", "m4"), HasSubstr("version"));
    EXPECT_THAT(distributor.newEndpoint(1, service, token, "https://elsewhere.example/"), HasSubstr("version"));
    EXPECT_TRUE(receiver.toldNothing());
    EXPECT_THAT(logged(), HasSubstr("has been changed"));
    // What was refused may come again, in order.
    EXPECT_EQ(distributor.message(2, service, token, encrypted(told, "{\"a\":1}"), "m2"), "");
    EXPECT_EQ(receiver.told(), "message {\"a\":1}");
}

TEST_F(UnifiedPushConnectorTest, TheSendersPublicKeyIsTold) {
    FakeDistributor distributor(bus.address(), "Two", 2);
    Receiver receiver(bus, memory.platform(), "BCVxsr7N");
    receiver.request();
    EXPECT_EQ(distributor.asked.next().vapid, "BCVxsr7N");
}

TEST_F(UnifiedPushConnectorTest, APushThatIsDeliveredTwiceIsToldOnceAlsoByTheNextProcess) {
    FakeDistributor distributor(bus.address(), "One", 1);
    std::string token;
    {
        Receiver receiver(bus, memory.platform());
        token = registered(distributor, receiver, 1);
        receiver.told();
        EXPECT_EQ(distributor.message(1, service, token, "first", "m1"), "");
        EXPECT_EQ(distributor.message(1, service, token, "first", "m1"), "");
        EXPECT_EQ(distributor.message(1, service, token, "second", "m2"), "");
        EXPECT_EQ(receiver.told(), "message first");
        EXPECT_EQ(receiver.told(), "message second");
    }
    Receiver next(bus, memory.platform());
    EXPECT_EQ(distributor.message(1, service, token, "first", "m1"), "");
    for (int i = 0; i < 120; ++i) { // more than are remembered
        const std::string id = "n" + std::to_string(i);
        EXPECT_EQ(distributor.message(1, service, token, id, id), "");
        EXPECT_EQ(next.told(), "message " + id);
    }
    EXPECT_EQ(distributor.message(1, service, token, "first", "m1"), "");
    EXPECT_EQ(next.told(), "message first");
    // Without an identifier nothing is known to be the same.
    EXPECT_EQ(distributor.message(1, service, token, "third", ""), "");
    EXPECT_EQ(distributor.message(1, service, token, "third", ""), "");
    EXPECT_EQ(next.told(), "message third");
    EXPECT_EQ(next.told(), "message third");
}

TEST_F(UnifiedPushConnectorTest, TheRegistrationIsKeptAndRenewedAtEachStart) {
    FakeDistributor distributor(bus.address(), "Two", 2);
    std::string token;
    std::string told;
    {
        Receiver receiver(bus, memory.platform());
        token = registered(distributor, receiver, 2);
        told = receiver.told();
    }
    Receiver next(bus, memory.platform());
    const auto renewed = distributor.asked.next();
    EXPECT_EQ(renewed.method, "Register");
    EXPECT_EQ(renewed.token, token);
    // The same endpoint is no news, until the app asks.
    EXPECT_EQ(distributor.newEndpoint(2, service, token, endpoint), "");
    EXPECT_TRUE(next.toldNothing());
    next.request();
    EXPECT_EQ(next.told(), told);
    EXPECT_EQ(distributor.asked.next().token, token);
    // Another one is, asked for or not; the keys stay.
    EXPECT_EQ(distributor.newEndpoint(2, service, token, "https://push.example/new"), "");
    EXPECT_EQ(next.told(), "token https://push.example/new" + told.substr(told.find('#')));
    EXPECT_EQ(distributor.message(2, service, token, encrypted(told, "{}"), "m1"), "");
    EXPECT_EQ(next.told(), "message {}");
}

TEST_F(UnifiedPushConnectorTest, EndpointsThatNoSenderCanUseAreRefused) {
    FakeDistributor distributor(bus.address(), "Two", 2);
    Receiver receiver(bus, memory.platform());
    receiver.request();
    const std::string token = distributor.asked.next().token;
    EXPECT_THAT(distributor.newEndpoint(2, service, token, "file:///etc/passwd"), HasSubstr("no web address"));
    EXPECT_THAT(receiver.told(), StartsWith("failed ")); // the app waits for an answer, and has it
    EXPECT_THAT(distributor.newEndpoint(2, service, token, "https://push.example/#mine"), HasSubstr("fragment"));
    EXPECT_THAT(distributor.newEndpoint(2, service, token, "https://p.example/" + std::string(2'048, 'x')),
                HasSubstr("too long"));
    // Each of these would be encoded, in three bytes.
    EXPECT_THAT(distributor.newEndpoint(2, service, token, "https://p.example/" + std::string(1'000, ' ') + "x"),
                HasSubstr("too long"));
    EXPECT_THAT(distributor.newEndpoint(2, service, token, ""), HasSubstr("no web address"));
    EXPECT_THAT(distributor.newEndpoint(2, service, "another", endpoint), HasSubstr("registration of ours"));
    EXPECT_TRUE(receiver.toldNothing());
    EXPECT_EQ(distributor.newEndpoint(2, service, token, endpoint), "");
    EXPECT_THAT(receiver.told(), StartsWith("token "));
}

TEST_F(UnifiedPushConnectorTest, ADistributorThatComesBackIsRegisteredWithAgain) {
    auto distributor = std::make_unique<FakeDistributor>(bus.address(), "One", 1);
    Receiver receiver(bus, memory.platform());
    const std::string token = registered(*distributor, receiver, 1);
    receiver.told();
    distributor.reset();
    distributor = std::make_unique<FakeDistributor>(bus.address(), "One", 12);
    // It has learnt the other version meanwhile: senders need the keys from now on.
    const auto asked = distributor->asked.next();
    EXPECT_EQ(asked.token, token);
    EXPECT_EQ(asked.version, 2);
    EXPECT_EQ(distributor->newEndpoint(2, service, token, endpoint), "");
    EXPECT_THAT(receiver.told(), StartsWith(std::string("token ") + endpoint + "#p256dh="));
    EXPECT_THAT(distributor->message(1, service, token, "{}", "m1"), HasSubstr("version"));
    EXPECT_TRUE(distributor->asked.empty());
}

TEST_F(UnifiedPushConnectorTest, AStartWithoutTheDistributorWaitsForItAndAsksNoOther) {
    auto distributor = std::make_unique<FakeDistributor>(bus.address(), "One", 1);
    std::string token;
    {
        Receiver receiver(bus, memory.platform());
        token = registered(*distributor, receiver, 1);
        receiver.told();
    }
    distributor.reset();
    FakeDistributor other(bus.address(), "Another", 1);
    Receiver receiver(bus, memory.platform());
    EXPECT_TRUE(receiver.toldNothing());
    distributor = std::make_unique<FakeDistributor>(bus.address(), "One", 1);
    EXPECT_EQ(distributor->asked.next().token, token);
    EXPECT_TRUE(other.asked.empty());

    // The app is not left with an endpoint that nobody serves any more.
    distributor.reset();
    receiver.waitForTheEndOf("org.unifiedpush.Distributor.One");
    EXPECT_NE(registered(other, receiver, 1), token);
    EXPECT_EQ(receiver.told(), std::string("token ") + endpoint);
}

TEST_F(UnifiedPushConnectorTest, ADistributorThatDiesWhileItIsAskedLeavesTheAppToAnother) {
    FakeDistributor other(bus.address(), "Other", 1);
    for (const bool known : {false, true}) {
        testing::MemoryPlatform fresh{service};
        std::optional<FakeDistributor> dying(std::in_place, bus.address(), "Dying", 1);
        Receiver receiver(bus, fresh.platform());
        if (known) {
            registered(*dying, receiver, 1);
            receiver.told();
        }
        dying->silent = true;
        receiver.request();
        dying->asked.next();
        if (known) {
            receiver.told(); // the endpoint, which seldom changes
        }
        dying.reset();
        const auto asked = other.asked.next();
        EXPECT_EQ(asked.method, "Register") << known;
        EXPECT_EQ(other.newEndpoint(1, service, asked.token, endpoint), "");
        EXPECT_EQ(receiver.told(), std::string("token ") + endpoint);
        EXPECT_TRUE(receiver.toldNothing());
    }
}

TEST_F(UnifiedPushConnectorTest, WithoutADistributorTheAppIsToldWhenItAsksAndAgainWhenOneIsBack) {
    Receiver receiver(bus, memory.platform());
    receiver.request();
    EXPECT_EQ(receiver.told(), "failed there is no distributor of pushes");
    auto distributor = std::make_unique<FakeDistributor>(bus.address(), "One", 1);
    registered(*distributor, receiver, 1);
    EXPECT_EQ(receiver.told(), std::string("token ") + endpoint);
    distributor.reset();
    receiver.waitForTheEndOf("org.unifiedpush.Distributor.One");
    receiver.request();
    EXPECT_EQ(receiver.told(), "failed there is no distributor of pushes");
    distributor = std::make_unique<FakeDistributor>(bus.address(), "One", 1);
    EXPECT_EQ(receiver.told(), std::string("token ") + endpoint);
}

TEST_F(UnifiedPushConnectorTest, ADistributorThatRefusesIsAskedAgainWithTheSameToken) {
    for (const int version : {1, 2}) {
        testing::MemoryPlatform fresh{service};
        FakeDistributor distributor(bus.address(), "Strict", version);
        Receiver receiver(bus, fresh.platform());
        distributor.failure = "ACTION_REQUIRED";
        receiver.request();
        EXPECT_THAT(receiver.told(), ::testing::AllOf(StartsWith("failed "), HasSubstr("ACTION_REQUIRED")));
        distributor.failure = nullptr;
        const std::string token = distributor.asked.next().token;
        EXPECT_EQ(registered(distributor, receiver, version), token);
        EXPECT_THAT(receiver.told(), StartsWith("token "));
    }
}

TEST_F(UnifiedPushConnectorTest, AnEndedRegistrationIsMadeAnewWhenTheAppAsks) {
    FakeDistributor distributor(bus.address(), "Two", 2);
    Receiver receiver(bus, memory.platform());
    const std::string token = registered(distributor, receiver, 2);
    const std::string told = receiver.told();
    EXPECT_EQ(distributor.unregistered(2, service, "another"), "");
    EXPECT_TRUE(receiver.toldNothing());
    EXPECT_EQ(distributor.unregistered(2, service, token), "");
    EXPECT_THAT(receiver.told(), StartsWith("failed "));
    EXPECT_THAT(distributor.message(2, service, token, encrypted(told, "{}"), "m1"), HasSubstr("registration of ours"));
    EXPECT_TRUE(distributor.asked.empty());
    EXPECT_NE(registered(distributor, receiver, 2), token);
    const std::string again = receiver.told();
    EXPECT_THAT(again, StartsWith(std::string("token ") + endpoint));
    EXPECT_NE(again, told); // new keys
}

TEST_F(UnifiedPushConnectorTest, TheHostsChoiceComesFirstThenTheLastOneThenTheFirstByName) {
    FakeDistributor a(bus.address(), "A", 1);
    FakeDistributor b(bus.address(), "B", 1);
    FakeDistributor c(bus.address(), "C", 2);
    Receiver receiver(bus, memory.platform());
    const std::string first = registered(a, receiver, 1);
    receiver.told();
    const auto choose = [&](const char* name) { memory.preferences->standard()->set("ZentavoPushDistributor", name); };

    choose("org.unifiedpush.Distributor.C");
    const std::string second = registered(c, receiver, 2);
    EXPECT_NE(second, first);
    EXPECT_THAT(receiver.told(), StartsWith("token "));
    const auto left = a.asked.next();
    EXPECT_EQ(left.method, "Unregister");
    EXPECT_EQ(left.token, first);
    // Its last word finds nobody.
    EXPECT_EQ(a.unregistered(1, service, first), "");
    EXPECT_TRUE(receiver.toldNothing());

    // A choice that is not there changes nothing, and is no reason to leave the app without an answer.
    choose("org.unifiedpush.Distributor.Z");
    receiver.request();
    EXPECT_EQ(c.asked.next().token, second);
    EXPECT_THAT(receiver.told(), StartsWith("token "));
    EXPECT_TRUE(b.asked.empty());
    EXPECT_TRUE(a.asked.empty());
}

} // namespace
} // namespace zentavo::tests
