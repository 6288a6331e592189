#pragma once

#include <memory>
#include <string>
#include <vector>

#include "devserver/Distributor.h"
#include "devserver/SessionBus.h"

namespace zentavo::devserver {

/// Answers on the bus's thread, where every call to an app begins and ends too; threads that deliver only wait.
class DBusDistributor final : public Distributor {
public:
    DBusDistributor(const Settings& settings, std::shared_ptr<EndpointStore> store);
    ~DBusDistributor() override;

    Result<void> open();

    std::vector<std::string> deliver(const std::vector<Message>& messages) override;
    void tellEndpoint(const EndpointStore::Registration& registration) override;
    void tellUnregistered(const EndpointStore::Registration& registration) override;
    void stop() override;

private:
    class Batch;

    Result<void> publish(GDBusConnection* connection);
    static void called(GDBusConnection* connection, const char* sender, const char* path, const char* interface,
                       const char* method, GVariant* arguments, GDBusMethodInvocation* invocation, void* self);
    void registerApp(const EndpointStore::Registration& wanted, GDBusMethodInvocation* invocation);
    void unregisterApp(const EndpointStore::Registration& wanted, GDBusMethodInvocation* invocation);
    std::string reasonOf(const GError& error) const;

    const Settings settings_;
    const std::shared_ptr<EndpointStore> store_;
    const GLibPointer<GDBusNodeInfo> interfaces_;
    /// Last: its thread ends before what it uses.
    SessionBus bus_;
};

} // namespace zentavo::devserver
