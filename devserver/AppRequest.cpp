#include "devserver/AppRequest.h"

#include <array>
#include <string>
#include <utility>

#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

using Registration = EndpointStore::Registration;

constexpr std::size_t longestToken = 512;
constexpr std::size_t longestDescription = 1'024;
constexpr std::size_t longestKey = 512;

std::string child(GVariant* tuple, std::size_t index) {
    const GLibPointer<GVariant> value(g_variant_get_child_value(tuple, index));
    return g_variant_get_string(value.get(), nullptr);
}

/// Version 2 takes a dictionary, whose entries may be absent.
Result<Registration> fromDictionary(GVariant* arguments) {
    Registration wanted;
    wanted.version = 2;
    const std::array<std::pair<const char*, std::string*>, 4> fields{{{"service", &wanted.service},
                                                                      {"token", &wanted.token},
                                                                      {"description", &wanted.description},
                                                                      {"vapid", &wanted.vapid}}};
    const GLibPointer<GVariant> dictionary(g_variant_get_child_value(arguments, 0));
    for (const auto& [name, field] : fields) {
        const GLibPointer<GVariant> value(g_variant_lookup_value(dictionary.get(), name, nullptr));
        if (value && g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING) == FALSE) {
            return Error{std::string(name) + " is no text"};
        }
        *field = value ? g_variant_get_string(value.get(), nullptr) : "";
    }
    return wanted;
}

Result<Registration> withToken(Result<Registration> wanted) {
    if (wanted && (wanted->token.empty() || wanted->token.size() > longestToken)) {
        return Error{"token is " + std::string(wanted->token.empty() ? "missing" : "too long")};
    }
    return wanted;
}

} // namespace

Result<Registration> AppRequest::toRegister(int version, GVariant* arguments) {
    auto wanted = withToken(version == 1 ? Result<Registration>(Registration{
                                               child(arguments, 1), child(arguments, 0), child(arguments, 2), {}})
                                         : fromDictionary(arguments));
    if (!wanted) {
        return wanted;
    }
    // A unique name would be nobody's after the app has ended.
    if (g_dbus_is_name(wanted->service.c_str()) == FALSE || wanted->service.starts_with(':')) {
        return Error{"service is " + inQuotes(wanted->service) + "; expected a well-known name on the bus"};
    }
    if (wanted->description.size() > longestDescription || wanted->vapid.size() > longestKey) {
        return Error{"description or vapid is too long"};
    }
    return wanted;
}

Result<Registration> AppRequest::toUnregister(int version, GVariant* arguments) {
    return withToken(version == 1 ? Result<Registration>(Registration{child(arguments, 0), {}, {}, {}})
                                  : fromDictionary(arguments));
}

} // namespace zentavo::devserver
