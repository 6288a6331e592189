#pragma once

#include <memory>

#include <gio/gio.h>

namespace zentavo::devserver {

/// Owners of what GLib counts and frees in its own ways.
struct GLibRelease {
    void operator()(GDBusConnection* object) const noexcept { g_object_unref(object); }
    void operator()(GCancellable* object) const noexcept { g_object_unref(object); }
    void operator()(GMainContext* context) const noexcept { g_main_context_unref(context); }
    void operator()(GVariant* value) const noexcept { g_variant_unref(value); }
    void operator()(GError* error) const noexcept { g_error_free(error); }
    void operator()(GDBusNodeInfo* info) const noexcept { g_dbus_node_info_unref(info); }
    void operator()(char* text) const noexcept { g_free(text); }
};

template <class T>
using GLibPointer = std::unique_ptr<T, GLibRelease>;

/// For functions that report through "GError**": `Failure failure; f(failure.out());`.
class Failure {
public:
    ~Failure() { g_clear_error(&error_); }
    Failure() = default;
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;

    GError** out() noexcept { return &error_; }
    const GError* get() const noexcept { return error_; }

private:
    GError* error_ = nullptr;
};

} // namespace zentavo::devserver
