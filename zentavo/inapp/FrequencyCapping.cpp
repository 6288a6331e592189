#include "zentavo/inapp/FrequencyCapping.h"

namespace zentavo {

void CappingLimit::read(KeyedDecoder& decoder) {
    event = decoder.optionalString("event");
    value = decoder.optionalInteger("value");
    timeUnit = decoder.optionalString("timeUnit");
}

void CappingLimit::write(Map& map) const {
    if (event) {
        map.set("event", *event);
    }
    if (value) {
        map.set("value", *value);
    }
    if (timeUnit) {
        map.set("timeUnit", *timeUnit);
    }
}

FrequencyCapping FrequencyCapping::decode(KeyedDecoder& decoder) {
    FrequencyCapping capping;
    capping.read(decoder);
    capping.object = decoder.optionalString("object");
    return capping;
}

Map FrequencyCapping::encode() const {
    Map map;
    write(map);
    if (object) {
        map.set("object", *object);
    }
    return map;
}

DestinationFrequencyCapping DestinationFrequencyCapping::decode(KeyedDecoder& decoder) {
    DestinationFrequencyCapping capping;
    capping.read(decoder);
    return capping;
}

Map DestinationFrequencyCapping::encode() const {
    Map map;
    write(map);
    return map;
}

ZoneFrequencyCapping ZoneFrequencyCapping::decode(KeyedDecoder& decoder) {
    ZoneFrequencyCapping capping;
    capping.read(decoder);
    return capping;
}

Map ZoneFrequencyCapping::encode() const {
    Map map;
    write(map);
    return map;
}

} // namespace zentavo
