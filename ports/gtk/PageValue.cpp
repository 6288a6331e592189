#include "ports/gtk/PageValue.h"

#include <memory>
#include <string_view>

#include "zentavo/foundation/JSON.h"
#include "zentavo/platform/WebView.h"

namespace zentavo::gtk {

std::optional<Value> pageValue(JSCValue* value) {
    using platform::WebView;
    // The engine writes the text with a bound of its own on the stack; it is null where there is no JSON.
    const std::unique_ptr<char, decltype(&g_free)> text(jsc_value_to_json(value, 0), &g_free);
    if (!text) {
        return std::nullopt;
    }
    const std::string_view whole(text.get());
    if (whole.size() > WebView::maximumMessageBytes) {
        return std::nullopt;
    }
    auto read = json::read(whole, {WebView::maximumMessageBytes, WebView::maximumMessageDepth});
    return read ? std::optional(*std::move(read)) : std::nullopt;
}

} // namespace zentavo::gtk
