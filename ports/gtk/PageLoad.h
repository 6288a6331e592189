#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zentavo::gtk {

/// Sorts what the engine says about a load. It reports an end after a failure too, says nothing at all of an address
/// that it refuses to open, and counts a page that goes on to another one as a failure of the first.
class PageLoad {
public:
    struct Outcome {
        bool loaded = false;
        std::string problem; ///< empty where it has loaded
    };

    /// A load is asked for; one with an address must arrive at some.
    void begin(bool hasAddress) noexcept;
    /// The engine begins with a page, ours or the one that ours goes on to.
    void started() noexcept { failed_ = false; }
    /// `interrupted`: another page comes instead, or nothing was wrong.
    std::optional<Outcome> failed(const char* problem, bool interrupted);
    std::optional<Outcome> finished(std::string_view address);
    /// Takes as long as it may.
    std::optional<Outcome> timedOut(const std::string& problem);

private:
    std::optional<Outcome> end(Outcome outcome);

    bool waiting_ = false;
    bool hasAddress_ = false;
    bool failed_ = false;
};

} // namespace zentavo::gtk
