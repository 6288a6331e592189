#include "ports/linux/CurlTransfer.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <system_error>
#include <utility>

#include <strings.h>

#include "ports/linux/CurlError.h"
#include "zentavo/foundation/Version.h"

namespace zentavo::linux_port {

using platform::Header;
using platform::URLError;
using platform::URLErrorKind;
using platform::URLResult;
using std::chrono::milliseconds;

namespace {

/// All header lines of all hops together; what is above it is no answer but an attack.
constexpr std::size_t maximumHeadBytes = 1U << 20U;
/// Longer timeouts count as this one: adding them to the clock must not overflow.
constexpr milliseconds longestTimeout = std::chrono::hours(24 * 24); // in ms still an int
constexpr const char* acceptedEncodings = "gzip, deflate";
constexpr milliseconds shortestTimeout = milliseconds(1);

milliseconds bounded(milliseconds timeout) { return std::clamp(timeout, shortestTimeout, longestTimeout); }

bool sameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool isToken(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) {
        return c > ' ' && c < 0x7f && std::strchr("()<>@,;:\\\"/[]?={}", c) == nullptr;
    });
}

bool fitsOnOneLine(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
    const auto begin = text.find_first_not_of(" \t\r\n");
    return begin == std::string_view::npos ? std::string_view()
                                           : text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

} // namespace

