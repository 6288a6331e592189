#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/support/SdkTest.h"
#include "zentavo/inapp/DeliveryTrace.h"

namespace zentavo {

/// An activated SDK whose events are answered, and whose delivery service offers what the test says.
class InAppTest : public SdkTest {
protected:
    InAppTest() { start(); }

    /// A campaign as the service writes it; `changes` replace or add members, null removes.
    static Map campaign(std::int64_t story, const Map& changes = {}) {
        Map map{{"javascript", "show(" + std::to_string(story) + ")"},
                {"template", "full_screen"},
                {"designMode", "VISUAL"},
                {"storyId", story},
                {"variantId", story + 1000},
                {"destinationId", 7},
                {"zoneId", 9}};
        for (const auto& [key, value] : changes) {
            if (value.isNull()) {
                map.remove(key);
            } else {
                map.set(key, value);
            }
        }
        return map;
    }
    static std::string answer(const std::vector<Map>& campaigns) {
        Map contents;
        for (const Map& each : campaigns) {
            contents.set("w" + std::to_string(contents.size()), each);
        }
        return json::write(Map{{"webContents", contents}}).value();
    }
    void offer(const std::vector<Map>& campaigns) {
        memory.session->on({"POST", "", "/interaction/v2"}, testing::ScriptedAnswer{200, answer(campaigns)});
    }
    void trace() {
        sdk->setDeliveryTraceCallback([this](const DeliveryTrace& each) { traces.push_back(each); });
    }
    /// Tracks an event and lets everything happen that follows from it.
    void trackAndSettle(const std::string& name = "view") {
        sdk->track(CDPEvent(name));
        settle();
    }

    std::vector<DeliveryTrace> traces;
};

} // namespace zentavo
