#pragma once

#include <string_view>

#include "ports/linux/CurlLibrary.h"
#include "zentavo/platform/URLSession.h"

namespace zentavo::linux_port {

/// What the SDK calls libcurl's `code`.
platform::URLErrorKind errorKind(CURLcode code);

/// "Connection refused (127.0.0.1:8787)"
platform::URLError errorAt(platform::URLErrorKind kind, std::string_view what, const URL& url);

} // namespace zentavo::linux_port
