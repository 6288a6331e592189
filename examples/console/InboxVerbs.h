#pragma once

#include <string>
#include <vector>

#include <zentavo/Zentavo.h>

namespace console {

/// Plays the part of "inbox:WHAT,…" on the instance's inbox, which is made when there is none. What the service answers is
/// printed when it comes. False when `parts` ask for something unknown.
bool runInboxVerb(const std::vector<std::string>& parts, zentavo::Zentavo& sdk);

} // namespace console
