#include "ports/gtk/NotificationContentHost.h"

#include <cstdint>
#include <optional>
#include <utility>

#include <gtk/gtk.h>

#include "ports/desktop/AppInterfaces.h"
#include "ports/desktop/BusNames.h"
#include "ports/desktop/Callers.h"
#include "ports/desktop/MessageBody.h"
#include "ports/desktop/NotificationCodec.h"
#include "ports/desktop/SessionBus.h"
#include "ports/gtk/Attach.h"
#include "ports/gtk/GtkMainQueue.h"
#include "ports/gtk/MainThread.h"
#include "ports/gtk/NotificationWindow.h"
#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

using desktop::MethodCall;
using desktop::Variant;

/// Lives on the main thread. What the bus tells comes over the main queue, which also carries what must not happen in
/// the middle of a view's work.
class NotificationContentHost::Service : public std::enable_shared_from_this<Service> {
public:
    Service(std::shared_ptr<Zentavo> sdk, Show show, NotificationContentOptions options)
        : sdk_(std::move(sdk)), show_(std::move(show)), options_(std::move(options)),
          names_(desktop::BusNames::of(*sdk_->state()->platform->bundles->main())) {}

    void start() {
        if (gtk_init_check() == FALSE) {
            return giveUp("there is no screen");
        }
        MainThread::adopt();
        MainThread::require();
        if (!names_) {
            return giveUp("the program has no bundle identifier that is a name of the bus");
        }
        const auto later = [queue = queue_, weak = weak_from_this()](auto block) {
            queue->async([weak, block = std::move(block)]() mutable {
                if (const auto self = weak.lock()) {
                    block(*self);
                }
            });
        };
        const auto handler = [later](const MethodCall& call) {
            auto notification = desktop::codec::readNotification(desktop::body::text(call.parameters()));
            if (!notification) {
                return call.refuseArguments(notification.error().message);
            }
            later([call, notification = std::move(*notification)](Service& self) { self.show(notification, call); });
        };
        bus_.serve(desktop::content_interface::path, desktop::content_interface::xml,
                   desktop::Callers::only(bus_, {names_->notificationService}, handler));
        bus_.own(names_->notificationContent, [later](bool owned) {
            later([owned](Service& self) {
                if (owned) {
                    self.owned_ = true;
                } else if (self.owned_) {
                    self.over_ = self.over_ || !self.leaving_; // the session ends
                } else {
                    self.giveUp("the name on the bus is not ours");
                }
            });
        });
        stayForAWhile();
    }

    bool isOver() const noexcept { return over_; }
    bool isUseless() const noexcept { return useless_; }

private:
    /// Of one notification; answers as long as that is the one on screen.
    class Context final : public platform::NotificationExtensionContext {
    public:
        Context(std::weak_ptr<Service> service, std::uint64_t number) : service_(std::move(service)), number_(number) {}

        bool performNotificationDefaultAction() override {
            const auto service = current();
            return service && service->refused_ != number_ && service->open();
        }
        void setPreferredHeight(double points) override {
            if (const auto service = current()) {
                service->window_->setContentHeight(points);
            }
        }

    private:
        std::shared_ptr<Service> current() const {
            auto service = service_.lock();
            return service && service->window_ && service->number_ == number_ ? service : nullptr;
        }

        const std::weak_ptr<Service> service_;
        const std::uint64_t number_;
    };

    void show(const platform::Notification& notification, const MethodCall& call) {
        cancelIdle();
        shown_ = notification;
        ++number_;
        if (!window_) {
            const auto weak = weak_from_this();
            window_ = std::make_unique<NotificationWindow>(
                options_.title, options_.openLabel, options_.width,
                NotificationWindow::Actions{[weak] { weak.lock()->open(); }, [weak] { weak.lock()->closeSoon(); }});
            attach(window_->window(), *sdk_);
        }
        window_->present();
        const auto context = std::make_shared<Context>(weak_from_this(), number_);
        if (!entryPoint(
                "notification content", [&] { return show_(context, notification); }, false)) {
            close();
            return call.refuse("the notification cannot be drawn");
        }
        call.answer();
    }

    /// Has the service do what a click on the notification does. The app is told there, once for all ways to open it. The
    /// window waits for the answer: where there is none, the user can try again.
    bool open() {
        if (opened_ == number_) {
            return true; // a second tap, on a window that is about to close
        }
        // With an id, since an attempt that has failed may have arrived all the same.
        const auto text = desktop::codec::write(platform::NotificationResponse{{shown_}},
                                                sdk_->state()->platform->random->uuidText());
        if (!text) {
            complain("The notification cannot be opened: " + text.error().message);
            return false;
        }
        opened_ = number_;
        ++underWay_;
        respond({number_, *text});
        return true;
    }

