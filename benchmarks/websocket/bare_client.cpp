// The yardstick: bare sockets and as much of the protocol as it takes. It copies, frames and masks each message, counts
// what comes back and looks at nothing of it; with compression it uses zlib at level 6 and keeps the context.

#include <optional>

#include <zlib.h>

#include "support/Failure.h"
#include "websocket/BareSocket.h"
#include "websocket/Task.h"

namespace {

using namespace bench;

Bytef* bytes(const char* text) { return reinterpret_cast<Bytef*>(const_cast<char*>(text)); }

class Compressor {
public:
    Compressor() {
        deflateInit2(&down_, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
        inflateInit2(&up_, -15);
    }
    ~Compressor() {
        deflateEnd(&down_);
        inflateEnd(&up_);
    }

    std::string_view pack(const std::string& message) {
        out_.resize(deflateBound(&down_, message.size()) + 64);
        down_.next_in = bytes(message.data());
        down_.avail_in = static_cast<uInt>(message.size());
        down_.next_out = bytes(out_.data());
        down_.avail_out = static_cast<uInt>(out_.size());
        deflate(&down_, Z_SYNC_FLUSH);
        return {out_.data(), out_.size() - down_.avail_out - 4};
    }

    /// Whether `payload` expands to `size` bytes.
    bool unpack(std::string& payload, std::size_t size) {
        payload.append("\x00\x00\xFF\xFF", 4);
        in_.resize(size + 1);
        up_.next_in = bytes(payload.data());
        up_.avail_in = static_cast<uInt>(payload.size());
        up_.next_out = bytes(in_.data());
        up_.avail_out = static_cast<uInt>(in_.size());
        inflate(&up_, Z_SYNC_FLUSH);
        return up_.avail_out == 1;
    }

private:
    z_stream down_{};
    z_stream up_{};
    std::string out_;
    std::string in_;
};

class Client {
public:
    explicit Client(const Task& task)
        : task_(task), message_(task.message()), socket_(BareSocket::connectTo(task.port)) {}

    void run() {
        socket_.out = "GET / HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                      "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n" +
                      std::string(task_.deflate ? "Sec-WebSocket-Extensions: permessage-deflate\r\n" : "") + "\r\n";
        checkSystem(socket_.head().starts_with("HTTP/1.1 101"), "an upgrade");
        meter_.emplace(task_);
        for (std::size_t i = 0; i < task_.window; ++i) {
            send();
        }
        while (going_) {
            auto input = socket_.turn();
            checkSystem(!input.empty(), "an echo");
            while (!input.empty() && going_) {
                take(input);
            }
        }
        meter_->report();
    }

private:
    void send() {
        const std::string_view payload = task_.deflate ? compressor_.pack(message_) : std::string_view(message_);
        key_ = key_ * 1664525 + 1013904223;
        writeHeader(socket_.out, task_.deflate ? 0xC2 : 0x82, payload.size(), true, key_);
        const std::size_t at = socket_.out.size();
        socket_.out.append(payload);
        bareMask(std::span(socket_.out).subspan(at), key_, 0);
    }

    void take(std::span<char>& input) {
        if (missing_ == 0) {
            head_.append(input.data(), std::min<std::size_t>(input.size(), 14 - head_.size()));
            const std::size_t before = headSize_;
            const BareHeader header = readHeader(head_);
            if (header.size == 0) {
                headSize_ = head_.size();
                input = {};
                return;
            }
            input = input.subspan(header.size - before);
            head_.clear();
            headSize_ = 0;
            missing_ = header.length;
            last_ = (header.first & 0x80) != 0;
            if ((header.first & 0x0F) != 0) { // not a further part of a message
                packed_ = (header.first & 0x40) != 0;
                payload_.clear();
            }
        }
        const std::size_t size = std::min<std::size_t>(missing_, input.size());
        if (packed_) {
            payload_.append(input.data(), size);
        }
        input = input.subspan(size);
        missing_ -= size;
        if (missing_ == 0 && last_) {
            check(!packed_ || compressor_.unpack(payload_, task_.size), "the echo of a message");
            going_ = meter_->more();
            send();
        }
    }

    const Task task_;
    const std::string message_;
    BareSocket socket_;
    Compressor compressor_;
    std::optional<Meter> meter_;
    bool going_ = true;
    std::uint32_t key_ = 1;
    std::string head_;
    std::size_t headSize_ = 0;
    std::uint64_t missing_ = 0;
    bool last_ = true;
    bool packed_ = false;
    std::string payload_;
};

} // namespace

int main(int argc, char** argv) { Client(Task::of(argc, argv)).run(); }
