#include "ports/desktop/NotificationMessage.h"

#include <memory>

namespace zentavo::desktop {

namespace {

using Text = std::unique_ptr<char, decltype(&g_free)>;

/// The bus breaks the connection of who sends anything else.
std::string utf8(const std::string& text) {
    return Text(g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free).get();
}

std::string bodyText(const platform::NotificationContent& content, bool markup) {
    const std::string text =
        utf8(content.subtitle + (content.subtitle.empty() || content.body.empty() ? "" : "\n") + content.body);
    // Nobody who sends a push is to draw in the desktop's own surface.
    return markup ? Text(g_markup_escape_text(text.c_str(), -1), g_free).get() : text;
}

/// Sounds of a desktop's theme have names without an ending.
std::string soundName(const std::string& sound) {
    return sound == platform::NotificationContent::defaultSound ? "message-new-instant"
                                                                : sound.substr(0, sound.rfind('.'));
}

void addText(GVariantBuilder* hints, const char* name, const std::string& text) {
    g_variant_builder_add(hints, "{sv}", name, g_variant_new_string(utf8(text).c_str()));
}

} // namespace

Variant notifyArguments(const AppOnDesktop& app, const platform::NotificationContent& content,
                        const std::vector<DesktopAction>& actions, const ServerCapabilities& capabilities,
                        std::uint32_t presentation, std::uint32_t replaces) {
    GVariantBuilder pairs;
    g_variant_builder_init(&pairs, G_VARIANT_TYPE("as"));
    if (capabilities.actions) {
        for (const DesktopAction& action : actions) {
            g_variant_builder_add(&pairs, "s", action.key.c_str());
            g_variant_builder_add(&pairs, "s", utf8(action.label).c_str());
        }
    }
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    addText(&hints, "desktop-entry", app.desktopEntry);
    g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(1));
    if (!content.categoryIdentifier.empty()) {
        // Those without a maker's name are the desktop's own.
        addText(&hints, "category", "x-zentavo." + content.categoryIdentifier);
    }
    if (!content.attachments.empty()) {
        const Text uri(g_filename_to_uri(content.attachments.front().path.c_str(), nullptr, nullptr), g_free);
        if (uri) {
            addText(&hints, "image-path", uri.get());
        }
    }
    if (content.sound && (presentation & platform::presentSound) != 0) {
        addText(&hints, "sound-name", soundName(*content.sound));
    } else {
        g_variant_builder_add(&hints, "{sv}", "suppress-sound", g_variant_new_boolean(TRUE));
    }
    return Variant::share(g_variant_new("(susssasa{sv}i)", utf8(app.name).c_str(), replaces,
                                        utf8(app.desktopEntry).c_str(), utf8(content.title).c_str(),
                                        bodyText(content, capabilities.bodyMarkup).c_str(), &pairs, &hints, -1));
}

} // namespace zentavo::desktop
