#pragma once

#include <atomic>
#include <deque>
#include <string>

#include "devserver/SessionBus.h"
#include "tests/e2e/Process.h"

namespace zentavo::devserver {

/// A D-Bus bus of the test's own, with a folder for programs that it starts. It ends with this object.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    const std::string& address() const noexcept { return address_; }
    const std::string& folder() const noexcept { return folder_; }

private:
    std::string folder_;
    std::unique_ptr<e2e::Process> daemon_;
    std::string address_;
};

/// An app's side of the bus: registers in either version, and keeps what it is told.
class FakeConnector {
public:
    static constexpr const char* distributor = "org.unifiedpush.Distributor.test";

    struct Call {
        int version = 0;
        std::string method;
        std::string token;
        /// The endpoint or the message.
        std::string value;
        std::string id;
    };

    FakeConnector(const std::string& address, std::string name);
    ~FakeConnector() { bus_.stop(); }

    /// What a call to the distributor is answered, as GLib prints it; for an error its name.
    std::string ask(int version, const char* method, const std::string& arguments) const;
    /// Registers as an app does. True when the distributor says so.
    bool registers(int version, const std::string& token) const;
    /// The next call that came; an empty one when none comes for ten seconds.
    Call next();
    /// Whether it answers what it is told.
    std::atomic<bool> answers = true;

private:
    static void called(GDBusConnection* connection, const char* sender, const char* path, const char* interface,
                       const char* method, GVariant* arguments, GDBusMethodInvocation* invocation, void* self);

    const std::string name_;
    GLibPointer<GDBusConnection> connection_;
    GLibPointer<GDBusNodeInfo> interfaces_;
    Mutex mutex_;
    ConditionVariable came_;
    std::deque<Call> calls_ ZENTAVO_GUARDED_BY(mutex_);
    SessionBus bus_;
};

} // namespace zentavo::devserver
