#pragma once

#include <optional>
#include <string>

#include "zentavo/foundation/Export.h"

namespace zentavo {

/// The names under which the SDK keeps things in the preference store. Installed apps hold data under them, so every
/// one of them stays as it is, misspellings included.
struct ZENTAVO_EXPORT StoreKeys {
    /// `mainBundleIdentifier`: of the running process, an extension's own included; none for a bare program.
    explicit StoreKeys(const std::optional<std::string>& mainBundleIdentifier);

    /// The bundle identifier and ".", or "default.".
    std::string prefix;

    std::string visitorId;          ///< text: the uid that the host set
    std::string customerId;         ///< text
    std::string customerProperties; ///< text: the customer id once more; the properties stay in memory
    std::string visitorType;        ///< text: "new" or "return"
    std::string sessionId;          ///< text; never written by the SDK itself
    std::string utm;                ///< attribution: text, or a map
    std::string atm;                ///< attribution: text, or a map
    std::string clkBc;              ///< text: click id of the last tracked click
    std::string portalId;           ///< text
    std::string propsId;            ///< text
    std::string pushUid;            ///< text: this device, as the push service calls it
    std::string deviceToken;        ///< text: last push token in hexadecimal
    std::string appInstall;         ///< text "installed" once the first-install event was sent
    std::string operationTime;      ///< number: seconds since 1970 of the last push registration
    std::string applicationId;      ///< a reserved name; nothing is stored there

    /// Not prefixed: the bundle identifier and ".badge", or "ZentavoSDK.badge".
    std::string badge;

    // Text, each a JSON object of counters by campaign, destination or zone id. Not prefixed.
    const std::string storyFrequency = "at_freq_capping";
    const std::string destinationFrequency = "at_freq_capping_destination";
    const std::string zoneFrequency = "at_freq_capping_zone";
};

/// The names under which the choices made inside one push's rich template are kept, in the suite that the app and its
/// content extension share. Not prefixed.
struct ZENTAVO_EXPORT PushChoiceKeys {
    explicit PushChoiceKeys(const std::string& pushId);

    /// The suite of the host app `bundleId`.
    static std::string suiteName(const std::string& bundleId) { return "group." + bundleId + ".zentavo"; }

    std::string urlClicked;   ///< text: URL of the element that was tapped
    std::string imageClicked; ///< text: URL of the carousel's slide that was tapped
    std::string rating;       ///< integer: the rating that was chosen
};

} // namespace zentavo
