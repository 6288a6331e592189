#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "devserver/IncomingRequest.h"
#include "devserver/Problems.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::devserver {

/// The platform runs most services twice; the sandbox twin stands under the path prefix "/sandbox" here.
enum class Twin { production, sandbox };

std::string_view name(Twin twin) noexcept;

/// A path of a service, without "/sandbox", and the twin that this prefix tells.
struct ServicePath {
    Twin twin;
    std::string_view path;

    static ServicePath of(std::string_view path) noexcept;
};

/// What a service finds in a request: what is wrong, and what the page shows of it.
struct Findings {
    Problems problems;
    std::string event;
    std::string uid;
    std::string screen;
    std::string customer;
};

struct Answer {
    int status = 200;
    Map body;
};

struct Route {
    /// One path, or every path that begins with it and goes on.
    enum class Covers { exactly, below };

    std::string_view method;
    /// Without the twin's prefix.
    std::string_view path;
    Covers covers = Covers::exactly;

    bool matches(std::string_view servicePath) const noexcept {
        return covers == Covers::exactly ? servicePath == path
                                         : servicePath.size() > path.size() && servicePath.starts_with(path);
    }
};

/// One of the platform's services. Called from many threads at once, and never throws for what a client sent.
class Service {
public:
    virtual ~Service() = default;

    virtual std::vector<Route> routes() const = 0;
    /// `request` has one of the routes; `path` is that route's, and `body` its JSON body. The answer counts only where
    /// nothing was found wrong.
    virtual Answer answer(const IncomingRequest& request, std::string_view path, Twin twin, const Map& body,
                          Findings& findings) = 0;
};

} // namespace zentavo::devserver
