#include "ports/desktop/MethodCall.h"

#include <atomic>

namespace zentavo::desktop {

class MethodCall::Invocation {
public:
    explicit Invocation(GDBusMethodInvocation* invocation) : invocation_(invocation) {}
    Invocation(const Invocation&) = delete;
    Invocation& operator=(const Invocation&) = delete;
    ~Invocation() {
        refuse(G_DBUS_ERROR_FAILED, "It was not done");
        g_object_unref(invocation_);
    }

    GDBusMethodInvocation* get() const noexcept { return invocation_; }
    /// Null from the second time on. Each way to answer uses up a reference.
    GDBusMethodInvocation* take() {
        return answered_.exchange(true) ? nullptr : static_cast<GDBusMethodInvocation*>(g_object_ref(invocation_));
    }
    void refuse(GDBusError error, const std::string& why) {
        if (GDBusMethodInvocation* open = take()) {
            g_dbus_method_invocation_return_error_literal(open, G_DBUS_ERROR, error, why.c_str());
        }
    }

private:
    GDBusMethodInvocation* const invocation_;
    std::atomic<bool> answered_ = false;
};

MethodCall::MethodCall(GDBusMethodInvocation* invocation) : invocation_(std::make_shared<Invocation>(invocation)) {}

std::string MethodCall::interface() const { return g_dbus_method_invocation_get_interface_name(invocation_->get()); }

std::string MethodCall::method() const { return g_dbus_method_invocation_get_method_name(invocation_->get()); }

Variant MethodCall::parameters() const {
    return Variant::share(g_dbus_method_invocation_get_parameters(invocation_->get()));
}

std::string MethodCall::sender() const {
    const char* sender = g_dbus_method_invocation_get_sender(invocation_->get());
    return sender != nullptr ? sender : "";
}

std::string MethodCall::receiver() const {
    const char* name = g_dbus_connection_get_unique_name(g_dbus_method_invocation_get_connection(invocation_->get()));
    return name != nullptr ? name : "";
}

void MethodCall::answer(const Variant& values) const {
    if (GDBusMethodInvocation* open = invocation_->take()) {
        g_dbus_method_invocation_return_value(open, values.get());
    }
}

void MethodCall::refuse(const std::string& why) const { invocation_->refuse(G_DBUS_ERROR_FAILED, why); }

void MethodCall::refuseArguments(const std::string& why) const { invocation_->refuse(G_DBUS_ERROR_INVALID_ARGS, why); }

void MethodCall::deny(const std::string& why) const { invocation_->refuse(G_DBUS_ERROR_ACCESS_DENIED, why); }

} // namespace zentavo::desktop
