#include "devserver/FaultPlayer.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>

#include "devserver/HTTPFront.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {

namespace {

using std::chrono::milliseconds;
using Kind = ScriptedFault::Kind;

constexpr milliseconds oneHour{3'600'000};
/// Between the half answer and the reset, so that the client is in the middle of reading.
constexpr milliseconds midwayPause{50};
/// Keeps method and body, so that a redirect in circles stays one.
constexpr int redirectStatus = 307;
constexpr std::size_t largestPiece = 64U << 10U;

constexpr std::string_view fillerBegin = R"({"filler":")";
constexpr std::string_view fillerEnd = R"("})";

/// Bytes [offset, offset + count) of a JSON object of `size` bytes, or of plain filler where none is that small.
std::string filler(std::size_t size, std::size_t offset, std::size_t count) {
    std::string piece(count, 'x');
    if (size < fillerBegin.size() + fillerEnd.size()) {
        return piece;
    }
    const std::size_t tail = size - fillerEnd.size();
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = offset + i;
        if (at < fillerBegin.size()) {
            piece[i] = fillerBegin[at];
        } else if (at >= tail) {
            piece[i] = fillerEnd[at - tail];
        }
    }
    return piece;
}

std::string text(const Answer& answer) {
    if (!answer.type.empty()) {
        return answer.content;
    }
    const auto written = json::write(answer.body);
    return written ? *written : R"({"error":"the answer cannot be written"})";
}

/// Half a body, and then nothing but a reset.
void breakOff(int status, const std::string& body, const std::string& type, Connection& connection) {
    const std::string start = "HTTP/1.1 " + std::to_string(status) + " \r\nContent-Type: " + type +
                              "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
                              body.substr(0, body.size() / 2);
    connection.write(start.data(), start.size());
    connection.waitWhileOpen(midwayPause);
    connection.reset();
}

bool hasNoBody(int status) { return status == 204 || status == 304; }

} // namespace

std::optional<int> FaultPlayer::statusOf(const ScriptedFault* fault, const Answer& answer) {
    if (fault == nullptr) {
        return answer.status;
    }
    if (fault->kind == Kind::hang || fault->kind == Kind::resetBefore) {
        return std::nullopt;
    }
    return fault->status.value_or(fault->kind == Kind::redirect ? redirectStatus : answer.status);
}

void FaultPlayer::play(const ScriptedFault* fault, Answer answer, Connection& connection, httplib::Response& response) {
    const std::string type = answer.type.empty() ? jsonType : answer.type;
    if (fault == nullptr) {
        answerContent(response, answer.status, text(answer), type);
        return;
    }
    std::shared_ptr<void> slot;
    if (fault->isSlow() && (slot = slow_.take()) == nullptr) {
        answerJSON(response, 503, R"({"error":"too many answers are slow or hang already"})");
        return;
    }
    if (fault->delay.count() > 0 && !connection.waitWhileOpen(fault->delay)) {
        connection.reset();
        return;
    }
    const int status = statusOf(fault, answer).value_or(200);
    if (fault->sessionId) {
        answer.body.set("session_id", *fault->sessionId);
    }
    std::string body = fault->kind == Kind::body ? fault->text : text(answer);
    switch (fault->kind) {
    case Kind::resetBefore:
        connection.reset();
        return;
    case Kind::resetMidway:
        breakOff(status, body, type, connection);
        return;
    case Kind::hang:
        while (connection.waitWhileOpen(oneHour)) {
        }
        connection.reset();
        return;
    case Kind::redirect:
        response.set_header("Location", URL::parse(fault->text)->text());
        body.clear();
        break;
    case Kind::empty:
        body.clear();
        break;
    case Kind::plain:
    case Kind::body:
    case Kind::size:
        break;
    }
    if (hasNoBody(status)) {
        response.status = status;
        return;
    }
    answerContent(response, status, body, type);
    if (fault->drip || fault->kind == Kind::size) {
        dripOrFill(*fault, std::move(body), type, std::move(slot), connection, response);
    }
}

void FaultPlayer::dripOrFill(const ScriptedFault& fault, std::string body, const std::string& type,
                             std::shared_ptr<void> slot, Connection& connection, httplib::Response& response) {
    const bool fills = fault.kind == Kind::size;
    const std::size_t size = fills ? fault.size : body.size();
    response.body.clear();
    if (size == 0) {
        return;
    }
    // Ten pieces a second, or single bytes where the pace is slower than that.
    const std::size_t piece = fault.drip ? std::clamp<std::size_t>(*fault.drip / 10, 1, largestPiece) : largestPiece;
    const milliseconds pause(fault.drip ? std::max<std::size_t>(1, 1'000 * piece / *fault.drip) : 0);
    response.set_content_provider(size, type,
                                  [=, body = std::move(body), slot = std::move(slot),
                                   &connection](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
                                      if (offset > 0 && pause.count() > 0 && !connection.waitWhileOpen(pause)) {
                                          return false;
                                      }
                                      const std::size_t count = std::min(piece, length);
                                      const std::string bytes =
                                          fills ? filler(size, offset, count) : body.substr(offset, count);
                                      return sink.write(bytes.data(), bytes.size());
                                  });
}

} // namespace zentavo::devserver
