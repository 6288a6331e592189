// wss: whom a client trusts, and what becomes of the others. Certificates are made for the run by the openssl program.

#include <array>
#include <cstdlib>
#include <filesystem>

#include <asio/error.hpp>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/websocket/Client.h"
#include "tests/websocket/Wire.h"
#include "zentavo/websocket/TLSEngine.h"

namespace zentavo::websocket::test {
namespace {

namespace fs = std::filesystem;

class TLS : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        std::string name = fs::temp_directory_path() / "zentavo-websocket-XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder = name;
        make("here", "DNS:localhost,IP:127.0.0.1");
        make("elsewhere", "DNS:elsewhere.example");
    }
    static void TearDownTestSuite() { fs::remove_all(folder); }

    /// A certificate that vouches for itself, and its key.
    static void make(const std::string& name, const std::string& subjects) {
        const std::string command = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 2 "
                                    "-subj /CN=" +
                                    name + " -addext subjectAltName=" + subjects + " -keyout " + file(name, ".key") +
                                    " -out " + file(name, ".pem") + " 2>/dev/null";
        ASSERT_EQ(std::system(command.c_str()), 0) << command;
    }
    static std::string file(const std::string& name, const std::string& kind) { return folder / (name + kind); }

    static ServerOptions serving(const std::string& name) {
        ServerOptions options;
        options.certificateFile = file(name, ".pem");
        options.keyFile = file(name, ".key");
        options.compression.emplace();
        return options;
    }
    static ClientOptions trusting(const std::string& name) {
        ClientOptions options;
        options.certificateAuthorities = file(name, ".pem");
        options.compression.emplace();
        return options;
    }
    static std::string urlOf(const std::string& host, std::uint16_t port) {
        return "wss://" + host + ":" + std::to_string(port) + "/";
    }

    static inline fs::path folder;
};

TEST_F(TLS, carriesWhatPlainConnectionsCarry) {
    WebSocketServer server(echo(), serving("here"));
    const auto port = server.listen("127.0.0.1", 0);
    ASSERT_TRUE(port.ok()) << port.error().message;
    for (const char* host : {"localhost", "127.0.0.1"}) {
        Story story;
        WebSocketClient client(story.handlers(), std::make_shared<ThreadQueue>());
        ASSERT_TRUE(client.open(urlOf(host, *port), trusting("here")).ok());
        ASSERT_TRUE(story.await([&] { return story.opened || story.closes > 0; }));
        ASSERT_TRUE(story.opened) << story.closed.reason;
        std::vector<std::string> sent;
        for (const std::size_t size : {0U, 5U, 70000U, 3000000U, 1U}) {
            std::string bytes(size, '\0');
            for (std::size_t i = 0; i < size; ++i) {
                bytes[i] = static_cast<char>(i * 2654435761U >> 13U);
            }
            sent.push_back(std::move(bytes));
            EXPECT_EQ(client.sendBinary(sent.back()), Sent::taken);
        }
        ASSERT_TRUE(story.awaitMessages(sent.size())) << story.closed.reason;
        EXPECT_EQ(story.messages, sent);
        client.close();
        ASSERT_TRUE(story.awaitClosed());
        EXPECT_TRUE(story.closed.clean) << story.closed.reason;
    }
}

TEST_F(TLS, refusesStrangersAndOtherNames) {
    struct Try {
        const char* served;
        const char* host;
        ClientOptions options;
        const char* why; ///< it does not open; null where it does
    };
    ClientOptions careless = trusting("here");
    careless.verifyCertificate = false;
    for (const Try& one : {Try{"here", "localhost", trusting("here"), nullptr},
                           Try{"here", "localhost", trusting("elsewhere"), "self-signed certificate"},
                           Try{"here", "localhost", ClientOptions(), "self-signed certificate"},
                           Try{"here", "localhost", trusting("nowhere"), "No such file"},
                           Try{"elsewhere", "localhost", trusting("elsewhere"), "hostname mismatch"},
                           Try{"elsewhere", "127.0.0.1", trusting("elsewhere"), "IP address mismatch"},
                           Try{"elsewhere", "localhost", careless, nullptr}}) {
        WebSocketServer server(echo(), serving(one.served));
        const auto port = server.listen("127.0.0.1", 0);
        ASSERT_TRUE(port.ok());
        Story story;
        WebSocketClient client(story.handlers());
        ASSERT_TRUE(client.open(urlOf(one.host, *port), one.options).ok());
        ASSERT_TRUE(story.await([&] { return story.opened || story.closes > 0; }));
        EXPECT_EQ(story.opened, one.why == nullptr) << one.served << " as " << one.host << ": " << story.closed.reason;
        if (one.why != nullptr) {
            EXPECT_EQ(story.closed.code, CloseCode::tlsFailure);
            EXPECT_THAT(story.closed.reason, ::testing::HasSubstr(one.why));
        }
    }
}

