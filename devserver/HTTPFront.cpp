#include "devserver/HTTPFront.h"

#include <chrono>
#include <utility>

#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

constexpr std::chrono::seconds idleTime{75};
constexpr std::size_t mostHeadBytes = 64U << 10U;
/// A body in small chunks is larger on the wire than in memory.
constexpr std::size_t mostBodyBytes = 4 * IncomingRequest::maximumBody;
/// The library matches paths with regular expressions, whose recursion grows with the path.
constexpr std::size_t longestPath = 1'024;

/// Serving is done by one thread a connection, and the library hands handlers no connection.
thread_local Connection* current = nullptr;
/// The library compresses where a client would accept it, at a cost that a busy client pays for nothing. So it does not
/// get to see this header.
thread_local std::string hiddenEncoding;

const char* const acceptEncoding = "Accept-Encoding";

bool announcesBody(const httplib::Request& request) {
    return request.has_header("Content-Length") || request.has_header("Transfer-Encoding");
}

/// The library adds the addresses of both ends to the client's headers.
bool isLibraryNote(std::string_view header) {
    return header == "LOCAL_ADDR" || header == "LOCAL_PORT" || header == "REMOTE_ADDR" || header == "REMOTE_PORT";
}

IncomingRequest::Body readBody(const httplib::ContentReader& reader, std::string& body) {
    bool tooLarge = false;
    const bool complete = reader([&](const char* bytes, std::size_t count) {
        tooLarge = body.size() + count > IncomingRequest::maximumBody;
        if (!tooLarge) {
            body.append(bytes, count);
        }
        return !tooLarge;
    });
    if (complete) {
        return IncomingRequest::Body::complete;
    }
    return tooLarge ? IncomingRequest::Body::tooLarge : IncomingRequest::Body::brokenOff;
}

} // namespace

void answerContent(httplib::Response& response, int status, std::string body, const std::string& type) {
    response.status = status;
    response.body = std::move(body);
    response.set_header("Content-Type", type);
}

void answerJSON(httplib::Response& response, int status, std::string body) {
    answerContent(response, status, std::move(body), jsonType);
}

HTTPFront::HTTPFront(Handler handler) : handler_(std::move(handler)) {
    // The library takes this for "running"; sockets are the listener's affair.
    svr_sock_ = 0;
    set_keep_alive_max_count(1'000'000);
    set_keep_alive_timeout(idleTime.count());

    const std::string any = R"([\s\S]*)";
    const auto plain = [this](const httplib::Request& request, httplib::Response& response) {
        run(request, nullptr, response);
    };
    const auto withBody = [this](const httplib::Request& request, httplib::Response& response,
                                 const httplib::ContentReader& reader) { run(request, &reader, response); };
    Get(any, plain).Options(any, plain);
    Post(any, withBody).Put(any, withBody).Patch(any, withBody).Delete(any, withBody);

    set_pre_routing_handler([](const httplib::Request& request, httplib::Response& response) {
        if (request.path.size() <= longestPath && !request.is_multipart_form_data()) {
            return HandlerResponse::Unhandled;
        }
        current->closeAfterAnswer();
        const bool multipart = request.path.size() <= longestPath;
        answerJSON(response, multipart ? 415 : 414,
                   multipart ? R"({"error":"multipart bodies are not read here"})"
                             : R"({"error":"the path is too long"})");
        return HandlerResponse::Handled;
    });
    set_error_handler(httplib::Server::Handler([](const httplib::Request&, httplib::Response& response) {
        // An answer of ours says what it is, even when it is empty on purpose.
        if (!response.has_header("Content-Type")) {
            // Where the next request begins is not known either.
            current->closeAfterAnswer();
            response.set_header("Connection", "close");
            const int status = response.status;
            answerJSON(response, status, R"({"error":"this is not a request that the server understands"})");
        }
    }));
    set_exception_handler([](const httplib::Request&, httplib::Response& response, std::exception_ptr) {
        answerJSON(response, 500, R"({"error":"the server failed at this request"})");
    });
}

void HTTPFront::serve(Connection& connection) {
    current = &connection;
    const auto prepare = [&](httplib::Request& request) {
        connection.allow(mostBodyBytes);
        hiddenEncoding = request.get_header_value(acceptEncoding);
        request.headers.erase(acceptEncoding);
    };
    bool closed = false;
    while (!closed && !connection.closing() && connection.waitForRequest(idleTime)) {
        connection.allow(mostHeadBytes);
        if (!process_request(connection, false, closed, prepare)) {
            break;
        }
    }
    connection.finish();
    current = nullptr;
}

void HTTPFront::stop() noexcept { svr_sock_ = INVALID_SOCKET; }

void HTTPFront::run(const httplib::Request& request, const httplib::ContentReader* reader,
                    httplib::Response& response) {
    IncomingRequest incoming;
    incoming.method = request.method;
    for (const auto& [key, value] : request.headers) {
        if (isLibraryNote(key)) {
            continue;
        }
        incoming.headers.emplace_back(utf8Text(key), utf8Text(value));
    }
    if (!hiddenEncoding.empty()) {
        incoming.headers.emplace_back(acceptEncoding, utf8Text(hiddenEncoding));
    }
    if (announcesBody(request)) {
        incoming.bodyState = reader != nullptr ? readBody(*reader, incoming.body) : IncomingRequest::Body::brokenOff;
    }
    if (reader == nullptr && incoming.bodyState == IncomingRequest::Body::brokenOff &&
        request.get_header_value("Content-Length") == "0") {
        incoming.bodyState = IncomingRequest::Body::complete;
    }
    if (incoming.bodyState != IncomingRequest::Body::complete) {
        current->closeAfterAnswer();
    }
    incoming.setTarget(request.target);
    handler_(std::move(incoming), *current, response);
    if (current->closing()) {
        response.set_header("Connection", "close");
    }
}

} // namespace zentavo::devserver
