#pragma once

#include <memory>

#include "zentavo/platform/Application.h"
#include "zentavo/platform/SystemLog.h"

namespace zentavo::gtk {

/// The host towards its desktop. Named for what it is not: the toolkit has an application class of its own.
class GtkApplicationAnswers final : public platform::Application {
public:
    explicit GtkApplicationAnswers(std::shared_ptr<platform::SystemLog> log);

    void registerForRemoteNotifications() override;
    /// With the desktop's program for the URL's scheme. Files are not opened: a web page may have named them.
    void open(const URL& url) override;

private:
    const std::shared_ptr<platform::SystemLog> log_;
};

} // namespace zentavo::gtk
