#pragma once

#include <functional>
#include <memory>
#include <string>

#include "zentavo/core/Zentavo.h"
#include "zentavo/platform/DispatchQueue.h"
#include "zentavo/platform/Notification.h"
#include "zentavo/platform/NotificationExtensionContext.h"
#include "zentavo/push/NotificationProperties.h"
#include "zentavo/push/templates/UIPaddingLabel.h"
#include "zentavo/push/templates/ZentavoImageView.h"

namespace zentavo {

namespace layout {
struct PushFrames;
struct PushParts;
} // namespace layout
class PushChoices;
struct TemplatePalette;

/// The rich view of one push in a content extension's window, and the base of the five that there are. What the user
/// chooses in it is stored for the app, which reads it when the notification opens it. Main queue only, its destruction
/// included, which takes down what is still up. Held by `std::shared_ptr`, on screen by its instance of the SDK.
class ZENTAVO_EXPORT PushTemplateBaseController : public std::enable_shared_from_this<PushTemplateBaseController> {
public:
    /// Shows `withNotification` in the window that is attached to the shared instance, in place of the one shown
    /// before. `withController` is what the extension can ask for; without it a choice opens its URL directly. Null,
    /// and a line in the log, where there is no "aps" or no window. A payload that does not decode shows with its
    /// texts and picture alone.
    static std::shared_ptr<PushTemplateBaseController>
    handleNotification(std::shared_ptr<platform::NotificationExtensionContext> withController,
                       const platform::Notification& withNotification);

    virtual ~PushTemplateBaseController();
    PushTemplateBaseController(const PushTemplateBaseController&) = delete;
    PushTemplateBaseController& operator=(const PushTemplateBaseController&) = delete;

    /// Takes the view down. Calling it again changes nothing.
    void close();
    bool isShown() const noexcept { return shown_; }
    /// How high everything is as it was laid out last.
    double viewHeight = 0;

    // What it shows. Each is there, if hidden, from the beginning to the end.
    const std::string titleNoti;
    const std::string subTitleNoti;
    const std::string bodyNoti;
    const NotificationProperties data;
    const std::shared_ptr<platform::View> view; ///< fills the window
    const std::shared_ptr<ZentavoImageView> templateBigImage;
    const std::shared_ptr<platform::Label> titleLabel;
    const std::shared_ptr<platform::Label> subTitleLabel;
    const std::shared_ptr<platform::Label> bodyLabel;
    const std::shared_ptr<platform::View> stackView; ///< around the buttons
    const std::unique_ptr<UIPaddingLabel> button1Label;
    const std::unique_ptr<UIPaddingLabel> button2Label;
    const bool isContainActionButton;
    // What a tap on each of the buttons does, from the moment that it shows.
    std::function<void()> tapGR1;
    std::function<void()> tapGR2;

protected:
    /// What a controller is made of.
    struct Setup {
        std::shared_ptr<Zentavo> facade;
        std::shared_ptr<const platform::UserInterface> userInterface;
        std::shared_ptr<platform::NotificationExtensionContext> context;
        platform::NotificationContent notification;
        NotificationProperties data;
    };
    explicit PushTemplateBaseController(Setup setup);

    /// Adds the template's own views; called once, before anything is laid out.
    virtual void build() {}
    /// The arithmetic of the template; `parts` says what there is.
    virtual layout::PushFrames arrange(const layout::PushParts& parts) const = 0;
    /// Lays out the template's own views.
    virtual void place(const layout::PushFrames&) {}
    /// Gives the template's own views their colours, and the others what they are to have otherwise.
    virtual void paint(const TemplatePalette&) {}
    /// The view has come, or has gone.
    virtual void appeared() {}
    virtual void disappeared() {}

    /// Whether the template shows the payload's own picture; otherwise it is not fetched.
    virtual bool hasBigImage() const { return true; }
    virtual bool textsBesidePicture() const { return false; }
    /// The height of what stands below the texts.
    virtual double extraHeight() const { return 0; }
    /// In pixels, or a guess while it is on its way; nothing where there is none.
    virtual platform::Size pictureSize() const;
    /// What notes the URL that the user chose.
    using ChosenURL = void (PushChoices::*)(std::string url);
    virtual ChosenURL chosenURL() const;

    /// The user chose what leads to `url`: stores that and has the notification opened. Empty text is no choice.
    void choose(const std::string& url) const;
    /// Calls `work` with the choices of this push where the disk keeps nobody waiting, and then `then` on the main
    /// queue; in the order of the calls.
    void withChoices(std::function<void(PushChoices&)> work, platform::Block then) const;
    void layOut();

    platform::Views& views() const { return *userInterface_->views; }
    platform::MainQueue& mainQueue() const { return *userInterface_->mainQueue; }
    const std::shared_ptr<ImageLoader>& loader() const noexcept { return loader_; }
    std::shared_ptr<Zentavo> facade() const { return facade_.lock(); }
    bool isRightToLeft() const noexcept { return rightToLeft_; }
    /// `handler` as an entry point that does nothing once this has gone. `Self` is the template.
    template <class Self, class Handler>
    auto whileLiving(Self& self, Handler handler) {
        return [weak = self.weak_from_this(), pointer = &self, handler](auto... arguments) {
            entryPoint("push", [&] {
                if (const auto living = weak.lock()) {
                    handler(*pointer, arguments...);
                }
            });
        };
    }

private:
    bool show();
    void changed();
    void ended();
    void handleTap(int tag) const;
    layout::PushParts measured(platform::Size area) const;

    const std::weak_ptr<Zentavo> facade_;
    const std::shared_ptr<const platform::UserInterface> userInterface_;
    const std::shared_ptr<platform::NotificationExtensionContext> context_;
    const std::shared_ptr<ImageLoader> loader_;
    const std::shared_ptr<platform::DispatchQueue> choosing_;
    const bool rightToLeft_;
    bool shown_ = false;
};

} // namespace zentavo
