#pragma once

#include <string_view>

namespace zentavo::linux_port {

/// Whether a binary property list may be given to a reader that follows every reference and copies what is referred to
/// more than once: its tables lie within the text, nothing holds itself, the nesting is at most 64, and the tree with
/// all copies has at most 20 000 nodes.
bool isHarmlessBinaryPlist(std::string_view text);

} // namespace zentavo::linux_port
