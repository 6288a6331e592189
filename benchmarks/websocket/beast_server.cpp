// Boost.Beast as an echo server, asynchronous as its examples are.

#include <deque>
#include <memory>

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>

#include "websocket/Task.h"

namespace beast = boost::beast;
namespace net = boost::asio;

namespace {

class Connection : public std::enable_shared_from_this<Connection> {
public:
    explicit Connection(net::ip::tcp::socket socket) : stream_(std::move(socket)) {}

    void start() {
        beast::error_code ignored;
        stream_.next_layer().set_option(net::ip::tcp::no_delay(true), ignored);
        beast::websocket::permessage_deflate deflate;
        deflate.server_enable = true;
        deflate.compLevel = 6;
        stream_.set_option(deflate);
        stream_.async_accept([self = shared_from_this()](beast::error_code error) {
            if (!error) {
                self->read();
            }
        });
    }

private:
    void read() {
        stream_.async_read(buffer_, [self = shared_from_this()](beast::error_code error, std::size_t) {
            if (error) {
                return;
            }
            self->stream_.binary(self->stream_.got_binary());
            self->queue_.push_back(beast::buffers_to_string(self->buffer_.data()));
            self->buffer_.consume(self->buffer_.size());
            self->write();
            self->read();
        });
    }
    void write() {
        if (writing_ || queue_.empty()) {
            return;
        }
        writing_ = true;
        stream_.async_write(net::buffer(queue_.front()),
                            [self = shared_from_this()](beast::error_code error, std::size_t) {
                                self->writing_ = false;
                                self->queue_.pop_front();
                                if (!error) {
                                    self->write();
                                }
                            });
    }

    beast::websocket::stream<net::ip::tcp::socket> stream_;
    beast::flat_buffer buffer_;
    std::deque<std::string> queue_;
    bool writing_ = false;
};

void accept(net::ip::tcp::acceptor& acceptor) {
    acceptor.async_accept([&acceptor](beast::error_code error, net::ip::tcp::socket socket) {
        if (!error) {
            std::make_shared<Connection>(std::move(socket))->start();
        }
        accept(acceptor);
    });
}

} // namespace

int main() {
    net::io_context context(1);
    net::ip::tcp::acceptor acceptor(context, {net::ip::address_v4::loopback(), 0});
    bench::announce(acceptor.local_endpoint().port());
    accept(acceptor);
    context.run();
}
