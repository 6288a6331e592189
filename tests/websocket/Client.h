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

/// What handlers have been told, and a way to wait for it. A client that is destroyed may still be in its last handler,
/// which therefore keeps what it writes to.
class Story {
    struct Told {
        std::mutex mutex;
        std::condition_variable changed;
        bool opened = false;
        Handshake handshake;
        std::vector<std::string> messages;
        int drains = 0;
        int closes = 0;
        Closed closed;
        int status = 0;

        template <class Change>
        void tell(Change&& change) {
            const std::lock_guard lock(mutex);
            change();
            changed.notify_all();
        }
    };
    const std::shared_ptr<Told> told_ = std::make_shared<Told>();

public:
    void tell(const std::function<void()>& change) { std::shared_ptr(told_)->tell(change); }
    /// False when it does not come true within ten seconds.
    bool await(const std::function<bool()>& condition) {
        std::unique_lock lock(told_->mutex);
        return told_->changed.wait_for(lock, 10s, condition);
    }
    bool awaitClosed() {
        return await([this] { return closes > 0; });
    }
    bool awaitMessages(std::size_t count) {
        return await([this, count] { return messages.size() >= count || closes > 0; }) && messages.size() >= count;
    }

    bool& opened = told_->opened;
    Handshake& handshake = told_->handshake;
    std::vector<std::string>& messages = told_->messages;
    int& drains = told_->drains;
    int& closes = told_->closes;
    Closed& closed = told_->closed;
    int& status = told_->status;

    /// Handlers that write it all down.
    ClientHandlers handlers() {
        return {[told = told_](const Handshake& agreed) {
                    told->tell([&] {
                        told->opened = true;
                        told->handshake = agreed;
                    });
                },
                [told = told_](MessageKind, std::string_view content) {
                    told->tell([&] { told->messages.emplace_back(content); });
                },
                [told = told_] { told->tell([&] { ++told->drains; }); },
                [told = told_](const Closed& how, int httpStatus) {
                    told->tell([&] {
                        ++told->closes;
                        told->closed = how;
                        told->status = httpStatus;
                    });
                }};
    }
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
