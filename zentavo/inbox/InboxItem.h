#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/foundation/KeyedDecoder.h"
#include "zentavo/foundation/URL.h"

namespace zentavo {

/// One message of the inbox. A plain value.
struct ZENTAVO_EXPORT InboxItem {
    std::string itemId;
    std::string lastUpdated;
    std::string heading;
    std::string dateCreated;
    std::vector<std::string> catalogId;
    std::optional<URL> lauchUrl;
    std::string lookupType;
    std::string templateId;
    std::string content;
    std::optional<URL> appUrl;
    /// Numbers as in `ModifyAction`: 1 is unread, 2 read.
    std::int64_t status = 0;
    std::optional<URL> imageUrl;
    std::optional<URL> buttonAppUrl1;
    std::optional<URL> buttonAppUrl2;
    std::optional<URL> buttonLaunchUrl1;
    std::optional<URL> buttonLaunchUrl2;
    std::optional<std::string> buttonLabel1;
    std::optional<std::string> buttonLabel2;
    std::optional<URL> trackingUrl;

    /// Reads the fields in the order above. An absent or null URL or label stays absent; so does text that is no URL, with
    /// a remark at the decoder. Anything else that is absent or of the wrong kind is a failure.
    static InboxItem decode(KeyedDecoder& decoder);

    /// The record as JSON text under the keys that it is decoded from, absent fields left out; none where text is not
    /// UTF-8.
    std::optional<std::string> jsonString() const;

    friend bool operator==(const InboxItem&, const InboxItem&) = default;
};

} // namespace zentavo
