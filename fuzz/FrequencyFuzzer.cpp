// Stored counters, as another version or a curious user may have left them.

#include "fuzz/Check.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/inapp/Frequency.h"

using namespace zentavo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr double now = 1'768'478'400;
    const std::string_view stored = textOf(data, size);
    const Map before = Frequency::entries(stored, now);
    const auto count = [](const Map& entries) -> std::int64_t {
        const Value* entry = entries.find("1");
        const Value* counter = entry != nullptr && entry->asMap() != nullptr ? entry->asMap()->find("click") : nullptr;
        return counter != nullptr ? counter->exactInt64().value_or(0) : 0;
    };
    const auto next = Frequency::counted(stored, now, 1, "click", now + 60);
    if (!next) {
        check(count(before) == std::numeric_limits<std::int64_t>::max(), "only the highest count cannot grow");
        return 0;
    }
    const Map after = Frequency::entries(*next, now);
    check(count(after) == count(before) + 1, "one more is counted");
    check(after.size() == before.size() + (before.contains("1") ? 0 : 1), "the other entries stay");
    check(Frequency::entries(*next, now + 60).contains("1") == false, "the entry ends when it is said to");
    return 0;
}
