#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/Problems.h"
#include "zentavo/foundation/URL.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::devserver {

/// What a member of a JSON object has to be.
enum class Kind { any, text, filledText, number, integer, textOrNumber, map, list, listOfMaps, listOfTexts };
enum class Need { required, optional };
/// Whether members that no rule names are a problem.
enum class Others { refused, accepted };

struct MemberRule {
    std::string_view name;
    Kind kind;
    Need need = Need::required;
};

/// Adds one problem for each rule that `map` breaks. `path` is how the reader gets to `map` ("context.device"); empty for
/// the body itself.
void checkMembers(const Map& map, std::string_view path, std::span<const MemberRule> rules, Others others,
                  Problems& problems);

struct QueryRule {
    std::string_view name;
    /// What the value has to be; anything when empty.
    std::string_view value = {};
};

/// The query must be exactly the items of the rules, in any order.
void checkQuery(const std::vector<QueryItem>& query, std::span<const QueryRule> rules, Problems& problems);

/// The text of the first item called `name`, or null.
const std::string* queryValue(const std::vector<QueryItem>& query, std::string_view name);

/// The text or map member called `name`, or null when it is absent or of another kind.
const std::string* textMember(const Map& map, std::string_view name);
const Map* mapMember(const Map& map, std::string_view name);

} // namespace zentavo::devserver
