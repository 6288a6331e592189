#pragma once

#include <string>
#include <string_view>

#include "ports/desktop/MethodCall.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::desktop {

/// What a distributor calls at the object of a receiver of pushes, in either version of the interface.
struct ConnectorCall {
    static constexpr const char* path = "/org/unifiedpush/Connector";
    static const char* const xml;

    enum class Method { message, newEndpoint, unregistered };

    int version = 0;
    Method method = Method::message;
    std::string token;
    std::string message;
    std::string id; ///< of the message, or empty
    std::string endpoint;

    /// What is missing is empty; what is of the wrong kind is an error.
    static Result<ConnectorCall> read(const MethodCall& call);
    /// The same of a call that is not under way; `arguments` are as `xml` declares them.
    static Result<ConnectorCall> read(std::string_view interface, std::string_view method, const Variant& arguments);
    /// Everything is well.
    static void answer(const MethodCall& call);
};

} // namespace zentavo::desktop
