#include "tests/devserver/SampleEvent.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {

namespace {

/// Milliseconds without a byte after which nothing more is expected; a busy machine's sanitizer build needs several.
constexpr int patience = 30'000;

} // namespace

Map sampleEvent(const std::string& name) {
    return Map{
        {"dims", Map{{"users", Map{{"name", "Ann"}}}, {"customers", Map{{"customer_id", "c1"}}}}},
        {"extra",
         Map{{"list", "home"}, {"screen_name", "Home page"}, {"identify_type", "exact"}, {"visitor_type", "new"}}},
        {"context",
         Map{{"library", Map{{"name", "ZentavoSDK"}, {"version", "1.1.54"}}},
             {"app", Map{{"name", "Shop"}, {"version", "1"}, {"build", "2"}, {"namespace", "shop"}}},
             {"device", Map{{"manufacturer", "Apple"}, {"type", "pc"}, {"model", "m"}, {"name", "n"}, {"id", ""}}},
             {"os", Map{{"name", "Linux"}, {"version", "6"}}},
             {"screen", Map{{"width", 1280}, {"height", 720.5}}},
             {"locale", "en_US"},
             {"timezone", "UTC"},
             {"location", Map{{"lat", 0}, {"long", 0}, {"type", "Unknown"}}},
             {"network", ""},
             {"userAgent", "ZentavoSDK"},
             {"instanceId", "I"}}},
        {"uid", "u1"},
        {"en", name},
        {"items", List{Map{{"sku", "A1"}, {"id", 9007199254740993}}}},
        {"portal_id", "1000"},
        {"prop_id", "555"},
        {"resp_type", "json"},
        {"identify_type", "exact"},
    };
}

std::string text(const Map& map) { return json::write(map).value(); }

Map bodyOf(const httplib::Result& answer) {
    auto map = json::readMap(answer ? answer->body : "{}");
    return map ? *std::move(map) : Map();
}

RunningServer::RunningServer(DevServer::Settings settings) : server(*DevServer::open(settings)) {}

httplib::Client RunningServer::client() const {
    httplib::Client client("127.0.0.1", server->port());
    client.set_read_timeout(5);
    client.set_tcp_nodelay(true);
    return client;
}

httplib::Result RunningServer::send(const Map& event) const {
    return client().Post("/event" + sampleQuery, text(event), "application/json");
}

void RunningServer::fault(const std::string& query) const {
    const auto answer = client().Post("/_dev/fault?" + query);
    ASSERT_TRUE(answer);
    ASSERT_EQ(answer->status, 200) << answer->body;
}

RawConnection::RawConnection(std::uint16_t port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
}

RawConnection::~RawConnection() { ::close(socket_); }

void RawConnection::send(const std::string& bytes) const {
    // What the server does not want to read any more is not the test's concern.
    for (std::size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
            return;
        }
        sent += static_cast<std::size_t>(count);
    }
}

std::string RawConnection::readUntil(const std::string& end) const {
    std::string all;
    std::array<char, 65536> bytes;
    pollfd entry{socket_, POLLIN, 0};
    std::size_t searched = 0;
    while (all.find(end, searched) == std::string::npos && ::poll(&entry, 1, patience) > 0) {
        searched = all.size() - std::min(all.size(), end.size());
        const ssize_t count = ::recv(socket_, bytes.data(), bytes.size(), 0);
        if (count <= 0) {
            reset_ = count < 0 && errno == ECONNRESET;
            break;
        }
        all.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return all;
}

} // namespace zentavo::devserver
