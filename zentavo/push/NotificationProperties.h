#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "zentavo/foundation/Result.h"
#include "zentavo/push/ActionButtons.h"
#include "zentavo/push/Badge.h"
#include "zentavo/push/ImageCarouselSettings.h"
#include "zentavo/push/RatingSettings.h"
#include "zentavo/push/SmallImageSetting.h"

namespace zentavo {

/// What the platform says in a push: the map "aps" of a notification's user info. A plain value.
struct ZENTAVO_EXPORT NotificationProperties {
    std::optional<std::int64_t> mutableContent; ///< "mutable-content"
    std::optional<std::string> urlImageString;
    std::optional<Badge> badge;
    std::optional<std::string> sound;
    std::optional<std::string> category;
    std::string pushId;                         ///< the only one that every payload has
    std::optional<bool> contentAvailable;       ///< "content-available"
    std::optional<std::int64_t> relevanceScore; ///< "relevance-score"
    std::optional<std::string> targetContentId; ///< "target-content-id"
    std::optional<std::string> trackingClickUrl;
    std::optional<std::string> url; ///< what a click opens where the user chose nothing else
    std::optional<std::string> leadSourceId;
    std::optional<std::string> storyId;
    std::optional<std::string> campaignId;
    std::optional<std::string> variantId;
    std::optional<ActionButtons> actionButtons;
    std::optional<std::map<std::string, std::string>> additionalData;
    std::optional<std::string> backgroundColor;
    /// "template", which C++ keeps for itself: the name of the rich layout.
    std::optional<std::string> template_;
    std::optional<RatingSettings> ratingSettings;
    std::optional<SmallImageSetting> smallImageSettings;
    std::optional<ImageCarouselSettings> imageCarouselSettings;

    /// Reads the fields strictly and in the order above, but "pushId" before "sound". Nothing is converted and nothing
    /// defaulted: a member of the wrong kind, also deep in a nested record, fails the whole payload, and the failure
    /// names the first of them.
    static NotificationProperties decode(KeyedDecoder& decoder);

    /// As `decode`, from the map "aps" as JSON text would carry it: a value that JSON cannot say is a failure as well.
    static Result<NotificationProperties, DecodingFailure> read(const Map& aps);

    friend bool operator==(const NotificationProperties&, const NotificationProperties&) = default;
};

} // namespace zentavo