CurlTransfer::CurlTransfer(const CurlLibrary& curl, CURLSH* share) : curl_(curl), handle_(curl.curl_easy_init()) {
    const auto set = curl_.curl_easy_setopt;
    set(handle_, CURLOPT_PRIVATE, this);
    set(handle_, CURLOPT_SHARE, share);
    set(handle_, CURLOPT_COOKIEFILE, ""); // switches cookies on; no file is read
    set(handle_, CURLOPT_NOSIGNAL, 1L);
    set(handle_, CURLOPT_ACCEPT_ENCODING, acceptedEncodings); // switches decoding on
    set(handle_, CURLOPT_FOLLOWLOCATION, 1L);
    set(handle_, CURLOPT_MAXREDIRS, 20L);
    set(handle_, CURLOPT_PROTOCOLS_STR, "http,https");
    set(handle_, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    set(handle_, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(longestTimeout.count())); // ours decide
#if LIBCURL_VERSION_NUM >= 0x075700 // never wait for a name server, not even when an exchange is broken off
    set(handle_, CURLOPT_QUICK_EXIT, 1L);
#endif
    set(handle_, CURLOPT_ERRORBUFFER, message_.data());
    set(handle_, CURLOPT_HEADERFUNCTION, &CurlTransfer::takeHeader);
    set(handle_, CURLOPT_HEADERDATA, this);
    set(handle_, CURLOPT_WRITEFUNCTION, &CurlTransfer::takeData);
    set(handle_, CURLOPT_WRITEDATA, this);
    set(handle_, CURLOPT_READFUNCTION, &CurlTransfer::giveBody);
    set(handle_, CURLOPT_READDATA, this);
    set(handle_, CURLOPT_SEEKFUNCTION, &CurlTransfer::rewindBody);
    set(handle_, CURLOPT_SEEKDATA, this);
}

CurlTransfer::~CurlTransfer() {
    curl_.curl_easy_cleanup(handle_);
    curl_.curl_slist_free_all(headerList_);
}

CurlTransfer* CurlTransfer::of(const CurlLibrary& curl, CURL* handle) {
    CurlTransfer* transfer = nullptr;
    curl.curl_easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
    return transfer;
}

std::optional<URLError> CurlTransfer::begin(std::shared_ptr<CurlTask> task, Moment now) {
    task_ = std::move(task);
    task_->transfer = this;
    response_ = {};
    headComplete_ = false;
    headBytes_ = 0;
    bodySent_ = 0;
    data_.clear();
    tooLarge_ = false;
    message_.front() = '\0';
    const auto& request = *task_->request;
    if (!isToken(request.method)) {
        return errorAt(URLErrorKind::other, "\"" + request.method + "\" is no HTTP method", request.url);
    }
    if (auto error = setHeaders(request.headers)) {
        return error;
    }
    setScheme(request.url.scheme() == "https");
    setMethodAndBody();
    curl_.curl_easy_setopt(handle_, CURLOPT_URL, request.url.text().c_str());

    deadline_ = now + bounded(request.totalTimeout);
    lastProgress_ = now;
    progress_ = 0;
    nextCheck_ = std::min(deadline_, now + std::max(bounded(request.idleTimeout) / 8, shortestTimeout));
    return std::nullopt;
}

std::optional<URLError> CurlTransfer::setHeaders(const platform::Headers& headers) {
    if (headers_ == headers) {
        return std::nullopt;
    }
    headers_.reset();
    curl_slist* list = nullptr;
    const auto add = [&](const std::string& line) { list = curl_.curl_slist_append(list, line.c_str()); };
    const auto addUnlessGiven = [&](std::string_view name, const std::string& line) {
        const bool given = std::any_of(headers.begin(), headers.end(),
                                       [&](const Header& header) { return sameName(header.first, name); });
        if (!given) {
            add(line);
        }
    };
    // libcurl has options for some of these, but then formats them anew for each request, and twice. A name without a
    // value takes away what libcurl would add by itself.
    addUnlessGiven("User-Agent", "User-Agent: ZentavoSDK/" ZENTAVO_VERSION);
    addUnlessGiven("Accept-Encoding", std::string("Accept-Encoding: ") + acceptedEncodings);
    addUnlessGiven("Content-Type", "Content-Type:");
    add("Expect:");
    for (const auto& [name, value] : headers) {
        if (!isToken(name) || !fitsOnOneLine(value)) {
            curl_.curl_slist_free_all(list);
            return errorAt(URLErrorKind::other, "\"" + name + "\" is no header that can be sent", task_->request->url);
        }
        add(trimmed(value).empty() ? name + ";" : name + ": " + value);
    }
    curl_.curl_easy_setopt(handle_, CURLOPT_HTTPHEADER, list);
    curl_.curl_slist_free_all(headerList_);
    headerList_ = list;
    headers_ = headers;
    return std::nullopt;
}

void CurlTransfer::setScheme(bool secure) {
    if (secure_ == secure) {
        return;
    }
    secure_ = secure;
    curl_.curl_easy_setopt(handle_, CURLOPT_HTTP_VERSION,
                           static_cast<long>(secure ? CURL_HTTP_VERSION_2TLS : CURL_HTTP_VERSION_1_1));
    // Wait for a connection that multiplexes rather than open another one beside it.
    curl_.curl_easy_setopt(handle_, CURLOPT_PIPEWAIT, secure ? 1L : 0L);
}

void CurlTransfer::setMethodAndBody() {
    const auto set = curl_.curl_easy_setopt;
    const auto& request = *task_->request;
    const auto size = static_cast<curl_off_t>(request.body ? request.body->size() : 0);
    const char* custom = nullptr;
    set(handle_, CURLOPT_POSTFIELDS, nullptr); // while this is set, a redirected PUT would not be read again
    set(handle_, CURLOPT_HTTPGET, 1L);         // ends whatever else the handle did before
    if (request.method == "PUT") {
        // libcurl's own upload, because that knows what redirects make of a PUT.
        set(handle_, CURLOPT_UPLOAD, 1L);
        set(handle_, CURLOPT_INFILESIZE_LARGE, size);
    } else if (request.method == "POST" || request.body) {
        // An absent body goes out as "Content-Length: 0" too: a POST without any length is refused by some servers.
        set(handle_, CURLOPT_POSTFIELDSIZE_LARGE, size);
        set(handle_, CURLOPT_POSTFIELDS, request.body ? request.body->data() : "");
        custom = request.method == "POST" ? nullptr : request.method.c_str();
    } else if (request.method == "HEAD") {
        set(handle_, CURLOPT_NOBODY, 1L);
    } else if (request.method != "GET") {
        custom = request.method.c_str();
    }
    set(handle_, CURLOPT_CUSTOMREQUEST, custom);
}

std::optional<URLError> CurlTransfer::overdue(Moment now) {
    if (now < nextCheck_) {
        return std::nullopt;
    }
    const auto& request = *task_->request;
    const auto idle = bounded(request.idleTimeout);
    if (now >= deadline_) {
        return errorAt(URLErrorKind::timedOut, "Not done after " + std::to_string(request.totalTimeout.count()) + " ms",
                       request.url);
    }
    if (const auto seen = progress(); seen != progress_) {
        progress_ = seen;
        lastProgress_ = now;
    }
    if (now - lastProgress_ >= idle) {
        return errorAt(URLErrorKind::timedOut,
                       "Nothing came or went for " + std::to_string(request.idleTimeout.count()) + " ms", request.url);
    }
    nextCheck_ = std::min({deadline_, lastProgress_ + idle, now + std::max(idle / 8, shortestTimeout)});
    return std::nullopt;
}

curl_off_t CurlTransfer::progress() const {
    curl_off_t sum = 0;
    for (const auto what : {CURLINFO_SIZE_UPLOAD_T, CURLINFO_SIZE_DOWNLOAD_T, CURLINFO_NAMELOOKUP_TIME_T,
                            CURLINFO_CONNECT_TIME_T, CURLINFO_APPCONNECT_TIME_T}) {
        curl_off_t value = 0;
        curl_.curl_easy_getinfo(handle_, what, &value);
        sum += value;
    }
    for (const auto what : {CURLINFO_REQUEST_SIZE, CURLINFO_HEADER_SIZE}) {
        long value = 0;
        curl_.curl_easy_getinfo(handle_, what, &value);
        sum += value;
    }
    return sum;
}

std::optional<bool> CurlTransfer::multiplexed() const {
    if (!headComplete_) {
        return std::nullopt;
    }
    long version = 0;
    curl_.curl_easy_getinfo(handle_, CURLINFO_HTTP_VERSION, &version);
    return version >= CURL_HTTP_VERSION_2_0;
}

URLResult CurlTransfer::end(CURLcode code) {
    if (code == CURLE_OK) {
        return {std::move(data_), std::move(response_), std::nullopt};
    }
    const auto& url = task_->request->url;
    if (tooLarge_) {
        return end(errorAt(URLErrorKind::answerTooLarge, "The answer is longer than allowed", url));
    }
    std::string what = message_.front() != '\0' ? message_.data() : curl_.curl_easy_strerror(code);
    long systemError = 0;
    curl_.curl_easy_getinfo(handle_, CURLINFO_OS_ERRNO, &systemError);
    if (code == CURLE_COULDNT_CONNECT && systemError != 0) {
        what = std::generic_category().message(static_cast<int>(systemError));
    }
    return end(errorAt(errorKind(code), what, url));
}

URLResult CurlTransfer::end(URLError error) {
    URLResult result;
    const bool redirected = response_.status / 100 == 3 && error.kind != URLErrorKind::tooManyRedirects;
    if (headComplete_ && !redirected) { // the head of a hop that was left behind is not the answer's
        result.response = std::move(response_);
    }
    result.error = std::move(error);
    return result;
}

std::shared_ptr<CurlTask> CurlTransfer::takeTask() {
    task_->transfer = nullptr;
    return std::move(task_);
}

std::size_t CurlTransfer::takeHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    transfer.headBytes_ += size * count;
    if (transfer.headBytes_ > maximumHeadBytes) {
        transfer.tooLarge_ = true;
        return 0;
    }
    transfer.takeHeaderLine({bytes, size * count});
    return size * count;
}

