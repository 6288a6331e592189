// Boost.Beast as a client, asynchronous as its examples are.

#include <deque>
#include <iostream>
#include <optional>

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>

#include "websocket/Task.h"

namespace beast = boost::beast;
namespace net = boost::asio;

namespace {

class Client {
public:
    Client(net::io_context& context, const bench::Task& task)
        : task_(task), message_(task.message()), stream_(context) {
        net::ip::tcp::socket& socket = stream_.next_layer();
        socket.connect({net::ip::address_v4::loopback(), task.port});
        socket.set_option(net::ip::tcp::no_delay(true));
        beast::websocket::permessage_deflate deflate;
        deflate.client_enable = task.deflate;
        deflate.compLevel = 6;
        stream_.set_option(deflate);
        stream_.binary(true);
        stream_.handshake("localhost", "/");
        meter_.emplace(task);
        due_ = task.window;
        write();
        read();
    }

private:
    void write() {
        if (writing_ || due_ == 0) {
            return;
        }
        writing_ = true;
        --due_;
        stream_.async_write(net::buffer(message_), [this](beast::error_code error, std::size_t) {
            writing_ = false;
            if (!error) {
                write();
            }
        });
    }
    void read() {
        stream_.async_read(buffer_, [this](beast::error_code error, std::size_t) {
            if (error) {
                std::cerr << error.message() << "\n";
                std::exit(1);
            }
            buffer_.consume(buffer_.size());
            if (!meter_->more()) {
                meter_->report();
                std::_Exit(0);
            }
            ++due_;
            write();
            read();
        });
    }

    const bench::Task task_;
    const std::string message_;
    beast::websocket::stream<net::ip::tcp::socket> stream_;
    beast::flat_buffer buffer_;
    std::optional<bench::Meter> meter_;
    std::size_t due_ = 0;
    bool writing_ = false;
};

} // namespace

int main(int argc, char** argv) {
    net::io_context context(1);
    Client client(context, bench::Task::of(argc, argv));
    context.run();
}
