#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "ports/memory/MemoryPlatform.h"
#include "tests/socketio/ScriptedWebSockets.h"
#include "zentavo/socketio/SocketManager.h"

namespace zentavo::socketio::test {

using namespace std::chrono_literals;

/// A manager and its sockets between a scripted server and a turned clock. What handlers hear is written down.
class ManagerFixture : public ::testing::Test {
protected:
    void start(ManagerOptions options = {}) {
        options.transports = {TransportKind::webSocket};
        ManagerHandlers handlers;
        handlers.onReconnectAttempt = [this](unsigned attempt) { say("attempt " + std::to_string(attempt)); };
        handlers.onReconnect = [this](unsigned attempts) { say("reconnected after " + std::to_string(attempts)); };
        handlers.onReconnectFailed = [this] { say("failed"); };
        auto made = SocketManager::make("http://chat.example", options,
                                        {queue, system.clock, system.random, nullptr, sockets}, handlers);
        ASSERT_TRUE(made.ok()) << made.error().message;
        manager = *made;
    }
    std::shared_ptr<SocketIOClient> join(const char* name = "/", Auth auth = {}) {
        auto socket = *manager->socket(name, std::move(auth));
        const std::string prefix = name == std::string("/") ? "" : std::string(name) + " ";
        socket->onConnect([this, prefix] { say(prefix + "connect"); });
        socket->onDisconnect([this, prefix](const Disconnection& how) { say(prefix + text(how.reason)); });
        socket->onConnectError([this, prefix](const ConnectError& error) {
            const auto* code = error.data.asMap() == nullptr ? nullptr : error.data.asMap()->find("code");
            say(prefix + (error.refused ? "refused " : "error ") + error.message + (code ? *code->asString() : ""));
        });
        socket->connect();
        run();
        return socket;
    }
    /// The server takes the newest connection.
    void shake() {
        sockets->last().open();
        sockets->last().say(R"(0{"sid":"E","pingInterval":25000,"pingTimeout":20000})");
        run();
    }
    void server(std::string_view text) {
        run();
        sockets->last().say(text);
        run();
    }
    void lose() {
        run();
        sockets->last().close(1006);
        run();
    }
    /// Waits for the next attempt, in steps shorter than the connect timeout.
    void awaitAttempt() {
        run();
        for (const auto before = sockets->connections.size(); sockets->connections.size() == before;) {
            ASSERT_GT(system.queues->timers(), 0U);
            system.queues->advance(1s);
        }
    }
    void run() { system.queues->runUntilIdle(); }
    void say(std::string what) { told.push_back(std::move(what)); }
    std::vector<std::string> takeTold() { return std::exchange(told, {}); }
    std::vector<std::string> takeSent() {
        run();
        return sockets->last().takeSent();
    }
    AckHandler ack(std::string label) {
        return [this, label](const Result<Arguments, AckFailure>& result) {
            say(label + (result.ok() ? ":" + *(*result)[0].asString()
                                     : (result.error() == AckFailure::timedOut ? ":late" : ":lost")));
        };
    }

    zentavo::testing::MemoryPlatform system;
    const std::shared_ptr<platform::DispatchQueue> queue = system.queues->make("socketio", platform::QueueKind::serial);
    const std::shared_ptr<ScriptedWebSockets> sockets = std::make_shared<ScriptedWebSockets>();
    std::shared_ptr<SocketManager> manager;
    std::vector<std::string> told;
};

} // namespace zentavo::socketio::test
