#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/foundation/KeyedDecoder.h"
#include "zentavo/foundation/TextEncoding.h"
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
    /// UTF-8, or has characters that `encoding` has not.
    std::optional<std::string> jsonString(TextEncoding encoding = TextEncoding::utf8) const;

    /// What services call the fields, in the order above; and two more that a message has there, which are not read.
    static constexpr std::array<std::string_view, 21> keys{"item_id",
                                                           "last_updated",
                                                           "heading",
                                                           "date_created",
                                                           "catalog_ids",
                                                           "launch_url",
                                                           "lookup_type",
                                                           "template_id",
                                                           "content",
                                                           "app_url",
                                                           "status",
                                                           "image_url",
                                                           "button_app_url_1",
                                                           "button_app_url_2",
                                                           "button_launch_url_1",
                                                           "button_launch_url_2",
                                                           "button_label_1",
                                                           "button_label_2",
                                                           "tracking_url",
                                                           "item_type",
                                                           "destination_id"};

    friend bool operator==(const InboxItem&, const InboxItem&) = default;
};

} // namespace zentavo
