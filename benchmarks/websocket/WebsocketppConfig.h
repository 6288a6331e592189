#pragma once

#include <websocketpp/config/asio_no_tls.hpp>
#include <websocketpp/config/asio_no_tls_client.hpp>
#include <websocketpp/extensions/permessage_deflate/enabled.hpp>

namespace bench {

/// websocketpp's configuration `Base` with compression, without its logs.
template <class Base>
struct Deflating : Base {
    struct permessage_deflate_config {};
    using permessage_deflate_type = websocketpp::extensions::permessage_deflate::enabled<permessage_deflate_config>;
    static const std::size_t max_message_size = 64000000;
};

template <class Endpoint>
void prepare(Endpoint& endpoint) {
    endpoint.clear_access_channels(websocketpp::log::alevel::all);
    endpoint.clear_error_channels(websocketpp::log::elevel::all);
    endpoint.init_asio();
}

/// Small messages go out at once.
template <class Endpoint>
void sendAtOnce(Endpoint& endpoint, websocketpp::connection_hdl handle) {
    endpoint.get_con_from_hdl(handle)->get_raw_socket().set_option(websocketpp::lib::asio::ip::tcp::no_delay(true));
}

} // namespace bench
