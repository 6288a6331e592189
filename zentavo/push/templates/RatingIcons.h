#pragma once

#include <string>
#include <string_view>

namespace zentavo {

/// Where the picture of a rating icon is: for one of the symbolic names on `mediaHost`, a base URL; for anything else
/// the text as it stands.
std::string ratingIconURL(std::string_view mediaHost, std::string_view icon);

} // namespace zentavo
