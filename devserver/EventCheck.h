#pragma once

#include <span>
#include <string_view>

#include "devserver/BodyChecks.h"
#include "devserver/Service.h"

namespace zentavo::devserver {

/// The portal whose events belong to the sandbox twin.
inline constexpr std::string_view sandboxPortal = "33167";

/// What the page shows of an event.
void describeEvent(const Map& body, Findings& findings);

/// Whether `body` is an event's, with the members of `more` besides, that came to the right twin of `path`.
void checkEvent(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                std::span<const MemberRule> more, Problems& problems);

} // namespace zentavo::devserver
