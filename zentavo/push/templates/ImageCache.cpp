#include "zentavo/push/templates/ImageCache.h"

#include <utility>

namespace zentavo {

std::shared_ptr<const platform::Image> ImageCache::find(const std::string& name) {
    const auto place = places_.find(name);
    if (place == places_.end()) {
        return nullptr;
    }
    entries_.splice(entries_.begin(), entries_, place->second);
    return entries_.front().image;
}

void ImageCache::put(const std::string& name, std::shared_ptr<const platform::Image> image) {
    if (const auto place = places_.find(name); place != places_.end()) {
        drop(place->second);
    }
    const std::size_t bytes = image->bytes();
    if (bytes > maximumBytes_ || maximumCount_ == 0) {
        return;
    }
    while (entries_.size() >= maximumCount_ || bytes_ + bytes > maximumBytes_) {
        drop(std::prev(entries_.end()));
    }
    entries_.push_front({name, std::move(image), bytes});
    places_.emplace(name, entries_.begin());
    bytes_ += bytes;
}

void ImageCache::drop(Entries::iterator entry) {
    bytes_ -= entry->bytes;
    places_.erase(entry->name);
    entries_.erase(entry);
}

} // namespace zentavo
