#pragma once

#include <string_view>

namespace zentavo {

/// Whether `text` is of a language written from right to left: its first letter tells. Text without letters is not.
bool isRightToLeft(std::string_view text) noexcept;

} // namespace zentavo
