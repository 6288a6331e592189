#pragma once

#include <memory>
#include <optional>

#include "zentavo/foundation/URL.h"
#include "zentavo/platform/Platform.h"

namespace zentavo {

/// A web page over the host's window, which stays visible around it. Main queue only.
class WebViewController {
public:
    /// How it is presented: over the current context, as the number that hosts compare with.
    static constexpr int modalPresentationStyle = 6;

    /// `popUpWebView` is null where the system cannot show web pages.
    explicit WebViewController(std::shared_ptr<const platform::UserInterface> userInterface);

    std::optional<URL> url;
    const std::shared_ptr<platform::WebView> popUpWebView;

    /// Shows `url` in `frame`, which follows the window where it is as large, and otherwise stays as it is. False when
    /// there is no URL, no web view or no window.
    bool present(platform::Rect frame);
    void dismiss();

private:
    const std::shared_ptr<const platform::UserInterface> userInterface_;
    std::shared_ptr<const void> resizes_;
};

} // namespace zentavo
