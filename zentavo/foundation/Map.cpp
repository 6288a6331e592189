#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "zentavo/foundation/Value.h"

namespace zentavo {
namespace {

/// Up to here a walk over the entries is faster than a hash, and the map carries no index.
constexpr std::size_t walkedEntries = 16;

/// The two halves of the 128-bit product, one over the other.
std::uint64_t foldedProduct(std::uint64_t a, std::uint64_t b) noexcept {
    constexpr std::uint64_t lower = 0xFFFFFFFFU;
    const std::uint64_t low = (a & lower) * (b & lower);
    const std::uint64_t middle = (a >> 32U) * (b & lower);
    const std::uint64_t cross = (low >> 32U) + (middle & lower) + (a & lower) * (b >> 32U);
    const std::uint64_t high = (middle >> 32U) + (cross >> 32U) + (a >> 32U) * (b >> 32U);
    return high ^ (cross << 32U | (low & lower));
}

/// Eight bytes at a time. Where the program lies in memory differs from run to run and seeds it, so that names which
/// all meet in one slot cannot be prepared beforehand.
std::size_t hashOf(std::string_view key) noexcept {
    static const char seed = 0;
    std::uint64_t state = reinterpret_cast<std::uintptr_t>(&seed) ^ (key.size() * 0x9E3779B97F4A7C15U);
    while (!key.empty()) {
        std::uint64_t word = 0;
        const std::size_t taken = std::min(key.size(), sizeof word);
        std::memcpy(&word, key.data(), taken);
        state = foldedProduct(state ^ word, 0xD6E8FEB86659FD93U);
        key.remove_prefix(taken);
    }
    return static_cast<std::size_t>(foldedProduct(state ^ 0xA0761D6478BD642FU, 0xE7037ED1A0B428DBU));
}

} // namespace

Map::Map() = default;
Map::Map(std::initializer_list<Entry> entries) {
    reserve(entries.size());
    for (const Entry& entry : entries) {
        set(entry.key, entry.value);
    }
}
Map::Map(const Map&) = default;
Map::Map(Map&&) noexcept = default;
Map& Map::operator=(const Map&) = default;
Map& Map::operator=(Map&&) noexcept = default;
Map::~Map() = default;

/// Where `key` stands in the index, or the free slot where it would. The index holds positions plus one, 0 for free,
/// and is at most half full, so a free slot always ends the search.
std::size_t Map::slotOf(std::string_view key) const noexcept {
    const std::size_t mask = index_.size() - 1;
    std::size_t slot = hashOf(key) & mask;
    while (index_[slot] != 0 && entries_[index_[slot] - 1].key != key) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

void Map::rebuildIndex() {
    if (entries_.size() <= walkedEntries) {
        index_.clear();
        return;
    }
    index_.assign(std::bit_ceil(entries_.size() * 4), 0);
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        index_[slotOf(entries_[i].key)] = static_cast<std::uint32_t>(i + 1);
    }
}

const Value* Map::find(std::string_view key) const noexcept {
    if (index_.empty()) {
        for (const Entry& entry : entries_) {
            if (entry.key == key) {
                return &entry.value;
            }
        }
        return nullptr;
    }
    const std::uint32_t position = index_[slotOf(key)];
    return position == 0 ? nullptr : &entries_[position - 1].value;
}

Value* Map::find(std::string_view key) noexcept { return const_cast<Value*>(std::as_const(*this).find(key)); }

Value& Map::set(std::string key, Value value) {
    if (Value* present = find(key)) {
        *present = std::move(value);
        return *present;
    }
    entries_.push_back({std::move(key), std::move(value)});
    if (entries_.size() * 2 > index_.size()) {
        rebuildIndex();
    } else {
        index_[slotOf(entries_.back().key)] = static_cast<std::uint32_t>(entries_.size());
    }
    return entries_.back().value;
}

bool Map::remove(std::string_view key) {
    for (auto entry = entries_.begin(); entry != entries_.end(); ++entry) {
        if (entry->key == key) {
            entries_.erase(entry);
            rebuildIndex();
            return true;
        }
    }
    return false;
}

void Map::merge(const Map& other) {
    if (this == &other) {
        return;
    }
    for (const Entry& entry : other) {
        set(entry.key, entry.value);
    }
}

void Map::reserve(std::size_t count) { entries_.reserve(count); }

bool operator==(const Map& a, const Map& b) noexcept {
    if (a.size() != b.size()) {
        return false;
    }
    for (const Map::Entry& entry : a) {
        const Value* other = b.find(entry.key);
        if (other == nullptr || !(*other == entry.value)) {
            return false;
        }
    }
    return true;
}

} // namespace zentavo
