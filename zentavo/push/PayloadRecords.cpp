// Reading and writing of the payload's records, all of them by their lists of fields.

#include <utility>

#include "zentavo/foundation/JSON.h"
#include "zentavo/push/PayloadFields.h"

namespace zentavo {

namespace {

template <class Record>
Record readRecord(KeyedDecoder& decoder);

class Reader {
public:
    explicit Reader(KeyedDecoder& decoder) : decoder_(decoder) {}

    void operator()(const char* key, std::string& field) { field = decoder_.string(key); }
    void operator()(const char* key, std::int64_t& field) { field = decoder_.integer(key); }
    void operator()(const char* key, bool& field) { field = decoder_.boolean(key); }
    void operator()(const char* key, std::optional<std::string>& field) { field = decoder_.optionalString(key); }
    void operator()(const char* key, std::optional<std::int64_t>& field) { field = decoder_.optionalInteger(key); }
    void operator()(const char* key, std::optional<bool>& field) { field = decoder_.optionalBoolean(key); }
    void operator()(const char* key, std::optional<std::vector<std::string>>& field) {
        if (decoder_.present(key)) {
            field = decoder_.stringList(key);
        }
    }
    void operator()(const char* key, std::optional<std::map<std::string, std::string>>& field) {
        field = decoder_.optionalNested(key, [](KeyedDecoder& members) {
            std::map<std::string, std::string> texts;
            for (const auto& [name, value] : members.source()) {
                texts.emplace(name, members.string(name));
                if (members.failed()) {
                    break;
                }
            }
            return texts;
        });
    }
    template <class Record>
    void operator()(const char* key, std::optional<Record>& field) {
        field = decoder_.optionalNested(key, readRecord<Record>);
    }
    template <class Record>
    void operator()(const char* key, std::vector<Record>& field) {
        field = decoder_.nestedList(key, readRecord<Record>);
    }

private:
    KeyedDecoder& decoder_;
};

template <class Record>
Record readRecord(KeyedDecoder& decoder) {
    Record record;
    visitFields(record, Reader(decoder));
    return record;
}

class Writer {
public:
    explicit Writer(Map& map) : map_(map) {}

    template <class Scalar>
    void operator()(const char* key, const Scalar& field) {
        map_.set(key, field);
    }
    void operator()(const char* key, const std::optional<std::vector<std::string>>& field) {
        if (field) {
            map_.set(key, List(field->begin(), field->end()));
        }
    }
    template <class Record>
    void operator()(const char* key, const std::optional<Record>& field) {
        if (field) {
            map_.set(key, field->encode());
        }
    }
    template <class Record>
    void operator()(const char* key, const std::vector<Record>& field) {
        List list;
        for (const Record& record : field) {
            list.emplace_back(record.encode());
        }
        map_.set(key, std::move(list));
    }

private:
    Map& map_;
};

template <class Record>
Map writeRecord(Record record) {
    Map map;
    visitFields(record, Writer(map));
    return map;
}

} // namespace

Badge Badge::decode(KeyedDecoder& decoder) { return readRecord<Badge>(decoder); }
Map Badge::encode() const { return writeRecord(*this); }

ActionButtons::Button ActionButtons::Button::decode(KeyedDecoder& decoder) { return readRecord<Button>(decoder); }
Map ActionButtons::Button::encode() const { return writeRecord(*this); }

ActionButtons ActionButtons::decode(KeyedDecoder& decoder) { return readRecord<ActionButtons>(decoder); }
Map ActionButtons::encode() const { return writeRecord(*this); }

RatingSettings RatingSettings::decode(KeyedDecoder& decoder) { return readRecord<RatingSettings>(decoder); }
Map RatingSettings::encode() const { return writeRecord(*this); }

SmallImageSetting SmallImageSetting::decode(KeyedDecoder& decoder) { return readRecord<SmallImageSetting>(decoder); }
Map SmallImageSetting::encode() const { return writeRecord(*this); }

Slide Slide::decode(KeyedDecoder& decoder) { return readRecord<Slide>(decoder); }
Map Slide::encode() const { return writeRecord(*this); }

ImageCarouselSettings ImageCarouselSettings::decode(KeyedDecoder& decoder) {
    return readRecord<ImageCarouselSettings>(decoder);
}
Map ImageCarouselSettings::encode() const { return writeRecord(*this); }

NotificationProperties NotificationProperties::decode(KeyedDecoder& decoder) {
    return readRecord<NotificationProperties>(decoder);
}

Result<NotificationProperties, DecodingFailure> NotificationProperties::read(const Map& aps) {
    const auto text = json::write(aps);
    const auto map = text ? json::readMap(*text) : Result<Map>(text.error());
    if (!map) {
        return DecodingFailure{map.error(), DecodingFailure::Kind::dataCorrupted, {}, {}};
    }
    KeyedDecoder decoder(*map);
    auto payload = decode(decoder);
    if (decoder.failed()) {
        return *decoder.failure();
    }
    return payload;
}

} // namespace zentavo
