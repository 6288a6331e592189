#pragma once

#include <memory>
#include <string>

#include "ports/memory/FixedZoneCalendar.h"
#include "ports/memory/ManualClock.h"
#include "ports/memory/ManualQueues.h"
#include "ports/memory/MemoryApplication.h"
#include "ports/memory/MemoryAttachmentFiles.h"
#include "ports/memory/MemoryBundles.h"
#include "ports/memory/MemoryDevice.h"
#include "ports/memory/MemoryImages.h"
#include "ports/memory/MemoryKeyServices.h"
#include "ports/memory/MemoryPreferencesProvider.h"
#include "ports/memory/MemoryUserNotifications.h"
#include "ports/memory/MemoryViews.h"
#include "ports/memory/MemoryWebView.h"
#include "ports/memory/RecordingConsole.h"
#include "ports/memory/RecordingSystemLog.h"
#include "ports/memory/ScriptedURLSession.h"
#include "ports/memory/SeededRandom.h"
#include "zentavo/platform/Platform.h"

namespace zentavo::testing {

/// A whole system inside one test: a still clock, queues that run by hand, a scripted network, a store in memory.
///
///     MemoryPlatform system;
///     const auto sdk = std::make_shared<Zentavo>(system.platform());
///     …
///     system.queues->runUntilIdle();
///     EXPECT_EQ(system.session->count(), 1u);
///
/// Make it on the thread that plays the host's main thread.
struct ZENTAVO_EXPORT MemoryPlatform {
    /// `identifier` is the main bundle's; empty leaves it without one. Two platforms made with one `store` are two
    /// processes of one machine.
    explicit MemoryPlatform(const std::string& identifier = "com.example.host",
                            std::shared_ptr<MemoryStore> store = nullptr);

    /// The process ends: what waits in queues and open exchanges is dropped, and with it what that keeps alive.
    ~MemoryPlatform();
    MemoryPlatform(const MemoryPlatform&) = delete;
    MemoryPlatform& operator=(const MemoryPlatform&) = delete;

    const std::shared_ptr<ManualClock> clock;
    const std::shared_ptr<ManualQueues> queues;
    const std::shared_ptr<RecordingSystemLog> systemLog;
    const std::shared_ptr<RecordingConsole> console;
    const std::shared_ptr<ScriptedURLSession> session;
    const std::shared_ptr<MemoryPreferencesProvider> preferences;
    const std::shared_ptr<MemoryBundles> bundles;
    const std::shared_ptr<MemoryDevice> device;
    const std::shared_ptr<SeededRandom> random;
    const std::shared_ptr<FixedZoneCalendar> calendar;
    const std::shared_ptr<MemoryKeyServices> keyServices;
    const std::shared_ptr<MemoryAttachmentFiles> attachmentFiles;
    const std::shared_ptr<MemoryUserNotifications> userNotifications;
    const std::shared_ptr<MemoryApplication> application;
    /// Not attached at first: a program starts without a toolkit.
    const std::shared_ptr<MemoryViews> views;
    const std::shared_ptr<MemoryWebViews> webViews;
    const std::shared_ptr<MemoryImages> images;

    /// Attaches `views`, `webViews` and `images`, as a toolkit does once it has a window, or takes them away again.
    void attachViews(bool attached = true);

    /// The record that the SDK is given; the same on every call. A test may exchange its members before it hands it on.
    const std::shared_ptr<platform::Platform>& platform() const { return platform_; }

private:
    std::shared_ptr<platform::Platform> platform_;
};

} // namespace zentavo::testing
