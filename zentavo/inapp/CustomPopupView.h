#pragma once

#include "zentavo/inapp/PopupView.h"

namespace zentavo {

/// The popup of messages made in the visual editor: the template host's page, which the campaign's script fills.
class CustomPopupView final : public PopupView {
public:
    using PopupView::PopupView;

    /// Run in the page once it has loaded.
    std::string jsRunning;

    /// Stops the process where `templateHost` is no URL (see `FaultPolicy`).
    void load(const std::string& templateHost, const std::string& portalId, const std::string& propsId);

private:
    void loadFinished() override { run(jsRunning); }
};

} // namespace zentavo
