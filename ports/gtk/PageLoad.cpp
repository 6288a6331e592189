#include "ports/gtk/PageLoad.h"

#include <utility>

namespace zentavo::gtk {

void PageLoad::begin(bool hasAddress) noexcept {
    waiting_ = true;
    hasAddress_ = hasAddress;
    failed_ = false;
}

std::optional<PageLoad::Outcome> PageLoad::failed(const char* problem, bool interrupted) {
    failed_ = true;
    return interrupted ? std::nullopt : end({false, problem});
}

std::optional<PageLoad::Outcome> PageLoad::finished(std::string_view address) {
    if (std::exchange(failed_, false)) {
        return std::nullopt;
    }
    if (hasAddress_ && (address.empty() || address == "about:blank")) {
        return end({false, "the web engine refuses the address"});
    }
    return end({true, {}});
}

std::optional<PageLoad::Outcome> PageLoad::timedOut(const std::string& problem) { return end({false, problem}); }

std::optional<PageLoad::Outcome> PageLoad::end(Outcome outcome) {
    return std::exchange(waiting_, false) ? std::optional(std::move(outcome)) : std::nullopt;
}

} // namespace zentavo::gtk
