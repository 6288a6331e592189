#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/Problems.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/URL.h"

namespace zentavo::devserver {

/// The public half of this build's signing key, PEM; empty when the build has no key.
std::string_view signingPublicKeyPEM() noexcept;

/// Whether a view-info request is signed as it has to be, and if not, why. For any thread.
class ProofCheck {
public:
    /// How far a client's clock may be off, in milliseconds.
    static constexpr std::int64_t clockTolerance = 5 * 60 * 1000;
    /// So many requests are remembered, to notice a UUID that comes a second time.
    static constexpr std::size_t mostRemembered = 10'000;

    /// `now` in milliseconds since 1970.
    void check(const std::vector<QueryItem>& query, const std::string& body, std::int64_t now, Problems& problems);

private:
    Mutex mutex_;
    /// Signature by UUID. The same request may come again: clients repeat what failed.
    std::map<std::string, std::string> seen_ ZENTAVO_GUARDED_BY(mutex_);
    std::deque<std::string> order_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::devserver
