#include "zentavo/push/BadgeRule.h"

#include <algorithm>
#include <string>

#include "zentavo/platform/Preferences.h"

namespace zentavo {

namespace {

constexpr BadgeOutcome beyondRange{{}, {}, true};

BadgeOutcome changedTo(std::int64_t badge) { return {badge, badge}; }

} // namespace

BadgeOutcome applyBadgeRule(const std::optional<Value>& stored, const Map& rule) {
    const std::int64_t current = stored ? platform::coercedInteger(*stored) : 0;
    BadgeOutcome asItStands;
    if (!stored) {
        asItStands = changedTo(0);
    } else if (stored->isNumber()) {
        asItStands.shown = current;
    }

    const Value* typeEntry = rule.find("type");
    const std::string* type = typeEntry != nullptr ? typeEntry->asString() : nullptr;
    if (type == nullptr) {
        return asItStands;
    }
    const Value* value = rule.find("value");
    std::int64_t next = 0;
    if (*type == "increase") {
        const auto step = value != nullptr ? value->exactInt64() : std::nullopt;
        if (!step) {
            return asItStands;
        }
        return __builtin_add_overflow(*step, current, &next) ? beyondRange : changedTo(next);
    }
    if (*type == "set_to") {
        if (value == nullptr || !value->isNumber()) {
            return asItStands;
        }
        return __builtin_add_overflow(current, 1, &next) ? beyondRange
                                                         : changedTo(std::min(platform::coercedInteger(*value), next));
    }
    if (*type == "do_not_set") {
        return changedTo(0);
    }
    return {0, asItStands.stored};
}

} // namespace zentavo
