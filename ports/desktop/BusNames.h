#pragma once

#include <optional>
#include <string>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Bundle.h"

namespace zentavo::desktop {

/// The names under which the programs of one app are found on the message bus: each is the bundle identifier of the
/// program. The two extensions stand in the app's bundle ("Shop.app/PlugIns/NotificationService.appex"), and their
/// identifiers begin with the app's:
///
///     example.shop                         the app
///     example.shop.NotificationService     receives pushes, and shows them
///     example.shop.NotificationContent     draws rich templates
struct ZENTAVO_EXPORT BusNames {
    std::string app;
    std::string notificationService;
    std::string notificationContent;

    /// Of the app that `program`, its main program or one of its extensions, belongs to. None where the program has no
    /// identifier, or one that is no bus name: two or more elements of letters, digits, "-" and "_", parted by dots, none
    /// of which begins with a digit.
    static std::optional<BusNames> of(const platform::Bundle& program);

    friend bool operator==(const BusNames&, const BusNames&) = default;
};

} // namespace zentavo::desktop
