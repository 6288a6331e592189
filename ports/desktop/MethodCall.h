#pragma once

#include <memory>
#include <string>

#include <gio/gio.h>

#include "ports/desktop/Variant.h"
#include "zentavo/foundation/Export.h"

namespace zentavo::desktop {

/// A call that another program makes of an object of ours, to be answered once, on any thread. One that nobody answers
/// is refused when the last copy goes, so that no caller waits for ever.
class ZENTAVO_EXPORT MethodCall {
public:
    /// Takes over the invocation.
    explicit MethodCall(GDBusMethodInvocation* invocation);

    /// Interface and method are as declared, and so are the kinds of the parameters.
    std::string interface() const;
    std::string method() const;
    Variant parameters() const;
    /// The caller's unique name; nobody else can have it.
    std::string sender() const;
    /// The unique name of our connection that the call came on.
    std::string receiver() const;

    /// `values` is a tuple of the declared kinds, or nothing for a method without an answer.
    void answer(const Variant& values = {}) const;
    void refuse(const std::string& why) const;
    /// For arguments that make no sense.
    void refuseArguments(const std::string& why) const;
    /// For callers who have no right to it.
    void deny(const std::string& why) const;

private:
    class Invocation;
    std::shared_ptr<Invocation> invocation_;
};

} // namespace zentavo::desktop
