#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace zentavo::linux_port {

/// Remembers which shared objects are loaded, so that the pages which loading further ones has touched, and which
/// nobody needs after that, can be given back to the system. For libcurl and what it brings along this halves the
/// resident memory of the whole process.
class LoadedPages {
public:
    /// Objects whose file's name begins like one of `anyway` count as not loaded: what is about to be loaded uses them too.
    explicit LoadedPages(std::initializer_list<std::string_view> anyway = {});

    /// Gives back the code and constants of what was loaded since. Their pages come from the file again as they are
    /// used; what relocation or the program has written is left alone.
    void giveBackNewer() const;

private:
    std::vector<std::uintptr_t> bases_;
};

} // namespace zentavo::linux_port
