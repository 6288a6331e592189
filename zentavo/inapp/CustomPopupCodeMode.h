#pragma once

#include "zentavo/inapp/PopupView.h"

namespace zentavo {

/// The popup of hand-written messages: a page that arrives whole.
class CustomPopupCodeMode final : public PopupView {
public:
    using PopupView::PopupView;

    std::string htmlString;
    /// Run in the page once it has loaded, where there is one.
    std::string javascript;
    std::function<void()> onLoaded;

    /// Shows `htmlString`.
    void load() { webView->loadHTML(htmlString, std::chrono::seconds(60)); }

private:
    void loadFinished() override;
};

} // namespace zentavo
