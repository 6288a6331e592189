#pragma once

#include <string_view>

#include <httplib.h>

namespace zentavo::devserver {

/// The page at "/": one file that needs nothing from outside.
class LivePage {
public:
    static void answer(httplib::Response& response);
    /// Made of `page/` when the server is built.
    static std::string_view html() noexcept;
};

} // namespace zentavo::devserver
