#pragma once

#include "zentavo/inapp/CustomPopupView.h"
#include "zentavo/inapp/TemplatePresenter.h"

namespace zentavo {

/// Presents a message made in the visual editor.
class Template final : public TemplatePresenter {
public:
    Template(const std::shared_ptr<Zentavo>& facade, std::shared_ptr<const platform::UserInterface> userInterface,
             std::shared_ptr<platform::WebView> page, WebContent content);

    const std::shared_ptr<CustomPopupView> customPopupView;
    const std::string jsRuning; // sic, as its partners know it

private:
    Template(const std::shared_ptr<Zentavo>& facade, std::shared_ptr<const platform::UserInterface> userInterface,
             std::shared_ptr<CustomPopupView> popup, WebContent content);

    void shown(Zentavo& facade) override;
    void handleMessage(Zentavo& facade, const Map& body) override;
};

} // namespace zentavo
