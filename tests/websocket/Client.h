#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "zentavo/websocket/WebSocketClient.h"
#include "zentavo/websocket/WebSocketServer.h"

namespace zentavo::websocket::test {

using namespace std::chrono_literals;

/// A serial queue on a thread of its own. It may go on its own thread, with the last block that held it.
class ThreadQueue final : public platform::DispatchQueue {
public:
    ThreadQueue() : thread_([board = board_] { board->run(); }) {}
    ~ThreadQueue() override {
        async([board = board_] { board->ended = true; });
        std::this_thread::get_id() == thread_.get_id() ? thread_.detach() : thread_.join();
    }
    void async(platform::Block block) override {
        const std::lock_guard lock(board_->mutex);
        board_->blocks.push_back(std::move(block));
        board_->wake.notify_one();
    }
    platform::TimerId after(std::chrono::nanoseconds, platform::Block) override { return 0; }
    bool cancel(platform::TimerId) override { return false; }

private:
    struct Board {
        void run() {
            while (!ended) {
                std::unique_lock lock(mutex);
                wake.wait(lock, [this] { return !blocks.empty(); });
                const platform::Block block = std::move(blocks.front());
                blocks.pop_front();
                lock.unlock();
                block();
            }
        }
        std::mutex mutex;
        std::condition_variable wake;
        std::deque<platform::Block> blocks;
        bool ended = false;
    };
    const std::shared_ptr<Board> board_ = std::make_shared<Board>();
    std::thread thread_;
};

/// What handlers have been told, and a way to wait for it.
class Story {
public:
    void tell(std::function<void()> change) {
        const std::lock_guard lock(mutex_);
        change();
        told_.notify_all();
    }
    /// False when it does not come true within ten seconds.
    bool await(const std::function<bool()>& condition) {
        std::unique_lock lock(mutex_);
        return told_.wait_for(lock, 10s, condition);
    }
    bool awaitClosed() {
        return await([this] { return closes > 0; });
    }
    bool awaitMessages(std::size_t count) {
        return await([this, count] { return messages.size() >= count || closes > 0; }) && messages.size() >= count;
    }

    bool opened = false;
    Handshake handshake;
    std::vector<std::string> messages;
    int drains = 0;
    int closes = 0;
    Closed closed;
    int status = 0;

    /// Handlers that write it all down.
    ClientHandlers handlers() {
        return {[this](const Handshake& agreed) {
                    tell([&] {
                        opened = true;
                        handshake = agreed;
                    });
                },
                [this](MessageKind, std::string_view content) { tell([&] { messages.emplace_back(content); }); },
                [this] { tell([&] { ++drains; }); },
                [this](const Closed& how, int httpStatus) {
                    tell([&] {
                        ++closes;
                        closed = how;
                        status = httpStatus;
                    });
                }};
    }

private:
    std::mutex mutex_;
    std::condition_variable told_;
};

/// Handlers of a server that sends everything back.
inline ServerHandlers echo() {
    ServerHandlers handlers;
    handlers.onMessage = [](const auto& connection, MessageKind kind, std::string_view content) {
        connection->send(kind, content);
    };
    return handlers;
}

inline std::string urlOf(std::uint16_t port, const std::string& target = "/") {
    return "ws://127.0.0.1:" + std::to_string(port) + target;
}

} // namespace zentavo::websocket::test
