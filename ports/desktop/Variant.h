#pragma once

#include <utility>

#include <glib.h>

namespace zentavo::desktop {

/// Holds one reference to a value of the message bus. Such values do not change: any thread.
class Variant {
public:
    Variant() = default;
    /// Takes over a reference that the caller has.
    static Variant take(GVariant* value) { return Variant(value); }
    /// Takes one of its own; a floating one becomes ours.
    static Variant share(GVariant* value) { return Variant(value != nullptr ? g_variant_ref_sink(value) : nullptr); }

    Variant(const Variant& other) : Variant(share(other.value_)) {}
    Variant(Variant&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
    Variant& operator=(Variant other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~Variant() {
        if (value_ != nullptr) {
            g_variant_unref(value_);
        }
    }

    GVariant* get() const noexcept { return value_; }
    explicit operator bool() const noexcept { return value_ != nullptr; }

private:
    explicit Variant(GVariant* value) : value_(value) {}
    GVariant* value_ = nullptr;
};

} // namespace zentavo::desktop
