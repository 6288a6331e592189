#include "ports/desktop/LauncherBadge.h"

#include <algorithm>
#include <utility>

namespace zentavo::desktop {

LauncherBadge::LauncherBadge(std::shared_ptr<SessionBus> bus, const std::string& desktopEntry)
    : bus_(std::move(bus)), uri_("application://" + desktopEntry + ".desktop") {}

void LauncherBadge::set(std::int64_t count) const {
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&properties, "{sv}", "count", g_variant_new_int64(std::max<gint64>(count, 0)));
    g_variant_builder_add(&properties, "{sv}", "count-visible", g_variant_new_boolean(count > 0));
    bus_->emit("/zentavo/Badge", "com.canonical.Unity.LauncherEntry", "Update",
               Variant::share(g_variant_new("(sa{sv})", uri_.c_str(), &properties)));
}

} // namespace zentavo::desktop