TEST_F(TLS, goesThroughAProxyAsATunnel) {
    WebSocketServer server(echo(), serving("elsewhere"));
    const auto port = server.listen("127.0.0.1", 0);
    const Door proxy;
    ClientOptions options = trusting("elsewhere");
    options.proxy = Proxy{"127.0.0.1", proxy.port(), ""};
    Story story;
    WebSocketClient client(story.handlers());
    // The certificate is held against the name in the URL, which only the proxy can find.
    ASSERT_TRUE(client.open("wss://elsewhere.example/x", options).ok());
    const Wire near = proxy.accept();
    EXPECT_EQ(near.receiveHead(), "CONNECT elsewhere.example:443 HTTP/1.1\r\nHost: elsewhere.example:443\r\n\r\n");
    near.send("HTTP/1.1 200 Connected\r\n\r\n");
    const Wire far(*port);
    const auto pump = [](const Wire& from, const Wire& to) {
        for (std::string bytes = from.receive(); !bytes.empty(); bytes = from.receive()) {
            to.send(bytes);
        }
        to.endSending();
    };
    std::thread back([&] { pump(far, near); });
    std::thread there([&] { pump(near, far); });
    EXPECT_TRUE(story.await([&] { return story.opened || story.closes > 0; }));
    EXPECT_TRUE(story.opened) << story.closed.reason;
    client.sendText("through the tunnel");
    EXPECT_TRUE(story.awaitMessages(1));
    client.close();
    EXPECT_TRUE(story.awaitClosed());
    there.join();
    back.join();
    EXPECT_TRUE(story.closed.clean);
}

TEST_F(TLS, endsWithPeersThatDoNotSpeakIt) {
    WebSocketServer server(echo(), serving("here"));
    const auto port = server.listen("127.0.0.1", 0);
    const Wire wire(*port);
    wire.send(upgradeRequest());
    EXPECT_THAT(wire.receiveAll(), ::testing::Not(::testing::HasSubstr("101")));

    const Door door;
    Story story;
    WebSocketClient client(story.handlers());
    ASSERT_TRUE(client.open(urlOf("127.0.0.1", door.port()), trusting("here")).ok());
    const Wire plain = door.accept();
    plain.receive();
    plain.send("HTTP/1.1 400 Bad Request\r\n\r\n");
    ASSERT_TRUE(story.awaitClosed());
    EXPECT_EQ(story.closed.code, CloseCode::tlsFailure);

    ServerOptions broken = serving("here");
    broken.keyFile = file("elsewhere", ".key");
    EXPECT_FALSE(WebSocketServer(echo(), broken).listen("127.0.0.1", 0).ok()) << "a key of another certificate";
}

// Each request for new keys makes us answer. Who never reads the answers must not fill our memory with them.
TEST_F(TLS, endsWithPeersThatAskForKeysAndTakeNone) {
    const auto context = TLSContext::server(serving("here"));
    ASSERT_TRUE(context.ok()) << context.error().message;
    const OpenSslLibrary& library = (*context)->library();
    const auto askForKeys =
        reinterpret_cast<decltype(&SSL_key_update)>(dlsym(dlopen("libssl.so.3", RTLD_NOW), "SSL_key_update"));
    const std::unique_ptr<SSL, decltype(&SSL_free)> peer(library.SSL_new((*context)->handle()), library.SSL_free);
    BIO* const input = library.BIO_new(library.BIO_s_mem());
    BIO* const output = library.BIO_new(library.BIO_s_mem());
    library.SSL_set_bio(peer.get(), input, output);
    library.SSL_set_accept_state(peer.get());
    TLSEngine engine(**TLSContext::client(trusting("here")), "localhost");
    std::string bytes;
    const auto hear = [&] {
        bytes.resize(library.BIO_ctrl_pending(output));
        library.BIO_read(output, bytes.data(), static_cast<int>(bytes.size()));
        engine.receive(bytes);
    };
    for (int i = 0; i < 3; ++i) {
        engine.handshake();
        engine.takeOutput(bytes);
        library.BIO_write(input, bytes.data(), static_cast<int>(bytes.size()));
        library.SSL_do_handshake(peer.get());
        hear();
    }
    std::array<char, 100> into;
    std::size_t size = 0;
    ASSERT_EQ(engine.read(into, size), TLSEngine::Step::needsInput);
    auto step = TLSEngine::Step::needsInput;
    int asked = 0;
    for (; step == TLSEngine::Step::needsInput && asked < 30'000; ++asked) {
        ASSERT_EQ(askForKeys(peer.get(), SSL_KEY_UPDATE_REQUESTED), 1);
        ASSERT_EQ(library.SSL_do_handshake(peer.get()), 1);
        hear();
        step = engine.read(into, size);
    }
    EXPECT_EQ(step, TLSEngine::Step::failed);
    EXPECT_GT(asked, 3000) << "some answers may wait";
    EXPECT_EQ(engine.error(), asio::error::no_buffer_space);
}

TEST(OpenSsl, thatIsMissingOrTooOldIsAnErrorWithItsName) {
    for (const char* file : {"libssl-of-nowhere.so.3", "libz.so.1"}) {
        const auto library = OpenSslLibrary::open(file);
        ASSERT_FALSE(library.ok()) << file;
        EXPECT_THAT(library.error().message,
                    ::testing::AllOf(::testing::HasSubstr("no TLS"), ::testing::HasSubstr(file)));
    }
}

} // namespace
} // namespace zentavo::websocket::test
