#pragma once

#include <functional>
#include <memory>
#include <string>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/inapp/BridgeMessage.h"
#include "zentavo/inapp/DeliveryTrace.h"
#include "zentavo/inapp/PopupView.h"
#include "zentavo/inapp/TemplateLayout.h"
#include "zentavo/inapp/WebContent.h"

namespace zentavo {

/// One message on screen, from its views to its end. Held by `std::shared_ptr`, on screen by the state of its instance.
/// Main queue only, its destruction included, which takes down what is still up.
class TemplatePresenter : public std::enable_shared_from_this<TemplatePresenter> {
public:
    virtual ~TemplatePresenter();
    TemplatePresenter(const TemplatePresenter&) = delete;
    TemplatePresenter& operator=(const TemplatePresenter&) = delete;

    /// Puts the message over the host's window. False when there is none; the message is then to be dropped.
    bool show();
    /// Takes the message down and lets the next one come. Calling it again changes nothing.
    void close(DeliveryTrace::ClosedBy closedBy);

    /// Told once, when the message is closed.
    std::function<void(DeliveryTrace::ClosedBy)> onClosed;

    /// Over the whole window; dims it where the message is not a bar.
    const std::shared_ptr<platform::View> overlayView;
    const std::string tempateType; // sic, as its partners know it
    const WebContent templateInfo;

protected:
    TemplatePresenter(const std::shared_ptr<Zentavo>& facade,
                      std::shared_ptr<const platform::UserInterface> userInterface, WebContent content,
                      std::shared_ptr<PopupView> popup);

    /// Called when the views are up.
    virtual void shown(Zentavo& facade) = 0;
    /// Called for each message of the page.
    virtual void handleMessage(Zentavo& facade, const Map& body) = 0;
    /// Called for a tap beside the popup.
    virtual void handleOverlayTap() {}
    /// Called when the screen has another size and the message has a place.
    virtual void handleResized() { move(); }

    layout::Screen screen() const;
    /// From now on the message has the screen: the window is dimmed and does not react, unless the message is a bar.
    void takeScreen();
    using Placement = std::function<platform::Rect(const layout::Screen&)>;
    /// Moves the popup to where it belongs, now and whenever the screen has another size, and tells its page.
    void place(Placement placement);
    /// Puts the popup where it belongs on the screen as it is, and tells its page.
    void move();
    /// Gives the popup the size of a message that has not said its own yet.
    void giveInitialFrame() { popup_->setFrame(layout::initialFrame(tempateType, screen())); }
    void clicked(Zentavo& facade, const ClickMessage& click);

    std::shared_ptr<Zentavo> facade() const { return facade_.lock(); }
    const std::shared_ptr<platform::MainQueue>& mainQueue() const noexcept { return userInterface_->mainQueue; }

private:
    void takeDown();
    void handleResize();

    const std::weak_ptr<Zentavo> facade_;
    const std::shared_ptr<const platform::UserInterface> userInterface_;
    const std::shared_ptr<PopupView> popup_;
    /// None until it is known how large the message is.
    Placement placement_;
    std::shared_ptr<const void> resizes_;
    bool closed_ = false;
};

} // namespace zentavo
