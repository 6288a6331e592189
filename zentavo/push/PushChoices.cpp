#include "zentavo/push/PushChoices.h"

#include <utility>

#include "zentavo/core/Zentavo.h"

namespace zentavo {

namespace {

/// The place that the next push gets; the ids of those that have one stand under this, "_" and the place's number.
const char* const nextPlace = "zentavo_push";

} // namespace

PushChoices::PushChoices(platform::PreferencesProvider& preferences, const std::string& pushId)
    : suite_(preferences.suite(suiteName())), pushId_(pushId), keys_(pushId) {}

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
        takePlace();
        suite_->set(key, std::move(value));
        suite_->synchronise();
    }
}

void PushChoices::takePlace() {
    if (suite_->object(keys_.urlClicked) || suite_->object(keys_.imageClicked) || suite_->object(keys_.rating)) {
        return;
    }
    const std::int64_t number = suite_->integer(nextPlace) % maximumPushes;
    const std::string place = std::string(nextPlace) + "_" + std::to_string(number);
    if (const auto earlier = suite_->string(place)) {
        const PushChoiceKeys keys(*earlier);
        for (const std::string* key : {&keys.urlClicked, &keys.imageClicked, &keys.rating}) {
            suite_->remove(*key);
        }
    }
    suite_->set(place, pushId_);
    suite_->set(nextPlace, number + 1);
}

} // namespace zentavo
