#include "zentavo/push/PushChoices.h"

#include <utility>

#include "zentavo/core/Zentavo.h"

namespace zentavo {

PushChoices::PushChoices(platform::PreferencesProvider& preferences, const std::string& pushId)
    : suite_(preferences.suite(suiteName())), keys_(pushId) {}

std::string PushChoices::suiteName() { return PushChoiceKeys::suiteName(Zentavo::getBundleId()); }

std::optional<std::string> PushChoices::clickedURL() const { return text(keys_.urlClicked); }
std::optional<std::string> PushChoices::clickedImage() const { return text(keys_.imageClicked); }
std::int64_t PushChoices::rating() const { return suite_ ? suite_->integer(keys_.rating) : 0; }

void PushChoices::setClickedURL(std::string url) { store(keys_.urlClicked, std::move(url)); }
void PushChoices::setClickedImage(std::string url) { store(keys_.imageClicked, std::move(url)); }
void PushChoices::setRating(std::int64_t rating) { store(keys_.rating, rating); }

std::optional<std::string> PushChoices::text(const std::string& key) const {
    return suite_ ? suite_->string(key) : std::nullopt;
}

void PushChoices::store(const std::string& key, Value value) {
    if (suite_) {
        suite_->set(key, std::move(value));
        suite_->synchronise();
    }
}

} // namespace zentavo
