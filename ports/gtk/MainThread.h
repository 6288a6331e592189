#pragma once

#include <functional>

namespace zentavo::gtk {

/// The thread on which the toolkit and all views live: that of the first `attach`.
class MainThread {
public:
    /// Makes the calling thread the main thread, unless there is one.
    static void adopt();
    static bool isCurrent() noexcept;
    /// A fault on every other thread: the toolkit would be damaged, long before anybody saw it.
    static void require(const char* file = __builtin_FILE(), unsigned line = __builtin_LINE());
    /// Runs `block` on the main thread, at once when this is it. For what must end there, wherever its last holder was.
    static void run(std::function<void()> block);
};

} // namespace zentavo::gtk
