#pragma once

#include <cstdint>

namespace bench {

/// Memory of this process and of all that it has started, shared pages counted by halves and thirds ("Pss"), in
/// kilobytes.
std::int64_t treeKilobytes();

} // namespace bench
