#include "zentavo/websocket/SecureStream.h"

#include <utility>

#include <asio/buffer.hpp>
#include <asio/error.hpp>
#include <asio/post.hpp>
#include <asio/write.hpp>

namespace zentavo::websocket {
namespace {

// Of a long message so much is encrypted at a time.
constexpr std::size_t mostWritten = 65536;

} // namespace

SecureStream::SecureStream(asio::ip::tcp::socket socket, std::unique_ptr<TLSEngine> engine)
    : Stream(std::move(socket)), engine_(std::move(engine)) {}

template <class Then>
void SecureStream::receive(Then then) {
    socket_.async_read_some(asio::buffer(input_),
                            [this, then = std::move(then)](const asio::error_code& error, std::size_t size) mutable {
                                if (!error) {
                                    engine_->receive({input_.data(), size});
                                }
                                then(error);
                            });
}

void SecureStream::handshake(std::function<void(const asio::error_code&)> done) {
    asio::post(socket_.get_executor(), [this, done = std::move(done)]() mutable { shakeHands(std::move(done)); });
}

void SecureStream::shakeHands(std::function<void(const asio::error_code&)> done) {
    const auto step = engine_->handshake();
    auto goOn = [this, step, done = std::move(done)](const asio::error_code& error, std::size_t) mutable {
        if (error || step == TLSEngine::Step::done) {
            done(error);
        } else if (step != TLSEngine::Step::needsInput) {
            done(step == TLSEngine::Step::failed ? engine_->error() : asio::error::eof);
        } else {
            receive([this, done = std::move(done)](const asio::error_code& ended) mutable {
                ended ? done(ended) : shakeHands(std::move(done));
            });
        }
    };
    // Also after a failure: the other end is told why.
    engine_->takeOutput(output_);
    asio::async_write(socket_, asio::buffer(output_), std::move(goOn));
}

void SecureStream::read(std::span<char> into, std::shared_ptr<StreamEvents> events) {
    // What is decrypted already is told later, too, and not inside this call.
    asio::post(socket_.get_executor(),
               [this, into, events = std::move(events)]() mutable { takeIn(into, std::move(events)); });
}

void SecureStream::takeIn(std::span<char> into, std::shared_ptr<StreamEvents> events) {
    std::size_t size = 0;
    const auto step = engine_->read(into, size);
    send(events); // an answer to the other end's TLS
    switch (step) {
    case TLSEngine::Step::done:
        events->onRead({}, size);
        break;
    case TLSEngine::Step::ended:
        events->onRead(asio::error::eof, 0);
        break;
    case TLSEngine::Step::failed:
        events->onRead(engine_->error(), 0);
        break;
    case TLSEngine::Step::needsInput:
        receive([this, into, events = std::move(events)](const asio::error_code& error) mutable {
            error ? events->onRead(error, 0) : takeIn(into, std::move(events));
        });
        break;
    }
}

void SecureStream::write(std::string_view bytes, std::shared_ptr<StreamEvents> events) {
    const auto part = bytes.substr(0, mostWritten);
    if (engine_->write(part) != TLSEngine::Step::done) {
        asio::post(socket_.get_executor(),
                   [this, events = std::move(events)] { events->onWritten(engine_->error(), 0); });
        return;
    }
    writer_ = std::move(events);
    written_ = part.size();
    send(writer_);
}

void SecureStream::send(const std::shared_ptr<StreamEvents>& holder) {
    if (sending_) {
        return;
    }
    engine_->takeOutput(output_);
    if (output_.empty()) {
        return;
    }
    sending_ = true;
    asio::async_write(socket_, asio::buffer(output_), [this, holder](const asio::error_code& error, std::size_t) {
        sending_ = false;
        if (!error) {
            send(holder); // what was written meanwhile
        }
        if (!sending_ && writer_) {
            std::exchange(writer_, nullptr)->onWritten(error, written_);
        }
    });
}

} // namespace zentavo::websocket
