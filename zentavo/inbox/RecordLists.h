#pragma once

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
        records_ = nullptr;
        if (outer == "data") {
            key_ = inner;
            records_ = &lists_[key_];
            records_->clear();
            records_->reserve(size);
        }
    }

    void take(Value element) override {
        if (records_ != nullptr && !decoder_.failed()) {
            records_->push_back(decoder_.nested("data", [&](KeyedDecoder& data) {
                return data.nestedElement(key_, records_->size(), element, Record::decode);
            }));
        }
    }

    /// Knows the first failure, and the remarks.
    const KeyedDecoder& decoder() const { return decoder_; }

    /// The lists that the rest of the answer still has, which `data` reads: of an object that was given twice only the
    /// later counts.
    std::map<std::string, std::vector<Record>> in(KeyedDecoder& data) {
        std::map<std::string, std::vector<Record>> found;
        for (const auto& [key, value] : data.source()) {
            data.list(key);
            if (data.failed()) {
                break;
            }
            found.emplace(key, std::move(lists_[key]));
        }
        return found;
    }

private:
    /// Where records lie, for the paths of failures.
    const Map place_{{"data", Map()}};
    KeyedDecoder decoder_{place_};
    std::map<std::string, std::vector<Record>> lists_;
    std::string key_;
    std::vector<Record>* records_ = nullptr;
};

} // namespace zentavo
