#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "devserver/InboxStore.h"
#include "devserver/Problems.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::devserver {

/// Brings messages into the store that somebody wrote by hand: in a file, on the page, or in a test.
///
/// A message needs "heading" and "content". All else has a default: it goes to every customer and visitor ("lookup_type"
/// and "lookup_id" are "*") at destination 77, under no catalog, with an id and dates of its own.
class InboxMessages {
public:
    static constexpr std::int64_t usualDestination = 77;

    explicit InboxMessages(InboxStore& store) : store_(store) {}

    /// Adds one message and returns its id; empty when there are problems. `path` is where it stands ("messages[2]").
    std::string add(const Map& message, const std::string& path, Problems& problems);

    /// Fills an empty store from the files (*.json) of `folder`, or from the built-in ones when it is empty text. A store
    /// that has messages stays as it is. After a mistake in a file it is empty again.
    Result<void> seed(const std::string& folder);

private:
    Result<void> fill(const std::string& folder);
    void addCatalogs(const Map& file, Problems& problems);
    void addMessages(const Map& file, Problems& problems);

    InboxStore& store_;
};

/// The built-in files, each a JSON object with "catalogs" and "messages".
struct InboxSeed {
    std::string_view name;
    std::string_view text;
};
std::span<const InboxSeed> builtInInbox() noexcept;

} // namespace zentavo::devserver
