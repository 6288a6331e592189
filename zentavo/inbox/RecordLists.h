#pragma once

#include <algorithm>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/KeyedDecoder.h"

namespace zentavo {

/// The lists in an answer's "data", read record by record while the answer itself is read: what a page of 100,000
/// messages would take as values is many times the caches, and is met again and again on the way to a record.
template <class Record>
class RecordLists : public json::ListTaker {
public:
    void begin(std::string_view outer, std::string_view inner, std::size_t size) override {
        current_ = nullptr;
        if (outer == "data") {
            key_ = inner;
            lists_.erase(key_);
            current_ = &lists_.try_emplace(key_, place_).first->second;
            current_->records.reserve(std::min(size, mostReserved));
        }
    }

    void take(Value element) override {
        if (current_ != nullptr && !current_->decoder.failed()) {
            auto& records = current_->records;
            records.push_back(current_->decoder.nested("data", [&](KeyedDecoder& data) {
                return data.nestedElement(key_, records.size(), element, Record::decode);
            }));
        }
    }

    /// The lists that the rest of the answer still has, which `data` reads: of a list or an object that was given twice
    /// only the later counts, with its failure and its remarks.
    std::map<std::string, std::vector<Record>> in(KeyedDecoder& data) {
        std::map<std::string, std::vector<Record>> found;
        for (const auto& [key, value] : data.source()) {
            data.list(key);
            if (data.failed()) {
                break;
            }
            Kept& kept = lists_.at(key);
            data.adopt(kept.decoder);
            found.emplace(key, std::move(kept.records));
        }
        return found;
    }

private:
    struct Kept {
        explicit Kept(const Map& place) : decoder(place) {}

        KeyedDecoder decoder;
        std::vector<Record> records;
    };

    /// A record is much larger than the shortest text of an element, so room for more is made only as they come.
    static constexpr std::size_t mostReserved = 4096;

    /// Where records lie, for the paths of failures.
    const Map place_{{"data", Map()}};
    std::map<std::string, Kept> lists_;
    std::string key_;
    Kept* current_ = nullptr;
};

} // namespace zentavo
