#pragma once

#include <cstddef>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "zentavo/foundation/KeyedDecoder.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::desktop {

// A bounded list of records under one key of a suite, which the next process reads.

/// What `decode` makes of the maps of the list. What is damaged is left out, and a list of more than `maximum` is none of
/// ours.
template <class Decode>
auto readRecords(const std::optional<Value>& stored, std::size_t maximum, Decode decode) {
    std::vector<std::invoke_result_t<Decode, KeyedDecoder&>> records;
    const List* list = stored ? stored->asList() : nullptr;
    if (list == nullptr || list->size() > maximum) {
        return records;
    }
    for (const Value& each : *list) {
        if (const Map* map = each.asMap()) {
            KeyedDecoder decoder(*map);
            auto record = decode(decoder);
            if (!decoder.failure()) {
                records.push_back(std::move(record));
            }
        }
    }
    return records;
}

/// The list with the maps that `encode` makes of them; none where there are none, so that the key goes.
template <class Record, class Encode>
std::optional<Value> writeRecords(const std::vector<Record>& records, Encode encode) {
    if (records.empty()) {
        return std::nullopt;
    }
    List list;
    for (const Record& each : records) {
        list.push_back(Value(encode(each)));
    }
    return Value(std::move(list));
}

/// Of more than `maximum` the oldest is forgotten.
template <class Record>
void addRecord(std::vector<Record>& records, Record record, std::size_t maximum) {
    if (records.size() == maximum) {
        records.erase(records.begin());
    }
    records.push_back(std::move(record));
}

} // namespace zentavo::desktop
