#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "zentavo/foundation/Result.h"

namespace zentavo::devserver {

/// What the command line asks for.
struct Options {
    std::string host = "127.0.0.1";
    std::uint16_t port = 8787;
    bool expose = false;
    bool quiet = false;
    bool parent = false;
    bool help = false;
    bool version = false;
    std::string sessionId;
    std::string inboxFolder;
    std::string inboxStore;
    std::string campaignFolder;
    std::string pushFolder;
    std::string pushStore;
    bool distributor = false;
    /// Empty means the usual one.
    std::string distributorName;
    bool catchAll = false;
    std::optional<std::chrono::milliseconds> lifetime;

    /// `arguments` without the program's name. "--name value" and "--name=value" mean the same.
    static Result<Options> parse(std::span<const char* const> arguments);
    static std::string_view helpText() noexcept;
};

} // namespace zentavo::devserver
