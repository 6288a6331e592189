#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "devserver/WebPushEncryption.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::devserver {

/// Where a device can be reached, as its token says: the token is the bytes of an endpoint's URL. A device that wants its
/// pushes encrypted has put its keys behind it: "…#p256dh=<base64url>&auth=<base64url>"; that part is never sent anywhere.
struct PushAddress {
    /// Without the fragment.
    std::string endpoint;
    /// None for a device that takes plain bodies.
    std::optional<webpush::Receiver> receiver;

    /// `token` in hexadecimal digits. The error says why nothing can be pushed there.
    static Result<PushAddress> ofToken(std::string_view token);
};

} // namespace zentavo::devserver
