#pragma once

#include <string>
#include <utility>

namespace zentavo {

/// The account that a host works for. The constructor's order differs from the fields' on purpose: both are what hosts
/// have come to know.
struct Configuration {
    Configuration(std::string portal, std::string props, std::string appGroup, std::string application)
        : portalId(std::move(portal)), propsId(std::move(props)), applicationId(std::move(application)),
          appGroupId(std::move(appGroup)) {}

    /// The account. "33167" is the sandbox account: its requests go to the sandbox hosts.
    std::string portalId;
    /// The property (app or site) inside the account.
    std::string propsId;
    /// The application as the push service knows it.
    std::string applicationId;
    /// The preference suite that the app and its extensions share.
    std::string appGroupId;
};

} // namespace zentavo
