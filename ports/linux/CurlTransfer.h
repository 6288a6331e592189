#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ports/linux/CurlLibrary.h"
#include "ports/linux/CurlTask.h"

namespace zentavo::linux_port {

/// One easy handle of libcurl and the exchange that it carries at the moment. Handles are used again, and from one
/// exchange to the next only what differs is set. Network thread only.
class CurlTransfer {
public:
    using Moment = std::chrono::steady_clock::time_point;

    CurlTransfer(const CurlLibrary& curl, CURLSH* share);
    ~CurlTransfer();
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    /// Readies the handle for `task`; an error when the request cannot be sent as it is.
    std::optional<platform::URLError> begin(std::shared_ptr<CurlTask> task, Moment now);

    /// Whether nothing has come or gone for too long, or the whole has taken too long. Progress is looked at every
    /// eighth of the idle timeout, so idleness is noticed up to that much late.
    std::optional<platform::URLError> overdue(Moment now);
    /// When to ask `overdue` again.
    Moment nextCheck() const { return nextCheck_; }

    /// Ends the exchange with what libcurl says, or with `error`; gives the task back through `task()`.
    platform::URLResult end(CURLcode code);
    platform::URLResult end(platform::URLError error);
    std::shared_ptr<CurlTask> takeTask();
    const std::shared_ptr<CurlTask>& task() const { return task_; }

    CURL* handle() const { return handle_; }
    /// Whether the exchange that is ending ran over a connection that carries several at a time; none when it came to no
    /// answer.
    std::optional<bool> multiplexed() const;
    static CurlTransfer* of(const CurlLibrary& curl, CURL* handle);

private:
    std::optional<platform::URLError> setHeaders(const platform::Headers& headers);
    void setMethodAndBody();
    void setScheme(bool secure);
    /// A sum that grows whenever something comes or goes, connecting included.
    curl_off_t progress() const;

    static std::size_t takeHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t takeData(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t giveBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static int rewindBody(void* self, curl_off_t offset, int origin);
    void takeHeaderLine(std::string_view line);

    const CurlLibrary& curl_;
    CURL* const handle_;
    std::array<char, CURL_ERROR_SIZE> message_{};

    // What the handle is set to, so that it need not be set again.
    curl_slist* headerList_ = nullptr;
    std::optional<platform::Headers> headers_;
    std::optional<bool> secure_;

    // The exchange under way.
    std::shared_ptr<CurlTask> task_;
    std::size_t bodySent_ = 0;
    platform::URLResponse response_;
    bool headComplete_ = false;
    std::size_t headBytes_ = 0;
    std::string data_;
    bool tooLarge_ = false;

    Moment deadline_;
    Moment lastProgress_;
    Moment nextCheck_;
    curl_off_t progress_ = 0;
};

} // namespace zentavo::linux_port
