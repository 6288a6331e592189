#pragma once

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <mutex>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/linux/LinuxServices.h"
#include "tests/e2e/Process.h"
#include "zentavo/socketio/SocketManager.h"

namespace zentavo::socketio {

using namespace std::chrono_literals;

/// The reference server, in a process of its own.
class Server {
public:
    explicit Server(const std::string& options = "{}", const std::string& port = "0")
        : process_({"/usr/bin/env", "node", ZENTAVO_SOCKETIO_SERVER, ZENTAVO_SOCKETIO_MODULES, port, options}) {
        const std::string line = process_.readLine(20s);
        port_ = line.starts_with("listening ") ? line.substr(10) : "";
        EXPECT_FALSE(port_.empty()) << line;
    }
    const std::string& port() const { return port_; }
    std::string url() const { return "http://127.0.0.1:" + port_; }
    void stopBreathing() const { process_.kill(SIGSTOP); }
    void breathe() const { process_.kill(SIGCONT); }
    void die() {
        process_.kill(SIGKILL);
        process_.wait();
    }

private:
    e2e::Process process_;
    std::string port_;
};

/// What handlers have told, and a way to wait for it.
class Story {
public:
    void tell(std::string what) {
        const std::lock_guard lock(mutex_);
        told_.push_back(std::move(what));
        changed_.notify_all();
    }
    /// Whether `what` is told, from where the last wait ended on; what was told before it is passed over.
    ::testing::AssertionResult comes(const std::string& what) {
        std::unique_lock lock(mutex_);
        std::string before;
        const bool came = changed_.wait_for(lock, 20s, [&] {
            while (next_ < told_.size()) {
                const auto& one = told_[next_++];
                if (one.find(what) != std::string::npos) {
                    return true;
                }
                before += one.substr(0, 200) + "\n";
            }
            return false;
        });
        return came ? ::testing::AssertionSuccess()
                    : ::testing::AssertionFailure() << what << " never came, but\n"
                                                    << before;
    }

    /// How often `what` has been told so far.
    std::ptrdiff_t count(const std::string& what) {
        const std::lock_guard lock(mutex_);
        return std::count_if(told_.begin(), told_.end(),
                             [&](const auto& one) { return one.find(what) != std::string::npos; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> told_;
    std::size_t next_ = 0;
};

enum class Way { polling, webSocket, upgrade };

/// The client and the reference server, over loopback: by polling, by WebSocket, and from one to the other.
class ServerTest : public ::testing::TestWithParam<Way> {
protected:
    ~ServerTest() override {
        manager.reset();
        // What the queue was told before has run when this has.
        queue->async([this] { story.tell("all done"); });
        EXPECT_TRUE(story.comes("all done"));
    }

    void start(const std::string& url, ManagerOptions options = {}) {
        options.transports = GetParam() == Way::polling     ? std::vector{TransportKind::polling}
                             : GetParam() == Way::webSocket ? std::vector{TransportKind::webSocket}
                                                            : options.transports;
        options.backoff = {50ms, 200ms, 0.5};
        auto made = SocketManager::make(url, options, {queue, system.clock, system.random, system.urlSession});
        ASSERT_TRUE(made.ok()) << made.error().message;
        manager = *made;
    }
    std::shared_ptr<SocketIOClient> socket(const char* name = "/", Auth auth = {}) {
        auto socket = *manager->socket(name, std::move(auth));
        socket->onConnect([this] { story.tell("connect"); });
        socket->onDisconnect([this](const Disconnection& how) {
            story.tell("disconnect " + std::string(text(how.reason)) + " " + how.detail);
        });
        socket->onConnectError([this](const ConnectError& error) {
            story.tell("connect_error " + error.message +
                       (error.data.asMap() ? text(*error.data.asMap(), "code") : ""));
        });
        return socket;
    }
    AckHandler ack() {
        return [this](const Result<Arguments, AckFailure>& result) {
            story.tell(!result.ok()              ? result.error() == AckFailure::timedOut ? "ack late" : "ack lost"
                       : result->empty()         ? "ack nothing"
                       : result->binary(0)       ? "ack bytes " + *result->binary(0)
                       : (*result)[0].asString() ? "ack " + *(*result)[0].asString()
                                                 : "ack other");
        };
    }
    /// What the server sees of this end.
    Map who(SocketIOClient& socket) {
        const auto seen = std::make_shared<Map>();
        socket.emit("who", {}, [this, seen](const auto& result) {
            if (result.ok() && (*result)[0].asMap() != nullptr) {
                *seen = *(*result)[0].asMap();
            }
            story.tell("seen");
        });
        EXPECT_TRUE(story.comes("seen"));
        return *seen;
    }
    static std::string text(const Map& map, std::string_view key) {
        const auto* value = map.find(key);
        return value != nullptr && value->asString() != nullptr ? *value->asString() : "(none)";
    }
    static const char* text(DisconnectReason reason) { return socketio::text(reason); }
    /// In the upgrade mode: until the server sees the WebSocket.
    void awaitTransport(SocketIOClient& socket) {
        const std::string wanted = GetParam() == Way::polling ? "polling" : "websocket";
        std::string seen;
        for (int i = 0; i < 1000 && seen != wanted; ++i) {
            seen = text(who(socket), "transport");
        }
        EXPECT_EQ(seen, wanted);
    }

    const linux_port::LinuxServices system = linux_port::makeLinuxServices();
    const std::shared_ptr<platform::DispatchQueue> queue = system.worker;
    Story story;
    std::shared_ptr<SocketManager> manager;
};

/// For `INSTANTIATE_TEST_SUITE_P`.
inline const auto allWays = ::testing::Values(Way::polling, Way::webSocket, Way::upgrade);
inline std::string nameOf(const ::testing::TestParamInfo<Way>& way) {
    return way.param == Way::polling ? "polling" : way.param == Way::webSocket ? "websocket" : "upgrade";
}

} // namespace zentavo::socketio
