#include "floor/FloorClient.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include <curl/curl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "support/Failure.h"

namespace bench {

namespace {

constexpr std::size_t connections = 4;

void append(std::string& out, double number) {
    std::array<char, 32> text;
    const auto end = std::to_chars(text.begin(), text.end(), number).ptr;
    out.append(text.data(), end);
}
void append(std::string& out, int number) {
    std::array<char, 12> text;
    const auto end = std::to_chars(text.begin(), text.end(), number).ptr;
    out.append(text.data(), end);
}

std::size_t ignore(char*, std::size_t size, std::size_t count, void*) { return size * count; }

} // namespace

/// One of the connections' handles and the body that it sends.
struct FloorClient::Transfer {
    CURL* easy = nullptr;
    std::string body;
    bool busy = false;
};

FloorClient::FloorClient(const Job& job)
    : url_("http://127.0.0.1:" + std::to_string(job.port) + "/event?resp_type=json&portal_id=4711&prop_id=555"),
      wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    // What the SDK's bodies hold besides is made up for by the length of the context.
    const std::size_t rest = body(event_).size();
    if (job.bodyBytes > rest) {
        context_.assign(job.bodyBytes - rest, 'x');
    }
    bodyBytes_ = std::max(job.bodyBytes, rest) + 64; // room for longer numbers
}

FloorClient::~FloorClient() {
    over_ = true;
    const std::uint64_t one = 1;
    checkSystem(write(wake_, &one, sizeof one) == sizeof one, "waking the worker");
    if (worker_.joinable()) {
        worker_.join();
    }
    close(wake_);
}

void FloorClient::start() {
    worker_ = std::thread([this] { work(); });
}

std::string FloorClient::body(const FloorEvent& event) const {
    std::string out;
    out.reserve(bodyBytes_);
    out += R"({"dims":{"customers":{"customer_id":"c1"}},"extra":{"list":")";
    out += event.list;
    out += R"(","category":")";
    out += event.category;
    out += R"(","brand":")";
    out += event.brand;
    out += R"(","currency":")";
    out += event.currency;
    out += R"(","position":)";
    append(out, event.position);
    out += R"(,"available":)";
    out += event.available ? "true" : "false";
    out += R"(,"rating":)";
    append(out, event.rating);
    out += R"(},"context":{"is":")";
    out += context_;
    out += R"("},"uid":"visitor-1","en":"view_product","items":[{"sku":")";
    out += event.sku;
    out += R"(","price":)";
    append(out, event.price);
    out += R"(,"quantity":)";
    append(out, event.quantity);
    out += R"(}],"portal_id":"4711","prop_id":"555","resp_type":"json","identify_type":"predict"})";
    return out;
}

void FloorClient::track(const FloorEvent& event) {
    std::string text = body(event);
    bool wake = false;
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(text));
        wake = workerWaits_;
        workerWaits_ = false;
    }
    if (wake) {
        const std::uint64_t one = 1;
        checkSystem(write(wake_, &one, sizeof one) == sizeof one, "waking the worker");
    }
}

/// The next body. When there is none the worker is going to wait, and the next caller wakes it.
bool FloorClient::take(std::string& body) {
    const std::lock_guard lock(mutex_);
    if (waiting_.empty()) {
        workerWaits_ = true;
        return false;
    }
    body = std::move(waiting_.front());
    waiting_.pop_front();
    return true;
}

void FloorClient::work() {
    curl_global_init(CURL_GLOBAL_DEFAULT);
    CURLM* multi = curl_multi_init();
    curl_multi_setopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, static_cast<long>(connections));
    curl_slist* headers = curl_slist_append(nullptr, "Content-Type: application/json");
    headers = curl_slist_append(headers, "Expect:");
    std::array<Transfer, connections> transfers;
    for (Transfer& transfer : transfers) {
        transfer.easy = curl_easy_init();
        curl_easy_setopt(transfer.easy, CURLOPT_URL, url_.c_str());
        curl_easy_setopt(transfer.easy, CURLOPT_HTTPHEADER, headers);
        curl_easy_setopt(transfer.easy, CURLOPT_WRITEFUNCTION, ignore);
        curl_easy_setopt(transfer.easy, CURLOPT_PROXY, "");
        curl_easy_setopt(transfer.easy, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(transfer.easy, CURLOPT_PRIVATE, &transfer);
    }
    curl_waitfd wake{wake_, CURL_WAIT_POLLIN, 0};
    while (!over_) {
        bool idle = false; // some transfer found nothing to send
        for (Transfer& transfer : transfers) {
            if (transfer.busy || idle) {
                continue;
            }
            if (!take(transfer.body)) {
                idle = true;
                continue;
            }
            curl_easy_setopt(transfer.easy, CURLOPT_POSTFIELDSIZE, static_cast<long>(transfer.body.size()));
            curl_easy_setopt(transfer.easy, CURLOPT_POSTFIELDS, transfer.body.data());
            curl_multi_add_handle(multi, transfer.easy);
            transfer.busy = true;
        }
        int running = 0;
        curl_multi_perform(multi, &running);
        bool finished = false;
        int left = 0;
        while (const CURLMsg* message = curl_multi_info_read(multi, &left)) {
            Transfer* transfer = nullptr;
            curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &transfer);
            curl_multi_remove_handle(multi, transfer->easy);
            transfer->busy = false;
            finished = true;
        }
        if (finished) {
            continue;
        }
        curl_multi_poll(multi, &wake, 1, 1000, nullptr);
        if ((wake.revents & CURL_WAIT_POLLIN) != 0) {
            std::uint64_t count = 0;
            [[maybe_unused]] const auto bytes = read(wake_, &count, sizeof count);
            wake.revents = 0;
        }
    }
    for (Transfer& transfer : transfers) {
        curl_multi_remove_handle(multi, transfer.easy);
        curl_easy_cleanup(transfer.easy);
    }
    curl_slist_free_all(headers);
    curl_multi_cleanup(multi);
}

} // namespace bench
