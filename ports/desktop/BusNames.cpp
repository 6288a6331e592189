#include "ports/desktop/BusNames.h"

#include <string_view>

#include <gio/gio.h>

namespace zentavo::desktop {

namespace {

constexpr std::string_view serviceSuffix = ".NotificationService";
constexpr std::string_view contentSuffix = ".NotificationContent";

} // namespace

std::optional<BusNames> BusNames::of(const platform::Bundle& program) {
    std::string app = program.identifier().value_or("");
    for (const std::string_view suffix : {serviceSuffix, contentSuffix}) {
        if (app.ends_with(suffix)) {
            app.resize(app.size() - suffix.size());
            break;
        }
    }
    BusNames names{app, app + std::string(serviceSuffix), app + std::string(contentSuffix)};
    // The longest decides whether all fit.
    if (g_dbus_is_name(names.app.c_str()) == FALSE || g_dbus_is_unique_name(names.app.c_str()) != FALSE ||
        g_dbus_is_name(names.notificationService.c_str()) == FALSE) {
        return std::nullopt;
    }
    return names;
}

} // namespace zentavo::desktop
