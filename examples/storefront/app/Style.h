#pragma once

namespace storefront {

/// The text of `style.css`.
extern const char* const style;

} // namespace storefront
