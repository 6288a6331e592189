#pragma once

#include <memory>

#include "zentavo/platform/Platform.h"

namespace zentavo::linux_port {

/// What a host without a toolkit gets: a main queue on the worker, notifications that nobody has allowed, and an
/// application that opens nothing and says so in the system log.
platform::UserInterface detachedUserInterface(std::shared_ptr<platform::MainQueue> worker,
                                              std::shared_ptr<platform::SystemLog> log);

} // namespace zentavo::linux_port
