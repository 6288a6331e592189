#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "zentavo/core/StoreKeys.h"
#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Preferences.h"

namespace zentavo {

/// What the user chose inside the rich template of one push. The content extension writes it and the app reads it, out
/// of a suite that both share. An answer removes nothing: a push may be answered again (by a button, from another
/// window), and a later answer has to find the same choice. Any thread; may wait for the disk.
class ZENTAVO_EXPORT PushChoices {
public:
    /// Of how many pushes choices are kept. One more, and those of the push that came first are forgotten.
    static constexpr std::int64_t maximumPushes = 1000;

    /// Opens the suite of the app that the running program is, or is an extension of. Where it is refused, nothing is
    /// stored and nothing is there.
    PushChoices(platform::PreferencesProvider& preferences, const std::string& pushId);

    /// "group.com.example.shop.zentavo" for the app com.example.shop.
    static std::string suiteName();

    /// The URL of the element that was tapped last; none where nothing, or nothing like text, is stored. So below.
    std::optional<std::string> clickedURL() const;
    /// The URL of the carousel's slide that was tapped.
    std::optional<std::string> clickedImage() const;
    /// The rating that was chosen, or 0.
    std::int64_t rating() const;

    // Each is carried to the medium at once: the app may be started by the same tap.
    void setClickedURL(std::string url);
    void setClickedImage(std::string url);
    void setRating(std::int64_t rating);

private:
    std::optional<std::string> text(const std::string& key) const;
    void store(const std::string& key, Value value);
    /// Gives the push its place among those that are kept, unless it has one.
    void takePlace();

    std::shared_ptr<platform::Preferences> suite_;
    std::string pushId_;
    PushChoiceKeys keys_;
};

} // namespace zentavo
