#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zentavo::platform {

using Header = std::pair<std::string, std::string>;

/// The headers of a request, in order. Copies share them until one is changed: thousands of waiting requests have the
/// same few.
class Headers {
public:
    using const_iterator = std::vector<Header>::const_iterator;

    Headers() = default;
    Headers(std::vector<Header> list) : list_(std::make_shared<const std::vector<Header>>(std::move(list))) {}
    Headers(std::initializer_list<Header> list) : Headers(std::vector<Header>(list)) {}

    bool empty() const noexcept { return !list_ || list_->empty(); }
    std::size_t size() const noexcept { return list_ ? list_->size() : 0; }
    const_iterator begin() const noexcept { return list_ ? list_->begin() : const_iterator(); }
    const_iterator end() const noexcept { return list_ ? list_->end() : const_iterator(); }

    void emplace_back(std::string name, std::string value) {
        std::vector<Header> list(begin(), end());
        list.emplace_back(std::move(name), std::move(value));
        *this = std::move(list);
    }

    friend bool operator==(const Headers& a, const Headers& b) noexcept {
        return a.list_ == b.list_ || std::equal(a.begin(), a.end(), b.begin(), b.end());
    }

private:
    std::shared_ptr<const std::vector<Header>> list_;
};

} // namespace zentavo::platform
