// Each input is read as the payload of a push. What can be read is what was there: nested records that are written
// again are the same, and a failure names its place.

#include "fuzz/Check.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/push/NotificationProperties.h"

namespace {

using namespace zentavo;

template <class Record>
void checkWritten(const std::optional<Record>& record) {
    if (!record) {
        return;
    }
    const Map written = record->encode();
    const auto text = json::write(written);
    check(text.ok(), "a record that was read can be written");
    const auto map = json::readMap(*text);
    check(map.ok(), "what was written is JSON");
    KeyedDecoder decoder(*map);
    check(Record::decode(decoder) == *record && !decoder.failed(), "and reads back as the same record");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto aps = json::readMap(textOf(data, size));
    if (!aps) {
        return 0;
    }
    const auto payload = NotificationProperties::read(*aps);
    if (!payload) {
        const DecodingFailure& failure = payload.error();
        check(!failure.message.empty(), "a failure says why");
        check(!failure.codingPath.empty() && !failure.subject.empty(), "a failure of a JSON object has a place");
        return 0;
    }
    const Value* pushId = aps->find("pushId");
    check(pushId != nullptr && pushId->asString() != nullptr && *pushId->asString() == payload->pushId,
          "a payload has its id as it was sent");
    checkWritten(payload->badge);
    checkWritten(payload->actionButtons);
    checkWritten(payload->ratingSettings);
    checkWritten(payload->smallImageSettings);
    checkWritten(payload->imageCarouselSettings);
    return 0;
}
