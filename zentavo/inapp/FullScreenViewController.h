#pragma once

#include <memory>
#include <string>

#include "zentavo/platform/Platform.h"

namespace zentavo {

/// A web page over the whole of the host's window. Main queue only.
class FullScreenViewController {
public:
    /// `webView` is null where the system cannot show web pages.
    explicit FullScreenViewController(std::shared_ptr<const platform::UserInterface> userInterface);

    const std::shared_ptr<platform::WebView> webView;

    /// Shows `html`. False when there is no web view or no window.
    bool present(const std::string& html);
    void dismiss();

private:
    const std::shared_ptr<const platform::UserInterface> userInterface_;
    std::shared_ptr<const void> resizes_;
};

} // namespace zentavo