void CurlTransfer::takeHeaderLine(std::string_view line) {
    if (line.substr(0, 5) == "HTTP/") { // each hop, and each interim answer, has a head of its own
        response_ = {};
        response_.headers.reserve(8);
        headComplete_ = false;
        const auto space = line.find(' ');
        if (space != std::string_view::npos) {
            const auto status = line.substr(space + 1);
            std::from_chars(status.data(), status.data() + status.size(), response_.status);
        }
        return;
    }
    if (headComplete_) {
        return; // a trailer
    }
    const auto text = trimmed(line);
    if (text.empty()) {
        headComplete_ = response_.status >= 200;
        return;
    }
    if (const auto colon = text.find(':'); colon != std::string_view::npos) {
        response_.headers.emplace_back(trimmed(text.substr(0, colon)), trimmed(text.substr(colon + 1)));
    }
}

std::size_t CurlTransfer::takeData(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    const auto length = size * count; // already decoded: a small gzip body cannot grow past the limit
    if (length > transfer.task_->request->maximumAnswerBytes - transfer.data_.size()) {
        transfer.tooLarge_ = true;
        return 0;
    }
    transfer.data_.append(bytes, length);
    return length;
}

std::size_t CurlTransfer::giveBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    const auto& body = transfer.task_->request->body;
    if (!body) {
        return 0;
    }
    const auto length = body->copy(bytes, size * count, transfer.bodySent_);
    transfer.bodySent_ += length;
    return length;
}

int CurlTransfer::rewindBody(void* self, curl_off_t offset, int origin) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    const auto& body = transfer.task_->request->body;
    if (origin != SEEK_SET || offset < 0 || static_cast<std::size_t>(offset) > (body ? body->size() : 0)) {
        return CURL_SEEKFUNC_FAIL;
    }
    transfer.bodySent_ = static_cast<std::size_t>(offset);
    return CURL_SEEKFUNC_OK;
}

} // namespace zentavo::linux_port