    struct Opening {
        std::uint64_t number; ///< of the notification
        std::string text;     ///< the answer, as the service reads it
        int attemptsLeft = 2;
    };

    void respond(Opening opening) {
        --opening.attemptsLeft;
        bus_.call({names_->notificationService, desktop::service_interface::path, desktop::service_interface::name,
                   "Respond", Variant::share(g_variant_new("(s)", opening.text.c_str()))},
                  [queue = queue_, weak = weak_from_this(), opening](const Result<Variant>& answer) {
                      const std::string failure = answer ? "" : answer.error().message;
                      queue->async([weak, opening, failure] {
                          if (const auto self = weak.lock()) {
                              self->told(opening, failure);
                          }
                      });
                  });
    }

    void told(const Opening& opening, const std::string& failure) {
        if (!failure.empty()) {
            complain("The notification was not opened: " + failure);
            if (opening.attemptsLeft > 0) {
                return respond(opening);
            }
        }
        --underWay_;
        if (opening.number == number_) {
            if (failure.empty()) {
                window_ = nullptr;
            } else {
                opened_ = 0;
                refused_ = number_;
            }
        }
        stayForAWhile();
    }

    /// After the work of the view or the window that asked for it. One that was replaced meanwhile stays.
    void closeSoon() {
        queue_->async([weak = weak_from_this(), number = number_] {
            if (const auto self = weak.lock(); self && self->number_ == number) {
                self->close();
            }
        });
    }

    void close() {
        window_ = nullptr;
        stayForAWhile();
    }

    void stayForAWhile() {
        cancelIdle();
        if (left_) {
            over_ = over_ || (!window_ && underWay_ == 0);
        } else if (!window_ && underWay_ == 0) {
            idle_ = queue_->after(options_.idle, [weak = weak_from_this()] {
                if (const auto self = weak.lock()) {
                    self->leave();
                }
            });
        }
    }

    /// Gives the name back first: what is sent to it from then on starts the next process, and what came before is shown
    /// here still.
    void leave() {
        if (useless_ || std::exchange(leaving_, true)) {
            return;
        }
        bus_.disown(names_->notificationContent, [queue = queue_, weak = weak_from_this()] {
            queue->async([weak] {
                if (const auto self = weak.lock()) {
                    self->left_ = true;
                    self->over_ = self->over_ || (!self->window_ && self->underWay_ == 0);
                }
            });
        });
    }

    void cancelIdle() {
        if (idle_) {
            queue_->cancel(*std::exchange(idle_, std::nullopt));
        }
    }

    void giveUp(const std::string& why) {
        complain("No notifications are drawn here: " + why);
        useless_ = true;
        over_ = true;
    }

    void complain(const std::string& line) const {
        sdk_->state()->platform->systemLog->write(platform::LogLevel::warning, line);
    }

    const std::shared_ptr<Zentavo> sdk_;
    const Show show_;
    const NotificationContentOptions options_;
    const std::optional<desktop::BusNames> names_;
    const std::shared_ptr<GtkMainQueue> queue_ = std::make_shared<GtkMainQueue>();
    std::unique_ptr<NotificationWindow> window_;
    platform::Notification shown_;
    std::uint64_t number_ = 0;  ///< of the notification that is shown
    std::uint64_t opened_ = 0;  ///< the number of the last that the user opened
    std::uint64_t refused_ = 0; ///< that of the last which nobody opened: its choices open their URLs directly
    int underWay_ = 0;          ///< answers of the user that the app has not been told yet
    std::optional<platform::TimerId> idle_;
    bool owned_ = false;   ///< has been, the name on the bus
    bool leaving_ = false; ///< the name is on its way back
    bool left_ = false;    ///< nothing comes any more
    bool over_ = false;
    bool useless_ = false;
    desktop::SessionBus bus_; ///< the first to go: it calls the rest
};

NotificationContentHost::NotificationContentHost(std::shared_ptr<Zentavo> sdk, Show show,
                                                 NotificationContentOptions options)
    : service_(std::make_shared<Service>(std::move(sdk), std::move(show), std::move(options))) {
    entryPoint("notification content", [&] { service_->start(); });
}

NotificationContentHost::~NotificationContentHost() = default;

bool NotificationContentHost::isOver() const noexcept { return service_->isOver(); }

int NotificationContentHost::run() {
    while (!isOver()) {
        g_main_context_iteration(nullptr, TRUE);
    }
    return service_->isUseless() ? 1 : 0;
}

} // namespace zentavo::gtk
