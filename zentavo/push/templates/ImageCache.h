#pragma once

#include <cstddef>
#include <list>
#include <memory>
#include <string>
#include <unordered_map>

#include "zentavo/platform/Image.h"

namespace zentavo {

/// Pictures by name, bounded in number and in memory: the one that was asked for longest ago goes first. One that is
/// larger than the whole is not kept. One thread at a time.
class ImageCache {
public:
    static constexpr std::size_t defaultCount = 48;
    static constexpr std::size_t defaultBytes = 24U << 20U;

    explicit ImageCache(std::size_t maximumCount = defaultCount, std::size_t maximumBytes = defaultBytes)
        : maximumCount_(maximumCount), maximumBytes_(maximumBytes) {}

    /// Null when it is not here.
    std::shared_ptr<const platform::Image> find(const std::string& name);
    void put(const std::string& name, std::shared_ptr<const platform::Image> image);

    std::size_t count() const noexcept { return entries_.size(); }
    std::size_t bytes() const noexcept { return bytes_; }

private:
    struct Entry {
        std::string name;
        std::shared_ptr<const platform::Image> image;
        std::size_t bytes;
    };
    using Entries = std::list<Entry>;

    void drop(Entries::iterator entry);

    const std::size_t maximumCount_;
    const std::size_t maximumBytes_;
    Entries entries_; ///< the one asked for last in front
    std::unordered_map<std::string, Entries::iterator> places_;
    std::size_t bytes_ = 0;
};

} // namespace zentavo
