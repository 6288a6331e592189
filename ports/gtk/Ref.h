#pragma once

#include <utility>

#include <glib-object.h>

namespace zentavo::gtk {

/// Holds one reference to a GObject. Main thread only where the object is a widget.
template <class T>
class Ref {
public:
    Ref() = default;
    /// Takes over a reference that the caller has.
    static Ref take(T* object) { return Ref(object); }
    /// Takes one of its own; a floating one becomes ours.
    static Ref share(T* object) {
        return Ref(object != nullptr ? static_cast<T*>(g_object_ref_sink(object)) : nullptr);
    }

    Ref(const Ref& other) : Ref(share(other.object_)) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Ref() {
        if (object_ != nullptr) {
            g_object_unref(object_);
        }
    }

    T* get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    /// Lets go of the object without giving its reference back.
    T* release() noexcept { return std::exchange(object_, nullptr); }

private:
    explicit Ref(T* object) : object_(object) {}
    T* object_ = nullptr;
};

} // namespace zentavo::gtk
