#include "ports/desktop/MessageBody.h"

namespace zentavo::desktop::body {

namespace {

std::string textOf(GVariant* value) {
    gsize size = 0;
    const char* text = g_variant_get_string(value, &size);
    return {text, size};
}

std::string bytesOf(GVariant* value) {
    gsize size = 0;
    const auto* bytes = static_cast<const char*>(g_variant_get_fixed_array(value, &size, 1));
    return size > 0 ? std::string(bytes, size) : std::string();
}

Variant child(const Variant& body, std::size_t index) {
    return Variant::take(g_variant_get_child_value(body.get(), index));
}

} // namespace

std::string text(const Variant& body, std::size_t index) { return textOf(child(body, index).get()); }

std::string bytes(const Variant& body, std::size_t index) { return bytesOf(child(body, index).get()); }

std::uint32_t number(const Variant& body, std::size_t index) { return g_variant_get_uint32(child(body, index).get()); }

std::vector<std::string> texts(const Variant& body) {
    const Variant list = child(body, 0);
    std::vector<std::string> all;
    GVariantIter each;
    g_variant_iter_init(&each, list.get());
    for (const char* one = nullptr; g_variant_iter_next(&each, "&s", &one) != FALSE;) {
        all.emplace_back(one);
    }
    return all;
}

Variant of(const std::vector<std::string>& texts) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("as"));
    for (const std::string& one : texts) {
        g_variant_builder_add(&builder, "s", one.c_str());
    }
    return Variant::share(g_variant_new("(as)", &builder));
}

Dictionary::Dictionary(const Variant& body) : entries_(child(body, 0)) {}

std::string Dictionary::text(const char* name) { return read(name, G_VARIANT_TYPE_STRING, textOf); }

std::string Dictionary::bytes(const char* name) { return read(name, G_VARIANT_TYPE_BYTESTRING, bytesOf); }

std::string Dictionary::read(const char* name, const GVariantType* type, std::string (*convert)(GVariant*)) {
    const auto value = Variant::take(g_variant_lookup_value(entries_.get(), name, nullptr));
    if (!value) {
        return "";
    }
    if (g_variant_is_of_type(value.get(), type) == FALSE) {
        wrong_ = std::string(name) + " is of the wrong kind";
        return "";
    }
    return convert(value.get());
}

} // namespace zentavo::desktop::body
