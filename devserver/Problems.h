#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zentavo::devserver {

/// Everything that is wrong with one request, in sentences for the app's developer. Bounded: a hostile body cannot make
/// the list grow with it; beyond the bound problems are only counted.
class Problems {
public:
    static constexpr std::size_t maximum = 50;

    void add(std::string problem);
    bool empty() const noexcept { return list_.empty(); }
    std::size_t count() const noexcept { return list_.size() + more_; }
    /// In the order found; the last line says how many more there were.
    std::vector<std::string> list() const;

private:
    std::vector<std::string> list_;
    std::size_t more_ = 0;
};

} // namespace zentavo::devserver
