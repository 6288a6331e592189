#include "zentavo/inapp/Template.h"

#include <algorithm>

namespace zentavo {

Template::Template(const std::shared_ptr<Zentavo>& facade, std::shared_ptr<const platform::UserInterface> userInterface,
                   std::shared_ptr<platform::WebView> page, WebContent content)
    : Template(facade, userInterface,
               std::make_shared<CustomPopupView>(*userInterface->views, std::move(page), facade->state()->log),
               std::move(content)) {}

Template::Template(const std::shared_ptr<Zentavo>& facade, std::shared_ptr<const platform::UserInterface> userInterface,
                   std::shared_ptr<CustomPopupView> popup, WebContent content)
    : TemplatePresenter(facade, std::move(userInterface), std::move(content), popup), customPopupView(std::move(popup)),
      jsRuning(templateInfo.javascript) {
    customPopupView->jsRunning = jsRuning;
}

void Template::shown(Zentavo& facade) {
    customPopupView->load(facade.endpoints().templateHost, facade.getPortalId().value_or(""), facade.getPropsId());
}

void Template::handleMessage(Zentavo& facade, const Map& body) {
    const auto message = readTemplateMessage(body);
    if (!message) {
        return;
    }
    if (const auto* size = std::get_if<SizeMessage>(&*message)) {
        takeScreen();
        place([type = tempateType, message = *size](const layout::Screen& screen) {
            return layout::templateFrame(type, message, layout::initialFrame(type, screen), screen);
        });
    } else if (const auto* corner = std::get_if<CornerMessage>(&*message)) {
        customPopupView->setCornerRadius(
            static_cast<double>(std::clamp<std::int64_t>(corner->radius, 0, layout::furthest)));
    } else if (const auto* click = std::get_if<ClickMessage>(&*message)) {
        clicked(facade, *click);
    } else if (std::holds_alternative<CloseMessage>(*message)) {
        close(DeliveryTrace::ClosedBy::page);
    }
}

} // namespace zentavo
