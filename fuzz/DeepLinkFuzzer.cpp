// Links that open the app: whatever stands in one, the store then holds what its query says, or nothing.

#include "fuzz/Check.h"
#include "ports/memory/MemoryPlatform.h"
#include "zentavo/core/ZentavoState.h"

using namespace zentavo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static testing::MemoryPlatform& memory = *new testing::MemoryPlatform;
    static const auto& sdk = *new std::shared_ptr<Zentavo>([] {
        auto made = std::make_shared<Zentavo>(memory.platform());
        made->setIsDelivery(false);
        made->activate(Configuration{"1001", "555", "group.fuzz", "42"});
        return made;
    }());
    const auto url = URL::parse(textOf(data, size));
    if (!url) {
        return 0;
    }
    sdk->handleDeeplinkURL(*url);
    std::optional<std::string> expected;
    for (const QueryItem& item : url->queryItems()) {
        if (item.name == "utm") {
            expected = item.value;
        }
    }
    check(sdk->state()->store()->string(sdk->state()->keys.utm) == expected, "the store says what the link says");
    return 0;
}
