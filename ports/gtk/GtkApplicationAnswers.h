#pragma once

#include <memory>

#include "ports/desktop/DesktopProcess.h"
#include "zentavo/platform/Application.h"
#include "zentavo/platform/SystemLog.h"

namespace zentavo::gtk {

/// The host towards its desktop. Named for what it is not: the toolkit has an application class of its own.
class GtkApplicationAnswers final : public platform::Application {
public:
    GtkApplicationAnswers(std::shared_ptr<platform::SystemLog> log, const desktop::DesktopProcess& process);

    void registerForRemoteNotifications() override;
    /// With the desktop's program for the URL's scheme. Files are not opened: a web page may have named them.
    void open(const URL& url) override;

private:
    const std::shared_ptr<platform::SystemLog> log_;
    const desktop::DesktopProcess& process_; ///< lives for ever
};

} // namespace zentavo::gtk
